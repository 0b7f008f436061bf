#include "bench/PlainTwins.h"
#include "common/image/ZemtarImage.h"
#include "tests/support/TestFolder.h"

#include <FreeImage.h>
#include <QGuiApplication>
#include <QImageWriter>
#include <QPainter>
#include <QPixmap>
#include <gtest/gtest.h>

#include <climits>

namespace Zemtar {
namespace {

const CZemtarColor kWhite(1, 1, 1, 1);

struct ImageFiles : testing::Test, TestFolder
{
    /// Only the twins need it: they paint through pixmaps.
    static void SetUpTestSuite()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "test";
        static char* argv[] = {name, nullptr};
        static QGuiApplication application(argc, argv);
    }

    CZemtarString save(const char* name, const QImage& image) const
    {
        EXPECT_TRUE(image.save(path(name))) << name;
        return host(name);
    }
    QImage load(const char* name) const { return QImage(path(name)); }
    QStringList files() const { return QDir(path("")).entryList(QDir::Files | QDir::Hidden); }

    /// A float picture, 8 x 4, whose brightest column is the left one.
    CZemtarString saveFloats(const char* name, FREE_IMAGE_FORMAT format, int width = 8, int height = 4) const
    {
        FIBITMAP* const bitmap = FreeImage_AllocateT(FIT_RGBF, width, height);
        for (int i = 0; i < width * height; ++i) {
            auto* const row = reinterpret_cast<FIRGBF*>(FreeImage_GetScanLine(bitmap, i / width));
            row[i % width] = {float(width - i % width), 0.5f, 0.25f};
        }
        EXPECT_TRUE(FreeImage_Save(format, bitmap, host(name), 0)) << name;
        FreeImage_Unload(bitmap);
        return host(name);
    }
};

QImage flippedByPixmap(const QImage& image, bool vertical)
{
    QImage result(image.size(), QImage::Format_ARGB32);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.scale(vertical ? 1 : -1, vertical ? -1 : 1);
    painter.translate(vertical ? 0 : -image.width(), vertical ? -image.height() : 0);
    painter.drawPixmap(0, 0, QPixmap::fromImage(image));
    return result;
}

QImage fadedByPixmap(const QImage& image, int alpha)
{
    QPixmap pixmap(image.size());
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawPixmap(0, 0, QPixmap::fromImage(image));
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(pixmap.rect(), QColor(0, 0, 0, alpha));
    painter.end();
    return pixmap.toImage();
}

TEST_F(ImageFiles, PaintingEqualsPixmapsInEveryFormat)
{
    testing::internal::CaptureStdout(); // the lines of CombineImages
    for (const QImage::Format format : PlainTwins::kFormats) {
        const QImage image = PlainTwins::randomImage(21, 13, format);
        for (const auto& [alpha, value] :
             {std::pair(-1.0, 0), {0.5, 128}, {0.999, 255}, {1.0, 256}, {9.0, 256}}) {
            QImage faded = image;
            ZemtarImage::SetImageAlpha(faded, alpha);
            EXPECT_EQ(fadedByPixmap(image, value), faded) << format << ' ' << alpha;
        }
        QImage combined(image.size(), QImage::Format_ARGB32);
        combined.fill(Qt::transparent);
        QPainter painter(&combined);
        painter.drawPixmap(0, 0, QPixmap::fromImage(image));
        painter.setCompositionMode(QPainter::CompositionMode_Multiply);
        painter.drawImage(0, 0, image);
        painter.end();
        EXPECT_EQ(combined, ZemtarImage::CombineImages(image, image, ZemtarImage::ImageBlendMultiply, false))
            << format;
        if (format < QImage::Format_BGR30) { // PNG gives these back unchanged, or as one of them
            const CZemtarString in = save("in.png", image);
            for (const bool vertical : {true, false}) {
                EXPECT_TRUE(ZemtarImage::Flip(in, host("out.png"), vertical));
                EXPECT_EQ(flippedByPixmap(load("in.png"), vertical), load("out.png")) << format;
            }
        }
    }
    testing::internal::GetCapturedStdout();
}

TEST_F(ImageFiles, ConvertAndMeasure)
{
    QImage image = PlainTwins::randomImage(30, 20, QImage::Format_RGB32);
    image.setDotsPerMeterX(11811);
    image.setDotsPerMeterY(3937);
    const CZemtarString in = save("Größe 图.png", image);
    EXPECT_TRUE(ZemtarImage::ConvertImage(in, host("new folder/out.bmp")));
    EXPECT_EQ(image, load("new folder/out.bmp"));
    EXPECT_TRUE(ZemtarImage::ConvertImage(in, host("two/levels/out.bmp"))); // the save's failure is not told
    EXPECT_FALSE(QDir(path("two")).exists());
    int width = 0, height = 0, dpiX = 0, dpiY = 0;
    EXPECT_TRUE(ZemtarImage::GetImageSizeAndResolution(in, width, height, dpiX, dpiY));
    EXPECT_EQ((std::array{30, 20, 300, 100}), (std::array{width, height, dpiX, dpiY}));
    EXPECT_TRUE(ZemtarImage::GetImageSize(saveFloats("photo.HDR", FIF_HDR), width, height));
    EXPECT_EQ(QSize(8, 4), QSize(width, height));

    ZemtarImage::SetImageColorSpace(in, QColorSpace(QColorSpace::AdobeRgb));
    EXPECT_EQ(QColorSpace(QColorSpace::AdobeRgb), load("Größe 图.png").colorSpace());
    EXPECT_EQ(image.pixel(7, 7), load("Größe 图.png").pixel(7, 7));
}

TEST_F(ImageFiles, Resize)
{
    const QRgb red = 0xffff0000;
    QImage image(400, 400, QImage::Format_ARGB32);
    image.fill(Qt::red);
    QImage boxed = image;
    ZemtarImage::ResizeImage(boxed, 200, 100);
    EXPECT_EQ(QSize(200, 100), boxed.size());
    EXPECT_EQ((std::array{0u, red, red, 0u}), (std::array{boxed.pixel(49, 50), boxed.pixel(50, 50),
                                                          boxed.pixel(149, 50), boxed.pixel(150, 50)}));

    const CZemtarString in = save("in.png", image.copy(0, 0, 40, 20));
    ZemtarImage::ManipulateImage(in, host("out.png"), 0, 30, 0.5);
    EXPECT_EQ(QSize(40, 30), load("out.png").size());
    EXPECT_EQ(qRgba(255, 0, 0, 128), load("out.png").pixel(20, 15));
    EXPECT_TRUE(ZemtarImage::ResizeImage(in, 10, 10, true, host("kept.png"), 90));
    EXPECT_TRUE(ZemtarImage::ResizeImage(in, 10, 10, false, host("filled.png"), -1));
    EXPECT_EQ(QSize(10, 5), load("kept.png").size());
    EXPECT_EQ(QSize(10, 10), load("filled.png").size());
    EXPECT_TRUE(ZemtarImage::ResizeImage(save("wide.png", image.copy(0, 0, 17, 5)), 1, 1, true,
                                         host("dot.png"), -1)); // 1 x 0.3
    EXPECT_EQ(QSize(1, 1), load("dot.png").size());
    for (const auto& [name, format] : {std::pair("wide.hdr", FIF_HDR), {"wide.exr", FIF_EXR}}) {
        // The output keeps the input's format, whatever its name asks for.
        EXPECT_TRUE(ZemtarImage::ResizeImage(saveFloats(name, format, 512, 256), 255, 7, true,
                                             host("small.png"), 90));
        EXPECT_EQ(format, FreeImage_GetFileType(host("small.png"), 0));
        int width = 0, height = 0;
        EXPECT_TRUE(QFile::rename(path("small.png"), path(QString("small.") + (name + 5))));
        EXPECT_TRUE(ZemtarImage::GetImageSize(host(QString("small.") + (name + 5)), width, height));
        EXPECT_EQ(QSize(255, 127), QSize(width, height)); // 127.5 truncated
    }

    QImage canvas;
    ZemtarImage::ResizeImage(in, canvas, 40, 41, true, CZemtarColor(0.5, 1.0, 2.0, 1.0));
    EXPECT_EQ(0x007ffffeu, canvas.pixel(0, 0)); // no alpha, and 510 spills from blue into green
    EXPECT_EQ(QImage::Format_ARGB32, canvas.format());
    EXPECT_EQ((std::array{0x007ffffeu, red, red}),
              (std::array{canvas.pixel(0, 9), canvas.pixel(0, 10), canvas.pixel(39, 29)}));
    ZemtarImage::ResizeImage(in, host("canvas.png"), 40, 41, true, CZemtarColor(0.5, 1.0, 2.0, 1.0));
    EXPECT_EQ(canvas, load("canvas.png"));

    EXPECT_TRUE(ZemtarImage::CropImage(in, host("crop.png"), 35, -2, 10, 4));
    const QImage cropped = load("crop.png");
    EXPECT_EQ((std::array{0u, red, 0u}),
              (std::array{cropped.pixel(0, 1), cropped.pixel(4, 2), cropped.pixel(5, 3)}));
}

TEST_F(ImageFiles, SizesThatCannotBeAreRefused)
{
    const CZemtarString in = save("in.png", PlainTwins::randomImage(9, 9, QImage::Format_RGB32));
    const CZemtarString floats = saveFloats("in.hdr", FIF_HDR);
    const CZemtarString out = host("out.png");
    const QImage before = load("in.png");
    const std::pair<int, int> sizes[] = {
        {0, 5}, {5, 0}, {-1, -1}, {INT_MAX, INT_MAX}, {1 << 20, 1 << 20}, {INT_MIN, 1}};
    for (const auto& [width, height] : sizes) {
        QImage image = before;
        ZemtarImage::ResizeImage(image, width, height);
        EXPECT_EQ(before, image);
        EXPECT_FALSE(ZemtarImage::ResizeImage(in, width, height, false, out, -1)) << width;
        EXPECT_FALSE(ZemtarImage::ResizeImage(floats, width, height, false, out, -1)) << width;
        ZemtarImage::ResizeImage(in, out, width, height, true, kWhite);
        ZemtarImage::ResizeImage(in, image, width, height, true, kWhite);
        EXPECT_EQ(before, image);
        EXPECT_FALSE(ZemtarImage::CropImage(in, out, 1, 1, width, height)) << width;
        if (width > 5) {
            ZemtarImage::ManipulateImage(in, out, width, height, -1);
        }
    }
    EXPECT_FALSE(ZemtarImage::ResizeImage(floats, 1, 1, true, out, -1)); // 4 x 1 / 8 rows are none
    EXPECT_FALSE(ZemtarImage::CropImage(in, out, INT_MAX, 0, 2, 2));
    EXPECT_EQ(QStringList({"in.hdr", "in.png"}), files());
    EXPECT_TRUE(ZemtarImage::CropImage(in, out, 3, 3, 0, 0)); // an empty rectangle means all of it
    EXPECT_EQ(before, load("out.png"));
}

TEST_F(ImageFiles, AFailedSaveLeavesWhatWasThere)
{
    const CZemtarString in = save("in.png", PlainTwins::randomImage(9, 9, QImage::Format_RGB32));
    const CZemtarString floats = saveFloats("in.hdr", FIF_HDR);
    write("folder.png/kept", "x");
    for (const char* out : {"out", "out.unknown", "folder.png", "missing/out.png"}) {
        EXPECT_FALSE(ZemtarImage::Flip(in, host(out), true)) << out;
        EXPECT_FALSE(ZemtarImage::CropImage(in, host(out), 0, 0, 2, 2)) << out;
    }
    EXPECT_FALSE(ZemtarImage::ResizeImage(floats, 4, 4, false, host("missing/out.hdr"), -1));
    EXPECT_TRUE(ZemtarImage::ConvertHdrToPng(floats, host("missing/out.png")).IsEmpty());
    EXPECT_TRUE(ZemtarImage::ConvertHdrToPng(floats, host("folder.png")).IsEmpty());
    EXPECT_TRUE(ZemtarImage::ConvertToExr(in, host("missing/out.exr"), true).IsEmpty());
    EXPECT_EQ(QStringList({"in.hdr", "in.png"}), files());
    if (QFile::exists("/dev/full") && QFile::link("/dev/full", path("full.png"))) { // a disk without room
        EXPECT_FALSE(ZemtarImage::Flip(in, host("full.png"), true));
        EXPECT_TRUE(ZemtarImage::ConvertHdrToPng(floats, host("full.png")).IsEmpty());
    }

    // Saving in place goes through links and keeps permissions.
    QFile(path("in.png")).setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther);
    const auto permissions = QFile::permissions(path("in.png"));
    ASSERT_TRUE(QFile::link("in.png", path("link.png")));
    ZemtarImage::SetImageColorSpace(host("link.png"), QColorSpace(QColorSpace::DisplayP3));
    EXPECT_EQ(QColorSpace(QColorSpace::DisplayP3), load("in.png").colorSpace());
    EXPECT_TRUE(QFileInfo(path("link.png")).isSymLink());
    EXPECT_EQ(permissions, QFile::permissions(path("in.png")));
    ASSERT_TRUE(QFile::link("next.png", path("dangling.png")) && QFile::link("new.png", path("next.png")) &&
                QFile::link("loop.png", path("loop.png")));
    EXPECT_TRUE(ZemtarImage::Flip(in, host("dangling.png"), true));
    EXPECT_EQ(QSize(9, 9), load("new.png").size());
    EXPECT_TRUE(QFileInfo(path("dangling.png")).isSymLink() && QFileInfo(path("next.png")).isSymLink());
    EXPECT_FALSE(ZemtarImage::Flip(in, host("loop.png"), true));
}

TEST_F(ImageFiles, HighDynamicRange)
{
    const CZemtarString hdr = saveFloats("sky 天.HDR", FIF_HDR), exr = saveFloats("sky.exr", FIF_EXR);
    EXPECT_TRUE(ZemtarImage::ConvertHdrToPng(host("x.tif"), host("x.png")).IsEmpty());
    for (const CZemtarString& in : {hdr, exr}) {
        for (const char* out : {"a.bmp", "a.jpg", "a.PNG", "a"}) {
            EXPECT_TRUE(ZemtarImage::ConvertHdrToPng(in, host(out)) == host("a.png")) << out;
        }
        const QImage mapped = load("a.png");
        EXPECT_EQ(QSize(8, 4), mapped.size());
        EXPECT_GT(qRed(mapped.pixel(7, 1)),
                  qRed(mapped.pixel(0, 1))); // mirrored: the bright column is at the right
    }
    qputenv("ZEMTAR_TEMP_DIR", path("").toUtf8());
    EXPECT_TRUE(ZemtarImage::ConvertHdrToPng(hdr, "") == host("ZemtarHDR.png"));
    qunsetenv("ZEMTAR_TEMP_DIR");

    QImage image(3, 2, QImage::Format_ARGB32);
    image.fill(QColor(255, 51, 0, 102));
    for (const auto& [in, format] : {std::pair("alpha.png", QImage::Format_ARGB32),
                                     {"deep.png", QImage::Format_RGBA64},
                                     {"opaque.bmp", QImage::Format_RGB32},
                                     {"grey.png", QImage::Format_Grayscale8},
                                     {"palette.png", QImage::Format_Indexed8}}) {
        save(in, image.convertToFormat(format));
        for (const bool zip : {false, true}) {
            EXPECT_TRUE(ZemtarImage::ConvertToExr(host(in), host("out.tif"), zip) == host("out.exr")) << in;
            FIBITMAP* const bitmap = FreeImage_Load(FIF_EXR, host("out.exr"), 0);
            ASSERT_NE(nullptr, bitmap) << in;
            if (format == QImage::Format_ARGB32 || format == QImage::Format_RGBA64) {
                const auto* const pixel = reinterpret_cast<const FIRGBAF*>(FreeImage_GetScanLine(bitmap, 0));
                EXPECT_NEAR(0.2, pixel->green, 1e-3);
                EXPECT_NEAR(0.4, pixel->alpha, 1e-3);
            }
            FreeImage_Unload(bitmap);
        }
    }
    EXPECT_TRUE(ZemtarImage::ConvertToExr(exr, host("copy"), false) == host("copy.exr"));
    EXPECT_TRUE(ZemtarImage::ConvertToExr("", host("out.exr"), true).IsEmpty());
    EXPECT_TRUE(ZemtarImage::ConvertToExr(hdr, "", true).IsEmpty());
}

TEST_F(ImageFiles, PanoramaPacket)
{
    const QImage image = PlainTwins::randomImage(16, 8, QImage::Format_RGB32);
    for (const auto& [name, format, type] :
         {std::tuple("pano.png", "PNG", FIF_PNG), {"pano.jpg", "JPG", FIF_JPEG}}) {
        const CZemtarString file = save(name, image);
        EXPECT_TRUE(ZemtarImage::SaveQImageWithXMPMetaData(file, 4096, 2048, format));
        FIBITMAP* const bitmap = FreeImage_Load(type, file, 0);
        FITAG* tag = nullptr;
        ASSERT_TRUE(FreeImage_GetMetadata(FIMD_XMP, bitmap, "XMLPacket", &tag)) << name;
        const QByteArray packet(static_cast<const char*>(FreeImage_GetTagValue(tag)));
        FreeImage_Unload(bitmap);
        EXPECT_EQ(3, packet.count('\n'));
        EXPECT_TRUE(packet.startsWith(
            "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\" x:xmptk=\"Adobe XMP Core 5.1.0-jc003\">\n"));
        EXPECT_TRUE(packet.endsWith("</rdf:Description></rdf:RDF>\n</x:xmpmeta>"));
        QList<QByteArray> values;
        for (const QByteArray& part : packet.split('>')) {
            if (const qsizetype end = part.indexOf("</GPano:"); end >= 0) {
                values += part.left(end);
            }
        }
        EXPECT_EQ("True|Zemtar Quillon|Zemtar Quillon|equirectangular|0|0|4096|2048|4096|2048",
                  values.join('|'));
    }
    EXPECT_EQ(image, load("pano.png"));
    EXPECT_FALSE(ZemtarImage::SaveQImageWithXMPMetaData(host("pano.png"), 1, 1, "bmp"));
    EXPECT_TRUE(ZemtarImage::SaveQImageWithXMPMetaData(host("missing.png"), 1, 1, "png")); // saved or not
    const QByteArray stamped = read(path("pano.png"));
    EXPECT_TRUE(ZemtarImage::SaveQImageWithXMPMetaData(host("\\pano.png"), 100000, 1, "png"));
    EXPECT_NE(stamped, read(path("pano.png"))); // a backslash is a separator here, too
    EXPECT_EQ(QStringList({"pano.jpg", "pano.png"}), files());
}

TEST_F(ImageFiles, EmptyNamesAreQuiet)
{
    static QStringList warnings;
    warnings.clear();
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { warnings += text; });
    int number = 0;
    QImage image;
    QString folder;
    ZemtarImage::ConvertImage("", "");
    ZemtarImage::ConvertImage(save("in.png", PlainTwins::randomImage(2, 2, QImage::Format_RGB32)), "");
    ZemtarImage::GetImageSize("", number, number);
    ZemtarImage::GetImageSizeAndResolution("", number, number, number, number);
    ZemtarImage::ManipulateImage("", "", 1, 1, 1);
    ZemtarImage::ResizeImage("", 1, 1, true, "", 1);
    ZemtarImage::ResizeImage("", "", 1, 1, true, kWhite);
    ZemtarImage::ResizeImage("", image, 1, 1, true, kWhite);
    ZemtarImage::CropImage("", "", 0, 0, 1, 1);
    ZemtarImage::Flip("", "", true);
    ZemtarImage::Flip(host("in.png"), "", true);
    ZemtarImage::SetImageColorSpace("", QColorSpace(QColorSpace::SRgb));
    ZemtarImage::NormalMapFromTexture("", "", 1, true);
    ZemtarImage::HeightMapFromTexture("", "", 1, 1, true);
    ZemtarImage::GenerateNormalFromTexture("", "");
    ZemtarImage::ConvertHdrToPng("", "");
    ZemtarImage::ConvertToExr("", "", true);
    ZemtarImage::SaveQImageWithXMPMetaData("", 1, 1, "png");
    std::free(ZemtarImage::getImageAsRawData("", ZemtarImage::PixelFormatRGBA, number, number));
    ZemtarImage::createImage(&number, 1, 1, "", ZemtarImage::PixelDataTypeUnsignedByte,
                             ZemtarImage::PixelFormatRGBA);
    qInstallMessageHandler(nullptr);
    EXPECT_EQ(QStringList(), warnings);
}

/// The file with a header that claims 200,000 x 200,000 pixels (JPEG: 65,500, the most that it can say).
QByteArray withHugeHeader(QByteArray file, const QString& format)
{
    const auto hex = [](const char* digits) { return QByteArray::fromHex(digits); };
    if (format == "png") {
        file.replace(0, 33, hex("89504e470d0a1a0a0000000d4948445200030d4000030d40080200000076591f5d"));
    } else if (format == "bmp") {
        file.replace(18, 8, hex("400d0300400d0300"));
    } else if (format == "jpg") {
        file.replace(file.indexOf("\xff\xc0") + 5, 4, hex("ffdcffdc"));
    } else if (format == "hdr") {
        file.replace("-Y 4 +X 8", "-Y 200000 +X 200000");
    } else if (format == "exr") {
        file.replace(file.indexOf("dataWindow") + 29, 8, hex("400d0300400d0300"));
    } else {
        const int directory = static_cast<uchar>(file[4]) + static_cast<uchar>(file[5]) * 256;
        file.replace(directory + 4, 10, hex("040001000000400d0300"));  // width: type, count, value
        file.replace(directory + 16, 10, hex("040001000000400d0300")); // height
    }
    return file;
}

TEST_F(ImageFiles, DamagedFilesAreRefusedByEveryOperation)
{
    // Qt's readers are talkative.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QImage image = PlainTwins::randomImage(8, 4, QImage::Format_RGB32);
    save("good.png", image);
    for (const char* suffix : {"png", "jpg", "hdr", "exr", "tif", "bmp"}) {
        const QString format = suffix, good = QString("good.") + suffix;
        const bool isFloat = format == "hdr" || format == "exr";
        isFloat ? saveFloats(good.toUtf8(), format == "hdr" ? FIF_HDR : FIF_EXR) : save(good.toUtf8(), image);
        const QByteArray bytes = read(path(good));
        ASSERT_NE(bytes, withHugeHeader(bytes, format)) << suffix;
        const char* const other = format == "hdr" ? "other.exr" : "other.hdr";
        saveFloats(other, format == "hdr" ? FIF_EXR : FIF_HDR);
        const std::pair<const char*, QByteArray> damages[] = {{"missing", {}},
                                                              {"empty", {}},
                                                              {"truncated", bytes.left(24)},
                                                              {"text", "This is no image.\n"},
                                                              {"huge", withHugeHeader(bytes, format)},
                                                              {"mislabelled", read(path(other))}};
        for (const auto& [damage, content] : damages) {
            SCOPED_TRACE(QString("%1 %2").arg(damage, format).toStdString());
            const QString name = QString("%1.%2").arg(damage, format);
            if (damage != QByteArray("missing")) {
                write(name, content);
            }
            const CZemtarString in = host(name), out = host("out.png");
            int width = -7, height = -7, dpi = -7;
            EXPECT_FALSE(ZemtarImage::ConvertImage(in, out));
            EXPECT_FALSE(ZemtarImage::GetImageSize(in, width, height));
            EXPECT_FALSE(ZemtarImage::GetImageSizeAndResolution(in, width, height, dpi, dpi));
            EXPECT_EQ((std::array{-7, -7, -7}), (std::array{width, height, dpi}));
            EXPECT_FALSE(ZemtarImage::ResizeImage(in, 5, 5, true, out, -1));
            EXPECT_FALSE(ZemtarImage::CropImage(in, out, 0, 0, 2, 2));
            EXPECT_FALSE(ZemtarImage::Flip(in, out, true));
            EXPECT_FALSE(ZemtarImage::NormalMapFromTexture(in, out, 1, false));
            EXPECT_TRUE(ZemtarImage::ConvertHdrToPng(in, out).IsEmpty());
            EXPECT_TRUE(ZemtarImage::ConvertToExr(in, out, true).IsEmpty());
            ZemtarImage::ManipulateImage(in, out, 3, 3, 0.5);
            ZemtarImage::ResizeImage(in, out, 5, 5, true, kWhite);
            QImage untouched = image;
            ZemtarImage::ResizeImage(in, untouched, 5, 5, true, kWhite);
            EXPECT_EQ(image, untouched);
            ZemtarImage::SetImageColorSpace(in, QColorSpace(QColorSpace::SRgb));
            EXPECT_TRUE(ZemtarImage::SaveQImageWithXMPMetaData(in, 5, 5, "jpeg"));
            EXPECT_EQ(damage == QByteArray("missing") ? QByteArray("(none)") : content, read(path(name)));
        }
        // A file cut in its pixels may still give a picture; then it gives all of one.
        write("half." + format, bytes.left(bytes.size() * 2 / 3));
        const bool isSaved = ZemtarImage::Flip(host("half." + format), host(format + ".out.png"), true);
        EXPECT_EQ(isSaved, !QImage(path(format + ".out.png")).isNull()) << suffix;
    }
    qInstallMessageHandler(nullptr);
    EXPECT_FALSE(files().contains("out.png"));
}

} // namespace
} // namespace Zemtar
