// Triangles as connected bodies: what is closed can be written as a solid, what is open as a shell.
#pragma once

#include <array>
#include <vector>

#include <cadex/Base_Types.hxx>
#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Point.hxx>

namespace cadex::occt {

/// A mesh whose points are welded: no two have the same coordinates.
struct WeldedMesh
{
    struct Triangle
    {
        std::array<U32, 3> corners;
        U32 look; ///< number of an appearance, as the caller counts them
    };

    std::vector<ModelData_Point> points;
    std::vector<Triangle> triangles;

    /// Appends triangles, welding points that are equal bit by bit. Triangles with a corner that is not
    /// finite, or whose corners lie on one line, are left out.
    void Add(const std::vector<ModelData_Point>& newPoints, const std::vector<U32>& indices, U32 look);
};

/// Triangles that hang together by their edges.
struct MeshBody
{
    std::vector<U32> triangles;          ///< of the outer boundary, or of an open shell
    std::vector<std::vector<U32>> voids; ///< boundaries of cavities
    bool isClosed = false;               ///< each edge runs as often forwards as backwards
};

/// Splits the mesh into its bodies, in the order of their first triangles. A closed one that faces inwards is
/// the cavity of the smallest body around it; without a body around it, it is turned outwards in `mesh`.
std::vector<MeshBody> SplitBodies(WeldedMesh& mesh);

} // namespace cadex::occt
