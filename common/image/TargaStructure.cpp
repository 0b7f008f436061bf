// Targa: rows of pixels, or packets of runs.

#include "common/image/ImageFiles.h"
#include "common/image/PictureBytes.h"
#include "common/image/PictureStructure.h"

#include <algorithm>

namespace Zemtar::ImageFiles {
namespace {

struct TargaPicture
{
    unsigned kind = 0, depth = 0;
    qint64 width = 0, height = 0, start = 0;

    qint64 PixelBytes() const { return (depth + 7) / 8; }
};

TargaPicture readTargaHeader(PictureBytes& file)
{
    TargaPicture picture;
    const unsigned nameLength = file.Byte();
    const unsigned mapType = file.Byte();
    picture.kind = file.Byte();
    file.Skip(2);
    const qint64 colors = file.Little16();
    const qint64 colorBits = file.Byte();
    file.Skip(4);
    picture.width = file.Little16();
    picture.height = file.Little16();
    picture.depth = file.Byte();
    file.Byte();
    file.Skip(nameLength);
    if (picture.depth == 8 && mapType > 0) {
        file.Skip(colors * colorBits / 8);
    }
    picture.start = file.Position();
    return picture;
}

/// Whether packets fill the picture exactly.
bool hasTargaPackets(PictureBytes& file, const TargaPicture& picture)
{
    const qint64 pixels = picture.width * picture.height;
    qint64 done = 0;
    while (done < pixels && file.IsGood()) {
        const unsigned code = file.Byte();
        const unsigned count = (code & 0x7F) + 1;
        file.Skip(picture.PixelBytes() * ((code & 0x80) != 0 ? 1 : count));
        done += count;
    }
    return file.IsGood() && done == pixels;
}

} // namespace

/// The decoder's cache holds as many bytes as fall on a row on average, which may be less than a pixel: zeros
/// are added to the file. They also hide what follows the picture, a small copy of it, for one.
bool isSoundTarga(QByteArray& bytes)
{
    constexpr qint64 kCache = 64;
    constexpr qint64 kFooter = 26;
    constexpr unsigned kPacked = 8;
    PictureBytes file(bytes);
    const TargaPicture picture = readTargaHeader(file);
    if (!file.IsGood() || !isPossibleSize(picture.width, picture.height)) {
        return false;
    }
    const bool isWhole = picture.kind >= kPacked
                             ? hasTargaPackets(file, picture)
                             : file.Left() >= picture.width * picture.height * picture.PixelBytes();
    if (!isWhole) {
        return false;
    }
    const qint64 missing = kCache * picture.height - (bytes.size() - picture.start);
    bytes += QByteArray(std::max<qint64>(missing, 0) + kFooter, '\0');
    return true;
}

} // namespace Zemtar::ImageFiles
