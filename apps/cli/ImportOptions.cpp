#include "apps/cli/ImportOptions.h"

#include "host/CZemtarDocument.h"

#include <QFileInfo>

#include <iostream>

#include <unistd.h>

using namespace Zemtar;

void ImportOptions::Declare(QCommandLineParser& parser)
{
    parser.addOption({"format", "The file's format, when its extension does not tell.", "name"});
    parser.addOption(
        {"tessellation", "20 (fine, more memory) to 95 (coarse); 50 when not given.", "20..95", "50"});
    parser.addOption({"parallel", "Let the engine use several threads."});
    parser.addOption({"polylines", "Import curves and wires as polylines."});
    parser.addOption(
        {"textures", "Write the model's textures into this folder, which is made when missing.", "dir"});
}

QString ImportOptions::Read(const QCommandLineParser& parser, const QString& file)
{
    const QString formatName = parser.value("format");
    m_format = formatName.isEmpty() ? FormatByFileName(file) : FormatByName(formatName);
    if (!m_format) {
        return formatName.isEmpty()
                   ? QStringLiteral("the extension of %1 stands for no format; name it with --format")
                         .arg(file)
                   : QStringLiteral("there is no format %1").arg(formatName);
    }
    bool isNumber = false;
    m_settings.tessellation = parser.value("tessellation").toInt(&isNumber);
    if (!isNumber || m_settings.tessellation < 20 || m_settings.tessellation > 95) {
        return QStringLiteral("--tessellation takes a number from 20 to 95");
    }
    m_settings.parallel = parser.isSet("parallel");
    m_settings.polylines = parser.isSet("polylines");
    m_settings.textureFolder = parser.value("textures");
    return {};
}

std::unique_ptr<CZemtarDocument> ImportOptions::Import(const QString& file) const
{
    const StageLine stage(QStringLiteral("Importing %1 ...").arg(QFileInfo(file).fileName()));
    return ImportDocument(file, *m_format, m_settings);
}

StageLine::StageLine(const QString& text) : m_shown(isatty(STDERR_FILENO) != 0)
{
    if (m_shown) {
        std::cerr << text.toStdString() << std::flush;
    }
}

StageLine::~StageLine()
{
    if (m_shown) {
        std::cerr << "\r\033[K" << std::flush;
    }
}
