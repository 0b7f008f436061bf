// Kernel faces of single resolved faces, on vertices and edges that they share.
//
//     SharedShapes shared(body);
//     const TopoDS_Shape face = MakeFaceShape(shared, resolved.faces[3]);
#pragma once

#include <vector>

#include <Geom_Surface.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Shape.hxx>
#include <TopoDS_Vertex.hxx>
#include <gp_Pnt.hxx>
#include <gp_Pnt2d.hxx>

#include "sdk/brep/Body.h"
#include "sdk/brep/ResolvedFace.h"

namespace cadex::brep {

/// A curve that an edge has on a surface: two faces on one surface may see it a period apart.
struct Trace
{
    const Geom_Surface* surface = nullptr;
    gp_Pnt2d ends[2];
    bool isPair = false;
};

/// Vertices and edges of a body as the kernel's, made when first asked for.
class SharedShapes
{
public:
    /// The body must outlive it.
    explicit SharedShapes(const Body& body)
        : myBody(body),
          myVertices(body.vertices.size()),
          myEdges(body.edges.size()),
          myTraces(body.edges.size())
    {
    }

    const Body& TheBody() const { return myBody; }

    TopoDS_Vertex VertexAt(int number);
    const TopoDS_Edge& EdgeAt(int number);
    std::vector<Trace>& TracesOf(int edge) { return myTraces[static_cast<std::size_t>(edge)]; }

    static TopoDS_Vertex MakeVertex(const Vertex& given);
    static TopoDS_Edge MakeEdge(const BodyEdge& given, const TopoDS_Vertex& start, const TopoDS_Vertex& end);
    /// Lets the vertex reach the point.
    static void Reach(const TopoDS_Vertex& vertex, const gp_Pnt& point);

private:
    const Body& myBody;
    std::vector<TopoDS_Vertex> myVertices;
    std::vector<TopoDS_Edge> myEdges;
    std::vector<std::vector<Trace>> myTraces;
};

bool HasFaces(const TopoDS_Shape& shape);

/// A face, or a compound of faces where the loops bound several regions. Throws Standard_Failure where the
/// kernel does.
TopoDS_Shape MakeFaceShape(SharedShapes& shared, const ResolvedFace& face);

/// Made from the loops as the file has them, by the kernel's healing. Null when it comes to nothing, or when
/// something of the face is missing.
TopoDS_Shape HealFace(const Body& body, const Face& given, const ResolvedFace& resolved);

} // namespace cadex::brep
