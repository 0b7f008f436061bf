// The viewer's windows as a user works with them, on a real display.

#include "apps/render/Picture.h"
#include "apps/viewer/BusyWindow.h"
#include "apps/viewer/DocumentPage.h"
#include "apps/viewer/ExportDialog.h"
#include "apps/viewer/LogPanel.h"
#include "apps/viewer/MainWindow.h"
#include "apps/viewer/NodeTree.h"
#include "apps/viewer/SceneView.h"
#include "apps/viewer/Texts.h"
#include "apps/viewer/ViewerSettings.h"
#include "cadexchange/CZemtarCADExchangeImportDlg.h"
#include "host/CZemtar3DObject.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarTransformNode.h"
#include "tests/support/Waiting.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
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
