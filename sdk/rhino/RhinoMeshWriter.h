// Meshes of a model as meshes of a 3DM file.
#pragma once

#include "sdk/mesh/Placement.h"
#include "sdk/model/TriangleSets.h"
#include "sdk/rhino/RhinoChunkWriter.h"

namespace cadex::rhino {

/// Writes the wrapper of a mesh object; `linear` maps the points into the file. Vertices are shared where
/// their normals and texture coordinates are. Positions are written in single precision and, where that
/// rounds them, beside it in double. Triangles with equal corners, or one that is not finite, are left out.
void WriteMesh(ChunkWriter& out, const internal::TriangleSetImpl& mesh, const mesh::Matrix3& linear);

} // namespace cadex::rhino
