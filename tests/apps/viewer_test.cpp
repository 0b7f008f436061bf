// The viewer's windows as a user works with them, on a real display.

#include "apps/render/Picture.h"
#include "apps/viewer/Appearance.h"
#include "apps/viewer/BusyWindow.h"
#include "apps/viewer/DocumentPage.h"
#include "apps/viewer/ExportDialog.h"
#include "apps/viewer/HelpDialog.h"
#include "apps/viewer/LogPanel.h"
#include "apps/viewer/MainWindow.h"
#include "apps/viewer/NodeTree.h"
#include "apps/viewer/NoticeBar.h"
#include "apps/viewer/SceneView.h"
#include "apps/viewer/StatisticsDialog.h"
#include "apps/viewer/Texts.h"
#include "apps/viewer/ViewCube.h"
#include "apps/viewer/ViewerSettings.h"
#include "cadexchange/CZemtarCADExchangeImportDlg.h"
#include "host/CZemtar3DObject.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarTransformNode.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/Waiting.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QSlider>
#include <QStatusBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <functional>
#include <iostream>

using namespace Zemtar;
using Zemtar::Test::Await;
using Zemtar::Test::Patience;

namespace {

const QString Pump = QStringLiteral(ZEMTAR_SOURCE_DIR "/examples/pump.step");
const QString Bracket = QStringLiteral(ZEMTAR_SOURCE_DIR "/examples/bracket.igs");

class Viewer : public testing::Test
{
protected:
    Viewer()
    {
        QSettings(BrandingText(CZemtarBranding::OrganizationName),
                  BrandingText(CZemtarBranding::ApplicationName))
            .clear();
        window = std::make_unique<MainWindow>();
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get(), Patience)) << "the main window is not shown";
    }

    template <class Widget>
    Widget* Find(const char* name = nullptr)
    {
        for (Widget* widget : window->findChildren<Widget*>(QString::fromLatin1(name))) {
            if (widget->isVisible()) {
                return widget;
            }
        }
        return nullptr;
    }
    /// Waits for a visible widget; the test ends with its class and name when it does not come.
    template <class Widget>
    Widget* AwaitWidget(const char* name = nullptr)
    {
        const std::string what = std::string(Widget::staticMetaObject.className()) + " " + (name ? name : "");
        const testing::AssertionResult came = Await(what, [&] { return Find<Widget>(name) != nullptr; });
        if (!came) {
            throw std::runtime_error(came.message());
        }
        return Find<Widget>(name);
    }
    void AwaitPages(int count)
    {
        auto* tabs = window->findChild<QTabWidget*>();
        const auto* importer = window->findChild<Importer*>();
        EXPECT_TRUE(Await(std::to_string(count) + " pages and an idle importer",
                          [&] { return tabs->count() == count && !importer->IsBusy(); }))
            << tabs->count() << " pages";
    }
    DocumentPage* Import(const QString& file)
    {
        const int pages = window->findChild<QTabWidget*>()->count();
        window->Open({file});
        AwaitWidget<CZemtarCADExchangeImportDlg>()->accept();
        AwaitPages(pages + 1);
        return window->CurrentPage();
    }
    void Trigger(const char* action) { window->findChild<QAction*>(QString::fromLatin1(action))->trigger(); }
    /// Closes the message box that comes and gives its texts.
    QString TakeMessage()
    {
        auto* box = AwaitWidget<QMessageBox>();
        QString text = box->text() + '\n' + box->informativeText();
        box->accept();
        QTest::qWait(0);
        return text;
    }
    /// The value shown beside a property's name, in any section.
    QString Property(const QString& name)
    {
        const auto* panel = window->findChild<QTreeWidget*>(QStringLiteral("properties"));
        const auto rows = panel->findItems(name, Qt::MatchExactly | Qt::MatchRecursive);
        return rows.isEmpty() ? QString() : rows.first()->text(1);
    }
    void Drop(const QStringList& files)
    {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& file : files) {
            urls << QUrl::fromLocalFile(file);
        }
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &enter);
        QDropEvent event(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &event);
    }
    /// Calls `act` once, as soon as the work behind a busy window tells how far it is.
    void WhenBusy(std::function<void(BusyWindow&)> act)
    {
        auto* watch = new QTimer(window.get());
        QObject::connect(watch, &QTimer::timeout, watch, [this, watch, act = std::move(act)] {
            auto* busy = Find<BusyWindow>("busy");
            if (busy && busy->findChild<QProgressBar*>()->maximum() > 0) {
                watch->deleteLater();
                watch->stop();
                act(*busy);
            }
        });
        watch->start(0);
    }
    QString FileWith(const char* name, const QByteArray& content)
    {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return file.fileName();
    }

    QTemporaryDir folder;
    std::unique_ptr<MainWindow> window;
};

} // namespace

TEST_F(Viewer, ImportUsesTheDialogsValuesAndShowsTheDocument)
{
    EXPECT_TRUE(Find<QWidget>("startPage"));
    window->Open({Pump});
    auto* dialog = AwaitWidget<CZemtarCADExchangeImportDlg>();
    EXPECT_FALSE(dialog->windowIcon().isNull());
    dialog->findChild<QSlider*>()->setValue(95);
    dialog->accept();
    AwaitPages(1);
    const qint64 coarse = window->CurrentPage()->Nodes().Totals().triangles;
    EXPECT_FALSE(Find<QWidget>("startPage"));
    EXPECT_EQ(ViewerSettings().RecentFiles(), QStringList{Pump});
    window->Open({Pump});
    dialog = AwaitWidget<CZemtarCADExchangeImportDlg>();
    EXPECT_EQ(dialog->GetTesselationValue(), 95);
    dialog->findChild<QSlider*>()->setValue(20);
    dialog->accept();
    AwaitPages(2);
    EXPECT_GT(window->CurrentPage()->Nodes().Totals().triangles, coarse);
    EXPECT_TRUE(window->findChild<QLabel*>("totals")->text().contains("22 parts"));
    Trigger("close");
    Trigger("close");
    EXPECT_TRUE(Find<QWidget>("startPage"));
    EXPECT_EQ(Find<QListWidget>("recentFiles")->count(), 1);
}

TEST_F(Viewer, TreeViewAndPropertiesShowOneSelection)
{
    DocumentPage* page = Import(Pump);
    page->Tree()->BeginSearch();
    auto* search = Find<QLineEdit>("search");
    QTest::keyClicks(search, QStringLiteral("deckel"));
    QTest::keyClick(search, Qt::Key_Return);
    ASSERT_TRUE(page->Selected());
    EXPECT_EQ(Property("Name"), QStringLiteral("Deckel"));
    const CZemtarSceneNode* first = page->Selected();
    QTest::keyClick(search, Qt::Key_Return);
    EXPECT_NE(page->Selected(), first);
    QTest::keyClick(search, Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(page->Selected(), first);
    EXPECT_TRUE(Find<QLabel>("matches")->text().startsWith("1 "));
    const int all = page->Tree()->Model().rowCount(page->Tree()->Model().index(0, 0));
    Find<QToolButton>("filter")->click();
    EXPECT_LT(page->Tree()->Model().rowCount(page->Tree()->Model().index(0, 0)), all);
    EXPECT_EQ(page->Selected(), first);

    const NodeList& nodes = page->Nodes();
    int mesh = 0;
    while (KindOf(nodes.Node(mesh)) != NodeKind::Mesh) {
        ++mesh;
    }
    page->Select(&nodes.Node(mesh)); // as picking does; the filter leaves it out and goes
    EXPECT_FALSE(page->Tree()->Model().IsFiltered());
    EXPECT_EQ(Property("Kind"), KindName(NodeKind::Mesh));
    EXPECT_EQ(Property("Triangles"), QLocale().toString(nodes.Subtree(mesh).triangles));
    EXPECT_TRUE(Property("Diffuse").startsWith('#'));
    page->Select(&nodes.Node(0));
    EXPECT_EQ(Property("Triangles"),
              QStringLiteral("%1 below").arg(QLocale().toString(nodes.Totals().triangles)));
    EXPECT_FALSE(Property("Size (mm)").isEmpty());
}

TEST_F(Viewer, AClickInTheViewSelectsAndHidingTakesAway)
{
    DocumentPage* page = Import(Pump);
    SceneView* view = page->View();
    if (!view) {
        EXPECT_FALSE(Find<QLabel>("viewProblem")->text().isEmpty());
        GTEST_SKIP() << "no OpenGL here";
    }
    view->Fit();
    const QPoint middle = view->rect().center();
    const CZemtarSceneNode* node = nullptr;
    ASSERT_TRUE(
        Await("a node in the middle of the view", [&] { return (node = view->NodeAt(middle)) != nullptr; }));
    QTest::mouseClick(view, Qt::LeftButton, Qt::NoModifier, middle);
    ASSERT_TRUE(page->Selected());
    EXPECT_EQ(KindOf(*page->Selected()), NodeKind::Part);
    EXPECT_FALSE(Property("Volume (cm³)").isEmpty());
    EXPECT_TRUE(Property("Diffuse").startsWith('#'));
    QTest::qWait(QApplication::doubleClickInterval() + 100); // else it is a double click
    QTest::mouseClick(view, Qt::LeftButton, Qt::NoModifier, middle);
    EXPECT_EQ(page->Selected(), node);
    EXPECT_EQ(Property("Id"), QString::number(node->ID().Value()));
    Trigger("hide");
    EXPECT_TRUE(page->Hidden().contains(node));
    EXPECT_NE(view->NodeAt(middle), node);
    Trigger("showAll");
    EXPECT_EQ(view->NodeAt(middle), node);
    Trigger("isolate");
    EXPECT_EQ(page->Isolated(), node);
    EXPECT_TRUE(page->Tree()->Model().IsShown(0));
    EXPECT_FALSE(page->Tree()->Model().IsShown(page->Nodes().Count() - 1));
}

TEST_F(Viewer, ToolsMeasureCutAndExplodeTheView)
{
    DocumentPage* page = Import(Pump);
    SceneView* view = page->View();
    if (!view) {
        GTEST_SKIP() << "no OpenGL here";
    }
    const QPoint middle = view->rect().center();
    ASSERT_TRUE(Await("a node in the middle", [&] { return view->NodeAt(middle) != nullptr; }));
    QImage whole;
    ASSERT_TRUE(Await("a picture at rest", [&] {
        const QImage last = std::exchange(whole, view->Picture());
        QTest::qWait(100);
        return last == whole;
    }));
    page->SetSection({true, 0, 0.5, false});
    const QImage cut = view->Picture();
    EXPECT_NE(cut, whole);
    page->SetSection({});
    EXPECT_EQ(view->Picture(), whole);

    Trigger("measureArea");
    EXPECT_TRUE(window->findChild<QAction*>("measureArea")->isChecked());
    QTest::mouseClick(view, Qt::LeftButton, {}, middle);
    ASSERT_EQ(page->Measurements().size(), 1U);
    EXPECT_GT(page->Measurements()[0].value, 0.0);
    EXPECT_FALSE(page->Selected()) << "a click while measuring selects nothing";
    EXPECT_NE(view->Picture(), whole);
    Trigger("deselect"); // Esc
    EXPECT_FALSE(page->Measuring());
    Trigger("clearMeasurements");
    EXPECT_EQ(view->Picture(), whole);

    const double before = view->Model().Extent().Radius();
    window->findChild<QSlider*>("explosion")->setValue(500);
    EXPECT_GT(view->Model().Extent().Radius(), 1.2 * before);
    page->SetExplosion(0.0);
    auto* cube = Find<ViewCube>();
    QTest::mouseClick(cube, Qt::LeftButton, {}, cube->rect().center() - QPoint(0, cube->height() / 4));
    EXPECT_NEAR(view->ViewCamera().Forward().z, -1.0, 1e-6) << "the top of the cube looks down";
}

TEST_F(Viewer, AFileThatChangedIsReloadedInItsPlace)
{
    const QString file = folder.filePath("growing.igs");
    ASSERT_TRUE(QFile::copy(Bracket, file));
    ASSERT_TRUE(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner));
    DocumentPage* old = Import(file);
    const qint64 triangles = old->Nodes().Totals().triangles;
    EXPECT_FALSE(Find<NoticeBar>());
    QFile(file).remove();
    ASSERT_TRUE(QFile::copy(Bracket, file));
    AwaitWidget<NoticeBar>()->findChild<QPushButton*>("answer")->click();
    ASSERT_TRUE(Await("the new page", [&] { return window->CurrentPage() && window->CurrentPage() != old; }));
    AwaitPages(1);
    EXPECT_EQ(window->CurrentPage()->Nodes().Totals().triangles, triangles);
    EXPECT_FALSE(Find<NoticeBar>());
    Trigger("statistics");
    auto* statistics = AwaitWidget<StatisticsDialog>();
    EXPECT_EQ(statistics->Save(folder.filePath("parts.csv")), QString());
    EXPECT_GT(QFileInfo(folder.filePath("parts.csv")).size(), 50);
    EXPECT_FALSE(statistics->Save(folder.filePath("no/parts.csv")).isEmpty());
    Trigger("keys");
    EXPECT_TRUE(AwaitWidget<HelpDialog>()->findChild<QTextBrowser*>()->toPlainText().contains("F5"));
}

TEST_F(Viewer, DraggingARowOutMakesAFileOnDemand)
{
    DocumentPage* page = Import(Bracket);
    ViewerSettings().SetExportFormat("STL");
    const std::unique_ptr<QMimeData> data(page->Tree()->Model().mimeData({}));
    ASSERT_TRUE(data->hasUrls());
    const QList<QUrl> urls = data->urls();
    ASSERT_EQ(urls.size(), 1);
    EXPECT_TRUE(urls[0].toLocalFile().endsWith("bracket.stl"));
    EXPECT_GT(QFileInfo(urls[0].toLocalFile()).size(), 84);
}

TEST_F(Viewer, FocusInTheTreeSelectsNothingAndSearchFindsMetadata)
{
    DocumentPage* page = Import(Pump);
    window->activateWindow();
    page->Tree()->setFocus();
    QTest::qWait(0);
    EXPECT_FALSE(page->Selected());
    const NodeList& nodes = page->Nodes();
    int withData = 0;
    while (withData < nodes.Count() && nodes.Node(withData).MetaData()->IsEmpty()) {
        ++withData;
    }
    if (withData < nodes.Count()) {
        std::map<CZemtarString, CZemtarMetaData::NamedValues> categories;
        nodes.Node(withData).MetaData()->ListNamedValues(categories);
        const QString value = Text(categories.begin()->second.begin()->second);
        Find<QLineEdit>("search")->setText(value);
        ASSERT_TRUE(Await("the first hit", [&] { return page->Selected() != nullptr; }));
        EXPECT_EQ(page->Selected(), &nodes.Node(nodes.Row(nodes.Find(value).front())));
    }
}

TEST_F(Viewer, MenusGiveEachLetterOnceAndRecentFilesOpenAtAClick)
{
    for (const QMenu* menu : window->findChildren<QMenu*>()) {
        QSet<QString> letters;
        for (const QAction* action : menu->actions()) {
            const QString letter = QKeySequence::mnemonic(action->text()).toString();
            EXPECT_TRUE(letter.isEmpty() || !letters.contains(letter)) << action->text().toStdString();
            letters << letter;
        }
    }
    Import(Bracket);
    Trigger("close");
    auto* recent = AwaitWidget<QListWidget>("recentFiles");
    QTest::mouseClick(recent->viewport(), Qt::LeftButton, {},
                      recent->visualItemRect(recent->item(0)).center());
    AwaitWidget<CZemtarCADExchangeImportDlg>()->accept();
    AwaitPages(1);
}

TEST_F(Viewer, DarkShowsBoxesAndButtonsWhenItIsChosenAtRunTime)
{
    ApplyAppearance(ViewerSettings::Appearance::Light);
    QTest::qWait(0);
    ApplyAppearance(ViewerSettings::Appearance::Dark);
    QTest::qWait(0);
    const auto contrast = [](QWidget& widget, int width) {
        const QImage image = widget.grab().toImage();
        int least = 255;
        int most = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < std::min(width, image.width()); ++x) {
                least = std::min(least, qGray(image.pixel(x, y)));
                most = std::max(most, qGray(image.pixel(x, y)));
            }
        }
        return most - least;
    };
    QCheckBox box;
    EXPECT_GT(contrast(box, 1000), 60) << "the outline of a box that is not ticked";
    auto* button = Find<QPushButton>();
    ASSERT_TRUE(button);
    EXPECT_GT(contrast(*button, 1000), 100) << "the text of the start page's button";
    EXPECT_LT(button->grab().toImage().pixelColor(button->width() - 20, button->height() / 2).lightness(),
              128);
    ApplyAppearance(ViewerSettings::Appearance::Light);
}

TEST(NodeListTest, AGroupWithItsPartAndMeshOfOneNameIsOneRow)
{
    const std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
    const Zemtar::Test::SceneBuilder build{*document};
    CZemtarSceneNode* top = build.Group("top", nullptr, CZemtarSceneNode::eNodeTypeAssembly);
    CZemtarSceneNode* group = build.Group("bolt", top, CZemtarSceneNode::eNodeTypeGroup);
    const CZemtarSceneNode* part = build.Group("bolt", group, CZemtarSceneNode::eNodeTypePart);
    const CZemtarSceneNode* mesh =
        build.Mesh("bolt", const_cast<CZemtarSceneNode*>(part), build.Box(1, 1, 1));
    CZemtarSceneNode* other = build.Group("two", top, CZemtarSceneNode::eNodeTypePart);
    build.Mesh("two", other, build.Box(1, 1, 1));
    const CZemtarSceneNode* second = build.Mesh("two", other, build.Box(1, 1, 1));
    const NodeList nodes(*document);
    const int row = nodes.Position(part);
    EXPECT_EQ(nodes.Row(nodes.Position(group)), row);
    EXPECT_EQ(nodes.Row(nodes.Position(mesh)), row);
    NodeModel model(nodes);
    EXPECT_EQ(model.rowCount(model.IndexOf(0)), 2);
    EXPECT_EQ(model.rowCount(model.IndexOf(row)), 0);
    EXPECT_EQ(model.rowCount(model.IndexOf(nodes.Position(other))), 2);
    EXPECT_EQ(model.parent(model.IndexOf(nodes.Position(mesh))), model.IndexOf(0));
    EXPECT_EQ(model.NodeOf(model.IndexOf(nodes.Position(group))), part);
    model.SetVisibility({mesh}, nullptr);
    EXPECT_FALSE(model.IsShown(row));
    EXPECT_EQ(nodes.Picked(second, nullptr), other);
    EXPECT_EQ(nodes.Picked(second, part), other);
    EXPECT_EQ(nodes.Picked(second, other), second);
}

TEST_F(Viewer, AnExportComesBackTheSame)
{
    DocumentPage* page = Import(Pump);
    const NodeCounts totals = page->Nodes().Totals();
    const QString file = folder.filePath(QStringLiteral("größe.step"));
    Trigger("export");
    auto* dialog = AwaitWidget<ExportDialog>();
    dialog->findChild<QComboBox*>("unit")->setCurrentText("inches (in)");
    dialog->SetFile(file);
    dialog->accept();
    ASSERT_TRUE(Await("the exported file", [&] { return QFileInfo(file).size() > 0 && !Find<QDialog>(); }));
    const NodeCounts again = Import(file)->Nodes().Totals();
    EXPECT_EQ(again.triangles, totals.triangles);
    EXPECT_EQ(again.meshes, totals.meshes);

    Trigger("export");
    dialog = AwaitWidget<ExportDialog>();
    dialog->SetFile(folder.filePath("no/such/folder.stp"));
    dialog->accept();
    EXPECT_TRUE(TakeMessage().contains("Failed to write the file"));
}

TEST_F(Viewer, CancelDuringAnImportLeavesNothing)
{
    const QString textures = folder.filePath("textures");
    ViewerSettings().SetTextureFolder(textures);
    WhenBusy([this](BusyWindow& busy) {
        window->Open({Bracket}); // joins the batch, which goes too
        QTest::mouseClick(busy.findChild<QPushButton*>("cancel"), Qt::LeftButton);
    });
    window->Open({Pump, Pump});
    AwaitWidget<CZemtarCADExchangeImportDlg>()->accept();
    AwaitPages(0);
    EXPECT_TRUE(window->findChild<QStatusBar*>()->currentMessage().contains("cancelled"));
    EXPECT_FALSE(Find<QDialog>());
    EXPECT_TRUE(ViewerSettings().RecentFiles().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(textures));
    ViewerSettings().SetTextureFolder({});

    WhenBusy([](BusyWindow& busy) { QTest::keyClick(&busy, Qt::Key_Escape); });
    window->Open({Bracket});
    AwaitWidget<CZemtarCADExchangeImportDlg>()->accept();
    AwaitPages(0);
    EXPECT_TRUE(Import(Bracket)) << "the next import works as ever";
}

TEST_F(Viewer, CancelDuringAnExportKeepsWhatWasThere)
{
    Import(Pump);
    for (const char* name : {"kept.step", "kept.glb", "kept.obj"}) {
        const QString file = FileWith(name, "before");
        bool isDuring = false;
        WhenBusy([&](BusyWindow& busy) {
            isDuring = true;
            busy.reject();
        });
        Trigger("export");
        auto* dialog = AwaitWidget<ExportDialog>();
        dialog->SetFile(file);
        dialog->accept();
        AwaitWidget<QMessageBox>()->button(QMessageBox::Yes)->click();
        ASSERT_TRUE(Await("the cancelled export", [&] { return isDuring && !Find<QDialog>(); }));
        EXPECT_EQ(QFileInfo(file).size(), 6) << name;
    }
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 3);
}

TEST_F(Viewer, ClosingDuringAnImportEndsBoth)
{
    WhenBusy([this](BusyWindow&) { window->close(); });
    window->Open({Pump});
    AwaitWidget<CZemtarCADExchangeImportDlg>()->accept();
    EXPECT_TRUE(Await("the closed window", [&] { return !window->isVisible(); }));
    EXPECT_EQ(window->findChild<QTabWidget*>()->count(), 0);
}

TEST_F(Viewer, FailuresAreToldAndTheWindowLives)
{
    const QString damaged = FileWith("damaged.step", "ISO-10303-21;\nHEADER;\nDATA;\n#1=PRODUCT(");
    const QString noEngine = FileWith("noengine.xpr", "Creo");
    Drop({damaged, noEngine});
    AwaitWidget<CZemtarCADExchangeImportDlg>()->accept();
    ASSERT_TRUE(Await("the dialog of Creo",
                      [&] { return Find<QDialog>() && Find<QDialog>()->windowTitle().contains("Creo"); }));
    AwaitWidget<CZemtarCADExchangeImportDlg>()->accept();
    const QString message = TakeMessage();
    EXPECT_TRUE(message.contains("Failed to read the file " + damaged)) << message.toStdString();
    EXPECT_TRUE(message.contains("no engine")) << message.toStdString();
    EXPECT_TRUE(window->findChild<LogPanel*>()->toPlainText().contains(damaged));
    EXPECT_TRUE(Import(Bracket));
}

TEST_F(Viewer, ADocumentWithoutGeometryShowsAHint)
{
    const std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
    CZemtarSceneNode* assembly = CZemtarTransformNode::Create(document.get());
    assembly->SetNodeType(CZemtarSceneNode::eNodeTypeAssembly);
    assembly->SetName("hollow");
    const QString file = folder.filePath("hollow.step");
    ASSERT_TRUE(ExportDocument(*document, file, {.format = FormatByName("STEP")}));
    DocumentPage* page = Import(file);
    EXPECT_GT(page->Nodes().Count(), 0);
    EXPECT_EQ(Find<QLabel>("hint") != nullptr, page->View() != nullptr);
    page->Select(&page->Nodes().Node(0));
    EXPECT_EQ(Property("Name"), "hollow");
    EXPECT_TRUE(Property("Size (mm)").isEmpty());
}

TEST_F(Viewer, SeveralFilesOfOneFormatAskOnceAndTwoMeaningsAskWhich)
{
    const QString copy = folder.filePath("copy.step");
    ASSERT_TRUE(QFile::copy(Pump, copy));
    Drop({Pump, copy});
    AwaitWidget<CZemtarCADExchangeImportDlg>()->accept();
    AwaitPages(2);
    Drop({FileWith("wheel.prt", "?")});
    auto* choice = AwaitWidget<QInputDialog>();
    EXPECT_EQ(choice->comboBoxItems().size(), 2);
    choice->reject();
    QTest::qWait(0);
    EXPECT_FALSE(Find<QDialog>());
}

TEST_F(Viewer, ClosingWhileADialogIsOpenEndsInPeace)
{
    Import(Bracket);
    window->Open({Pump, Bracket});
    AwaitWidget<CZemtarCADExchangeImportDlg>();
    window->close();
    QTest::qWait(0);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(window->findChild<QTabWidget*>()->count(), 1);
    window = std::make_unique<MainWindow>();
    window->show();
    window->Open({Pump});
    AwaitWidget<CZemtarCADExchangeImportDlg>();
    window.reset(); // dialog and all
}

TEST(ViewerProgram, ScreenshotRunsWithoutAUser)
{
    const QTemporaryDir folder;
    const auto run = [](const QStringList& arguments) {
        QProcess process;
        process.start(QStringLiteral(ZEMTAR_BINARY_DIR "/bin/zemtar-viewer"), arguments);
        process.waitForFinished(Patience);
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    };
    const QString picture = folder.filePath("pump.png");
    const bool canDraw = MissingOpenGL().isEmpty();
    EXPECT_EQ(run({"--screenshot", picture, "--size", "320x200", "--view", "front", Pump}), canDraw ? 0 : 1);
    EXPECT_EQ(QImage(picture).size(), canDraw ? QSize(320, 200) : QSize(0, 0));
    EXPECT_EQ(run({"--screenshot", folder.filePath("no/such.png"), Pump}), 1);
    EXPECT_EQ(run({"--screenshot", picture, folder.filePath("missing.step")}), 1);
    EXPECT_EQ(run({"--screenshot", picture, "--view", "inside", Pump}), 2);
    EXPECT_EQ(run({"--screenshot", picture}), 2);
    EXPECT_EQ(run({"--wings"}), 2);
    EXPECT_EQ(run({"--version"}), 0);

    const QStringList turntable{"--screenshot", folder.filePath("turn.png"), "--size", "80x60",
                                "--turntable"};
    EXPECT_EQ(run(turntable + QStringList{"4", Pump}), canDraw ? 0 : 1);
    const QStringList frames = QDir(folder.path()).entryList({"turn-00*.png"});
    EXPECT_EQ(frames.size(), canDraw ? 4 : 0);
    for (int i = 1; i < frames.size(); ++i) {
        EXPECT_NE(QImage(folder.filePath(frames[i])), QImage(folder.filePath(frames[i - 1])));
    }
    EXPECT_EQ(run(turntable + QStringList{"0", Pump}), 2);
}

TEST(ThumbnailerProgram, DrawsAPngOfTheSizeThatIsAsked)
{
    const QTemporaryDir folder;
    const auto run = [](const QStringList& arguments) {
        QProcess process;
        process.start(QStringLiteral(ZEMTAR_BINARY_DIR "/bin/zemtar-thumbnailer"), arguments);
        process.waitForFinished(Patience);
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    };
    const QString picture = folder.filePath("no-extension");
    const bool canDraw = MissingOpenGL().isEmpty();
    EXPECT_EQ(run({"-s", "96", QUrl::fromLocalFile(Pump).toString(), picture}), canDraw ? 0 : 1);
    EXPECT_EQ(QImage(picture, "PNG").size(), canDraw ? QSize(96, 96) : QSize(0, 0));
    EXPECT_EQ(run({folder.filePath("missing.step"), picture + "2"}), 1);
    EXPECT_FALSE(QFileInfo::exists(picture + "2"));
    EXPECT_EQ(run({"-s", "huge", Pump, picture}), 2);
    EXPECT_EQ(run({Pump}), 2);
}

int main(int argc, char** argv)
{
    const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toUtf8()); // for the program that a test starts
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    const QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
