#pragma once

#include "apps/viewer/FileWatch.h"
#include "apps/viewer/MeasureTool.h"
#include "apps/viewer/StandardErrorLog.h"
#include "apps/viewer/WorkQueue.h"

#include <QMainWindow>
#include <QPointer>
#include <QSet>
#include <QStringList>

#include <functional>
#include <memory>

class BusyWindow;
class DocumentPage;
class ExportDialog;
class ImageWindow;
class InspectionPanel;
class NoticeBar;
class Importer;
class LogPanel;
class PropertiesPanel;
class QDockWidget;
class QLabel;
class QStackedWidget;
class QTabWidget;
class StartPage;
struct ExportSettings;
struct ImportedFile;

/// The viewer's window: documents in tabs, the node tree, properties and the log in docks around them, and
/// all that is done with them.
///
///     MainWindow window;
///     window.show();
///     window.Open({"pump.step", "wood.png"});
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;

    /// Imports CAD files, each in a tab of its own, and opens pictures in the image window. Returns at once.
    void Open(const QStringList& files);
    /// The page in front; null when no document is open.
    DocumentPage* CurrentPage() const;

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // MainWindow.cpp: documents
    void MakeCentre();
    void MakeDocks();
    void MakeStatusBar();
    void AddPage(const std::shared_ptr<ImportedFile>& imported);
    void ClosePage(int index);
    void ShowCurrentPage();
    void ShowState();
    void ShowFailures();
    void AskForFiles();
    void AskForExport();
    void Export(DocumentPage& page, const QString& file, ExportSettings settings);
    void AskForImage();
    void ShowImages(const QString& file);
    void ShowAbout();
    void RestoreLayout();
    void SaveLayout();
    void ShowDocks(bool on);

    // MainWindowTools.cpp: what is done with a document in front
    void MakeMeasureActions(QMenu& menu);
    void MakeInspectionDock();
    void ShowTools();
    void CopyPicture(DocumentPage& page);
    void SavePicture(DocumentPage& page);
    void ShowStatistics(DocumentPage& page);
    void ShowHelp();
    void Reload(DocumentPage& page);
    void TakePlaceOf(DocumentPage& old, DocumentPage& page);

    // MainWindowActions.cpp: menus, tool bar, keys
    void MakeActions();
    void MakeFileMenu();
    void MakeEditMenu();
    void MakeViewMenu();
    void MakeStandardViews(QMenu& menu);
    void MakeAppearanceMenu(QMenu& menu);
    void MakeToolsAndHelpMenus();
    void MakeToolBar();
    void FillRecentFiles();
    void UpdateActions();
    void ShowContextMenu(const QPoint& globalPosition);
    /// What must be there for an action to be enabled.
    enum class Needs
    {
        Document,
        Selection,
        View
    };
    /// An action that is given the page in front.
    QAction* MakePageAction(const char* name, const QString& text, const QKeySequence& key,
                            std::function<void(DocumentPage&)> run, Needs needs = Needs::Document);

    StandardErrorLog m_log;
    WorkQueue m_work;
    Importer* m_importer;
    QStackedWidget* m_centre = nullptr;
    StartPage* m_startPage = nullptr;
    QTabWidget* m_tabs = nullptr;
    QStackedWidget* m_trees = nullptr;
    PropertiesPanel* m_properties = nullptr;
    QDockWidget* m_treeDock = nullptr;
    QDockWidget* m_propertiesDock = nullptr;
    QDockWidget* m_logDock = nullptr;
    LogPanel* m_logPanel = nullptr;
    QDockWidget* m_inspectionDock = nullptr;
    InspectionPanel* m_inspection = nullptr;
    NoticeBar* m_notice = nullptr;
    FileWatch m_watch;
    QSet<QString> m_outdated;          ///< files that changed since they were imported
    QPointer<DocumentPage> m_replaced; ///< whose file is being imported again
    QList<QPair<QAction*, MeasureKind>> m_measureActions;
    QLabel* m_totals = nullptr;
    QLabel* m_times = nullptr;
    QMenu* m_recentMenu = nullptr;
    QAction* m_import = nullptr;
    QAction* m_openImage = nullptr;
    QAction* m_images = nullptr;
    QAction* m_edges = nullptr;
    QAction* m_perspective = nullptr;
    QList<QPair<QAction*, Needs>> m_pageActions;
    QList<QAction*> m_standardViews;
    QList<QPair<QString, QString>> m_failures; ///< file and reason, of the running batch
    ImageWindow* m_imageWindow = nullptr;
    QByteArray m_dockState; ///< of the time when documents were last open
    bool m_docksShown = true;
};
