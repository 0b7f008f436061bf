#include "sdk/step/StepPlacedBody.h"

#include <algorithm>
#include <cmath>

#include <BRepBuilderAPI_Transform.hxx>
#include <Geom_ConicalSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Plane.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_ToroidalSurface.hxx>

namespace cadex::step {

namespace {

gp_Ax3 RightHanded(const Handle(Geom_ElementarySurface) & surface, const gp_Trsf& placement)
{
    const gp_Ax3& axes = surface->Position();
    return {axes.Location().Transformed(placement), axes.Direction().Transformed(placement),
            axes.XDirection().Transformed(placement)};
}

ModelData_Point Placed(const ModelData_Point& point, const gp_Trsf& placement)
{
    const gp_Pnt placed = gp_Pnt(point.X(), point.Y(), point.Z()).Transformed(placement);
    return {placed.X(), placed.Y(), placed.Z()};
}

// A mirror turns the way round.
void ReverseLoops(brep::Face& face)
{
    for (brep::Loop& loop : face.loops) {
        std::reverse(loop.uses.begin(), loop.uses.end());
        for (brep::EdgeUse& use : loop.uses) {
            use.forward = !use.forward;
        }
    }
}

void AppendFacets(const StepBodyContent& from, const gp_Trsf& placement, StepBodyContent& to)
{
    for (const occt::FacetGroup& group : from.facets) {
        occt::FacetGroup& placed = to.facets.emplace_back(group);
        for (ModelData_Point& point : placed.points) {
            point = Placed(point, placement);
        }
        for (std::size_t i = 0; placement.IsNegative() && i + 2 < placed.indices.size(); i += 3) {
            std::swap(placed.indices[i + 1], placed.indices[i + 2]);
        }
        for (ModelData_Vectorf& normal : placed.normals) {
            const gp_Dir turned = gp_Dir(static_cast<double>(normal.X()), static_cast<double>(normal.Y()),
                                         static_cast<double>(normal.Z()))
                                      .Transformed(placement);
            normal = {static_cast<float>(turned.X()), static_cast<float>(turned.Y()),
                      static_cast<float>(turned.Z())};
        }
    }
    for (const occt::FacetCurve& curve : from.polylines) {
        occt::FacetCurve& placed = to.polylines.emplace_back(curve);
        for (ModelData_Point& point : placed.points) {
            point = Placed(point, placement);
        }
    }
}

} // namespace

gp_Trsf TransformationTo(StepGeometryReader& geometry, RecordId id)
{
    if (geometry.Records().TypeOf(id) != StepType::Axis2Placement3d) {
        return geometry.Operator(id);
    }
    gp_Trsf placement;
    placement.SetTransformation(geometry.Placement(id), gp_Ax3());
    return placement;
}

Handle(Geom_Surface) Placed(const Handle(Geom_Surface) & surface, const gp_Trsf& placement, bool& turned)
{
    const double scale = std::abs(placement.ScaleFactor());
    turned = false;
    if (const auto plane = Handle(Geom_Plane)::DownCast(surface); !plane.IsNull()) {
        return new Geom_Plane(RightHanded(plane, placement));
    }
    if (const auto cylinder = Handle(Geom_CylindricalSurface)::DownCast(surface); !cylinder.IsNull()) {
        return new Geom_CylindricalSurface(RightHanded(cylinder, placement), cylinder->Radius() * scale);
    }
    if (const auto cone = Handle(Geom_ConicalSurface)::DownCast(surface); !cone.IsNull()) {
        return new Geom_ConicalSurface(RightHanded(cone, placement), cone->SemiAngle(),
                                       cone->RefRadius() * scale);
    }
    if (const auto sphere = Handle(Geom_SphericalSurface)::DownCast(surface); !sphere.IsNull()) {
        return new Geom_SphericalSurface(RightHanded(sphere, placement), sphere->Radius() * scale);
    }
    if (const auto torus = Handle(Geom_ToroidalSurface)::DownCast(surface); !torus.IsNull()) {
        return new Geom_ToroidalSurface(RightHanded(torus, placement), torus->MajorRadius() * scale,
                                        torus->MinorRadius() * scale);
    }
    turned = placement.IsNegative();
    return Handle(Geom_Surface)::DownCast(surface->Transformed(placement));
}

void AppendPlaced(const StepBodyContent& from, const gp_Trsf& placement, StepBodyContent& to)
{
    const brep::Description& source = from.description;
    brep::Description& target = to.description;
    const int vertices = static_cast<int>(target.vertices.size());
    const int edges = static_cast<int>(target.edges.size());
    const int surfaces = static_cast<int>(target.surfaces.size());
    const int faces = static_cast<int>(target.faces.size());
    const int shells = static_cast<int>(target.shells.size());
    const auto moved = [](int number, int by) { return number == brep::None ? number : number + by; };
    const double scale = std::abs(placement.ScaleFactor());
    for (const brep::Vertex& vertex : source.vertices) {
        target.AddVertex(vertex.point.Transformed(placement), vertex.tolerance * scale);
    }
    for (brep::Edge edge : source.edges) {
        if (!edge.curve.IsNull()) {
            edge.first = edge.curve->TransformedParameter(edge.first, placement);
            edge.last = edge.curve->TransformedParameter(edge.last, placement);
            edge.curve = Handle(Geom_Curve)::DownCast(edge.curve->Transformed(placement));
        }
        edge.start = moved(edge.start, vertices);
        edge.end = moved(edge.end, vertices);
        target.AddEdge(std::move(edge));
    }
    std::vector<bool> turned;
    for (const Handle(Geom_Surface) & surface : source.surfaces) {
        bool isTurned = false;
        target.AddSurface(Placed(surface, placement, isTurned));
        turned.push_back(isTurned);
    }
    for (brep::Face face : source.faces) {
        const bool known = face.surface != brep::None;
        face.sameSense = face.sameSense != (known && turned[static_cast<std::size_t>(face.surface)]);
        face.surface = moved(face.surface, surfaces);
        for (brep::Loop& loop : face.loops) {
            loop.vertex = moved(loop.vertex, vertices);
            for (brep::EdgeUse& use : loop.uses) {
                use.edge = moved(use.edge, edges);
                use.curveOnSurface.Nullify(); // of the surface as it was
            }
        }
        if (placement.IsNegative()) {
            ReverseLoops(face);
        }
        target.AddFace(std::move(face));
    }
    for (brep::Shell shell : source.shells) {
        for (brep::FaceUse& use : shell.faces) {
            use.face = moved(use.face, faces);
        }
        target.AddShell(std::move(shell));
    }
    for (brep::Solid solid : source.solids) {
        solid.outer = moved(solid.outer, shells);
        for (int& shell : solid.voids) {
            shell = moved(shell, shells);
        }
        target.solids.push_back(std::move(solid));
    }
    for (const int sheet : source.sheets) {
        target.sheets.push_back(moved(sheet, shells));
    }
    for (const brep::LooseCurve& curve : source.curves) {
        target.curves.push_back({moved(curve.edge, edges), curve.appearance});
    }
    for (const brep::KernelShape& shape : source.kernelShapes) {
        target.kernelShapes.push_back(
            {BRepBuilderAPI_Transform(shape.shape, placement, true).Shape(), shape.appearance, shape.name});
    }
    AppendFacets(from, placement, to);
    to.facetsAreClosed = to.facetsAreClosed && from.facetsAreClosed;
    to.hasItems = to.hasItems || from.hasItems;
}

} // namespace cadex::step
