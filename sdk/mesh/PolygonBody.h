// Triangles of a body merged into planar faces with loops, and the edges between them: what formats of
// boundary representations say of a body of flat faces.
//
//     const PolygonBody polygons = MergeCoplanar(triangles, vertices, colours, 1e-7);
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "sdk/mesh/Vectors.h"

namespace cadex::mesh {

struct PolygonBody
{
    static constexpr std::size_t NoIndex = static_cast<std::size_t>(-1);

    /// One use of an edge in a loop; those of a loop stand behind each other.
    struct Coedge
    {
        std::uint32_t from = 0; ///< places in `vertices`
        std::uint32_t to = 0;
        std::size_t edge = 0;
        std::size_t loop = 0;
        std::size_t partner = NoIndex; ///< the next use of the edge, in a ring; none when it is the only one
    };
    struct Loop
    {
        std::size_t first = 0; ///< coedge
        std::size_t last = 0;  ///< behind its coedges
        std::size_t face = 0;
    };
    struct Face
    {
        std::size_t first = 0; ///< loop
        std::size_t last = 0;
        Vector3 normal{};    ///< of length 1
        std::size_t set = 0; ///< of the mesh that its triangles come from
    };

    std::vector<std::uint32_t> vertices; ///< numbers of the mesh
    std::vector<std::size_t> edges;      ///< the coedge that each is first used by and runs along
    std::vector<std::size_t> edgeOf;     ///< for each vertex one of its edges
    std::vector<Coedge> coedges;
    std::vector<Loop> loops;
    std::vector<Face> faces;
};

struct BodyTriangle
{
    std::array<std::uint32_t, 3> corners; ///< numbers of the mesh's vertices
    std::size_t set = 0;                  ///< triangles of different sets are never merged
};

/// Neighbours whose corners lie within `tolerance` of the plane of a larger triangle make one face with it.
PolygonBody MergeCoplanar(const std::vector<BodyTriangle>& triangles, const std::vector<Vector3>& vertices,
                          double tolerance);

} // namespace cadex::mesh
