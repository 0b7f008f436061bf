// zemtar-viewer: a small desktop host that shows what the library does.

#include "apps/render/Picture.h"
#include "apps/render/Renderer.h"
#include "apps/shared/Utf8Locale.h"
#include "apps/shared/VirtualDisplay.h"
#include "apps/viewer/Appearance.h"
#include "apps/viewer/Icons.h"
#include "apps/viewer/MainWindow.h"
#include "apps/viewer/Screenshot.h"
#include "apps/viewer/Texts.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLibraryInfo>
#include <QSurfaceFormat>
#include <QTranslator>

#include <iostream>

using namespace Zemtar;

namespace {

constexpr int ExitDone = 0;
constexpr int ExitFailed = 1;
constexpr int ExitUsage = 2;

void PrintUsage(std::ostream& out)
{
    out << "zemtar-viewer [FILE...]\n"
           "zemtar-viewer --screenshot OUT.png [--size WxH] [--view NAME] [--turntable N] FILE\n"
           "zemtar-viewer --help | --version\n"
           "views: "
        << StandardViewNames().toStdString() << "\n";
}

int UsageError(const QString& message)
{
    std::cerr << "zemtar-viewer: " << message.toStdString() << "\n";
    PrintUsage(std::cerr);
    return ExitUsage;
}

/// Loads Qt's own translations, and ours ("zemtar-viewer_de.qm") where they lie beside the program.
void InstallTranslations(QApplication& application)
{
    const auto install = [&](const QString& name, const QString& folder) {
        auto* translator = new QTranslator(&application);
        if (translator->load(QLocale(), name, QStringLiteral("_"), folder)) {
            QApplication::installTranslator(translator);
        }
    };
    install(QStringLiteral("qtbase"), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    install(QStringLiteral("zemtar-viewer"), QApplication::applicationDirPath());
}

int RunWindow(const QStringList& files)
{
    if (!HasDisplay()) {
        std::cerr << "zemtar-viewer: there is no display to open a window on\n";
        return ExitFailed;
    }
    ApplyAppearance(ViewerSettings().Look());
    MainWindow window;
    window.show();
    window.Open(files);
    return QApplication::exec();
}

int Run(const QCommandLineParser& parser)
{
    const QStringList files = parser.positionalArguments();
    if (parser.isSet("help")) {
        PrintUsage(std::cout);
        return ExitDone;
    }
    if (parser.isSet("version")) {
        std::cout << "zemtar-viewer " << QApplication::applicationVersion().toStdString() << "\n";
        return ExitDone;
    }
    PictureOptions options;
    if (parser.isSet("size") && !ParsePictureSize(parser.value("size"), options.size)) {
        return UsageError(QStringLiteral("--size takes WIDTHxHEIGHT in pixels"));
    }
    if (parser.isSet("view") && !ParseStandardView(parser.value("view"), options.view)) {
        return UsageError(QStringLiteral("--view takes one of: ") + StandardViewNames());
    }
    bool isNumber = true;
    const int frames = parser.isSet("turntable") ? parser.value("turntable").toInt(&isNumber) : 0;
    if (parser.isSet("turntable") && (!isNumber || frames < 1 || frames > MostTurntableFrames)) {
        return UsageError(QStringLiteral("--turntable takes 1 to %1 frames").arg(MostTurntableFrames));
    }
    if (!parser.isSet("screenshot")) {
        return parser.isSet("size") || parser.isSet("view") || parser.isSet("turntable")
                   ? UsageError(QStringLiteral("--size, --view and --turntable belong to --screenshot"))
                   : RunWindow(files);
    }
    return files.size() == 1 ? RunScreenshot(files.first(), parser.value("screenshot"), options, frames)
                             : UsageError(QStringLiteral("--screenshot takes one file"));
}

} // namespace

int main(int argc, char** argv)
{
    UseUtf8Locale();
    const VirtualDisplay display(IsOptionGiven(argc, argv, "--screenshot"));
    UseDisplayIfAny();
    QSurfaceFormat::setDefaultFormat(RendererFormat()); // macOS wants it before the application is there
    QApplication application(argc, argv);
    QApplication::setOrganizationName(BrandingText(CZemtarBranding::OrganizationName));
    QApplication::setApplicationName(BrandingText(CZemtarBranding::ApplicationName));
    QApplication::setApplicationVersion(BrandingText(CZemtarBranding::ApplicationVersion));
    QApplication::setWindowIcon(Icons::Application());
    InstallTranslations(application);

    QCommandLineParser parser;
    parser.addOption({"screenshot", "", "file"});
    parser.addOption({"size", "", "WxH"});
    parser.addOption({"view", "", "name"});
    parser.addOption({"turntable", "", "frames"});
    parser.addOption({"help", ""});
    parser.addOption({"version", ""});
    if (!parser.parse(QApplication::arguments())) {
        return UsageError(parser.errorText());
    }
    try {
        return Run(parser);
    } catch (const std::exception& error) {
        std::cerr << "zemtar-viewer: " << error.what() << "\n";
        return ExitFailed;
    }
}
