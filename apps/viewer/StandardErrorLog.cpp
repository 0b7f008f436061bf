#include "apps/viewer/StandardErrorLog.h"

#include <iostream>

StandardErrorLog* StandardErrorLog::s_instance = nullptr;

/// A stream buffer that writes through to another one and gathers lines.
class StandardErrorLog::Tee : public std::streambuf
{
public:
    Tee(StandardErrorLog& log, std::ostream& stream)
        : m_log(log), m_stream(stream), m_target(stream.rdbuf(this))
    {
    }
    ~Tee() override { m_stream.rdbuf(m_target); }
    Tee(const Tee&) = delete;
    Tee& operator=(const Tee&) = delete;

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
            m_log.Append(QString::fromUtf8(m_line.left(end)));
            m_line.remove(0, end + 1);
        }
        return count;
    }

    int sync() override { return m_target->pubsync(); }

private:
    StandardErrorLog& m_log;
    std::ostream& m_stream;
    std::streambuf* m_target;
    QMutex m_mutex;
    QByteArray m_line; ///< begun, not ended
};

StandardErrorLog::StandardErrorLog(QObject* parent)
    : QObject(parent), m_tee(std::make_unique<Tee>(*this, std::cerr))
{
    s_instance = this;
    m_previousHandler = qInstallMessageHandler(&StandardErrorLog::HandleQtMessage);
}

StandardErrorLog::~StandardErrorLog()
{
    qInstallMessageHandler(m_previousHandler);
    s_instance = nullptr;
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

void StandardErrorLog::HandleQtMessage(QtMsgType type, const QMessageLogContext& context,
                                       const QString& message)
{
    StandardErrorLog* log = s_instance;
    if (!log) {
        return;
    }
    if (type != QtDebugMsg) {
        log->Append(message);
    }
    if (log->m_previousHandler) {
        log->m_previousHandler(type, context, message);
    } else {
        std::fprintf(stderr, "%s\n", qUtf8Printable(qFormatLogMessage(type, context, message)));
    }
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
