// Every kind of surface and curve, by the volumes of bodies that have a formula.
#include "tests/sdk/parasolid/XtShapes.h"

#include <gtest/gtest.h>

#include <cadex/internal/Reports.hxx>

namespace xttest {
namespace {

using cadex::internal::Report;
using cadex::internal::Reports;

constexpr double R = 0.005;
constexpr double H = 0.012;

/// Reads as text and as binary; both must give the volume, and nothing may be missing.
void ExpectVolume(const XtText& xt, double volume, double within = 1e-6)
{
    for (const std::string& bytes : {xt.Text(), xt.Binary(), xt.Text(true), xt.Binary(true)}) {
        Reports::Clear();
        const auto model = Read(bytes);
        ASSERT_TRUE(model) << Reports::Take().front().text;
        EXPECT_NEAR(VolumeOf(*model), volume, within * volume);
        cadex::test::MeshBodies(*model);
        for (const Report& report : Reports::Take()) {
            ADD_FAILURE() << report.text;
        }
    }
}

int SweptCircle(XtText& xt)
{
    return xt.Add(type::Swept, {{Field::Section, {1. * AddCircle(xt, 0.001, R)}}, {Field::Sweep, {0, 0, 1}}});
}

int SpunLine(XtText& xt)
{
    const int line = xt.Add(type::Line, {{Field::Pvec, {R, 0, 0}}, {Field::Direction, {0, 0, 1}}});
    return xt.Add(type::Spun,
                  {{Field::Profile, {1. * line}}, {Field::Base, {0, 0, 0}}, {Field::Axis, {0, 0, 1}}});
}

int OffsetCylinder(XtText& xt)
{
    return xt.Add(type::Offset,
                  {{Field::Surface, {1. * AddCylinder(xt, R - 0.002)}}, {Field::Offset, {0.002}}});
}

int SplineWall(XtText& xt)
{
    Values vertices;
    const CircleSpline circle(R);
    for (const auto& [x, y, weight] : circle.poles) {
        for (const double z : {-0.001, H + 0.001}) {
            vertices.insert(vertices.end(), {x * weight, y * weight, z * weight, weight});
        }
    }
    const auto list = [&](int type, Field field, const Values& values) {
        return Values{1. * xt.Add(type, {{field, values}})};
    };
    const int nurbs =
        xt.Add(type::NurbsSurface,
               {{Field::UDegree, {2}},
                {Field::VDegree, {1}},
                {Field::NUVertices, {9}},
                {Field::NVVertices, {2}},
                {Field::Rational, {1}},
                {Field::VertexDim, {4}},
                {Field::BSplineVertices, list(type::SplineVertices, Field::Vertices, vertices)},
                {Field::UKnotMult, list(type::Multiplicities, Field::Mult, circle.multiplicities)},
                {Field::VKnotMult, list(type::Multiplicities, Field::Mult, {2, 2})},
                {Field::UKnots, list(type::Knots, Field::Knots, circle.knots)},
                {Field::VKnots, list(type::Knots, Field::Knots, {0, 1})}});
    return xt.Add(type::SplineSurface, {{Field::Nurbs, {1. * nurbs}}});
}

TEST(ParasolidGeometry, WallsOfEveryKindBoundTheSameCylinder)
{
    const struct
    {
        const char* name;
        int (*make)(XtText&);
        char sense;
    } walls[] = {{"cylinder", [](XtText& xt) { return AddCylinder(xt, R); }, '+'},
                 {"swept", SweptCircle, '+'},
                 {"spun", SpunLine, '-'},
                 {"offset", OffsetCylinder, '+'},
                 {"spline", SplineWall, '+'}};
    for (const auto& [name, make, sense] : walls) {
        SCOPED_TRACE(name);
        XtText xt;
        AddRound(xt, H, AddCircle(xt, 0, R), AddCircle(xt, H, R), make(xt), sense);
        ExpectVolume(xt, M_PI * R * R * H);
    }
}

/// Senses of face and surface both turn the normal, that of a curve its direction.
TEST(ParasolidGeometry, TurnedSurfacesAndCurvesGiveTheSameBody)
{
    XtText xt;
    const int wall = AddCylinder(xt, R);
    xt.Set(wall, Field::Sense, {'-'});
    const int top = AddCircle(xt, H, R);
    xt.Set(top, Field::Normal, {0, 0, -1});
    xt.Set(top, Field::Sense, {'-'});
    AddRound(xt, H, AddCircle(xt, 0, R), top, wall, '-');
    ExpectVolume(xt, M_PI * R * R * H);
}

TEST(ParasolidGeometry, ConesSpheresAndToriHaveTheirVolumes)
{
    {
        XtText xt;
        const double top = 0.003;
        const double slant = std::hypot(H, R - top);
        const int cone = xt.Add(type::Cone, {{Field::Pvec, {0, 0, 0}},
                                             {Field::Axis, {0, 0, 1}},
                                             {Field::Radius, {R}},
                                             {Field::SinHalfAngle, {(top - R) / slant}},
                                             {Field::CosHalfAngle, {H / slant}},
                                             {Field::XAxis, {1, 0, 0}}});
        AddRound(xt, H, AddCircle(xt, 0, R), AddCircle(xt, H, top), cone);
        ExpectVolume(xt, M_PI * H / 3 * (R * R + R * top + top * top));
    }
    const auto alone = [](int type, const FieldValues& fields) {
        XtText xt;
        XtBodyText body(xt);
        body.Face(xt.Add(type, fields), '+', {});
        body.Finish();
        return xt;
    };
    const FieldValues axes = {
        {Field::Centre, {0.1, 0, 0}}, {Field::Axis, {0, 0, 1}}, {Field::XAxis, {1, 0, 0}}};
    FieldValues sphere = axes;
    sphere.push_back({Field::Radius, {R}});
    ExpectVolume(alone(type::Sphere, sphere), 4. / 3 * M_PI * R * R * R);
    const double minor = 0.002;
    const auto torus = [&](double major) {
        FieldValues fields = axes;
        fields.push_back({Field::MajorRadius, {major}});
        fields.push_back({Field::MinorRadius, {minor}});
        return fields;
    };
    ExpectVolume(alone(type::Torus, torus(R)), 2 * M_PI * M_PI * R * minor * minor);
    // a lemon: the lens between two arcs, turned about the chord
    const double a = 0.001;
    const double reach = std::acos(a / minor);
    const double side = minor * std::sin(reach);
    const double volume =
        2 * M_PI * (minor * minor * side - side * side * side / 3 - a * minor * minor * reach);
    ExpectVolume(alone(type::Torus, torus(-a)), volume);
}

TEST(ParasolidGeometry, ChartsAreRefinedOnBothSurfaces)
{
    XtText xt;
    XtBodyText body(xt);
    const double slope = 0.5;
    const int wall = AddCylinder(xt, R);
    const int roof = AddPlane(xt, {0, 0, H}, {-slope, 0, 1});
    const int cut = AddIntersection(xt, roof, wall, Ring(R, 9, [&](double x) { return H + slope * x; }));
    const int bottom = body.Edge(AddCircle(xt, 0, R));
    const int top = body.Edge(cut);
    body.Face(AddPlane(xt, {0, 0, 0}, {0, 0, 1}), '-', {{{bottom, false}}});
    body.Face(roof, '+', {{{top, true}}});
    body.Face(wall, '+', {{{bottom, true}}, {{top, false}}});
    body.Finish();
    ExpectVolume(xt, M_PI * R * R * H);
}

/// Edges without a curve: each fin has one in its surface. The one of the roof may lie a little off.
TEST(ParasolidGeometry, TolerantEdgesAreMadeOfTheirFins)
{
    for (const double off : {0., 2e-6}) {
        XtText xt;
        XtBodyText body(xt);
        const int wall = AddCylinder(xt, R);
        const int roof = AddPlane(xt, {0, 0, H}, {0, 0, 1});
        const int bottom = body.Edge(AddCircle(xt, 0, R));
        const int top = body.Edge(0, 0, 0, off > 0 ? 5e-6 : 1e-8);
        const int onRoof = AddFinCurve(xt, roof, AddSplineCircle(xt, CircleSpline(R + off), 2));
        const int onWall = AddFinCurve(xt, wall, AddPlaneLine(xt, {2 * M_PI, H}, {0, H}));
        body.Face(AddPlane(xt, {0, 0, 0}, {0, 0, 1}), '-', {{{bottom, false}}});
        body.Face(roof, '+', {{{top, true, onRoof}}});
        body.Face(wall, '+', {{{bottom, true}}, {{top, false, onWall}}});
        body.Finish();
        ExpectVolume(xt, M_PI * R * R * H, off > 0 ? 1e-3 : 1e-6);
    }
}

/// A puck whose upper edge is rounded. The spine is a circle, for which the blend is a torus, or a spline;
/// the edges are circles, or the curves where the ball touches, from coarse charts.
TEST(ParasolidGeometry, RollingBallBlends)
{
    const double r = 0.002;
    const double inner = R - r;
    const double volume = M_PI * R * R * (H - r) + M_PI * inner * inner * r +
                          M_PI * M_PI / 2 * r * r * inner + 2. / 3 * M_PI * r * r * r;
    for (const bool isSpline : {false, true}) {
        for (const bool hasCharts : {false, true}) {
            SCOPED_TRACE(std::to_string(isSpline) + std::to_string(hasCharts));
            XtText xt;
            AddPuck(xt, {R, H, r, isSpline, hasCharts});
            ExpectVolume(xt, volume, isSpline ? 1e-5 : 1e-6);
        }
    }
}

} // namespace
} // namespace xttest
