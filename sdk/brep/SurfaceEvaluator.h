// Points and derivatives of one surface, asked for place after place.
#pragma once

#include <GeomAdaptor_Surface.hxx>
#include <gp_Pnt.hxx>
#include <gp_Pnt2d.hxx>
#include <gp_Vec.hxx>

#include "sdk/brep/Surface.h"

namespace cadex::brep {

/// Remembers the piece of a spline that it was asked about last, which makes places near each other cheap.
/// For one thread.
class SurfaceEvaluator
{
public:
    explicit SurfaceEvaluator(const Surface& surface) : mySurface(surface)
    {
        if (surface.kind == SurfaceKind::Spline) {
            mySpline.Load(surface.geometry);
            myHasSpline = true;
        }
    }

    const Surface& TheSurface() const { return mySurface; }

    gp_Pnt Value(const gp_Pnt2d& place) const
    {
        return myHasSpline ? mySpline.Value(place.X(), place.Y()) : mySurface.Value(place);
    }
    void D1(const gp_Pnt2d& place, gp_Pnt& point, gp_Vec& du, gp_Vec& dv) const
    {
        if (myHasSpline) {
            mySpline.D1(place.X(), place.Y(), point, du, dv);
        } else {
            mySurface.D1(place, point, du, dv);
        }
    }

private:
    const Surface& mySurface;
    GeomAdaptor_Surface mySpline;
    bool myHasSpline = false;
};

} // namespace cadex::brep
