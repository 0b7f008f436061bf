// Triangle sets: the three streams stay aligned whatever indices come in.
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "sdk/model/TriangleSets.h"

namespace {

using namespace cadex;
using Indices = std::vector<int>;

// Value i of each stream carries i, so that a corner tells where it came from.
std::vector<ModelData_Point> Points(std::size_t count, double shift = 0)
{
    std::vector<ModelData_Point> points(count);
    for (std::size_t i = 0; i < count; ++i) {
        points[i].SetX(shift + static_cast<double>(i));
    }
    return points;
}

std::vector<ModelData_Vectorf> Normals(std::size_t count)
{
    std::vector<ModelData_Vectorf> normals(count);
    for (std::size_t i = 0; i < count; ++i) {
        normals[i].SetX(static_cast<float>(i));
    }
    return normals;
}

std::vector<ModelData_Point2d> UVs(std::size_t count)
{
    std::vector<ModelData_Point2d> uvs(count);
    for (std::size_t i = 0; i < count; ++i) {
        uvs[i].SetX(static_cast<double>(i));
    }
    return uvs;
}

Indices CornersOf(const ModelData_IndexedTriangleSet& set)
{
    Indices corners;
    for (int i = 0; i < 3 * set.NumberOfFaces(); ++i) {
        corners.push_back(static_cast<int>(set.Coordinate(i / 3, i % 3).X()));
    }
    return corners;
}

Indices NormalsOf(const ModelData_IndexedTriangleSet& set)
{
    Indices corners;
    for (int i = 0; i < 3 * set.NumberOfFaces(); ++i) {
        corners.push_back(static_cast<int>(set.VertexNormal(i / 3, i % 3).X()));
    }
    return corners;
}

Indices UVsOf(const ModelData_IndexedTriangleSet& set)
{
    Indices corners;
    for (int i = 0; i < 3 * set.NumberOfFaces(); ++i) {
        corners.push_back(static_cast<int>(set.UVCoordinate(i / 3, i % 3).X()));
    }
    return corners;
}

void AddAll(ModelData_IndexedTriangleSet& set, std::size_t number, const Indices& indices,
            const Indices& counts)
{
    set.AddCoordinates(Points(number).data(), number, indices.data(), counts.data(), counts.size());
    set.AddNormals(Normals(number).data(), number, indices.data(), counts.data(), counts.size());
    set.AddUVCoordinates(UVs(number).data(), number, indices.data(), counts.data(), counts.size());
}

TEST(TriangleSet, CutsPolygonsAndLeavesOutBadTriangles)
{
    constexpr int huge = std::numeric_limits<int>::max();
    const struct
    {
        Indices indices;
        Indices counts;
        Indices expected;
    } cases[] = {
        {{0, 1, 2, 2, 1, 3}, {3, 3}, {0, 1, 2, 2, 1, 3}},
        {{0, 1, 2, 3, 4, 4, 3, 2}, {5, 3}, {0, 1, 2, 0, 2, 3, 0, 3, 4, 4, 3, 2}},
        {{0, 1, 0, 1, 2, 3, 4}, {1, 2, 3, 0, -7, 1}, {1, 2, 3}}, // polygons without area are skipped
        {{0, 1, 9, 2, 3, 4}, {3, 3}, {2, 3, 4}},
        {{0, -1, 2, 2, 3, huge, 4, 3, 2}, {3, 3, 3}, {4, 3, 2}},
        {{0, 1, 2, -5, 4}, {5}, {0, 1, 2}},
        {{}, {}, {}},
    };
    for (const auto& c : cases) {
        ModelData_IndexedTriangleSet set; // null at first
        AddAll(set, 5, c.indices, c.counts);
        EXPECT_EQ(CornersOf(set), c.expected);
        EXPECT_EQ(set.HasNormals(), !c.expected.empty());
        EXPECT_EQ(set.HasUVCoordinates(), !c.expected.empty());
        EXPECT_EQ(set.NumberOfVertices(), 5);
        if (set.HasNormals()) {
            EXPECT_EQ(NormalsOf(set), c.expected);
            EXPECT_EQ(UVsOf(set), c.expected);
            EXPECT_TRUE(internal::ImplOf(set).normals.indices.empty())
                << "equal indices are not stored twice";
        }
    }
}

TEST(TriangleSet, StreamsMayUseTheirOwnIndicesAndComeInSeveralCalls)
{
    ModelData_IndexedTriangleSet set{initialized()};
    const Indices first{0, 1, 2};
    const Indices second{2, 1, 0};
    set.AddCoordinates(Points(3).data(), 3, first.data(), first.size());
    set.AddCoordinates(Points(3, 10).data(), 3, second.data(), second.size());
    set.AddNormals(Normals(3).data(), 3, first.data(), first.size());
    EXPECT_FALSE(set.HasNormals()) << "only one of two triangles is covered";
    set.AddNormals(Normals(3).data(), 3, first.data(), first.size());
    set.AddUVCoordinates(UVs(3).data(), 3, first.data(), first.size());
    set.AddUVCoordinates(UVs(3).data(), 3, second.data(), second.size());
    EXPECT_EQ(CornersOf(set), (Indices{0, 1, 2, 12, 11, 10}));
    EXPECT_EQ(NormalsOf(set), (Indices{0, 1, 2, 0, 1, 2}));
    EXPECT_EQ(UVsOf(set), (Indices{0, 1, 2, 2, 1, 0}));
    EXPECT_TRUE(internal::ImplOf(set).uvs.indices.empty());
    // What was shared stays right when positions are added later.
    set.AddCoordinates(Points(2000).data(), 2000, first.data(), first.size());
    EXPECT_FALSE(set.HasUVCoordinates());
    set.AddUVCoordinates(UVs(3).data(), 3, first.data(), first.size());
    EXPECT_EQ(UVsOf(set), (Indices{0, 1, 2, 2, 1, 0, 0, 1, 2}));
}

TEST(TriangleSet, BadNormalsAndCoordinatesNeverReadOutside)
{
    ModelData_IndexedTriangleSet set;
    const Indices indices{0, 1, 2, 2, 3, 0};
    set.AddCoordinates(Points(4).data(), 4, indices.data(), indices.size());
    set.AddNormals(Normals(0).data(), 0, indices.data(), indices.size());
    EXPECT_FALSE(set.HasNormals()) << "no values: no normals";
    set.AddNormals(nullptr, 7, indices.data(), indices.size());
    EXPECT_FALSE(set.HasNormals());
    set.AddNormals(Normals(3).data(), 3, indices.data(), indices.size()); // index 3 has no normal
    ASSERT_TRUE(set.HasNormals());
    EXPECT_EQ(set.VertexNormal(1, 1), ModelData_Vectorf());
    EXPECT_EQ(set.VertexNormal(1, 0).X(), 2.f);
    const Indices more{0, 1, 2, 2, 1, 0, 0, 1, 2};
    set.AddUVCoordinates(UVs(3).data(), 3, more.data(), more.size()); // one triangle too many
    EXPECT_EQ(UVsOf(set), (Indices{0, 1, 2, 2, 1, 0}));

    ModelData_IndexedTriangleSet none;
    none.AddCoordinates(nullptr, 5, indices.data(), indices.size());
    EXPECT_EQ(none.NumberOfFaces(), 0);
    none.AddCoordinates(Points(4).data(), 4, indices.data(), nullptr, 2);
    EXPECT_EQ(none.NumberOfFaces(), 0);
}

TEST(TriangleSet, AdoptsReadyArrays)
{
    internal::TriangleArrays arrays;
    arrays.points = Points(4);
    arrays.normals = Normals(4);
    arrays.uvs = UVs(3); // does not match
    arrays.indices = {0, 1, 2, 0, 4, 2, 3, 2, 1, 0, 1};
    const ModelData_Point* address = arrays.points.data();
    const ModelData_IndexedTriangleSet set = internal::MakeTriangleSet(std::move(arrays));
    EXPECT_EQ(CornersOf(set), (Indices{0, 1, 2, 3, 2, 1}));
    EXPECT_EQ(NormalsOf(set), CornersOf(set));
    EXPECT_FALSE(set.HasUVCoordinates());
    EXPECT_EQ(internal::ImplOf(set).points.data(), address) << "moved, not copied";
}

TEST(PolyRepresentation, ListsSetsInOrderByTheirKind)
{
    const std::vector<ModelData_Point> points = Points(5);
    ModelData_PolyLineSet lines;
    lines.AddPolyLine(points.data(), 3);
    lines.AddPolyLine(points.data(), 0);
    lines.AddPolyLine(points.data() + 3, 2);
    ModelData_PolyRepresentation shapes{initialized()};
    shapes.Add(lines);
    shapes.Add(ModelData_PolyShape());
    shapes.Add(ModelData_IndexedTriangleSet(initialized()));
    ASSERT_EQ(shapes.Get().Size(), 2u);
    const ModelData_PolyVertexSet& element = shapes.Get().Element(0);
    ASSERT_TRUE(element.IsOfType<ModelData_PolyLineSet>());
    const auto& back = static_cast<const ModelData_PolyLineSet&>(element);
    ASSERT_EQ(back.NumberOfPolyLines(), 3);
    EXPECT_EQ(back.NumberOfVertices(1), 0);
    EXPECT_EQ(back.NumberOfVertices(2), 2);
    EXPECT_EQ(back.Coordinate(2, 1).X(), 4);
    EXPECT_EQ(element.NumberOfVertices(), 5);
    EXPECT_EQ(shapes.Get()[1].TypeId(), ModelData_IndexedTriangleSet::GetTypeId());
    EXPECT_EQ(ModelData_PolyRepresentation().Get().Size(), 0u);
}

} // namespace
