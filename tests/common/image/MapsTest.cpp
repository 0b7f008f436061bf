#include "bench/PlainTwins.h"
#include "common/image/ImageMaps.h"
#include "common/image/ZemtarImage.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>

namespace Zemtar {
namespace {

using PlainTwins::haveSameBytes;

struct Maps : testing::Test, TestFolder
{
};

/// What the map writers make of palettes and single channels before they begin.
QImage widened(const QImage& image)
{
    const bool isNarrow = image.depth() <= 8 || image.format() == QImage::Format_Grayscale16;
    return !isNarrow ? image
                     : image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32
                                                                     : QImage::Format_RGB32);
}

TEST_F(Maps, EqualTheirPlainTwinsInEveryFormatAndSize)
{
    for (const QImage::Format format : PlainTwins::kFormats) {
        for (const QSize& size : {QSize(37, 29), QSize(1, 1), QSize(2, 1), QSize(1, 5), QSize(16, 3)}) {
            const QImage image = PlainTwins::randomImage(size.width(), size.height(), format);
            const QImage plain = widened(image);
            const auto expectSame = [&](const QImage& map, const QImage& twin, const char* name) {
                EXPECT_TRUE(haveSameBytes(map, twin)) << name << ' ' << format << ' ' << size.width();
            };
            for (const bool invert : {false, true}) {
                for (const double strength : {0.01, 2.0, -0.05}) {
                    expectSame(ImageMaps::normalMap(image, strength, invert),
                               PlainTwins::normalMap(plain, strength, invert), "normal");
                }
                expectSame(ImageMaps::heightMap(image, 50, 25, invert),
                           PlainTwins::heightMap(plain, 50, 25, invert), "height");
                expectSame(ImageMaps::heightMap(image, 70, 40, invert),
                           PlainTwins::heightMap(plain, 70, 40, invert), "steep height");
            }
            expectSame(ImageMaps::tileableNormalMap(image), PlainTwins::tileableMap(image), "tileable");
        }
    }
}

TEST_F(Maps, SingleStepsKeepTheirOddRules)
{
    EXPECT_EQ(1.0 / 255.0, ZemtarImage::Intensity(QColor(Qt::white))); // divided by 255 once more
    EXPECT_EQ(3, ZemtarImage::Clamp(5, 3, 1));
    EXPECT_EQ(1, ZemtarImage::Clamp(0, 3, 1));
    EXPECT_EQ(2, ZemtarImage::Clamp(2, 3, 1));
    EXPECT_EQ(1, ZemtarImage::Clamp(2, 1, 3)); // the upper bound is looked at first
    const std::pair<double, int> components[] = {{-1, 0}, {0, 127}, {1, 255}, {-7, 0}, {7, 255}, {0.5, 191}};
    for (const auto& [component, channel] : components) {
        EXPECT_EQ(channel, ZemtarImage::MapComponent(component)) << component;
    }
    const double flat[3][3] = {{1, 1, 1}, {1, 9, 1}, {1, 1, 1}};
    EXPECT_EQ(QVector3D(0, 0, 1), ZemtarImage::SobelOperator(flat, 1));
    EXPECT_EQ(QVector3D(), ZemtarImage::SobelOperator(flat, std::numeric_limits<double>::infinity()));
    const double slope[3][3] = {
        {0, 0, 1}, {0, 0, 1}, {3, 3, 4}}; // x is the vertical gradient, y the horizontal
    EXPECT_EQ(QVector3D(12, 4, 1) / std::sqrt(161.0f), ZemtarImage::SobelOperator(slope, 1));

    unsigned short table[256];
    ZemtarImage::ContrastLookup(table, 1.0);
    EXPECT_EQ((std::array<int, 4>{0, 1, 3, 255}),
              (std::array<int, 4>{table[1], table[2], table[3], table[255]}));
    EXPECT_EQ(255 * 128 - 20, std::accumulate(table, table + 256, 0)); // 20 entries are one low
    ZemtarImage::ContrastLookup(table, 0.0);
    EXPECT_EQ(std::vector<unsigned short>(256, 127), std::vector<unsigned short>(table, table + 256));
}

TEST_F(Maps, FilesAreReadAndWritten)
{
    const QImage image = PlainTwins::randomImage(40, 20, QImage::Format_ARGB32);
    ASSERT_TRUE(image.save(path("é.png")));
    EXPECT_TRUE(ZemtarImage::NormalMapFromTexture(host("é.png"), host("normal.png"), 2.0, true));
    EXPECT_EQ(PlainTwins::normalMap(image, 2.0, true), QImage(path("normal.png")));
    EXPECT_TRUE(ZemtarImage::HeightMapFromTexture(host("é.png"), host("height.png"), 50, 25, false));
    EXPECT_EQ(PlainTwins::heightMap(image, 50, 25, false), QImage(path("height.png")));
    EXPECT_TRUE(ZemtarImage::GenerateNormalFromTexture(host("é.png"), host("tile.jpg")) == host("tile.png"));
    EXPECT_EQ(PlainTwins::tileableMap(image), QImage(path("tile.png")));

    const QString temporary = toQt(ZemtarImage::GenerateNormalFromTexture(host("é.png"), ""));
    EXPECT_TRUE(temporary.endsWith("}.png") && QFile::remove(temporary));
    QImage large(5000, 2500, QImage::Format_Mono);
    large.fill(1);
    ASSERT_TRUE(large.save(path("large.png")));
    ZemtarImage::GenerateNormalFromTexture(host("large.png"), host("limited"));
    const QImage map(path("limited.png"));
    EXPECT_EQ(QSize(4096, 2048), map.size());
    EXPECT_EQ(qRgb(127, 127, 255), map.pixel(4095, 7));
}

TEST_F(Maps, FailuresLeaveNoFile)
{
    for (const char* in : {"", "missing.png"}) {
        const CZemtarString name = *in == 0 ? CZemtarString() : host(in);
        EXPECT_FALSE(ZemtarImage::NormalMapFromTexture(name, host("out.png"), 1, false));
        EXPECT_FALSE(ZemtarImage::HeightMapFromTexture(name, host("out.png"), 1, 1, false));
        EXPECT_TRUE(ZemtarImage::GenerateNormalFromTexture(name, host("out.png")) == (*in == 0 ? "" : "0"));
    }
    ASSERT_TRUE(PlainTwins::randomImage(9, 9, QImage::Format_RGB32).save(path("in.png")));
    for (const char* out : {"out", "out.unknown", "missing folder/out.png"}) {
        EXPECT_FALSE(ZemtarImage::NormalMapFromTexture(host("in.png"), host(out), 1, false)) << out;
    }
    EXPECT_EQ(QStringList("in.png"), QDir(path("")).entryList(QDir::Files | QDir::Hidden));
    // Wild numbers stay numbers: nothing to expect but a map.
    for (const double wild : {0.0, std::nan(""), HUGE_VAL, -1e300}) {
        EXPECT_TRUE(ZemtarImage::NormalMapFromTexture(host("in.png"), host("wild.png"), wild, false));
        EXPECT_TRUE(ZemtarImage::HeightMapFromTexture(host("in.png"), host("wild.png"), wild, wild, true));
    }
}

} // namespace
} // namespace Zemtar
