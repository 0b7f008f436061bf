#pragma once

#include "apps/geometry/Vector.h"

#include <array>
#include <vector>

/// A box around points along axes of its own, the longest side first.
struct OrientedBox
{
    std::array<Vec3, 3> axes; ///< of length one, square to each other
    std::array<double, 3> size{};

    double Volume() const { return size[0] * size[1] * size[2]; }

    /// Finds a small box: along each main axis of the points, and along x, y and z, the smallest rectangle
    /// around what lies across is found; the box of the least volume is taken. A shaft, a sheet and a block
    /// come out as they would be measured, however they lie. Points: at least one.
    static OrientedBox Around(const std::vector<Vec3>& points);
};
