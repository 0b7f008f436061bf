// The mesher: watertight meshes, normals, appearances, loose curves, and parameters that make no sense.
#include <cmath>
#include <limits>
#include <map>

#include <gtest/gtest.h>

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBuilderAPI_GTransform.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepBuilderAPI_NurbsConvert.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <Geom_BezierCurve.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Circ.hxx>
#include <gp_GTrsf.hxx>

#include <cadex/Base_Settings.hxx>
#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/mesh/SliverFlips.h"
#include "tests/sdk/MeshModels.h"
#include "tests/sdk/SeenMesh.h"

using namespace cadex;
using namespace cadex::test;

namespace {

constexpr double Degree = M_PI / 180;

ModelAlgo_BRepMesherParameters Parameters(double chord = 0.0076, double degrees = 24, bool merge = true)
{
    ModelAlgo_BRepMesherParameters parameters(ModelAlgo_BRepMesherParameters::Fine, merge);
    parameters.SetAngularDeflection(degrees * Degree);
    parameters.SetChordalDeflection(chord);
    return parameters;
}

ModelData_PolyRepresentation MeshOf(const ModelData_Part& part,
                                    const ModelAlgo_BRepMesherParameters& parameters)
{
    ModelAlgo_BRepMesher(parameters).Compute(ModelOf(part), true);
    return part.PolyRepresentation(ModelData_RM_Poly);
}

TopoDS_Shape Drilled()
{
    const gp_Ax2 axis(gp_Pnt(20, 15, -1), gp_Dir(0, 0, 1));
    return BRepAlgoAPI_Cut(BRepPrimAPI_MakeBox(40, 30, 20).Shape(),
                           BRepPrimAPI_MakeCylinder(axis, 8, 30).Shape())
        .Shape();
}

/// Its poles' derivatives are not zero but what rounding leaves of large coordinates.
TopoDS_Shape SplineBall()
{
    gp_Trsf moved;
    moved.SetRotation(gp_Ax1(gp_Pnt(), gp_Dir(1, 2, 3)), 1.1);
    moved.SetTranslationPart(gp_Vec(3333.3, -7777.7, 1234.5));
    const TopoDS_Shape ball = BRepBuilderAPI_NurbsConvert(BRepPrimAPI_MakeSphere(10).Shape(), true).Shape();
    BRepBuilderAPI_GTransform general(ball, gp_GTrsf(moved), true);
    return general.Shape();
}

/// A spline that starts at right angles to the axis and ends on it, revolved.
TopoDS_Shape Drop()
{
    TColgp_Array1OfPnt poles(1, 4);
    poles.SetValue(1, gp_Pnt(100, 200, 300));
    poles.SetValue(2, gp_Pnt(120, 200, 300));
    poles.SetValue(3, gp_Pnt(110, 200, 330));
    poles.SetValue(4, gp_Pnt(100, 200, 350));
    const TopoDS_Edge line = BRepBuilderAPI_MakeEdge(new Geom_BezierCurve(poles));
    const TopoDS_Shape shell =
        BRepPrimAPI_MakeRevol(line, gp_Ax1(gp_Pnt(100, 200, 300), gp_Dir(0, 0, -1))).Shape();
    return shell;
}

TEST(Mesher, BodiesAreWatertightWithOutwardNormals)
{
    struct Case
    {
        const char* name;
        TopoDS_Shape shape;
        double volume;
        double leastCosine;
    };
    gp_Trsf moved;
    moved.SetRotation(gp_Ax1(gp_Pnt(1, 2, 3), gp_Dir(1, 1, 1)), 0.7);
    moved.SetTranslationPart(gp_Vec(1000.1, -70.3, 0.7));
    const double third = M_PI / 3;
    const Case cases[] = {
        {"box", BRepPrimAPI_MakeBox(10, 20, 30).Shape(), 6000, 1 - 1e-6},
        {"sphere with two poles", BRepPrimAPI_MakeSphere(10).Shape(), 4 * third * 1000, 0.8},
        {"cone with an apex", BRepPrimAPI_MakeCone(10, 0, 30).Shape(), third * 3000, 0.3},
        {"sphere of splines far from the origin", SplineBall(), 4 * third * 1000, 0.8},
        {"a drop with a round end and a tip", Drop(), -1, 0.3},
        {"torus with two seams", BRepPrimAPI_MakeTorus(30, 10).Shape(), 2 * M_PI * M_PI * 3000, 0.8},
        {"drilled block", Drilled(), 24000 - M_PI * 64 * 20, 0.9},
        {"reversed inside a location", Drilled().Moved(moved), 24000 - M_PI * 64 * 20, 0.9},
    };
    for (const Case& item : cases) {
        SCOPED_TRACE(item.name);
        const Seen seen(MeshOf(ShapePart(item.shape), Parameters()));
        EXPECT_EQ(seen.openEdges, 0);
        if (item.volume > 0) {
            EXPECT_NEAR(seen.volume, item.volume, 0.04 * item.volume);
        }
        EXPECT_GT(seen.worstCosine, item.leastCosine);
    }
}

TEST(Mesher, SmoothSeamsMergeAndSharpEdgesStay)
{
    EXPECT_EQ(Seen(MeshOf(ShapePart(BRepPrimAPI_MakeBox(1, 1, 1).Shape()), Parameters())).vertices.size(),
              24U);
    // On a torus each position has one normal, also where the surface closes.
    const Seen torus(MeshOf(ShapePart(BRepPrimAPI_MakeTorus(30, 10).Shape()), Parameters()));
    EXPECT_EQ(static_cast<int>(torus.vertices.size()), torus.triangles / 2);
}

TEST(Mesher, EachAppearanceIsOneSetTheBodysOwnFirst)
{
    const ModelData_Appearance body(ModelData_Color(0.F, 0.F, 1.F));
    const ModelData_Appearance red(ModelData_Color(1.F, 0.F, 0.F));
    const ModelData_Appearance green(ModelData_Color(0.F, 1.F, 0.F));
    auto* brep = new occt::OcctBRep(BRepPrimAPI_MakeBox(10, 20, 30).Shape());
    brep->appearance = body;
    int number = 0;
    for (TopExp_Explorer it(brep->shape, TopAbs_FACE); it.More(); it.Next(), ++number) {
        if (number % 3 != 2) {
            brep->appearances.Bind(it.Current(), number % 3 == 0 ? red : green);
        }
    }
    const ModelData_Part part(internal::MakeHandle<ModelData_BRepRepresentation>(brep), "block");
    const ModelData_PolyRepresentation shapes = MeshOf(part, Parameters());
    ASSERT_EQ(shapes.Get().Size(), 3U);
    const ModelData_Appearance expected[] = {body, red, green};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(SetOf(shapes, i).NumberOfFaces(), 4);
        EXPECT_EQ(SetOf(shapes, i).Appearance().Impl(), expected[i].Impl());
        EXPECT_EQ(SetOf(shapes, i).Name(), Base_UTF16String("block"));
    }
    EXPECT_EQ(Seen(shapes).openEdges, 0);

    ModelData_Part faces(part.BRepRepresentation(), "faces");
    EXPECT_EQ(MeshOf(faces, Parameters(0.0076, 24, false)).Get().Size(), 6U);
    EXPECT_EQ(Seen(faces.PolyRepresentation(ModelData_RM_Poly)).openEdges, 0);
}

TEST(Mesher, LooseCurvesBecomePolylines)
{
    BRep_Builder builder;
    TopoDS_Compound curves;
    builder.MakeCompound(curves);
    // A path of three edges in any order and direction, a fork at one of its ends, and a circle.
    builder.Add(curves, BRepBuilderAPI_MakeEdge(gp_Pnt(10, 0, 0), gp_Pnt(0, 0, 0)).Edge());
    builder.Add(curves, BRepBuilderAPI_MakeEdge(gp_Pnt(10, 10, 0), gp_Pnt(10, 10, 10)).Edge());
    builder.Add(curves, BRepBuilderAPI_MakeEdge(gp_Pnt(10, 0, 0), gp_Pnt(10, 10, 0)).Edge());
    builder.Add(curves, BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(-5, 0, 0)).Edge());
    builder.Add(curves, BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(0, -5, 0)).Edge());
    builder.Add(curves,
                BRepBuilderAPI_MakeEdge(gp_Circ(gp_Ax2(gp_Pnt(0, 0, 50), gp_Dir(0, 0, 1)), 10)).Edge());
    builder.Add(
        curves,
        BRepBuilderAPI_MakePolygon(gp_Pnt(100, 0, 0), gp_Pnt(101, 0, 0), gp_Pnt(101, 1, 0), true).Wire());
    builder.Add(curves, BRepPrimAPI_MakeBox(1, 1, 1).Shape());
    const ModelData_PolyRepresentation shapes = MeshOf(ShapePart(curves), Parameters());

    std::vector<int> counts;
    for (std::size_t i = 0; i < shapes.Get().Size(); ++i) {
        if (shapes.Get()[i].IsOfType<ModelData_PolyLineSet>()) {
            const auto& set = static_cast<const ModelData_PolyLineSet&>(shapes.Get()[i]);
            EXPECT_EQ(set.NumberOfPolyLines(), 1);
            counts.push_back(set.NumberOfVertices(0));
            if (counts.size() == 4) { // the circle: on it, closed, within the tolerance between the points
                EXPECT_GE(counts.back(), 16);
                EXPECT_NEAR(set.Coordinate(0, 0).X(), set.Coordinate(0, counts.back() - 1).X(), 1e-9);
                for (int j = 0; j < counts.back(); ++j) {
                    EXPECT_NEAR(std::hypot(set.Coordinate(0, j).X(), set.Coordinate(0, j).Y()), 10, 1e-9);
                }
                counts.back() = 0;
            }
        }
    }
    EXPECT_EQ(counts, (std::vector<int>{4, 2, 2, 0, 4}));
}

TEST(Mesher, SenselessParametersNeitherCrashNorHang)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    const TopoDS_Shape shape = Drilled();
    const auto triangles = [&](double chord, double degrees, bool isRelative = true) {
        ModelAlgo_BRepMesherParameters parameters = Parameters(chord, degrees);
        parameters.SetIsRelativeChordalDeflection(isRelative);
        return Seen(MeshOf(ShapePart(shape), parameters)).triangles;
    };
    const int fine = triangles(0.004, 20);
    EXPECT_EQ(triangles(-0.00224, 0), fine); // what a tessellation level of -1 asks for
    EXPECT_EQ(triangles(0, -5, false), fine);
    EXPECT_EQ(triangles(nan, nan), fine);
    EXPECT_GT(triangles(1e-300, 1e-300), fine);
    for (const bool isRelative : {true, false}) {
        EXPECT_GT(triangles(infinite, infinite, isRelative), 0);
    }
    EXPECT_LT(triangles(0.08, 60), fine);
}

TEST(Mesher, SharedPartsOnceAndExistingMeshesRespected)
{
    ModelData_Part part = ShapePart(BRepPrimAPI_MakeBox(1, 2, 3).Shape());
    ModelData_Assembly assembly("assembly");
    assembly.AddInstance(ModelData_Instance(part));
    assembly.AddInstance(ModelData_Instance(part));
    const ModelData_Model model = ModelOf(assembly);
    const ModelAlgo_BRepMesher mesher{Parameters()};
    mesher.Compute(model);
    const ModelData_PolyRepresentation first = part.PolyRepresentation(ModelData_RM_Poly);
    ASSERT_FALSE(first.IsNull());
    mesher.Compute(model, false);
    mesher.Compute(assembly, true);
    EXPECT_TRUE(part.PolyRepresentation(ModelData_RM_Poly) == first);
    EXPECT_EQ(internal::ImplOf(part).representations.size(), 3U); // exact, first, enforced

    // Without an exact shape there is nothing to mesh, and nothing is added.
    ModelData_Part meshOnly = MeshPart(MakeSet({{{0, 0, 0}, {1, 1, 1}}}));
    ModelData_Part empty("empty");
    mesher.Compute(ModelOf(meshOnly), true);
    mesher.Compute(ModelOf(empty), true);
    EXPECT_EQ(internal::ImplOf(meshOnly).representations.size(), 1U);
    EXPECT_TRUE(empty.PolyRepresentation(ModelData_RM_Poly).IsNull());
    mesher.Compute(ModelData_Model(), true);
}

TEST(Mesher, FacetsAreTakenAsTheyAre)
{
    const ModelData_Part part = FacetedBox(true);
    const Seen seen(MeshOf(part, Parameters()));
    EXPECT_EQ(seen.triangles, 12);
    EXPECT_EQ(seen.openEdges, 0);
    EXPECT_EQ(seen.vertices.size(), 24U);
    EXPECT_GT(seen.worstCosine, 1 - 1e-6);
}

TEST(Mesher, AFaceThatCannotBeMeshedLeavesTheOthers)
{
    BRep_Builder builder;
    TopoDS_Compound shape;
    builder.MakeCompound(shape);
    TopoDS_Face broken; // a face without a surface
    builder.MakeFace(broken);
    builder.Add(shape, broken);
    builder.Add(shape, BRepPrimAPI_MakeBox(1, 1, 1).Shape());
    internal::Reports::Clear();
    EXPECT_EQ(Seen(MeshOf(ShapePart(shape), Parameters())).triangles, 12);
    const std::vector<internal::Report> reports = internal::Reports::Take();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports.front().kind, internal::Report::Kind::LeftOut);
}

TEST(Mesher, SliversAreTurnedIntoTrianglesWithArea)
{
    // The top of a plate whose long side has two nodes on it, so that 0 1 2 and 0 2 3 have no area.
    const std::vector<ModelData_Point> points = {{0, 0, 0}, {1, 0, 0}, {2, 1e-9, 0}, {3, 0, 0}, {1, 5, 0}};
    const std::vector<U32> pointOf = {0, 1, 2, 3, 4};
    std::vector<mesh::NodeTriangle> triangles = {{2, 1, 0}, {3, 2, 0}, {0, 4, 3}};
    const auto outline = [&] {
        std::map<std::pair<int, int>, int> sides;
        for (const mesh::NodeTriangle& t : triangles) {
            for (std::size_t k = 0; k < 3; ++k) {
                const int from = t[k];
                const int to = t[(k + 1) % 3];
                sides[{std::min(from, to), std::max(from, to)}] += from < to ? 1 : -1;
            }
        }
        std::erase_if(sides, [](const auto& side) { return side.second == 0; });
        return sides;
    };
    const auto before = outline();
    mesh::FlipSlivers(triangles, points, pointOf);
    EXPECT_EQ(triangles.size(), 3U);
    EXPECT_EQ(outline(), before);
    for (const mesh::NodeTriangle& t : triangles) {
        EXPECT_FALSE(mesh::IsSliver(points[static_cast<std::size_t>(t[0])],
                                    points[static_cast<std::size_t>(t[1])],
                                    points[static_cast<std::size_t>(t[2])]));
    }
    // Alone, a sliver stays.
    triangles = {{0, 1, 2}};
    mesh::FlipSlivers(triangles, points, pointOf);
    EXPECT_EQ(triangles, (std::vector<mesh::NodeTriangle>{{0, 1, 2}}));
}

TEST(Mesher, ThreadsChangeNothing)
{
    BRep_Builder builder;
    TopoDS_Compound many;
    builder.MakeCompound(many);
    for (int i = 0; i < 150; ++i) {
        builder.Add(many,
                    BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(30 * i, 0, 0), gp_Dir(0, 0, 1)), 10, 5).Shape());
    }
    std::vector<std::map<std::pair<Position, Position>, int>> results;
    for (const bool isConcurrent : {true, false}) {
        Base_Settings::Default()->SetValue(Base_Settings::ConcurrentMode, isConcurrent);
        results.push_back(Seen(MeshOf(ShapePart(many), Parameters())).edges);
    }
    Base_Settings::Default()->SetValue(Base_Settings::ConcurrentMode, true);
    EXPECT_FALSE(results[0].empty());
    EXPECT_EQ(results[0], results[1]);
}

} // namespace
