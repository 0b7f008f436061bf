#include "apps/cli/Commands.h"

#include "common/encoding/CZemtarConvert.h"
#include "common/image/ZemtarImage.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QFileInfo>

#include <climits>
#include <iostream>

using namespace Zemtar;

namespace {

/// Words that are no number, colour or name that an option or argument takes: wrong usage.
struct BadWord
{
    QString message;
};

/// Work that could not be done, with the reason.
struct Failure
{
    QString reason;
};

CZemtarString ToHost(const QString& text)
{
    return CZemtarConvert::QStringToCZemtarString(text);
}

/// One command's arguments and options, which are checked when they are asked for.
class Words
{
public:
    explicit Words(const QCommandLineParser& parser)
        : m_parser(parser), m_arguments(parser.positionalArguments())
    {
    }

    QString Text(int argument) const { return m_arguments.at(argument); }
    CZemtarString Host(int argument) const { return ToHost(Text(argument)); }
    int Whole(int argument) const { return ParseWhole(Text(argument)); }

    bool Has(const char* option) const { return m_parser.isSet(option); }
    QString Value(const char* option) const { return m_parser.value(option); }
    int WholeValue(const char* option) const { return ParseWhole(Value(option)); }
    double NumberValue(const char* option) const
    {
        bool isNumber = false;
        const double number = Value(option).toDouble(&isNumber);
        if (!isNumber) {
            throw BadWord{QStringLiteral("%1 is no number").arg(Value(option))};
        }
        return number;
    }
    QColor ColorValue(const char* option) const
    {
        const QColor color(Value(option));
        if (!color.isValid()) {
            throw BadWord{QStringLiteral("%1 is no colour; \"#ff8000\" is one").arg(Value(option))};
        }
        return color;
    }

    /// The position of a word among `names`.
    static int Choice(const QString& word, const QStringList& names)
    {
        const auto index = names.indexOf(word);
        if (index < 0) {
            throw BadWord{QStringLiteral("%1 is none of: %2").arg(word, names.join(' '))};
        }
        return static_cast<int>(index);
    }

private:
    static int ParseWhole(const QString& word)
    {
        bool isNumber = false;
        const int number = word.toInt(&isNumber);
        if (!isNumber) {
            throw BadWord{QStringLiteral("%1 is no whole number").arg(word)};
        }
        return number;
    }

    const QCommandLineParser& m_parser;
    QStringList m_arguments;
};

QImage Load(const QString& file)
{
    QImage image(file);
    if (image.isNull()) {
        throw Failure{QStringLiteral("%1 is no image that can be read").arg(file)};
    }
    return image;
}

void Save(const QImage& image, const QString& file)
{
    if (!image.save(file)) {
        throw Failure{QStringLiteral("%1 could not be written").arg(file)};
    }
}

/// Throws what went wrong between two files unless all went well.
void Require(bool isDone, const Words& words, int in = 0, int out = 1)
{
    int width = 0;
    int height = 0;
    if (!isDone && !ZemtarImage::GetImageSize(words.Host(in), width, height)) {
        throw Failure{QStringLiteral("%1 is no image that can be read").arg(words.Text(in))};
    }
    if (!isDone) {
        throw Failure{QStringLiteral("%1 could not be made").arg(words.Text(out))};
    }
}

/// Tells a file that was written from one that was there: some operations do not report their success.
class WriteWatch
{
public:
    explicit WriteWatch(const QString& file) : m_file(file), m_before(QFileInfo(file).lastModified()) {}
    bool IsWritten() const
    {
        const QFileInfo now(m_file);
        return now.isFile() && now.lastModified() != m_before;
    }

private:
    QString m_file;
    QDateTime m_before;
};

QString PngName(const QString& file)
{
    return CZemtarConvert::CZemtarStringToQString(ToHost(file).ReplaceExtension(L"png"));
}

void NormalMap(const Words& words)
{
    Require(ZemtarImage::NormalMapFromTexture(words.Host(0), words.Host(1), words.NumberValue("strength"),
                                              words.Has("invert")),
            words);
}

void TileableNormalMap(const Words& words)
{
    const WriteWatch watch(PngName(words.Text(1)));
    ZemtarImage::GenerateNormalFromTexture(words.Host(0), words.Host(1));
    Require(watch.IsWritten(), words);
}

void HeightMap(const Words& words)
{
    Require(ZemtarImage::HeightMapFromTexture(words.Host(0), words.Host(1), words.NumberValue("scale"),
                                              words.NumberValue("contrast"), words.Has("invert")),
            words);
}

void Resize(const Words& words)
{
    const int width = words.Whole(2);
    const int height = words.Whole(3);
    if (width < 1 || height < 1) {
        throw BadWord{QStringLiteral("a size begins at 1 x 1")};
    }
    const bool keepAspect = !words.Has("stretch");
    if (!words.Has("canvas")) {
        const int quality = words.WholeValue("quality");
        Require(ZemtarImage::ResizeImage(words.Host(0), width, height, keepAspect, words.Host(1), quality),
                words);
        return;
    }
    const CZemtarColor background = CZemtarConvert::QColorToCZemtarColor(words.ColorValue("canvas"));
    const WriteWatch watch(words.Text(1));
    ZemtarImage::ResizeImage(words.Host(0), words.Host(1), width, height, keepAspect, background);
    Require(watch.IsWritten(), words);
}

void Crop(const Words& words)
{
    Require(ZemtarImage::CropImage(words.Host(0), words.Host(1), words.Whole(2), words.Whole(3),
                                   words.Whole(4), words.Whole(5)),
            words);
}

void Flip(const Words& words)
{
    Require(ZemtarImage::Flip(words.Host(0), words.Host(1), words.Has("vertical")), words);
}

void ToneMap(const Words& words)
{
    const CZemtarString extension = words.Host(0).Extension().ToLower();
    if (!(extension == "hdr") && !(extension == "exr")) {
        throw Failure{QStringLiteral("%1 is neither an HDR nor an EXR file").arg(words.Text(0))};
    }
    Require(!ZemtarImage::ConvertHdrToPng(words.Host(0), words.Host(1)).IsEmpty(), words);
}

void ToExr(const Words& words)
{
    if (ZemtarImage::ConvertToExr(words.Host(0), words.Host(1), words.Has("zip")).IsEmpty()) {
        throw Failure{QStringLiteral("%1 could not be converted to %2").arg(words.Text(0), words.Text(1))};
    }
}

void Panorama(const Words& words)
{
    int width = 0;
    int height = 0;
    Require(ZemtarImage::GetImageSize(words.Host(0), width, height), words, 0, 0);
    const WriteWatch watch(words.Text(0));
    if (!ZemtarImage::SaveQImageWithXMPMetaData(words.Host(0), width, height, words.Host(0).Extension())) {
        throw Failure{QStringLiteral("%1 is neither a PNG nor a JPEG file").arg(words.Text(0))};
    }
    Require(watch.IsWritten(), words, 0, 0);
}

void Filter(const Words& words)
{
    enum
    {
        Edge,
        Bloom,
        Grey,
        Warm,
        Cool,
        Saturation,
        Sharpen
    };
    const int filter =
        Words::Choice(words.Text(0), {"edge", "bloom", "grey", "warm", "cool", "saturation", "sharpen"});
    const int amount = words.WholeValue("amount");
    const int radius = words.WholeValue("radius");
    const int opacity = words.WholeValue("opacity");
    const QImage loaded = Load(words.Text(1));
    QImage source =
        loaded.convertToFormat(loaded.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    QImage target = source;
    switch (filter) {
    case Edge:
        ZemtarImage::edgify(&target);
        break;
    case Bloom:
        target = ZemtarImage::bloomed(&source, radius, amount, opacity, false);
        break;
    case Grey:
        ZemtarImage::greyScale(&source, &target);
        break;
    case Warm:
        ZemtarImage::warm(&source, &target, amount);
        break;
    case Cool:
        ZemtarImage::cool(&source, &target, amount);
        break;
    case Saturation:
        ZemtarImage::saturation(&source, &target, amount);
        break;
    default:
        ZemtarImage::sharpen(&source, &target);
    }
    Save(target, words.Text(2));
}

void Combine(const Words& words)
{
    const int mode = Words::Choice(words.Value("mode"), {"normal", "behind", "add", "multiply"});
    Save(ZemtarImage::CombineImages(Load(words.Text(0)), Load(words.Text(1)),
                                    ZemtarImage::ImageBelndMode(mode), words.Has("scale")),
         words.Text(2));
}

void Frame(const Words& words)
{
    Save(ZemtarImage::AddDefaultBorder(Load(words.Text(0)), Load(words.Text(1))), words.Text(2));
}

void Mark(const Words& words)
{
    const int place =
        Words::Choice(words.Value("at"), {"top-left", "bottom-right", "top-right", "center", "bottom-left"});
    QImage image = Load(words.Text(0));
    ZemtarImage::AddMarkToImage(image, Load(words.Text(1)), ZemtarImage::enumMarkImageLocation(place));
    Save(image, words.Text(2));
}

/// A command of `image`: what it takes and what it does. Options stand as name=default, switches as names
/// alone.
struct ImageCommand
{
    const char* name;
    const char* arguments;
    const char* options;
    const char* help;
    void (*run)(const Words&);

    QStringList Options() const { return QString(options).split(' ', Qt::SkipEmptyParts); }
    QStringList Arguments() const { return QString(arguments).split(' '); }
};

constexpr ImageCommand kCommands[] = {
    {"normal-map", "IN OUT", "strength=10 invert", "normal map of a colour texture", NormalMap},
    {"tileable-normal-map", "IN OUT", "", "seamless normal map, always PNG", TileableNormalMap},
    {"height-map", "IN OUT", "scale=50 contrast=25 invert", "grey height map; 50 and 25 are neutral",
     HeightMap},
    {"resize", "IN OUT WIDTH HEIGHT", "stretch quality=-1 canvas=#ffffff",
     "fit into a size, stretch to it, or centre on a canvas of it", Resize},
    {"crop", "IN OUT X Y WIDTH HEIGHT", "", "cut out a rectangle; \"--\" goes before negative numbers", Crop},
    {"flip", "IN OUT", "vertical", "mirror left to right, or top to bottom", Flip},
    {"tone-map", "IN OUT", "", "HDR or EXR to PNG, mirrored left to right", ToneMap},
    {"to-exr", "IN OUT", "zip", "any image to OpenEXR", ToExr},
    {"panorama", "FILE", "", "mark a PNG or JPEG file as a 360 degree panorama, in place", Panorama},
    {"filter", "NAME IN OUT", "amount=40 radius=5 opacity=128",
     "edge, bloom, grey, warm, cool, saturation or sharpen", Filter},
    {"combine", "FIRST SECOND OUT", "mode=normal scale", "blend: normal, behind, add or multiply", Combine},
    {"frame", "IN BORDER OUT", "", "frame with a border picture", Frame},
    {"mark", "IN MARK OUT", "at=bottom-right",
     "stamp at top-left, top-right (square images), bottom-left, bottom-right or center", Mark},
};

void PrintImageUsage(std::ostream& out)
{
    for (const ImageCommand& command : kCommands) {
        out << "zemtar-cad image " << command.name << ' ' << command.arguments;
        for (const QString& option : command.Options()) {
            out << " [--" << QString(option).replace('=', ' ').toStdString() << ']';
        }
        out << "\n    " << command.help << "\n";
    }
}

int ImageUsageError(const QString& message)
{
    std::cerr << "zemtar-cad: " << message.toStdString() << "\n";
    PrintImageUsage(std::cerr);
    return ExitUsage;
}

int Run(const ImageCommand& command, const QStringList& words)
{
    QCommandLineParser parser;
    for (const QString& option : command.Options()) {
        const QString name = option.section('=', 0, 0);
        parser.addOption(option == name
                             ? QCommandLineOption(name)
                             : QCommandLineOption(name, QString(), "VALUE", option.section('=', 1)));
    }
    if (!parser.parse(words)) {
        return ImageUsageError(parser.errorText());
    }
    if (parser.positionalArguments().size() != command.Arguments().size()) {
        return ImageUsageError(QStringLiteral("%1 takes %2").arg(command.name, command.arguments));
    }
    try {
        command.run(Words(parser));
        return ExitDone;
    } catch (const BadWord& word) {
        return ImageUsageError(word.message);
    } catch (const Failure& failure) {
        std::cerr << "zemtar-cad: " << failure.reason.toStdString() << "\n";
        return ExitFailed;
    }
}

} // namespace

int RunImage(const QStringList& arguments)
{
    const QString name = arguments.value(0);
    if (name == "help" || name == "--help") {
        PrintImageUsage(std::cout);
        return ExitDone;
    }
    for (const ImageCommand& command : kCommands) {
        if (name == command.name) {
            return Run(command, arguments);
        }
    }
    return ImageUsageError(name.isEmpty() ? QStringLiteral("image needs a command")
                                          : QStringLiteral("image has no command %1").arg(name));
}
