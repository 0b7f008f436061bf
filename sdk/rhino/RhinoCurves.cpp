#include "sdk/rhino/RhinoCurves.h"

#include <algorithm>
#include <cmath>

#include <Convert_ParameterisationType.hxx>
#include <GeomConvert.hxx>
#include <Geom_Circle.hxx>
#include <Geom_Line.hxx>
#include <Geom_TrimmedCurve.hxx>
#include <Standard_Failure.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <gp_Ax2.hxx>

#include "sdk/rhino/RhinoTolerances.h"

namespace cadex::rhino {

namespace {

enum class CurveClass
{
    Line,
    Arc,
    Circle,
    Polyline,
    PolyCurve,
    Nurbs
};

struct KnownClass
{
    Uuid id;
    CurveClass kind;
};

/// With the names that older versions gave them.
constexpr KnownClass Classes[] = {
    {Uuid("4ed7d4db-e947-11d3-bfe5-0010830122f0"), CurveClass::Line},
    {Uuid("cf33be2a-09b4-11d4-bffb-0010830122f0"), CurveClass::Arc},
    {Uuid("cf33be29-09b4-11d4-bffb-0010830122f0"), CurveClass::Circle},
    {Uuid("4ed7d4e6-e947-11d3-bfe5-0010830122f0"), CurveClass::Polyline},
    {Uuid("4ed7d4e0-e947-11d3-bfe5-0010830122f0"), CurveClass::PolyCurve},
    {Uuid("ef638317-154b-11d4-8000-0010830122f0"), CurveClass::PolyCurve},
    {Uuid("39ff3dd3-fe0f-4807-9d59-185f0d73c0e4"), CurveClass::PolyCurve},
    {Uuid("4ed7d4dd-e947-11d3-bfe5-0010830122f0"), CurveClass::Nurbs},
    {Uuid("5eaf1119-0b51-11d4-bffe-0010830122f0"), CurveClass::Nurbs},
    {Uuid("76a709d5-1550-11d4-8000-0010830122f0"), CurveClass::Nurbs},
};

const KnownClass* FindClass(const Uuid& id)
{
    const auto* found = std::find_if(std::begin(Classes), std::end(Classes),
                                     [&](const KnownClass& known) { return known.id == id; });
    return found == std::end(Classes) ? nullptr : found;
}

constexpr int HighestDegree = 25; // of the kernel

gp_Pnt PointOf(const double* numbers, double scale)
{
    return {numbers[0] * scale, numbers[1] * scale, numbers[2] * scale};
}

bool IsSound(const gp_Pnt& point)
{
    return std::abs(point.X()) < tolerance::FarAway && std::abs(point.Y()) < tolerance::FarAway &&
           std::abs(point.Z()) < tolerance::FarAway;
}

bool IsInterval(double begin, double end)
{
    return std::isfinite(begin) && std::isfinite(end) && begin < end;
}

Handle(Geom_BSplineCurve) MakeSpline(const std::vector<gp_Pnt>& poles, const std::vector<double>& weights,
                                     const Knots& knots, int degree)
{
    TColgp_Array1OfPnt points(1, static_cast<int>(poles.size()));
    for (int i = 1; i <= points.Length(); ++i) {
        points(i) = poles[static_cast<std::size_t>(i) - 1];
    }
    TColStd_Array1OfReal values(1, static_cast<int>(knots.values.size()));
    TColStd_Array1OfInteger multiplicities(1, values.Length());
    for (int i = 1; i <= values.Length(); ++i) {
        values(i) = knots.values[static_cast<std::size_t>(i) - 1];
        multiplicities(i) = knots.multiplicities[static_cast<std::size_t>(i) - 1];
    }
    if (weights.empty()) {
        return new Geom_BSplineCurve(points, values, multiplicities, degree);
    }
    TColStd_Array1OfReal factors(1, points.Length());
    for (int i = 1; i <= factors.Length(); ++i) {
        factors(i) = weights[static_cast<std::size_t>(i) - 1];
    }
    return new Geom_BSplineCurve(points, factors, values, multiplicities, degree);
}

Curve PolygonOf(std::vector<gp_Pnt> corners, const std::vector<double>& parameters)
{
    Curve result;
    Knots knots;
    std::vector<gp_Pnt> poles;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        if (!IsSound(corners[i]) || !std::isfinite(parameters[i])) {
            return {};
        }
        if (i == 0 || parameters[i] > knots.values.back()) {
            poles.push_back(corners[i]);
            knots.values.push_back(parameters[i]);
            knots.multiplicities.push_back(1);
        }
    }
    if (poles.size() < 2) {
        return {};
    }
    knots.multiplicities.front() = 2;
    knots.multiplicities.back() = 2;
    result.curve = MakeSpline(poles, {}, knots, 1);
    result.begin = result.first = knots.values.front();
    result.end = result.last = knots.values.back();
    result.corners = std::move(corners);
    return result;
}

Curve ReadLine(Chunk& data, double scale)
{
    data.ByteVersion();
    const auto ends = data.Doubles<6>();
    const auto interval = data.Doubles<2>();
    data.Skip(4); // dimension
    const gp_Pnt start = PointOf(ends.data(), scale);
    const gp_Pnt end = PointOf(ends.data() + 3, scale);
    const double length = start.Distance(end);
    if (!IsSound(start) || !IsSound(end) || length < gp::Resolution() ||
        !IsInterval(interval[0], interval[1])) {
        return {};
    }
    Curve result{new Geom_Line(start, gp_Dir(gp_Vec(start, end))), interval[0], interval[1], 0, length, {}};
    result.corners = {start, end};
    return result;
}

Curve ReadArc(Chunk& data, double scale, bool isCircle)
{
    data.ByteVersion();
    const auto plane = data.Doubles<16>(); // origin, x, y, z, equation
    const double radius = data.Double() * scale;
    data.Skip(72); // three points on it
    std::array<double, 2> angles{0, 2 * M_PI};
    if (!isCircle) {
        angles = data.Doubles<2>();
    }
    const auto interval = data.Doubles<2>();
    data.Skip(4);
    const gp_Pnt origin = PointOf(plane.data(), scale);
    const gp_Vec x(plane[3], plane[4], plane[5]);
    const gp_Vec z(plane[9], plane[10], plane[11]);
    if (!IsSound(origin) || !(radius > 0) || !(radius < tolerance::FarAway) ||
        !IsInterval(angles[0], angles[1]) || !IsInterval(interval[0], interval[1]) ||
        !(z.Crossed(x).Magnitude() > 0.1)) {
        return {};
    }
    return {new Geom_Circle(gp_Ax2(origin, gp_Dir(z), gp_Dir(x)), radius),
            interval[0],
            interval[1],
            angles[0],
            std::min(angles[1], angles[0] + 2 * M_PI),
            {}};
}

Curve ReadPolyline(Chunk& data, double scale)
{
    data.ByteVersion();
    const auto numbers = data.Items<double>(data.Count(24) * 3);
    const auto parameters = data.Array<double>();
    data.Skip(4);
    if (parameters.size() * 3 != numbers.size()) {
        return {};
    }
    std::vector<gp_Pnt> corners;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        corners.push_back(PointOf(numbers.data() + 3 * i, scale));
    }
    return PolygonOf(std::move(corners), parameters);
}

Curve ReadNurbs(Chunk& data, double scale)
{
    const int minor = data.ByteVersion().minor;
    const auto sizes = data.Get<std::array<std::int32_t, 6>>();
    const auto [dimension, rational, order, count, reserved1, reserved2] = sizes;
    data.Skip(48); // box
    const auto knotValues = data.Array<double>();
    const std::int32_t poleCount = data.I32();
    if (dimension < 1 || dimension > 3 || order < 2 || count < order || poleCount < 0 || poleCount > count) {
        throw Unreadable("a curve has impossible sizes");
    }
    const auto stride = static_cast<std::size_t>(dimension) + (rational != 0 ? 1 : 0);
    const auto numbers = data.Items<double>(static_cast<std::size_t>(poleCount) * stride);
    if (minor >= 1) {
        data.Skip(1);
    }
    Knots knots;
    if (poleCount != count || order > HighestDegree + 1 ||
        knotValues.size() != static_cast<std::size_t>(order) + static_cast<std::size_t>(count) - 2 ||
        !MakeKnots(knotValues, order - 1, knots)) {
        return {};
    }
    std::vector<gp_Pnt> poles;
    std::vector<double> weights;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        const double* pole = numbers.data() + i * stride;
        const double weight = rational != 0 ? pole[dimension] : 1;
        if (!(weight > 0) || !std::isfinite(weight)) {
            return {};
        }
        const double factor = scale / weight;
        poles.emplace_back(pole[0] * factor, dimension > 1 ? pole[1] * factor : 0,
                           dimension > 2 ? pole[2] * factor : 0);
        if (!IsSound(poles.back())) {
            return {};
        }
        if (rational != 0) {
            weights.push_back(weight);
        }
    }
    Curve result;
    result.curve = MakeSpline(poles, weights, knots, order - 1);
    result.begin = result.first = knotValues[static_cast<std::size_t>(order) - 2];
    result.end = result.last = knotValues[static_cast<std::size_t>(count) - 1];
    if (order == 2 && weights.empty()) {
        result.corners = std::move(poles);
    }
    return result;
}

/// Pieces that follow each other, each stretched to its part of the parameters.
Curve Join(std::vector<Curve> pieces, const std::vector<double>& parameters)
{
    std::vector<Handle(Geom_BSplineCurve)> splines;
    int degree = 1;
    std::vector<gp_Pnt> corners;
    bool isPolygon = true;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        Curve& piece = pieces[i];
        if (piece.curve.IsNull() || !IsInterval(parameters[i], parameters[i + 1])) {
            return {};
        }
        isPolygon = isPolygon && !piece.corners.empty();
        if (isPolygon) {
            corners.insert(corners.end(), piece.corners.begin() + (corners.empty() ? 0 : 1),
                           piece.corners.end());
        }
        Curve stretched = piece;
        stretched.begin = parameters[i];
        stretched.end = parameters[i + 1];
        splines.push_back(SplineOf(stretched));
        degree = std::max(degree, splines.back()->Degree());
    }
    std::vector<gp_Pnt> poles;
    std::vector<double> weights;
    Knots knots;
    bool isRational = false;
    for (const Handle(Geom_BSplineCurve) & spline : splines) {
        spline->IncreaseDegree(degree);
        isRational = isRational || spline->IsRational();
        // the weights of a piece may be scaled so that they continue those before it
        const double factor = weights.empty() ? 1 : weights.back() / spline->Weight(1);
        for (int i = poles.empty() ? 1 : 2; i <= spline->NbPoles(); ++i) {
            poles.push_back(spline->Pole(i));
            weights.push_back(spline->Weight(i) * factor);
        }
        if (!knots.multiplicities.empty()) {
            knots.multiplicities.back() = degree;
        }
        for (int i = knots.values.empty() ? 1 : 2; i <= spline->NbKnots(); ++i) {
            knots.values.push_back(spline->Knot(i));
            knots.multiplicities.push_back(spline->Multiplicity(i));
        }
    }
    Curve result;
    result.curve = MakeSpline(poles, isRational ? weights : std::vector<double>(), knots, degree);
    result.begin = result.first = parameters.front();
    result.end = result.last = parameters[pieces.size()];
    result.corners = isPolygon ? std::move(corners) : std::vector<gp_Pnt>();
    return result;
}

CurveTree ReadPolyCurve(Chunk& data, double scale)
{
    CurveTree tree;
    data.ByteVersion();
    const std::size_t count = data.Count(16);
    data.Skip(8 + 48);
    tree.parameters = data.Array<double>();
    for (std::size_t i = 0; i < count; ++i) {
        tree.pieces.push_back(ReadCurveTree(data, scale));
    }
    return tree;
}

Curve Joined(CurveTree tree)
{
    if (tree.pieces.empty()) {
        return std::move(tree.curve);
    }
    if (tree.parameters.size() < tree.pieces.size() + 1) {
        return {};
    }
    std::vector<Curve> pieces;
    for (CurveTree& piece : tree.pieces) {
        pieces.push_back(Joined(std::move(piece)));
    }
    if (pieces.size() > 1) {
        return Join(std::move(pieces), tree.parameters);
    }
    pieces[0].begin = tree.parameters[0];
    pieces[0].end = tree.parameters[1];
    return IsInterval(tree.parameters[0], tree.parameters[1]) ? pieces[0] : Curve();
}

Curve ReadKnown(CurveClass kind, Chunk& data, double scale)
{
    switch (kind) {
    case CurveClass::Line:
        return ReadLine(data, scale);
    case CurveClass::Arc:
        return ReadArc(data, scale, false);
    case CurveClass::Circle:
        return ReadArc(data, scale, true);
    case CurveClass::Polyline:
        return ReadPolyline(data, scale);
    case CurveClass::PolyCurve:
        return Joined(ReadPolyCurve(data, scale));
    default:
        return ReadNurbs(data, scale);
    }
}

} // namespace

bool MakeKnots(const std::vector<double>& knots, int degree, Knots& result)
{
    const auto add = [&](double knot) {
        const bool isSame = !result.values.empty() && knot - result.values.back() <=
                                                          tolerance::SameKnot * std::max(1.0, std::abs(knot));
        if (isSame) {
            ++result.multiplicities.back();
        } else {
            result.values.push_back(knot);
            result.multiplicities.push_back(1);
        }
    };
    if (knots.empty()) {
        return false;
    }
    for (std::size_t i = 0; i < knots.size(); ++i) {
        if (!std::isfinite(knots[i]) || (i > 0 && knots[i] < knots[i - 1])) {
            return false;
        }
    }
    add(knots.front());
    for (const double knot : knots) {
        add(knot);
    }
    add(knots.back());
    for (std::size_t i = 0; i < result.values.size(); ++i) {
        const bool isEnd = i == 0 || i + 1 == result.values.size();
        if (result.multiplicities[i] > degree + (isEnd ? 1 : 0)) {
            return false;
        }
    }
    return result.values.size() >= 2;
}

bool IsCurve(const Uuid& classId)
{
    return FindClass(classId) != nullptr;
}

Curve ReadCurve(const Uuid& classId, Chunk& data, double scale)
{
    const KnownClass* known = FindClass(classId);
    try {
        return known != nullptr ? ReadKnown(known->kind, data, scale) : Curve();
    } catch (const Standard_Failure&) {
        data.SkipRest();
        return {};
    }
}

Curve ReadCurveObject(Chunk& parent, double scale)
{
    Curve curve;
    ReadObject(parent, [&](const Uuid& classId, Chunk& data) {
        if (IsCurve(classId)) {
            curve = ReadCurve(classId, data, scale);
        }
    });
    return curve;
}

CurveTree ReadCurveTree(Chunk& parent, double scale)
{
    CurveTree tree;
    ReadObject(parent, [&](const Uuid& classId, Chunk& data) {
        const KnownClass* known = FindClass(classId);
        if (known != nullptr && known->kind == CurveClass::PolyCurve) {
            tree = ReadPolyCurve(data, scale);
        } else {
            tree.curve = ReadCurve(classId, data, scale);
        }
    });
    return tree;
}

Handle(Geom_BSplineCurve) SplineOf(const Curve& curve)
{
    Handle(Geom_BSplineCurve) spline;
    if (curve.corners.size() == 2) {
        Knots knots{{curve.begin, curve.end}, {2, 2}};
        return MakeSpline({curve.curve->Value(curve.first), curve.curve->Value(curve.last)}, {}, knots, 1);
    }
    const Handle(Geom_BSplineCurve) own = Handle(Geom_BSplineCurve)::DownCast(curve.curve);
    if (!own.IsNull()) {
        spline = Handle(Geom_BSplineCurve)::DownCast(own->Copy());
        const double slack = tolerance::WholeSpline * (curve.last - curve.first);
        if (curve.first > own->FirstParameter() + slack || curve.last < own->LastParameter() - slack) {
            spline->Segment(curve.first, curve.last);
        }
    } else {
        spline = GeomConvert::CurveToBSplineCurve(new Geom_TrimmedCurve(curve.curve, curve.first, curve.last),
                                                  Convert_QuasiAngular);
    }
    // an unclamped end would make the joint of two splines lie off their ends
    if (spline->Multiplicity(1) <= spline->Degree() ||
        spline->Multiplicity(spline->NbKnots()) <= spline->Degree()) {
        spline->Segment(spline->FirstParameter(), spline->LastParameter());
    }
    TColStd_Array1OfReal knots(1, spline->NbKnots());
    const double first = spline->FirstParameter();
    const double last = spline->LastParameter();
    for (int i = 1; i <= knots.Length(); ++i) {
        knots(i) = curve.begin + (spline->Knot(i) - first) / (last - first) * (curve.end - curve.begin);
    }
    knots(1) = curve.begin;
    knots(knots.Length()) = curve.end;
    spline->SetKnots(knots);
    return spline;
}

} // namespace cadex::rhino
