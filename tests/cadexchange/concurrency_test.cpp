// What may run in several threads at once: imports and exports of documents of their own, and image
// operations on files and images of their own. Under the thread sanitizer (./dev tsan) it says whether that
// is so.

#include "cadexchange/CZemtarCADExchangeReader.h"
#include "cadexchange/CZemtarCADExchangeWriter.h"
#include "common/encoding/CZemtarEncoding.h"
#include "common/image/ZemtarImage.h"
#include "host/CZemtarDocument.h"
#include "tests/support/EngineFormats.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cadex/ModelAlgo_BRepMesher.hxx>

using namespace Zemtar;
using Zemtar::Test::EngineFormat;

namespace {

namespace fs = std::filesystem;

class Concurrency : public testing::Test
{
protected:
    Concurrency()
    {
        for (const EngineFormat& format : Zemtar::Test::EngineFormats) {
            if (format.CanRead() && format.CanWrite()) {
                formats.push_back(&format);
                const auto writer = format.writer();
                EXPECT_TRUE(writer->Transfer(Zemtar::Test::MakeSeedModel(true)) &&
                            writer->WriteFile(FileOf(format).c_str()))
                    << format.name;
            }
        }
    }

    std::string FileOf(const EngineFormat& format) const
    {
        return (root / ("in" + std::string(format.extension))).string();
    }

    static std::unique_ptr<CZemtarDocument> Import(const EngineFormat& format, const std::string& file)
    {
        CZemtarCADExchangeReader reader;
        reader.SetCADReaderType(static_cast<CZemtarCADExchangeReader::eReaderType>(format.format));
        reader.setUseParallelProcessing(true);
        return std::unique_ptr<CZemtarDocument>(reader.Import(file.c_str()));
    }

    static bool Export(const EngineFormat& format, CZemtarDocument& document, const std::string& file)
    {
        CZemtarCADExchangeWriter writer;
        writer.SetCADWriterType(static_cast<CZemtarCADExchangeWriter::eWriterType>(format.format));
        writer.Export(&document, file.c_str(), nullptr, nullptr, nullptr, nullptr,
                      CZemtarUnit(eLengthUnitMillimetre));
        return fs::exists(file);
    }

    /// Each on a thread of its own, all at once.
    static void AtOnce(const std::vector<std::function<void()>>& works)
    {
        std::vector<std::thread> threads;
        threads.reserve(works.size());
        for (const auto& work : works) {
            threads.emplace_back(work);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    const QTemporaryDir scratch;
    const fs::path root = scratch.path().toStdString();
    std::vector<const EngineFormat*> formats;
};

TEST_F(Concurrency, ImportsAndExports)
{
    std::vector<std::function<void()>> works;
    for (const EngineFormat* format : formats) {
        works.emplace_back([this, format] {
            for (int i = 0; i < 3; ++i) {
                const auto document = Import(*format, FileOf(*format));
                ASSERT_TRUE(document) << format->name;
                EXPECT_FALSE(document->RootNodes().empty()) << format->name;
                EXPECT_TRUE(Export(*format, *document,
                                   (root / (std::to_string(i) + "out" + format->extension)).string()))
                    << format->name;
            }
        });
    }
    AtOnce(works);
}

/// The engine under its own interface, without the library's lock.
TEST_F(Concurrency, ReadersAndWritersOfTheSdk)
{
    std::vector<std::function<void()>> works;
    for (const EngineFormat* format : formats) {
        works.emplace_back([this, format] {
            for (int i = 0; i < 3; ++i) {
                cadex::ModelData_Model model;
                const auto reader = format->reader();
                ASSERT_TRUE(reader->ReadFile(FileOf(*format).c_str()) && reader->Transfer(model))
                    << format->name;
                cadex::ModelAlgo_BRepMesher(cadex::ModelAlgo_BRepMesherParameters()).Compute(model);
                const auto writer = format->writer();
                const std::string file = (root / ("sdk" + std::string(format->extension))).string();
                EXPECT_TRUE(writer->Transfer(model) && writer->WriteFile(file.c_str())) << format->name;
            }
        });
    }
    AtOnce(works);
}

TEST_F(Concurrency, ImageAndTextOperations)
{
    QImage image(64, 48, QImage::Format_ARGB32);
    image.fill(Qt::darkCyan);
    const std::string source = (root / "in.png").string();
    ASSERT_TRUE(image.save(QString::fromStdString(source)));
    std::vector<std::function<void()>> works;
    for (int number = 0; number < 4; ++number) {
        works.emplace_back([this, number, image, source] {
            const auto out = [&](const char* name) {
                return (root / (std::to_string(number) + name)).string();
            };
            for (int i = 0; i < 3; ++i) {
                EXPECT_TRUE(ZemtarImage::ResizeImage(source.c_str(), 20, 20, true, out("a.jpg").c_str(), 90));
                EXPECT_TRUE(
                    ZemtarImage::NormalMapFromTexture(source.c_str(), out("b.png").c_str(), 2.0, false));
                EXPECT_FALSE(ZemtarImage::ConvertToExr(source.c_str(), out("c.exr").c_str(), true).IsEmpty());
                EXPECT_FALSE(
                    ZemtarImage::ConvertHdrToPng(out("c.exr").c_str(), out("d.png").c_str()).IsEmpty());
                QImage mine = image;
                ZemtarImage::edgify(&mine);
                ZemtarImage::bloomed(&mine, 3, 10, 128, false);
                const std::unique_ptr<const char, void (*)(const char*)> encoding(
                    CZemtarEncoding::DetectFileEncoding(FileOf(*formats.front()).c_str()),
                    [](const char* name) { std::free(const_cast<char*>(name)); });
                EXPECT_NE(encoding, nullptr);
            }
        });
    }
    AtOnce(works);
}

} // namespace
