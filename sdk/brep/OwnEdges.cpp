#include "sdk/brep/OwnEdges.h"

#include <algorithm>
#include <cmath>

#include <Geom_BSplineCurve.hxx>
#include <Geom_Line.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <gp_Lin.hxx>

#include "sdk/brep/Closing.h"
#include "sdk/brep/Tolerances.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::brep {

using occt::CoordinateOf;

namespace {

/// The curve in space of a straight way on the surface: the cubic spline through points of it, with their
/// tangents.
Handle(Geom_Curve)
    CurveAlong(const Surface& surface, const gp_Pnt2d& from, const gp_Vec2d& way, double length)
{
    constexpr int Spans = 32;
    const gp_Vec2d unit = way / length;
    TColgp_Array1OfPnt poles(1, 2 * Spans + 2);
    TColStd_Array1OfReal knots(1, Spans + 1);
    TColStd_Array1OfInteger multiplicities(1, Spans + 1);
    multiplicities.Init(2);
    multiplicities(1) = multiplicities(Spans + 1) = 4;
    for (int i = 0; i <= Spans; ++i) {
        const double t = length * i / Spans;
        gp_Pnt point;
        gp_Vec du, dv;
        surface.D1(from.Translated(unit * t), point, du, dv);
        const gp_Vec third = (du * unit.X() + dv * unit.Y()) * (length / Spans / 3);
        poles(2 * i + 1) = i == 0 ? point : point.Translated(-third);
        poles(2 * i + 2) = i == Spans ? point : point.Translated(third);
        knots(i + 1) = t;
    }
    return new Geom_BSplineCurve(poles, knots, multiplicities, 3);
}

/// The surface's own curve along a way of constant u or v, which runs through the given place; null where the
/// kernel would approximate it.
Handle(Geom_Curve) IsoCurve(const Surface& surface, const gp_Pnt2d& place, int moving)
{
    if (surface.kind == SurfaceKind::Other || surface.kind == SurfaceKind::Plane) {
        return {};
    }
    const int fixed = 1 - moving;
    double level = CoordinateOf(place, fixed);
    if (const double period = surface.period[fixed]; period > 0) {
        level -= period * std::floor((level - surface.low[fixed]) / period);
    }
    return WithoutTrimming(fixed == 0 ? surface.geometry->UIso(level) : surface.geometry->VIso(level));
}

bool LiesOn(const BodyEdge& edge, const RingUse& use, const Surface& surface)
{
    constexpr int Samples = 6;
    for (int i = 0; i <= Samples; ++i) {
        const double t = use.first + (use.last - use.first) * i / Samples;
        if (!(surface.Value(use.curve.Value(t)).Distance(edge.Value(t)) <= tolerance::CurveFitLeast)) {
            return false;
        }
    }
    return true;
}

/// Takes the surface's own curve, exact and with the surface's parameter, where the way goes along one
/// parameter.
bool TakeIsoCurve(const Surface& surface, const gp_Pnt2d& from, const gp_Pnt2d& to, BodyEdge& edge,
                  RingUse& use)
{
    const gp_Vec2d way(from, to);
    const int moving = std::abs(way.X()) < tolerance::SameAxis ? 1 : 0;
    if (std::abs(CoordinateOf(way, 1 - moving)) >= tolerance::SameAxis) {
        return false;
    }
    const Handle(Geom_Curve) curve = IsoCurve(surface, from, moving);
    if (curve.IsNull()) {
        return false;
    }
    use.forward = CoordinateOf(way, moving) > 0;
    const gp_Pnt2d &low = use.forward ? from : to, &high = use.forward ? to : from;
    use.first = edge.first = CoordinateOf(low, moving);
    use.last = edge.last = CoordinateOf(high, moving);
    use.curve = StraightCurve(low, high, use.first, use.last);
    edge.kind = KindOf(*curve);
    edge.curve = curve;
    if (const auto line = Handle(Geom_Line)::DownCast(curve); !line.IsNull()) {
        edge.curve.Nullify();
        edge.origin = line->Lin().Location();
        edge.direction = line->Lin().Direction();
    }
    return LiesOn(edge, use, surface);
}

} // namespace

std::optional<RingUse> AddOwnEdge(Resolution& resolution, int start, int end, const gp_Pnt2d& from,
                                  const gp_Pnt2d& to)
{
    const gp_Vec2d way(from, to);
    const double length = way.Magnitude();
    if (!(length > tolerance::SameAxis)) {
        return std::nullopt;
    }
    BodyEdge edge;
    RingUse use;
    if (!TakeIsoCurve(resolution.surface, from, to, edge, use)) {
        edge = {};
        edge.kind = CurveKind::Spline;
        edge.curve = CurveAlong(resolution.surface, from, way, length);
        edge.last = length;
        use = {};
        use.last = length;
        use.curve = StraightCurve(from, to, 0, length);
    }
    edge.isUsable = true;
    edge.start = use.forward ? start : end;
    edge.end = use.forward ? end : start;
    if (edge.Value(edge.first).Distance(edge.Value((edge.first + edge.last) / 2)) < tolerance::Coincident) {
        return std::nullopt;
    }
    use.kind = UseKind::Own;
    use.edge = static_cast<int>(resolution.face.ownEdges.size());
    resolution.face.ownEdges.push_back(edge);
    return use;
}

RingUse Back(const RingUse& seam, const gp_Vec2d& by)
{
    RingUse back = seam;
    back.forward = !seam.forward;
    back.curve.Shift(by);
    return back;
}

} // namespace cadex::brep
