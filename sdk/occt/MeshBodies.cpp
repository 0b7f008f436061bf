#include "sdk/occt/MeshBodies.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <unordered_map>

#include <gp_XYZ.hxx>

namespace cadex::occt {

namespace {

constexpr U32 kNone = 0xFFFFFFFFU;

// Twice the area beside the square of the longest side, below which three corners lie on one line.
constexpr double kNoArea = 1e-12;

// A volume that is this small beside the sum of the triangles' shares, signs left aside, is rounding noise.
constexpr double kNoVolume = 1e-9;

gp_XYZ ToXYZ(const ModelData_Point& point)
{
    return {point.X(), point.Y(), point.Z()};
}

bool HasArea(const ModelData_Point& a, const ModelData_Point& b, const ModelData_Point& c)
{
    const gp_XYZ ab = ToXYZ(b) - ToXYZ(a);
    const gp_XYZ ac = ToXYZ(c) - ToXYZ(a);
    const double longest = std::max({ab.SquareModulus(), ac.SquareModulus(), (ac - ab).SquareModulus()});
    // Not a number compares false.
    return ab.Crossed(ac).Modulus() > kNoArea * longest && std::isfinite(longest);
}

struct PointHash
{
    std::size_t operator()(const ModelData_Point& point) const
    {
        std::uint64_t hash = 0;
        for (const double value : {point.X(), point.Y(), point.Z()}) {
            // Adding zero makes -0.0 the 0.0 that it equals.
            hash = (hash ^ std::bit_cast<std::uint64_t>(value + 0.0)) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 32;
        }
        return static_cast<std::size_t>(hash);
    }
};

/// Sets of triangles that hang together.
class Components
{
public:
    explicit Components(std::size_t count) : myParents(count)
    {
        std::iota(myParents.begin(), myParents.end(), U32{0});
    }

    U32 RootOf(U32 item)
    {
        while (myParents[item] != item) {
            myParents[item] = myParents[myParents[item]];
            item = myParents[item];
        }
        return item;
    }
    /// The lower number becomes the root, so that a root is the first triangle of its set.
    void Join(U32 a, U32 b)
    {
        a = RootOf(a);
        b = RootOf(b);
        myParents[std::max(a, b)] = std::min(a, b);
    }

private:
    std::vector<U32> myParents;
};

struct EdgeUse
{
    U32 low;
    U32 high;
    U32 triangle;
    int direction;
};

std::vector<EdgeUse> SortedEdges(const WeldedMesh& mesh)
{
    std::vector<EdgeUse> edges;
    edges.reserve(mesh.triangles.size() * 3);
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const auto& corners = mesh.triangles[i].corners;
        for (std::size_t k = 0; k < 3; ++k) {
            const U32 from = corners[k];
            const U32 to = corners[(k + 1) % 3];
            edges.push_back(
                {std::min(from, to), std::max(from, to), static_cast<U32>(i), from < to ? 1 : -1});
        }
    }
    std::sort(edges.begin(), edges.end(), [](const EdgeUse& a, const EdgeUse& b) {
        return a.low != b.low ? a.low < b.low : a.high < b.high;
    });
    return edges;
}

struct Boundary
{
    std::vector<U32> triangles;
    bool isClosed = true;
    double volume = 0; ///< signed
    gp_XYZ low{0, 0, 0};
    gp_XYZ high{0, 0, 0};
};

std::vector<Boundary> ConnectedBoundaries(const WeldedMesh& mesh)
{
    Components components(mesh.triangles.size());
    std::vector<bool> isOpen(mesh.triangles.size(), false);
    const std::vector<EdgeUse> edges = SortedEdges(mesh);
    for (std::size_t begin = 0; begin < edges.size();) {
        int balance = 0;
        std::size_t end = begin;
        for (;
             end < edges.size() && edges[end].low == edges[begin].low && edges[end].high == edges[begin].high;
             ++end) {
            balance += edges[end].direction;
            components.Join(edges[begin].triangle, edges[end].triangle);
        }
        isOpen[edges[begin].triangle] = isOpen[edges[begin].triangle] || balance != 0;
        begin = end;
    }
    std::vector<U32> numbers(mesh.triangles.size(), kNone);
    std::vector<Boundary> result;
    for (U32 i = 0; i < mesh.triangles.size(); ++i) {
        U32& number = numbers[components.RootOf(i)];
        if (number == kNone) {
            number = static_cast<U32>(result.size());
            result.emplace_back();
        }
        result[number].triangles.push_back(i);
        result[number].isClosed = result[number].isClosed && !isOpen[i];
    }
    return result;
}

/// Volume and box; what encloses nothing is not closed.
void Measure(const WeldedMesh& mesh, Boundary& boundary)
{
    const gp_XYZ origin = ToXYZ(mesh.points[mesh.triangles[boundary.triangles.front()].corners[0]]);
    boundary.low = boundary.high = origin;
    double sum = 0;
    for (const U32 triangle : boundary.triangles) {
        gp_XYZ corner[3];
        for (std::size_t k = 0; k < 3; ++k) {
            const gp_XYZ point = ToXYZ(mesh.points[mesh.triangles[triangle].corners[k]]);
            for (int axis = 1; axis <= 3; ++axis) {
                boundary.low.SetCoord(axis, std::min(boundary.low.Coord(axis), point.Coord(axis)));
                boundary.high.SetCoord(axis, std::max(boundary.high.Coord(axis), point.Coord(axis)));
            }
            corner[k] = point - origin;
        }
        const double share = corner[0].Dot(corner[1].Crossed(corner[2])) / 6;
        boundary.volume += share;
        sum += std::abs(share);
    }
    boundary.isClosed = boundary.isClosed && std::abs(boundary.volume) > kNoVolume * sum;
}

bool IsBoxInside(const Boundary& inner, const Boundary& outer)
{
    for (int axis = 1; axis <= 3; ++axis) {
        if (!(inner.low.Coord(axis) > outer.low.Coord(axis) &&
              inner.high.Coord(axis) < outer.high.Coord(axis))) {
            return false;
        }
    }
    return true;
}

/// NOTE: winding number as the sum of solid angles (Van Oosterom and Strackee, 1983): 1 inside, 0 outside.
bool IsPointInside(const WeldedMesh& mesh, const Boundary& outer, const gp_XYZ& point)
{
    double angle = 0;
    for (const U32 triangle : outer.triangles) {
        const auto& corners = mesh.triangles[triangle].corners;
        const gp_XYZ a = ToXYZ(mesh.points[corners[0]]) - point;
        const gp_XYZ b = ToXYZ(mesh.points[corners[1]]) - point;
        const gp_XYZ c = ToXYZ(mesh.points[corners[2]]) - point;
        const double la = a.Modulus();
        const double lb = b.Modulus();
        const double lc = c.Modulus();
        angle +=
            2 * std::atan2(a.Dot(b.Crossed(c)), la * lb * lc + a.Dot(b) * lc + b.Dot(c) * la + c.Dot(a) * lb);
    }
    return angle > 2 * M_PI;
}

/// Number of the smallest body around the cavity; kNone when there is none.
U32 BodyAround(const WeldedMesh& mesh, const std::vector<Boundary>& boundaries, const Boundary& cavity)
{
    U32 best = kNone;
    double smallest = std::numeric_limits<double>::infinity();
    const gp_XYZ point = ToXYZ(mesh.points[mesh.triangles[cavity.triangles.front()].corners[0]]);
    for (U32 i = 0; i < boundaries.size(); ++i) {
        const Boundary& outer = boundaries[i];
        if (outer.isClosed && outer.volume > 0 && outer.volume < smallest && IsBoxInside(cavity, outer) &&
            IsPointInside(mesh, outer, point)) {
            best = i;
            smallest = outer.volume;
        }
    }
    return best;
}

} // namespace

void WeldedMesh::Add(const std::vector<ModelData_Point>& newPoints, const std::vector<U32>& indices, U32 look)
{
    // Points of earlier calls are welded with as well: the index is made anew, calls are few.
    std::unordered_map<ModelData_Point, U32, PointHash> known(points.size() + newPoints.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        known.try_emplace(points[i], static_cast<U32>(i));
    }
    std::vector<U32> numbers(newPoints.size(), kNone);
    const auto numberOf = [&](U32 index) {
        if (numbers[index] == kNone) {
            const auto [it, isNew] = known.try_emplace(newPoints[index], static_cast<U32>(points.size()));
            if (isNew) {
                points.push_back(newPoints[index]);
            }
            numbers[index] = it->second;
        }
        return numbers[index];
    };
    triangles.reserve(triangles.size() + indices.size() / 3);
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        if (HasArea(newPoints[indices[i]], newPoints[indices[i + 1]], newPoints[indices[i + 2]])) {
            triangles.push_back(
                {{numberOf(indices[i]), numberOf(indices[i + 1]), numberOf(indices[i + 2])}, look});
        }
    }
}

std::vector<MeshBody> SplitBodies(WeldedMesh& mesh)
{
    std::vector<Boundary> boundaries = ConnectedBoundaries(mesh);
    for (Boundary& boundary : boundaries) {
        Measure(mesh, boundary);
    }
    std::vector<MeshBody> bodies(boundaries.size());
    for (std::size_t i = 0; i < boundaries.size(); ++i) {
        Boundary& boundary = boundaries[i];
        if (boundary.isClosed && boundary.volume < 0) {
            const U32 around = BodyAround(mesh, boundaries, boundary);
            if (around != kNone) {
                bodies[around].voids.push_back(boundary.triangles);
                continue;
            }
            for (const U32 triangle : boundary.triangles) {
                std::swap(mesh.triangles[triangle].corners[1], mesh.triangles[triangle].corners[2]);
            }
            boundary.volume = -boundary.volume;
        }
        bodies[i].triangles = boundary.triangles;
        bodies[i].isClosed = boundary.isClosed;
    }
    std::erase_if(bodies, [](const MeshBody& body) { return body.triangles.empty(); });
    return bodies;
}

} // namespace cadex::occt
