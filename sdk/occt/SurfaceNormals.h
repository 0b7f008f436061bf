// Normals of a triangulated face at its nodes.
#pragma once

#include <vector>

#include <TopoDS_Face.hxx>

#include <cadex/ModelData_Vector.hxx>

class Poly_Triangulation;
class gp_Trsf;

namespace cadex::occt {

/// Fills `normals` with unit vectors in the coordinates of the shape, turned outwards for a reversed face:
/// one for each node of `triangulation`, or a single one when all are equal (a plane). `placement` takes the
/// triangulation's coordinates to those of the shape.
void ComputeNormals(const TopoDS_Face& face, const Poly_Triangulation& triangulation,
                    const gp_Trsf& placement, std::vector<ModelData_Vectorf>& normals);

} // namespace cadex::occt
