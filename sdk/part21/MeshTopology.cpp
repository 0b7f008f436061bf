#include "sdk/part21/MeshTopology.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace cadex {
namespace internal {

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

double Dot(const Vector3& a, const Vector3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vector3 Minus(const Vector3& a, const Vector3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

Vector3 Cross(const Vector3& a, const Vector3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// What is gathered of a piece while its triangles pass by.
struct Tally
{
    std::size_t triangles = 0;
    std::uint64_t edges = 0; ///< sum of edge values: zero when each edge is cancelled by its opposite
    double volume = 0;
    Vector3 origin{}; ///< near the piece, against cancellation in the volume
    U32 piece = MeshTopology::Unused;
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
    : vertexOf(mesh.points.size(), Unused)
{
    const std::size_t triangleNb = mesh.indices.size() / 3;
    {
        Welder welder(mesh.points, pointOf);
        for (const U32 point : mesh.indices) {
            if (vertexOf[point] == Unused && IsUsable(Mapped(linear, mesh.points[point]))) {
                vertexOf[point] = welder.VertexOf(point);
            }
        }
    }
    auto corners = [&](std::size_t triangle) {
        const U32* index = &mesh.indices[3 * triangle];
        return std::array{vertexOf[index[0]], vertexOf[index[1]], vertexOf[index[2]]};
    };
    auto collapsed = [](const std::array<U32, 3>& v) {
        return v[0] == v[1] || v[1] == v[2] || v[2] == v[0] || v[0] == Unused || v[1] == Unused ||
               v[2] == Unused;
    };

    Groups groups(pointOf.size());
    for (std::size_t i = 0; i < triangleNb; ++i) {
        if (const auto v = corners(i); !collapsed(v)) {
            groups.Join(v[0], v[1]);
            groups.Join(v[0], v[2]);
        }
    }

    std::vector<Tally> tallies;
    std::vector<U32> tallyOf(pointOf.size(), Unused);
    std::vector<U32> kept;
    kept.reserve(triangleNb);
    for (std::size_t i = 0; i < triangleNb; ++i) {
        const auto v = corners(i);
        if (collapsed(v)) {
            continue;
        }
        const Vector3 a = Mapped(linear, mesh.points[pointOf[v[0]]]);
        const Vector3 b = Mapped(linear, mesh.points[pointOf[v[1]]]);
        const Vector3 c = Mapped(linear, mesh.points[pointOf[v[2]]]);
        U32& tally = tallyOf[groups.Find(v[0])];
        if (tally == Unused) {
            tally = static_cast<U32>(tallies.size());
            tallies.emplace_back().origin = a;
        }
        Tally& piece = tallies[tally];
        piece.edges += EdgeValue(v[0], v[1]) + EdgeValue(v[1], v[2]) + EdgeValue(v[2], v[0]);
        const Vector3 normal = AreaNormal(a, b, c);
        if (normal != Vector3{}) {
            piece.volume += Dot(normal, Minus(a, piece.origin)) / 6;
            ++piece.triangles;
            kept.push_back(static_cast<U32>(i));
        }
    }

    const double sign = Determinant(linear) < 0 ? -1 : 1;
    std::size_t first = 0;
    for (Tally& tally : tallies) {
        if (tally.triangles != 0) {
            tally.piece = static_cast<U32>(pieces.size());
            pieces.push_back({first, first, tally.edges == 0, sign * tally.volume});
            first += tally.triangles;
        }
    }
    triangles.resize(kept.size());
    for (const U32 triangle : kept) {
        Piece& piece = pieces[tallies[tallyOf[groups.Find(corners(triangle)[0])]].piece];
        triangles[piece.last++] = triangle;
    }
}

} // namespace internal
} // namespace cadex
