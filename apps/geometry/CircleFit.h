#pragma once

#include "apps/geometry/Vector.h"

#include <optional>
#include <vector>

/// What a round surface's points and normals tell: a cylinder's or a sphere's radius.
struct RoundSurface
{
    double radius = 0.0;
    Vec3 center;            ///< of the sphere, or a point on the axis near the points' middle
    Vec3 axis;              ///< of the cylinder, length one; zero for a sphere
    double deviation = 0.0; ///< the largest distance of a point from the surface

    bool IsCylinder() const { return Dot(axis, axis) > 0.5; }
};

/// Finds the cylinder or sphere on which all points lie to within a hundredth of its radius; none for flat,
/// conical and other surfaces. `normals`: of length one or zero, one a point; their direction may be either.
std::optional<RoundSurface> FitRoundSurface(const std::vector<Vec3>& points,
                                            const std::vector<Vec3>& normals);
