#include "sdk/brep/FaceNormals.h"

#include <algorithm>
#include <cmath>

#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>

#include "sdk/brep/Tolerances.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::brep {

using occt::CoordinateOf;
using occt::SetCoordinate;

namespace {

// A product of the derivatives below this share of the largest one is noise.
constexpr double NoiseShare = 1e-7;

// How far towards the inside a limit is looked for, as a share of the way.
constexpr double LimitShare = 1e-2;

// Places in each direction by which the size of the derivatives is known before the first is judged.
constexpr int Samples = 3;

} // namespace

FaceNormals::FaceNormals(const Surface& surface, const SurfaceEvaluator& evaluator, const ParameterBox& box)
    : mySurface(surface),
      myEvaluator(evaluator),
      mySign(IsElementary(surface.kind) && !surface.axes.Direct() ? -1 : 1)
{
    if (IsElementary(surface.kind)) {
        return;
    }
    const auto at = [&](int k, int i) { return box.low[k] + box.Range(k) * (i + 0.5) / Samples; };
    for (int i = 0; i < Samples; ++i) {
        for (int j = 0; j < Samples; ++j) {
            Derived({at(0, i), at(1, j)});
        }
    }
}

std::optional<gp_XYZ> FaceNormals::At(const gp_Pnt2d& place)
{
    // NOTE: a sphere's normal at its poles is its axis, whatever the derivatives are.
    if (mySurface.kind != SurfaceKind::Sphere && PoleOf(place) != nullptr) {
        return std::nullopt;
    }
    return IsElementary(mySurface.kind) ? Elementary(place) : Derived(place);
}

std::optional<gp_XYZ> FaceNormals::LimitAt(const gp_Pnt2d& place, const gp_Pnt2d& inside)
{
    gp_Pnt2d near = place;
    for (const int k : {0, 1}) {
        SetCoordinate(near, k,
                      CoordinateOf(place, k) +
                          LimitShare * (CoordinateOf(inside, k) - CoordinateOf(place, k)));
    }
    if (const Pole* pole = PoleOf(place)) {
        // Along the pole one goes for free.
        const int moving = 1 - pole->fixed;
        SetCoordinate(near, moving, CoordinateOf(inside, moving));
    }
    return IsElementary(mySurface.kind) ? Elementary(near) : Derived(near);
}

const Pole* FaceNormals::PoleOf(const gp_Pnt2d& place) const
{
    const auto found = std::find_if(mySurface.poles.begin(), mySurface.poles.end(), [&](const Pole& pole) {
        return std::abs(CoordinateOf(place, pole.fixed) - pole.level) <= tolerance::SameParameter;
    });
    return found != mySurface.poles.end() ? &*found : nullptr;
}

gp_XYZ FaceNormals::Elementary(const gp_Pnt2d& place) const
{
    const gp_XYZ& axis = mySurface.axes.Direction().XYZ();
    const gp_XYZ radial = mySurface.axes.XDirection().XYZ() * std::cos(place.X()) +
                          mySurface.axes.YDirection().XYZ() * std::sin(place.X());
    const double v = place.Y();
    double sign = mySign;
    gp_XYZ normal;
    switch (mySurface.kind) {
    case SurfaceKind::Plane:
        normal = axis;
        break;
    case SurfaceKind::Cylinder:
        normal = radial;
        break;
    case SurfaceKind::Cone:
        normal = radial * std::cos(mySurface.halfAngle) - axis * std::sin(mySurface.halfAngle);
        // Beyond the apex the radius is negative.
        sign *= mySurface.radius + v * std::sin(mySurface.halfAngle) < 0 ? -1 : 1;
        break;
    case SurfaceKind::Torus:
        normal = radial * std::cos(v) + axis * std::sin(v);
        // Beyond its axis a spindle is turned inside out.
        sign *= mySurface.radius + mySurface.minorRadius * std::cos(v) < 0 ? -1 : 1;
        break;
    default:
        normal = radial * std::cos(v) + axis * std::sin(v);
        break;
    }
    return normal * sign;
}

std::optional<gp_XYZ> FaceNormals::Derived(const gp_Pnt2d& place)
{
    gp_Pnt point;
    gp_Vec du;
    gp_Vec dv;
    myEvaluator.D1(place, point, du, dv);
    const gp_XYZ normal = du.XYZ().Crossed(dv.XYZ());
    const double size = normal.Modulus();
    myLargest = std::max(myLargest, size);
    if (!(size > NoiseShare * myLargest)) {
        return std::nullopt;
    }
    return normal / size;
}

} // namespace cadex::brep
