// Triangulates the faces of a shape with the geometry kernel.
//
//     MeshTolerances tolerances = MakeTolerances(parameters);
//     MeshFaces(shape, tolerances);          // the faces of `shape` now carry triangulations
//     ... ExtractTriangles(...)
//     ForgetTriangulations(shape);
#pragma once

class TopoDS_Shape;

namespace cadex {

class ModelAlgo_BRepMesherParameters;

namespace occt {

/// Values that the kernel takes as they are.
struct MeshTolerances
{
    double chord = 0.004; ///< fraction of the size of edge and shape when relative, else millimetres
    double angle = 0.349; ///< radians, between neighbouring facets
    bool relative = true;
    bool parallel = false; ///< faces may be meshed on several threads
};

/// Brings any parameters into the range in which the kernel neither throws nor runs for ever: a chord or
/// angle that is not positive (or not a number) becomes that of the preset Fine, small ones are raised to
/// 1e-4 (relative; 1e-5 mm absolute) and half a degree, large ones lowered to 1 (relative) and 90 degrees.
/// Parallel as Base_Settings says.
MeshTolerances MakeTolerances(const ModelAlgo_BRepMesherParameters& parameters);

/// Size by which a relative chord is measured: the largest extent of the shape's bounding box, in
/// millimetres.
double ShapeSize(const TopoDS_Shape& shape);

/// Replaces the triangulations of all faces. A face that the kernel cannot mesh is tried again by other
/// tolerances, first with all others, then alone; what stays without triangles is reported (see
/// cadex/internal/Reports.hxx). Nothing is thrown, except std::bad_alloc.
void MeshFaces(const TopoDS_Shape& shape, const MeshTolerances& tolerances);

/// Drops the triangulations again: they are large, and exact computations do not use them.
void ForgetTriangulations(const TopoDS_Shape& shape);

} // namespace occt
} // namespace cadex
