#include "sdk/parasolid/XtFitting.h"

#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt.hxx>

namespace cadex::parasolid {

namespace {

gp_Pnt MiddleOf(const FitNode& a, const FitNode& b)
{
    return gp_Pnt((a.point.XYZ() + b.point.XYZ()) / 2 + (a.tangent - b.tangent).XYZ() * ((b.t - a.t) / 8));
}

/// The derivative at `at` of the parabola through three nodes.
gp_Vec ParabolaTangent(const FitNode& a, const FitNode& b, const FitNode& c, double at)
{
    const double ab = 1 / ((a.t - b.t) * (a.t - c.t));
    const double bc = 1 / ((b.t - a.t) * (b.t - c.t));
    const double ca = 1 / ((c.t - a.t) * (c.t - b.t));
    return gp_Vec(a.point.XYZ() * ((2 * at - b.t - c.t) * ab) + b.point.XYZ() * ((2 * at - a.t - c.t) * bc) +
                  c.point.XYZ() * ((2 * at - a.t - b.t) * ca));
}

} // namespace

std::vector<FitNode> Refined(std::vector<FitNode> nodes, double tolerance, const FitMiddle& middle)
{
    constexpr int Rounds = 6;
    constexpr std::size_t MostNodes = 4000;
    std::vector<bool> isDone(nodes.size(), false); // of the span behind a node
    for (int round = 0; round < Rounds && nodes.size() < MostNodes; ++round) {
        std::vector<FitNode> next;
        std::vector<bool> nextDone;
        for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
            const FitNode &a = nodes[i], &b = nodes[i + 1];
            next.push_back(a);
            nextDone.push_back(isDone[i]);
            if (isDone[i]) {
                continue;
            }
            const gp_Pnt guess = MiddleOf(a, b);
            const std::optional<FitNode> found = middle(a, b, guess);
            nextDone.back() = !found || found->point.Distance(guess) < tolerance;
            if (!nextDone.back()) {
                next.push_back(*found);
                nextDone.push_back(false);
            }
        }
        next.push_back(nodes.back());
        nextDone.push_back(true);
        const bool isRefined = next.size() > nodes.size();
        nodes.swap(next);
        isDone.swap(nextDone);
        if (!isRefined) {
            break;
        }
    }
    return nodes;
}

Handle(Geom_BSplineCurve) HermiteSpline(const std::vector<FitNode>& nodes)
{
    const int spans = static_cast<int>(nodes.size()) - 1;
    TColgp_Array1OfPnt poles(1, 2 * spans + 2);
    TColStd_Array1OfReal knots(1, spans + 1);
    TColStd_Array1OfInteger multiplicities(1, spans + 1);
    multiplicities.Init(2);
    multiplicities(1) = multiplicities(spans + 1) = 4;
    poles(1) = nodes.front().point;
    knots(1) = nodes.front().t;
    for (int i = 0; i < spans; ++i) {
        const FitNode &a = nodes[static_cast<std::size_t>(i)], &b = nodes[static_cast<std::size_t>(i) + 1];
        const double third = (b.t - a.t) / 3;
        poles(2 * i + 2) = a.point.Translated(a.tangent * third);
        poles(2 * i + 3) = b.point.Translated(b.tangent * -third);
        knots(i + 2) = b.t;
    }
    poles(2 * spans + 2) = nodes.back().point;
    return new Geom_BSplineCurve(poles, knots, multiplicities, 3);
}

void SetTangents(std::vector<FitNode>& nodes, bool isClosed)
{
    const std::size_t last = nodes.size() - 1;
    if (last == 1) {
        nodes[0].tangent = nodes[1].tangent =
            gp_Vec(nodes[0].point, nodes[1].point) / (nodes[1].t - nodes[0].t);
        return;
    }
    for (std::size_t i = 1; i < last; ++i) {
        nodes[i].tangent = ParabolaTangent(nodes[i - 1], nodes[i], nodes[i + 1], nodes[i].t);
    }
    if (isClosed) {
        FitNode before = nodes[last - 1];
        before.t -= nodes[last].t - nodes[0].t;
        nodes[0].tangent = nodes[last].tangent = ParabolaTangent(before, nodes[0], nodes[1], nodes[0].t);
    } else {
        nodes[0].tangent = ParabolaTangent(nodes[0], nodes[1], nodes[2], nodes[0].t);
        nodes[last].tangent = ParabolaTangent(nodes[last - 2], nodes[last - 1], nodes[last], nodes[last].t);
    }
}

} // namespace cadex::parasolid
