#include "apps/cli/Commands.h"
#include "apps/cli/Console.h"
#include "apps/shared/FormatTable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <iomanip>
#include <iostream>

namespace {

/// "yes"; "no engine" for what only this build lacks; "-" for what the library never does.
const char* State(bool hasEngine, bool isSupported)
{
    return hasEngine ? "yes" : isSupported ? "no engine" : "-";
}

void PrintTable()
{
    const auto column = [](const std::string& text, int width) -> std::ostream& {
        return std::cout << std::left << std::setw(width) << text;
    };
    column("format", 12);
    column("import", 11);
    column("export", 11) << "extensions\n";
    for (const auto* formats : {&AllFormats(), &SceneFormats()}) {
        for (const FormatEntry& format : *formats) {
            column(std::string(format.name), 12);
            column(State(format.CanRead(), formats == &AllFormats()), 11);
            const bool hasNote = format.CanWrite() && format.isUnconfirmed;
            column(hasNote ? "yes (*)" : State(format.CanWrite(), format.HasWriter()), 11)
                << format.extensions << "\n";
        }
    }
    std::cout << "(*) no other program has confirmed the files: only this one has read them back\n";
}

void PrintJson()
{
    QJsonArray list;
    for (const auto* formats : {&AllFormats(), &SceneFormats()}) {
        for (const FormatEntry& format : *formats) {
            list.append(QJsonObject{{"name", format.Name()},
                                    {"import", format.CanRead()},
                                    {"export", format.CanWrite()},
                                    {"exportConfirmed", format.CanWrite() && !format.isUnconfirmed},
                                    {"extensions", QJsonArray::fromStringList(format.Extensions())}});
        }
    }
    std::cout << QJsonDocument(list).toJson().toStdString();
}

} // namespace

void AddFormatsCommand(CLI::App& program, Console& /*console*/)
{
    const auto json = std::make_shared<bool>(false);
    CLI::App* command =
        program.add_subcommand("formats", "List the formats, and what this build reads and writes");
    command->add_flag("--json", *json, "Print JSON instead of a table");
    command->callback([json] { *json ? PrintJson() : PrintTable(); });
}
