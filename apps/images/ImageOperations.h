#pragma once

#include <QImage>
#include <QString>

#include <span>
#include <vector>

/// A value that an operation takes: its name, range and default. Switches are 0 or 1; a choice is the
/// position of a word among `choices`, which stand between bars. Texts are keys of the context
/// "ImageOperations".
struct ImageParameter
{
    enum Kind
    {
        Whole,
        Number,
        Switch,
        Choice,
        Width,  ///< Pixels, beginning at the picture's width.
        Height, ///< Pixels, beginning at the picture's height.
    };
    Kind kind;
    const char* name;
    const char* help;
    double least;
    double most;
    double value;
    const char* choices = "";
};

/// What an operation works on.
struct ImageInput
{
    QImage image;        ///< Not null, with alpha or without (NormalizedImage).
    QString highRange{}; ///< The HDR or EXR file that `image` shows unchanged; empty for other pictures.
    QImage second{};     ///< For operations on two pictures; null before it is chosen.
};

/// A picture, or the reason why there is none.
struct ImageOutcome
{
    QImage image;
    QString failure{};
    QString note{}; ///< What was lost on the way; empty when nothing was.
};

using ImageValues = std::vector<double>;

/// An operation of the library on a picture, as the image window and the command line offer it.
struct ImageOperation
{
    const char* group;
    const char* name;
    const char* help;
    std::span<const ImageParameter> parameters;
    bool isReducible; ///< Whether a reduced picture shows what becomes of the whole one.
    ImageOutcome (*run)(const ImageInput& input, const ImageValues& values);
    const char* second = nullptr; ///< What the second picture is, for operations on two.
    bool keepsDepth = false;      ///< Whether 16 bits a channel stay; otherwise 8 are worked on.
    /// Whether the first four values are an area of the picture: width, height, left, top.
    bool takesArea = false;

    QString Name() const;
    QString Group() const;
    QString Help() const;
    /// One value for each parameter: those with which the operation begins on a picture of this size.
    ImageValues Defaults(QSize size) const;
    /// Runs on one value for each parameter. The picture that is handed back is normalized.
    ImageOutcome Run(const ImageInput& input, const ImageValues& values) const;
};

/// All operations, in the order of the list; those of one group stand together.
std::span<const ImageOperation> ImageOperations();

/// The translated form of a text of the table.
QString ImageOperationText(const char* text);

/// A text of the table as a word of the command line: "Tileable normal map" is "tileable-normal-map".
QString ImageOperationWord(const char* text);

/// The picture with 8 bits a channel, Format_ARGB32 when it has an alpha channel, else Format_RGB32; or, when
/// it has more, with 16: Format_RGBA64 or Format_RGBX64.
QImage NormalizedImage(const QImage& image);

/// Whether a picture has more than 8 bits a channel.
bool IsDeepImage(const QImage& image);

/// More pixels than this are neither loaded nor made: the image reader takes 256 MB for one picture.
constexpr qint64 MostPixels = qint64(1) << 26;

/// Why a picture of this size is not loaded or made; empty when it can be.
QString RefusalOfSize(qint64 width, qint64 height);
