#pragma once

#include <QImage>
#include <QPainter>

/// The steps of ZemtarImage::bloomed and ZemtarImage::saturation that stand on their own.
namespace Zemtar::ImageFilters {

/// An exponential blur of the pixels inside `rect`: down the columns, right along the rows, up, and left
/// again, each pixel pulled toward the ones before it by a weight of 14/16 (radius 1) to 2/16 (radius 17); a
/// smaller radius leaves the image as it is, a larger one has the weight 1/16.
///
/// The result has the format of `image`, all four bytes of a pixel treated alike; images of other depths than
/// 32 bits are converted to 32-bit colour first. Parts of `rect` outside the image do not count.
QImage blurred(const QImage& image, const QRect& rect, int radius);

/// An opaque premultiplied copy with `delta` added to each channel, limited to 255 only: a negative sum
/// spills its set bits into the other channels.
QImage brightened(const QImage& image, int delta);

/// `overlay` painted with `mode` at opacity / 256 over a premultiplied copy of `base`.
QImage composited(const QImage& base, const QImage& overlay, int opacity, QPainter::CompositionMode mode);

/// Adds `delta` to the HSL saturation of a row of 8-bit colours, keeping alpha: what QColor's conversions
/// give, by its own arithmetic, many pixels at a time.
void saturate(QRgb* row, int count, int delta);

/// The same for one colour of any precision, by QColor's conversions.
QRgb saturated(const QColor& color, int delta);

} // namespace Zemtar::ImageFilters
