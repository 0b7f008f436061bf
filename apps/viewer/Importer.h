#pragma once

#include "apps/shared/Exchange.h"

#include <QMap>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <deque>
#include <functional>
#include <memory>

class BusyWindow;
class QDialog;
class QTemporaryDir;
class QWidget;
class StandardErrorLog;
class WorkQueue;

/// A document with what is known of its coming.
struct ImportedFile
{
    ImportedFile();
    ~ImportedFile();

    QString file;
    const FormatEntry* format = nullptr;
    ImportSettings settings;                 ///< what the user chose
    double seconds = 0.0;                    ///< the whole import
    double readAndMeshSeconds = 0.0;         ///< the engine's share
    std::unique_ptr<QTemporaryDir> textures; ///< when the user named no folder; removed with the document
    std::unique_ptr<Zemtar::CZemtarDocument> document;
};

/// The import settings that the user last chose for a format, without asking.
ImportSettings StoredImportSettings(const FormatEntry& format);

/// Imports a file into `imported`, whose file and format are set, making a temporary texture folder where the
/// settings name none. Blocks. Exceptions become a failure; gives what the library wrote on standard error,
/// one message, or an empty text when it worked.
QString RunImport(ImportedFile& imported, ImportSettings settings, const StandardErrorLog& log);

/// Imports files one after the other: finds the format, or asks for it where the name does not tell, shows
/// the library's import dialog once a format and batch, shows a busy window and runs the library. Dialogs are
/// windows of the parent and do not block; when the parent is closed meanwhile, `Cancel` ends everything. An
/// import that the user cancels leaves nothing, and ends its batch: files that came in before stay.
class Importer : public QObject
{
    Q_OBJECT

public:
    Importer(QWidget* window, const StandardErrorLog& log, WorkQueue& work);

    void Import(const QStringList& files);
    /// Imports a file again with the settings that it was imported with, without asking.
    void Reload(const ImportedFile& imported);
    /// Forgets what has not begun and closes an open dialog.
    void Cancel();
    bool IsBusy() const { return m_running; }

signals:
    /// The receiver takes the document out; a busy window is shown until it returns.
    void Imported(const std::shared_ptr<ImportedFile>& imported);
    /// A file could not be imported.
    void Failed(const QString& file, const QString& reason);
    /// The user cancelled the import of a file, and with it the rest of the batch.
    void Cancelled(const QString& file);
    /// All files of the batch are done; `imported` came in.
    void Finished(int imported);

private:
    void Next();
    void ChooseFormat(const QString& file);
    void AskForFormat(const QString& file, const QList<const FormatEntry*>& candidates);
    void AskForSettings(const QString& file, const FormatEntry& format);
    void Run(const QString& file, const FormatEntry& format, ImportSettings settings);
    void Later(std::function<void()> step);

    QWidget* m_window;
    const StandardErrorLog& m_log;
    WorkQueue& m_work;
    std::deque<QString> m_files;
    QMap<const FormatEntry*, ImportSettings> m_settings; ///< of this batch
    QList<const FormatEntry*> m_refused;                 ///< whose dialog was closed in this batch
    QPointer<QDialog> m_dialog;
    QPointer<BusyWindow> m_busy;
    bool m_running = false;
    int m_imported = 0;
};
