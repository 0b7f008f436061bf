// Image file operations of ZemtarImage: convert, measure, resize, fade, crop, mirror, tag.

#include "common/encoding/CZemtarConvert.h"
#include "common/image/ImageFiles.h"
#include "common/image/PaintedImage.h"
#include "common/image/ZemtarImage.h"

#include <QDir>
#include <QPainter>

#include <algorithm>
#include <limits>

namespace Zemtar {
namespace {

using namespace ImageFiles;

/// Truncates toward zero; what no int can hold becomes the nearest one, NaN becomes 0.
int truncated(double value)
{
    constexpr double kLow = std::numeric_limits<int>::min();
    constexpr double kHigh = std::numeric_limits<int>::max();
    return value >= kHigh   ? std::numeric_limits<int>::max()
           : value <= kLow  ? std::numeric_limits<int>::min()
           : value == value ? static_cast<int>(value)
                            : 0;
}

/// The background as a pixel. No alpha bits on purpose: a format without alpha shows the colour, others
/// transparency. A channel outside 0..1 spills into its neighbour.
QRgb canvasPixel(const CZemtarColor& background)
{
    const auto channel = [](double value) { return static_cast<unsigned>(truncated(value * 255)); };
    return (channel(background.R()) << 16) | (channel(background.G()) << 8) | channel(background.B());
}

Qt::AspectRatioMode aspectMode(bool keepAspect)
{
    return keepAspect ? Qt::KeepAspectRatio : Qt::IgnoreAspectRatio;
}

/// Scales a file's image onto the middle of a canvas; null for an unreadable file or an impossible size.
QImage scaledOnCanvas(const CZemtarString& in, int width, int height, bool keepAspect,
                      const CZemtarColor& background)
{
    if (!isPossibleSize(width, height)) {
        return {};
    }
    const QImage loaded = load(in);
    QImage canvas(width, height, QImage::Format_ARGB32);
    if (loaded.isNull() || canvas.isNull()) {
        return {};
    }
    canvas.fill(canvasPixel(background));
    const QImage scaled =
        loaded.scaled(QSize(width, height), aspectMode(keepAspect), Qt::SmoothTransformation);
    QPainter painter(&canvas);
    painter.drawImage(QPointF(truncated(0.5 * width - 0.5 * scaled.width()),
                              truncated(0.5 * height - 0.5 * scaled.height())),
                      scaled);
    return canvas;
}

/// Rescales an HDR or EXR file in its own format.
bool resizeHighDynamicRange(const CZemtarString& in, int width, int height, bool keepAspect,
                            const CZemtarString& out)
{
    const FREE_IMAGE_FORMAT format = formatOfName(in);
    const Bitmap loaded = loadBitmap(format, in);
    if (!loaded || FreeImage_GetWidth(loaded.get()) == 0) {
        return false;
    }
    qint64 rows = height;
    if (keepAspect) {
        rows = qint64(FreeImage_GetHeight(loaded.get())) * width / FreeImage_GetWidth(loaded.get());
    }
    if (!isPossibleSize(width, rows)) {
        return false;
    }
    const Bitmap scaled(FreeImage_Rescale(loaded.get(), width, static_cast<int>(rows), FILTER_CATMULLROM));
    return saveBitmap(format, scaled, out);
}

} // namespace

bool ZemtarImage::ConvertImage(CZemtarString in, CZemtarString out)
{
    const QImage image = load(in);
    const QString folder = CZemtarConvert::CZemtarStringToQString(out.Path(L'/'));
    if (!folder.isEmpty() && !QDir(folder).exists()) {
        QDir().mkdir(folder);
    }
    save(image, out);
    return !image.isNull();
}

bool ZemtarImage::GetImageSize(CZemtarString file, int& width, int& height)
{
    if (isHighDynamicRange(file)) {
        const Bitmap bitmap = loadBitmap(formatOfName(file), file);
        if (bitmap) {
            width = static_cast<int>(FreeImage_GetWidth(bitmap.get()));
            height = static_cast<int>(FreeImage_GetHeight(bitmap.get()));
        }
        return bitmap != nullptr;
    }
    const QImage image = load(file);
    if (!image.isNull()) {
        width = image.width();
        height = image.height();
    }
    return !image.isNull();
}

bool ZemtarImage::GetImageSizeAndResolution(CZemtarString file, int& width, int& height, int& dpiX, int& dpiY)
{
    const QImage image = load(file);
    if (!image.isNull()) {
        width = image.width();
        height = image.height();
        dpiX = image.physicalDpiX();
        dpiY = image.physicalDpiY();
    }
    return !image.isNull();
}

void ZemtarImage::ManipulateImage(CZemtarString in, CZemtarString out, int width, int height, double alpha)
{
    if (in.IsEmpty() || out.IsEmpty()) {
        return;
    }
    QImage image = load(in);
    if (image.isNull()) {
        return;
    }
    if (width > 0 || height > 0) {
        const int columns = width > 0 ? width : image.width();
        const int rows = height > 0 ? height : image.height();
        if (!isPossibleSize(columns, rows)) {
            return;
        }
        ResizeImage(image, columns, rows);
    }
    if (alpha >= 0.0) {
        SetImageAlpha(image, alpha);
    }
    save(image, out);
}

void ZemtarImage::ResizeImage(QImage& image, int width, int height)
{
    if (image.isNull() || !isPossibleSize(width, height)) {
        return;
    }
    const QImage scaled = image.scaled(QSize(width, height), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    const int x = static_cast<int>(-0.5 * std::abs(scaled.width() - width));
    const int y = static_cast<int>(-0.5 * std::abs(scaled.height() - height));
    image = scaled.copy(QRect(x, y, width, height));
}

bool ZemtarImage::ResizeImage(CZemtarString in, int width, int height, bool keepAspect, CZemtarString out,
                              int quality)
{
    if (width < 1 || height < 1) {
        return false;
    }
    if (isHighDynamicRange(in)) {
        return resizeHighDynamicRange(in, width, height, keepAspect, out);
    }
    const QImage image = load(in);
    // As QImage::scaled has it: a narrow picture keeps at least one pixel.
    const QSize size = image.size().scaled(width, height, aspectMode(keepAspect)).expandedTo(QSize(1, 1));
    if (image.isNull() || !isPossibleSize(size.width(), size.height())) {
        return false;
    }
    return save(image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation), out, quality);
}

void ZemtarImage::ResizeImage(CZemtarString in, CZemtarString out, int width, int height, bool keepAspect,
                              CZemtarColor background)
{
    save(scaledOnCanvas(in, width, height, keepAspect, background), out);
}

void ZemtarImage::ResizeImage(CZemtarString in, QImage& result, int width, int height, bool keepAspect,
                              CZemtarColor background)
{
    const CZemtarString name = in.HasUnicode() ? in.GetAnsiFileName() : in;
    const QImage canvas = scaledOnCanvas(name, width, height, keepAspect, background);
    if (!canvas.isNull()) {
        result = canvas;
    }
}

void ZemtarImage::SetImageAlpha(QImage& image, double alpha)
{
    // The factor is 256 on purpose: a full alpha gives a colour that is invalid, and so transparent.
    const int value = static_cast<int>(alpha > 0.0 ? std::min(alpha, 1.0) * 256.0 : 0.0);
    QImage faded = transparentImage(image.size(), QImage::Format_ARGB32_Premultiplied);
    if (faded.isNull()) {
        return;
    }
    QPainter painter(&faded);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(0, 0, asPixmapImage(image));
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(faded.rect(), QColor(0, 0, 0, value));
    painter.end();
    image = faded;
}

bool ZemtarImage::CropImage(CZemtarString in, CZemtarString out, int x, int y, int width, int height)
{
    const QImage image = load(in);
    constexpr qint64 kFarthest = std::numeric_limits<int>::max();
    const bool isEmpty = width == 0 && height == 0; // QImage::copy takes that for the whole image
    if (image.isNull() || (!isEmpty && !isPossibleSize(width, height)) || qint64(x) + width > kFarthest ||
        qint64(y) + height > kFarthest) {
        return false;
    }
    return save(image.copy(QRect(x, y, width, height)), out);
}

bool ZemtarImage::Flip(CZemtarString in, CZemtarString out, bool vertical)
{
    const QImage image = load(in);
    QImage mirrored = transparentImage(image.size(), QImage::Format_ARGB32);
    if (image.isNull() || mirrored.isNull()) {
        return false;
    }
    QPainter painter(&mirrored);
    if (vertical) {
        painter.scale(1.0, -1.0);
        painter.translate(0, -image.height());
    } else {
        painter.scale(-1.0, 1.0);
        painter.translate(-image.width(), 0);
    }
    painter.drawImage(0, 0, asPixmapImage(image));
    painter.end();
    return save(mirrored, out);
}

void ZemtarImage::SetImageColorSpace(CZemtarString file, QColorSpace space)
{
    QImage image = load(file);
    if (!image.isNull()) {
        image.setColorSpace(space);
        save(image, file);
    }
}

} // namespace Zemtar
