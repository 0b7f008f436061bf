#include "common/file/CZemtarFile.h"

#include "common/encoding/CZemtarConvert.h"
#include "common/file/FilePlacement.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>

namespace Zemtar {
namespace {

/// Characters that some file system does not allow in a file name, in the order in which they are replaced.
constexpr std::array<const char*, 9> kForbiddenInNames = {"*", "\\", "/", ":", "<", ">", "?", "\"", "|"};

QString toQt(const CZemtarString& path)
{
    return CZemtarConvert::CZemtarStringToQString(path);
}

/// Whether removing the file `to` would take away what the differently named `from` stands for.
bool isLinkTo(const QString& from, const QString& to)
{
    return QFileInfo(from) == QFileInfo(to) && !QFileInfo(to).isSymLink();
}

/// Puts a copy of `from` in the place of the existing file `to`, which stays when that fails.
bool replaceByCopy(const QString& from, const QString& to)
{
    const QString part = FilePlacement::nameBeside(to);
    if (QFile::copy(from, part) && FilePlacement::moveOver(part, to)) {
        return true;
    }
    QFile::remove(part);
    return false;
}

/// The text after the last "." up to the first " ", ")" or "," that follows; empty without a ".".
QString extensionInFilter(const QString& text)
{
    const qsizetype point = text.lastIndexOf(QLatin1Char('.'));
    const auto isEnd = [](QChar c) {
        return c == QLatin1Char(' ') || c == QLatin1Char(')') || c == QLatin1Char(',');
    };
    const auto begin = point < 0 ? text.cend() : text.cbegin() + point + 1;
    return QString(begin, std::find_if(begin, text.cend(), isEnd) - begin);
}

} // namespace

bool CZemtarFile::FileExists(CZemtarString path)
{
    const QString name = toQt(path);
    return QFile::exists(name) && QFileInfo(name).isFile();
}

bool CZemtarFile::DirectoryExists(CZemtarString path)
{
    const QString name = toQt(path);
    return QDir(name).exists() && QFileInfo(name).isDir();
}

bool CZemtarFile::IsFile(CZemtarString path)
{
    return QFileInfo(toQt(FixFileNameSlashes(path, false))).isFile();
}

bool CZemtarFile::IsDirectory(CZemtarString path)
{
    return QFileInfo(toQt(path)).isDir();
}

CZemtarString CZemtarFile::CreateFolder(CZemtarString folder)
{
    const QDir directory(toQt(folder));
    QString path = directory.absolutePath();
    directory.mkpath(path + QLatin1Char('/'));
    if (!directory.exists()) {
        return CZemtarString();
    }
    if (!path.endsWith(QLatin1Char('/'))) {
        path += QLatin1Char('/');
    }
    return CZemtarConvert::QStringToCZemtarString(path);
}

bool CZemtarFile::DeleteTheFile(CZemtarString path)
{
    const CZemtarString cleaned = FixFileNameSlashes(path, false);
    return !cleaned.IsEmpty() && QFile::remove(toQt(cleaned));
}

bool CZemtarFile::FileCopy(CZemtarString source, CZemtarString destination, bool overwrite)
{
    destination.ReplaceSlashWithSystemSlash();
    if (destination.Length() > 0 && destination[0] == L'/' &&
        (destination.Length() == 1 || destination[1] != L'/')) {
        destination = CZemtarString("/") + destination; // Wanted: an absolute destination starts with two.
    }
    const QString from = QDir::fromNativeSeparators(toQt(source));
    const QString to = QDir::fromNativeSeparators(toQt(destination));
    // Wanted: this rule comes before the test for existence.
    if (QFileInfo(from).absoluteFilePath() == QFileInfo(to).absoluteFilePath()) {
        return true;
    }
    if (!QFile::exists(from)) {
        return false;
    }
    if (!to.isEmpty() && QFile::exists(to)) {
        if (!overwrite || isLinkTo(from, to)) {
            return true;
        }
        return replaceByCopy(from, to);
    }
    CreateFolder(destination.Path(L'/'));
    return QFile::copy(from, to);
}

bool CZemtarFile::FileRename(CZemtarString oldPath, CZemtarString newPath)
{
    return FileExists(oldPath) && QFile::rename(toQt(oldPath), toQt(newPath));
}

CZemtarString CZemtarFile::FixFileNameSlashes(CZemtarString path, bool createFolder)
{
    CZemtarString cleaned = path;
    cleaned.ReplaceSlashWithSystemSlash();
    while (cleaned.Contains("//", true)) {
        cleaned.Replace("//", "/");
    }
    if (createFolder) {
        CreateFolder(path.Path(L'/'));
    }
    return cleaned;
}

bool CZemtarFile::HaveSamePath(CZemtarString first, CZemtarString second)
{
    return QDir(toQt(first)) == QDir(toQt(second));
}

CZemtarString CZemtarFile::AddExtensinoToFile(CZemtarString fileName, CZemtarString extensionText)
{
    if (!fileName.Extension().IsEmpty()) {
        return fileName;
    }
    CZemtarString extension = CZemtarConvert::QStringToCZemtarString(extensionInFilter(toQt(extensionText)));
    extension.ToLower();
    return extension.IsEmpty() ? fileName : fileName + "." + extension;
}

CZemtarString CZemtarFile::FixShortFileName(CZemtarString fileName, CZemtarString replacement)
{
    // One pass after the other: a forbidden character in the replacement is itself replaced by a later pass.
    for (const char* forbidden : kForbiddenInNames) {
        fileName.Replace(forbidden, replacement);
    }
    fileName.Trim();
    return fileName;
}

} // namespace Zemtar
