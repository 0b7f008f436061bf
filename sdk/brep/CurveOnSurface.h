// The place of an edge on a surface: a curve in the surface's parameters with the parameter of the edge.
// Straight ones (most of them) need no curve object.
//
//     CurveOnSurface curve;
//     if (PlaceOnSurface(surface, edge, use.curveOnSurface, curve) == ResolveStatus::Done) {
//         const gp_Pnt2d middle = curve.Value((edge.first + edge.last) / 2);
//     }
#pragma once

#include <cstdint>

#include <Geom2d_Curve.hxx>
#include <gp_Pnt2d.hxx>
#include <gp_Vec2d.hxx>

#include "sdk/brep/Body.h"
#include "sdk/brep/Surface.h"

namespace cadex::brep {

/// What became of a face, and why it could not be resolved.
enum class ResolveStatus : std::uint8_t
{
    Done,
    NoFace,           ///< no such face
    NoSurface,        ///< its surface is missing or cannot be evaluated
    BadEdge,          ///< an edge is missing or has no usable curve
    LoopNotConnected, ///< an edge starts at another vertex than that at which the one before ends
    EdgeOffSurface,   ///< farther than any tolerance
    EdgeOverPole,     ///< an edge runs through a pole of the surface
    LoopNotClosed,    ///< on the surface there is a gap between edges that share a vertex
    Windings,         ///< loops that go round the surface and do not bound a region together
    NoSeam,           ///< no way for a seam that would not cross the loops
    NoOuterLoop,      ///< the loops bound no region
    Unbounded,        ///< no loops, and a surface without an end
    Kernel            ///< the kernel refused an evaluation
};

/// "edge off its surface" and the like: UTF-8, no full stop.
const char* TextOf(ResolveStatus status);

struct CurveOnSurface
{
    gp_Pnt2d origin = {}; ///< straight: origin + (t - at) * rate
    gp_Vec2d rate = {};
    double at = 0;
    Handle(Geom2d_Curve) curve = {}; ///< null when straight; else curve(t) + shift
    gp_Vec2d shift = {};
    bool isProjected = false; ///< `curve` was made for this use, and its ends may be moved

    bool IsStraight() const { return curve.IsNull(); }
    gp_Pnt2d Value(double t) const
    {
        return curve.IsNull() ? origin.Translated(rate * (t - at)) : curve->Value(t).Translated(shift);
    }
    void Shift(const gp_Vec2d& by)
    {
        origin.Translate(by);
        shift += by;
    }
};

/// The straight way from `from` at t = first to `to` at t = last.
CurveOnSurface StraightCurve(const gp_Pnt2d& from, const gp_Pnt2d& to, double first, double last);

/// As the kernel takes it, over the range of an edge.
Handle(Geom2d_Curve) KernelCurve(const CurveOnSurface& curve, double first, double last);

/// In closed form where there is one, else the given curve where it fits, else by projection: nodes refined
/// until the middle of each span lies on the edge. Not for planes. Throws Standard_Failure where the kernel
/// does.
ResolveStatus PlaceOnSurface(const Surface& surface, const BodyEdge& edge, const Handle(Geom2d_Curve) & given,
                             CurveOnSurface& curve);

/// Moves one end of a projected curve, with its tangent.
void MoveEnd(CurveOnSurface& projected, bool isLast, const gp_Vec2d& by);

/// How far an edge of such length may lie from its surface.
double OffSurfaceReach(double length);

/// How near to a pole an edge on the surface ends that ends in it.
double PoleReach(const Surface& surface);

/// Length of the edge, by a few chords.
double RoughLength(const BodyEdge& edge);

} // namespace cadex::brep
