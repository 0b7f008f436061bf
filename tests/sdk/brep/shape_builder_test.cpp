// Described bodies as kernel shapes: valid, with the area and volume of what was described.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include <BRepAlgoAPI_Common.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepCheck_Analyzer.hxx>
#include <BRepGProp.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <GProp_GProps.hxx>
#include <gp_Ax1.hxx>
#include <gp_Trsf.hxx>

#include "sdk/brep/ShapeBuilder.h"
#include "tests/sdk/brep/DescriptionOf.h"

namespace cadex::brep {
namespace {

double AreaOf(const TopoDS_Shape& shape)
{
    GProp_GProps properties;
    BRepGProp::SurfaceProperties(shape, properties, 1e-7);
    return properties.Mass();
}

double VolumeOf(const TopoDS_Shape& shape)
{
    GProp_GProps properties;
    BRepGProp::VolumeProperties(shape, properties, 1e-7);
    return properties.Mass();
}

/// Off the axes, so that nothing fits by accident.
TopoDS_Shape Tilted(const TopoDS_Shape& shape)
{
    gp_Trsf turn, shift;
    turn.SetRotation(gp_Ax1(gp_Pnt(1, 2, 3), gp_Dir(1, 2, -1)), 0.7);
    shift.SetTranslation(gp_Vec(10, -20, 5));
    return BRepBuilderAPI_Transform(shape, shift * turn, true).Shape();
}

TopoDS_Shape Cylinder(const gp_Pnt& base, const gp_Dir& along, double radius, double height)
{
    return BRepPrimAPI_MakeCylinder(gp_Ax2(base, along), radius, height).Shape();
}

struct Solids
{
    const char* name;
    TopoDS_Shape shape;
};

std::vector<Solids> SolidsOfTheKernel()
{
    const TopoDS_Shape ball = BRepPrimAPI_MakeSphere(5).Shape();
    const TopoDS_Shape tube = Cylinder({0, 0, -10}, {0, 0, 1}, 4, 20);
    const TopoDS_Shape ring = BRepPrimAPI_MakeTorus(10, 3).Shape();
    const TopoDS_Shape cone = BRepPrimAPI_MakeCone(6, 0, 9).Shape();
    return {
        {"box", BRepPrimAPI_MakeBox(1, 2, 3).Shape()},
        {"cylinder", tube},
        {"part of a cylinder", BRepPrimAPI_MakeCylinder(2, 3, 4).Shape()},
        {"cone with apex", cone},
        {"cone", BRepPrimAPI_MakeCone(3, 1, 4).Shape()},
        {"sphere", ball},
        {"zone", BRepPrimAPI_MakeSphere(2, -0.5, 0.3).Shape()},
        {"octant", BRepPrimAPI_MakeSphere(2, 0, M_PI_2, M_PI_2).Shape()},
        {"torus", ring},
        {"part of a torus", BRepPrimAPI_MakeTorus(5, 2, -1, 1.5, 2).Shape()},
        {"crossing tubes", BRepAlgoAPI_Fuse(tube, Cylinder({-10, 0, 0}, {1, 0, 0}, 3, 20)).Shape()},
        {"tube with a hole across its seam",
         BRepAlgoAPI_Cut(tube, Cylinder({0, 0, 0}, {1, 0, 0}, 2, 9)).Shape()},
        {"ball with a bore off its axis",
         BRepAlgoAPI_Cut(ball, Cylinder({2, 0, -9}, {0, 0, 1}, 1, 20)).Shape()},
        {"ball with a bore along x", BRepAlgoAPI_Cut(ball, Cylinder({-9, 0, 0}, {1, 0, 0}, 2, 20)).Shape()},
        {"ball in a ball", BRepAlgoAPI_Cut(ball, BRepPrimAPI_MakeSphere(gp_Pnt(1, 0, 0), 2).Shape()).Shape()},
        {"ball and box",
         BRepAlgoAPI_Common(ball, BRepPrimAPI_MakeBox(gp_Pnt(-1, -2, -3), 9, 9, 9).Shape()).Shape()},
        {"torus with a bore", BRepAlgoAPI_Cut(ring, Cylinder({10, 0, -9}, {0, 0, 1}, 1, 20)).Shape()},
        {"torus cut by a plane",
         BRepAlgoAPI_Common(ring, BRepPrimAPI_MakeBox(gp_Pnt(-20, -20, -20), 40, 40, 21).Shape()).Shape()},
        {"torus cut along its axis",
         BRepAlgoAPI_Common(ring, BRepPrimAPI_MakeBox(gp_Pnt(-20, 1, -20), 40, 40, 40).Shape()).Shape()},
        {"cone cut beside its apex",
         BRepAlgoAPI_Cut(cone, BRepPrimAPI_MakeBox(gp_Pnt(1, -9, -1), 9, 18, 20).Shape()).Shape()},
        {"cone cut through its apex",
         BRepAlgoAPI_Cut(cone, BRepPrimAPI_MakeBox(gp_Pnt(0, -9, -1), 9, 18, 20).Shape()).Shape()},
        {"tube slotted",
         BRepAlgoAPI_Cut(tube, BRepPrimAPI_MakeBox(gp_Pnt(-1, -9, 0), 2, 18, 30).Shape()).Shape()},
    };
}

void ExpectEqual(const TopoDS_Shape& built, const TopoDS_Shape& given)
{
    ASSERT_FALSE(built.IsNull());
    EXPECT_TRUE(BRepCheck_Analyzer(built).IsValid());
    EXPECT_NEAR(AreaOf(built), AreaOf(given), 1e-4 * AreaOf(given));
    EXPECT_NEAR(VolumeOf(built), VolumeOf(given), 1e-4 * std::abs(VolumeOf(given)));
}

TEST(ShapeBuilder, SolidsOfTheKernel)
{
    for (const Solids& test : SolidsOfTheKernel()) {
        const TopoDS_Shape given = Tilted(test.shape);
        for (const bool isBare : {false, true}) {
            SCOPED_TRACE(std::string(test.name) + (isBare ? ", bare" : ", as it is"));
            const Description description = DescriptionOf(given, {.seams = !isBare, .ranges = !isBare});
            const Body body = MakeBody(description);
            const BuiltShape built = BuildShape(body);
            EXPECT_EQ(built.healed, 0u);
            EXPECT_EQ(built.leftOut, 0u);
            ExpectEqual(built.shape, given);
        }
    }
}

} // namespace
} // namespace cadex::brep
