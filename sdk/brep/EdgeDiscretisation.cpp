#include "sdk/brep/EdgeDiscretisation.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <Bnd_Box.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <GeomAdaptor_Curve.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_Circle.hxx>
#include <Precision.hxx>

#include "sdk/brep/Tolerances.h"

namespace cadex::brep {

namespace {

// Samples by which the extent of an edge, and of a surface in each direction, is estimated.
constexpr int EdgeSamples = 16;
constexpr int SurfaceSamples = 8;

// Of chord and angle between faces: their triangles, which span more than one edge, then keep to the whole.
constexpr double EdgeShare = 0.5;

// A circle's piece is no triangle, however coarse the tolerances are.
constexpr int FewestCircleSpans = 3;
constexpr int FewestPoints = 2;

double ExtentOf(const Bnd_Box& box)
{
    if (box.IsVoid()) {
        return tolerance::SmallestSize;
    }
    const gp_XYZ extent = box.CornerMax().XYZ() - box.CornerMin().XYZ();
    return std::max({extent.X(), extent.Y(), extent.Z(), tolerance::SmallestSize});
}

void AddSamples(const BodyEdge& edge, Bnd_Box& box)
{
    const int count = edge.kind == CurveKind::Line ? 1 : EdgeSamples;
    for (int i = 0; i <= count; ++i) {
        box.Add(edge.Value(edge.first + (edge.last - edge.first) * i / count));
    }
}

void AddSamples(const Surface& surface, Bnd_Box& box)
{
    if (surface.geometry.IsNull() || Precision::IsInfinite(surface.naturalLow[0]) ||
        Precision::IsInfinite(surface.naturalHigh[0]) || Precision::IsInfinite(surface.naturalLow[1]) ||
        Precision::IsInfinite(surface.naturalHigh[1])) {
        return;
    }
    const auto at = [&](int k, int i) {
        return surface.naturalLow[k] + (surface.naturalHigh[k] - surface.naturalLow[k]) * i / SurfaceSamples;
    };
    for (int i = 0; i <= SurfaceSamples; ++i) {
        for (int j = 0; j <= SurfaceSamples; ++j) {
            box.Add(surface.Value({at(0, i), at(1, j)}));
        }
    }
}

std::vector<double> EvenParameters(const BodyEdge& edge, int spans)
{
    std::vector<double> result;
    result.reserve(static_cast<std::size_t>(spans) + 1);
    for (int i = 0; i < spans; ++i) {
        result.push_back(edge.first + (edge.last - edge.first) * i / spans);
    }
    result.push_back(edge.last);
    return result;
}

/// The corners of a spline of straight pieces.
std::vector<double> Corners(const BodyEdge& edge, const Geom_BSplineCurve& spline)
{
    std::vector<double> result{edge.first};
    for (int i = spline.FirstUKnotIndex(); i <= spline.LastUKnotIndex(); ++i) {
        if (spline.Knot(i) > edge.first + tolerance::CurveParameter &&
            spline.Knot(i) < edge.last - tolerance::CurveParameter) {
            result.push_back(spline.Knot(i));
        }
    }
    result.push_back(edge.last);
    return result;
}

std::vector<double> CurveParameters(const BodyEdge& edge, double chord, double angle)
{
    const Handle(Geom_BSplineCurve) spline = Handle(Geom_BSplineCurve)::DownCast(edge.curve);
    if (!spline.IsNull() && spline->Degree() == 1 && !spline->IsPeriodic()) {
        return Corners(edge, *spline);
    }
    const GeomAdaptor_Curve curve(edge.curve, edge.first, edge.last);
    const GCPnts_TangentialDeflection points(curve, edge.first, edge.last, angle, chord, FewestPoints,
                                             tolerance::CurveParameter, Precision::Confusion());
    std::vector<double> result{edge.first};
    for (int i = 2; i < points.NbPoints(); ++i) {
        result.push_back(points.Parameter(i));
    }
    result.push_back(edge.last);
    return result;
}

/// To a share of the chord and angle.
EdgePolyline Divided(const BodyEdge& edge, const occt::MeshTolerances& tolerances, double bodySize,
                     double share)
{
    Bnd_Box box;
    AddSamples(edge, box);
    EdgePolyline result;
    result.chord = ChordFor(tolerances, ExtentOf(box), bodySize);
    const double chord = std::max(share * result.chord, Precision::Confusion());
    const double angle = share * tolerances.angle;
    if (edge.kind == CurveKind::Line) {
        result.parameters = {edge.first, edge.last};
    } else if (edge.kind == CurveKind::Circle) {
        const double radius = Handle(Geom_Circle)::DownCast(edge.curve)->Radius();
        const double step = std::min(angle, 2 * std::acos(std::max(1 - chord / radius, 0.0)));
        const double spans = std::ceil((edge.last - edge.first) / step);
        result.parameters = EvenParameters(edge, std::max(FewestCircleSpans, static_cast<int>(spans)));
    } else {
        result.parameters = CurveParameters(edge, chord, angle);
    }
    return result;
}

} // namespace

double SizeOf(const Body& body)
{
    Bnd_Box box;
    for (const Face& face : body.description->faces) {
        bool hasEdges = false;
        for (const Loop& loop : face.loops) {
            for (const EdgeUse& use : loop.uses) {
                const auto edge = static_cast<std::size_t>(use.edge);
                if (use.edge >= 0 && edge < body.edges.size() && body.edges[edge].isUsable) {
                    hasEdges = true;
                    AddSamples(body.edges[edge], box);
                }
            }
        }
        const auto surface = static_cast<std::size_t>(face.surface);
        if (!hasEdges && face.surface >= 0 && surface < body.surfaces.size()) {
            AddSamples(body.surfaces[surface], box);
        }
    }
    return ExtentOf(box);
}

double ChordFor(const occt::MeshTolerances& tolerances, double extent, double bodySize)
{
    return tolerances.relative ? std::clamp(bodySize / (2 * extent), 0.5, 2.0) * extent * tolerances.chord
                               : tolerances.chord;
}

EdgePolyline DivideCurve(const BodyEdge& edge, const occt::MeshTolerances& tolerances, double bodySize)
{
    return Divided(edge, tolerances, bodySize, 1);
}

EdgePolyline DivideEdge(const BodyEdge& edge, const occt::MeshTolerances& tolerances, double bodySize)
{
    return Divided(edge, tolerances, bodySize, EdgeShare);
}

EdgeDiscretisation::EdgeDiscretisation(const Body& body, const occt::MeshTolerances& tolerances,
                                       double bodySize)
    : myBody(body), myTolerances(tolerances), myBodySize(bodySize), myLines(body.edges.size())
{
    myPoints.reserve(body.vertices.size() + 4 * body.edges.size());
    for (const Vertex& vertex : body.vertices) {
        myPoints.push_back(vertex.point);
    }
}

void EdgeDiscretisation::Divide(int edge)
{
    const auto number = static_cast<std::size_t>(edge);
    if (myLines[number].parameters.empty()) {
        myLines[number] = DivideEdge(myBody.edges[number], myTolerances, myBodySize);
        AddInner(edge);
    }
}

void EdgeDiscretisation::Refine(int edge, std::vector<double> parameters)
{
    myLines[static_cast<std::size_t>(edge)].parameters = std::move(parameters);
    AddInner(edge);
}

int EdgeDiscretisation::NumberOf(int edge, std::size_t place) const
{
    const auto number = static_cast<std::size_t>(edge);
    if (place == 0) {
        return myBody.edges[number].start;
    }
    const EdgePolyline& line = myLines[number];
    return place + 1 == line.parameters.size() ? myBody.edges[number].end
                                               : line.firstInner + static_cast<int>(place) - 1;
}

void EdgeDiscretisation::AddInner(int edge)
{
    const auto number = static_cast<std::size_t>(edge);
    EdgePolyline& line = myLines[number];
    line.firstInner = static_cast<int>(myPoints.size());
    for (std::size_t i = 1; i + 1 < line.parameters.size(); ++i) {
        myPoints.push_back(myBody.edges[number].Value(line.parameters[i]));
    }
}

} // namespace cadex::brep
