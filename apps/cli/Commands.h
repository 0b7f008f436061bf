#pragma once

#include <QString>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

class Console;

/// Exit codes of the program.
enum ExitCode
{
    ExitDone = 0,
    ExitFailed = 1, ///< could not import or export; the reason is on standard error
    ExitUsage = 2
};

/// Each adds its command to the program. When the command was called it has run at the end of the parsing,
/// and the console holds the exit code. Wrong usage is a CLI::ParseError.
void AddImportCommand(CLI::App& program, Console& console);
void AddConvertCommand(CLI::App& program, Console& console);
void AddFormatsCommand(CLI::App& program, Console& console);
void AddImageCommand(CLI::App& program, Console& console);

/// Wrong usage that only the command itself can tell.
[[noreturn]] void ThrowUsage(const QString& message);

/// The words of the command line, as Qt has them.
inline QString Text(const std::string& word)
{
    return QString::fromStdString(word);
}
