// From the triangles of single faces to contiguous tables, ready to become triangle sets.
//
//     TriangleAssembly assembly(groupCount);
//     assembly.Add(0, face);                       // one group after the other
//     std::vector<TriangleTables> tables = assembly.Take();
//
// Points that faces share are one point in the tables, so that the triangles of a closed body form a
// watertight mesh. Over several groups (one for each appearance, or one for each face) shared points are
// repeated in each group with bitwise equal coordinates.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <cadex/Base_Types.hxx>
#include <cadex/ModelData_Point.hxx>
#include <cadex/ModelData_Vector.hxx>

#include "sdk/mesh/SliverFlips.h"

namespace cadex::mesh {

inline constexpr U32 NoIndex = 0xFFFFFFFFU;

/// One triangle mesh; three indices a triangle, normals indexed apart from points.
struct TriangleTables
{
    std::vector<ModelData_Point> points;
    std::vector<ModelData_Vectorf> normals; ///< unit vectors, outwards
    std::vector<U32> pointIndices;
    std::vector<U32> normalIndices;
};

/// The triangles of one face, by nodes.
struct FaceTriangles
{
    std::vector<ModelData_Point> points;
    std::vector<U32> shared;  ///< for each point its number among those that faces share, or NoIndex
    std::vector<U32> pointOf; ///< for each node its point; empty: node and point are one
    /// Unit vectors, one for each node, or one alone for all (a plane); zero where none is known.
    std::vector<ModelData_Vectorf> normals;
    std::vector<NodeTriangle> triangles; ///< counter-clockwise seen from where the normals point

    std::size_t NodeCount() const { return pointOf.empty() ? points.size() : pointOf.size(); }
    void Clear();
};

/// What a group has made of a point.
struct PointUse
{
    std::size_t group = static_cast<std::size_t>(-1);
    U32 point = NoIndex;
    U32 normals = NoIndex; ///< chain of the normals used at the point
};

/// Which normals have been used at points: a chain of links for each point, so that equal normals of
/// neighbouring faces become one.
class NormalChains
{
public:
    /// A normal of the chain that is the same as `normal` within 0.1 degrees, or NoIndex.
    U32 Find(U32 chain, const std::vector<ModelData_Vectorf>& normals, const ModelData_Vectorf& normal) const;
    void Add(U32& chain, U32 normal);

private:
    struct Link
    {
        U32 normal;
        U32 previous;
    };
    std::vector<Link> myLinks;
};

class TriangleAssembly
{
public:
    explicit TriangleAssembly(std::size_t groupCount) : myTables(groupCount) {}

    /// Room for what will be added.
    void Reserve(std::size_t group, std::size_t triangles, std::size_t points);

    /// Faces of one group must come together. `isTurned` takes the face from its other side. Triangles with
    /// two corners at the same point are left out, and triangles without area become others (SliverFlips.h).
    /// Where a node has no normal, or one against the triangle, the triangle there takes the mean of its
    /// other corners', or its own. At a point where two faces meet smoothly both use one normal, so that a
    /// merge by position and normal joins them.
    void Add(std::size_t group, const FaceTriangles& face, bool isTurned = false);

    std::vector<TriangleTables> Take();

private:
    void AddNodes(std::size_t group, const FaceTriangles& face, float sign);
    PointUse& UseOf(std::size_t group, const FaceTriangles& face, U32 point);
    U32 NormalFor(TriangleTables& table, PointUse& use, const ModelData_Vectorf& normal, bool isFlat);
    U32 NewNormal(TriangleTables& table, const ModelData_Vectorf& normal, bool isFlat);
    void AddTriangle(TriangleTables& table, const NodeTriangle& nodes);
    ModelData_Vectorf ContinuedNormal(const TriangleTables& table, const NodeTriangle& nodes,
                                      const std::array<U32, 3>& normals) const;
    U32 PointOf(int node) const { return myPointOf[static_cast<std::size_t>(node)]; }

    std::vector<TriangleTables> myTables;
    std::vector<PointUse> myUses; ///< by shared number
    NormalChains myChains;
    // Of the face at hand:
    std::vector<PointUse> myOwnUses; ///< by point
    std::vector<U32> myPointOf;      ///< by node: places in the tables
    std::vector<U32> myNormalOf;
    U32 myFlatNormal = NoIndex;
    std::vector<NodeTriangle> myTriangles;
};

/// The triangles as they stand, each corner with the normal of its facet by the right-hand rule; neighbours
/// in one plane (within 0.1 degrees) use one normal. Indices lie within the points, three a triangle.
TriangleTables FacetTables(const std::vector<ModelData_Point>& points, const std::vector<U32>& indices);

} // namespace cadex::mesh
