// Points and derivatives of one surface, asked for place after place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include <BSplSLib_Cache.hxx>
#include <Geom_BSplineSurface.hxx>
#include <gp_Pnt.hxx>
#include <gp_Pnt2d.hxx>
#include <gp_Vec.hxx>

#include "sdk/brep/Surface.h"

namespace cadex::brep {

/// Remembers the pieces of a spline that it was asked about, as polynomials: places in any order are cheap.
/// For one thread.
class SurfaceEvaluator
{
public:
    explicit SurfaceEvaluator(const Surface& surface);

    const Surface& TheSurface() const { return mySurface; }

    gp_Pnt Value(const gp_Pnt2d& place) const
    {
        if (mySpline.IsNull()) {
            return mySurface.Value(place);
        }
        gp_Pnt point;
        const gp_Pnt2d inside = Normalised(place);
        PieceAt(inside).D0(inside.X(), inside.Y(), point);
        return point;
    }
    void D1(const gp_Pnt2d& place, gp_Pnt& point, gp_Vec& du, gp_Vec& dv) const
    {
        if (mySpline.IsNull()) {
            mySurface.D1(place, point, du, dv);
        } else {
            const gp_Pnt2d inside = Normalised(place);
            PieceAt(inside).D1(inside.X(), inside.Y(), point, du, dv);
        }
    }

private:
    gp_Pnt2d Normalised(const gp_Pnt2d& place) const;
    const BSplSLib_Cache& PieceAt(const gp_Pnt2d& place) const;
    Handle(BSplSLib_Cache) MakePiece(std::size_t uSpan, std::size_t vSpan) const;
    std::size_t SpanOf(double parameter, int direction) const;

    const Surface& mySurface;
    Handle(Geom_BSplineSurface) mySpline; ///< null of any other kind
    std::vector<double> myKnots[2];       ///< without repetition, in u and v
    mutable std::unordered_map<std::uint64_t, Handle(BSplSLib_Cache)> myPieces; ///< by spans in u and v
    mutable std::uint64_t myLastKey = ~std::uint64_t{0};
    mutable const BSplSLib_Cache* myLast = nullptr;
};

} // namespace cadex::brep
