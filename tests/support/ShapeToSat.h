// A kernel shape as ACIS text: an exact twin of any body, for tests and benchmarks of reading.
#pragma once

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include <BRepTools.hxx>
#include <BRepTools_WireExplorer.hxx>
#include <BRep_Tool.hxx>
#include <GeomConvert.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_Circle.hxx>
#include <Geom_ConicalSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Ellipse.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <Geom_TrimmedCurve.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Iterator.hxx>
#include <gp_Lin.hxx>

namespace cadex::test {

/// Version 7, millimetres; each solid of the shape is a body. Seams stay edges, surfaces that ACIS has no
/// record for become splines.
class ShapeToSat
{
public:
    static std::string Write(const TopoDS_Shape& shape)
    {
        ShapeToSat writer;
        int bodies = 0;
        for (TopExp_Explorer solid(shape, TopAbs_SOLID); solid.More(); solid.Next(), ++bodies) {
            writer.AddBody(solid.Current());
        }
        std::string text =
            "700 0 " + std::to_string(bodies) + " 0\n@4 test @4 ACIS @5 today\n1 1e-06 1e-10\n";
        for (const std::string& record : writer.myRecords) {
            text += record;
        }
        return text + "End-of-ACIS-data\n";
    }

private:
    /// A line of fields.
    class Fields
    {
    public:
        Fields() { myText.precision(17); }
        template <typename T>
        Fields& operator<<(const T& value)
        {
            myText << value << ' ';
            return *this;
        }
        Fields& operator<<(const gp_XYZ& v) { return *this << v.X() << v.Y() << v.Z(); }
        std::string Str() const { return myText.str(); }

    private:
        std::ostringstream myText;
    };

    static std::string Ref(int record) { return "$" + std::to_string(record); }

    int Reserve()
    {
        myRecords.emplace_back();
        return static_cast<int>(myRecords.size()) - 1;
    }
    void Set(int record, const char* type, const Fields& fields)
    {
        myRecords[static_cast<std::size_t>(record)] =
            std::string(type) + " $-1 -1 $-1 " + fields.Str() + "#\n";
    }
    int Add(const char* type, const Fields& fields)
    {
        const int record = Reserve();
        Set(record, type, fields);
        return record;
    }

    void AddBody(const TopoDS_Shape& solid)
    {
        myEdges.Clear();
        myVertices.Clear();
        myEdgeRecords.clear();
        myVertexRecords.clear();
        const int body = Reserve();
        const int lump = Reserve();
        std::vector<int> shells;
        for (TopExp_Explorer shell(solid, TopAbs_SHELL); shell.More(); shell.Next()) {
            shells.push_back(Reserve());
        }
        std::size_t number = 0;
        for (TopExp_Explorer shell(solid, TopAbs_SHELL); shell.More(); shell.Next(), ++number) {
            std::vector<int> faces;
            for (TopExp_Explorer face(shell.Current(), TopAbs_FACE); face.More(); face.Next()) {
                faces.push_back(Reserve());
            }
            std::size_t i = 0;
            for (TopExp_Explorer face(shell.Current(), TopAbs_FACE); face.More(); face.Next(), ++i) {
                SetFace(faces[i], i + 1 < faces.size() ? faces[i + 1] : -1, shells[number],
                        TopoDS::Face(face.Current()));
            }
            Set(shells[number], "shell",
                Fields() << Ref(number + 1 < shells.size() ? shells[number + 1] : -1) << "$-1"
                         << Ref(faces[0]) << "$-1" << Ref(lump));
        }
        Set(body, "body",
            Fields() << Ref(lump) << "$-1"
                     << "$-1");
        Set(lump, "lump", Fields() << "$-1" << Ref(shells[0]) << Ref(body));
    }

    void SetFace(int record, int next, int shell, const TopoDS_Face& face)
    {
        bool isInward = false; // of the record's normal, beside the kernel's
        const int surface = AddSurface(BRep_Tool::Surface(face), face, isInward);
        const bool isReversed = (face.Orientation() == TopAbs_REVERSED) != isInward;
        std::vector<TopoDS_Wire> wires;
        const TopoDS_Face forward = TopoDS::Face(face.Oriented(TopAbs_FORWARD));
        for (TopoDS_Iterator wire(forward); wire.More(); wire.Next()) {
            if (wire.Value().ShapeType() == TopAbs_WIRE) {
                wires.push_back(TopoDS::Wire(wire.Value()));
            }
        }
        int loop = -1;
        for (const TopoDS_Wire& wire : wires) {
            loop = AddLoop(wire, forward, face.Orientation() == TopAbs_REVERSED, record, loop);
        }
        Set(record, "face",
            Fields() << Ref(next) << Ref(loop) << Ref(shell) << "$-1" << Ref(surface)
                     << (isReversed ? "reversed" : "forward") << "single");
    }

    int AddLoop(const TopoDS_Wire& wire, const TopoDS_Face& face, bool isTurned, int owner, int next)
    {
        std::vector<std::pair<int, bool>> uses;
        for (BRepTools_WireExplorer edge(wire, face); edge.More(); edge.Next()) {
            uses.emplace_back(EdgeOf(edge.Current()),
                              (edge.Current().Orientation() == TopAbs_FORWARD) != isTurned);
        }
        if (isTurned) {
            std::reverse(uses.begin(), uses.end());
        }
        const int loop = Reserve();
        const int first = static_cast<int>(myRecords.size());
        const int count = static_cast<int>(uses.size());
        for (int i = 0; i < count; ++i) {
            const auto& [edge, isForward] = uses[static_cast<std::size_t>(i)];
            Add("coedge", Fields() << Ref(first + (i + 1) % count) << Ref(first + (i + count - 1) % count)
                                   << "$-1" << Ref(edge) << (isForward ? "forward" : "reversed") << Ref(loop)
                                   << "$-1");
        }
        Set(loop, "loop", Fields() << Ref(next) << Ref(first) << Ref(owner));
        return loop;
    }

    int VertexOf(const TopoDS_Vertex& vertex)
    {
        const int index = myVertices.Add(vertex.Oriented(TopAbs_FORWARD));
        if (index > static_cast<int>(myVertexRecords.size())) {
            const int point = Add("point", Fields() << BRep_Tool::Pnt(vertex).XYZ());
            myVertexRecords.push_back(Add("vertex", Fields() << "$-1" << Ref(point)));
        }
        return myVertexRecords[static_cast<std::size_t>(index) - 1];
    }

    int EdgeOf(const TopoDS_Edge& use)
    {
        const TopoDS_Edge edge = TopoDS::Edge(use.Oriented(TopAbs_FORWARD));
        const int index = myEdges.Add(edge);
        if (index > static_cast<int>(myEdgeRecords.size())) {
            double first = 0;
            double last = 0;
            const Handle(Geom_Curve) curve =
                BRep_Tool::Degenerated(edge) ? Handle(Geom_Curve)() : BRep_Tool::Curve(edge, first, last);
            const int start = VertexOf(TopExp::FirstVertex(edge));
            const int end = VertexOf(TopExp::LastVertex(edge));
            const int geometry = curve.IsNull() ? -1 : AddCurve(curve, first, last);
            myEdgeRecords.push_back(Add("edge", Fields() << Ref(start) << first << Ref(end) << last << "$-1"
                                                         << Ref(geometry) << "forward"
                                                         << "@7 unknown"));
        }
        return myEdgeRecords[static_cast<std::size_t>(index) - 1];
    }

    int AddCurve(Handle(Geom_Curve) curve, double first, double last)
    {
        if (const auto trimmed = Handle(Geom_TrimmedCurve)::DownCast(curve)) {
            return AddCurve(trimmed->BasisCurve(), first, last);
        }
        if (const auto line = Handle(Geom_Line)::DownCast(curve)) {
            return Add("straight-curve", Fields() << line->Lin().Location().XYZ()
                                                  << line->Lin().Direction().XYZ() << "I"
                                                  << "I");
        }
        const auto circle = Handle(Geom_Circle)::DownCast(curve);
        const auto ellipse = Handle(Geom_Ellipse)::DownCast(curve);
        if (!circle.IsNull() || !ellipse.IsNull()) {
            const gp_Ax2 axes = circle.IsNull() ? ellipse->Position() : circle->Position();
            const double major = circle.IsNull() ? ellipse->MajorRadius() : circle->Radius();
            const double minor = circle.IsNull() ? ellipse->MinorRadius() : major;
            return Add("ellipse-curve", Fields() << axes.Location().XYZ() << axes.Direction().XYZ()
                                                 << axes.XDirection().XYZ() * major << minor / major << "I"
                                                 << "I");
        }
        auto spline = Handle(Geom_BSplineCurve)::DownCast(curve);
        spline = spline.IsNull() ? GeomConvert::CurveToBSplineCurve(new Geom_TrimmedCurve(curve, first, last))
                                 : Handle(Geom_BSplineCurve)::DownCast(spline->Copy());
        if (spline->IsPeriodic()) {
            spline->SetNotPeriodic();
        }
        Fields fields;
        fields << "forward"
               << "{"
               << "exactcur"
               << "full" << (spline->IsRational() ? "nurbs" : "nubs") << spline->Degree() << "open"
               << spline->NbKnots();
        for (int i = 1; i <= spline->NbKnots(); ++i) {
            const bool isEnd = i == 1 || i == spline->NbKnots();
            fields << spline->Knot(i) << spline->Multiplicity(i) - (isEnd ? 1 : 0);
        }
        for (int i = 1; i <= spline->NbPoles(); ++i) {
            fields << spline->Pole(i).XYZ();
            if (spline->IsRational()) {
                fields << spline->Weight(i);
            }
        }
        return Add("intcurve-curve", fields << "0"
                                            << "null_surface"
                                            << "null_surface"
                                            << "}"
                                            << "I"
                                            << "I");
    }

    int AddSurface(Handle(Geom_Surface) surface, const TopoDS_Face& face, bool& isInward)
    {
        if (const auto trimmed = Handle(Geom_RectangularTrimmedSurface)::DownCast(surface)) {
            return AddSurface(trimmed->BasisSurface(), face, isInward);
        }
        const auto elementary = Handle(Geom_ElementarySurface)::DownCast(surface);
        if (elementary.IsNull()) {
            return AddSpline(surface, face);
        }
        const gp_Ax3 axes = elementary->Position();
        const gp_XYZ place = axes.Location().XYZ();
        const gp_XYZ normal = axes.Direction().XYZ();
        const gp_XYZ x = axes.XDirection().XYZ();
        isInward = !axes.Direct();
        if (surface->IsKind(STANDARD_TYPE(Geom_Plane))) {
            return Add("plane-surface", Fields() << place << normal << x << "forward_v I I I I");
        }
        const auto addCone = [&](double radius, double angle) {
            return Add("cone-surface", Fields() << place << normal << x * radius << 1 << "I"
                                                << "I" << std::sin(angle) << std::cos(angle) << radius
                                                << "forward I I I I");
        };
        if (const auto cylinder = Handle(Geom_CylindricalSurface)::DownCast(surface)) {
            return addCone(cylinder->Radius(), 0);
        }
        if (const auto cone = Handle(Geom_ConicalSurface)::DownCast(surface)) {
            if (cone->RefRadius() > 1e-9) {
                return addCone(cone->RefRadius(), cone->SemiAngle());
            }
            isInward = false;
            return AddSpline(surface, face);
        }
        if (const auto sphere = Handle(Geom_SphericalSurface)::DownCast(surface)) {
            return Add("sphere-surface",
                       Fields() << place << sphere->Radius() << x << normal << "forward_v I I I I");
        }
        const auto torus = Handle(Geom_ToroidalSurface)::DownCast(surface);
        return Add("torus-surface", Fields() << place << normal << torus->MajorRadius()
                                             << torus->MinorRadius() << x << "forward_v I I I I");
    }

    int AddSpline(const Handle(Geom_Surface) & surface, const TopoDS_Face& face)
    {
        auto spline = Handle(Geom_BSplineSurface)::DownCast(surface);
        if (spline.IsNull()) {
            double u[2];
            double v[2];
            BRepTools::UVBounds(face, u[0], u[1], v[0], v[1]);
            spline = GeomConvert::SurfaceToBSplineSurface(
                new Geom_RectangularTrimmedSurface(surface, u[0], u[1], v[0], v[1]));
        } else {
            spline = Handle(Geom_BSplineSurface)::DownCast(spline->Copy());
        }
        if (spline->IsUPeriodic()) {
            spline->SetUNotPeriodic();
        }
        if (spline->IsVPeriodic()) {
            spline->SetVNotPeriodic();
        }
        const bool isRational = spline->IsURational() || spline->IsVRational();
        Fields fields;
        fields << "forward"
               << "{"
               << "exactsur"
               << "full" << (isRational ? "nurbs" : "nubs") << spline->UDegree() << spline->VDegree()
               << (isRational ? "both open open none none" : "open open none none") << spline->NbUKnots()
               << spline->NbVKnots();
        for (int i = 1; i <= spline->NbUKnots(); ++i) {
            fields << spline->UKnot(i)
                   << spline->UMultiplicity(i) - (i == 1 || i == spline->NbUKnots() ? 1 : 0);
        }
        for (int i = 1; i <= spline->NbVKnots(); ++i) {
            fields << spline->VKnot(i)
                   << spline->VMultiplicity(i) - (i == 1 || i == spline->NbVKnots() ? 1 : 0);
        }
        for (int k = 1; k <= spline->NbVPoles(); ++k) {
            for (int i = 1; i <= spline->NbUPoles(); ++i) {
                fields << spline->Pole(i, k).XYZ();
                if (isRational) {
                    fields << spline->Weight(i, k);
                }
            }
        }
        return Add("spline-surface", fields << "0"
                                            << "}"
                                            << "I I I I");
    }

    std::vector<std::string> myRecords;
    TopTools_IndexedMapOfShape myEdges; // of the body at hand
    TopTools_IndexedMapOfShape myVertices;
    std::vector<int> myEdgeRecords;
    std::vector<int> myVertexRecords;
};

} // namespace cadex::test
