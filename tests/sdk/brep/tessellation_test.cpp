// Described bodies as triangles: watertight, with the areas, volumes and normals of what was described.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepGProp.hxx>
#include <BRepOffsetAPI_ThruSections.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <GProp_GProps.hxx>
#include <GeomAPI_PointsToBSpline.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_Circle.hxx>
#include <Geom_Plane.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Circ.hxx>
#include <gp_Elips.hxx>
#include <gp_Pln.hxx>
#include <gp_Trsf.hxx>
#include <gp_Vec.hxx>

#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/brep/BodyIntegrals.h"
#include "sdk/brep/DescribedBRep.h"
#include "sdk/brep/FaceEdges.h"
#include "sdk/brep/FaceTessellation.h"
#include "sdk/brep/KernelFaces.h"
#include "sdk/occt/EngineScope.h"
#include "tests/sdk/SeenMesh.h"
#include "tests/sdk/brep/DescriptionOf.h"

namespace cadex::brep {
namespace {

using test::Seen;
using test::SetOf;

constexpr double Degree = M_PI / 180;

occt::MeshTolerances Tolerances(double chord = 0.0076, double degrees = 24)
{
    return {.chord = chord, .angle = degrees * Degree, .relative = true, .parallel = false};
}

ModelData_PolyRepresentation MeshOf(const DescribedBRep& body,
                                    const occt::MeshTolerances& tolerances = Tolerances(), bool merge = true)
{
    ModelData_PolyRepresentation result;
    occt::RunGuarded(occt::EngineUse::Geometry, [&] {
        result = body.Mesh(tolerances, merge, "body");
        return true;
    });
    return result;
}

TopoDS_Wire Wave(double height)
{
    TColgp_Array1OfPnt points(1, 9);
    for (int i = 1; i <= 9; ++i) {
        points(i) = gp_Pnt(10 + 2 * std::sin(i * 1.3), 4.0 * i, height);
    }
    const Handle(Geom_BSplineCurve) spline = GeomAPI_PointsToBSpline(points).Curve();
    const gp_Pnt start = spline->StartPoint();
    const gp_Pnt end = spline->EndPoint();
    const gp_Pnt first(0, start.Y(), height);
    const gp_Pnt last(0, end.Y(), height);
    BRepBuilderAPI_MakeWire wire(BRepBuilderAPI_MakeEdge(spline), BRepBuilderAPI_MakeEdge(end, last),
                                 BRepBuilderAPI_MakeEdge(last, first), BRepBuilderAPI_MakeEdge(first, start));
    return wire;
}

TopoDS_Shape Extruded()
{
    return BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(Wave(0)).Face(), gp_Vec(3, 2, 20)).Shape();
}

TopoDS_Shape Revolved(double angle)
{
    return BRepPrimAPI_MakeRevol(BRepBuilderAPI_MakeFace(Wave(0)).Face(), gp_Ax1(gp_Pnt(), gp_Dir(0, 1, 0)),
                                 angle)
        .Shape();
}

TopoDS_Wire RingAt(double height, double major, double minor)
{
    const gp_Elips ellipse(gp_Ax2(gp_Pnt(0, 0, height), gp_Dir(0, 0, 1)), major, minor);
    return BRepBuilderAPI_MakeWire(BRepBuilderAPI_MakeEdge(ellipse));
}

TopoDS_Shape Lofted()
{
    BRepOffsetAPI_ThruSections loft(true);
    loft.AddWire(RingAt(0, 10, 8));
    loft.AddWire(RingAt(15, 6, 5));
    loft.AddWire(RingAt(30, 12, 7));
    return loft.Shape();
}

TopoDS_Shape Rounded()
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(30, 20, 10).Shape();
    BRepFilletAPI_MakeFillet fillet(box);
    for (TopExp_Explorer it(box, TopAbs_EDGE); it.More(); it.Next()) {
        fillet.Add(2, TopoDS::Edge(it.Current()));
    }
    return fillet.Shape();
}

TopoDS_Shape Drilled()
{
    // Along, across and slanted through a block and a ball: spline edges on cylinders, planes, a sphere.
    const gp_Ax2 along(gp_Pnt(-30, 0, 2), gp_Dir(1, 0, 0));
    const gp_Ax2 slanted(gp_Pnt(-10, -8, -30), gp_Dir(0.2, 0.3, 1));
    const TopoDS_Shape once =
        BRepAlgoAPI_Cut(BRepPrimAPI_MakeSphere(20).Shape(), BRepPrimAPI_MakeCylinder(along, 6, 60).Shape())
            .Shape();
    return BRepAlgoAPI_Cut(once, BRepPrimAPI_MakeCylinder(slanted, 4, 70).Shape()).Shape();
}

struct Case
{
    const char* name;
    TopoDS_Shape shape;
    double leastCosine; ///< between a corner's normal and its facet
};

std::vector<Case> Bodies()
{
    const gp_Ax2 leftHanded(gp_Pnt(1, 2, 3), gp_Dir(0, 1, 1));
    return {
        {"box", BRepPrimAPI_MakeBox(10, 20, 30).Shape(), 1 - 1e-6},
        {"cylinder", BRepPrimAPI_MakeCylinder(10, 30).Shape(), 0.9},
        {"piece of a cylinder", BRepPrimAPI_MakeCylinder(leftHanded, 10, 30, 2).Shape(), 0.9},
        {"cone with an apex", BRepPrimAPI_MakeCone(10, 0, 30).Shape(), 0.9},
        {"cut cone", BRepPrimAPI_MakeCone(leftHanded, 3, 10, 12).Shape(), 0.9},
        {"sphere", BRepPrimAPI_MakeSphere(10).Shape(), 0.85},
        {"zone of a sphere", BRepPrimAPI_MakeSphere(10, -0.4, 1.1, 4).Shape(), 0.9},
        {"torus", BRepPrimAPI_MakeTorus(30, 10).Shape(), 0.85},
        {"piece of a torus", BRepPrimAPI_MakeTorus(leftHanded, 30, 10, -1, 2, 4).Shape(), 0.85},
        {"extruded", Extruded(), 0.85},
        {"revolved", Revolved(2 * M_PI), 0.85},
        {"revolved in part", Revolved(2), 0.85},
        {"lofted", Lofted(), 0.85},
        {"rounded box", Rounded(), 0.85},
        {"drilled ball", Drilled(), 0.85},
    };
}

TEST(Tessellation, BodiesAreWatertightWithTheirAreaVolumeAndNormals)
{
    for (const Case& item : Bodies()) {
        GProp_GProps area;
        GProp_GProps volume;
        BRepGProp::SurfaceProperties(item.shape, area);
        BRepGProp::VolumeProperties(item.shape, volume);
        for (const bool seams : {true, false}) {
            SCOPED_TRACE(std::string(item.name) + (seams ? "" : ", without seams"));
            internal::Reports::Clear();
            const DescribedBRep body(DescriptionOf(item.shape, {.seams = seams}));
            const Seen seen(MeshOf(body));
            EXPECT_EQ(seen.openEdges, 0);
            EXPECT_NEAR(seen.surface, area.Mass(), 0.02 * area.Mass());
            EXPECT_NEAR(seen.volume, volume.Mass(), 0.03 * volume.Mass());
            EXPECT_GT(seen.worstCosine, item.leastCosine);
            EXPECT_TRUE(internal::Reports::Take().empty());

            const Seen fine(MeshOf(body, Tolerances(0.0005, 5)));
            EXPECT_EQ(fine.openEdges, 0);
            EXPECT_NEAR(fine.surface, area.Mass(), 0.0015 * area.Mass());
            EXPECT_NEAR(fine.volume, volume.Mass(), 0.0025 * volume.Mass());
            EXPECT_GT(fine.worstCosine, 0.97);
        }
    }
}

std::vector<double> Coordinates(const ModelData_PolyRepresentation& shapes)
{
    std::vector<double> result;
    for (std::size_t i = 0; !shapes.IsNull() && i < shapes.Get().Size(); ++i) {
        for (int face = 0; face < SetOf(shapes, i).NumberOfFaces(); ++face) {
            for (int slot = 0; slot < 3; ++slot) {
                const test::Position position = test::At(SetOf(shapes, i), face, slot);
                result.insert(result.end(), position.begin(), position.end());
            }
        }
    }
    return result;
}

TEST(BodyIntegrals, AreThoseOfTheKernelsShape)
{
    for (const Case& item : Bodies()) {
        for (const bool seams : {true, false}) {
            SCOPED_TRACE(std::string(item.name) + (seams ? "" : ", without seams"));
            GProp_GProps area;
            GProp_GProps volume;
            BRepGProp::SurfaceProperties(item.shape, area);
            BRepGProp::VolumeProperties(item.shape, volume);
            const Description described = DescriptionOf(item.shape, {.seams = seams});
            const std::optional<BodyIntegrals> own = IntegrateBody(ResolveBody(described, false), false);
            ASSERT_TRUE(own && own->mass);
            EXPECT_NEAR(own->area, area.Mass(), 1e-5 * area.Mass());
            EXPECT_NEAR(own->mass->volume, volume.Mass(), 1e-5 * volume.Mass());
            const gp_Pnt centre(own->mass->centroid.X(), own->mass->centroid.Y(), own->mass->centroid.Z());
            EXPECT_LT(centre.Distance(volume.CentreOfMass()), 1e-3);
        }
    }
}

TEST(BodyIntegrals, OnlyClosedBodiesHaveAVolume)
{
    Description box = DescriptionOf(BRepPrimAPI_MakeBox(10, 20, 30).Shape());
    Shell shell = box.shells[0];
    box.shells[0].faces.pop_back();
    const std::optional<BodyIntegrals> open = IntegrateBody(ResolveBody(box, false), false);
    ASSERT_TRUE(open);
    EXPECT_FALSE(open->mass);

    // A body inside out counts as one; a face the wrong way round is for the kernel to judge.
    for (FaceUse& use : shell.faces) {
        use.forward = !use.forward;
    }
    box.shells[0] = shell;
    const std::optional<BodyIntegrals> turned = IntegrateBody(ResolveBody(box, false), false);
    ASSERT_TRUE(turned && turned->mass);
    EXPECT_NEAR(turned->mass->volume, 6000, 1e-9);
    EXPECT_NEAR(turned->mass->centroid.Z(), 15, 1e-9);
    box.shells[0].faces[1].forward = !box.shells[0].faces[1].forward;
    EXPECT_FALSE(IntegrateBody(ResolveBody(box, false), false));
}

/// A box with a notch that is half a cylinder.
Description NotchedBox()
{
    const gp_Ax2 axis(gp_Pnt(5, 0, -1), gp_Dir(0, 0, 1));
    return DescriptionOf(BRepAlgoAPI_Cut(BRepPrimAPI_MakeBox(10, 20, 30).Shape(),
                                         BRepPrimAPI_MakeCylinder(axis, 2, 40).Shape())
                             .Shape());
}

TEST(BodyIntegrals, ArcsAgainstTheirLoopsAreMended)
{
    Description swapped = NotchedBox();
    Description against = swapped;
    Description single = swapped;
    std::vector<int> arcs;
    for (std::size_t i = 0; i < swapped.edges.size(); ++i) {
        if (Edge& edge = swapped.edges[i]; KindOf(*edge.curve) == CurveKind::Circle) {
            arcs.push_back(static_cast<int>(i));
            std::swap(edge.start, edge.end); // as some mirrors leave them
            edge.first = edge.last = 0;
        }
    }
    ASSERT_EQ(arcs.size(), 2U);
    bool isOneTurned = false;
    for (std::size_t i = 0; i < against.faces.size(); ++i) {
        for (std::size_t k = 0; k < against.faces[i].loops[0].uses.size(); ++k) {
            EdgeUse& use = against.faces[i].loops[0].uses[k];
            if (std::find(arcs.begin(), arcs.end(), use.edge) != arcs.end()) {
                use.forward = !use.forward;
                if (!std::exchange(isOneTurned, true)) {
                    single.faces[i].loops[0].uses[k].forward = use.forward;
                }
            }
        }
    }
    const double volume = (10 * 20 - M_PI * 2 * 2 / 2) * 30;
    for (const Description* body : {&swapped, &against, &single}) {
        SCOPED_TRACE(body == &swapped ? "ends swapped" : body == &against ? "every use" : "one use");
        const std::optional<BodyIntegrals> whole = IntegrateBody(ResolveBody(*body, false), false);
        ASSERT_TRUE(whole && whole->mass);
        EXPECT_NEAR(whole->mass->volume, volume, 1e-6);
    }
}

TEST(Tessellation, EachAppearanceIsOneSetTheBodysOwnFirst)
{
    const ModelData_Appearance blue(ModelData_Color(0.F, 0.F, 1.F));
    const ModelData_Appearance red(ModelData_Color(1.F, 0.F, 0.F));
    Description box = DescriptionOf(BRepPrimAPI_MakeBox(10, 20, 30).Shape());
    box.appearance = blue;
    box.faces[0].appearance = red;
    box.faces[4].appearance = red;
    box.kernelShapes.push_back({BRepPrimAPI_MakeBox(gp_Pnt(50, 0, 0), 1, 1, 1).Shape(), red});
    const DescribedBRep body(std::move(box));
    const ModelData_PolyRepresentation merged = MeshOf(body);
    ASSERT_EQ(merged.Get().Size(), 2U);
    EXPECT_EQ(SetOf(merged, 0).NumberOfFaces(), 8);
    EXPECT_EQ(SetOf(merged, 1).NumberOfFaces(), 4 + 12);
    EXPECT_EQ(SetOf(merged, 0).Appearance().Impl(), blue.Impl());
    EXPECT_EQ(SetOf(merged, 1).Appearance().Impl(), red.Impl());
    EXPECT_EQ(SetOf(merged, 1).Name(), Base_UTF16String("body"));
    EXPECT_EQ(Seen(merged).openEdges, 0);
    EXPECT_EQ(Seen(merged).vertices.size(), 48U) << "sharp edges stay sharp";
    const ModelData_PolyRepresentation single = MeshOf(body, Tolerances(), false);
    EXPECT_EQ(single.Get().Size(), 12U);
    EXPECT_EQ(Seen(single).openEdges, 0);

    // On a torus each position has one normal, also where the surface closes.
    const Seen torus(MeshOf(DescribedBRep(DescriptionOf(BRepPrimAPI_MakeTorus(30, 10).Shape()))));
    EXPECT_EQ(static_cast<int>(torus.vertices.size()), torus.triangles / 2);
}

TEST(Tessellation, ShellsUseFacesFromEitherSide)
{
    // Two bodies on both sides of the sheet between them, and the space of one as a cavity.
    Description box = DescriptionOf(BRepPrimAPI_MakeBox(10, 20, 30).Shape());
    Shell inwards = box.shells[0];
    for (FaceUse& use : inwards.faces) {
        use.forward = !use.forward;
    }
    box.sheets.push_back(box.AddShell(inwards));
    const DescribedBRep body(std::move(box));
    const Seen seen(MeshOf(body));
    EXPECT_EQ(seen.triangles, 24);
    EXPECT_NEAR(seen.volume, 0, 1e-9);
    EXPECT_GT(seen.worstCosine, 1 - 1e-6);
}

TEST(Tessellation, LooseCurvesBecomePolylines)
{
    Description curves;
    const int corners[] = {curves.AddVertex({0, 0, 0}), curves.AddVertex({5, 0, 0}),
                           curves.AddVertex({5, 5, 0}), curves.AddVertex({110, 0, 0})};
    curves.curves = {{.edge = curves.AddLine(corners[0], corners[1])},
                     {.edge = curves.AddLine(corners[2], corners[1])}};
    Edge circle;
    circle.curve = new Geom_Circle(gp_Ax2(gp_Pnt(100, 0, 0), gp_Dir(0, 0, 1)), 10);
    circle.start = circle.end = corners[3];
    curves.curves.push_back({.edge = curves.AddEdge(circle)});
    curves.curves.push_back({.edge = 77});
    const ModelData_PolyRepresentation shapes = MeshOf(DescribedBRep(std::move(curves)));
    ASSERT_EQ(shapes.Get().Size(), 2U) << "chains";
    const auto line = [&](std::size_t i) {
        return static_cast<const ModelData_PolyLineSet&>(shapes.Get()[i]);
    };
    EXPECT_EQ(line(0).NumberOfVertices(0), 3);
    EXPECT_GE(line(1).NumberOfVertices(0), 16);
    for (int i = 0; i < line(1).NumberOfVertices(0); ++i) {
        EXPECT_NEAR(std::hypot(line(1).Coordinate(0, i).X() - 100, line(1).Coordinate(0, i).Y()), 10, 1e-9);
    }
}

TEST(Tessellation, ThreadsGiveTheSame)
{
    BRep_Builder builder;
    TopoDS_Compound many;
    builder.MakeCompound(many);
    for (const Case& item : Bodies()) {
        builder.Add(many, item.shape);
    }
    const DescribedBRep body(DescriptionOf(many));
    ASSERT_GT(body.Data().faces.size(), 64U);
    occt::MeshTolerances parallel = Tolerances();
    parallel.parallel = true;
    EXPECT_EQ(Coordinates(MeshOf(body)), Coordinates(MeshOf(body, parallel)));
}

TEST(Tessellation, TheKernelMeshesOnTheSameEdgePoints)
{
    for (const Case& item : Bodies()) {
        SCOPED_TRACE(item.name);
        const Description description = DescriptionOf(item.shape);
        const auto [body, faces] = ResolveBody(description, false);
        EdgeDiscretisation edges(body, Tolerances(), SizeOf(body));
        DivideEdges(faces, edges);
        for (std::size_t i = 0; i < faces.size(); ++i) {
            // Each vertex and point of an edge is where the rest of the body has it.
            const mesh::FaceTriangles triangles = MeshWithKernel(body, static_cast<int>(i), faces[i], edges);
            const FaceMesh own = TessellateFace(body, edges, faces[i]);
            const std::set<U32> kernelPoints(triangles.shared.begin(), triangles.shared.end());
            EXPECT_FALSE(triangles.triangles.empty());
            for (const int point : own.points) {
                EXPECT_TRUE(point < 0 || kernelPoints.count(static_cast<U32>(point)) == 1) << point;
            }
        }
    }
}

TEST(Tessellation, DamageCostsTheFaceAloneAndIsReported)
{
    Description box = DescriptionOf(BRepPrimAPI_MakeBox(10, 20, 30).Shape());
    box.faces[2].loops.clear(); // a plane without an end
    box.faces[2].record = 4711;
    internal::Reports::Clear();
    EXPECT_EQ(Seen(MeshOf(DescribedBRep(std::move(box)))).triangles, 10);
    const std::vector<internal::Report> reports = internal::Reports::Take();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].kind, internal::Report::Kind::LeftOut);
    EXPECT_EQ(reports[0].record, 4711U);
}

void AddPolygon(const std::vector<gp_Pnt>& corners, Description& body)
{
    Loop loop;
    const int first = static_cast<int>(body.vertices.size());
    const int count = static_cast<int>(corners.size());
    for (const gp_Pnt& corner : corners) {
        body.AddVertex(corner);
    }
    for (int i = 0; i < count; ++i) {
        loop.uses.push_back({.edge = body.AddLine(first + i, first + (i + 1) % count)});
    }
    const int plane = body.AddSurface(new Geom_Plane(gp_Pln()));
    const int face = body.AddFace({.surface = plane, .loops = {loop}});
    body.sheets.push_back(body.AddShell({.faces = {{.face = face}}}));
}

Description PlanePolygon(const std::vector<gp_Pnt>& corners)
{
    Description body;
    AddPolygon(corners, body);
    return body;
}

TEST(Tessellation, LoopsThatSlipKeepAllTheirSides)
{
    internal::Reports::Clear();
    const Description folded =
        PlanePolygon({{0, 0, 0}, {4, 0, 0}, {4, 3, 0}, {4.0003, 2.9998, 0}, {0, 3, 0}});
    const Seen seen(MeshOf(DescribedBRep(folded)));
    EXPECT_EQ(seen.triangles, 3);
    EXPECT_EQ(seen.openEdges, 5); // its own, once each
    EXPECT_GE(seen.worstCosine, 0) << "also where a sliver is turned over";
    EXPECT_NEAR(seen.surface, 12, 1e-2);
    const Description line = PlanePolygon({{0, 0, 0}, {4, 0, 0}});
    EXPECT_TRUE(MeshOf(DescribedBRep(line)).IsNull());
    EXPECT_TRUE(internal::Reports::Take().empty());
    const Description bowTie = PlanePolygon({{0, 0, 0}, {4, 3, 0}, {4, 0, 0}, {0, 4, 0}});
    MeshOf(DescribedBRep(bowTie));
    EXPECT_EQ(internal::Reports::Take().size(), 1U);

    // The same as a sliver of a large body is kept: its neighbours stay closed.
    Description large = PlanePolygon({{0, 0, 0}, {0.04, 0.03, 0}, {0.04, 0, 0}, {0, 0.04, 0}});
    AddPolygon({{10, 0, 0}, {100, 0, 0}, {10, 90, 0}}, large);
    const Seen stitched(MeshOf(DescribedBRep(large)));
    EXPECT_EQ(stitched.triangles, 2 + 1);
    EXPECT_EQ(stitched.openEdges, 4 + 3);
    const std::vector<internal::Report> reports = internal::Reports::Take();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].kind, internal::Report::Kind::Repaired);

    // Chamfers that ran past each other, by less than a hundredth of the body's size.
    const double w = 3, s = 0.04;
    const Seen plate(MeshOf(DescribedBRep(PlanePolygon({{w + s, w, 0},
                                                        {-w - s, w, 0},
                                                        {-w, w + s, 0},
                                                        {-w, -w - s, 0},
                                                        {-w - s, -w, 0},
                                                        {w + s, -w, 0},
                                                        {w, -w - s, 0},
                                                        {w, w + s, 0}}))));
    EXPECT_NEAR(plate.surface, 4 * w * w, 2); // corners that are put back overlap
    EXPECT_EQ(plate.openEdges, 8);
    EXPECT_EQ(internal::Reports::Take().at(0).kind, internal::Report::Kind::Repaired);
}

TEST(Tessellation, ShapesOfTheKernelAreDescribed)
{
    gp_Trsf placement;
    placement.SetTranslation({0, 0, 50});
    const TopoDS_Shape tool = BRepPrimAPI_MakeCylinder(4, 40).Shape().Moved(placement);
    const TopoDS_Shape cut =
        BRepAlgoAPI_Cut(BRepPrimAPI_MakeBox(gp_Pnt(-10, -10, 45), 20, 20, 30).Shape(), tool).Shape();
    TopoDS_Compound both;
    BRep_Builder().MakeCompound(both);
    BRep_Builder().Add(both, cut);
    BRep_Builder().Add(both, BRepPrimAPI_MakeSphere(3).Shape().Moved(placement));
    BRep_Builder().Add(both, BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(0, 0, 9)).Edge());
    occt::OcctBRep given(both);
    given.appearance = ModelData_Appearance(ModelData_Color(0.F, 0.F, 1.F));
    const TopoDS_Face first = TopoDS::Face(TopExp_Explorer(cut, TopAbs_FACE).Current());
    given.appearances.Bind(first, ModelData_Appearance(ModelData_Color(1.F, 0.F, 0.F)));
    const std::unique_ptr<occt::EngineBRep> body(MakeShapeBRep(given));
    EXPECT_TRUE(body->KernelShape().IsEqual(both));
    const auto* described = dynamic_cast<const DescribedBRep*>(body.get());
    ASSERT_NE(described, nullptr);
    const ModelData_PolyRepresentation sets = MeshOf(*described);
    ASSERT_EQ(sets.Get().Size(), 3U) << "two looks, one line";
    const Seen seen(sets);
    EXPECT_EQ(seen.openEdges, 0);
    const double solid = 12000 - M_PI * 16 * 25;
    const double ball = 36 * M_PI;
    EXPECT_NEAR(seen.volume, solid + ball, 0.01 * solid);
    ASSERT_TRUE(body->Mass());
    EXPECT_NEAR(body->Mass()->volume, solid + ball, 1e-3);
}

TEST(Tessellation, HostileDescriptionsNeitherCrashNorHang)
{
    const double nan = std::nan("");
    std::mt19937 random(5);
    const auto pick = [&](auto& items) -> auto&
    {
        return items[random() % items.size()];
    };
    const std::function<void(Description&)> damages[] = {
        [&](Description& d) { pick(d.vertices).point.SetX(nan); },
        [&](Description& d) { pick(d.vertices).point.SetY(1e300); },
        [&](Description& d) { pick(d.vertices).point.SetZ(-7); },
        [&](Description& d) { pick(d.edges).start = 12345; },
        [&](Description& d) { pick(d.edges).end = None; },
        [&](Description& d) { pick(d.edges).last = nan; },
        [&](Description& d) { pick(d.edges).first += 1e5; },
        [&](Description& d) { pick(d.edges).curve = pick(d.edges).curve; },
        [&](Description& d) { pick(d.faces).surface = static_cast<int>(random() % 20) - 2; },
        [&](Description& d) { pick(d.faces).loops.clear(); },
        [&](Description& d) { pick(d.faces).loops.resize(5, {.vertex = 99}); },
        [&](Description& d) { pick(d.surfaces).Nullify(); },
        [&](Description& d) { pick(d.surfaces) = pick(d.surfaces); },
        [&](Description& d) { pick(d.shells).faces.push_back({.face = 1 << 30}); },
        [&](Description& d) {
            for (Loop& loop : pick(d.faces).loops) {
                pick(loop.uses).forward = !pick(loop.uses).forward;
            }
        },
        [&](Description& d) {
            for (Loop& loop : pick(d.faces).loops) {
                pick(loop.uses).edge = static_cast<int>(random() % d.edges.size());
            }
        },
    };
    for (const Case& item : Bodies()) {
        const Description whole = DescriptionOf(item.shape);
        for (const auto& damage : damages) {
            Description damaged = whole;
            damage(damaged);
            occt::RunGuarded(occt::EngineUse::Geometry, [&] {
                const std::optional<BodyIntegrals> integrals =
                    IntegrateBody(ResolveBody(damaged, false), false);
                EXPECT_TRUE(!integrals || std::isfinite(integrals->area)) << item.name;
                return true;
            });
            for (const double value : Coordinates(MeshOf(DescribedBRep(std::move(damaged))))) {
                ASSERT_TRUE(std::isfinite(value)) << item.name;
            }
        }
    }
    EXPECT_TRUE(MeshOf(DescribedBRep({})).IsNull());
}

} // namespace
} // namespace cadex::brep
