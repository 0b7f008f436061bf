#include "sdk/brep/FaceIntegrals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include <Geom2d_BSplineCurve.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BSplineSurface.hxx>
#include <gp_Pnt2d.hxx>
#include <gp_Vec.hxx>

#include "sdk/brep/SurfaceEvaluator.h"
#include "sdk/brep/SurfaceProjection.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::brep {

using occt::CoordinateOf;

namespace {

/// Points in 0 .. 1 and weights of one of Gauss' rules, which are symmetric about 0.
/// NOTE: M. Abramowitz, I. Stegun, "Handbook of Mathematical Functions", table 25.4.
struct GaussRule
{
    std::size_t count;
    std::array<double, 4> points;
    std::array<double, 4> weights;
};
constexpr GaussRule EightPoints{
    4,
    {0.1834346424956498, 0.5255324099163290, 0.7966664774136267, 0.9602898564975363},
    {0.3626837833783620, 0.3137066458778873, 0.2223810344533745, 0.1012285362903763}};
constexpr GaussRule FourPoints{
    2, {0.3399810435848563, 0.8611363115940526}, {0.6521451548625461, 0.3478548451374538}};

// Pieces so many are short, and take fewer points each.
constexpr std::size_t ManyPanels = 6;

// Over so large an angle eight points integrate products of sines and cosines to the last digits that count.
constexpr double LargestPanel = M_PI / 2;

// However far round a damaged curve goes.
constexpr double MostPanels = 64;

// Of a polynomial; what is integrated has about four times the degree.
constexpr int DegreeOfPanel = 4;

// Pieces of a curve or surface of which nothing better is known.
constexpr int UnknownPanels = 8;

/// Adds up `value(x)` times its weight, over the panels between ascending or descending bounds.
template <typename Sum, typename Value>
void Integrate(const std::vector<double>& bounds, Sum& sum, const Value& value)
{
    const GaussRule& rule = bounds.size() > ManyPanels ? FourPoints : EightPoints;
    for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
        const double middle = (bounds[i] + bounds[i + 1]) / 2;
        const double half = (bounds[i + 1] - bounds[i]) / 2;
        for (std::size_t k = 0; k < rule.count; ++k) {
            sum += value(middle - half * rule.points[k]) * (half * rule.weights[k]);
            sum += value(middle + half * rule.points[k]) * (half * rule.weights[k]);
        }
    }
}

/// The bounds of panels from one parameter to another, in that order, divided evenly.
std::vector<double> EvenPanels(double from, double to, int count)
{
    std::vector<double> bounds;
    for (int i = 0; i <= count; ++i) {
        bounds.push_back(from + (to - from) * i / count);
    }
    return bounds;
}

/// Divided at the values in between, which ascend, and each piece as its degree asks.
std::vector<double> PanelsAt(double from, double to, const std::vector<double>& knots, int degree)
{
    std::vector<double> ends{std::min(from, to)};
    for (const double knot : knots) {
        if (knot > ends.back() && knot < std::max(from, to)) {
            ends.push_back(knot);
        }
    }
    ends.push_back(std::max(from, to));
    const int pieces = (degree + DegreeOfPanel - 1) / DegreeOfPanel;
    std::vector<double> bounds;
    for (std::size_t i = 0; i + 1 < ends.size(); ++i) {
        for (int k = 0; k < pieces; ++k) {
            bounds.push_back(ends[i] + (ends[i + 1] - ends[i]) * k / pieces);
        }
    }
    bounds.push_back(ends.back());
    if (from > to) {
        std::reverse(bounds.begin(), bounds.end());
    }
    return bounds;
}

template <typename Spline>
std::vector<double> KnotsOf(const Spline& spline)
{
    std::vector<double> knots;
    for (int i = 1; i <= spline.NbKnots(); ++i) {
        knots.push_back(spline.Knot(i));
    }
    return knots;
}

class Integrator
{
public:
    Integrator(const Body& body, const ResolvedFace& face, const gp_XYZ& origin)
        : myBody(body), myFace(face), mySurface(*face.surface), myEvaluator(mySurface), myOrigin(origin)
    {
        const Handle(Geom_BSplineSurface) spline = Handle(Geom_BSplineSurface)::DownCast(mySurface.geometry);
        if (!spline.IsNull()) {
            AddKnots(*spline);
        }
        myLow = std::numeric_limits<double>::max();
        for (const Ring& ring : face.rings) {
            myLow = std::min(myLow, ring.low[0]);
        }
    }

    FaceIntegrals Run()
    {
        FaceIntegrals sum;
        for (const Ring& ring : myFace.rings) {
            for (const RingUse& use : ring.uses) {
                AddUse(use, sum);
            }
        }
        if (!myFace.forward) {
            sum.volume = -sum.volume;
            sum.moment.Reverse();
        }
        return sum;
    }

private:
    /// A place on a ring, and how fast v changes there.
    struct Place
    {
        gp_Pnt2d uv;
        double dv;
    };

    /// Over the face's period too: curves on a closed spline may lie beyond its bounds.
    void AddKnots(const Geom_BSplineSurface& spline)
    {
        myDegrees[0] = spline.UDegree();
        myDegrees[1] = spline.VDegree();
        for (const int k : {0, 1}) {
            const int count = k == 0 ? spline.NbUKnots() : spline.NbVKnots();
            const double period = mySurface.period[k];
            for (int turn = period > 0 ? -1 : 0; turn <= (period > 0 ? 1 : 0); ++turn) {
                for (int i = 1; i <= count; ++i) {
                    myKnots[k].push_back((k == 0 ? spline.UKnot(i) : spline.VKnot(i)) + turn * period);
                }
            }
        }
    }

    /// The integral along the use of what lies beside it at each v.
    void AddUse(const RingUse& use, FaceIntegrals& sum) const
    {
        const bool isPlane = mySurface.kind == SurfaceKind::Plane;
        if (!isPlane && use.curve.IsStraight() && IsIdle(use)) {
            return;
        }
        std::vector<double> panels = isPlane ? PanelsOfEdge(use) : PanelsOfCurve(use);
        if (!use.forward) {
            std::reverse(panels.begin(), panels.end());
        }
        Integrate(panels, sum, [&](double t) {
            const Place place = isPlane ? OnPlane(use, t) : OnCurve(use, t);
            return Beside(place.uv) * place.dv;
        });
    }

    /// A straight way at constant v, or at the u where all begins, adds nothing.
    bool IsIdle(const RingUse& use) const
    {
        return use.curve.rate.Y() == 0 || (use.curve.rate.X() == 0 && use.From().X() == myLow);
    }

    Place OnPlane(const RingUse& use, double t) const
    {
        const BodyEdge& edge = myFace.EdgeOf(myBody, use);
        gp_Pnt point;
        gp_Vec tangent;
        edge.D1(t, point, tangent);
        Place place;
        ProjectElementary(mySurface, point, place.uv);
        place.dv = tangent.XYZ().Dot(mySurface.axes.YDirection().XYZ());
        return place;
    }

    static Place OnCurve(const RingUse& use, double t)
    {
        if (use.curve.IsStraight()) {
            return {use.curve.Value(t), use.curve.rate.Y()};
        }
        gp_Pnt2d point;
        gp_Vec2d tangent;
        use.curve.curve->D1(t, point, tangent);
        return {point.Translated(use.curve.shift), tangent.Y()};
    }

    std::vector<double> PanelsOfEdge(const RingUse& use) const
    {
        const BodyEdge& edge = myFace.EdgeOf(myBody, use);
        switch (edge.kind) {
        case CurveKind::Line:
            return {use.first, use.last};
        case CurveKind::Circle:
        case CurveKind::Ellipse:
            return EvenPanels(use.first, use.last, PanelCount(use.last - use.first));
        case CurveKind::Spline:
            if (const auto spline = Handle(Geom_BSplineCurve)::DownCast(edge.curve); !spline.IsNull()) {
                return PanelsAt(use.first, use.last, KnotsOf(*spline), spline->Degree());
            }
            [[fallthrough]];
        default:
            return EvenPanels(use.first, use.last, UnknownPanels);
        }
    }

    std::vector<double> PanelsOfCurve(const RingUse& use) const
    {
        const CurveOnSurface& curve = use.curve;
        if (!curve.IsStraight()) {
            const auto spline = Handle(Geom2d_BSplineCurve)::DownCast(curve.curve);
            return spline.IsNull() ? EvenPanels(use.first, use.last, UnknownPanels)
                                   : PanelsAt(use.first, use.last, KnotsOf(*spline), spline->Degree());
        }
        if (mySurface.kind != SurfaceKind::Spline) {
            const double way = (use.last - use.first) * curve.rate.Magnitude();
            const bool isRuled = mySurface.kind == SurfaceKind::Cylinder ||
                                 mySurface.kind == SurfaceKind::Cone ||
                                 mySurface.kind == SurfaceKind::Extrusion;
            const bool isMeridian = curve.rate.X() == 0 && isRuled;
            const int count =
                isMeridian ? 1
                : IsElementary(mySurface.kind)
                    ? PanelCount(isRuled ? way * std::abs(curve.rate.X()) / curve.rate.Magnitude() : way)
                    : UnknownPanels;
            return EvenPanels(use.first, use.last, count);
        }
        // Where the way crosses a line of knots.
        std::vector<double> crossings;
        for (const int k : {0, 1}) {
            const double rate = CoordinateOf(curve.rate, k);
            for (const double knot : myKnots[k]) {
                if (rate != 0) {
                    crossings.push_back(curve.at + (knot - CoordinateOf(curve.origin, k)) / rate);
                }
            }
        }
        std::sort(crossings.begin(), crossings.end());
        return PanelsAt(use.first, use.last, crossings, std::max(myDegrees[0], myDegrees[1]));
    }

    static int PanelCount(double angle)
    {
        return static_cast<int>(
            std::clamp(std::ceil(std::abs(angle) / LargestPanel - 1e-9), 1.0, MostPanels));
    }

    /// Everything between the lowest u and the place, along the line of its v.
    FaceIntegrals Beside(const gp_Pnt2d& place) const
    {
        FaceIntegrals sum;
        Integrate(LinePanels(place.X()), sum, [&](double u) { return At({u, place.Y()}); });
        return sum;
    }

    std::vector<double> LinePanels(double u) const
    {
        switch (mySurface.kind) {
        case SurfaceKind::Plane:
            return {myLow, u};
        case SurfaceKind::Spline:
            return PanelsAt(myLow, u, myKnots[0], myDegrees[0]);
        case SurfaceKind::Extrusion:
        case SurfaceKind::Other:
            return EvenPanels(myLow, u, UnknownPanels);
        default:
            return EvenPanels(myLow, u, PanelCount(u - myLow));
        }
    }

    /// The integrands, for du dv.
    FaceIntegrals At(const gp_Pnt2d& place) const
    {
        gp_Pnt point;
        gp_Vec du;
        gp_Vec dv;
        myEvaluator.D1(place, point, du, dv);
        const gp_XYZ p = point.XYZ() - myOrigin;
        const gp_XYZ n = du.XYZ().Crossed(dv.XYZ());
        return {n.Modulus(), p.Dot(n) / 3,
                gp_XYZ(p.X() * p.X() * n.X(), p.Y() * p.Y() * n.Y(), p.Z() * p.Z() * n.Z()) / 2};
    }

    const Body& myBody;
    const ResolvedFace& myFace;
    const Surface& mySurface;
    const SurfaceEvaluator myEvaluator;
    const gp_XYZ myOrigin;
    std::vector<double> myKnots[2]; ///< of a spline, in u and v
    int myDegrees[2] = {1, 1};
    double myLow = 0; ///< in u
};

bool IsFinite(const FaceIntegrals& integrals)
{
    return std::isfinite(integrals.area) && std::isfinite(integrals.volume) &&
           std::isfinite(integrals.moment.Modulus());
}

} // namespace

FaceIntegrals& FaceIntegrals::operator+=(const FaceIntegrals& other)
{
    area += other.area;
    volume += other.volume;
    moment += other.moment;
    return *this;
}

FaceIntegrals FaceIntegrals::operator*(double factor) const
{
    return {area * factor, volume * factor, moment * factor};
}

std::optional<FaceIntegrals> IntegrateFace(const Body& body, const ResolvedFace& face, const gp_XYZ& origin)
{
    if (face.status != ResolveStatus::Done) {
        return std::nullopt;
    }
    const FaceIntegrals result = Integrator(body, face, origin).Run();
    return IsFinite(result) ? std::optional(result) : std::nullopt;
}

} // namespace cadex::brep
