#include "sdk/parasolid/XtGeometry.h"

#include <algorithm>
#include <cmath>

#include <Geom_Circle.hxx>
#include <Geom_ConicalSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Line.hxx>
#include <Geom_OffsetSurface.hxx>
#include <Geom_Plane.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <Geom_TrimmedCurve.hxx>
#include <Standard_Failure.hxx>

#include "sdk/brep/Conics.h"
#include "sdk/brep/KernelTasks.h"
#include "sdk/parasolid/XtSplines.h"

namespace cadex::parasolid {

namespace {

using brep::AxesOf;
using brep::FarAway;
using brep::IsDirection;
using brep::IsSound;

constexpr double SmallestRadius = 1e-12;
/// Offsets of offsets, trimmed trimmed curves.
constexpr int DeepestGeometry = 16;

gp_XYZ Place(const Node& node, Field field)
{
    return node.Vector(field) * Millimetres;
}

double Length(const Node& node, Field field)
{
    return node.Number(field) * Millimetres;
}

bool IsRadius(double radius)
{
    return std::abs(radius) > SmallestRadius && std::abs(radius) < FarAway;
}

Curve ReadLine(const Node& node)
{
    const gp_XYZ origin = Place(node, Field::Pvec);
    const gp_XYZ direction = node.Vector(Field::Direction);
    if (!IsSound(origin) || !IsDirection(direction)) {
        return {};
    }
    Curve result{new Geom_Line(gp_Pnt(origin), gp_Dir(direction))};
    result.factor = Millimetres;
    return result;
}

Curve ReadEllipse(const Node& node)
{
    const auto axes =
        AxesOf(Place(node, Field::Centre), node.Vector(Field::Normal), node.Vector(Field::XAxis));
    const bool isCircle = node.Type() == type::Circle;
    const double major = Length(node, isCircle ? Field::Radius : Field::MajorRadius);
    const double minor = isCircle ? major : Length(node, Field::MinorRadius);
    if (!axes || !(major > SmallestRadius) || !IsRadius(major) || !(minor > major * 1e-9) ||
        !(minor < major * 1e9)) {
        return {};
    }
    return {brep::MakeEllipse(*axes, major, minor / major)};
}

Surface ReadPlane(const Node& node)
{
    const auto axes = AxesOf(Place(node, Field::Pvec), node.Vector(Field::Normal), node.Vector(Field::XAxis));
    return axes ? Surface{.surface = new Geom_Plane(*axes), .map = {Millimetres, Millimetres}} : Surface();
}

Surface ReadCylinder(const Node& node)
{
    const auto axes = AxesOf(Place(node, Field::Pvec), node.Vector(Field::Axis), node.Vector(Field::XAxis));
    const double radius = Length(node, Field::Radius);
    if (!axes || !IsRadius(radius)) {
        return {};
    }
    return {.surface = new Geom_CylindricalSurface(*axes, std::abs(radius)),
            .isReversed = radius < 0,
            .map = {1, Millimetres}};
}

/// The file's v is along the axis, the kernel's along the generatrix.
Surface ReadCone(const Node& node)
{
    const auto axes = AxesOf(Place(node, Field::Pvec), node.Vector(Field::Axis), node.Vector(Field::XAxis));
    const double radius = Length(node, Field::Radius);
    const double sine = node.Number(Field::SinHalfAngle);
    const double cosine = node.Number(Field::CosHalfAngle);
    if (!axes || !(radius >= 0) || !(radius < FarAway) || !(std::hypot(sine, cosine) > 0.5) ||
        !(std::abs(cosine) > 1e-9) || !(std::abs(sine) > 1e-9) || !(std::hypot(sine, cosine) < 2)) {
        return {};
    }
    const double angle = std::atan(sine / cosine);
    return {.surface = new Geom_ConicalSurface(*axes, angle, radius),
            .map = {1, Millimetres / std::cos(angle)}};
}

Surface ReadSphere(const Node& node)
{
    const auto axes = AxesOf(Place(node, Field::Centre), node.Vector(Field::Axis), node.Vector(Field::XAxis));
    const double radius = Length(node, Field::Radius);
    if (!axes || !IsRadius(radius)) {
        return {};
    }
    return {.surface = new Geom_SphericalSurface(*axes, std::abs(radius)), .isReversed = radius < 0};
}

/// The part of a torus around its axis, between the points where its circle meets the axis: the circle's
/// centre is on the other side of it.
Handle(Geom_Surface) MakeLemon(const gp_Ax3& axes, double major, double minor)
{
    const double reach = std::acos(-major / minor);
    const gp_Pnt centre(axes.Location().XYZ() + axes.XDirection().XYZ() * major);
    const gp_Ax2 plane(centre, axes.YDirection().Reversed(), axes.XDirection());
    return new Geom_SurfaceOfRevolution(new Geom_TrimmedCurve(new Geom_Circle(plane, minor), -reach, reach),
                                        axes.Axis());
}

/// Of a torus that crosses itself the outer part is meant, or with a negative radius the inner one.
Surface ReadTorus(const Node& node)
{
    const auto axes = AxesOf(Place(node, Field::Centre), node.Vector(Field::Axis), node.Vector(Field::XAxis));
    const double major = Length(node, Field::MajorRadius);
    const double minor = std::abs(Length(node, Field::MinorRadius));
    const bool isReversed = node.Number(Field::MinorRadius) < 0;
    if (!axes || !(std::abs(major) < FarAway) || !IsRadius(minor) || !(major > -minor)) {
        return {};
    }
    if (major < 0) {
        return {.surface = MakeLemon(*axes, major, minor), .isReversed = isReversed};
    }
    return {.surface = new Geom_ToroidalSurface(*axes, major, minor), .isReversed = isReversed};
}

/// What a swept surface is made of: the piece of the curve, where a piece is given.
Handle(Geom_Curve) PieceOf(const Curve& curve)
{
    if (curve.curve.IsNull() || !(curve.first < curve.last)) {
        return curve.curve;
    }
    return new Geom_TrimmedCurve(curve.curve, curve.first, curve.last);
}

} // namespace

const Curve& GeometryReader::CurveOf(int index)
{
    const auto [place, isNew] = myCurves.try_emplace(index);
    if (!isNew || myDepth >= DeepestGeometry) {
        return place->second;
    }
    Curve& result = place->second; // stays where it is while others are added
    const Node node = myNodes.At(index);
    ++myDepth;
    if (!brep::Try([&] { result = ReadCurve(node); })) {
        result = {};
    }
    --myDepth;
    result.isReversed = result.isReversed != (node.Character(Field::Sense) == '-');
    return result;
}

const Surface& GeometryReader::SurfaceOf(int index)
{
    const auto [place, isNew] = mySurfaces.try_emplace(index);
    if (!isNew || myDepth >= DeepestGeometry) {
        return place->second;
    }
    Surface& result = place->second;
    const Node node = myNodes.At(index);
    ++myDepth;
    if (!brep::Try([&] { result = ReadSurface(node); })) {
        result = {};
    }
    --myDepth;
    result.isReversed = result.isReversed != (node.Character(Field::Sense) == '-');
    return result;
}

const brep::Surface& GeometryReader::EvaluatedSurface(int index)
{
    const auto [place, isNew] = myEvaluated.try_emplace(index);
    brep::Surface& result = place->second;
    if (isNew) {
        const Handle(Geom_Surface) surface = SurfaceOf(index).surface;
        if (!surface.IsNull()) {
            result = brep::MakeSurface(surface);
        }
    }
    return result;
}

Curve GeometryReader::ReadCurve(const Node& node)
{
    switch (node.Type()) {
    case type::Line:
        return ReadLine(node);
    case type::Circle:
    case type::Ellipse:
        return ReadEllipse(node);
    case type::TrimmedCurve:
        return ReadTrimmed(node);
    case type::SplineCurve:
        return {MakeSplineCurve(myNodes, node)};
    case type::Intersection:
        return ReadIntersection(node);
    default:
        return {};
    }
}

Surface GeometryReader::ReadSurface(const Node& node)
{
    switch (node.Type()) {
    case type::Plane:
        return ReadPlane(node);
    case type::Cylinder:
        return ReadCylinder(node);
    case type::Cone:
        return ReadCone(node);
    case type::Sphere:
        return ReadSphere(node);
    case type::Torus:
        return ReadTorus(node);
    case type::SplineSurface:
        return {.surface = MakeSplineSurface(myNodes, node)};
    case type::Swept:
        return ReadSwept(node);
    case type::Spun:
        return ReadSpun(node);
    case type::Offset:
        return ReadOffset(node);
    default:
        return {};
    }
}

/// A piece runs from its first point to its second.
Curve GeometryReader::ReadTrimmed(const Node& node)
{
    Curve result = CurveOf(node.Pointer(Field::BasisCurve));
    const double from = node.Number(Field::Parm1) * result.factor;
    const double to = node.Number(Field::Parm2) * result.factor;
    result.isReversed = from > to;
    result.first = result.last = 0;
    if (result.factor > 0 && std::abs(from) < FarAway && std::abs(to) < FarAway) {
        result.first = std::min(from, to);
        result.last = std::max(from, to);
    }
    return result;
}

/// S(u, v) = C(u) + v D.
Surface GeometryReader::ReadSwept(const Node& node)
{
    const Curve& section = CurveOf(node.Pointer(Field::Section));
    const gp_XYZ direction = node.Vector(Field::Sweep);
    if (section.curve.IsNull() || !IsDirection(direction)) {
        return {};
    }
    return {.surface = new Geom_SurfaceOfLinearExtrusion(PieceOf(section), gp_Dir(direction)),
            .isReversed = section.isReversed,
            .map = {section.factor, Millimetres, false, section.factor > 0 && !section.isReversed}};
}

/// S(u, v): the profile's point at u, turned by v. The kernel's first parameter is the angle, so that its
/// normal is the other one.
Surface GeometryReader::ReadSpun(const Node& node)
{
    const Curve& profile = CurveOf(node.Pointer(Field::Profile));
    const gp_XYZ base = Place(node, Field::Base);
    const gp_XYZ axis = node.Vector(Field::Axis);
    if (profile.curve.IsNull() || !IsSound(base) || !IsDirection(axis)) {
        return {};
    }
    return {.surface = new Geom_SurfaceOfRevolution(PieceOf(profile), gp_Ax1(gp_Pnt(base), gp_Dir(axis))),
            .isReversed = !profile.isReversed,
            .map = {profile.factor, 1, true, profile.factor > 0 && !profile.isReversed}};
}

/// Along the normal of the file's surface below.
Surface GeometryReader::ReadOffset(const Node& node)
{
    Surface result = SurfaceOf(node.Pointer(Field::Surface));
    const double offset = Length(node, Field::Offset);
    if (result.surface.IsNull() || !(std::abs(offset) < FarAway)) {
        return {};
    }
    result.surface = new Geom_OffsetSurface(result.surface, result.isReversed ? -offset : offset);
    return result;
}

} // namespace cadex::parasolid
