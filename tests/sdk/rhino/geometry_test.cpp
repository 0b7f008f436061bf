// Curves, surfaces and meshes of every class, composed byte by byte: lengths and areas are those of formulas.
#include "tests/sdk/SeenMesh.h"
#include "tests/sdk/TreeText.h"
#include "tests/sdk/rhino/Files3dm.h"
#include "tests/sdk/rhino/Tables3dm.h"

#include <array>
#include <cmath>
#include <functional>
#include <initializer_list>

#include <gtest/gtest.h>

#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>

#include "sdk/mesh/DistinctParts.h"
#include "sdk/model/TriangleSets.h"
#include "sdk/occt/EngineBRep.h"
#include "sdk/occt/EngineScope.h"

namespace rhinotest {
namespace {

using Out = rhino::ChunkWriter;
using Write = std::function<void(Out&)>;

constexpr rhino::Uuid LineId("4ed7d4db-e947-11d3-bfe5-0010830122f0");
constexpr rhino::Uuid ArcId("cf33be2a-09b4-11d4-bffb-0010830122f0");
constexpr rhino::Uuid CircleId("cf33be29-09b4-11d4-bffb-0010830122f0");
constexpr rhino::Uuid NurbsCurveId("4ed7d4dd-e947-11d3-bfe5-0010830122f0");
constexpr rhino::Uuid PlaneId("4ed7d4df-e947-11d3-bfe5-0010830122f0");
constexpr rhino::Uuid RevolutionId("a16220d3-163b-11d4-8000-0010830122f0");
constexpr rhino::Uuid SumId("c4cd5359-446d-4690-9ff5-29059732472b");

void Doubles(Out& out, std::initializer_list<double> values)
{
    out.PutAll(values);
}
void Ints(Out& out, std::initializer_list<std::int32_t> values)
{
    out.PutAll(values);
}
void Array(Out& out, const std::vector<double>& values, std::size_t items)
{
    out.Put(static_cast<std::int32_t>(items));
    for (const double value : values) {
        out.Put(value);
    }
}
void Array(Out& out, const std::vector<double>& values)
{
    Array(out, values, values.size());
}

void Object(Out& out, const rhino::Uuid& classId, const Write& write)
{
    out.BeginObject(classId);
    write(out);
    out.EndData();
    out.EndObject();
}

/// One object; `metres` sets the unit.
std::string FileOfObject(const rhino::Uuid& classId, const Write& write, bool inMetres = false)
{
    return FileOf([&](Out& out) {
        if (inMetres) {
            out.Begin(code::SettingsTable);
            out.Begin(code::Units);
            Ints(out, {100, 4});
            Doubles(out, {0.001, 0.01, 0.01});
            out.End();
            out.Short(code::EndOfTable, 0);
            out.End();
        }
        out.Begin(code::ObjectTable);
        out.Begin(code::ObjectRecord);
        out.Short(code::ObjectKind, 8);
        Object(out, classId, write);
        out.Begin(code::ObjectAttributes);
        out.Put(std::uint8_t{0x20});
        out.Put(Number(1));
        out.Put(std::int32_t{-1});
        out.Put(std::uint8_t{0});
        out.End();
        out.Short(code::ObjectRecordEnd, 0);
        out.End();
        out.Short(code::EndOfTable, 0);
        out.End();
    });
}

Write Line(const std::array<double, 6>& ends, double first = 0, double last = 1)
{
    return [=](Out& out) {
        out.Put(std::uint8_t{0x10});
        out.Put(ends);
        Doubles(out, {first, last});
        Ints(out, {3});
    };
}

/// About the z axis at a height.
Write Arc(double radius, double z, double first, double last, double from = 0, double to = 1)
{
    return [=](Out& out) {
        out.Put(std::uint8_t{0x10});
        Doubles(out, {0, 0, z, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 1, -z, radius});
        Doubles(out, {0, 0, 0, 0, 0, 0, 0, 0, 0});
        Doubles(out, {first, last, from, to});
        Ints(out, {3});
    };
}

Write Circle(double radius)
{
    return [=](Out& out) {
        out.Put(std::uint8_t{0x10});
        Doubles(out, {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 0, radius});
        Doubles(out, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1});
        Ints(out, {3});
    };
}

/// A quarter of a circle in the plane of z = 0: rational, poles multiplied by their weights.
Write Quarter(double radius)
{
    return [=](Out& out) {
        const double w = std::sqrt(0.5);
        out.Put(std::uint8_t{0x11});
        Ints(out, {3, 1, 3, 3, 0, 0});
        Doubles(out, {0, 0, 0, 0, 0, 0});
        Array(out, {0, 0, 5, 5});
        Array(out, {radius, 0, 0, 1, radius * w, radius * w, 0, w, 0, radius, 0, 1}, 3);
        out.Put(std::uint8_t{0});
    };
}

Write Polyline(const std::vector<double>& points, const std::vector<double>& parameters)
{
    return [=](Out& out) {
        out.Put(std::uint8_t{0x10});
        Array(out, points, points.size() / 3);
        Array(out, parameters);
        Ints(out, {3});
    };
}

/// A line into an arc, on parameters of its own.
Write LineAndArc(double length, double radius)
{
    return [=](Out& out) {
        out.Put(std::uint8_t{0x10});
        Ints(out, {2, 0, 0});
        Doubles(out, {0, 0, 0, 0, 0, 0});
        Array(out, {10, 12, 20});
        Object(out, LineId, Line({radius, -length, 0, radius, 0, 0}));
        Object(out, ArcId, Arc(radius, 0, 0, M_PI / 2));
    };
}

double LengthOf(const ModelData_Model& model)
{
    double length = 0;
    for (const ModelData_Part& part : mesh::DistinctParts(model)) {
        const auto& sets = part.PolyRepresentation(ModelData_RM_Poly).Get();
        for (std::size_t i = 0; i < sets.Size(); ++i) {
            if (!sets[i].IsOfType<ModelData_PolyLineSet>()) {
                continue;
            }
            const auto& lines = static_cast<const ModelData_PolyLineSet&>(sets[i]);
            for (int line = 0; line < lines.NumberOfPolyLines(); ++line) {
                for (int k = 1; k < lines.NumberOfVertices(line); ++k) {
                    const ModelData_Point& a = lines.Coordinate(line, k - 1);
                    const ModelData_Point& b = lines.Coordinate(line, k);
                    length += std::hypot(a.X() - b.X(), a.Y() - b.Y(), a.Z() - b.Z());
                }
            }
        }
    }
    return length;
}

TEST(RhinoGeometry, CurvesHaveTheirLengths)
{
    const struct
    {
        const char* name;
        const rhino::Uuid& id;
        Write write;
        double length;
    } curves[] = {
        {"line", LineId, Line({1, 2, 3, 4, 6, 3}), 5},
        {"arc", ArcId, Arc(10, 2, 0.5, 2), 15},
        {"circle", CircleId, Circle(10), 20 * M_PI},
        {"polyline", rhino::PolylineId, Polyline({0, 0, 0, 3, 4, 0, 3, 4, 12}, {0, 1, 5}), 17},
        {"polyline with a point twice", rhino::PolylineId, Polyline({0, 0, 0, 3, 4, 0, 3, 4, 0}, {0, 1, 1}),
         5},
        {"quarter", NurbsCurveId, Quarter(10), 5 * M_PI},
        {"line and arc", rhino::PolyCurveId, LineAndArc(7, 10), 7 + 5 * M_PI},
    };
    for (const auto& [name, id, write, length] : curves) {
        for (const bool inMetres : {false, true}) {
            SCOPED_TRACE(name);
            const auto model = Read(FileOfObject(id, write, inMetres));
            ASSERT_TRUE(model) << test::TakeReason();
            test::MeshBodies(*model);
            const double expected = length * (inMetres ? 1000 : 1);
            EXPECT_NEAR(LengthOf(*model), expected, 2e-3 * expected);
        }
    }
}

double AreaOf(const ModelData_Model& model)
{
    double area = 0;
    occt::RunGuarded(occt::EngineUse::Geometry, [&] {
        for (const ModelData_Part& part : mesh::DistinctParts(model)) {
            const auto* body = occt::BRepOf<occt::EngineBRep>(part.BRepRepresentation());
            area += body != nullptr ? body->Area() : 0;
        }
        return true;
    });
    return area;
}

Write Plane(double width, double depth)
{
    return [=](Out& out) {
        out.Put(std::uint8_t{0x11});
        Doubles(out, {1, 2, 3, 0, 1, 0, 0, 0, 1, 1, 0, 0, 1, 0, 0, -1});
        Doubles(out, {0, 1, 5, 9});          // parameters
        Doubles(out, {0, width, -depth, 0}); // lengths
    };
}

Write Revolution(const rhino::Uuid& profile, const Write& write, double angle, bool isTransposed)
{
    return [=](Out& out) {
        out.Put(std::uint8_t{0x20});
        Doubles(out, {0, 0, 0, 0, 0, 1, 0.25, 0.25 + angle, 0, 100});
        Doubles(out, {0, 0, 0, 0, 0, 0});
        Ints(out, {isTransposed ? 1 : 0});
        out.Put(std::uint8_t{1});
        Object(out, profile, write);
    };
}

Write Sum(const rhino::Uuid& first, const Write& a, const rhino::Uuid& second, const Write& b)
{
    return [=](Out& out) {
        out.Put(std::uint8_t{0x10});
        Doubles(out, {5, 5, 5, 0, 0, 0, 0, 0, 0});
        Object(out, first, a);
        Object(out, second, b);
    };
}

/// A quarter of a cylinder, rational in u, linear in v (v runs fastest).
Write QuarterCylinder(double radius, double height)
{
    return [=](Out& out) {
        const double w = std::sqrt(0.5);
        out.Put(std::uint8_t{0x10});
        Ints(out, {3, 1, 3, 2, 3, 2, 0, 0});
        Doubles(out, {0, 0, 0, 0, 0, 0});
        Array(out, {0, 0, 1, 1});
        Array(out, {0, 7});
        Array(out,
              {radius,     0,          0, 1, radius, 0, height, 1, radius * w, radius * w, 0, w, radius * w,
               radius * w, height * w, w, 0, radius, 0, 1,      0, radius,     height,     1},
              6);
    };
}

TEST(RhinoGeometry, SurfacesHaveTheirAreas)
{
    const double slant = std::hypot(3, 4);
    const struct
    {
        const char* name;
        const rhino::Uuid& id;
        Write write;
        double area;
    } surfaces[] = {
        {"plane", PlaneId, Plane(4, 6), 24},
        {"spline", rhino::NurbsSurfaceId, QuarterCylinder(10, 3), 15 * M_PI},
        {"cylinder", RevolutionId, Revolution(LineId, Line({5, 0, 0, 5, 0, 8}, 2, 3), 2, false), 80},
        {"transposed", RevolutionId, Revolution(LineId, Line({5, 0, 0, 5, 0, 8}, 2, 3), 2, true), 80},
        {"whole cone", RevolutionId, Revolution(LineId, Line({0, 0, 0, 3, 0, 4}), 2 * M_PI, false),
         M_PI * 3 * slant},
        {"disc", RevolutionId, Revolution(LineId, Line({2, 0, 1, 6, 0, 1}), 2 * M_PI, false), 32 * M_PI},
        {"sum of lines", SumId, Sum(LineId, Line({0, 0, 0, 3, 0, 0}), LineId, Line({0, 0, 0, 0, 0, 5})), 15},
        {"skew sum", SumId, Sum(LineId, Line({0, 0, 0, 3, 0, 0}), LineId, Line({0, 0, 0, 3, 4, 0})), 12},
        {"wall", SumId, Sum(ArcId, Arc(10, 0, 0, 1.5), LineId, Line({0, 0, 0, 0, 0, 5})), 75},
    };
    for (const auto& [name, id, write, area] : surfaces) {
        for (const bool inMetres : {false, true}) {
            SCOPED_TRACE(name);
            const auto model = Read(FileOfObject(id, write, inMetres));
            ASSERT_TRUE(model) << test::TakeReason();
            const double expected = area * (inMetres ? 1e6 : 1);
            EXPECT_NEAR(AreaOf(*model), expected, 1e-6 * expected);
        }
    }
}

/// What no shape can be made of is none; a file that has lost all it had is refused.
TEST(RhinoGeometry, ImpossibleShapesAreLeftOut)
{
    const Write reversed = [](Out& out) {
        out.Put(std::uint8_t{0x11});
        Doubles(out, {1, 2, 3, 0, 1, 0, 0, 0, 1, 1, 0, 0, 1, 0, 0, -1});
        Doubles(out, {1, 0, 5, 9, 0, 1, 0, 1});
    };
    const struct
    {
        const rhino::Uuid& id;
        Write write;
    } shapes[] = {
        {PlaneId, reversed},
        {LineId, Line({1, 1, 1, 1, 1, 1})},
        {LineId, Line({1, 1, 1, 2, 1, 1}, 3, 3)},
        {ArcId, Arc(-1, 0, 0, 1)},
        {rhino::PolylineId, Polyline({0, 0, 0, 3, 4, 0}, {0, 1, 2})},
        {RevolutionId, Revolution(LineId, Line({0, 0, 0, 3, 0, 4}), -1, false)},
        {SumId, Sum(LineId, Line({1, 1, 1, 1, 1, 1}), LineId, Line({0, 0, 0, 0, 0, 5}))},
    };
    for (const auto& [id, write] : shapes) {
        internal::Reports::Clear();
        const auto model = Read(FileOfObject(id, write));
        if (!model) {
            EXPECT_NE(test::TakeReason(), "");
            continue;
        }
        test::MeshBodies(*model);
        EXPECT_EQ(AreaOf(*model) + LengthOf(*model), 0);
    }
}

/// A square of four points, whose quadrangle is cut along the shorter diagonal, beside a triangle; faces that
/// name points which are not there are left out.
template <typename Index>
std::string MeshFile(bool isPlain, bool isDouble, const std::vector<std::uint32_t>& colours)
{
    const std::vector<std::array<float, 3>> points = {{0, 0, 0}, {4, 0, 0}, {5, 5, 0}, {0, 4, 0}, {0, 0, 3}};
    const std::vector<std::array<Index, 4>> faces = {{0, 1, 2, 3}, {0, 1, 4, 4}, {0, 1, 9, 9}};
    return FileOfObject(rhino::MeshId, [&](Out& out) {
        out.Put(static_cast<std::uint8_t>(isPlain ? 0x10 : 0x37));
        Ints(out, {5, 3});
        out.Bytes(std::string(64 + 16 + 64 + 4 + 5, '\0'));
        Ints(out, {sizeof(Index)});
        for (const auto& face : faces) {
            out.Put(face);
        }
        const auto put = [&](const auto& items) {
            const auto* bytes = reinterpret_cast<const char*>(items.data());
            const std::size_t size = items.size() * sizeof(items[0]);
            if (isPlain) {
                out.Put(static_cast<std::int32_t>(items.size()));
                out.Bytes({bytes, size});
            } else {
                out.Buffer(size, [&] { return std::string(bytes, size); });
            }
        };
        put(points);
        put(std::vector<std::array<float, 3>>());
        put(std::vector<std::array<float, 2>>());
        put(std::vector<std::array<double, 2>>());
        put(colours);
        if (isPlain) {
            return;
        }
        out.Put(std::int32_t{0});
        out.Put(Number(0));
        put(std::vector<std::array<double, 2>>());
        out.BeginVersioned(1, 0);
        out.End();
        out.Bytes(std::string(3, '\0'));
        out.Put(std::uint8_t{0});
        out.Put(static_cast<std::uint8_t>(isDouble ? 1 : 0));
        if (isDouble) {
            out.BeginVersioned(1, 0);
            out.Put(std::uint32_t{5});
            std::vector<std::array<double, 3>> exact;
            for (const auto& point : points) {
                exact.push_back({point[0] * 2., point[1] * 2., point[2] * 2.});
            }
            put(exact);
            out.End();
        }
    });
}

TEST(RhinoGeometry, MeshesOfEveryPacking)
{
    const std::vector<std::uint32_t> none;
    const std::vector<std::uint32_t> green(5, 0x00FF00);
    const std::vector<std::uint32_t> mixed = {1, 2, 3, 4, 5};
    const struct
    {
        const char* name;
        std::string bytes;
        const char* look;
        double scale;
    } meshes[] = {
        {"bytes, plain", MeshFile<std::uint8_t>(true, false, green), "#00ff00", 1},
        {"words", MeshFile<std::uint16_t>(false, false, mixed), "#cccccc", 1},
        {"long words", MeshFile<std::uint32_t>(false, false, none), "#cccccc", 1},
        {"double precision", MeshFile<std::uint32_t>(false, true, green), "#00ff00", 2},
    };
    for (const auto& [name, bytes, look, scale] : meshes) {
        SCOPED_TRACE(name);
        const auto model = Read(bytes);
        ASSERT_TRUE(model) << test::TakeReason();
        const std::string tree = test::TreeText(*model).text;
        EXPECT_NE(tree.find(std::string("part Mesh ") + look), std::string::npos) << tree;
        EXPECT_NE(tree.find(" 3 triangles"), std::string::npos) << tree;
        const ModelData_Part part = mesh::DistinctParts(*model).front();
        const auto& set = static_cast<const ModelData_IndexedTriangleSet&>(
            part.PolyRepresentation(ModelData_RM_Poly).Get()[0]);
        // the longer diagonal, from 0 to 2, is not taken: no triangle has both ends of it
        for (int face = 0; face < set.NumberOfFaces(); ++face) {
            double farthest = 0;
            for (int i = 0; i < 3; ++i) {
                farthest = std::max(
                    farthest, std::abs(set.Coordinate(face, i).X() - set.Coordinate(face, (i + 1) % 3).X()));
            }
            EXPECT_LE(farthest, 5 * scale);
        }
        EXPECT_EQ(set.Coordinate(0, 0).X() + set.Coordinate(0, 1).X() + set.Coordinate(0, 2).X(), 4 * scale);
    }
}

} // namespace
} // namespace rhinotest
