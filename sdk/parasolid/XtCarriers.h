// What a point of an intersection lies on: a surface of the kernel, or the tube of a rolling-ball blend.
//
//     Carrier a(surface), b(Tube{spine, radius});
//     if (const auto meeting = Meet(a, b, guess)) { ... meeting->point ... }
#pragma once

#include <optional>

#include <Geom_Curve.hxx>
#include <gp_Pnt.hxx>
#include <gp_Pnt2d.hxx>
#include <gp_Vec.hxx>

#include "sdk/brep/SurfaceEvaluator.h"

namespace cadex::parasolid {

/// The points at a distance from a curve; a rolling ball's surface, whatever arc of it the blend has.
struct Tube
{
    Handle(Geom_Curve) spine = {};
    double radius = 0; ///< positive

    /// The parameter of the spine's point that is nearest; starts from `parameter` when that is there.
    std::optional<double> Nearest(const gp_Pnt& point, std::optional<double> parameter) const;
};

/// Foot of a point, and the normal there.
struct Foot
{
    gp_Pnt point = {};
    gp_Vec normal = {}; ///< of length 1
};

/// Either of both; remembers where the last point was. What it is made of must outlive it.
class Carrier
{
public:
    explicit Carrier(const brep::Surface& surface) : myEvaluator(surface) {}
    explicit Carrier(const Tube& tube) : myTube(tube) {}

    /// Nothing where no foot or normal is found.
    std::optional<Foot> FootOf(const gp_Pnt& point);

private:
    std::optional<brep::SurfaceEvaluator> myEvaluator = {};
    gp_Pnt2d myPlace = {};
    bool myHasPlace = false;
    Tube myTube = {};
    std::optional<double> myParameter = {};
};

/// What a carrier is made of.
struct Support
{
    const brep::Surface* surface = nullptr; ///< null: the tube
    Tube tube = {};

    bool IsThere() const { return surface != nullptr ? !surface->geometry.IsNull() : !tube.spine.IsNull(); }
    Carrier MakeCarrier() const { return surface != nullptr ? Carrier(*surface) : Carrier(tube); }
};

struct Meeting
{
    gp_Pnt point = {};
    gp_Vec direction = {};      ///< of length 1; of either sense
    bool isTransversal = false; ///< else the surfaces touch, and the direction is not known
};

/// A point on both carriers near the guess, on the plane across the curve through it.
std::optional<Meeting> Meet(Carrier& a, Carrier& b, const gp_Pnt& guess);

} // namespace cadex::parasolid
