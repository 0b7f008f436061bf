#pragma once

#include "apps/shared/Exchange.h"

#include <QCommandLineParser>

#include <memory>

namespace Zemtar {
class CZemtarDocument;
}

/// What the user chose for an import; the same options serve `import` and `convert`.
class ImportOptions
{
public:
    /// Declares the options on a parser.
    static void Declare(QCommandLineParser& parser);

    /// Reads the parsed options for a file. Gives an empty text, or what is wrong with them.
    QString Read(const QCommandLineParser& parser, const QString& file);

    /// Runs the import, with a line on standard error while it works when that is a terminal. Null on
    /// failure; the reason is then on standard error.
    std::unique_ptr<Zemtar::CZemtarDocument> Import(const QString& file) const;

    const FormatEntry& Format() const { return *m_format; }

private:
    const FormatEntry* m_format = nullptr;
    ImportSettings m_settings;
};

/// Writes a line on standard error while a stage of long work runs, and takes it away when the stage ends.
/// Silent when standard error is no terminal.
class StageLine
{
public:
    explicit StageLine(const QString& text);
    ~StageLine();
    StageLine(const StageLine&) = delete;
    StageLine& operator=(const StageLine&) = delete;

private:
    bool m_shown;
};
