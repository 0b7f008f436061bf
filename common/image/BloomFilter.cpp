#include "common/image/ImageFilters.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

namespace Zemtar::ImageFilters {
namespace {

/// Weights in sixteenths, by radius from 0 on; every larger radius has the last.
constexpr std::array<int, 19> kBlurWeights = {16, 14, 10, 8, 6, 5, 5, 4, 3, 3, 3, 3, 2, 2, 2, 2, 2, 2, 1};

/// Eight channels, which g++ and clang map onto whatever vector unit there is.
using Words = std::int16_t __attribute__((vector_size(16)));
using Bytes = std::uint8_t __attribute__((vector_size(8)));

/// One step of the recursion acc += ((channel x 16 - acc) x weight) / 16, truncating toward zero.
///
/// |channel x 16 - acc| is at most 4080. An even weight is halved together with its divisor, so the product
/// stays within 16 bits and the quotient the same.
class BlurStep
{
public:
    explicit BlurStep(int weight)
        : m_shift(weight % 2 == 0 ? 3 : 4),
          m_factor(static_cast<std::int16_t>(weight % 2 == 0 ? weight / 2 : weight)),
          m_roundUp(static_cast<std::int16_t>((1 << m_shift) - 1))
    {
    }

    /// For a channel or for a vector of them.
    template <class Value>
    Value Next(Value accumulator, Value channel) const
    {
        const Value product = static_cast<Value>((static_cast<Value>(channel << 4) - accumulator) * m_factor);
        const Value negative = static_cast<Value>(product >> 15);
        return static_cast<Value>(accumulator +
                                  static_cast<Value>((product + (negative & m_roundUp)) >> m_shift));
    }

private:
    int m_shift;
    std::int16_t m_factor;
    std::int16_t m_roundUp; ///< added to negative products: a shift alone rounds them down
};

/// The pixels of a rectangle of a 32-bit image as rows of bytes.
struct Area
{
    uchar* first;
    qsizetype stride;
    int width, height;

    uchar* Row(int y) const { return first + y * stride; }
};

/// Moves a row on by one step of the column recursion; `accumulators` holds one value a byte.
void blurColumnsStep(const BlurStep& step, uchar* row, std::int16_t* accumulators, int bytes)
{
    for (int i = 0; i < bytes; ++i) {
        const std::int16_t next = step.Next<std::int16_t>(accumulators[i], row[i]);
        accumulators[i] = next;
        row[i] = static_cast<uchar>(next >> 4);
    }
}

Words loadPair(const uchar* first, const uchar* second)
{
    Bytes bytes;
    std::memcpy(&bytes, first, 4);
    std::memcpy(reinterpret_cast<char*>(&bytes) + 4, second, 4);
    return __builtin_convertvector(bytes, Words);
}

void storePair(Words accumulators, uchar* first, uchar* second)
{
    const Bytes bytes = __builtin_convertvector(accumulators >> 4, Bytes);
    std::memcpy(first, &bytes, 4);
    std::memcpy(second, reinterpret_cast<const char*>(&bytes) + 4, 4);
}

/// Runs the row recursion along `Pairs` pairs of rows at once: the recursion waits for its own result in each
/// row, so only independent rows fill the processor. `direction` is 1 for rightward, -1 for leftward.
template <int Pairs>
void blurRows(const BlurStep& step, uchar* const* rows, int width, int direction)
{
    const qsizetype start = direction > 0 ? 0 : qsizetype(width - 1) * 4;
    Words accumulators[Pairs];
    for (int pair = 0; pair < Pairs; ++pair) {
        accumulators[pair] = loadPair(rows[2 * pair] + start, rows[2 * pair + 1] + start) << 4;
    }
    for (int i = 1; i < width; ++i) {
        const qsizetype offset = start + qsizetype(i) * 4 * direction;
        for (int pair = 0; pair < Pairs; ++pair) {
            uchar* const first = rows[2 * pair] + offset;
            uchar* const second = rows[2 * pair + 1] + offset;
            accumulators[pair] = step.Next(accumulators[pair], loadPair(first, second));
            storePair(accumulators[pair], first, second);
        }
    }
}

/// Blurs all columns and then all rows, downward and rightward or upward and leftward. The rows follow the
/// columns group by group while they are in the cache; the columns go on from their accumulators, not from
/// the rows.
void blurBothWays(const BlurStep& step, const Area& area, bool forward)
{
    constexpr int kGroup = 8;
    const int bytes = area.width * 4;
    std::vector<std::int16_t> accumulators(bytes);
    for (int done = 0; done < area.height; done += kGroup) {
        uchar* rows[kGroup];
        const int count = std::min(kGroup, area.height - done);
        for (int i = 0; i < count; ++i) {
            rows[i] = area.Row(forward ? done + i : area.height - 1 - done - i);
            if (done + i == 0) {
                std::transform(rows[0], rows[0] + bytes, accumulators.begin(),
                               [](uchar channel) { return static_cast<std::int16_t>(channel << 4); });
            } else {
                blurColumnsStep(step, rows[i], accumulators.data(), bytes);
            }
        }
        if (count == kGroup) {
            blurRows<kGroup / 2>(step, rows, area.width, forward ? 1 : -1);
            continue;
        }
        for (int i = 0; i < count; ++i) {
            std::vector<uchar> spare(rows[i], rows[i] + bytes); // a row is blurred in place once, not twice
            uchar* const pair[] = {rows[i], spare.data()};
            blurRows<1>(step, pair, area.width, forward ? 1 : -1);
        }
    }
}

} // namespace

QImage blurred(const QImage& image, const QRect& rect, int radius)
{
    QImage result = image.depth() == 32
                        ? image.copy()
                        : image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                                        : QImage::Format_RGB32);
    const QRect inside = rect.intersected(result.rect());
    if (inside.isEmpty()) {
        return result;
    }
    const Area area = {result.scanLine(inside.top()) + qsizetype(inside.left()) * 4, result.bytesPerLine(),
                       inside.width(), inside.height()};
    const BlurStep step(kBlurWeights[std::clamp<int>(radius, 0, kBlurWeights.size() - 1)]);
    blurBothWays(step, area, true);
    blurBothWays(step, area, false);
    return result;
}

QImage brightened(const QImage& image, int delta)
{
    std::array<QRgb, 256> red, green, blue;
    for (int i = 0; i < 256; ++i) {
        // No lower limit, and the parts are or-ed: a negative sum spills into the other channels on purpose.
        const auto value = static_cast<QRgb>(std::min<qint64>(qint64(i) + delta, 255));
        red[i] = 0xff000000 | (value << 16);
        green[i] = (value << 8) & 0xffff;
        blue[i] = value;
    }
    QImage result = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < result.height(); ++y) {
        QRgb* const row = reinterpret_cast<QRgb*>(result.scanLine(y));
        for (int x = 0; x < result.width(); ++x) {
            row[x] = red[qRed(row[x])] | green[qGreen(row[x])] | blue[qBlue(row[x])];
        }
    }
    return result;
}

QImage composited(const QImage& base, const QImage& overlay, int opacity, QPainter::CompositionMode mode)
{
    QImage result = base.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (result.isNull()) {
        return result;
    }
    QPainter painter(&result);
    painter.setCompositionMode(mode);
    painter.setOpacity(opacity * 0.00390625);
    painter.drawImage(0, 0, overlay);
    painter.end();
    return result;
}

} // namespace Zemtar::ImageFilters
