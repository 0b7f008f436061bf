#pragma once

#include <QMutex>
#include <QObject>
#include <QStringList>

#include <memory>

/// Listens to the program's standard error stream and to Qt's messages while it lives: each line is passed on
/// to where it went before, and told to the program. There may be several, in any order of their ends; with
/// the last one what was there before is put back.
///
///     StandardErrorLog log;
///     connect(&log, &StandardErrorLog::LinesArrived, panel, &LogPanel::Append);
///     const int mark = log.Mark();
///     reader.Import(file);
///     const QStringList reasons = log.LinesSince(mark);
class StandardErrorLog : public QObject
{
    Q_OBJECT

public:
    explicit StandardErrorLog(QObject* parent = nullptr);
    ~StandardErrorLog() override;

    /// The number of lines so far.
    int Mark() const;
    /// The lines that came after a mark; a line is counted when it ends.
    QStringList LinesSince(int mark) const;

signals:
    /// Lines have come, from any thread; sent on this object's thread when its event loop turns.
    void LinesArrived(const QStringList& lines);

private:
    void Append(const QString& line);
    void Deliver();

    mutable QMutex m_mutex;
    QStringList m_lines;
    int m_delivered = 0;

    class Source;
    std::shared_ptr<Source> m_source; ///< one for all logs
};
