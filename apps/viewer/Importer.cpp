#include "apps/viewer/Importer.h"

#include "apps/viewer/BusyWindow.h"
#include "apps/viewer/StandardErrorLog.h"
#include "apps/viewer/ViewerSettings.h"
#include "apps/viewer/WorkQueue.h"
#include "cadexchange/CZemtarCADExchangeImportDlg.h"
#include "cadexchange/CZemtarCADExchangeReaderHandler.h"
#include "host/CZemtarDocument.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QInputDialog>
#include <QTemporaryDir>

using namespace Zemtar;

namespace {

/// Reads what the dialog shows, and the viewer's own options.
ImportSettings SettingsOf(CZemtarCADExchangeImportDlg& dialog)
{
    const ViewerSettings stored;
    ImportSettings settings;
    settings.tessellation = dialog.GetTesselationValue();
    settings.parallel = dialog.GetIsParallelProcessing();
    settings.polylines = stored.PolyLines();
    settings.textureFolder = stored.TextureFolder();
    return settings;
}

QString FormatLabel(const FormatEntry& format)
{
    return QStringLiteral("%1 (*.%2)").arg(format.Name(), format.Extensions().join(QStringLiteral(" *.")));
}

} // namespace

ImportedFile::ImportedFile() = default;
ImportedFile::~ImportedFile() = default;

ImportSettings StoredImportSettings(const FormatEntry& format)
{
    // The dialog, which is not shown, knows where its values are stored.
    CZemtarCADExchangeImportDlg dialog(format.Name(), nullptr);
    return SettingsOf(dialog);
}

QString RunImport(ImportedFile& imported, ImportSettings settings, const StandardErrorLog& log)
{
    if (settings.textureFolder.isEmpty()) {
        imported.textures = std::make_unique<QTemporaryDir>();
        settings.textureFolder = imported.textures->path();
    }
    const int mark = log.Mark();
    QElapsedTimer timer;
    timer.start();
    QString reason;
    try {
        imported.document = ImportDocument(imported.file, *imported.format, settings);
    } catch (const std::exception& error) {
        reason = QString::fromUtf8(error.what());
    }
    imported.seconds = static_cast<double>(timer.nsecsElapsed()) * 1e-9;
    imported.readAndMeshSeconds = CZemtarCADExchangeReaderHandler::getInstance()->ReadAndMeshSeconds();
    if (imported.document) {
        return {};
    }
    const QStringList lines = log.LinesSince(mark) + (reason.isEmpty() ? QStringList() : QStringList(reason));
    return lines.isEmpty() ? Importer::tr("The library gave no reason.") : lines.join('\n');
}

Importer::Importer(QWidget* window, const StandardErrorLog& log, WorkQueue& work)
    : QObject(window), m_window(window), m_log(log), m_work(work)
{
}

void Importer::Import(const QStringList& files)
{
    m_files.insert(m_files.end(), files.begin(), files.end());
    if (!m_running && !m_files.empty()) {
        m_running = true;
        m_imported = 0;
        m_settings.clear();
        m_refused.clear();
        Later([this] { Next(); });
    }
}

void Importer::Reload(const ImportedFile& imported)
{
    Later([this, file = imported.file, format = imported.format, settings = imported.settings] {
        m_running = true;
        Run(file, *format, settings);
    });
}

void Importer::Cancel()
{
    m_files.clear();
    if (m_dialog) {
        m_dialog->reject();
    }
    if (m_busy) {
        m_busy->reject();
    }
}

/// Calls a step when the event at hand has been dealt with, so that no dialog is closed from within itself,
/// and no other work runs.
void Importer::Later(std::function<void()> step)
{
    m_work.Post(this, std::move(step));
}

void Importer::Next()
{
    if (m_dialog && m_dialog->isVisible()) {
        return; // a reload came between; the dialog's end goes on
    }
    if (m_files.empty()) {
        m_running = false;
        emit Finished(m_imported);
        return;
    }
    const QString file = m_files.front();
    m_files.pop_front();
    ChooseFormat(file);
}

void Importer::ChooseFormat(const QString& file)
{
    const QList<const FormatEntry*> candidates = FormatsByFileName(file);
    if (candidates.size() == 1) {
        AskForSettings(file, *candidates.first());
    } else {
        AskForFormat(file, candidates);
    }
}

void Importer::AskForFormat(const QString& file, const QList<const FormatEntry*>& candidates)
{
    QMap<QString, const FormatEntry*> choices;
    if (candidates.isEmpty()) {
        for (const FormatEntry& format : AllFormats()) {
            if (format.CanRead()) {
                choices.insert(FormatLabel(format), &format);
            }
        }
    }
    for (const FormatEntry* format : candidates) {
        choices.insert(FormatLabel(*format), format);
    }
    auto* dialog = new QInputDialog(m_window);
    dialog->setObjectName(QStringLiteral("format"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Import %1").arg(QFileInfo(file).fileName()));
    dialog->setLabelText(candidates.isEmpty()
                             ? tr("The file's extension stands for no format. Read it as:")
                             : tr("The file's extension stands for several formats. Read it as:"));
    dialog->setComboBoxItems(choices.keys());
    m_dialog = dialog;
    connect(dialog, &QDialog::finished, this, [this, dialog, choices, file](int result) {
        if (result == QDialog::Accepted) {
            const FormatEntry* format = choices.value(dialog->textValue());
            Later([this, file, format] { AskForSettings(file, *format); });
        } else {
            Later([this] { Next(); });
        }
    });
    dialog->open();
}

void Importer::AskForSettings(const QString& file, const FormatEntry& format)
{
    if (m_refused.contains(&format)) {
        Later([this] { Next(); });
        return;
    }
    if (m_settings.contains(&format)) {
        Run(file, format, m_settings.value(&format));
        return;
    }
    auto* dialog = new CZemtarCADExchangeImportDlg(format.Name(), m_window);
    dialog->setWindowTitle(tr("Import %1 (%2)").arg(QFileInfo(file).fileName(), format.Name()));
    m_dialog = dialog;
    connect(dialog, &QDialog::finished, this, [this, dialog, file, &format](int result) {
        if (result == QDialog::Accepted) {
            m_settings.insert(&format, SettingsOf(*dialog));
            m_files.push_front(file);
        } else {
            m_refused << &format;
        }
        dialog->deleteLater(); // stores its values
        Later([this] { Next(); });
    });
    dialog->open();
}

void Importer::Run(const QString& file, const FormatEntry& format, ImportSettings settings)
{
    const auto imported = std::make_shared<ImportedFile>();
    imported->file = file;
    imported->format = &format;
    imported->settings = settings;
    const QString name = QFileInfo(file).fileName();
    QString reason;
    {
        BusyWindow busy(m_window, tr("Importing %1").arg(name));
        m_busy = &busy;
        busy.ShowStage(tr("Reading and meshing ..."));
        settings.watch = &busy;
        reason = RunImport(*imported, std::move(settings), m_log);
        if (busy.IsCancelled()) {
            m_files.clear();
            emit Cancelled(file);
            Later([this] { Next(); });
            return;
        }
        busy.EndCancelling();
        if (imported->document) {
            busy.ShowStage(tr("Preparing the view ..."));
            emit Imported(imported);
            ++m_imported;
        }
    }
    if (!reason.isEmpty()) {
        if (!format.CanRead()) {
            reason += '\n' + tr("This build has no engine that reads %1 files.").arg(format.Name());
        }
        emit Failed(file, reason);
    }
    Later([this] { Next(); });
}
