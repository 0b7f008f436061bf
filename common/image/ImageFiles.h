#pragma once

#include "host/CZemtarString.h"

#include <FreeImage.h>
#include <QImage>
#include <QString>

#include <functional>
#include <memory>

/// What the image utilities share about files: loading and saving through Qt and FreeImage with the checks
/// that hostile files and sizes need.
namespace Zemtar::ImageFiles {

/// Largest image that is loaded or made: 1 GiB as 32-bit pixels, a panorama of 23,170 x 11,585.
constexpr qint64 kMaxPixels = qint64(1) << 28;

/// Whether an image of this size can be made: both sides positive, not more than kMaxPixels.
constexpr bool isPossibleSize(qint64 width, qint64 height)
{
    return width > 0 && height > 0 && width <= kMaxPixels && height <= kMaxPixels / width;
}

/// Whether a file of `fileSize` bytes can be believed to hold a picture of that size and depth. Pictures of
/// up to 64 MiB are: no harm is done by them. Larger ones take more memory for each of the file's bytes than
/// any coding of a uniform picture packs into it.
constexpr bool isCredibleSize(qint64 width, qint64 height, qint64 bitsPerPixel, qint64 fileSize)
{
    constexpr qint64 kHarmless = qint64(64) << 20;
    constexpr qint64 kMostExpansion = 65536; // EXR's PIZ on wide scan lines stays below it
    if (!isPossibleSize(width, height)) {
        return false;
    }
    const qint64 bytes = width * height * bitsPerPixel / 8;
    return bytes <= kHarmless || bytes / kMostExpansion <= fileSize;
}

/// Loads an image with automatic format detection; null for unreadable files and those whose header claims
/// an impossible size. Qt's own limit (QImageReader::allocationLimit) holds too.
QImage load(const CZemtarString& file);

/// Saves an image in the format of the name's suffix; `quality` as QImage::save has it. The file appears
/// under its name when it is whole: a failure leaves no new file and an old one as it was.
bool save(const QImage& image, const CZemtarString& file, int quality = -1, const char* format = nullptr);

/// Has `write` make a file, under the name that it is given, which takes the place of `file` when
/// `write` returns true. A target that is no ordinary file, or whose folder takes no new one, is written
/// directly.
bool writeWhole(const QString& file, const std::function<bool(const QString& name)>& write);

struct BitmapDeleter
{
    void operator()(FIBITMAP* bitmap) const { FreeImage_Unload(bitmap); }
};
/// A FreeImage bitmap that is unloaded with its owner.
using Bitmap = std::unique_ptr<FIBITMAP, BitmapDeleter>;

/// Loads a file with FreeImage; null for an unknown format, an unreadable file, one whose header claims an
/// impossible size or far more pixels than its bytes can hold, one whose structure would lead FreeImage's
/// decoder astray, and JPEG XR, whose decoder nothing protects. Formats whose structure is looked at are read
/// whole into memory, up to 2 GiB.
Bitmap loadBitmap(FREE_IMAGE_FORMAT format, const CZemtarString& file);

/// Saves a bitmap with FreeImage as `save` does; false for a null bitmap.
bool saveBitmap(FREE_IMAGE_FORMAT format, const Bitmap& bitmap, const CZemtarString& file, int flags = 0);

/// The format that FreeImage takes a file name for; FIF_UNKNOWN when none.
FREE_IMAGE_FORMAT formatOfName(const CZemtarString& file);

/// Whether the name's extension is hdr or exr, in any letter case: such files go through FreeImage.
bool isHighDynamicRange(const CZemtarString& file);

} // namespace Zemtar::ImageFiles
