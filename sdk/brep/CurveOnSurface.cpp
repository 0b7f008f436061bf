#include "sdk/brep/CurveOnSurface.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include <Geom2d_BSplineCurve.hxx>
#include <Geom2d_Line.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_Circle.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt2d.hxx>
#include <gp_Circ.hxx>

#include "sdk/brep/SurfaceEvaluator.h"
#include "sdk/brep/SurfaceProjection.h"
#include "sdk/brep/Tolerances.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::brep {

using occt::CoordinateOf;
using occt::SetCoordinate;

namespace {

void Unwrap(const Surface& surface, const gp_Pnt2d& towards, gp_Pnt2d& place)
{
    for (const int k : {0, 1}) {
        if (surface.period[k] > 0) {
            const double turns =
                std::round((CoordinateOf(place, k) - CoordinateOf(towards, k)) / surface.period[k]);
            SetCoordinate(place, k, CoordinateOf(place, k) - turns * surface.period[k]);
        }
    }
}

// ------------------------------------------------------------------------------------------- in closed form

struct Placed
{
    ResolveStatus status = ResolveStatus::Done;
    CurveOnSurface curve;
};

/// A straight curve through the place of the edge's middle.
CurveOnSurface Through(const gp_Pnt2d& place, double t, double u, double v)
{
    CurveOnSurface curve;
    curve.origin = place;
    curve.rate = gp_Vec2d(u, v);
    curve.at = t;
    return curve;
}

/// A ruling of a cylinder or cone: straight between the places of its ends, which files give exactly even
/// where a direction is rounded.
std::optional<Placed> PlaceLine(const Surface& surface, const BodyEdge& edge)
{
    if (surface.kind != SurfaceKind::Cylinder && surface.kind != SurfaceKind::Cone) {
        return std::nullopt;
    }
    const double middle = (edge.first + edge.last) / 2;
    gp_Pnt2d place;
    ProjectElementary(surface, edge.Value(middle), place);
    gp_Pnt on;
    gp_Vec du, dv;
    surface.D1(place, on, du, dv);
    if (!gp_Dir(dv).IsParallel(edge.direction, tolerance::ParallelLine)) {
        return std::nullopt;
    }
    CurveOnSurface curve = Through(place, middle, 0, dv.Dot(gp_Vec(edge.direction)) > 0 ? 1 : -1);
    const double reach = PoleReach(surface);
    gp_Pnt2d ends[2] = {curve.Value(edge.first), curve.Value(edge.last)};
    for (const int k : {0, 1}) {
        const gp_Pnt point = edge.Value(k == 0 ? edge.first : edge.last);
        if (!IsAtPole(surface, point, reach)) { // at the apex every angle is right
            gp_Pnt2d end;
            ProjectElementary(surface, point, end);
            Unwrap(surface, ends[k], end);
            ends[k] = end;
        }
    }
    const bool isUpright = std::abs(ends[0].X() - place.X()) < tolerance::SameAxis &&
                           std::abs(ends[1].X() - place.X()) < tolerance::SameAxis;
    return Placed{ResolveStatus::Done,
                  isUpright ? curve : StraightCurve(ends[0], ends[1], edge.first, edge.last)};
}

/// Along a meridian; the sense is that of the edge's tangent.
Placed PlaceMeridian(const Surface& surface, const BodyEdge& edge, const gp_Pnt2d& place, double middle)
{
    gp_Pnt point, on;
    gp_Vec tangent, du, dv;
    edge.D1(middle, point, tangent);
    surface.D1(place, on, du, dv);
    return {ResolveStatus::Done, Through(place, middle, 0, dv.Dot(tangent) > 0 ? 1 : -1)};
}

Placed PlaceSphereMeridian(const Surface& surface, const BodyEdge& edge, const gp_Pnt2d& place, double middle)
{
    Placed placed = PlaceMeridian(surface, edge, place, middle);
    const double lowest = std::min(placed.curve.Value(edge.first).Y(), placed.curve.Value(edge.last).Y());
    const double highest = std::max(placed.curve.Value(edge.first).Y(), placed.curve.Value(edge.last).Y());
    if (lowest < -M_PI_2 - tolerance::SameParameter || highest > M_PI_2 + tolerance::SameParameter) {
        placed.status = ResolveStatus::EdgeOverPole;
    }
    return placed;
}

std::optional<Placed> PlaceCircle(const Surface& surface, const BodyEdge& edge)
{
    const gp_Circ circle = Handle(Geom_Circle)::DownCast(edge.curve)->Circ();
    const gp_Dir axis = surface.axes.Direction(), around = circle.Axis().Direction();
    const gp_XYZ offset = circle.Location().XYZ() - surface.axes.Location().XYZ();
    const double height = offset.Dot(axis.XYZ());
    const double aside = (offset - axis.XYZ() * height).Modulus();
    const double size = std::max({surface.radius, surface.minorRadius, 1.0});
    const double reach = tolerance::PoleReach * size;
    const double middle = (edge.first + edge.last) / 2;
    gp_Pnt2d place;
    const double off = ProjectElementary(surface, edge.Value(middle), place);
    const bool isAround = aside < reach && around.IsParallel(axis, tolerance::ParallelCurve);
    if (isAround) {
        if (off > OffSurfaceReach(circle.Radius())) {
            return Placed{ResolveStatus::EdgeOffSurface, {}};
        }
        // At negative radii (beyond a cone's apex) the angle of the place is half a turn on, and runs alike.
        const double sense = around.Dot(gp_Dir(surface.axes.XDirection().Crossed(surface.axes.YDirection())));
        return Placed{ResolveStatus::Done, Through(place, middle, sense > 0 ? 1 : -1, 0)};
    }
    const bool isUpright = std::abs(around.Dot(axis)) < tolerance::ParallelCurve;
    if (surface.kind == SurfaceKind::Sphere && isUpright && offset.Modulus() < reach) {
        return PlaceSphereMeridian(surface, edge, place, middle);
    }
    if (surface.kind == SurfaceKind::Torus && !surface.isSpindle && isUpright &&
        std::abs(aside - surface.radius) < reach && std::abs(height) < reach &&
        std::abs(circle.Radius() - surface.minorRadius) < reach) {
        return PlaceMeridian(surface, edge, place, middle);
    }
    return std::nullopt;
}

std::optional<Placed> PlaceInClosedForm(const Surface& surface, const BodyEdge& edge)
{
    if (!IsElementary(surface.kind)) {
        return std::nullopt;
    }
    if (edge.kind == CurveKind::Line) {
        return PlaceLine(surface, edge);
    }
    return edge.kind == CurveKind::Circle ? PlaceCircle(surface, edge) : std::nullopt;
}

// ------------------------------------------------------------------------------------------------- as given

bool Fits(const Surface& surface, const BodyEdge& edge, const Geom2d_Curve& given)
{
    constexpr int Samples = 8;
    if (given.FirstParameter() > edge.first + tolerance::SameParameter ||
        given.LastParameter() < edge.last - tolerance::SameParameter) {
        return false;
    }
    for (int i = 0; i <= Samples; ++i) {
        const double t = edge.first + (edge.last - edge.first) * i / Samples;
        if (!(surface.Value(given.Value(t)).Distance(edge.Value(t)) < tolerance::GivenCurveFit)) {
            return false;
        }
    }
    return true;
}

// -------------------------------------------------------------------------------------------- by projection

/// Projects an edge onto a surface, node by node.
class Projector
{
public:
    Projector(const Surface& surface, const BodyEdge& edge)
        : mySurface(surface), myEvaluator(surface), myEdge(edge)
    {
    }

    ResolveStatus Run(CurveOnSurface& curve)
    {
        Spread();
        const ResolveStatus found = PlaceNodes();
        if (found != ResolveStatus::Done) {
            return found;
        }
        const ResolveStatus refined = Refine();
        if (refined != ResolveStatus::Done) {
            return refined;
        }
        FillRates();
        curve = IsStraight()
                    ? StraightCurve(myNodes.front().place, myNodes.back().place, myEdge.first, myEdge.last)
                    : Hermite();
        return ResolveStatus::Done;
    }

private:
    struct Node
    {
        double t = 0;
        gp_Pnt point;
        gp_Pnt2d place;
        gp_Vec2d rate;
        bool hasRate = false;
        bool isPole = false;
    };

    /// Nodes of the first round: as many as the curve has spans, within bounds.
    int FirstCount() const
    {
        const Handle(Geom_BSplineCurve) spline = Handle(Geom_BSplineCurve)::DownCast(myEdge.curve);
        if (spline.IsNull()) {
            return myEdge.kind == CurveKind::Line ? 2 : 6;
        }
        int spans = 0;
        for (int i = spline->FirstUKnotIndex(); i < spline->LastUKnotIndex(); ++i) {
            spans += spline->Knot(i + 1) > myEdge.first && spline->Knot(i) < myEdge.last ? 1 : 0;
        }
        return std::clamp(2 * spans, 4, 100);
    }

    void Spread()
    {
        const int count = FirstCount();
        double length = 0;
        for (int i = 0; i <= count; ++i) {
            Node node;
            node.t = i == count ? myEdge.last : myEdge.first + (myEdge.last - myEdge.first) * i / count;
            node.point = myEdge.Value(node.t);
            if (i > 0) {
                length += node.point.Distance(myNodes.back().point);
            }
            myNodes.push_back(node);
        }
        myLoose = std::max(OffSurfaceReach(length), myEdge.tolerance);
        myTight =
            std::clamp(tolerance::CurveFitShare * length, tolerance::CurveFitLeast, tolerance::CurveFitMost);
        myPoleReach = std::max(PoleReach(mySurface), tolerance::PoleReach * length);
    }

    bool Solve(Node& node, const Node* seed) const
    {
        if (seed != nullptr) {
            node.place = seed->place;
        }
        if (!(Project(myEvaluator, node.point, node.place, myLoose, seed != nullptr) <= myLoose)) {
            return false;
        }
        if (seed != nullptr) {
            Unwrap(mySurface, seed->place, node.place);
        }
        gp_Pnt point;
        gp_Vec tangent, du, dv;
        myEdge.D1(node.t, point, tangent);
        myEvaluator.D1(node.place, point, du, dv);
        const double uu = du.SquareMagnitude(), uv = du.Dot(dv), vv = dv.SquareMagnitude();
        const double determinant = uu * vv - uv * uv;
        constexpr double Flat = 1e-10;
        node.hasRate = determinant > Flat * uu * vv;
        if (node.hasRate) {
            const double u = du.Dot(tangent), v = dv.Dot(tangent);
            node.rate = gp_Vec2d((vv * u - uv * v) / determinant, (uu * v - uv * u) / determinant);
        }
        return true;
    }

    /// An end in a pole: the limit of the parameters along the edge.
    bool SolvePole(Node& node, const Node& inner) const
    {
        constexpr double Near = 0.02;
        Node near = node, nearer = node;
        const double step = (inner.t - node.t) * Near;
        near.t += 2 * step;
        nearer.t += step;
        near.point = myEdge.Value(near.t);
        nearer.point = myEdge.Value(nearer.t);
        if (!Solve(near, &inner) || !Solve(nearer, &near)) {
            return false;
        }
        node.place = gp_Pnt2d(2 * nearer.place.XY() - near.place.XY());
        if (const Pole* pole = PoleAt(mySurface, node.point, myPoleReach, nearer.place); pole != nullptr) {
            SetCoordinate(node.place, pole->fixed, pole->level);
        }
        node.rate = gp_Vec2d(node.place, nearer.place) / step;
        node.hasRate = true;
        return true;
    }

    ResolveStatus PlaceNodes()
    {
        for (std::size_t i = 0; i < myNodes.size(); ++i) {
            myNodes[i].isPole = IsAtPole(mySurface, myNodes[i].point, myPoleReach);
            if (myNodes[i].isPole && i > 0 && i + 1 < myNodes.size()) {
                return ResolveStatus::EdgeOverPole;
            }
        }
        const auto walk = [&](std::size_t i, std::size_t from) {
            Node& node = myNodes[i];
            return node.isPole ? SolvePole(node, myNodes[from]) : Solve(node, &myNodes[from]);
        };
        const std::size_t middle = myNodes.size() / 2; // ends may be poles, or lie on seams
        bool isOn = Solve(myNodes[middle], nullptr);
        for (std::size_t i = middle; isOn && i-- > 0;) {
            isOn = walk(i, i + 1);
        }
        for (std::size_t i = middle + 1; isOn && i < myNodes.size(); ++i) {
            isOn = walk(i, i - 1);
        }
        return isOn ? ResolveStatus::Done : ResolveStatus::EdgeOffSurface;
    }

    /// Value of the cubic between two nodes, in its middle.
    static gp_Pnt2d Middle(const Node& a, const Node& b)
    {
        const double step = b.t - a.t;
        const gp_Vec2d chord = gp_Vec2d(a.place, b.place) / step;
        const gp_Vec2d bend = (a.hasRate ? a.rate : chord) - (b.hasRate ? b.rate : chord);
        return gp_Pnt2d((a.place.XY() + b.place.XY()) / 2 + bend.XY() * (step / 8));
    }

    /// Halves spans whose middle does not lie on the edge, while that helps: the edge itself may be off.
    ResolveStatus Refine()
    {
        constexpr int Rounds = 8;
        constexpr std::size_t MostNodes = 600;
        for (int round = 0; round < Rounds; ++round) {
            std::vector<Node> next;
            bool isRefined = false;
            for (std::size_t i = 0; i + 1 < myNodes.size(); ++i) {
                const Node &a = myNodes[i], &b = myNodes[i + 1];
                next.push_back(a);
                Node seed;
                seed.place = Middle(a, b);
                Node node;
                node.t = (a.t + b.t) / 2;
                node.point = myEdge.Value(node.t);
                const double off = myEvaluator.Value(seed.place).Distance(node.point);
                if (off <= myTight || next.size() + myNodes.size() - i > MostNodes) {
                    continue;
                }
                if (!Solve(node, &seed)) {
                    return ResolveStatus::EdgeOffSurface;
                }
                const double best = myEvaluator.Value(node.place).Distance(node.point);
                if (off > 2 * best + tolerance::SameAxis) {
                    next.push_back(node);
                    isRefined = true;
                }
            }
            next.push_back(myNodes.back());
            myNodes.swap(next);
            if (!isRefined) {
                return ResolveStatus::Done;
            }
        }
        return IsFollowed() ? ResolveStatus::Done : ResolveStatus::EdgeOverPole;
    }

    /// Where parameters jump between two nodes no number of rounds is enough: a pole is in between.
    bool IsFollowed() const
    {
        for (std::size_t i = 0; i + 1 < myNodes.size(); ++i) {
            const double t = (myNodes[i].t + myNodes[i + 1].t) / 2;
            const gp_Pnt2d place = Middle(myNodes[i], myNodes[i + 1]);
            if (!(myEvaluator.Value(place).Distance(myEdge.Value(t)) <= myLoose)) {
                return false;
            }
        }
        return true;
    }

    void FillRates()
    {
        for (std::size_t i = 0; i < myNodes.size(); ++i) {
            if (!myNodes[i].hasRate) {
                const Node& before = myNodes[i > 0 ? i - 1 : 0];
                const Node& after = myNodes[std::min(i + 1, myNodes.size() - 1)];
                myNodes[i].rate = gp_Vec2d(before.place, after.place) / (after.t - before.t);
            }
        }
    }

    bool IsStraight() const
    {
        const gp_Pnt2d &from = myNodes.front().place, &to = myNodes.back().place;
        const double exact = std::max(tolerance::CurveFitLeast, 0.1 * myTight);
        return std::all_of(myNodes.begin(), myNodes.end(), [&](const Node& node) {
            const double part = (node.t - myEdge.first) / (myEdge.last - myEdge.first);
            const gp_Pnt2d place(from.XY() + (to.XY() - from.XY()) * part);
            return myEvaluator.Value(place).Distance(node.point) < exact;
        });
    }

    /// The cubic spline through the nodes, with their rates.
    CurveOnSurface Hermite() const
    {
        const int spans = static_cast<int>(myNodes.size()) - 1;
        TColgp_Array1OfPnt2d poles(1, 2 * spans + 2);
        TColStd_Array1OfReal knots(1, spans + 1);
        TColStd_Array1OfInteger multiplicities(1, spans + 1);
        multiplicities.Init(2);
        multiplicities(1) = multiplicities(spans + 1) = 4;
        poles(1) = myNodes.front().place;
        knots(1) = myNodes.front().t;
        for (int i = 0; i < spans; ++i) {
            const Node &a = myNodes[static_cast<std::size_t>(i)],
                       &b = myNodes[static_cast<std::size_t>(i) + 1];
            const double third = (b.t - a.t) / 3;
            poles(2 * i + 2) = a.place.Translated(a.rate * third);
            poles(2 * i + 3) = b.place.Translated(b.rate * -third);
            knots(i + 2) = b.t;
        }
        poles(2 * spans + 2) = myNodes.back().place;
        CurveOnSurface curve;
        curve.curve = new Geom2d_BSplineCurve(poles, knots, multiplicities, 3);
        curve.isProjected = true;
        return curve;
    }

    const Surface& mySurface;
    const SurfaceEvaluator myEvaluator;
    const BodyEdge& myEdge;
    std::vector<Node> myNodes;
    double myLoose = 0;
    double myTight = 0;
    double myPoleReach = 0;
};

} // namespace

const char* TextOf(ResolveStatus status)
{
    switch (status) {
    case ResolveStatus::Done:
        return "";
    case ResolveStatus::NoFace:
        return "no such face";
    case ResolveStatus::NoSurface:
        return "face without a usable surface";
    case ResolveStatus::BadEdge:
        return "face with an edge that cannot be used";
    case ResolveStatus::LoopNotConnected:
        return "loop whose edges do not meet";
    case ResolveStatus::EdgeOffSurface:
        return "edge off its surface";
    case ResolveStatus::EdgeOverPole:
        return "edge through a pole of its surface";
    case ResolveStatus::LoopNotClosed:
        return "loop that does not close on its surface";
    case ResolveStatus::Windings:
        return "loops around a surface that bound no region";
    case ResolveStatus::NoSeam:
        return "closed surface without a way for a seam";
    case ResolveStatus::NoOuterLoop:
        return "face whose loops bound no region";
    case ResolveStatus::Unbounded:
        return "face without loops on a surface without end";
    case ResolveStatus::Kernel:
        return "geometry that cannot be evaluated";
    }
    return "";
}

CurveOnSurface StraightCurve(const gp_Pnt2d& from, const gp_Pnt2d& to, double first, double last)
{
    CurveOnSurface curve;
    curve.origin = from;
    curve.rate = gp_Vec2d(from, to) / (last - first);
    curve.at = first;
    return curve;
}

Handle(Geom2d_Curve) KernelCurve(const CurveOnSurface& curve, double first, double last)
{
    if (!curve.IsStraight()) {
        if (curve.shift.X() == 0 && curve.shift.Y() == 0) {
            return curve.curve;
        }
        return Handle(Geom2d_Curve)::DownCast(curve.curve->Translated(curve.shift));
    }
    const double speed = curve.rate.Magnitude();
    if (std::abs(speed - 1) * (last - first) < tolerance::SameAxis) {
        return new Geom2d_Line(curve.origin.Translated(curve.rate * -curve.at), gp_Dir2d(curve.rate));
    }
    TColgp_Array1OfPnt2d poles(1, 2);
    poles(1) = curve.Value(first);
    poles(2) = curve.Value(last);
    TColStd_Array1OfReal knots(1, 2);
    knots(1) = first;
    knots(2) = last;
    TColStd_Array1OfInteger multiplicities(1, 2);
    multiplicities.Init(2);
    return new Geom2d_BSplineCurve(poles, knots, multiplicities, 1);
}

ResolveStatus PlaceOnSurface(const Surface& surface, const BodyEdge& edge, const Handle(Geom2d_Curve) & given,
                             CurveOnSurface& curve)
{
    if (const std::optional<Placed> placed = PlaceInClosedForm(surface, edge)) {
        curve = placed->curve;
        return placed->status;
    }
    if (!given.IsNull() && surface.keepsParameters && Fits(surface, edge, *given)) {
        curve = {};
        curve.curve = given;
        return ResolveStatus::Done;
    }
    return Projector(surface, edge).Run(curve);
}

void MoveEnd(CurveOnSurface& projected, bool isLast, const gp_Vec2d& by)
{
    const Handle(Geom2d_BSplineCurve) spline = Handle(Geom2d_BSplineCurve)::DownCast(projected.curve);
    const int end = isLast ? spline->NbPoles() : 1, beside = isLast ? end - 1 : 2;
    spline->SetPole(end, spline->Pole(end).Translated(by));
    spline->SetPole(beside, spline->Pole(beside).Translated(by));
}

double OffSurfaceReach(double length)
{
    const double most = std::max(tolerance::OffSurfaceMost, tolerance::OffSurfaceMostShare * length);
    return std::clamp(tolerance::OffSurfaceShare * length, tolerance::OffSurfaceLeast, most);
}

double PoleReach(const Surface& surface)
{
    return tolerance::PoleReach * std::max(1.0, surface.radius);
}

double RoughLength(const BodyEdge& edge)
{
    constexpr int Chords = 6;
    if (edge.kind == CurveKind::Line) {
        return edge.last - edge.first;
    }
    double length = 0;
    gp_Pnt before = edge.Value(edge.first);
    for (int i = 1; i <= Chords; ++i) {
        const gp_Pnt point = edge.Value(edge.first + (edge.last - edge.first) * i / Chords);
        length += point.Distance(before);
        before = point;
    }
    return length;
}

} // namespace cadex::brep
