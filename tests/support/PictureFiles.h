// Sound picture files of every format that FreeImage decodes: written by hand, and by FreeImage.
#pragma once

#include "common/image/ImageFiles.h"

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

#include <cstring>
#include <tuple>
#include <utility>

namespace Zemtar::Test {

inline constexpr int kWidth = 16;
inline constexpr int kHeight = 12;

inline QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

/// `count` bytes that change from place to place but repeat, too.
inline QByteArray pixels(int count)
{
    QByteArray bytes(count, '\0');
    for (int i = 0; i < count; ++i) {
        bytes[i] = static_cast<char>(i % 7 < 3 ? 9 : (i * 37) & 0x7F);
    }
    return bytes;
}

/// Rows of a picture with `count` bytes each, every byte a run of one; `prefix` tells how.
inline QByteArray runs(int rows, int count, char prefix, const QByteArray& rowEnd = {})
{
    QByteArray bytes;
    for (int row = 0; row < rows; ++row) {
        for (const char byte : pixels(count)) {
            bytes += prefix;
            bytes += byte;
        }
        bytes += rowEnd;
    }
    return bytes;
}

inline QByteArray littleFile()
{
    QByteArray offsets;
    for (int row = 0; row < kHeight; ++row) { // of 33 bytes each, behind header and two tables
        const int place = 512 + 8 * kHeight + 33 * row;
        offsets += QByteArray(2, '\0') + static_cast<char>(place >> 8) + static_cast<char>(place);
    }
    return hex("01da01010002") + hex("0010000c0001") + QByteArray(500, '\0') + offsets +
           QByteArray(4 * kHeight, '\0') + runs(kHeight, kWidth, 1, QByteArray(1, '\0'));
}

inline QByteArray pict()
{
    const QByteArray frame = hex("00000000000c0010");
    QByteArray rows;
    for (int row = 0; row < kHeight; ++row) { // each a run of 16
        rows += hex("02f1") + static_cast<char>(row);
    }
    QByteArray colors;
    for (int i = 0; i < 16; ++i) {
        colors += QByteArray(1, '\0') + static_cast<char>(i) + QByteArray(6, static_cast<char>(17 * i));
    }
    return QByteArray(514, '\0') + frame + hex("001102ff0c00fffe") + QByteArray(22, '\0') + hex("0098") +
           hex("8010") + frame + QByteArray(8, '\0') + hex("0048000000480000") + hex("0000000800010008") +
           QByteArray(12, '\0') + hex("000000008000000f") + colors + frame + frame + hex("0000") + rows +
           hex("00ff");
}

inline QByteArray psd(bool isPacked)
{
    QByteArray file = hex("38425053000100000000000000030000000c0000001000080003") + hex("00000000");
    file += hex("00000000") + hex("00000000") + (isPacked ? hex("0001") : hex("0000"));
    if (isPacked) {
        for (int row = 0; row < 3 * kHeight; ++row) {
            file += hex("0020");
        }
    }
    return file + (isPacked ? runs(3 * kHeight, kWidth, 0) : pixels(3 * kWidth * kHeight));
}

/// Sound files by name.
inline QList<std::pair<QString, QByteArray>> handMadePictures()
{
    const QByteArray size = hex("0010000c");
    const QByteArray header = hex("00100000") + hex("000c0000"); // little-endian
    const QByteArray iff =
        hex("424d484400000014") + size + hex("0000000004000100000001010010000c") + hex("424f445900000180");
    const QByteArray dds = hex("444453207c00000007100000") + hex("0c000000") + hex("10000000") +
                           QByteArray(56, '\0') + hex("20000000");
    return {
        {"a.iff", hex("464f524d000001a8494c424d") + iff + runs(kHeight, 8, 0) + QByteArray(192, '\0')},
        {"b.lbm", hex("464f524d000001a850424d20") + iff + runs(kHeight, kWidth, 0)},
        {"a.koa", hex("0060") + pixels(10001)},
        {"a.xbm", "#define a_width 16\n#define a_height 2\nstatic char a_bits[] = {\n0x12,0x34,0x56,0x7};\n"},
        {"b.xbm", "#define a_width 16\n#define a_height 2\nstatic short a_bits[] = {\n0x1234, 0x5678};\n"},
        {"a.wbmp", hex("0000100c") + pixels(2 * kHeight)},
        {"a.cut", hex("10000c0000000000") + runs(kHeight, kWidth, '\x81', QByteArray(3, '\0'))},
        {"a.ras", hex("59a66a95000000100000000c00000008000000c0000000010000000000000000") + pixels(192)},
        {"b.ras", hex("59a66a95000000100000000c00000018000000c0000000020000000000000000") +
                      pixels(3 * kWidth * kHeight)},
        {"a.pcx", hex("0a050108000000000f000b0048004800") + QByteArray(48, '\0') + hex("000310000100") +
                      QByteArray(58, '\0') + runs(kHeight, 3 * kWidth, '\xC1')},
        {"a.sgi", littleFile()},
        {"a.dds", dds + hex("0400000044585431") + QByteArray(40, '\0') + pixels(96)},
        {"b.dds", dds + hex("4000000000000000180000000000ff0000ff0000ff000000") + QByteArray(24, '\0') +
                      pixels(3 * kWidth * kHeight)},
        {"a.pict", pict()},
        {"a.psd", psd(false)},
        {"b.psd", psd(true)},
        {"a.xpm", "/* XPM */\nstatic char * a[] = {\n\"3 2 2 1\",\n\"a c #FF0000\",\n\". c "
                  "red\",\n\"a.a\",\n\".a.\"};"},
    };
}

/// Writes what FreeImage makes of pictures of all depths into the folder (with "/" at its end); their names.
inline QStringList writePictures(const QString& folder)
{
    QStringList files;
    for (const int depth : {1, 8, 24, 32}) {
        const ImageFiles::Bitmap bitmap(FreeImage_Allocate(kWidth, kHeight, depth));
        const QByteArray bytes = pixels(static_cast<int>(FreeImage_GetPitch(bitmap.get())) * kHeight);
        std::memcpy(FreeImage_GetBits(bitmap.get()), bytes.constData(),
                    static_cast<std::size_t>(bytes.size()));
        const ImageFiles::Bitmap floats(FreeImage_ConvertToRGBF(bitmap.get()));
        for (const auto& [format, suffix, flags] : {std::tuple(FIF_BMP, "bmp", 0),
                                                    {FIF_BMP, "rle.bmp", BMP_SAVE_RLE},
                                                    {FIF_ICO, "ico", 0},
                                                    {FIF_JPEG, "jpg", 0},
                                                    {FIF_PNG, "png", 0},
                                                    {FIF_PPMRAW, "ppm", 0},
                                                    {FIF_TIFF, "tif", TIFF_LZW},
                                                    {FIF_TIFF, "none.tif", TIFF_NONE},
                                                    {FIF_TARGA, "tga", 0},
                                                    {FIF_GIF, "gif", 0},
                                                    {FIF_WEBP, "webp", 0},
                                                    {FIF_TARGA, "rle.tga", TARGA_SAVE_RLE},
                                                    {FIF_HDR, "hdr", 0},
                                                    {FIF_EXR, "exr", 0},
                                                    {FIF_PFM, "pfm", 0}}) {
            const bool isFloat = format == FIF_HDR || format == FIF_EXR || format == FIF_PFM;
            const QString file = folder + QString("w%1.%2").arg(depth).arg(suffix);
            FIBITMAP* const written = isFloat ? floats.get() : bitmap.get();
            if ((depth > 1 || flags != TARGA_SAVE_RLE) &&
                (isFloat || FreeImage_FIFSupportsExportBPP(format, depth)) &&
                FreeImage_Save(format, written, QFile::encodeName(file).constData(), flags)) {
                files += file;
            }
        }
    }
    return files;
}

} // namespace Zemtar::Test
