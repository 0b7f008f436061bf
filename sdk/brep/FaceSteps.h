// How far apart the points of a triangulation may lie in the parameters of a surface.
#pragma once

#include "sdk/brep/Surface.h"

namespace cadex::brep {

/// A rectangle of parameters, u and v.
struct ParameterBox
{
    double low[2] = {0, 0};
    double high[2] = {0, 0};

    double Range(int k) const { return high[k] - low[k]; }
};

struct FaceSteps
{
    double step[2] = {1, 1};     ///< lengths in u and v that count alike; positive
    bool needsGrid = false;      ///< points between the loops are wanted, as far apart as `step`
    bool isCurved = false;       ///< sides between points of the loops may leave the surface
    bool narrowsToPoles = false; ///< in v near +-90 degrees fewer points are wanted in u
};

/// For a triangulation of the part of the surface in the box that keeps to chord (millimetres) and angle
/// (radians) between neighbouring triangles.
FaceSteps StepsFor(const Surface& surface, const ParameterBox& box, double chord, double angle);

} // namespace cadex::brep
