// ZemtarImage::edgify.

#include "common/image/ZemtarImage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace Zemtar {
namespace {

using Line = std::vector<std::int16_t>;

/// Lumas, 0 to 254, of a row of 32-bit pixels.
void calcLuma(std::int16_t* out, const QRgb* pixels, int count)
{
    for (int i = 0; i < count; ++i) {
        out[i] = static_cast<std::int16_t>(
            (54 * ((pixels[i] >> 16) & 255) + 183 * ((pixels[i] >> 8) & 255) + 18 * (pixels[i] & 255)) >> 8);
    }
}

/// Lengths of gradients (a, b) for |a|, |b| below 256. Equal sides and those of 255 are left 0 on purpose.
using RootTable = std::array<std::array<std::uint8_t, 256>, 256>;

const RootTable& rootTable()
{
    static const RootTable table = [] {
        RootTable roots{};
        for (int a = 0; a < 255; ++a) {
            for (int b = 0; b < a; ++b) {
                const auto root = static_cast<int>(std::sqrt(a * a + b * b));
                roots[a][b] = roots[b][a] = static_cast<std::uint8_t>(std::min(root, 255));
            }
        }
        return roots;
    }();
    return table;
}

/// Absolute Sobel gradients of the inner pixels of the row whose lumas are `current`.
void calcGradients(const Line& previous, const Line& current, const Line& next, Line& across, Line& down)
{
    const std::int16_t* const p = previous.data() + 1;
    const std::int16_t* const c = current.data() + 1;
    const std::int16_t* const n = next.data() + 1;
    const int count = static_cast<int>(current.size()) - 2;
    for (int i = 0; i < count; ++i) {
        const int gx = (p[i + 1] + 2 * c[i + 1] + n[i + 1]) - (p[i - 1] + 2 * c[i - 1] + n[i - 1]);
        const int gy = (n[i - 1] + 2 * n[i] + n[i + 1]) - (p[i - 1] + 2 * p[i] + p[i + 1]);
        across[i] = static_cast<std::int16_t>(std::abs(gx));
        down[i] = static_cast<std::int16_t>(std::abs(gy));
    }
}

} // namespace

void ZemtarImage::edgify(QImage* image)
{
    const QImage::Format format = image != nullptr ? image->format() : QImage::Format_Invalid;
    if (format != QImage::Format_RGB32 && format != QImage::Format_ARGB32 &&
        format != QImage::Format_ARGB32_Premultiplied) {
        return;
    }
    const int width = image->width();
    const int height = image->height();
    if (width < 3 || height < 3) {
        return;
    }
    const RootTable& roots = rootTable();
    const auto row = [image](int y) { return reinterpret_cast<QRgb*>(image->scanLine(y)); };
    Line previous(width), current(width), next(width), across(width), down(width);
    calcLuma(previous.data(), row(0), width);
    calcLuma(current.data(), row(1), width);
    for (int y = 1; y < height - 1; ++y) {
        calcLuma(next.data(), row(y + 1), width); // before that row is changed
        calcGradients(previous, current, next, across, down);
        QRgb* const pixels = row(y) + 1;
        for (int i = 0; i < width - 2; ++i) {
            const QRgb edge = (across[i] | down[i]) < 256 ? roots[across[i]][down[i]] : 255;
            pixels[i] = (pixels[i] & 0xff000000) | (edge * 0x010101);
        }
        previous.swap(current);
        current.swap(next);
    }
}

} // namespace Zemtar
