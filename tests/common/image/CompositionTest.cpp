#include "common/image/ZemtarImage.h"

#include <gtest/gtest.h>

#include <climits>

namespace Zemtar {
namespace {

QImage filled(int width, int height, const QColor& color)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(color);
    return image;
}

TEST(Composition, CombineBlendsInItsModes)
{
    const QImage grey = filled(4, 4, QColor(128, 128, 128)), red = filled(2, 2, QColor(200, 0, 0));
    const std::pair<int, QRgb> modes[] = {{0, qRgb(200, 0, 0)},
                                          {1, qRgb(128, 128, 128)},
                                          {2, qRgb(255, 128, 128)},
                                          {3, qRgb(100, 0, 0)},
                                          {99, qRgb(200, 0, 0)}};
    for (const auto& [mode, expected] : modes) {
        for (const bool scale : {false, true}) {
            testing::internal::CaptureStdout();
            const QImage result =
                ZemtarImage::CombineImages(grey, red, ZemtarImage::ImageBelndMode(mode), scale);
            EXPECT_EQ("Combining Images...\n", testing::internal::GetCapturedStdout());
            EXPECT_EQ(expected, result.pixel(1, 1)) << mode;
            EXPECT_EQ(scale ? expected : grey.pixel(3, 3), result.pixel(3, 3)) << mode;
        }
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(grey, ZemtarImage::CombineImages(grey, QImage(), ZemtarImage::ImageBlendAdd, true));
    EXPECT_EQ(red, ZemtarImage::CombineImages(QImage(), red, ZemtarImage::ImageBlendAdd, true));
    EXPECT_EQ("Combining Images...\nCombining Images...\n", testing::internal::GetCapturedStdout());
}

TEST(Composition, BorderLineKeepsItsUnscaledColour)
{
    for (const QImage::Format format :
         {QImage::Format_ARGB32, QImage::Format_Indexed8, QImage::Format_RGB888}) {
        QImage image = filled(10, 8, Qt::white).convertToFormat(format);
        ZemtarImage::AddBoarderToImage(image, 1, CZemtarColor(1.0, 0.0, 0.9, 0.0));
        for (const auto& [x, y] : {std::pair(0, 0), {9, 7}, {9, 0}, {5, 7}, {0, 4}}) {
            EXPECT_EQ(qRgb(1, 0, 0), image.pixel(x, y)) << x << ' ' << y;
        }
        EXPECT_EQ(qRgb(255, 255, 255), image.pixel(5, 4));
    }
    QImage null;
    ZemtarImage::AddBoarderToImage(null, 1, CZemtarColor());
    EXPECT_TRUE(null.isNull());
    for (const QImage::Format format : {QImage::Format_Mono, QImage::Format_MonoLSB}) { // painted as they are
        QImage image(10, 8, format);
        image.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
        image.fill(0);
        ZemtarImage::AddBoarderToImage(image, 1, CZemtarColor(1.0, 0.0, 0.9, 0.0));
        EXPECT_EQ(format, image.format());
        EXPECT_EQ((std::array{qRgb(0, 0, 0), qRgb(255, 255, 255)}),
                  (std::array{image.pixel(9, 3), image.pixel(5, 4)}));
    }
    QImage image = filled(9, 9, Qt::white);
    for (const double channel : {256.0, -1.0, 1e300}) { // an invalid colour paints nothing
        ZemtarImage::AddBoarderToImage(image, 3, CZemtarColor(channel, 0.0, 200.0, 1.0));
        EXPECT_EQ(filled(9, 9, Qt::white), image) << channel;
    }
    ZemtarImage::AddBoarderToImage(image, INT_MIN, CZemtarColor(200.0, 0.0, 0.0, 1.0)); // the thinnest line
    EXPECT_EQ(qRgb(200, 0, 0), image.pixel(4, 0));
    EXPECT_EQ(qRgb(255, 255, 255), image.pixel(4, 1));
}

TEST(Composition, DefaultBorderFramesTheImage)
{
    const QImage framed =
        ZemtarImage::AddDefaultBorder(filled(200, 100, QColor(255, 0, 0, 100)), filled(7, 7, Qt::blue));
    EXPECT_EQ(QSize(200, 100), framed.size());
    // 181 x 91 at (9, 4), in place of the border, alpha included
    for (const auto& [x, y] : {std::pair(8, 50), {190, 50}, {100, 3}, {100, 95}}) {
        EXPECT_EQ(qRgb(0, 0, 255), framed.pixel(x, y)) << x << ' ' << y;
    }
    for (const auto& [x, y] : {std::pair(9, 4), {189, 94}}) {
        EXPECT_EQ(100, qAlpha(framed.pixel(x, y))) << x << ' ' << y;
    }
    EXPECT_TRUE(ZemtarImage::AddDefaultBorder(QImage(), framed).isNull());
    EXPECT_EQ(QSize(3, 2), ZemtarImage::AddDefaultBorder(filled(3, 2, Qt::red), QImage()).size());
}

TEST(Composition, MarkGoesToItsPlace)
{
    const std::pair<int, QPoint> places[] = {{0, {0, 0}},    {1, {350, 150}}, {2, {150, 0}},
                                             {3, {175, 75}}, {4, {0, 150}},   {-3, {350, 150}}};
    for (const auto& [location, corner] : places) {
        QImage image = filled(400, 200, Qt::white);
        ZemtarImage::AddMarkToImage(image, filled(50, 50, QColor(0, 0, 0, 51)),
                                    ZemtarImage::enumMarkImageLocation(location));
        QImage expected = filled(400, 200, Qt::white);
        for (int i = 0; i < 2500; ++i) {
            expected.setPixel(corner + QPoint(i % 50, i / 50), qRgb(204, 204, 204));
        }
        EXPECT_EQ(expected, image) << location;
    }
    QImage narrow = filled(10, 10, Qt::white), null;
    ZemtarImage::AddMarkToImage(narrow, filled(9, 30, Qt::black), ZemtarImage::MarkImageCenter);
    EXPECT_EQ((std::array{qRgb(0, 0, 0), qRgb(255, 255, 255)}),
              (std::array{narrow.pixel(0, 5), narrow.pixel(9, 5)}));
    ZemtarImage::AddMarkToImage(null, narrow, ZemtarImage::MarkImageCenter);
    ZemtarImage::AddMarkToImage(narrow, narrow, ZemtarImage::MarkImageTopLeft);
    EXPECT_TRUE(null.isNull());
}

} // namespace
} // namespace Zemtar
