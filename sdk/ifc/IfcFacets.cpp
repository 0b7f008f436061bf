#include "sdk/ifc/IfcFacets.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include <BRepTools.hxx>
#include <BRepTools_WireExplorer.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_DataMapOfShapeInteger.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Iterator.hxx>
#include <TopoDS_Shell.hxx>
#include <TopoDS_Solid.hxx>
#include <TopoDS_Vertex.hxx>
#include <TopoDS_Wire.hxx>

#include "sdk/mesh/EngineTolerances.h"
#include "sdk/occt/FlatHealing.h"

namespace cadex::ifc {
namespace {

using PointIndex = std::unordered_map<Id, U32>;

/// One bound of a face, turned as the bound says; nothing when it is damaged.
bool AddLoop(Context& context, const Entity& bound, bool outer, Polyhedron& body, PointIndex& known)
{
    const Entity loop = bound.Ref(0);
    if (!loop.Is(Type::IfcPolyLoop)) {
        return false;
    }
    std::vector<Id> ids = loop.Refs(0);
    context.Steps(ids.size() + 1);
    if (!bound.Boolean(1, true)) {
        ids = std::vector<Id>(ids.rbegin(), ids.rend());
    }
    body.BeginLoop(outer);
    for (Id id : ids) {
        const auto [entry, fresh] = known.try_emplace(id, static_cast<U32>(body.points.size()));
        if (fresh) {
            try {
                body.points.push_back(context.Point(context.file.Get(id)));
            } catch (const Unbuildable&) {
                known.erase(entry);
                body.DropLoop();
                return false;
            }
        }
        body.AddCorner(entry->second);
    }
    if (body.loops.back().count < 3) {
        body.DropLoop();
        return false;
    }
    return true;
}

void AddFace(Context& context, const Entity& face, Polyhedron& body, PointIndex& known)
{
    const std::vector<Id> bounds = face.Refs(0);
    std::size_t outer = 0;
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        if (context.file.TypeOf(bounds[i]) == Type::IfcFaceOuterBound) {
            outer = i;
            break;
        }
    }
    if (bounds.empty() || !AddLoop(context, context.file.Get(bounds[outer]), true, body, known)) {
        return;
    }
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        if (i != outer) {
            AddLoop(context, context.file.Get(bounds[i]), false, body, known);
        }
    }
}

void AddShell(Context& context, const Entity& shell, Polyhedron& body)
{
    PointIndex known;
    for (Id id : shell.Refs(0)) {
        const Entity face = context.file.Get(id);
        context.Step();
        if (face) {
            AddFace(context, face, body, known);
        }
    }
}

void AddPoints(Context& context, const Entity& list, Polyhedron& body)
{
    const std::vector<double> numbers = list.Reals(0);
    context.Steps(numbers.size() / 3 + 1);
    body.points.reserve(numbers.size() / 3);
    for (std::size_t i = 0; i + 2 < numbers.size(); i += 3) {
        gp_XYZ point(numbers[i], numbers[i + 1], numbers[i + 2]);
        point *= context.toMillimetres;
        if (!(point.SquareModulus() < 1e24)) {
            throw Unbuildable("a coordinate that is no number");
        }
        body.points.push_back(point);
    }
}

/// Where an index of the file points, through the indirection of PnIndex if there is one.
class IndexMap
{
public:
    IndexMap(const Polyhedron& body, const Entity& set, std::size_t argument) : myCount(body.points.size())
    {
        const std::string_view raw = set.Raw(argument);
        if (!raw.empty() && raw.find('(', 1) == std::string_view::npos) {
            ReadNumbers(raw, myIndirect);
        }
    }
    bool Find(double index, U32& point) const
    {
        if (!myIndirect.empty()) {
            if (!(index >= 1 && index <= static_cast<double>(myIndirect.size()))) {
                return false;
            }
            index = myIndirect[static_cast<std::size_t>(index) - 1];
        }
        if (!(index >= 1 && index <= static_cast<double>(myCount))) {
            return false;
        }
        point = static_cast<U32>(index) - 1;
        return true;
    }

private:
    std::size_t myCount;
    std::vector<double> myIndirect;
};

/// One loop of indices; left out when one of them points nowhere.
bool AddIndexedLoop(const std::vector<double>& indices, const IndexMap& map, bool outer, Polyhedron& body)
{
    body.BeginLoop(outer);
    for (double index : indices) {
        U32 point = 0;
        if (!map.Find(index, point)) {
            body.DropLoop();
            return false;
        }
        body.AddCorner(point);
    }
    if (body.loops.back().count < 3) {
        body.DropLoop();
        return false;
    }
    return true;
}

/// IfcTriangulatedFaceSet: Coordinates, Normals, Closed, CoordIndex, PnIndex.
void AddTriangulated(Context& context, const Entity& set, Polyhedron& body)
{
    AddPoints(context, set.Ref(0), body);
    const IndexMap map(body, set, 4);
    std::vector<double> indices = set.Reals(3);
    context.Steps(indices.size());
    body.corners.reserve(indices.size());
    body.loops.reserve(indices.size() / 3);
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        AddIndexedLoop({indices[i], indices[i + 1], indices[i + 2]}, map, true, body);
    }
    body.closed = set.Boolean(2, false);
    const std::vector<double> normals = set.Reals(1);
    if (normals.size() == 3 * body.points.size() && !set.IsSet(4)) {
        body.normals.reserve(body.points.size());
        for (std::size_t i = 0; i < normals.size(); i += 3) {
            body.normals.emplace_back(static_cast<float>(normals[i]), static_cast<float>(normals[i + 1]),
                                      static_cast<float>(normals[i + 2]));
        }
    }
}

/// IfcPolygonalFaceSet: Coordinates, Closed, Faces, PnIndex.
void AddPolygonal(Context& context, const Entity& set, Polyhedron& body)
{
    AddPoints(context, set.Ref(0), body);
    const IndexMap map(body, set, 3);
    for (Id id : set.Refs(2)) {
        const Entity face = context.file.Get(id);
        const std::vector<double> outer = face.Reals(0);
        context.Steps(outer.size() + 1);
        if (AddIndexedLoop(outer, map, true, body) && face.Is(Type::IfcIndexedPolygonalFaceWithVoids)) {
            ListReader voids(face.Raw(1));
            for (std::string_view item; voids.Next(item);) {
                std::vector<double> hole;
                ReadNumbers(item, hole);
                AddIndexedLoop(hole, map, false, body);
            }
        }
    }
    body.closed = set.Boolean(1, false);
}

/// Edges by the pair of their points, each built once.
class EdgeTable
{
public:
    explicit EdgeTable(const Polyhedron& body) : myBody(body), myVertices(body.points.size()) {}

    TopoDS_Edge Edge(U32 from, U32 to)
    {
        const bool forward = from < to;
        const std::uint64_t key =
            static_cast<std::uint64_t>(forward ? from : to) << 32U | (forward ? to : from);
        TopoDS_Edge& edge = myEdges[key];
        if (edge.IsNull()) {
            const U32 low = forward ? from : to;
            const U32 high = forward ? to : from;
            const gp_XYZ way = myBody.points[high] - myBody.points[low];
            myBuilder.MakeEdge(edge, new Geom_Line(gp_Pnt(myBody.points[low]), gp_Dir(way)),
                               tolerance::Coincident);
            myBuilder.Add(edge, Vertex(low).Oriented(TopAbs_FORWARD));
            myBuilder.Add(edge, Vertex(high).Oriented(TopAbs_REVERSED));
            myBuilder.Range(edge, 0, way.Modulus());
        }
        return TopoDS::Edge(edge.Oriented(forward ? TopAbs_FORWARD : TopAbs_REVERSED));
    }

private:
    const TopoDS_Vertex& Vertex(U32 index)
    {
        if (myVertices[index].IsNull()) {
            myBuilder.MakeVertex(myVertices[index], gp_Pnt(myBody.points[index]), tolerance::Coincident);
        }
        return myVertices[index];
    }

    const Polyhedron& myBody;
    BRep_Builder myBuilder;
    std::vector<TopoDS_Vertex> myVertices;
    std::unordered_map<std::uint64_t, TopoDS_Edge> myEdges;
};

TopoDS_Wire WireOf(const Polyhedron& body, const U32* corners, std::size_t count, EdgeTable& edges)
{
    const BRep_Builder builder;
    TopoDS_Wire wire;
    builder.MakeWire(wire);
    for (std::size_t i = 0; i < count; ++i) {
        const U32 from = corners[i];
        const U32 to = corners[(i + 1) % count];
        if (from != to && (body.points[from] - body.points[to]).Modulus() > 1e-9) {
            builder.Add(wire, edges.Edge(from, to));
        }
    }
    wire.Closed(true);
    return wire;
}

bool IsFlat(const Polyhedron& body, std::size_t first, std::size_t end, const gp_XYZ& origin,
            const gp_XYZ& normal)
{
    for (std::size_t loop = first; loop < end; ++loop) {
        for (U32 i = 0; i < body.loops[loop].count; ++i) {
            const gp_XYZ& point = body.points[body.corners[body.loops[loop].first + i]];
            if (std::abs((point - origin).Dot(normal)) > 1e-5) {
                return false;
            }
        }
    }
    return true;
}

TopoDS_Face PlanarFace(const gp_XYZ& origin, const gp_XYZ& normal)
{
    TopoDS_Face face;
    BRep_Builder().MakeFace(face, new Geom_Plane(gp_Pnt(origin), gp_Dir(normal)), 1e-6);
    return face;
}

/// A face that is not flat, as triangles.
void AddWarpedFace(const Polyhedron& body, const Polyhedron::Loop& loop, EdgeTable& edges,
                   TopoDS_Shell& shell)
{
    const BRep_Builder builder;
    for (U32 i = 1; i + 1 < loop.count; ++i) {
        const U32 triangle[3] = {body.corners[loop.first], body.corners[loop.first + i],
                                 body.corners[loop.first + i + 1]};
        const gp_XYZ& a = body.points[triangle[0]];
        const gp_XYZ normal = (body.points[triangle[1]] - a).Crossed(body.points[triangle[2]] - a);
        if (normal.Modulus() > 1e-9) {
            TopoDS_Face face = PlanarFace(a, normal);
            builder.Add(face, WireOf(body, triangle, 3, edges));
            builder.Add(shell, face);
        }
    }
}

TopoDS_Shell ShellOf(const Polyhedron& body, std::size_t first, std::size_t last, EdgeTable& edges)
{
    const BRep_Builder builder;
    TopoDS_Shell shell;
    builder.MakeShell(shell);
    for (std::size_t loop = first; loop < last; loop = body.FaceEnd(loop)) {
        const std::size_t end = body.FaceEnd(loop);
        const gp_XYZ area = AreaVector(body, body.loops[loop]);
        const gp_XYZ& origin = body.points[body.corners[body.loops[loop].first]];
        if (area.Modulus() <= 1e-9) {
            continue;
        }
        const gp_XYZ normal = area.Normalized();
        if (end == loop + 1 && !IsFlat(body, loop, end, origin, normal)) {
            AddWarpedFace(body, body.loops[loop], edges, shell);
            continue;
        }
        TopoDS_Face face = PlanarFace(origin, normal);
        for (std::size_t i = loop; i < end; ++i) {
            builder.Add(face, WireOf(body, &body.corners[body.loops[i].first], body.loops[i].count, edges));
        }
        builder.Add(shell, face);
    }
    shell.Closed(body.closed);
    return shell;
}

} // namespace

void Polyhedron::AddCorner(U32 point)
{
    Loop& loop = loops.back();
    if (loop.count == 0 || corners.back() != point) {
        corners.push_back(point);
        ++loop.count;
    }
}

void Polyhedron::DropLoop()
{
    corners.resize(loops.back().first);
    loops.pop_back();
}

void Polyhedron::AddFace(const std::vector<U32>& outline)
{
    BeginLoop(true);
    for (U32 corner : outline) {
        AddCorner(corner);
    }
}

std::size_t Polyhedron::NumberOfFaces() const
{
    std::size_t count = 0;
    for (const Loop& loop : loops) {
        count += loop.outer ? 1 : 0;
    }
    return count;
}

std::size_t Polyhedron::FaceEnd(std::size_t loop) const
{
    ++loop;
    while (loop < loops.size() && !loops[loop].outer) {
        ++loop;
    }
    return loop;
}

std::vector<std::array<std::size_t, 2>> Polyhedron::Shells() const
{
    std::vector<std::array<std::size_t, 2>> result;
    std::size_t first = 0;
    for (std::size_t start : shells) {
        result.push_back({first, start});
        first = start;
    }
    result.push_back({first, loops.size()});
    return result;
}

double Polyhedron::SignedVolume(std::size_t firstLoop, std::size_t endLoop) const
{
    double volume = 0;
    const gp_XYZ origin = points.empty() ? gp_XYZ() : points.front();
    for (std::size_t loop = firstLoop; loop < endLoop; ++loop) {
        volume += AreaVector(*this, loops[loop]).Dot(points[corners[loops[loop].first]] - origin);
    }
    return volume;
}

void Polyhedron::Reverse(std::size_t firstLoop, std::size_t endLoop)
{
    for (std::size_t loop = firstLoop; loop < endLoop; ++loop) {
        const auto first = corners.begin() + loops[loop].first;
        std::reverse(first, first + loops[loop].count);
    }
}

void Polyhedron::Move(const Affine& placement)
{
    for (gp_XYZ& point : points) {
        point = Apply(placement, point);
    }
    // normals stay at right angles under uneven scales by the inverse transposed
    const gp_Mat turn = normals.empty() ? gp_Mat() : occt::ToMatrix(placement).Inverted().Transposed();
    for (ModelData_Vectorf& normal : normals) {
        const gp_XYZ moved = Unit(gp_XYZ(normal.X(), normal.Y(), normal.Z()).Multiplied(turn), gp_XYZ());
        normal = ModelData_Vectorf(static_cast<float>(moved.X()), static_cast<float>(moved.Y()),
                                   static_cast<float>(moved.Z()));
    }
    if (mesh::Determinant(placement.linear) < 0) {
        Reverse();
    }
}

gp_XYZ AreaVector(const Polyhedron& body, const Polyhedron::Loop& loop)
{
    gp_XYZ area;
    const gp_XYZ& origin = body.points[body.corners[loop.first]];
    for (U32 i = 1; i + 1 < loop.count; ++i) {
        area += (body.points[body.corners[loop.first + i]] - origin)
                    .Crossed(body.points[body.corners[loop.first + i + 1]] - origin);
    }
    return area;
}

bool IsFaceted(Context& context, const Entity& shell)
{
    for (Id id : shell.Refs(0)) {
        const Entity face = context.file.Get(id);
        context.Step();
        const std::vector<Id> bounds = face.Refs(0);
        if (!bounds.empty() &&
            context.file.TypeOf(context.file.Get(bounds.front()).RefId(0)) == Type::IfcEdgeLoop) {
            return false;
        }
    }
    return true;
}

Polyhedron ReadPolyhedron(Context& context, const Entity& item)
{
    Polyhedron body;
    switch (item.Type()) {
    case Type::IfcTriangulatedFaceSet:
    case Type::IfcTriangulatedIrregularNetwork:
        AddTriangulated(context, item, body);
        break;
    case Type::IfcPolygonalFaceSet:
        AddPolygonal(context, item, body);
        break;
    case Type::IfcFacetedBrep:
    case Type::IfcFacetedBrepWithVoids:
        AddShell(context, item.Ref(0), body);
        for (Id id : item.Refs(1)) {
            body.shells.push_back(body.loops.size());
            AddShell(context, context.file.Get(id), body);
        }
        body.closed = true;
        break;
    default:
        AddShell(context, item, body);
        body.closed = item.Is(Type::IfcClosedShell);
        break;
    }
    if (body.loops.empty()) {
        throw Unbuildable("a body without faces");
    }
    bool cavity = false;
    for (const auto& [first, end] : body.Shells()) {
        // the first shell of a B-rep faces outwards, the ones behind it bound cavities
        if (body.closed && (body.SignedVolume(first, end) < 0) != cavity) {
            body.Reverse(first, end);
        }
        cavity = true;
    }
    return body;
}

std::vector<U32> Triangulate(Context& context, const Polyhedron& body)
{
    std::vector<U32> triangles;
    triangles.reserve(3 * body.corners.size());
    for (std::size_t loop = 0; loop < body.loops.size(); loop = body.FaceEnd(loop)) {
        TriangulateFace(context, body, loop, body.FaceEnd(loop), triangles);
    }
    return triangles;
}

TopoDS_Shape ShapeOf(const Polyhedron& body)
{
    const BRep_Builder builder;
    EdgeTable edges(body);
    std::vector<TopoDS_Shape> shapes;
    for (const auto& [first, end] : body.Shells()) {
        const TopoDS_Shell shell = ShellOf(body, first, end, edges);
        if (!body.closed) {
            shapes.push_back(shell);
            continue;
        }
        // a shell that faces inwards is a cavity of the solid before it
        if (shapes.empty() || body.SignedVolume(first, end) > 0) {
            TopoDS_Solid solid;
            builder.MakeSolid(solid);
            shapes.push_back(solid);
        }
        builder.Add(shapes.back(), shell);
    }
    if (shapes.size() == 1) {
        return shapes.front();
    }
    TopoDS_Compound compound;
    builder.MakeCompound(compound);
    for (const TopoDS_Shape& shape : shapes) {
        builder.Add(compound, shape);
    }
    return compound;
}

namespace {

/// The corners of a wire in order, as it runs on the face taken forward.
bool AddWire(const TopoDS_Wire& wire, const TopoDS_Face& face, bool outer, Polyhedron& body,
             TopTools_DataMapOfShapeInteger& known)
{
    std::size_t edges = 0;
    for (TopoDS_Iterator edge(wire); edge.More(); edge.Next()) {
        ++edges;
    }
    body.BeginLoop(outer);
    std::size_t walked = 0;
    for (BRepTools_WireExplorer explorer(wire, face); explorer.More(); explorer.Next(), ++walked) {
        const TopoDS_Vertex& vertex = explorer.CurrentVertex();
        if (!known.IsBound(vertex)) {
            known.Bind(vertex, static_cast<int>(body.points.size()));
            body.points.push_back(BRep_Tool::Pnt(vertex).XYZ());
        }
        body.AddCorner(static_cast<U32>(known.Find(vertex)));
    }
    return walked == edges && body.loops.back().count >= 3;
}

bool AddPlanarFace(const TopoDS_Face& face, Polyhedron& body, TopTools_DataMapOfShapeInteger& known)
{
    const TopoDS_Face forward = TopoDS::Face(face.Oriented(TopAbs_FORWARD));
    const TopoDS_Wire outer = BRepTools::OuterWire(forward);
    const std::size_t first = body.loops.size();
    if (outer.IsNull() || !AddWire(outer, forward, true, body, known)) {
        return false;
    }
    for (TopoDS_Iterator wire(forward); wire.More(); wire.Next()) {
        if (wire.Value().ShapeType() == TopAbs_WIRE && !wire.Value().IsSame(outer) &&
            !AddWire(TopoDS::Wire(wire.Value()), forward, false, body, known)) {
            return false;
        }
    }
    if (face.Orientation() == TopAbs_REVERSED) {
        body.Reverse(first, body.loops.size());
    }
    return true;
}

} // namespace

bool FacetsOf(const TopoDS_Shape& shape, Polyhedron& body)
{
    if (!occt::IsFlat(shape) || TopExp_Explorer(shape, TopAbs_FACE, TopAbs_SHELL).More() ||
        TopExp_Explorer(shape, TopAbs_SHELL, TopAbs_SOLID).More()) {
        return false;
    }
    TopTools_DataMapOfShapeInteger known;
    for (TopExp_Explorer shell(shape, TopAbs_SHELL); shell.More(); shell.Next()) {
        if (!body.loops.empty()) {
            body.shells.push_back(body.loops.size());
        }
        for (TopExp_Explorer face(shell.Current(), TopAbs_FACE); face.More(); face.Next()) {
            if (!AddPlanarFace(TopoDS::Face(face.Current()), body, known)) {
                return false;
            }
        }
    }
    body.closed = true;
    return !body.loops.empty();
}

} // namespace cadex::ifc
