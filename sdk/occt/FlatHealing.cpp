#include "sdk/occt/FlatHealing.h"

#include <cmath>
#include <limits>

#include <BRep_Tool.hxx>
#include <Geom_Curve.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Iterator.hxx>
#include <TopoDS_Vertex.hxx>
#include <XSAlgo.hxx>
#include <XSAlgo_ToolContainer.hxx>
#include <gp_Ax3.hxx>

namespace cadex::occt {
namespace {

class FlatAwareContainer : public XSAlgo_AlgoContainer
{
public:
    TopoDS_Shape ProcessShape(const TopoDS_Shape& shape, const Standard_Real precision,
                              const Standard_Real maximumTolerance, const Standard_CString resource,
                              const Standard_CString sequence, Handle(Standard_Transient) & info,
                              const Message_ProgressRange& progress,
                              const Standard_Boolean nonManifold) const override
    {
        if (IsFlat(shape)) {
            info.Nullify();
            return shape;
        }
        return XSAlgo_AlgoContainer::ProcessShape(shape, precision, maximumTolerance, resource, sequence,
                                                  info, progress, nonManifold);
    }
};

// Twice the area that the wire's straight edges enclose, seen against the normal; NaN when an edge is not
// straight.
double EnclosedArea(const TopoDS_Shape& wire, const gp_Dir& normal)
{
    gp_XYZ sum(0.0, 0.0, 0.0);
    gp_XYZ origin;
    bool hasOrigin = false;
    for (TopoDS_Iterator edges(wire); edges.More(); edges.Next()) {
        const TopoDS_Edge& edge = TopoDS::Edge(edges.Value());
        TopLoc_Location location;
        double first = 0.0;
        double last = 0.0;
        const Handle(Geom_Curve)& curve = BRep_Tool::Curve(edge, location, first, last);
        const TopoDS_Vertex from = TopExp::FirstVertex(edge, true);
        const TopoDS_Vertex to = TopExp::LastVertex(edge, true);
        if (curve.IsNull() || curve->DynamicType() != STANDARD_TYPE(Geom_Line) || from.IsNull() ||
            to.IsNull()) {
            return std::numeric_limits<double>::quiet_NaN();
        }
        const gp_XYZ a = BRep_Tool::Pnt(from).XYZ();
        const gp_XYZ b = BRep_Tool::Pnt(to).XYZ();
        origin = hasOrigin ? origin : a;
        hasOrigin = true;
        sum += (a - origin).Crossed(b - origin);
    }
    return sum.Dot(normal.XYZ());
}

// All edges lines, one wire around the material and the others around holes: nothing for healing to turn.
bool IsSoundFace(const TopoDS_Face& face, const Geom_Plane& plane, const TopLoc_Location& location)
{
    const gp_Ax3 axes = plane.Position().Transformed(location.Transformation());
    const gp_Dir normal = axes.XDirection().Crossed(axes.YDirection());
    int outer = 0;
    for (TopoDS_Iterator wires(face.Oriented(TopAbs_FORWARD)); wires.More(); wires.Next()) {
        const double area = EnclosedArea(wires.Value(), normal);
        if (std::isnan(area) || area == 0.0) {
            return false;
        }
        outer += area > 0.0 ? 1 : 0;
    }
    return outer == 1;
}

} // namespace

bool IsFlat(const TopoDS_Shape& shape)
{
    bool hasFace = false;
    for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
        const TopoDS_Face& face = TopoDS::Face(faces.Current());
        TopLoc_Location location;
        const Handle(Geom_Surface)& surface = BRep_Tool::Surface(face, location);
        if (surface.IsNull() || surface->DynamicType() != STANDARD_TYPE(Geom_Plane) ||
            !IsSoundFace(face, *static_cast<const Geom_Plane*>(surface.get()), location)) {
            return false;
        }
        hasFace = true;
    }
    return hasFace;
}

FlatHealing::FlatHealing() : mySaved(XSAlgo::AlgoContainer())
{
    Handle(FlatAwareContainer) container = new FlatAwareContainer;
    container->SetToolContainer(mySaved->ToolContainer());
    XSAlgo::SetAlgoContainer(container);
}

FlatHealing::~FlatHealing()
{
    XSAlgo::SetAlgoContainer(mySaved);
}

} // namespace cadex::occt
