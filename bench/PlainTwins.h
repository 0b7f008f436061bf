#pragma once

#include <QColor>
#include <QImage>
#include <QRandomGenerator>

#include <array>
#include <cmath>
#include <cstring>
#include <functional>

/// The pixel kernels once more in the plainest form, pixel by pixel through QImage's own access: the baseline
/// of the benchmark, and the reference that the fast ones must equal bit by bit.
namespace Zemtar::PlainTwins {

inline constexpr QImage::Format kFormats[] = {QImage::Format_Mono,
                                              QImage::Format_MonoLSB,
                                              QImage::Format_Indexed8,
                                              QImage::Format_RGB32,
                                              QImage::Format_ARGB32,
                                              QImage::Format_ARGB32_Premultiplied,
                                              QImage::Format_RGB16,
                                              QImage::Format_ARGB8565_Premultiplied,
                                              QImage::Format_RGB666,
                                              QImage::Format_ARGB6666_Premultiplied,
                                              QImage::Format_RGB555,
                                              QImage::Format_ARGB8555_Premultiplied,
                                              QImage::Format_RGB888,
                                              QImage::Format_RGB444,
                                              QImage::Format_ARGB4444_Premultiplied,
                                              QImage::Format_RGBX8888,
                                              QImage::Format_RGBA8888,
                                              QImage::Format_RGBA8888_Premultiplied,
                                              QImage::Format_BGR30,
                                              QImage::Format_A2BGR30_Premultiplied,
                                              QImage::Format_RGB30,
                                              QImage::Format_A2RGB30_Premultiplied,
                                              QImage::Format_Alpha8,
                                              QImage::Format_Grayscale8,
                                              QImage::Format_RGBX64,
                                              QImage::Format_RGBA64,
                                              QImage::Format_RGBA64_Premultiplied,
                                              QImage::Format_Grayscale16,
                                              QImage::Format_BGR888,
                                              QImage::Format_RGBX16FPx4,
                                              QImage::Format_RGBA16FPx4,
                                              QImage::Format_RGBA16FPx4_Premultiplied,
                                              QImage::Format_RGBX32FPx4,
                                              QImage::Format_RGBA32FPx4,
                                              QImage::Format_RGBA32FPx4_Premultiplied};

using Filter = std::function<void(QImage* source, QImage* target, int delta)>;
using Change = QColor (*)(const QColor& color, int delta);

inline int limit(int value)
{
    return std::min(std::max(value, 0), 255);
}

inline Filter perPixel(Change change)
{
    return [change](QImage* source, QImage* target, int delta) {
        for (int x = 0; x < target->width(); ++x) {
            for (int y = 0; y < target->height(); ++y) {
                target->setPixelColor(x, y, change(source->pixelColor(x, y), delta));
            }
        }
    };
}

inline int mean(const QColor& c)
{
    return (c.red() + c.green() + c.blue()) / 3;
}

inline QColor brightness(const QColor& c, int)
{
    return QColor(mean(c), mean(c), mean(c), 255);
}

inline QColor greyScale(const QColor& c, int)
{
    return QColor(mean(c), mean(c), mean(c), c.alpha());
}

inline QColor warm(const QColor& c, int delta)
{
    return QColor(limit(c.red() + delta), limit(c.green() + delta), c.blue(), c.alpha());
}

inline QColor cool(const QColor& c, int delta)
{
    return QColor(c.red(), c.green(), limit(c.blue() + delta), c.alpha());
}

inline QColor saturation(const QColor& c, int delta)
{
    QColor hsl = c.toHsl();
    hsl.setHsl(hsl.hslHue(), limit(hsl.hslSaturation() + delta), hsl.lightness(), 255);
    return QColor(hsl.red(), hsl.green(), hsl.blue(), c.alpha());
}

inline void sharpen(QImage* source, QImage* target, int)
{
    constexpr int kKernel[3][3] = {{0, -1, 0}, {-1, 5, -1}, {0, -1, 0}};
    for (int x = 1; x < target->width() - 1; ++x) {
        for (int y = 1; y < target->height() - 1; ++y) {
            int sum[3] = {};
            for (int i = 0; i < 9; ++i) {
                const QColor c = source->pixelColor(x + i % 3 - 1, y + i / 3 - 1);
                const int weight = kKernel[i / 3][i % 3];
                sum[0] += weight * c.red();
                sum[1] += weight * c.green();
                sum[2] += weight * c.blue();
            }
            target->setPixelColor(x, y, QColor(limit(sum[0]), limit(sum[1]), limit(sum[2]), 255));
        }
    }
}

inline void edgify(QImage* image)
{
    const QImage source = image->copy();
    const auto luma = [&source](int x, int y) {
        const QRgb p = reinterpret_cast<const QRgb*>(source.constScanLine(y))[x];
        return (54 * qRed(p) + 183 * qGreen(p) + 18 * qBlue(p)) >> 8;
    };
    for (int y = 1; y < image->height() - 1; ++y) {
        for (int x = 1; x < image->width() - 1; ++x) {
            int gx = 0, gy = 0;
            for (int i = -1; i <= 1; ++i) {
                const int weight = 2 - std::abs(i);
                gx += weight * (luma(x + 1, y + i) - luma(x - 1, y + i));
                gy += weight * (luma(x + i, y + 1) - luma(x + i, y - 1));
            }
            gx = std::abs(gx);
            gy = std::abs(gy);
            const bool isUnfilled = gx == gy || gx == 255 || gy == 255;
            const int root = isUnfilled ? 0 : std::min(static_cast<int>(std::sqrt(gx * gx + gy * gy)), 255);
            const QRgb edge = gx < 256 && gy < 256 ? root : 255;
            QRgb& pixel = reinterpret_cast<QRgb*>(image->scanLine(y))[x];
            pixel = (pixel & 0xff000000) | edge << 16 | edge << 8 | edge;
        }
    }
}

inline QImage blurred(const QImage& image, const QRect& rect, int radius)
{
    constexpr int kWeights[] = {14, 10, 8, 6, 5, 5, 4, 3, 3, 3, 3, 2, 2, 2, 2, 2, 2};
    const int weight = radius < 1 ? 16 : radius > 17 ? 1 : kWeights[radius - 1];
    QImage result = image.copy();
    const auto line = [&](int x, int y, int dx, int dy, int count) {
        for (int channel = 0; channel < 4; ++channel) {
            int acc = result.constScanLine(y)[x * 4 + channel] * 16;
            for (int i = 1; i < count; ++i) {
                uchar& value = result.scanLine(y + i * dy)[(x + i * dx) * 4 + channel];
                acc = acc + ((value * 16 - acc) * weight) / 16;
                value = static_cast<uchar>(acc >> 4);
            }
        }
    };
    for (const int step : {1, -1}) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            line(x, step > 0 ? rect.top() : rect.bottom(), 0, step, rect.height());
        }
        for (int y = rect.top(); y <= rect.bottom(); ++y) {
            line(step > 0 ? rect.left() : rect.right(), y, step, 0, rect.width());
        }
    }
    return result;
}

inline double intensity(const QColor& c)
{
    return (c.redF() + c.greenF() + c.blueF()) / 3.0 / 255.0;
}

inline int component(double value)
{
    return static_cast<int>(std::min(std::max((value + 1.0) * 127.5, 0.0), 255.0));
}

inline QImage normalMap(const QImage& image, double strength, bool invert)
{
    QImage map = image.copy();
    for (std::size_t y = 0; y < std::size_t(image.height()); ++y) {
        for (std::size_t x = 0; x < std::size_t(image.width()); ++x) {
            double m[3][3];
            for (int i = 0; i < 9; ++i) {
                const auto column = std::min<std::size_t>(x + i % 3 - 1, image.width() - 1);
                const auto row = std::min<std::size_t>(y + i / 3 - 1, image.height() - 1);
                const double b = intensity(image.pixelColor(column, row));
                m[i / 3][i % 3] = invert ? 1.0 - b : b;
            }
            const float nx = (m[2][0] + 2 * m[2][1] + m[2][2]) - (m[0][0] + 2 * m[0][1] + m[0][2]);
            const float ny = (m[0][2] + 2 * m[1][2] + m[2][2]) - (m[0][0] + 2 * m[1][0] + m[2][0]);
            const float nz = 1.0 / (strength * 20.0);
            const float length = std::sqrt(nx * nx + ny * ny + nz * nz);
            const float divisor = std::abs(length - 1.0f) <= 0.00001f ? 1.0f : length;
            map.setPixelColor(
                x, y, QColor(component(nx / divisor), component(ny / divisor), component(nz / divisor)));
        }
    }
    return map;
}

inline QImage heightMap(const QImage& image, double scale, double contrast, bool invert)
{
    QImage map = image.copy();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            const float brightness = (c.redF() + c.greenF() + c.blueF()) / 3;
            double v = std::min(std::max(brightness * (scale / 50.0), 0.0), 1.0);
            v = invert ? 1.0 - v : v;
            const int i = static_cast<int>(v * 255.0);
            const double level = ((i / 255.0 - 0.5) * (contrast / 25.0) + 0.5) * 255.0;
            const int grey = static_cast<int>(std::min(std::max(level, 0.0), 255.0));
            map.setPixelColor(x, y, QColor(grey, grey, grey, c.alpha()));
        }
    }
    return map;
}

inline QImage tileableMap(const QImage& image)
{
    constexpr int kTaps[2][6][3] = {
        {{-1, -1, -1}, {-1, 0, -2}, {-1, 1, -1}, {1, -1, 1}, {1, 0, 2}, {1, 1, 1}},
        {{-1, -1, -1}, {0, -1, -2}, {1, -1, -1}, {-1, 1, 1}, {0, 1, 2}, {1, 1, 1}}};
    const int w = image.width(), h = image.height();
    QImage map(w, h, QImage::Format_RGB32);
    for (int i = 0; i < w * h; ++i) {
        double g[2] = {};
        for (int axis = 0; axis < 2; ++axis) {
            for (const auto& [dx, dy, weight] : kTaps[axis]) {
                const QColor c = image.pixelColor((i % w + dx + w) % w, (i / w + dy + h) % h);
                g[axis] += weight * ((0.2126 * c.red() + 0.7152 * c.green() + 0.0722 * c.blue()) / 255.0);
            }
        }
        const double length = std::sqrt(g[0] * g[0] + g[1] * g[1] + 1.0);
        map.setPixel(i % w, i / w, qRgb((1.0 - g[0] / length) * 127.5, (1.0 - g[1] / length) * 127.5, 255));
    }
    return map;
}

/// An image full of random bytes, valid colours or not; floating-point formats get colours of 0 to 1.
inline QImage randomImage(int width, int height, QImage::Format format)
{
    QImage image(width, height, QImage::Format_RGBA64);
    QRandomGenerator random(static_cast<quint32>(width * 1000 + height));
    const bool isFloat =
        format >= QImage::Format_RGBX16FPx4 && format <= QImage::Format_RGBA32FPx4_Premultiplied;
    for (const bool refill : {true, !isFloat}) {
        for (qsizetype i = 0; refill && i < image.sizeInBytes(); ++i) {
            image.bits()[i] = static_cast<uchar>(random.bounded(4) == 0 ? 255 : random.bounded(256));
        }
        image.convertTo(format);
    }
    if (image.colorCount() > 0) {
        image.setColorCount(image.depth() == 1 ? 2 : 256);
        for (int i = 0; i < image.colorCount(); ++i) {
            image.setColor(i, random.generate());
        }
    }
    return image;
}

inline bool haveSameBytes(const QImage& a, const QImage& b)
{
    bool same = a.size() == b.size() && a.format() == b.format();
    for (int y = 0; same && y < a.height(); ++y) {
        same = std::memcmp(a.constScanLine(y), b.constScanLine(y),
                           (qsizetype(a.width()) * a.depth() + 7) / 8) == 0;
    }
    return same;
}

} // namespace Zemtar::PlainTwins
