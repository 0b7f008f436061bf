#include "common/image/ImageFilters.h"

#include <QColor>

#include <algorithm>
#include <limits>

namespace Zemtar::ImageFilters {
namespace {

// NOTE: the formulas are those of QColor's HSL conversions (Qt 6): single precision, results rounded to 16
// bits a channel and read as 8. They are written out so that each operation rounds as it does there, and
// without branches, tables or integer minima, so that compilers turn the loop over a row into vector code for
// any processor.

constexpr float kUnit = std::numeric_limits<quint16>::max();
constexpr int kByte = 257; ///< one step of 8 bits in 16

/// An 8-bit channel as a fraction of 1.
inline float toUnit(int channel)
{
    return static_cast<float>(channel * kByte) / kUnit;
}

/// A fraction of 1, not negative, as 8 bits by way of 16.
inline int toByte(float fraction)
{
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): qRound's own rounding
    const int channel = static_cast<int>(fraction * kUnit + 0.5f) + kByte / 2;
    return (channel - (channel >> 8)) >> 8;
}

inline int mask(bool condition)
{
    return -static_cast<int>(condition);
}

inline int pick(int mask, int where, int elsewhere)
{
    return (where & mask) | (elsewhere & ~mask);
}

inline QRgb shifted(QRgb color, int delta)
{
    const float red = toUnit((color >> 16) & 255);
    const float green = toUnit((color >> 8) & 255);
    const float blue = toUnit(color & 255);
    const float greatest = std::max(std::max(red, green), blue);
    const float least = std::min(std::min(red, green), blue);
    const float range = greatest - least;
    const float sum = greatest + least;
    const float divisor = range > 0.0f ? range : 1.0f; // greys have no hue; theirs is not used

    const float fromGreen = red == greatest ? green - blue : green == greatest ? blue - red : red - green;
    const float sector = red == greatest ? 0.0f : green == greatest ? 2.0f : 4.0f;
    const float hue = (sector + fromGreen / divisor) * 60.0f;
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): qRound's own rounding
    const int hundredths = static_cast<int>((hue < 0.0f ? hue + 360.0f : hue) * 100.0f + 0.5f);
    // Whole degrees: the half keeps the product clear of whole numbers, so truncating it is exact.
    const int degrees = static_cast<int>((static_cast<float>(hundredths) + 0.5f) * 0.01f);
    const float degree = degrees == 360 ? 0.0f : static_cast<float>(degrees);

    const float half = 0.5f * sum;
    const int lightness = toByte(half);
    const float span = half < 0.5f ? sum : 2.0f - sum;
    const int saturation = std::min(std::max(toByte(range / (range > 0.0f ? span : 1.0f)) + delta, 0), 255);

    const float s = toUnit(saturation);
    const float l = toUnit(lightness);
    const float high = l < 0.5f ? l * (1.0f + s) : l + s - l * s;
    const float low = 2.0f * l - high;

    // Of the three channels one is high, one low, and one on the ramp between: red at its place on the circle
    // a third ahead of the hue, green at the hue, blue a third behind.
    const float turn = degree * 100.0f / 36000.0f;
    const int sixth = static_cast<int>((degree + 0.5f) * (1.0f / 60.0f));
    const int rampIsRed = mask((sixth == 1) | (sixth == 4));
    const int rampIsBlue = mask((sixth == 2) | (sixth == 5));
    const float place = turn + static_cast<float>(rampIsBlue - rampIsRed) * (1.0f / 3.0f);
    const float onCircle = place >= 1.0f ? place - 1.0f : place;
    const float rising = low + (high - low) * (onCircle * 6.0f);
    const float falling = low + (high - low) * (2.0f / 3.0f - onCircle) * 6.0f;
    const int ramp = toByte(onCircle * 6.0f < 1.0f ? rising : falling);
    const int top = toByte(high);
    const int bottom = toByte(low);
    const int r = pick(rampIsRed, ramp, pick(mask((sixth == 0) | (sixth == 5)), top, bottom));
    const int g = pick(rampIsRed | rampIsBlue, pick(mask(sixth < 3), top, bottom), ramp);
    const int b = pick(rampIsBlue, ramp, pick(mask(sixth > 2), top, bottom));
    const int pure = (r << 16) | (g << 8) | b;
    const int isGrey = mask((range == 0.0f) | (saturation == 0) | (lightness == 0));
    return (color & 0xff000000) | static_cast<QRgb>(pick(isGrey, lightness * 0x010101, pure));
}

} // namespace

void saturate(QRgb* row, int count, int delta)
{
    const int limited = std::clamp(delta, -255, 255);
    for (int i = 0; i < count; ++i) {
        row[i] = shifted(row[i], limited);
    }
}

QRgb saturated(const QColor& color, int delta)
{
    QColor result = color.toHsl();
    const int saturation = std::clamp(result.hslSaturation() + std::clamp(delta, -255, 255), 0, 255);
    result.setHsl(result.hslHue(), saturation, result.lightness(), 255);
    return qRgba(result.red(), result.green(), result.blue(), color.alpha());
}

} // namespace Zemtar::ImageFilters
