#pragma once

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QHash>
#include <QTimer>

/// Tells when a file has another content than when it was added, once it has come to rest: programs write in
/// steps, or replace the file by a new one.
class FileWatch : public QObject
{
    Q_OBJECT

public:
    explicit FileWatch(QObject* parent = nullptr);

    void Add(const QString& file);
    void Remove(const QString& file);

signals:
    void Changed(const QString& file);

private:
    struct Stamp
    {
        QDateTime modified;
        qint64 size = -1;

        static Stamp Of(const QString& file);
        bool operator==(const Stamp&) const = default;
    };
    struct Watched
    {
        Stamp told;   ///< of the content that is known
        Stamp latest; ///< at the last look
    };

    void Look();

    QFileSystemWatcher m_watcher;
    QTimer m_look;
    QHash<QString, Watched> m_files;
};
