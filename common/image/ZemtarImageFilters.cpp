// Per-pixel filters, sharpening and bloom of ZemtarImage.

#include "common/image/ImageFilters.h"
#include "common/image/PixelRows.h"
#include "common/image/ZemtarImage.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace Zemtar {
namespace {

constexpr QRgb kAlphaBits = 0xff000000;

QRgb channelMean(QRgb pixel)
{
    return (((pixel >> 16) & 255) + ((pixel >> 8) & 255) + (pixel & 255)) / 3;
}

QRgb clampedByte(int value)
{
    return static_cast<QRgb>(value < 0 ? 0 : value > 255 ? 255 : value);
}

/// Has `change` turn each row of the target's size, read from the source, into the target's. Rows are read
/// before they are written, so both may be the same image.
template <class Change>
void filterRows(QImage* source, QImage* target, Change change)
{
    if (source == nullptr || target == nullptr) {
        return;
    }
    const PixelReader reader(*source);
    PixelWriter writer(*target);
    const int width = target->width();
    std::vector<QRgb> row(width);
    for (int y = 0; y < target->height() && writer.CanWrite(); ++y) {
        reader.Read(y, 0, width, row.data());
        change(reader, y, row.data(), width);
        writer.Write(y, 0, width, row.data());
    }
}

/// Has `change` turn each pixel's integer channels, not premultiplied, into the new ones.
template <class Change>
void filterPixels(QImage* source, QImage* target, Change change)
{
    filterRows(source, target, [change](const PixelReader&, int, QRgb* row, int width) {
        for (int x = 0; x < width; ++x) {
            row[x] = change(row[x]);
        }
    });
}

/// Rows of the neighbourhood that `sharpen` reads; each has the target's width.
struct Neighbours
{
    std::vector<QRgb> above, middle, below;
};

const uchar* bytes(const std::vector<QRgb>& row)
{
    return reinterpret_cast<const uchar*>(row.data());
}

/// Sharpens the inner pixels of a row from pixels that nobody writes.
void sharpenRow(const Neighbours& rows, QRgb* out)
{
    const uchar* const above = bytes(rows.above);
    const uchar* const middle = bytes(rows.middle);
    const uchar* const below = bytes(rows.below);
    uchar* const result = reinterpret_cast<uchar*>(out);
    const int end = static_cast<int>(rows.middle.size() - 1) * 4;
    for (int i = 4; i < end; ++i) {
        const int value = 5 * middle[i] - above[i] - below[i] - middle[i - 4] - middle[i + 4];
        result[i] = static_cast<uchar>(clampedByte(value));
    }
    for (int x = 1; x < end / 4; ++x) {
        out[x] |= kAlphaBits;
    }
}

/// The sharpened pixel, opaque, of column x when `left` is what stands to its left by now.
QRgb sharpenedPixel(const Neighbours& rows, int x, QRgb left)
{
    QRgb result = kAlphaBits;
    for (int shift = 0; shift < 24; shift += 8) {
        const auto channel = [shift](QRgb pixel) { return static_cast<int>((pixel >> shift) & 255); };
        const int value = 5 * channel(rows.middle[x]) - channel(rows.above[x]) - channel(rows.below[x]) -
                          channel(left) - channel(rows.middle[x + 1]);
        result |= clampedByte(value) << shift;
    }
    return result;
}

/// Sharpens the inner pixels of row y of an image that is its own source: the pixels above and to the left
/// are read as they have been written. Formats that do not keep every colour have each pixel read back.
void sharpenRowInPlace(const PixelReader& reader, PixelWriter& writer, int y, const Neighbours& rows,
                       QRgb* out)
{
    const int inner = static_cast<int>(rows.middle.size()) - 2;
    const bool isKept = writer.KeepsOpaqueColors();
    out[0] = rows.middle[0];
    for (int x = 1; x <= inner; ++x) {
        out[x] = sharpenedPixel(rows, x, out[x - 1]);
        if (!isKept) {
            writer.Write(y, x, 1, out + x);
            reader.Read(y, x, 1, out + x);
        }
    }
    if (isKept) {
        writer.Write(y, 1, inner, out + 1);
    }
}

} // namespace

void ZemtarImage::brightness(QImage* source, QImage* target, int)
{
    filterPixels(source, target, [](QRgb pixel) { return kAlphaBits | (channelMean(pixel) * 0x010101); });
}

void ZemtarImage::greyScale(QImage* source, QImage* target)
{
    filterPixels(source, target,
                 [](QRgb pixel) { return (pixel & kAlphaBits) | (channelMean(pixel) * 0x010101); });
}

void ZemtarImage::warm(QImage* source, QImage* target, int delta)
{
    const int limited = std::clamp(delta, -255, 255);
    filterPixels(source, target, [limited](QRgb pixel) {
        const QRgb red = clampedByte(static_cast<int>((pixel >> 16) & 255) + limited);
        const QRgb green = clampedByte(static_cast<int>((pixel >> 8) & 255) + limited);
        return (pixel & 0xff0000ff) | (red << 16) | (green << 8);
    });
}

void ZemtarImage::cool(QImage* source, QImage* target, int delta)
{
    const int limited = std::clamp(delta, -255, 255);
    filterPixels(source, target, [limited](QRgb pixel) {
        return (pixel & 0xffffff00) | clampedByte(static_cast<int>(pixel & 255) + limited);
    });
}

void ZemtarImage::saturation(QImage* source, QImage* target, int delta)
{
    filterRows(source, target, [delta](const PixelReader& reader, int y, QRgb* row, int width) {
        std::vector<std::pair<int, QRgb>> precise; // pixels whose colours have more than 8 bits a channel
        for (int x = 0; x < width; ++x) {
            if (!reader.IsExact(row[x])) {
                precise.emplace_back(x, ImageFilters::saturated(reader.ColorAt(x, y), delta));
            }
        }
        ImageFilters::saturate(row, width, delta);
        for (const auto& [x, pixel] : precise) {
            row[x] = pixel;
        }
    });
}

void ZemtarImage::sharpen(QImage* source, QImage* target)
{
    if (source == nullptr || target == nullptr || target->width() < 3 || target->height() < 3) {
        return;
    }
    const PixelReader reader(*source);
    PixelWriter writer(*target);
    if (!writer.CanWrite()) {
        return;
    }
    target->bits(); // detaches: images that shared their pixels are two from here on
    const bool isInPlace = source->constBits() == target->constBits();
    const int width = target->width();
    Neighbours rows{std::vector<QRgb>(width), std::vector<QRgb>(width), std::vector<QRgb>(width)};
    std::vector<QRgb> out(width);
    reader.Read(0, 0, width, rows.above.data());
    reader.Read(1, 0, width, rows.middle.data());
    for (int y = 1; y < target->height() - 1; ++y) {
        reader.Read(y + 1, 0, width, rows.below.data());
        if (isInPlace) {
            sharpenRowInPlace(reader, writer, y, rows, out.data());
            reader.Read(y, 0, width, rows.middle.data());
        } else {
            sharpenRow(rows, out.data());
            writer.Write(y, 1, width - 2, out.data() + 1);
        }
        rows.above.swap(rows.middle);
        rows.middle.swap(rows.below);
    }
}

QImage ZemtarImage::bloomed(QImage* image, int radius, int delta, int opacity, bool)
{
    using namespace ImageFilters;
    if (image == nullptr || image->isNull()) {
        return {};
    }
    const QImage glow = brightened(blurred(*image, image->rect(), radius), delta);
    return composited(*image, glow, opacity, QPainter::CompositionMode_Overlay);
}

} // namespace Zemtar
