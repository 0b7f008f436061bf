#include "sdk/parasolid/XtCarriers.h"

#include <cmath>

#include <GeomAPI_ProjectPointOnCurve.hxx>

namespace cadex::parasolid {

std::optional<double> Tube::Nearest(const gp_Pnt& point, std::optional<double> parameter) const
{
    constexpr int Steps = 12;
    constexpr double Enough = 1e-13;
    if (parameter) {
        double t = *parameter;
        for (int i = 0; i < Steps; ++i) {
            gp_Pnt at;
            gp_Vec first;
            gp_Vec second;
            spine->D2(t, at, first, second);
            const gp_Vec away(at, point);
            const double slope = away.Dot(first);
            const double bend = first.SquareMagnitude() - away.Dot(second);
            if (!(bend > 0)) {
                break;
            }
            double next = t + slope / bend;
            if (!spine->IsPeriodic() && (next < spine->FirstParameter() || next > spine->LastParameter())) {
                break; // the nearest may be at the other end
            }
            const double moved = std::abs(next - t);
            t = next;
            if (moved <= Enough * (1 + std::abs(t))) {
                return t;
            }
        }
    }
    GeomAPI_ProjectPointOnCurve search(point, spine);
    double best = search.NbPoints() > 0 ? search.LowerDistance() : 1e100;
    std::optional<double> found;
    if (search.NbPoints() > 0) {
        found = search.LowerDistanceParameter();
    }
    for (const double end : {spine->FirstParameter(), spine->LastParameter()}) {
        if (std::abs(end) < 1e50 && spine->Value(end).Distance(point) < best) {
            best = spine->Value(end).Distance(point);
            found = end;
        }
    }
    return found;
}

std::optional<Foot> Carrier::FootOf(const gp_Pnt& point)
{
    constexpr double Enough = 1e-10;
    constexpr double Flat = 1e-20;
    Foot foot;
    if (myEvaluator) {
        const double distance = brep::Project(*myEvaluator, point, myPlace, Enough, myHasPlace);
        myHasPlace = std::isfinite(distance) && distance < 1e10;
        if (!myHasPlace) {
            return std::nullopt;
        }
        gp_Vec du;
        gp_Vec dv;
        myEvaluator->D1(myPlace, foot.point, du, dv);
        foot.normal = du.Crossed(dv);
        if (!(foot.normal.SquareMagnitude() > Flat * du.SquareMagnitude() * dv.SquareMagnitude())) {
            return std::nullopt;
        }
        foot.normal.Normalize();
        return foot;
    }
    myParameter = myTube.Nearest(point, myParameter);
    if (!myParameter) {
        return std::nullopt;
    }
    const gp_Pnt centre = myTube.spine->Value(*myParameter);
    foot.normal = gp_Vec(centre, point);
    if (!(foot.normal.Magnitude() > 1e-3 * myTube.radius)) {
        return std::nullopt;
    }
    foot.normal.Normalize();
    foot.point = centre.Translated(foot.normal * myTube.radius);
    return foot;
}

std::optional<Meeting> Meet(Carrier& a, Carrier& b, const gp_Pnt& guess)
{
    constexpr int Steps = 12;
    constexpr double Near = 1e-9;
    constexpr double Touching = 1e-6; // square of the sine of the angle in between
    Meeting result{guess};
    for (int i = 0; i < Steps; ++i) {
        const std::optional<Foot> onA = a.FootOf(result.point);
        const std::optional<Foot> onB = b.FootOf(result.point);
        if (!onA || !onB) {
            return std::nullopt;
        }
        const double cosine = onA->normal.Dot(onB->normal);
        const double determinant = 1 - cosine * cosine;
        result.isTransversal = determinant > Touching;
        if (!result.isTransversal) {
            const gp_Pnt middle((onA->point.XYZ() + onB->point.XYZ()) / 2);
            const double moved = middle.Distance(result.point);
            result.point = middle;
            if (moved < Near) {
                return result;
            }
            continue;
        }
        result.direction = onA->normal.Crossed(onB->normal).Normalized();
        const double toA = onA->normal.Dot(gp_Vec(result.point, onA->point));
        const double toB = onB->normal.Dot(gp_Vec(result.point, onB->point));
        const double alongA = (toA - cosine * toB) / determinant;
        const double alongB = (toB - cosine * toA) / determinant;
        const gp_Vec move = onA->normal * alongA + onB->normal * alongB;
        result.point.Translate(move);
        if (move.Magnitude() < Near) {
            return result;
        }
    }
    return result.isTransversal ? std::nullopt : std::optional(result);
}

} // namespace cadex::parasolid
