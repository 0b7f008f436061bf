// Pictures as they come out of OpenGL, with and without a window. Skipped where OpenGL 3.3 is missing.

#include "apps/render/Picture.h"
#include "apps/render/Renderer.h"
#include "apps/viewer/SceneView.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Waiting.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace Zemtar;
using namespace Zemtar::Test;

namespace {

enum eHue
{
    Background,
    Grey,
    Red,
    Green,
    Blue,
    Yellow,
    Cyan,
    Magenta
};

/// Names a colour by the channels that are strong in it, whatever the light made of it.
eHue HueOf(const QColor& color)
{
    const int most = std::max({color.red(), color.green(), color.blue()});
    const int least = std::min({color.red(), color.green(), color.blue()});
    if (most - least < 40) {
        return least > 215 ? Background : Grey;
    }
    const int middle = (most + least) / 2;
    const int channels =
        (color.red() > middle ? 1 : 0) | (color.green() > middle ? 2 : 0) | (color.blue() > middle ? 4 : 0);
    constexpr eHue hues[] = {Grey, Red, Green, Yellow, Blue, Magenta, Cyan, Grey};
    return hues[channels];
}

class RenderPictureTest : public ::testing::Test
{
protected:
    CZemtarMaterial* Paint(double r, double g, double b, double opacity = 1.0)
    {
        CZemtarMaterial* material = build.Material(r, g, b);
        material->BasicMaterialAsGeneralMaterial()->SetRunTimeDiffuseColor({r, g, b, 1.0});
        material->BasicMaterialAsGeneralMaterial()->SetRunTimeOpacity(opacity);
        return material;
    }
    CZemtarMaterial* RedPaint() { return Paint(0.9, 0.05, 0.05); }
    CZemtarMaterial* BluePaint() { return Paint(0.05, 0.05, 0.9); }

    QImage Draw(StandardView view, bool perspective = true, bool edges = false)
    {
        PictureOptions options;
        options.view = view;
        options.size = QSize(160, 120);
        options.perspective = perspective;
        options.edges = edges;
        const Picture picture = RenderPicture(*document, options);
        EXPECT_EQ(picture.image.isNull(), !picture.problem.isEmpty());
        missing = picture.image.isNull();
        return missing ? QImage(options.size, QImage::Format_RGB32) : picture.image;
    }
    eHue At(const QImage& image, double x, double y) const
    {
        return HueOf(
            image.pixelColor(static_cast<int>(x * image.width()), static_cast<int>(y * image.height())));
    }

    std::unique_ptr<CZemtarDocument> document{CZemtarDocument::Create(true)};
    SceneBuilder build{*document};
    bool missing = false; ///< OpenGL, here
};

/// Counts the pixels of a hue outside the corner where the axes stand.
int CountOf(const QImage& image, eHue hue)
{
    const int corner = image.height() / 5;
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const bool axes = x < corner && y >= image.height() - corner;
            count += !axes && HueOf(image.pixelColor(x, y)) == hue ? 1 : 0;
        }
    }
    return count;
}

TEST_F(RenderPictureTest, EachStandardViewShowsItsSide)
{
    const SceneBuilder::Points p{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                 {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
    const struct
    {
        StandardView view;
        std::vector<unsigned> corners;
        std::array<double, 3> color;
        eHue hue;
    } sides[] = {
        {StandardView::Front, {0, 1, 5, 0, 5, 4}, {0.9, 0, 0}, Red},
        {StandardView::Back, {2, 3, 7, 2, 7, 6}, {0, 0.9, 0}, Green},
        {StandardView::Left, {3, 0, 4, 3, 4, 7}, {0, 0, 0.9}, Blue},
        {StandardView::Right, {1, 2, 6, 1, 6, 5}, {0.9, 0.9, 0}, Yellow},
        {StandardView::Top, {4, 5, 6, 4, 6, 7}, {0, 0.9, 0.9}, Cyan},
        {StandardView::Bottom, {0, 2, 1, 0, 3, 2}, {0.9, 0, 0.9}, Magenta},
    };
    // Far from the origin, where single precision would fail.
    CZemtarSceneNode* cube =
        build.Group("cube", nullptr, CZemtarSceneNode::eNodeTypePart, Placement({4.5e6, 5.2e6, 300}));
    for (const auto& side : sides) {
        build.Mesh("side", cube, build.Triangles(p, side.corners), {},
                   Paint(side.color[0], side.color[1], side.color[2]));
    }
    for (const auto& side : sides) {
        const QImage image = Draw(side.view);
        if (missing) {
            GTEST_SKIP() << "no OpenGL";
        }
        EXPECT_EQ(At(image, 0.5, 0.5), side.hue) << static_cast<int>(side.view);
        EXPECT_EQ(At(image, 0.03, 0.5), Background);
    }
    const QImage iso = Draw(StandardView::Iso);
    EXPECT_EQ(At(iso, 0.5, 0.3), Cyan);
    EXPECT_EQ(At(iso, 0.4, 0.6), Red);
    EXPECT_EQ(At(iso, 0.6, 0.6), Yellow);
    EXPECT_GT(CountOf(Draw(StandardView::Front, true, true), Grey), CountOf(Draw(StandardView::Front), Grey));
}

TEST_F(RenderPictureTest, TransparencyLetsShineThrough)
{
    build.Mesh("behind", nullptr, build.Box(1, 0.1, 1), Placement({0, 1, 0}), RedPaint());
    build.Mesh("glass", nullptr, build.Box(1, 0.1, 1), Placement({0, 0, 0}), Paint(0.05, 0.05, 0.9, 0.4));
    const QImage through = Draw(StandardView::Front, false);
    if (missing) {
        GTEST_SKIP() << "no OpenGL";
    }
    const QColor color = through.pixelColor(80, 60);
    EXPECT_GT(color.red(), 60);
    EXPECT_GT(color.blue(), 60);
    EXPECT_LT(color.green(), 60);
    EXPECT_EQ(HueOf(Draw(StandardView::Back, false).pixelColor(80, 60)), Red);
}

TEST_F(RenderPictureTest, ParallelKeepsSizesPerspectiveDoesNot)
{
    build.Mesh("near", nullptr, build.Box(1, 0.1, 1), {}, RedPaint());
    build.Mesh("far", nullptr, build.Box(1, 0.1, 1), Placement({1.5, 8, 0}), BluePaint());
    const QImage parallel = Draw(StandardView::Front, false);
    if (missing) {
        GTEST_SKIP() << "no OpenGL";
    }
    const QImage perspective = Draw(StandardView::Front, true);
    EXPECT_NEAR(CountOf(parallel, Red), CountOf(parallel, Blue), 0.05 * CountOf(parallel, Red));
    EXPECT_GT(CountOf(perspective, Red), 1.3 * CountOf(perspective, Blue));
}

TEST_F(RenderPictureTest, SharedMirroredAndInsideOutShapesAreLitAlike)
{
    CZemtarGeometry* box = build.Box(1, 1, 1);
    auto* normals = CZemtarVerticiesNormalsTable::Create(document.get(), true);
    for (unsigned i = 0; i < 8; ++i) {
        const CZemtar3DVertex v = box->VerticiesTable()->Item(i);
        normals->Append(v.X() - 0.5, v.Y() - 0.5, v.Z() - 0.5);
    }
    box->SetVerticiesNormalsTable(normals);
    build.Mesh("plain", nullptr, box, {}, RedPaint());
    build.Mesh("mirrored", nullptr, box, Placement({2.0, 1, 1}, {1, 0, 0, 0, -1, 0, 0, 0, -1}), RedPaint());
    build.Mesh("turned inside out", nullptr, box, Placement({5.0, 0, 0}, {-1, 0, 0, 0, 1, 0, 0, 0, 1}),
               RedPaint());
    const QImage image = Draw(StandardView::Front, false);
    if (missing) {
        GTEST_SKIP() << "no OpenGL";
    }
    const int red[] = {image.pixelColor(23, 60).red(), image.pixelColor(80, 60).red(),
                       image.pixelColor(136, 60).red()};
    EXPECT_GT(red[0], 100);
    EXPECT_NEAR(red[0], red[1], 15);
    EXPECT_NEAR(red[0], red[2], 15);
}

TEST_F(RenderPictureTest, TexturesShowAndMissingOnesFallBackToColour)
{
    const TestFolder folder;
    const QString file = folder.path("halves.png");
    QImage halves(8, 8, QImage::Format_RGB32);
    halves.fill(Qt::green);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 8; ++x) {
            halves.setPixelColor(x, y, Qt::blue); // the upper half
        }
    }
    ASSERT_TRUE(halves.save(file));
    CZemtarGeometry* quad = build.Triangles({{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}}, {0, 1, 2, 0, 2, 3});
    auto* table = CZemtarTextureCoordinatesTable::Create(document.get(), true);
    for (const auto& uv : {std::pair(0, 0), std::pair(1, 0), std::pair(1, 1), std::pair(0, 1)}) {
        table->Append(uv.first, uv.second);
    }
    double x = 0.0;
    for (const QString& name : {file, QStringLiteral("/no/such/picture.png")}) {
        CZemtarMaterial* material = RedPaint();
        material->BasicMaterialAsGeneralMaterial()->SetTexture(name.toUtf8().constData(), eTextureDiffuse);
        build.Mesh("quad", nullptr, quad, Placement({x, 0, 0}), material)->SetTextureCoordinatesTable(table);
        x += 1.0;
    }
    const QImage image = Draw(StandardView::Front, false);
    if (missing) {
        GTEST_SKIP() << "no OpenGL";
    }
    EXPECT_EQ(At(image, 0.3, 0.35), Blue);
    EXPECT_EQ(At(image, 0.3, 0.65), Green);
    EXPECT_EQ(At(image, 0.7, 0.5), Red);
}

TEST_F(RenderPictureTest, EmptyAndDamagedDocumentsGiveAPicture)
{
    const QImage empty = Draw(StandardView::Iso);
    if (missing) {
        GTEST_SKIP() << "no OpenGL";
    }
    EXPECT_EQ(CountOf(empty, Background), 160 * 120 - 24 * 24);
    EXPECT_EQ(HueOf(empty.pixelColor(11, 105)), Blue); // the z axis
    const double nan = std::numeric_limits<double>::quiet_NaN();
    build.Mesh(
        "bad", nullptr,
        build.Triangles({{0, 0, 0}, {1, 0, 0}, {0.5, 0, 1}, {nan, nan, nan}}, {0, 1, 2, 0, 1, 99, 1, 2, 3}),
        {}, RedPaint());
    build.Mesh("line", nullptr, build.Line({{0, 0, -0.2}, {1, 0, -0.2}}), {}, BluePaint());
    const QImage image = Draw(StandardView::Front, false);
    EXPECT_EQ(At(image, 0.5, 0.6), Red);
    EXPECT_GT(CountOf(image, Blue), 20);
}

/// Two boxes of one shape and a line, side by side along x, in a window.
class SceneViewTest : public RenderPictureTest
{
protected:
    void SetUp() override
    {
        CZemtarGeometry* box = build.Box(1, 1, 1);
        pair = build.Group("pair", nullptr, CZemtarSceneNode::eNodeTypeAssembly);
        left = build.Mesh("left", pair, box, {}, RedPaint());
        right = build.Mesh("right", pair, box, Placement({2, 0, 0}), BluePaint());
        view.resize(300, 200);
        view.SetDocument(document.get());
        view.SetPerspective(false);
        view.SetStandardView(StandardView::Front);
        QSignalSpy failed(&view, &SceneView::Failed);
        view.show();
        if (!QTest::qWaitForWindowExposed(&view, Patience) || !view.isValid() || !failed.isEmpty()) {
            GTEST_SKIP() << "no OpenGL";
        }
    }

    SceneView view;
    CZemtarSceneNode* pair = nullptr;
    const CZemtarSceneNode* left = nullptr;
    const CZemtarSceneNode* right = nullptr;
    const QPoint atLeft{50, 100};
    const QPoint atRight{250, 100};
};

TEST_F(SceneViewTest, ClicksPickTheInstanceAmongSharedGeometry)
{
    view.grabFramebuffer();
    EXPECT_EQ(view.NodeAt(atLeft), left);
    EXPECT_EQ(view.NodeAt(atRight), right);
    EXPECT_EQ(view.NodeAt({150, 100}), nullptr);
    EXPECT_EQ(view.NodeAt({-5, 1000}), nullptr);

    std::vector<const CZemtarSceneNode*> picked;
    QObject::connect(&view, &SceneView::NodePicked, &view,
                     [&](const CZemtarSceneNode* node) { picked.push_back(node); });
    QTest::mouseClick(&view, Qt::LeftButton, {}, atRight);
    EXPECT_EQ(picked, std::vector<const CZemtarSceneNode*>{right});
    // A drag is no click: it turns the camera.
    const QImage before = view.grabFramebuffer();
    QTest::mousePress(&view, Qt::LeftButton, {}, atLeft);
    QTest::mouseMove(&view, atLeft + QPoint(40, 0));
    QTest::mouseMove(&view, atLeft + QPoint(80, 0));
    QTest::mouseRelease(&view, Qt::LeftButton, {}, atLeft + QPoint(80, 0));
    EXPECT_EQ(picked.size(), 1U);
    EXPECT_NE(view.grabFramebuffer(), before);
}

TEST_F(SceneViewTest, HidesIsolatesAndHighlights)
{
    const int red = CountOf(view.grabFramebuffer(), Red);
    EXPECT_GT(red, 1000);
    view.SetHidden({left});
    EXPECT_EQ(CountOf(view.grabFramebuffer(), Red), 0);
    EXPECT_EQ(view.NodeAt(atLeft), nullptr);
    view.SetHidden({});
    view.SetIsolated(left);
    const QImage isolated = view.grabFramebuffer();
    EXPECT_EQ(CountOf(isolated, Red), red);
    EXPECT_EQ(CountOf(isolated, Blue), 0);
    view.SetIsolated(nullptr);
    const int blue = CountOf(view.grabFramebuffer(), Blue);
    const QImage plain = view.grabFramebuffer();
    view.SetSelection(left);
    const QImage selected = view.grabFramebuffer();
    EXPECT_NE(selected.pixelColor(atLeft), plain.pixelColor(atLeft));
    EXPECT_EQ(selected.pixelColor(atRight), plain.pixelColor(atRight));
    EXPECT_EQ(CountOf(selected, Blue), blue);
    // Seen from the side the blue box hides the red one, whose outline shows all the same.
    const QColor line = Frame().highlight;
    const auto lines = [&](const QImage& image) {
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor color = image.pixelColor(x, y);
                count += std::abs(color.red() - line.red()) < 12 &&
                         std::abs(color.green() - line.green()) < 12 &&
                         std::abs(color.blue() - line.blue()) < 12;
            }
        }
        return count;
    };
    view.SetStandardView(StandardView::Right);
    view.SetPerspective(true);
    EXPECT_GT(lines(view.grabFramebuffer()), 100);
    view.SetSelection(right);
    view.SetHidden({right});
    EXPECT_EQ(lines(view.grabFramebuffer()), 0) << "what is hidden has no outline";
    view.SetHidden({});
    view.SetPerspective(false);
    view.SetStandardView(StandardView::Front);
    view.SetSelection(nullptr);
    view.Fit(right);
    EXPECT_GT(CountOf(view.grabFramebuffer(), Blue), 2 * blue);
    EXPECT_EQ(view.NodeAt({150, 100}), right);
    view.SetDocument(nullptr);
    view.grabFramebuffer();
    EXPECT_EQ(view.NodeAt({150, 100}), nullptr);
}

TEST_F(SceneViewTest, KeysAndWheelMoveTheCamera)
{
    QTest::keyClick(&view, Qt::Key_Plus);
    QImage last = view.grabFramebuffer();
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Up, Qt::Key_Minus, Qt::Key_F}) {
        QTest::keyClick(&view, key);
        const QImage now = view.grabFramebuffer();
        EXPECT_NE(now, last) << key;
        last = now;
    }
    view.SetStandardView(StandardView::Front);
    view.grabFramebuffer();
    for (int i = 0; i < 30; ++i) { // in and in at the right box's corner, which stays below the cursor
        QWheelEvent wheel(atRight, view.mapToGlobal(atRight), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view, &wheel);
        view.grabFramebuffer();
    }
    EXPECT_EQ(view.NodeAt(atRight), right);
    EXPECT_EQ(view.NodeAt(atLeft), right);
}

} // namespace

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
