// zemtar-cad: the smallest real host. Imports a CAD file and prints what came in, converts between formats,
// and works on texture images.

#include "apps/cli/Commands.h"
#include "apps/render/Picture.h"
#include "apps/shared/LengthUnits.h"
#include "apps/shared/Utf8Locale.h"

#include <QGuiApplication>

#include <exception>
#include <iostream>
#include <memory>
#include <string_view>

namespace {

void PrintUsage(std::ostream& out)
{
    out << "zemtar-cad import FILE [--format NAME] [--tessellation 20..95] [--parallel] [--polylines]\n"
           "                       [--textures DIR] [--json] [--preview OUT.png]\n"
           "zemtar-cad convert IN OUT [--unit UNIT] [--jt-split 0|1] [import options]\n"
           "zemtar-cad formats\n"
           "zemtar-cad image COMMAND ...    texture images; `image help` lists the commands\n"
           "units: "
        << LengthUnitSymbols().toStdString() << "\n";
}

/// Makes the application object that the arguments need: drawing alone needs the windowing system.
std::unique_ptr<QCoreApplication> MakeApplication(int& argc, char** argv)
{
    const std::string_view option = "--preview";
    if (argc > 1 && std::string_view(argv[1]) == "import") {
        for (int i = 2; i < argc; ++i) {
            if (std::string_view(argv[i]).substr(0, option.size()) == option) {
                UseDisplayIfAny();
                return std::make_unique<QGuiApplication>(argc, argv);
            }
        }
    }
    return std::make_unique<QCoreApplication>(argc, argv);
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
        const std::unique_ptr<QCoreApplication> application = MakeApplication(argc, argv);
        const QStringList words = QCoreApplication::arguments();
        return Run(words.value(1), words.mid(2));
    } catch (const std::exception& error) {
        std::cerr << "zemtar-cad: " << error.what() << "\n";
        return ExitFailed;
    }
}
