#pragma once

#include "apps/shared/EngineReports.h"
#include "apps/shared/Exchange.h"

#include <CLI/App.hpp>

#include <memory>
#include <string>

class Console;

namespace Zemtar {
class CZemtarDocument;
}

/// What came of one import.
struct ImportedFile
{
    std::unique_ptr<Zemtar::CZemtarDocument> document; ///< null when the import failed
    QString reason;                                    ///< of the failure, where it is known
    std::vector<EngineReport> reports;
    double seconds = 0.0;
};

/// What the user chose for an import; the same options serve `import` and `convert`.
class ImportOptions
{
public:
    /// Declares the options on a command; they must outlive its parsing.
    void Declare(CLI::App& command);

    /// The format that a file is read as. Throws wrong usage when neither its name nor --format tells.
    const FormatEntry& FormatOf(const QString& file) const;

    /// Runs the import. The library says on standard error that it failed; the console then says why, where
    /// that is known, and otherwise what the engine left out.
    ImportedFile Import(const QString& file, const FormatEntry& format, Console& console) const;

private:
    std::string m_format;
    std::string m_textures;
    ImportSettings m_settings;
};

/// Tells on the console what the engine refused or left out; with --verbose everything.
void TellReports(const QString& file, const std::vector<EngineReport>& reports, const Console& console);
