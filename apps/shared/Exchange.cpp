#include "apps/shared/Exchange.h"

#include "apps/shared/EngineReports.h"

#include "common/encoding/CZemtarConvert.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarUnit.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <iostream>

using namespace Zemtar;

namespace {

/// What identifies one writing of a file.
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

} // namespace

std::unique_ptr<CZemtarDocument> ImportDocument(const QString& file, const FormatEntry& format,
                                                const ImportSettings& settings)
{
    QString textures = settings.textureFolder;
    if (!textures.isEmpty() && !QDir().mkpath(textures)) {
        std::cerr << "Cannot make the folder " << textures.toStdString() << std::endl;
        return nullptr;
    }
    // The library joins folder and file name without a separator of its own.
    if (!textures.isEmpty() && !textures.endsWith('/')) {
        textures += '/';
    }
    CZemtarCADExchangeReader reader;
    reader.SetCADReaderType(format.reader);
    reader.setTessellationFactor(settings.tessellation);
    reader.setUseParallelProcessing(settings.parallel);
    reader.setImportPolyLines(settings.polylines);
    reader.setTextureOutputDirectory(CZemtarConvert::QStringToCZemtarString(textures));
    return std::unique_ptr<CZemtarDocument>(reader.Import(CZemtarConvert::QStringToCZemtarString(file)));
}

bool ExportDocument(CZemtarDocument& document, const QString& file, const ExportSettings& settings)
{
    if (settings.format->scene != SceneFormat::None) {
        for (const std::string& note : ExportScene(
                 document, file.toStdString(), {settings.format->scene, settings.unit, settings.packing})) {
            AddReport({QStringLiteral("noted"), QString::fromStdString(note)});
        }
        return true;
    }
    const FileStamp before{QFileInfo(file)};
    CZemtarCADExchangeWriter writer;
    writer.SetCADWriterType(settings.format->writer);
    writer.SetJTExportMethod(settings.jtSplit);
    writer.Export(&document, CZemtarConvert::QStringToCZemtarString(file), nullptr, nullptr, nullptr, nullptr,
                  CZemtarUnit(settings.unit));
    const FileStamp after{QFileInfo(file)};
    return after.exists && !(after == before);
}
