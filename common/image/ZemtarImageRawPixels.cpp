// Raw pixel buffers of ZemtarImage.

#include "common/image/ImageFiles.h"
#include "common/image/ZemtarImage.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace Zemtar {
namespace {

/// Bytes from one row to the next in a buffer that both operations exchange with their callers.
qsizetype rowStride(int columns, int bytesPerPixel)
{
    return (static_cast<qsizetype>(columns) * bytesPerPixel + 3) / 4 * 4;
}

bool isAligned(const void* pixels)
{
    return reinterpret_cast<std::uintptr_t>(pixels) % 4 == 0;
}

/// Copies the pixels of `image` to memory that `free` releases; null when there is nothing to copy.
unsigned char* copyOfPixels(const QImage& image)
{
    const qsizetype stride = rowStride(image.width(), image.depth() / 8);
    if (image.isNull()) {
        return nullptr;
    }
    // Zeroed, so that the padding at the end of a row carries nothing of this process out.
    auto* const pixels =
        static_cast<unsigned char*>(std::calloc(static_cast<std::size_t>(image.height()), stride));
    if (pixels == nullptr) {
        return nullptr;
    }
    const auto used = static_cast<std::size_t>(image.width()) * (image.depth() / 8);
    for (int row = 0; row < image.height(); ++row) {
        std::memcpy(pixels + row * stride, image.constScanLine(row), used);
    }
    return pixels;
}

} // namespace

void ZemtarImage::createImage(void* pixels, int rows, int columns, CZemtarString fileName, PixelDataType,
                              PixelFormat format)
{
    if (pixels == nullptr || rows <= 0 || columns <= 0) {
        return;
    }
    const auto* const bytes = static_cast<const unsigned char*>(pixels);
    QImage image;
    if (format == PixelFormatRGBA) {
        // The mirrored image is a copy, so the words of the conversion after it lie on their boundaries.
        image = QImage(bytes, columns, rows, rowStride(columns, 4), QImage::Format_RGBA8888)
                    .mirrored(false, true)
                    .convertToFormat(QImage::Format_ARGB32);
    } else if (format == PixelFormatRGB) {
        image = QImage(bytes, columns, rows, rowStride(columns, 3), QImage::Format_RGB888);
        if (!isAligned(bytes)) {
            image = image.copy();
        }
    }
    ImageFiles::save(image, fileName);
}

unsigned char* ZemtarImage::getImageAsRawData(CZemtarString fileName, PixelFormat format, int& height,
                                              int& width)
{
    const QImage loaded = ImageFiles::load(fileName);
    height = loaded.height();
    width = loaded.width();
    // The values deliberately mean other layouts here than in createImage.
    if (format == PixelFormatRGBA) {
        return copyOfPixels(loaded.convertToFormat(QImage::Format_ARGB32));
    }
    if (format == PixelFormatRGB888) {
        return copyOfPixels(loaded.convertToFormat(QImage::Format_RGB888));
    }
    return nullptr;
}

} // namespace Zemtar
