// How far chords are off what they stand for.
#pragma once

#include <gp_Pnt2d.hxx>
#include <gp_XYZ.hxx>

namespace cadex::brep {

/// Square of the distance of `point` from the line through `from` and `to`, which are `square` apart.
inline double SquareOff(const gp_XYZ& from, const gp_XYZ& to, double square, const gp_XYZ& point)
{
    const gp_XYZ way = to - from;
    const gp_XYZ side = point - from;
    return (side - way * (side.Dot(way) / square)).SquareModulus();
}

inline gp_Pnt2d Middle(const gp_Pnt2d& a, const gp_Pnt2d& b)
{
    return gp_Pnt2d((a.XY() + b.XY()) / 2);
}

} // namespace cadex::brep
