#pragma once

#include "apps/geometry/Vector.h"

#include <cstddef>
#include <vector>

/// Gives the points that lie farthest out, each in one of 98 directions spread over the sphere: what a convex
/// hull is needed for, such as fitting a model into a picture, comes out within 2 % of its size. Points that
/// are no place are passed over. `places`: three numbers a point.
std::vector<Vec3> ExtremePoints(const double* places, std::size_t count);
