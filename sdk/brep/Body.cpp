#include "sdk/brep/Body.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <ElCLib.hxx>
#include <GeomConvert.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BezierCurve.hxx>
#include <Geom_Circle.hxx>
#include <Geom_Ellipse.hxx>
#include <Geom_Hyperbola.hxx>
#include <Geom_Line.hxx>
#include <Geom_Parabola.hxx>
#include <Precision.hxx>
#include <Standard_Failure.hxx>

#include "sdk/brep/Closing.h"
#include "sdk/brep/Tolerances.h"

namespace cadex::brep {

namespace {

bool IsIndex(int number, std::size_t count)
{
    return number >= 0 && static_cast<std::size_t>(number) < count;
}

bool IsFinite(const gp_Pnt& point)
{
    return point.XYZ().SquareModulus() <
           tolerance::LargestCoordinate * tolerance::LargestCoordinate; // false for what is no number
}

/// By Newton's way, from a parameter near by.
double RefinedParameter(const Geom_Curve& curve, const gp_Pnt& point, double at, double first, double last)
{
    constexpr int Steps = 20;
    constexpr double Still = 1e-14;
    for (int i = 0; i < Steps; ++i) {
        gp_Pnt on;
        gp_Vec d1, d2;
        curve.D2(at, on, d1, d2);
        const gp_Vec rest(on, point);
        const double slope = d1.SquareMagnitude() - rest.Dot(d2);
        const double step = rest.Dot(d1) / (slope > 0 ? slope : d1.SquareMagnitude());
        if (!(std::abs(step) < std::numeric_limits<double>::max())) {
            break;
        }
        const double next = std::clamp(at + step, first, last);
        const bool isStill = std::abs(next - at) < Still * (last - first);
        at = next;
        if (isStill) {
            break;
        }
    }
    return at;
}

/// A curve, sampled between two of its parameters.
class SampledCurve
{
public:
    SampledCurve(const Geom_Curve& curve, double first, double last)
        : myCurve(curve), myFirst(first), myLast(last)
    {
        int count = 40;
        if (const auto* spline = dynamic_cast<const Geom_BSplineCurve*>(&curve)) {
            count = std::clamp(4 * spline->NbPoles(), 20, 4000);
        }
        for (int i = 0; i <= count; ++i) {
            myPoints.push_back(curve.Value(ParameterOf(i, count)));
        }
    }

    /// Parameter of the nearest point.
    double Nearest(const gp_Pnt& point) const
    {
        const auto nearest =
            std::min_element(myPoints.begin(), myPoints.end(), [&](const gp_Pnt& a, const gp_Pnt& b) {
                return a.SquareDistance(point) < b.SquareDistance(point);
            });
        return Refined(point, nearest - myPoints.begin());
    }

    /// Parameters at each place where the curve comes to the point and leaves it again, as near as `reach`.
    std::vector<double> AllWithin(const gp_Pnt& point, double reach) const
    {
        std::vector<double> places;
        std::vector<double> off;
        for (const gp_Pnt& sample : myPoints) {
            off.push_back(sample.SquareDistance(point));
        }
        for (std::size_t i = 0; i < off.size(); ++i) {
            if ((i > 0 && off[i - 1] < off[i]) || (i + 1 < off.size() && off[i + 1] < off[i])) {
                continue;
            }
            const double place = Refined(point, static_cast<std::ptrdiff_t>(i));
            if (myCurve.Value(place).Distance(point) <= reach) {
                places.push_back(place);
            }
        }
        return places;
    }

private:
    double ParameterOf(std::ptrdiff_t sample, std::ptrdiff_t count) const
    {
        return myFirst + (myLast - myFirst) * static_cast<double>(sample) / static_cast<double>(count);
    }
    double Refined(const gp_Pnt& point, std::ptrdiff_t sample) const
    {
        const double near = ParameterOf(sample, static_cast<std::ptrdiff_t>(myPoints.size()) - 1);
        return RefinedParameter(myCurve, point, near, myFirst, myLast);
    }

    const Geom_Curve& myCurve;
    const double myFirst;
    const double myLast;
    std::vector<gp_Pnt> myPoints;
};

/// Finds the curve and the parameters of one edge.
class EdgeMaker
{
public:
    EdgeMaker(Body& body, const Edge& given) : myBody(body), myGiven(given) {}

    BodyEdge Make()
    {
        myEdge.start = myGiven.start;
        myEdge.end = myGiven.end;
        myEdge.tolerance =
            myGiven.tolerance > tolerance::Coincident ? myGiven.tolerance : tolerance::Coincident;
        myEdge.record = myGiven.record;
        try {
            myEdge.isUsable = TakeCurve() && TakeVertices() && TakeRange() && IsSound();
        } catch (const Standard_Failure&) {
            myEdge.isUsable = false;
        }
        return myEdge;
    }

private:
    const gp_Pnt& Start() const { return myBody.vertices[static_cast<std::size_t>(myEdge.start)].point; }
    const gp_Pnt& End() const { return myBody.vertices[static_cast<std::size_t>(myEdge.end)].point; }

    bool TakeCurve()
    {
        if (myGiven.curve.IsNull()) {
            myEdge.kind = CurveKind::Line;
            return true;
        }
        myEdge.curve = WithoutTrimming(myGiven.curve);
        if (const auto bezier = Handle(Geom_BezierCurve)::DownCast(myEdge.curve); !bezier.IsNull()) {
            myEdge.curve = GeomConvert::CurveToBSplineCurve(bezier);
        }
        myEdge.kind = KindOf(*myEdge.curve);
        return true;
    }

    /// Range as the description gives it, else that of a trimmed curve or of a whole one; false when neither
    /// is finite.
    bool GivenRange(double& first, double& last) const
    {
        first = myGiven.first;
        last = myGiven.last;
        if (first == last && !myGiven.curve.IsNull()) {
            first = myGiven.curve->FirstParameter();
            last = myGiven.curve->LastParameter();
        }
        return first < last && !Precision::IsInfinite(first) && !Precision::IsInfinite(last);
    }

    /// An edge without vertices gets them at the ends of its curve.
    bool TakeVertices()
    {
        const bool hasStart = myEdge.start != None, hasEnd = myEdge.end != None;
        if ((hasStart && !IsIndex(myEdge.start, myBody.vertices.size())) ||
            (hasEnd && !IsIndex(myEdge.end, myBody.vertices.size()))) {
            return false;
        }
        if (!hasStart || !hasEnd) {
            double first = 0, last = 0;
            if (myEdge.curve.IsNull() || !GivenRange(first, last)) {
                return false;
            }
            AddVertices(myEdge.curve->Value(first), myEdge.curve->Value(last));
        }
        return IsFinite(Start()) && IsFinite(End());
    }

    void AddVertices(const gp_Pnt& start, const gp_Pnt& end)
    {
        const auto add = [&](const gp_Pnt& point) {
            myBody.vertices.push_back({point, tolerance::Coincident});
            return static_cast<int>(myBody.vertices.size()) - 1;
        };
        const bool isClosed = start.Distance(end) < tolerance::EndAtVertex;
        if (myEdge.start == None) {
            myEdge.start = isClosed && myEdge.end != None ? myEdge.end : add(start);
        }
        if (myEdge.end == None) {
            myEdge.end = isClosed ? myEdge.start : add(end);
        }
    }

    bool TakeRange()
    {
        if (myEdge.kind == CurveKind::Line) {
            return TakeLine();
        }
        if (myGiven.first < myGiven.last && HoldsAtEnds(myGiven.first, myGiven.last)) {
            myEdge.first = myGiven.first;
            myEdge.last = myGiven.last;
            return MakeReachable();
        }
        return FindRange();
    }

    /// From vertex to vertex; the parameters stay those of the line that the file gives.
    bool TakeLine()
    {
        const gp_Vec across(Start(), End());
        const double length = across.Magnitude();
        if (!(length > tolerance::Coincident)) {
            myEdge.isPoint = true;
            return false;
        }
        const auto line = Handle(Geom_Line)::DownCast(myEdge.curve);
        double first = 0;
        if (!line.IsNull() && gp_Vec(line->Lin().Direction()).Dot(across) > 0) {
            first = ElCLib::Parameter(line->Lin(), Start());
        }
        myEdge.curve.Nullify();
        myEdge.direction = gp_Dir(across);
        myEdge.origin = Start().Translated(gp_Vec(myEdge.direction) * -first);
        myEdge.first = first;
        myEdge.last = first + length;
        return true;
    }

    bool HoldsAtEnds(double first, double last) const
    {
        const double reach = std::max(tolerance::LoopGap, EndReach());
        const bool isWithin = myEdge.curve->IsPeriodic() ||
                              (first >= myEdge.curve->FirstParameter() - tolerance::SameParameter &&
                               last <= myEdge.curve->LastParameter() + tolerance::SameParameter);
        return isWithin && myEdge.curve->Value(first).Distance(Start()) < reach &&
               myEdge.curve->Value(last).Distance(End()) < reach;
    }

    double EndReach() const
    {
        const auto reach = [&](int vertex) {
            return myBody.vertices[static_cast<std::size_t>(vertex)].tolerance;
        };
        return std::max({tolerance::EndAtVertex, reach(myEdge.start), reach(myEdge.end)});
    }

    /// A range over the end of a closed curve that is not periodic makes it periodic.
    bool MakeReachable()
    {
        if (!myEdge.curve->IsPeriodic() &&
            myEdge.last > myEdge.curve->LastParameter() + tolerance::SameParameter) {
            return ClosePeriodically();
        }
        return true;
    }

    bool ClosePeriodically()
    {
        const Handle(Geom_Curve) periodic = PeriodicCurve(myEdge.curve);
        if (!periodic.IsNull()) {
            myEdge.curve = periodic;
            myEdge.kind = KindOf(*periodic);
        }
        return !periodic.IsNull();
    }

    bool IsOneVertex() const
    {
        return myEdge.start == myEdge.end || Start().Distance(End()) < tolerance::Coincident;
    }

    bool FindRange()
    {
        switch (myEdge.kind) {
        case CurveKind::Circle: {
            const gp_Circ circle = Handle(Geom_Circle)::DownCast(myEdge.curve)->Circ();
            return TakeTurn(ElCLib::Parameter(circle, Start()), ElCLib::Parameter(circle, End()));
        }
        case CurveKind::Ellipse: {
            const gp_Elips ellipse = Handle(Geom_Ellipse)::DownCast(myEdge.curve)->Elips();
            return TakeTurn(ElCLib::Parameter(ellipse, Start()), ElCLib::Parameter(ellipse, End()));
        }
        default:
            return FindRangeOfOther();
        }
    }

    bool TakeTurn(double first, double last)
    {
        constexpr double Turn = 2 * M_PI;
        myEdge.first = first;
        myEdge.last = IsOneVertex() ? first + Turn : last;
        if (myEdge.last <= myEdge.first + tolerance::SameAxis) {
            myEdge.last += Turn;
        }
        return true;
    }

    bool FindRangeOfOther()
    {
        if (const auto hyperbola = Handle(Geom_Hyperbola)::DownCast(myEdge.curve); !hyperbola.IsNull()) {
            myEdge.first = ElCLib::Parameter(hyperbola->Hypr(), Start());
            myEdge.last = ElCLib::Parameter(hyperbola->Hypr(), End());
            return true;
        }
        if (const auto parabola = Handle(Geom_Parabola)::DownCast(myEdge.curve); !parabola.IsNull()) {
            myEdge.first = ElCLib::Parameter(parabola->Parab(), Start());
            myEdge.last = ElCLib::Parameter(parabola->Parab(), End());
            return true;
        }
        const double first = myEdge.curve->FirstParameter(), last = myEdge.curve->LastParameter();
        if (Precision::IsInfinite(first) || Precision::IsInfinite(last)) {
            return false;
        }
        return IsOneVertex() ? TakeWholeCurve(first, last) : TakePiece(first, last);
    }

    /// All of a closed curve, from the vertex on.
    bool TakeWholeCurve(double first, double last)
    {
        const gp_Pnt begin = myEdge.curve->Value(first);
        const double gap = begin.Distance(myEdge.curve->Value(last));
        myEdge.first = first;
        myEdge.last = last;
        if (begin.Distance(Start()) < EndReach() || gap > EndReach()) {
            return gap < std::max(tolerance::LoopGap, EndReach());
        }
        if (!ClosePeriodically()) {
            return false;
        }
        myEdge.first = SampledCurve(*myEdge.curve, first, last).Nearest(Start());
        myEdge.last = myEdge.first + myEdge.curve->Period();
        return true;
    }

    bool TakePiece(double first, double last)
    {
        const gp_Pnt begin = myEdge.curve->Value(first), finish = myEdge.curve->Value(last);
        const bool isClosed = begin.Distance(finish) < tolerance::EndAtVertex;
        const auto isAt = [&](const gp_Pnt& point, const gp_Pnt& end) {
            return point.Distance(end) < tolerance::EndAtVertex;
        };
        const bool isFirst = isAt(begin, Start()) || (isClosed && isAt(finish, Start()));
        const bool isLast = isAt(finish, End()) || (isClosed && isAt(begin, End()));
        myEdge.first = first;
        myEdge.last = last;
        if (isFirst && isLast) {
            return true;
        }
        const SampledCurve samples(*myEdge.curve, first, last);
        myEdge.first = isFirst ? first : samples.Nearest(Start());
        myEdge.last = isLast ? last : samples.Nearest(End());
        if (myEdge.last > myEdge.first) {
            return true;
        }
        if (!isClosed) {
            return TakeFromFold(samples);
        }
        if (!ClosePeriodically()) {
            return false;
        }
        myEdge.last += myEdge.curve->Period();
        return true;
    }

    /// The nearest places came in the wrong order: the curve runs to and fro, or past itself, no farther from
    /// the vertices than the file is inexact. The shortest piece that runs the right way is meant; between
    /// vertices that are as near to each other, their line.
    bool TakeFromFold(const SampledCurve& samples)
    {
        const double reach = std::max(tolerance::LoopGap, EndReach());
        if (Start().Distance(End()) < reach) {
            myEdge.kind = CurveKind::Line;
            return TakeLine();
        }
        const std::vector<double> ends = samples.AllWithin(End(), reach);
        double shortest = std::numeric_limits<double>::max();
        for (const double start : samples.AllWithin(Start(), reach)) {
            for (const double end : ends) {
                if (start < end && end - start < shortest) {
                    shortest = end - start;
                    myEdge.first = start;
                    myEdge.last = end;
                }
            }
        }
        return shortest < std::numeric_limits<double>::max();
    }

    /// An edge in a pole, as some files have it.
    bool HasExtent()
    {
        constexpr int Samples = 8;
        const gp_Pnt begin = myEdge.Value(myEdge.first);
        myEdge.isPoint = true;
        for (int i = 1; i <= Samples && myEdge.isPoint; ++i) {
            const double t = myEdge.first + (myEdge.last - myEdge.first) * i / Samples;
            myEdge.isPoint = myEdge.Value(t).Distance(begin) <= tolerance::Coincident;
        }
        return !myEdge.isPoint;
    }

    bool IsSound()
    {
        if (!(myEdge.first < myEdge.last) || !(myEdge.last - myEdge.first < tolerance::LargestCoordinate)) {
            return false;
        }
        const double reach = std::max(tolerance::VertexOffCurve, EndReach());
        return IsFinite(myEdge.Value((myEdge.first + myEdge.last) / 2)) &&
               myEdge.Value(myEdge.first).Distance(Start()) < reach &&
               myEdge.Value(myEdge.last).Distance(End()) < reach && HasExtent();
    }

    Body& myBody;
    const Edge& myGiven;
    BodyEdge myEdge;
};

} // namespace

CurveKind KindOf(const Geom_Curve& curve)
{
    if (curve.IsKind(STANDARD_TYPE(Geom_Line))) {
        return CurveKind::Line;
    }
    if (curve.IsKind(STANDARD_TYPE(Geom_Circle))) {
        return CurveKind::Circle;
    }
    if (curve.IsKind(STANDARD_TYPE(Geom_Ellipse))) {
        return CurveKind::Ellipse;
    }
    return curve.IsKind(STANDARD_TYPE(Geom_BSplineCurve)) ? CurveKind::Spline : CurveKind::Other;
}

Body MakeBody(const Description& description)
{
    Body body;
    body.description = &description;
    body.vertices = description.vertices;
    body.edges.reserve(description.edges.size());
    for (const Edge& edge : description.edges) {
        body.edges.push_back(EdgeMaker(body, edge).Make());
    }
    body.surfaces.reserve(description.surfaces.size());
    for (const Handle(Geom_Surface) & surface : description.surfaces) {
        body.surfaces.push_back(MakeSurface(surface));
    }
    return body;
}

} // namespace cadex::brep
