// The quick way of cutting convex bodies against the kernel's boolean operation.
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include <BRepGProp.hxx>
#include <GProp_GProps.hxx>

#include "sdk/ifc/IfcConvexCut.h"
#include "sdk/ifc/IfcSolids.h"

namespace ifctest {
namespace {

using namespace cadex::ifc;

Polyhedron Box(const gp_XYZ& low, const gp_XYZ& high, const Affine& placement = {})
{
    Polyhedron box;
    for (int i = 0; i < 8; ++i) {
        box.points.push_back(placement.Point(
            {i & 1 ? high.X() : low.X(), i & 2 ? high.Y() : low.Y(), i & 4 ? high.Z() : low.Z()}));
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

double KernelVolume(const Polyhedron& body, const std::vector<Polyhedron>& tools)
{
    TopoDS_Shape result = ShapeOf(body);
    for (const Polyhedron& tool : tools) {
        EXPECT_TRUE(Combine(BooleanKind::Cut, result, {ShapeOf(tool)}, result));
    }
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
    }
    Polyhedron result;
    const Polyhedron a = Box({100, -50, 100}, {200, 250, 200});
    const Polyhedron b = Box({150, -50, 100}, {250, 250, 200});
    EXPECT_FALSE(CutConvex(wall, {&a, &b}, result)); // tools that meet are the kernel's
}

TEST(IfcConvexCut, TurnedToolsGiveTheKernelsVolume)
{
    std::mt19937 random(7);
    const auto number = [&](double low, double high) {
        return low + (high - low) * static_cast<double>(random() % 100'000) / 100'000;
    };
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
            EXPECT_NEAR(Volume(result), KernelVolume(body, {tool}), 1) << i;
        }
    }
    EXPECT_GT(quick, 36);
}

} // namespace
} // namespace ifctest
