// Tolerances of the room, named once, beside those of the whole engine. Lengths are millimetres.
#pragma once

#include "sdk/mesh/EngineTolerances.h"

namespace cadex::rhino::tolerance {

using cadex::tolerance::Coincident;

/// The most that a vertex or edge of a file may claim; the least is Coincident.
inline constexpr double LargestOfFile = 1;

/// Coordinates and radii beyond this are no geometry.
inline constexpr double FarAway = 1e15;

/// Ends of curves of an extrusion's profile that come this near to each other are one corner.
inline constexpr double Corner = 1e-5;

/// Sines and lengths below this are zero when an elementary surface is recognised.
inline constexpr double Recognition = 1e-7;

/// Knots that differ by less are one: a share of the knot, or of one where that is more.
inline constexpr double SameKnot = 1e-12;

/// A curve that ends as near to the ends of its spline, as a share of its range, is the whole of it.
inline constexpr double WholeSpline = 1e-9;

/// Matrices that differ by less in each number are one.
inline constexpr double SameMatrix = 1e-12;

/// A matrix whose determinant is no more than this share of its largest number's cube is not inverted.
inline constexpr double SmallestDeterminant = 1e-6;

/// What files written claim: lengths, and angles in radians (one degree).
inline constexpr double Written = 1e-3;
inline constexpr double WrittenAngle = 0.017453292519943295;

} // namespace cadex::rhino::tolerance
