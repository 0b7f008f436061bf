// Tolerances that several rooms of the engine share, named once. Those of one room or one algorithm stand
// there (sdk/brep/Tolerances.h has the builder's).
#pragma once

namespace cadex::tolerance {

/// Points nearer than this are one point, for the kernel too, and files written say so (millimetres).
inline constexpr double Coincident = 1e-7;

/// Coordinates, lengths and radii beyond this are no geometry: damaged files have them (millimetres).
inline constexpr double LargestCoordinate = 1e12;

/// A volume that is this small beside the sum of its triangles' or faces' shares, signs left aside, is
/// rounding noise (a ratio).
inline constexpr double NoVolume = 1e-9;

/// Ends of loose curves that lie this near are one point of a polyline (millimetres).
inline constexpr double JoinedCurves = 1e-6;

/// Parameters of a curve that differ by less are one, and so far off may a division of it be.
inline constexpr double CurveParameter = 1e-9;

/// Ends of the pieces of one boundary or composite curve of a file that lie this near meet (millimetres).
inline constexpr double JoinedPieces = 1e-3;

/// The bounds of the precision that a file may claim for its points, and the finest with which curved bodies
/// are cut (millimetres).
inline constexpr double FinestPrecision = 1e-5;
inline constexpr double CoarsestPrecision = 0.1;

} // namespace cadex::tolerance
