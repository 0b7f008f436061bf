#include "sdk/brep/Closing.h"

#include <algorithm>
#include <cmath>

#include <GeomConvert.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_TrimmedCurve.hxx>
#include <Precision.hxx>
#include <ShapeCustom_Surface.hxx>
#include <gp_Pnt2d.hxx>

#include "sdk/brep/Tolerances.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::brep {

using occt::SetCoordinate;

namespace {

bool Meet(double gap, double way)
{
    return gap <= tolerance::ClosingGap && gap <= tolerance::ClosingShare * way;
}

double WayAlong(const Geom_Curve& curve)
{
    constexpr int Samples = 8;
    const double first = curve.FirstParameter(), last = curve.LastParameter();
    double way = 0;
    gp_Pnt before = curve.Value(first);
    for (int i = 1; i <= Samples; ++i) {
        const gp_Pnt point = curve.Value(first + (last - first) * i / Samples);
        way += point.Distance(before);
        before = point;
    }
    return way;
}

bool DoEndsMeet(const Geom_Curve& curve)
{
    const double first = curve.FirstParameter(), last = curve.LastParameter();
    return !Precision::IsInfinite(first) && !Precision::IsInfinite(last) &&
           Meet(curve.Value(first).Distance(curve.Value(last)), WayAlong(curve));
}

/// The sides of a surface across one direction: 0 for u.
class Sides
{
public:
    Sides(const Geom_BSplineSurface& spline, int direction) : mySpline(spline), myDirection(direction)
    {
        spline.Bounds(myLow[0], myHigh[0], myLow[1], myHigh[1]);
    }

    bool DoMeet() const
    {
        constexpr int Samples = 9;
        double gap = 0, way = 0;
        for (int i = 0; i < Samples && gap <= tolerance::ClosingGap; ++i) {
            gap = std::max(gap,
                           PointAt(0, i / double(Samples - 1)).Distance(PointAt(1, i / double(Samples - 1))));
        }
        for (int i = 0; i < Samples && gap <= tolerance::ClosingGap; ++i) {
            way = std::max(way, WayAcross(i / double(Samples - 1)));
        }
        return Meet(gap, way);
    }

private:
    gp_Pnt PointAt(double across, double along) const
    {
        gp_Pnt2d place;
        SetCoordinate(place, myDirection, At(myDirection, across));
        SetCoordinate(place, 1 - myDirection, At(1 - myDirection, along));
        return mySpline.Value(place.X(), place.Y());
    }

    double At(int direction, double part) const
    {
        return myLow[direction] + part * (myHigh[direction] - myLow[direction]);
    }

    double WayAcross(double along) const
    {
        constexpr int Samples = 4;
        double way = 0;
        for (int i = 0; i < Samples; ++i) {
            way += PointAt(double(i) / Samples, along).Distance(PointAt(double(i + 1) / Samples, along));
        }
        return way;
    }

    const Geom_BSplineSurface& mySpline;
    int myDirection;
    double myLow[2] = {0, 0};
    double myHigh[2] = {0, 0};
};

/// Lets the sides meet exactly, as the kernel asks for; false when their weights differ.
bool JoinSides(Geom_BSplineSurface& spline, int direction)
{
    const int last = direction == 0 ? spline.NbUPoles() : spline.NbVPoles();
    const int along = direction == 0 ? spline.NbVPoles() : spline.NbUPoles();
    const auto index = [&](int across, int i) {
        return direction == 0 ? std::pair(across, i) : std::pair(i, across);
    };
    for (int i = 1; i <= along; ++i) {
        const auto [u1, v1] = index(1, i);
        const auto [u2, v2] = index(last, i);
        if (std::abs(spline.Weight(u1, v1) - spline.Weight(u2, v2)) > tolerance::SameAxis) {
            return false;
        }
        spline.SetPole(u2, v2, spline.Pole(u1, v1));
    }
    return true;
}

/// Whether the control points reach the ends of the range.
bool IsClamped(const Geom_BSplineCurve& spline)
{
    return spline.Multiplicity(1) > spline.Degree() &&
           spline.Multiplicity(spline.NbKnots()) > spline.Degree();
}

bool IsClamped(const Geom_BSplineSurface& spline)
{
    return spline.UMultiplicity(1) > spline.UDegree() && spline.VMultiplicity(1) > spline.VDegree() &&
           spline.UMultiplicity(spline.NbUKnots()) > spline.UDegree() &&
           spline.VMultiplicity(spline.NbVKnots()) > spline.VDegree();
}

} // namespace

Handle(Geom_Curve) WithoutTrimming(const Handle(Geom_Curve) & curve)
{
    const Handle(Geom_TrimmedCurve) trimmed = Handle(Geom_TrimmedCurve)::DownCast(curve);
    return trimmed.IsNull() ? curve : WithoutTrimming(trimmed->BasisCurve());
}

Handle(Geom_Curve) PeriodicCurve(const Handle(Geom_Curve) & curve)
{
    if (curve->IsPeriodic()) {
        return curve;
    }
    if (!DoEndsMeet(*curve)) {
        return {};
    }
    Handle(Geom_Curve) basis = WithoutTrimming(curve);
    const double length = curve->LastParameter() - curve->FirstParameter();
    if (basis->IsPeriodic() && std::abs(basis->Period() - length) < tolerance::SameParameter) {
        return basis;
    }
    const Handle(Geom_BSplineCurve) spline = GeomConvert::CurveToBSplineCurve(curve); // a copy
    if (spline.IsNull()) {
        return {};
    }
    if (!IsClamped(*spline)) {
        spline->Segment(spline->FirstParameter(), spline->LastParameter());
    }
    if (!IsClamped(*spline) ||
        std::abs(spline->Weight(1) - spline->Weight(spline->NbPoles())) > tolerance::SameAxis) {
        return {};
    }
    spline->SetPole(spline->NbPoles(), spline->Pole(1));
    spline->SetPeriodic();
    return Handle(Geom_Curve)(spline);
}

Handle(Geom_Surface) PeriodicSurface(const Handle(Geom_BSplineSurface) & spline)
{
    Handle(Geom_BSplineSurface) joined;
    for (const int direction : {0, 1}) {
        const bool isPeriodic = direction == 0 ? spline->IsUPeriodic() : spline->IsVPeriodic();
        if (isPeriodic || !Sides(*spline, direction).DoMeet()) {
            continue;
        }
        if (joined.IsNull()) {
            joined = Handle(Geom_BSplineSurface)::DownCast(spline->Copy());
        }
        if (!IsClamped(*joined)) {
            double low[2], high[2];
            joined->Bounds(low[0], high[0], low[1], high[1]);
            joined->Segment(low[0], high[0], low[1], high[1]);
        }
        if (!JoinSides(*joined, direction)) {
            return Handle(Geom_Surface)(spline);
        }
    }
    if (joined.IsNull()) {
        return Handle(Geom_Surface)(spline);
    }
    const Handle(Geom_Surface) periodic = ShapeCustom_Surface(joined).ConvertToPeriodic(false);
    return periodic.IsNull() ? Handle(Geom_Surface)(spline) : periodic;
}

} // namespace cadex::brep
