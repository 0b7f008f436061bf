#include "common/file/FilePlacement.h"

#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace Zemtar::FilePlacement {
namespace {

std::filesystem::path toPath(const QString& file)
{
    return QFile::encodeName(file).toStdString();
}

} // namespace

QString nameBeside(const QString& file)
{
    const QFileInfo info(file);
    return info.path() + QLatin1String("/.") + QUuid::createUuid().toString(QUuid::Id128) + QLatin1Char('.') +
           info.suffix();
}

bool moveOver(const QString& finished, const QString& target)
{
    std::error_code error;
    std::filesystem::rename(toPath(finished), toPath(target), error);
    return !error;
}

NewFile::NewFile(const QString& target) : m_target(target)
{
#ifdef O_TMPFILE // NOTE: Linux alone has it (open(2)), and not on every file system
    const QByteArray folder = QFile::encodeName(QFileInfo(target).path());
    if (access("/proc/self/fd", X_OK) == 0) {
        m_descriptor = open(folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    }
#endif
    m_name = m_descriptor >= 0 ? QStringLiteral("/proc/self/fd/%1").arg(m_descriptor) : nameBeside(target);
}

NewFile::~NewFile()
{
    if (m_descriptor >= 0) {
        close(m_descriptor);
    } else if (!m_isPlaced) {
        QFile::remove(m_name);
    }
}

bool NewFile::place()
{
    if (m_descriptor < 0) {
        m_isPlaced = moveOver(m_name, m_target);
        return m_isPlaced;
    }
    const QString named = nameBeside(m_target);
    const QByteArray from = QFile::encodeName(m_name);
    const QByteArray to = QFile::encodeName(named);
    if (linkat(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), AT_SYMLINK_FOLLOW) != 0) {
        return false;
    }
    m_isPlaced = moveOver(named, m_target);
    if (!m_isPlaced) {
        QFile::remove(named);
    }
    return m_isPlaced;
}

} // namespace Zemtar::FilePlacement
