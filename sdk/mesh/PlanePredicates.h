// Points of the plane, and on which side of a line one lies: exactly, whatever the coordinates.
#pragma once

namespace cadex::mesh {

struct PlanePoint
{
    double x = 0;
    double y = 0;
};

inline bool operator==(const PlanePoint& a, const PlanePoint& b)
{
    return a.x == b.x && a.y == b.y;
}

/// Positive when `c` lies to the left of the way from `a` to `b`, negative to its right, zero on the line:
/// the sign is exact as long as no product of two differences leaves the range of double (coordinates that
/// are zero or between 1e-60 and 1e60). The value approximates twice the triangle's signed area.
///
/// NOTE: after J. R. Shewchuk, "Adaptive Precision Floating-Point Arithmetic and Fast Robust Geometric
/// Predicates", Discrete & Computational Geometry 18 (1997): a filter first, expansions where it cannot tell.
double Orientation(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c);

/// Whether `d` lies clearly inside the circle through `a`, `b`, `c` (counter-clockwise). Four points on one
/// circle, to thirteen digits, are outside whichever way one asks, so that flipping edges by this comes to an
/// end.
bool IsInCircle(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c, const PlanePoint& d);

} // namespace cadex::mesh
