#include "apps/cli/Commands.h"
#include "apps/cli/ImportOptions.h"
#include "apps/cli/SceneReport.h"

#include "common/encoding/CZemtarConvert.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarUnit.h"

#include <QDateTime>
#include <QFileInfo>

#include <iostream>

using namespace Zemtar;

namespace {

constexpr int JTSplitNotSet = 100;

struct ExportOptions
{
    const FormatEntry* format = nullptr;
    enumLengthUnit unit = eLengthUnitMillimetre;
    int jtSplit = JTSplitNotSet;

    /// Gives an empty text, or what is wrong.
    QString Read(const QCommandLineParser& parser, const QString& file)
    {
        format = FormatByFileName(file);
        if (!format) {
            return QStringLiteral("the extension of %1 stands for no format").arg(file);
        }
        if (parser.isSet("unit") && !LengthUnitBySymbol(parser.value("unit"), unit)) {
            return QStringLiteral("--unit takes one of: ") + LengthUnitSymbols();
        }
        if (parser.isSet("jt-split")) {
            const QString split = parser.value("jt-split");
            if (split != "0" && split != "1") {
                return QStringLiteral("--jt-split takes 0 or 1");
            }
            jtSplit = split.toInt();
        }
        return {};
    }
};

/// What identifies one writing of a file: a successful export is seen by the file, never by the library's
/// result.
struct FileStamp
{
    bool exists;
    QDateTime modified;
    qint64 size;

    explicit FileStamp(const QFileInfo& info)
        : exists(info.isFile()), modified(info.lastModified()), size(info.size())
    {
    }
    bool operator==(const FileStamp&) const = default;
};

/// Exports the document; true when the file was written.
bool Export(CZemtarDocument& document, const QString& file, const ExportOptions& options)
{
    const StageLine stage(QStringLiteral("Exporting %1 ...").arg(QFileInfo(file).fileName()));
    const FileStamp before{QFileInfo(file)};
    CZemtarCADExchangeWriter writer;
    writer.SetCADWriterType(options.format->writer);
    writer.SetJTExportMethod(options.jtSplit);
    writer.Export(&document, CZemtarConvert::QStringToCZemtarString(file), nullptr, nullptr, nullptr, nullptr,
                  CZemtarUnit(options.unit));
    const FileStamp after{QFileInfo(file)};
    return after.exists && !(after == before);
}

} // namespace

int RunConvert(const QStringList& arguments)
{
    QCommandLineParser parser;
    ImportOptions::Declare(parser);
    parser.addOption({"unit", "Length unit of the written file; mm when not given.", "unit"});
    parser.addOption({"jt-split", "JT only: 0 one file, 1 one file a part.", "0|1"});
    if (!parser.parse(QStringList("convert") + arguments)) {
        return UsageError(parser.errorText());
    }
    const QStringList files = parser.positionalArguments();
    if (files.size() != 2) {
        return UsageError("convert takes two files");
    }
    ImportOptions importOptions;
    ExportOptions exportOptions;
    for (const QString& problem :
         {importOptions.Read(parser, files[0]), exportOptions.Read(parser, files[1])}) {
        if (!problem.isEmpty()) {
            return UsageError(problem);
        }
    }
    const std::unique_ptr<CZemtarDocument> document = importOptions.Import(files[0]);
    return document && Export(*document, files[1], exportOptions) ? ExitDone : ExitFailed;
}
