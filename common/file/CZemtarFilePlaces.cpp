// Temporary and well-known folders of CZemtarFile, and the programs outside the application.

#include "common/encoding/CZemtarConvert.h"
#include "common/file/CZemtarFile.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QUrl>
#include <QUuid>

#include <cstdlib>
#include <ctime>

namespace Zemtar {
namespace {

constexpr const char* kTempFolderVariable = "ZEMTAR_TEMP_DIR";
constexpr const char* kPublicFolder = "/Users/Shared/";
constexpr const char* kFfmpegFromProgram = "../libexec/ffmpeg";

CZemtarString toHost(const QString& text)
{
    return CZemtarConvert::QStringToCZemtarString(text);
}

CZemtarString uniqueName()
{
    return toHost(QUuid::createUuid().toString(QUuid::WithBraces));
}

} // namespace

CZemtarString CZemtarFile::m_applicationBaseName;

CZemtarString CZemtarFile::TheTempFolderName()
{
    if (const char* const folder = std::getenv(kTempFolderVariable)) {
        return CZemtarString(folder); // As it stands: neither checked nor given a separator.
    }
    const QString folder = QDir::tempPath();
    if (!QDir(folder).exists()) {
        QDir().mkpath(folder);
    }
    return toHost(folder + QLatin1Char('/'));
}

CZemtarString CZemtarFile::GetTempFullFileName(CZemtarString extension)
{
    const CZemtarString name = TheTempFolderName() + uniqueName();
    return extension.IsEmpty() ? name : name + "." + extension;
}

CZemtarString CZemtarFile::CreateTempFolder()
{
    CZemtarString folder = TheTempFolderName();
    folder.CD(uniqueName());
    CreateFolder(folder);
    return folder;
}

CZemtarString CZemtarFile::GetPublicFolder()
{
    return CZemtarString(kPublicFolder);
}

CZemtarString CZemtarFile::GetUserHomeDirectory()
{
    return toHost(QDir::homePath());
}

bool CZemtarFile::IsDirectoryWritable(CZemtarString folder)
{
    const QString path = CZemtarConvert::CZemtarStringToQString(folder);
    QDir().mkpath(path);
    std::srand(static_cast<unsigned int>(std::time(nullptr)));
    const int first = std::rand();
    const int second = std::rand();
    // Wanted: the backslash is part of the probe's name where it is no separator.
    QFile probe(path + QStringLiteral("\\ZemtarTemp_%1_%2.txt").arg(first).arg(second));
    if (!probe.open(QIODevice::WriteOnly)) {
        return false;
    }
    probe.close();
    probe.remove();
    return true;
}

void CZemtarFile::SetApplicationBaseName(CZemtarString name)
{
    m_applicationBaseName = name;
}

CZemtarString CZemtarFile::ApplicationBaseName()
{
    return m_applicationBaseName;
}

bool CZemtarFile::GetFFMPEGExeName(CZemtarString& exeName)
{
    const QString path = QDir::fromNativeSeparators(QCoreApplication::applicationDirPath() +
                                                    QLatin1Char('/') + QLatin1String(kFfmpegFromProgram));
    exeName = toHost(path);
    return QFile::exists(path);
}

CZemtarString CZemtarFile::GetIndigoRenderer(bool)
{
    // Wanted: callers treat the renderer as not found, so there is no use in looking at its bundle.
    return CZemtarString();
}

bool CZemtarFile::OpenUrl(CZemtarString url)
{
    return QDesktopServices::openUrl(QUrl(CZemtarConvert::CZemtarStringToQString(url), QUrl::TolerantMode));
}

} // namespace Zemtar
