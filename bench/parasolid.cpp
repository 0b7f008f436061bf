// Reading and meshing Parasolid XT beside the same bodies in STEP, in processor time within one run.
//
// Data: the bodies of STEP files (those given; default: what Debian's opencascade-data and netgen-doc
// install, as far as they are there), read by the engine and written node by node as XT, text and neutral
// binary, many times in one file where they are small. Areas must agree within one in a million. The ratio is
// that of the fastest of some rounds, taken in turns.
//
//     parasolid_bench [FILE...]
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <GeomConvert.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_Circle.hxx>
#include <Geom_ConicalSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Ellipse.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <Geom_TrimmedCurve.hxx>

#include <cadex/STEP_Reader.hxx>

#include "sdk/brep/DescribedBRep.h"
#include "sdk/occt/EngineScope.h"
#include "tests/sdk/parasolid/XtShapes.h"

using namespace xttest;
namespace brep = cadex::brep;

namespace {

Values Point(const gp_Pnt& point)
{
    return {point.X() / 1000, point.Y() / 1000, point.Z() / 1000};
}
Values Direction(const gp_Dir& direction)
{
    return {direction.X(), direction.Y(), direction.Z()};
}

/// One description as the nodes of a body.
class BodyNodes
{
public:
    BodyNodes(XtText& xt, const brep::Description& source) : myXt(xt), mySource(source), myBody(xt) {}

    void Add()
    {
        for (const brep::Vertex& vertex : mySource.vertices) {
            myVertices.push_back(
                myBody.Vertex(vertex.point.X() / 1000, vertex.point.Y() / 1000, vertex.point.Z() / 1000));
        }
        for (const brep::Edge& edge : mySource.edges) {
            const int start = edge.start == brep::None ? 0 : myVertices[static_cast<std::size_t>(edge.start)];
            const int end = edge.end == brep::None ? 0 : myVertices[static_cast<std::size_t>(edge.end)];
            myEdges.push_back(myBody.Edge(CurveOf(edge), start, end));
        }
        for (const Handle(Geom_Surface) & surface : mySource.surfaces) {
            mySurfaces.push_back(SurfaceOf(surface));
        }
        for (const brep::Face& face : mySource.faces) {
            std::vector<std::vector<Use>> loops;
            for (const brep::Loop& loop : face.loops) {
                std::vector<Use> uses;
                for (const brep::EdgeUse& use : loop.uses) {
                    uses.push_back({myEdges[static_cast<std::size_t>(use.edge)], use.forward});
                }
                if (!uses.empty()) {
                    loops.push_back(std::move(uses));
                }
            }
            const int surface = mySurfaces[static_cast<std::size_t>(face.surface)];
            const bool isTurned = mySource.surfaces[static_cast<std::size_t>(face.surface)]->IsKind(
                STANDARD_TYPE(Geom_SurfaceOfRevolution));
            myBody.Face(surface, face.sameSense != isTurned ? '+' : '-', loops);
        }
        myBody.Finish();
    }

private:
    int List(int type, Field field, const Values& values) { return myXt.Add(type, {{field, values}}); }

    int CurveOf(const brep::Edge& edge)
    {
        if (!edge.curve.IsNull()) {
            return CurveOf(edge.curve);
        }
        const gp_Pnt from = mySource.vertices[static_cast<std::size_t>(edge.start)].point;
        const gp_Pnt to = mySource.vertices[static_cast<std::size_t>(edge.end)].point;
        return CurveOf(new Geom_Line(from, gp_Vec(from, to)));
    }

    int CurveOf(const Handle(Geom_Curve) & curve)
    {
        if (const auto trimmed = Handle(Geom_TrimmedCurve)::DownCast(curve); !trimmed.IsNull()) {
            return CurveOf(trimmed->BasisCurve());
        }
        if (const auto line = Handle(Geom_Line)::DownCast(curve); !line.IsNull()) {
            return myXt.Add(type::Line, {{Field::Pvec, Point(line->Lin().Location())},
                                         {Field::Direction, Direction(line->Lin().Direction())}});
        }
        if (const auto conic = Handle(Geom_Conic)::DownCast(curve); !conic.IsNull()) {
            const auto circle = Handle(Geom_Circle)::DownCast(conic);
            const auto ellipse = Handle(Geom_Ellipse)::DownCast(conic);
            FieldValues fields{{Field::Centre, Point(conic->Location())},
                               {Field::Normal, Direction(conic->Axis().Direction())},
                               {Field::XAxis, Direction(conic->XAxis().Direction())}};
            if (!circle.IsNull()) {
                fields.push_back({Field::Radius, {circle->Radius() / 1000}});
                return myXt.Add(type::Circle, fields);
            }
            if (!ellipse.IsNull()) {
                fields.push_back({Field::MajorRadius, {ellipse->MajorRadius() / 1000}});
                fields.push_back({Field::MinorRadius, {ellipse->MinorRadius() / 1000}});
                return myXt.Add(type::Ellipse, fields);
            }
        }
        return SplineCurveOf(curve);
    }

    int SplineCurveOf(const Handle(Geom_Curve) & curve)
    {
        const Handle(Geom_BSplineCurve) spline = GeomConvert::CurveToBSplineCurve(curve);
        spline->SetNotPeriodic();
        Values vertices, knots, counts;
        for (int i = 1; i <= spline->NbPoles(); ++i) {
            AddPole(vertices, spline->Pole(i), spline->Weight(i));
        }
        for (int i = 1; i <= spline->NbKnots(); ++i) {
            knots.push_back(spline->Knot(i));
            counts.push_back(spline->Multiplicity(i));
        }
        const int nurbs =
            myXt.Add(type::NurbsCurve,
                     {{Field::Degree, {1. * spline->Degree()}},
                      {Field::NVertices, {1. * spline->NbPoles()}},
                      {Field::VertexDim, {4}},
                      {Field::Rational, {1}},
                      {Field::BSplineVertices, {1. * List(type::SplineVertices, Field::Vertices, vertices)}},
                      {Field::KnotMult, {1. * List(type::Multiplicities, Field::Mult, counts)}},
                      {Field::Knots, {1. * List(type::Knots, Field::Knots, knots)}}});
        return myXt.Add(type::SplineCurve, {{Field::Nurbs, {1. * nurbs}}});
    }

    static void AddPole(Values& vertices, const gp_Pnt& pole, double weight)
    {
        for (const double value : Point(pole)) {
            vertices.push_back(value * weight);
        }
        vertices.push_back(weight);
    }

    int SurfaceOf(const Handle(Geom_Surface) & surface)
    {
        if (const auto elementary = Handle(Geom_ElementarySurface)::DownCast(surface); !elementary.IsNull()) {
            return ElementaryOf(elementary);
        }
        if (const auto along = Handle(Geom_SurfaceOfLinearExtrusion)::DownCast(surface); !along.IsNull()) {
            return myXt.Add(type::Swept, {{Field::Section, {1. * CurveOf(along->BasisCurve())}},
                                          {Field::Sweep, Direction(along->Direction())}});
        }
        if (const auto around = Handle(Geom_SurfaceOfRevolution)::DownCast(surface); !around.IsNull()) {
            return myXt.Add(type::Spun, {{Field::Profile, {1. * CurveOf(around->BasisCurve())}},
                                         {Field::Base, Point(around->Location())},
                                         {Field::Axis, Direction(around->Direction())}});
        }
        return SplineSurfaceOf(surface);
    }

    int ElementaryOf(const Handle(Geom_ElementarySurface) & surface)
    {
        const gp_Ax3& axes = surface->Position();
        const auto make = [&](int type, Field origin, Field axis, const FieldValues& own) {
            FieldValues fields{{origin, Point(axes.Location())},
                               {axis, Direction(axes.Direction())},
                               {Field::XAxis, Direction(axes.XDirection())}};
            fields.insert(fields.end(), own.begin(), own.end());
            return myXt.Add(type, fields);
        };
        if (const auto cylinder = Handle(Geom_CylindricalSurface)::DownCast(surface); !cylinder.IsNull()) {
            return make(type::Cylinder, Field::Pvec, Field::Axis,
                        {{Field::Radius, {cylinder->Radius() / 1000}}});
        }
        if (const auto cone = Handle(Geom_ConicalSurface)::DownCast(surface); !cone.IsNull()) {
            return make(type::Cone, Field::Pvec, Field::Axis,
                        {{Field::Radius, {cone->RefRadius() / 1000}},
                         {Field::SinHalfAngle, {std::sin(cone->SemiAngle())}},
                         {Field::CosHalfAngle, {std::cos(cone->SemiAngle())}}});
        }
        if (const auto sphere = Handle(Geom_SphericalSurface)::DownCast(surface); !sphere.IsNull()) {
            return make(type::Sphere, Field::Centre, Field::Axis,
                        {{Field::Radius, {sphere->Radius() / 1000}}});
        }
        if (const auto torus = Handle(Geom_ToroidalSurface)::DownCast(surface); !torus.IsNull()) {
            return make(type::Torus, Field::Centre, Field::Axis,
                        {{Field::MajorRadius, {torus->MajorRadius() / 1000}},
                         {Field::MinorRadius, {torus->MinorRadius() / 1000}}});
        }
        return make(type::Plane, Field::Pvec, Field::Normal, {});
    }

    int SplineSurfaceOf(const Handle(Geom_Surface) & surface)
    {
        const Handle(Geom_BSplineSurface) spline = GeomConvert::SurfaceToBSplineSurface(surface);
        spline->SetUNotPeriodic();
        spline->SetVNotPeriodic();
        Values vertices, knots[2], counts[2];
        for (int i = 1; i <= spline->NbUPoles(); ++i) {
            for (int k = 1; k <= spline->NbVPoles(); ++k) {
                AddPole(vertices, spline->Pole(i, k), spline->Weight(i, k));
            }
        }
        for (int i = 1; i <= spline->NbUKnots(); ++i) {
            knots[0].push_back(spline->UKnot(i));
            counts[0].push_back(spline->UMultiplicity(i));
        }
        for (int i = 1; i <= spline->NbVKnots(); ++i) {
            knots[1].push_back(spline->VKnot(i));
            counts[1].push_back(spline->VMultiplicity(i));
        }
        const int nurbs =
            myXt.Add(type::NurbsSurface,
                     {{Field::UDegree, {1. * spline->UDegree()}},
                      {Field::VDegree, {1. * spline->VDegree()}},
                      {Field::NUVertices, {1. * spline->NbUPoles()}},
                      {Field::NVVertices, {1. * spline->NbVPoles()}},
                      {Field::Rational, {1}},
                      {Field::VertexDim, {4}},
                      {Field::BSplineVertices, {1. * List(type::SplineVertices, Field::Vertices, vertices)}},
                      {Field::UKnotMult, {1. * List(type::Multiplicities, Field::Mult, counts[0])}},
                      {Field::VKnotMult, {1. * List(type::Multiplicities, Field::Mult, counts[1])}},
                      {Field::UKnots, {1. * List(type::Knots, Field::Knots, knots[0])}},
                      {Field::VKnots, {1. * List(type::Knots, Field::Knots, knots[1])}}});
        return myXt.Add(type::SplineSurface, {{Field::Nurbs, {1. * nurbs}}});
    }

    XtText& myXt;
    const brep::Description& mySource;
    XtBodyText myBody;
    std::vector<int> myVertices;
    std::vector<int> myEdges;
    std::vector<int> mySurfaces;
};

template <typename Visit>
void ForEachBody(const cadex::ModelData_Model& model, const Visit& visit)
{
    cadex::occt::RunGuarded(cadex::occt::EngineUse::Geometry, [&] {
        for (const cadex::ModelData_Part& part : cadex::mesh::DistinctParts(model)) {
            visit(*static_cast<const brep::DescribedBRep*>(part.BRepRepresentation().Impl()));
        }
        return true;
    });
}

double AreaOf(const cadex::ModelData_Model& model)
{
    double area = 0;
    ForEachBody(model, [&](const brep::DescribedBRep& body) { area += body.Area(); });
    return area;
}

template <typename Reader>
double Seconds(const std::string& bytes, double& area)
{
    const std::clock_t start = std::clock();
    const auto model = cadex::test::ReadBytes<Reader>(bytes);
    if (!model) {
        area = 0;
        return 1e9;
    }
    cadex::test::MeshBodies(*model);
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    area = AreaOf(*model);
    return seconds;
}

bool Compare(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    const std::string step{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    const auto model = cadex::test::ReadBytes<cadex::STEP_Reader>(step);
    if (!model) {
        return false;
    }
    XtText xt;
    std::size_t faces = 0;
    ForEachBody(*model, [&](const brep::DescribedBRep& body) {
        BodyNodes(xt, body.Data()).Add();
        faces += body.Data().faces.size();
    });
    const std::string text = xt.Text();
    const std::string binary = xt.Binary();
    constexpr int Rounds = 7;
    std::array<double, 3> best{1e9, 1e9, 1e9};
    std::array<double, 3> areas{};
    for (int round = 0; round < Rounds; ++round) {
        best[0] = std::min(best[0], Seconds<cadex::STEP_Reader>(step, areas[0]));
        best[1] = std::min(best[1], Seconds<cadex::Para_Reader>(text, areas[1]));
        best[2] = std::min(best[2], Seconds<cadex::Para_Reader>(binary, areas[2]));
    }
    const bool isSame = std::abs(areas[1] / areas[0] - 1) < 1e-6 && std::abs(areas[2] / areas[0] - 1) < 1e-6;
    std::printf("%-34s %6zu faces  STEP %8.2f ms  text %8.2f ms (%.2f)  binary %8.2f ms (%.2f)%s\n",
                file.filename().c_str(), faces, best[0] * 1e3, best[1] * 1e3, best[1] / best[0],
                best[2] * 1e3, best[2] / best[0], isSame ? "" : "  AREAS DIFFER");
    return isSame;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::filesystem::path> files(argv + 1, argv + argc);
    if (files.empty()) {
        for (const char* folder : {"/usr/share/opencascade/data/step", "/usr/share/doc/netgen/examples"}) {
            std::error_code error;
            for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
                if (const auto kind = entry.path().extension(); kind == ".step" || kind == ".stp") {
                    files.push_back(entry.path());
                }
            }
        }
    }
    bool isGood = true;
    for (const std::filesystem::path& file : files) {
        isGood = Compare(file) && isGood;
    }
    return isGood ? 0 : 1;
}
