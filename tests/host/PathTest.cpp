// File names in host strings and textures.

#include "host/CZemtarString.h"
#include "host/CZemtarTexture.h"

#include <gtest/gtest.h>

namespace Zemtar {
namespace {

TEST(Path, TakesNamesApart)
{
    struct Case
    {
        const char* name;
        const char* extension;
        const char* withoutExtension;
        const char* withoutPath;
        const char* path;
    };
    const Case cases[] = {
        {"/models/engine.step", "step", "/models/engine", "engine.step", "/models"},
        {"/a.b/engine", "", "/a.b/engine", "engine", "/a.b"},
        {"C:\\cad\\Teil.v2.IGS", "IGS", "C:\\cad\\Teil.v2", "Teil.v2.IGS", ""},
        {"part", "", "part", "part", ""},
        {"/part.stp", "stp", "/part", "part.stp", "/"},
        {"//part.stp", "stp", "//part", "part.stp", "/"},
        {".obj", "obj", "", ".obj", ""},
        {"part.", "", "part", "part.", ""},
        {"/a/..", "", "/a/..", "..", "/a"},
        {"/a/b.d/", "", "/a/b.d/", "", "/a/b.d"},
        {"Wavefront (*.OBJ)", "OBJ)", "Wavefront (*", "Wavefront (*.OBJ)", ""},
        {"/文件夹/零件😀.stp", "stp", "/文件夹/零件😀", "零件😀.stp", "/文件夹"},
        {"", "", "", "", ""},
    };
    for (const Case& c : cases) {
        const CZemtarString name(c.name);
        EXPECT_EQ(name.Extension().toStdString(), c.extension) << c.name;
        EXPECT_EQ(CZemtarString(name).RemoveExt().toStdString(), c.withoutExtension) << c.name;
        EXPECT_EQ(CZemtarString(name).RemovePath().toStdString(), c.withoutPath) << c.name;
        EXPECT_EQ(name.Path(L'/').toStdString(), c.path) << c.name;
    }
}

TEST(Path, PutsNamesTogether)
{
    const CZemtarString name("old/part.obj");
    EXPECT_EQ(CZemtarString(name).SetPath("/data", '/').toStdString(), "/data/part.obj");
    EXPECT_EQ(CZemtarString(name).SetPath("/data/", '/').toStdString(), "/data/part.obj");
    EXPECT_EQ(CZemtarString(name).SetPath("C:\\data\\", '/').toStdString(), "C:\\data\\part.obj");
    EXPECT_EQ(CZemtarString(name).SetPath("", '/').toStdString(), "part.obj");

    wchar_t png[] = L"png";
    EXPECT_EQ(CZemtarString("/a.b/x").ReplaceExtension(png).toStdString(), "/a.b/x.png");
    EXPECT_EQ(CZemtarString("x.PNG").ReplaceExtension(L".jpg").toStdString(), "x.jpg");
    EXPECT_EQ(CZemtarString("x.y.hdr").ReplaceExtension(L"").toStdString(), "x.y");
    EXPECT_EQ(CZemtarString("a\\b/c").ReplaceSlashWithSystemSlash().toStdString(), "a/b/c");
}

TEST(Path, StepsThroughFolders)
{
    const char* const cases[][3] = {
        {"/tmp", "{id}", "/tmp/{id}"},
        {"/tmp/", "{id}/", "/tmp/{id}"},
        {"", "{id}", "{id}"},
        {"/tmp/x/", "..", "/tmp"},
        {"/tmp", "..", "/"},
        {"/", "..", "/"},
        {"/a/b", "../c/./d", "/a/c/d"},
        {"a", "..", ""},
        {"", "../x", "../x"},
        {"..", "..", "../.."},
        {"/a", "/b/c", "/b/c"},
        {"/a/b", "", "/a/b"},
    };
    for (const auto& [from, step, to] : cases) {
        EXPECT_EQ(CZemtarString(from).CD(step).toStdString(), to) << from << " cd " << step;
    }
}

TEST(Path, TextureKeepsNameAndFolderApart)
{
    CZemtarTexture texture("/tex/wood/oak.png");
    EXPECT_EQ(texture.Path().toStdString(), "/tex/wood/");
    EXPECT_EQ(texture.Filename().toStdString(), "oak.png");
    EXPECT_EQ(texture.FullFilename(false).toStdString(), "/tex/wood/oak.png");

    texture.SetFilename("sub/ash.png", true);
    texture.SetPath("/tex");
    EXPECT_EQ(texture.FullFilename(false).toStdString(), "/tex/sub/ash.png");
    texture.SetFilename("/elsewhere/elm.png", true);
    EXPECT_EQ(texture.FullFilename(false).toStdString(), "/elsewhere/elm.png");
    EXPECT_EQ(texture.Path().toStdString(), "/tex");
    texture.SetRunTimeFilename("/cache/1.png");
    EXPECT_EQ(texture.FullFilename(true).toStdString(), "/cache/1.png");
    EXPECT_EQ(texture.FullFilename(false).toStdString(), "/elsewhere/elm.png");
    EXPECT_TRUE(CZemtarTexture().FullFilename(true).IsEmpty());
}

} // namespace
} // namespace Zemtar
