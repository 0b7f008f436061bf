// Subdivision surfaces of 3DM files as meshes.
#pragma once

#include "sdk/rhino/RhinoMesh.h"

namespace cadex::rhino {

bool IsSubD(const Uuid& classId);

/// Reads the control net and refines it. An empty mesh when the data are of an unknown version.
Mesh ReadSubD(Chunk& data, double millimetres);

} // namespace cadex::rhino
