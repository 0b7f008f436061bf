// Geometry, topology and solids of STEP files against what they measure.
#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/internal/Reports.hxx>

#include "tests/sdk/MeshModels.h"
#include "tests/sdk/ReadModels.h"
#include "tests/sdk/step/MeshFacts.h"
#include "tests/sdk/step/StepTextBuilder.h"

namespace cadex::test {
namespace {

constexpr double Pi = std::numbers::pi;

using Items = std::function<std::vector<int>(StepTextBuilder&)>;

MeshFacts FactsOf(const Items& items, bool imperial = false)
{
    StepTextBuilder step;
    const std::vector<int> numbers = items(step);
    return ImportFacts(step.Text(numbers, imperial));
}

struct SolidCase
{
    const char* name;
    Items items;
    double area;   // exact, in the file's unit
    double volume; // 0: a sheet
    double tolerance = 0.02;
};

std::string R(int number)
{
    return StepTextBuilder::Ref(number);
}

// (type('',degree ...) parts) of a rational spline surface: a quarter of a cylinder of radius 1 and height 1.
int QuarterCylinder(StepTextBuilder& step)
{
    std::string rows;
    for (const auto& [x, y] : {std::pair(1.0, 0.0), {1.0, 1.0}, {0.0, 1.0}}) {
        const int low = step.Point({x, y, 0});
        rows += (rows.empty() ? "(" : ",(") + R(low) + "," + R(step.Point({x, y, 1})) + ")";
    }
    return step.Add("(BOUNDED_SURFACE()B_SPLINE_SURFACE(2,1,(" + rows +
                    "),.UNSPECIFIED.,.F.,.F.,.F.)B_SPLINE_SURFACE_WITH_KNOTS((3,3),(2,2),(0.,1.),(0.,1.),"
                    ".UNSPECIFIED.)GEOMETRIC_REPRESENTATION_ITEM()RATIONAL_B_SPLINE_SURFACE(((1.,1.),("
                    "0.707106781186548,0.707106781186548),(1.,1.)))REPRESENTATION_ITEM('')SURFACE())");
}

// A flat patch of two by two units with 4 by 4 poles on a grid.
int FlatPatch(StepTextBuilder& step, const std::string& type, const std::string& more)
{
    std::string rows;
    for (int i = 0; i < 4; ++i) {
        std::vector<int> row;
        for (int j = 0; j < 4; ++j) {
            row.push_back(step.Point({i * 2.0 / 3, j * 2.0 / 3, 0}));
        }
        rows += (i == 0 ? "" : ",") + StepTextBuilder::Refs(row);
    }
    return step.Add(type + "('',3,3,(" + rows + "),.UNSPECIFIED.,.F.,.F.,.F." + more + ")");
}

std::vector<int> Set(StepTextBuilder& step, const std::vector<int>& members)
{
    return {step.Add("GEOMETRIC_SET(''," + StepTextBuilder::Refs(members) + ")")};
}

int Trimmed(StepTextBuilder& step, int basis, const std::string& bounds)
{
    return step.Add("RECTANGULAR_TRIMMED_SURFACE(''," + R(basis) + "," + bounds + ",.T.,.T.)");
}

int Composite(StepTextBuilder& step, const std::string& type, const std::vector<int>& curves)
{
    std::vector<int> segments;
    for (const int curve : curves) {
        segments.push_back(step.Add("COMPOSITE_CURVE_SEGMENT(.CONTINUOUS.," +
                                    std::string(curve > 0 ? ".T.," : ".F.,") + R(std::abs(curve)) + ")"));
    }
    return step.Add(type + "(''," + StepTextBuilder::Refs(segments) + ",.F.)");
}

int Polyline(StepTextBuilder& step, const std::vector<Triple>& points)
{
    std::vector<int> numbers;
    for (const Triple& point : points) {
        numbers.push_back(step.Point(point));
    }
    return step.Add("POLYLINE(''," + StepTextBuilder::Refs(numbers) + ")");
}

int Trim(StepTextBuilder& step, int basis, const std::string& first, const std::string& last,
         const std::string& sense = ".T.", const std::string& master = ".PARAMETER.")
{
    return step.Add("TRIMMED_CURVE(''," + R(basis) + ",(" + first + "),(" + last + ")," + sense + "," +
                    master + ")");
}

std::string At(double parameter)
{
    return "PARAMETER_VALUE(" + StepTextBuilder::Real(parameter) + ")";
}

int SquareArea(StepTextBuilder& step, double side)
{
    const int outline = Polyline(step, {{0, 0, 0}, {side, 0, 0}, {side, side, 0}, {0, side, 0}, {0, 0, 0}});
    const int boundary = Composite(step, "OUTER_BOUNDARY_CURVE", {outline});
    const int plane = step.On("PLANE", step.Axes({0, 0, 0}));
    return step.Add("CURVE_BOUNDED_SURFACE(''," + R(plane) + ",(" + R(boundary) + "),.F.)");
}

// A face of a surface without edges, bounded by one of its points.
std::vector<int> Whole(StepTextBuilder& step, int surface, const Triple& point)
{
    const int bound = step.BoundAt(step.Vertex(point));
    return {step.Solid({step.Face(surface, {bound})})};
}

std::vector<SolidCase> SolidCases()
{
    return {
        {"a cube",
         [](auto& s) {
             return std::vector{s.Solid(s.CubeFaces({1, 2, 3}, 4))};
         },
         96, 64, 1e-9},
        {"a can",
         [](auto& s) {
             return std::vector{s.Solid(s.CanFaces({1, 2, 3}, 2, 5))};
         },
         28 * Pi, 20 * Pi},
        {"a sphere",
         [](auto& s) {
             return Whole(s, s.On("SPHERICAL_SURFACE", s.Axes({1, 1, 1}), "2."), {1, 1, 3});
         },
         16 * Pi, 32 * Pi / 3, 0.05},
        {"a torus",
         [](auto& s) {
             return Whole(s, s.On("TOROIDAL_SURFACE", s.Axes({0, 0, 0}), "5.,2."), {7, 0, 0});
         },
         40 * Pi * Pi, 40 * Pi * Pi, 0.05},
        {"a cube with a cavity",
         [](auto& s) {
             const int outer =
                 s.Add("CLOSED_SHELL(''," + StepTextBuilder::Refs(s.CubeFaces({0, 0, 0}, 4)) + ")");
             const int inner =
                 s.Add("CLOSED_SHELL(''," + StepTextBuilder::Refs(s.CubeFaces({1, 1, 1}, 2)) + ")");
             const int turned = s.Add("ORIENTED_CLOSED_SHELL('',*," + R(inner) + ",.F.)");
             return std::vector{s.Add("BREP_WITH_VOIDS(''," + R(outer) + ",(" + R(turned) + "))")};
         },
         120, 56, 1e-9},
        {"a spline surface of revolution",
         [](auto& s) {
             const int curve = s.Add("BEZIER_CURVE('',1,(" + R(s.Point({2, 0, 0})) + "," +
                                     R(s.Point({1, 0, 3})) + "),.UNSPECIFIED.,.F.,.F.)");
             const int surface =
                 s.Add("SURFACE_OF_REVOLUTION(''," + R(curve) + "," + R(s.Axis({0, 0, 0}, {0, 0, 1})) + ")");
             return Set(s, {surface});
         },
         3 * Pi * std::sqrt(10), 0},
        {"a rational spline surface", [](auto& s) { return Set(s, {QuarterCylinder(s)}); }, Pi / 2, 0},
        {"a Bezier surface", [](auto& s) { return Set(s, {FlatPatch(s, "BEZIER_SURFACE", "")}); }, 4, 0,
         1e-6},
        {"a quasi-uniform surface",
         [](auto& s) { return Set(s, {FlatPatch(s, "QUASI_UNIFORM_SURFACE", "")}); }, 4, 0, 1e-6},
        {"a surface with knots",
         [](auto& s) {
             return Set(s, {FlatPatch(s, "B_SPLINE_SURFACE_WITH_KNOTS",
                                      ",(4,4),(4,4),(0.,2.),(0.,3.),.UNSPECIFIED.")});
         },
         4, 0, 1e-6},
        {"a bounded surface with a hole",
         [](auto& s) {
             const int outer =
                 Composite(s, "OUTER_BOUNDARY_CURVE",
                           {Polyline(s, {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {0, 0, 0}})});
             const int hole = Composite(s, "BOUNDARY_CURVE", {-s.Circle({2, 2, 0}, 1)});
             const int plane = s.On("PLANE", s.Axes({0, 0, 0}));
             return Set(s, {s.Add("CURVE_BOUNDED_SURFACE(''," + R(plane) + ",(" + R(outer) + "," + R(hole) +
                                  "),.F.)")});
         },
         16 - Pi, 0},
        {"a surface within its own bounds, with a hole",
         [](auto& s) {
             const int patch = FlatPatch(s, "BEZIER_SURFACE", "");
             const int hole = Composite(s, "BOUNDARY_CURVE", {s.Circle({1, 1, 0}, 0.5)});
             return Set(s, {s.Add("CURVE_BOUNDED_SURFACE(''," + R(patch) + ",(" + R(hole) + "),.T.)")});
         },
         4 - Pi / 4, 0},
        {"an offset surface",
         [](auto& s) {
             const int basis = s.On("CYLINDRICAL_SURFACE", s.Axes({0, 0, 0}), "2.");
             const int offset = s.Add("OFFSET_SURFACE(''," + R(basis) + ",1.,.F.)");
             return Set(s, {Trimmed(s, offset, "0.,3.14159265358979,0.,2.")});
         },
         6 * Pi, 0},
        {"a polygon without a surface",
         [](auto& s) {
             std::vector<int> points;
             for (const Triple& p : {Triple{0, 0, 0}, {3, 0, 0}, {3, 3, 3}, {0, 3, 3}}) {
                 points.push_back(s.Point(p));
             }
             const int loop = s.Add("POLY_LOOP(''," + StepTextBuilder::Refs(points) + ")");
             const int face =
                 s.Add("FACE('',(" + R(s.Add("FACE_OUTER_BOUND(''," + R(loop) + ",.T.)")) + "))");
             const int set = s.Add("CONNECTED_FACE_SET('',(" + R(face) + "))");
             return std::vector{s.Add("FACE_BASED_SURFACE_MODEL('',(" + R(set) + "))")};
         },
         9 * std::sqrt(2), 0, 1e-9},
        {"a block without a cylinder",
         [](auto& s) {
             const int block = s.On("BLOCK", s.Axes({0, 0, 0}), "4.,4.,2.");
             const int drill = s.On("RIGHT_CIRCULAR_CYLINDER", s.Axis({2, 2, -1}, {0, 0, 1}), "4.,1.");
             const int cut = s.Add("BOOLEAN_RESULT('',.DIFFERENCE.," + R(block) + "," + R(drill) + ")");
             return std::vector{s.Add("CSG_SOLID(''," + R(cut) + ")")};
         },
         64 - 2 * Pi + 4 * Pi, 32 - 2 * Pi},
        {"a ball without its upper half",
         [](auto& s) {
             const int ball = s.Add("SPHERE('',3.," + R(s.Point({0, 0, 1})) + ")");
             const int plane = s.On("PLANE", s.Axes({0, 0, 1}));
             const int half = s.Add("HALF_SPACE_SOLID(''," + R(plane) + ",.F.)");
             return std::vector{s.Add("BOOLEAN_RESULT('',.DIFFERENCE.," + R(ball) + "," + R(half) + ")")};
         },
         27 * Pi, 18 * Pi, 0.05},
        {"a cut solid of faces",
         [](auto& s) {
             const int cube = s.Solid(s.CubeFaces({0, 0, 0}, 4));
             const int half = s.Add("HALF_SPACE_SOLID(''," + R(s.On("PLANE", s.Axes({0, 0, 1}))) + ",.T.)");
             return std::vector{s.Add("BOOLEAN_RESULT('',.DIFFERENCE.," + R(cube) + "," + R(half) + ")")};
         },
         80, 48, 1e-6},
        {"an extruded area",
         [](auto& s) {
             const int area = SquareArea(s, 2);
             return std::vector{
                 s.Add("EXTRUDED_AREA_SOLID(''," + R(area) + "," + R(s.Direction({0, 0, 1})) + ",5.)")};
         },
         48, 20, 1e-6},
        {"a revolved area",
         [](auto& s) {
             const int area = SquareArea(s, 2);
             const int axis = s.Axis({-1, 0, 0}, {0, 1, 0});
             return std::vector{
                 s.Add("REVOLVED_AREA_SOLID(''," + R(area) + "," + R(axis) + ",6.28318530717959)")};
         },
         32 * Pi, 16 * Pi, 0.03},
        {"a truncated cone",
         [](auto& s) {
             return std::vector{
                 s.On("RIGHT_CIRCULAR_CONE", s.Axis({0, 0, 3}, {0, 0, 1}), "3.,1.,0.785398163397448")};
         },
         17 * Pi + 15 * std::sqrt(2.0) * Pi, 21 * Pi, 0.03},
    };
}

// The direct copy, and the one behind a mirror that makes it twice as large.
std::vector<int> MappedCans(StepTextBuilder& step)
{
    const int can = step.Solid(step.CanFaces({1, 0, 0}, 2, 5));
    const int context = step.Context();
    const int source = step.Representation({can}, context);
    const int map = step.Add("REPRESENTATION_MAP(" + R(step.Axes({1, 0, 0})) + "," + R(source) + ")");
    const int target = step.Axes({0, 10, 0}, {1, 0, 0}, {0, 1, 0});
    const int x = step.Direction({1, 0, 0});
    const int y = step.Direction({0, -1, 0});
    const int z = step.Direction({0, 0, 1});
    const int origin = step.Point({30, 0, 0});
    const int mirror = step.Add("CARTESIAN_TRANSFORMATION_OPERATOR_3D('','',$," + R(x) + "," + R(y) + "," +
                                R(origin) + ",2.," + R(z) + ")");
    return {step.Add("MAPPED_ITEM(''," + R(map) + "," + R(target) + ")"),
            step.Add("MAPPED_ITEM(''," + R(map) + "," + R(mirror) + ")")};
}

} // namespace

TEST(StepGeometry, BodiesMeasureWhatTheirRecordsSay)
{
    for (const SolidCase& solid : SolidCases()) {
        const MeshFacts facts = FactsOf(solid.items);
        EXPECT_NEAR(facts.area, solid.area, solid.tolerance * solid.area) << solid.name;
        if (solid.volume > 0) {
            EXPECT_NEAR(facts.volume, solid.volume, solid.tolerance * solid.volume) << solid.name;
            EXPECT_NEAR(facts.mass, solid.volume, 1e-5 * solid.volume) << solid.name;
            EXPECT_EQ(facts.openEdges, 0) << solid.name;
        }
        EXPECT_EQ(facts.reports, "") << solid.name;
    }
}

TEST(StepGeometry, UnitsAreThoseOfTheContext)
{
    constexpr double Inch = 25.4;
    const MeshFacts can = FactsOf(
        [](auto& s) {
            return std::vector{s.Solid(s.CanFaces({1, 2, 3}, 2, 5))};
        },
        true);
    EXPECT_NEAR(can.mass, 20 * Pi * Inch * Inch * Inch, 1);
    // A quarter of a cylinder: 90 degrees by 2 inches.
    const MeshFacts quarter = FactsOf(
        [](auto& s) {
            return Set(s, {Trimmed(s, s.On("CYLINDRICAL_SURFACE", s.Axes({0, 0, 0}), "3."), "0.,90.,0.,2.")});
        },
        true);
    EXPECT_NEAR(quarter.area, 3 * Pi * Inch * Inch, 0.02 * 3 * Pi * Inch * Inch);
    // A cone of 45 degrees between two heights along its axis.
    const MeshFacts cone = FactsOf(
        [](auto& s) {
            return Set(s,
                       {Trimmed(s, s.On("CONICAL_SURFACE", s.Axes({0, 0, 0}), "1.,45."), "0.,360.,0.,1.")});
        },
        true);
    EXPECT_NEAR(cone.area, 3 * std::sqrt(2) * Pi * Inch * Inch, 0.02 * 3 * std::sqrt(2) * Pi * Inch * Inch);
}

TEST(StepGeometry, CurvesAreAsLongAsTheyShouldBe)
{
    const struct
    {
        const char* name;
        std::function<int(StepTextBuilder&)> curve;
        double length;
        bool degrees = false;
    } Cases[] = {
        {"a circle",
         [](auto& s) {
             return s.Circle({1, 1, 1}, 2);
         },
         4 * Pi},
        {"an arc by parameters in degrees",
         [](auto& s) {
             return Trim(s, s.Circle({0, 0, 0}, 2), At(0), At(90));
         },
         Pi * 25.4, true},
        {"an arc against its circle",
         [](auto& s) {
             return Trim(s, s.Circle({0, 0, 0}, 2), At(0), At(Pi / 2), ".F.");
         },
         3 * Pi},
        {"an arc by points",
         [](auto& s) {
             const int circle = s.Circle({0, 0, 0}, 2);
             return Trim(s, circle, R(s.Point({2, 0, 0})), R(s.Point({0, 2, 0})), ".T.", ".CARTESIAN.");
         },
         Pi},
        {"a tall ellipse",
         [](auto& s) {
             return Trim(s, s.On("ELLIPSE", s.Axes({0, 0, 0}), "1.,2."), At(0), At(Pi / 2));
         },
         9.68844822 / 4},
        {"a line by parameters of its vector",
         [](auto& s) {
             const int vector = s.Add("VECTOR(''," + R(s.Direction({0, 0, 1})) + ",3.)");
             const int line = s.Add("LINE(''," + R(s.Point({0, 0, 0})) + "," + R(vector) + ")");
             return Trim(s, line, At(1), At(3));
         },
         6},
        // From (0, 0) to (2, 4): focal length 2, parameter 1.
        {"a parabola",
         [](auto& s) {
             return Trim(s, s.On("PARABOLA", s.Axes({0, 0, 0}), "2."), At(0), At(1));
         },
         2 * (std::sqrt(2) + std::asinh(1))},
        {"a polyline",
         [](auto& s) {
             return Polyline(s, {{0, 0, 0}, {3, 0, 0}, {3, 4, 0}});
         },
         7},
        {"a composite",
         [](auto& s) {
             const int line = Polyline(s, {{0, 0, 0}, {2, 0, 0}});
             const int arc = Trim(s, s.Circle({0, 0, 0}, 2), At(0), At(Pi / 2));
             const int back = Polyline(s, {{0, 0, 0}, {0, 2, 0}});
             return Composite(s, "COMPOSITE_CURVE", {line, arc, -back});
         },
         4 + Pi},
        {"an offset to the outside",
         [](auto& s) {
             return s.Add("OFFSET_CURVE_3D(''," + R(s.Circle({0, 0, 0}, 2)) + ",-1.,.F.," +
                          R(s.Direction({0, 0, 1})) + ")");
         },
         6 * Pi},
        {"a uniform spline",
         [](auto& s) {
             return s.Add(
                 "UNIFORM_CURVE('',1," +
                 StepTextBuilder::Refs({s.Point({0, 0, 0}), s.Point({1, 0, 0}), s.Point({1, 1, 0})}) +
                 ",.UNSPECIFIED.,.F.,.F.)");
         },
         2},
        {"a curve on a surface",
         [](auto& s) {
             const int curve = Trim(s, s.Circle({0, 0, 0}, 2), At(0), At(Pi));
             return s.Add("SURFACE_CURVE(''," + R(curve) + ",(),.CURVE_3D.)");
         },
         2 * Pi},
    };
    for (const auto& one : Cases) {
        const MeshFacts facts = FactsOf(
            [&](StepTextBuilder& s) {
                return std::vector{s.Add("GEOMETRIC_CURVE_SET('',(" + R(one.curve(s)) + "))")};
            },
            one.degrees);
        EXPECT_NEAR(facts.length, one.length, 0.02 * one.length) << one.name;
        EXPECT_EQ(facts.reports, "") << one.name;
    }
}

TEST(StepGeometry, WiresOfEveryModel)
{
    const auto square = [](StepTextBuilder& s) {
        const int a = s.Vertex({0, 0, 0});
        const int b = s.Vertex({2, 0, 0});
        const int c = s.Vertex({2, 2, 0});
        return std::vector{s.Line(a, b), s.Line(b, c), s.Line(c, a)};
    };
    const MeshFacts edges = FactsOf([&](StepTextBuilder& s) {
        const int set = s.Add("CONNECTED_EDGE_SET(''," + StepTextBuilder::Refs(square(s)) + ")");
        return std::vector{s.Add("EDGE_BASED_WIREFRAME_MODEL('',(" + R(set) + "))")};
    });
    EXPECT_NEAR(edges.length, 4 + std::sqrt(8), 1e-6);
    const MeshFacts shells = FactsOf([&](StepTextBuilder& s) {
        std::vector<int> uses;
        for (const int edge : square(s)) {
            uses.push_back(s.Add("ORIENTED_EDGE('',*,*," + R(edge) + ",.F.)"));
        }
        const int loop = s.Add("EDGE_LOOP(''," + StepTextBuilder::Refs(uses) + ")");
        const int shell = s.Add("WIRE_SHELL('',(" + R(loop) + "))");
        return std::vector{s.Add("SHELL_BASED_WIREFRAME_MODEL('',(" + R(shell) + "))")};
    });
    EXPECT_NEAR(shells.length, 4 + std::sqrt(8), 1e-6);
}

TEST(StepGeometry, MappedItemsStandWhereTheirTargetsAre)
{
    const MeshFacts facts = FactsOf(MappedCans);
    EXPECT_NEAR(facts.mass, 20 * Pi * 9, 1e-3);
    EXPECT_NEAR(facts.volume, 20 * Pi * 9, 0.02 * 180 * Pi) << "also the mirrored one is the right way out";
    EXPECT_EQ(facts.openEdges, 0);
    // The first lies along x from 0 to 5, the second stands around 30, of radius 4.
    EXPECT_NEAR(facts.low[0], 0, 1e-6);
    EXPECT_NEAR(facts.high[0], 34, 1e-2);
    EXPECT_NEAR(facts.high[2], 10, 1e-6);
}

TEST(StepGeometry, LooksOfSolidsFacesAndCurves)
{
    StepTextBuilder step;
    std::vector<int> faces = step.CubeFaces({0, 0, 0}, 2);
    const int cube = step.Solid(faces);
    const int line = Polyline(step, {{0, 0, 5}, {1, 0, 5}});
    step.Colour(cube, 1, 0, 0);
    step.Colour(faces[0], 0, 0, 1);
    const std::string text = step.Text({cube, step.Add("GEOMETRIC_CURVE_SET('',(" + R(line) + "))")});
    const ScratchFolder folder;
    WriteBytes(folder.Path() / "file.stp", text);
    ModelData_Model model;
    ASSERT_TRUE(Import(folder.Path() / "file.stp", model));
    const std::string outline = Outline::Of(model);
    EXPECT_THAT(outline, ::testing::HasSubstr("10 triangles rgba 255 0 0 255"));
    EXPECT_THAT(outline, ::testing::HasSubstr("2 triangles rgba 0 0 255 255"));
    EXPECT_THAT(outline, ::testing::HasSubstr("2 points\n"));
}

/// The sets of a file, "12 triangles" and what follows.
std::vector<std::string> SetsOf(const Items& items)
{
    std::vector<std::string> sets;
    std::istringstream lines(FactsOf(items).outline);
    for (std::string line; std::getline(lines, line);) {
        if (line.find(" triangles") != std::string::npos) {
            sets.push_back(line.substr(line.find_first_not_of(' ')));
        }
    }
    return sets;
}

/// Tetrahedra of polygons, or cubes of planes and lines, side by side.
std::vector<int> NamedBodies(StepTextBuilder& s, bool polygons, const std::vector<std::string>& names)
{
    std::vector<int> bodies;
    for (const std::string& name : names) {
        const double x = 5.0 * static_cast<double>(bodies.size());
        if (!polygons) {
            bodies.push_back(s.Solid(s.CubeFaces({x, 0, 0}, 2), name));
            continue;
        }
        const int corners[] = {s.Point({x, 0, 0}), s.Point({x + 1, 0, 0}), s.Point({x, 1, 0}),
                               s.Point({x, 0, 1})};
        std::vector<int> faces;
        for (const auto& [a, b, c] : {std::tuple{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}}) {
            const int loop =
                s.Add("POLY_LOOP(''," + StepTextBuilder::Refs({corners[a], corners[b], corners[c]}) + ")");
            faces.push_back(s.Add("FACE('',(" + R(s.Add("FACE_OUTER_BOUND(''," + R(loop) + ",.T.)")) + "))"));
        }
        const int shell = s.Add("CLOSED_SHELL(''," + StepTextBuilder::Refs(faces) + ")");
        bodies.push_back(s.Add("FACETED_BREP('" + name + "'," + R(shell) + ")"));
    }
    return bodies;
}

TEST(StepGeometry, NamesTellTheBodiesOfAProductApart)
{
    using ::testing::ElementsAre;
    for (const bool polygons : {false, true}) {
        SCOPED_TRACE(polygons);
        const std::string one = polygons ? "4 triangles" : "12 triangles";
        const std::string two = polygons ? "8 triangles" : "24 triangles";
        const auto named = [&](const std::vector<std::string>& names) {
            return SetsOf([&](StepTextBuilder& s) { return NamedBodies(s, polygons, names); });
        };
        EXPECT_THAT(
            named({"bolt", "nut", "bolt", " ", "\\X2\\04120430\\X0\\"}),
            ::testing::UnorderedElementsAre(two + " 'bolt'", one + " 'nut'", one, one + " '\u0412\u0430'"));
        EXPECT_THAT(named({"solid", "solid"}), ElementsAre(two)) << "what all are called tells nothing";
        EXPECT_THAT(named({"only"}), ElementsAre(one));
        EXPECT_THAT(SetsOf([&](StepTextBuilder& s) {
                        const std::vector<int> bodies = NamedBodies(s, polygons, {"bolt", "bolt", "nut"});
                        s.Colour(bodies[1], 1, 0, 0);
                        return bodies;
                    }),
                    ::testing::UnorderedElementsAre(one + " 'bolt'", one + " 'nut'",
                                                    one + " 'bolt' rgba 255 0 0 255"))
            << "a set for each name and look";
    }
    const std::vector<std::string> mixed = SetsOf([](StepTextBuilder& s) {
        std::vector<int> items = NamedBodies(s, false, {"cube"});
        const int sheet = s.Add("OPEN_SHELL(''," + StepTextBuilder::Refs(s.CubeFaces({9, 9, 0}, 1)) + ")");
        items.push_back(s.Add("SHELL_BASED_SURFACE_MODEL('skin',(" + R(sheet) + "))"));
        const int points = s.Add("COORDINATES_LIST('',3,((0.,0.,9.),(3.,0.,9.),(0.,3.,9.)))");
        const int face = s.Add("TRIANGULATED_FACE(''," + R(points) + ",3,((0.,0.,1.)),$,(),((1,2,3)))");
        items.push_back(s.Add("TESSELLATED_SHELL('net',(" + R(face) + "),$)"));
        return items;
    });
    EXPECT_THAT(mixed, ElementsAre("12 triangles 'cube'", "12 triangles 'skin'", "1 triangles 'net'"));
}

TEST(StepGeometry, OfABodyInTwoFormsTheExactOneIsShown)
{
    for (const bool isLinkedByFaces : {false, true}) {
        const MeshFacts facts = FactsOf([&](StepTextBuilder& s) {
            const std::vector<int> faces = s.CubeFaces({0, 0, 0}, 2);
            const int cube = s.Solid(faces);
            const int points = s.Add("COORDINATES_LIST('',3,((0.,0.,0.),(9.,0.,0.),(0.,9.,0.)))");
            const auto facet = [&](const std::string& link) {
                return R(s.Add("TRIANGULATED_FACE(''," + R(points) + ",3,()," + link + ",(),((1,2,3)))"));
            };
            const int twin = isLinkedByFaces
                                 ? s.Add("TESSELLATED_SOLID('',(" + facet(R(faces[0])) + "),$)")
                                 : s.Add("TESSELLATED_SOLID('',(" + facet("$") + ")," + R(cube) + ")");
            // Nobody shows the body that this one stands for.
            const int other = s.Solid(s.CubeFaces({50, 0, 0}, 2));
            const int alone = s.Add("TESSELLATED_SHELL('',(" + facet("$") + ")," + R(other) + ")");
            return std::vector{twin, alone, cube};
        });
        EXPECT_EQ(facts.triangles, 12 + 1);
        EXPECT_NEAR(facts.volume, 8, 1e-9);
        EXPECT_NEAR(facts.high[0], 9, 1e-9);
    }
}

TEST(StepGeometry, TessellationsComeAsTheyStand)
{
    const MeshFacts facts = FactsOf([](StepTextBuilder& s) {
        const int points = s.Add("COORDINATES_LIST('',4,((0.,0.,0.),(3.,0.,0.),(0.,3.,0.),(0.,0.,3.)))");
        // Strips, fans, an index of points, one normal, a normal for each point.
        const int base =
            s.Add("COMPLEX_TRIANGULATED_FACE(''," + R(points) + ",3,((0.,0.,-1.)),$,(1,3,2),((1,2,3)),())");
        const int left = s.Add("COMPLEX_TRIANGULATED_FACE(''," + R(points) + ",3,(),$,(1,4,3),(),((1,2,3)))");
        const int right = s.Add("TRIANGULATED_FACE(''," + R(points) + ",4,(),$,(),((1,2,4)))");
        const int slope = s.Add("TRIANGULATED_FACE(''," + R(points) +
                                ",3,((1.,0.,0.),(0.,1.,0.),(0.,0.,1.)),$,(2,3,4),((1,2,3)))");
        s.Colour(slope, 0, 1, 0);
        const int lines = s.Add("TESSELLATED_CURVE_SET(''," + R(points) + ",((1,2,3)))");
        return std::vector{
            s.Add("TESSELLATED_SOLID(''," + StepTextBuilder::Refs({base, left, right, slope}) + ",$)"),
            lines};
    });
    EXPECT_EQ(facts.triangles, 4);
    EXPECT_NEAR(facts.volume, 4.5, 1e-9);
    EXPECT_NEAR(facts.mass, 4.5, 1e-9);
    EXPECT_EQ(facts.openEdges, 0);
    EXPECT_NEAR(facts.length, 3 + std::sqrt(18), 1e-9);
    EXPECT_THAT(facts.normals, ::testing::IsSupersetOf({Triple{1, 0, 0}, Triple{0, 1, 0}, Triple{0, 0, -1}}));
    EXPECT_THAT(facts.outline, ::testing::HasSubstr("1 triangles rgba 0 255 0 255"));
}

} // namespace cadex::test
