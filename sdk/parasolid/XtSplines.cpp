#include "sdk/parasolid/XtSplines.h"

#include <cmath>
#include <cstdint>
#include <optional>

#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColStd_Array2OfReal.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TColgp_Array1OfPnt2d.hxx>
#include <TColgp_Array2OfPnt.hxx>

#include "sdk/brep/Conics.h"
#include "sdk/parasolid/XtGeometry.h"

namespace cadex::parasolid {

namespace {

constexpr int HighestDegree = 25; // of the kernel

struct KnotVector
{
    std::span<const double> values;
    std::span<const double> multiplicities;
    int degree = 0;
    bool isPeriodic = false; ///< as the kernel means it: one period, its end alike its beginning

    int Count() const { return static_cast<int>(values.size()); }
    void CopyTo(TColStd_Array1OfReal& knots, TColStd_Array1OfInteger& counts) const
    {
        for (int i = 1; i <= Count(); ++i) {
            knots(i) = values[static_cast<std::size_t>(i) - 1];
            counts(i) = static_cast<int>(multiplicities[static_cast<std::size_t>(i) - 1]);
        }
    }
};

/// Nothing when the knots do not rise, are too many alike, or do not go with as many poles.
std::optional<KnotVector> ReadKnots(const Node& knots, const Node& counts, int degree, int poles)
{
    KnotVector result{knots.All(Field::Knots), counts.All(Field::Mult), degree};
    const std::size_t size = result.values.size();
    if (size < 2 || result.multiplicities.size() != size || degree < 1 || degree > HighestDegree) {
        return std::nullopt;
    }
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const double value = result.values[i];
        const double count = result.multiplicities[i];
        const int most = i == 0 || i + 1 == size ? degree + 1 : degree;
        if (!std::isfinite(value) || (i > 0 && !(value > result.values[i - 1])) || !(count >= 1) ||
            !(count <= most)) {
            return std::nullopt;
        }
        sum += static_cast<int>(count);
    }
    if (sum == static_cast<std::int64_t>(poles) + degree + 1) {
        return poles > degree ? std::optional(result) : std::nullopt;
    }
    const double first = result.multiplicities.front();
    const double last = result.multiplicities.back();
    result.isPeriodic = first == last && first <= degree && sum - static_cast<int>(last) == poles;
    return result.isPeriodic && poles >= 2 ? std::optional(result) : std::nullopt;
}

/// The control points of a spline, of `size` coordinates and a weight that is multiplied in.
class Poles
{
public:
    Poles(const Node& vertices, int dimension, bool isRational, int size)
        : myNumbers(vertices.All(Field::Vertices)), mySize(size), myIsRational(isRational)
    {
        myIsSound = vertices.Type() == type::SplineVertices && dimension == size + (isRational ? 1 : 0);
        myStep = static_cast<std::size_t>(myIsSound ? dimension : 1);
    }

    bool Has(std::int64_t count) const
    {
        return myIsSound && count >= 0 && static_cast<std::uint64_t>(count) <= myNumbers.size() / myStep;
    }
    /// False when the pole makes no sense.
    bool Read(int place, double scale, gp_XYZ& point, double& weight) const
    {
        const std::span<const double> numbers = myNumbers.subspan(static_cast<std::size_t>(place) * myStep);
        weight = myIsRational ? numbers[static_cast<std::size_t>(mySize)] : 1;
        const double factor = scale / weight;
        point = {numbers[0] * factor, numbers[1] * factor, mySize > 2 ? numbers[2] * factor : 0};
        return weight > 1e-12 && weight < 1e12 && brep::IsSound(point);
    }

private:
    std::span<const double> myNumbers;
    int mySize;
    bool myIsRational;
    bool myIsSound;
    std::size_t myStep;
};

/// What curves in space and in a surface have in common.
struct CurveParts
{
    KnotVector knots;
    std::vector<gp_XYZ> poles;
    std::vector<double> weights;
    bool isRational = false;
};

std::optional<CurveParts> ReadCurveParts(const Nodes& nodes, const Node& curve, int size, double scale)
{
    const Node nurbs = nodes.At(curve.Pointer(Field::Nurbs));
    const int count = nurbs.Integer(Field::NVertices);
    CurveParts parts;
    parts.isRational = nurbs.IsTrue(Field::Rational);
    const Poles poles(nodes.At(nurbs.Pointer(Field::BSplineVertices)), nurbs.Integer(Field::VertexDim),
                      parts.isRational, size);
    if (curve.Type() != type::SplineCurve || !poles.Has(count)) {
        return std::nullopt;
    }
    const auto knots =
        ReadKnots(nodes.At(nurbs.Pointer(Field::Knots)), nodes.At(nurbs.Pointer(Field::KnotMult)),
                  nurbs.Integer(Field::Degree), count);
    if (!knots) {
        return std::nullopt;
    }
    parts.knots = *knots;
    parts.poles.resize(static_cast<std::size_t>(count));
    parts.weights.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const auto at = static_cast<std::size_t>(i);
        if (!poles.Read(i, scale, parts.poles[at], parts.weights[at])) {
            return std::nullopt;
        }
    }
    return parts;
}

/// The kernel wants ends of full multiplicity for much of what it does.
template <typename Spline>
void Clamp(const Handle(Spline) & spline)
{
    if (!spline->IsPeriodic()) {
        spline->Segment(spline->FirstParameter(), spline->LastParameter());
    }
}

bool IsClamped(const KnotVector& knots)
{
    return knots.multiplicities.front() > knots.degree && knots.multiplicities.back() > knots.degree;
}

template <typename Spline, typename Points>
Handle(Spline) MakeCurve(const CurveParts& parts)
{
    const int count = static_cast<int>(parts.poles.size());
    Points poles(1, count);
    TColStd_Array1OfReal weights(1, count);
    for (int i = 1; i <= count; ++i) {
        const gp_XYZ& pole = parts.poles[static_cast<std::size_t>(i) - 1];
        poles(i).SetX(pole.X());
        poles(i).SetY(pole.Y());
        if constexpr (std::is_same_v<Points, TColgp_Array1OfPnt>) {
            poles(i).SetZ(pole.Z());
        }
        weights(i) = parts.weights[static_cast<std::size_t>(i) - 1];
    }
    TColStd_Array1OfReal knots(1, parts.knots.Count());
    TColStd_Array1OfInteger counts(1, parts.knots.Count());
    parts.knots.CopyTo(knots, counts);
    const int degree = parts.knots.degree;
    const bool isPeriodic = parts.knots.isPeriodic;
    Handle(Spline) spline = parts.isRational ? new Spline(poles, weights, knots, counts, degree, isPeriodic)
                                             : new Spline(poles, knots, counts, degree, isPeriodic);
    if (!IsClamped(parts.knots)) {
        Clamp(spline);
    }
    return spline;
}

} // namespace

Handle(Geom_BSplineCurve) MakeSplineCurve(const Nodes& nodes, const Node& curve)
{
    const auto parts = ReadCurveParts(nodes, curve, 3, Millimetres);
    return parts ? MakeCurve<Geom_BSplineCurve, TColgp_Array1OfPnt>(*parts) : Handle(Geom_BSplineCurve)();
}

Handle(Geom2d_BSplineCurve) MakePlaneSpline(const Nodes& nodes, const Node& curve)
{
    const auto parts = ReadCurveParts(nodes, curve, 2, 1);
    return parts ? MakeCurve<Geom2d_BSplineCurve, TColgp_Array1OfPnt2d>(*parts)
                 : Handle(Geom2d_BSplineCurve)();
}

/// Poles run along v first.
Handle(Geom_BSplineSurface) MakeSplineSurface(const Nodes& nodes, const Node& surface)
{
    const Node nurbs = nodes.At(surface.Pointer(Field::Nurbs));
    const int uCount = nurbs.Integer(Field::NUVertices);
    const int vCount = nurbs.Integer(Field::NVVertices);
    const bool isRational = nurbs.IsTrue(Field::Rational);
    const Poles poles(nodes.At(nurbs.Pointer(Field::BSplineVertices)), nurbs.Integer(Field::VertexDim),
                      isRational, 3);
    if (uCount < 2 || vCount < 2 || !poles.Has(static_cast<std::int64_t>(uCount) * vCount)) {
        return {};
    }
    const auto u =
        ReadKnots(nodes.At(nurbs.Pointer(Field::UKnots)), nodes.At(nurbs.Pointer(Field::UKnotMult)),
                  nurbs.Integer(Field::UDegree), uCount);
    const auto v =
        ReadKnots(nodes.At(nurbs.Pointer(Field::VKnots)), nodes.At(nurbs.Pointer(Field::VKnotMult)),
                  nurbs.Integer(Field::VDegree), vCount);
    if (!u || !v) {
        return {};
    }
    TColgp_Array2OfPnt points(1, uCount, 1, vCount);
    TColStd_Array2OfReal weights(1, uCount, 1, vCount);
    for (int i = 1; i <= uCount; ++i) {
        for (int k = 1; k <= vCount; ++k) {
            gp_XYZ point;
            if (!poles.Read((i - 1) * vCount + k - 1, Millimetres, point, weights(i, k))) {
                return {};
            }
            points(i, k) = gp_Pnt(point);
        }
    }
    TColStd_Array1OfReal uKnots(1, u->Count());
    TColStd_Array1OfInteger uCounts(1, u->Count());
    u->CopyTo(uKnots, uCounts);
    TColStd_Array1OfReal vKnots(1, v->Count());
    TColStd_Array1OfInteger vCounts(1, v->Count());
    v->CopyTo(vKnots, vCounts);
    Handle(Geom_BSplineSurface) spline =
        isRational ? new Geom_BSplineSurface(points, weights, uKnots, vKnots, uCounts, vCounts, u->degree,
                                             v->degree, u->isPeriodic, v->isPeriodic)
                   : new Geom_BSplineSurface(points, uKnots, vKnots, uCounts, vCounts, u->degree, v->degree,
                                             u->isPeriodic, v->isPeriodic);
    const bool isOpenU = !u->isPeriodic && !IsClamped(*u);
    const bool isOpenV = !v->isPeriodic && !IsClamped(*v);
    if ((isOpenU && !v->isPeriodic) || (isOpenV && !u->isPeriodic)) {
        double bounds[4];
        spline->Bounds(bounds[0], bounds[1], bounds[2], bounds[3]);
        spline->Segment(bounds[0], bounds[1], bounds[2], bounds[3]);
    }
    return spline;
}

} // namespace cadex::parasolid
