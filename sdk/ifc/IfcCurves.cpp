#include "sdk/ifc/IfcCurves.h"

#include "sdk/ifc/IfcAlignment.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <Geom_BSplineCurve.hxx>
#include <Geom_BezierCurve.hxx>
#include <Geom_Circle.hxx>
#include <Geom_Ellipse.hxx>
#include <Geom_Line.hxx>
#include <Geom_OffsetCurve.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <gp_Circ.hxx>
#include <gp_Elips.hxx>

namespace cadex::ifc {
namespace {

constexpr double Turn = 2 * M_PI;

Piece Along(const Handle(Geom_Curve) & curve, double first, double last, double factor = 1)
{
    return {curve->Value(first).XYZ(), curve->Value(last).XYZ(), curve, first, last, (last - first) / factor};
}

/// Conics and lines before trimming: the curve, how file parameters become its own, and whether it is
/// periodic.
struct Basis
{
    Handle(Geom_Curve) curve;
    double factor = 1;
    double shift = 0;
    bool periodic = false;
};

Basis EllipseBasis(const Affine& frame, double semiX, double semiY)
{
    // The kernel wants the major axis first: a taller ellipse is the same one turned by a quarter.
    const bool tall = semiX < semiY;
    return {Ellipse(frame, semiX, semiY).front().curve, 1, tall ? -M_PI / 2 : 0, true};
}

std::vector<gp_XYZ> Points(Context& context, const std::vector<Id>& ids)
{
    context.Steps(ids.size() + 1);
    std::vector<gp_XYZ> points;
    points.reserve(ids.size());
    for (Id id : ids) {
        points.push_back(context.Point(context.file.Get(id)));
    }
    return points;
}

Handle(Geom_Curve) ReadBSpline(Context& context, const Entity& entity)
{
    const int degree = static_cast<int>(entity.Integer(0));
    const std::vector<gp_XYZ> points = Points(context, entity.Refs(1));
    const bool bezier = entity.Is(Type::IfcBezierCurve) || entity.Is(Type::IfcRationalBezierCurve);
    const bool rational =
        entity.Is(Type::IfcRationalBezierCurve) || entity.Is(Type::IfcRationalBSplineCurveWithKnots);
    const int count = static_cast<int>(points.size());
    if (degree < 1 || degree > Geom_BSplineCurve::MaxDegree() || count < degree + 1) {
        throw Unbuildable("a spline without enough poles");
    }
    TColgp_Array1OfPnt poles(1, count);
    TColStd_Array1OfReal weights(1, count);
    const std::vector<double> given = rational ? entity.Reals(bezier ? 5 : 8) : std::vector<double>();
    for (int i = 0; i < count; ++i) {
        const auto at = static_cast<std::size_t>(i);
        poles.SetValue(i + 1, gp_Pnt(points[at]));
        weights.SetValue(i + 1, at < given.size() && given[at] > 0 ? given[at] : 1);
    }
    if (bezier && count == degree + 1) {
        return new Geom_BezierCurve(poles, weights);
    }
    if (bezier) {
        throw Unbuildable("a Bezier curve of several arcs");
    }
    const Knots knots(entity.Reals(5), entity.Reals(6), degree, count);
    return new Geom_BSplineCurve(poles, weights, knots.values, knots.multiplicities, degree);
}

Basis ReadBasis(Context& context, const Entity& curve)
{
    switch (curve.Type()) {
    case Type::IfcLine: {
        const Entity vector = curve.Ref(1);
        const gp_XYZ direction = context.Direction(vector.Ref(0), gp_XYZ());
        const double length = context.Length(vector, 1, context.toMillimetres);
        if (direction.Modulus() == 0 || !(length > 0)) {
            throw Unbuildable("a line without direction");
        }
        return {new Geom_Line(gp_Pnt(context.Point(curve.Ref(0))), gp_Dir(direction)), length, 0, false};
    }
    case Type::IfcCircle: {
        const gp_Ax2 axes = ToAxes(context.Placement(curve.Ref(0))).Ax2();
        return {new Geom_Circle(axes, context.PositiveLength(curve, 1)), context.toRadians, 0, true};
    }
    case Type::IfcEllipse: {
        Basis basis = EllipseBasis(context.Placement(curve.Ref(0)), context.PositiveLength(curve, 1),
                                   context.PositiveLength(curve, 2));
        basis.factor = context.toRadians;
        return basis;
    }
    case Type::IfcBezierCurve:
    case Type::IfcRationalBezierCurve:
    case Type::IfcBSplineCurveWithKnots:
    case Type::IfcRationalBSplineCurveWithKnots:
        return {ReadBSpline(context, curve), 1, 0, false};
    default:
        return {};
    }
}

/// The parameter at which a trim cuts: by value or by point, as the curve prefers.
double TrimParameter(const Context& context, const Basis& basis, std::string_view trims, bool preferPoint)
{
    double parameter = 0;
    bool hasParameter = false;
    Entity point;
    ListReader list(trims);
    for (std::string_view item; list.Next(item);) {
        if (item.front() == '#') {
            point = context.file.Get(ReadReference(item));
        } else {
            hasParameter = ReadNumber(item, parameter);
        }
    }
    if (hasParameter && !(preferPoint && point)) {
        return parameter * basis.factor + basis.shift;
    }
    if (!point) {
        throw Unbuildable("a trim without a place");
    }
    return NearestParameter({{}, {}, basis.curve, 0, 0}, context.Point(point));
}

Path TrimConicOrLine(const Context& context, const Entity& trimmed, const Basis& basis)
{
    const bool preferPoint = trimmed.Enumeration(4) == "CARTESIAN";
    const double first = TrimParameter(context, basis, trimmed.Raw(1), preferPoint);
    double last = TrimParameter(context, basis, trimmed.Raw(2), preferPoint);
    const bool forward = trimmed.Boolean(3, true);
    if (!basis.periodic) {
        if (first == last) {
            throw Unbuildable("a trimmed curve without length");
        }
        return first < last ? Path{Along(basis.curve, first, last, basis.factor)}
                            : Reversed({Along(basis.curve, last, first, basis.factor)});
    }
    if (!forward) {
        // from the first trim against the curve's own sense to the second
        double from = last;
        const double to = first;
        from -= std::floor((from - to) / Turn) * Turn;
        from = to - from <= 1e-9 ? from - Turn : from;
        from = from > to ? from - Turn : from;
        return Reversed({Along(basis.curve, from, to, basis.factor)});
    }
    last -= std::floor((last - first) / Turn) * Turn;
    last = last - first <= 1e-9 ? last + Turn : last;
    return {Along(basis.curve, first, last, basis.factor)};
}

Path ReadPolyline(Context& context, const Entity& curve)
{
    return OpenPolygon(Points(context, curve.Refs(0)));
}

Path ReadIndexedPolyCurve(Context& context, const Entity& curve)
{
    const Entity list = curve.Ref(0);
    const std::size_t width = list.Is(Type::IfcCartesianPointList2D) ? 2 : 3;
    const std::vector<double> numbers = list.Reals(0);
    context.Steps(numbers.size() + 1);
    const auto point = [&](double index) {
        const auto at = static_cast<std::size_t>(index >= 1 ? index - 1 : 1e15) * width;
        if (at + width > numbers.size()) {
            throw Unbuildable("an index outside the points");
        }
        return gp_XYZ(numbers[at], numbers[at + 1], width == 3 ? numbers[at + 2] : 0) * context.toMillimetres;
    };
    Path path;
    if (!curve.IsSet(1)) {
        for (std::size_t i = 1; i < numbers.size() / width; ++i) {
            path.push_back(Straight(point(static_cast<double>(i)), point(static_cast<double>(i + 1))));
        }
        return path;
    }
    ListReader segments(curve.Raw(1));
    for (std::string_view item; segments.Next(item);) {
        const TypedValue segment = ReadTyped(item);
        std::vector<double> indices;
        ReadNumbers(segment.value, indices);
        if (segment.type == "IFCARCINDEX" && indices.size() == 3) {
            path.push_back(Arc(point(indices[0]), point(indices[1]), point(indices[2])));
            continue;
        }
        for (std::size_t i = 1; i < indices.size(); ++i) {
            path.push_back(Straight(point(indices[i - 1]), point(indices[i])));
        }
    }
    return path;
}

double SpanOf(const Path& path)
{
    return std::accumulate(path.begin(), path.end(), 0.0,
                           [](double sum, const Piece& piece) { return sum + piece.span; });
}

Path ReadCompositeCurve(Context& context, const Entity& curve)
{
    Path path;
    for (Id id : curve.Refs(0)) {
        const Entity segment = context.file.Get(id);
        Path part = ReadCurve(context, segment.Ref(2));
        if (!segment.Boolean(1, true)) {
            part = Reversed(part);
        }
        if (segment.Is(Type::IfcReparametrisedCompositeCurveSegment) && segment.Real(3) > 0) {
            const double factor = segment.Real(3) / SpanOf(part);
            std::for_each(part.begin(), part.end(), [factor](Piece& piece) { piece.span *= factor; });
        }
        context.Steps(part.size());
        path.insert(path.end(), part.begin(), part.end());
    }
    return path;
}

Path ReadTrimmedCurve(Context& context, const Entity& trimmed)
{
    const Entity basis = trimmed.Ref(0);
    const Basis conicOrLine = ReadBasis(context, basis);
    if (!conicOrLine.curve.IsNull()) {
        return TrimConicOrLine(context, trimmed, conicOrLine);
    }
    Path path = ReadCurve(context, basis);
    double first = 0;
    double last = 0;
    ListReader trim1(trimmed.Raw(1));
    ListReader trim2(trimmed.Raw(2));
    std::string_view item1;
    std::string_view item2;
    if (trim1.Next(item1) && trim2.Next(item2) && ReadNumber(item1, first) && ReadNumber(item2, last)) {
        const Path part = Stretch(path, std::min(first, last), std::max(first, last));
        path = part.empty() ? path : part;
    }
    return trimmed.Boolean(3, true) ? path : Reversed(path);
}

Path ReadOffsetCurve(Context& context, const Entity& curve)
{
    // (BasisCurve, Distance, SelfIntersect [, RefDirection]): to the left of the curve in 2D
    const Path basis = ReadCurve(context, curve.Ref(0));
    const bool flat = curve.Is(Type::IfcOffsetCurve2D);
    const gp_XYZ normal = flat ? gp_XYZ(0, 0, 1) : context.Direction(curve.Ref(3), gp_XYZ(0, 0, 1));
    if (basis.size() != 1) {
        throw Unbuildable("an offset of a curve of several pieces");
    }
    const double distance = context.Length(curve, 1);
    const Piece& piece = basis.front();
    if (piece.curve.IsNull()) {
        const gp_XYZ aside = normal.Crossed(Unit(piece.end - piece.start, gp_XYZ(1, 0, 0))) * distance;
        return {Straight(piece.start + aside, piece.end + aside)};
    }
    const Handle(Geom_Curve) offset = new Geom_OffsetCurve(piece.curve, -distance, gp_Dir(normal));
    return {Along(offset, piece.first, piece.last)};
}

int& CurveDepth()
{
    thread_local int depth = 0;
    return depth;
}

} // namespace

Knots::Knots(const std::vector<double>& counts, const std::vector<double>& knots, int degree, int poles)
    : values(1, std::max<int>(1, static_cast<int>(knots.size()))),
      multiplicities(1, std::max<int>(1, static_cast<int>(knots.size())))
{
    int sum = 0;
    bool good = counts.size() == knots.size() && knots.size() >= 2;
    for (std::size_t i = 0; good && i < knots.size(); ++i) {
        const int count = counts[i] >= 1 && counts[i] <= degree + 1 ? static_cast<int>(counts[i]) : 0;
        good = count > 0 && (i == 0 || knots[i] > knots[i - 1]);
        sum += count;
        values.SetValue(static_cast<int>(i) + 1, knots[i]);
        multiplicities.SetValue(static_cast<int>(i) + 1, count);
    }
    if (!good || sum != poles + degree + 1) {
        throw Unbuildable("knots that do not fit the poles");
    }
}

namespace {

/// The file's parameter at the start of a curve: a trimmed curve counts as its basis does, a spline by its
/// knots.
double FirstParameter(const Entity& curve)
{
    switch (curve.Type()) {
    case Type::IfcTrimmedCurve: {
        double parameter = 0;
        ListReader trims(curve.Raw(1));
        for (std::string_view item; curve.Boolean(3, true) && trims.Next(item);) {
            if (item.front() != '#' && ReadNumber(item, parameter)) {
                return parameter;
            }
        }
        return 0;
    }
    case Type::IfcBSplineCurveWithKnots:
    case Type::IfcRationalBSplineCurveWithKnots: {
        const std::vector<double> knots = curve.Reals(6);
        return knots.empty() ? 0 : knots.front();
    }
    default:
        return 0;
    }
}

} // namespace

Path ReadDirectrix(Context& context, const Entity& curve, const Entity& sweep, std::size_t startParam)
{
    const bool starts = sweep.IsSet(startParam);
    const bool ends = sweep.IsSet(startParam + 1);
    if (curve.Is(Type::IfcLine) && starts && ends) {
        const Basis line = ReadBasis(context, curve);
        const double from = sweep.Real(startParam) * line.factor;
        const double to = sweep.Real(startParam + 1) * line.factor;
        if (!(from < to)) {
            throw Unbuildable("a sweep along nothing");
        }
        return {Straight(line.curve->Value(from).XYZ(), line.curve->Value(to).XYZ())};
    }
    Path path = ReadCurve(context, curve);
    if ((!starts && !ends) || path.empty()) {
        return path;
    }
    const std::string_view type = ReadTyped(sweep.Raw(starts ? startParam : startParam + 1)).type;
    const bool lengths = type == "IFCLENGTHMEASURE" || type == "IFCNONNEGATIVELENGTHMEASURE";
    Path counted = path;
    for (Piece& piece : counted) {
        piece.span = lengths ? LengthOf(piece) : piece.span;
    }
    const double factor = lengths ? context.toMillimetres : 1;
    const double shift = lengths ? 0 : FirstParameter(curve);
    const double whole = SpanOf(counted);
    const double from = starts ? sweep.Real(startParam) * factor - shift : 0;
    const double to = ends ? sweep.Real(startParam + 1) * factor - shift : whole;
    Path stretch = Stretch(counted, from, to);
    if (to < from && IsClosed(context, path)) {
        // round the start of a closed curve
        stretch = Stretch(counted, from, whole);
        const Path rest = Stretch(counted, 0, to);
        stretch.insert(stretch.end(), rest.begin(), rest.end());
    }
    if (stretch.empty()) {
        context.Report(Report::Kind::Repaired, "a sweep between parameters off its curve takes all of it");
        return path;
    }
    return stretch;
}

Path ReadCurve(Context& context, const Entity& curve)
{
    const Nesting nesting(CurveDepth());
    context.Step();
    if (IsAlignment(context, curve)) {
        return ReadAlignment(context, curve);
    }
    switch (curve.Type()) {
    case Type::IfcPolyline:
        return ReadPolyline(context, curve);
    case Type::IfcIndexedPolyCurve:
        return ReadIndexedPolyCurve(context, curve);
    case Type::IfcCompositeCurve:
    case Type::IfcCompositeCurveOnSurface:
    case Type::IfcBoundaryCurve:
    case Type::IfcOuterBoundaryCurve:
    case Type::Ifc2DCompositeCurve:
        return ReadCompositeCurve(context, curve);
    case Type::IfcTrimmedCurve:
        return ReadTrimmedCurve(context, curve);
    case Type::IfcOffsetCurve2D:
    case Type::IfcOffsetCurve3D:
        return ReadOffsetCurve(context, curve);
    case Type::IfcSurfaceCurve:
    case Type::IfcSeamCurve:
    case Type::IfcIntersectionCurve:
        return ReadCurve(context, curve.Ref(0));
    default:
        break;
    }
    const Basis basis = ReadBasis(context, curve);
    if (basis.curve.IsNull() || curve.Is(Type::IfcLine)) {
        throw Unbuildable("a curve without ends or of an unknown kind");
    }
    return {Along(basis.curve, basis.curve->FirstParameter(), basis.curve->LastParameter(), basis.factor)};
}

} // namespace cadex::ifc
