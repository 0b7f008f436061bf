#include "apps/cli/Console.h"

#include "apps/shared/SafeOutput.h"

#include <csignal>
#include <iostream>

#include <unistd.h>

namespace {

void Say(const QString& message)
{
    std::cerr << "zemtar-cad: " << Printable(message).toStdString() << std::endl;
}

/// Past the stream: the line's own control characters are meant.
void ToTerminal(const std::string& text)
{
    std::cerr.flush();
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text.data(), text.size());
}

volatile std::sig_atomic_t interrupted = 0;

void Interrupt(int signal)
{
    if (interrupted != 0) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
    interrupted = 1;
}

} // namespace

void Console::Error(const QString& message)
{
    Say(message);
    Fail();
}

void Console::Warn(const QString& message) const
{
    if (!quiet) {
        Say(message);
    }
}

void Console::Detail(const QString& message) const
{
    if (verbose) {
        Say(message);
    }
}

StageLine::StageLine(const Console& console, const QString& text)
    : m_text(text), m_shown(!console.quiet && isatty(STDERR_FILENO) != 0)
{
    Write(m_text + QStringLiteral(" ..."));
    static const bool isCaught = std::signal(SIGINT, Interrupt) != SIG_ERR;
    static_cast<void>(isCaught);
}

StageLine::~StageLine()
{
    Write(QString());
}

void StageLine::Show(const QString& stage, double fraction)
{
    Write(QStringLiteral("%1: %2 %3 %").arg(m_text, stage).arg(static_cast<int>(fraction * 100)));
}

bool StageLine::WasInterrupted()
{
    return interrupted != 0;
}

void StageLine::Write(const QString& line) const
{
    if (m_shown) {
        ToTerminal("\r\033[K" + Printable(line).toStdString());
    }
}
