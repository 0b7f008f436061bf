// Finds the bodies inside a triangle mesh: which points coincide, which triangles hang together, and whether
// each connected piece is closed.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include <cadex/Base_Types.hxx>

#include "sdk/mesh/Placement.h"
#include "sdk/model/TriangleSets.h"

namespace cadex::mesh {

using internal::TriangleSetImpl;

/// Takes about 20 bytes a triangle while it is at work.
///
/// Triangles that have no area in the file, or a corner that is not usable, are left out. One with three
/// distinct corners on a line usually fills the gap between a long edge and the two short ones along it; the
/// triangle at the long edge is then cut in two at the middle corner, so that what was closed stays closed,
/// with as many triangles as before.
struct MeshTopology
{
    static constexpr U32 Unused = 0xFFFFFFFFu;
    using Corners = std::array<U32, 3>; ///< three vertices

    /// A connected piece: triangles[first] .. triangles[last - 1].
    struct Piece
    {
        std::size_t first = 0;
        std::size_t last = 0;
        bool closed = false; ///< every edge is run through as often one way as the other
        double volume = 0;   ///< signed, in the file; a mirrored piece counts as turned round
    };

    std::vector<U32> vertexOf; ///< for each point its vertex, or Unused; equal positions share one
    std::vector<U32> pointOf;  ///< for each vertex one of its points
    std::vector<Piece> pieces; ///< none is empty
    /// What is worth writing, piece by piece: ordinals of triangles of the mesh and, counting on, of `cuts`.
    std::vector<U32> triangles;
    std::vector<Corners> cuts;
    std::vector<U32> cutFrom; ///< for each cut the triangle of the mesh that it is a part of

    /// `linear` maps the points into the file.
    MeshTopology(const TriangleSetImpl& mesh, const Matrix3& linear);

    /// The vertices of an entry of `triangles`, given the mesh of the constructor.
    Corners CornersOf(const TriangleSetImpl& mesh, U32 triangle) const
    {
        const std::size_t first = std::size_t{triangle} * 3;
        return first < mesh.indices.size()
                   ? Corners{vertexOf[mesh.indices[first]], vertexOf[mesh.indices[first + 1]],
                             vertexOf[mesh.indices[first + 2]]}
                   : cuts[triangle - mesh.indices.size() / 3];
    }

    /// The triangle of the mesh that an entry of `triangles` is, or is a part of.
    U32 SourceOf(const TriangleSetImpl& mesh, U32 triangle) const
    {
        const std::size_t count = mesh.indices.size() / 3;
        return triangle < count ? triangle : cutFrom[triangle - count];
    }
};

/// The normal of a triangle with its length, twice the area; all zero when the triangle has no area (its
/// height is below 1e-12 of its longest side) or is not finite.
Vector3 AreaNormal(const Vector3& a, const Vector3& b, const Vector3& c);

/// Whether a mapped point can stand in a file: finite, and not so far off that areas overflow.
inline bool IsUsable(const Vector3& point)
{
    constexpr double Far = 1e100;
    return std::abs(point[0]) < Far && std::abs(point[1]) < Far && std::abs(point[2]) < Far;
}

inline Vector3 Mapped(const Matrix3& linear, const ModelData_Point& point)
{
    return Multiply(linear, Vector3{point.X(), point.Y(), point.Z()});
}

} // namespace cadex::mesh
