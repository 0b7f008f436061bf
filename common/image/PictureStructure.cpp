#include "common/image/PictureStructure.h"

#include "common/image/ImageFiles.h"
#include "common/image/PictureBytes.h"

#include <algorithm>
#include <array>

namespace Zemtar::ImageFiles {
namespace {

// NOTE: the layouts are those that FreeImage 3.18 decodes, oddities included: what it reads wrongly, it shall
// read wrongly within bounds.

/// 320 x 200 pixels of a home computer: pictures, two maps of colours, background; perhaps a load address.
bool isSoundKoala(PictureBytes file)
{
    constexpr qint64 kScreen = 8000 + 1000 + 1000 + 1;
    const bool hasAddress = file.Byte() == 0 && file.Byte() == 0x60;
    return file.Size() >= kScreen + (hasAddress ? 2 : 0);
}

/// The one resolution that is decoded lies at a fixed place: luminance and, at half the resolution, colour.
bool isSoundPhotoCd(const PictureBytes& file)
{
    constexpr qint64 kStart = 0x30000;
    constexpr qint64 kPixels = qint64{768} * 512;
    return file.Size() >= kStart + kPixels * 3 / 2;
}

// Wireless bitmap

std::uint32_t readMultiByte(PictureBytes& file)
{
    std::uint32_t value = 0;
    for (unsigned byte = 0x80; (byte & 0x80) != 0 && file.IsGood();) {
        byte = file.Byte();
        value = (value << 7) + (byte & 0x7F);
    }
    return value;
}

bool isSoundWbmp(PictureBytes file)
{
    const unsigned type = readMultiByte(file) & 0xFFFF;
    unsigned header = file.Byte();
    while (type == 0 && (header & 0x80) != 0 && file.IsGood()) {
        header = file.Byte();
        if ((header & 0x60) == 0) {
            readMultiByte(file);
        } else if ((header & 0x60) == 0x60) {
            file.Skip(((header & 0x70) >> 4) + (header & 0x0F));
        }
    }
    const qint64 width = readMultiByte(file) & 0xFFFF;
    const qint64 height = readMultiByte(file) & 0xFFFF;
    return type == 0 && isPossibleSize(width, height) && file.Left() >= (width + 7) / 8 * height;
}

// Dr. Halo: runs, each row ended by a zero

bool isSoundCut(PictureBytes file)
{
    const qint64 width = file.Little16();
    const qint64 height = file.Little16();
    file.Skip(4);
    qint64 row = 0;
    qint64 column = 0;
    for (qint64 i = 0; i < width * height && file.IsGood();) {
        const unsigned code = file.Byte();
        if (code == 0) {
            ++row;
            column = 0;
            file.Skip(2);
            continue;
        }
        const unsigned count = code & 0x7F;
        file.Skip((code & 0x80) != 0 ? 1 : count);
        column += count;
        i += count;
        if (row >= height || column > width) {
            return false;
        }
    }
    return file.IsGood() && isPossibleSize(width, height);
}

// Sun raster

bool hasRasRuns(PictureBytes& file, qint64 count)
{
    qint64 done = 0;
    while (done < count && file.IsGood()) {
        unsigned more = 0;
        if (file.Byte() == 0x80) {
            more = file.Byte();
            if (more != 0) {
                file.Byte();
            }
        }
        done += 1 + more;
    }
    return file.IsGood() && done == count; // what is left of a run would begin the next picture
}

bool isSoundRas(PictureBytes file)
{
    constexpr std::uint32_t kMagic = 0x59A66A95;
    constexpr std::uint32_t kRunLengths = 2;
    constexpr std::uint32_t kMostPixelsASide = 0xFFFF;
    const std::uint32_t magic = file.Big32();
    const std::uint32_t width = file.Big32();
    const std::uint32_t height = file.Big32();
    const std::uint32_t depth = file.Big32();
    file.Skip(4);
    const std::uint32_t type = file.Big32();
    const std::uint32_t mapType = file.Big32();
    const std::uint32_t mapLength = file.Big32();
    const bool hasPalette = depth == 1 || depth == 8;
    if (magic != kMagic || !isPossibleSize(width, height) || width > kMostPixelsASide ||
        height > kMostPixelsASide || !(hasPalette || depth == 24 || depth == 32)) {
        return false;
    }
    if (mapType == 1) {
        const std::uint32_t colors = mapLength / 3;
        if (!hasPalette || colors >= (1U << depth)) { // the decoder refuses a full palette
            return false;
        }
        file.Skip(qint64{3} * colors);
    } else if (mapType == 2) {
        file.Skip(mapLength);
    }
    const qint64 columns = depth == 1 ? (width + 7) / 8 : width;
    const qint64 line = (depth == 1 ? columns : columns * depth / 8) + columns % 2;
    return type == kRunLengths ? hasRasRuns(file, line * height) : file.Left() >= line * height;
}

// PC Paintbrush

bool isSoundPcx(PictureBytes file)
{
    constexpr qint64 kHeader = 128;
    constexpr qint64 kLongestRun = 63;
    file.Skip(2);
    const bool hasRuns = file.Byte() == 1;
    const unsigned depth = file.Byte();
    const unsigned left = file.Little16();
    const unsigned top = file.Little16();
    const unsigned right = file.Little16();
    const unsigned bottom = file.Little16();
    file.Seek(65);
    const unsigned planes = file.Byte();
    const qint64 planeLine = file.Little16();
    file.Seek(kHeader);
    if (!file.IsGood() || left >= right || top >= bottom) {
        return false;
    }
    const qint64 width = qint64(right) - left + 1;
    const qint64 height = qint64(bottom) - top + 1;
    const qint64 bytes = planeLine * planes * height;
    return isPossibleSize(width, height) && planeLine * 8 >= width * depth &&
           bytes <= file.Left() * (hasRuns ? kLongestRun : 1);
}

// SGI

bool isSoundSgi(PictureBytes file)
{
    constexpr qint64 kHeader = 512;
    constexpr qint64 kLongestRun = 127;
    file.Skip(2);
    const bool hasRuns = file.Byte() == 1;
    file.Byte();
    const unsigned dimensions = file.Big16();
    const qint64 width = file.Big16();
    const qint64 ySize = file.Big16();
    const qint64 zSize = file.Big16();
    file.Seek(kHeader);
    const qint64 height = dimensions < 2 ? 1 : ySize;
    const qint64 channels = dimensions < 3 ? 1 : zSize;
    const qint64 rows = height * channels;
    if (!file.IsGood() || !isPossibleSize(width, height) || channels < 1 || channels > 4) {
        return false;
    }
    return hasRuns ? file.Left() >= 8 * rows && rows * width <= file.Left() * kLongestRun
                   : file.Left() >= rows * width;
}

// DirectDraw surface

bool isSoundDds(PictureBytes file)
{
    constexpr std::uint32_t kHasPitch = 0x8;
    constexpr std::uint32_t kIsCoded = 0x4;
    constexpr std::uint32_t kIsRgb = 0x40;
    file.Skip(8);
    const std::uint32_t flags = file.Little32();
    const qint64 height = static_cast<std::int32_t>(file.Little32());
    const qint64 width = static_cast<std::int32_t>(file.Little32());
    const qint64 pitch = static_cast<std::int32_t>(file.Little32());
    file.Seek(80);
    const std::uint32_t kind = file.Little32();
    const std::uint32_t code = file.Big32();
    const qint64 depth = file.Little32();
    file.Seek(128);
    if (!file.IsGood() || !isPossibleSize(width, height)) {
        return false;
    }
    if ((kind & kIsRgb) != 0) {
        const qint64 line = (width * depth + 7) / 8;
        const qint64 step = (flags & kHasPitch) != 0 ? pitch : line;
        return depth <= 32 && step >= line && file.Left() >= step * (height - 1) + line;
    }
    const qint64 block = code == 0x44585431 ? 8 : 16; // DXT1; DXT3 and DXT5
    return (kind & kIsCoded) != 0 && file.Left() >= (width / 4) * (height / 4) * block;
}

// Icon: the first of its pictures is decoded, in PNG or as a bitmap whose height counts a mask, too

bool isSoundIcon(PictureBytes file)
{
    constexpr std::uint32_t kPng = 0x89504E47;
    file.Skip(4);
    const unsigned count = file.Little16();
    file.Skip(12);
    file.Seek(file.Little32());
    const qint64 start = file.Position();
    if (file.Big32() == kPng) {
        file.Skip(12);
        const qint64 width = file.Big32();
        const qint64 height = file.Big32();
        return count > 0 && isCredibleSize(width, height, 32, file.Size());
    }
    const qint64 width = static_cast<std::int32_t>(file.Little32());
    const qint64 height = static_cast<std::int32_t>(file.Little32()) / 2;
    file.Skip(2);
    const qint64 depth = file.Little16();
    const qint64 palette = depth <= 8 ? qint64{4} << depth : 0;
    const qint64 pitch = (width * depth + 31) / 32 * 4;
    file.Seek(start + 40 + palette);
    return file.IsGood() && count > 0 && depth <= 32 && isPossibleSize(width, height) &&
           file.Left() >= pitch * height;
}

// JPEG 2000: memory is taken for every tile before one is looked for

bool isSoundJpeg2000(const QByteArray& bytes)
{
    constexpr qint64 kBytesPerTile = 14; ///< its shortest header
    const qsizetype start =
        bytes.indexOf(QByteArray::fromHex("ff4fff51")); // the codestream, in a box or bare
    PictureBytes file(bytes);
    file.Seek(start < 0 ? bytes.size() : start + 8);
    const qint64 right = file.Big32();
    const qint64 bottom = file.Big32();
    const qint64 left = file.Big32();
    const qint64 top = file.Big32();
    const qint64 tileWidth = file.Big32();
    const qint64 tileHeight = file.Big32();
    file.Skip(8);
    const qint64 components = file.Big16();
    if (!file.IsGood() || tileWidth < 1 || tileHeight < 1 ||
        !isCredibleSize(right - left, bottom - top, 8 * components, bytes.size())) {
        return false;
    }
    const qint64 tiles =
        ((right - left + tileWidth - 1) / tileWidth) * ((bottom - top + tileHeight - 1) / tileHeight);
    return tiles <= bytes.size() / kBytesPerTile;
}

// Animations and JPEG with alpha in chunks, as PNG has them

bool isSoundChunks(PictureBytes file)
{
    file.Skip(8);
    while (file.Left() > 0) {
        const qint64 length = file.Big32();
        const std::uint32_t type = file.Big32();
        const qint64 start = file.Position();
        if (type == 0x49484452 || type == 0x4A484452 || type == 0x4D484452) { // IHDR, JHDR, MHDR
            const qint64 width = file.Big32();
            const qint64 height = file.Big32();
            if (!isCredibleSize(width, height, 32, file.Size())) {
                return false;
            }
        }
        file.Seek(start + length + 4);
        if (file.IsGood() && (type == 0x4D454E44 || (type == 0x49454E44 && file.Left() == 0))) { // MEND, IEND
            return true;
        }
    }
    return false;
}

// Graphics interchange format

bool skipGifBlocks(PictureBytes& file)
{
    for (unsigned length = file.Byte(); length != 0; length = file.Byte()) {
        file.Skip(length);
    }
    return file.IsGood();
}

qint64 gifPaletteBytes(unsigned flags)
{
    return (flags & 0x80) != 0 ? qint64{3} << ((flags & 7) + 1) : 0;
}

/// Whether the first picture, which is decoded, has a size that can be.
bool isSoundGif(PictureBytes file)
{
    file.Skip(6 + 4);
    const unsigned flags = file.Byte();
    file.Skip(2 + gifPaletteBytes(flags));
    while (file.IsGood()) {
        const unsigned kind = file.Byte();
        if (kind == 0x2C) {
            file.Skip(4);
            const qint64 width = file.Little16();
            const qint64 height = file.Little16();
            return file.Left() > 0 && isCredibleSize(width, height, 8, file.Size());
        }
        if (kind != 0x21) {
            return false;
        }
        file.Byte();
        skipGifBlocks(file);
    }
    return false;
}

} // namespace

bool needsSoundPicture(FREE_IMAGE_FORMAT format)
{
    constexpr std::array kFormats = {FIF_KOALA, FIF_PCD,   FIF_IFF, FIF_XBM, FIF_WBMP, FIF_CUT, FIF_RAS,
                                     FIF_PCX,   FIF_SGI,   FIF_DDS, FIF_GIF, FIF_PICT, FIF_PSD, FIF_XPM,
                                     FIF_MNG,   FIF_TARGA, FIF_JNG, FIF_ICO, FIF_TIFF, FIF_J2K, FIF_JP2};
    return std::find(kFormats.begin(), kFormats.end(), format) != kFormats.end();
}

bool isSoundPicture(FREE_IMAGE_FORMAT format, QByteArray& bytes)
{
    const PictureBytes file(bytes);
    switch (format) {
    case FIF_KOALA:
        return isSoundKoala(file);
    case FIF_PCD:
        return isSoundPhotoCd(file);
    case FIF_IFF:
        return isSoundIff(bytes);
    case FIF_XBM:
        return isSoundXbm(bytes);
    case FIF_WBMP:
        return isSoundWbmp(file);
    case FIF_CUT:
        return isSoundCut(file);
    case FIF_RAS:
        return isSoundRas(file);
    case FIF_PCX:
        return isSoundPcx(file);
    case FIF_SGI:
        return isSoundSgi(file);
    case FIF_DDS:
        return isSoundDds(file);
    case FIF_TIFF:
        return isSoundTiff(bytes);
    case FIF_J2K:
    case FIF_JP2:
        return isSoundJpeg2000(bytes);
    case FIF_ICO:
        return isSoundIcon(file);
    case FIF_TARGA:
        return isSoundTarga(bytes);
    case FIF_GIF:
        return isSoundGif(file);
    case FIF_MNG:
    case FIF_JNG:
        return isSoundChunks(file);
    case FIF_PICT:
        return isSoundPict(bytes);
    case FIF_PSD:
        return isSoundPsd(bytes);
    case FIF_XPM:
        return isSoundXpm(bytes);
    default:
        return true;
    }
}

} // namespace Zemtar::ImageFiles
