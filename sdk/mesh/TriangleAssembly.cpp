#include "sdk/mesh/TriangleAssembly.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace cadex::mesh {

namespace {

// Cosine of the angle up to which normals at one point are taken as one: 0.1 degrees.
constexpr double SameNormal = 1 - 1.5e-6;

using Vector = std::array<double, 3>;

Vector Between(const ModelData_Point& from, const ModelData_Point& to)
{
    return {to.X() - from.X(), to.Y() - from.Y(), to.Z() - from.Z()};
}

/// Of length one; false when there is no length.
bool Normalise(const Vector& vector, ModelData_Vectorf& result)
{
    const double size = std::sqrt(vector[0] * vector[0] + vector[1] * vector[1] + vector[2] * vector[2]);
    if (!(size > std::numeric_limits<double>::min())) {
        return false;
    }
    result = {static_cast<float>(vector[0] / size), static_cast<float>(vector[1] / size),
              static_cast<float>(vector[2] / size)};
    return true;
}

/// By the right-hand rule, twice the area long.
Vector AreaVector(const ModelData_Point& a, const ModelData_Point& b, const ModelData_Point& c)
{
    const Vector u = Between(a, b);
    const Vector v = Between(a, c);
    return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

/// A triangle without area gives the z axis.
ModelData_Vectorf FacetNormal(const ModelData_Point& a, const ModelData_Point& b, const ModelData_Point& c)
{
    ModelData_Vectorf normal(0, 0, 1);
    Normalise(AreaVector(a, b, c), normal);
    return normal;
}

/// Whether the normal points to the other side than the facet.
bool IsAgainst(const ModelData_Vectorf& normal, const Vector& facet)
{
    return normal.X() * facet[0] + normal.Y() * facet[1] + normal.Z() * facet[2] < 0;
}

U32 Append(TriangleTables& table, const ModelData_Vectorf& normal)
{
    table.normals.push_back(normal);
    return static_cast<U32>(table.normals.size() - 1);
}

/// Without making a zero negative.
ModelData_Vectorf Turned(const ModelData_Vectorf& normal, float sign)
{
    const auto turn = [&](float value) { return value == 0 ? 0 : sign * value; };
    return {turn(normal.X()), turn(normal.Y()), turn(normal.Z())};
}

} // namespace

void FaceTriangles::Clear()
{
    points.clear();
    shared.clear();
    pointOf.clear();
    normals.clear();
    triangles.clear();
}

U32 NormalChains::Find(U32 chain, const std::vector<ModelData_Vectorf>& normals,
                       const ModelData_Vectorf& normal) const
{
    for (; chain != NoIndex; chain = myLinks[chain].previous) {
        const ModelData_Vectorf& used = normals[myLinks[chain].normal];
        if (static_cast<double>(used.X()) * normal.X() + static_cast<double>(used.Y()) * normal.Y() +
                static_cast<double>(used.Z()) * normal.Z() >
            SameNormal) {
            return myLinks[chain].normal;
        }
    }
    return NoIndex;
}

void NormalChains::Add(U32& chain, U32 normal)
{
    myLinks.push_back({normal, chain});
    chain = static_cast<U32>(myLinks.size() - 1);
}

void TriangleAssembly::Reserve(std::size_t group, std::size_t triangles, std::size_t points)
{
    TriangleTables& table = myTables[group];
    table.pointIndices.reserve(table.pointIndices.size() + 3 * triangles);
    table.normalIndices.reserve(table.normalIndices.size() + 3 * triangles);
    table.points.reserve(table.points.size() + points);
}

void TriangleAssembly::Add(std::size_t group, const FaceTriangles& face, bool isTurned)
{
    if (face.triangles.empty()) {
        return;
    }
    AddNodes(group, face, isTurned ? -1.0F : 1.0F);
    TriangleTables& table = myTables[group];
    myTriangles.clear();
    for (NodeTriangle nodes : face.triangles) {
        if (isTurned) {
            std::swap(nodes[1], nodes[2]);
        }
        const U32 a = PointOf(nodes[0]);
        const U32 b = PointOf(nodes[1]);
        const U32 c = PointOf(nodes[2]);
        if (a != b && b != c && c != a) {
            myTriangles.push_back(nodes);
        }
    }
    FlipSlivers(myTriangles, table.points, myPointOf);
    for (const NodeTriangle& nodes : myTriangles) {
        AddTriangle(table, nodes);
    }
}

std::vector<TriangleTables> TriangleAssembly::Take()
{
    for (TriangleTables& table : myTables) {
        if (table.points.capacity() > table.points.size() + table.points.size() / 4) {
            table.points.shrink_to_fit();
        }
    }
    return std::move(myTables);
}

/// Fills myPointOf and myNormalOf, and with them the tables.
void TriangleAssembly::AddNodes(std::size_t group, const FaceTriangles& face, float sign)
{
    TriangleTables& table = myTables[group];
    const std::size_t count = face.NodeCount();
    const bool isFlat = face.normals.size() == 1;
    myPointOf.resize(count);
    myNormalOf.resize(count);
    myOwnUses.assign(face.points.size(), {});
    myFlatNormal = NoIndex;
    for (std::size_t node = 0; node < count; ++node) {
        const U32 point = face.pointOf.empty() ? static_cast<U32>(node) : face.pointOf[node];
        PointUse& use = UseOf(group, face, point);
        const ModelData_Vectorf& normal = face.normals[isFlat ? 0 : node];
        myPointOf[node] = use.point;
        if (normal == ModelData_Vectorf()) {
            myNormalOf[node] = NoIndex;
        } else if (face.pointOf.empty() && face.shared[point] == NoIndex) {
            myNormalOf[node] = NewNormal(table, Turned(normal, sign), isFlat);
        } else {
            myNormalOf[node] = NormalFor(table, use, Turned(normal, sign), isFlat);
        }
    }
}

PointUse& TriangleAssembly::UseOf(std::size_t group, const FaceTriangles& face, U32 point)
{
    const U32 shared = face.shared[point];
    if (shared != NoIndex && shared >= myUses.size()) {
        myUses.resize(std::size_t{shared} + 1);
    }
    PointUse& use = shared != NoIndex ? myUses[shared] : myOwnUses[point];
    if (use.group != group) {
        std::vector<ModelData_Point>& points = myTables[group].points;
        use = {group, static_cast<U32>(points.size()), NoIndex};
        points.push_back(face.points[point]);
    }
    return use;
}

/// The normal that has been used at the point already, when it is the same; else a new one.
U32 TriangleAssembly::NormalFor(TriangleTables& table, PointUse& use, const ModelData_Vectorf& normal,
                                bool isFlat)
{
    const U32 known = myChains.Find(use.normals, table.normals, normal);
    if (known != NoIndex) {
        return known;
    }
    const U32 index = NewNormal(table, normal, isFlat);
    myChains.Add(use.normals, index);
    return index;
}

/// A plane's one normal is made when it is first needed.
U32 TriangleAssembly::NewNormal(TriangleTables& table, const ModelData_Vectorf& normal, bool isFlat)
{
    if (!isFlat) {
        return Append(table, normal);
    }
    if (myFlatNormal == NoIndex) {
        myFlatNormal = Append(table, normal);
    }
    return myFlatNormal;
}

void TriangleAssembly::AddTriangle(TriangleTables& table, const NodeTriangle& nodes)
{
    // A sliver may be turned over where loops overlap by less than they are exact.
    const Vector facet = AreaVector(table.points[PointOf(nodes[0])], table.points[PointOf(nodes[1])],
                                    table.points[PointOf(nodes[2])]);
    std::array<U32, 3> normals{};
    for (std::size_t k = 0; k < 3; ++k) {
        const U32 normal = myNormalOf[static_cast<std::size_t>(nodes[k])];
        normals[k] = normal != NoIndex && IsAgainst(table.normals[normal], facet) ? NoIndex : normal;
    }
    U32 continued = NoIndex;
    for (std::size_t k = 0; k < 3; ++k) {
        if (normals[k] == NoIndex && continued == NoIndex) {
            continued = Append(table, ContinuedNormal(table, nodes, normals));
        }
        table.pointIndices.push_back(PointOf(nodes[k]));
        table.normalIndices.push_back(normals[k] == NoIndex ? continued : normals[k]);
    }
}

/// The mean of those corners that have a normal; the facet's own when none has.
ModelData_Vectorf TriangleAssembly::ContinuedNormal(const TriangleTables& table, const NodeTriangle& nodes,
                                                    const std::array<U32, 3>& normals) const
{
    Vector sum{0, 0, 0};
    for (const U32 known : normals) {
        if (known != NoIndex) {
            const ModelData_Vectorf& normal = table.normals[known];
            sum = {sum[0] + normal.X(), sum[1] + normal.Y(), sum[2] + normal.Z()};
        }
    }
    ModelData_Vectorf mean;
    return Normalise(sum, mean)
               ? mean
               : FacetNormal(table.points[PointOf(nodes[0])], table.points[PointOf(nodes[1])],
                             table.points[PointOf(nodes[2])]);
}

TriangleTables FacetTables(const std::vector<ModelData_Point>& points, const std::vector<U32>& indices)
{
    TriangleTables table;
    table.points = points;
    table.pointIndices = indices;
    table.normalIndices.reserve(indices.size());
    NormalChains chains;
    std::vector<U32> chainOf(points.size(), NoIndex);
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        const U32* corner = &indices[i];
        const ModelData_Vectorf normal = FacetNormal(points[corner[0]], points[corner[1]], points[corner[2]]);
        U32 own = NoIndex;
        for (int k = 0; k < 3; ++k) {
            U32 index = chains.Find(chainOf[corner[k]], table.normals, normal);
            if (index == NoIndex) {
                index = own != NoIndex ? own : Append(table, normal);
                own = index;
                chains.Add(chainOf[corner[k]], index);
            }
            table.normalIndices.push_back(index);
        }
    }
    return table;
}

} // namespace cadex::mesh
