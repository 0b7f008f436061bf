#include "apps/cli/Commands.h"
#include "apps/cli/Console.h"
#include "apps/cli/ImportOptions.h"
#include "apps/shared/FileProbe.h"
#include "apps/shared/LengthUnits.h"

#include "host/CZemtarDocument.h"

#include <QDir>
#include <QFileInfo>

#include <set>

using namespace Zemtar;

namespace {

/// One file to read and one to write.
struct Conversion
{
    QString source;
    QString target;
    const FormatEntry* from = nullptr;
    const FormatEntry* to = nullptr;
};

struct ConvertCommand
{
    ImportOptions options;
    std::vector<std::string> files;
    std::string folder;
    std::string format;
    std::string unit = "mm";
    int jtSplit = ExportSettings::JTSplitNotSet;
    std::string compression;
    bool force = false;

    void Run(Console& console) const;

private:
    std::vector<Conversion> Conversions() const;
    QString WhyNot(const Conversion& conversion) const;
    void Convert(const Conversion& conversion, Console& console) const;
};

std::vector<Conversion> ConvertCommand::Conversions() const
{
    if (folder.empty() && files.size() != 2) {
        ThrowUsage(QStringLiteral("convert takes one file and the name of another, or --output-folder"));
    }
    const FormatEntry* to = format.empty() ? nullptr : ExportFormatByName(Text(format));
    if (!format.empty() && !to) {
        ThrowUsage(QStringLiteral("there is no format %1; these are: %2")
                       .arg(Text(format), ExportFormatNames().join(QStringLiteral(", "))));
    }
    std::vector<Conversion> conversions;
    if (folder.empty()) {
        const QString target = Text(files[1]);
        to = to ? to : ExportFormatByFileName(target);
        if (!to) {
            ThrowUsage(
                QStringLiteral("the extension of %1 stands for no format; name it with --to").arg(target));
        }
        return {{Text(files[0]), target, &options.FormatOf(Text(files[0])), to}};
    }
    if (!to) {
        ThrowUsage(QStringLiteral("--output-folder needs --to, the format of the files in it"));
    }
    std::set<QString> targets;
    for (const std::string& file : files) {
        const QString source = Text(file);
        const QString target =
            QDir(Text(folder))
                .filePath(QFileInfo(source).completeBaseName() + '.' + to->Extensions().first());
        if (!targets.insert(target).second) {
            ThrowUsage(QStringLiteral("two files would be written to %1").arg(target));
        }
        conversions.push_back({source, target, &options.FormatOf(source), to});
    }
    return conversions;
}

/// Why a conversion is not even begun; empty when it is.
QString ConvertCommand::WhyNot(const Conversion& conversion) const
{
    const QFileInfo source(conversion.source);
    const QFileInfo target(conversion.target);
    if (source.exists() && target.exists() && source.canonicalFilePath() == target.canonicalFilePath()) {
        return QStringLiteral("it is the file that would be read");
    }
    if (QString reason = WhyNotWritable(conversion.target, *conversion.to); !reason.isEmpty()) {
        return reason;
    }
    return target.exists() && !force ? QStringLiteral("it is there already; --force replaces it") : QString();
}

void ConvertCommand::Convert(const Conversion& conversion, Console& console) const
{
    if (const QString reason = WhyNot(conversion); !reason.isEmpty()) {
        console.Error(QStringLiteral("%1 is not written: %2").arg(conversion.target, reason));
        return;
    }
    const ImportedFile imported = options.Import(conversion.source, *conversion.from, console);
    if (!imported.document) {
        return;
    }
    ExportSettings settings;
    settings.format = conversion.to;
    settings.jtSplit = jtSplit;
    settings.packing = compression == "quantize"  ? GlbPacking::Quantize
                       : compression == "meshopt" ? GlbPacking::Meshopt
                                                  : GlbPacking::None;
    LengthUnitBySymbol(Text(unit), settings.unit);
    ClearEngineReports();
    bool isWritten = false;
    QString reason;
    try {
        StageLine stage(console, QStringLiteral("Exporting %1").arg(QFileInfo(conversion.target).fileName()));
        settings.watch = &stage;
        isWritten = ExportDocument(*imported.document, conversion.target, settings);
    } catch (const std::exception& error) {
        reason = QString::fromUtf8(error.what());
    }
    const std::vector<EngineReport> reports = TakeEngineReports();
    if (!isWritten && StageLine::WasInterrupted()) {
        console.Error(QStringLiteral("%1: cancelled").arg(conversion.target));
        return;
    }
    TellReports(conversion.target, reports, console);
    if (isWritten) {
        console.Detail(QStringLiteral("%1 is written").arg(conversion.target));
        return;
    }
    if (reason.isEmpty()) {
        reason = WhyNotWritable(conversion.target, *conversion.to);
    }
    console.Error(QStringLiteral("%1: %2").arg(
        conversion.target,
        reason.isEmpty() ? QStringLiteral("nothing was written; is the disk full?") : reason));
}

void ConvertCommand::Run(Console& console) const
{
    const std::vector<Conversion> conversions = Conversions();
    if (!folder.empty() && !QDir().mkpath(Text(folder))) {
        console.Error(QStringLiteral("the folder %1 cannot be made").arg(Text(folder)));
        return;
    }
    for (const Conversion& conversion : conversions) {
        if (StageLine::WasInterrupted()) {
            console.Error(QStringLiteral("cancelled before %1").arg(conversion.source));
            return;
        }
        Convert(conversion, console);
    }
}

/// Takes the length units' symbols in any letter case.
std::string CheckUnit(const std::string& word)
{
    enumLengthUnit unit = eLengthUnitMillimetre;
    return LengthUnitBySymbol(Text(word), unit) ? std::string()
                                                : word + " is none of: " + LengthUnitSymbols().toStdString();
}

} // namespace

void AddConvertCommand(CLI::App& program, Console& console)
{
    const auto convert = std::make_shared<ConvertCommand>();
    CLI::App* command = program.add_subcommand(
        "convert",
        "Import CAD files and export them, as facets, to another format, CAD or GLB, OBJ, PLY, STL\n"
        "convert IN OUT, or convert IN... --output-folder DIR --to FORMAT");
    command->add_option("FILE", convert->files, "The file to read and the file to write")->required();
    command
        ->add_option("-o,--output-folder", convert->folder,
                     "Write each file into this folder, made when missing")
        ->type_name("DIR");
    command->add_option("--to", convert->format, "The format that is written, where no extension tells")
        ->type_name("NAME");
    command->add_flag("--force", convert->force, "Replace files that are there already");
    command
        ->add_option("--unit", convert->unit,
                     "Length unit of the written file: " + LengthUnitSymbols().toStdString())
        ->check(CLI::Validator(CheckUnit, "UNIT"))
        ->capture_default_str();
    command->add_option("--jt-split", convert->jtSplit, "JT only: 0 one file, 1 a file a part")
        ->check(CLI::IsMember({0, 1}));
    const std::vector<std::string> packings =
        HasMeshopt() ? std::vector<std::string>{"quantize", "meshopt"} : std::vector<std::string>{"quantize"};
    command->add_option("--compress", convert->compression, "GLB only: 16 bits a coordinate, or packed too")
        ->check(CLI::IsMember(packings));
    convert->options.Declare(*command);
    command->callback([convert, &console] { convert->Run(console); });
}
