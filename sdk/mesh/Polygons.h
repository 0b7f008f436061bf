// Triangles of planar polygons.
#pragma once

#include <cstddef>
#include <vector>

#include <cadex/ModelData_Point.hxx>

#include "sdk/mesh/Delaunay.h"

namespace cadex::mesh {

/// Newell's normal of a closed polygon: twice its area long, by the right-hand rule.
ModelData_Point PolygonNormal(const std::vector<ModelData_Point>& polygon);

/// Cuts simple polygons without holes into triangles, one polygon after the other in the same memory.
class PolygonCutter
{
public:
    /// `corners` gets positions in the polygon, three a triangle, wound as the polygon is. Triangles without
    /// area are left out. False when the polygon crosses itself or has a coordinate that is not finite.
    /// Convex polygons are halved, the others triangulated by Delaunay's condition.
    bool Cut(const std::vector<ModelData_Point>& polygon, std::vector<std::size_t>& corners);

private:
    void Flatten(const std::vector<ModelData_Point>& polygon);
    bool IsConvex() const;

    std::vector<PlanePoint> myFlat;
    Delaunay::Loops myLoops{{}};
    Delaunay myDelaunay;
};

} // namespace cadex::mesh
