// Removes triangles without area from a mesh without opening it.
#pragma once

#include <array>
#include <vector>

#include <cadex/Base_Types.hxx>
#include <cadex/ModelData_Point.hxx>

namespace cadex::mesh {

/// Three nodes; `pointOf[node]` is the node's point.
using NodeTriangle = std::array<int, 3>;

/// True when the triangle's height is below a millionth of its longest side: it has no direction of its own.
bool IsSliver(const ModelData_Point& a, const ModelData_Point& b, const ModelData_Point& c);

/// Turns the longest side of each sliver into the other diagonal of the quadrilateral that it forms with its
/// neighbour. The number of triangles stays, the outline too, and the surface within the sliver's height;
/// simply leaving slivers out would leave a corner of one triangle on the side of another. A sliver without a
/// neighbour in `triangles`, or whose flip would fold the mesh, stays.
void FlipSlivers(std::vector<NodeTriangle>& triangles, const std::vector<ModelData_Point>& points,
                 const std::vector<U32>& pointOf);

} // namespace cadex::mesh
