// Surfaces of StepGeometryReader.
#include <algorithm>
#include <cmath>
#include <optional>

#include <Geom_ConicalSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_ElementarySurface.hxx>
#include <Geom_OffsetSurface.hxx>
#include <Geom_Plane.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <Precision.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColStd_Array2OfReal.hxx>
#include <TColgp_Array2OfPnt.hxx>

#include "sdk/step/StepGeometryNesting.h"

namespace cadex::step {

namespace {

constexpr double HalfPi = 3.14159265358979323846 / 2;
// Half angles of cones (radians) this near to those of a cylinder or a plane are these.
constexpr double ConeTolerance = 1e-9;

bool IsElementary(const Handle(Geom_Surface) & surface)
{
    return !Handle(Geom_ElementarySurface)::DownCast(surface).IsNull();
}

// The surface with one parameter turned round. Axes of elementary surfaces stay right-handed: they are
// flipped instead.
void ReverseU(BasisSurface& basis)
{
    if (IsElementary(basis.surface)) {
        basis.flipped = !basis.flipped;
        return;
    }
    const double end = basis.surface->UReversedParameter(0);
    basis.surface = basis.surface->UReversed();
    basis.u = {-basis.u.scale, end - basis.u.shift};
}

struct SurfaceData
{
    int uDegree = 0;
    int vDegree = 0;
    std::vector<std::vector<RecordId>> poles;
    std::vector<std::vector<double>> weights; // empty when not rational
    std::optional<SplineKnots> uKnots;
    std::optional<SplineKnots> vKnots;
};

void CheckRows(const SurfaceData& data, RecordId record)
{
    for (const std::vector<RecordId>& row : data.poles) {
        if (row.size() != data.poles.front().size()) {
            throw Damaged("a spline surface of uneven rows", record);
        }
    }
    bool fits = data.weights.empty() || data.weights.size() == data.poles.size();
    for (const std::vector<double>& row : data.weights) {
        fits = fits && row.size() == data.poles.front().size() &&
               std::all_of(row.begin(), row.end(),
                           [](double weight) { return weight > 0 && weight <= MaximalCoordinate; });
    }
    if (!fits) {
        throw Damaged("a spline surface whose weights do not fit its poles", record);
    }
}

SurfaceData ReadSurface(const StepRecords& records, const StepRecords::Record& record, StepType type)
{
    SurfaceData data;
    Cursor arguments;
    Cursor knots;
    bool hasKnots = type == StepType::SurfaceWithKnots;
    const bool isComplex = type == StepType::Complex;
    if (isComplex) {
        bool found = false;
        arguments = records.Part(record, "B_SPLINE_SURFACE", found);
        if (!found) {
            throw Unsupported("a surface of an unknown kind", record.id);
        }
        knots = records.Part(record, "B_SPLINE_SURFACE_WITH_KNOTS", hasKnots);
        Cursor weights = records.Part(record, "RATIONAL_B_SPLINE_SURFACE", found);
        data.weights = found ? ReadRealRows(weights) : std::vector<std::vector<double>>();
        type = records.HasPart(record, "UNIFORM_SURFACE")  ? StepType::SurfaceUniform
               : records.HasPart(record, "BEZIER_SURFACE") ? StepType::SurfaceBezier
                                                           : StepType::SurfaceQuasiUniform;
    } else {
        arguments = records.Named(record);
    }
    data.uDegree = static_cast<int>(std::clamp<std::int64_t>(arguments.Integer(), 0, 1000));
    data.vDegree = static_cast<int>(std::clamp<std::int64_t>(arguments.Integer(), 0, 1000));
    data.poles = ReadReferenceRows(arguments);
    Expect(arguments, record);
    if (data.poles.empty()) {
        throw Damaged("a spline surface without poles", record.id);
    }
    CheckRows(data, record.id);
    const int rows = static_cast<int>(data.poles.size());
    const int columns = static_cast<int>(data.poles.front().size());
    if (hasKnots) {
        if (!isComplex) {
            for (int i = 0; i < 4; ++i) { // form, closed in u, in v, self-intersecting
                arguments.Skip();
            }
            knots = arguments;
        }
        std::vector<int> uMultiplicities = ReadIntegers(knots);
        std::vector<int> vMultiplicities = ReadIntegers(knots);
        std::vector<double> uValues = ReadReals(knots);
        std::vector<double> vValues = ReadReals(knots);
        Expect(knots, record);
        data.uKnots.emplace(std::move(uValues), std::move(uMultiplicities), data.uDegree, rows);
        data.vKnots.emplace(std::move(vValues), std::move(vMultiplicities), data.vDegree, columns);
    } else {
        data.uKnots = SplineKnots::Of(type, data.uDegree, rows);
        data.vKnots = SplineKnots::Of(type, data.vDegree, columns);
    }
    return data;
}

TColStd_Array1OfReal KernelValues(const SplineKnots& knots)
{
    TColStd_Array1OfReal result(1, static_cast<int>(knots.Values().size()));
    std::copy(knots.Values().begin(), knots.Values().end(), result.begin());
    return result;
}

TColStd_Array1OfInteger KernelMultiplicities(const SplineKnots& knots)
{
    TColStd_Array1OfInteger result(1, static_cast<int>(knots.Multiplicities().size()));
    std::copy(knots.Multiplicities().begin(), knots.Multiplicities().end(), result.begin());
    return result;
}

bool IsBounded(const Handle(Geom_Surface) & surface)
{
    double bounds[4] = {0, 0, 0, 0};
    surface->Bounds(bounds[0], bounds[1], bounds[2], bounds[3]);
    return std::none_of(std::begin(bounds), std::end(bounds),
                        [](double bound) { return Precision::IsInfinite(bound); });
}

// From one bound to the other in the kernel's parameters, ascending; a period more where the way leads over
// the joint.
void Ascend(double& first, double& last, bool sameSense, bool isPeriodic, double period)
{
    if (!sameSense) {
        std::swap(first, last);
    }
    if (isPeriodic) {
        last -= std::floor((last - first) / period) * period;
        last += last - first <= Precision::PConfusion() ? period : 0;
    } else if (last < first) {
        std::swap(first, last);
    }
}

} // namespace

BasisSurface StepGeometryReader::Surface(RecordId id)
{
    const Nesting nesting(*this, id);
    const StepRecords::Record& record = myRecords.Get(id);
    const StepType type = myRecords.TypeOf(record);
    switch (type) {
    case StepType::Plane:
    case StepType::Cylinder:
    case StepType::Cone:
    case StepType::Sphere:
    case StepType::Torus:
        return Elementary(record, type);
    case StepType::Revolution:
    case StepType::Extrusion:
        return Swept(record, type);
    case StepType::SurfaceWithKnots:
    case StepType::SurfaceUniform:
    case StepType::SurfaceQuasiUniform:
    case StepType::SurfaceBezier:
    case StepType::Complex:
        return {SplineSurface(record, type)};
    case StepType::TrimmedSurface:
        return TrimmedBasis(record);
    case StepType::BoundedSurface: {
        Cursor arguments = myRecords.Named(record);
        return Surface(arguments.Reference());
    }
    case StepType::OffsetSurface: {
        Cursor arguments = myRecords.Named(record);
        BasisSurface basis = Surface(arguments.Reference());
        const double distance = Length(arguments);
        Expect(arguments, record);
        if (!(std::abs(distance) <= MaximalCoordinate)) {
            throw Damaged("an offset out of range", id);
        }
        const Handle(Geom_OffsetSurface) offset =
            new Geom_OffsetSurface(basis.surface, basis.flipped ? -distance : distance);
        const Handle(Geom_Surface) simple = offset->Surface();
        basis.surface = simple.IsNull() ? Handle(Geom_Surface)(offset) : simple;
        return basis;
    }
    case StepType::SurfaceReplica: {
        Cursor arguments = myRecords.Named(record);
        BasisSurface basis = Surface(arguments.Reference());
        const gp_Trsf placement = Operator(arguments.Reference());
        basis.surface = Handle(Geom_Surface)::DownCast(basis.surface->Transformed(placement));
        return basis;
    }
    default:
        throw Unsupported("a surface of an unknown kind, " + myRecords.NameOf(record), id);
    }
}

BasisSurface StepGeometryReader::Elementary(const StepRecords::Record& record, StepType type)
{
    Cursor arguments = myRecords.Named(record);
    const gp_Ax3 axes = Placement(arguments.Reference());
    const Parametrisation length = {myScale.length, 0};
    const Parametrisation angle = {myScale.angle, 0};
    if (type == StepType::Plane) {
        return {new Geom_Plane(axes), length, length};
    }
    if (type == StepType::Cone) {
        const double radius = Length(arguments);
        const double half = arguments.Real() * myScale.angle;
        Expect(arguments, record);
        if (!(radius >= 0) || !(radius <= MaximalCoordinate) || !(std::abs(half) < HalfPi - ConeTolerance)) {
            throw Damaged("a cone that is none", record.id);
        }
        if (std::abs(half) < ConeTolerance) {
            return {new Geom_CylindricalSurface(axes, radius), angle, length};
        }
        // NOTE: v is measured along the axis, by the kernel along the cone.
        const Parametrisation slant = {myScale.length / std::cos(half), 0};
        if (half > 0) {
            return {new Geom_ConicalSurface(axes, half, radius), angle, slant};
        }
        // One that narrows is one that widens the other way.
        const gp_Ax3 turned(axes.Location(), axes.Direction().Reversed(), axes.XDirection());
        return {new Geom_ConicalSurface(turned, -half, radius), {-angle.scale, 0}, {-slant.scale, 0}};
    }
    const double radius =
        type == StepType::Torus ? std::abs(Length(arguments)) : PositiveLength(arguments, record);
    if (type == StepType::Cylinder) {
        return {new Geom_CylindricalSurface(axes, radius), angle, length};
    }
    if (type == StepType::Sphere) {
        return {new Geom_SphericalSurface(axes, radius), angle, angle};
    }
    const double minor = std::abs(Length(arguments));
    Expect(arguments, record);
    if (!(minor > 0) || !(minor <= MaximalCoordinate) || !(radius <= MaximalCoordinate)) {
        throw Damaged("a torus that is none", record.id);
    }
    return {new Geom_ToroidalSurface(axes, radius, minor), angle, angle};
}

BasisSurface StepGeometryReader::Swept(const StepRecords::Record& record, StepType type)
{
    Cursor arguments = myRecords.Named(record);
    const BasisCurve profile = Curve(arguments.Reference());
    if (type == StepType::Extrusion) {
        const gp_Vec way = Vector(arguments.Reference());
        return {new Geom_SurfaceOfLinearExtrusion(profile.curve, gp_Dir(way)),
                profile.parameters,
                {way.Magnitude(), 0}};
    }
    const gp_Ax1 axis = Axis(arguments.Reference());
    return {new Geom_SurfaceOfRevolution(profile.curve, axis), {myScale.angle, 0}, profile.parameters};
}

Handle(Geom_BSplineSurface) StepGeometryReader::SplineSurface(const StepRecords::Record& record,
                                                              StepType type)
{
    const SurfaceData data = ReadSurface(myRecords, record, type);
    const int rows = static_cast<int>(data.poles.size());
    const int columns = static_cast<int>(data.poles.front().size());
    TColgp_Array2OfPnt poles(1, rows, 1, columns);
    for (int i = 1; i <= rows; ++i) {
        const std::vector<RecordId>& row = data.poles[static_cast<std::size_t>(i) - 1];
        for (int j = 1; j <= columns; ++j) {
            poles.SetValue(i, j, Point(row[static_cast<std::size_t>(j) - 1]));
        }
    }
    const TColStd_Array1OfReal u = KernelValues(*data.uKnots);
    const TColStd_Array1OfReal v = KernelValues(*data.vKnots);
    const TColStd_Array1OfInteger uMultiplicities = KernelMultiplicities(*data.uKnots);
    const TColStd_Array1OfInteger vMultiplicities = KernelMultiplicities(*data.vKnots);
    if (data.weights.empty()) {
        return new Geom_BSplineSurface(poles, u, v, uMultiplicities, vMultiplicities, data.uDegree,
                                       data.vDegree);
    }
    TColStd_Array2OfReal weights(1, rows, 1, columns);
    for (int i = 1; i <= rows; ++i) {
        const std::vector<double>& row = data.weights[static_cast<std::size_t>(i) - 1];
        for (int j = 1; j <= columns; ++j) {
            weights.SetValue(i, j, row[static_cast<std::size_t>(j) - 1]);
        }
    }
    return new Geom_BSplineSurface(poles, weights, u, v, uMultiplicities, vMultiplicities, data.uDegree,
                                   data.vDegree);
}

// RECTANGULAR_TRIMMED_SURFACE: name, basis, u1, u2, v1, v2, senses in u and v.
BasisSurface StepGeometryReader::TrimmedBasis(const StepRecords::Record& record)
{
    Cursor arguments = myRecords.Named(record);
    BasisSurface basis = Surface(arguments.Reference());
    for (int i = 0; i < 4; ++i) {
        arguments.Skip();
    }
    const bool u = ReadBoolean(arguments);
    const bool v = ReadBoolean(arguments);
    if (u != v) {
        ReverseU(basis);
    }
    return basis;
}

SurfacePatch StepGeometryReader::Patch(RecordId id)
{
    const Nesting nesting(*this, id);
    const StepRecords::Record& record = myRecords.Get(id);
    if (myRecords.TypeOf(record) != StepType::TrimmedSurface) {
        const BasisSurface whole = Surface(id);
        if (!IsBounded(whole.surface)) {
            throw Unsupported("a surface without bounds", id);
        }
        return {whole.surface, whole.flipped};
    }
    Cursor arguments = myRecords.Named(record);
    const BasisSurface basis = Surface(arguments.Reference());
    double bounds[4] = {0, 0, 0, 0};
    for (double& bound : bounds) {
        bound = arguments.Real();
    }
    const bool uSense = ReadBoolean(arguments);
    const bool vSense = ReadBoolean(arguments);
    Expect(arguments, record);
    double u1 = basis.u(bounds[0]);
    double u2 = basis.u(bounds[1]);
    double v1 = basis.v(bounds[2]);
    double v2 = basis.v(bounds[3]);
    const bool uPeriodic = basis.surface->IsUPeriodic();
    const bool vPeriodic = basis.surface->IsVPeriodic();
    Ascend(u1, u2, uSense, uPeriodic, uPeriodic ? basis.surface->UPeriod() : 0);
    Ascend(v1, v2, vSense, vPeriodic, vPeriodic ? basis.surface->VPeriod() : 0);
    for (const double bound : {u1, u2, v1, v2}) {
        if (!(std::abs(bound) <= MaximalCoordinate)) {
            throw Damaged("bounds of a surface out of range", id);
        }
    }
    return {new Geom_RectangularTrimmedSurface(basis.surface, u1, u2, v1, v2),
            basis.flipped != (uSense != vSense)};
}

} // namespace cadex::step
