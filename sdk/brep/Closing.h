// Curves and surfaces of splines that end where they start, made periodic: what lies on them may then go on
// over the seam. Files give most of them open, with ends that meet more or less.
#pragma once

#include <Geom_BSplineSurface.hxx>
#include <Geom_Curve.hxx>

namespace cadex::brep {

/// The curve under any number of trimmings.
Handle(Geom_Curve) WithoutTrimming(const Handle(Geom_Curve) & curve);

/// A periodic curve with the points of the given one; the given one when it is periodic; null when its ends
/// do not meet.
Handle(Geom_Curve) PeriodicCurve(const Handle(Geom_Curve) & curve);

/// Periodic in each direction in which opposite sides meet; the given one when there is none.
Handle(Geom_Surface) PeriodicSurface(const Handle(Geom_BSplineSurface) & spline);

} // namespace cadex::brep
