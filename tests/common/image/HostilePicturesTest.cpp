// Files of all formats that FreeImage decodes: sound ones come out as FreeImage decodes them, damaged ones
// are refused or decoded within bounds, which the sanitizers watch.

#include "common/image/ImageFiles.h"
#include "common/image/ZemtarImage.h"
#include "tests/support/PictureFiles.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace Zemtar {
namespace {

using namespace ImageFiles;
using Zemtar::Test::hex;
using Zemtar::Test::kHeight;

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

struct HostilePictures : testing::Test, TestFolder
{
    HostilePictures()
    {
        FreeImage_SetOutputMessage([](FREE_IMAGE_FORMAT, const char*) {});
        for (const auto& [name, bytes] : Zemtar::Test::handMadePictures()) {
            files += write(name, bytes);
        }
        files += Zemtar::Test::writePictures(path(""));
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
    const QByteArray floats = read(path("w8.exr"));
    const auto channel = floats.indexOf(QByteArray("G\0", 2));
    ASSERT_GT(channel, 0);
    const std::pair<const char*, QByteArray> known[] = {
        {"channels.exr",
         QByteArray(floats).replace(channel, 1, QByteArray(1, '\0'))}, // a list that ends early
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
