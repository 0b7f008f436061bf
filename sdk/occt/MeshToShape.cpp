#include "sdk/occt/MeshToShape.h"

#include <unordered_map>
#include <vector>

#include <BRep_Builder.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <Precision.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Shell.hxx>
#include <TopoDS_Solid.hxx>
#include <TopoDS_Vertex.hxx>
#include <TopoDS_Wire.hxx>
#include <gp_Ax3.hxx>
#include <gp_Vec.hxx>

#include "sdk/mesh/MeshBodies.h"
#include "sdk/occt/FacetedBRep.h"

namespace cadex::occt {

using mesh::FindBodies;
using mesh::MeshBody;
using mesh::PlacedMesh;

namespace {

class ShapeBuilder
{
public:
    explicit ShapeBuilder(const PlacedMesh& mesh) : myMesh(mesh), myVertices(mesh.vertices.size()) {}

    TopoDS_Shape Body(const MeshBody& body)
    {
        const TopoDS_Shell outer = Shell(body.outer, body);
        if (!body.isClosed) {
            return outer;
        }
        TopoDS_Solid solid;
        myBuilder.MakeSolid(solid);
        myBuilder.Add(solid, outer);
        for (const std::size_t cavity : body.voids) {
            myBuilder.Add(solid, Shell(cavity, body));
        }
        return solid;
    }

private:
    TopoDS_Shell Shell(std::size_t number, const MeshBody& body)
    {
        const mesh::MeshTopology::Piece& piece = myMesh.topology.pieces[number];
        TopoDS_Shell shell;
        myBuilder.MakeShell(shell);
        for (std::size_t i = piece.first; i < piece.last; ++i) {
            AddFace(shell, myMesh.Corners(myMesh.topology.triangles[i], body.isTurned));
        }
        shell.Closed(body.isClosed);
        return shell;
    }

    void AddFace(TopoDS_Shell& shell, const std::array<U32, 3>& corners)
    {
        TopoDS_Wire wire;
        myBuilder.MakeWire(wire);
        for (std::size_t k = 0; k < 3; ++k) {
            const U32 from = corners[k];
            const U32 to = corners[(k + 1) % 3];
            const TopoDS_Edge& edge = Edge(std::min(from, to), std::max(from, to));
            myBuilder.Add(wire, edge.Oriented(from < to ? TopAbs_FORWARD : TopAbs_REVERSED));
        }
        wire.Closed(true);
        const gp_Pnt origin = Point(corners[0]);
        const gp_Vec side(origin, Point(corners[1]));
        const gp_Dir normal(side.Crossed(gp_Vec(origin, Point(corners[2]))));
        TopoDS_Face face;
        myBuilder.MakeFace(face, new Geom_Plane(gp_Ax3(origin, normal, gp_Dir(side))),
                           Precision::Confusion());
        myBuilder.Add(face, wire);
        myBuilder.Add(shell, face);
    }

    const TopoDS_Edge& Edge(U32 low, U32 high)
    {
        TopoDS_Edge& edge = myEdges[static_cast<std::uint64_t>(low) << 32 | high];
        if (edge.IsNull()) {
            const gp_Vec side(Point(low), Point(high));
            myBuilder.MakeEdge(edge, new Geom_Line(Point(low), gp_Dir(side)), Precision::Confusion());
            myBuilder.Add(edge, Vertex(low).Oriented(TopAbs_FORWARD));
            myBuilder.Add(edge, Vertex(high).Oriented(TopAbs_REVERSED));
            myBuilder.Range(edge, 0, side.Magnitude());
        }
        return edge;
    }

    const TopoDS_Vertex& Vertex(U32 index)
    {
        if (myVertices[index].IsNull()) {
            myBuilder.MakeVertex(myVertices[index], Point(index), Precision::Confusion());
        }
        return myVertices[index];
    }

    gp_Pnt Point(U32 index) const
    {
        const mesh::Vector3& point = myMesh.vertices[index];
        return {point[0], point[1], point[2]};
    }

    const PlacedMesh& myMesh;
    BRep_Builder myBuilder;
    std::vector<TopoDS_Vertex> myVertices;
    std::unordered_map<std::uint64_t, TopoDS_Edge> myEdges;
};

} // namespace

TopoDS_Shape MakeShape(const FacetedBRep& facets)
{
    internal::TriangleSetImpl joined;
    for (const FacetGroup& group : facets.groups) {
        mesh::Append(joined, group.points, group.indices);
    }
    const PlacedMesh mesh(joined, mesh::Affine());
    const std::vector<MeshBody> bodies = FindBodies(mesh);
    if (bodies.empty()) {
        return {};
    }
    ShapeBuilder builder(mesh);
    if (bodies.size() == 1) {
        return builder.Body(bodies.front());
    }
    BRep_Builder topology;
    TopoDS_Compound compound;
    topology.MakeCompound(compound);
    for (const MeshBody& body : bodies) {
        topology.Add(compound, builder.Body(body));
    }
    return compound;
}

} // namespace cadex::occt
