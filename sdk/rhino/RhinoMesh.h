// Meshes of 3DM files: packed or plain, with triangles and quadrangles, in single or double precision.
#pragma once

#include <optional>

#include "sdk/model/TriangleSets.h"
#include "sdk/rhino/RhinoTables.h"

namespace cadex::rhino {

struct Mesh
{
    internal::TriangleArrays arrays;    ///< quadrangles are cut along their shorter diagonal; millimetres
    std::optional<PackedColour> colour; ///< of all vertices, when they have one and the same
    bool hasMixedColours = false;
};

/// Reads the data of a mesh; `millimetres` is the unit of the file.
Mesh ReadMesh(Chunk& data, double millimetres);

/// Puts the vertices of double precision, which files of version 5 keep beside the mesh, in the place of the
/// rounded ones. Nothing changes when there are not as many as vertices.
void UseExactPoints(Mesh& mesh, const std::vector<double>& points, double millimetres);

} // namespace cadex::rhino
