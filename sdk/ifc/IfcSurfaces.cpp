// Surfaces, and B-reps with curved faces.
#include <unordered_map>

#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepLib.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <ShapeFix_Shape.hxx>
#include <TColStd_Array2OfReal.hxx>
#include <TColgp_Array2OfPnt.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Shell.hxx>
#include <TopoDS_Solid.hxx>
#include <TopoDS_Vertex.hxx>

#include "sdk/ifc/IfcCurves.h"
#include "sdk/ifc/IfcFacets.h"
#include "sdk/ifc/IfcProfiles.h"

namespace cadex::ifc {
namespace {

/// IfcBSplineSurfaceWithKnots: UDegree, VDegree, ControlPointsList, SurfaceForm, UClosed, VClosed,
/// SelfIntersect, UMultiplicities, VMultiplicities, UKnots, VKnots, KnotSpec [, WeightsData].
Handle(Geom_Surface) ReadBSplineSurface(Context& context, const Entity& surface)
{
    const int uDegree = static_cast<int>(surface.Integer(0));
    const int vDegree = static_cast<int>(surface.Integer(1));
    std::vector<std::vector<Id>> rows;
    ListReader list(surface.Raw(2));
    for (std::string_view row; list.Next(row);) {
        std::vector<Id>& ids = rows.emplace_back();
        ListReader items(row);
        for (std::string_view item; items.Next(item);) {
            ids.push_back(ReadReference(item));
        }
        context.Steps(ids.size());
    }
    const int count = static_cast<int>(rows.size());
    const int width = rows.empty() ? 0 : static_cast<int>(rows.front().size());
    const int highest = Geom_BSplineSurface::MaxDegree();
    if (uDegree < 1 || vDegree < 1 || uDegree > highest || vDegree > highest || count < 2 || width < 2) {
        throw Unbuildable("a spline surface without enough poles");
    }
    const std::vector<double> given =
        surface.Is(Type::IfcRationalBSplineSurfaceWithKnots) ? surface.Reals(12) : std::vector<double>();
    TColgp_Array2OfPnt poles(1, count, 1, width);
    TColStd_Array2OfReal weights(1, count, 1, width);
    for (int u = 0; u < count; ++u) {
        const std::vector<Id>& row = rows[static_cast<std::size_t>(u)];
        if (static_cast<int>(row.size()) != width) {
            throw Unbuildable("a spline surface of uneven rows");
        }
        for (int v = 0; v < width; ++v) {
            const std::size_t at =
                static_cast<std::size_t>(u) * static_cast<std::size_t>(width) + static_cast<std::size_t>(v);
            poles.SetValue(u + 1, v + 1,
                           gp_Pnt(context.Point(context.file.Get(row[static_cast<std::size_t>(v)]))));
            weights.SetValue(u + 1, v + 1, at < given.size() && given[at] > 0 ? given[at] : 1);
        }
    }
    const Knots u(surface.Reals(7), surface.Reals(9), uDegree, count);
    const Knots v(surface.Reals(8), surface.Reals(10), vDegree, width);
    return new Geom_BSplineSurface(poles, weights, u.values, v.values, u.multiplicities, v.multiplicities,
                                   uDegree, vDegree);
}

/// The one curve that a swept surface's profile consists of.
Handle(Geom_Curve) ProfileCurve(Context& context, const Entity& profile, const Affine& placement)
{
    const Path path = Moved(ReadCurve(context, profile.Ref(2)), placement);
    if (path.size() != 1) {
        throw Unbuildable("a swept surface over several pieces");
    }
    const Piece& piece = path.front();
    return !piece.curve.IsNull()
               ? piece.curve
               : Handle(Geom_Curve)(new Geom_Line(gp_Pnt(piece.start), gp_Dir(piece.end - piece.start)));
}

Handle(Geom_Surface) ReadSurface(Context& context, const Entity& surface)
{
    const Affine frame = context.Placement(surface.Ref(0));
    switch (surface.Type()) {
    case Type::IfcPlane:
        return new Geom_Plane(frame.Axes());
    case Type::IfcCylindricalSurface:
        return new Geom_CylindricalSurface(frame.Axes(), context.PositiveLength(surface, 1));
    case Type::IfcSphericalSurface:
        return new Geom_SphericalSurface(frame.Axes(), context.PositiveLength(surface, 1));
    case Type::IfcToroidalSurface:
        return new Geom_ToroidalSurface(frame.Axes(), context.PositiveLength(surface, 1),
                                        context.PositiveLength(surface, 2));
    case Type::IfcSurfaceOfLinearExtrusion: // SweptCurve, Position, ExtrudedDirection, Depth
    {
        const Affine position = context.Placement(surface.Ref(1));
        const gp_XYZ way = position.Direction(context.Direction(surface.Ref(2), gp_XYZ(0, 0, 1)));
        return new Geom_SurfaceOfLinearExtrusion(ProfileCurve(context, surface.Ref(0), position),
                                                 gp_Dir(way));
    }
    case Type::IfcSurfaceOfRevolution: // SweptCurve, Position, AxisPosition
    {
        const Affine position = context.Placement(surface.Ref(1));
        const Affine axis = position * context.Placement(surface.Ref(2));
        return new Geom_SurfaceOfRevolution(ProfileCurve(context, surface.Ref(0), position),
                                            gp_Ax1(gp_Pnt(axis.offset), gp_Dir(axis.matrix.Column(3))));
    }
    case Type::IfcBSplineSurfaceWithKnots:
    case Type::IfcRationalBSplineSurfaceWithKnots:
        return ReadBSplineSurface(context, surface);
    default:
        throw Unbuildable("a surface of an unknown kind");
    }
}

/// Faces of one body, with vertices and edges shared as the file shares them.
class FaceReader
{
public:
    explicit FaceReader(Context& context) : myContext(context) {}

    TopoDS_Face Read(const Entity& face)
    {
        const Handle(Geom_Surface) surface = SurfaceOf(face);
        TopoDS_Face result;
        myBuilder.MakeFace(result, surface, 1e-6);
        for (Id id : face.Refs(0)) {
            const Entity bound = myContext.file.Get(id);
            TopoDS_Wire wire = LoopOf(bound.Ref(0));
            if (!bound.Boolean(1, true)) {
                wire.Reverse();
            }
            myBuilder.Add(result, wire);
        }
        // a face against the sense of its surface
        if (!face.Boolean(2, true)) {
            result.Reverse();
        }
        return result;
    }

private:
    Handle(Geom_Surface) SurfaceOf(const Entity& face)
    {
        if (face.Ref(1)) {
            return ReadSurface(myContext, face.Ref(1));
        }
        throw Unbuildable("a face with curved edges and no surface");
    }

    TopoDS_Vertex VertexOf(const Entity& point)
    {
        TopoDS_Vertex& vertex = myVertices[point.Id()];
        if (vertex.IsNull()) {
            myBuilder.MakeVertex(vertex, gp_Pnt(myContext.Point(point)), myContext.precision);
        }
        return vertex;
    }

    TopoDS_Wire LoopOf(const Entity& loop)
    {
        TopoDS_Wire wire;
        myBuilder.MakeWire(wire);
        const std::vector<Id> ids = loop.Refs(0);
        myContext.Steps(ids.size() + 1);
        if (loop.Is(Type::IfcPolyLoop)) {
            for (std::size_t i = 0; i < ids.size(); ++i) {
                AddLine(VertexOf(myContext.file.Get(ids[i])),
                        VertexOf(myContext.file.Get(ids[(i + 1) % ids.size()])), wire);
            }
        }
        for (Id id : loop.Is(Type::IfcEdgeLoop) ? ids : std::vector<Id>()) {
            const Entity oriented =
                myContext.file.Get(id); // EdgeStart, EdgeEnd (both derived), EdgeElement, Orientation
            TopoDS_Edge edge = EdgeOf(oriented.Ref(2));
            myBuilder.Add(wire, oriented.Boolean(3, true) ? edge : TopoDS::Edge(edge.Reversed()));
        }
        wire.Closed(true);
        return wire;
    }

    void AddLine(const TopoDS_Vertex& from, const TopoDS_Vertex& to, TopoDS_Wire& wire)
    {
        const gp_Pnt start = BRep_Tool::Pnt(from);
        const gp_Pnt end = BRep_Tool::Pnt(to);
        if (start.Distance(end) > myContext.precision) {
            myBuilder.Add(wire, MakeEdge({start.XYZ(), end.XYZ(), {}, 0, 0}, from, to));
        }
    }

    TopoDS_Edge MakeEdge(const Piece& piece, const TopoDS_Vertex& from, const TopoDS_Vertex& to)
    {
        TopoDS_Edge edge;
        const gp_XYZ way = piece.end - piece.start;
        const bool straight = piece.curve.IsNull();
        const Handle(Geom_Curve) curve =
            straight ? Handle(Geom_Curve)(new Geom_Line(gp_Pnt(piece.start), gp_Dir(way))) : piece.curve;
        myBuilder.MakeEdge(edge, curve, 1e-6);
        myBuilder.Add(edge, from.Oriented(TopAbs_FORWARD));
        myBuilder.Add(edge, to.Oriented(TopAbs_REVERSED));
        myBuilder.Range(edge, straight ? 0 : piece.first, straight ? way.Modulus() : piece.last);
        return edge;
    }

    /// IfcEdgeCurve: EdgeStart, EdgeEnd, EdgeGeometry, SameSense.
    TopoDS_Edge EdgeOf(const Entity& element)
    {
        TopoDS_Edge& edge = myEdges[element.Id()];
        if (!edge.IsNull()) {
            return edge;
        }
        const TopoDS_Vertex from = VertexOf(element.Ref(0).Ref(0));
        const TopoDS_Vertex to = VertexOf(element.Ref(1).Ref(0));
        const gp_XYZ start = BRep_Tool::Pnt(from).XYZ();
        const gp_XYZ end = BRep_Tool::Pnt(to).XYZ();
        const Entity geometry = element.Ref(2);
        const bool straight = !geometry || geometry.Is(Type::IfcLine);
        edge = straight ? MakeEdge(Straight(start, end), from, to)
                        : MakeEdge(Between(geometry, element.Boolean(3, true), start, end), from, to);
        return edge;
    }

    /// The stretch of the curve between two points on it.
    Piece Between(const Entity& geometry, bool sameSense, const gp_XYZ& start, const gp_XYZ& end)
    {
        Path path = ReadCurve(myContext, geometry);
        path = sameSense ? path : Reversed(path);
        if (path.size() != 1) {
            throw Unbuildable("an edge over several pieces");
        }
        Piece piece = path.front();
        if (piece.curve.IsNull()) {
            return Straight(start, end);
        }
        const bool ring = (piece.start - piece.end).Modulus() <= myContext.precision;
        const double period = piece.last - piece.first;
        const double first = ParameterOf(piece, start);
        double last = ParameterOf(piece, end);
        if ((end - start).Modulus() <= myContext.precision) {
            return ring ? Piece{start, end, piece.curve, first, first + period} : piece;
        }
        if (ring && piece.curve->IsPeriodic() && last <= first) {
            last += period;
        }
        if (last <= first) {
            throw Unbuildable("an edge against its curve");
        }
        return {start, end, piece.curve, first, last};
    }

    static double ParameterOf(const Piece& piece, const gp_XYZ& point)
    {
        if ((point - piece.start).Modulus() < 1e-6) {
            return piece.first;
        }
        if ((point - piece.end).Modulus() < 1e-6) {
            return piece.last;
        }
        return NearestParameter(piece, point);
    }

    Context& myContext;
    BRep_Builder myBuilder;
    std::unordered_map<Id, TopoDS_Vertex> myVertices;
    std::unordered_map<Id, TopoDS_Edge> myEdges;
};

/// Curves on the surfaces, seams and missing degenerate edges are the kernel's business.
TopoDS_Shape Healed(const TopoDS_Shape& shape)
{
    ShapeFix_Shape fix(shape);
    fix.Perform();
    return fix.Shape();
}

TopoDS_Shell ShellOf(Context& context, FaceReader& faces, const Entity& shell)
{
    const BRep_Builder builder;
    TopoDS_Shell result;
    builder.MakeShell(result);
    for (Id id : shell.Refs(0)) {
        context.Step();
        builder.Add(result, faces.Read(context.file.Get(id)));
    }
    result.Closed(shell.Is(Type::IfcClosedShell));
    return result;
}

} // namespace

TopoDS_Shape ReadAdvancedShell(Context& context, const Entity& shell)
{
    FaceReader faces(context);
    return Healed(ShellOf(context, faces, shell));
}

TopoDS_Shape ReadAdvancedBrep(Context& context, const Entity& item)
{
    FaceReader faces(context);
    const BRep_Builder builder;
    TopoDS_Solid solid;
    builder.MakeSolid(solid);
    builder.Add(solid, ShellOf(context, faces, item.Ref(0)));
    for (Id id : item.Refs(1)) {
        builder.Add(solid, ShellOf(context, faces, context.file.Get(id)));
    }
    return Healed(solid);
}

TopoDS_Shape ReadSurfaceItem(Context& context, const Entity& surface)
{
    switch (surface.Type()) {
    case Type::IfcFaceSurface:
    case Type::IfcAdvancedFace: {
        FaceReader faces(context);
        return Healed(faces.Read(surface));
    }
    case Type::IfcCurveBoundedPlane: // BasisSurface, OuterBoundary, InnerBoundaries: curves in the plane
    {
        Region region{ReadCurve(context, surface.Ref(1)), {}, false};
        for (Id id : surface.Refs(2)) {
            region.holes.push_back(ReadCurve(context, context.file.Get(id)));
        }
        return FaceOf(context, region, context.Placement(surface.Ref(0).Ref(0)));
    }
    case Type::IfcRectangularTrimmedSurface: // BasisSurface, U1, V1, U2, V2, Usense, Vsense
    {
        const Entity basis = surface.Ref(0);
        const bool flat = basis.Is(Type::IfcPlane);
        const double u = flat ? context.toMillimetres : context.toRadians;
        const double v = basis.Is(Type::IfcSphericalSurface) || basis.Is(Type::IfcToroidalSurface)
                             ? context.toRadians
                             : context.toMillimetres;
        const double u1 = surface.Real(1) * u;
        const double v1 = surface.Real(2) * v;
        const double u2 = surface.Real(3) * u;
        const double v2 = surface.Real(4) * v;
        BRepBuilderAPI_MakeFace face(ReadSurface(context, basis), std::min(u1, u2), std::max(u1, u2),
                                     std::min(v1, v2), std::max(v1, v2), 1e-6);
        if (!face.IsDone()) {
            throw Unbuildable("a trimmed surface without area");
        }
        return face.Face();
    }
    default:
        throw Unbuildable("a surface of an unknown kind");
    }
}

} // namespace cadex::ifc
