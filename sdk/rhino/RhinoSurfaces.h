// Surfaces of 3DM files as surfaces of the kernel.
#pragma once

#include <Geom2d_BSplineCurve.hxx>
#include <Geom_Surface.hxx>

#include "sdk/rhino/RhinoCurves.h"

namespace cadex::rhino {

/// An affine map of one parameter.
struct Axis
{
    double factor = 1;
    double shift = 0;

    double operator()(double value) const { return factor * value + shift; }
};

/// A surface with its rectangle of parameters in the file. The kernel's parameters follow from the file's by
/// an affine map, with u and v exchanged where the file has them the other way round.
struct Surface
{
    Handle(Geom_Surface) surface = {};
    double begin[2] = {0, 0}; ///< the file's u and v
    double end[2] = {1, 1};
    bool isExchanged = false; ///< the kernel's u is the file's v
    Axis axes[2] = {};        ///< from the file's to the kernel's, for the kernel's u and v
    /// A plane or another elementary surface: curves on it follow from those in space.
    bool isElementary = false;
    /// The rectangle itself where that of a plane's parameters is none (a ring that a line sweeps); else
    /// null.
    Handle(Geom_Surface) ring = {};

    /// The kernel's normal is the opposite of the file's.
    bool IsFlipped() const { return isExchanged != (axes[0].factor * axes[1].factor < 0); }
    gp_Pnt2d Map(double u, double v) const
    {
        return isExchanged ? gp_Pnt2d(axes[0](v), axes[1](u)) : gp_Pnt2d(axes[0](u), axes[1](v));
    }
};

bool IsSurface(const Uuid& classId);

/// Reads a surface's data; lengths become millimetres. A null handle for one that makes no sense.
Surface ReadSurface(const Uuid& classId, Chunk& data, double millimetres);

/// Reads a class wrapper that must hold a surface.
Surface ReadSurfaceObject(Chunk& parent, double millimetres);

} // namespace cadex::rhino
