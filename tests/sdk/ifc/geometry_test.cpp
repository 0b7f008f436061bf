// Each kind of geometry that IFC knows, against volumes worked out by hand.
#include <cmath>
#include <functional>

#include <gtest/gtest.h>

#include "tests/sdk/ifc/IfcText.h"
#include "tests/sdk/ifc/ReadBack.h"

namespace ifctest {
namespace {

using std::string;

struct Solid
{
    const char* name;
    std::function<string(IfcText&)> item;
    double volume; ///< mm3
    std::array<double, 3> low;
    std::array<double, 3> high;
    double slack = 1e-9; ///< of the volume
};

string Profile(IfcText& f, const string& text)
{
    return f.Add(text);
}

std::function<string(IfcText&)> Extruded(const string& profile, double depth)
{
    return [=](IfcText& f) { return f.Extrude(Profile(f, profile), depth); };
}

string HalfSpace(IfcText& f, double height, bool below)
{
    const string plane = f.Add("IFCPLANE(" + f.Axes(0, 0, height) + ")");
    return f.Add("IFCHALFSPACESOLID(" + plane + (below ? ",.T.)" : ",.F.)"));
}

string Boolean(IfcText& f, const string& kind, const string& first, const string& second)
{
    return f.Add("IFCBOOLEANRESULT(." + kind + ".," + first + "," + second + ")");
}

/// A box of 100 by 100 by 100 over the origin's quadrant, face by face.
string FacetedBox(IfcText& f, const string& solid)
{
    std::vector<string> points;
    points.reserve(8);
    for (int i = 0; i < 8; ++i) {
        points.push_back(f.Point(i & 1 ? 100 : 0, i & 2 ? 100 : 0, i & 4 ? 100 : 0));
    }
    std::vector<string> faces;
    for (const auto& quad : std::vector<std::array<std::size_t, 4>>{
             {0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}}) {
        const string loop =
            f.Add("IFCPOLYLOOP(" +
                  IfcText::List({points[quad[0]], points[quad[1]], points[quad[2]], points[quad[3]]}) + ")");
        faces.push_back(f.Add("IFCFACE((" + f.Add("IFCFACEOUTERBOUND(" + loop + ",.T.)") + "))"));
    }
    const string shell = f.Add("IFCCLOSEDSHELL(" + IfcText::List(faces) + ")");
    return f.Add(solid + "(" + (solid == "IFCFACETEDBREP" ? shell : "(" + shell + ")") + ")");
}

/// A cylinder of radius 10 and height 50 bounded by two planes and a cylindrical surface with one seam.
string AdvancedCylinder(IfcText& f)
{
    const string bottom = f.Axes(0, 0, 0);
    const string top = f.Axes(0, 0, 50);
    const string vertexLow = f.Add("IFCVERTEXPOINT(" + f.Point(10, 0, 0) + ")");
    const string vertexHigh = f.Add("IFCVERTEXPOINT(" + f.Point(10, 0, 50) + ")");
    const auto ring = [&](const string& vertex, const string& axes) {
        return f.Add("IFCEDGECURVE(" + vertex + "," + vertex + "," + f.Add("IFCCIRCLE(" + axes + ",10.)") +
                     ",.T.)");
    };
    const string low = ring(vertexLow, bottom);
    const string high = ring(vertexHigh, top);
    const string line = f.Add("IFCLINE(" + f.Point(10, 0, 0) + "," +
                              f.Add("IFCVECTOR(" + f.Direction(0, 0, 1) + ",1.)") + ")");
    const string seam = f.Add("IFCEDGECURVE(" + vertexLow + "," + vertexHigh + "," + line + ",.T.)");
    const auto edge = [&](const string& curve, bool forward) {
        return f.Add("IFCORIENTEDEDGE(*,*," + curve + (forward ? ",.T.)" : ",.F.)"));
    };
    const auto face = [&](const std::vector<string>& edges, const string& surface) {
        const string loop = f.Add("IFCEDGELOOP(" + IfcText::List(edges) + ")");
        return f.Add("IFCADVANCEDFACE((" + f.Add("IFCFACEOUTERBOUND(" + loop + ",.T.)") + ")," + surface +
                     ",.T.)");
    };
    const string down = f.Axes(f.origin, f.Direction(0, 0, -1), "$");
    const string shell =
        f.Add("IFCCLOSEDSHELL(" +
              IfcText::List({face({edge(low, false)}, f.Add("IFCPLANE(" + down + ")")),
                             face({edge(high, true)}, f.Add("IFCPLANE(" + top + ")")),
                             face({edge(low, true), edge(seam, true), edge(high, false), edge(seam, false)},
                                  f.Add("IFCCYLINDRICALSURFACE(" + bottom + ",10.)"))}) +
              ")");
    return f.Add("IFCADVANCEDBREP(" + shell + ")");
}

/// The lower half of a ball of radius 10 under a plane: a spherical face with one ring, and the pole in it.
string AdvancedBowl(IfcText& f)
{
    const string vertex = f.Add("IFCVERTEXPOINT(" + f.Point(10, 0, 0) + ")");
    const string ring = f.Add("IFCEDGECURVE(" + vertex + "," + vertex + "," +
                              f.Add("IFCCIRCLE(" + f.axes + ",10.)") + ",.T.)");
    const auto face = [&](bool forward, const string& surface) {
        const string edge = f.Add("IFCORIENTEDEDGE(*,*," + ring + (forward ? ",.T.)" : ",.F.)"));
        const string loop = f.Add("IFCEDGELOOP((" + edge + "))");
        return f.Add("IFCADVANCEDFACE((" + f.Add("IFCFACEBOUND(" + loop + ",.T.)") + ")," + surface +
                     ",.T.)");
    };
    const string shell =
        f.Add("IFCCLOSEDSHELL(" +
              IfcText::List({face(true, f.Add("IFCPLANE(" + f.axes + ")")),
                             face(false, f.Add("IFCSPHERICALSURFACE(" + f.axes + ",10.)"))}) +
              ")");
    return f.Add("IFCADVANCEDBREP(" + shell + ")");
}

string Disk(IfcText& f, const string& inner)
{
    return f.Add("IFCSWEPTDISKSOLID(" + f.Polyline({{0, 0, 0}, {0, 0, 100}}) + ",10.," + inner + ",$,$)");
}

string Tetrahedron(IfcText& f)
{
    const string points = f.Add("IFCCARTESIANPOINTLIST3D(((0.,0.,0.),(60.,0.,0.),(0.,60.,0.),(0.,0.,60.)))");
    return f.Add("IFCTRIANGULATEDFACESET(" + points + ",$,.T.,((1,3,2),(1,2,4),(2,3,4),(1,4,3)),$)");
}

string PolygonalPrism(IfcText& f)
{
    // a U seen from above: concave, so that fans would spill over
    const string points = f.Add("IFCCARTESIANPOINTLIST3D(((0.,0.,0.),(30.,0.,0.),(30.,30.,0.),(20.,30.,0.),"
                                "(20.,10.,0.),(10.,10.,0.),(10.,30.,0.),(0.,30.,0.),(0.,0.,10.),(30.,0.,10.),"
                                "(30.,30.,10.),(20.,30.,10.),(20.,10.,10.),(10.,10.,10.),(10.,30.,10.),"
                                "(0.,30.,10.)))");
    std::vector<string> faces{f.Add("IFCINDEXEDPOLYGONALFACE((8,7,6,5,4,3,2,1))"),
                              f.Add("IFCINDEXEDPOLYGONALFACE((9,10,11,12,13,14,15,16))")};
    for (int i = 0; i < 8; ++i) {
        const int j = (i + 1) % 8;
        faces.push_back(f.Add("IFCINDEXEDPOLYGONALFACE((" + std::to_string(i + 1) + "," +
                              std::to_string(j + 1) + "," + std::to_string(j + 9) + "," +
                              std::to_string(i + 9) + "))"));
    }
    return f.Add("IFCPOLYGONALFACESET(" + points + ",.T.," + IfcText::List(faces) + ",$)");
}

constexpr double Pi = M_PI;

std::vector<Solid> Sweeps()
{
    const string p = "(.AREA.,$,$,";
    const double fillet = (4 - Pi) / 4; // what a quarter circle leaves of its square
    return {
        {"rectangle",
         Extruded("IFCRECTANGLEPROFILEDEF" + p + "40.,20.)", 100),
         80000,
         {-20, -10, 0},
         {20, 10, 100}},
        {"rounded rectangle",
         Extruded("IFCROUNDEDRECTANGLEPROFILEDEF" + p + "40.,20.,5.)", 10),
         10 * (800 - 4 * 25 * fillet),
         {-20, -10, 0},
         {20, 10, 10},
         1e-7},
        {"hollow rectangle",
         Extruded("IFCRECTANGLEHOLLOWPROFILEDEF" + p + "40.,20.,2.,$,$)", 10),
         10 * (800 - 36 * 16),
         {-20, -10, 0},
         {20, 10, 10}},
        {"circle",
         Extruded("IFCCIRCLEPROFILEDEF" + p + "10.)", 10),
         1000 * Pi,
         {-10, -10, 0},
         {10, 10, 10},
         1e-7},
        {"hollow circle",
         Extruded("IFCCIRCLEHOLLOWPROFILEDEF" + p + "10.,2.)", 10),
         360 * Pi,
         {-10, -10, 0},
         {10, 10, 10},
         1e-7},
        {"tall ellipse",
         Extruded("IFCELLIPSEPROFILEDEF" + p + "5.,10.)", 10),
         500 * Pi,
         {-5, -10, 0},
         {5, 10, 10},
         1e-7},
        {"trapezium",
         Extruded("IFCTRAPEZIUMPROFILEDEF" + p + "40.,20.,10.,5.)", 10),
         3000,
         {-20, -5, 0},
         {20, 5, 10}},
        {"I",
         Extruded("IFCISHAPEPROFILEDEF" + p + "40.,60.,4.,6.,5.,$,$)", 10),
         10 * (2 * 40 * 6 + 4 * 48 + 4 * 25 * fillet),
         {-20, -30, 0},
         {20, 30, 10},
         1e-7},
        {"I of two flanges",
         Extruded("IFCASYMMETRICISHAPEPROFILEDEF" + p + "40.,60.,4.,6.,$,20.,8.,$,$,$,$,$)", 10),
         10 * (40 * 6 + 20 * 8 + 4 * 46),
         {-20, -30, 0},
         {20, 30, 10}},
        {"L",
         Extruded("IFCLSHAPEPROFILEDEF" + p + "60.,40.,5.,$,$,$)", 10),
         10 * (40 * 5 + 55 * 5),
         {-20, -30, 0},
         {20, 30, 10}},
        {"T",
         Extruded("IFCTSHAPEPROFILEDEF" + p + "60.,40.,5.,6.,$,$,$,$,$)", 10),
         10 * (40 * 6 + 54 * 5),
         {-20, -30, 0},
         {20, 30, 10}},
        {"U",
         Extruded("IFCUSHAPEPROFILEDEF" + p + "60.,40.,5.,6.,$,$,$)", 10),
         10 * (2 * 40 * 6 + 48 * 5),
         {-20, -30, 0},
         {20, 30, 10}},
        {"C",
         Extruded("IFCCSHAPEPROFILEDEF" + p + "60.,40.,2.,10.,$)", 10),
         10 * (60 + 2 * 38 + 2 * 8) * 2.0,
         {-20, -30, 0},
         {20, 30, 10}},
        {"Z",
         Extruded("IFCZSHAPEPROFILEDEF" + p + "60.,40.,4.,6.,$,$)", 10),
         10 * (2 * 40 * 6 + 48 * 4),
         {-38, -30, 0},
         {38, 30, 10}},
        {"clockwise outline with a hole of the same sense",
         [](IfcText& f) {
             const string outer = f.Polyline({{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}});
             const string hole = f.Polyline({{2, 2}, {2, 4}, {4, 4}, {4, 2}, {2, 2}});
             return f.Extrude(f.Add("IFCARBITRARYPROFILEDEFWITHVOIDS(.AREA.,$," + outer + ",(" + hole + "))"),
                              5);
         },
         480,
         {0, 0, 0},
         {10, 10, 5}},
        {"outline of arcs",
         [](IfcText& f) { // a stadium: two lines, two half circles
             const string list =
                 f.Add("IFCCARTESIANPOINTLIST2D(((0.,0.),(20.,0.),(25.,5.),(20.,10.),(0.,10.),"
                       "(-5.,5.)))");
             const string curve = f.Add("IFCINDEXEDPOLYCURVE(" + list +
                                        ",(IFCLINEINDEX((1,2)),IFCARCINDEX((2,3,4)),IFCLINEINDEX((4,5)),"
                                        "IFCARCINDEX((5,6,1))),.F.)");
             return f.Extrude(f.Add("IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$," + curve + ")"), 10);
         },
         10 * (200 + 25 * Pi),
         {-5, 0, 0},
         {25, 10, 10},
         1e-7},
        {"half circle trimmed against its sense",
         [](IfcText& f) {
             const string place = f.Add("IFCAXIS2PLACEMENT2D(" + f.Point(0, 0) + ",$)");
             const string circle = f.Add("IFCCIRCLE(" + place + ",10.)");
             const string arc = f.Add("IFCTRIMMEDCURVE(" + circle +
                                      ",(IFCPARAMETERVALUE(3.141592653589793)),(IFCPARAMETERVALUE(0.)),.F.,"
                                      ".PARAMETER.)");
             const string line = f.Polyline({{10, 0}, {-10, 0}});
             const auto segment = [&](const string& curve) {
                 return f.Add("IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.," + curve + ")");
             };
             const string outline =
                 f.Add("IFCCOMPOSITECURVE(" + IfcText::List({segment(arc), segment(line)}) + ",.F.)");
             return f.Extrude(f.Add("IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$," + outline + ")"), 10);
         },
         500 * Pi,
         {-10, 0, 0},
         {10, 10, 10},
         1e-7},
        {"mirrored and scaled profile",
         [](IfcText& f) {
             const string op = f.Add("IFCCARTESIANTRANSFORMATIONOPERATOR2D($,$," + f.Point(5, 0) + ",2.)");
             const string base = f.Add("IFCTRAPEZIUMPROFILEDEF(.AREA.,$,$,40.,20.,10.,0.)");
             return f.Extrude(f.Add("IFCDERIVEDPROFILEDEF(.AREA.,$," + base + "," + op + ",$)"), 1);
         },
         1200,
         {-35, -10, 0},
         {45, 10, 1}},
        {"slanted extrusion downwards",
         [](IfcText& f) {
             return f.Add("IFCEXTRUDEDAREASOLID(" + f.Rectangle(10, 10) + ",$," + f.Direction(1, 0, -1) +
                          "," + IfcText::Number(10 * std::sqrt(2.0)) + ")");
         },
         1000,
         {-5, -5, -10},
         {15, 5, 0},
         1e-6},
        {"tapered",
         [](IfcText& f) {
             return f.Add("IFCEXTRUDEDAREASOLIDTAPERED(" + f.Rectangle(20, 20) + ",$," +
                          f.Direction(0, 0, 1) + ",30.," + f.Rectangle(10, 10) + ")");
         },
         30.0 / 3 * (400 + 100 + 200),
         {-10, -10, 0},
         {10, 10, 30},
         1e-7},
        {"revolved by a quarter",
         [](IfcText& f) {
             const string axis =
                 f.Add("IFCAXIS1PLACEMENT(" + f.Point(-20, 0, 0) + "," + f.Direction(0, 1, 0) + ")");
             return f.Add("IFCREVOLVEDAREASOLID(" + f.Rectangle(10, 10) + ",$," + axis +
                          ",1.570796326794897)");
         },
         100 * 20 * Pi / 2,
         {-20, -5, -25},
         {5, 5, 0},
         1e-7},
        {"revolved whole",
         [](IfcText& f) {
             const string axis =
                 f.Add("IFCAXIS1PLACEMENT(" + f.Point(-20, 0, 0) + "," + f.Direction(0, 1, 0) + ")");
             return f.Add("IFCREVOLVEDAREASOLID(" + f.Rectangle(10, 10) + ",$," + axis +
                          ",6.283185307179586)");
         },
         100 * 20 * Pi * 2,
         {-45, -5, -25},
         {5, 5, 25},
         1e-7},
        {"swept disk",
         [](IfcText& f) { return Disk(f, "$"); },
         10000 * Pi,
         {-10, -10, 0},
         {10, 10, 100},
         1e-6},
        {"tube", [](IfcText& f) { return Disk(f, "5."); }, 7500 * Pi, {-10, -10, 0}, {10, 10, 100}, 1e-6},
        {"sweep with a fixed reference",
         [](IfcText& f) {
             return f.Add("IFCFIXEDREFERENCESWEPTAREASOLID(" + f.Rectangle(10, 4) + ",$," +
                          f.Polyline({{0, 0, 0}, {0, 100, 0}}) + ",$,$," + f.Direction(1, 0, 0) + ")");
         },
         4000,
         {-5, 0, -2},
         {5, 100, 2},
         1e-6},
    };
}

/// Sweeps that are given by parameters, are long, or cross their own axis.
std::vector<Solid> OddSweeps()
{
    const auto disk = [](IfcText& f, const string& directrix, const string& from, const string& to) {
        return f.Add("IFCSWEPTDISKSOLID(" + directrix + ",10.,$," + from + "," + to + ")");
    };
    const auto revolved = [](IfcText& f, double x, double width, const string& angle) {
        const string axis = f.Add("IFCAXIS1PLACEMENT(" + f.Point(x, 0, 0) + "," + f.Direction(0, 1, 0) + ")");
        return f.Add("IFCREVOLVEDAREASOLID(" + f.Rectangle(width, 10) + ",$," + axis + "," + angle + ")");
    };
    return {
        {"disk along a part of a polyline",
         [=](IfcText& f) {
             return disk(f, f.Polyline({{0, 0, 0}, {0, 0, 100}, {0, 0, 300}, {0, 0, 400}}), "0.5", "2.");
         },
         100 * Pi * 250,
         {-10, -10, 50},
         {10, 10, 300},
         1e-6},
        {"disk along a part of a circle",
         [=](IfcText& f) {
             return disk(f, f.Add("IFCCIRCLE(" + f.axes + ",100.)"), "0.", "1.570796326794897");
         },
         100 * Pi * 100 * Pi / 2,
         {0, 0, -10},
         {110, 110, 10},
         1e-6},
        {"disk along lengths of a polyline",
         [=](IfcText& f) {
             return disk(f, f.Polyline({{0, 0, 0}, {0, 0, 100}, {0, 0, 300}}), "IFCLENGTHMEASURE(50.)",
                         "IFCLENGTHMEASURE(250.)");
         },
         100 * Pi * 200,
         {-10, -10, 50},
         {10, 10, 250},
         1e-6},
        {"disk along parts of a composite curve",
         [=](IfcText& f) {
             const auto segment = [&](const string& curve) {
                 return f.Add("IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.," + curve + ")");
             };
             const string circle = f.Add(
                 "IFCCIRCLE(" + f.Axes(f.Point(-100, 0, 100), f.Direction(0, -1, 0), f.Direction(1, 0, 0)) +
                 ",100.)"); // from (0, 0, 100) on upwards
             const string arc = f.Add("IFCTRIMMEDCURVE(" + circle +
                                      ",(IFCPARAMETERVALUE(0.)),(IFCPARAMETERVALUE(1.)),.T.,.PARAMETER.)");
             const string curve = f.Add(
                 "IFCCOMPOSITECURVE(" +
                 IfcText::List({segment(f.Polyline({{0, 0, 0}, {0, 0, 100}})), segment(arc)}) + ",.F.)");
             return disk(f, curve, "0.5", "1.5");
         },
         100 * Pi * (50 + 50),
         {-100 + 90 * std::cos(0.5), -10, 50},
         {10, 10, 100 + 110 * std::sin(0.5)},
         1e-6},
        {"fixed reference along a part of its line",
         [](IfcText& f) {
             return f.Add("IFCFIXEDREFERENCESWEPTAREASOLID(" + f.Rectangle(10, 4) + ",$," +
                          f.Polyline({{0, 0, 0}, {0, 100, 0}}) + ",0.25,0.5," + f.Direction(1, 0, 0) + ")");
         },
         1000,
         {-5, 25, -2},
         {5, 50, 2},
         1e-6},
        {"disk along many corners",
         [=](IfcText& f) { // up and down, 60 corners: minutes for the kernel
             std::vector<std::vector<double>> points;
             for (int i = 0; i < 60; ++i) {
                 const int column = i / 2;
                 points.push_back({100.0 * column, 0, (i + 1) / 2 % 2 == 0 ? 0.0 : 200.0});
             }
             return disk(f, f.Polyline(points), "$", "$");
         },
         100 * Pi * (30 * 200 + 29 * 100),
         {-10, -10, -10},
         {2910, 10, 210},
         0.01},
        {"revolved and tapered",
         [=](IfcText& f) {
             const string axis =
                 f.Add("IFCAXIS1PLACEMENT(" + f.Point(-100, 0, 0) + "," + f.Direction(0, 1, 0) + ")");
             return f.Add("IFCREVOLVEDAREASOLIDTAPERED(" + f.Rectangle(10, 10) + ",$," + axis +
                          ",1.570796326794897," + f.Rectangle(10, 30) + ")");
         },
         100 * Pi / 2 * 200,
         {-100, -15, -105},
         {5, 15, 0},
         5e-3},
        {"spine of two sections",
         [=](IfcText& f) {
             return f.Add("IFCSECTIONEDSPINE(" + f.Polyline({{0, 0, 0}, {0, 0, 30}}) + ",(" +
                          f.Rectangle(20, 20) + "," + f.Rectangle(10, 10) + "),(" + f.axes + "," +
                          f.Axes(0, 0, 30) + "))");
         },
         30.0 / 3 * (400 + 100 + 200),
         {-10, -10, 0},
         {10, 10, 30}},
        {"revolved across its axis",
         [=](IfcText& f) { return revolved(f, 0, 20, "6.283185307179586"); },
         100 * Pi * 10,
         {-10, -5, -10},
         {10, 5, 10},
         1e-6},
        {"revolved across its axis, more on one side, by a quarter",
         [=](IfcText& f) { return revolved(f, -5, 20, "1.570796326794897"); },
         10 * (225 + 25) * Pi / 4,
         {-10, -5, -15},
         {10, 5, 5},
         1e-6},
    };
}

std::vector<Solid> Constructed()
{
    return {
        {"block",
         [](IfcText& f) { return f.Add("IFCBLOCK(" + f.axes + ",10.,20.,30.)"); },
         6000,
         {0, 0, 0},
         {10, 20, 30}},
        {"pyramid",
         [](IfcText& f) { return f.Add("IFCRECTANGULARPYRAMID(" + f.axes + ",10.,20.,30.)"); },
         2000,
         {0, 0, 0},
         {10, 20, 30}},
        {"cone",
         [](IfcText& f) { return f.Add("IFCRIGHTCIRCULARCONE(" + f.axes + ",30.,10.)"); },
         1000 * Pi,
         {-10, -10, 0},
         {10, 10, 30},
         1e-7},
        {"cylinder",
         [](IfcText& f) { return f.Add("IFCRIGHTCIRCULARCYLINDER(" + f.axes + ",30.,10.)"); },
         3000 * Pi,
         {-10, -10, 0},
         {10, 10, 30},
         1e-7},
        {"sphere",
         [](IfcText& f) { return f.Add("IFCSPHERE(" + f.axes + ",10.)"); },
         4000 * Pi / 3,
         {-10, -10, -10},
         {10, 10, 10},
         1e-7},
        {"union",
         [](IfcText& f) {
             return Boolean(f, "UNION", f.Box(10, 10, 10), f.Extrude(f.Rectangle(4, 4), 10, f.Axes(0, 0, 5)));
         },
         1000 + 80,
         {-5, -5, 0},
         {5, 5, 15}},
        {"intersection",
         [](IfcText& f) {
             return Boolean(f, "INTERSECTION", f.Box(10, 10, 10),
                            f.Extrude(f.Rectangle(4, 4), 10, f.Axes(0, 0, 5)));
         },
         80,
         {-2, -2, 5},
         {2, 2, 10}},
        {"difference within a difference",
         [](IfcText& f) {
             const string inner = Boolean(f, "DIFFERENCE", f.Box(10, 10, 10), f.Box(4, 4, 20));
             return f.Add("IFCCSGSOLID(" + Boolean(f, "DIFFERENCE", inner, f.Box(20, 2, 4)) + ")");
         },
         1000 - 160 - 2 * 4 * 6,
         {-5, -5, 0},
         {5, 5, 10}},
        {"clipped below",
         [](IfcText& f) {
             return f.Add("IFCBOOLEANCLIPPINGRESULT(.DIFFERENCE.," + f.Box(10, 10, 10) + "," +
                          HalfSpace(f, 4, true) + ")");
         },
         600,
         {-5, -5, 4},
         {5, 5, 10}},
        {"clipped above",
         [](IfcText& f) {
             return f.Add("IFCBOOLEANCLIPPINGRESULT(.DIFFERENCE.," + f.Box(10, 10, 10) + "," +
                          HalfSpace(f, 4, false) + ")");
         },
         400,
         {-5, -5, 0},
         {5, 5, 4}},
        {"clipped by a bounded half space",
         [](IfcText& f) {
             const string plane = f.Add("IFCPLANE(" + f.Axes(0, 0, 4) + ")");
             const string outline = f.Polyline({{-1, -20}, {1, -20}, {1, 20}, {-1, 20}, {-1, -20}});
             const string space =
                 f.Add("IFCPOLYGONALBOUNDEDHALFSPACE(" + plane + ",.F.," + f.axes + "," + outline + ")");
             return f.Add("IFCBOOLEANCLIPPINGRESULT(.DIFFERENCE.," + f.Box(10, 10, 10) + "," + space + ")");
         },
         1000 - 2 * 10 * 6,
         {-5, -5, 0},
         {5, 5, 10}},
        {"half space inside a cylinder",
         [](IfcText& f) {
             const string around = f.Add("IFCCYLINDRICALSURFACE(" + f.axes + ",3.)");
             return Boolean(f, "DIFFERENCE", f.Box(10, 10, 10),
                            f.Add("IFCHALFSPACESOLID(" + around + ",.T.)"));
         },
         1000 - M_PI * 9 * 10,
         {-5, -5, 0},
         {5, 5, 10}},
        {"half space outside a sphere",
         [](IfcText& f) {
             const string around = f.Add("IFCSPHERICALSURFACE(" + f.Axes(0, 0, 5) + ",4.)");
             return Boolean(f, "DIFFERENCE", f.Box(10, 10, 10),
                            f.Add("IFCHALFSPACESOLID(" + around + ",.F.)"));
         },
         4.0 / 3 * M_PI * 64,
         {-4, -4, 1},
         {4, 4, 9}},
        {"faceted B-rep",
         [](IfcText& f) { return FacetedBox(f, "IFCFACETEDBREP"); },
         1e6,
         {0, 0, 0},
         {100, 100, 100}},
        {"shells",
         [](IfcText& f) { return FacetedBox(f, "IFCSHELLBASEDSURFACEMODEL"); },
         1e6,
         {0, 0, 0},
         {100, 100, 100}},
        {"faces",
         [](IfcText& f) { return FacetedBox(f, "IFCFACEBASEDSURFACEMODEL"); },
         1e6,
         {0, 0, 0},
         {100, 100, 100}},
        {"advanced B-rep", AdvancedCylinder, 5000 * Pi, {-10, -10, 0}, {10, 10, 50}, 1e-6},
        {"advanced B-rep with a pole", AdvancedBowl, 2000 * Pi / 3, {-10, -10, -10}, {10, 10, 0}, 1e-6},
        {"triangles", Tetrahedron, 36000, {0, 0, 0}, {60, 60, 60}},
        {"polygons", PolygonalPrism, 7000, {0, 0, 0}, {30, 30, 10}},
    };
}

void Check(const Solid& solid, const ReadBack& model, double scale)
{
    SCOPED_TRACE(solid.name);
    const auto parts = model.Parts();
    ASSERT_EQ(parts.size(), 1U);
    const Node& part = *parts.front();
    const double volume = solid.volume * scale * scale * scale;
    if (part.exact) {
        EXPECT_NEAR(part.solid / volume, 1, solid.slack);
    }
    EXPECT_EQ(part.openEdges, 0);
    EXPECT_GE(part.normals, 3 * part.triangles * 0.99); // a sliver at a pole may lean
    EXPECT_NEAR(part.enclosed / volume, 1, 0.02);       // the mesh, and that it faces outwards
    for (std::size_t k = 0; k < 3; ++k) {
        // a mesh of a round body stays inside it by the chord at most
        EXPECT_NEAR(part.low[k], solid.low[k] * scale, 0.01 * scale * (solid.high[k] - solid.low[k]));
        EXPECT_NEAR(part.high[k], solid.high[k] * scale, 0.01 * scale * (solid.high[k] - solid.low[k]));
    }
}

TEST(IfcGeometry, Sweeps)
{
    for (const Solid& solid : Sweeps()) {
        IfcText file;
        file.Product("IFCBEAM", "beam", file.Shape({solid.item(file)}));
        Check(solid, ReadBack(file.Text()), 1);
    }
}

TEST(IfcGeometry, SweepsByParametersAndOfOddForms)
{
    for (const Solid& solid : OddSweeps()) {
        IfcText file;
        file.Product("IFCBEAM", "beam", file.Shape({solid.item(file)}));
        Check(solid, ReadBack(file.Text()), 1);
    }
}

TEST(IfcGeometry, ConstructedSolidsAndFacets)
{
    for (const Solid& solid : Constructed()) {
        IfcText file;
        file.Product("IFCBEAM", "beam", file.Shape({solid.item(file)}));
        Check(solid, ReadBack(file.Text()), 1);
    }
}

TEST(IfcGeometry, SurfacesEndAtTheirCurvesOrAtTheirOwnBounds)
{
    for (const bool isImplicit : {false, true}) {
        SCOPED_TRACE(isImplicit);
        IfcText f;
        const auto boundary = [&](double low, double high) {
            const string line =
                f.Polyline({{low, low, 0}, {high, low, 0}, {high, high, 0}, {low, high, 0}, {low, low, 0}});
            const string segment = f.Add("IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.," + line + ")");
            return f.Add("IFCBOUNDARYCURVE((" + segment + "),.F.)");
        };
        const string patch = f.Add("IFCBSPLINESURFACEWITHKNOTS(1,1,((" + f.Point(0, 0, 0) + "," +
                                   f.Point(0, 10, 0) + "),(" + f.Point(10, 0, 0) + "," + f.Point(10, 10, 0) +
                                   ")),.PLANE_SURF.,.F.,.F.,.F.,(2,2),(2,2),(0.,1.),(0.,1.),.UNSPECIFIED.)");
        const string surface = f.Add("IFCCURVEBOUNDEDSURFACE(" + patch + ",(" + boundary(3, 7) + ")" +
                                     (isImplicit ? ",.T.)" : ",.F.)"));
        f.Product("IFCPLATE", "plate", f.Shape({surface}));
        const ReadBack model(f.Text());
        const auto parts = model.Parts();
        ASSERT_EQ(parts.size(), 1U);
        EXPECT_NEAR(parts.front()->area, isImplicit ? 84 : 16, 1e-6);
    }
}

TEST(IfcGeometry, EveryUnitComesOutInMillimetres)
{
    const std::vector<std::pair<string, double>> units = {
        {"IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.)", 1000},
        {"IFCSIUNIT(*,.LENGTHUNIT.,.CENTI.,.METRE.)", 10},
        {"IFCCONVERSIONBASEDUNIT(#9001,.LENGTHUNIT.,'INCH',#9002)", 25.4},
        {"IFCCONVERSIONBASEDUNIT(#9001,.LENGTHUNIT.,'FOOT',#9004)", 304.8}};
    const string definitions = "#9001=IFCDIMENSIONALEXPONENTS(1,0,0,0,0,0,0);\n"
                               "#9002=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(25.4),#9003);\n"
                               "#9003=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
                               "#9004=IFCMEASUREWITHUNIT(IFCRATIOMEASURE(12.),#9005);\n"
                               "#9005=IFCCONVERSIONBASEDUNIT(#9001,.LENGTHUNIT.,'INCH',#9002);\n";
    for (const auto& [unit, scale] : units) {
        for (const Solid& solid : Constructed()) {
            IfcText file("IFC4", unit);
            file.Product("IFCBEAM", "beam", file.Shape({solid.item(file)}));
            string text = file.Text();
            text.insert(text.find("DATA;\n") + 6, definitions);
            Check(solid, ReadBack(text), scale);
        }
    }
}

TEST(IfcGeometry, DegreesAreReadAsTheFileSays)
{
    IfcText file("IFC2X3", "IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.)",
                 "IFCCONVERSIONBASEDUNIT(#9001,.PLANEANGLEUNIT.,'DEGREE',#9002)");
    const string axis =
        file.Add("IFCAXIS1PLACEMENT(" + file.Point(-20, 0, 0) + "," + file.Direction(0, 1, 0) + ")");
    const string solid = file.Add("IFCREVOLVEDAREASOLID(" + file.Rectangle(10, 10) + ",$," + axis + ",90.)");
    file.Product("IFCBEAM", "beam", file.Shape({solid}));
    string text = file.Text();
    text.insert(text.find("DATA;\n") + 6,
                "#9001=IFCDIMENSIONALEXPONENTS(0,0,0,0,0,0,0);\n"
                "#9002=IFCMEASUREWITHUNIT(IFCPLANEANGLEMEASURE(0.0174532925199433),#9003);\n"
                "#9003=IFCSIUNIT(*,.PLANEANGLEUNIT.,$,.RADIAN.);\n");
    const ReadBack model(text);
    ASSERT_EQ(model.Parts().size(), 1U);
    EXPECT_NEAR(model.Parts().front()->solid, 100 * 20 * Pi / 2, 1e-3);
}

} // namespace
} // namespace ifctest
