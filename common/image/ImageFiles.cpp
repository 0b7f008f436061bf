#include "common/image/ImageFiles.h"

#include "common/encoding/CZemtarConvert.h"
#include "common/file/FilePlacement.h"
#include "common/image/ExrHeader.h"
#include "common/image/PictureStructure.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>

#include <cstdio>
#include <cstring>

namespace Zemtar::ImageFiles {
namespace {

QString toQString(const CZemtarString& text)
{
    return CZemtarConvert::CZemtarStringToQString(text);
}

/// The file that a name stands for: a link keeps pointing to its file, also to one that is yet to be made.
QFileInfo linkedFile(QFileInfo info)
{
    constexpr int kMostLinks = 40; // NOTE: as many as path lookups follow
    for (int i = 0; i < kMostLinks && info.isSymLink() && !info.exists(); ++i) {
        info = QFileInfo(info.symLinkTarget());
    }
    return info.exists() ? QFileInfo(info.canonicalFilePath()) : info;
}

bool writeWithQt(const QImage& image, const QString& name, const QByteArray& format, int quality)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    QImageWriter writer(&file, format);
    if (quality >= 0) {
        writer.setQuality(qMin(quality, 100));
    }
    return writer.write(image) && file.flush();
}

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

unsigned readFile(void* buffer, unsigned size, unsigned count, fi_handle handle)
{
    return static_cast<unsigned>(std::fread(buffer, size, count, static_cast<std::FILE*>(handle)));
}

/// Reads for FreeImage's EXR reader; what lies behind the file's end reads as zeros. It does not look whether
/// a read succeeded, and with a buffer that stays as it was, reads a cut-off header for ever.
unsigned readOrZero(void* buffer, unsigned size, unsigned count, fi_handle handle)
{
    const std::size_t wanted = std::size_t(size) * count;
    const std::size_t got = std::fread(buffer, 1, wanted, static_cast<std::FILE*>(handle));
    std::memset(static_cast<char*>(buffer) + got, 0, wanted - got);
    return size == 0 ? 0 : static_cast<unsigned>(got / size);
}

unsigned writeFile(void* buffer, unsigned size, unsigned count, fi_handle handle)
{
    return static_cast<unsigned>(std::fwrite(buffer, size, count, static_cast<std::FILE*>(handle)));
}

int seekFile(fi_handle handle, long offset, int origin)
{
    return std::fseek(static_cast<std::FILE*>(handle), offset, origin);
}

long tellFile(fi_handle handle)
{
    return std::ftell(static_cast<std::FILE*>(handle));
}

FreeImageIO kFileAccess = {readFile, writeFile, seekFile, tellFile};
FreeImageIO kExrAccess = {readOrZero, writeFile, seekFile, tellFile};

/// Loads a file with FreeImage; null for a missing or unreadable file.
Bitmap readBitmap(FREE_IMAGE_FORMAT format, const char* name, int flags)
{
    FreeImageIO* const access = format == FIF_EXR ? &kExrAccess : &kFileAccess;
    const File file(std::fopen(name, "rb"));
    return Bitmap(file ? FreeImage_LoadFromHandle(format, access, file.get(), flags) : nullptr);
}

struct MemoryCloser
{
    void operator()(FIMEMORY* memory) const { FreeImage_CloseMemory(memory); }
};

/// Loads a file of a format whose structure has to be sound.
Bitmap readSoundBitmap(FREE_IMAGE_FORMAT format, const QString& name)
{
    constexpr qint64 kMostBytes = qint64(1) << 31; // what FreeImage can address
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly) || file.size() >= kMostBytes) {
        return nullptr;
    }
    QByteArray bytes = file.readAll();
    if (!isSoundPicture(format, bytes)) {
        return nullptr;
    }
    const std::unique_ptr<FIMEMORY, MemoryCloser> memory(FreeImage_OpenMemory(
        reinterpret_cast<BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size()))); // is only read
    return Bitmap(memory ? FreeImage_LoadFromMemory(format, memory.get(), 0) : nullptr);
}

/// Saves a file with FreeImage, whose writers do not look whether the bytes found room: the file is asked.
bool writeWithFreeImage(FREE_IMAGE_FORMAT format, const Bitmap& bitmap, const char* name, int flags)
{
    const File file(std::fopen(name, "w+b"));
    return file && FreeImage_SaveToHandle(format, bitmap.get(), &kFileAccess, file.get(), flags) != 0 &&
           std::fflush(file.get()) == 0 && std::ferror(file.get()) == 0;
}

/// Whether FreeImage can be trusted with the file: it takes the memory that a header claims before it reads
/// on.
bool isCredible(FREE_IMAGE_FORMAT format, const char* name)
{
    const File file(std::fopen(name, "rb"));
    if (!file || std::fseek(file.get(), 0, SEEK_END) != 0) {
        return false;
    }
    const long fileSize = std::ftell(file.get());
    if (format == FIF_EXR && !isCredibleExrHeader(file.get(), fileSize)) {
        return false;
    }
    if (!FreeImage_FIFSupportsNoPixels(format)) {
        return true;
    }
    const Bitmap header = readBitmap(format, name, FIF_LOAD_NOPIXELS);
    if (!header) {
        return false;
    }
    const qint64 width = FreeImage_GetWidth(header.get());
    const qint64 height = FreeImage_GetHeight(header.get());
    // A uniform picture without loss takes no more room when it is larger.
    return format == FIF_WEBP ? isPossibleSize(width, height)
                              : isCredibleSize(width, height, FreeImage_GetBPP(header.get()), fileSize);
}

} // namespace

QImage load(const CZemtarString& file)
{
    if (file.IsEmpty()) { // of which Qt would warn
        return {};
    }
    QImageReader reader(toQString(file));
    const QSize size = reader.size();
    if (size.isValid() && !isPossibleSize(size.width(), size.height())) {
        return {};
    }
    return reader.read();
}

bool save(const QImage& image, const CZemtarString& file, int quality, const char* format)
{
    const QString name = toQString(file);
    const QByteArray type =
        format != nullptr ? QByteArray(format) : QFileInfo(name).suffix().toLower().toLatin1();
    if (image.isNull() || !QImageWriter::supportedImageFormats().contains(type)) {
        return false;
    }
    return writeWhole(name, [&](const QString& part) { return writeWithQt(image, part, type, quality); });
}

bool writeWhole(const QString& file, const std::function<bool(const QString& name)>& write)
{
    if (file.isEmpty()) {
        return false;
    }
    const QFileInfo target = linkedFile(QFileInfo(file));
    const bool exists = target.exists();
    if (target.isDir() || target.isSymLink()) {
        return false;
    }
    if (exists && (!target.isFile() || !target.isWritable())) {
        return target.isWritable() && write(file);
    }
    if (exists && !QFileInfo(target.path()).isWritable()) {
        return write(file);
    }
    FilePlacement::NewFile part(target.filePath());
    if (!write(part.name())) {
        return false;
    }
    if (exists) {
        QFile::setPermissions(part.name(), target.permissions());
    }
    return part.place();
}

Bitmap loadBitmap(FREE_IMAGE_FORMAT format, const CZemtarString& file)
{
    const char* const name = file;
    if (format == FIF_UNKNOWN || format == FIF_JXR || !FreeImage_FIFSupportsReading(format)) {
        return nullptr; // the library behind JPEG XR ends the process on damaged files
    }
    if (needsSoundPicture(format)) {
        return readSoundBitmap(format, toQString(file));
    }
    return isCredible(format, name) ? readBitmap(format, name, 0) : nullptr;
}

bool saveBitmap(FREE_IMAGE_FORMAT format, const Bitmap& bitmap, const CZemtarString& file, int flags)
{
    if (!bitmap || format == FIF_UNKNOWN || !FreeImage_FIFSupportsWriting(format)) {
        return false;
    }
    return writeWhole(toQString(file), [&](const QString& part) {
        return writeWithFreeImage(format, bitmap, QFile::encodeName(part).constData(), flags);
    });
}

FREE_IMAGE_FORMAT formatOfName(const CZemtarString& file)
{
    return FreeImage_GetFIFFromFilename(file);
}

bool isHighDynamicRange(const CZemtarString& file)
{
    const CZemtarString extension = file.Extension().ToLower();
    return extension == "hdr" || extension == "exr";
}

} // namespace Zemtar::ImageFiles
