#include "common/encoding/CZemtarEncoding.h"

#include "common/encoding/CZemtarConvert.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextCodec>
#include <QTextStream>
#include <uchardet.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zemtar {
namespace {

constexpr std::size_t kDetectionBlock = 0x10000;
constexpr qint64 kConversionBlock = 0x10000;
constexpr qsizetype kLargestConversionBlock = 0x40000000; ///< what one call of a codec can take, and more
constexpr int kUtf8Mib = 106;                             ///< NOTE: IANA's number of the character set

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

struct DetectorDeleter
{
    void operator()(uchardet_t detector) const { uchardet_delete(detector); }
};

using FileHandle = std::unique_ptr<std::FILE, FileCloser>;
using DetectorHandle = std::unique_ptr<std::remove_pointer_t<uchardet_t>, DetectorDeleter>;

struct CodecAlias
{
    const char* detected;
    const char* codec;
};

/// Detector names that the codecs do not know or read too narrowly. Windows-1252 gives bytes 0x80 to 0x9F
/// their printable characters. Reading Traditional Chinese as GB18030 is wanted.
constexpr std::array<CodecAlias, 3> kCodecAliases = {{
    {"UHC", "EUC-KR"},
    {"EUC-TW", "GB18030"},
    {"ISO-8859-1", "Windows-1252"},
}};

/// The codec for a detector's name, else the locale's; null only when there is not even that.
QTextCodec* codecFor(CZemtarString encoding)
{
    for (const CodecAlias& alias : kCodecAliases) {
        if (encoding == alias.detected) {
            encoding = CZemtarString(alias.codec);
            break;
        }
    }
    QTextCodec* codec = QTextCodec::codecForName(encoding.toStdString().c_str());
    if (codec == nullptr) {
        codec = QTextCodec::codecForName("SYSTEM");
    }
    // NOTE: codecs based on ICU are not registered under "SYSTEM".
    return codec != nullptr ? codec : QTextCodec::codecForLocale();
}

/// Whether a detector that has met nothing but ASCII learns nothing from these bytes either: they hold no
/// byte above 7F, and neither the escape nor the tilde that introduce the encodings in seven bits.
bool isPlainAscii(const char* bytes, std::size_t count)
{
    unsigned special = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        special |= static_cast<unsigned>(byte >= 0x80) | static_cast<unsigned>(byte == 0x1B) |
                   static_cast<unsigned>(byte == '~');
    }
    return special == 0;
}

void replaceNonAsciiUnits(QString& text)
{
    for (QChar& unit : text) {
        if (unit.unicode() >= 128) {
            unit = QLatin1Char('_');
        }
    }
}

/// NOTE: Qt's codecs do not count invalid characters reliably: those based on ICU leave U+FFFD instead, and
/// their GBK reads the byte FF, which is no character in it, as U+F8F5.
bool holdsInvalidBytes(const QString& text)
{
    return text.contains(QChar::ReplacementCharacter) || text.contains(QChar(0xF8F5));
}

enum class InvalidBytes
{
    BecomeReplacementCharacters,
    StopConversion,
};

struct Conversion
{
    QTextCodec* codec;
    bool replaceNonAscii;
    InvalidBytes invalidBytes;
};

/// Reads the next block to convert; empty at the end. The UTF-8 codec loses the character that follows a
/// broken sequence at a block's beginning, so its blocks end behind an ASCII character.
QByteArray readBlock(QFile& source, const QTextCodec& codec)
{
    QByteArray block = source.read(kConversionBlock);
    if (codec.mibEnum() == kUtf8Mib) {
        while (!block.isEmpty() && static_cast<unsigned char>(block.back()) >= 0x80 &&
               block.size() < kLargestConversionBlock) {
            const QByteArray byte = source.read(1);
            if (byte.isEmpty()) {
                break;
            }
            block += byte;
        }
    }
    return block;
}

/// Decodes `source` from its position to its end and writes it to `target` as UTF-8; false when any of it
/// fails.
bool convertText(QFile& source, QIODevice& target, const Conversion& conversion)
{
    QTextStream stream(&target);
    stream.setEncoding(QStringConverter::Utf8);
    // One state for all blocks, so a character may straddle two of them and one cut off by the end is
    // dropped.
    QTextCodec::ConverterState state;
    for (QByteArray block = readBlock(source, *conversion.codec); !block.isEmpty();
         block = readBlock(source, *conversion.codec)) {
        QString text = conversion.codec->toUnicode(block.constData(), static_cast<int>(block.size()), &state);
        if (conversion.invalidBytes == InvalidBytes::StopConversion &&
            (state.invalidChars > 0 || holdsInvalidBytes(text))) {
            return false;
        }
        if (conversion.replaceNonAscii) {
            replaceNonAsciiUnits(text);
        }
        stream << text;
    }
    stream.flush();
    return source.error() == QFileDevice::NoError && stream.status() == QTextStream::Ok;
}

/// Writes the converted text straight into `output`, which the finished text replaces: for a file in a folder
/// that takes no new ones.
bool convertInPlace(QFile& source, const QString& output, const Conversion& conversion)
{
    QBuffer text;
    text.open(QIODevice::WriteOnly);
    if (!convertText(source, text, conversion)) {
        return false;
    }
    source.close();
    QFile target(output);
    return target.open(QIODevice::WriteOnly) && target.write(text.data()) == text.size() && target.flush();
}

/// Converts the opened `source` into `output`, which may be the same file. `output` takes its place only when
/// it is complete: a full disk or unreadable sector leaves what was there. Where the folder takes no new
/// file, only the conversion is complete before anything is touched.
bool convertFile(QFile& source, const QString& output, const Conversion& conversion)
{
    if (conversion.codec == nullptr) {
        return false;
    }
    QSaveFile target(output);
    if (!target.open(QIODevice::WriteOnly)) {
        return convertInPlace(source, output, conversion);
    }
    const bool converted = convertText(source, target, conversion);
    source.close();
    if (!converted) {
        target.cancelWriting();
    }
    return target.commit();
}

QString temporaryCopyOf(const QString& source)
{
    return QDir::tempPath() + QLatin1Char('/') + QFileInfo(source).fileName();
}

} // namespace

const char* CZemtarEncoding::DetectFileEncoding(CZemtarString path)
{
    FileHandle file(std::fopen(path.toStdString().c_str(), "rb"));
    if (!file) {
        return nullptr;
    }
    DetectorHandle detector(uchardet_new());
    std::vector<char> block(kDetectionBlock);
    bool isFirst = true; // the detector looks for a byte-order mark there
    bool isPlain = true;
    while (std::feof(file.get()) == 0) {
        const std::size_t count = std::fread(block.data(), 1, block.size(), file.get());
        if (std::ferror(file.get()) != 0) {
            return nullptr; // A folder opens too, but never reaches its end.
        }
        isPlain = isPlain && isPlainAscii(block.data(), count);
        if (isPlain && !std::exchange(isFirst, false)) {
            continue; // most CAD files are plain throughout, and the detector is far slower than the disk
        }
        if (uchardet_handle_data(detector.get(), block.data(), count) != 0) {
            // Wanted: a detector that gave up is not touched again, nor is its file; both stay allocated.
            static_cast<void>(detector.release());
            static_cast<void>(file.release());
            return nullptr;
        }
    }
    uchardet_data_end(detector.get());
    return strdup(uchardet_get_charset(detector.get()));
}

CZemtarString CZemtarEncoding::EncodeFileToUtf8(CZemtarString source, CZemtarString encoding,
                                                bool overwriteSource, bool replaceNonAscii)
{
    if (encoding.IsEqualTo("UTF-8", true) || encoding.IsEqualTo("ASCII", true)) {
        return source;
    }
    const QString sourcePath = CZemtarConvert::CZemtarStringToQString(source);
    QFile file(sourcePath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return source;
    }
    const QString output = overwriteSource ? sourcePath : temporaryCopyOf(sourcePath);
    const Conversion conversion = {codecFor(encoding), replaceNonAscii,
                                   InvalidBytes::BecomeReplacementCharacters};
    return convertFile(file, output, conversion) ? CZemtarConvert::QStringToCZemtarString(output) : source;
}

CZemtarString CZemtarEncoding::EncodeFromGbkToUtf8(CZemtarString source)
{
    const QString sourcePath = CZemtarConvert::CZemtarStringToQString(source);
    QFile file(sourcePath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return source;
    }
    const QString output = temporaryCopyOf(sourcePath);
    const Conversion conversion = {QTextCodec::codecForName("GBK"), false, InvalidBytes::StopConversion};
    return convertFile(file, output, conversion) ? CZemtarConvert::QStringToCZemtarString(output) : source;
}

bool CZemtarEncoding::ConvertUnicodeToASCII(QString& text)
{
    replaceNonAsciiUnits(text);
    return !text.isEmpty();
}

} // namespace Zemtar
