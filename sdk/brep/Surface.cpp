#include "sdk/brep/Surface.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <GeomConvert.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_BezierSurface.hxx>
#include <Geom_Circle.hxx>
#include <Geom_ConicalSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Line.hxx>
#include <Geom_OffsetSurface.hxx>
#include <Geom_Plane.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <Precision.hxx>
#include <Standard_Failure.hxx>

#include "sdk/brep/Closing.h"
#include "sdk/brep/SurfaceProjection.h"
#include "sdk/brep/Tolerances.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::brep {

using occt::CoordinateOf;
using occt::SetCoordinate;

namespace {

constexpr double TwoPi = 2 * M_PI;

// ------------------------------------------------------------------------------------- elementary surfaces

/// Takes the numbers of an elementary surface; false when it is none or has no extent.
bool TakeElementary(Surface& surface)
{
    const Handle(Geom_ElementarySurface) elementary =
        Handle(Geom_ElementarySurface)::DownCast(surface.geometry);
    if (elementary.IsNull()) {
        return false;
    }
    surface.axes = elementary->Position();
    if (elementary->IsKind(STANDARD_TYPE(Geom_Plane))) {
        surface.kind = SurfaceKind::Plane;
    } else if (auto cylinder = Handle(Geom_CylindricalSurface)::DownCast(elementary); !cylinder.IsNull()) {
        surface.kind = SurfaceKind::Cylinder;
        surface.radius = cylinder->Radius();
    } else if (auto cone = Handle(Geom_ConicalSurface)::DownCast(elementary); !cone.IsNull()) {
        surface.kind = SurfaceKind::Cone;
        surface.radius = cone->RefRadius();
        surface.halfAngle = cone->SemiAngle();
    } else if (auto sphere = Handle(Geom_SphericalSurface)::DownCast(elementary); !sphere.IsNull()) {
        surface.kind = SurfaceKind::Sphere;
        surface.radius = sphere->Radius();
    } else if (auto torus = Handle(Geom_ToroidalSurface)::DownCast(elementary); !torus.IsNull()) {
        surface.kind = SurfaceKind::Torus;
        surface.radius = torus->MajorRadius();
        surface.minorRadius = torus->MinorRadius();
    } else {
        return false;
    }
    return true;
}

bool IsSound(const Surface& surface)
{
    const gp_XYZ origin = surface.axes.Location().XYZ();
    const double size = origin.Modulus() + surface.radius + surface.minorRadius;
    if (!(size < tolerance::LargestCoordinate)) {
        return false;
    }
    switch (surface.kind) {
    case SurfaceKind::Cylinder:
    case SurfaceKind::Sphere:
        return surface.radius > tolerance::Coincident;
    case SurfaceKind::Cone:
        return std::abs(std::sin(surface.halfAngle)) > tolerance::SameAxis &&
               std::cos(surface.halfAngle) > tolerance::SameAxis;
    case SurfaceKind::Torus:
        return surface.minorRadius > tolerance::Coincident;
    default:
        return true;
    }
}

void AddPoles(Surface& surface, double lowLevel, double highLevel)
{
    surface.poles = {{1, lowLevel, false, surface.geometry->Value(0, lowLevel)},
                     {1, highLevel, true, surface.geometry->Value(0, highLevel)}};
}

/// The parts of a spindle end where its circle crosses the axis.
void AddSpindlePoles(Surface& surface)
{
    const double level = std::acos(-surface.radius / surface.minorRadius);
    surface.isSpindle = true;
    surface.period[1] = 0;
    surface.low[1] = surface.isInner ? level : -level;
    surface.high[1] = surface.isInner ? TwoPi - level : level;
    AddPoles(surface, surface.low[1], surface.high[1]);
    // Not evaluated: the circle meets the axis only as exactly as the arc cosine does.
    for (Pole& pole : surface.poles) {
        pole.point = surface.axes.Location().XYZ() +
                     surface.axes.Direction().XYZ() * (surface.minorRadius * std::sin(pole.level));
    }
}

void CloseElementary(Surface& surface)
{
    if (surface.kind != SurfaceKind::Plane) {
        surface.period[0] = TwoPi;
    }
    if (surface.kind == SurfaceKind::Cone) {
        const double apex = -surface.radius / std::sin(surface.halfAngle);
        AddPoles(surface, apex, apex);
    } else if (surface.kind == SurfaceKind::Sphere) {
        AddPoles(surface, -M_PI_2, M_PI_2);
    } else if (surface.kind == SurfaceKind::Torus) {
        surface.period[1] = TwoPi;
        if (surface.minorRadius >= surface.radius) {
            AddSpindlePoles(surface);
        }
    }
}

// ------------------------------------------------------------------------ swept surfaces that are elementary

std::optional<Handle(Geom_Surface)> ElementaryExtrusion(const Geom_SurfaceOfLinearExtrusion& sweep)
{
    const Handle(Geom_Curve) basis = WithoutTrimming(sweep.BasisCurve());
    const gp_Dir along = sweep.Direction();
    if (const auto line = Handle(Geom_Line)::DownCast(basis); !line.IsNull()) {
        const gp_Dir across = line->Lin().Direction();
        if (!across.IsParallel(along, tolerance::SameAxis)) {
            return new Geom_Plane(gp_Ax3(line->Lin().Location(), across.Crossed(along), across));
        }
    } else if (const auto circle = Handle(Geom_Circle)::DownCast(basis); !circle.IsNull()) {
        if (circle->Axis().Direction().IsParallel(along, tolerance::SameAxis)) {
            return new Geom_CylindricalSurface(gp_Ax3(circle->Position()), circle->Radius());
        }
    }
    return std::nullopt;
}

/// A circle in one plane with the axis: a torus, or a sphere when its centre lies on the axis.
std::optional<Handle(Geom_Surface)> RevolvedCircle(const gp_Circ& circle, const gp_Ax1& axis)
{
    const gp_XYZ centre = circle.Location().XYZ(), along = axis.Direction().XYZ(),
                 origin = axis.Location().XYZ();
    const gp_XYZ normal = circle.Axis().Direction().XYZ();
    const double exact = tolerance::Coincident * std::max(1.0, circle.Radius());
    if (std::abs(normal.Dot(along)) > tolerance::SameAxis ||
        std::abs((origin - centre).Dot(normal)) > exact) {
        return std::nullopt;
    }
    const gp_XYZ foot = origin + along * (centre - origin).Dot(along);
    const double distance = (centre - foot).Modulus();
    if (distance < exact) {
        return new Geom_SphericalSurface(gp_Ax3(gp_Pnt(centre), axis.Direction()), circle.Radius());
    }
    if (distance > circle.Radius()) {
        return new Geom_ToroidalSurface(gp_Ax3(gp_Pnt(foot), axis.Direction()), distance, circle.Radius());
    }
    return std::nullopt; // a spindle, of which the profile covers both parts
}

/// A line that meets the axis: a cone whose reference radius is away from the apex.
std::optional<Handle(Geom_Surface)> RevolvedSlope(const gp_Lin& line, const gp_Ax1& axis)
{
    const gp_XYZ origin = axis.Location().XYZ(), along = axis.Direction().XYZ();
    const gp_XYZ direction = line.Direction().XYZ();
    const double rise = direction.Dot(along);
    gp_XYZ radial = direction - along * rise;
    const double widening = radial.Modulus();
    radial /= widening;
    gp_XYZ point = line.Location().XYZ();
    const auto footOf = [&](const gp_XYZ& of) { return origin + along * (of - origin).Dot(along); };
    const gp_XYZ offset = point - footOf(point);
    if (std::abs(offset.Crossed(along).Dot(direction)) >
        tolerance::SameAxis * std::max(1.0, offset.Modulus())) {
        return std::nullopt; // skew: a hyperboloid
    }
    double reach = offset.Dot(radial);
    constexpr double LeastReach = 1e-3;
    if (reach < LeastReach) {
        point += direction * ((1 - reach) / widening);
        reach = 1;
    }
    const gp_Dir up(rise > 0 ? along : along * -1);
    return new Geom_ConicalSurface(gp_Ax3(gp_Pnt(footOf(point)), up), std::atan2(widening, std::abs(rise)),
                                   reach);
}

std::optional<Handle(Geom_Surface)> RevolvedLine(const gp_Lin& line, const gp_Ax1& axis)
{
    const double rise = line.Direction().Dot(axis.Direction());
    const gp_XYZ origin = axis.Location().XYZ(), along = axis.Direction().XYZ();
    const gp_XYZ foot = origin + along * (line.Location().XYZ() - origin).Dot(along);
    const gp_Ax3 axes(gp_Pnt(foot), axis.Direction());
    if (line.Direction().IsParallel(axis.Direction(), tolerance::SameAxis)) {
        const double radius = (line.Location().XYZ() - foot).Modulus();
        if (radius < tolerance::Coincident) {
            return std::nullopt;
        }
        return new Geom_CylindricalSurface(axes, radius);
    }
    if (std::abs(rise) < tolerance::SameAxis) {
        return new Geom_Plane(axes);
    }
    return RevolvedSlope(line, axis);
}

std::optional<Handle(Geom_Surface)> ElementaryRevolution(const Geom_SurfaceOfRevolution& sweep)
{
    const Handle(Geom_Curve) basis = WithoutTrimming(sweep.BasisCurve());
    if (const auto circle = Handle(Geom_Circle)::DownCast(basis); !circle.IsNull()) {
        return RevolvedCircle(circle->Circ(), sweep.Axis());
    }
    if (const auto line = Handle(Geom_Line)::DownCast(basis); !line.IsNull()) {
        return RevolvedLine(line->Lin(), sweep.Axis());
    }
    return std::nullopt;
}

/// The offset of a plane, cylinder, cone, sphere or torus, or of a swept surface that is one.
std::optional<Handle(Geom_Surface)> ElementaryOffset(const Geom_OffsetSurface& offset)
{
    const Surface basis = MakeSurface(offset.BasisSurface());
    if (basis.geometry.IsNull() || !IsElementary(basis.kind)) {
        return std::nullopt;
    }
    const double distance = basis.isTurned ? -offset.Offset() : offset.Offset();
    const Handle(Geom_OffsetSurface) same = new Geom_OffsetSurface(basis.geometry, distance);
    const Handle(Geom_Surface) elementary = same->Surface();
    return elementary.IsNull() ? std::nullopt : std::optional(elementary);
}

/// Where the normals of a surface and of what replaces it are compared: inside the profile, off the axis.
gp_Pnt2d ProbeOf(const Geom_Surface& surface)
{
    double low[2], high[2];
    surface.Bounds(low[0], high[0], low[1], high[1]);
    gp_Pnt2d probe;
    for (const int k : {0, 1}) {
        const bool isOpen = Precision::IsInfinite(low[k]) || Precision::IsInfinite(high[k]);
        SetCoordinate(probe, k, isOpen ? 0.37 : low[k] + 0.37 * (high[k] - low[k]));
    }
    return probe;
}

/// Puts the elementary surface in the place of the swept one; left alone when the two do not lie together.
bool Replace(Surface& surface, const Handle(Geom_Surface) & elementary)
{
    Surface result;
    result.geometry = elementary;
    if (!TakeElementary(result) || !IsSound(result)) {
        return false;
    }
    const gp_Pnt2d probe = ProbeOf(*surface.geometry);
    gp_Pnt given, found;
    gp_Vec givenU, givenV, foundU, foundV;
    surface.D1(probe, given, givenU, givenV);
    gp_Pnt2d place;
    if (ProjectElementary(result, given, place) > tolerance::SamePlace * std::max(1.0, result.radius)) {
        return false;
    }
    result.D1(place, found, foundU, foundV);
    result.isTurned = (givenU.Crossed(givenV).Dot(foundU.Crossed(foundV)) < 0) != surface.isTurned;
    result.keepsParameters = false;
    surface = result;
    return true;
}

void Simplify(Surface& surface)
{
    std::optional<Handle(Geom_Surface)> elementary;
    bool isFullCircle = false;
    if (const auto along = Handle(Geom_SurfaceOfLinearExtrusion)::DownCast(surface.geometry);
        !along.IsNull()) {
        elementary = ElementaryExtrusion(*along);
    } else if (const auto around = Handle(Geom_SurfaceOfRevolution)::DownCast(surface.geometry);
               !around.IsNull()) {
        elementary = ElementaryRevolution(*around);
        isFullCircle = around->BasisCurve()->IsClosed();
    } else if (const auto offset = Handle(Geom_OffsetSurface)::DownCast(surface.geometry); !offset.IsNull()) {
        elementary = ElementaryOffset(*offset);
    }
    if (elementary && Replace(surface, *elementary)) {
        surface.isAmbiguous = surface.kind == SurfaceKind::Sphere && isFullCircle;
    }
}

// ------------------------------------------------------------------------------------------- general
// surfaces

/// The surface in the form in which the builder follows it: see the head of Surface.h.
Handle(Geom_Surface) Usable(const Handle(Geom_Surface) & given)
{
    if (const auto bezier = Handle(Geom_BezierSurface)::DownCast(given); !bezier.IsNull()) {
        return PeriodicSurface(GeomConvert::SurfaceToBSplineSurface(bezier));
    }
    if (const auto spline = Handle(Geom_BSplineSurface)::DownCast(given); !spline.IsNull()) {
        return PeriodicSurface(spline);
    }
    if (const auto offset = Handle(Geom_OffsetSurface)::DownCast(given); !offset.IsNull()) {
        const Handle(Geom_Surface) basis = Usable(offset->BasisSurface());
        return basis == offset->BasisSurface() ? given : new Geom_OffsetSurface(basis, offset->Offset());
    }
    if (const auto along = Handle(Geom_SurfaceOfLinearExtrusion)::DownCast(given); !along.IsNull()) {
        const Handle(Geom_Curve) profile = PeriodicCurve(along->BasisCurve());
        return profile.IsNull() || profile == along->BasisCurve()
                   ? given
                   : new Geom_SurfaceOfLinearExtrusion(profile, along->Direction());
    }
    if (const auto around = Handle(Geom_SurfaceOfRevolution)::DownCast(given); !around.IsNull()) {
        const Handle(Geom_Curve) profile = PeriodicCurve(around->BasisCurve());
        return profile.IsNull() || profile == around->BasisCurve()
                   ? given
                   : new Geom_SurfaceOfRevolution(profile, around->Axis());
    }
    return given;
}

SurfaceKind KindOf(const Geom_Surface& surface)
{
    if (surface.IsKind(STANDARD_TYPE(Geom_SurfaceOfRevolution))) {
        return SurfaceKind::Revolution;
    }
    if (surface.IsKind(STANDARD_TYPE(Geom_SurfaceOfLinearExtrusion))) {
        return SurfaceKind::Extrusion;
    }
    return surface.IsKind(STANDARD_TYPE(Geom_BSplineSurface)) ? SurfaceKind::Spline : SurfaceKind::Other;
}

/// The points of a line of constant parameter: their middle, how far they spread, the length of the line.
struct Line
{
    gp_Pnt middle;
    double spread = 0;
    double length = 0;
};

Line LineAt(const Surface& surface, int fixed, double level)
{
    constexpr int Samples = 9;
    const int moving = 1 - fixed;
    gp_Pnt2d place;
    SetCoordinate(place, fixed, level);
    std::vector<gp_Pnt> points;
    gp_XYZ sum;
    Line line;
    for (int i = 0; i < Samples; ++i) {
        const double part = i / double(Samples - 1);
        SetCoordinate(place, moving,
                      surface.low[moving] + part * (surface.high[moving] - surface.low[moving]));
        points.push_back(surface.Value(place));
        sum += points.back().XYZ();
        line.length += i > 0 ? points.back().Distance(points[points.size() - 2]) : 0;
    }
    line.middle = gp_Pnt(sum / Samples);
    for (const gp_Pnt& point : points) {
        line.spread = std::max(line.spread, point.Distance(line.middle));
    }
    return line;
}

/// A side is a pole when it is one point beside the lines of the surface's inside; samples decide, for every
/// kind alike.
void AddPoleOfSide(Surface& surface, int fixed, bool isUpper)
{
    const int moving = 1 - fixed;
    const double level = isUpper ? surface.high[fixed] : surface.low[fixed];
    if (surface.period[fixed] > 0 || Precision::IsInfinite(level) ||
        Precision::IsInfinite(surface.low[moving]) || Precision::IsInfinite(surface.high[moving])) {
        return;
    }
    const Line side = LineAt(surface, fixed, level);
    if (!(side.spread <= tolerance::PoleSize)) {
        return;
    }
    const double other = isUpper ? surface.low[fixed] : surface.high[fixed];
    const double inside = Precision::IsInfinite(other) ? level + (isUpper ? -1 : 1) : (level + other) / 2;
    if (side.length <= tolerance::PoleShare * LineAt(surface, fixed, inside).length) {
        surface.poles.push_back({fixed, level, isUpper, side.middle, side.spread});
    }
}

void CloseGeneral(Surface& surface)
{
    surface.kind = KindOf(*surface.geometry);
    if (surface.geometry->IsUPeriodic()) {
        surface.period[0] = surface.geometry->UPeriod();
    }
    if (surface.geometry->IsVPeriodic()) {
        surface.period[1] = surface.geometry->VPeriod();
    }
    for (const int fixed : {1, 0}) {
        AddPoleOfSide(surface, fixed, false);
        AddPoleOfSide(surface, fixed, true);
    }
    surface.grid = std::make_shared<ProjectionGrid>();
}

void TakeBounds(Surface& surface)
{
    surface.geometry->Bounds(surface.low[0], surface.high[0], surface.low[1], surface.high[1]);
    for (const int k : {0, 1}) {
        surface.naturalLow[k] = surface.low[k];
        surface.naturalHigh[k] = surface.high[k];
    }
}

void Recognise(Surface& surface, const Handle(Geom_Surface) & given)
{
    const auto trimmed = Handle(Geom_RectangularTrimmedSurface)::DownCast(given);
    if (!trimmed.IsNull()) {
        Recognise(surface, trimmed->BasisSurface());
        if (surface.keepsParameters) {
            trimmed->Bounds(surface.naturalLow[0], surface.naturalHigh[0], surface.naturalLow[1],
                            surface.naturalHigh[1]);
        }
        return;
    }
    surface.geometry = Usable(given);
    if (surface.geometry->IsKind(STANDARD_TYPE(Geom_RectangularTrimmedSurface))) {
        return Recognise(surface, surface.geometry);
    }
    Simplify(surface);
    const bool isElementary = TakeElementary(surface);
    if (isElementary && !IsSound(surface)) {
        surface.geometry.Nullify();
        return;
    }
    TakeBounds(surface);
    if (isElementary) {
        CloseElementary(surface);
    } else {
        CloseGeneral(surface);
    }
}

bool IsFinite(const Surface& surface)
{
    gp_Pnt point;
    gp_Vec du, dv;
    surface.D1(ProbeOf(*surface.geometry), point, du, dv);
    const double sum = point.XYZ().Modulus() + du.Magnitude() + dv.Magnitude();
    return sum < tolerance::LargestCoordinate * tolerance::LargestCoordinate;
}

} // namespace

Surface MakeSurface(const Handle(Geom_Surface) & given)
{
    Surface surface;
    if (given.IsNull()) {
        return surface;
    }
    try {
        Recognise(surface, given);
        if (!surface.geometry.IsNull() && !IsFinite(surface)) {
            surface.geometry.Nullify();
        }
    } catch (const Standard_Failure&) {
        surface.geometry.Nullify();
    }
    return surface;
}

Surface InnerPart(const Surface& spindle)
{
    Surface inner = spindle;
    inner.isInner = true;
    AddSpindlePoles(inner);
    return inner;
}

Surface WithAxes(const Surface& sphere, const gp_Ax3& axes)
{
    Surface turned = sphere;
    turned.axes = axes;
    turned.geometry = new Geom_SphericalSurface(axes, sphere.radius);
    turned.isTurned = sphere.isTurned != (axes.Direct() != sphere.axes.Direct());
    turned.keepsParameters = false;
    CloseElementary(turned);
    return turned;
}

const Pole* PoleAt(const Surface& surface, const gp_Pnt& point, double reach, const gp_Pnt2d& near)
{
    const Pole* best = nullptr;
    double least = reach;
    for (const Pole& pole : surface.poles) {
        const double distance = std::max(0.0, pole.point.Distance(point) - pole.spread);
        const double side = CoordinateOf(near, pole.fixed) - pole.level;
        const bool isOnSide = pole.isUpper ? side <= 0 : side >= 0;
        if (distance < least || (distance <= least && best != nullptr && isOnSide)) {
            best = &pole;
            least = distance;
        }
    }
    return best;
}

bool IsAtPole(const Surface& surface, const gp_Pnt& point, double reach)
{
    return std::any_of(surface.poles.begin(), surface.poles.end(),
                       [&](const Pole& pole) { return pole.point.Distance(point) < reach + pole.spread; });
}

} // namespace cadex::brep
