// Files of all formats that FreeImage decodes: sound ones come out as FreeImage decodes them, damaged ones
// are refused or decoded within bounds, which the sanitizers watch.

#include "common/image/ImageFiles.h"
#include "common/image/ZemtarImage.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace Zemtar {
namespace {

using namespace ImageFiles;

constexpr int kWidth = 16;
constexpr int kHeight = 12;

QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

/// `count` bytes that change from place to place but repeat, too.
QByteArray pixels(int count)
{
    QByteArray bytes(count, '\0');
    for (int i = 0; i < count; ++i) {
        bytes[i] = static_cast<char>(i % 7 < 3 ? 9 : (i * 37) & 0x7F);
    }
    return bytes;
}

/// Rows of a picture with `count` bytes each, every byte a run of one; `prefix` tells how.
QByteArray runs(int rows, int count, char prefix, const QByteArray& rowEnd = {})
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

QByteArray littleFile()
{
    QByteArray offsets;
    for (int row = 0; row < kHeight; ++row) { // of 33 bytes each, behind header and two tables
        const int place = 512 + 8 * kHeight + 33 * row;
        offsets += QByteArray(2, '\0') + static_cast<char>(place >> 8) + static_cast<char>(place);
    }
    return hex("01da01010002") + hex("0010000c0001") + QByteArray(500, '\0') + offsets +
           QByteArray(4 * kHeight, '\0') + runs(kHeight, kWidth, 1, QByteArray(1, '\0'));
}

QByteArray pict()
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

QByteArray psd(bool isPacked)
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

/// A little-endian TIFF file with another value, or another number, of a tag.
QByteArray withTag(QByteArray file, int tag, int value, int renamed = 0)
{
    const auto number = [&](qsizetype at) {
        return static_cast<uchar>(file[at]) | (static_cast<uchar>(file[at + 1]) << 8);
    };
    const qsizetype directory = number(4);
    for (qsizetype entry = directory + 2; entry < directory + 2 + 12 * number(directory); entry += 12) {
        if (number(entry) == tag) {
            file[entry + 8] = static_cast<char>(value);
            file[entry + 9] = 0;
            file[entry] = static_cast<char>(renamed != 0 ? renamed : tag);
        }
    }
    return file;
}

/// Sound files by name.
QList<std::pair<QString, QByteArray>> handMade()
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

struct HostilePictures : testing::Test, TestFolder
{
    HostilePictures()
    {
        FreeImage_SetOutputMessage([](FREE_IMAGE_FORMAT, const char*) {});
        for (const auto& [name, bytes] : handMade()) {
            files += write(name, bytes);
        }
        AddWritten();
    }

    /// What FreeImage itself writes of pictures of all depths.
    void AddWritten()
    {
        for (const int depth : {1, 8, 24, 32}) {
            const Bitmap bitmap(FreeImage_Allocate(kWidth, kHeight, depth));
            const QByteArray bytes = pixels(static_cast<int>(FreeImage_GetPitch(bitmap.get())) * kHeight);
            std::memcpy(FreeImage_GetBits(bitmap.get()), bytes.constData(),
                        static_cast<std::size_t>(bytes.size()));
            const Bitmap floats(FreeImage_ConvertToRGBF(bitmap.get()));
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
                const QString file = path(QString("w%1.%2").arg(depth).arg(suffix));
                FIBITMAP* const written = isFloat ? floats.get() : bitmap.get();
                if ((depth > 1 || flags != TARGA_SAVE_RLE) &&
                    (isFloat || FreeImage_FIFSupportsExportBPP(format, depth)) &&
                    FreeImage_Save(format, written, toHost(file), flags)) {
                    files += file;
                }
            }
        }
    }

    static Bitmap decode(const QString& file) { return loadBitmap(formatOfName(toHost(file)), toHost(file)); }

    QStringList files;
};

TEST_F(HostilePictures, SoundFilesComeOutAsTheDecoderHasThem)
{
    EXPECT_GT(files.size(), 50);
    for (const QString& file : files) {
        const Bitmap ours = decode(file);
        const Bitmap theirs(FreeImage_Load(formatOfName(toHost(file)), toHost(file), 0));
        ASSERT_EQ(ours == nullptr, theirs == nullptr) << file.toStdString();
        if (!ours) {
            continue; // a file of FreeImage's that it does not read
        }
        ASSERT_EQ(FreeImage_GetPitch(ours.get()), FreeImage_GetPitch(theirs.get())) << file.toStdString();
        ASSERT_EQ(FreeImage_GetHeight(ours.get()), FreeImage_GetHeight(theirs.get())) << file.toStdString();
        for (unsigned y = 0; y < FreeImage_GetHeight(ours.get()); ++y) {
            EXPECT_EQ(0, std::memcmp(FreeImage_GetScanLine(ours.get(), static_cast<int>(y)),
                                     FreeImage_GetScanLine(theirs.get(), static_cast<int>(y)),
                                     FreeImage_GetLine(ours.get())))
                << file.toStdString() << ' ' << y;
        }
    }
}

TEST_F(HostilePictures, KnownOnesAreRefused)
{
    const QByteArray grey = read(path("w8.none.tif"));
    const std::pair<const char*, QByteArray> known[] = {
        {"size.iff", hex("464f524d00000100494c424d")},
        {"cut.xbm", "#define a_width 16\n#define a_height 2\nstatic char a_bits[] = {\n0x12,"},
        {"line.xbm", "#define a_width 16\n#define a_height 1\n" + QByteArray(600, ' ') +
                         "\nstatic char a_bits[] = {\n0x12,0x34};"},
        {"wide.dds", read(path("b.dds")).replace(12, 8, hex("1000000018000001"))},
        {"tall.ras", read(path("a.ras")).replace(8, 4, hex("0fffffff"))},
        {"large.ras",
         hex("59a66a950000ffff0000ffff00000020000000c0000000020000000000000000") + QByteArray(1195, '\x01')},
        {"palette.ras", read(path("b.ras")).replace(24, 8, hex("0000000100000030"))},
        {"runs.psd", read(path("b.psd")).replace(40, 2, hex("0001"))},
        {"colors.pict", read(path("a.pict")).replace(606, 2, hex("0fff"))},
        {"rows.cut", read(path("a.cut")).insert(8, QByteArray(3 * kHeight, '\0'))},
        {"small.tga", hex("00000a0000000000000000000100ffff1800") + hex("ff010203")},
        {"palette.tif", withTag(grey, 262, 3)},
        {"samples.tif", withTag(grey, 277, 4)},
        {"lab.tif", withTag(grey, 262, 8)},
        {"strips.tif", withTag(grey, 278, 0)},
        {"header.koa", QByteArray(100, '\0')},
        {"short.pcd", QByteArray(2048, '\0')},
    };
    for (const auto& [name, bytes] : known) {
        EXPECT_EQ(decode(write(name, bytes)), nullptr) << name;
        EXPECT_TRUE(ZemtarImage::ConvertToExr(host(name), host("out.exr"), true).IsEmpty()) << name;
    }
    EXPECT_FALSE(QFile::exists(path("out.exr")));
}

TEST_F(HostilePictures, GreyWithoutANumberOfSamplesHasOne)
{
    const QString file = write("class G.tif", withTag(read(path("w8.none.tif")), 277, 1, 276));
    const Bitmap bitmap = decode(file);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(FreeImage_GetBPP(bitmap.get()), 8u);
    EXPECT_FALSE(FreeImage_IsTransparent(bitmap.get()));
}

TEST_F(HostilePictures, UniformPicturesWithoutLossAreSmall)
{
    const Bitmap white(FreeImage_Allocate(8192, 4096, 24));
    const CZemtarString file = host("white.webp");
    ASSERT_TRUE(FreeImage_Save(FIF_WEBP, white.get(), file, WEBP_LOSSLESS));
    EXPECT_LT(QFileInfo(toQt(file)).size(), 2000);
    EXPECT_NE(loadBitmap(FIF_WEBP, file), nullptr);
}

TEST_F(HostilePictures, DamageStaysWithinBounds)
{
    std::minstd_rand random(20);
    const auto below = [&](qsizetype bound) {
        return static_cast<qsizetype>(random() % static_cast<unsigned long>(bound));
    };
    for (const QString& file : files) {
        const QByteArray sound = read(file);
        const QString name = path("damaged." + QFileInfo(file).suffix());
        for (int i = 0; i < 12; ++i) {
            QByteArray bytes = sound;
            for (qsizetype changes = below(5); changes >= 0; --changes) {
                const qsizetype place =
                    below(changes % 2 == 0 ? bytes.size() : std::min<qsizetype>(bytes.size(), 64));
                bytes[place] = static_cast<char>(random() % 3 == 0 ? 0xFF : random());
            }
            if (i % 4 == 0) {
                bytes.truncate(below(bytes.size()));
            }
            write(QFileInfo(name).fileName(), bytes);
            const Bitmap bitmap = decode(name);
            EXPECT_TRUE(!bitmap ||
                        isPossibleSize(FreeImage_GetWidth(bitmap.get()), FreeImage_GetHeight(bitmap.get())));
        }
    }
}

} // namespace
} // namespace Zemtar
