// zemtar-thumbnailer: a picture of a model, as file managers ask for it.

#include "apps/render/Picture.h"
#include "apps/render/Renderer.h"
#include "apps/shared/Display.h"
#include "apps/shared/Exchange.h"
#include "apps/shared/Utf8Locale.h"
#include "apps/shared/VirtualDisplay.h"
#include "host/CZemtarDocument.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QUrl>

#include <iostream>

namespace {

constexpr int ExitDone = 0;
constexpr int ExitFailed = 1;
constexpr int ExitUsage = 2;
constexpr int UsualSize = 256;
constexpr int LargestSize = 1024;
/// A thumbnail shows no fine facets.
constexpr int Coarse = 70;

constexpr const char* Usage = "zemtar-thumbnailer [-s PIXELS] FILE|URI OUT.png\n"
                              "zemtar-thumbnailer --help | --version\n";

int Fail(int code, const QString& reason)
{
    std::cerr << "zemtar-thumbnailer: " << reason.toStdString() << "\n";
    if (code == ExitUsage) {
        std::cerr << Usage;
    }
    return code;
}

/// File managers pass a URI or a path.
QString PathOf(const QString& argument)
{
    const QUrl url(argument);
    return url.isLocalFile() ? url.toLocalFile() : argument;
}

/// Writes a PNG file whatever its name says, whole or not at all.
QString WritePng(const QImage& image, const QString& file)
{
    QSaveFile target(file);
    if (!target.open(QIODevice::WriteOnly)) {
        return target.errorString();
    }
    return image.save(&target, "PNG") && target.commit() ? QString() : target.errorString();
}

int Draw(const QString& file, const QString& target, int size)
{
    const QList<const FormatEntry*> formats = FormatsByFileName(file);
    if (formats.isEmpty()) {
        return Fail(ExitFailed, QStringLiteral("the extension of %1 stands for no format").arg(file));
    }
    const QTemporaryDir textures;
    ImportSettings settings;
    settings.tessellation = Coarse;
    settings.textureFolder = textures.path();
    const auto document = ImportDocument(file, *formats.first(), settings);
    if (!document) {
        return ExitFailed; // the reason has been written already
    }
    PictureOptions options;
    options.size = QSize(size, size);
    options.axes = false;
    const Picture picture = RenderPicture(*document, options);
    const QString problem = picture.image.isNull() ? picture.problem : WritePng(picture.image, target);
    return problem.isEmpty() ? ExitDone : Fail(ExitFailed, problem);
}

int Run(const QCommandLineParser& parser)
{
    if (parser.isSet("help")) {
        std::cout << Usage;
        return ExitDone;
    }
    if (parser.isSet("version")) {
        std::cout << "zemtar-thumbnailer " ZEMTAR_VERSION "\n";
        return ExitDone;
    }
    bool isNumber = true;
    const int size = parser.isSet("s") ? parser.value("s").toInt(&isNumber) : UsualSize;
    if (!isNumber || size < 1 || size > LargestSize) {
        return Fail(ExitUsage, QStringLiteral("-s takes 1 to %1 pixels").arg(LargestSize));
    }
    const QStringList files = parser.positionalArguments();
    return files.size() == 2 ? Draw(PathOf(files[0]), PathOf(files[1]), size)
                             : Fail(ExitUsage, QStringLiteral("a file and a picture are needed"));
}

} // namespace

int main(int argc, char** argv)
{
    UseUtf8Locale();
    const VirtualDisplay display(true);
    UseDisplayIfAny();
    const QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addOption({{"s", "size"}, "", "pixels"});
    parser.addOption({"help", ""});
    parser.addOption({"version", ""});
    if (!parser.parse(QGuiApplication::arguments())) {
        return Fail(ExitUsage, parser.errorText());
    }
    try {
        return Run(parser);
    } catch (const std::exception& error) {
        return Fail(ExitFailed, QString::fromUtf8(error.what()));
    }
}
