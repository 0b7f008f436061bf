#include "sdk/occt/FlatHealing.h"

#include <BRep_Tool.hxx>
#include <Geom_Curve.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <XSAlgo.hxx>
#include <XSAlgo_ToolContainer.hxx>

namespace cadex {
namespace occt {
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

} // namespace

bool IsFlat(const TopoDS_Shape& shape)
{
    bool hasFace = false;
    for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
        TopLoc_Location location;
        const Handle(Geom_Surface)& surface = BRep_Tool::Surface(TopoDS::Face(faces.Current()), location);
        if (surface.IsNull() || surface->DynamicType() != STANDARD_TYPE(Geom_Plane)) {
            return false;
        }
        hasFace = true;
    }
    for (TopExp_Explorer edges(shape, TopAbs_EDGE); hasFace && edges.More(); edges.Next()) {
        TopLoc_Location location;
        double first = 0.0;
        double last = 0.0;
        const Handle(Geom_Curve)& curve =
            BRep_Tool::Curve(TopoDS::Edge(edges.Current()), location, first, last);
        if (curve.IsNull() || curve->DynamicType() != STANDARD_TYPE(Geom_Line)) {
            return false;
        }
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

} // namespace occt
} // namespace cadex
