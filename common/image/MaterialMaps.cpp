#include "common/image/ImageMaps.h"

#include "common/image/PixelRows.h"
#include "common/image/ZemtarImage.h"

#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace Zemtar::ImageMaps {
namespace {

/// Limits to low..high, NaN becoming low.
inline double limited(double value, double low, double high)
{
    return value > high ? high : value > low ? value : low;
}

inline int toChannel(double component)
{
    return static_cast<int>(limited((component + 1.0) * 127.5, 0.0, 255.0));
}

/// The image with colours that a map's can replace: palettes and single channels become 32-bit colour.
QImage withDirectColor(QImage image)
{
    switch (image.format()) {
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
    case QImage::Format_Indexed8:
    case QImage::Format_Alpha8:
    case QImage::Format_Grayscale8:
    case QImage::Format_Grayscale16:
        return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    default:
        return image;
    }
}

/// Three neighbouring rows of values that move down an image. Each has one more value at either end: the
/// neighbours of the first and the last column.
class RowWindow
{
public:
    explicit RowWindow(int width) : m_above(width + 2), m_middle(width + 2), m_below(width + 2) {}

    /// Rows as pointers to column 0; columns -1 and `width` are there too.
    const double* Above() const { return m_above.data() + 1; }
    const double* Middle() const { return m_middle.data() + 1; }
    const double* Below() const { return m_below.data() + 1; }

    /// Moves on and has `fill(double* columns)` fill the new lower row.
    template <class Fill>
    void Advance(Fill fill)
    {
        m_above.swap(m_middle);
        m_middle.swap(m_below);
        fill(m_below.data() + 1);
    }

private:
    std::vector<double> m_above, m_middle, m_below;
};

/// Walks an image's rows with their neighbours: fill(y, columns) makes the values of a row, visit(y, window)
/// sees each row in turn. `aboveFirst` and `belowLast` name the rows that stand in for those outside.
template <class Fill, class Visit>
void walkRows(const QSize& size, int aboveFirst, int belowLast, Fill fill, Visit visit)
{
    RowWindow window(size.width());
    const auto advanceTo = [&](int y) { window.Advance([&](double* columns) { fill(y, columns); }); };
    advanceTo(aboveFirst);
    advanceTo(0);
    for (int y = 0; y < size.height(); ++y) {
        advanceTo(y + 1 < size.height() ? y + 1 : belowLast);
        visit(y, window);
    }
}

/// Gradients of a row as SobelOperator computes them.
void sobelRow(const RowWindow& window, float* x, float* y, int count)
{
    const double* const above = window.Above();
    const double* const middle = window.Middle();
    const double* const below = window.Below();
    for (int i = 0; i < count; ++i) {
        x[i] = static_cast<float>((below[i - 1] + 2 * below[i] + below[i + 1]) -
                                  (above[i - 1] + 2 * above[i] + above[i + 1]));
        y[i] = static_cast<float>((above[i + 1] + 2 * middle[i + 1] + below[i + 1]) -
                                  (above[i - 1] + 2 * middle[i - 1] + below[i - 1]));
    }
}

void packNormals(const float* x, const float* y, const float* z, QRgb* out, int count)
{
    for (int i = 0; i < count; ++i) {
        out[i] = 0xff000000 |
                 static_cast<QRgb>((toChannel(x[i]) << 16) | (toChannel(y[i]) << 8) | toChannel(z[i]));
    }
}

/// A row of a tileable normal map from brightness values that wrap round the image. The sums keep the order
/// of their taps.
void tileableRow(const RowWindow& window, QRgb* out, int count)
{
    const double* const above = window.Above();
    const double* const middle = window.Middle();
    const double* const below = window.Below();
    for (int i = 0; i < count; ++i) {
        const double gx = -above[i - 1] - 2.0 * middle[i - 1] - below[i - 1] + above[i + 1] +
                          2.0 * middle[i + 1] + below[i + 1];
        const double gy =
            -above[i - 1] - 2.0 * above[i] - above[i + 1] + below[i - 1] + 2.0 * below[i] + below[i + 1];
        const double length = std::sqrt(gx * gx + gy * gy + 1.0);
        const auto red = static_cast<int>((1.0 - gx / length) * 127.5);
        const auto green = static_cast<int>((1.0 - gy / length) * 127.5);
        out[i] = 0xff0000ff | static_cast<QRgb>(red << 16) | static_cast<QRgb>(green << 8);
    }
}

} // namespace

int mapComponent(double component)
{
    return toChannel(component);
}

void normalizeRow(float* x, float* y, float* z, float height, int count)
{
    const float heightSquared = height * height;
    for (int i = 0; i < count; ++i) {
        const float length = std::sqrt(x[i] * x[i] + y[i] * y[i] + heightSquared);
        const bool isUnit = std::abs(length - 1.0f) <= 0.00001f;
        const bool isZero = length <= 0.00001f;
        const float divisor = isUnit ? 1.0f : length;
        x[i] = isZero ? 0.0f : x[i] / divisor;
        y[i] = isZero ? 0.0f : y[i] / divisor;
        z[i] = isZero ? 0.0f : height / divisor;
    }
}

QImage normalMap(QImage image, double strength, bool invert)
{
    QImage map = withDirectColor(std::move(image)); // each row is read before its map replaces it
    const PixelReader reader(map);
    PixelWriter writer(map);
    const int width = map.width();
    const int last = map.height() - 1;
    const auto height = static_cast<float>(1.0 / (strength * 20.0));
    std::vector<float> x(width), y(width), z(width);
    std::vector<QRgb> pixels(width);
    const auto fill = [&](int row, double* columns) {
        reader.ReadSums(row, x.data());
        for (int i = 0; i < width; ++i) {
            const double intensity = x[i] / 3.0 / 255.0;
            columns[i] = invert ? 1.0 - intensity : intensity;
        }
        // Both neighbours outside are the last column, as the row above the first is the last row: left and
        // above wrap round, right and below stop at the edge. The asymmetry is wanted.
        columns[-1] = columns[width] = columns[width - 1];
    };
    walkRows(map.size(), last, last, fill, [&](int row, const RowWindow& window) {
        sobelRow(window, x.data(), y.data(), width);
        normalizeRow(x.data(), y.data(), z.data(), height, width);
        packNormals(x.data(), y.data(), z.data(), pixels.data(), width);
        writer.Write(row, 0, width, pixels.data());
    });
    return map;
}

QImage heightMap(QImage image, double scale, double contrast, bool invert)
{
    std::array<unsigned short, 256> levels;
    ZemtarImage::ContrastLookup(levels.data(), contrast / 25.0);
    const double factor = scale / 50.0;
    QImage map = withDirectColor(std::move(image)); // each row is read before its map replaces it
    const PixelReader reader(map);
    PixelWriter writer(map);
    const int width = map.width();
    std::vector<float> sums(width);
    std::vector<QRgb> pixels(width);
    for (int y = 0; y < map.height(); ++y) {
        reader.ReadSums(y, sums.data());
        reader.Read(y, 0, width, pixels.data());
        for (int x = 0; x < width; ++x) {
            const double height = limited(sums[x] / 3.0f * factor, 0.0, 1.0);
            const QRgb level = levels[static_cast<int>((invert ? 1.0 - height : height) * 255.0)];
            pixels[x] = (pixels[x] & 0xff000000) | (level * 0x010101);
        }
        writer.Write(y, 0, width, pixels.data());
    }
    return map;
}

QImage tileableNormalMap(const QImage& image)
{
    QImage map(image.size(), QImage::Format_RGB32);
    const PixelReader reader(image);
    const int width = image.width();
    std::vector<QRgb> pixels(width);
    const auto fill = [&](int y, double* columns) {
        reader.Read(y, 0, width, pixels.data());
        for (int x = 0; x < width; ++x) {
            const int red = (pixels[x] >> 16) & 255;
            const int green = (pixels[x] >> 8) & 255;
            const int blue = pixels[x] & 255;
            columns[x] = (0.2126 * red + 0.7152 * green + 0.0722 * blue) / 255.0;
        }
        columns[-1] = columns[width - 1];
        columns[width] = columns[0];
    };
    walkRows(image.size(), image.height() - 1, 0, fill, [&](int y, const RowWindow& window) {
        tileableRow(window, reinterpret_cast<QRgb*>(map.scanLine(y)), width);
    });
    return map;
}

} // namespace Zemtar::ImageMaps
