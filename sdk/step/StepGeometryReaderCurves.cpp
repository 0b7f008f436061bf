// Curves of StepGeometryReader.
#include <algorithm>
#include <cmath>
#include <optional>

#include <Adaptor3d_CurveOnSurface.hxx>
#include <Approx_Curve3d.hxx>
#include <ElCLib.hxx>
#include <Geom2dAdaptor_Curve.hxx>
#include <Geom2d_BSplineCurve.hxx>
#include <Geom2d_Line.hxx>
#include <GeomAPI_ProjectPointOnCurve.hxx>
#include <GeomAdaptor_Surface.hxx>
#include <GeomConvert.hxx>
#include <GeomConvert_CompCurveToBSplineCurve.hxx>
#include <Geom_Circle.hxx>
#include <Geom_Ellipse.hxx>
#include <Geom_Hyperbola.hxx>
#include <Geom_Line.hxx>
#include <Geom_OffsetCurve.hxx>
#include <Geom_Parabola.hxx>
#include <Geom_TrimmedCurve.hxx>
#include <Precision.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TColgp_Array1OfPnt2d.hxx>

#include "sdk/step/StepGeometryNesting.h"

namespace cadex::step {

namespace {

// A point beside the curve that it trims, as a part of the curve's reach, outweighs the parameter beside it.
constexpr double TrimTolerance = 1e-2;
constexpr double Pi = 3.14159265358979323846;

TColStd_Array1OfReal KernelReals(const std::vector<double>& values)
{
    TColStd_Array1OfReal result(1, static_cast<int>(values.size()));
    std::copy(values.begin(), values.end(), result.begin());
    return result;
}

TColStd_Array1OfInteger KernelIntegers(const std::vector<int>& values)
{
    TColStd_Array1OfInteger result(1, static_cast<int>(values.size()));
    std::copy(values.begin(), values.end(), result.begin());
    return result;
}

bool ArePositive(const std::vector<double>& weights)
{
    return std::all_of(weights.begin(), weights.end(),
                       [](double w) { return w > 0 && w <= MaximalCoordinate; });
}

// What a spline's record gives, whether simple or complex.
struct SplineData
{
    int degree = 0;
    std::vector<RecordId> poles;
    std::vector<double> weights; // empty when not rational
    std::optional<SplineKnots> knots;
};

SplineData ReadSpline(const StepRecords& records, const StepRecords::Record& record, StepType type)
{
    SplineData data;
    Cursor arguments;
    Cursor knots;
    bool hasKnots = type == StepType::SplineWithKnots;
    if (type == StepType::Complex) {
        bool found = false;
        arguments = records.Part(record, "B_SPLINE_CURVE", found);
        if (!found) {
            throw Unsupported("a curve of an unknown kind", record.id);
        }
        knots = records.Part(record, "B_SPLINE_CURVE_WITH_KNOTS", hasKnots);
        Cursor weights = records.Part(record, "RATIONAL_B_SPLINE_CURVE", found);
        data.weights = found ? ReadReals(weights) : std::vector<double>();
        type = records.HasPart(record, "UNIFORM_CURVE")  ? StepType::SplineUniform
               : records.HasPart(record, "BEZIER_CURVE") ? StepType::SplineBezier
                                                         : StepType::SplineQuasiUniform;
    } else {
        arguments = records.Named(record);
    }
    data.degree = static_cast<int>(std::clamp<std::int64_t>(arguments.Integer(), 0, 1000));
    arguments.References(data.poles);
    Expect(arguments, record);
    const int poles = static_cast<int>(data.poles.size());
    if (hasKnots) {
        if (records.TypeOf(record) != StepType::Complex) {
            arguments.Skip(); // form
            arguments.Skip(); // closed
            arguments.Skip(); // self-intersecting
            knots = arguments;
        }
        std::vector<int> multiplicities = ReadIntegers(knots);
        std::vector<double> values = ReadReals(knots);
        Expect(knots, record);
        data.knots.emplace(std::move(values), std::move(multiplicities), data.degree, poles);
    } else {
        data.knots = SplineKnots::Of(type, data.degree, poles);
    }
    if (!data.weights.empty() && (data.weights.size() != data.poles.size() || !ArePositive(data.weights))) {
        throw Damaged("a spline whose weights do not fit its poles", record.id);
    }
    return data;
}

gp_Pnt2d ReadPoint2d(const StepRecords& records, RecordId id)
{
    const StepRecords::Record& record = records.Get(id, StepType::CartesianPoint);
    Cursor arguments = records.Named(record);
    double c[2] = {0, 0};
    if (!arguments.Reals(c, 2) || !(std::abs(c[0]) <= MaximalCoordinate) ||
        !(std::abs(c[1]) <= MaximalCoordinate)) {
        throw Damaged("coordinates that are no numbers, or out of range", id);
    }
    return {c[0], c[1]};
}

bool IsEndless(const Handle(Geom_Curve) & curve)
{
    return Precision::IsInfinite(curve->FirstParameter()) || Precision::IsInfinite(curve->LastParameter());
}

CurvePiece PieceOf(const Handle(Geom_Curve) & curve, double first, double last)
{
    return {curve, first, last, curve->Value(first), curve->Value(last)};
}

double ParameterOf(const Handle(Geom_Curve) & curve, const gp_Pnt& point)
{
    if (const auto line = Handle(Geom_Line)::DownCast(curve); !line.IsNull()) {
        return ElCLib::Parameter(line->Lin(), point);
    }
    if (const auto circle = Handle(Geom_Circle)::DownCast(curve); !circle.IsNull()) {
        return ElCLib::Parameter(circle->Circ(), point);
    }
    if (const auto ellipse = Handle(Geom_Ellipse)::DownCast(curve); !ellipse.IsNull()) {
        return ElCLib::Parameter(ellipse->Elips(), point);
    }
    const GeomAPI_ProjectPointOnCurve projection(point, curve);
    if (projection.NbPoints() > 0) {
        return projection.LowerDistanceParameter();
    }
    // Beyond an end: the nearer one.
    const double first = curve->FirstParameter();
    const double last = curve->LastParameter();
    return curve->Value(first).SquareDistance(point) < curve->Value(last).SquareDistance(point) ? first
                                                                                                : last;
}

CurvePiece Reversed(const CurvePiece& piece)
{
    if (piece.curve.IsNull()) {
        return {{}, 0, 0, piece.end, piece.start};
    }
    return {piece.curve->Reversed(), piece.curve->ReversedParameter(piece.last),
            piece.curve->ReversedParameter(piece.first), piece.end, piece.start};
}

} // namespace

std::vector<CurvePiece> Reversed(std::vector<CurvePiece> pieces)
{
    std::reverse(pieces.begin(), pieces.end());
    for (CurvePiece& piece : pieces) {
        piece = Reversed(piece);
    }
    return pieces;
}

BasisCurve StepGeometryReader::Curve(RecordId id)
{
    const Nesting nesting(*this, id);
    const StepRecords::Record& record = myRecords.Get(id);
    const StepType type = myRecords.TypeOf(record);
    switch (type) {
    case StepType::Line:
        return Line(record);
    case StepType::Circle:
    case StepType::Ellipse:
    case StepType::Hyperbola:
    case StepType::Parabola:
        return Conic(record, type);
    case StepType::SplineWithKnots:
    case StepType::SplineUniform:
    case StepType::SplineQuasiUniform:
    case StepType::SplineBezier:
        return {Spline(record, type)};
    case StepType::Complex: {
        bool isOnSurface = false;
        Cursor onSurface = myRecords.Part(record, "SURFACE_CURVE", isOnSurface);
        return isOnSurface ? Curve(onSurface.Reference()) : BasisCurve{Spline(record, type)};
    }
    case StepType::SurfaceCurve: {
        Cursor arguments = myRecords.Named(record);
        return Curve(arguments.Reference());
    }
    case StepType::TrimmedCurve: {
        Cursor arguments = myRecords.Named(record);
        BasisCurve basis = Curve(arguments.Reference());
        arguments.Skip();
        arguments.Skip();
        if (!ReadBoolean(arguments)) {
            // NOTE: trimmed against its basis it runs against it.
            const double end = basis.curve->ReversedParameter(0);
            basis.curve = basis.curve->Reversed();
            basis.parameters = {-basis.parameters.scale, end - basis.parameters.shift};
        }
        return basis;
    }
    case StepType::Polyline:
    case StepType::CompositeCurve:
        return {Joined(id)};
    case StepType::OffsetCurve:
        return OffsetCurve(record);
    case StepType::CurveReplica: {
        Cursor arguments = myRecords.Named(record);
        BasisCurve basis = Curve(arguments.Reference());
        const gp_Trsf placement = Operator(arguments.Reference());
        // Lines are parametrised by length.
        if (!Handle(Geom_Line)::DownCast(basis.curve).IsNull()) {
            basis.parameters.scale *= std::abs(placement.ScaleFactor());
        }
        basis.curve = Handle(Geom_Curve)::DownCast(basis.curve->Transformed(placement));
        return basis;
    }
    case StepType::Pcurve:
        return {OfPcurve(record)};
    default:
        throw Unsupported("a curve of an unknown kind, " + myRecords.NameOf(record), id);
    }
}

BasisCurve StepGeometryReader::Line(const StepRecords::Record& record)
{
    Cursor arguments = myRecords.Named(record);
    const gp_Pnt origin = Point(arguments.Reference());
    const gp_Vec vector = Vector(arguments.Reference());
    return {new Geom_Line(origin, gp_Dir(vector)), {vector.Magnitude(), 0}};
}

BasisCurve StepGeometryReader::Conic(const StepRecords::Record& record, StepType type)
{
    Cursor arguments = myRecords.Named(record);
    const gp_Ax2 axes = Placement(arguments.Reference()).Ax2();
    const double first = PositiveLength(arguments, record);
    if (type == StepType::Circle) {
        return {new Geom_Circle(axes, first), {myScale.angle, 0}};
    }
    if (type == StepType::Parabola) {
        // NOTE: C + F (u u x + 2 u y), where the kernel has C + (u u / 4F) x + u y.
        return {new Geom_Parabola(axes, first), {2 * first, 0}};
    }
    const double second = PositiveLength(arguments, record);
    if (type == StepType::Hyperbola) {
        return {new Geom_Hyperbola(axes, first, second)};
    }
    if (first >= second) {
        return {new Geom_Ellipse(axes, first, second), {myScale.angle, 0}};
    }
    // The kernel wants the major axis first: a taller ellipse is the same one turned by a quarter.
    const gp_Ax2 turned(axes.Location(), axes.Direction(), axes.YDirection());
    return {new Geom_Ellipse(turned, second, first), {myScale.angle, -Pi / 2}};
}

Handle(Geom_BSplineCurve) StepGeometryReader::Spline(const StepRecords::Record& record, StepType type)
{
    const SplineData data = ReadSpline(myRecords, record, type);
    TColgp_Array1OfPnt poles(1, static_cast<int>(data.poles.size()));
    for (std::size_t i = 0; i < data.poles.size(); ++i) {
        poles.SetValue(static_cast<int>(i) + 1, Point(data.poles[i]));
    }
    const TColStd_Array1OfReal knots = KernelReals(data.knots->Values());
    const TColStd_Array1OfInteger multiplicities = KernelIntegers(data.knots->Multiplicities());
    if (data.weights.empty()) {
        return new Geom_BSplineCurve(poles, knots, multiplicities, data.degree);
    }
    return new Geom_BSplineCurve(poles, KernelReals(data.weights), knots, multiplicities, data.degree);
}

BasisCurve StepGeometryReader::OffsetCurve(const StepRecords::Record& record)
{
    Cursor arguments = myRecords.Named(record);
    BasisCurve basis = Curve(arguments.Reference());
    const double distance = Length(arguments);
    arguments.Skip();
    const gp_Dir reference = Direction(arguments.Reference());
    Expect(arguments, record);
    if (!(std::abs(distance) <= MaximalCoordinate)) {
        throw Damaged("an offset out of range", record.id);
    }
    // NOTE: the offset goes along reference x tangent; the kernel's along tangent x reference.
    basis.curve = new Geom_OffsetCurve(basis.curve, -distance, reference);
    return basis;
}

std::vector<gp_Pnt> StepGeometryReader::PolylinePoints(const StepRecords::Record& record)
{
    Cursor arguments = myRecords.Named(record);
    const std::vector<RecordId> ids = arguments.References();
    Expect(arguments, record);
    std::vector<gp_Pnt> points;
    for (const RecordId id : ids) {
        const gp_Pnt point = Point(id);
        if (points.empty() || point.SquareDistance(points.back()) > 0) {
            points.push_back(point);
        }
    }
    return points;
}

Handle(Geom_Curve) StepGeometryReader::Joined(RecordId id)
{
    const std::vector<CurvePiece> pieces = Pieces(id);
    const bool isStraight = std::all_of(pieces.begin(), pieces.end(),
                                        [](const CurvePiece& piece) { return piece.curve.IsNull(); });
    if (pieces.empty()) {
        throw Damaged("a curve without points", id);
    }
    if (isStraight && pieces.size() == 1) {
        const gp_Vec way(pieces.front().start, pieces.front().end);
        return new Geom_Line(pieces.front().start, gp_Dir(way));
    }
    if (isStraight) {
        const int count = static_cast<int>(pieces.size()) + 1;
        TColgp_Array1OfPnt poles(1, count);
        TColStd_Array1OfReal knots(1, count);
        TColStd_Array1OfInteger multiplicities(1, count);
        for (int i = 1; i <= count; ++i) {
            poles.SetValue(i, i < count ? pieces[static_cast<std::size_t>(i) - 1].start : pieces.back().end);
            knots.SetValue(i, i - 1);
            multiplicities.SetValue(i, i == 1 || i == count ? 2 : 1);
        }
        return new Geom_BSplineCurve(poles, knots, multiplicities, 1);
    }
    if (pieces.size() == 1) {
        return pieces.front().curve;
    }
    GeomConvert_CompCurveToBSplineCurve whole;
    for (const CurvePiece& piece : pieces) {
        const Handle(Geom_BoundedCurve) bounded =
            piece.curve.IsNull()
                ? new Geom_TrimmedCurve(new Geom_Line(piece.start, gp_Dir(gp_Vec(piece.start, piece.end))), 0,
                                        piece.start.Distance(piece.end))
                : new Geom_TrimmedCurve(piece.curve, piece.first, piece.last);
        if (!whole.Add(bounded, tolerance::JoinedPieces, true)) {
            throw Unsupported("a curve whose pieces do not meet", id);
        }
    }
    return whole.BSplineCurve();
}

std::vector<CurvePiece> StepGeometryReader::Pieces(RecordId id)
{
    const Nesting nesting(*this, id);
    const StepRecords::Record& record = myRecords.Get(id);
    switch (myRecords.TypeOf(record)) {
    case StepType::Polyline: {
        const std::vector<gp_Pnt> points = PolylinePoints(record);
        std::vector<CurvePiece> pieces;
        for (std::size_t i = 0; i + 1 < points.size(); ++i) {
            pieces.push_back({{}, 0, 0, points[i], points[i + 1]});
        }
        return pieces;
    }
    case StepType::TrimmedCurve:
        return TrimmedPieces(record);
    case StepType::CompositeCurve: {
        std::vector<CurvePiece> pieces;
        AppendSegments(record, pieces);
        return pieces;
    }
    case StepType::SurfaceCurve: {
        Cursor arguments = myRecords.Named(record);
        return Pieces(arguments.Reference());
    }
    case StepType::EdgeCurve: {
        Cursor arguments = myRecords.Named(record);
        arguments.Skip();
        arguments.Skip();
        return Pieces(arguments.Reference());
    }
    default:
        break;
    }
    const Handle(Geom_Curve) curve = Curve(id).curve;
    if (IsEndless(curve)) {
        throw Unsupported("a curve without ends", id);
    }
    return {PieceOf(curve, curve->FirstParameter(), curve->LastParameter())};
}

// TRIMMED_CURVE: name, basis, first trims, second trims, sense, preferred kind of trim.
std::vector<CurvePiece> StepGeometryReader::TrimmedPieces(const StepRecords::Record& record)
{
    Cursor arguments = myRecords.Named(record);
    const BasisCurve basis = Curve(arguments.Reference());
    struct Trim
    {
        std::optional<double> parameter;
        std::optional<gp_Pnt> point;
    };
    Trim trims[2];
    for (Trim& trim : trims) {
        if (!arguments.EnterList()) {
            continue;
        }
        while (arguments.More() && !arguments.Failed()) {
            if (arguments.Next() == Cursor::Kind::Reference) {
                trim.point = Point(arguments.Reference());
            } else {
                const bool typed = !arguments.EnterTyped().empty();
                trim.parameter = arguments.Real();
                if (typed) {
                    arguments.Leave();
                }
            }
        }
        arguments.Leave();
    }
    const bool forward = ReadBoolean(arguments);
    const bool byPoint = arguments.Enumerator() == "CARTESIAN";
    Expect(arguments, record);
    const auto place = [&](const Trim& trim) {
        if (!trim.parameter && !trim.point) {
            throw Damaged("a trimmed curve without a trim", record.id);
        }
        if (!trim.parameter || (byPoint && trim.point)) {
            return ParameterOf(basis.curve, *trim.point);
        }
        const double parameter = basis.parameters(*trim.parameter);
        if (!(std::abs(parameter) <= MaximalCoordinate)) {
            throw Damaged("a trim out of range", record.id);
        }
        if (trim.point) {
            // Angles in another unit than the context says are common.
            const double reach = basis.curve->Value(0).Distance(*trim.point);
            if (basis.curve->Value(parameter).Distance(*trim.point) > TrimTolerance * std::max(reach, 1e-3)) {
                return ParameterOf(basis.curve, *trim.point);
            }
        }
        return parameter;
    };
    double first = place(trims[0]);
    double last = place(trims[1]);
    if (!forward) {
        std::swap(first, last);
    }
    if (basis.curve->IsPeriodic()) {
        const double period = basis.curve->Period();
        const double turns = std::floor((last - first) / period);
        last -= turns * period;
        if (last - first <= Precision::PConfusion() * period) {
            last += period;
        }
    } else if (!IsEndless(basis.curve)) {
        first = std::clamp(first, basis.curve->FirstParameter(), basis.curve->LastParameter());
        last = std::clamp(last, basis.curve->FirstParameter(), basis.curve->LastParameter());
        if (basis.curve->IsClosed() && last <= first) {
            // Over the joint.
            std::vector<CurvePiece> pieces;
            if (first < basis.curve->LastParameter()) {
                pieces.push_back(PieceOf(basis.curve, first, basis.curve->LastParameter()));
            }
            if (last > basis.curve->FirstParameter()) {
                pieces.push_back(PieceOf(basis.curve, basis.curve->FirstParameter(), last));
            }
            return forward ? pieces : Reversed(std::move(pieces));
        }
    }
    if (last < first) {
        std::swap(first, last);
    }
    if (last - first <= 0) {
        throw Unsupported("a trimmed curve without length", record.id);
    }
    std::vector<CurvePiece> pieces = {PieceOf(basis.curve, first, last)};
    if (!Handle(Geom_Line)::DownCast(basis.curve).IsNull()) {
        pieces.front().curve.Nullify();
        pieces.front().first = pieces.front().last = 0;
    }
    return forward ? pieces : Reversed(std::move(pieces));
}

// COMPOSITE_CURVE_SEGMENT: transition, same sense, parent curve.
void StepGeometryReader::AppendSegments(const StepRecords::Record& record, std::vector<CurvePiece>& pieces)
{
    Cursor arguments = myRecords.Named(record);
    const std::vector<RecordId> segments = arguments.References();
    Expect(arguments, record);
    for (const RecordId id : segments) {
        CountStep();
        const StepRecords::Record& segment = myRecords.Get(id, StepType::CompositeSegment);
        Cursor cursor = myRecords.Named(segment);
        const bool forward = ReadBoolean(cursor);
        std::vector<CurvePiece> own = Pieces(cursor.Reference());
        Expect(cursor, segment);
        if (!forward) {
            own = Reversed(std::move(own));
        }
        pieces.insert(pieces.end(), own.begin(), own.end());
    }
}

// PCURVE: name, basis surface, definitional representation of one curve.
Handle(Geom2d_Curve) StepGeometryReader::Curve2d(const StepRecords::Record& pcurve)
{
    Cursor arguments = myRecords.Named(pcurve);
    arguments.Skip();
    Cursor definition = myRecords.Named(myRecords.Get(arguments.Reference()));
    const std::vector<RecordId> items = definition.References();
    if (items.empty()) {
        throw Damaged("a curve on a surface without the curve", pcurve.id);
    }
    const StepRecords::Record& record = myRecords.Get(items.front());
    const StepType type = myRecords.TypeOf(record);
    switch (type) {
    case StepType::Line: {
        Cursor line = myRecords.Named(record);
        const gp_Pnt2d origin = ReadPoint2d(myRecords, line.Reference());
        const StepRecords::Record& vector = myRecords.Get(line.Reference(), StepType::Vector);
        Cursor cursor = myRecords.Named(vector);
        const StepRecords::Record& direction = myRecords.Get(cursor.Reference(), StepType::Direction);
        Cursor components = myRecords.Named(direction);
        double d[2] = {0, 0};
        if (!components.Reals(d, 2) || !(std::hypot(d[0], d[1]) > gp::Resolution())) {
            throw Damaged("a direction without length", direction.id);
        }
        return new Geom2d_Line(origin, gp_Dir2d(d[0], d[1]));
    }
    case StepType::SplineWithKnots:
    case StepType::SplineUniform:
    case StepType::SplineQuasiUniform:
    case StepType::SplineBezier:
    case StepType::Complex: {
        const SplineData data = ReadSpline(myRecords, record, type);
        TColgp_Array1OfPnt2d poles(1, static_cast<int>(data.poles.size()));
        for (std::size_t i = 0; i < data.poles.size(); ++i) {
            poles.SetValue(static_cast<int>(i) + 1, ReadPoint2d(myRecords, data.poles[i]));
        }
        const TColStd_Array1OfReal knots = KernelReals(data.knots->Values());
        const TColStd_Array1OfInteger multiplicities = KernelIntegers(data.knots->Multiplicities());
        if (data.weights.empty()) {
            return new Geom2d_BSplineCurve(poles, knots, multiplicities, data.degree);
        }
        return new Geom2d_BSplineCurve(poles, KernelReals(data.weights), knots, multiplicities, data.degree);
    }
    default:
        throw Unsupported("a curve on a surface of an unknown kind, " + myRecords.NameOf(record), record.id);
    }
}

Handle(Geom2d_Curve) StepGeometryReader::CurveOnSurface(RecordId pcurve, const BasisSurface& surface)
{
    const Handle(Geom2d_BSplineCurve) spline =
        Handle(Geom2d_BSplineCurve)::DownCast(Curve2d(myRecords.Get(pcurve)));
    for (int i = 1; !spline.IsNull() && i <= spline->NbPoles(); ++i) {
        const gp_Pnt2d pole = spline->Pole(i);
        spline->SetPole(i, gp_Pnt2d(surface.u(pole.X()), surface.v(pole.Y())));
    }
    return Handle(Geom2d_Curve)(spline);
}

Handle(Geom_Curve) StepGeometryReader::OfPcurve(const StepRecords::Record& record)
{
    constexpr double Tolerance = 1e-5;
    constexpr int Segments = 200;
    constexpr int Degree = 8;
    Cursor arguments = myRecords.Named(record);
    const BasisSurface surface = Surface(arguments.Reference());
    const Handle(Geom2d_Curve) curve = CurveOnSurface(record.id, surface);
    if (curve.IsNull()) {
        throw Unsupported("a curve that is given on its surface alone", record.id);
    }
    const Handle(Adaptor3d_CurveOnSurface) onSurface = new Adaptor3d_CurveOnSurface(
        new Geom2dAdaptor_Curve(curve), new GeomAdaptor_Surface(surface.surface));
    const Approx_Curve3d approximation(onSurface, Tolerance, GeomAbs_C1, Segments, Degree);
    if (!approximation.HasResult()) {
        throw Unsupported("a curve that is given on its surface alone", record.id);
    }
    return approximation.Curve();
}

} // namespace cadex::step
