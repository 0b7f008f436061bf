// zemtar-cad: the smallest real host. Imports a CAD file and prints what came in, converts between formats,
// and works on texture images.

#include "apps/cli/Commands.h"
#include "apps/shared/LengthUnits.h"
#include "apps/shared/Utf8Locale.h"

#include <QCoreApplication>

#include <exception>
#include <iostream>

namespace {

void PrintUsage(std::ostream& out)
{
    out << "zemtar-cad import FILE [--format NAME] [--tessellation 20..95] [--parallel] [--polylines]\n"
           "                       [--textures DIR] [--json]\n"
           "zemtar-cad convert IN OUT [--unit UNIT] [--jt-split 0|1] [import options]\n"
           "zemtar-cad formats\n"
           "zemtar-cad image COMMAND ...    texture images; `image help` lists the commands\n"
           "units: "
        << LengthUnitSymbols().toStdString() << "\n";
}

int Run(const QString& command, const QStringList& arguments)
{
    if (command == "import") {
        return RunImport(arguments);
    }
    if (command == "convert") {
        return RunConvert(arguments);
    }
    if (command == "formats") {
        return RunFormats(arguments);
    }
    if (command == "image") {
        return RunImage(arguments);
    }
    if (command == "help" || command == "--help" || command == "-h") {
        PrintUsage(std::cout);
        return ExitDone;
    }
    return UsageError(command.isEmpty() ? QStringLiteral("a command is missing")
                                        : QStringLiteral("there is no command %1").arg(command));
}

} // namespace

int UsageError(const QString& message)
{
    std::cerr << "zemtar-cad: " << message.toStdString() << "\n";
    PrintUsage(std::cerr);
    return ExitUsage;
}

int main(int argc, char** argv)
{
    UseUtf8Locale();
    try {
        const QCoreApplication application(argc, argv);
        const QStringList words = QCoreApplication::arguments();
        return Run(words.value(1), words.mid(2));
    } catch (const std::exception& error) {
        std::cerr << "zemtar-cad: " << error.what() << "\n";
        return ExitFailed;
    }
}
