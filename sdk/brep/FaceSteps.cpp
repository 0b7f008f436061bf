#include "sdk/brep/FaceSteps.h"

#include <algorithm>
#include <cmath>

#include <Geom_BSplineSurface.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>

namespace cadex::brep {

namespace {

// Of a range nothing is finer than this share, however wild the surface is.
constexpr double SmallestShare = 1.0 / 200;
constexpr double SmallestRange = 1e-9;

// Rows along a cone that narrows to less than a fifth: few are enough to shade it right.
constexpr double NarrowCone = 0.2;
constexpr int RowsOfNarrowCone = 4;

// The diagonals of a grid are longer than its sides.
constexpr double SphereShare = 0.7;
constexpr double TorusShare = 0.9;

// Swept curves are divided as their edges are.
constexpr int SpansOfExtrusion = 16;

constexpr int SamplesOfPiece = 2;
constexpr int FewestSamples = 4;
constexpr int MostSamples = 12;

/// The angle that a piece of a circle may cover.
double ArcStep(double radius, double chord, double angle)
{
    const double cosine = 1 - chord / std::max(radius, SmallestRange);
    return cosine > 0 ? std::min(angle, 2 * std::acos(cosine)) : angle;
}

FaceSteps ConeSteps(const Surface& surface, const ParameterBox& box, double chord, double angle)
{
    const double growth = std::sin(surface.halfAngle);
    const double lower = std::abs(surface.radius + box.low[1] * growth);
    const double upper = std::abs(surface.radius + box.high[1] * growth);
    const double arc = ArcStep(std::max(lower, upper), chord, angle);
    FaceSteps steps;
    steps.isCurved = true;
    steps.needsGrid = std::min(lower, upper) < NarrowCone * std::max(lower, upper);
    steps.step[0] = steps.needsGrid ? arc : arc / 2;
    steps.step[1] = steps.needsGrid ? box.Range(1) / RowsOfNarrowCone : box.Range(1);
    return steps;
}

/// More for a spline of many pieces, as far as they lie in the range.
int SamplesFor(const Handle(Geom_BSplineSurface) & spline, const ParameterBox& box, int direction)
{
    if (spline.IsNull()) {
        return FewestSamples;
    }
    int pieces = 1;
    const int knots = direction == 0 ? spline->NbUKnots() : spline->NbVKnots();
    for (int i = 1; i <= knots; ++i) {
        const double knot = direction == 0 ? spline->UKnot(i) : spline->VKnot(i);
        pieces += knot > box.low[direction] && knot < box.high[direction] ? 1 : 0;
    }
    return std::clamp(SamplesOfPiece * pieces, FewestSamples, MostSamples);
}

/// From the largest second derivatives and curvatures of the lines of constant parameter, by samples.
FaceSteps SampledSteps(const Surface& surface, const ParameterBox& box, double chord, double angle)
{
    const Handle(Geom_BSplineSurface) spline = Handle(Geom_BSplineSurface)::DownCast(surface.geometry);
    const int count[] = {SamplesFor(spline, box, 0), SamplesFor(spline, box, 1)};
    double bend[2] = {0, 0};
    double turn[2] = {0, 0};
    const auto look = [&](int k, const gp_Vec& first, const gp_Vec& second) {
        bend[k] = std::max(bend[k], second.Magnitude());
        const double square = first.SquareMagnitude();
        if (square > 1e-20) {
            turn[k] = std::max(turn[k], first.Crossed(second).Magnitude() / square);
        }
    };
    const auto at = [&](int k, int i) { return box.low[k] + box.Range(k) * (i + 0.5) / (count[k] + 1); };
    for (int i = 0; i <= count[0]; ++i) {
        for (int j = 0; j <= count[1]; ++j) {
            gp_Pnt point;
            gp_Vec u, v, uu, vv, uv;
            surface.geometry->D2(at(0, i), at(1, j), point, u, v, uu, vv, uv);
            look(0, u, uu);
            look(1, v, vv);
        }
    }
    FaceSteps steps;
    steps.isCurved = true;
    for (const int k : {0, 1}) {
        double step = box.Range(k);
        if (bend[k] > 0) {
            step = std::min(step, std::sqrt(8 * chord / bend[k]));
        }
        if (turn[k] > 0) {
            step = std::min(step, angle / turn[k]);
        }
        steps.step[k] = std::max(step, box.Range(k) * SmallestShare);
    }
    // Curved in one direction, the surface is spanned between the points of the loops.
    steps.needsGrid = steps.step[0] < box.Range(0) && steps.step[1] < box.Range(1);
    return steps;
}

FaceSteps RawSteps(const Surface& surface, const ParameterBox& box, double chord, double angle)
{
    switch (surface.kind) {
    case SurfaceKind::Plane:
        return {};
    case SurfaceKind::Cylinder:
        // Rows of neighbours around the axis: the distance along it hardly counts.
        return {{ArcStep(surface.radius, chord, angle) / 2, box.Range(1)}, false, true, false};
    case SurfaceKind::Extrusion:
        return {{box.Range(0) / SpansOfExtrusion, box.Range(1)}, false, true, false};
    case SurfaceKind::Cone:
        return ConeSteps(surface, box, chord, angle);
    case SurfaceKind::Sphere: {
        const double step = SphereShare * ArcStep(surface.radius, chord, angle);
        return {{step, step}, true, true, true};
    }
    case SurfaceKind::Torus:
        return {{TorusShare * ArcStep(surface.radius + surface.minorRadius, chord, angle),
                 TorusShare * ArcStep(surface.minorRadius, chord, angle)},
                true,
                true,
                false};
    default:
        return SampledSteps(surface, box, chord, angle);
    }
}

} // namespace

FaceSteps StepsFor(const Surface& surface, const ParameterBox& box, double chord, double angle)
{
    FaceSteps steps = RawSteps(surface, box, chord, angle);
    for (double& step : steps.step) {
        step = std::max(step, SmallestRange);
    }
    return steps;
}

} // namespace cadex::brep
