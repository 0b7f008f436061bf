#pragma once

#include "apps/geometry/Vector.h"

#include <optional>
#include <vector>

class NodeList;

/// An axis-parallel box in the world, metres.
struct NodeBounds
{
    Bounds box;
    /// Whether the box is the smallest one; in very large subtrees it may be larger where parts are turned.
    bool isExact;

    /// The box around all vertices of a node of the list and of what is below it; none without any.
    static std::optional<NodeBounds> Of(const NodeList& nodes, int position);
};

/// Points of a node's meshes, in the world, that no other of its points lies beyond: exactly or, of large
/// meshes, near enough; see `ExtremePoints`.
std::vector<Vec3> OwnPoints(const NodeList& nodes, int position);
