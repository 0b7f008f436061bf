#pragma once

#include <QStringList>

/// Exit codes of the program.
enum ExitCode
{
    ExitDone = 0,
    ExitFailed = 1, ///< could not import or export; the reason is on standard error
    ExitUsage = 2
};

/// Each command takes the words after its name and gives the program's exit code.
int RunImport(const QStringList& arguments);
int RunConvert(const QStringList& arguments);
int RunFormats(const QStringList& arguments);
int RunImage(const QStringList& arguments);

/// Writes the message and a hint to standard error; gives `ExitUsage`.
int UsageError(const QString& message);
