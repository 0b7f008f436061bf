// The window's menus, tool bar and keys.

#include "apps/viewer/Appearance.h"
#include "apps/viewer/DocumentPage.h"
#include "apps/viewer/Icons.h"
#include "apps/viewer/ImportOptionsDialog.h"
#include "apps/viewer/Importer.h"
#include "apps/viewer/MainWindow.h"
#include "apps/viewer/SceneView.h"
#include "apps/viewer/StartPage.h"
#include "apps/viewer/Texts.h"
#include "apps/viewer/ViewerSettings.h"

#include <QActionGroup>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QMenuBar>
#include <QTabWidget>
#include <QToolBar>

using namespace Zemtar;

namespace {

struct ViewAction
{
    StandardView view;
    Glyph glyph;
    const char* name;
};

// In the order of their keys, 1 to 7.
constexpr ViewAction ViewActions[] = {
    {StandardView::Iso, Glyph::ViewIso, QT_TRANSLATE_NOOP("MainWindow", "&Isometric")},
    {StandardView::Front, Glyph::ViewFront, QT_TRANSLATE_NOOP("MainWindow", "&Front")},
    {StandardView::Back, Glyph::ViewBack, QT_TRANSLATE_NOOP("MainWindow", "&Back")},
    {StandardView::Left, Glyph::ViewLeft, QT_TRANSLATE_NOOP("MainWindow", "&Left")},
    {StandardView::Right, Glyph::ViewRight, QT_TRANSLATE_NOOP("MainWindow", "&Right")},
    {StandardView::Top, Glyph::ViewTop, QT_TRANSLATE_NOOP("MainWindow", "&Top")},
    {StandardView::Bottom, Glyph::ViewBottom, QT_TRANSLATE_NOOP("MainWindow", "B&ottom")},
};

/// Tool tips of buttons name the key, as those of menus do.
void NameKeyInToolTip(QAction& action)
{
    const QString key = action.shortcut().toString(QKeySequence::NativeText);
    if (!key.isEmpty()) {
        action.setToolTip(QStringLiteral("%1 (%2)").arg(action.toolTip(), key));
    }
}

} // namespace

QAction* MainWindow::MakePageAction(const char* name, const QString& text, const QKeySequence& key,
                                    std::function<void(DocumentPage&)> run, Needs needs)
{
    auto* action = new QAction(text, this);
    action->setObjectName(QString::fromLatin1(name));
    action->setShortcut(key);
    connect(action, &QAction::triggered, this, [this, run = std::move(run)] {
        if (DocumentPage* page = CurrentPage()) {
            run(*page);
        }
    });
    m_pageActions.append({action, needs});
    return action;
}

void MainWindow::MakeActions()
{
    MakeFileMenu();
    MakeEditMenu();
    MakeViewMenu();
    MakeToolsAndHelpMenus();
    MakeToolBar();
}

void MainWindow::MakeFileMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&File"));
    m_import =
        menu->addAction(Icons::Of(Glyph::Import), tr("&Import CAD files..."), this, &MainWindow::AskForFiles);
    m_import->setObjectName(QStringLiteral("import"));
    m_import->setShortcut(QKeySequence::Open);
    m_recentMenu = menu->addMenu(tr("Import &recent"));
    connect(m_recentMenu, &QMenu::aboutToShow, this, &MainWindow::FillRecentFiles);
    menu->addAction(tr("Import &options..."), this, [this] {
        auto* dialog = new ImportOptionsDialog(this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->open();
    });
    menu->addSeparator();
    QAction* exportAction = MakePageAction("export", tr("&Export..."), QKeySequence(tr("Ctrl+E")),
                                           [this](DocumentPage&) { AskForExport(); });
    exportAction->setIcon(Icons::Of(Glyph::Export));
    menu->addAction(exportAction);
    menu->addAction(MakePageAction("reload", tr("Re&load"), QKeySequence(Qt::Key_F5),
                                   [this](DocumentPage& page) { Reload(page); }));
    menu->addSeparator();
    menu->addAction(MakePageAction(
        "savePicture", tr("&Save picture..."), QKeySequence(tr("Ctrl+Shift+S")),
        [this](DocumentPage& page) { SavePicture(page); }, Needs::View));
    m_openImage =
        menu->addAction(Icons::Of(Glyph::Image), tr("Open i&mage..."), this, &MainWindow::AskForImage);
    m_openImage->setShortcut(QKeySequence(tr("Ctrl+Shift+O")));
    menu->addSeparator();
    menu->addAction(MakePageAction("close", tr("&Close document"), QKeySequence::Close,
                                   [this](DocumentPage&) { ClosePage(m_tabs->currentIndex()); }));
    QAction* quit = menu->addAction(tr("&Quit"), this, &QWidget::close);
    quit->setShortcut(QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);
}

void MainWindow::MakeEditMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Edit"));
    QAction* find =
        MakePageAction("find", tr("&Find node..."), QKeySequence::Find, [this](DocumentPage& page) {
            m_treeDock->show();
            page.Tree()->BeginSearch();
        });
    find->setIcon(Icons::Of(Glyph::Search));
    QAction* hide = MakePageAction(
        "hide", tr("&Hide or show node"), QKeySequence(Qt::Key_H),
        [](DocumentPage& page) { page.ToggleHidden(page.Selected()); }, Needs::Selection);
    hide->setIcon(Icons::Of(Glyph::EyeOff));
    QAction* isolate = MakePageAction(
        "isolate", tr("&Isolate node"), QKeySequence(Qt::Key_I),
        [](DocumentPage& page) { page.Isolate(page.Selected()); }, Needs::Selection);
    isolate->setIcon(Icons::Of(Glyph::Isolate));
    QAction* showAll = MakePageAction("showAll", tr("Show &all nodes"), QKeySequence(Qt::SHIFT | Qt::Key_H),
                                      [](DocumentPage& page) { page.ShowAll(); });
    showAll->setIcon(Icons::Of(Glyph::ShowAll));
    QAction* expand = MakePageAction(
        "expand", tr("E&xpand all below"), QKeySequence(Qt::CTRL | Qt::Key_Right),
        [](DocumentPage& page) { page.Tree()->ExpandBelow(page.Selected()); }, Needs::Selection);
    QAction* collapse = MakePageAction(
        "collapse", tr("&Collapse"), QKeySequence(Qt::CTRL | Qt::Key_Left),
        [](DocumentPage& page) { page.Tree()->CollapseBelow(page.Selected()); }, Needs::Selection);
    QAction* deselect =
        MakePageAction("deselect", tr("&Deselect"), QKeySequence(Qt::Key_Escape), [](DocumentPage& page) {
            if (page.Measuring()) {
                page.Measure(std::nullopt);
            } else {
                page.Select(nullptr);
            }
        });
    QAction* copyPicture = MakePageAction(
        "copyPicture", tr("Copy &picture"), QKeySequence(tr("Ctrl+Shift+C")),
        [this](DocumentPage& page) { CopyPicture(page); }, Needs::View);
    menu->addActions({find, copyPicture});
    menu->addSeparator();
    menu->addActions({hide, isolate, showAll});
    menu->addSeparator();
    menu->addActions({expand, collapse, deselect});
}

void MainWindow::MakeViewMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&View"));
    QAction* fitAll = MakePageAction(
        "fitAll", tr("Fit &all"), QKeySequence(Qt::SHIFT | Qt::Key_F),
        [](DocumentPage& page) { page.View()->Fit(); }, Needs::View);
    QAction* fit = MakePageAction(
        "fit", tr("Fit &selection"), QKeySequence(Qt::Key_F),
        [](DocumentPage& page) { page.View()->Fit(page.Selected()); }, Needs::View);
    fit->setIcon(Icons::Of(Glyph::Fit));
    menu->addActions({fit, fitAll});
    menu->addSeparator();
    MakeStandardViews(*menu);
    menu->addSeparator();
    m_edges = MakePageAction(
        "edges", tr("&Edges"), QKeySequence(Qt::Key_E),
        [this](DocumentPage& page) {
            page.View()->SetEdges(m_edges->isChecked());
            ViewerSettings().SetEdges(m_edges->isChecked());
        },
        Needs::View);
    m_edges->setIcon(Icons::Of(Glyph::Edges));
    m_perspective = MakePageAction(
        "perspective", tr("&Perspective"), QKeySequence(Qt::Key_P),
        [this](DocumentPage& page) {
            page.View()->SetPerspective(m_perspective->isChecked());
            ViewerSettings().SetPerspective(m_perspective->isChecked());
        },
        Needs::View);
    m_perspective->setIcon(Icons::Of(Glyph::Perspective));
    for (QAction* toggle : {m_edges, m_perspective}) {
        toggle->setCheckable(true);
        menu->addAction(toggle);
    }
    menu->addSeparator();
    menu->addActions({m_treeDock->toggleViewAction(), m_propertiesDock->toggleViewAction(),
                      m_inspectionDock->toggleViewAction(), m_logDock->toggleViewAction()});
    m_logDock->toggleViewAction()->setIcon(Icons::Of(Glyph::Log));
    m_propertiesDock->toggleViewAction()->setIcon(Icons::Of(Glyph::Properties));
    menu->addSeparator();
    MakeAppearanceMenu(*menu->addMenu(tr("Appeara&nce")));
}

void MainWindow::MakeStandardViews(QMenu& menu)
{
    int key = Qt::Key_1;
    for (const ViewAction& view : ViewActions) {
        QAction* action = MakePageAction(
            "standardView", tr(view.name), QKeySequence(key++),
            [view](DocumentPage& page) { page.View()->SetStandardView(view.view); }, Needs::View);
        action->setIcon(Icons::Of(view.glyph));
        m_standardViews << action;
    }
    menu.addActions(m_standardViews);
}

void MainWindow::MakeAppearanceMenu(QMenu& menu)
{
    using Choice = ViewerSettings::Appearance;
    auto* group = new QActionGroup(this);
    for (const auto& [look, text] : {std::pair{Choice::System, tr("As the &system")},
                                     {Choice::Light, tr("&Light")},
                                     {Choice::Dark, tr("&Dark")}}) {
        QAction* action = menu.addAction(text, this, [look = look] {
            ViewerSettings().SetLook(look);
            ApplyAppearance(look);
        });
        action->setCheckable(true);
        action->setChecked(ViewerSettings().Look() == look);
        group->addAction(action);
    }
}

void MainWindow::MakeToolsAndHelpMenus()
{
    QMenu* tools = menuBar()->addMenu(tr("&Tools"));
    MakeMeasureActions(*tools);
    tools->addSeparator();
    tools->addAction(MakePageAction("statistics", tr("&Statistics and bill of materials..."),
                                    QKeySequence(tr("Ctrl+B")),
                                    [this](DocumentPage& page) { ShowStatistics(page); }));
    tools->addSeparator();
    m_images =
        tools->addAction(Icons::Of(Glyph::Image), tr("&Images..."), this, [this] { ShowImages(QString()); });
    m_images->setObjectName(QStringLiteral("images"));
    m_images->setToolTip(tr("Look at textures: normal maps, height maps, tone mapping and filters"));
    m_images->setShortcut(QKeySequence(tr("Ctrl+I")));
    QMenu* help = menuBar()->addMenu(tr("&Help"));
    QAction* keys = help->addAction(tr("&Mouse and keys"), this, &MainWindow::ShowHelp);
    keys->setObjectName(QStringLiteral("keys"));
    keys->setShortcut(QKeySequence::HelpContents);
    QAction* about = help->addAction(tr("&About"), this, &MainWindow::ShowAbout);
    about->setMenuRole(QAction::AboutRole);
}

void MainWindow::MakeToolBar()
{
    QToolBar* bar = addToolBar(tr("Tools"));
    bar->setObjectName(QStringLiteral("toolBar"));
    const auto add = [&](const QString& name) { bar->addAction(findChild<QAction*>(name)); };
    add(QStringLiteral("import"));
    add(QStringLiteral("export"));
    bar->addSeparator();
    for (const char* name : {"fit", "isolate", "hide", "showAll"}) {
        add(QString::fromLatin1(name));
    }
    bar->addSeparator();
    bar->addActions(m_standardViews);
    bar->addSeparator();
    bar->addActions({m_edges, m_perspective});
    bar->addSeparator();
    bar->addAction(m_images);
    for (QAction* action : bar->actions()) {
        NameKeyInToolTip(*action);
    }
}

void MainWindow::FillRecentFiles()
{
    m_recentMenu->clear();
    const QStringList files = ViewerSettings().RecentFiles();
    for (const QString& file : files) {
        QAction* action =
            m_recentMenu->addAction(QDir::toNativeSeparators(file).replace('&', QStringLiteral("&&")));
        connect(action, &QAction::triggered, this, [this, file] { Open({file}); });
    }
    if (files.isEmpty()) {
        m_recentMenu->addAction(tr("None yet"))->setEnabled(false);
    }
}

void MainWindow::UpdateActions()
{
    DocumentPage* page = CurrentPage();
    const SceneView* view = page ? page->View() : nullptr;
    for (const auto& [action, needs] : std::as_const(m_pageActions)) {
        action->setEnabled(needs == Needs::View ? view != nullptr
                                                : page && (needs == Needs::Document || page->Selected()));
    }
    m_edges->setChecked(view && view->HasEdges());
    m_perspective->setChecked(view && view->IsPerspective());
}

void MainWindow::ShowContextMenu(const QPoint& globalPosition)
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (const char* name : {"fit", "hide", "isolate", "showAll", "", "expand", "collapse", "", "fitAll"}) {
        if (*name == '\0') {
            menu->addSeparator();
        } else {
            menu->addAction(findChild<QAction*>(QString::fromLatin1(name)));
        }
    }
    menu->popup(globalPosition);
}
