#include "common/image/ZemtarImage.h"
#include "host/CZemtarTexture.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <climits>
#include <numeric>

namespace Zemtar {
namespace {

struct RawPixels : testing::Test, TestFolder
{
    /// Writes the buffer and reads the file back; a null image when there is no file.
    QImage create(void* pixels, int rows, int columns, int format)
    {
        QFile::remove(name);
        ZemtarImage::createImage(pixels, rows, columns, toHost(name), ZemtarImage::PixelDataTypeUnsignedByte,
                                 ZemtarImage::PixelFormat(format));
        return QImage(name);
    }

    /// The first bytes of the image's pixels; nothing for a null pointer.
    QByteArray pixelsOf(int format, int count)
    {
        const std::unique_ptr<unsigned char, decltype(&std::free)> pixels(
            ZemtarImage::getImageAsRawData(toHost(name), ZemtarImage::PixelFormat(format), height, width),
            &std::free);
        return pixels ? QByteArray(reinterpret_cast<const char*>(pixels.get()), count) : QByteArray();
    }

    const QString name = path("image.PNG");
    int height = -1;
    int width = -1;
};

TEST_F(RawPixels, AreWrittenAsEachFormatLiesInMemory)
{
    std::array<unsigned char, 64> bytes{};
    for (const int offset : {0, 1}) { // A caller's buffer need not be aligned.
        std::iota(bytes.begin() + offset, bytes.end(), static_cast<unsigned char>(0));
        const QImage rgb = create(bytes.data() + offset, 2, 5, ZemtarImage::PixelFormatRGB);
        EXPECT_EQ(rgb.size(), QSize(5, 2));
        EXPECT_EQ(rgb.pixel(4, 0), qRgb(12, 13, 14));
        EXPECT_EQ(rgb.pixel(0, 1), qRgb(16, 17, 18)); // one byte of padding
        const QImage rgba = create(bytes.data() + offset, 2, 3, ZemtarImage::PixelFormatRGBA);
        EXPECT_EQ(rgba.size(), QSize(3, 2));
        EXPECT_EQ(rgba.pixel(0, 1), qRgba(0, 1, 2, 3)); // bottom row first
        EXPECT_EQ(rgba.pixel(2, 0), qRgba(20, 21, 22, 23));
    }
    for (const auto& [rows, columns, format] : {std::array{2, 2, 2},
                                                {2, 2, -1},
                                                {0, 2, 0},
                                                {2, -1, 1},
                                                {INT_MAX, INT_MAX, 0},
                                                {INT_MAX, INT_MAX, 1}}) {
        create(bytes.data(), rows, columns, format);
        EXPECT_FALSE(QFile::exists(name)) << rows << " x " << columns << ", format " << format;
    }
    EXPECT_TRUE(create(nullptr, 2, 2, ZemtarImage::PixelFormatRGB).isNull());
}

TEST_F(RawPixels, AreReadAsWordsOrBytesTopDown)
{
    QImage image(1, 2, QImage::Format_ARGB32);
    image.fill(qRgba(10, 20, 30, 40));
    image.setPixel(0, 1, qRgba(1, 2, 3, 4));
    image.save(name);
    const std::uint32_t words[] = {0x280A141E, 0x04010203};
    EXPECT_EQ(pixelsOf(ZemtarImage::PixelFormatRGBA, 8), QByteArray(reinterpret_cast<const char*>(words), 8));
    EXPECT_EQ(pixelsOf(ZemtarImage::PixelFormatRGB888, 8), QByteArray("\x0A\x14\x1E\0\1\2\3\0", 8));
    EXPECT_TRUE(pixelsOf(ZemtarImage::PixelFormatRGB, 8).isNull() && height == 2 && width == 1);
    QFile::resize(name, 20); // cut inside the header
    EXPECT_TRUE(pixelsOf(ZemtarImage::PixelFormatRGBA, 8).isNull() && height == 0 && width == 0);
}

struct TexturePath : testing::Test, TestFolder
{
};

TEST_F(TexturePath, FirstPlaceWithTheFileWins)
{
    for (const char* name : {"a.png", "own/a.png", "first/sub/b.png", "second/sub/b.png", "second/c.png"}) {
        write(name, "");
    }
    const auto full = [&](QString name) { return name.replace("$", path("x").chopped(2)); };
    QStringList folders = {"", full("$/none"), full("$/first/"), full("$/second")};
    ZemtarImage::RegisterTexturePaths(folders);
    // Name and folder before and after; whether a registered folder was needed.
    const std::tuple<const char*, const char*, const char*, const char*, bool> cases[] = {
        {"", "$/own", "", "$/own", false},
        {"$\\a.png", "$/own", "$/a.png", "", false},              // as it stands
        {"a.png", "$/own", "a.png", "$/own", false},              // in its folder
        {"x/y\\a.png", "$\\own", "$/own/a.png", "$\\own", false}, // bare in its folder, which keeps its text
        {"sub\\b.png", "$/own", "sub/b.png", "$/first/", true},   // the first of two
        {"///c.png", "", "///c.png", "$/second/", true},          // a separator less at each folder tried
        {"d.png", "$\\own", "d.png", "$\\own", false},
    };
    for (const auto& [name, folder, fixedName, fixedFolder, registered] : cases) {
        CZemtarTexture texture;
        texture.SetFilename(toHost(full(name)), true);
        texture.SetPath(toHost(full(folder)));
        texture.SetRunTimeFilename("cached.png");
        ZemtarImage::FixTexturePath(texture);
        EXPECT_EQ(toQt(texture.Filename()), full(fixedName));
        EXPECT_EQ(toQt(texture.Path()), full(fixedFolder)) << name;
        EXPECT_EQ(texture.RunTimeFilename().IsEmpty(), registered) << name;
    }
    QString known = full("$/SECOND");
    ZemtarImage::RegisterTexturePath(known);
    EXPECT_EQ(ZemtarImage::texturePaths, folders);
}

} // namespace
} // namespace Zemtar
