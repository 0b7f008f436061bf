// From the triangulations that the faces of a shape carry to contiguous tables, ready to become triangle
// sets.
//
// Nodes on an edge are one point for all faces around the edge, nodes at a vertex one point for all its
// edges, so that the triangles of a closed body form a watertight mesh (TriangleAssembly.h).
#pragma once

#include <cstddef>
#include <vector>

#include <TopoDS_Face.hxx>

#include "sdk/mesh/TriangleAssembly.h"

namespace cadex::occt {

/// A face and the group that takes its triangles.
struct GroupedFace
{
    TopoDS_Face face;
    std::size_t group = 0;
};

/// Gives `groupCount` tables, some perhaps empty. Triangles follow the order of the faces within their group.
/// Faces without a triangulation give nothing. Normals are those of the surfaces, turned for reversed faces;
/// where a surface has none (a pole, a cusp), the kernel's limit, else the mean of the triangles around the
/// node.
std::vector<mesh::TriangleTables> ExtractTriangles(const std::vector<GroupedFace>& faces,
                                                   std::size_t groupCount);

} // namespace cadex::occt
