#pragma once

#include <QColor>
#include <QImage>

#include <vector>

namespace Zemtar {

/// Reads rows of an image of any pixel format as the integer channels that QImage::pixelColor gives, as words
/// 0xAARRGGBB that are not premultiplied, in one pass a row.
///
///     PixelReader reader(image);
///     std::vector<QRgb> row(image.width());
///     reader.Read(y, 0, image.width(), row.data());
///
/// The image must outlive the reader and keep its size and format; its pixels may change between reads.
/// Pixels outside the image read as opaque black, the channels of an invalid colour.
class PixelReader
{
public:
    explicit PixelReader(const QImage& image);

    /// Whether the channels of a pixel that was read are all that its colour has. Colours of more than 8 bits
    /// a channel, and translucent ones divided by their alpha, have more: ColorAt and ReadSums give that.
    bool IsExact(QRgb pixel) const
    {
        return m_precision == Precision::Channel8 ||
               (m_precision == Precision::Premultiplied8 && (qAlpha(pixel) == 255 || qAlpha(pixel) == 0));
    }

    /// Reads `count` pixels of row `y` from column `x` on.
    void Read(int y, int x, int count, QRgb* out) const;

    /// Reads (red + green) + blue, channels 0 to 1 in single precision, of a whole row inside the image.
    void ReadSums(int y, float* out) const;

    /// The colour of one pixel; an invalid one outside the image.
    QColor ColorAt(int x, int y) const;

private:
    enum class Precision
    {
        Channel8,
        Premultiplied8,
        Deep
    };
    void Decode(int y, int x, int count, QRgb* out) const;

    const QImage& m_image;
    Precision m_precision;
    mutable std::vector<QRgb> m_row; ///< scratch of ReadSums
    QRgb m_palette[256] = {};        ///< of palette formats; missing entries are transparent black
};

/// Writes rows of opaque or translucent words 0xAARRGGBB as QImage::setPixelColor writes their colours.
class PixelWriter
{
public:
    explicit PixelWriter(QImage& image) : m_image(image) {}

    /// Whether pixels can be written: not into palette formats, which QImage::setPixelColor leaves alone.
    bool CanWrite() const;

    /// Whether an opaque colour is read back as it was written.
    bool KeepsOpaqueColors() const;

    /// Writes `count` pixels, inside the image, of row `y` from column `x` on.
    void Write(int y, int x, int count, const QRgb* in);

private:
    QImage& m_image;
};

} // namespace Zemtar
