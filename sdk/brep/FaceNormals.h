// Normals of surfaces, also where the derivatives fail.
#pragma once

#include <optional>

#include <gp_Pnt2d.hxx>
#include <gp_XYZ.hxx>

#include "sdk/brep/FaceSteps.h"
#include "sdk/brep/Surface.h"
#include "sdk/brep/SurfaceEvaluator.h"

namespace cadex::brep {

/// The direction of du x dv at places of a part of a surface. A product that is small beside those elsewhere
/// counts as none: at a pole it is rounding noise, whose direction means nothing.
class FaceNormals
{
public:
    /// The evaluator is of the same surface and must outlive the object.
    FaceNormals(const Surface& surface, const SurfaceEvaluator& evaluator, const ParameterBox& box);

    /// A unit vector; none at a pole and where the surface has a cusp.
    std::optional<gp_XYZ> At(const gp_Pnt2d& place);

    /// The limit at a place without a normal as it is approached from `inside`, the middle of a triangle
    /// there: at the apex of a cone another one for each triangle. None when there is no limit either.
    std::optional<gp_XYZ> LimitAt(const gp_Pnt2d& place, const gp_Pnt2d& inside);

    /// The pole that the place lies in; null when it lies in none.
    const Pole* PoleOf(const gp_Pnt2d& place) const;

private:
    gp_XYZ Elementary(const gp_Pnt2d& place) const;
    std::optional<gp_XYZ> Derived(const gp_Pnt2d& place);

    const Surface& mySurface;
    const SurfaceEvaluator& myEvaluator;
    double mySign;
    double myLargest = 0;
};

} // namespace cadex::brep
