// Geometry that files give by a rule: intersections of surfaces, curves in surfaces, rolling-ball blends.
#include "sdk/parasolid/XtGeometry.h"

#include <cmath>

#include "sdk/brep/Conics.h"
#include "sdk/parasolid/XtFitting.h"
#include "sdk/parasolid/XtSplines.h"

namespace cadex::parasolid {

namespace {

using brep::IsSound;

/// Points of the chart of an intersection, without those that are one.
std::vector<FitNode> ChartNodes(std::span<const double> numbers)
{
    constexpr double Least = 1e-9;
    std::vector<FitNode> nodes;
    for (std::size_t i = 0; i + 2 < numbers.size(); i += 3) {
        const gp_XYZ point = gp_XYZ(numbers[i], numbers[i + 1], numbers[i + 2]) * Millimetres;
        if (!IsSound(point)) {
            return {};
        }
        double t = 0;
        if (!nodes.empty()) {
            const double step = nodes.back().point.Distance(gp_Pnt(point));
            if (step < Least) {
                continue;
            }
            t = nodes.back().t + step;
        }
        nodes.push_back({t, gp_Pnt(point)});
    }
    return nodes;
}

} // namespace

Curve GeometryReader::ReadIntersection(const Node& node)
{
    const Node chart = myNodes.At(node.Pointer(Field::Chart));
    std::vector<FitNode> nodes = ChartNodes(chart.All(Field::Hvec));
    if (chart.Type() != type::Chart || nodes.size() < 2) {
        return {};
    }
    const bool isClosed = nodes.size() > 3 && nodes.front().point.Distance(nodes.back().point) < 1e-5;
    SetTangents(nodes, isClosed);
    Curve result{HermiteSpline(nodes)};
    result.factor = 0;
    return result;
}

Surface GeometryReader::ReadBlend(const Node&)
{
    return {};
}

SurfaceCurve GeometryReader::SurfaceCurveOf(int)
{
    return {};
}

} // namespace cadex::parasolid
