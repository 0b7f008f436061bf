// The two ways of combining bodies with flat faces against volumes worked out by hand and against the
// kernel's boolean operation.
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include <BRepGProp.hxx>
#include <GProp_GProps.hxx>

#include "sdk/ifc/IfcConvexCut.h"
#include "sdk/ifc/IfcFlatBoolean.h"
#include "sdk/ifc/IfcSolids.h"

namespace ifctest {
namespace {

using namespace cadex::ifc;

Polyhedron Box(const gp_XYZ& low, const gp_XYZ& high, const Affine& placement = {})
{
    Polyhedron box;
    for (int i = 0; i < 8; ++i) {
        const gp_XYZ corner(i & 1 ? high.X() : low.X(), i & 2 ? high.Y() : low.Y(),
                            i & 4 ? high.Z() : low.Z());
        box.points.push_back(Apply(placement, corner));
    }
    for (const std::vector<cadex::U32>& face : std::vector<std::vector<cadex::U32>>{
             {0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}}) {
        box.AddFace(face);
    }
    box.closed = true;
    return box;
}

double Volume(const Polyhedron& body)
{
    return body.SignedVolume(0, body.loops.size()) / 6;
}

double KernelVolume(BooleanKind kind, const Polyhedron& body, const Polyhedron& tool)
{
    const IfcFile none;
    TopoDS_Shape result;
    EXPECT_TRUE(Combine(Context(none), kind, ShapeOf(body), {ShapeOf(tool)}, result));
    GProp_GProps properties;
    BRepGProp::VolumeProperties(result, properties);
    return properties.Mass();
}

TEST(IfcConvexCut, ContactsThatWallsHaveWithTheirOpenings)
{
    const Polyhedron wall = Box({0, 0, 0}, {1000, 200, 1000});
    struct Case
    {
        const char* name;
        std::vector<Polyhedron> tools;
        double left;
        std::size_t faces;
    };
    const std::vector<Case> cases = {
        {"through", {Box({100, -50, 100}, {200, 250, 200})}, 2e8 - 2e6, 10},
        {"flush with both sides", {Box({100, 0, 100}, {200, 200, 200})}, 2e8 - 2e6, 10},
        {"a niche", {Box({100, 100, 100}, {200, 200, 200})}, 2e8 - 1e6, 11},
        {"a cavity", {Box({100, 50, 100}, {200, 150, 200})}, 2e8 - 1e6, 12},
        {"a door, flush with the floor", {Box({100, -50, 0}, {200, 250, 500})}, 2e8 - 1e7, 10},
        {"a door below the floor", {Box({100, -50, -70}, {200, 250, 500})}, 2e8 - 1e7, 10},
        {"a gap over the whole height", {Box({100, -50, 0}, {200, 250, 1000})}, 2e8 - 2e7, 12},
        {"a corner", {Box({900, -50, 900}, {1100, 250, 1100})}, 2e8 - 2e6, 8},
        {"a slice off the end", {Box({900, -50, -50}, {1100, 250, 1100})}, 1.8e8, 6},
        {"window and door",
         {Box({100, -50, 0}, {200, 250, 500}), Box({300, -50, 300}, {400, 250, 500})},
         2e8 - 1.4e7,
         14},
        {"beside", {Box({1000, 0, 0}, {1100, 200, 1000})}, 2e8, 6},
        {"all of it", {Box({-1, -1, -1}, {1001, 201, 1001})}, 0, 0},
    };
    const IfcFile none;
    Context context(none);
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        std::vector<const Polyhedron*> tools;
        for (const Polyhedron& tool : test.tools) {
            tools.push_back(&tool);
        }
        Polyhedron result;
        ASSERT_TRUE(CutConvex(wall, tools, result));
        EXPECT_NEAR(Volume(result), test.left, 1e-3);
        EXPECT_EQ(result.NumberOfFaces(), test.faces);
        ASSERT_TRUE(CombineFlat(context, BooleanKind::Cut, wall, tools, result));
        EXPECT_NEAR(Volume(result), test.left, 1e-3);
        EXPECT_EQ(result.NumberOfFaces(), test.faces);
    }
    Polyhedron result;
    const Polyhedron a = Box({100, -50, 100}, {200, 250, 200});
    const Polyhedron b = Box({150, -50, 100}, {250, 250, 200});
    EXPECT_FALSE(CutConvex(wall, {&a, &b}, result)); // not for tools that meet
    ASSERT_TRUE(CombineFlat(context, BooleanKind::Cut, wall, {&a, &b}, result));
    EXPECT_NEAR(Volume(result), 2e8 - 3e6, 1e-3);
    EXPECT_EQ(result.NumberOfFaces(), 12U); // the bottom and the top of each tool make faces of their own
}

TEST(IfcConvexCut, TurnedToolsGiveTheKernelsVolume)
{
    std::mt19937 random(7);
    const auto number = [&](double low, double high) {
        return low + (high - low) * static_cast<double>(random() % 100'000) / 100'000;
    };
    const IfcFile none;
    Context context(none);
    int quick = 0;
    for (int i = 0; i < 40; ++i) {
        const Polyhedron body = Box({0, 0, 0}, {1000, 200, 1000});
        const Affine turned =
            Frame({number(-100, 1100), number(-100, 300), number(-100, 1100)},
                  {number(-1, 1), number(-1, 1), number(-1, 1)}, {number(-1, 1), number(-1, 1), 0.1});
        const Polyhedron tool = Box({-150, -100, -60}, {150, 100, 60}, turned);
        Polyhedron result;
        if (CutConvex(body, {&tool}, result)) {
            ++quick;
            EXPECT_NEAR(Volume(result), KernelVolume(BooleanKind::Cut, body, tool), 1) << i;
        }
        for (const BooleanKind kind : {BooleanKind::Cut, BooleanKind::Fuse, BooleanKind::Common}) {
            ASSERT_TRUE(CombineFlat(context, kind, body, {&tool}, result)) << i;
            EXPECT_NEAR(Volume(result), KernelVolume(kind, body, tool), 1) << i;
        }
    }
    EXPECT_GT(quick, 36);
}

TEST(IfcFlatBoolean, ManyOpeningsInABentWallTakeNoTime)
{
    // an L seen from above, with 2 x 300 windows that touch each other corner to corner
    const IfcFile none;
    Context context(none);
    const Polyhedron one = Box({0, 0, 0}, {100'000, 200, 3000});
    const Polyhedron other = Box({0, 0, 0}, {200, 100'000, 3000});
    Polyhedron wall;
    ASSERT_TRUE(CombineFlat(context, BooleanKind::Fuse, one, {&other}, wall));
    std::vector<Polyhedron> windows;
    windows.reserve(600);
    for (int i = 0; i < 300; ++i) {
        const double x = 1000 + 300 * i;
        const double z = i % 2 == 0 ? 500 : 1000;
        windows.push_back(Box({x, -50, z}, {x + 300, 250, z + 500}));
        windows.push_back(Box({-50, x, z}, {250, x + 300, z + 500}));
    }
    std::vector<const Polyhedron*> tools;
    tools.reserve(windows.size());
    for (const Polyhedron& window : windows) {
        tools.push_back(&window);
    }
    Polyhedron result;
    ASSERT_TRUE(CombineFlat(context, BooleanKind::Cut, wall, tools, result));
    EXPECT_NEAR(Volume(result), 3000 * (2e7 + 2e7 - 4e4) - 600 * 300.0 * 200 * 500, 1);
}

TEST(IfcFlatBoolean, SkinsThinnerThanThePrecisionVanish)
{
    const IfcFile none;
    Context context(none);
    const Polyhedron wall = Box({0, 0, 0}, {1000, 200, 1000});
    const Polyhedron tool = Box({100, 0.004, 100}, {200, 199.996, 1000.003});
    Polyhedron result;
    ASSERT_TRUE(CombineFlat(context, BooleanKind::Cut, wall, {&tool}, result));
    EXPECT_NEAR(Volume(result), 2e8 - 100 * 199.992 * 900, 1);
    const Polyhedron snapped = Snapped(tool, wall, 0.01);
    ASSERT_TRUE(CombineFlat(context, BooleanKind::Cut, wall, {&snapped}, result));
    EXPECT_NEAR(Volume(result), 2e8 - 100 * 200 * 900, 1);
}

} // namespace
} // namespace ifctest
