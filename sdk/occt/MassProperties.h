// Volume, centroid and surface area of bodies, integrated over their exact faces.
#pragma once

#include <optional>

#include <cadex/ModelData_Point.hxx>

class TopoDS_Shape;

namespace cadex::occt {

class FacetedBRep;

struct MassProperties
{
    double volume = 0;        ///< cubic millimetres, positive
    ModelData_Point centroid; ///< millimetres
};

/// Of the closed bodies of the shape together: its solids, and closed shells outside of solids. A body turned
/// inside out counts with its positive volume; sheets and curves beside the bodies count nothing. None when
/// there is no body, when a solid's shell is open, or when a body has no volume. Faces are integrated in
/// parallel when Base_Settings says so.
std::optional<MassProperties> ComputeMass(const TopoDS_Shape& shape);

/// The same from the triangles, which are the exact faces. None when the body is not closed or has no volume.
std::optional<MassProperties> ComputeMass(const FacetedBRep& facets);

/// Area of all faces in square millimetres; not a number when a face cannot be integrated.
double ComputeArea(const TopoDS_Shape& shape);
double ComputeArea(const FacetedBRep& facets);

} // namespace cadex::occt
