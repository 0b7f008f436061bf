#include "apps/cli/ImportOptions.h"

#include "apps/cli/Commands.h"
#include "apps/cli/Console.h"
#include "apps/shared/FileProbe.h"
#include "host/CZemtarDocument.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>

using namespace Zemtar;

namespace {

/// Lines of one file's reports before the rest is only counted.
constexpr std::size_t ShownReports = 5;

/// The engine's own reason for a failure: what it refused.
QString RefusalOf(const std::vector<EngineReport>& reports)
{
    const auto refused = std::find_if(reports.begin(), reports.end(),
                                      [](const EngineReport& report) { return report.kind == "refused"; });
    return refused == reports.end() ? QString() : refused->Line();
}

} // namespace

void ImportOptions::Declare(CLI::App& command)
{
    command.add_option("--format", m_format, "The files' format, where their extension does not tell")
        ->type_name("NAME");
    command
        .add_option("--tessellation", m_settings.tessellation, "Fineness of the meshes, 20 fine to 95 coarse")
        ->check(CLI::Range(20, 95))
        ->capture_default_str();
    command.add_flag("--parallel", m_settings.parallel, "Let the engine use several threads");
    command.add_flag("--polylines", m_settings.polylines, "Import curves and wires as polylines");
    command
        .add_option("--textures", m_textures,
                    "Write the model's textures into this folder, made when missing")
        ->type_name("DIR");
}

const FormatEntry& ImportOptions::FormatOf(const QString& file) const
{
    const FormatEntry* format = m_format.empty() ? FormatByFileName(file) : FormatByName(Text(m_format));
    if (!format) {
        ThrowUsage(
            m_format.empty()
                ? QStringLiteral("the extension of %1 stands for no format; name it with --format").arg(file)
                : QStringLiteral("there is no format %1; these are: %2")
                      .arg(Text(m_format), FormatNames().join(QStringLiteral(", "))));
    }
    return *format;
}

ImportedFile ImportOptions::Import(const QString& file, const FormatEntry& format, Console& console) const
{
    // Textures that nobody asked for must not end in the working directory.
    const QTemporaryDir unwanted;
    ImportSettings settings = m_settings;
    settings.textureFolder = m_textures.empty() ? unwanted.path() : Text(m_textures);

    ImportedFile imported;
    QElapsedTimer timer;
    timer.start();
    ClearEngineReports();
    try {
        StageLine stage(console, QStringLiteral("Importing %1").arg(QFileInfo(file).fileName()));
        settings.watch = &stage;
        imported.document = ImportDocument(file, format, settings);
    } catch (const std::exception& error) {
        imported.reason = QString::fromUtf8(error.what());
    }
    imported.seconds = static_cast<double>(timer.nsecsElapsed()) * 1e-9;
    imported.reports = TakeEngineReports();
    if (imported.document) {
        TellReports(file, imported.reports, console);
        return imported;
    }
    if (StageLine::WasInterrupted()) {
        imported.reason = QStringLiteral("cancelled");
    }
    for (const QString& reason : {WhyNotReadable(file, format), RefusalOf(imported.reports)}) {
        imported.reason = imported.reason.isEmpty() ? reason : imported.reason;
    }
    if (imported.reason.isEmpty()) {
        imported.reason = QStringLiteral("the engine gives no reason");
    }
    console.Error(QStringLiteral("%1: %2").arg(file, imported.reason));
    for (const EngineReport& report : imported.reports) {
        console.Detail(QStringLiteral("%1: %2").arg(file, report.Line()));
    }
    return imported;
}

void TellReports(const QString& file, const std::vector<EngineReport>& reports, const Console& console)
{
    std::size_t shown = 0;
    std::size_t kept = 0;
    for (const EngineReport& report : reports) {
        const bool isLoss = report.kind == "refused" || report.kind == "left out";
        if (console.verbose || (isLoss && shown < ShownReports)) {
            console.Warn(QStringLiteral("%1: %2").arg(file, report.Line()));
            ++shown;
        } else {
            kept += isLoss ? 1 : 0;
        }
    }
    if (kept > 0) {
        console.Warn(QStringLiteral("%1: %2 more; --verbose shows them").arg(file).arg(kept));
    }
}
