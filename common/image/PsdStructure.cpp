// Layered pictures: header, colours, resources, layers, and the flattened picture, which alone is decoded.

#include "common/image/ImageFiles.h"
#include "common/image/PictureBytes.h"
#include "common/image/PictureStructure.h"

#include <algorithm>
#include <vector>

namespace Zemtar::ImageFiles {
namespace {

constexpr unsigned kResourceMark = 0x3842494D; // 8BIM
constexpr unsigned kIndexedColors = 1046;      ///< the resource without which a palette is not looked at

struct PsdPicture
{
    unsigned version = 0, channels = 0, depth = 0, mode = 0;
    qint64 width = 0, height = 0;

    qint64 LineBytes() const { return depth == 1 ? (width + 7) / 8 : width * depth / 8; }
};

bool readHeader(PictureBytes& file, PsdPicture& picture)
{
    constexpr unsigned kMark = 0x38425053; // 8BPS
    constexpr unsigned kMostChannels = 56;
    constexpr unsigned kIndexed = 2; // colours that one bit has no room for
    const unsigned mark = file.Big32();
    picture.version = file.Big16();
    file.Skip(6);
    picture.channels = file.Big16();
    picture.height = file.Big32();
    picture.width = file.Big32();
    picture.depth = file.Big16();
    picture.mode = file.Big16();
    const bool isDepth =
        picture.depth == 1 || picture.depth == 8 || picture.depth == 16 || picture.depth == 32;
    return mark == kMark && (picture.version == 1 || picture.version == 2) && picture.channels >= 1 &&
           picture.channels <= kMostChannels && isDepth && (picture.mode != kIndexed || picture.depth != 1) &&
           isPossibleSize(picture.width, picture.height);
}

/// Whether the resources are whole and name a number of indexed colours.
bool readResources(PictureBytes& file, bool& hasColors)
{
    const qint64 length = file.Big32();
    const qint64 end = file.Position() + length;
    while (file.IsGood() && file.Position() < end) {
        if (file.Big32() != kResourceMark) {
            continue; // the decoder looks on, too
        }
        const unsigned id = file.Big16();
        const unsigned name = file.Byte();
        file.Skip(name + (name % 2 == 0 ? 1 : 0));
        const qint64 size = file.Big32();
        hasColors = hasColors || (id == kIndexedColors && size > 0);
        file.Skip(size + size % 2);
    }
    return file.IsGood() && file.Position() == end;
}

/// Whether packed rows fill theirs exactly, or end within; the decoder looks at neither end.
bool hasPackedRows(PictureBytes& file, const PsdPicture& picture)
{
    const qint64 rows = picture.channels * picture.height;
    if (rows * (picture.version == 1 ? 2 : 4) > file.Left()) {
        return false;
    }
    std::vector<qint64> lengths(static_cast<std::size_t>(rows));
    for (qint64& length : lengths) {
        length = picture.version == 1 ? file.Big16() : file.Big32();
    }
    const qint64 line = picture.LineBytes();
    for (const qint64 length : lengths) {
        if (length > file.Left()) {
            return false;
        }
        const qint64 end = file.Position() + length;
        qint64 written = 0;
        while (file.Position() < end) {
            const unsigned count = file.Byte();
            if (count < 128) {
                file.Skip(count + 1);
                written += count + 1;
            } else if (count > 128) {
                file.Byte();
                written += 257 - count;
            }
            if (!file.IsGood() || file.Position() > end || (written > line && file.Position() < end)) {
                return false;
            }
        }
    }
    return true;
}

bool hasPicture(PictureBytes& file, const PsdPicture& picture)
{
    const unsigned compression = file.Big16();
    if (!file.IsGood()) {
        return false;
    }
    if (compression == 0) {
        constexpr unsigned kMostDecoded = 4;
        return file.Left() >= std::min(picture.channels, kMostDecoded) * picture.height * picture.LineBytes();
    }
    return compression == 1 && hasPackedRows(file, picture);
}

/// A resource that names 256 indexed colours, in a section of its own.
QByteArray indexedColorsSection()
{
    return QByteArray::fromHex("0000000e"
                               "3842494d04160000"
                               "000000020100");
}

} // namespace

bool isSoundPsd(QByteArray& bytes)
{
    PictureBytes file(bytes);
    PsdPicture picture;
    if (!readHeader(file, picture)) {
        return false;
    }
    file.Skip(file.Big32());
    const qint64 resources = file.Position();
    bool hasColors = false;
    if (!file.IsGood() || !readResources(file, hasColors)) {
        return false;
    }
    const qint64 high = picture.version == 2 ? file.Big32() : 0;
    const qint64 layers = file.Big32();
    if (high != 0) {
        return false; // more than any file here holds
    }
    file.Skip(layers);
    const qint64 pixels = file.Position();
    if (!file.IsGood() || !hasPicture(file, picture)) {
        return false;
    }
    // Thumbnail, profile and metadata have decoders of their own, and no pixel depends on them.
    bytes = bytes.left(resources) + (hasColors ? indexedColorsSection() : QByteArray(4, '\0')) +
            QByteArray(picture.version == 2 ? 8 : 4, '\0') + bytes.mid(pixels);
    return true;
}

} // namespace Zemtar::ImageFiles
