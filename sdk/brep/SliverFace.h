// Triangles for thin faces whose loops cross, so that no region is left to triangulate: the two sides of the
// loop are stitched together, and the body stays closed.
//
//     FaceMesh mesh = StitchSliver(edges, face, tolerance::SliverShare * size);
#pragma once

#include "sdk/brep/FaceTessellation.h"

namespace cadex::brep {

/// Without triangles when the face has more than one ring, seams or poles, or is anywhere wider than `width`
/// (millimetres). Normals are left open. The edges of the face must have been divided.
FaceMesh StitchSliver(const EdgeDiscretisation& edges, const ResolvedFace& face, double width);

} // namespace cadex::brep
