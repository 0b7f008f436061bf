// The window's tools: measuring, inspection, pictures, statistics, reloading, help.

#include "apps/viewer/DocumentPage.h"
#include "apps/viewer/HelpDialog.h"
#include "apps/viewer/InspectionPanel.h"
#include "apps/viewer/MainWindow.h"
#include "apps/viewer/NoticeBar.h"
#include "apps/viewer/SceneView.h"
#include "apps/viewer/StatisticsDialog.h"
#include "apps/viewer/ViewerSettings.h"

#include "apps/images/ImageFile.h"

#include <QActionGroup>
#include <QClipboard>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMenu>
#include <QMessageBox>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>

namespace {

constexpr int StatusMilliseconds = 10000;
const QString PicturePurpose = QStringLiteral("Picture");

} // namespace

void MainWindow::MakeMeasureActions(QMenu& menu)
{
    const struct
    {
        const char* name;
        QString text;
        QKeySequence key;
        MeasureKind kind;
    } tools[] = {
        {"measureLength", tr("Measure a &length"), Qt::Key_L, MeasureKind::Length},
        {"measureAngle", tr("Measure an a&ngle"), Qt::Key_A, MeasureKind::Angle},
        {"measureRadius", tr("Measure a &radius"), Qt::Key_R, MeasureKind::Radius},
        {"measureArea", tr("Measure a face's &area"), Qt::SHIFT | Qt::Key_A, MeasureKind::Area},
    };
    for (const auto& tool : tools) {
        QAction* action = MakePageAction(
            tool.name, tool.text, tool.key,
            [kind = tool.kind](DocumentPage& page) {
                page.Measure(page.Measuring() == kind ? std::nullopt : std::optional(kind));
            },
            Needs::View);
        action->setCheckable(true);
        m_measureActions.append({action, tool.kind});
        menu.addAction(action);
    }
    menu.addAction(MakePageAction(
        "clearMeasurements", tr("&Clear measurements"), QKeySequence(),
        [](DocumentPage& page) { page.ClearMeasurements(); }, Needs::View));
}

void MainWindow::MakeInspectionDock()
{
    m_inspection = new InspectionPanel(this);
    m_inspectionDock = new QDockWidget(tr("Section and exploded view"), this);
    m_inspectionDock->setObjectName(QStringLiteral("inspectionDock"));
    m_inspectionDock->setWidget(m_inspection);
    addDockWidget(Qt::RightDockWidgetArea, m_inspectionDock);
    m_inspectionDock->hide();
    m_inspectionDock->toggleViewAction()->setObjectName(QStringLiteral("inspection"));
    m_inspectionDock->toggleViewAction()->setShortcut(Qt::Key_X);
    connect(m_inspection, &InspectionPanel::SectionChanged, this, [this] {
        if (DocumentPage* page = CurrentPage()) {
            page->SetSection(m_inspection->Section());
        }
    });
    connect(m_inspection, &InspectionPanel::ExplosionChanged, this, [this] {
        if (DocumentPage* page = CurrentPage()) {
            page->SetExplosion(m_inspection->Explosion());
        }
    });
}

void MainWindow::ShowTools()
{
    const DocumentPage* page = CurrentPage();
    m_inspection->setEnabled(page != nullptr);
    m_inspection->Show(page ? page->Section() : SectionPlane(), page ? page->Explosion() : 0.0);
    for (const auto& [action, kind] : std::as_const(m_measureActions)) {
        action->setChecked(page && page->Measuring() == kind);
    }
    if (page && m_outdated.contains(QFileInfo(page->Source().file).absoluteFilePath())) {
        m_notice->Say(
            tr("%1 has changed since it was imported.").arg(QFileInfo(page->Source().file).fileName()));
    } else {
        m_notice->hide();
    }
}

void MainWindow::CopyPicture(DocumentPage& page)
{
    QGuiApplication::clipboard()->setImage(page.View()->Picture());
    statusBar()->showMessage(tr("The picture is in the clipboard."), StatusMilliseconds);
}

void MainWindow::SavePicture(DocumentPage& page)
{
    ViewerSettings settings;
    const QImage picture = page.View()->Picture(); // before a dialog stands over the view
    const QFileInfo source(page.Source().file);
    const QString folder = settings.Folder(PicturePurpose);
    const QString file =
        QFileDialog::getSaveFileName(this, tr("Save the picture"),
                                     QDir(folder.isEmpty() ? source.absolutePath() : folder)
                                         .filePath(source.completeBaseName() + QStringLiteral(".png")),
                                     WritableImages());
    if (file.isEmpty()) {
        return;
    }
    settings.SetFolderOf(PicturePurpose, file);
    const QString failure = WriteImageFile(picture, file);
    if (failure.isEmpty()) {
        statusBar()->showMessage(tr("%1 is saved.").arg(QDir::toNativeSeparators(file)), StatusMilliseconds);
    } else {
        QMessageBox::warning(this, tr("Save the picture"), tr("%1 cannot be written: %2").arg(file, failure));
    }
}

void MainWindow::ShowStatistics(DocumentPage& page)
{
    auto* dialog = new StatisticsDialog(page.Nodes(), page.Source().file, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &StatisticsDialog::Chosen, &page,
            [&page](int position) { page.Select(&page.Nodes().Node(position)); });
    connect(&page, &QObject::destroyed, dialog, &QDialog::close);
    dialog->show();
}

void MainWindow::ShowHelp()
{
    QList<QAction*> actions;
    for (const QMenu* menu : findChildren<QMenu*>()) {
        actions += menu->actions();
    }
    auto* dialog = new HelpDialog(actions, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void MainWindow::Reload(DocumentPage& page)
{
    m_outdated.remove(QFileInfo(page.Source().file).absoluteFilePath());
    m_replaced = &page;
    ShowTools();
    m_importer->Reload(page.Source());
}

/// Puts a page that came of a reload where the old one stands, looking from where that did.
void MainWindow::TakePlaceOf(DocumentPage& old, DocumentPage& page)
{
    page.SetSection(old.Section());
    page.SetExplosion(old.Explosion());
    if (page.View() && old.View()) {
        page.View()->SetCamera(old.View()->ViewCamera());
    }
    m_tabs->tabBar()->moveTab(m_tabs->indexOf(&page), m_tabs->indexOf(&old));
    ClosePage(m_tabs->indexOf(&old));
    m_tabs->setCurrentWidget(&page);
}
