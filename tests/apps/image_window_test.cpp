// The image window, driven as a user drives it, against direct calls of the library.

#include "apps/images/ImageBatch.h"
#include "apps/images/ImageOperations.h"
#include "apps/viewer/ImageComparison.h"
#include "apps/viewer/ImagePreview.h"
#include "apps/viewer/ImageWindow.h"
#include "common/image/ZemtarImage.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Waiting.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QDoubleSpinBox>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <gtest/gtest.h>

#include <map>

using namespace Zemtar;
using Zemtar::Test::Await;
using Zemtar::Test::Patience;

namespace {

QImage MakePicture(int width, int height, bool hasAlpha)
{
    QImage image(width, height, hasAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            image.setPixel(x, y,
                           qRgba(x * 37 + y, y * 53 % 256, (x * y * 7) % 256, hasAlpha ? 255 - x * 3 : 255));
        }
    }
    return image;
}

/// What the library makes of a picture: through lossless files, or in place with the alpha that it has.
using OnFile = void (*)(CZemtarString in, CZemtarString out);
using InPlace = void (*)(QImage& image);
struct Expected
{
    OnFile onFile;
    InPlace inPlace;
};

/// The operations with the defaults that a user finds on a picture of 24 x 17 pixels.
const std::map<std::string, Expected> kExpected = {
    {"Normal map", {[](auto in, auto out) { ZemtarImage::NormalMapFromTexture(in, out, 10, false); }, {}}},
    {"Tileable normal map", {[](auto in, auto out) { ZemtarImage::GenerateNormalFromTexture(in, out); }, {}}},
    {"Turn green",
     {{},
      [](QImage& image) {
          for (int y = 0; y < image.height(); ++y) {
              for (int x = 0; x < image.width(); ++x) {
                  const QRgb p = image.pixel(x, y);
                  image.setPixel(x, y, qRgba(qRed(p), 255 - qGreen(p), qBlue(p), qAlpha(p)));
              }
          }
      }}},
    {"Height map",
     {[](auto in, auto out) { ZemtarImage::HeightMapFromTexture(in, out, 50, 25, false); }, {}}},
    {"Tone mapping",
     {[](auto in, auto out) { ZemtarImage::ConvertHdrToPng(ZemtarImage::ConvertToExr(in, out, true), out); },
      {}}},
    {"Saturation", {{}, [](QImage& image) { ZemtarImage::saturation(&image, &image, 40); }}},
    {"Warm", {{}, [](QImage& image) { ZemtarImage::warm(&image, &image, 40); }}},
    {"Cool", {{}, [](QImage& image) { ZemtarImage::cool(&image, &image, 40); }}},
    {"Grey", {{}, [](QImage& image) { ZemtarImage::greyScale(&image, &image); }}},
    {"Brightness", {{}, [](QImage& image) { ZemtarImage::brightness(&image, &image, 0); }}},
    {"Sharpen",
     {{},
      [](QImage& image) {
          QImage source = image.copy();
          ZemtarImage::sharpen(&source, &image);
      }}},
    {"Edges", {{}, [](QImage& image) { ZemtarImage::edgify(&image); }}},
    {"Bloom", {{}, [](QImage& image) { image = ZemtarImage::bloomed(&image, 5, 40, 128, false); }}},
    {"Scale", {{}, [](QImage& /*image*/) {}}},
    {"Letter-box", {{}, [](QImage& /*image*/) {}}},
    {"Crop", {{}, [](QImage& /*image*/) {}}},
    {"Flip", {[](auto in, auto out) { ZemtarImage::Flip(in, out, false); }, {}}},
    {"Fade", {{}, [](QImage& image) { ZemtarImage::SetImageAlpha(image, 0.5); }}},
    {"Canvas",
     {[](auto in, auto out) {
          int width = 0;
          int height = 0;
          ZemtarImage::GetImageSize(in, width, height);
          ZemtarImage::ResizeImage(in, out, width, height, true,
                                   CZemtarConvert::QColorToCZemtarColor(Qt::white));
      },
      {}}},
    {"Combine",
     {{},
      [](QImage& image) {
          image = ZemtarImage::CombineImages(image, MakePicture(9, 7, true), ZemtarImage::ImageBelndMode(0),
                                             false);
      }}},
    {"Frame",
     {{}, [](QImage& image) { image = ZemtarImage::AddDefaultBorder(image, MakePicture(9, 7, true)); }}},
    {"Mark",
     {{},
      [](QImage& image) {
          ZemtarImage::AddMarkToImage(image, MakePicture(9, 7, true), ZemtarImage::enumMarkImageLocation(1));
      }}},
    {"Border line",
     {{}, [](QImage& image) { ZemtarImage::AddBoarderToImage(image, 8, CZemtarColor(255, 255, 255, 1)); }}},
};

QImage Expect(const Expected& expected, QImage image, const TestFolder& folder)
{
    if (expected.inPlace) {
        expected.inPlace(image);
        return image;
    }
    image.save(folder.path("in.png"));
    expected.onFile(folder.host("in.png"), folder.host("out.png"));
    return QImage(folder.path("out.png"));
}

/// The window with the ways of its user.
struct ImageWindowTest : testing::Test, TestFolder
{
    ImageWindowTest()
    {
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window, Patience));
    }

    QString Write(const QString& name, const QImage& image) const
    {
        EXPECT_TRUE(image.save(path(name)));
        return path(name);
    }
    void Choose(const char* name)
    {
        auto* tree = window.findChild<QTreeWidget*>("operations");
        const auto items = tree->findItems(name, Qt::MatchExactly | Qt::MatchRecursive);
        ASSERT_EQ(1, items.size());
        tree->scrollToItem(items[0]);
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(items[0]).center());
    }
    void Press(const char* action) { window.findChild<QAction*>(action)->trigger(); }
    void Apply() { QTest::mouseClick(window.findChild<QPushButton*>("apply"), Qt::LeftButton); }
    void SetNumber(const char* name, double value)
    {
        window.findChild<QDoubleSpinBox*>(name)->setValue(value);
    }
    QString Text(const char* label) { return window.findChild<QLabel*>(label)->text(); }
    QString Message() { return window.findChild<QWidget*>("message")->isHidden() ? "" : Text("messageText"); }

    ImageWindow window;
};

QByteArray RadianceFile(int width, int height)
{
    QByteArray bytes = QStringLiteral("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y %1 +X %2\n")
                           .arg(height)
                           .arg(width)
                           .toLatin1();
    for (int i = 0; i < width * height; ++i) {
        bytes.append(char(40 + 30 * i)).append(char(90)).append(char(200 - 20 * i)).append(char(126 + i));
    }
    return bytes;
}

} // namespace

TEST(ImageOperationsTest, EachGivesWhatTheLibraryGives)
{
    const TestFolder folder;
    EXPECT_EQ(kExpected.size(), ImageOperations().size());
    for (const ImageOperation& operation : ImageOperations()) {
        for (const QImage& image : {MakePicture(24, 17, false), MakePicture(24, 17, true),
                                    MakePicture(1, 1, false), MakePicture(1, 1, true)}) {
            const ImageOutcome outcome =
                operation.Run({image, {}, MakePicture(9, 7, true)}, operation.Defaults(image.size()));
            EXPECT_EQ("", outcome.failure.toStdString()) << operation.name;
            const QImage expected = Expect(kExpected.at(operation.name), image, folder);
            EXPECT_EQ(expected.convertToFormat(QImage::Format_ARGB32),
                      outcome.image.convertToFormat(QImage::Format_ARGB32))
                << operation.name << ' ' << image.width() << ' ' << image.hasAlphaChannel();
        }
    }
}

TEST(ImageOperationsTest, RangesHoldTheDefaultsAndEveryEndRuns)
{
    const QImage image = MakePicture(24, 17, true);
    for (const ImageOperation& operation : ImageOperations()) {
        for (std::size_t i = 0; i < operation.parameters.size(); ++i) {
            const ImageParameter& parameter = operation.parameters[i];
            ImageValues values = operation.Defaults(image.size());
            EXPECT_TRUE(parameter.least <= values[i] && values[i] <= parameter.most) << parameter.name;
            for (const double end : {parameter.least, parameter.most}) {
                values[i] = end;
                const ImageOutcome outcome = operation.Run({image, {}, image}, values);
                EXPECT_EQ(outcome.image.isNull(), !outcome.failure.isEmpty())
                    << operation.name << ' ' << parameter.name << ' ' << end;
            }
        }
    }
    const ImageOperation& crop =
        *std::find_if(ImageOperations().begin(), ImageOperations().end(),
                      [](const ImageOperation& operation) { return operation.Name() == "Crop"; });
    EXPECT_FALSE(crop.Run({image}, {16384, 16384, 0, 0}).failure.isEmpty()) << "1 GiB is refused";
    EXPECT_EQ(image.copy(3, -2, 5, 9), crop.Run({image}, {5, 9, 3, -2}).image);
}

TEST(ImageOperationsTest, NormalMapsPointWhereTheirProgramWantsThem)
{
    QImage dome(64, 64, QImage::Format_RGB32); // bright in the middle: high
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            const int v = std::max(0, 255 - static_cast<int>(8 * std::hypot(x - 32, y - 32)));
            dome.setPixel(x, y, qRgb(v, v, v));
        }
    }
    const auto run = [&](const char* name, ImageValues values) {
        for (const ImageOperation& operation : ImageOperations()) {
            if (QLatin1String(operation.name) == QLatin1String(name)) {
                return operation.Run({dome}, values).image;
            }
        }
        return QImage();
    };
    for (const bool isDirectX : {false, true}) {
        const double choice = isDirectX ? 2 : 1;
        for (const QImage& map :
             {run("Normal map", {10, 0, choice}), run("Tileable normal map", {choice - 1})}) {
            const QColor above = map.pixelColor(32, 20);
            const QColor right = map.pixelColor(44, 32);
            EXPECT_EQ(above.green() > 128, !isDirectX);
            EXPECT_GT(std::abs(above.green() - 128), 10);
            EXPECT_NEAR(above.red(), 127, 3);
            EXPECT_GT(right.red(), 138);
        }
    }
}

TEST(ImageBatchTest, WorksThroughAFolderAndTellsWhatFailed)
{
    const TestFolder folder;
    QDir().mkpath(folder.path("in"));
    ASSERT_TRUE(MakePicture(24, 17, false).save(folder.path("in/a.png")));
    ASSERT_TRUE(MakePicture(10, 30, false).save(folder.path("in/b.bmp")));
    QFile broken(folder.path("in/c.png"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("no picture");
    broken.close();
    ImageBatch batch{folder.path("in"), folder.path("out"), "png", &ImageOperations().front(), {}, {}};
    const auto always = [](int, const QString&) { return true; };
    const ImageBatch::Result first = batch.Run(always);
    EXPECT_EQ(first.written, 2);
    ASSERT_EQ(first.failures.size(), 1);
    EXPECT_TRUE(first.failures[0].startsWith("c.png: "));
    EXPECT_EQ(QImage(folder.path("out/b.png")).size(), QSize(10, 30));
    EXPECT_EQ(batch.Run(always).written, 0) << "nothing is overwritten";
    const ImageBatch::Result cancelled = batch.Run([](int done, const QString&) { return done < 1; });
    EXPECT_TRUE(cancelled.isCancelled);
    batch.to = batch.from;
    EXPECT_EQ(batch.Run(always).failures.size(), 1);
}

TEST_F(ImageWindowTest, ADrawnAreaIsCutOutAndTilesRepeatTheResult)
{
    ASSERT_TRUE(window.Load(Write("a.png", MakePicture(24, 17, false))));
    auto* tree = window.findChild<QTreeWidget*>("operations");
    tree->setCurrentItem(tree->findItems("Crop", Qt::MatchExactly | Qt::MatchRecursive).first());
    window.Result();
    auto* comparison = window.findChild<ImageComparison*>();
    comparison->ActualSize();
    comparison->ZoomBy(8);
    const QPoint middle(comparison->width() / 4, comparison->height() / 2);
    QTest::mousePress(comparison, Qt::LeftButton, {}, middle - QPoint(20, 20));
    QTest::mouseMove(comparison, middle + QPoint(21, 13));
    QTest::mouseRelease(comparison, Qt::LeftButton, {}, middle + QPoint(21, 13));
    // Pixels that are touched, however the drawn area lies on them.
    for (const auto& [name, span] : {std::pair("Width", 41.0 / 8), std::pair("Height", 33.0 / 8)}) {
        const double side = window.findChild<QDoubleSpinBox*>(name)->value();
        EXPECT_GE(side, span) << name;
        EXPECT_LT(side, span + 2) << name;
    }
    EXPECT_GT(window.findChild<QDoubleSpinBox*>("Left")->value(), 0);
    EXPECT_TRUE(Await("the part that was drawn", [&] { return comparison->ResultSize().width() < 10; }));
    window.Result();
    const QImage plain = comparison->grab().toImage();
    Press("tile");
    EXPECT_NE(comparison->grab().toImage(), plain);
}

TEST_F(ImageWindowTest, ChainsOperationsWithUndo)
{
    const QImage image = MakePicture(40, 30, false);
    ASSERT_TRUE(window.Load(Write("stone.png", image)));
    EXPECT_EQ(image, window.Result());
    EXPECT_TRUE(Text("info").contains("stone.png")) << Text("info").toStdString();
    EXPECT_TRUE(Text("info").contains("24 bits")) << Text("info").toStdString();

    Choose("Warm");
    SetNumber("Amount", -25);
    QImage warm = image;
    ZemtarImage::warm(&warm, &warm, -25);
    EXPECT_EQ(warm, window.Result());
    Apply();
    EXPECT_EQ(warm, window.Result()) << "an applied operation is not made a second time";
    Choose("Scale");
    SetNumber("Width", 20);
    Apply();
    EXPECT_EQ(QSize(20, 15), window.Result().size());
    EXPECT_EQ(QSize(20, 15), window.findChild<ImageComparison*>()->ResultSize());

    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(warm, window.Result());
    Press("undo");
    EXPECT_EQ(image, window.Result());
    EXPECT_FALSE(window.findChild<QAction*>("undo")->isEnabled());
    Press("redo");
    EXPECT_EQ(warm, window.Result());
    Press("revert");
    EXPECT_EQ(image, window.Result());
    Press("undo");
    EXPECT_EQ(warm, window.Result()) << "going back to the loaded picture can be undone";
}

TEST_F(ImageWindowTest, BadFilesAreToldAndThePictureStays)
{
    EXPECT_FALSE(window.Load(path("missing.png")));
    EXPECT_TRUE(Message().contains("missing.png")) << Message().toStdString();
    EXPECT_TRUE(window.Result().isNull());
    EXPECT_FALSE(window.Save(path("nothing.png")));
    const QImage image = MakePicture(8, 8, false);
    ASSERT_TRUE(window.Load(Write("good.png", image)));
    EXPECT_EQ("", Message());

    const QStringList bad = {write("cut.png", read(path("good.png")).left(40)),
                             write("noise.jpg", "no picture"),
                             write("empty.png", {}),
                             write("huge.ppm", "P6\n30000 30000\n255\n"),
                             write("cut.hdr", RadianceFile(4, 4).left(20)),
                             write("noise.exr", "v/1"),
                             path("")};
    for (const QString& file : bad) {
        EXPECT_FALSE(window.Load(file)) << file.toStdString();
        EXPECT_TRUE(Message().contains("could not be opened: ")) << file.toStdString();
        EXPECT_EQ(image, window.Result());
    }
    window.Load(path("huge.ppm"));
    EXPECT_TRUE(Message().contains("too large")) << Message().toStdString();

    Choose("Crop");
    SetNumber("Width", 16384);
    SetNumber("Height", 16384);
    EXPECT_TRUE(window.Result().isNull());
    EXPECT_TRUE(Message().contains("too large"));
    EXPECT_FALSE(window.findChild<QPushButton*>("apply")->isEnabled());
    Choose("Grey");
    EXPECT_FALSE(window.Result().isNull());
    EXPECT_EQ("", Message()) << "the operation's message goes with the operation";
}

TEST_F(ImageWindowTest, SavesWhatIsSeen)
{
    const QImage image = MakePicture(24, 17, true);
    ASSERT_TRUE(window.Load(Write("in.png", image)));
    Choose("Cool");
    const QImage result = window.Result();
    for (const QString& suffix : WritableImageSuffixes()) {
        const QString file = path("零 out.") + suffix;
        ASSERT_TRUE(window.Save(file)) << Message().toStdString();
        EXPECT_EQ(Message().isEmpty(), KeepsAlpha(file))
            << "lost transparency is told: " << suffix.toStdString();
        ImageWindow other;
        ASSERT_TRUE(other.Load(file)) << suffix.toStdString();
        EXPECT_EQ(image.size(), other.Result().size());
        if (suffix == "png") {
            EXPECT_EQ(result, other.Result());
        }
    }
    const QStringList before = QDir(path("")).entryList(QDir::Files);
    for (const char* name : {"out.xyz", "out", "none/out.png", "none/out.exr"}) {
        EXPECT_FALSE(window.Save(path(name))) << name;
        EXPECT_TRUE(Message().contains("could not be saved: ")) << Message().toStdString();
    }
    EXPECT_FALSE(window.Save(path("flat.bmp"), true)) << "no panorama";
    EXPECT_EQ(before, QDir(path("")).entryList(QDir::Files)) << "a failure leaves no file";
    ASSERT_TRUE(window.Save(path("sky.jpg"), true));
    EXPECT_TRUE(read(path("sky.jpg")).contains("<GPano:FullPanoWidthPixels>24<"));
}

TEST_F(ImageWindowTest, HighDynamicRangeIsShownUprightAndSavedWhole)
{
    const QString file = write("sky.hdr", RadianceFile(4, 2));
    ASSERT_FALSE(ZemtarImage::ConvertHdrToPng(toHost(file), host("mapped.png")).IsEmpty());
    const QImage mapped = NormalizedImage(QImage(path("mapped.png")));
    ASSERT_TRUE(window.Load(file));
    EXPECT_TRUE(Text("info").contains("tone-mapped"));
    EXPECT_EQ(mapped.mirrored(true, false), window.Result());
    ASSERT_TRUE(window.Save(path("whole.exr")));
    EXPECT_FALSE(ZemtarImage::ConvertHdrToPng(host("whole.exr"), host("again.png")).IsEmpty());
    EXPECT_EQ(mapped, NormalizedImage(QImage(path("again.png")))) << "the range is not cut to 8 bits";
    Choose("Tone mapping");
    EXPECT_EQ(mapped, window.Result());
}

TEST_F(ImageWindowTest, LargePicturesShowAReducedPreviewFirst)
{
    QImage image(2048, 1024, QImage::Format_RGB32);
    image.fill(QColor(90, 120, 30));
    auto* preview = window.findChild<ImagePreview*>();
    ASSERT_TRUE(window.Load(Write("large.bmp", image)));
    ASSERT_TRUE(Await("the whole picture", [&] { return preview->Shown().image.size() == image.size(); }));
    Choose("Warm");
    ASSERT_TRUE(Await("a reduced preview", [&] { return preview->IsReduced(); }));
    EXPECT_LE(preview->Shown().image.width() * preview->Shown().image.height(), ImagePreview::Reduced);
    EXPECT_EQ(image.size(), window.findChild<ImageComparison*>()->ResultSize());
    EXPECT_TRUE(Text("info").contains("preview")) << Text("info").toStdString();
    ASSERT_TRUE(Await("the whole result when the values rest", [&] { return !preview->IsReduced(); }));
    EXPECT_EQ(QColor(130, 160, 30), preview->Shown().image.pixelColor(2047, 1023));
    SetNumber("Amount", 7);
    ASSERT_TRUE(window.Save(path("out.png"))) << "not what is shown, but the whole";
    EXPECT_EQ(QColor(97, 127, 30), QImage(path("out.png")).pixelColor(2047, 1023));
}

TEST_F(ImageWindowTest, TakesFromClipboardAndDrop)
{
    const QImage image = MakePicture(9, 7, true);
    QApplication::clipboard()->clear();
    Press("paste");
    EXPECT_TRUE(Message().contains("clipboard"));
    QApplication::clipboard()->setImage(image);
    Press("paste");
    EXPECT_EQ(image, window.Result());
    Choose("Grey");
    Press("copy");
    EXPECT_EQ(window.Result(), QApplication::clipboard()->image());

    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(Write("dropped.png", image.scaled(3, 5)))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &enter);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &drop);
    EXPECT_TRUE(drop.isAccepted());
    EXPECT_EQ(QSize(3, 5), window.Result().size());
}

TEST_F(ImageWindowTest, ZoomAndPixelsBelongToBothSides)
{
    ASSERT_TRUE(window.Load(Write("in.png", MakePicture(1, 1, false))));
    Choose("Warm");
    window.Result();
    auto* comparison = window.findChild<ImageComparison*>();
    QImage dot(1, 1, QImage::Format_RGB32);
    dot.fill(QColor(10, 20, 30));
    ASSERT_TRUE(window.Load(Write("dot.png", dot)));
    EXPECT_EQ(QSize(1, 1), window.Result().size());
    for (const int x : {comparison->width() / 4, comparison->width() * 3 / 4}) {
        QTest::mouseMove(comparison, {x, comparison->height() / 2});
        EXPECT_TRUE(Text("pixel").contains("10 20 30")) << Text("pixel").toStdString();
        EXPECT_TRUE(Text("pixel").contains("50 60 30")) << Text("pixel").toStdString();
    }
    Press("actual");
    EXPECT_EQ(1.0, comparison->Zoom());
    const double fromKeys = (Press("zoomIn"), comparison->Zoom());
    EXPECT_GT(fromKeys, 1.0);
    Press("fit");
    EXPECT_GT(comparison->Zoom(), fromKeys);
    Press("split");
    EXPECT_EQ(ImageComparison::Split, comparison->CurrentMode());
    const QImage seen = comparison->grab().toImage();
    EXPECT_EQ(QColor(10, 20, 30), seen.pixelColor(seen.width() / 2 - 12, seen.height() / 2));
    EXPECT_EQ(QColor(50, 60, 30), seen.pixelColor(seen.width() / 2 + 12, seen.height() / 2));
}

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
