// Curves that are known point by point, as cubic splines of the kernel.
//
//     const auto circle = [](double t) { return FitNode{t, Point(t), Tangent(t)}; };
//     Handle(Geom_BSplineCurve) spline = Fit({circle(0), circle(1)}, 1e-5, middle);
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include <Geom_BSplineCurve.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>

namespace cadex::parasolid {

struct FitNode
{
    double t = 0;
    gp_Pnt point = {};
    gp_Vec tangent = {}; ///< derivative by t
};

/// The curve between two of its nodes, somewhere near their middle; nothing where it cannot be found. The
/// guess is what the spline has there.
using FitMiddle =
    std::function<std::optional<FitNode>(const FitNode& a, const FitNode& b, const gp_Pnt& guess)>;

/// Halves the spans between the nodes until the spline's middles are as near to the curve as `tolerance`,
/// within bounds. At least two nodes, t rising.
std::vector<FitNode> Refined(std::vector<FitNode> nodes, double tolerance, const FitMiddle& middle);

/// The spline through the nodes with their tangents.
Handle(Geom_BSplineCurve) HermiteSpline(const std::vector<FitNode>& nodes);

/// Gives nodes that have none the tangents of parabolas through their neighbours; `isClosed`: the first and
/// the last are one point, and neighbours of each other.
void SetTangents(std::vector<FitNode>& nodes, bool isClosed);

} // namespace cadex::parasolid
