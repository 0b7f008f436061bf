// Macintosh PICT: a list of drawing operations, of which FreeImage decodes the first that is a picture.

#include "common/image/ImageFiles.h"
#include "common/image/PictureBytes.h"
#include "common/image/PictureStructure.h"

#include <algorithm>
#include <array>

namespace Zemtar::ImageFiles {
namespace {

/// Operands in bytes of the operations before A2, -1 where a length precedes them; those with a rule of their
/// own are not looked up. Numbers that the format leaves undefined count as the decoder counts them.
int operandBytes(unsigned operation)
{
    constexpr std::array<int, 0x24> kFirst = {0, 0, 8, 2, 1, 2, 4, 4, 2, 8, 8, 4, 4, 2, 4, 4, 8, 1,
                                              0, 0, 0, 2, 2, 0, 0, 0, 6, 6, 0, 6, 0, 6, 8, 4, 6, 2};
    if (operation < kFirst.size()) {
        return kFirst[operation];
    }
    const bool isSame = (operation & 8) != 0; // the shape drawn last: an arc's angles are all that is told
    switch (operation >> 4) {
    case 2:
        return operation < 0x28 || operation >= 0x2C ? -1 : 0;
    case 3:
    case 4:
    case 5:
        return isSame ? 0 : 8;
    case 6:
        return isSame ? 4 : 12;
    case 9:
        return -1;
    case 10:
        return 2;
    default:
        return 0;
    }
}

struct PictPixels
{
    int width = 0, height = 0;
    unsigned rowBytes = 0, pixelSize = 1, components = 1;

    /// Bytes from the beginning of a row to the end of the decoded picture, whose last row in memory is the
    /// first in the file.
    qint64 Room(int row) const
    {
        const qint64 pitch = pixelSize > 8 ? qint64{4} * width : (qint64(width) + 3) / 4 * 4;
        return (row + 1) * pitch;
    }
};

void readBounds(PictureBytes& file, PictPixels& pixels)
{
    const int top = static_cast<int>(file.Big16());
    const int left = static_cast<int>(file.Big16());
    const int bottom = static_cast<int>(file.Big16());
    const int right = static_cast<int>(file.Big16());
    pixels.width = right - left;
    pixels.height = bottom - top;
}

void readPixelMap(PictureBytes& file, PictPixels& pixels)
{
    file.Skip(2 + 2 + 4 + 4 + 4 + 2);
    pixels.pixelSize = file.Big16();
    pixels.components = file.Big16();
    file.Skip(2 + 4 + 4 + 4);
}

/// Whether the colours fit the decoder's table.
bool hasColorTable(PictureBytes& file)
{
    constexpr unsigned kMostColors = 256;
    file.Skip(4);
    const bool isInOrder = (file.Big16() & 0x8000) != 0;
    const unsigned colors = (file.Big16() + 1) & 0xFFFF;
    for (unsigned i = 0; i < colors && file.IsGood(); ++i) {
        const unsigned index = file.Big16();
        if (!isInOrder && index >= colors) {
            return false;
        }
        file.Skip(6);
    }
    return file.IsGood() && colors <= kMostColors;
}

unsigned readLineLength(PictureBytes& file, unsigned rowBytes)
{
    return rowBytes > 250 ? file.Big16() : file.Byte();
}

/// Follows a row packed byte by byte; the bytes that the decoder writes.
qint64 unpackedBytes(PictureBytes& file, unsigned rowBytes, unsigned lineLength)
{
    if (rowBytes < 8) { // not packed
        file.Skip(rowBytes);
        return rowBytes;
    }
    qint64 written = 0;
    for (unsigned i = 0; i < lineLength && file.IsGood();) {
        const unsigned count = file.Byte();
        if (count == 0x80) {
            ++i;
        } else if (count > 0x80) {
            file.Byte();
            written += 257 - count;
            i += 2;
        } else {
            file.Skip(count + 1);
            written += count + 1;
            i += count + 2;
        }
    }
    return written;
}

bool hasPlanes(PictureBytes& file, const PictPixels& pixels, unsigned rowBytes)
{
    rowBytes = rowBytes == 0 ? (pixels.width * 4) & 0xFFFF : rowBytes;
    const qint64 needed = qint64(pixels.width) * (pixels.components == 3 ? 3 : 4);
    for (int row = 0; row < pixels.height && file.IsGood(); ++row) {
        const unsigned lineLength = readLineLength(file, rowBytes);
        if (unpackedBytes(file, rowBytes, lineLength) > rowBytes) {
            return false;
        }
    }
    return file.IsGood() && needed <= rowBytes;
}

bool hasBytes(PictureBytes& file, const PictPixels& pixels, unsigned rowBytes)
{
    rowBytes &= 0x7FFF;
    rowBytes = rowBytes == 0 ? static_cast<unsigned>(pixels.width) : rowBytes;
    for (int row = 0; row < pixels.height && file.IsGood(); ++row) {
        const unsigned lineLength = readLineLength(file, rowBytes);
        if (unpackedBytes(file, rowBytes, lineLength) > pixels.Room(row)) {
            return false;
        }
    }
    return file.IsGood();
}

/// Follows `count` units that are expanded to bytes, or words to 32-bit pixels; the bytes that the decoder
/// writes. It takes what is left of a row's last byte from bytes of their own.
qint64 expandedBytes(PictureBytes& file, qint64 count, unsigned pixelSize)
{
    if (pixelSize == 16) {
        file.Skip(2 * count);
        return 4 * count;
    }
    const qint64 perByte = 8 / pixelSize;
    const qint64 rest = pixelSize == 4                       ? count & 1
                        : pixelSize == 2                     ? std::max<qint64>((count & 3) - 1, 0)
                        : pixelSize == 1 && (count & 7) != 0 ? 7 - ((8 - count) & 7)
                                                             : 0;
    file.Skip(count + rest);
    return count * perByte + rest;
}

/// Follows a row whose packed units are words or hold several pixels; the bytes that the decoder writes.
qint64 unpackedUnits(PictureBytes& file, unsigned pixelSize, unsigned lineLength)
{
    const unsigned unit = pixelSize == 16 ? 2 : 1;
    const qint64 expanded = pixelSize == 16 ? 4 : 8 / pixelSize;
    qint64 written = 0;
    qint64 end = 0; // of what was written
    for (unsigned i = 0; i < lineLength && file.IsGood();) {
        const unsigned count = file.Byte();
        if (count == 0x80) {
            ++i;
        } else if (count > 0x80) {
            const qint64 length = 257 - count;
            end = std::max(end, written + expandedBytes(file, 1, pixelSize));
            written += length * expanded;
            i += unit + 1;
        } else {
            const qint64 length = count + 1;
            end = std::max(end, written + expandedBytes(file, length, pixelSize));
            written += length * expanded;
            i += static_cast<unsigned>(length) * unit + 1;
        }
        end = std::max(end, written);
    }
    return end;
}

bool hasUnits(PictureBytes& file, const PictPixels& pixels, unsigned rowBytes)
{
    const unsigned size = pixels.pixelSize;
    if (size != 1 && size != 2 && size != 4 && size != 8 && size != 16) {
        return false;
    }
    rowBytes = size <= 8 ? rowBytes & 0x7FFF : rowBytes;
    rowBytes = rowBytes == 0 ? (pixels.width * (size == 16 ? 2 : 1)) & 0xFFFF : rowBytes;
    for (int row = 0; row < pixels.height && file.IsGood(); ++row) {
        const qint64 written = rowBytes < 8 ? expandedBytes(file, pixels.width, size)
                                            : unpackedUnits(file, size, readLineLength(file, rowBytes));
        if (written > pixels.Room(row)) {
            return false;
        }
    }
    return file.IsGood();
}

bool hasPixels(PictureBytes& file, const PictPixels& pixels, unsigned rowBytes)
{
    if (!isPossibleSize(pixels.width, pixels.height)) {
        return false;
    }
    return pixels.pixelSize == 32  ? hasPlanes(file, pixels, rowBytes)
           : pixels.pixelSize == 8 ? hasBytes(file, pixels, rowBytes)
                                   : hasUnits(file, pixels, rowBytes);
}

void skipRegion(PictureBytes& file)
{
    file.Skip((file.Big16() - 2) & 0xFFFF);
}

/// A picture in indexed colours, or in one bit; `isRegion`: through a mask.
bool hasBits(PictureBytes& file, bool isRegion)
{
    const unsigned rowBytes = file.Big16();
    const bool isPixelMap = (rowBytes & 0x8000) != 0;
    PictPixels pixels;
    readBounds(file, pixels);
    if (isPixelMap) {
        readPixelMap(file, pixels);
        if (!hasColorTable(file)) {
            return false;
        }
    }
    file.Skip(8 + 8 + 2); // source, target, mode
    if (isRegion) {
        skipRegion(file);
    }
    return hasPixels(file, pixels, rowBytes);
}

bool hasDirectBits(PictureBytes& file)
{
    file.Skip(6);
    PictPixels pixels;
    readBounds(file, pixels);
    readPixelMap(file, pixels);
    file.Skip(8 + 8 + 2);
    return hasPixels(file, pixels, 0);
}

/// A pattern of pixels, which is skipped row by row.
bool skipPattern(PictureBytes& file)
{
    const unsigned type = file.Big16();
    file.Skip(8);
    if (type == 2) {
        file.Skip(5);
        return true;
    }
    unsigned rowBytes = file.Big16();
    PictPixels pixels;
    readBounds(file, pixels);
    readPixelMap(file, pixels);
    if (type != 1 || !hasColorTable(file) || pixels.height < 0) {
        return false;
    }
    rowBytes = pixels.pixelSize <= 8 ? rowBytes & 0x7FFF : rowBytes;
    rowBytes = rowBytes == 0 ? (pixels.width * (pixels.pixelSize == 16 ? 2 : 1)) & 0xFFFF : rowBytes;
    if (rowBytes < 8) {
        file.Skip(qint64{rowBytes} * pixels.height);
        return true;
    }
    for (int row = 0; row < pixels.height && file.IsGood(); ++row) {
        file.Skip(readLineLength(file, rowBytes));
    }
    return true;
}

/// Whether a JPEG file that began just now has a possible size.
bool hasPossibleJpegSize(PictureBytes& file)
{
    while (file.IsGood()) {
        const unsigned mark = file.Byte();
        const unsigned kind = file.Byte();
        const unsigned length = file.Big16();
        const bool isFrame = kind >= 0xC0 && kind <= 0xCF && kind != 0xC4 && kind != 0xC8 && kind != 0xCC;
        if (mark != 0xFF) {
            return false;
        }
        if (isFrame) {
            file.Byte();
            const qint64 height = file.Big16();
            const qint64 width = file.Big16();
            return isCredibleSize(width, height, 24, file.Size());
        }
        file.Skip(qint64{length} - 2);
    }
    return false;
}

/// A JPEG file somewhere in the operand, which FreeImage hands to its JPEG decoder.
bool hasJpeg(PictureBytes& file)
{
    const qint64 length = file.Big32();
    unsigned last = file.Byte();
    for (qint64 i = 0; i < length && file.Left() > 0; ++i) {
        const unsigned byte = file.Byte();
        if (last == 0xFF && byte == 0xD8) {
            return hasPossibleJpegSize(file);
        }
        last = byte;
    }
    return false;
}

/// Skips an operation without pixels; false when the decoder would give up or go back.
bool skipOperation(PictureBytes& file, unsigned operation)
{
    const qint64 start = file.Position();
    if (operation == 0x01) {
        const unsigned length = file.Big16();
        file.Skip(length == 10 ? 8 : qint64{length} - 2);
    } else if (operation >= 0x12 && operation <= 0x14) {
        return skipPattern(file);
    } else if (operation >= 0x70 && operation <= 0x77) {
        skipRegion(file);
    } else if (operation == 0xA1) {
        file.Skip(2);
        file.Skip(file.Big16());
    } else if (operation < 0xA2) {
        const int bytes = operandBytes(operation);
        file.Skip(bytes < 0 ? file.Big16() : static_cast<unsigned>(bytes));
    } else if (operation == 0xC00) {
        file.Skip(24);
    } else if (operation <= 0xAF) {
        file.Skip(file.Big16());
    } else if (operation <= 0xCF || (operation >= 0x8000 && operation <= 0x80FF)) {
        return true;
    } else if (operation <= 0xFE || operation >= 8100) { // decimal in the decoder
        const std::uint32_t length = file.Big32();
        file.Skip(length);
    } else {
        file.Skip((operation >> 7) & 0xFF);
    }
    return file.IsGood() && file.Position() >= start;
}

} // namespace

bool isSoundPict(const QByteArray& bytes)
{
    constexpr qint64 kHeader = 512 + 2 + 8; // the application's own, size, frame
    PictureBytes file(bytes);
    file.Seek(kHeader);
    unsigned mark = 0;
    while (mark == 0 && file.IsGood()) {
        mark = file.Byte();
    }
    const unsigned version = file.Byte();
    if (mark != 0x11 || (version == 2 && file.Byte() != 0xFF) || version < 1 || version > 2) {
        return false;
    }
    while (file.IsGood()) {
        unsigned operation = 0;
        if (version == 1 || file.Position() % 2 != 0) {
            operation = file.Byte();
        }
        if (version == 2) {
            operation = file.Big16();
        }
        switch (operation) {
        case 0x90:
        case 0x98:
            return hasBits(file, false);
        case 0x91:
        case 0x99:
            return hasBits(file, true);
        case 0x9A:
            return hasDirectBits(file);
        case 0x8200:
            return hasJpeg(file);
        case 0xFF:
        case 0xFFFF:
            return false;
        default:
            if (!skipOperation(file, operation)) {
                return false;
            }
        }
    }
    return false;
}

} // namespace Zemtar::ImageFiles
