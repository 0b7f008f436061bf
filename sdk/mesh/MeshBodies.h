// Which pieces of a triangle mesh bound solids: boundaries of bodies, cavities inside them, and open shells.
#pragma once

#include <cstddef>
#include <vector>

#include "sdk/mesh/MeshTopology.h"
#include "sdk/mesh/Placement.h"
#include "sdk/model/TriangleSets.h"

namespace cadex::mesh {

/// Triangles where they stand in the file, with the topology between them.
struct PlacedMesh
{
    /// Points that are equal become one vertex; `placement` (any matrix) takes the points into the file.
    PlacedMesh(const internal::TriangleSetImpl& mesh, const Affine& placement);

    /// The three vertices of an entry of the topology's triangles; right-handed about the outward
    /// normal also under a mirroring placement.
    std::array<U32, 3> Corners(U32 triangle, bool isTurned = false) const;

    const internal::TriangleSetImpl& mesh;
    MeshTopology topology;
    std::vector<Vector3> vertices; ///< by vertex number of the topology
    bool isMirrored = false;
};

/// One solid or open shell; the numbers are those of the topology's pieces.
struct MeshBody
{
    std::size_t outer = 0;
    std::vector<std::size_t> voids; ///< boundaries of cavities
    bool isClosed = false;
    bool isTurned = false; ///< the triangles face inwards and are to be turned round
};

/// The bodies in the order of their first triangles. A closed piece that faces inwards is the cavity of the
/// smallest body around it; without a body around it, it is a body to be turned round. A closed piece without
/// volume is open.
std::vector<MeshBody> FindBodies(const PlacedMesh& placed);

/// Appends the triangles of one set to another.
void Append(internal::TriangleSetImpl& target, const std::vector<ModelData_Point>& points,
            const std::vector<U32>& indices);

} // namespace cadex::mesh
