#include "apps/cli/Commands.h"
#include "apps/cli/Console.h"
#include "apps/cli/ImportOptions.h"
#include "apps/cli/Preview.h"
#include "apps/cli/SceneReport.h"

#include "cadexchange/CZemtarCADExchangeReaderHandler.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <iostream>

using namespace Zemtar;

namespace {

struct ImportCommand
{
    ImportOptions options;
    std::vector<std::string> files;
    bool json = false;
    std::string preview;
    int turntable = 0;

    void Run(Console& console) const;
};

double ReadAndMeshSeconds()
{
    return CZemtarCADExchangeReaderHandler::getInstance()->ReadAndMeshSeconds();
}

QJsonArray JsonOf(const std::vector<EngineReport>& reports)
{
    QJsonArray list;
    for (const EngineReport& report : reports) {
        list.append(QJsonObject{{"kind", report.kind},
                                {"text", report.text},
                                {"record", report.record > 0 ? QJsonValue(report.record) : QJsonValue()},
                                {"count", report.count}});
    }
    return list;
}

QJsonObject JsonOf(const ImportedFile& imported, const QString& file, const FormatEntry& format)
{
    QJsonObject json = imported.document ? SceneReport(*imported.document).ToJson()
                                         : QJsonObject{{"error", imported.reason}};
    json.insert("file", file);
    json.insert("format", format.Name());
    json.insert("reports", JsonOf(imported.reports));
    json.insert("seconds", QJsonObject{{"read_and_mesh", ReadAndMeshSeconds()}, {"total", imported.seconds}});
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
    out << seconds << " s, of which reading and meshing " << ReadAndMeshSeconds() << " s\n";
}

void PrintTree(const ImportedFile& imported, const Console& console)
{
    const SceneReport report(*imported.document);
    report.PrintTree(std::cout);
    if (!console.quiet) {
        PrintSummary(std::cout, report, imported.seconds);
    }
}

void ImportCommand::Run(Console& console) const
{
    if (!preview.empty() && files.size() > 1) {
        ThrowUsage(QStringLiteral("--preview takes one file"));
    }
    if (turntable > 0 && preview.empty()) {
        ThrowUsage(QStringLiteral("--turntable belongs to --preview"));
    }
    std::vector<const FormatEntry*> formats; // all known before the first import
    for (const std::string& file : files) {
        formats.push_back(&options.FormatOf(Text(file)));
    }
    QJsonArray list;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (StageLine::WasInterrupted()) {
            console.Error(QStringLiteral("cancelled before %1").arg(Text(files[i])));
            break;
        }
        const QString file = Text(files[i]);
        const ImportedFile imported = options.Import(file, *formats[i], console);
        if (json) {
            list.append(JsonOf(imported, file, *formats[i]));
        } else if (imported.document) {
            if (files.size() > 1) {
                std::cout << file.toStdString() << "\n";
            }
            PrintTree(imported, console);
            std::cout.flush();
        }
        if (const QString problem = imported.document && !preview.empty()
                                        ? WritePreview(*imported.document, Text(preview), turntable)
                                        : QString();
            !problem.isEmpty()) {
            console.Error(QStringLiteral("no preview: ") + problem);
        }
    }
    if (json) {
        std::cout << (list.size() == 1 ? QJsonDocument(list[0].toObject()) : QJsonDocument(list))
                         .toJson()
                         .toStdString();
    }
    if (!std::cout.flush()) {
        console.Error(QStringLiteral("standard output takes no more"));
    }
}

} // namespace

void AddImportCommand(CLI::App& program, Console& console)
{
    const auto import = std::make_shared<ImportCommand>();
    CLI::App* command = program.add_subcommand("import", "Import CAD files and print what came in");
    command->add_option("FILE", import->files, "The files")->required();
    import->options.Declare(*command);
    command->add_flag("--json", import->json, "Print JSON instead of a tree; an array for several files");
    command->add_option("--preview", import->preview, "Draw the model into this picture file")
        ->type_name("OUT");
    command
        ->add_option("--turntable", import->turntable,
                     "Make so many previews from all around: OUT-001.png and so on")
        ->check(CLI::Range(1, 3600))
        ->type_name("N");
    command->callback([import, &console] { import->Run(console); });
}
