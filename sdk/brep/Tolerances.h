// Tolerances of the room, named once, beside those of the whole engine. Lengths are millimetres, parameters
// those of the curve or surface.
#pragma once

#include "sdk/mesh/EngineTolerances.h"

namespace cadex::brep::tolerance {

using cadex::tolerance::Coincident;
using cadex::tolerance::CurveParameter;
using cadex::tolerance::LargestCoordinate;
using cadex::tolerance::NoVolume;

/// What is smaller has no size that chords could be measured by.
inline constexpr double SmallestSize = 1e-9;

/// A side of a surface that is no longer than this, and than this share of the side across from it, is a
/// pole.
inline constexpr double PoleSize = 1e-4;
inline constexpr double PoleShare = 1e-3;

/// Opposite sides of a spline that are as near, compared with the way from one to the other, close it.
inline constexpr double ClosingGap = 1e-4;
inline constexpr double ClosingShare = 1e-3;

/// Ends of neighbouring curves on a surface that are this near are one place there, in its parameters.
inline constexpr double SamePlace = 1e-6;

/// How far from a pole, as a fraction of the size of surface or edge, an edge may end that ends in it.
inline constexpr double PoleReach = 1e-5;

/// Directions that differ by less are parallel (radians), for curves whose place on a surface is known in
/// closed form.
inline constexpr double ParallelCurve = 1e-6;

/// Likewise for straight edges along rulings; files round directions more coarsely than centres.
inline constexpr double ParallelLine = 1e-5;

/// Axes and profiles that differ by less (radians, millimetres per millimetre) make a swept surface
/// elementary.
inline constexpr double SameAxis = 1e-9;

/// Deviation of an edge from its surface: a fraction of its length within these bounds is taken as the file's
/// inaccuracy, more is an edge that lies elsewhere.
inline constexpr double OffSurfaceShare = 1e-2;
inline constexpr double OffSurfaceLeast = 5e-3;
inline constexpr double OffSurfaceMost = 5e-2;
inline constexpr double OffSurfaceMostShare =
    1e-4; ///< of the length, where that is more than the bound above

/// A curve made on a surface follows the edge to this fraction of its length, within these bounds, as far as
/// the edge itself lies on the surface.
inline constexpr double CurveFitShare = 1e-5;
inline constexpr double CurveFitLeast = 1e-6;
inline constexpr double CurveFitMost = 1e-4;

/// A curve on the surface that comes with the edge is taken when it is as near as this.
inline constexpr double GivenCurveFit = 1e-4;

/// A gap between curves on the surface that meet in a vertex; more is a loop that does not close, unless the
/// vertex is as tolerant.
inline constexpr double LoopGap = 1e-3;

/// A face that is nowhere wider than this share of the body's size, and whose loops cross, is stitched
/// together along its middle.
inline constexpr double SliverShare = 1e-3;

/// Where nothing else helps, the corners of loops that cross are left out up to this share of the body's
/// size.
inline constexpr double SlipShare = 1e-2;

/// Parameters that differ by less are one.
inline constexpr double SameParameter = 1e-7;

/// An end of a curve that is as near to its vertex needs no search along the curve.
inline constexpr double EndAtVertex = 1e-5;

/// A vertex that is farther from its edge's curve does not belong to it.
inline constexpr double VertexOffCurve = 1.0;

} // namespace cadex::brep::tolerance
