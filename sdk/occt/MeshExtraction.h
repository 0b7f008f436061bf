// From the triangulations that the faces of a shape carry to contiguous tables, ready to become triangle
// sets.
//
// Positions are shared: nodes on an edge are one point for all faces around the edge, nodes at a vertex one
// point for all its edges, so that the triangles of a closed body form a watertight mesh. Over several groups
// (one for each appearance, or one for each face) shared points are repeated in each group with bitwise equal
// coordinates.
#pragma once

#include <cstddef>
#include <vector>

#include <TopoDS_Face.hxx>

#include <cadex/Base_Types.hxx>
#include <cadex/ModelData_Point.hxx>
#include <cadex/ModelData_Vector.hxx>

namespace cadex::occt {

/// One triangle mesh; three indices a triangle, normals indexed apart from points.
struct TriangleTables
{
    std::vector<ModelData_Point> points;
    std::vector<ModelData_Vectorf> normals; ///< unit vectors, outwards
    std::vector<U32> pointIndices;
    std::vector<U32> normalIndices;
};

/// A face and the group that takes its triangles.
struct GroupedFace
{
    TopoDS_Face face;
    std::size_t group = 0;
};

/// Gives `groupCount` tables, some perhaps empty. Triangles follow the order of the faces within their group.
/// Faces without a triangulation give nothing; triangles with two corners at the same point are left out, and
/// triangles without area become others (SliverFlips.h).
///
/// Normals are those of the surfaces, turned for reversed faces; where a surface has none (a pole, a cusp),
/// the kernel's limit, else the mean of the triangles around the node. On an edge where two faces meet
/// smoothly (within 0.1 degrees) both use one normal, so that a merge by position and normal joins them.
std::vector<TriangleTables> ExtractTriangles(const std::vector<GroupedFace>& faces, std::size_t groupCount);

/// The triangles as they stand, each corner with the normal of its facet by the right-hand rule; neighbours
/// in one plane (within 0.1 degrees) use one normal. Indices lie within the points, three a triangle.
TriangleTables FacetTables(const std::vector<ModelData_Point>& points, const std::vector<U32>& indices);

} // namespace cadex::occt
