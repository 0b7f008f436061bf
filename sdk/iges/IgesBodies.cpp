#include "sdk/iges/IgesBodies.h"

#include <unordered_map>

#include <IGESBasic_Group.hxx>
#include <IGESBasic_HArray1OfHArray1OfIGESEntity.hxx>
#include <IGESBasic_HArray1OfHArray1OfInteger.hxx>
#include <IGESBasic_SubfigureDef.hxx>
#include <IGESData_HArray1OfIGESEntity.hxx>
#include <IGESGeom_CompositeCurve.hxx>
#include <IGESGeom_CopiousData.hxx>
#include <IGESGeom_CurveOnSurface.hxx>
#include <IGESGeom_Direction.hxx>
#include <IGESGeom_Line.hxx>
#include <IGESGeom_Plane.hxx>
#include <IGESGeom_Point.hxx>
#include <IGESGeom_TrimmedSurface.hxx>
#include <IGESSolid_EdgeList.hxx>
#include <IGESSolid_Face.hxx>
#include <IGESSolid_HArray1OfFace.hxx>
#include <IGESSolid_HArray1OfLoop.hxx>
#include <IGESSolid_HArray1OfShell.hxx>
#include <IGESSolid_HArray1OfVertexList.hxx>
#include <IGESSolid_Loop.hxx>
#include <IGESSolid_ManifoldSolid.hxx>
#include <IGESSolid_PlaneSurface.hxx>
#include <IGESSolid_Shell.hxx>
#include <IGESSolid_VertexList.hxx>
#include <TColStd_HArray1OfInteger.hxx>
#include <TColStd_HArray1OfReal.hxx>
#include <TColgp_HArray1OfXYZ.hxx>

namespace cadex::iges {

namespace {

// Status numbers of the directory entry: IGES 5.3, section 2.2.4.4.9.
enum Subordinate
{
    Independent = 0,
    PhysicallyDependent = 1,
    LogicallyDependent = 2
};
enum Use
{
    UseGeometry = 0,
    UseDefinition = 2,
    UseLogical = 4,
    UseParametric = 5
};

// In an IGES loop, an entry is an edge, not a vertex; a trimmed surface prefers the curve in space.
constexpr int EntryIsEdge = 0;
constexpr int PrefersSpaceCurve = 2;

gp_XYZ ToXYZ(const mesh::Vector3& point)
{
    return {point[0], point[1], point[2]};
}

void SetColor(const IgesEntity& entity, const IgesColor& color)
{
    if (!color.IsNull()) {
        entity->InitColor(color);
    }
}

gp_XYZ UnitNormal(const std::array<gp_XYZ, 3>& corners)
{
    return (corners[1] - corners[0]).Crossed(corners[2] - corners[0]).Normalized();
}

/// Adds an entity that belongs to another.
template <typename Entity>
    const Handle(Entity) &
    AddPart(IGESData_IGESModel& model, const Handle(Entity) & entity, Use use = UseGeometry)
{
    entity->InitStatus(0, PhysicallyDependent, use, 0);
    model.AddEntity(entity);
    return entity;
}

Handle(IGESGeom_Line) MakeLine(const gp_XYZ& from, const gp_XYZ& to)
{
    Handle(IGESGeom_Line) line = new IGESGeom_Line;
    line->Init(from, to);
    return line;
}

Handle(TColStd_HArray1OfInteger) Filled(int count, int value)
{
    return new TColStd_HArray1OfInteger(1, count, value);
}

/// The boundaries of one closed body with common lists of edges and vertices.
class SolidMaker
{
public:
    SolidMaker(IGESData_IGESModel& model, const PlacedMesh& mesh, const MeshBody& body,
               const std::vector<IgesColor>& colors)
        : myModel(model),
          myMesh(mesh),
          myBody(body),
          myColors(colors),
          myEdgeList(new IGESSolid_EdgeList),
          myVertexList(new IGESSolid_VertexList)
    {
    }

    Handle(IGESSolid_ManifoldSolid) Make()
    {
        AddPart(myModel, myEdgeList);
        AddPart(myModel, myVertexList);
        const Handle(IGESSolid_Shell) outer = MakeShell(myBody.outer);
        Handle(IGESSolid_HArray1OfShell) voids;
        Handle(TColStd_HArray1OfInteger) flags;
        if (!myBody.voids.empty()) {
            const int count = static_cast<int>(myBody.voids.size());
            voids = new IGESSolid_HArray1OfShell(1, count);
            flags = Filled(count, 1);
            for (int i = 1; i <= count; ++i) {
                voids->SetValue(i, MakeShell(myBody.voids[static_cast<std::size_t>(i - 1)]));
            }
        }
        FillLists();
        Handle(IGESSolid_ManifoldSolid) solid = new IGESSolid_ManifoldSolid;
        solid->Init(outer, true, voids, flags);
        SetColor(solid, myIsUniform ? myColor : IgesColor());
        myModel.AddEntity(solid);
        return solid;
    }

private:
    struct Edge
    {
        U32 from;
        U32 to;
    };

    Handle(IGESSolid_Shell) MakeShell(std::size_t number)
    {
        const mesh::MeshTopology::Piece& piece = myMesh.topology.pieces[number];
        const int count = static_cast<int>(piece.last - piece.first);
        Handle(IGESSolid_HArray1OfFace) faces = new IGESSolid_HArray1OfFace(1, count);
        for (int i = 1; i <= count; ++i) {
            const U32 triangle = myMesh.topology.triangles[piece.first + static_cast<std::size_t>(i - 1)];
            faces->SetValue(i, MakeFace(triangle));
        }
        Handle(IGESSolid_Shell) shell = new IGESSolid_Shell;
        shell->Init(faces, Filled(count, 1));
        return AddPart(myModel, shell);
    }

    Handle(IGESSolid_Face) MakeFace(U32 triangle)
    {
        const std::array<U32, 3> corners = myMesh.Corners(triangle, myBody.isTurned);
        const std::array<gp_XYZ, 3> points = {ToXYZ(myMesh.vertices[corners[0]]),
                                              ToXYZ(myMesh.vertices[corners[1]]),
                                              ToXYZ(myMesh.vertices[corners[2]])};
        Handle(IGESGeom_Point) location = new IGESGeom_Point;
        location->Init(points[0], nullptr);
        Handle(IGESGeom_Direction) normal = new IGESGeom_Direction;
        normal->Init(UnitNormal(points));
        Handle(IGESSolid_PlaneSurface) plane = new IGESSolid_PlaneSurface;
        plane->Init(AddPart(myModel, location, UseLogical), AddPart(myModel, normal, UseDefinition), nullptr);
        AddPart(myModel, plane);

        Handle(IGESSolid_HArray1OfLoop) loops = new IGESSolid_HArray1OfLoop(1, 1);
        loops->SetValue(1, MakeLoop(corners));
        Handle(IGESSolid_Face) face = new IGESSolid_Face;
        face->Init(plane, true, loops);
        const IgesColor& color = myColors[myMesh.topology.SourceOf(myMesh.mesh, triangle)];
        Remember(color);
        SetColor(face, color);
        return AddPart(myModel, face);
    }

    Handle(IGESSolid_Loop) MakeLoop(const std::array<U32, 3>& corners)
    {
        Handle(TColStd_HArray1OfInteger) indices = new TColStd_HArray1OfInteger(1, 3);
        Handle(TColStd_HArray1OfInteger) senses = new TColStd_HArray1OfInteger(1, 3);
        Handle(IGESData_HArray1OfIGESEntity) lists = new IGESData_HArray1OfIGESEntity(1, 3, myEdgeList);
        for (int k = 1; k <= 3; ++k) {
            const U32 from = corners[static_cast<std::size_t>(k - 1)];
            const U32 to = corners[static_cast<std::size_t>(k % 3)];
            indices->SetValue(k, EdgeNumber(from, to));
            senses->SetValue(k, from < to ? 1 : 0);
        }
        Handle(IGESSolid_Loop) loop = new IGESSolid_Loop;
        loop->Init(myTypes, lists, indices, senses, myNoCurves, myFlags, myCurves);
        return AddPart(myModel, loop);
    }

    /// From 1; edges run from the lower to the higher vertex.
    int EdgeNumber(U32 from, U32 to)
    {
        const U32 low = std::min(from, to);
        const U32 high = std::max(from, to);
        const auto [it, isNew] = myEdgeNumbers.try_emplace(static_cast<std::uint64_t>(low) << 32 | high,
                                                           static_cast<int>(myEdges.size()) + 1);
        if (isNew) {
            myEdges.push_back({low, high});
        }
        return it->second;
    }

    /// From 1, counted in the order of first use.
    int VertexNumber(U32 vertex)
    {
        const auto [it, isNew] = myVertexNumbers.try_emplace(vertex, static_cast<int>(myVertices.size()) + 1);
        if (isNew) {
            myVertices.push_back(vertex);
        }
        return it->second;
    }

    void FillLists()
    {
        const int count = static_cast<int>(myEdges.size());
        Handle(IGESData_HArray1OfIGESEntity) lines = new IGESData_HArray1OfIGESEntity(1, count);
        Handle(IGESSolid_HArray1OfVertexList) lists =
            new IGESSolid_HArray1OfVertexList(1, count, myVertexList);
        Handle(TColStd_HArray1OfInteger) starts = new TColStd_HArray1OfInteger(1, count);
        Handle(TColStd_HArray1OfInteger) ends = new TColStd_HArray1OfInteger(1, count);
        for (int i = 1; i <= count; ++i) {
            const Edge edge = myEdges[static_cast<std::size_t>(i - 1)];
            lines->SetValue(i, AddPart(myModel, MakeLine(ToXYZ(myMesh.vertices[edge.from]),
                                                         ToXYZ(myMesh.vertices[edge.to]))));
            starts->SetValue(i, VertexNumber(edge.from));
            ends->SetValue(i, VertexNumber(edge.to));
        }
        myEdgeList->Init(lines, lists, starts, lists, ends);

        Handle(TColgp_HArray1OfXYZ) points = new TColgp_HArray1OfXYZ(1, static_cast<int>(myVertices.size()));
        for (int i = 1; i <= points->Length(); ++i) {
            points->SetValue(i, ToXYZ(myMesh.vertices[myVertices[static_cast<std::size_t>(i - 1)]]));
        }
        myVertexList->Init(points);
    }

    void Remember(const IgesColor& color)
    {
        myIsUniform = myIsUniform && (!myHasFace || color == myColor);
        myColor = color;
        myHasFace = true;
    }

    IGESData_IGESModel& myModel;
    const PlacedMesh& myMesh;
    const MeshBody& myBody;
    const std::vector<IgesColor>& myColors;
    Handle(IGESSolid_EdgeList) myEdgeList;
    Handle(IGESSolid_VertexList) myVertexList;
    // The same in every loop of three edges without curves in parameter space:
    Handle(TColStd_HArray1OfInteger) myTypes = Filled(3, EntryIsEdge);
    Handle(TColStd_HArray1OfInteger) myNoCurves = Filled(3, 0);
    Handle(IGESBasic_HArray1OfHArray1OfInteger) myFlags = new IGESBasic_HArray1OfHArray1OfInteger(1, 3);
    Handle(IGESBasic_HArray1OfHArray1OfIGESEntity) myCurves = new IGESBasic_HArray1OfHArray1OfIGESEntity(1,
                                                                                                         3);

    std::unordered_map<std::uint64_t, int> myEdgeNumbers;
    std::unordered_map<U32, int> myVertexNumbers;
    std::vector<Edge> myEdges;
    std::vector<U32> myVertices;
    IgesColor myColor;
    bool myHasFace = false;
    bool myIsUniform = true;
};

} // namespace

void IgesBodies::AddBody(const PlacedMesh& mesh, const MeshBody& body, const std::vector<IgesColor>& colors,
                         std::vector<IgesEntity>& result)
{
    if (body.isClosed) {
        result.push_back(SolidMaker(*myModel, mesh, body, colors).Make());
        return;
    }
    const mesh::MeshTopology::Piece& piece = mesh.topology.pieces[body.outer];
    for (std::size_t i = piece.first; i < piece.last; ++i) {
        const U32 triangle = mesh.topology.triangles[i];
        const std::array<U32, 3> corners = mesh.Corners(triangle);
        AddTrimmedPlane({ToXYZ(mesh.vertices[corners[0]]), ToXYZ(mesh.vertices[corners[1]]),
                         ToXYZ(mesh.vertices[corners[2]])},
                        colors[mesh.topology.SourceOf(mesh.mesh, triangle)], result);
    }
}

void IgesBodies::AddTrimmedPlane(const std::array<gp_XYZ, 3>& corners, const IgesColor& color,
                                 std::vector<IgesEntity>& result)
{
    const gp_XYZ normal = UnitNormal(corners);
    Handle(IGESGeom_Plane) plane = new IGESGeom_Plane;
    plane->Init(normal.X(), normal.Y(), normal.Z(), normal.Dot(corners[0]), nullptr, corners[0], 0);
    AddPart(*myModel, plane);

    Handle(IGESData_HArray1OfIGESEntity) lines = new IGESData_HArray1OfIGESEntity(1, 3);
    for (int k = 1; k <= 3; ++k) {
        lines->SetValue(k, AddPart(*myModel, MakeLine(corners[static_cast<std::size_t>(k - 1)],
                                                      corners[static_cast<std::size_t>(k % 3)])));
    }
    Handle(IGESGeom_CompositeCurve) outline = new IGESGeom_CompositeCurve;
    outline->Init(lines);
    AddPart(*myModel, outline);

    Handle(IGESGeom_CurveOnSurface) boundary = new IGESGeom_CurveOnSurface;
    boundary->Init(0, plane, nullptr, outline, PrefersSpaceCurve);
    AddPart(*myModel, boundary, UseParametric);

    Handle(IGESGeom_TrimmedSurface) trimmed = new IGESGeom_TrimmedSurface;
    trimmed->Init(plane, 1, boundary, nullptr);
    SetColor(trimmed, color);
    myModel->AddEntity(trimmed);
    result.push_back(trimmed);
}

IgesEntity IgesBodies::AddPolyline(const std::vector<ModelData_Point>& points, const IgesColor& color)
{
    IgesEntity result;
    if (points.size() == 2) {
        const ModelData_Point& from = points[0];
        const ModelData_Point& to = points[1];
        result = MakeLine({from.X(), from.Y(), from.Z()}, {to.X(), to.Y(), to.Z()});
    } else {
        Handle(TColStd_HArray1OfReal) coordinates =
            new TColStd_HArray1OfReal(1, static_cast<int>(points.size() * 3));
        int next = 1;
        for (const ModelData_Point& point : points) {
            for (const double value : {point.X(), point.Y(), point.Z()}) {
                coordinates->SetValue(next++, value);
            }
        }
        Handle(IGESGeom_CopiousData) path = new IGESGeom_CopiousData;
        path->Init(2, 0, coordinates);
        path->SetPolyline(true);
        result = path;
    }
    SetColor(result, color);
    myModel->AddEntity(result);
    return result;
}

IgesEntity IgesBodies::Group(const std::vector<IgesEntity>& members)
{
    if (members.size() < 2) {
        return members.empty() ? IgesEntity() : members.front();
    }
    Handle(IGESData_HArray1OfIGESEntity) entities =
        new IGESData_HArray1OfIGESEntity(1, static_cast<int>(members.size()));
    for (int i = 1; i <= entities->Length(); ++i) {
        const IgesEntity& member = members[static_cast<std::size_t>(i - 1)];
        member->InitStatus(0, LogicallyDependent, UseGeometry, 0);
        entities->SetValue(i, member);
    }
    Handle(IGESBasic_Group) group = new IGESBasic_Group;
    group->Init(entities);
    group->SetWithoutBackP(true);
    myModel->AddEntity(group);
    return group;
}

} // namespace cadex::iges
