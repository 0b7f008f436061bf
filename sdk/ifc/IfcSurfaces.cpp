// Surfaces, and B-reps with curved faces.
#include <algorithm>
#include <map>
#include <unordered_map>

#include <BRepBuilderAPI_MakeFace.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <TColStd_Array2OfReal.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TColgp_Array2OfPnt.hxx>

#include "sdk/brep/Body.h"
#include "sdk/brep/ShapeBuilder.h"
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
        return new Geom_Plane(ToAxes(frame));
    case Type::IfcCylindricalSurface:
        return new Geom_CylindricalSurface(ToAxes(frame), context.PositiveLength(surface, 1));
    case Type::IfcSphericalSurface:
        return new Geom_SphericalSurface(ToAxes(frame), context.PositiveLength(surface, 1));
    case Type::IfcToroidalSurface:
        return new Geom_ToroidalSurface(ToAxes(frame), context.PositiveLength(surface, 1),
                                        context.PositiveLength(surface, 2));
    case Type::IfcSurfaceOfLinearExtrusion: // SweptCurve, Position, ExtrudedDirection, Depth
    {
        const Affine position = context.Placement(surface.Ref(1));
        const gp_XYZ way = Turned(position, context.Direction(surface.Ref(2), gp_XYZ(0, 0, 1)));
        return new Geom_SurfaceOfLinearExtrusion(ProfileCurve(context, surface.Ref(0), position),
                                                 gp_Dir(way));
    }
    case Type::IfcSurfaceOfRevolution: // SweptCurve, Position, AxisPosition
    {
        const Affine position = context.Placement(surface.Ref(1));
        const Affine axis = Compose(position, context.Placement(surface.Ref(2)));
        return new Geom_SurfaceOfRevolution(ProfileCurve(context, surface.Ref(0), position),
                                            gp_Ax1(gp_Pnt(Origin(axis)), gp_Dir(Column(axis, 3))));
    }
    case Type::IfcBSplineSurfaceWithKnots:
    case Type::IfcRationalBSplineSurfaceWithKnots:
        return ReadBSplineSurface(context, surface);
    default:
        throw Unbuildable("a surface of an unknown kind");
    }
}

/// Faces of one body, with vertices, edges and surfaces shared as the file shares them.
class BodyDescriber
{
public:
    explicit BodyDescriber(Context& context) : myContext(context) {}

    /// The number of the face; a damaged one is left out and reported, and has none.
    int AddFace(const Entity& face)
    {
        try {
            brep::Face described;
            described.record = face.Id();
            described.surface = SurfaceOf(face.Ref(1));
            described.sameSense = face.Boolean(2, true);
            for (const Id id : face.Refs(0)) {
                const Entity bound = myContext.file.Get(id);
                brep::Loop loop = LoopOf(bound.Ref(0));
                if (!bound.Boolean(1, true)) {
                    std::reverse(loop.uses.begin(), loop.uses.end());
                    for (brep::EdgeUse& use : loop.uses) {
                        use.forward = !use.forward;
                    }
                }
                described.loops.push_back(std::move(loop));
            }
            return myBody.AddFace(std::move(described));
        } catch (const Unbuildable& reason) {
            myContext.Report(Report::Kind::LeftOut, reason.what());
            return brep::None;
        }
    }

    /// IfcCurveBoundedSurface: BasisSurface, Boundaries, ImplicitOuter.
    int AddBoundedFace(const Entity& surface)
    {
        brep::Face described;
        described.record = surface.Id();
        described.surface = SurfaceOf(surface.Ref(0));
        described.isNaturallyBounded = surface.Boolean(2, false);
        for (const Id id : surface.Refs(1)) {
            described.loops.push_back(LoopAlong(ReadCurve(myContext, myContext.file.Get(id))));
        }
        return myBody.AddFace(std::move(described));
    }

    int AddShell(const Entity& shell)
    {
        brep::Shell described;
        described.closed = shell.Is(Type::IfcClosedShell);
        for (const Id id : shell.Refs(0)) {
            myContext.Step();
            const int face = AddFace(myContext.file.Get(id));
            if (face != brep::None) {
                described.faces.push_back({face, true});
            }
        }
        return myBody.AddShell(std::move(described));
    }

    brep::Description& Body() { return myBody; }

    TopoDS_Shape Shape() const
    {
        const TopoDS_Shape shape = brep::BuildShape(myBody).shape;
        if (shape.IsNull()) {
            throw Unbuildable("a body of which no face can be built");
        }
        return shape;
    }

private:
    int SurfaceOf(const Entity& surface)
    {
        if (!surface) {
            throw Unbuildable("a face with curved edges and no surface");
        }
        const auto known = mySurfaces.find(surface.Id());
        if (known != mySurfaces.end()) {
            return known->second;
        }
        const int number = myBody.AddSurface(ReadSurface(myContext, surface));
        mySurfaces.emplace(surface.Id(), number);
        return number;
    }

    int VertexOf(const Entity& point)
    {
        const auto known = myVertices.find(point.Id());
        if (known != myVertices.end()) {
            return known->second;
        }
        const int number = myBody.AddVertex(gp_Pnt(myContext.Point(point)), myContext.precision);
        myVertices.emplace(point.Id(), number);
        return number;
    }

    brep::Loop LoopOf(const Entity& loop)
    {
        brep::Loop described;
        const std::vector<Id> ids = loop.Refs(0);
        myContext.Steps(ids.size() + 1);
        if (loop.Is(Type::IfcPolyLoop)) {
            for (std::size_t i = 0; i < ids.size(); ++i) {
                AddLine(VertexOf(myContext.file.Get(ids[i])),
                        VertexOf(myContext.file.Get(ids[(i + 1) % ids.size()])), described);
            }
        }
        for (const Id id : loop.Is(Type::IfcEdgeLoop) ? ids : std::vector<Id>()) {
            // EdgeStart, EdgeEnd (both derived), EdgeElement, Orientation
            const Entity oriented = myContext.file.Get(id);
            described.uses.push_back({.edge = EdgeOf(oriented.Ref(2)), .forward = oriented.Boolean(3, true)});
        }
        if (described.uses.empty()) {
            throw Unbuildable("a loop without edges");
        }
        return described;
    }

    brep::Loop LoopAlong(const Path& path)
    {
        brep::Loop loop;
        const int first = path.empty() ? brep::None : myBody.AddVertex(gp_Pnt(path.front().start));
        int start = first;
        for (std::size_t i = 0; i < path.size(); ++i) {
            const int end = i + 1 == path.size() ? first : myBody.AddVertex(gp_Pnt(path[i].end));
            brep::Edge edge{.curve = path[i].curve, .start = start, .end = end};
            if (!edge.curve.IsNull()) {
                edge.first = path[i].first;
                edge.last = path[i].last;
            }
            loop.uses.push_back({.edge = myBody.AddEdge(std::move(edge))});
            start = end;
        }
        return loop;
    }

    const gp_Pnt& PointAt(int vertex) const
    {
        return myBody.vertices[static_cast<std::size_t>(vertex)].point;
    }

    /// Both faces of an edge of poly loops use the same one.
    void AddLine(int from, int to, brep::Loop& loop)
    {
        if (PointAt(from).Distance(PointAt(to)) <= myContext.precision) {
            return;
        }
        const auto [entry, fresh] = myLines.try_emplace(std::minmax(from, to), 0);
        if (fresh) {
            entry->second = myBody.AddLine(std::min(from, to), std::max(from, to));
        }
        loop.uses.push_back({.edge = entry->second, .forward = from < to});
    }

    /// IfcEdgeCurve: EdgeStart, EdgeEnd, EdgeGeometry, SameSense.
    int EdgeOf(const Entity& element)
    {
        const auto known = myEdges.find(element.Id());
        if (known != myEdges.end()) {
            return known->second;
        }
        brep::Edge edge;
        edge.record = element.Id();
        edge.start = VertexOf(element.Ref(0).Ref(0));
        edge.end = VertexOf(element.Ref(1).Ref(0));
        const Entity geometry = element.Ref(2);
        if (geometry && !geometry.Is(Type::IfcLine)) {
            SetCurve(geometry, element.Boolean(3, true), edge);
        }
        const int number = myBody.AddEdge(std::move(edge));
        myEdges.emplace(element.Id(), number);
        return number;
    }

    /// The parameters of the ends are the builder's to find.
    void SetCurve(const Entity& geometry, bool sameSense, brep::Edge& edge)
    {
        Path path = ReadCurve(myContext, geometry);
        path = sameSense ? path : Reversed(path);
        if (path.size() == 1) {
            edge.curve = path.front().curve;
            return;
        }
        if (!IsStraight(path)) {
            throw Unbuildable("an edge over several pieces");
        }
        std::vector<gp_XYZ> points{PointAt(edge.start).XYZ()};
        for (std::size_t i = 0; i + 1 < path.size(); ++i) {
            points.push_back(path[i].end);
        }
        points.push_back(PointAt(edge.end).XYZ());
        edge.curve = PolylineCurve(points);
    }

    /// A spline of degree one.
    static Handle(Geom_Curve) PolylineCurve(const std::vector<gp_XYZ>& points)
    {
        const int count = static_cast<int>(points.size());
        TColgp_Array1OfPnt poles(1, count);
        TColStd_Array1OfReal knots(1, count);
        TColStd_Array1OfInteger multiplicities(1, count);
        for (int i = 1; i <= count; ++i) {
            poles.SetValue(i, gp_Pnt(points[static_cast<std::size_t>(i) - 1]));
            knots.SetValue(i, i);
            multiplicities.SetValue(i, i == 1 || i == count ? 2 : 1);
        }
        return new Geom_BSplineCurve(poles, knots, multiplicities, 1);
    }

    Context& myContext;
    brep::Description myBody;
    std::unordered_map<Id, int> mySurfaces;
    std::unordered_map<Id, int> myVertices;
    std::unordered_map<Id, int> myEdges;
    std::map<std::pair<int, int>, int> myLines; ///< by vertices, the lower one first
};

} // namespace

TopoDS_Shape ReadAdvancedShell(Context& context, const Entity& shell)
{
    BodyDescriber describer(context);
    const int number = describer.AddShell(shell);
    describer.Body().sheets.push_back(number);
    return describer.Shape();
}

TopoDS_Shape ReadAdvancedBrep(Context& context, const Entity& item)
{
    BodyDescriber describer(context);
    brep::Solid solid;
    solid.outer = describer.AddShell(item.Ref(0));
    for (const Id id : item.Refs(1)) {
        solid.voids.push_back(describer.AddShell(context.file.Get(id)));
    }
    describer.Body().solids.push_back(std::move(solid));
    return describer.Shape();
}

TopoDS_Shape ReadSurfaceItem(Context& context, const Entity& surface)
{
    switch (surface.Type()) {
    case Type::IfcFaceSurface:
    case Type::IfcAdvancedFace:
    case Type::IfcCurveBoundedSurface: {
        BodyDescriber describer(context);
        const int face = surface.Is(Type::IfcCurveBoundedSurface) ? describer.AddBoundedFace(surface)
                                                                  : describer.AddFace(surface);
        if (face == brep::None) {
            throw Unbuildable("a face that cannot be built");
        }
        const int shell = describer.Body().AddShell({.faces = {{face, true}}});
        describer.Body().sheets.push_back(shell);
        return describer.Shape();
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
