// What is decided before OpenGL draws: the camera, the flattened scene, packed shapes and the draw list.

#include "apps/geometry/OrientedBox.h"
#include "apps/geometry/PolygonCut.h"
#include "apps/render/DrawList.h"
#include "apps/render/Picture.h"
#include "apps/render/ShapeData.h"
#include "apps/render/SolidShapes.h"
#include "tests/support/SceneBuilder.h"

#include <QVector4D>

#include <gtest/gtest.h>

using namespace Zemtar;
using namespace Zemtar::Test;

namespace {

const double NaN = std::numeric_limits<double>::quiet_NaN();

class RenderModelTest : public ::testing::Test
{
protected:
    std::unique_ptr<CZemtarDocument> document{CZemtarDocument::Create(true)};
    SceneBuilder build{*document};
};

QVector3D Projected(const Camera& camera, const Bounds& bounds, const Vec3& point, double aspect = 1.5)
{
    const Vec3 origin = bounds.Center();
    const Vec3 local = point - origin;
    const QVector4D clip = camera.Projection(aspect, bounds) * camera.View(origin) *
                           QVector4D(static_cast<float>(local.x), static_cast<float>(local.y),
                                     static_cast<float>(local.z), 1.0F);
    return clip.toVector3DAffine();
}

void ExpectNear(const Vec3& a, const Vec3& b, double tolerance)
{
    EXPECT_LE(Length(a - b), tolerance)
        << a.x << " " << a.y << " " << a.z << " and " << b.x << " " << b.y << " " << b.z;
}

/// Checks that all corners of a fitted box lie in the picture, between near and far, and one near its rim.
void ExpectFits(const Camera& camera, const Bounds& bounds)
{
    float reach = 0.0F;
    for (unsigned i = 0; i < 8; ++i) {
        const QVector3D place = Projected(camera, bounds, bounds.Corner(i));
        EXPECT_LE(std::abs(place.z()), 1.0F);
        reach = std::max({reach, std::abs(place.x()), std::abs(place.y())});
    }
    EXPECT_LE(reach, 1.0F);
    EXPECT_GE(reach, 0.8F);
}

DrawRequest RequestFor(const SceneModel& model, StandardView view)
{
    Camera camera;
    camera.SetStandardView(view);
    camera.Fit(model.Extent(), 1.0);
    DrawRequest request;
    request.origin = model.Extent().Center();
    request.clip = camera.Projection(1.0, model.Extent()) * camera.View(request.origin);
    request.eye = camera.Eye();
    request.forward = camera.Forward();
    request.pixelsPerRadian = 500.0 / camera.HeightAt(1.0);
    return request;
}

TEST(CameraTest, StandardViewsLookWhereTheySay)
{
    const struct
    {
        const char* name;
        Vec3 forward;
        Vec3 up;
    } cases[] = {
        {"front", {0, 1, 0}, {0, 0, 1}},  {"BACK", {0, -1, 0}, {0, 0, 1}}, {"left", {1, 0, 0}, {0, 0, 1}},
        {"Right", {-1, 0, 0}, {0, 0, 1}}, {"top", {0, 0, -1}, {0, 1, 0}},  {"bottom", {0, 0, 1}, {0, -1, 0}},
    };
    Camera camera;
    for (const auto& entry : cases) {
        StandardView view = StandardView::Iso;
        ASSERT_TRUE(ParseStandardView(entry.name, view));
        camera.SetStandardView(view);
        ExpectNear(camera.Forward(), entry.forward, 1e-12);
        ExpectNear(camera.Up(), entry.up, 1e-12);
    }
    StandardView view = StandardView::Left;
    EXPECT_FALSE(ParseStandardView("above", view));
    EXPECT_EQ(view, StandardView::Left);
}

TEST(CameraTest, FitsModelsOfAnySizeAndPlace)
{
    for (const double size : {1e-3, 1.0, 1e3}) {
        for (const Vec3 shift : {Vec3{}, Vec3{5e5, 4e6, 100}}) {
            for (const bool perspective : {true, false}) {
                Camera camera;
                camera.SetPerspective(perspective);
                Bounds bounds;
                bounds.Add(shift);
                bounds.Add(shift + Vec3{size, 0.2 * size, 0.5 * size});
                camera.Fit(bounds, 1.5);
                ExpectFits(camera, bounds);
            }
        }
    }
    Camera camera;
    const Vec3 before = camera.Eye();
    camera.Fit(Bounds(), 1.0);
    ExpectNear(camera.Eye(), before, 0.0);
    Bounds point;
    point.Add(Vec3{1, 2, 3});
    camera.Fit(point, 1.0);
    EXPECT_GT(camera.Distance(), 0.0);
}

TEST(CameraTest, FitsPointsCentred)
{
    // A cone: its box' corners are empty, and near the eye it is wide at one side alone.
    std::vector<Vec3> points{{3, 0, 0}, {-1, 2, 1}, {-1, -2, -1}, {-1, 0, 4}, {0.5, -3, 0}};
    Bounds bounds;
    for (const Vec3& point : points) {
        bounds.Add(point);
    }
    for (const bool perspective : {true, false}) {
        Camera camera;
        camera.SetPerspective(perspective);
        camera.Fit(points, 1.5);
        QVector3D low(9, 9, 9);
        QVector3D high(-9, -9, -9);
        for (const Vec3& point : points) {
            const QVector3D place = Projected(camera, bounds, point);
            for (int axis = 0; axis < 2; ++axis) {
                low[axis] = std::min(low[axis], place[axis]);
                high[axis] = std::max(high[axis], place[axis]);
            }
        }
        EXPECT_NEAR(low.x(), -high.x(), 2e-3);
        EXPECT_NEAR(low.y(), -high.y(), 2e-3);
        EXPECT_NEAR(std::max(high.x(), high.y()), 1.0 / 1.06, 2e-3);
    }
}

TEST(OrientedBoxTest, FindsAShaftsSizesHoweverItLies)
{
    // 80 long, 10 by 4 across, along a diagonal.
    const Vec3 u{0.6, 0.48, 0.64};
    const Vec3 v{-0.8, 0.36, 0.48};
    const Vec3 w = Cross(u, v);
    std::vector<Vec3> points;
    for (const double a : {0.0, 30.0, 80.0}) {
        for (const double b : {0.0, 10.0}) {
            for (const double c : {0.0, 4.0}) {
                points.push_back(a * u + b * v + c * w + Vec3{100, 200, 300});
            }
        }
    }
    const OrientedBox box = OrientedBox::Around(points);
    EXPECT_NEAR(box.size[0], 80.0, 1e-6);
    EXPECT_NEAR(box.size[1], 10.0, 1e-6);
    EXPECT_NEAR(box.size[2], 4.0, 1e-6);
    EXPECT_NEAR(std::abs(Dot(box.axes[0], u)), 1.0, 1e-9);
    EXPECT_NEAR(OrientedBox::Around({{1, 2, 3}}).Volume(), 0.0, 1e-12);
}

TEST_F(RenderModelTest, AFlatFaceMeetsARoundOneInATangentEdge)
{
    // A strip that is flat and then bends away, with the normals of the true surface.
    CZemtarGeometry* strip =
        build.Triangles({{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}, {1.5, 0, -0.134}, {1.5, 1, -0.134}},
                        {0, 2, 3, 0, 3, 1, 2, 4, 5, 2, 5, 3});
    auto* normals = CZemtarVerticiesNormalsTable::Create(document.get(), true);
    for (const double tilt : {0.0, 0.0, 0.0, 0.0, 0.5, 0.5}) {
        normals->Append(tilt, 0.0, std::sqrt(1 - tilt * tilt));
    }
    strip->SetVerticiesNormalsTable(normals);
    ShapeData data;
    data.Build({strip, nullptr, {}, 0, 0, 0});
    EXPECT_EQ(data.FindEdges().tangents, (std::vector<std::uint32_t>{2, 3}));
    EXPECT_EQ(data.FindEdges().creases.size(), 12U);
}

TEST_F(RenderModelTest, ShapesThatCloseAloneOrTogetherAreSolid)
{
    const SceneBuilder::Points p{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    build.Mesh("whole", nullptr, build.Triangles(p, {0, 2, 1, 0, 1, 3, 1, 2, 3, 2, 0, 3}));
    build.Mesh("inside out", nullptr, build.Triangles(p, {0, 1, 2, 0, 3, 1, 1, 3, 2, 2, 3, 0}));
    build.Mesh("open", nullptr, build.Triangles(p, {0, 1, 2}));
    CZemtarSceneNode* part = build.Group("two colours", nullptr, CZemtarSceneNode::eNodeTypePart);
    build.Mesh("one", part, build.Triangles(p, {0, 2, 1, 0, 1, 3}));
    build.Mesh("other", part, build.Triangles(p, {1, 2, 3, 2, 0, 3}));
    EXPECT_EQ(FindSolids(SceneModel(*document)), (std::vector<int>{1, -1, 0, 1, 1}));
}

TEST(CameraTest, ZoomAndOrbitKeepTheirPointInPlace)
{
    for (const bool perspective : {true, false}) {
        Bounds bounds;
        bounds.Add(Vec3{-1, -1, -1});
        bounds.Add(Vec3{1, 1, 1});
        Camera camera;
        camera.SetPerspective(perspective);
        camera.Fit(bounds, 1.5);
        const Vec3 point{0.5, -0.7, 0.9};
        const QVector3D place = Projected(camera, bounds, point);
        camera.Zoom(0.5, point);
        camera.Orbit(33.0, 20.0, point);
        const QVector3D now = Projected(camera, bounds, point);
        EXPECT_NEAR(now.x(), place.x(), 1e-4);
        EXPECT_NEAR(now.y(), place.y(), 1e-4);

        // What lies under the cursor in the target's plane follows a pan exactly.
        camera.FocusAt(camera.Depth(point));
        camera.Pan(0.1, -0.2);
        const QVector3D panned = Projected(camera, bounds, point);
        EXPECT_NEAR(panned.x() - now.x(), 2 * 0.1 / 1.5, 1e-4);
        EXPECT_NEAR(panned.y() - now.y(), 2 * -0.2, 1e-4);
        camera.Orbit(0.0, -500.0, point);
        ExpectNear(camera.Forward(), {0, 0, -1}, 1e-12);
    }
}

TEST(PictureSizeTest, TakesTwoNumbersAlone)
{
    QSize size(3, 4);
    for (const char* text : {"", "800", "800x", "x600", "0x600", "800x600x2", "800x99999", "-1x5", "axb"}) {
        EXPECT_FALSE(ParsePictureSize(text, size)) << text;
    }
    EXPECT_EQ(size, QSize(3, 4));
    EXPECT_TRUE(ParsePictureSize("1024X768", size));
    EXPECT_EQ(size, QSize(1024, 768));
}

TEST_F(RenderModelTest, ConcavePolygonsAreCutInsideTheirOutline)
{
    // An L, whose fan from the first corner would leave it.
    const std::vector<Vec3> corners{{2, 1, 5}, {1, 1, 5}, {1, 2, 5}, {0, 2, 5}, {0, 0, 5}, {2, 0, 5}};
    double area = 0.0;
    CutPolygon(corners, [&](std::size_t a, std::size_t b, std::size_t c) {
        const Vec3 cross = Cross(corners[b] - corners[a], corners[c] - corners[a]);
        EXPECT_GE(cross.z, 0.0);
        area += 0.5 * cross.z;
    });
    EXPECT_NEAR(area, 3.0, 1e-12);
    std::size_t count = 0;
    CutPolygon({{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}, {NaN, 0, 0}},
               [&](std::size_t, std::size_t, std::size_t) { ++count; });
    EXPECT_EQ(count, 3U);
}

TEST_F(RenderModelTest, DamagedTablesLoseOnlyWhatIsDamaged)
{
    CZemtarGeometry* geometry = build.Triangles({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {NaN, 0, 0}, {0, 0, 1e300}},
                                                {0, 1, 2, 0, 1, 99, 0, 1, 3, 2, 1, 0, 0, 4294967295U, 1});
    const unsigned quad[] = {0, 1, 2, 77};
    geometry->PolygonsTable()->AppendPolygon(quad, 4);
    build.Mesh("bad", nullptr, geometry);
    build.Mesh("none", nullptr, nullptr);
    build.Mesh("placed nowhere", nullptr, build.Triangle(), Placement({NaN, 0, 0}));
    build.Mesh("dropped", nullptr, build.Triangle())->SetDeleted(true);
    const SceneModel model(*document);
    ASSERT_EQ(model.Instances().size(), 1U);
    EXPECT_TRUE(IsFinite(model.Extent().max));
    ShapeData data;
    data.Build(model.Shapes()[model.Instances()[0].shape]);
    EXPECT_EQ(data.Triangles().size(), 6U);
}

TEST_F(RenderModelTest, SubtreesAreRangesAndGeometryIsShared)
{
    CZemtarGeometry* screw = build.Triangle();
    CZemtarSceneNode* a =
        build.Group("a", nullptr, CZemtarSceneNode::eNodeTypeAssembly, Placement({10, 0, 0}));
    CZemtarSceneNode* b = build.Group("b", a, CZemtarSceneNode::eNodeTypePart, Placement({0, 5, 0}));
    const CZemtarSceneNode* first = build.Mesh("1", b, screw);
    build.Mesh("2", b, screw, Placement({1, 0, 0}));
    build.Mesh("3", a, build.Box(1, 1, 1));
    CZemtarSceneNode* deep = build.Group("deep", nullptr, CZemtarSceneNode::eNodeTypeGroup);
    for (int i = 0; i < 50000; ++i) {
        deep = build.Group("deeper", deep, CZemtarSceneNode::eNodeTypeGroup);
    }
    build.Mesh("4", deep, screw, Placement({0, 0, 7}));

    const SceneModel model(*document);
    EXPECT_EQ(model.Shapes().size(), 2U);
    ASSERT_EQ(model.Instances().size(), 4U);
    const InstanceRange range = model.RangeOf(a);
    EXPECT_EQ(range.last - range.first, 3U);
    EXPECT_EQ(model.RangeOf(b).last - model.RangeOf(b).first, 2U);
    EXPECT_EQ(model.Instances()[model.RangeOf(first).first].node, first);
    ExpectNear(model.Extent(model.RangeOf(b)).min, {10, 5, 0}, 1e-12);
    EXPECT_TRUE(model.RangeOf(nullptr).IsEmpty());
}

TEST_F(RenderModelTest, FeatureEdgesAreThoseOfTheForm)
{
    const auto edgesOf = [&](CZemtarGeometry* geometry) {
        ShapeData data;
        Shape shape{geometry, nullptr, {}, 0, 0, 0};
        data.Build(shape);
        return data.FindEdges().creases.size() / 2;
    };
    EXPECT_EQ(edgesOf(build.Box(1, 2, 3)), 12U);
    EXPECT_EQ(edgesOf(build.Triangle()), 3U);

    // The same box with vertices of its own for each triangle, and half of them turned.
    const CZemtarGeometry* box = build.Box(1, 1, 1);
    SceneBuilder::Points points;
    std::vector<unsigned> corners;
    for (std::size_t i = 0; i < box->PolygonsTable()->IndexCount(); ++i) {
        const CZemtar3DVertex v = box->VerticiesTable()->Item(box->PolygonsTable()->Data()[i]);
        points.push_back({v.X(), v.Y(), v.Z()});
        corners.push_back(static_cast<unsigned>(i));
    }
    for (std::size_t i = 0; i < corners.size(); i += 6) {
        std::swap(corners[i], corners[i + 1]);
    }
    EXPECT_EQ(edgesOf(build.Triangles(points, corners)), 12U);

    // A strip bent by 20 degrees has its outline alone; folded by 170 degrees, the fold too.
    for (const auto& [degrees, count] : {std::pair(20.0, 4U), std::pair(170.0, 5U)}) {
        const double angle = degrees * 3.14159265358979 / 180.0;
        EXPECT_EQ(
            edgesOf(build.Triangles({{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {-std::cos(angle), 0, std::sin(angle)}},
                                    {0, 2, 1, 0, 1, 3})),
            count);
    }
}

TEST_F(RenderModelTest, DrawListGathersShapesAndLeavesOutWhatIsNotSeen)
{
    CZemtarGeometry* cube = build.Box(1, 1, 1);
    CZemtarGeometry* big = build.Box(5, 5, 5);
    for (int i = 0; i < 10; ++i) {
        build.Mesh("cube", nullptr, cube, Placement({6.0 + 2.0 * i, 0, 0}));
        build.Mesh("other", nullptr, i == 0 ? big : cube, Placement({0, 0, 3.0 * i}));
    }
    const SceneModel model(*document);
    DrawList list(model);
    DrawRequest request = RequestFor(model, StandardView::Front);
    list.Build(request);
    ASSERT_EQ(list.Commands().size(), 2U); // two shapes, however many instances
    EXPECT_EQ(list.Ids().size(), 20U);
    EXPECT_FALSE(list.IsReduced());

    request.budget = 24; // two boxes: the largest, and one more
    list.Build(request);
    EXPECT_EQ(list.Triangles(), 24U);
    EXPECT_EQ(std::count(list.Ids().begin(), list.Ids().end(), 1U), 1);
    EXPECT_TRUE(list.IsReduced());

    request.budget = 0;
    request.smallest = 1e6;
    list.Build(request);
    EXPECT_TRUE(list.Commands().empty());

    request.smallest = 0.0;
    request.clip.setToIdentity(); // a cube of 2 m around the origin of the request
    request.origin = {6.5, 0.5, 0.5};
    list.Build(request);
    EXPECT_EQ(list.Ids().size(), 1U);

    std::vector<bool> shown(20, true);
    shown[0] = false;
    list.SetShown(shown);
    list.Build(request);
    EXPECT_TRUE(list.Ids().empty());
}

TEST_F(RenderModelTest, TransparentInstancesGoFromBackToFront)
{
    CZemtarMaterial* glass = build.Material(1, 1, 1);
    glass->BasicMaterialAsGeneralMaterial()->SetRunTimeOpacity(0.5);
    CZemtarGeometry* pane = build.Box(1, 0.1, 1);
    for (const double y : {3.0, 1.0, 2.0}) {
        build.Mesh("pane", nullptr, pane, Placement({0, y, 0}), glass);
    }
    build.Mesh("mirrored", nullptr, pane, Placement({0, 0, 0}, {-1, 0, 0, 0, 1, 0, 0, 0, 1}), glass);
    const SceneModel model(*document);
    DrawList list(model);
    list.Build(RequestFor(model, StandardView::Front));
    std::vector<std::uint32_t> order;
    for (const DrawCommand& command : list.Commands()) {
        if (command.pass == DrawCommand::PassTransparentNear) {
            order.push_back(list.Ids()[command.first]);
            EXPECT_EQ(command.mirrored, order.back() == 3U);
        }
    }
    EXPECT_EQ(order, (std::vector<std::uint32_t>{0, 2, 1, 3}));
}

} // namespace
