#include "sdk/mesh/MeshTopology.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <unordered_map>

namespace cadex::mesh {

namespace {

std::uint64_t Mix(std::uint64_t x)
{
    x ^= x >> 30;
    x *= 0xbf58476d1ce4e5b9ull;
    x ^= x >> 27;
    x *= 0x94d049bb133111ebull;
    return x ^ (x >> 31);
}

/// Gives points at the same position one number, over a flat hash table.
class Welder
{
public:
    Welder(const std::vector<ModelData_Point>& points, std::vector<U32>& pointOf)
        : myPoints(points),
          myPointOf(pointOf),
          mySlots(std::bit_ceil(points.size() * 3 / 2 + 1), MeshTopology::Unused)
    {
    }

    U32 VertexOf(U32 point)
    {
        const ModelData_Point& p = myPoints[point];
        const std::size_t mask = mySlots.size() - 1;
        for (std::size_t slot = Hash(p) & mask;; slot = (slot + 1) & mask) {
            if (mySlots[slot] == MeshTopology::Unused) {
                mySlots[slot] = static_cast<U32>(myPointOf.size());
                myPointOf.push_back(point);
                return mySlots[slot];
            }
            const ModelData_Point& other = myPoints[myPointOf[mySlots[slot]]];
            if (other.X() == p.X() && other.Y() == p.Y() && other.Z() == p.Z()) {
                return mySlots[slot];
            }
        }
    }

private:
    static std::size_t Hash(const ModelData_Point& p)
    {
        // Adding zero makes the two zeros one.
        const std::uint64_t x = std::bit_cast<std::uint64_t>(p.X() + 0.0);
        const std::uint64_t y = std::bit_cast<std::uint64_t>(p.Y() + 0.0);
        const std::uint64_t z = std::bit_cast<std::uint64_t>(p.Z() + 0.0);
        return static_cast<std::size_t>(Mix(x + 3 * Mix(y + 5 * Mix(z))));
    }

    const std::vector<ModelData_Point>& myPoints;
    std::vector<U32>& myPointOf;
    std::vector<U32> mySlots;
};

/// Disjoint sets of vertices.
class Groups
{
public:
    explicit Groups(std::size_t size) : myParent(size) { std::iota(myParent.begin(), myParent.end(), 0u); }

    U32 Find(U32 member)
    {
        while (myParent[member] != member) {
            member = myParent[member] = myParent[myParent[member]];
        }
        return member;
    }

    void Join(U32 left, U32 right)
    {
        left = Find(left);
        right = Find(right);
        myParent[std::max(left, right)] = std::min(left, right);
    }

private:
    std::vector<U32> myParent;
};

/// A value for a directed edge that its opposite cancels.
std::uint64_t EdgeValue(U32 from, U32 to)
{
    const bool forward = from < to;
    const std::uint64_t low = forward ? from : to;
    const std::uint64_t high = forward ? to : from;
    const std::uint64_t value = Mix((low << 32 | high) + 0x9e3779b97f4a7c15ull);
    return forward ? value : 0 - value;
}

/// What is gathered of a piece while its triangles pass by.
struct Tally
{
    std::size_t triangles = 0;
    std::uint64_t edges = 0; ///< sum of edge values: zero when each edge is cancelled by its opposite
    double volume = 0;
    Vector3 origin{}; ///< near the piece, against cancellation in the volume
    std::size_t piece = 0;
};

/// Fills a topology, step by step.
class Builder
{
public:
    using Corners = MeshTopology::Corners;

    Builder(MeshTopology& result, const TriangleSetImpl& mesh, const Matrix3& linear)
        : myTopology(result), myMesh(mesh), myLinear(linear), myTriangleNb(mesh.indices.size() / 3)
    {
        Weld();
        Groups groups = Connect();
        Gather(groups);
        if (!mySplits.empty()) {
            CloseGaps();
        }
        Sort(groups);
    }

private:
    void Weld()
    {
        Welder welder(myMesh.points, myTopology.pointOf);
        myTopology.vertexOf.assign(myMesh.points.size(), MeshTopology::Unused);
        for (const U32 point : myMesh.indices) {
            if (myTopology.vertexOf[point] == MeshTopology::Unused &&
                IsUsable(Mapped(myLinear, myMesh.points[point]))) {
                myTopology.vertexOf[point] = welder.VertexOf(point);
            }
        }
    }

    Groups Connect() const
    {
        Groups groups(myTopology.pointOf.size());
        for (U32 i = 0; i < myTriangleNb; ++i) {
            if (const Corners v = myTopology.CornersOf(myMesh, i); !IsCollapsed(v)) {
                groups.Join(v[0], v[1]);
                groups.Join(v[0], v[2]);
            }
        }
        return groups;
    }

    void Gather(Groups& groups)
    {
        myTallyOf.assign(myTopology.pointOf.size(), MeshTopology::Unused);
        myTopology.triangles.reserve(myTriangleNb);
        for (U32 i = 0; i < myTriangleNb; ++i) {
            const Corners v = myTopology.CornersOf(myMesh, i);
            if (IsCollapsed(v)) {
                continue;
            }
            const Vector3 a = Position(v[0]);
            const Vector3 normal = NormalOf(v);
            U32& tally = myTallyOf[groups.Find(v[0])];
            if (tally == MeshTopology::Unused) {
                tally = static_cast<U32>(myTallies.size());
                myTallies.emplace_back().origin = a;
            }
            Tally& piece = myTallies[tally];
            piece.edges += EdgeValue(v[0], v[1]) + EdgeValue(v[1], v[2]) + EdgeValue(v[2], v[0]);
            piece.volume += Dot(normal, Minus(a, piece.origin)) / 6;
            if (normal != Vector3{}) {
                myTopology.triangles.push_back(i);
            } else {
                AddSplit(v);
            }
        }
    }

    /// Remembers at which vertex the neighbour across the longest edge of a triangle without area is to be
    /// cut.
    void AddSplit(const Corners& v)
    {
        std::size_t longest = 0;
        double length = -1;
        for (std::size_t k = 0; k < 3; ++k) {
            const Vector3 edge = Minus(Position(v[(k + 1) % 3]), Position(v[k]));
            if (Dot(edge, edge) > length) {
                length = Dot(edge, edge);
                longest = k;
            }
        }
        mySplits.emplace(EdgeKey(v[(longest + 1) % 3], v[longest]), v[(longest + 2) % 3]);
    }

    void CloseGaps()
    {
        std::size_t kept = 0;
        for (const U32 triangle : myTopology.triangles) {
            const Corners v = myTopology.CornersOf(myMesh, triangle);
            if (FindSplit(v) == 3) {
                myTopology.triangles[kept++] = triangle;
            } else {
                Cut(v, triangle);
            }
        }
        myTopology.triangles.resize(kept);
        for (std::size_t i = 0; i < myTopology.cuts.size(); ++i) {
            myTopology.triangles.push_back(static_cast<U32>(myTriangleNb + i));
        }
    }

    /// The first edge that has to be cut, or 3.
    std::size_t FindSplit(const Corners& v) const
    {
        std::size_t k = 0;
        while (k < 3 && mySplits.count(EdgeKey(v[k], v[(k + 1) % 3])) == 0) {
            ++k;
        }
        return k;
    }

    // Each split serves once, so that this ends whatever the triangles.
    void Cut(const Corners& corners, U32 triangle)
    {
        std::vector<Corners> waiting{corners};
        while (!waiting.empty()) {
            const Corners v = waiting.back();
            waiting.pop_back();
            const std::size_t k = FindSplit(v);
            if (k < 3) {
                const auto split = mySplits.find(EdgeKey(v[k], v[(k + 1) % 3]));
                waiting.push_back({v[k], split->second, v[(k + 2) % 3]});
                waiting.push_back({split->second, v[(k + 1) % 3], v[(k + 2) % 3]});
                mySplits.erase(split);
            } else if (!IsCollapsed(v) && NormalOf(v) != Vector3{}) {
                myTopology.cuts.push_back(v);
                myTopology.cutFrom.push_back(triangle);
            }
        }
    }

    void Sort(Groups& groups)
    {
        const auto tallyOf = [&](U32 triangle) -> Tally& {
            return myTallies[myTallyOf[groups.Find(myTopology.CornersOf(myMesh, triangle)[0])]];
        };
        for (const U32 triangle : myTopology.triangles) {
            ++tallyOf(triangle).triangles;
        }
        const double sign = Determinant(myLinear) < 0 ? -1 : 1;
        std::size_t first = 0;
        for (Tally& tally : myTallies) {
            if (tally.triangles != 0) {
                tally.piece = myTopology.pieces.size();
                myTopology.pieces.push_back({first, first, tally.edges == 0, sign * tally.volume});
                first += tally.triangles;
            }
        }
        std::vector<U32> sorted(myTopology.triangles.size());
        for (const U32 triangle : myTopology.triangles) {
            sorted[myTopology.pieces[tallyOf(triangle).piece].last++] = triangle;
        }
        myTopology.triangles.swap(sorted);
    }

    static bool IsCollapsed(const Corners& v)
    {
        return v[0] == v[1] || v[1] == v[2] || v[2] == v[0] || v[0] == MeshTopology::Unused ||
               v[1] == MeshTopology::Unused || v[2] == MeshTopology::Unused;
    }
    static std::uint64_t EdgeKey(U32 from, U32 to) { return std::uint64_t{from} << 32 | to; }
    Vector3 Position(U32 vertex) const { return Mapped(myLinear, myMesh.points[myTopology.pointOf[vertex]]); }
    Vector3 NormalOf(const Corners& v) const
    {
        return AreaNormal(Position(v[0]), Position(v[1]), Position(v[2]));
    }

    MeshTopology& myTopology;
    const TriangleSetImpl& myMesh;
    const Matrix3& myLinear;
    const std::size_t myTriangleNb;
    std::vector<Tally> myTallies;
    std::vector<U32> myTallyOf;                      // for the first vertex of each group
    std::unordered_map<std::uint64_t, U32> mySplits; // by directed edge
};

} // namespace

Vector3 AreaNormal(const Vector3& a, const Vector3& b, const Vector3& c)
{
    const Vector3 ab = Minus(b, a);
    const Vector3 ac = Minus(c, a);
    const Vector3 bc = Minus(c, b);
    const Vector3 normal = Cross(ab, ac);
    const double longest = std::max({Dot(ab, ab), Dot(ac, ac), Dot(bc, bc)});
    const double length = std::sqrt(Dot(normal, normal));
    return length > 1e-12 * longest && std::isfinite(length) && length > 0 ? normal : Vector3{};
}

MeshTopology::MeshTopology(const TriangleSetImpl& mesh, const Matrix3& linear)
{
    Builder(*this, mesh, linear);
}

} // namespace cadex::mesh
