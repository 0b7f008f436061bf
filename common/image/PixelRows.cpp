#include "common/image/PixelRows.h"

#include <QRgba64>

#include <algorithm>
#include <array>
#include <vector>

namespace Zemtar {
namespace {

constexpr QRgb kOpaque = 0xff000000;

struct Bytes3
{
    uchar first, second, third;
};
struct Bytes4
{
    uchar red, green, blue, alpha;
};

/// One channel's value for each alpha (high byte) and value (low byte) of 8 bits.
using AlphaTable = std::array<uchar, 65536>;

/// Fills a table by Qt's own arithmetic, which goes through 16 bits a channel.
template <class Convert>
AlphaTable makeAlphaTable(Convert convert)
{
    AlphaTable table;
    for (int i = 0; i < 65536; ++i) {
        const QRgba64 color = QRgba64::fromArgb32(qRgba(i & 255, 0, 0, i >> 8));
        table[i] = static_cast<uchar>(qRed(convert(color).toArgb32()));
    }
    return table;
}

QRgb applyAlphaTable(const AlphaTable& table, QRgb pixel)
{
    if (pixel >= kOpaque) {
        return pixel;
    }
    const uchar* const values = table.data() + (qAlpha(pixel) << 8);
    return (pixel & kOpaque) | (values[qRed(pixel)] << 16) | (values[qGreen(pixel)] << 8) |
           values[qBlue(pixel)];
}

const AlphaTable& unpremultiplied()
{
    static const AlphaTable table = makeAlphaTable([](QRgba64 color) { return color.unpremultiplied(); });
    return table;
}

const AlphaTable& premultiplied()
{
    static const AlphaTable table = makeAlphaTable([](QRgba64 color) { return color.premultiplied(); });
    return table;
}

QRgb fromRgba(Bytes4 pixel)
{
    return qRgba(pixel.red, pixel.green, pixel.blue, pixel.alpha);
}

Bytes4 toRgba(QRgb pixel)
{
    return {uchar(qRed(pixel)), uchar(qGreen(pixel)), uchar(qBlue(pixel)), uchar(qAlpha(pixel))};
}

/// Turns `count` pixels of one type into those of another.
template <class In, class Out, class Convert>
void convertPixels(const void* in, void* out, int count, Convert convert)
{
    const In* const from = static_cast<const In*>(in);
    Out* const to = static_cast<Out*>(out);
    for (int i = 0; i < count; ++i) {
        to[i] = convert(from[i]);
    }
}

} // namespace

PixelReader::PixelReader(const QImage& image) : m_image(image), m_precision(Precision::Channel8)
{
    const QPixelFormat format = image.pixelFormat();
    if (image.depth() > 32 || format.redSize() > 8 || image.format() == QImage::Format_Grayscale16) {
        m_precision = Precision::Deep;
    } else if (format.premultiplied() == QPixelFormat::Premultiplied) {
        m_precision = Precision::Premultiplied8;
    }
    const QList<QRgb> palette = image.colorTable();
    std::copy_n(palette.cbegin(), std::min<qsizetype>(palette.size(), 256), m_palette);
}

void PixelReader::Read(int y, int x, int count, QRgb* out) const
{
    const bool isInside = y >= 0 && y < m_image.height() && x >= 0;
    const int inside = isInside ? std::clamp(m_image.width() - x, 0, count) : 0;
    if (inside > 0) {
        Decode(y, x, inside, out);
    }
    std::fill(out + inside, out + count, kOpaque);
}

void PixelReader::Decode(int y, int x, int count, QRgb* out) const
{
    const uchar* const line = m_image.constScanLine(y);
    const uchar* const in = line + qsizetype(x) * (m_image.depth() / 8);
    switch (m_image.format()) {
    case QImage::Format_RGB32:
        return convertPixels<QRgb, QRgb>(in, out, count, [](QRgb pixel) { return pixel | kOpaque; });
    case QImage::Format_ARGB32:
        return convertPixels<QRgb, QRgb>(in, out, count, [](QRgb pixel) { return pixel; });
    case QImage::Format_ARGB32_Premultiplied:
        return convertPixels<QRgb, QRgb>(in, out, count, [&table = unpremultiplied()](QRgb pixel) {
            return applyAlphaTable(table, pixel);
        });
    case QImage::Format_RGBX8888:
    case QImage::Format_RGBA8888:
        return convertPixels<Bytes4, QRgb>(in, out, count, fromRgba);
    case QImage::Format_RGBA8888_Premultiplied:
        return convertPixels<Bytes4, QRgb>(in, out, count, [&table = unpremultiplied()](Bytes4 pixel) {
            return applyAlphaTable(table, fromRgba(pixel));
        });
    case QImage::Format_RGB888:
        return convertPixels<Bytes3, QRgb>(
            in, out, count, [](Bytes3 pixel) { return qRgb(pixel.first, pixel.second, pixel.third); });
    case QImage::Format_BGR888:
        return convertPixels<Bytes3, QRgb>(
            in, out, count, [](Bytes3 pixel) { return qRgb(pixel.third, pixel.second, pixel.first); });
    case QImage::Format_Grayscale8:
        return convertPixels<uchar, QRgb>(in, out, count,
                                          [](uchar grey) { return kOpaque | (grey * 0x010101u); });
    case QImage::Format_Indexed8:
        return convertPixels<uchar, QRgb>(in, out, count, [this](uchar index) { return m_palette[index]; });
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
        for (int i = 0; i < count; ++i) {
            const int bit = m_image.format() == QImage::Format_Mono ? ~(x + i) & 7 : (x + i) & 7;
            out[i] = m_palette[(line[(x + i) >> 3] >> bit) & 1];
        }
        return;
    case QImage::Format_RGBX64:
    case QImage::Format_RGBA64:
        return convertPixels<QRgba64, QRgb>(in, out, count, [](QRgba64 pixel) { return pixel.toArgb32(); });
    case QImage::Format_RGBA64_Premultiplied:
        return convertPixels<QRgba64, QRgb>(in, out, count,
                                            [](QRgba64 pixel) { return pixel.unpremultiplied().toArgb32(); });
    case QImage::Format_Grayscale16:
        return convertPixels<quint16, QRgb>(in, out, count,
                                            [](quint16 v) { return qRgba64(v, v, v, 0xffff).toArgb32(); });
    default: // the packed and floating-point formats, which no file of the supported kinds is read as
        for (int i = 0; i < count; ++i) {
            out[i] = m_image.pixelColor(x + i, y).rgba();
        }
    }
}

void PixelReader::ReadSums(int y, float* out) const
{
    static const auto channels = [] {
        std::array<float, 256> values;
        for (int i = 0; i < 256; ++i) {
            values[i] = QColor(i, 0, 0).redF();
        }
        return values;
    }();
    const int width = m_image.width();
    if (m_precision != Precision::Deep) {
        m_row.resize(width);
        Decode(y, 0, width, m_row.data());
        convertPixels<QRgb, float>(m_row.data(), out, width, [](QRgb pixel) {
            return channels[qRed(pixel)] + channels[qGreen(pixel)] + channels[qBlue(pixel)];
        });
    }
    for (int x = 0; x < width && m_precision != Precision::Channel8; ++x) {
        if (m_precision == Precision::Deep || !IsExact(m_row[x])) {
            const QColor color = ColorAt(x, y);
            out[x] = color.redF() + color.greenF() + color.blueF();
        }
    }
}

QColor PixelReader::ColorAt(int x, int y) const
{
    if (!m_image.valid(x, y)) {
        return {};
    }
    const uchar* const line = m_image.constScanLine(y);
    switch (m_image.format()) {
    case QImage::Format_ARGB32_Premultiplied:
        return QRgba64::fromArgb32(reinterpret_cast<const QRgb*>(line)[x]).unpremultiplied();
    case QImage::Format_RGBX64:
    case QImage::Format_RGBA64:
        return reinterpret_cast<const QRgba64*>(line)[x];
    case QImage::Format_RGBA64_Premultiplied:
        return reinterpret_cast<const QRgba64*>(line)[x].unpremultiplied();
    default:
        return m_image.pixelColor(x, y);
    }
}

bool PixelWriter::CanWrite() const
{
    return m_image.format() > QImage::Format_Indexed8;
}

bool PixelWriter::KeepsOpaqueColors() const
{
    switch (m_image.format()) {
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
    case QImage::Format_RGBX8888:
    case QImage::Format_RGBA8888:
    case QImage::Format_RGBA8888_Premultiplied:
    case QImage::Format_RGB888:
    case QImage::Format_BGR888:
    case QImage::Format_RGBX64:
    case QImage::Format_RGBA64:
    case QImage::Format_RGBA64_Premultiplied:
        return true;
    default:
        return false;
    }
}

void PixelWriter::Write(int y, int x, int count, const QRgb* in)
{
    uchar* const out = m_image.scanLine(y) + qsizetype(x) * (m_image.depth() / 8);
    switch (m_image.format()) {
    case QImage::Format_Invalid:
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
    case QImage::Format_Indexed8:
        return;
    case QImage::Format_RGB32:
        return convertPixels<QRgb, QRgb>(in, out, count, [](QRgb pixel) { return pixel | kOpaque; });
    case QImage::Format_ARGB32:
        return convertPixels<QRgb, QRgb>(in, out, count, [](QRgb pixel) { return pixel; });
    case QImage::Format_ARGB32_Premultiplied:
        return convertPixels<QRgb, QRgb>(
            in, out, count, [&table = premultiplied()](QRgb pixel) { return applyAlphaTable(table, pixel); });
    case QImage::Format_RGBX8888:
        return convertPixels<QRgb, Bytes4>(in, out, count,
                                           [](QRgb pixel) { return toRgba(pixel | kOpaque); });
    case QImage::Format_RGBA8888:
        return convertPixels<QRgb, Bytes4>(in, out, count, toRgba);
    case QImage::Format_RGBA8888_Premultiplied:
        return convertPixels<QRgb, Bytes4>(in, out, count, [&table = premultiplied()](QRgb pixel) {
            return toRgba(applyAlphaTable(table, pixel));
        });
    case QImage::Format_RGB888:
        return convertPixels<QRgb, Bytes3>(in, out, count, [](QRgb pixel) {
            return Bytes3{uchar(qRed(pixel)), uchar(qGreen(pixel)), uchar(qBlue(pixel))};
        });
    case QImage::Format_BGR888:
        return convertPixels<QRgb, Bytes3>(in, out, count, [](QRgb pixel) {
            return Bytes3{uchar(qBlue(pixel)), uchar(qGreen(pixel)), uchar(qRed(pixel))};
        });
    case QImage::Format_Grayscale8:
        return convertPixels<QRgb, uchar>(in, out, count, [](QRgb pixel) { return uchar(qGray(pixel)); });
    case QImage::Format_RGBX64:
        return convertPixels<QRgb, QRgba64>(in, out, count,
                                            [](QRgb pixel) { return QRgba64::fromArgb32(pixel | kOpaque); });
    case QImage::Format_RGBA64:
        return convertPixels<QRgb, QRgba64>(in, out, count, QRgba64::fromArgb32);
    case QImage::Format_RGBA64_Premultiplied:
        return convertPixels<QRgb, QRgba64>(
            in, out, count, [](QRgb pixel) { return QRgba64::fromArgb32(pixel).premultiplied(); });
    default:
        for (int i = 0; i < count; ++i) {
            m_image.setPixelColor(x + i, y, QColor::fromRgba(in[i]));
        }
    }
}

} // namespace Zemtar
