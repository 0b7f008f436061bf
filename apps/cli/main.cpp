// zemtar-cad: the smallest real host. Imports CAD files and prints what came in, converts between formats,
// and works on texture images.

#include "apps/cli/Commands.h"
#include "apps/cli/Console.h"
#include "apps/cli/Suggestion.h"
#include "apps/shared/Display.h"
#include "apps/shared/SafeOutput.h"
#include "apps/shared/Utf8Locale.h"
#include "apps/shared/VirtualDisplay.h"

#include <QGuiApplication>

#include <algorithm>
#include <iostream>
#include <memory>
#include <string_view>

namespace {

/// `help` and `help COMMAND` are --help in its place.
std::vector<std::string> WordsOf(const QStringList& arguments)
{
    std::vector<std::string> words;
    for (const QString& argument : arguments.mid(1)) {
        words.push_back(argument.toStdString());
    }
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        words.emplace_back("--help");
    }
    return words;
}

/// The application object: drawing alone needs the windowing system.
std::unique_ptr<QCoreApplication> MakeApplication(int& argc, char** argv, bool draws)
{
    if (draws) {
        UseDisplayIfAny();
        return std::make_unique<QGuiApplication>(argc, argv);
    }
    return std::make_unique<QCoreApplication>(argc, argv);
}

/// The command that the words lead to, as far as they are commands.
const CLI::App* CommandOf(const CLI::App& program, const std::vector<std::string>& words)
{
    const CLI::App* command = &program;
    for (const std::string& word : words) {
        const auto commands =
            command->get_subcommands([&](const CLI::App* each) { return each->get_name() == word; });
        if (!commands.empty()) {
            command = commands.front();
        }
    }
    return command;
}

/// The word that stands where a command should and is none; empty when there is no such word.
std::string UnknownCommand(const CLI::App& program, const std::vector<std::string>& words)
{
    const CLI::App* command = &program;
    for (const std::string& word : words) {
        if (word.starts_with("-")) {
            continue;
        }
        const CLI::App* const above = command;
        const auto all = above->get_subcommands([](const CLI::App*) { return true; });
        const auto named = std::find_if(all.begin(), all.end(),
                                        [&](const CLI::App* each) { return each->get_name() == word; });
        if (named == all.end()) {
            return all.empty() ? std::string() : word;
        }
        command = *named;
    }
    return {};
}

int TellUsage(const CLI::App& program, const std::vector<std::string>& words, const std::string& message)
{
    const CLI::App* command = CommandOf(program, words);
    const std::string unknown = UnknownCommand(program, words);
    std::cerr << "zemtar-cad: " << (unknown.empty() ? message : "there is no command " + unknown)
              << SuggestionFor(*command, words) << "\n";
    std::string path;
    for (const CLI::App* each = command; each != nullptr; each = each->get_parent()) {
        path = each->get_name() + " " + path;
    }
    std::cerr << "`" << path << "--help` says more\n";
    return ExitUsage;
}

int Run(const QStringList& arguments)
{
    Console console;
    CLI::App program("Imports, converts and shows CAD files; exports are facets.", "zemtar-cad");
    program.set_version_flag("--version", "zemtar-cad " ZEMTAR_VERSION);
    program.add_flag("-q,--quiet", console.quiet, "Say nothing but errors");
    program.add_flag("-v,--verbose", console.verbose,
                     "Say what the engine left out or repaired, and what is written");
    program.require_subcommand(1);
    program.fallthrough();
    program.footer("Exit codes: 0 done, 1 failed, 2 wrong usage.");
    AddImportCommand(program, console);
    AddConvertCommand(program, console);
    AddImageCommand(program, console);
    AddFormatsCommand(program, console);

    const std::vector<std::string> words = WordsOf(arguments);
    try {
        program.parse(std::vector<std::string>(words.rbegin(), words.rend()));
        return console.ExitCode();
    } catch (const CLI::Success& request) { // --help and --version
        return program.exit(request, std::cout, std::cerr);
    } catch (const CLI::ParseError& error) {
        return TellUsage(program, words, error.what());
    } catch (const std::exception& error) {
        console.Error(QString::fromUtf8(error.what()));
        return console.ExitCode();
    }
}

} // namespace

void ThrowUsage(const QString& message)
{
    throw CLI::ValidationError(message.toStdString(), CLI::ExitCodes::ValidationError);
}

int main(int argc, char** argv)
{
    UseUtf8Locale();
    const SafeOutput out(std::cout);
    const SafeOutput errors(std::cerr);
    const bool draws = IsOptionGiven(argc, argv, "--preview");
    const VirtualDisplay display(draws);
    const std::unique_ptr<QCoreApplication> application = MakeApplication(argc, argv, draws);
    return Run(QCoreApplication::arguments());
}
