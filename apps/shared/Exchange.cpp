#include "apps/shared/Exchange.h"

#include "apps/shared/EngineReports.h"

#include "common/encoding/CZemtarConvert.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarUnit.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <iostream>
#include <optional>

#if __has_include(<cadex/internal/Progress.hxx>)
#include <cadex/internal/Progress.hxx>
#define ZEMTAR_ENGINE_PROGRESS 1
#endif

using namespace Zemtar;

namespace {

/// Between two calls of a watch, as the engine keeps it.
constexpr qint64 ShowMilliseconds = 50;

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

#ifdef ZEMTAR_ENGINE_PROGRESS
QString NameOf(cadex::internal::ProgressStage stage)
{
    using Stage = cadex::internal::ProgressStage;
    switch (stage) {
    case Stage::Reading:
        return QStringLiteral("reading");
    case Stage::Building:
        return QStringLiteral("building");
    case Stage::Meshing:
        return QStringLiteral("meshing");
    case Stage::Writing:
        break;
    }
    return QStringLiteral("writing");
}

/// Hands what the engine tells to a watch, which may be null.
class Listening
{
public:
    explicit Listening(ExchangeWatch* watch)
    {
        if (watch) {
            m_listening.emplace([watch](cadex::internal::ProgressStage stage, double fraction) {
                watch->Show(NameOf(stage), fraction);
                return !watch->IsCancelled();
            });
        }
    }

private:
    std::optional<cadex::internal::ProgressListening> m_listening;
};
#else
class Listening
{
public:
    explicit Listening(ExchangeWatch*) {}
};
#endif

/// What stands in a folder that an import writes textures to, so that a cancelled one can take its own away.
class TextureFolder
{
public:
    explicit TextureFolder(const QString& path)
        : m_path(path), m_existed(QFileInfo::exists(path)), m_files(Files())
    {
    }

    void RemoveNewFiles() const
    {
        if (m_path.isEmpty()) {
            return;
        }
        for (const QString& file : Files()) {
            if (!m_files.contains(file)) {
                QFile::remove(QDir(m_path).filePath(file));
            }
        }
        if (!m_existed) {
            QDir().rmdir(m_path); // which keeps a folder that holds anything
        }
    }

private:
    QStringList Files() const
    {
        return m_path.isEmpty() ? QStringList()
                                : QDir(m_path).entryList(QDir::Files | QDir::Hidden | QDir::System);
    }

    QString m_path;
    bool m_existed;
    QStringList m_files;
};

} // namespace

std::unique_ptr<CZemtarDocument> ImportDocument(const QString& file, const FormatEntry& format,
                                                const ImportSettings& settings)
{
    QString textures = settings.textureFolder;
    const TextureFolder before(textures);
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
    const Listening listening(settings.watch);
    std::unique_ptr<CZemtarDocument> document(reader.Import(CZemtarConvert::QStringToCZemtarString(file)));
    if (settings.watch && settings.watch->IsCancelled()) {
        document.reset(); // meshes that were cancelled are missing in it
        before.RemoveNewFiles();
    }
    return document;
}

bool ExportDocument(CZemtarDocument& document, const QString& file, const ExportSettings& settings)
{
    if (settings.format->scene != SceneFormat::None) {
        SceneExportSettings scene{settings.format->scene, settings.unit, settings.packing};
        if (settings.watch) {
            scene.progress = [watch = settings.watch, shown = QElapsedTimer()](double fraction) mutable {
                if (!shown.isValid() || shown.hasExpired(ShowMilliseconds)) {
                    watch->Show(QStringLiteral("writing"), fraction);
                    shown.start();
                }
                return !watch->IsCancelled();
            };
        }
        for (const std::string& note : ExportScene(document, file.toStdString(), scene)) {
            AddReport({QStringLiteral("noted"), QString::fromStdString(note)});
        }
        return true;
    }
    const FileStamp before{QFileInfo(file)};
    const Listening listening(settings.watch);
    CZemtarCADExchangeWriter writer;
    writer.SetCADWriterType(settings.format->writer);
    writer.SetJTExportMethod(settings.jtSplit);
    writer.Export(&document, CZemtarConvert::QStringToCZemtarString(file), nullptr, nullptr, nullptr, nullptr,
                  CZemtarUnit(settings.unit));
    const FileStamp after{QFileInfo(file)};
    return after.exists && !(after == before);
}
