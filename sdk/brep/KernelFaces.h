// The kernel's mesher for a single face, when our own tessellation has no answer.
#pragma once

#include "sdk/brep/EdgeDiscretisation.h"
#include "sdk/brep/ResolvedFace.h"
#include "sdk/mesh/TriangleAssembly.h"

namespace cadex::brep {

/// Builds the face, heals it where it was not resolved, and meshes it on the points that its edges have;
/// shared points have the numbers of the discretised edges. Edges that healing has changed have points of
/// their own. Without triangles when nothing can be built or meshed. Throws Standard_Failure where the kernel
/// does.
mesh::FaceTriangles MeshWithKernel(const Body& body, int face, const ResolvedFace& resolved,
                                   const EdgeDiscretisation& edges);

} // namespace cadex::brep
