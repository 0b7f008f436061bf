#pragma once

#include "apps/shared/ExchangeWatch.h"

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

/// A line on standard error while long work runs, with how far it is, taken away when the work ends. Silent
/// where standard error is no terminal. From the first line on Ctrl-C cancels the work, and ends the program
/// when pressed again.
class StageLine : public ExchangeWatch
{
public:
    StageLine(const Console& console, const QString& text);
    ~StageLine() override;
    StageLine(const StageLine&) = delete;
    StageLine& operator=(const StageLine&) = delete;

    void Show(const QString& stage, double fraction) override;
    bool IsCancelled() const override { return WasInterrupted(); }

    /// Whether Ctrl-C was pressed during this or an earlier line of the program.
    static bool WasInterrupted();

private:
    void Write(const QString& line) const;

    QString m_text;
    bool m_shown;
};
