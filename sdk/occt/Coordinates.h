// Coordinates of the kernel's points and vectors by number, 0 for x.
//
//     for (const int k : {0, 1}) { SetCoordinate(place, k, CoordinateOf(place, k) - shift[k]); }
//
// NOTE: the kernel's own access by number (Coord, SetCoord) reckons from the first member beyond its end. A
// compiler may take for granted that nobody does, and clang does so: numbers known only at run time give
// wrong values there.
#pragma once

#include <gp_Pnt2d.hxx>
#include <gp_Vec.hxx>
#include <gp_Vec2d.hxx>
#include <gp_XYZ.hxx>

namespace cadex::occt {

template <typename Tuple>
concept IsPair = !requires(const Tuple& tuple)
{
    tuple.Z();
};

/// Of a gp_Pnt2d, gp_Vec2d or gp_XY: number 0 or 1.
template <IsPair Pair>
double CoordinateOf(const Pair& pair, int number)
{
    return number == 0 ? pair.X() : pair.Y();
}

/// Number 0 to 2.
inline double CoordinateOf(const gp_XYZ& triple, int number)
{
    return number == 0 ? triple.X() : number == 1 ? triple.Y() : triple.Z();
}

/// The number of the largest one; of equal ones the first.
inline int LargestCoordinate(const gp_XYZ& triple)
{
    if (triple.X() >= triple.Y() && triple.X() >= triple.Z()) {
        return 0;
    }
    return triple.Y() >= triple.Z() ? 1 : 2;
}

/// Of a gp_Pnt2d or gp_Vec2d: number 0 or 1.
template <IsPair Pair>
void SetCoordinate(Pair& pair, int number, double value)
{
    number == 0 ? pair.SetX(value) : pair.SetY(value);
}

} // namespace cadex::occt
