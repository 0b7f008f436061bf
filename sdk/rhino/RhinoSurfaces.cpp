#include "sdk/rhino/RhinoSurfaces.h"

#include <algorithm>
#include <cmath>

#include <GeomConvert.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_Circle.hxx>
#include <Geom_ConicalSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <Standard_Failure.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColStd_Array2OfReal.hxx>
#include <TColgp_Array2OfPnt.hxx>

#include "sdk/rhino/RhinoTolerances.h"

namespace cadex::rhino {

namespace {

enum class SurfaceClass
{
    Plane,
    Revolution,
    Sum,
    Nurbs
};

struct KnownClass
{
    Uuid id;
    SurfaceClass kind;
};

constexpr KnownClass Classes[] = {
    {Uuid("4ed7d4df-e947-11d3-bfe5-0010830122f0"), SurfaceClass::Plane},
    {Uuid("a16220d3-163b-11d4-8000-0010830122f0"), SurfaceClass::Revolution},
    {Uuid("0a8401b6-4d34-4b99-8615-1b4e723dc4e5"), SurfaceClass::Revolution},
    {Uuid("c4cd5359-446d-4690-9ff5-29059732472b"), SurfaceClass::Sum},
    {Uuid("665f6331-2a66-4cce-81d0-b5eebd9b5417"), SurfaceClass::Sum},
    {Uuid("4ed7d4de-e947-11d3-bfe5-0010830122f0"), SurfaceClass::Nurbs},
    {Uuid("4760c817-0be3-11d4-bffe-0010830122f0"), SurfaceClass::Nurbs},
    {Uuid("fa4fd4b5-1613-11d4-8000-0010830122f0"), SurfaceClass::Nurbs},
};

const KnownClass* FindClass(const Uuid& id)
{
    const auto* found = std::find_if(std::begin(Classes), std::end(Classes),
                                     [&](const KnownClass& known) { return known.id == id; });
    return found == std::end(Classes) ? nullptr : found;
}

constexpr int HighestDegree = 25;

gp_Pnt PointOf(const double* numbers, double scale)
{
    return {numbers[0] * scale, numbers[1] * scale, numbers[2] * scale};
}

bool IsFinite(const gp_Pnt& point)
{
    return std::abs(point.X()) < 1e15 && std::abs(point.Y()) < 1e15 && std::abs(point.Z()) < 1e15;
}

void Copy(const Knots& knots, TColStd_Array1OfReal& values, TColStd_Array1OfInteger& multiplicities)
{
    for (int i = 1; i <= values.Length(); ++i) {
        values(i) = knots.values[static_cast<std::size_t>(i) - 1];
        multiplicities(i) = knots.multiplicities[static_cast<std::size_t>(i) - 1];
    }
}

Surface ReadNurbs(Chunk& data, double millimetres)
{
    data.ByteVersion();
    const auto sizes = data.Get<std::array<std::int32_t, 8>>();
    const auto [dimension, rational, uOrder, vOrder, uCount, vCount, reserved1, reserved2] = sizes;
    data.Skip(48);
    const auto uKnots = data.Array<double>();
    const auto vKnots = data.Array<double>();
    const std::int32_t poles = data.I32();
    if (dimension != 3 || uOrder < 2 || vOrder < 2 || uCount < uOrder || vCount < vOrder || poles < 0) {
        throw Unreadable("a surface has impossible sizes");
    }
    const std::size_t stride = rational != 0 ? 4 : 3;
    const auto numbers = data.Items<double>(static_cast<std::size_t>(poles) * stride);
    Knots u;
    Knots v;
    if (std::int64_t{poles} != std::int64_t{uCount} * vCount || uOrder > HighestDegree + 1 ||
        vOrder > HighestDegree + 1 || uKnots.size() != static_cast<std::size_t>(uOrder + uCount) - 2 ||
        vKnots.size() != static_cast<std::size_t>(vOrder + vCount) - 2 || !MakeKnots(uKnots, uOrder - 1, u) ||
        !MakeKnots(vKnots, vOrder - 1, v)) {
        return Surface();
    }
    TColgp_Array2OfPnt points(1, uCount, 1, vCount);
    TColStd_Array2OfReal weights(1, uCount, 1, vCount);
    const double* number = numbers.data();
    for (int i = 1; i <= uCount; ++i) {
        for (int k = 1; k <= vCount; ++k, number += stride) {
            const double weight = rational != 0 ? number[3] : 1;
            points(i, k) = PointOf(number, millimetres / weight);
            weights(i, k) = weight;
            if (!(weight > 0) || !std::isfinite(weight) || !IsFinite(points(i, k))) {
                return Surface();
            }
        }
    }
    TColStd_Array1OfReal uValues(1, static_cast<int>(u.values.size()));
    TColStd_Array1OfReal vValues(1, static_cast<int>(v.values.size()));
    TColStd_Array1OfInteger uMultiplicities(1, uValues.Length());
    TColStd_Array1OfInteger vMultiplicities(1, vValues.Length());
    Copy(u, uValues, uMultiplicities);
    Copy(v, vValues, vMultiplicities);
    Surface result;
    result.surface = rational != 0
                         ? new Geom_BSplineSurface(points, weights, uValues, vValues, uMultiplicities,
                                                   vMultiplicities, uOrder - 1, vOrder - 1)
                         : new Geom_BSplineSurface(points, uValues, vValues, uMultiplicities, vMultiplicities,
                                                   uOrder - 1, vOrder - 1);
    result.begin[0] = uKnots[static_cast<std::size_t>(uOrder) - 2];
    result.end[0] = uKnots[static_cast<std::size_t>(uCount) - 1];
    result.begin[1] = vKnots[static_cast<std::size_t>(vOrder) - 2];
    result.end[1] = vKnots[static_cast<std::size_t>(vCount) - 1];
    return result;
}

/// Maps [begin, end] to [first, last].
Axis AxisOf(double begin, double end, double first, double last)
{
    const double factor = (last - first) / (end - begin);
    return {factor, first - factor * begin};
}

Surface ReadPlane(Chunk& data, double millimetres)
{
    const int minor = data.ByteVersion().minor;
    const auto plane = data.Doubles<16>();
    const auto domain = data.Doubles<4>();
    auto extents = domain;
    if (minor >= 1) {
        extents = data.Doubles<4>();
    }
    if (minor > 1) {
        data.SkipRest();
    }
    const gp_Pnt origin = PointOf(plane.data(), millimetres);
    const gp_Vec x(plane[3], plane[4], plane[5]);
    const gp_Vec z(plane[9], plane[10], plane[11]);
    if (!IsFinite(origin) || !(z.Crossed(x).Magnitude() > 0.1) || !(domain[0] < domain[1]) ||
        !(domain[2] < domain[3])) {
        return Surface();
    }
    Surface result;
    result.surface = new Geom_Plane(gp_Ax3(origin, gp_Dir(z), gp_Dir(x)));
    result.isElementary = true;
    for (std::size_t i = 0; i < 2; ++i) {
        result.begin[i] = domain[2 * i];
        result.end[i] = domain[2 * i + 1];
        result.axes[i] = AxisOf(domain[2 * i], domain[2 * i + 1], extents[2 * i] * millimetres,
                                extents[2 * i + 1] * millimetres);
    }
    return result;
}

/// The elementary surface that a profile sweeps about an axis, with the interval that the profile covers in
/// the kernel's v; null when there is none. The kernel's u begins at the profile.
struct Swept
{
    Handle(Geom_Surface) surface = {};
    double first = 0;
    double last = 0;
};

Swept SweepLine(const Curve& profile, const gp_Ax1& axis)
{
    const gp_Pnt start = profile.Start();
    const gp_Pnt end = profile.End();
    const gp_Vec z(axis.Direction());
    const auto heightOf = [&](const gp_Pnt& point) { return gp_Vec(axis.Location(), point).Dot(z); };
    const auto radialOf = [&](const gp_Pnt& point) {
        return gp_Vec(axis.Location(), point) - z * heightOf(point);
    };
    const gp_Vec a = radialOf(start);
    const gp_Vec b = radialOf(end);
    const gp_Vec& outer = a.Magnitude() > b.Magnitude() ? a : b;
    if (outer.Magnitude() < tolerance::Recognition) {
        return {};
    }
    const gp_Dir x(outer);
    if (a.Crossed(gp_Vec(x)).Magnitude() > tolerance::Recognition ||
        b.Crossed(gp_Vec(x)).Magnitude() > tolerance::Recognition) {
        return {}; // a hyperboloid
    }
    const double startRadius = a.Dot(gp_Vec(x));
    const double endRadius = b.Dot(gp_Vec(x));
    const double rise = heightOf(end) - heightOf(start);
    const double widening = endRadius - startRadius;
    if (startRadius < -tolerance::Recognition || endRadius < -tolerance::Recognition) {
        return {};
    }
    const double base = heightOf(start);
    const gp_Ax3 position(axis.Location().Translated(z * base), axis.Direction(), x);
    if (std::abs(widening) < tolerance::Recognition) {
        return {new Geom_CylindricalSurface(position, startRadius), 0, rise};
    }
    if (std::abs(rise) < tolerance::Recognition) {
        // a ring: in the plane, u is no angle, but only an untrimmed one asks for it
        return {new Geom_Plane(position), 0, -widening};
    }
    const double angle = std::atan(widening / rise);
    const double length = std::copysign(std::hypot(widening, rise), rise);
    return {new Geom_ConicalSurface(position, angle, std::max(startRadius, 0.0)), 0, length};
}

Swept SweepArc(const Curve& profile, const gp_Ax1& axis)
{
    const Handle(Geom_Circle) circle = Handle(Geom_Circle)::DownCast(profile.curve);
    if (circle.IsNull()) {
        return {};
    }
    const gp_Pnt centre = circle->Circ().Location();
    const double radius = circle->Circ().Radius();
    const gp_Vec z(axis.Direction());
    const gp_Vec normal(circle->Circ().Axis().Direction());
    const gp_Vec toCentre(axis.Location(), centre);
    const double height = toCentre.Dot(z);
    const gp_Vec radial = toCentre - z * height;
    if (std::abs(normal.Dot(z)) > tolerance::Recognition) {
        return {};
    }
    const gp_Pnt onAxis = axis.Location().Translated(z * height);
    const bool isSphere = radial.Magnitude() < tolerance::Recognition;
    gp_Vec x = radial;
    if (isSphere) {
        const gp_Pnt middle = profile.curve->Value((profile.first + profile.last) / 2);
        x = gp_Vec(centre, middle);
        x -= z * x.Dot(z);
        if (profile.last - profile.first > M_PI + tolerance::Recognition) {
            return {};
        }
    } else if (std::abs(radial.Normalized().Dot(normal)) > tolerance::Recognition ||
               radial.Magnitude() < radius * (1 + tolerance::Recognition)) {
        return {};
    }
    if (x.Magnitude() < tolerance::Recognition) {
        return {};
    }
    const gp_Ax3 position(onAxis, axis.Direction(), gp_Dir(x));
    const bool isUpward = normal.Dot(gp_Vec(position.XDirection()).Crossed(z)) > 0;
    const auto angleOf = [&](double parameter) {
        const gp_Vec arm(isSphere ? onAxis : centre, profile.curve->Value(parameter));
        return std::atan2(arm.Dot(z), arm.Dot(gp_Vec(position.XDirection())));
    };
    const double first = angleOf(profile.first);
    const double last = first + (isUpward ? 1 : -1) * (profile.last - profile.first);
    if (isSphere) {
        return {new Geom_SphericalSurface(position, radius), first, last};
    }
    return {new Geom_ToroidalSurface(position, radial.Magnitude(), radius), first, last};
}

Surface ReadRevolution(Chunk& data, double millimetres)
{
    const int major = data.ByteVersion().major;
    const auto line = data.Doubles<6>();
    const auto angles = data.Doubles<2>();
    auto parameters = angles;
    if (major == 2) {
        parameters = data.Doubles<2>();
    }
    data.Skip(48);
    const bool isTransposed = data.I32() != 0;
    Curve profile;
    if (data.Bool()) {
        profile = ReadCurveObject(data, millimetres);
    }
    const gp_Pnt from = PointOf(line.data(), millimetres);
    const gp_Pnt to = PointOf(line.data() + 3, millimetres);
    if (profile.curve.IsNull() || !IsFinite(from) || !IsFinite(to) || from.Distance(to) < gp::Resolution() ||
        !(angles[0] < angles[1]) || !(parameters[0] < parameters[1])) {
        return Surface();
    }
    const gp_Ax1 axis(from, gp_Dir(gp_Vec(from, to)));
    profile.curve = Handle(Geom_Curve)::DownCast(profile.curve->Rotated(axis, angles[0]));
    const Swept swept = profile.corners.size() == 2 ? SweepLine(profile, axis) : SweepArc(profile, axis);

    Surface result;
    result.isExchanged = isTransposed;
    result.isElementary = !swept.surface.IsNull();
    result.surface = swept.surface;
    if (result.surface.IsNull()) {
        result.surface = new Geom_SurfaceOfRevolution(profile.curve, axis);
    }
    if (!Handle(Geom_Plane)::DownCast(result.surface).IsNull()) {
        result.ring = new Geom_RectangularTrimmedSurface(new Geom_SurfaceOfRevolution(profile.curve, axis), 0,
                                                         std::min(angles[1] - angles[0], 2 * M_PI),
                                                         profile.first, profile.last);
    }
    result.axes[0] = AxisOf(parameters[0], parameters[1], 0, angles[1] - angles[0]);
    result.axes[1] = result.isElementary ? AxisOf(profile.begin, profile.end, swept.first, swept.last)
                                         : AxisOf(profile.begin, profile.end, profile.first, profile.last);
    const std::size_t u = isTransposed ? 1 : 0;
    result.begin[u] = parameters[0];
    result.end[u] = parameters[1];
    result.begin[1 - u] = profile.begin;
    result.end[1 - u] = profile.end;
    return result;
}

Surface ReadSum(Chunk& data, double millimetres)
{
    data.ByteVersion();
    const auto base = data.Doubles<3>();
    data.Skip(48);
    const Curve a = ReadCurveObject(data, millimetres);
    const Curve b = ReadCurveObject(data, millimetres);
    if (a.curve.IsNull() || b.curve.IsNull()) {
        return Surface();
    }
    const gp_XYZ shift = PointOf(base.data(), millimetres).XYZ();
    Surface result;
    result.begin[0] = a.begin;
    result.end[0] = a.end;
    result.begin[1] = b.begin;
    result.end[1] = b.end;
    if (a.corners.size() == 2 && b.corners.size() == 2) {
        const gp_Vec u(a.Start(), a.End());
        const gp_Vec v(b.Start(), b.End());
        if (u.IsNormal(v, tolerance::Recognition)) {
            const gp_Pnt corner(shift + a.Start().XYZ() + b.Start().XYZ());
            result.surface = new Geom_Plane(gp_Ax3(corner, gp_Dir(u.Crossed(v)), gp_Dir(u)));
            result.isElementary = true;
            result.axes[0] = AxisOf(a.begin, a.end, 0, u.Magnitude());
            result.axes[1] = AxisOf(b.begin, b.end, 0, v.Magnitude());
            return result;
        }
    }
    const Handle(Geom_BSplineCurve) u = SplineOf(a);
    const Handle(Geom_BSplineCurve) v = SplineOf(b);
    TColgp_Array2OfPnt points(1, u->NbPoles(), 1, v->NbPoles());
    TColStd_Array2OfReal weights(1, u->NbPoles(), 1, v->NbPoles());
    for (int i = 1; i <= u->NbPoles(); ++i) {
        for (int k = 1; k <= v->NbPoles(); ++k) {
            points(i, k) = gp_Pnt(shift + u->Pole(i).XYZ() + v->Pole(k).XYZ());
            weights(i, k) = u->Weight(i) * v->Weight(k);
        }
    }
    result.surface = new Geom_BSplineSurface(points, weights, u->Knots(), v->Knots(), u->Multiplicities(),
                                             v->Multiplicities(), u->Degree(), v->Degree());
    return result;
}

Surface ReadKnown(SurfaceClass kind, Chunk& data, double millimetres)
{
    switch (kind) {
    case SurfaceClass::Plane:
        return ReadPlane(data, millimetres);
    case SurfaceClass::Revolution:
        return ReadRevolution(data, millimetres);
    case SurfaceClass::Sum:
        return ReadSum(data, millimetres);
    default:
        return ReadNurbs(data, millimetres);
    }
}

} // namespace

bool IsSurface(const Uuid& classId)
{
    return FindClass(classId) != nullptr;
}

Surface ReadSurface(const Uuid& classId, Chunk& data, double millimetres)
{
    const KnownClass* known = FindClass(classId);
    try {
        return known != nullptr ? ReadKnown(known->kind, data, millimetres) : Surface();
    } catch (const Standard_Failure&) {
        data.SkipRest();
        return Surface();
    }
}

Surface ReadSurfaceObject(Chunk& parent, double millimetres)
{
    Surface surface;
    ReadObject(parent, [&](const Uuid& classId, Chunk& data) {
        if (IsSurface(classId)) {
            surface = ReadSurface(classId, data, millimetres);
        }
    });
    return surface;
}

} // namespace cadex::rhino
