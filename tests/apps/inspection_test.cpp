// What the viewer's tools work out, without a window: measurements, section, exploded view, bill of
// materials.

#include "apps/geometry/CircleFit.h"
#include "apps/viewer/BillOfMaterials.h"
#include "apps/viewer/ExplodedView.h"
#include "apps/viewer/FileWatch.h"
#include "apps/viewer/MeasureTool.h"
#include "apps/viewer/NodeList.h"
#include "apps/viewer/SectionPlane.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarSolidHint.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Waiting.h"

#include <QFile>
#include <QGuiApplication>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace Zemtar;
using namespace Zemtar::Test;

namespace {

constexpr auto Everything = [](const Vec3&) { return true; };

class Inspection : public testing::Test
{
protected:
    /// A barrel of 0.25 m radius about z, from z = 0 to 1, of 32 sides, with the true normals and flat ends.
    CZemtarGeometry* Barrel()
    {
        constexpr unsigned sides = 32;
        SceneBuilder::Points points;
        std::vector<std::array<double, 3>> directions;
        std::vector<unsigned> corners;
        for (unsigned i = 0; i < sides; ++i) {
            const double angle = 2.0 * 3.14159265358979 * i / sides;
            for (const double z : {0.0, 1.0}) {
                for (const bool isEnd : {false, true}) {
                    points.push_back({0.25 * std::cos(angle), 0.25 * std::sin(angle), z});
                    directions.push_back(isEnd ? std::array{0.0, 0.0, 2.0 * z - 1.0}
                                               : std::array{std::cos(angle), std::sin(angle), 0.0});
                }
            }
            const unsigned a = 4 * i;
            const unsigned b = 4 * ((i + 1) % sides);
            corners.insert(corners.end(), {a, b, b + 2, a, b + 2, a + 2});
            if (i >= 1 && i + 1 < sides) {
                corners.insert(corners.end(), {1, b + 1, a + 1, 3, a + 3, b + 3});
            }
        }
        CZemtarGeometry* barrel = build.Triangles(points, corners);
        auto* normals = CZemtarVerticiesNormalsTable::Create(document.get(), true);
        for (const auto& n : directions) {
            normals->Append(n[0], n[1], n[2]);
        }
        barrel->SetVerticiesNormalsTable(normals);
        return barrel;
    }
    /// Measures where rays hit the first instance.
    std::optional<Measurement> Measure(MeasureKind kind, const std::vector<Ray>& rays, double reach = 0.0)
    {
        model = SceneModel(*document);
        MeasureTool tool(model);
        tool.Begin(kind);
        std::optional<Measurement> result;
        for (const Ray& ray : rays) {
            const auto hit = tool.Find(0, ray, Everything);
            EXPECT_TRUE(hit);
            result = hit ? tool.Add(*hit, reach) : std::nullopt;
        }
        problem = tool.Problem();
        return result;
    }

    std::unique_ptr<CZemtarDocument> document{CZemtarDocument::Create(true)};
    SceneBuilder build{*document};
    SceneModel model;
    QString problem;
};

} // namespace

TEST_F(Inspection, LengthsSnapToCornersAndEdgesInTheWorld)
{
    build.Mesh("box", nullptr, build.Box(1, 2, 3), Placement({10, 0, 0}));
    const Ray atCorner{{10.02, 0.03, 9}, {0, 0, -1}};
    const Ray atOther{{10.97, 1.98, 9}, {0, 0, -4}};
    const auto snapped = Measure(MeasureKind::Length, {atCorner, atOther}, 0.1);
    ASSERT_TRUE(snapped);
    EXPECT_NEAR(snapped->value, std::sqrt(5.0), 1e-6);
    EXPECT_NEAR(snapped->difference.y, 2.0, 1e-6);
    EXPECT_NEAR(snapped->points[0].x, 10.0, 1e-6);
    EXPECT_NEAR(Measure(MeasureKind::Length, {atCorner, atOther})->value, std::hypot(0.95, 1.95), 1e-6);
    const Ray nearEdge{{10.5, 0.05, 9}, {0, 0, -1}};
    EXPECT_NEAR(Measure(MeasureKind::Length, {nearEdge, atCorner}, 0.1)->value, 0.5, 1e-6);
    EXPECT_FALSE(Measure(MeasureKind::Length, {nearEdge}));
}

TEST_F(Inspection, FacesGiveAngleAreaAndRadius)
{
    CZemtar3DObject* barrel = build.Mesh("barrel", nullptr, Barrel(), Placement({5, 5, 5}));
    const Ray onTop{{5.05, 5, 99}, {0, 0, -1}};
    const Ray atSide{{99, 5.01, 5.4}, {-1, 0, 0}};
    EXPECT_NEAR(Measure(MeasureKind::Angle, {onTop, atSide})->value, 90.0, 6.0); // a facet's own normal
    const double sector = 0.5 * 0.25 * 0.25 * std::sin(2 * 3.14159265358979 / 32);
    EXPECT_NEAR(Measure(MeasureKind::Area, {onTop})->value, 32 * sector, 1e-6);
    const auto radius = Measure(MeasureKind::Radius, {atSide});
    ASSERT_TRUE(radius);
    EXPECT_NEAR(radius->value, 0.25, 1e-6);
    EXPECT_FALSE(radius->isSphere);
    EXPECT_NEAR(radius->points[0].z, 5.4, 1e-6);
    EXPECT_FALSE(Measure(MeasureKind::Radius, {onTop}));
    EXPECT_FALSE(problem.isEmpty());
    // In a mirror and stretched, the true lengths count.
    barrel->SetLocalMatrix(Placement({0, 0, 0}, {-2, 0, 0, 0, 2, 0, 0, 0, 1}));
    EXPECT_NEAR(Measure(MeasureKind::Radius, {{{99, 0.01, 0.4}, {-1, 0, 0}}})->value, 0.5, 1e-6);
}

TEST_F(Inspection, SpheresAreKnownAndConesAreNot)
{
    std::vector<Vec3> ball;
    std::vector<Vec3> normals;
    std::vector<Vec3> cone;
    std::vector<Vec3> coneNormals;
    for (int i = 0; i < 40; ++i) {
        const double a = 0.3 * i;
        const double z = -0.5 + i / 40.0;
        const double r = std::sqrt(1 - z * z);
        normals.push_back({r * std::cos(a), r * std::sin(a), z});
        ball.push_back(Vec3{1e3, 0, 0} + 0.02 * normals.back());
        cone.push_back({(1 + z) * std::cos(a), (1 + z) * std::sin(a), z});
        coneNormals.push_back(std::sqrt(0.5) * Vec3{std::cos(a), std::sin(a), -1.0});
    }
    const auto sphere = FitRoundSurface(ball, normals);
    ASSERT_TRUE(sphere);
    EXPECT_NEAR(sphere->radius, 0.02, 1e-9);
    EXPECT_FALSE(sphere->IsCylinder());
    EXPECT_FALSE(FitRoundSurface(cone, coneNormals));
    EXPECT_FALSE(FitRoundSurface({}, {}));
    EXPECT_FALSE(FitRoundSurface(std::vector<Vec3>(9), std::vector<Vec3>(9)));
}

TEST_F(Inspection, SectionsKeepOneSideAndExplodedPartsStayWhole)
{
    Bounds box;
    box.Add(Vec3{0, 0, 0});
    box.Add(Vec3{1, 2, 4});
    EXPECT_FALSE(SectionPlane{}.Through(box));
    EXPECT_FALSE((SectionPlane{true}.Through(Bounds())));
    const auto cut = SectionPlane{true, 2, 0.25, false}.Through(box);
    EXPECT_EQ(cut->offset, 1.0);
    EXPECT_EQ(cut->normal.z, 1.0);
    const auto flipped = SectionPlane{true, 2, 0.25, true}.Through(box);
    EXPECT_EQ(flipped->offset, -1.0);
    EXPECT_EQ(flipped->normal.z, -1.0);

    CZemtarSceneNode* top = build.Group("top", nullptr, CZemtarSceneNode::eNodeTypeAssembly);
    CZemtarSceneNode* left = build.Group("left", top, CZemtarSceneNode::eNodeTypePart);
    build.Mesh("a", left, build.Box(1, 1, 1));
    build.Mesh("b", left, build.Box(1, 1, 1), Placement({0, 0, 1}));
    CZemtarSceneNode* right = build.Group("right", top, CZemtarSceneNode::eNodeTypePart);
    build.Mesh("c", right, build.Box(1, 1, 1), Placement({3, 0, 0}));
    model = SceneModel(*document);
    const NodeList nodes(*document);
    const std::vector<Vec3> ways = ExplodedWays(model, nodes, 1.0);
    ASSERT_EQ(ways.size(), 3U);
    EXPECT_NEAR(ways[0].x, -1.5, 1e-9);
    EXPECT_NEAR(Length(ways[0] - ways[1]), 0.0, 1e-9);
    EXPECT_NEAR(ways[2].x, 1.5, 1e-9);
    const Bounds before = model.Extent();
    model.Displace(ways);
    EXPECT_NEAR(model.Extent().Size().x, before.Size().x + 3.0, 1e-9);
    model.Displace({});
    EXPECT_NEAR(model.Extent().max.x, before.max.x, 1e-12);
}

TEST_F(Inspection, BillsCountKindsAndTheirCsvIsSafe)
{
    const CZemtarGeometry* bolt = build.Box(1, 1, 1);
    CZemtarSceneNode* top = build.Group("top", nullptr, CZemtarSceneNode::eNodeTypeAssembly);
    for (const char* name : {"Bolt, M8", "=1+2", "Bolt, M8"}) {
        CZemtarSceneNode* part = build.Group(name, top, CZemtarSceneNode::eNodeTypePart);
        build.Mesh("m", part, bolt);
        part->MetaData()->SetValue("A \"7\"", "number", "PDM", "");
    }
    const BillOfMaterials bill{NodeList(*document)};
    ASSERT_EQ(bill.Lines().size(), 2U);
    EXPECT_EQ(bill.Lines()[0].count, 2);
    EXPECT_EQ(bill.PartCount(), 3);
    EXPECT_EQ(bill.MetaDataNames(), QStringList{"PDM/number"});
    const QList<QByteArray> lines = bill.ToCsv().split('\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_TRUE(lines[0].startsWith("\xEF\xBB\xBFQuantity,"));
    EXPECT_EQ(lines[1], "2,\"Bolt, M8\",,,12,\"A \"\"7\"\"\"\r");
    EXPECT_EQ(lines[2], "1,'=1+2,,,12,\"A \"\"7\"\"\"\r");
    const std::unique_ptr<CZemtarDocument> empty(CZemtarDocument::Create(true));
    EXPECT_EQ(BillOfMaterials{NodeList(*empty)}.ToCsv().count('\n'), 1);
}

TEST(FileWatchTest, TellsOfNewContentOnceItRests)
{
    const TestFolder folder;
    const QString file = folder.path("a.step");
    const auto write = [](const QString& name, const QByteArray& content) {
        QFile target(name);
        ASSERT_TRUE(target.open(QIODevice::WriteOnly));
        target.write(content);
    };
    write(file, "one");
    FileWatch watch;
    QSignalSpy changed(&watch, &FileWatch::Changed);
    watch.Add(file);
    write(file, "two and more");
    ASSERT_TRUE(Await("the change", [&] { return changed.count() == 1; }));
    // Replaced by another file, as programs save.
    write(folder.path("b"), "three, and even more");
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_TRUE(QFile::rename(folder.path("b"), file));
    ASSERT_TRUE(Await("the replacement", [&] { return changed.count() == 2; }));
    EXPECT_EQ(changed[1][0].toString(), file);
}

int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
