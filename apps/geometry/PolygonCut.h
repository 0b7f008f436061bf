#pragma once

#include "apps/geometry/Vector.h"

#include <functional>
#include <vector>

/// Cuts a polygon in space, given by its corners, into triangles of corner numbers: `take(a, b, c)` is called
/// corners.size() - 2 times, in the polygon's winding. Concave polygons are cut by their ears; one that is
/// no simple polygon, or has thousands of corners, is cut as a fan.
void CutPolygon(const std::vector<Vec3>& corners,
                const std::function<void(std::size_t, std::size_t, std::size_t)>& take);
