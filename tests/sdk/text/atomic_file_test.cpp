// A STEP file is whole or not there, and a file that was there before survives a failure.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <cadex/internal/Reports.hxx>

#include "sdk/text/AtomicFile.h"
#include "tests/sdk/step/StepModels.h"

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace {

using namespace cadex;
namespace fs = std::filesystem;

void Fill(const fs::path& file, const std::string& text)
{
    std::ofstream(file, std::ios::binary) << text;
}

// Writes and gives the reason why that failed; "written" when it did not.
std::string Outcome(const ModelData_Model& model, const fs::path& file)
{
    if (WriteStep(model, file)) {
        return "written";
    }
    const std::vector<internal::Report> reports = internal::Reports::Take();
    return reports.size() == 1 && reports[0].kind == internal::Report::Kind::Refused ? reports[0].text
                                                                                     : "reports are wrong";
}

TEST(AtomicFile, ReplacesTheTargetOnlyOnCommit)
{
    ScratchFolder folder;
    const fs::path target = folder / "a.step";
    Fill(target, "before");
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    {
        text::AtomicFile file(target);
        ASSERT_TRUE(file.IsOpen() && file.Write("half"));
        EXPECT_EQ(ContentOf(target), "before");
        EXPECT_LE(folder.NumberOfEntries(), 2u);
    }
    EXPECT_EQ(ContentOf(target), "before");
    EXPECT_EQ(folder.NumberOfEntries(), 1u);
    {
        text::AtomicFile file(target);
        EXPECT_TRUE(file.Write("who") && file.Write("le") && file.Commit());
        EXPECT_FALSE(file.Commit());
    }
    EXPECT_EQ(ContentOf(target), "whole");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(folder.NumberOfEntries(), 1u);
}

TEST(AtomicFile, FollowsLinksAndRefusesWhatIsNoFile)
{
    ScratchFolder folder;
    Fill(folder / "real.step", "before");
    fs::create_symlink("real.step", folder / "link.step");
    EXPECT_TRUE(WriteStep(ModelOf(CubePart("cube")), folder / "link.step"));
    EXPECT_TRUE(fs::is_symlink(folder / "link.step"));
    EXPECT_EQ(CountOf(ContentOf(folder / "real.step"), "FACETED_BREP("), 1u);

    fs::create_directory(folder / "folder.step");
    const ModelData_Model cube = ModelOf(CubePart("cube"));
    EXPECT_EQ(Outcome(cube, folder / "folder.step"), "the file to be written is a folder");
    EXPECT_EQ(Outcome(cube, folder / "missing/a.step"),
              "the folder of the file to be written does not exist");
    EXPECT_FALSE(WriteStep(ModelOf(CubePart("cube")), ""));
    EXPECT_EQ(folder.NumberOfEntries(), 3u);
    EXPECT_TRUE(WriteStep(ModelOf(CubePart("cube")), folder / (std::string(250, 'n') + ".stp").c_str()));
}

#ifndef _WIN32
TEST(AtomicFile, ReadOnlyTargetsAndFoldersStayAsTheyAre)
{
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may write everywhere";
    }
    ScratchFolder folder;
    Fill(folder / "a.step", "before");
    fs::permissions(folder / "a.step", fs::perms::owner_read);
    EXPECT_FALSE(WriteStep(ModelOf(CubePart("cube")), folder / "a.step"));
    EXPECT_EQ(ContentOf(folder / "a.step"), "before");
    fs::permissions(folder / "", fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_FALSE(WriteStep(ModelOf(CubePart("cube")), folder / "b.step"));
    fs::permissions(folder / "", fs::perms::owner_all);
    EXPECT_EQ(folder.NumberOfEntries(), 1u);
}

TEST(AtomicFile, AFullDiskLeavesNothingBehind)
{
    ScratchFolder folder;
    Fill(folder / "a.step", "before");
    ModelData_IndexedTriangleSet many;
    for (int i = 0; i < 500; ++i) {
        AddCube(many, ModelData_Point(20. * i, 0, 0), 10);
    }
    const ModelData_Model model = ModelOf(PartOf(many, "many"));
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t size : {0, 1000, 300'000, 1'000'000}) // of about two million bytes
    {
        rlimit small = before;
        small.rlim_cur = size;
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        const std::string outcome = Outcome(model, folder / "a.step");
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_EQ(outcome, "the file grows beyond what the file system or a limit allows");
        EXPECT_EQ(ContentOf(folder / "a.step"), "before");
        EXPECT_EQ(folder.NumberOfEntries(), 1u);
    }
    std::signal(SIGXFSZ, handler);
    if (fs::exists("/dev/full")) {
        EXPECT_EQ(Outcome(model, "/dev/full"), "the disk is full");
        EXPECT_TRUE(fs::is_character_file("/dev/full"));
        EXPECT_TRUE(WriteStep(model, "/dev/null"));
        EXPECT_TRUE(fs::is_character_file("/dev/null"));
    }
}
#endif

} // namespace
