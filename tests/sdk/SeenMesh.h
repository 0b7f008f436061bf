// A mesh as a consumer sees it through the accessors.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>
#include <utility>

#include <gtest/gtest.h>

#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

namespace cadex::test {

inline const ModelData_IndexedTriangleSet& SetOf(const ModelData_PolyRepresentation& shapes,
                                                 std::size_t index)
{
    return static_cast<const ModelData_IndexedTriangleSet&>(shapes.Get()[index]);
}

using Position = std::array<double, 3>;

inline Position At(const ModelData_IndexedTriangleSet& set, int face, int slot)
{
    const ModelData_Point& point = set.Coordinate(face, slot);
    return {point.X(), point.Y(), point.Z()};
}

/// What a consumer sees through the accessors, sets taken together, edges compared bit by bit.
struct Seen
{
    explicit Seen(const ModelData_PolyRepresentation& shapes)
    {
        for (std::size_t i = 0; i < shapes.Get().Size(); ++i) {
            if (shapes.Get()[i].IsOfType<ModelData_IndexedTriangleSet>()) {
                Look(SetOf(shapes, i));
            }
        }
        for (const auto& [edge, uses] : edges) {
            openEdges += uses == 0 ? 0 : 1;
        }
    }

    void Look(const ModelData_IndexedTriangleSet& set)
    {
        EXPECT_TRUE(set.HasNormals());
        EXPECT_FALSE(set.HasUVCoordinates());
        for (int face = 0; face < set.NumberOfFaces(); ++face) {
            const Position p[] = {At(set, face, 0), At(set, face, 1), At(set, face, 2)};
            const Position u{p[1][0] - p[0][0], p[1][1] - p[0][1], p[1][2] - p[0][2]};
            const Position v{p[2][0] - p[0][0], p[2][1] - p[0][1], p[2][2] - p[0][2]};
            const Position n{u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
            const double area = std::hypot(n[0], n[1], n[2]);
            volume += (p[0][0] * n[0] + p[0][1] * n[1] + p[0][2] * n[2]) / 6;
            surface += area / 2;
            EXPECT_GT(area, 0);
            for (int slot = 0; slot < 3; ++slot) {
                const Position& from = p[slot];
                const Position& to = p[(slot + 1) % 3];
                edges[{std::min(from, to), std::max(from, to)}] += from < to ? 1 : -1;
                const ModelData_Vectorf& normal = set.VertexNormal(face, slot);
                const double length = std::hypot(normal.X(), normal.Y(), normal.Z());
                EXPECT_NEAR(length, 1, 1e-6);
                worstCosine =
                    std::min(worstCosine, (normal.X() * n[0] + normal.Y() * n[1] + normal.Z() * n[2]) / area);
                vertices.insert({from, {normal.X(), normal.Y(), normal.Z()}});
            }
            ++triangles;
        }
    }

    int triangles = 0;
    int openEdges = 0;
    double volume = 0;
    double surface = 0;
    double worstCosine = 1; ///< between a corner's normal and its facet's
    std::map<std::pair<Position, Position>, int> edges;
    std::set<std::pair<Position, std::array<float, 3>>> vertices; ///< after a merge by position and normal
};

} // namespace cadex::test
