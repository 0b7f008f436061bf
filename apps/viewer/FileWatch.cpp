#include "apps/viewer/FileWatch.h"

#include <QFileInfo>

namespace {

constexpr int RestMilliseconds = 400; ///< without a change, until the file counts as whole

} // namespace

FileWatch::Stamp FileWatch::Stamp::Of(const QString& file)
{
    const QFileInfo info(file);
    return info.isFile() ? Stamp{info.lastModified(), info.size()} : Stamp{};
}

FileWatch::FileWatch(QObject* parent) : QObject(parent)
{
    m_look.setSingleShot(true);
    m_look.setInterval(RestMilliseconds);
    connect(&m_look, &QTimer::timeout, this, &FileWatch::Look);
    // The folder, too: a file that is replaced is another one, which the system does not watch.
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_look, qOverload<>(&QTimer::start));
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_look, qOverload<>(&QTimer::start));
}

void FileWatch::Add(const QString& file)
{
    const QString path = QFileInfo(file).absoluteFilePath();
    const Stamp now = Stamp::Of(path);
    m_files.insert(path, {now, now});
    m_watcher.addPath(path);
    m_watcher.addPath(QFileInfo(path).absolutePath());
}

void FileWatch::Remove(const QString& file)
{
    const QString path = QFileInfo(file).absoluteFilePath();
    m_files.remove(path);
    m_watcher.removePath(path);
}

void FileWatch::Look()
{
    QStringList changed;
    bool isMoving = false;
    for (auto entry = m_files.begin(); entry != m_files.end(); ++entry) {
        const Stamp now = Stamp::Of(entry.key());
        if (now.size < 0 || now == entry->told) {
            continue; // away for now, or as it was
        }
        if (now == entry->latest) {
            entry->told = now;
            changed << entry.key();
            m_watcher.addPath(entry.key());
        } else {
            entry->latest = now;
            isMoving = true;
        }
    }
    if (isMoving) {
        m_look.start();
    }
    for (const QString& file : std::as_const(changed)) {
        emit Changed(file);
    }
}
