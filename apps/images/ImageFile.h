#pragma once

#include <QImage>
#include <QString>

/// A picture read from a file, or the reason why it could not be.
struct ImageFile
{
    QImage image;        ///< Null after a failure; else as NormalizedImage gives it.
    QString format{};    ///< For a person: "PNG, 24 bits".
    QString failure{};   ///< Why there is no picture, as the reader tells it.
    QString highRange{}; ///< The file's own name when it is HDR or EXR: `image` is then tone-mapped.
};

/// Reads any format that the library reads. Nothing is read whose header claims more than MostPixels.
ImageFile ReadImageFile(const QString& file);

/// Writes a picture in the format of the name's suffix; the file appears when it is whole. EXR is written
/// from `highRange`, when that is not empty, with the full range. Result: the reason of a failure, empty when
/// all went well.
QString WriteImageFile(const QImage& image, const QString& file, const QString& highRange = {});

/// Writes a PNG or JPEG file that is marked as a 360 degree panorama. Result: as above.
QString WritePanorama(const QImage& image, const QString& file);

/// Whether files of this name's suffix keep transparency.
bool KeepsAlpha(const QString& file);

/// The filters of a file dialog: all that can be read, and one for each format that can be written.
QString ReadableImages();
QString WritableImages();
/// The suffixes that can be written, the best for textures first.
QStringList WritableImageSuffixes();
