#include "apps/cli/Commands.h"
#include "apps/cli/ImportOptions.h"
#include "apps/cli/SceneReport.h"
#include "apps/render/Picture.h"

#include "cadexchange/CZemtarCADExchangeReaderHandler.h"

#include <QElapsedTimer>
#include <QJsonDocument>

#include <iostream>

using namespace Zemtar;

namespace {

QJsonObject JsonOf(const SceneReport& report, const QString& file, const FormatEntry& format, double seconds)
{
    QJsonObject json = report.ToJson();
    json.insert("file", file);
    json.insert("format", format.Name());
    json.insert("seconds", QJsonObject{{"read_and_mesh",
                                        CZemtarCADExchangeReaderHandler::getInstance()->ReadAndMeshSeconds()},
                                       {"total", seconds}});
    return json;
}

void PrintSummary(std::ostream& out, const SceneReport& report, double seconds)
{
    const SceneReport::Totals& sums = report.Sums();
    out << sums.nodes << " nodes (" << sums.assemblies << " assemblies, " << sums.parts << " parts, "
        << sums.meshes << " meshes, " << sums.polylines << " polylines), " << sums.triangles << " triangles, "
        << sums.vertices << " vertices, " << sums.materials << " materials\n";
    if (report.HasBounds()) {
        const auto& min = report.BoundsMin();
        const auto& max = report.BoundsMax();
        out << "bounds (" << min[0] << ", " << min[1] << ", " << min[2] << ") to (" << max[0] << ", "
            << max[1] << ", " << max[2] << ") m\n";
    }
    out << seconds << " s, of which reading and meshing "
        << CZemtarCADExchangeReaderHandler::getInstance()->ReadAndMeshSeconds() << " s\n";
}

/// Draws the document into a picture file; false, with the reason on standard error, when that fails.
bool WritePreview(const CZemtarDocument& document, const QString& file)
{
    const QString problem = WritePicture(document, {}, file);
    if (!problem.isEmpty()) {
        std::cerr << "zemtar-cad: no preview: " << problem.toStdString() << "\n";
    }
    return problem.isEmpty();
}

} // namespace

int RunImport(const QStringList& arguments)
{
    QCommandLineParser parser;
    ImportOptions::Declare(parser);
    parser.addOption({"json", "Print JSON instead of a tree."});
    parser.addOption({"preview", "Draw the model into this picture file.", "file"});
    if (!parser.parse(QStringList("import") + arguments)) {
        return UsageError(parser.errorText());
    }
    if (parser.positionalArguments().size() != 1) {
        return UsageError("import takes one file");
    }
    const QString file = parser.positionalArguments().first();
    ImportOptions options;
    if (const QString problem = options.Read(parser, file); !problem.isEmpty()) {
        return UsageError(problem);
    }

    QElapsedTimer timer;
    timer.start();
    const std::unique_ptr<CZemtarDocument> document = options.Import(file);
    if (!document) {
        return ExitFailed;
    }
    const double seconds = static_cast<double>(timer.nsecsElapsed()) * 1e-9;

    const SceneReport report(*document);
    if (parser.isSet("json")) {
        std::cout << QJsonDocument(JsonOf(report, file, options.Format(), seconds)).toJson().toStdString();
    } else {
        report.PrintTree(std::cout);
        PrintSummary(std::cout, report, seconds);
    }
    std::cout.flush();
    const QString preview = parser.value("preview");
    const bool previewed = !parser.isSet("preview") || WritePreview(*document, preview);
    return std::cout && previewed ? ExitDone : ExitFailed;
}
