#include "apps/images/ImageFile.h"

#include "apps/images/ImageOperations.h"
#include "common/encoding/CZemtarConvert.h"
#include "common/image/ZemtarImage.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QSaveFile>
#include <QTemporaryDir>

using namespace Zemtar;

namespace {

/// Quality of the formats that lose detail.
constexpr int SaveQuality = 92;

struct WriterFormat
{
    const char* suffix;
    const char* name;
    bool hasAlpha;
    int quality;
};

/// The formats that are offered, as far as a writer of this machine has them; EXR is the library's own.
constexpr WriterFormat AllFormats[] = {
    {"png", QT_TRANSLATE_NOOP("ImageFile", "PNG, lossless"), true, -1},
    {"jpg", QT_TRANSLATE_NOOP("ImageFile", "JPEG, small"), false, SaveQuality},
    {"jpeg", QT_TRANSLATE_NOOP("ImageFile", "JPEG, small"), false, SaveQuality},
    {"exr", QT_TRANSLATE_NOOP("ImageFile", "OpenEXR, high dynamic range"), true, -1},
    {"tif", QT_TRANSLATE_NOOP("ImageFile", "TIFF, lossless"), true, -1},
    {"tiff", QT_TRANSLATE_NOOP("ImageFile", "TIFF, lossless"), true, -1},
    {"webp", QT_TRANSLATE_NOOP("ImageFile", "WebP, small"), true, SaveQuality},
    {"bmp", QT_TRANSLATE_NOOP("ImageFile", "Windows bitmap"), false, -1},
    {"ppm", QT_TRANSLATE_NOOP("ImageFile", "Portable pixmap"), false, -1},
};

QString Tr(const char* text)
{
    return QCoreApplication::translate("ImageFile", text);
}

CZemtarString ToHost(const QString& text)
{
    return CZemtarConvert::QStringToCZemtarString(text);
}

QString SuffixOf(const QString& file)
{
    return QFileInfo(file).suffix().toLower();
}

/// The format of a name's suffix, when this machine writes it; else null.
const WriterFormat* FormatOf(const QString& file)
{
    const QByteArray suffix = SuffixOf(file).toLatin1();
    for (const WriterFormat& format : AllFormats) {
        if (suffix == format.suffix) {
            return suffix == "exr" || QImageWriter::supportedImageFormats().contains(suffix) ? &format
                                                                                             : nullptr;
        }
    }
    return nullptr;
}

ImageFile ReadHighRange(const QString& file)
{
    int width = 0;
    int height = 0;
    const QTemporaryDir folder;
    const CZemtarString png = ToHost(folder.filePath(QStringLiteral("shown.png")));
    if (!ZemtarImage::GetImageSize(ToHost(file), width, height)) {
        return {{}, {}, Tr("It is damaged, or no HDR or EXR file.")};
    }
    if (const QString refusal = RefusalOfSize(width, height); !refusal.isEmpty()) {
        return {{}, {}, refusal};
    }
    const CZemtarString written = ZemtarImage::ConvertHdrToPng(ToHost(file), png);
    const QImage mapped(CZemtarConvert::CZemtarStringToQString(written));
    if (mapped.isNull()) {
        return {{}, {}, Tr("Its pixels could not be tone-mapped.")};
    }
    // Tone mapping mirrors; the picture is shown as it is in its file.
    return {NormalizedImage(mapped.mirrored(true, false)),
            Tr("%1, high dynamic range, shown tone-mapped").arg(SuffixOf(file).toUpper()),
            {},
            file};
}

/// NOTE: commit() alone, in Qt 6.4, does not see that the last bytes found no room.
bool Commit(QSaveFile& file)
{
    if (file.flush()) {
        return file.commit();
    }
    file.cancelWriting();
    return false;
}

/// Puts a whole file in the place of another.
QString PutInPlace(const QString& whole, const QString& file)
{
    QFile source(whole);
    QSaveFile target(file);
    if (!source.open(QIODevice::ReadOnly)) {
        return source.errorString();
    }
    const QByteArray bytes = source.readAll();
    return target.open(QIODevice::WriteOnly) && target.write(bytes) == bytes.size() && Commit(target)
               ? QString()
               : target.errorString();
}

QString WriteExr(const QImage& image, const QString& file, const QString& highRange)
{
    const QTemporaryDir folder;
    const QString png = folder.filePath(QStringLiteral("picture.png"));
    if (highRange.isEmpty() && !image.save(png, nullptr, 100)) {
        return Tr("The temporary folder takes no file.");
    }
    const QString whole = folder.filePath(QStringLiteral("whole.exr"));
    if (ZemtarImage::ConvertToExr(ToHost(highRange.isEmpty() ? png : highRange), ToHost(whole), true)
            .IsEmpty()) {
        return Tr("It could not be converted to EXR.");
    }
    // By way of our own copy, so that the name keeps its letters and the reason of a failure is known.
    return PutInPlace(whole, file);
}

} // namespace

ImageFile ReadImageFile(const QString& file)
{
    const QFileInfo info(file);
    QFile source(file);
    if (info.isDir()) {
        return {{}, {}, Tr("It is a folder.")};
    }
    if (!source.open(QIODevice::ReadOnly)) {
        return {{}, {}, source.errorString()};
    }
    if (const QString suffix = SuffixOf(file); suffix == "hdr" || suffix == "exr") {
        return ReadHighRange(file);
    }
    QImageReader reader(&source);
    const QSize size = reader.size();
    if (const QString refusal = RefusalOfSize(size.width(), size.height());
        size.isValid() && !refusal.isEmpty()) {
        return {{}, {}, refusal};
    }
    const QByteArray format = reader.format();
    const QImage image = reader.read();
    if (image.isNull()) {
        return {{}, {}, reader.errorString()};
    }
    return {NormalizedImage(image),
            Tr("%1, %2 bits").arg(QString::fromLatin1(format).toUpper()).arg(image.bitPlaneCount())};
}

QString WriteImageFile(const QImage& image, const QString& file, const QString& highRange)
{
    const WriterFormat* format = FormatOf(file);
    if (format == nullptr) {
        return Tr("No format is written for the suffix \"%1\"; these are: %2")
            .arg(SuffixOf(file), WritableImageSuffixes().join(QStringLiteral(", ")));
    }
    if (SuffixOf(file) == "exr") {
        return WriteExr(image, file, highRange);
    }
    QSaveFile target(file);
    if (!target.open(QIODevice::WriteOnly)) {
        return target.errorString();
    }
    QImageWriter writer(&target, format->suffix);
    if (format->quality >= 0) {
        writer.setQuality(format->quality);
    }
    if (!writer.write(image)) {
        return writer.errorString();
    }
    return Commit(target) ? QString() : target.errorString();
}

QString WritePanorama(const QImage& image, const QString& file)
{
    const QString suffix = SuffixOf(file);
    if (suffix != "png" && suffix != "jpg" && suffix != "jpeg") {
        return Tr("Only PNG and JPEG files can be marked as panoramas.");
    }
    // Marked beside its place, so that no picture without the mark is left when that fails.
    const QTemporaryDir folder;
    const QString whole = folder.filePath(QStringLiteral("panorama.") + suffix);
    if (QString failure = WriteImageFile(image, whole); !failure.isEmpty()) {
        return failure;
    }
    const qint64 before = QFileInfo(whole).size();
    ZemtarImage::SaveQImageWithXMPMetaData(ToHost(whole), image.width(), image.height(), ToHost(suffix));
    if (QFileInfo(whole).size() == before) {
        return Tr("The mark of a panorama could not be written.");
    }
    return PutInPlace(whole, file);
}

bool KeepsAlpha(const QString& file)
{
    const WriterFormat* format = FormatOf(file);
    return format != nullptr && format->hasAlpha;
}

QString ReadableImages()
{
    QStringList patterns = {QStringLiteral("*.hdr"), QStringLiteral("*.exr")};
    for (const QByteArray& format : QImageReader::supportedImageFormats()) {
        patterns.append(QStringLiteral("*.") + QString::fromLatin1(format));
    }
    return Tr("Pictures (%1)").arg(patterns.join(' ')) + QStringLiteral(";;") + Tr("All files (*)");
}

QString WritableImages()
{
    QStringList filters;
    for (const QString& suffix : WritableImageSuffixes()) {
        const WriterFormat* format = FormatOf(QStringLiteral("a.") + suffix);
        filters.append(QStringLiteral("%1 (*.%2)").arg(Tr(format->name), suffix));
    }
    return filters.join(QStringLiteral(";;"));
}

QStringList WritableImageSuffixes()
{
    QStringList suffixes;
    for (const WriterFormat& format : AllFormats) {
        if (FormatOf(QStringLiteral("a.") + format.suffix) != nullptr) {
            suffixes.append(QString::fromLatin1(format.suffix));
        }
    }
    return suffixes;
}
