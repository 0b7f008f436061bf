#include "common/file/CZemtarFile.h"
#include "tests/support/TestFolder.h"

#include <QUuid>
#include <gtest/gtest.h>

namespace Zemtar {
namespace {

struct File : testing::Test, TestFolder
{
};

TEST_F(File, CleansSeparatorsAndMakesFolders)
{
    EXPECT_EQ(CZemtarFile::FixFileNameSlashes("//a\\\\b///c.txt", false), CZemtarString("/a/b/c.txt"));
    CZemtarFile::FixFileNameSlashes(host("m/n//x.png"), true);
    EXPECT_TRUE(CZemtarFile::DirectoryExists(host("m/n")));
    EXPECT_EQ(CZemtarFile::CreateFolder(host("x/y")), host("x/y/"));
    EXPECT_EQ(CZemtarFile::CreateFolder("/"), CZemtarString("/"));
    write("file", "");
    EXPECT_EQ(CZemtarFile::CreateFolder(host("file/below")), CZemtarString(""));
    EXPECT_FALSE(CZemtarFile::DirectoryExists(host("file")) || CZemtarFile::FileExists(host("x")));
    // Of all tests this one cleans separators.
    EXPECT_TRUE(CZemtarFile::IsFile(host("\\file")) && !CZemtarFile::FileExists(host("\\file")));
}

TEST_F(File, CopiesRenamesAndDeletes)
{
    const CZemtarString one = toHost(write("one", "1"));
    const CZemtarString two = toHost(write("two", "2"));
    ASSERT_TRUE(QFile::link(toQt(one), path("link")));
    const std::tuple<const char*, const char*, bool, bool, const char*, const char*> cases[] = {
        {"none", "./none", true, true, "none", "(none)"}, // equal paths come first
        {"none", "one", true, false, "one", "1"},
        {"one", "two", false, true, "two", "2"},
        {"one", "two", true, true, "two", "1"},
        {"one", "new/folder\\three", false, true, "new/folder/three", "1"},
        {"one", "two/below", true, false, "two", "1"}, // a file where a folder is needed
        {"one", "new", true, false, "one", "1"},       // onto a folder
        {"link", "one", true, true, "one", "1"},       // onto what the source links to: nothing is lost
        {"new", "one", true, false, "one", "1"},       // a folder costs no file
        {"one", "link", true, true, "link", "1"},      // a link gives way to a file of its own
    };
    for (const auto& [from, to, overwrite, result, file, contents] : cases) {
        EXPECT_EQ(CZemtarFile::FileCopy(host(from), host(to), overwrite), result) << from << " to " << to;
        EXPECT_EQ(read(path(file)), contents) << from << " to " << to;
    }
    EXPECT_FALSE(QFileInfo(path("link")).isSymLink());
    EXPECT_EQ(QDir(path("")).entryList(QDir::Files | QDir::Hidden), QStringList({"link", "one", "two"}));
    EXPECT_FALSE(CZemtarFile::FileRename(one, two) || CZemtarFile::FileRename(host("new"), host("newer")));
    EXPECT_TRUE(CZemtarFile::FileRename(one, host("four")) && CZemtarFile::DeleteTheFile(host("/four")));
    EXPECT_FALSE(CZemtarFile::DeleteTheFile(""));
}

TEST(FileNames, ExtensionsAndForbiddenCharacters)
{
    const char* const cases[][3] = {
        {"part", "Wavefront (*.OBJ)", "part.obj"},
        {"part", "(*.png *.JPG)", "part.jpg"},
        {"part", "*.STL,*.X y,)", "part.x"},
        {"part.stl", ".obj", "part.stl"},
        {"part", "", "part"},
        {"part", "x.)", "part"},
        {"part", "STEP (*.stp) / all", "part.stp"},
    };
    for (const auto& [name, extension, expected] : cases) {
        EXPECT_EQ(CZemtarFile::AddExtensinoToFile(name, extension), CZemtarString(expected)) << extension;
    }
    EXPECT_EQ(CZemtarFile::FixShortFileName(" a*\\/:<\">|b ", "_"), CZemtarString("a________b"));
    EXPECT_EQ(CZemtarFile::FixShortFileName("a*b", "?x"), CZemtarString("a?xxb")); // pass after pass
}

TEST(FileNames, EmptyOnesAreQuiet)
{
    static QStringList warnings;
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { warnings += text; });
    EXPECT_FALSE(CZemtarFile::FileExists("") || CZemtarFile::IsFile("") || CZemtarFile::IsDirectory(""));
    EXPECT_FALSE(CZemtarFile::FileRename("", "x") || CZemtarFile::FileRename("/", "") ||
                 CZemtarFile::FileCopy("", "x", true) || CZemtarFile::DeleteTheFile(""));
    EXPECT_TRUE(CZemtarFile::FileCopy("", "", true)); // equal paths
    EXPECT_FALSE(CZemtarFile::OpenUrl(""));
    CZemtarFile::DirectoryExists("");
    CZemtarFile::CreateFolder("");
    CZemtarFile::FixFileNameSlashes("", true);
    CZemtarFile::HaveSamePath("", "");
    qInstallMessageHandler(nullptr);
    EXPECT_EQ(warnings, QStringList());
}

TEST_F(File, TemporaryFolderAndProbe)
{
    qputenv("ZEMTAR_TEMP_DIR", "/scratch/x");
    const QString name = toQt(CZemtarFile::GetTempFullFileName("png"));
    EXPECT_EQ(name, "/scratch/x" + QUuid::fromString(name.mid(10, 38)).toString() + ".png");
    qunsetenv("ZEMTAR_TEMP_DIR");
    qputenv("TMPDIR", root.path().toUtf8());
    EXPECT_EQ(toQt(CZemtarFile::TheTempFolderName()), root.path() + "/");
    EXPECT_EQ(QFileInfo(toQt(CZemtarFile::CreateTempFolder())).dir(), QDir(root.path()));

    EXPECT_TRUE(CZemtarFile::IsDirectoryWritable(host("deep/%1/")) && QDir(path("deep/%1")).isEmpty());
    write("file", "");
    EXPECT_FALSE(CZemtarFile::IsDirectoryWritable(host("file/")));
    EXPECT_TRUE(CZemtarFile::IsDirectoryWritable(host("file"))); // the probe lies beside it
}

} // namespace
} // namespace Zemtar
