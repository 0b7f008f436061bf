#include "apps/cli/Commands.h"
#include "apps/cli/ImportOptions.h"
#include "apps/shared/Exchange.h"
#include "apps/shared/LengthUnits.h"

#include "host/CZemtarDocument.h"

#include <QFileInfo>

using namespace Zemtar;

namespace {

struct ExportOptions : ExportSettings
{
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
    if (!document) {
        return ExitFailed;
    }
    const StageLine stage(QStringLiteral("Exporting %1 ...").arg(QFileInfo(files[1]).fileName()));
    return ExportDocument(*document, files[1], exportOptions) ? ExitDone : ExitFailed;
}
