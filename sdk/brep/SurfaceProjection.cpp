#include "sdk/brep/SurfaceProjection.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <ElCLib.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <Precision.hxx>

#include "sdk/brep/SurfaceEvaluator.h"
#include "sdk/brep/Tolerances.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::brep {

using occt::CoordinateOf;
using occt::SetCoordinate;

namespace {

/// Half of the range searched in a direction in which a surface has no end (millimetres).
constexpr double OpenReach = 1e4;

constexpr double Infinite = std::numeric_limits<double>::max();

double Bounded(double value, double bound)
{
    return Precision::IsInfinite(value) ? bound : value;
}

double ClampedTo(const Surface& surface, int direction, double value)
{
    if (surface.period[direction] > 0) {
        return value;
    }
    return std::clamp(value, surface.low[direction], surface.high[direction]);
}

/// One step of Gauss and Newton towards the point: the plane of the first derivatives.
gp_Vec2d StepTowards(const gp_Vec& du, const gp_Vec& dv, const gp_Vec& rest)
{
    const double uu = du.SquareMagnitude(), uv = du.Dot(dv), vv = dv.SquareMagnitude();
    const double u = du.Dot(rest), v = dv.Dot(rest);
    const double determinant = uu * vv - uv * uv;
    constexpr double Flat = 1e-12;
    if (determinant > Flat * uu * vv) {
        return {(vv * u - uv * v) / determinant, (uu * v - uv * u) / determinant};
    }
    if (uu > vv) {
        return {u / uu, 0};
    }
    return vv > 0 ? gp_Vec2d(0, v / vv) : gp_Vec2d();
}

double RangeOf(const Surface& surface, int direction)
{
    return surface.period[direction] > 0
               ? surface.period[direction]
               : Bounded(surface.high[direction], OpenReach) - Bounded(surface.low[direction], -OpenReach);
}

/// At a pole one of the derivatives is rounding noise, whose direction would keep the search there.
void DropNoise(const Surface& surface, gp_Vec& du, gp_Vec& dv)
{
    constexpr double Noise = 1e-12;
    const double u = du.Magnitude() * RangeOf(surface, 0);
    const double v = dv.Magnitude() * RangeOf(surface, 1);
    if (u < Noise * v) {
        du = gp_Vec();
    } else if (v < Noise * u) {
        dv = gp_Vec();
    }
}

/// Near a pole a step may lead round and round: half of a range is as far as one goes.
gp_Pnt2d Stepped(const Surface& surface, const gp_Pnt2d& at, const gp_Vec2d& step)
{
    gp_Pnt2d next;
    for (const int k : {0, 1}) {
        const double range = surface.period[k] > 0 ? surface.period[k] : surface.high[k] - surface.low[k];
        const double by = std::clamp(CoordinateOf(step, k), -range / 2, range / 2);
        SetCoordinate(next, k, ClampedTo(surface, k, CoordinateOf(at, k) + by));
    }
    return next;
}

/// Searches from `place` and leaves the best place found there.
double Search(const SurfaceEvaluator& evaluator, const gp_Pnt& point, gp_Pnt2d& place)
{
    const Surface& surface = evaluator.TheSurface();
    constexpr int Steps = 20;
    constexpr double Still = 1e-18; // square millimetres
    gp_Pnt2d at = place;
    double best = Infinite;
    for (int i = 0; i < Steps; ++i) {
        gp_Pnt on;
        gp_Vec du, dv;
        evaluator.D1(at, on, du, dv);
        DropNoise(surface, du, dv);
        const gp_Vec rest(on, point);
        if (rest.Magnitude() < best) {
            best = rest.Magnitude();
            place = at;
        }
        const gp_Pnt2d next = Stepped(surface, at, StepTowards(du, dv, rest));
        const gp_Vec2d moved(at, next);
        at = next;
        if (!(moved.X() * moved.X() * du.SquareMagnitude() + moved.Y() * moved.Y() * dv.SquareMagnitude() >
              Still)) {
            break;
        }
    }
    const double last = evaluator.Value(at).Distance(point);
    if (last < best) {
        best = last;
        place = at;
    }
    return best;
}

struct Start
{
    double square = 0; ///< of the distance, as far as known before the search
    gp_Pnt2d place;
};

struct Polar
{
    gp_Pnt2d place; ///< distance from the axis, height
    double angle = 0;
};

Polar PolarOf(const gp_Ax3& axes, const gp_Pnt& point)
{
    const gp_XYZ offset = point.XYZ() - axes.Location().XYZ();
    const double x = offset.Dot(axes.XDirection().XYZ()), y = offset.Dot(axes.YDirection().XYZ());
    return {{std::hypot(x, y), offset.Dot(axes.Direction().XYZ())}, std::atan2(y, x)};
}

int SamplesOf(const Handle(Geom_Curve) & profile)
{
    const Handle(Geom_BSplineCurve) spline = Handle(Geom_BSplineCurve)::DownCast(profile);
    return spline.IsNull() ? 24 : std::clamp(4 * spline->NbKnots(), 24, 200);
}

/// Of a swept surface the profile is searched; the other parameter follows.
std::vector<Start> SweptStarts(const Surface& surface, const gp_Pnt& point)
{
    const auto around = Handle(Geom_SurfaceOfRevolution)::DownCast(surface.geometry);
    const auto along = Handle(Geom_SurfaceOfLinearExtrusion)::DownCast(surface.geometry);
    const Handle(Geom_Curve) profile = around.IsNull() ? along->BasisCurve() : around->BasisCurve();
    gp_Ax3 axes;
    if (!around.IsNull()) {
        axes = gp_Ax3(around->Axis().Location(), around->Axis().Direction());
    }
    const Polar sought = PolarOf(axes, point);
    const double first = Bounded(profile->FirstParameter(), -OpenReach);
    const double last = Bounded(profile->LastParameter(), OpenReach);
    const int count = SamplesOf(profile);
    std::vector<Start> starts;
    for (int i = 0; i <= count; ++i) {
        const double t = first + (last - first) * i / count;
        const gp_Pnt on = profile->Value(t);
        if (!around.IsNull()) {
            const Polar polar = PolarOf(axes, on);
            starts.push_back({polar.place.SquareDistance(sought.place), {sought.angle - polar.angle, t}});
        } else {
            const gp_Vec offset(on, point);
            const double height = offset.Dot(gp_Vec(along->Direction()));
            starts.push_back({offset.SquareMagnitude() - height * height, {t, height}});
        }
    }
    return starts;
}

std::vector<Start> GridStarts(const Surface& surface, const gp_Pnt& point)
{
    const std::vector<ProjectionGrid::Node>& nodes = surface.grid->Nodes(surface);
    std::vector<Start> starts;
    starts.reserve(nodes.size());
    for (const ProjectionGrid::Node& node : nodes) {
        starts.push_back({node.point.SquareDistance(point), node.place});
    }
    return starts;
}

double ProjectGeneral(const SurfaceEvaluator& evaluator, const gp_Pnt& point, gp_Pnt2d& place, double enough)
{
    const Surface& surface = evaluator.TheSurface();
    const bool isSwept = surface.kind == SurfaceKind::Revolution || surface.kind == SurfaceKind::Extrusion;
    std::vector<Start> starts = isSwept ? SweptStarts(surface, point) : GridStarts(surface, point);
    constexpr std::size_t Attempts = 6;
    const auto end = starts.begin() + static_cast<std::ptrdiff_t>(std::min(Attempts, starts.size()));
    std::partial_sort(starts.begin(), end, starts.end(),
                      [](const Start& a, const Start& b) { return a.square < b.square; });
    double best = Infinite;
    for (auto start = starts.begin(); start != end && best > enough; ++start) {
        gp_Pnt2d found = start->place;
        const double distance = Search(evaluator, point, found);
        if (distance < best) {
            best = distance;
            place = found;
        }
    }
    return best;
}

/// Places along one direction: twice as many as spans, between bounds that keep grids small.
std::vector<double> GridLines(double low, double high, int spans)
{
    low = Bounded(low, -OpenReach);
    high = Bounded(high, OpenReach);
    const int count = std::clamp(spans, 5, 40);
    std::vector<double> lines;
    lines.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        lines.push_back(low + (high - low) * i / (count - 1));
    }
    return lines;
}

} // namespace

const std::vector<ProjectionGrid::Node>& ProjectionGrid::Nodes(const Surface& surface)
{
    std::call_once(myOnce, [&] {
        int spans[2] = {20, 20};
        if (const auto spline = Handle(Geom_BSplineSurface)::DownCast(surface.geometry); !spline.IsNull()) {
            spans[0] = 2 * (spline->NbUKnots() - 1) + 1 + spline->UDegree();
            spans[1] = 2 * (spline->NbVKnots() - 1) + 1 + spline->VDegree();
        }
        const std::vector<double> rows = GridLines(surface.low[1], surface.high[1], spans[1]);
        std::vector<Node> nodes;
        for (const double u : GridLines(surface.low[0], surface.high[0], spans[0])) {
            for (const double v : rows) {
                const gp_Pnt2d place(u, v);
                nodes.push_back({place, surface.Value(place)});
            }
        }
        myNodes.swap(nodes); // an exception above leaves nothing behind
    });
    return myNodes;
}

double ProjectElementary(const Surface& surface, const gp_Pnt& point, gp_Pnt2d& place)
{
    const gp_XYZ offset = point.XYZ() - surface.axes.Location().XYZ();
    const double x = offset.Dot(surface.axes.XDirection().XYZ());
    const double y = offset.Dot(surface.axes.YDirection().XYZ());
    const double z = offset.Dot(surface.axes.Direction().XYZ());
    const double reach = std::hypot(x, y);
    switch (surface.kind) {
    case SurfaceKind::Plane:
        place = {x, y};
        return std::abs(z);
    case SurfaceKind::Cylinder:
        place = {std::atan2(y, x), z};
        return std::abs(reach - surface.radius);
    case SurfaceKind::Cone: {
        // Along the axis, not along the normal: rulings and circles of edges a little off stay what they are.
        const double v = z / std::cos(surface.halfAngle);
        const double radius = surface.radius + v * std::sin(surface.halfAngle);
        place = {radius < 0 ? std::atan2(-y, -x) : std::atan2(y, x), v};
        return std::abs(reach - std::abs(radius)) * std::cos(surface.halfAngle);
    }
    case SurfaceKind::Sphere:
        place = {std::atan2(y, x), std::atan2(z, reach)};
        return std::abs(std::hypot(reach, z) - surface.radius);
    default: {
        // On the inner part of a spindle the circle has come to the other side of the axis.
        const double out = surface.isInner ? -reach : reach;
        double v = std::atan2(z, out - surface.radius);
        if (surface.isInner && v < 0) {
            v += 2 * M_PI;
        }
        place = {surface.isInner ? std::atan2(-y, -x) : std::atan2(y, x), v};
        return std::abs(std::hypot(out - surface.radius, z) - surface.minorRadius);
    }
    }
}

double Project(const SurfaceEvaluator& evaluator, const gp_Pnt& point, gp_Pnt2d& place, double enough,
               bool hasSeed)
{
    const Surface& surface = evaluator.TheSurface();
    if (IsElementary(surface.kind)) {
        return ProjectElementary(surface, point, place);
    }
    if (!hasSeed) {
        return ProjectGeneral(evaluator, point, place, enough);
    }
    gp_Pnt2d nearby = place;
    const double distance = Search(evaluator, point, nearby);
    double anywhere = Infinite;
    if (distance > enough) {
        anywhere = ProjectGeneral(evaluator, point, place, enough);
    }
    if (distance <= anywhere) {
        place = nearby;
    }
    return std::min(distance, anywhere);
}

} // namespace cadex::brep
