#include "apps/viewer/MainWindow.h"

#include "apps/render/Picture.h"
#include "apps/viewer/Appearance.h"
#include "apps/viewer/BusyWindow.h"
#include "apps/viewer/DocumentPage.h"
#include "apps/viewer/ExportDialog.h"
#include "apps/viewer/Icons.h"
#include "apps/viewer/ImageWindow.h"
#include "apps/viewer/InspectionPanel.h"
#include "apps/viewer/LogPanel.h"
#include "apps/viewer/NoticeBar.h"
#include "apps/viewer/PropertiesPanel.h"
#include "apps/viewer/StartPage.h"
#include "apps/viewer/Texts.h"
#include "apps/viewer/ViewerSettings.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QFileInfo>
#include <QImageReader>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QOpenGLWidget>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabWidget>
#include <QVBoxLayout>

using namespace Zemtar;

namespace {

constexpr int StatusMilliseconds = 10000;
const QString ImportPurpose = QStringLiteral("Import");
const QString ImagePurpose = QStringLiteral("Image");

/// Patterns of the picture files that the image window opens.
QStringList ImagePatterns()
{
    // Qt does not know the two with a high dynamic range.
    QStringList patterns{QStringLiteral("*.hdr"), QStringLiteral("*.exr")};
    for (const QByteArray& format : QImageReader::supportedImageFormats()) {
        patterns << QStringLiteral("*.") + QString::fromLatin1(format);
    }
    return patterns;
}

bool IsImage(const QString& file)
{
    return QDir::match(ImagePatterns(), QFileInfo(file).fileName());
}

QStringList FilesOf(const QMimeData& data)
{
    QStringList files;
    for (const QUrl& url : data.urls()) {
        if (url.isLocalFile()) {
            files << url.toLocalFile();
        }
    }
    return files;
}

void ShowMessage(QWidget* parent, QMessageBox::Icon icon, const QString& title, const QString& text,
                 const QString& details)
{
    auto* box = new QMessageBox(icon, title, text, QMessageBox::Ok, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setInformativeText(details);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box->open();
}

} // namespace

MainWindow::MainWindow() : m_importer(new Importer(this, m_log, m_work))
{
    setWindowTitle(BrandingText(CZemtarBranding::ApplicationTitle));
    setWindowIcon(Icons::Application());
    setAcceptDrops(true);
    setDockNestingEnabled(true);
    MakeDocks();
    MakeActions();
    MakeCentre();
    MakeStatusBar();
    RestoreLayout();
    connect(m_importer, &Importer::Imported, this, &MainWindow::AddPage);
    connect(m_importer, &Importer::Failed, this, [this](const QString& file, const QString& reason) {
        m_failures.append({file, reason});
    });
    connect(m_importer, &Importer::Cancelled, this, [this](const QString& file) {
        statusBar()->showMessage(tr("The import of %1 is cancelled.").arg(QFileInfo(file).fileName()),
                                 StatusMilliseconds);
    });
    connect(m_importer, &Importer::Finished, this, &MainWindow::ShowFailures);
    ShowCurrentPage();
}

MainWindow::~MainWindow()
{
    m_tabs->disconnect(this);
    while (m_tabs->count() > 0) {
        delete m_tabs->widget(0);
    }
}

void MainWindow::MakeCentre()
{
    m_centre = new QStackedWidget(this);
    if (MissingOpenGL().isEmpty()) {
        // A window that gets its first OpenGL child later would be made anew then, and jump on the screen.
        (new QOpenGLWidget(m_centre))->hide();
    }
    m_startPage = new StartPage({m_import, m_openImage}, m_centre);
    m_tabs = new QTabWidget(m_centre);
    m_tabs->setDocumentMode(true);
    m_tabs->setTabsClosable(true);
    m_tabs->setMovable(true);
    m_centre->addWidget(m_startPage);
    m_centre->addWidget(m_tabs);
    auto* middle = new QWidget(this);
    m_notice = new NoticeBar(tr("Reload"), middle);
    auto* rows = new QVBoxLayout(middle);
    rows->setContentsMargins({});
    rows->setSpacing(0);
    rows->addWidget(m_notice);
    rows->addWidget(m_centre, 1);
    setCentralWidget(middle);
    connect(m_notice, &NoticeBar::Answered, this, [this] { Reload(*CurrentPage()); });
    connect(m_notice, &NoticeBar::Dismissed, this, [this] {
        m_outdated.remove(QFileInfo(CurrentPage()->Source().file).absoluteFilePath());
        ShowTools();
    });
    connect(&m_watch, &FileWatch::Changed, this, [this](const QString& file) {
        m_outdated << file;
        ShowTools();
    });
    m_startPage->SetRecentFiles(ViewerSettings().RecentFiles());
    connect(m_startPage, &StartPage::RecentFileChosen, this, [this](const QString& file) { Open({file}); });
    connect(m_tabs, &QTabWidget::currentChanged, this, &MainWindow::ShowCurrentPage);
    connect(m_tabs, &QTabWidget::tabCloseRequested, this, &MainWindow::ClosePage);
}

void MainWindow::MakeDocks()
{
    const auto makeDock = [this](const char* name, const QString& title, QWidget* content,
                                 Qt::DockWidgetArea area) {
        auto* dock = new QDockWidget(title, this);
        dock->setObjectName(QString::fromLatin1(name));
        dock->setWidget(content);
        addDockWidget(area, dock);
        return dock;
    };
    m_trees = new QStackedWidget(this);
    m_properties = new PropertiesPanel(this);
    m_logPanel = new LogPanel(this);
    m_treeDock = makeDock("treeDock", tr("Nodes"), m_trees, Qt::LeftDockWidgetArea);
    m_propertiesDock = makeDock("propertiesDock", tr("Properties"), m_properties, Qt::RightDockWidgetArea);
    m_logDock = makeDock("logDock", tr("Log"), m_logPanel, Qt::BottomDockWidgetArea);
    m_logDock->hide();
    MakeInspectionDock();
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    connect(m_properties, &PropertiesPanel::PictureActivated, this, &MainWindow::ShowImages);
    connect(&m_log, &StandardErrorLog::LinesArrived, m_logPanel, &LogPanel::Append);
}

void MainWindow::MakeStatusBar()
{
    m_totals = new QLabel(this);
    m_totals->setObjectName(QStringLiteral("totals"));
    m_times = new QLabel(this);
    m_times->setObjectName(QStringLiteral("times"));
    statusBar()->addPermanentWidget(m_totals);
    statusBar()->addPermanentWidget(m_times);
}

void MainWindow::Open(const QStringList& files)
{
    QStringList models;
    for (const QString& file : files) {
        if (IsImage(file)) {
            ShowImages(file);
        } else {
            models << file;
        }
    }
    m_importer->Import(models);
}

DocumentPage* MainWindow::CurrentPage() const
{
    return qobject_cast<DocumentPage*>(m_tabs->currentWidget());
}

void MainWindow::AddPage(const std::shared_ptr<ImportedFile>& imported)
{
    auto* page = new DocumentPage(imported, m_tabs);
    connect(page, &DocumentPage::Changed, this, &MainWindow::ShowState);
    connect(page, &DocumentPage::MenuRequested, this, &MainWindow::ShowContextMenu);
    m_trees->addWidget(page->Tree());
    const QString file = imported->file;
    const int index = m_tabs->addTab(page, QFileInfo(file).fileName().replace('&', QStringLiteral("&&")));
    m_tabs->setTabToolTip(index, QDir::toNativeSeparators(QFileInfo(file).absoluteFilePath()));
    m_tabs->setCurrentIndex(index);
    m_watch.Add(file);
    if (m_replaced && m_replaced->Source().file == file) {
        TakePlaceOf(*m_replaced, *page);
        m_watch.Add(file);
    }
    ViewerSettings settings;
    settings.AddRecentFile(file);
    m_startPage->SetRecentFiles(settings.RecentFiles());
}

void MainWindow::ClosePage(int index)
{
    const auto* page = qobject_cast<DocumentPage*>(m_tabs->widget(index));
    const QString file = page ? page->Source().file : QString();
    delete m_tabs->widget(index);
    m_watch.Remove(file);
    m_outdated.remove(QFileInfo(file).absoluteFilePath());
    ShowCurrentPage();
}

void MainWindow::ShowCurrentPage()
{
    DocumentPage* page = CurrentPage();
    ShowDocks(page != nullptr);
    m_centre->setCurrentWidget(page ? static_cast<QWidget*>(m_tabs) : m_startPage);
    const QString title = BrandingText(CZemtarBranding::ApplicationTitle);
    if (page) {
        m_trees->setCurrentWidget(page->Tree());
        const ImportedFile& source = page->Source();
        const NodeCounts& totals = page->Nodes().Totals();
        const QLocale locale;
        m_totals->setText(tr("%1 nodes, %2 parts, %3 meshes, %4 triangles")
                              .arg(locale.toString(totals.nodes), locale.toString(totals.parts),
                                   locale.toString(totals.meshes), locale.toString(totals.triangles)));
        m_times->setText(tr("imported in %1 s").arg(locale.toString(source.seconds, 'f', 2)));
        m_times->setToolTip(
            tr("of which reading and meshing: %1 s").arg(locale.toString(source.readAndMeshSeconds, 'f', 2)));
        setWindowTitle(QStringLiteral("%1 - %2").arg(QFileInfo(source.file).fileName(), title));
    } else {
        m_totals->clear();
        m_times->clear();
        setWindowTitle(title);
    }
    ShowState();
}

void MainWindow::ShowState()
{
    DocumentPage* page = CurrentPage();
    m_properties->Show(page ? page->Selected() : nullptr, page ? &page->Nodes() : nullptr);
    UpdateActions();
    ShowTools();
    if (page && page->Isolated()) {
        statusBar()->showMessage(
            tr("Isolated: %1").arg(page->Nodes().DisplayName(page->Nodes().Position(page->Isolated()))));
    } else {
        statusBar()->clearMessage();
    }
}

void MainWindow::ShowFailures()
{
    m_replaced.clear();
    if (m_failures.isEmpty()) {
        return;
    }
    QStringList reasons;
    for (const auto& [file, reason] : std::as_const(m_failures)) {
        reasons << reason;
        ViewerSettings settings;
        if (!QFileInfo::exists(file)) {
            settings.RemoveRecentFile(QFileInfo(file).absoluteFilePath());
            m_startPage->SetRecentFiles(settings.RecentFiles());
        }
    }
    const QString text =
        m_failures.size() == 1
            ? tr("%1 could not be imported.").arg(QFileInfo(m_failures.first().first).fileName())
            : tr("%n files could not be imported.", nullptr, static_cast<int>(m_failures.size()));
    m_failures.clear();
    ShowMessage(this, QMessageBox::Warning, tr("Import"), text, reasons.join('\n'));
}

void MainWindow::AskForFiles()
{
    QStringList all;
    QStringList filters;
    for (const FormatEntry& format : AllFormats()) {
        if (!format.CanRead()) {
            continue;
        }
        const QString patterns = QStringLiteral("*.") + format.Extensions().join(QStringLiteral(" *."));
        all << patterns;
        filters << QStringLiteral("%1 (%2)").arg(format.Name(), patterns);
    }
    filters.prepend(tr("CAD files (%1)").arg(all.join(' ')));
    filters << tr("All files (*)");
    ViewerSettings settings;
    const QStringList files = QFileDialog::getOpenFileNames(
        this, tr("Import"), settings.Folder(ImportPurpose), filters.join(QStringLiteral(";;")));
    if (!files.isEmpty()) {
        settings.SetFolderOf(ImportPurpose, files.first());
        m_importer->Import(files);
    }
}

void MainWindow::AskForExport()
{
    DocumentPage* page = CurrentPage();
    if (!page) {
        return;
    }
    auto* dialog = new ExportDialog(page->Source().file, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, page, [this, page, dialog] {
        const QString file = dialog->File();
        const ExportSettings settings = dialog->Settings();
        m_work.Post(page, [this, page, file, settings] { Export(*page, file, settings); });
    });
    dialog->open();
}

void MainWindow::Export(DocumentPage& page, const QString& file, ExportSettings settings)
{
    const QString name = QFileInfo(file).fileName();
    const int mark = m_log.Mark();
    QElapsedTimer timer;
    bool written = false;
    bool cancelled = false;
    QString reason;
    {
        BusyWindow busy(this, tr("Exporting %1").arg(name));
        busy.ShowStage(tr("Writing %1 ...").arg(name));
        timer.start();
        settings.watch = &busy;
        try {
            written = ExportDocument(page.Document(), file, settings);
        } catch (const std::exception& error) {
            reason = QString::fromUtf8(error.what());
        }
        cancelled = busy.IsCancelled();
    }
    if (!written && cancelled) {
        statusBar()->showMessage(tr("The export of %1 is cancelled.").arg(name), StatusMilliseconds);
        return;
    }
    if (written) {
        const QLocale locale;
        statusBar()->showMessage(
            tr("Exported %1: %2 in %3 s")
                .arg(QDir::toNativeSeparators(file), locale.formattedDataSize(QFileInfo(file).size()),
                     locale.toString(static_cast<double>(timer.elapsed()) * 1e-3, 'f', 2)),
            StatusMilliseconds);
        return;
    }
    QStringList lines = m_log.LinesSince(mark);
    lines << reason;
    lines.removeAll(QString());
    ShowMessage(this, QMessageBox::Warning, tr("Export"), tr("%1 could not be exported.").arg(name),
                lines.join('\n'));
}

void MainWindow::AskForImage()
{
    ViewerSettings settings;
    const QString file = QFileDialog::getOpenFileName(this, tr("Open Image"), settings.Folder(ImagePurpose),
                                                      tr("Pictures (%1)").arg(ImagePatterns().join(' ')));
    if (!file.isEmpty()) {
        settings.SetFolderOf(ImagePurpose, file);
        ShowImages(file);
    }
}

void MainWindow::ShowImages(const QString& file)
{
    if (!m_imageWindow) {
        m_imageWindow = new ImageWindow(this);
    }
    m_imageWindow->show();
    m_imageWindow->raise();
    m_imageWindow->activateWindow();
    if (!file.isEmpty()) {
        m_imageWindow->Load(file);
    }
}

void MainWindow::ShowAbout()
{
    QStringList readable;
    QStringList writable;
    for (const FormatEntry& format : AllFormats()) {
        if (format.CanRead()) {
            readable << format.Name();
        }
        if (format.CanWrite()) {
            writable << format.Name();
        }
    }
    ShowMessage(this, QMessageBox::NoIcon, tr("About"),
                QStringLiteral("<h3>%1 %2</h3>")
                    .arg(BrandingText(CZemtarBranding::ApplicationTitle),
                         BrandingText(CZemtarBranding::ApplicationVersion)),
                tr("Imports, shows and exports mechanical CAD files.\n\nReads %1.\nWrites %2.\n\nQt %3")
                    .arg(readable.join(QStringLiteral(", ")), writable.join(QStringLiteral(", ")),
                         QString::fromLatin1(qVersion())));
}

void MainWindow::RestoreLayout()
{
    const ViewerSettings settings;
    resize(fontMetrics().height() * 84, fontMetrics().height() * 54);
    restoreGeometry(settings.value("Window/Geometry").toByteArray());
    m_dockState = settings.value("Window/State").toByteArray();
    if (m_dockState.isEmpty() || !restoreState(m_dockState)) {
        resizeDocks({m_treeDock, m_propertiesDock}, {width() * 22 / 100, width() * 30 / 100}, Qt::Horizontal);
    }
}

void MainWindow::SaveLayout()
{
    ViewerSettings settings;
    settings.setValue("Window/Geometry", saveGeometry());
    settings.setValue("Window/State", m_docksShown ? saveState() : m_dockState);
}

/// The start page stands alone; with the first document the docks are as they were left.
void MainWindow::ShowDocks(bool on)
{
    if (on == m_docksShown) {
        return;
    }
    m_docksShown = on;
    if (on) {
        restoreState(m_dockState);
        return;
    }
    m_dockState = saveState();
    for (QDockWidget* dock : {m_treeDock, m_propertiesDock, m_logDock, m_inspectionDock}) {
        dock->hide();
    }
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (m_work.IsWorking()) { // it ends first, in the midst of which this event came
        m_importer->Cancel();
        if (auto* busy = findChild<BusyWindow*>()) {
            busy->reject();
        }
        m_work.Post(this, [this] { QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection); });
        event->ignore();
        return;
    }
    m_importer->Cancel();
    for (QDialog* dialog : findChildren<QDialog*>()) {
        dialog->reject();
    }
    if (m_imageWindow) {
        m_imageWindow->close();
    }
    SaveLayout();
    QMainWindow::closeEvent(event);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->source() == nullptr && !FilesOf(*event->mimeData()).isEmpty()) { // none of our own
        event->acceptProposedAction();
    }
}

void MainWindow::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    Open(FilesOf(*event->mimeData()));
}

void MainWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange && m_tabs) {
        ShowState(); // swatches and dimmed rows hold colours of the palette
    }
    QMainWindow::changeEvent(event);
}
