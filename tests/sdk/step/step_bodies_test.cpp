// Geometry of STEP files: bodies, shells, polylines, and what is left out.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/sdk/step/StepModels.h"
#include "tests/sdk/step/XcafReadback.h"

namespace {

using namespace cadex;

struct Written
{
    std::string text;
    XcafReadback file;
};

Written Write(const ModelData_Part& part)
{
    ScratchFolder folder;
    EXPECT_TRUE(WriteStep(ModelOf(part), folder / "part.step"));
    return {ContentOf(folder / "part.step"), XcafReadback(folder / "part.step")};
}

TEST(StepBodies, ClosedPiecesBecomeSolidsAndOpenOnesShells)
{
    const struct
    {
        const char* what;
        void (*build)(ModelData_IndexedTriangleSet&);
        int solids;
        double volume;
        std::size_t triangles;
        std::size_t shells;
    } cases[] = {
        {"cube", [](auto& set) { AddCube(set, {}, 10); }, 1, 1000, 12, 0},
        {"open", [](auto& set) { AddCube(set, {}, 10, 10); }, 0, 0, 10, 1},
        {"two bodies",
         [](auto& set) {
             AddCube(set, {}, 10);
             AddCube(set, {20, 0, 0}, 5);
         },
         2, 1125, 24, 0},
        {"body and sheet",
         [](auto& set) {
             AddCube(set, {20, 0, 0}, 5, 4);
             AddCube(set, {}, 10);
         },
         1, 1000, 16, 1},
        {"cavity",
         [](auto& set) {
             AddCube(set, {}, 10);
             AddCube(set, {2, 2, 2}, 5, 12, true);
         },
         1, 875, 24, 0},
        {"inside out", [](auto& set) { AddCube(set, {}, 10, 12, true); }, 0, 0, 12, 1},
        {"one triangle turned",
         [](auto& set) {
             AddCube(set, {}, 10, 11);
             const ModelData_Point points[] = {{10, 10, 0}, {10, 0, 10}, {10, 10, 10}};
             const int indices[] = {0, 1, 2};
             set.AddCoordinates(points, 3, indices, 3);
         },
         0, 0, 12, 1},
        {"empty", [](auto& set) { set.AddCoordinates(nullptr, 0, nullptr, 0); }, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ModelData_IndexedTriangleSet set;
        c.build(set);
        const Written written = Write(PartOf(set, c.what));
        ASSERT_TRUE(written.file.ok);
        EXPECT_EQ(written.file.solids, c.solids);
        EXPECT_NEAR(written.file.volume, c.volume, 1e-9);
        EXPECT_EQ(written.file.triangles.size(), c.triangles);
        EXPECT_EQ(CountOf(written.text, "SHELL_BASED_SURFACE_MODEL("), c.shells);
    }
}

TEST(StepBodies, PointsAtOnePositionAreOneVertex)
{
    ModelData_IndexedTriangleSet cube;
    AddCube(cube, {}, 10);
    ModelData_IndexedTriangleSet loose; // three points a triangle, as after a merge that keeps hard edges
    for (int f = 0; f < cube.NumberOfFaces(); ++f) {
        ModelData_Point corners[3];
        for (int k = 0; k < 3; ++k) {
            const ModelData_Point& p = cube.Coordinate(f, k);
            corners[k] = ModelData_Point(p.X() == 0 && f % 2 == 0 ? -0.0 : p.X(), p.Y(), p.Z());
        }
        const int indices[] = {0, 1, 2};
        loose.AddCoordinates(corners, 3, indices, 3);
    }
    const Written written = Write(PartOf(loose, "loose"));
    EXPECT_EQ(written.file.solids, 1);
    EXPECT_EQ(CountOf(written.text, "CARTESIAN_POINT("), 8u + 1);
}

TEST(StepBodies, LeavesOutTrianglesWithoutAreaAndKeepsTheBodyClosed)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // A tetrahedron whose edge 0-1 is split on one side only; the triangle (0, 4, 1) fills the gap without
    // area.
    const ModelData_Point points[] = {{0, 0, 0}, {10, 0, 0},  {0, 10, 0},   {0, 0, 10},
                                      {5, 0, 0}, {nan, 0, 0}, {1e300, 1, 2}};
    const int body[] = {0, 2, 4, 4, 2, 1, 0, 4, 1, 0, 1, 3, 1, 2, 3, 0, 3, 2, 2, 2, 3};
    const int bad[] = {0, 1, 5, 1, 2, 6};
    ModelData_IndexedTriangleSet set;
    set.AddCoordinates(points, 7, body, std::size(body));
    Written written = Write(PartOf(set, "split"));
    EXPECT_EQ(written.file.solids, 1);
    EXPECT_EQ(written.file.triangles.size(), 6u) << "the neighbour is cut where the gap was";
    EXPECT_NEAR(written.file.volume, 1000 / 6., 1e-9);
    ModelData_IndexedTriangleSet broken;
    AddCube(broken, {}, 10);
    broken.AddCoordinates(points, 7, bad, std::size(bad));
    ModelData_Assembly root("root");
    ModelData_Transformation large;
    large.SetScaleFactor(1000);
    root.AddInstance(ModelData_Instance(PartOf(broken, "broken"), large));
    ScratchFolder folder;
    ASSERT_TRUE(WriteStep(ModelOf(root), folder / "broken.step"));
    const XcafReadback file(folder / "broken.step");
    EXPECT_EQ(file.triangles.size(), 12u);
    EXPECT_NEAR(file.volume, 1e12, 1);
}

TEST(StepBodies, WritesPolylinesBesideBodiesAndAlone)
{
    const ModelData_Point points[] = {{0, 0, 0}, {1, 2, 3}, {1, 2, 3}, {4, 5, 6}, {std::nan(""), 0, 0}};
    ModelData_PolyLineSet lines;
    lines.AddPolyLine(points, 2);
    lines.AddPolyLine(points + 1, 3); // goes on, one point doubled
    lines.AddPolyLine(points + 1, 2); // no length
    lines.AddPolyLine(points, 1);
    lines.AddPolyLine(points + 3, 2); // not finite
    lines.AddPolyLine(nullptr, 0);
    lines.AddPolyLine(points, 2);
    const Written alone = Write(PartOf(lines, "lines"));
    const std::vector<Corners> expected{{{0, 0, 0}, {4, 5, 6}}, {{0, 0, 0}, {1, 2, 3}}};
    EXPECT_EQ(alone.file.edges, expected);
    EXPECT_EQ(CountOf(alone.text, "GEOMETRICALLY_BOUNDED_WIREFRAME_SHAPE_REPRESENTATION("), 1u);
    ModelData_Part both = CubePart("both");
    both.PolyRepresentation(ModelData_RM_Poly).Add(lines);
    const Written mixed = Write(both);
    EXPECT_EQ(mixed.file.edges, expected);
    EXPECT_EQ(mixed.file.solids, 1);
}

TEST(StepBodies, CarriesColoursWithTransparency)
{
    ModelData_Part part = CubePart("part");
    part.SetAppearance(ModelData_Appearance(ModelData_Color(0.2f, 0.4f, 0.6f, 0.25f)));
    ModelData_IndexedTriangleSet sheet;
    AddCube(sheet, {0, 0, 20}, 10, 10);
    sheet.SetAppearance(
        ModelData_Appearance(ModelData_Material(ModelData_Color(1.f, 0.f, 2.f)))); // beyond its range
    ModelData_PolyLineSet line;
    const ModelData_Point points[] = {{0, 0, 0}, {1, 2, 3}};
    line.AddPolyLine(points, 2);
    line.SetAppearance(ModelData_Appearance(ModelData_Color(0.f, 1.f, 0.f)));
    ModelData_PolyRepresentation shapes = part.PolyRepresentation(ModelData_RM_Poly);
    shapes.Add(sheet);
    shapes.Add(line);
    const Written written = Write(part);
    EXPECT_EQ(written.file.colors,
              (std::vector<std::string>{"solid 0.2 0.4 0.6 0.25", "shell 1 0 1 1", "compound 0 1 0 1"}));

    ModelData_Assembly root("root");
    for (int i = 0; i < 3; ++i) {
        ModelData_Part cube = CubePart("cube", 1 + i);
        cube.SetAppearance(ModelData_Appearance(ModelData_Color(10, 20, 30)));
        root.AddInstance(ModelData_Instance(cube));
    }
    ScratchFolder folder;
    ASSERT_TRUE(WriteStep(ModelOf(root), folder / "cubes.step"));
    EXPECT_EQ(CountOf(ContentOf(folder / "cubes.step"), "COLOUR_RGB("), 1u) << "one style for one colour";
    const std::string color = "solid 0.0392157 0.0784314 0.117647 1";
    EXPECT_EQ(XcafReadback(folder / "cubes.step").colors, (std::vector<std::string>{color, color, color}));
}

} // namespace
