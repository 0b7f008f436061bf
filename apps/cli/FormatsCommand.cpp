#include "apps/cli/Commands.h"
#include "apps/shared/FormatTable.h"

#include <iomanip>
#include <iostream>

int RunFormats(const QStringList& arguments)
{
    if (!arguments.isEmpty()) {
        return UsageError("formats takes no arguments");
    }
    const auto column = [](const char* text, int width) -> std::ostream& {
        return std::cout << std::left << std::setw(width) << text;
    };
    const auto state = [](bool engine, bool format) { return engine ? "yes" : format ? "no engine" : "-"; };
    using Writer = Zemtar::CZemtarCADExchangeWriter;
    column("format", 12);
    column("import", 11);
    column("export", 11) << "extensions\n";
    for (const FormatEntry& format : AllFormats()) {
        const bool isWritable = format.writer != Writer::eWriterCreo && format.writer != Writer::eWriterNX &&
                                format.writer != Writer::eWriterSolidWorks;
        column(format.Name().toLatin1().constData(), 12);
        column(state(format.CanRead(), true), 11);
        column(state(format.CanWrite(), isWritable), 11)
            << format.Extensions().join(' ').toStdString() << "\n";
    }
    return ExitDone;
}
