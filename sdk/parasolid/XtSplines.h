// B-curves and B-surfaces of Parasolid files as splines of the kernel.
#pragma once

#include <Geom2d_BSplineCurve.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BSplineSurface.hxx>

#include "sdk/parasolid/XtNodes.h"

namespace cadex::parasolid {

/// Each is null when the node is none of the kind or its numbers make no sense. In millimetres.
Handle(Geom_BSplineCurve) MakeSplineCurve(const Nodes& nodes, const Node& curve);
Handle(Geom_BSplineSurface) MakeSplineSurface(const Nodes& nodes, const Node& surface);
/// A curve in the parameters of a surface, as the file has them.
Handle(Geom2d_BSplineCurve) MakePlaneSpline(const Nodes& nodes, const Node& curve);

} // namespace cadex::parasolid
