#include "apps/images/ImageOperations.h"

#include "common/encoding/CZemtarConvert.h"
#include "common/image/ZemtarImage.h"

#include <QCoreApplication>
#include <QLocale>
#include <QPixelFormat>
#include <QTemporaryDir>

using namespace Zemtar;

namespace {

CZemtarString ToHost(const QString& text)
{
    return CZemtarConvert::QStringToCZemtarString(text);
}

QString Tr(const char* text)
{
    return QCoreApplication::translate("ImageOperations", text);
}

/// The file forms in which a picture travels to and from an operation on files.
struct FileForm
{
    const char* suffix;
    int quality; ///< Of the file that is handed in: pictures in memory are worth no compression.
};
constexpr FileForm OpaqueForm = {"bmp", -1};
constexpr FileForm AlphaForm = {"png", 100};

/// Runs `write(in, out)`, an operation that reads one file and writes another, on a picture in memory.
template <typename Write>
ImageOutcome ThroughFiles(const QImage& image, const FileForm& form, Write write)
{
    const QTemporaryDir folder;
    const QString in = folder.filePath(QStringLiteral("in.") + form.suffix);
    const QString out = folder.filePath(QStringLiteral("out.") + form.suffix);
    if (!folder.isValid() || !image.save(in, nullptr, form.quality)) {
        return {{}, Tr("The temporary folder takes no file: %1").arg(folder.errorString())};
    }
    write(ToHost(in), ToHost(out));
    const QImage result(out);
    return {result, result.isNull() ? Tr("The operation wrote no picture.") : QString()};
}

template <typename Write>
ImageOutcome ThroughFiles(const QImage& image, Write write)
{
    return ThroughFiles(image, image.hasAlphaChannel() || IsDeepImage(image) ? AlphaForm : OpaqueForm, write);
}

/// The picture with 8 bits a channel.
QImage ShallowImage(const QImage& image)
{
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
}

/// Replaces each pixel's red and green by what `turn(red, green)` gives.
template <typename Turn>
ImageOutcome WithTurned(ImageOutcome outcome, Turn turn)
{
    outcome.image = ShallowImage(outcome.image);
    for (int y = 0; y < outcome.image.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(outcome.image.scanLine(y));
        for (int x = 0; x < outcome.image.width(); ++x) {
            const auto [red, green] = turn(qRed(row[x]), qGreen(row[x]));
            row[x] = qRgba(red, green, qBlue(row[x]), qAlpha(row[x]));
        }
    }
    return outcome;
}

ImageOutcome NormalMap(const ImageInput& input, const ImageValues& values)
{
    // The map is opaque and does not look at alpha.
    ImageOutcome outcome =
        ThroughFiles(input.image, OpaqueForm, [&](const CZemtarString& in, const CZemtarString& out) {
            ZemtarImage::NormalMapFromTexture(in, out, values[0], values[1] != 0);
        });
    // The library's red points up and its green to the left.
    const int direction = static_cast<int>(values[2]);
    if (outcome.image.isNull() || direction == 0) {
        return outcome;
    }
    return WithTurned(std::move(outcome), [isUp = direction == 1](int red, int green) {
        return std::pair(255 - green, isUp ? red : 255 - red);
    });
}

ImageOutcome HeightMap(const ImageInput& input, const ImageValues& values)
{
    return ThroughFiles(input.image, [&](const CZemtarString& in, const CZemtarString& out) {
        ZemtarImage::HeightMapFromTexture(in, out, values[0], values[1], values[2] != 0);
    });
}

ImageOutcome TurnGreen(const ImageInput& input, const ImageValues& /*values*/)
{
    return WithTurned({input.image}, [](int red, int green) { return std::pair(red, 255 - green); });
}

ImageOutcome TileableNormalMap(const ImageInput& input, const ImageValues& values)
{
    ImageOutcome outcome =
        ThroughFiles(input.image, AlphaForm, [](const CZemtarString& in, const CZemtarString& out) {
            ZemtarImage::GenerateNormalFromTexture(in, out);
        });
    const bool isUp = values[0] == 0; // the library's green points down
    return outcome.image.isNull() || !isUp ? outcome : TurnGreen({outcome.image}, {});
}

ImageOutcome ToneMap(const ImageInput& input, const ImageValues& /*values*/)
{
    return ThroughFiles(input.image, AlphaForm, [&](const CZemtarString& in, const CZemtarString& out) {
        const CZemtarString file =
            input.highRange.isEmpty() ? ZemtarImage::ConvertToExr(in, out, false) : ToHost(input.highRange);
        ZemtarImage::ConvertHdrToPng(file, out);
    });
}

using InPlace = void (*)(QImage* source, QImage* target, int amount);

/// A filter with one amount or none.
template <InPlace Filter>
ImageOutcome Filtered(const ImageInput& input, const ImageValues& values)
{
    QImage source = input.image;
    QImage target = input.image;
    Filter(&source, &target, values.empty() ? 0 : static_cast<int>(values[0]));
    return {target};
}

void Edges(QImage* /*source*/, QImage* target, int /*amount*/)
{
    ZemtarImage::edgify(target);
}

void Grey(QImage* source, QImage* target, int /*amount*/)
{
    ZemtarImage::greyScale(source, target);
}

void Sharpen(QImage* source, QImage* target, int /*amount*/)
{
    ZemtarImage::sharpen(source, target);
}

ImageOutcome Bloom(const ImageInput& input, const ImageValues& values)
{
    QImage source = input.image;
    return {ZemtarImage::bloomed(&source, static_cast<int>(values[0]), static_cast<int>(values[1]),
                                 static_cast<int>(values[2]), false)};
}

ImageOutcome Scale(const ImageInput& input, const ImageValues& values)
{
    const QSize size(static_cast<int>(values[0]), static_cast<int>(values[1]));
    const bool keepAspect = values[2] != 0;
    if (keepAspect && input.image.size().scaled(size, Qt::KeepAspectRatio).isEmpty()) {
        return {{}, Tr("In these proportions one side would be less than a pixel.")};
    }
    return ThroughFiles(input.image, [&](const CZemtarString& in, const CZemtarString& out) {
        ZemtarImage::ResizeImage(in, size.width(), size.height(), keepAspect, out, 100);
    });
}

ImageOutcome LetterBox(const ImageInput& input, const ImageValues& values)
{
    QImage image = input.image.convertToFormat(QImage::Format_ARGB32); // the bars are transparent
    ZemtarImage::ResizeImage(image, static_cast<int>(values[0]), static_cast<int>(values[1]));
    return {image};
}

ImageOutcome Crop(const ImageInput& input, const ImageValues& values)
{
    return ThroughFiles(input.image, [&](const CZemtarString& in, const CZemtarString& out) {
        ZemtarImage::CropImage(in, out, static_cast<int>(values[2]), static_cast<int>(values[3]),
                               static_cast<int>(values[0]), static_cast<int>(values[1]));
    });
}

ImageOutcome Flip(const ImageInput& input, const ImageValues& values)
{
    if (IsDeepImage(input.image)) { // which the library would paint with 8 bits a channel
        return {input.image.mirrored(values[0] == 0, values[0] != 0)};
    }
    return ThroughFiles(input.image, [&](const CZemtarString& in, const CZemtarString& out) {
        ZemtarImage::Flip(in, out, values[0] != 0);
    });
}

ImageOutcome Fade(const ImageInput& input, const ImageValues& values)
{
    QImage image = input.image;
    ZemtarImage::SetImageAlpha(image, values[0]);
    return {image};
}

ImageOutcome Border(const ImageInput& input, const ImageValues& values)
{
    QImage image = input.image;
    // The line's colour has channels of 0..255.
    ZemtarImage::AddBoarderToImage(image, static_cast<int>(values[0]),
                                   CZemtarColor(values[1], values[2], values[3], 1.0));
    return {image};
}

ImageOutcome Canvas(const ImageInput& input, const ImageValues& values)
{
    return ThroughFiles(input.image, AlphaForm, [&](const CZemtarString& in, const CZemtarString& out) {
        const QColor colour(static_cast<int>(values[3]), static_cast<int>(values[4]),
                            static_cast<int>(values[5]));
        ZemtarImage::ResizeImage(in, out, static_cast<int>(values[0]), static_cast<int>(values[1]),
                                 values[2] != 0, CZemtarConvert::QColorToCZemtarColor(colour));
    });
}

ImageOutcome Combine(const ImageInput& input, const ImageValues& values)
{
    return {ZemtarImage::CombineImages(input.image, input.second,
                                       static_cast<ZemtarImage::ImageBelndMode>(static_cast<int>(values[0])),
                                       values[1] != 0)};
}

ImageOutcome Frame(const ImageInput& input, const ImageValues& /*values*/)
{
    return {ZemtarImage::AddDefaultBorder(input.image, input.second)};
}

ImageOutcome Mark(const ImageInput& input, const ImageValues& values)
{
    QImage image = input.image;
    ZemtarImage::AddMarkToImage(image, input.second,
                                static_cast<ZemtarImage::enumMarkImageLocation>(static_cast<int>(values[0])));
    return {image};
}

#define TEXT(text) QT_TRANSLATE_NOOP("ImageOperations", text)

constexpr double MostSide = 16384;
constexpr const char* InvertHelp = TEXT("Turns dark to high instead of light");

constexpr ImageParameter NormalMapParameters[] = {
    {ImageParameter::Number, TEXT("Strength"), TEXT("Height of the relief"), 0.1, 100, 10},
    {ImageParameter::Switch, TEXT("Invert"), InvertHelp, 0, 1, 0},
    {ImageParameter::Choice, TEXT("Directions"),
     TEXT("Plain: red up, green left. OpenGL: red right, green up. DirectX: red right, green down"), 0, 2, 0,
     TEXT("Plain|OpenGL|DirectX")},
};
constexpr ImageParameter TileableNormalMapParameters[] = {
    {ImageParameter::Choice, TEXT("Green channel"), TEXT("Points up for OpenGL, down for DirectX"), 0, 1, 1,
     TEXT("OpenGL|DirectX")},
};
constexpr ImageParameter HeightMapParameters[] = {
    {ImageParameter::Number, TEXT("Scale"), TEXT("Factor of the brightness; 50 keeps it"), 0, 200, 50},
    {ImageParameter::Number, TEXT("Contrast"), TEXT("About middle grey; 25 keeps it"), 0, 100, 25},
    {ImageParameter::Switch, TEXT("Invert"), InvertHelp, 0, 1, 0},
};
constexpr ImageParameter BloomParameters[] = {
    {ImageParameter::Whole, TEXT("Radius"), TEXT("Of the blur; 0 leaves the copy sharp"), 0, 18, 5},
    {ImageParameter::Whole, TEXT("Brightness"), TEXT("Added to the blurred copy"), 0, 255, 40},
    {ImageParameter::Whole, TEXT("Opacity"), TEXT("Of the blurred copy; 256 is whole"), 0, 256, 128},
};
constexpr ImageParameter AmountParameters[] = {
    {ImageParameter::Whole, TEXT("Amount"), TEXT("Added to the channels; 0 changes nothing"), -255, 255, 40},
};
constexpr ImageParameter ScaleParameters[] = {
    {ImageParameter::Width, TEXT("Width"), TEXT("In pixels"), 1, MostSide, 0},
    {ImageParameter::Height, TEXT("Height"), TEXT("In pixels"), 1, MostSide, 0},
    {ImageParameter::Switch, TEXT("Keep proportions"), TEXT("Fits into the size, not stretched"), 0, 1, 1},
};
constexpr ImageParameter CropParameters[] = {
    {ImageParameter::Width, TEXT("Width"), TEXT("Of the part, in pixels"), 1, MostSide, 0},
    {ImageParameter::Height, TEXT("Height"), TEXT("Of the part, in pixels"), 1, MostSide, 0},
    {ImageParameter::Whole, TEXT("Left"), TEXT("First column"), -MostSide, MostSide, 0},
    {ImageParameter::Whole, TEXT("Top"), TEXT("First row"), -MostSide, MostSide, 0},
};
constexpr ImageParameter FlipParameters[] = {
    {ImageParameter::Choice, TEXT("Direction"), TEXT("Which sides change places"), 0, 1, 0,
     TEXT("Left and right|Top and bottom")},
};
constexpr ImageParameter FadeParameters[] = {
    // At 1 the library makes the picture wholly transparent.
    {ImageParameter::Number, TEXT("Opacity"), TEXT("Factor of the alpha channel"), 0, 0.99, 0.5},
};
constexpr ImageParameter BorderParameters[] = {
    {ImageParameter::Whole, TEXT("Width"), TEXT("Of the line; half of it falls outside"), 1, 200, 8},
    {ImageParameter::Whole, TEXT("Red"), TEXT("Of the line"), 0, 255, 255},
    {ImageParameter::Whole, TEXT("Green"), TEXT("Of the line"), 0, 255, 255},
    {ImageParameter::Whole, TEXT("Blue"), TEXT("Of the line"), 0, 255, 255},
};

constexpr ImageParameter CanvasParameters[] = {
    {ImageParameter::Width, TEXT("Width"), TEXT("In pixels"), 1, MostSide, 0},
    {ImageParameter::Height, TEXT("Height"), TEXT("In pixels"), 1, MostSide, 0},
    {ImageParameter::Switch, TEXT("Keep proportions"), TEXT("Fits into the size, not stretched"), 0, 1, 1},
    {ImageParameter::Whole, TEXT("Red"), TEXT("Of the canvas"), 0, 255, 255},
    {ImageParameter::Whole, TEXT("Green"), TEXT("Of the canvas"), 0, 255, 255},
    {ImageParameter::Whole, TEXT("Blue"), TEXT("Of the canvas"), 0, 255, 255},
};
// The words of a choice stand in the order of the library's enumerators.
constexpr ImageParameter CombineParameters[] = {
    {ImageParameter::Choice, TEXT("Mode"), TEXT("How the pictures are blended"), 0, 3, 0,
     TEXT("Normal|Behind|Add|Multiply")},
    {ImageParameter::Switch, TEXT("Scale"), TEXT("Brings the second picture to the size of the first"), 0, 1,
     0},
};
constexpr ImageParameter MarkParameters[] = {
    {ImageParameter::Choice, TEXT("Place"), TEXT("Where the mark stands; top right on square pictures"), 0, 4,
     1, TEXT("Top left|Bottom right|Top right|Center|Bottom left")},
};

constexpr const char* Maps = TEXT("Material maps");
constexpr const char* Tones = TEXT("Colours and tones");
constexpr const char* Detail = TEXT("Detail");
constexpr const char* Shape = TEXT("Size and frame");
constexpr const char* Two = TEXT("Two pictures");

constexpr ImageOperation AllOperations[] = {
    {Maps, TEXT("Normal map"), TEXT("Directions of the surface, from the texture's brightness"),
     NormalMapParameters, true, NormalMap},
    {Maps, TEXT("Tileable normal map"), TEXT("A normal map that joins itself at opposite sides"),
     TileableNormalMapParameters, true, TileableNormalMap},
    {Maps,
     TEXT("Turn green"),
     TEXT("Makes an OpenGL normal map one for DirectX, and the other way round"),
     {},
     true,
     TurnGreen},
    {Maps, TEXT("Height map"), TEXT("Grey heights, from the texture's brightness"), HeightMapParameters, true,
     HeightMap},
    {Tones,
     TEXT("Tone mapping"),
     TEXT("Brings an HDR or EXR picture's range to 8 bits, mirrored left to right. An ordinary picture goes "
          "by way of EXR."),
     {},
     false,
     ToneMap},
    {Tones, TEXT("Saturation"), TEXT("Stronger or paler colours"), AmountParameters, true,
     Filtered<ZemtarImage::saturation>},
    {Tones, TEXT("Warm"), TEXT("Adds to red and green"), AmountParameters, true, Filtered<ZemtarImage::warm>},
    {Tones, TEXT("Cool"), TEXT("Adds to blue"), AmountParameters, true, Filtered<ZemtarImage::cool>},
    {Tones, TEXT("Grey"), TEXT("Mean of the channels; keeps transparency"), {}, true, Filtered<Grey>},
    {Tones,
     TEXT("Brightness"),
     TEXT("Brightness of each pixel as opaque grey"),
     {},
     true,
     Filtered<ZemtarImage::brightness>},
    {Detail, TEXT("Sharpen"), TEXT("Raises small differences; the rim stays"), {}, true, Filtered<Sharpen>},
    {Detail,
     TEXT("Edges"),
     TEXT("How steeply the brightness changes; the rim stays"),
     {},
     true,
     Filtered<Edges>},
    {Detail, TEXT("Bloom"), TEXT("Lays a blurred, brightened copy over the picture"), BloomParameters, true,
     Bloom},
    {Shape, TEXT("Scale"), TEXT("Another size in pixels"), ScaleParameters, false, Scale, nullptr, true},
    {Shape, TEXT("Letter-box"), TEXT("Fits the picture into a size, with transparent bars"),
     std::span(ScaleParameters).first(2), false, LetterBox},
    {Shape, TEXT("Canvas"), TEXT("Centres the picture on a canvas whose pixels are transparent"),
     CanvasParameters, false, Canvas},
    {Shape, TEXT("Crop"), TEXT("Cuts out a rectangle; what lies outside the picture is empty"),
     CropParameters, false, Crop, nullptr, true, true},
    {Shape, TEXT("Flip"), TEXT("The mirror image"), FlipParameters, true, Flip, nullptr, true},
    {Shape, TEXT("Fade"), TEXT("Makes the picture more transparent"), FadeParameters, true, Fade},
    {Shape, TEXT("Border line"), TEXT("A line along the edges"), BorderParameters, false, Border},
    {Two, TEXT("Combine"), TEXT("Lays a second picture over the picture"), CombineParameters, false, Combine,
     TEXT("Second picture")},
    {Two,
     TEXT("Frame"),
     TEXT("Frames the picture with a border picture"),
     {},
     false,
     Frame,
     TEXT("Border picture")},
    {Two, TEXT("Mark"), TEXT("Stamps a mark on the picture"), MarkParameters, false, Mark,
     TEXT("Mark picture")},
};

#undef TEXT

} // namespace

QString ImageOperation::Name() const
{
    return ImageOperationText(name);
}

QString ImageOperation::Group() const
{
    return ImageOperationText(group);
}

QString ImageOperation::Help() const
{
    return ImageOperationText(help);
}

ImageValues ImageOperation::Defaults(QSize size) const
{
    ImageValues values;
    for (const ImageParameter& parameter : parameters) {
        values.push_back(parameter.kind == ImageParameter::Width    ? size.width()
                         : parameter.kind == ImageParameter::Height ? size.height()
                                                                    : parameter.value);
    }
    return values;
}

ImageOutcome ImageOperation::Run(const ImageInput& input, const ImageValues& values) const
{
    qint64 width = 1;
    qint64 height = 1;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (parameters[i].kind == ImageParameter::Width) {
            width = static_cast<qint64>(values[i]);
        } else if (parameters[i].kind == ImageParameter::Height) {
            height = static_cast<qint64>(values[i]);
        }
    }
    if (const QString refusal = RefusalOfSize(width, height); !refusal.isEmpty()) {
        return {{}, refusal};
    }
    if (second != nullptr && input.second.isNull()) {
        return {{}, Tr("%1: none is chosen yet.").arg(Tr(second))};
    }
    const bool isReduced = !keepsDepth && IsDeepImage(input.image);
    ImageOutcome outcome =
        isReduced ? run({ShallowImage(input.image), input.highRange, ShallowImage(input.second)}, values)
                  : run(input, values);
    outcome.image = NormalizedImage(outcome.image);
    if (isReduced) {
        outcome.note = Tr("This operation works with 8 bits a channel; the picture had 16.");
    }
    return outcome;
}

std::span<const ImageOperation> ImageOperations()
{
    return AllOperations;
}

QString ImageOperationText(const char* text)
{
    return Tr(text);
}

QString ImageOperationWord(const char* text)
{
    return QString::fromLatin1(text).toLower().replace(' ', '-');
}

QImage NormalizedImage(const QImage& image)
{
    return IsDeepImage(image) ? image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_RGBA64
                                                                              : QImage::Format_RGBX64)
                              : ShallowImage(image);
}

bool IsDeepImage(const QImage& image)
{
    const QPixelFormat format = image.pixelFormat();
    const auto bits =
        format.colorModel() == QPixelFormat::Grayscale ? format.bitsPerPixel() : format.redSize();
    return !image.isNull() && bits > 8;
}

QString RefusalOfSize(qint64 width, qint64 height)
{
    if (width < 1 || height < 1) {
        return Tr("A picture begins at 1 x 1 pixels.");
    }
    if (width <= MostPixels / height) {
        return {};
    }
    const QLocale locale;
    return Tr("A picture of %1 x %2 pixels is too large: at most %3 megapixels are shown here.")
        .arg(locale.toString(width), locale.toString(height), locale.toString(MostPixels / 1000000));
}
