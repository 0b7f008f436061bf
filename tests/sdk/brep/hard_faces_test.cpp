// Single faces that are hard to close, and descriptions that are damaged.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <BRepCheck_Analyzer.hxx>
#include <BRep_Tool.hxx>
#include <GeomAPI_Interpolate.hxx>
#include <GeomConvert.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_Circle.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Plane.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <TColgp_HArray1OfPnt.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <cadex/internal/Reports.hxx>
#include <gp.hxx>
#include <gp_Pln.hxx>

#include "sdk/brep/ShapeBuilder.h"
#include "tests/sdk/brep/FaceMeasures.h"

namespace cadex::brep {
namespace {

/// A closed edge on its curve, with one vertex at the curve's parameter.
int AddClosed(Description& body, const Handle(Geom_Curve) & curve, double vertexAt = 0)
{
    const int vertex = body.AddVertex(curve->Value(vertexAt));
    return body.AddEdge({.curve = curve, .start = vertex, .end = vertex});
}

int AddCircle(Description& body, double height, double radius)
{
    return AddClosed(body, new Geom_Circle(gp_Ax2(gp_Pnt(0, 0, height), gp_Dir(0, 0, 1)), radius));
}

Loop LoopOf(std::vector<EdgeUse> uses)
{
    return {.uses = std::move(uses)};
}

/// A body of one face.
Description OneFace(Description body, const Handle(Geom_Surface) & surface, std::vector<Loop> loops,
                    bool sameSense = true)
{
    const int number = body.AddSurface(surface);
    const int face = body.AddFace({.surface = number, .sameSense = sameSense, .loops = std::move(loops)});
    body.sheets.push_back(body.AddShell({.faces = {{.face = face}}}));
    return body;
}

Description Bands(const Handle(Geom_Surface) & surface, const std::vector<std::pair<double, double>>& circles)
{
    Description body;
    std::vector<Loop> loops;
    for (std::size_t i = 0; i < circles.size(); ++i) {
        loops.push_back(LoopOf({{AddCircle(body, circles[i].first, circles[i].second), i % 2 == 0}}));
    }
    return OneFace(std::move(body), surface, std::move(loops));
}

Description Polygons(const std::vector<std::vector<gp_Pnt>>& polygons)
{
    Description body;
    std::vector<Loop> loops;
    for (const std::vector<gp_Pnt>& polygon : polygons) {
        std::vector<int> vertices;
        for (const gp_Pnt& point : polygon) {
            int same = None;
            for (int i = 0; i < static_cast<int>(body.vertices.size()); ++i) {
                same = body.vertices[static_cast<std::size_t>(i)].point.Distance(point) == 0 ? i : same;
            }
            vertices.push_back(same == None ? body.AddVertex(point) : same);
        }
        Loop loop;
        for (std::size_t i = 0; i < vertices.size(); ++i) {
            loop.uses.push_back({.edge = body.AddLine(vertices[i], vertices[(i + 1) % vertices.size()])});
        }
        loops.push_back(loop);
    }
    return OneFace(std::move(body), new Geom_Plane(gp_Pln()), std::move(loops));
}

/// Round the torus once each way, `ahead` farther in v.
Handle(Geom_Curve) Diagonal(const Geom_Surface& torus, double ahead)
{
    constexpr int Count = 120;
    const Handle(TColgp_HArray1OfPnt) points = new TColgp_HArray1OfPnt(1, Count);
    for (int i = 0; i < Count; ++i) {
        const double t = 2 * M_PI * i / Count;
        points->SetValue(i + 1, torus.Value(t, t + ahead));
    }
    GeomAPI_Interpolate interpolate(points, true, 1e-7);
    interpolate.Perform();
    return Handle(Geom_Curve)(interpolate.Curve());
}

Description DiagonalBand()
{
    const Handle(Geom_Surface) torus = new Geom_ToroidalSurface(gp_Ax3(), 5, 2);
    Description body;
    const int lower = AddClosed(body, Diagonal(*torus, 0)), upper = AddClosed(body, Diagonal(*torus, 1));
    return OneFace(std::move(body), torus, {LoopOf({{lower, true}}), LoopOf({{upper, false}})});
}

/// Half of a ball behind a great circle through both of its poles.
Description HalfBall(bool isForward)
{
    Description body;
    const int edge = AddClosed(body, new Geom_Circle(gp_Ax2(gp_Pnt(), gp_Dir(0, 1, 0)), 3));
    return OneFace(std::move(body), new Geom_SphericalSurface(gp_Ax3(), 3), {LoopOf({{edge, isForward}})});
}

Handle(Geom_BSplineCurve) ClosedSpline(double height)
{
    const Handle(TColgp_HArray1OfPnt) points = new TColgp_HArray1OfPnt(1, 40);
    for (int i = 1; i <= 40; ++i) {
        points->SetValue(i, gp_Pnt(4 * std::cos(M_PI * i / 20), 4 * std::sin(M_PI * i / 20), height));
    }
    GeomAPI_Interpolate interpolate(points, true, 1e-7);
    interpolate.Perform();
    const Handle(Geom_BSplineCurve) curve = interpolate.Curve();
    curve->SetNotPeriodic();
    return curve;
}

/// An extruded closed spline between edges whose vertices are not where the spline begins.
Description Sleeve(bool hasVertices)
{
    Description body;
    std::vector<Loop> loops;
    for (const double height : {0.0, 7.0}) {
        const Handle(Geom_BSplineCurve) curve = ClosedSpline(height);
        const double at = curve->FirstParameter() +
                          (0.2 + height / 20) * (curve->LastParameter() - curve->FirstParameter());
        Edge bare;
        bare.curve = curve;
        const int edge = hasVertices ? AddClosed(body, curve, at) : body.AddEdge(bare);
        loops.push_back(LoopOf({{edge, height == 0}}));
    }
    return OneFace(std::move(body), new Geom_SurfaceOfLinearExtrusion(ClosedSpline(0), gp_Dir(0, 0, 1)),
                   std::move(loops));
}

Handle(Geom_Surface) SplineTorus()
{
    return GeomConvert::SurfaceToBSplineSurface(new Geom_ToroidalSurface(gp_Ax3(), 5, 2));
}

Description CapWithVertexLoop()
{
    Description body;
    const int pole = body.AddVertex({0, 0, 2});
    const int edge = AddCircle(body, 0, 2);
    return OneFace(std::move(body), new Geom_SphericalSurface(gp_Ax3(), 2),
                   {LoopOf({{edge, true}}), Loop{.vertex = pole}});
}

Description WithEdgeOfNoLength()
{
    Description body = Polygons({{{0, 0, 0}, {4, 0, 0}, {4, 3, 0}}});
    const int corner = body.AddVertex({4, 3, 0});
    const int again = body.AddLine(corner, corner);
    body.faces[0].loops[0].uses.push_back({.edge = again});
    std::swap(body.faces[0].loops[0].uses[2], body.faces[0].loops[0].uses[3]);
    return body;
}

/// A band from `left` to 11 whose lower edge lies on a curve that comes back past itself, nearer to the
/// edge's vertices than on its way there.
Description OnFoldedCurve(double left, double right)
{
    TColgp_Array1OfPnt poles(1, 3);
    poles(1) = {0, 0, 0};
    poles(2) = {12, 0, 0};
    poles(3) = {8, 6e-4, 0};
    TColStd_Array1OfReal knots(1, 3);
    TColStd_Array1OfInteger multiplicities(1, 3);
    for (int i = 1; i <= 3; ++i) {
        knots(i) = i - 1;
        multiplicities(i) = i == 2 ? 1 : 2;
    }
    Description body = Polygons({{{left, 3e-4, 0}, {right, 2e-4, 0}, {11, 3, 0}, {left, 3, 0}}});
    body.edges[0].curve = new Geom_BSplineCurve(poles, knots, multiplicities, 1);
    return body;
}

TEST(HardFaces, AreClosedAndMeasureWhatTheyShould)
{
    const double reach = std::acos(-2.0 / 3); // where a spindle of radii 2 and 3 meets its axis
    const auto spindle = [](double v) { return 2 * M_PI * 3 * (2 * v + 3 * std::sin(v)); };
    const Handle(Geom_Surface) torus = new Geom_ToroidalSurface(gp_Ax3(), 2, 3);
    const Handle(Geom_Surface) ball = new Geom_SphericalSurface(gp_Ax3(), 5);
    const Handle(Geom_Surface) tube = new Geom_CylindricalSurface(gp_Ax3(), 2);
    const std::vector<gp_Pnt> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    const std::vector<gp_Pnt> turned(square.rbegin(), square.rend());
    struct Case
    {
        const char* name;
        Description body;
        double area;
        std::size_t outer = 1;
        bool isTurned = false;
    };
    const Case cases[] = {
        {"outer part of a spindle", OneFace({}, torus, {}), 2 * spindle(reach)},
        {"cap of the inner part", Bands(torus, {{0, 1}}), std::abs(spindle(M_PI) - spindle(reach))},
        {"horn torus", OneFace({}, new Geom_ToroidalSurface(gp_Ax3(), 3, 3), {}), 36 * M_PI * M_PI},
        {"half ball over the poles", HalfBall(true), 18 * M_PI},
        {"the other half", HalfBall(false), 18 * M_PI},
        {"two caps in one face", Bands(ball, {{3, 4}, {-3, 4}}), 40 * M_PI, 2},
        {"zone between them", Bands(ball, {{-3, 4}, {3, 4}}), 60 * M_PI},
        {"two bands in one face", Bands(tube, {{0, 2}, {1, 2}, {5, 2}, {7, 2}}), 12 * M_PI, 2},
        {"whole ball", OneFace({}, ball, {}), 100 * M_PI},
        {"whole torus of splines", OneFace({}, SplineTorus(), {}), 40 * M_PI * M_PI},
        {"band round a torus both ways", DiagonalBand(), 20 * M_PI},
        {"hole that touches the outer loop", Polygons({square, {{0, 0, 0}, {1, 3, 0}, {3, 1, 0}}}), 12},
        {"loop the wrong way round", Polygons({turned}), 16, 1, true},
        {"hole the same way round as the outer loop", Polygons({square, {{1, 1, 0}, {3, 1, 0}, {3, 3, 0}}}),
         14, 1, true},
        {"two squares", Polygons({square, {{6, 0, 0}, {8, 0, 0}, {8, 2, 0}, {6, 2, 0}}}), 20, 2},
        {"closed splines that begin elsewhere", Sleeve(true), 56 * M_PI},
        {"edges without vertices", Sleeve(false), 56 * M_PI},
        {"vertex loop in a pole", CapWithVertexLoop(), 8 * M_PI},
        {"edge of no length", WithEdgeOfNoLength(), 6},
        {"edge on a curve that folds", OnFoldedCurve(9, 11), 6},
        {"short edge on a curve that folds", OnFoldedCurve(9, 9.0005), 3},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        const Body body = MakeBody(test.body);
        const ResolvedFace face = ResolveFace(body, 0);
        EXPECT_EQ(face.status, ResolveStatus::Done) << TextOf(face.status);
        EXPECT_NEAR(MeasuresOf(body, face).area, test.area, 2e-3 * test.area);
        EXPECT_EQ(face.isTurned, test.isTurned);
        const auto outer = std::count_if(face.rings.begin(), face.rings.end(),
                                         [](const Ring& ring) { return ring.isOuter; });
        EXPECT_EQ(static_cast<std::size_t>(outer), test.outer);
        const BuiltShape built = BuildShape(test.body);
        EXPECT_EQ(built.healed + built.leftOut, 0u);
        ASSERT_FALSE(built.faces[0].IsNull());
        EXPECT_TRUE(BRepCheck_Analyzer(built.faces[0]).IsValid());
    }
}

TEST(HardFaces, TolerancesHoldWhereEdgesAreOff)
{
    Description body = Polygons({{{0, 0, 0}, {4, 0, 0}, {4, 4, 1e-3}, {0, 4, 1e-3}}});
    const BuiltShape built = BuildShape(body);
    double most = 0;
    for (TopExp_Explorer edge(built.shape, TopAbs_EDGE); edge.More(); edge.Next()) {
        most = std::max(most, BRep_Tool::Tolerance(TopoDS::Edge(edge.Current())));
    }
    EXPECT_GE(most, 1e-3);
    EXPECT_LT(most, 2e-3);
    EXPECT_TRUE(BRepCheck_Analyzer(built.shape).IsValid());
}

TEST(HardFaces, LoopsThatCrossAreHealedOrLeftOut)
{
    internal::Reports::Clear();
    const Description bowTie = Polygons({{{0, 0, 0}, {4, 3, 0}, {4, 0, 0}, {0, 4, 0}}});
    const BuiltShape built = BuildShape(bowTie);
    EXPECT_EQ(built.healed + built.leftOut, 1u);
    const std::vector<internal::Report> reports = internal::Reports::Take();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].text, "face whose loops cross");
}

TEST(HardFaces, DamageIsReportedAndNothingElse)
{
    constexpr double Huge = 1e300, NaN = std::numeric_limits<double>::quiet_NaN();
    const std::vector<gp_Pnt> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    const Description sound = Polygons({square});
    const auto with = [&](const std::function<void(Description&)>& damage) {
        Description body = sound;
        body.faces[0].record = 77;
        damage(body);
        return body;
    };
    const Handle(Geom_Plane) far = new Geom_Plane(gp_Pln(gp_Pnt(Huge, 0, 0), gp_Dir(0, 0, 1)));
    const Description damaged[] = {
        with([](Description& body) { body.faces[0].surface = 9; }),
        with([](Description& body) { body.faces[0].surface = None; }),
        with([](Description& body) { body.surfaces[0] = {}; }),
        with([&](Description& body) { body.surfaces[0] = far; }),
        with([](Description& body) { body.surfaces[0] = new Geom_CylindricalSurface(gp_Ax3(), 0); }),
        with([](Description& body) { body.surfaces[0] = new Geom_SphericalSurface(gp_Ax3(), 1e-300); }),
        with([](Description& body) { body.faces[0].loops[0].uses[1].edge = 99; }),
        with([](Description& body) { body.faces[0].loops[0].uses[1].edge = -5; }),
        with([](Description& body) { body.faces[0].loops.clear(); }),
        with([](Description& body) { body.faces[0].loops = {Loop{.vertex = 70}}; }),
        with([](Description& body) { body.edges[1].start = 12; }),
        with([=](Description& body) { body.vertices[2].point.SetX(NaN); }),
        with([=](Description& body) { body.vertices[2].point.SetX(Huge); }),
        with([=](Description& body) {
            body.edges[1].curve = new Geom_Circle(gp_Ax2(gp_Pnt(Huge, 0, 0), gp::DZ()), 1);
        }),
        with([](Description& body) { body.edges[1].curve = new Geom_Circle(gp_Ax2(), 0); }),
    };
    for (const Description& description : damaged) {
        SCOPED_TRACE(&description - damaged);
        internal::Reports::Clear();
        const BuiltShape built = BuildShape(description);
        EXPECT_EQ(built.leftOut, 1u);
        EXPECT_TRUE(built.shape.IsNull());
        const std::vector<internal::Report> reports = internal::Reports::Take();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].kind, internal::Report::Kind::LeftOut);
        EXPECT_EQ(reports[0].record, 77u);
    }
    // References to nothing above the faces.
    Description body = sound;
    body.shells[0].faces.push_back({.face = 8});
    body.sheets = {0, 5, -3};
    body.solids = {{.outer = 7, .voids = {9}}, {.outer = None}};
    body.curves = {{.edge = 31}, {.edge = 0}};
    const BuiltShape built = BuildShape(body);
    EXPECT_EQ(built.leftOut, 1u);
    EXPECT_TRUE(built.curves[0].IsNull());
    EXPECT_FALSE(built.curves[1].IsNull());
    EXPECT_FALSE(built.faces[0].IsNull());
    EXPECT_EQ(ResolveFace(MakeBody(body), 40).status, ResolveStatus::NoFace);
}

} // namespace
} // namespace cadex::brep
