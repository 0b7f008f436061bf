#include "sdk/mesh/SliverFlips.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>

#include "sdk/mesh/Vectors.h"

namespace cadex::mesh {

namespace {

constexpr double SliverHeight = 1e-6;
// A sliver may lie beside another, which must go first.
constexpr int MostPasses = 8;

std::uint64_t EdgeKey(int from, int to)
{
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(from)) << 32 |
           static_cast<std::uint32_t>(to);
}

class Flipper
{
public:
    Flipper(std::vector<NodeTriangle>& triangles, const std::vector<ModelData_Point>& points,
            const std::vector<U32>& pointOf)
        : myTriangles(triangles), myPoints(points), myPointOf(pointOf)
    {
        myTriangleAt.reserve(3 * triangles.size());
        for (std::size_t i = 0; i < triangles.size(); ++i) {
            Enter(i);
        }
    }

    void Run(std::vector<std::size_t> slivers)
    {
        for (int pass = 0; pass < MostPasses && !slivers.empty(); ++pass) {
            const std::size_t before = slivers.size();
            std::erase_if(slivers,
                          [&](std::size_t sliver) { return !Is(myTriangles[sliver]) || Flip(sliver); });
            if (slivers.size() == before) {
                return;
            }
        }
    }

    bool Is(const NodeTriangle& nodes) const
    {
        return IsSliver(Point(nodes[0]), Point(nodes[1]), Point(nodes[2]));
    }

private:
    const ModelData_Point& Point(int node) const
    {
        return myPoints[myPointOf[static_cast<std::size_t>(node)]];
    }

    Vector3 Normal(const NodeTriangle& nodes) const
    {
        const Vector3 origin = ToVector(Point(nodes[0]));
        return Cross(Minus(ToVector(Point(nodes[1])), origin), Minus(ToVector(Point(nodes[2])), origin));
    }

    void Enter(std::size_t triangle)
    {
        const NodeTriangle& nodes = myTriangles[triangle];
        for (std::size_t k = 0; k < 3; ++k) {
            myTriangleAt[EdgeKey(nodes[k], nodes[(k + 1) % 3])] = triangle;
        }
    }

    /// False when the sliver stays.
    bool Flip(std::size_t sliver)
    {
        // Its longest side runs from `from` to `to`; `middle` lies on it.
        const NodeTriangle nodes = myTriangles[sliver];
        std::size_t longest = 0;
        double length = -1;
        for (std::size_t k = 0; k < 3; ++k) {
            const double side =
                SquareLength(Minus(ToVector(Point(nodes[(k + 1) % 3])), ToVector(Point(nodes[k]))));
            if (side > length) {
                longest = k;
                length = side;
            }
        }
        const int from = nodes[longest];
        const int to = nodes[(longest + 1) % 3];
        const int middle = nodes[(longest + 2) % 3];
        const auto found = myTriangleAt.find(EdgeKey(to, from));
        if (found == myTriangleAt.end()) {
            return false;
        }
        const std::size_t neighbour = found->second;
        const NodeTriangle other = myTriangles[neighbour];
        const int apex =
            *std::find_if(other.begin(), other.end(), [&](int node) { return node != from && node != to; });
        const NodeTriangle first = {middle, from, apex};
        const NodeTriangle second = {apex, to, middle};
        const Vector3 side = Normal(other);
        if (Is(first) || Is(second) || Dot(Normal(first), side) <= 0 || Dot(Normal(second), side) <= 0) {
            return false;
        }
        myTriangleAt.erase(EdgeKey(from, to));
        myTriangleAt.erase(EdgeKey(to, from));
        myTriangles[sliver] = first;
        myTriangles[neighbour] = second;
        Enter(sliver);
        Enter(neighbour);
        return true;
    }

    std::vector<NodeTriangle>& myTriangles;
    const std::vector<ModelData_Point>& myPoints;
    const std::vector<U32>& myPointOf;
    std::unordered_map<std::uint64_t, std::size_t> myTriangleAt; ///< by directed side
};

} // namespace

bool IsSliver(const ModelData_Point& a, const ModelData_Point& b, const ModelData_Point& c)
{
    const Vector3 ab = Minus(ToVector(b), ToVector(a));
    const Vector3 ac = Minus(ToVector(c), ToVector(a));
    const double longest = std::max({SquareLength(ab), SquareLength(ac), SquareLength(Minus(ac, ab))});
    return Length(Cross(ab, ac)) <= SliverHeight * longest;
}

void FlipSlivers(std::vector<NodeTriangle>& triangles, const std::vector<ModelData_Point>& points,
                 const std::vector<U32>& pointOf)
{
    std::vector<std::size_t> slivers;
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        const auto point = [&](std::size_t k) -> const ModelData_Point& {
            return points[pointOf[static_cast<std::size_t>(triangles[i][k])]];
        };
        if (IsSliver(point(0), point(1), point(2))) {
            slivers.push_back(i);
        }
    }
    if (!slivers.empty()) {
        Flipper(triangles, points, pointOf).Run(std::move(slivers));
    }
}

} // namespace cadex::mesh
