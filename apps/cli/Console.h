#pragma once

#include <QString>

/// How much the program says, and where; and its exit code, which only gets worse.
class Console
{
public:
    bool quiet = false;   ///< errors alone
    bool verbose = false; ///< every file, every report of the engine

    /// "zemtar-cad: MESSAGE" on standard error, always; the program then exits with 1 or worse.
    void Error(const QString& message);
    /// The same for what went well but should be known; not when quiet.
    void Warn(const QString& message) const;
    /// One more line on standard error when verbose.
    void Detail(const QString& message) const;

    int ExitCode() const { return m_exitCode; }
    void Fail() { m_exitCode = 1; }

private:
    int m_exitCode = 0;
};

/// A line on standard error while a stage of long work runs, taken away when the stage ends. Silent where
/// standard error is no terminal.
class StageLine
{
public:
    StageLine(const Console& console, const QString& text);
    ~StageLine();
    StageLine(const StageLine&) = delete;
    StageLine& operator=(const StageLine&) = delete;

private:
    bool m_shown;
};
