// IGES files as the model shows them.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cadex/internal/Reports.hxx>

#include "tests/sdk/MeshModels.h"
#include "tests/sdk/ReadModels.h"
#include "tests/sdk/SeedFiles.h"

namespace cadex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string ImportSeed(const Seed& seed)
{
    const ScratchFolder folder;
    const std::filesystem::path file = folder.Path() / "w\xC3\xBCrfel.igs";
    WriteBytes(file, seed.bytes);
    ModelData_Model model;
    return Import(file, model) ? Outline::Of(model) : "not read";
}

} // namespace

TEST(IgesReader, ASolidIsAPartWithFaceColours)
{
    ModelData_Model model;
    ASSERT_TRUE(Import(ZEMTAR_SOURCE_DIR "/examples/bracket.igs", model));
    const std::string outline = Outline::Of(model);
    EXPECT_THAT(
        outline,
        HasSubstr("part 'Bracket' rgba 115 153 115 255 [Time Stamp = time 1714979289] [Author = Design "
                  "office] [Organization = Pump works]"));
    EXPECT_THAT(outline, HasSubstr("[Product ID = bracket] volume 12772.5"));
    EXPECT_THAT(outline, HasSubstr(" triangles rgba 230 89 51 255\n"));
}

TEST(IgesReader, SubfiguresAreSharedWithTheirScaleAndMirror)
{
    for (const bool inches : {false, true}) {
        ModelData_Model model;
        const ScratchFolder folder;
        WriteBytes(folder.Path() / "sub.igs", IgesSubfigures(inches).bytes);
        ASSERT_TRUE(Import(folder.Path() / "sub.igs", model));
        ASSERT_EQ(model.NumberOfRoots(), 1U);
        const auto& root = static_cast<const ModelData_Assembly&>(internal::RootsOf(model).front());
        const auto& uses = internal::ImplOf(root).instances;
        ASSERT_EQ(uses.size(), 3U);
        EXPECT_EQ(root.Name().ToUTF8(), "sub");
        EXPECT_EQ(uses[0].Name().ToUTF8(), "First");
        EXPECT_EQ(uses[1].Name().ToUTF8(), "Block");
        EXPECT_TRUE(uses[0].Reference() == uses[1].Reference() && uses[0].Reference() == uses[2].Reference());
        const double unit = inches ? 25.4 : 1.0;
        EXPECT_NEAR(uses[0].Transformation().Data(0, 3), 100 * unit, 1e-9);
        EXPECT_NEAR(uses[1].Transformation().Data(1, 3), 100 * unit, 1e-9);
        EXPECT_NEAR(uses[1].Transformation().Data(2, 2), 2.0, 1e-12);
        EXPECT_NEAR(uses[2].Transformation().Data(0, 0), -1.0, 1e-12);
        EXPECT_NEAR(uses[2].Transformation().Data(0, 3), -50 * unit, 1e-9);
        EXPECT_THAT(Outline::Of(model), HasSubstr("part 'Block'"));
    }
}

TEST(IgesReader, NamedGroupsArePartsAndTheRestIsOnePart)
{
    const std::string outline = ImportSeed(IgesSeeds()[2]);
    EXPECT_THAT(outline, HasSubstr("assembly 'würfel' ["));
    EXPECT_THAT(outline, HasSubstr("  instance 'würfel'\n    part 'würfel'"));
    EXPECT_THAT(outline, HasSubstr("  instance 'Group'\n    part 'Group'"));
    EXPECT_THAT(outline, HasSubstr("      2 points\n"));
}

TEST(IgesReader, RealFilesHaveOneRoot)
{
    for (const char* file : {"bearing.iges", "hammer.iges"}) {
        const std::string path = std::string("/usr/share/opencascade/data/iges/") + file;
        if (!std::filesystem::exists(path)) {
            GTEST_SKIP() << path << " is not installed";
        }
        const std::string outline = ImportSeed({BytesOf(path), ".igs"});
        EXPECT_EQ(outline.substr(0, 14), "part 'würfel'");
        EXPECT_THAT(outline, HasSubstr(" triangles\n"));
    }
}

namespace {

/// Triangles of all parts and the texts of the reports; the bounds are finite.
struct Read
{
    explicit Read(const std::string& bytes)
    {
        const ScratchFolder folder;
        WriteBytes(folder.Path() / "damaged.igs", bytes);
        internal::Reports::Clear();
        ModelData_Model model;
        done = Import(folder.Path() / "damaged.igs", model);
        outline = done ? Outline::Of(model) : "";
        reports = internal::Reports::Take();
    }
    bool done = false;
    std::string outline;
    std::vector<internal::Report> reports;
};

/// The last number of the first parameter line of such an entity replaced by a text.
std::string WithNumber(std::string bytes, const std::string& entity, const std::string& text)
{
    constexpr std::size_t Width = 64;
    const std::size_t line = bytes.find(entity) + 1;
    std::string data = bytes.substr(line, Width);
    const std::size_t end = data.find_last_of(",;");
    const std::size_t start = data.rfind(',', end - 1) + 1;
    data.replace(start, end - start, text);
    EXPECT_TRUE(data.size() <= Width || data.find_last_not_of(' ') < Width);
    data.resize(Width, ' ');
    return bytes.replace(line, Width, data);
}

} // namespace

TEST(IgesReader, NumbersThatAreNoneCostTheirEntityAlone)
{
    const std::string bytes = BytesOf(ZEMTAR_SOURCE_DIR "/examples/bracket.igs");
    ASSERT_TRUE(Read(bytes).reports.empty());
    for (const Seed& seed : IgesSeeds()) {
        for (const char* number : {"NAN", "1E308", "-1E99", "9E999", "INF"}) {
            for (const char* entity : {"\n110,", "\n116,", "\n123,", "\n128,", "\n120,"}) {
                if (seed.bytes.find(entity) == std::string::npos) {
                    continue;
                }
                const Read damaged(WithNumber(seed.bytes, entity, number));
                EXPECT_FALSE(damaged.reports.empty()) << entity << number;
                EXPECT_THAT(damaged.outline, Not(HasSubstr("nan"))) << entity << number;
            }
        }
    }
}

TEST(IgesReader, CutFilesSayWhatIsMissing)
{
    const std::string bytes = BytesOf(ZEMTAR_SOURCE_DIR "/examples/bracket.igs");
    const std::size_t parameters = bytes.find("P0000001");
    const Read half(bytes.substr(0, parameters + (bytes.size() - parameters) / 2));
    ASSERT_GE(half.reports.size(), 2U);
    EXPECT_THAT(half.reports[0].text, HasSubstr("cut off"));
    EXPECT_THAT(half.reports[1].text, HasSubstr("have no parameters"));
}

} // namespace cadex::test
