// Loops that cross by less than the file or the mesh is exact: the triangulation does without some of their
// corners, which are put back into its triangles afterwards.
//
//     LoopSlips slips(places, positionOf);
//     if (slips.Start(loops, reach, delaunay)) {
//         std::vector<std::array<int, 3>> triangles = delaunay.Triangles();
//         const bool isWhole = slips.PutBack(triangles);
//     }
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include <gp_XYZ.hxx>

#include "sdk/mesh/Delaunay.h"

namespace cadex::brep {

class LoopSlips
{
public:
    /// Places of the loops' nodes in the plane, and in space; both must outlive it.
    LoopSlips(const std::vector<mesh::PlanePoint>& scaled, std::function<gp_XYZ(int)> positionOf)
        : myScaled(scaled), myPositionOf(std::move(positionOf))
    {
    }

    /// Leaves corners out, none farther than `reach` (millimetres) from the line of its neighbours, until the
    /// loops do not cross, and starts the triangulation. False where that does not go.
    bool Start(mesh::Delaunay::Loops loops, double reach, mesh::Delaunay& delaunay);

    /// Divides the sides that stand for two: the sides of neighbouring faces meet those of the face again.
    /// False when a side is not there.
    bool PutBack(std::vector<std::array<int, 3>>& triangles) const;

private:
    /// A node of a loop that the triangulation does without.
    struct Slip
    {
        int node;
        int before;
        int behind;
    };

    /// A node in its loop.
    struct Corner
    {
        std::size_t loop;
        std::size_t index;
    };

    static bool PutBack(const Slip& slip, std::vector<std::array<int, 3>>& triangles);
    static Slip SlipAt(const std::vector<int>& loop, std::size_t index);
    std::optional<Corner> CornerThatSlipped(const mesh::Delaunay::Loops& loops) const;
    bool DoSidesCross(int a, int b, int c, int d) const;
    double WayToSide(const Slip& slip) const;

    const std::vector<mesh::PlanePoint>& myScaled;
    const std::function<gp_XYZ(int)> myPositionOf;
    std::vector<Slip> mySlips;
};

} // namespace cadex::brep
