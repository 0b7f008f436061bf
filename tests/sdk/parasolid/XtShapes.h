// Bodies, assemblies and attributes of transmit files; lengths in metres, as the files have them.
#pragma once

#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <cadex/ModelAlgo_ValidationProperty.hxx>
#include <cadex/ModelAlgo_ValidationPropertyData.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/Para_Reader.hxx>

#include "sdk/mesh/DistinctParts.h"
#include "tests/sdk/parasolid/XtText.h"
#include "tests/support/DamagedFiles.h"

namespace xttest {

struct Use
{
    int edge;
    bool forward = true;
    int curve = 0; ///< of the fin
};

/// Puts the topology of one body together.
class XtBodyText
{
public:
    /// Kind 1: solid, 2: wire, 3: sheet. Without a region of material all faces are in the void one.
    explicit XtBodyText(XtText& xt, int kind = 1) : myXt(xt), myKind(kind)
    {
        body = myXt.Add(type::Body, {{Field::BodyType, {static_cast<double>(kind)}}});
        myVoid = AddRegion('V');
        if (kind == 1) {
            mySolid = AddRegion('S');
        }
        Chain({myVoid.region, mySolid.region});
        myXt.Set(body, Field::Region, {static_cast<double>(myVoid.region)});
    }

    int Vertex(double x, double y, double z)
    {
        const int point = myXt.Add(type::Point, {{Field::Pvec, {x, y, z}}});
        return myXt.Add(type::Vertex, {{Field::Point, {1. * point}}});
    }
    /// No vertices: a ring.
    int Edge(int curve, int start = 0, int end = 0, double tolerance = Null)
    {
        const int edge =
            myXt.Add(type::Edge, {{Field::Curve, {1. * curve}}, {Field::Tolerance, {tolerance}}});
        myEdges.push_back(edge);
        myEnds[edge] = {start, end};
        return edge;
    }
    int Face(int surface, char sense, const std::vector<std::vector<Use>>& loops)
    {
        const int face =
            myXt.Add(type::Face, {{Field::Surface, {1. * surface}}, {Field::Sense, {1. * sense}}});
        const int behind = myKind == 1 ? mySolid.shell : myVoid.shell;
        myXt.Set(face, Field::Shell, {1. * behind});
        myXt.Set(face, Field::FrontShell, {1. * myVoid.shell});
        std::vector<int> chain;
        for (const std::vector<Use>& uses : loops) {
            chain.push_back(myXt.Add(type::Loop, {{Field::Face, {1. * face}}}));
            std::vector<int> fins;
            for (const Use& use : uses) {
                fins.push_back(AddFin(use, chain.back()));
            }
            for (std::size_t i = 0; i < fins.size(); ++i) {
                const int next = fins[(i + 1) % fins.size()];
                myXt.Set(fins[i], Field::Forward, {1. * next});
                myXt.Set(next, Field::Backward, {1. * fins[i]});
            }
            myXt.Set(chain.back(), Field::Halfedge, {fins.empty() ? 0. : fins[0]});
        }
        Chain(chain);
        myXt.Set(face, Field::Loop, {chain.empty() ? 0. : chain[0]});
        myFaces.push_back(face);
        return face;
    }
    /// Call it last. Gives the body.
    int Finish()
    {
        const int owner = myKind == 1 ? mySolid.shell : myVoid.shell;
        myXt.Set(owner, Field::Face, {myFaces.empty() ? 0. : myFaces[0]});
        Chain(myFaces);
        myXt.Set(myVoid.shell, Field::FrontFace, {myFaces.empty() ? 0. : myFaces[0]});
        Chain(myFaces, Field::NextFront);
        myXt.Set(body, Field::Edge, {myEdges.empty() ? 0. : myEdges[0]});
        Chain(myEdges);
        for (const int edge : myEdges) {
            std::vector<int>& fins = myFins[edge];
            for (const bool forward : {true, false}) { // those of no loop
                if (fins.size() < 2) {
                    const bool isThere = !fins.empty() && (myXt.Get(fins[0], Field::Sense) == '+') == forward;
                    if (!isThere) {
                        AddFin({edge, forward}, 0);
                    }
                }
            }
            myXt.Set(edge, Field::Halfedge, {1. * fins[0]});
            for (std::size_t i = 0; i < fins.size(); ++i) {
                myXt.Set(fins[i], Field::Other, {1. * fins[(i + 1) % fins.size()]});
            }
        }
        return body;
    }

    int body = 0;

private:
    struct Region
    {
        int region = 0;
        int shell = 0;
    };
    Region AddRegion(char kind)
    {
        Region result;
        result.region = myXt.Add(type::Region, {{Field::Type, {1. * kind}}});
        result.shell = myXt.Add(type::Shell, {{Field::Region, {1. * result.region}}});
        myXt.Set(result.region, Field::Shell, {1. * result.shell});
        return result;
    }
    void Chain(const std::vector<int>& nodes, Field next = Field::Next)
    {
        for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
            myXt.Set(nodes[i], next, {1. * nodes[i + 1]});
        }
    }
    int AddFin(const Use& use, int loop)
    {
        const auto [start, end] = myEnds.at(use.edge);
        const int fin = myXt.Add(type::Fin, {{Field::Loop, {1. * loop}},
                                             {Field::Edge, {1. * use.edge}},
                                             {Field::Curve, {1. * use.curve}},
                                             {Field::Vertex, {1. * (use.forward ? end : start)}},
                                             {Field::Sense, {use.forward ? 1. * '+' : 1. * '-'}}});
        myFins[use.edge].push_back(fin);
        return fin;
    }

    XtText& myXt;
    int myKind;
    Region myVoid;
    Region mySolid;
    std::vector<int> myFaces;
    std::vector<int> myEdges;
    std::map<int, std::pair<int, int>> myEnds;
    std::map<int, std::vector<int>> myFins;
};

// -------------------------------------------------------------------------------------------------- geometry

inline int AddPlane(XtText& xt, const Values& origin, const Values& normal, const Values& x = {1, 0, 0})
{
    return xt.Add(type::Plane, {{Field::Pvec, origin}, {Field::Normal, normal}, {Field::XAxis, x}});
}

inline int AddCircle(XtText& xt, double z, double radius)
{
    return xt.Add(type::Circle, {{Field::Centre, {0, 0, z}},
                                 {Field::Normal, {0, 0, 1}},
                                 {Field::XAxis, {1, 0, 0}},
                                 {Field::Radius, {radius}}});
}

inline int AddCylinder(XtText& xt, double radius)
{
    return xt.Add(type::Cylinder, {{Field::Pvec, {0, 0, 0}},
                                   {Field::Axis, {0, 0, 1}},
                                   {Field::Radius, {radius}},
                                   {Field::XAxis, {1, 0, 0}}});
}

/// Poles of a full circle about z as a rational quadratic, weights multiplied in, and its knots.
struct CircleSpline
{
    explicit CircleSpline(double radius, bool isReversed = false)
    {
        for (int i = 0; i < 9; ++i) {
            const double angle = (isReversed ? -1 : 1) * i * M_PI / 4;
            const double weight = i % 2 == 0 ? 1 : std::sqrt(0.5);
            const double reach = i % 2 == 0 ? radius : radius * std::sqrt(2);
            poles.push_back({reach * std::cos(angle), reach * std::sin(angle), weight});
        }
    }
    std::vector<std::array<double, 3>> poles; ///< x, y, weight
    Values knots{0, 0.25, 0.5, 0.75, 1};
    Values multiplicities{3, 2, 2, 2, 3};
};

/// `dimension` 3 about the point on the z axis, 2 in a plane.
inline int AddSplineCircle(XtText& xt, const CircleSpline& circle, int dimension, double z = 0)
{
    Values vertices;
    for (const auto& [x, y, weight] : circle.poles) {
        vertices.insert(vertices.end(), {x * weight, y * weight});
        if (dimension == 3) {
            vertices.push_back(z * weight);
        }
        vertices.push_back(weight);
    }
    const int nurbs = xt.Add(
        type::NurbsCurve,
        {{Field::Degree, {2}},
         {Field::NVertices, {9}},
         {Field::VertexDim, {dimension + 1.}},
         {Field::NKnots, {5}},
         {Field::Rational, {1}},
         {Field::BSplineVertices, {1. * xt.Add(type::SplineVertices, {{Field::Vertices, vertices}})}},
         {Field::KnotMult, {1. * xt.Add(type::Multiplicities, {{Field::Mult, circle.multiplicities}})}},
         {Field::Knots, {1. * xt.Add(type::Knots, {{Field::Knots, circle.knots}})}}});
    return xt.Add(type::SplineCurve, {{Field::Nurbs, {1. * nurbs}}});
}

/// A straight line of degree 1 in the parameters of a surface.
inline int AddPlaneLine(XtText& xt, const Values& from, const Values& to)
{
    const int nurbs =
        xt.Add(type::NurbsCurve,
               {{Field::Degree, {1}},
                {Field::NVertices, {2}},
                {Field::VertexDim, {2}},
                {Field::NKnots, {2}},
                {Field::BSplineVertices,
                 {1. * xt.Add(type::SplineVertices, {{Field::Vertices, {from[0], from[1], to[0], to[1]}}})}},
                {Field::KnotMult, {1. * xt.Add(type::Multiplicities, {{Field::Mult, {2, 2}}})}},
                {Field::Knots, {1. * xt.Add(type::Knots, {{Field::Knots, {0, 1}}})}}});
    return xt.Add(type::SplineCurve, {{Field::Nurbs, {1. * nurbs}}});
}

/// A whole curve in a surface as tolerant edges have them: a trimmed one.
inline int AddFinCurve(XtText& xt, int surface, int planeCurve)
{
    const int curve =
        xt.Add(type::CurveInSurface, {{Field::Surface, {1. * surface}}, {Field::BCurve, {1. * planeCurve}}});
    return xt.Add(type::TrimmedCurve,
                  {{Field::BasisCurve, {1. * curve}}, {Field::Parm1, {0}}, {Field::Parm2, {1}}});
}

inline int AddIntersection(XtText& xt, int a, int b, const std::vector<std::array<double, 3>>& points)
{
    Values numbers;
    for (const std::array<double, 3>& point : points) {
        numbers.insert(numbers.end(), point.begin(), point.end());
    }
    const int chart = xt.Add(type::Chart, {{Field::ChordalError, {1e-4}}, {Field::Hvec, numbers}});
    return xt.Add(type::Intersection, {{Field::Surface, {1. * a, 1. * b}}, {Field::Chart, {1. * chart}}});
}

/// A ring of points about the z axis, the last on the first.
template <typename HeightAt>
std::vector<std::array<double, 3>> Ring(double radius, int count, HeightAt heightAt)
{
    std::vector<std::array<double, 3>> points;
    for (int i = 0; i <= count; ++i) {
        const double angle = 2 * M_PI * (i % count) / count;
        const double x = radius * std::cos(angle);
        points.push_back({x, radius * std::sin(angle), heightAt(x)});
    }
    return points;
}

/// A solid between planes across the z axis and a wall; the rings are edges along circles about z.
inline int AddRound(XtText& xt, double height, int bottomCurve, int topCurve, int wall, char wallSense = '+')
{
    XtBodyText body(xt);
    const int bottom = body.Edge(bottomCurve);
    const int top = body.Edge(topCurve);
    body.Face(AddPlane(xt, {0, 0, 0}, {0, 0, 1}), '-', {{{bottom, false}}});
    body.Face(AddPlane(xt, {0, 0, height}, {0, 0, 1}), '+', {{{top, true}}});
    body.Face(wall, wallSense, {{{bottom, true}}, {{top, false}}});
    return body.Finish();
}

inline int AddCylinderBody(XtText& xt, double radius, double height)
{
    return AddRound(xt, height, AddCircle(xt, 0, radius), AddCircle(xt, height, radius),
                    AddCylinder(xt, radius));
}

/// A cylinder whose upper edge is rounded by a rolling ball.
struct Puck
{
    double radius;
    double height;
    double ball;
    bool isSpline;  ///< the spine is a spline, not a circle
    bool hasCharts; ///< the edges are the curves where the ball touches, from coarse charts, not circles
};

inline int AddPuck(XtText& xt, const Puck& puck)
{
    XtBodyText body(xt);
    const double inner = puck.radius - puck.ball;
    const double side = puck.height - puck.ball;
    const int wall = AddCylinder(xt, puck.radius);
    const int roof = AddPlane(xt, {0, 0, puck.height}, {0, 0, 1});
    const int spine =
        puck.isSpline ? AddSplineCircle(xt, CircleSpline(inner), 3, side) : AddCircle(xt, side, inner);
    const int blend = xt.Add(type::Blend, {{Field::BlendType, {'R'}},
                                           {Field::Surface, {1. * wall, 1. * roof}},
                                           {Field::Spine, {1. * spine}},
                                           {Field::Range, {-puck.ball, -puck.ball}}});
    const int bound = xt.Add(type::BlendBound, {{Field::Boundary, {0}}, {Field::Blend, {1. * blend}}});
    const auto edge = [&](double radius, double z, int surface) {
        return body.Edge(
            puck.hasCharts ? AddIntersection(xt, surface, bound, Ring(radius, 11, [&](double) { return z; }))
                           : AddCircle(xt, z, radius));
    };
    const int bottom = body.Edge(AddCircle(xt, 0, puck.radius));
    const int below = edge(puck.radius, side, wall);
    const int top = edge(inner, puck.height, roof);
    body.Face(AddPlane(xt, {0, 0, 0}, {0, 0, 1}), '-', {{{bottom, false}}});
    body.Face(roof, '+', {{{top, true}}});
    body.Face(wall, '+', {{{bottom, true}}, {{below, false}}});
    body.Face(blend, '-', {{{below, true}}, {{top, false}}});
    return body.Finish();
}

// ------------------------------------------------------------------------------------------------ attributes

inline int AddAttribute(XtText& xt, int owner, const std::string& kind, int valueType, const Values& values)
{
    const int name = xt.Add(type::AttributeName, {{Field::String, Codes(kind)}});
    const int definition =
        xt.Add(type::AttributeDefinition, {{Field::Identifier, {1. * name}}, {Field::Fields, {1}}});
    const int data = xt.Add(valueType, {{Field::Values, values}});
    return xt.Add(
        type::Attribute,
        {{Field::Definition, {1. * definition}}, {Field::Owner, {1. * owner}}, {Field::Fields, {1. * data}}});
}

// -------------------------------------------------------------------------------------------------- reading

/// Nothing when the file is refused.
inline std::optional<cadex::ModelData_Model> Read(const std::string& bytes)
{
    return cadex::test::ReadBytes<cadex::Para_Reader>(bytes);
}

/// Of the only part, from its exact faces, in cubic metres; 0 when there is none.
inline double VolumeOf(const cadex::ModelData_Model& model)
{
    const auto parts = cadex::mesh::DistinctParts(model);
    cadex::ModelAlgo_ValidationPropertyData data;
    if (parts.size() != 1 ||
        !cadex::ModelAlgo_ValidationProperty::ComputeValidationProperties(parts[0], data)) {
        return 0;
    }
    return data.Volume() * 1e-9;
}

} // namespace xttest
