#include "bench/PlainTwins.h"
#include "common/image/ImageFilters.h"
#include "common/image/ZemtarImage.h"

#include <gtest/gtest.h>

namespace Zemtar {
namespace {

using PlainTwins::haveSameBytes;
using PlainTwins::kFormats;

struct NamedFilter
{
    const char* name;
    PlainTwins::Filter fast, plain;
};

const NamedFilter kFilters[] = {
    {"brightness", ZemtarImage::brightness, PlainTwins::perPixel(PlainTwins::brightness)},
    {"greyScale", [](auto s, auto t, int) { ZemtarImage::greyScale(s, t); },
     PlainTwins::perPixel(PlainTwins::greyScale)},
    {"warm", ZemtarImage::warm, PlainTwins::perPixel(PlainTwins::warm)},
    {"cool", ZemtarImage::cool, PlainTwins::perPixel(PlainTwins::cool)},
    {"saturation", ZemtarImage::saturation, PlainTwins::perPixel(PlainTwins::saturation)},
    {"sharpen", [](auto s, auto t, int) { ZemtarImage::sharpen(s, t); }, PlainTwins::sharpen}};

int warnings = 0;

struct Filters : testing::Test
{
    /// Counts Qt's warnings in place of printing them.
    void SetUp() override
    {
        previous =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++warnings; });
    }
    void TearDown() override { qInstallMessageHandler(previous); }
    QtMessageHandler previous = nullptr;
};

TEST_F(Filters, EqualTheirPlainTwinsInEveryFormatAndSize)
{
    const QSize sizes[] = {{37, 29}, {41, 33}, {20, 10}, {3, 3}, {2, 5}, {1, 1}};
    for (const NamedFilter& filter : kFilters) {
        for (const QImage::Format format : kFormats) {
            const int delta = int(format) % 2 == 0 ? 60 : -45;
            QImage source = PlainTwins::randomImage(37, 29, format);
            // Other targets than the source's own format: one plain, one that rounds.
            for (const QImage::Format other :
                 {format, QImage::Format_ARGB32, QImage::Format_ARGB32_Premultiplied}) {
                for (const QSize& size : sizes) {
                    QImage fast = PlainTwins::randomImage(size.width(), size.height(), other),
                           plain = fast.copy();
                    warnings = 0;
                    filter.fast(&source, &fast, delta);
                    EXPECT_EQ(0, warnings) << filter.name;
                    filter.plain(&source, &plain, delta);
                    EXPECT_TRUE(haveSameBytes(fast, plain))
                        << filter.name << ' ' << format << " to " << other << ' ' << size.width();
                }
            }
            // In place: sharpening reads what it has written. A copy that shares the pixels must not change.
            QImage plain = source.copy(), shared = source;
            filter.fast(&source, &source, delta);
            filter.plain(&plain, &plain, delta);
            EXPECT_TRUE(haveSameBytes(source, plain)) << filter.name << " in place " << format;
            filter.plain(&(plain = shared.copy()), &plain, delta);
            filter.fast(&shared, &shared, delta);
            EXPECT_TRUE(haveSameBytes(shared, plain)) << filter.name << " shared " << format;
        }
    }
}

TEST_F(Filters, SaturationEqualsQtOnColoursOfEveryHue)
{
    for (const int delta : {-300, -90, -1, 0, 33, 255, INT_MAX}) {
        QImage fast(52 * 52, 52, QImage::Format_RGB32);
        for (int i = 0; i < 52 * 52 * 52; ++i) { // 0, 5, 10 .. 255 in each channel
            fast.setPixel(i % (52 * 52), i / (52 * 52), qRgb(i % 52 * 5, i / 52 % 52 * 5, i / (52 * 52) * 5));
        }
        QImage plain = fast.copy();
        ZemtarImage::saturation(&fast, &fast, delta);
        PlainTwins::perPixel(PlainTwins::saturation)(&plain, &plain, std::clamp(delta, -255, 255));
        EXPECT_TRUE(haveSameBytes(fast, plain)) << delta;
    }
}

TEST_F(Filters, TakeNullImagesAndPalettesQuietly)
{
    QImage null, colour = PlainTwins::randomImage(5, 4, QImage::Format_RGB32);
    const QImage before = colour.copy();
    for (const NamedFilter& filter : kFilters) {
        filter.fast(nullptr, &colour, 1);
        filter.fast(&colour, nullptr, 1);
        filter.fast(&colour, &null, 1);
        EXPECT_TRUE(haveSameBytes(colour, before)) << filter.name;
    }
    ZemtarImage::warm(&null, &colour, 7); // all outside the source: black, as an invalid colour's channels
    EXPECT_EQ(qRgb(7, 7, 0), colour.pixel(2, 2));
    ZemtarImage::edgify(nullptr);
    EXPECT_TRUE(ZemtarImage::bloomed(&null, 1, 1, 1, false).isNull());
}

TEST_F(Filters, EdgifyEqualsItsTwinAndLeavesOtherFormatsAlone)
{
    for (const QImage::Format format : kFormats) {
        for (const QSize& size : {QSize(61, 47), QSize(3, 3), QSize(2, 9), QSize(9, 2)}) {
            QImage fast = PlainTwins::randomImage(size.width(), size.height(), format), plain = fast.copy();
            if (format >= QImage::Format_RGB32 && format <= QImage::Format_ARGB32_Premultiplied) {
                PlainTwins::edgify(&plain);
            }
            ZemtarImage::edgify(&fast);
            EXPECT_TRUE(haveSameBytes(fast, plain)) << format << ' ' << size.width();
        }
    }
    // A grey ramp whose gradients are smaller reaches the table; |gx| = |gy| gives its unfilled diagonal.
    QImage ramp(64, 64, QImage::Format_RGB32), plain;
    for (int i = 0; i < 64 * 64; ++i) {
        ramp.setPixel(i % 64, i / 64, qRgb(i % 64 * 2, i % 64 * 2, i / 64 % 3 + i / 64));
    }
    PlainTwins::edgify(&(plain = ramp.copy()));
    ZemtarImage::edgify(&ramp);
    EXPECT_TRUE(haveSameBytes(ramp, plain));
    QImage corner(3, 3, QImage::Format_RGB32);
    corner.fill(Qt::black);
    corner.setPixel(2, 0, qRgb(100, 100, 100));
    ZemtarImage::edgify(&corner);
    EXPECT_EQ(qRgb(0, 0, 0), corner.pixel(1, 1));
}

TEST_F(Filters, BlurEqualsItsTwinForEveryRadiusAndRectangle)
{
    for (const QSize& size : {QSize(37, 29), QSize(1, 8), QSize(19, 1), QSize(5, 16)}) {
        const QImage image = PlainTwins::randomImage(size.width(), size.height(), QImage::Format_ARGB32);
        for (int radius = -1; radius <= 19; ++radius) {
            for (const QRect& rect : {image.rect(), QRect(3, 2, 11, 13) & image.rect()}) {
                EXPECT_TRUE(haveSameBytes(ImageFilters::blurred(image, rect, radius),
                                          PlainTwins::blurred(image, rect, radius)))
                    << size.width() << " radius " << radius;
            }
        }
        EXPECT_EQ(image, ImageFilters::blurred(image, image.rect(), -5));
    }
    const QImage grey = PlainTwins::randomImage(9, 9, QImage::Format_Grayscale8);
    EXPECT_EQ(QImage::Format_RGB32, ImageFilters::blurred(grey, QRect(-5, -5, 99, 99), 4).format());
}

TEST_F(Filters, BloomIsBrightenedBlurInOverlayMode)
{
    QImage image = PlainTwins::randomImage(23, 17, QImage::Format_RGB32);
    for (const int delta : {-100, 0, 40, 300, INT_MIN, INT_MAX}) {
        const QImage fast = ImageFilters::brightened(image, delta);
        for (int i = 0; i < 23 * 17; ++i) {
            const auto level = [&](int channel) {
                return unsigned(std::min<qint64>(qint64(channel) + delta, 255));
            };
            const QRgb p = image.pixel(i % 23, i / 23);
            EXPECT_EQ(0xff000000 | level(qRed(p)) << 16 | (level(qGreen(p)) << 8 & 0xffff) | level(qBlue(p)),
                      reinterpret_cast<const QRgb*>(fast.constScanLine(i / 23))[i % 23]);
        }
    }
    QImage expected = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&expected);
    painter.setCompositionMode(QPainter::CompositionMode_Overlay);
    painter.setOpacity(100 / 256.0);
    painter.drawImage(0, 0, ImageFilters::brightened(PlainTwins::blurred(image, image.rect(), 5), 20));
    painter.end();
    EXPECT_EQ(expected, ZemtarImage::bloomed(&image, 5, 20, 100, true));
    EXPECT_EQ(expected, ZemtarImage::bloomed(&image, 5, 20, 100, false));
}

} // namespace
} // namespace Zemtar
