// Triangles of planar polygons.
#pragma once

#include <cstddef>
#include <vector>

#include <cadex/ModelData_Point.hxx>

namespace cadex::mesh {

/// Newell's normal of a closed polygon: twice its area long, by the right-hand rule.
ModelData_Point PolygonNormal(const std::vector<ModelData_Point>& polygon);

/// Cuts a simple polygon without holes into triangles by clipping ears; `corners` gets positions in the
/// polygon, three a triangle, wound as the polygon is. Triangles without area are left out. False when the
/// polygon crosses itself or has more than a thousand corners (the work grows with their square).
bool Triangulate(const std::vector<ModelData_Point>& polygon, std::vector<std::size_t>& corners);

} // namespace cadex::mesh
