// Runs of pieces: polygons with rounded corners, reversing, moving, sampling, and the wire in the end.
#include <algorithm>
#include <cmath>

#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <GeomAPI_ProjectPointOnCurve.hxx>
#include <GeomAdaptor_Curve.hxx>
#include <Geom_Circle.hxx>
#include <Geom_Ellipse.hxx>
#include <Geom_Line.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Vertex.hxx>

#include "sdk/ifc/IfcCurves.h"
#include "sdk/mesh/EngineTolerances.h"

namespace cadex::ifc {
namespace {

Piece Along(const Handle(Geom_Curve) & curve, double first, double last)
{
    return {curve->Value(first).XYZ(), curve->Value(last).XYZ(), curve, first, last};
}

} // namespace

Piece Straight(const gp_XYZ& start, const gp_XYZ& end)
{
    return {start, end, {}, 0, 0};
}

Piece Arc(const gp_XYZ& start, const gp_XYZ& middle, const gp_XYZ& end)
{
    const gp_XYZ a = middle - start;
    const gp_XYZ b = end - start;
    const gp_XYZ normal = a.Crossed(b);
    const double square = normal.SquareModulus();
    if (square <= 1e-16 * a.SquareModulus() * b.SquareModulus() || square == 0) {
        return Straight(start, end);
    }
    // circumcentre of the three points, relative to the start
    const gp_XYZ toCentre =
        (normal.Crossed(a) * b.SquareModulus() + b.Crossed(normal) * a.SquareModulus()) / (2 * square);
    const gp_XYZ centre = start + toCentre;
    const gp_Ax2 axes(gp_Pnt(centre), gp_Dir(normal), gp_Dir(toCentre.Reversed()));
    const gp_XYZ toEnd = end - centre;
    double last = std::atan2(toEnd.Dot(axes.YDirection().XYZ()), toEnd.Dot(axes.XDirection().XYZ()));
    last = last <= 0 ? last + 2 * M_PI : last;
    return {start, end, new Geom_Circle(axes, toCentre.Modulus()), 0, last};
}

Path Circle(const Affine& frame, double radius)
{
    return {Along(new Geom_Circle(ToAxes(frame).Ax2(), radius), 0, 2 * M_PI)};
}

Path Ellipse(const Affine& frame, double semiX, double semiY)
{
    if (semiX >= semiY) {
        return {Along(new Geom_Ellipse(ToAxes(frame).Ax2(), semiX, semiY), 0, 2 * M_PI)};
    }
    // the kernel wants the major axis first
    const gp_Ax2 axes(gp_Pnt(Origin(frame)), gp_Dir(Column(frame, 3)), gp_Dir(Column(frame, 2)));
    return {Along(new Geom_Ellipse(axes, semiY, semiX), 0, 2 * M_PI)};
}

namespace {

/// Appends the way to a rounded corner and its arc; `from` is where the path has got to.
void RoundCorner(Path& path, gp_XYZ& from, const gp_XYZ& before, const gp_XYZ& corner, const gp_XYZ& after,
                 double radius)
{
    const gp_XYZ in = before - corner;
    const gp_XYZ out = after - corner;
    const gp_XYZ inUnit = Unit(in, gp_XYZ());
    const gp_XYZ outUnit = Unit(out, gp_XYZ());
    const double half = std::acos(std::clamp(inUnit.Dot(outUnit), -1.0, 1.0)) / 2;
    const bool bends = half > 1e-6 && half < M_PI / 2 - 1e-6;
    double cut = bends ? radius / std::tan(half) : 0;
    cut = std::min({cut, in.Modulus(), out.Modulus()});
    if (!(radius > 0) || !(cut > 0)) {
        path.push_back(Straight(from, corner));
        from = corner;
        return;
    }
    const double fitting = cut * std::tan(half);
    const gp_XYZ bisector = Unit(inUnit + outUnit, gp_XYZ());
    const gp_XYZ arcStart = corner + inUnit * cut;
    const gp_XYZ arcEnd = corner + outUnit * cut;
    const gp_XYZ middle = corner + bisector * (fitting / std::sin(half) - fitting);
    path.push_back(Straight(from, arcStart));
    path.push_back(Arc(arcStart, middle, arcEnd));
    from = arcEnd;
}

} // namespace

Path Polygon(const std::vector<gp_XYZ>& corners, const std::vector<double>& radii)
{
    const std::size_t count = corners.size();
    if (count < 3) {
        throw Unbuildable("a polygon of two points");
    }
    Path path;
    gp_XYZ from = corners.front();
    for (std::size_t i = 0; i < count; ++i) {
        RoundCorner(path, from, corners[(i + count - 1) % count], corners[i], corners[(i + 1) % count],
                    i < radii.size() ? radii[i] : 0);
    }
    path.front().start = path.back().end; // the first way starts where the last corner ended
    return path;
}

Path OpenPolygon(const std::vector<gp_XYZ>& points, double radius)
{
    Path path;
    path.reserve(points.size());
    gp_XYZ from = points.empty() ? gp_XYZ() : points.front();
    for (std::size_t i = 1; i < points.size(); ++i) {
        const bool last = i + 1 == points.size();
        RoundCorner(path, from, points[i - 1], points[i], points[last ? i : i + 1], last ? 0 : radius);
    }
    return path;
}

double NearestParameter(const Piece& piece, const gp_XYZ& point)
{
    GeomAPI_ProjectPointOnCurve projection(gp_Pnt(point), piece.curve);
    if (projection.NbPoints() == 0) {
        throw Unbuildable("a point off its curve");
    }
    return projection.LowerDistanceParameter();
}

Path Reversed(const Path& path)
{
    Path result;
    result.reserve(path.size());
    for (const Piece& piece : path) {
        Piece back{piece.end, piece.start, piece.curve, piece.first, piece.last, piece.span};
        if (!piece.curve.IsNull()) {
            back.curve = piece.curve->Reversed();
            back.first = piece.curve->ReversedParameter(piece.last);
            back.last = piece.curve->ReversedParameter(piece.first);
        }
        result.push_back(back);
    }
    std::reverse(result.begin(), result.end());
    return result;
}

Path Stretch(const Path& path, double from, double to)
{
    Path result;
    double at = 0;
    for (const Piece& piece : path) {
        const double low = std::clamp((from - at) / piece.span, 0.0, 1.0);
        const double high = std::clamp((to - at) / piece.span, 0.0, 1.0);
        at += piece.span;
        if (!(high - low > 1e-9)) {
            continue;
        }
        Piece part = piece;
        part.span = piece.span * (high - low);
        if (piece.curve.IsNull()) {
            part.start = piece.start + (piece.end - piece.start) * low;
            part.end = piece.start + (piece.end - piece.start) * high;
        } else {
            const double range = piece.last - piece.first;
            part.first = low > 0 ? piece.first + range * low : piece.first;
            part.last = high < 1 ? piece.first + range * high : piece.last;
            part.start = low > 0 ? piece.curve->Value(part.first).XYZ() : piece.start;
            part.end = high < 1 ? piece.curve->Value(part.last).XYZ() : piece.end;
        }
        result.push_back(part);
    }
    return result;
}

double LengthOf(const Piece& piece)
{
    return piece.curve.IsNull()
               ? (piece.end - piece.start).Modulus()
               : GCPnts_AbscissaPoint::Length(GeomAdaptor_Curve(piece.curve, piece.first, piece.last));
}

Path Moved(const Path& path, const Affine& placement)
{
    if (IsIdentity(placement)) {
        return path;
    }
    Path result;
    result.reserve(path.size());
    const bool similar = IsMovement(placement);
    for (const Piece& piece : path) {
        Piece moved = piece;
        moved.start = Apply(placement, piece.start);
        moved.end = Apply(placement, piece.end);
        moved.curve.Nullify();
        if (!piece.curve.IsNull() && similar) {
            const gp_Trsf trsf = ToTrsf(placement);
            moved.curve = Handle(Geom_Curve)::DownCast(piece.curve->Transformed(trsf));
            moved.first = piece.curve->TransformedParameter(piece.first, trsf);
            moved.last = piece.curve->TransformedParameter(piece.last, trsf);
            result.push_back(moved);
        } else if (!piece.curve.IsNull()) {
            // No kernel curve survives an uneven scale or a mirror in general: many short chords stand for
            // it.
            const std::vector<gp_XYZ> points = Sampled({piece}, 0.05);
            for (std::size_t i = 1; i < points.size(); ++i) {
                result.push_back(Straight(Apply(placement, points[i - 1]), Apply(placement, points[i])));
            }
        } else {
            result.push_back(moved);
        }
    }
    return result;
}

bool IsStraight(const Path& path)
{
    return std::all_of(path.begin(), path.end(), [](const Piece& piece) { return piece.curve.IsNull(); });
}

bool IsClosed(const Context& context, const Path& path)
{
    return !path.empty() && (path.front().start - path.back().end).Modulus() <= context.precision;
}

double SignedArea(const Path& path)
{
    const std::vector<gp_XYZ> points = Sampled(path);
    double area = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const gp_XYZ& a = points[i];
        const gp_XYZ& b = points[(i + 1) % points.size()];
        area += a.X() * b.Y() - a.Y() * b.X();
    }
    return area;
}

std::vector<gp_XYZ> Sampled(const Path& path, double angle)
{
    std::vector<gp_XYZ> points;
    for (const Piece& piece : path) {
        if (points.empty() || (points.back() - piece.start).Modulus() > 0) {
            points.push_back(piece.start);
        }
        if (!piece.curve.IsNull()) {
            const bool round = piece.curve->IsPeriodic();
            const int spans = round ? static_cast<int>(std::ceil((piece.last - piece.first) / angle))
                                    : static_cast<int>(8 / std::max(angle, 0.01));
            for (int i = 1; i < std::clamp(spans, 2, 1000); ++i) {
                const double t = static_cast<double>(i) / std::clamp(spans, 2, 1000);
                points.push_back(piece.curve->Value(piece.first + (piece.last - piece.first) * t).XYZ());
            }
        }
        points.push_back(piece.end);
    }
    return points;
}

std::vector<gp_XYZ> Corners(const Context& context, const Path& path, double angle)
{
    std::vector<gp_XYZ> corners;
    for (const gp_XYZ& point : Sampled(path, angle)) {
        if (corners.empty() || (corners.back() - point).Modulus() > context.precision) {
            corners.push_back(point);
        }
    }
    while (corners.size() > 1 && (corners.front() - corners.back()).Modulus() <= context.precision) {
        corners.pop_back();
    }
    if (corners.size() < 3) {
        throw Unbuildable("an outline of two points");
    }
    return corners;
}

namespace {

/// Built by hand: the kernel's own maker refuses ends that are a hair off the curve.
TopoDS_Edge EdgeOf(const Piece& piece, const TopoDS_Vertex& from, const TopoDS_Vertex& to, double tolerance)
{
    Handle(Geom_Curve) curve = piece.curve;
    double first = piece.first;
    double last = piece.last;
    if (curve.IsNull()) {
        const gp_Pnt start = BRep_Tool::Pnt(from);
        const gp_Pnt end = BRep_Tool::Pnt(to);
        first = 0;
        last = start.Distance(end);
        curve = new Geom_Line(start, gp_Dir(end.XYZ() - start.XYZ()));
    }
    const BRep_Builder builder;
    TopoDS_Edge edge;
    builder.MakeEdge(edge, curve, tolerance);
    builder.Add(edge, from.Oriented(TopAbs_FORWARD));
    builder.Add(edge, to.Oriented(TopAbs_REVERSED));
    builder.Range(edge, first, last);
    return edge;
}

/// The path without gaps and without pieces that are too short to be edges.
Path Joined(const Path& path, double join, bool close)
{
    Path whole;
    whole.reserve(path.size() + 1);
    for (const Piece& piece : path) {
        if (!whole.empty() && (piece.start - whole.back().end).Modulus() > join) {
            whole.push_back(Straight(whole.back().end, piece.start));
        }
        const bool point = piece.curve.IsNull() && (piece.end - piece.start).Modulus() <= join;
        if (!point) {
            whole.push_back(piece);
        }
    }
    if (close && !whole.empty() && (whole.front().start - whole.back().end).Modulus() > join) {
        whole.push_back(Straight(whole.back().end, whole.front().start));
    }
    if (whole.empty()) {
        throw Unbuildable("a curve without length");
    }
    return whole;
}

} // namespace

TopoDS_Wire WireOf(const Context& context, const Path& path, bool close)
{
    const double join = context.precision;
    const Path whole = Joined(path, join, close);
    const bool closed = (whole.front().start - whole.back().end).Modulus() <= join;
    const BRep_Builder builder;
    TopoDS_Wire wire;
    builder.MakeWire(wire);
    TopoDS_Vertex first;
    builder.MakeVertex(first, gp_Pnt(whole.front().start), tolerance::Coincident);
    TopoDS_Vertex from = first;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        TopoDS_Vertex to = first;
        const gp_XYZ& next = i + 1 < whole.size() ? whole[i + 1].start : whole.front().start;
        if (i + 1 < whole.size() || !closed) {
            builder.MakeVertex(to, gp_Pnt(closed || i + 1 < whole.size() ? next : whole[i].end),
                               tolerance::Coincident);
        }
        // the vertex covers the gap between the end of one piece and the start of the next
        builder.UpdateVertex(to, (BRep_Tool::Pnt(to).XYZ() - whole[i].end).Modulus() + tolerance::Coincident);
        builder.Add(wire, EdgeOf(whole[i], from, to, tolerance::Coincident));
        from = to;
    }
    wire.Closed(closed);
    return wire;
}

} // namespace cadex::ifc
