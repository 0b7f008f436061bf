#include "sdk/mesh/PolygonBody.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>
#include <unordered_map>

#include "sdk/mesh/MeshTopology.h"

namespace cadex::mesh {

namespace {

constexpr std::size_t NoIndex = PolygonBody::NoIndex;
constexpr double SameWay = 0.999; ///< cosine between normals: folds are edges

/// Half-edges are numbered three a triangle: number 3 t + k goes from corner k of triangle t to the next.
class Merger
{
public:
    Merger(const std::vector<BodyTriangle>& triangles, const std::vector<Vector3>& vertices, double tolerance)
        : myTriangles(triangles), myVertices(vertices), myTolerance(tolerance)
    {
    }

    PolygonBody Merge()
    {
        FindTwins();
        FindGroups();
        AddFaces();
        AddEdges();
        return std::move(myResult);
    }

private:
    std::uint32_t From(std::size_t half) const { return myTriangles[half / 3].corners[half % 3]; }
    std::uint32_t To(std::size_t half) const { return From(Next(half)); }
    static std::size_t Next(std::size_t half) { return half % 3 == 2 ? half - 2 : half + 1; }

    /// Only edges of two triangles that run through them in opposite directions have twins.
    void FindTwins()
    {
        struct Side
        {
            std::uint32_t low;
            std::uint32_t high;
            std::size_t half;
        };
        std::vector<Side> sides;
        sides.reserve(myTriangles.size() * 3);
        for (std::size_t half = 0; half < myTriangles.size() * 3; ++half) {
            sides.push_back({std::min(From(half), To(half)), std::max(From(half), To(half)), half});
        }
        std::sort(sides.begin(), sides.end(), [](const Side& a, const Side& b) {
            return std::tie(a.low, a.high, a.half) < std::tie(b.low, b.high, b.half);
        });
        myTwins.assign(sides.size(), NoIndex);
        for (std::size_t i = 0; i < sides.size();) {
            std::size_t last = i + 1;
            while (last < sides.size() && sides[last].low == sides[i].low &&
                   sides[last].high == sides[i].high) {
                ++last;
            }
            const std::size_t a = sides[i].half;
            const std::size_t b = sides[last - 1].half;
            if (last - i == 2 && From(a) == To(b)) {
                myTwins[a] = b;
                myTwins[b] = a;
            }
            i = last;
        }
    }

    Vector3 NormalOf(std::size_t triangle) const
    {
        const auto& corners = myTriangles[triangle].corners;
        return AreaNormal(myVertices[corners[0]], myVertices[corners[1]], myVertices[corners[2]]);
    }

    /// From the largest triangle on, each takes its neighbours in.
    void FindGroups()
    {
        std::vector<Vector3> normals(myTriangles.size());
        std::vector<double> areas(myTriangles.size());
        for (std::size_t i = 0; i < normals.size(); ++i) {
            normals[i] = NormalOf(i);
            areas[i] = Length(normals[i]);
        }
        std::vector<std::size_t> order(myTriangles.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::stable_sort(order.begin(), order.end(),
                         [&](std::size_t a, std::size_t b) { return areas[a] > areas[b]; });
        myGroupOf.assign(myTriangles.size(), NoIndex);
        std::vector<std::size_t> open;
        for (const std::size_t seed : order) {
            if (myGroupOf[seed] != NoIndex) {
                continue;
            }
            const std::size_t group = myGroups.size();
            myGroups.push_back(seed);
            myGroupOf[seed] = group;
            const Vector3 normal = Scaled(normals[seed], areas[seed] > 0 ? 1 / areas[seed] : 0);
            myResult.faces.push_back({0, 0, normal, myTriangles[seed].set});
            open.assign(1, seed);
            while (!open.empty()) {
                const std::size_t triangle = open.back();
                open.pop_back();
                for (std::size_t half = 3 * triangle; half < 3 * triangle + 3; ++half) {
                    const std::size_t other = myTwins[half] == NoIndex ? NoIndex : myTwins[half] / 3;
                    if (other != NoIndex && myGroupOf[other] == NoIndex && Fits(other, seed, normal) &&
                        Dot(normals[other], normal) > SameWay * areas[other]) {
                        myGroupOf[other] = group;
                        open.push_back(other);
                    }
                }
            }
        }
    }

    static Vector3 Scaled(const Vector3& vector, double factor)
    {
        return {vector[0] * factor, vector[1] * factor, vector[2] * factor};
    }

    bool Fits(std::size_t triangle, std::size_t seed, const Vector3& normal) const
    {
        const Vector3& origin = myVertices[myTriangles[seed].corners[0]];
        return myTriangles[triangle].set == myTriangles[seed].set &&
               std::all_of(myTriangles[triangle].corners.begin(), myTriangles[triangle].corners.end(),
                           [&](std::uint32_t corner) {
                               return std::abs(Dot(Minus(myVertices[corner], origin), normal)) <= myTolerance;
                           });
    }

    bool IsInside(std::size_t half) const
    {
        const std::size_t twin = myTwins[half];
        return twin != NoIndex && myGroupOf[twin / 3] == myGroupOf[half / 3];
    }

    /// Walks along the boundary of each group; where it touches itself in a vertex, by the triangles there.
    void AddFaces()
    {
        const std::size_t halves = myTriangles.size() * 3;
        std::vector<std::vector<std::size_t>> starts(myGroups.size());
        for (std::size_t half = 0; half < halves; ++half) {
            if (!IsInside(half)) {
                starts[myGroupOf[half / 3]].push_back(half);
            }
        }
        std::vector<bool> isDone(halves);
        for (std::size_t group = 0; group < starts.size(); ++group) {
            PolygonBody::Face& face = myResult.faces[group];
            face.first = myResult.loops.size();
            for (const std::size_t start : starts[group]) {
                if (isDone[start]) {
                    continue;
                }
                PolygonBody::Loop loop{myResult.coedges.size(), 0, group};
                std::size_t half = start;
                do {
                    isDone[half] = true;
                    myResult.coedges.push_back(
                        {PlaceOf(From(half)), PlaceOf(To(half)), 0, myResult.loops.size(), NoIndex});
                    half = Next(half);
                    while (IsInside(half)) {
                        half = Next(myTwins[half]);
                    }
                } while (half != start);
                loop.last = myResult.coedges.size();
                myResult.loops.push_back(loop);
            }
            face.last = myResult.loops.size();
        }
    }

    std::uint32_t PlaceOf(std::uint32_t vertex)
    {
        const auto [place, isNew] =
            myPlaces.try_emplace(vertex, static_cast<std::uint32_t>(myResult.vertices.size()));
        if (isNew) {
            myResult.vertices.push_back(vertex);
            myResult.edgeOf.push_back(0);
        }
        return place->second;
    }

    void AddEdges()
    {
        std::vector<PolygonBody::Coedge>& coedges = myResult.coedges;
        std::vector<std::size_t> order(coedges.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        const auto ends = [&](std::size_t coedge) {
            return std::minmax(coedges[coedge].from, coedges[coedge].to);
        };
        std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            const std::pair<std::uint32_t, std::uint32_t> first = ends(a);
            const std::pair<std::uint32_t, std::uint32_t> second = ends(b);
            return std::tie(first, a) < std::tie(second, b);
        });
        for (std::size_t i = 0; i < order.size();) {
            const std::pair<std::uint32_t, std::uint32_t> key = ends(order[i]);
            std::size_t last = i;
            while (last < order.size() && key == std::pair<std::uint32_t, std::uint32_t>(ends(order[last]))) {
                coedges[order[last]].edge = myResult.edges.size();
                ++last;
            }
            for (std::size_t k = i; last - i > 1 && k < last; ++k) {
                coedges[order[k]].partner = order[k + 1 < last ? k + 1 : i];
            }
            myResult.edgeOf[key.first] = myResult.edges.size();
            myResult.edgeOf[key.second] = myResult.edges.size();
            myResult.edges.push_back(order[i]);
            i = last;
        }
    }

    const std::vector<BodyTriangle>& myTriangles;
    const std::vector<Vector3>& myVertices;
    const double myTolerance;
    std::vector<std::size_t> myTwins;   ///< by half-edge
    std::vector<std::size_t> myGroupOf; ///< by triangle
    std::vector<std::size_t> myGroups;  ///< the triangle that each began with
    std::unordered_map<std::uint32_t, std::uint32_t> myPlaces;
    PolygonBody myResult;
};

} // namespace

PolygonBody MergeCoplanar(const std::vector<BodyTriangle>& triangles, const std::vector<Vector3>& vertices,
                          double tolerance)
{
    return Merger(triangles, vertices, tolerance).Merge();
}

} // namespace cadex::mesh
