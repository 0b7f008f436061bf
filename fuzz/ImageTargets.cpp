// Picture files by every operation that reads one, and the headers that are looked at before a decoder is.
#include "fuzz/Target.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "common/image/ExrHeader.h"
#include "common/image/ImageFiles.h"
#include "common/image/ZemtarImage.h"
#include "tests/support/PictureFiles.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

namespace Zemtar::Fuzz {
namespace {

namespace fs = std::filesystem;

/// The first byte of an input names the format by its file's suffix, the second the operation.
constexpr const char* Suffixes[] = {"png", "jpg", "bmp", "gif",  "tif", "tga",  "exr",  "hdr", "psd", "iff",
                                    "lbm", "koa", "xbm", "wbmp", "cut", "ras",  "pcx",  "sgi", "dds", "pict",
                                    "xpm", "ico", "ppm", "pgm",  "pbm", "pfm",  "webp", "jp2", "j2k", "mng",
                                    "pcd", "g3",  "svg", "icns", "jng", "tiff", "cr2",  "jxr"};

unsigned SuffixNumber(const QString& suffix)
{
    for (unsigned i = 0; i < std::size(Suffixes); ++i) {
        if (suffix == Suffixes[i]) {
            return i;
        }
    }
    return 0;
}

using Operation = void (*)(const CZemtarString& in, const CZemtarString& out);

void RawData(const CZemtarString& in, ZemtarImage::PixelFormat format)
{
    int width = 0;
    int height = 0;
    unsigned char* const pixels = ZemtarImage::getImageAsRawData(in, format, height, width);
    Require(pixels == nullptr || (width > 0 && height > 0), "pixels have a size");
    std::free(pixels);
}

constexpr Operation Operations[] = {
    [](const CZemtarString& in, const CZemtarString& out) { ZemtarImage::ConvertToExr(in, out, true); },
    [](const CZemtarString& in, const CZemtarString& out) { ZemtarImage::ConvertHdrToPng(in, out); },
    [](const CZemtarString& in, const CZemtarString& out) { ZemtarImage::ConvertImage(in, out); },
    [](const CZemtarString& in, const CZemtarString&) {
        int width = 0;
        int height = 0;
        ZemtarImage::GetImageSize(in, width, height);
    },
    [](const CZemtarString& in, const CZemtarString&) {
        int width = 0;
        int height = 0;
        int dpiX = 0;
        int dpiY = 0;
        ZemtarImage::GetImageSizeAndResolution(in, width, height, dpiX, dpiY);
    },
    [](const CZemtarString& in, const CZemtarString& out) {
        ZemtarImage::ManipulateImage(in, out, 20, 10, 0.5);
    },
    [](const CZemtarString& in, const CZemtarString& out) {
        ZemtarImage::ResizeImage(in, 20, 10, true, out, 80);
    },
    [](const CZemtarString& in, const CZemtarString& out) {
        ZemtarImage::ResizeImage(in, out, 20, 10, true, CZemtarColor());
    },
    [](const CZemtarString& in, const CZemtarString&) {
        QImage result;
        ZemtarImage::ResizeImage(in, result, 20, 10, false, CZemtarColor());
    },
    [](const CZemtarString& in, const CZemtarString& out) { ZemtarImage::CropImage(in, out, -1, 2, 10, 5); },
    [](const CZemtarString& in, const CZemtarString& out) { ZemtarImage::Flip(in, out, true); },
    [](const CZemtarString& in, const CZemtarString&) {
        ZemtarImage::SetImageColorSpace(in, QColorSpace(QColorSpace::SRgb));
    },
    [](const CZemtarString& in, const CZemtarString& out) {
        ZemtarImage::NormalMapFromTexture(in, out, 2.0, false);
    },
    [](const CZemtarString& in, const CZemtarString& out) {
        ZemtarImage::HeightMapFromTexture(in, out, 60.0, 30.0, true);
    },
    [](const CZemtarString& in, const CZemtarString& out) {
        ZemtarImage::GenerateNormalFromTexture(in, out);
    },
    [](const CZemtarString& in, const CZemtarString&) { RawData(in, ZemtarImage::PixelFormatRGBA); },
    [](const CZemtarString& in, const CZemtarString&) { RawData(in, ZemtarImage::PixelFormatRGB888); },
    [](const CZemtarString& in, const CZemtarString&) {
        ZemtarImage::SaveQImageWithXMPMetaData(in, 64, 32, in.Extension());
    },
};
constexpr unsigned PanoramaOperation = std::size(Operations) - 1;

/// A fresh folder, the input in it under its suffix, the operation; afterwards no temporary file may be left.
void RunImage(const Target&, std::string_view bytes)
{
    Feed feed(bytes);
    const std::string folder = WorkFolder() + "/picture";
    fs::create_directories(folder);
    const std::string suffix = Suffixes[feed.Below(std::size(Suffixes))];
    const Operation operation = Operations[feed.Below(std::size(Operations))];
    WriteBytes(folder + "/in." + suffix, feed.Rest());
    operation((folder + "/in." + suffix).c_str(), (folder + "/out.png").c_str());
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().stem().string();
        Require(name == "in" || name == "out", "only what was asked for is left in the folder");
        fs::remove(entry.path());
    }
}

std::vector<std::string> Numbered(const std::vector<unsigned>& operations, const QString& onlySuffixes = {})
{
    FreeImage_SetOutputMessage([](FREE_IMAGE_FORMAT, const char*) {});
    std::vector<std::pair<QString, std::string>> files;
    for (const auto& [name, bytes] : Test::handMadePictures()) {
        files.emplace_back(name.section('.', -1), bytes.toStdString());
    }
    for (const QString& file : Test::writePictures(QString::fromStdString(WorkFolder()) + "/")) {
        files.emplace_back(file.section('.', -1), BytesOf(file.toStdString()));
    }
    QImage image(9, 7, QImage::Format_ARGB32);
    image.fill(QColor(200, 100, 50, 128));
    image.setPixelColor(3, 3, Qt::black);
    for (const char* suffix : Suffixes) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        if (QImageWriter(&buffer, suffix).write(image)) {
            files.emplace_back(suffix, bytes.toStdString());
        }
    }
    std::vector<std::string> seeds;
    for (const auto& [suffix, bytes] : files) {
        if (!onlySuffixes.isEmpty() && !onlySuffixes.contains(suffix)) {
            continue;
        }
        const unsigned operation = operations[seeds.size() % operations.size()];
        seeds.push_back(std::string{static_cast<char>(SuffixNumber(suffix)), static_cast<char>(operation)} +
                        bytes);
    }
    return seeds;
}

std::vector<std::string> ImageSeeds(const Target&)
{
    std::vector<unsigned> all;
    for (unsigned i = 0; i < std::size(Operations); ++i) {
        all.push_back(i);
    }
    std::vector<std::string> seeds = Numbered({0}); // FreeImage's decoders, each by the same way in
    const std::vector<std::string> others = Numbered(all);
    seeds.insert(seeds.end(), others.begin(), others.end());
    return seeds;
}

std::vector<std::string> PanoramaSeeds(const Target&)
{
    return Numbered({PanoramaOperation}, "png jpg");
}

/// The look at the header alone, and the decoder that relies on it.
void RunExr(const Target&, std::string_view bytes)
{
    const std::string file = WorkFolder() + "/in.exr";
    WriteBytes(file, bytes);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> header(std::fopen(file.c_str(), "rb"), std::fclose);
    const bool isCredible =
        header && ImageFiles::isCredibleExrHeader(header.get(), static_cast<long>(bytes.size()));
    const ImageFiles::Bitmap bitmap = ImageFiles::loadBitmap(FIF_EXR, file.c_str());
    Require(!bitmap || isCredible, "what is decoded had a credible header");
}

std::vector<std::string> ExrSeeds(const Target&)
{
    std::vector<std::string> seeds = Numbered({0}, "exr");
    for (std::string& seed : seeds) {
        seed.erase(0, 2);
    }
    return seeds;
}

} // namespace

std::vector<Target> ImageTargets()
{
    return {{"image", RunImage, ImageSeeds}, {"exr", RunExr, ExrSeeds}, {"xmp", RunImage, PanoramaSeeds}};
}

} // namespace Zemtar::Fuzz
