// Described bodies as triangles: watertight, with the areas, volumes and normals of what was described.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
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
#include <GProp_GProps.hxx>
#include <GeomAPI_PointsToBSpline.hxx>
#include <Geom_BSplineCurve.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <gp_Circ.hxx>
#include <gp_Elips.hxx>

#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/brep/DescribedBRep.h"
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

} // namespace
} // namespace cadex::brep
