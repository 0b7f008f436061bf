#include "apps/cli/Console.h"

#include "apps/shared/SafeOutput.h"

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
    : m_shown(!console.quiet && isatty(STDERR_FILENO) != 0)
{
    if (m_shown) {
        ToTerminal(Printable(text).toStdString());
    }
}

StageLine::~StageLine()
{
    if (m_shown) {
        ToTerminal("\r\033[K");
    }
}
