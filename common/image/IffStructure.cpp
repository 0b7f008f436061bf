// Interchange file format: pictures in chunks, in packed rows of pixels or of bit planes.

#include "common/image/ImageFiles.h"
#include "common/image/PictureBytes.h"
#include "common/image/PictureStructure.h"

#include <algorithm>

namespace Zemtar::ImageFiles {
namespace {

struct IffPicture
{
    unsigned width = 0, height = 0, planes = 0, compression = 0;

    unsigned Depth() const { return planes > 8 ? 24 : 8; }
};

bool readIffHeader(PictureBytes& file, IffPicture& picture)
{
    picture.width = file.Big16();
    picture.height = file.Big16();
    file.Skip(4);
    picture.planes = file.Byte();
    const unsigned masking = file.Byte();
    picture.compression = file.Byte();
    file.Skip(9);
    picture.planes += masking & 1;
    return file.IsGood() && (picture.planes <= 8 || picture.planes == 24) &&
           isPossibleSize(picture.width, picture.height);
}

/// Rows of whole pixels. The decoder writes all of a run, so that each row must end with one.
bool isSoundPackedBody(PictureBytes& file, const IffPicture& picture)
{
    const qint64 line = (qint64(picture.width) * picture.Depth() / 8 + 1) & ~qint64{1};
    if (picture.compression != 1) {
        return file.Left() >= line * picture.height;
    }
    for (unsigned row = 0; row < picture.height && file.IsGood(); ++row) {
        qint64 written = 0;
        while (written < line && file.IsGood()) {
            const unsigned count = file.Byte();
            if (count < 128) {
                file.Skip(count + 1);
                written += count + 1;
            } else if (count > 128) {
                file.Byte();
                written += 257 - count;
            }
        }
        if (written != line) {
            return false;
        }
    }
    return file.IsGood();
}

/// Rows of bit planes; a run that goes beyond its row is cut off.
bool isSoundPlanarBody(PictureBytes& file, const IffPicture& picture)
{
    const qint64 line = qint64((picture.width + 15) / 16 * 2) * picture.planes;
    if (picture.compression == 0) {
        return file.Left() >= line * picture.height;
    }
    for (unsigned row = 0; row < picture.height; ++row) {
        for (qint64 x = 0; x < line;) {
            const unsigned count = file.Byte();
            if (count < 128) {
                file.Skip(std::min<qint64>(count + 1, line - x));
                x += count + 1;
            } else if (count > 128) {
                file.Byte();
                x += 257 - count;
            }
            if (!file.IsGood()) {
                return false;
            }
        }
    }
    return true;
}

} // namespace

bool isSoundIff(const QByteArray& bytes)
{
    PictureBytes file(bytes);
    const std::uint32_t form = file.Big32();
    std::uint32_t left = file.Big32() - 4; // wraps as the decoder's does
    const std::uint32_t type = file.Big32();
    if (form != 0x464F524D || (type != 0x494C424D && type != 0x50424D20)) { // FORM; ILBM, PBM
        return false;
    }
    IffPicture picture;
    while (left != 0 && file.IsGood()) {
        const std::uint32_t chunk = file.Big32();
        const std::uint32_t size = file.Big32();
        const qint64 start = file.Position();
        if (chunk == 0x424D4844 && !readIffHeader(file, picture)) { // BMHD
            return false;
        }
        if (chunk == 0x424F4459) { // BODY
            return picture.width > 0 &&
                   (type == 0x494C424D ? isSoundPlanarBody(file, picture) : isSoundPackedBody(file, picture));
        }
        const qint64 padded = qint64{size} + (size & 1);
        file.Seek(start + padded);
        left -= static_cast<std::uint32_t>(padded) + 8;
    }
    return false;
}

} // namespace Zemtar::ImageFiles
