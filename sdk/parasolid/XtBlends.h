// Rolling-ball blends: the surface that a ball leaves behind as its centre runs along a spine.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include <Geom_Surface.hxx>

#include "sdk/brep/Surface.h"
#include "sdk/parasolid/XtCarriers.h"

namespace cadex::parasolid {

/// A blend of a file: the ball rolls on both surfaces.
struct Blend
{
    Tube tube;
    std::array<Support, 2> supports{};
};

/// Where the ball touches a surface, its centre at the parameter of the spine; nothing where it does not.
std::optional<gp_Pnt> ContactOf(const Tube& tube, Carrier& support, double parameter);

/// The surface as far as the points (of the edges of a face) need: a cylinder along a straight spine, a torus
/// around a circle, else a rational spline, arcs between the contacts (and a little beyond them) swept along
/// the spine, within `tolerance`. Null when the ball does not touch both.
Handle(Geom_Surface)
    MakeBlendSurface(const Blend& blend, const std::vector<gp_Pnt>& points, double tolerance);

/// Whether the loops, of points in order with the material to the left, run about the surface's normal (and
/// not against it); nothing when that cannot be told.
std::optional<bool> RunsAboutNormal(const brep::Surface& surface,
                                    const std::vector<std::vector<gp_Pnt>>& loops);

} // namespace cadex::parasolid
