#pragma once

#include "common/ZemtarExport.h"
#include "host/CZemtarColor.h"
#include "host/CZemtarString.h"

#include <QColorSpace>
#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVector3D>

class QColor;

namespace Zemtar {

class CZemtarTexture;

/// Image utilities of the library, the host and its other plug-ins: raw pixel buffers, texture path repair,
/// image file operations, material maps, in-memory filters, composition, and HDR, EXR and panorama files.
///
///     ZemtarImage::ResizeImage("photo.png", 256, 256, true, "thumbnail.jpg", 90);
///     QImage edges("part.png");
///     ZemtarImage::edgify(&edges);
///
/// Nothing throws or logs (CombineImages alone prints a line). Unless a function says otherwise, files are
/// loaded with automatic format detection and saved in the format that the output name's suffix asks for,
/// with default quality, and a function without a result that fails leaves no file. The functions are called
/// on the host's main thread. None needs a QGuiApplication: what others paint by way of a QPixmap is painted
/// here on a QImage, with the same pixels. Images of more than 2^28 pixels are neither read nor made.
class ZEMTAR_EXPORT ZemtarImage
{
public:
    /// Memory layout of a raw pixel buffer. createImage and getImageAsRawData read the values differently.
    enum PixelFormat : int
    {
        PixelFormatRGB = 0,    ///< createImage: bytes red, green, blue; first row is the top row.
        PixelFormatRGBA = 1,   ///< createImage: bytes red, green, blue, alpha; first row is the bottom row.
                               ///< getImageAsRawData: native words 0xAARRGGBB; first row is the top row.
        PixelFormatRGB888 = 2, ///< getImageAsRawData: bytes red, green, blue; first row is the top row.
    };

    /// Type of one channel value of a raw pixel buffer.
    enum PixelDataType : int
    {
        PixelDataTypeUnsignedByte = 0,
    };

    /// How CombineImages draws its second image over the first; any other value is ImageBlendNormal.
    enum ImageBelndMode : int
    {
        ImageBlendNormal = 0,   ///< QPainter::CompositionMode_SourceOver
        ImageBlendBehind = 1,   ///< QPainter::CompositionMode_DestinationOver
        ImageBlendAdd = 2,      ///< QPainter::CompositionMode_Plus
        ImageBlendMultiply = 3, ///< QPainter::CompositionMode_Multiply
    };

    /// Where AddMarkToImage places a mark; any other value is MarkImageBottomRight.
    enum enumMarkImageLocation : int
    {
        MarkImageTopLeft = 0,
        MarkImageBottomRight = 1,
        MarkImageTopRight =
            2, ///< The right edge is taken from the image's height: right for square images only.
        MarkImageCenter = 3,
        MarkImageBottomLeft = 4,
    };

    // Raw pixels

    /// Writes a caller-owned buffer of 8-bit channels as an image file `columns` pixels wide and `rows` high.
    ///
    /// Each row takes its bytes rounded up to a multiple of 4; the buffer may start at any address and is
    /// only read. `dataType` is not looked at. Nothing is written for PixelFormatRGB888 and unknown formats,
    /// a null buffer, and sizes that are not positive or beyond what an image can have. The outcome is not
    /// reported.
    static void createImage(void* pixels, int rows, int columns, CZemtarString fileName,
                            PixelDataType dataType, PixelFormat format);

    /// Loads an image file and returns its pixels, top row first, each row rounded up to a multiple of 4
    /// bytes.
    ///
    /// `height` and `width` receive the size of the file's image, 0 when it cannot be read. The result is
    /// null for an unreadable file and for formats other than PixelFormatRGBA and PixelFormatRGB888. The
    /// caller owns the memory, which is aligned for any type, and releases it with `free`.
    static unsigned char* getImageAsRawData(CZemtarString fileName, PixelFormat format, int& height,
                                            int& width);

    // Texture paths

    /// Folders in which FixTexturePath looks, in search order; one list for the process, empty at start.
    static QStringList texturePaths;

    /// Replaces the list of texture folders by `paths` as it stands.
    static void RegisterTexturePaths(QList<QString>& paths);

    /// Appends a texture folder unless the list holds it in any letter case.
    static void RegisterTexturePath(QString& path);

    /// Points a texture at the first existing file among: its name as it stands, its name in its own folder,
    /// its bare name in its own folder, its name in each registered folder. It is left alone when none exists
    /// or its name is empty. Names are tried as they are: no other extension, no other letter case.
    static void FixTexturePath(CZemtarTexture& texture);

    // Image files

    /// Re-saves `in` as `out`, making the last folder level. True when `in` could be loaded, saved or not.
    static bool ConvertImage(CZemtarString in, CZemtarString out);

    /// Reads the size in pixels; false, with the outputs untouched, when the file cannot be read.
    static bool GetImageSize(CZemtarString file, int& width, int& height);

    /// As GetImageSize, with the physical resolution in dots per inch; HDR and EXR files are not read.
    static bool GetImageSizeAndResolution(CZemtarString file, int& width, int& height, int& dpiX, int& dpiY);

    /// Letter-boxes `in` into width x height (a side of 0 or less keeps the image's own; both: no resizing),
    /// fades it by SetImageAlpha unless `alpha` is negative, and saves it as `out`.
    static void ManipulateImage(CZemtarString in, CZemtarString out, int width, int height, double alpha);

    /// Scales the image to fit and centres it in width x height, zero outside; a size below 1 does nothing.
    static void ResizeImage(QImage& image, int width, int height);

    /// Scales `in` to, or with `keepAspect` within, width x height and saves it as `out` with `quality`
    /// (-1..100).
    ///
    /// HDR and EXR files stay high-dynamic-range in their own format: with `keepAspect` the height follows
    /// from the width, and `quality` is not used. False for sizes below 1, unreadable input and failed saves.
    static bool ResizeImage(CZemtarString in, int width, int height, bool keepAspect, CZemtarString out,
                            int quality);

    /// Scales `in` as above and saves it centred on a width x height canvas whose pixels carry the
    /// background's colour with zero alpha: formats without alpha show the colour, others transparency.
    static void ResizeImage(CZemtarString in, CZemtarString out, int width, int height, bool keepAspect,
                            CZemtarColor background);

    /// As above, handing back the canvas; a name with non-ASCII characters is read in the host's ANSI form.
    static void ResizeImage(CZemtarString in, QImage& result, int width, int height, bool keepAspect,
                            CZemtarColor background);

    /// Scales the image's alpha by trunc(alpha x 256) / 255, alpha limited to 0..1. At 1.0 that is an invalid
    /// colour to the painter, and the image comes out fully transparent.
    static void SetImageAlpha(QImage& image, double alpha);

    /// Saves a rectangle of `in`, in pixels, as `out`; parts outside the image are zero. Result: the save's.
    static bool CropImage(CZemtarString in, CZemtarString out, int x, int y, int width, int height);

    /// Saves `in` mirrored top to bottom (`vertical`) or left to right as `out`.
    static bool Flip(CZemtarString in, CZemtarString out, bool vertical);

    /// Tags the file's image with a colour space, without converting it, and saves it in place.
    static void SetImageColorSpace(CZemtarString file, QColorSpace space);

    // Normal and height maps

    /// Mean of the colour's channels divided by 255 once more: 0 .. 1/255.
    static double Intensity(const QColor& color);

    /// Limits `value` with the second argument as the upper and the third as the lower bound.
    static double Clamp(double value, double upper, double lower);

    /// Maps a normal's component, -1..1, to a channel, 0..255, by (component + 1) x 127.5 truncated.
    static int MapComponent(double component);

    /// Unit normal of a 3 x 3 neighbourhood m[row][column] of brightness values: x is the vertical, y the
    /// horizontal Sobel gradient, z is 1 / strength; zero for a zero vector.
    static QVector3D SobelOperator(const double m[3][3], double strength);

    /// Fills a table of 256 output levels: contrast about the middle level, 1.0 keeping it, limited to
    /// 0..255.
    static void ContrastLookup(unsigned short* table, double contrast);

    /// Writes the normal map of a colour texture. False when `in` cannot be read or `out` not saved.
    static bool NormalMapFromTexture(CZemtarString in, CZemtarString out, double strength, bool invert);

    /// Writes a grey height map (scale 50 and contrast 25 are neutral), keeping alpha. Result as above.
    static bool HeightMapFromTexture(CZemtarString in, CZemtarString out, double scale, double contrast,
                                     bool invert);

    /// Writes a tileable normal map as PNG, at most 4096 pixels a side, and returns its name: `out` with the
    /// extension png, or a new temporary file for an empty `out`, whether or not the save succeeds. Empty for
    /// an empty `in`; the text of the integer 0 when `in` cannot be read.
    static CZemtarString GenerateNormalFromTexture(const CZemtarString& in, CZemtarString out);

    // Filters
    // The per-pixel filters cover the target's size; source and target may be the same image.

    /// Replaces the inner pixels of a 32-bit image by its Sobel edge magnitude; other formats are left alone.
    static void edgify(QImage* image);

    /// The image with its blurred (radius 1..17) and brightened (by `delta`) copy overlaid at opacity / 256.
    static QImage bloomed(QImage* image, int radius, int delta, int opacity, bool flag);

    /// Opaque grey, the integer mean of the channels; `delta` is not used.
    static void brightness(QImage* source, QImage* target, int delta);

    /// Grey, the integer mean of the channels, with the source's alpha.
    static void greyScale(QImage* source, QImage* target);

    /// Adds `delta` to red and green, limited to 0..255.
    static void warm(QImage* source, QImage* target, int delta);

    /// Adds `delta` to blue, limited to 0..255.
    static void cool(QImage* source, QImage* target, int delta);

    /// Adds `delta` to the HSL saturation, limited to 0..255.
    static void saturation(QImage* source, QImage* target, int delta);

    /// Sharpens the inner pixels with the 3 x 3 kernel of 5 and -1; they become opaque, the rim is kept.
    static void sharpen(QImage* source, QImage* target);

    // Composition

    /// Draws `second`, scaled to the size of `first` with `scaleSecond`, over `first`; when one is null,
    /// returns the other. Prints "Combining Images..." on standard output.
    static QImage CombineImages(QImage first, QImage second, ImageBelndMode mode, bool scaleSecond);

    /// Draws a line of `lineWidth` pixels along the image's edges. The colour's channels are truncated
    /// without scaling by 255, so host colours give black or nearly so; a channel of 256 or more an invalid
    /// colour. An image with a palette of 8 bits becomes one of 32-bit colour; all others keep their format.
    static void AddBoarderToImage(QImage& image, int lineWidth, CZemtarColor color);

    /// Frames the image, shrunk by about a tenth, in a border picture stretched to the image's size.
    static QImage AddDefaultBorder(QImage image, QImage border);

    /// Blends a mark over the image at a corner or the centre; what reaches outside is clipped. The image's
    /// format is treated as by AddBoarderToImage.
    static void AddMarkToImage(QImage& image, const QImage& mark, enumMarkImageLocation location);

    // HDR, EXR and panorama files

    /// Tone-maps an HDR or EXR file, mirrored left to right, to an 8-bit PNG and returns its name: `out` with
    /// the extension png, or ZemtarHDR.png in the temporary folder for an empty `out`. Empty on failure.
    static CZemtarString ConvertHdrToPng(CZemtarString in, CZemtarString out);

    /// Converts any image that FreeImage reads, except JPEG XR, to EXR and returns its name; empty on
    /// failure. A damaged file is refused, or gives what can be read of it.
    static CZemtarString ConvertToExr(CZemtarString in, CZemtarString out, bool zip);

    /// Adds to an existing PNG or JPEG file (`format` "png", "jpg" or "jpeg" in any case) the XMP packet of
    /// an equirectangular panorama of width x height pixels. False for other formats, else true, saved or
    /// not.
    static bool SaveQImageWithXMPMetaData(CZemtarString file, int width, int height, CZemtarString format);
};

} // namespace Zemtar
