// Geometry that files give by a rule: intersections of surfaces, curves in surfaces, rolling-ball blends.
#include "sdk/parasolid/XtGeometry.h"

#include <array>
#include <cmath>

#include "sdk/brep/Closing.h"
#include "sdk/brep/Conics.h"
#include "sdk/brep/KernelTasks.h"
#include "sdk/parasolid/XtFitting.h"
#include "sdk/parasolid/XtSplines.h"

namespace cadex::parasolid {

namespace {

/// How near the splines come to what they stand for (millimetres).
constexpr double FitWithin = 1e-5;
/// Points of a chart that lie this near are one.
constexpr double SamePoint = 1e-9;

/// Points of the chart of an intersection, without those that are one.
std::vector<FitNode> ChartNodes(std::span<const double> numbers)
{
    std::vector<FitNode> nodes;
    for (std::size_t i = 0; i + 2 < numbers.size(); i += 3) {
        const gp_XYZ point = gp_XYZ(numbers[i], numbers[i + 1], numbers[i + 2]) * Millimetres;
        if (!IsInBox(point)) {
            return {};
        }
        if (nodes.empty() || nodes.back().point.Distance(gp_Pnt(point)) > SamePoint) {
            nodes.push_back({0, gp_Pnt(point)});
        }
    }
    return nodes;
}

/// Parameters by the lengths of arcs, as far as the tangents tell them; else of chords.
void SetParameters(std::vector<FitNode>& nodes)
{
    double t = 0;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (i > 0) {
            const double chord = nodes[i].point.Distance(nodes[i - 1].point);
            const gp_Vec &a = nodes[i - 1].tangent, &b = nodes[i].tangent;
            const bool hasBoth = a.SquareMagnitude() > 0.5 && b.SquareMagnitude() > 0.5;
            const double half = hasBoth ? a.Angle(b) / 2 : 0;
            t += half > 1e-6 && half < M_PI_2 ? chord * half / std::sin(half) : chord;
        }
        nodes[i].t = t;
    }
}

/// Where two surfaces meet, by their carriers, or where the ball of a blend touches.
class IntersectionFinder
{
public:
    IntersectionFinder(const Support& a, const Support& b) : myCarriers{a.MakeCarrier(), b.MakeCarrier()} {}
    explicit IntersectionFinder(const Blend& blend)
        : myCarriers{blend.supports[0].MakeCarrier(), blend.supports[1].MakeCarrier()}, myTube(blend.tube)
    {
    }

    std::optional<Meeting> At(const gp_Pnt& guess)
    {
        if (!myTube) {
            return Meet(myCarriers[0], myCarriers[1], guess);
        }
        myParameter = myTube->Nearest(guess, myParameter);
        std::optional<gp_Pnt> best;
        for (std::size_t i = 0; i < 2 && myParameter; ++i) {
            const auto contact = ContactOf(*myTube, myCarriers[i], *myParameter);
            if (contact && (!best || contact->Distance(guess) < best->Distance(guess))) {
                best = contact;
            }
        }
        return best ? std::optional(Meeting{*best, {}, false}) : std::nullopt;
    }

private:
    std::array<Carrier, 2> myCarriers;
    std::optional<Tube> myTube = {}; ///< of the blend whose contacts are meant
    std::optional<double> myParameter = {};
};

/// Brings the points of a chart to where they belong; false when one is farther off than the chart's own
/// error allows. Tangents of touching surfaces stay zero.
bool Correct(std::vector<FitNode>& nodes, IntersectionFinder& finder, double slack)
{
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const auto found = finder.At(nodes[i].point);
        if (!found || !(found->point.Distance(nodes[i].point) < slack)) {
            return false;
        }
        nodes[i].point = found->point;
        nodes[i].tangent = gp_Vec();
        if (found->isTransversal) {
            const gp_Vec along(nodes[i > 0 ? i - 1 : 0].point,
                               nodes[std::min(i + 1, nodes.size() - 1)].point);
            nodes[i].tangent = along.Dot(found->direction) < 0 ? -found->direction : found->direction;
        }
    }
    return true;
}

/// The derivative of the cubic between two nodes in its middle.
gp_Vec MiddleTangent(const FitNode& a, const FitNode& b)
{
    return gp_Vec(a.point, b.point) * (1.5 / (b.t - a.t)) - (a.tangent + b.tangent) / 4;
}

/// A curve in a surface, in space.
Handle(Geom_Curve) OnSurface(const Handle(Geom_Surface) & surface, const Handle(Geom2d_BSplineCurve) & curve,
                             double first, double last)
{
    const auto nodeAt = [&](double t) {
        gp_Pnt2d place;
        gp_Vec2d rate;
        curve->D1(t, place, rate);
        FitNode node{t};
        gp_Vec du;
        gp_Vec dv;
        surface->D1(place.X(), place.Y(), node.point, du, dv);
        node.tangent = du * rate.X() + dv * rate.Y();
        return node;
    };
    constexpr int Least = 4; // spans
    std::vector<FitNode> nodes{nodeAt(first)};
    for (int i = 1; i <= curve->NbKnots(); ++i) {
        const double knot = std::min(std::max(curve->Knot(i), first), last);
        const double before = nodes.back().t;
        for (int k = 1; k <= Least && knot > before + 1e-9 * (last - first); ++k) {
            nodes.push_back(nodeAt(before + (knot - before) * k / Least));
        }
    }
    const auto middle = [&](const FitNode& a, const FitNode& b, const gp_Pnt&) {
        return std::optional(nodeAt((a.t + b.t) / 2));
    };
    return HermiteSpline(Refined(std::move(nodes), FitWithin, middle));
}

} // namespace

/// The spline through the chart's points, brought onto both surfaces where these can be evaluated.
Curve GeometryReader::ReadIntersection(const Node& node)
{
    const Node chart = myNodes.At(node.Pointer(Field::Chart));
    const std::vector<FitNode> given = ChartNodes(chart.All(Field::Hvec));
    if (chart.Type() != type::Chart || given.size() < 2) {
        return {};
    }
    const bool isClosed = given.size() > 3 && given.front().point.Distance(given.back().point) < FitWithin;
    const Support a = SupportOf(node.Pointer(Field::Surface, 0));
    const Support b = SupportOf(node.Pointer(Field::Surface, 1));
    const std::optional<Blend> blend = BlendBeside(node);
    std::vector<FitNode> nodes = given;
    std::optional<IntersectionFinder> finder;
    if (blend) {
        finder.emplace(*blend);
    } else if (a.IsThere() && b.IsThere()) {
        finder.emplace(a, b);
    }
    const double error = chart.Number(Field::ChordalError) * Millimetres;
    const double slack = 1e-2 + (error > 0 && error < 10 ? error : 0);
    if (finder && !brep::Try([&] {
            if (!Correct(nodes, *finder, slack)) {
                finder.reset();
            }
        })) {
        finder.reset();
    }
    if (!finder) {
        nodes = given;
    }
    std::vector<FitNode> tangents = nodes;
    SetParameters(nodes);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        tangents[i].t = nodes[i].t;
    }
    SetTangents(tangents, isClosed);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (nodes[i].tangent.SquareMagnitude() < 0.5) {
            nodes[i].tangent = tangents[i].tangent;
        }
    }
    if (isClosed) {
        nodes.back().point = nodes.front().point;
        nodes.back().tangent = nodes.front().tangent;
    }
    if (finder) {
        nodes = Refined(std::move(nodes), FitWithin,
                        [&](const FitNode& from, const FitNode& to, const gp_Pnt& guess) {
                            std::optional<FitNode> middle;
                            const auto found = finder->At(guess);
                            if (found && found->point.Distance(guess) < 10 * slack) {
                                middle = {(from.t + to.t) / 2, found->point, MiddleTangent(from, to)};
                                if (found->isTransversal) {
                                    const double sense = middle->tangent.Dot(found->direction) < 0 ? -1 : 1;
                                    middle->tangent = found->direction * sense;
                                }
                            }
                            return middle;
                        });
    }
    Curve result{HermiteSpline(nodes)};
    result.factor = 0;
    return result;
}

std::optional<Blend> GeometryReader::BlendOf(int index)
{
    const auto [place, isNew] = myBlends.try_emplace(index);
    std::optional<Blend>& result = place->second;
    const Node node = myNodes.At(index);
    constexpr int Deepest = 16;
    if (isNew && node.Type() == type::Blend && myDepth < Deepest) {
        ++myDepth;
        if (!brep::Try([&] { result = ReadBlend(node); })) {
            result.reset();
        }
        --myDepth;
    }
    return result;
}

std::optional<Blend> GeometryReader::ReadBlend(const Node& node)
{
    const double first = node.Number(Field::Range, 0) * Millimetres;
    const double second = node.Number(Field::Range, 1) * Millimetres;
    const double radius = std::abs(first);
    if (node.Character(Field::BlendType) != 'R' || !(radius > 1e-9) || !(radius < brep::FarAway) ||
        !(std::abs(std::abs(second) - radius) < 1e-9 * radius)) {
        return std::nullopt;
    }
    Blend blend;
    const Handle(Geom_Curve) spine = CurveOf(node.Pointer(Field::Spine)).curve;
    if (spine.IsNull()) {
        return std::nullopt;
    }
    const Handle(Geom_Curve) periodic = brep::PeriodicCurve(spine);
    blend.tube = {periodic.IsNull() ? spine : periodic, radius};
    blend.supports = {SupportOf(node.Pointer(Field::Surface, 0)), SupportOf(node.Pointer(Field::Surface, 1))};
    return blend;
}

Support GeometryReader::SupportOf(int index)
{
    const Node node = myNodes.At(index);
    if (node.Type() == type::Blend) {
        const std::optional<Blend> blend = BlendOf(index);
        return blend ? Support{nullptr, blend->tube} : Support();
    }
    return {&EvaluatedSurface(index)};
}

/// The blend that an intersection bounds: the curve where the ball touches.
std::optional<Blend> GeometryReader::BlendBeside(const Node& intersection)
{
    for (int i = 0; i < 2; ++i) {
        const Node bound = myNodes.At(intersection.Pointer(Field::Surface, i));
        if (bound.Type() == type::BlendBound) {
            std::optional<Blend> blend = BlendOf(bound.Pointer(Field::Blend));
            if (blend && blend->supports[0].IsThere() && blend->supports[1].IsThere()) {
                return blend;
            }
        }
    }
    return std::nullopt;
}

/// In the kernel's parameters of the surface, and over the spline's own parameter.
SurfaceCurve GeometryReader::SurfaceCurveOf(int index)
{
    Node node = myNodes.At(index);
    SurfaceCurve result;
    double from = 0;
    double to = 0;
    const bool isPiece = node.Type() == type::TrimmedCurve;
    bool isReversed = node.Character(Field::Sense) == '-';
    if (isPiece) {
        from = node.Number(Field::Parm1);
        to = node.Number(Field::Parm2);
        isReversed = from > to;
        node = myNodes.At(node.Pointer(Field::BasisCurve));
    }
    if (node.Type() != type::CurveInSurface) {
        return {};
    }
    result.surface = node.Pointer(Field::Surface);
    const ParameterMap map = SurfaceOf(result.surface).map;
    const Handle(Geom_Surface) surface = SurfaceOf(result.surface).surface;
    const bool isDone = !surface.IsNull() && map.isKnown && brep::Try([&] {
        const Handle(Geom2d_BSplineCurve) spline =
            MakePlaneSpline(myNodes, myNodes.At(node.Pointer(Field::BCurve)));
        if (spline.IsNull()) {
            return;
        }
        for (int i = 1; i <= spline->NbPoles(); ++i) {
            const gp_Pnt2d pole = spline->Pole(i);
            const gp_Pnt2d place(pole.X() * map.uFactor, pole.Y() * map.vFactor);
            spline->SetPole(i, map.isSwapped ? gp_Pnt2d(place.Y(), place.X()) : place);
        }
        result.inSurface = spline;
        result.first = spline->FirstParameter();
        result.last = spline->LastParameter();
        if (isPiece && std::isfinite(from) && std::isfinite(to)) {
            result.first = std::max(result.first, std::min(from, to));
            result.last = std::min(result.last, std::max(from, to));
        }
        if (result.first < result.last) {
            result.inSpace = OnSurface(surface, spline, result.first, result.last);
        }
    });
    if (!isDone) {
        result.inSpace = {};
    }
    result.isReversed = isReversed;
    return result;
}

} // namespace cadex::parasolid
