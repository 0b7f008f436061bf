#include "sdk/brep/SurfaceEvaluator.h"

#include <algorithm>
#include <cmath>

namespace cadex::brep {

SurfaceEvaluator::SurfaceEvaluator(const Surface& surface) : mySurface(surface)
{
    if (surface.kind != SurfaceKind::Spline) {
        return;
    }
    mySpline = Handle(Geom_BSplineSurface)::DownCast(surface.geometry);
    if (mySpline.IsNull()) {
        return;
    }
    for (int i = mySpline->FirstUKnotIndex(); i <= mySpline->LastUKnotIndex(); ++i) {
        myKnots[0].push_back(mySpline->UKnot(i));
    }
    for (int i = mySpline->FirstVKnotIndex(); i <= mySpline->LastVKnotIndex(); ++i) {
        myKnots[1].push_back(mySpline->VKnot(i));
    }
}

/// In the period of the knots, to the last digit: a piece beyond would be another one.
gp_Pnt2d SurfaceEvaluator::Normalised(const gp_Pnt2d& place) const
{
    double inside[2] = {place.X(), place.Y()};
    for (const int k : {0, 1}) {
        const double period = mySurface.period[k];
        const double first = myKnots[k].front(), last = myKnots[k].back();
        if (period > 0 && !(inside[k] >= first && inside[k] <= last)) {
            inside[k] -= period * std::floor((inside[k] - first) / period);
            inside[k] = std::clamp(inside[k], first, last);
        }
    }
    return {inside[0], inside[1]};
}

/// What lies beyond the ends belongs to the first or last span.
std::size_t SurfaceEvaluator::SpanOf(double parameter, int direction) const
{
    const std::vector<double>& knots = myKnots[direction];
    const auto next = std::upper_bound(knots.begin() + 1, knots.end() - 1, parameter);
    return static_cast<std::size_t>(next - knots.begin()) - 1;
}

const BSplSLib_Cache& SurfaceEvaluator::PieceAt(const gp_Pnt2d& place) const
{
    const std::size_t u = SpanOf(place.X(), 0);
    const std::size_t v = SpanOf(place.Y(), 1);
    const std::uint64_t key = std::uint64_t{u} << 32U | v;
    if (key != myLastKey) {
        Handle(BSplSLib_Cache)& piece = myPieces[key];
        if (piece.IsNull()) {
            piece = MakePiece(u, v);
        }
        myLast = piece.get();
        myLastKey = key;
    }
    return *myLast;
}

Handle(BSplSLib_Cache) SurfaceEvaluator::MakePiece(std::size_t uSpan, std::size_t vSpan) const
{
    const Geom_BSplineSurface& spline = *mySpline;
    Handle(BSplSLib_Cache) piece =
        new BSplSLib_Cache(spline.UDegree(), spline.IsUPeriodic(), spline.UKnotSequence(), spline.VDegree(),
                           spline.IsVPeriodic(), spline.VKnotSequence(), spline.Weights());
    const auto middle = [](const std::vector<double>& knots, std::size_t span) {
        return (knots[span] + knots[span + 1]) / 2;
    };
    piece->BuildCache(middle(myKnots[0], uSpan), middle(myKnots[1], vSpan), spline.UKnotSequence(),
                      spline.VKnotSequence(), spline.Poles(), spline.Weights());
    return piece;
}

} // namespace cadex::brep
