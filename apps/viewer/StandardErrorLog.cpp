#include "apps/viewer/StandardErrorLog.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <streambuf>
#include <vector>

/// Stands in the stream and in Qt's message handler as long as any log listens, and tells them all.
class StandardErrorLog::Source : public std::streambuf
{
public:
    /// Gives the one that is at work, or starts one.
    static std::shared_ptr<Source> Get()
    {
        static std::weak_ptr<Source> current;
        std::shared_ptr<Source> source = current.lock();
        if (!source) {
            source = std::make_shared<Source>();
            current = source;
        }
        return source;
    }

    Source() : m_target(std::cerr.rdbuf(this))
    {
        s_source = this;
        m_previousHandler = qInstallMessageHandler(&Source::HandleQtMessage);
    }
    ~Source() override
    {
        qInstallMessageHandler(m_previousHandler);
        s_source = nullptr;
        std::cerr.rdbuf(m_target);
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    void Add(StandardErrorLog* log)
    {
        const QMutexLocker lock(&m_mutex);
        m_logs.push_back(log);
    }
    void Remove(StandardErrorLog* log)
    {
        const QMutexLocker lock(&m_mutex);
        m_logs.erase(std::remove(m_logs.begin(), m_logs.end(), log), m_logs.end());
    }

protected:
    int_type overflow(int_type character) override
    {
        if (traits_type::eq_int_type(character, traits_type::eof())) {
            return traits_type::not_eof(character);
        }
        const char byte = traits_type::to_char_type(character);
        return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
    }

    std::streamsize xsputn(const char* text, std::streamsize count) override
    {
        m_target->sputn(text, count);
        const QMutexLocker lock(&m_mutex);
        m_line.append(text, static_cast<qsizetype>(count));
        for (qsizetype end = m_line.indexOf('\n'); end >= 0; end = m_line.indexOf('\n')) {
            Tell(QString::fromUtf8(m_line.left(end)));
            m_line.remove(0, end + 1);
        }
        return count;
    }

    int sync() override { return m_target->pubsync(); }

private:
    static void HandleQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
    {
        if (s_source->m_previousHandler) {
            s_source->m_previousHandler(type, context, message);
        } else {
            std::fprintf(stderr, "%s\n", qUtf8Printable(qFormatLogMessage(type, context, message)));
        }
        if (type != QtDebugMsg) {
            const QMutexLocker lock(&s_source->m_mutex);
            s_source->Tell(message);
        }
    }

    void Tell(const QString& line) const
    {
        for (StandardErrorLog* log : m_logs) {
            log->Append(line);
        }
    }

    std::streambuf* m_target;
    QtMessageHandler m_previousHandler;
    QMutex m_mutex;
    QByteArray m_line; ///< begun, not ended
    std::vector<StandardErrorLog*> m_logs;
    static Source* s_source;
};

StandardErrorLog::Source* StandardErrorLog::Source::s_source = nullptr;

StandardErrorLog::StandardErrorLog(QObject* parent) : QObject(parent), m_source(Source::Get())
{
    m_source->Add(this);
}

StandardErrorLog::~StandardErrorLog()
{
    m_source->Remove(this);
}

int StandardErrorLog::Mark() const
{
    const QMutexLocker lock(&m_mutex);
    return static_cast<int>(m_lines.size());
}

QStringList StandardErrorLog::LinesSince(int mark) const
{
    const QMutexLocker lock(&m_mutex);
    return m_lines.mid(mark);
}

void StandardErrorLog::Append(const QString& line)
{
    const QMutexLocker lock(&m_mutex);
    m_lines << line;
    // The panel belongs to the thread of the windows, and it must not be touched while that paints.
    QMetaObject::invokeMethod(this, &StandardErrorLog::Deliver, Qt::QueuedConnection);
}

void StandardErrorLog::Deliver()
{
    const QStringList lines = LinesSince(m_delivered);
    m_delivered += static_cast<int>(lines.size());
    if (!lines.isEmpty()) {
        emit LinesArrived(lines);
    }
}
