#include "sdk/occt/MeshExtraction.h"

#include <algorithm>
#include <numeric>

#include <BRep_Tool.hxx>
#include <NCollection_DataMap.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Vertex.hxx>
#include <gp_Trsf.hxx>

#include "sdk/occt/SurfaceNormals.h"

namespace cadex::occt {

using mesh::NodeTriangle;
using mesh::NoIndex;
using mesh::TriangleTables;

namespace {

using ShapeIndexMap = NCollection_DataMap<TopoDS_Shape, U32, TopTools_ShapeMapHasher>;

/// The points that faces share: nodes on edges and at vertices, numbered over the whole shape.
class SharedNodes
{
public:
    /// Writes into `sharedOfNode` (by node, from 0) the numbers of the nodes of `face` that lie on its edges.
    void Collect(const TopoDS_Face& face, const Handle(Poly_Triangulation) & triangulation,
                 const TopLoc_Location& location, std::vector<U32>& sharedOfNode)
    {
        for (TopExp_Explorer it(face, TopAbs_EDGE); it.More(); it.Next()) {
            const TopoDS_Edge& edge = TopoDS::Edge(it.Current());
            const Handle(Poly_PolygonOnTriangulation) polygon =
                BRep_Tool::PolygonOnTriangulation(edge, triangulation, location);
            if (polygon.IsNull() || polygon->NbNodes() < 2) {
                continue;
            }
            const int count = polygon->NbNodes();
            const U32 first = FirstOf(edge, count);
            for (int i = 1; i <= count; ++i) {
                const auto node = static_cast<std::size_t>(polygon->Node(i)) - 1;
                const auto position = first + static_cast<std::size_t>(i - 1);
                if (myNumbers[position] == NoIndex) {
                    // A node that another edge has numbered keeps that number: edges without vertices may
                    // touch.
                    myNumbers[position] = sharedOfNode[node] != NoIndex ? sharedOfNode[node] : NewPoint();
                }
                sharedOfNode[node] = myNumbers[position];
                SetPoint(myNumbers[position], *triangulation, polygon->Node(i), location);
            }
        }
    }

    const gp_Pnt& Point(U32 number) const { return myPoints[number]; }

private:
    /// Place in myNumbers of the edge's first node.
    U32 FirstOf(const TopoDS_Edge& edge, int count)
    {
        const bool degenerated = BRep_Tool::Degenerated(edge);
        if (!degenerated) {
            if (const U32* known = myEdges.Seek(edge)) {
                if (myNumbers[*known] == static_cast<U32>(count)) {
                    return *known + 1;
                }
            }
        }
        const auto place = static_cast<U32>(myNumbers.size());
        myNumbers.push_back(static_cast<U32>(count));
        myNumbers.resize(myNumbers.size() + static_cast<std::size_t>(count), NoIndex);
        TopoDS_Vertex start;
        TopoDS_Vertex end;
        TopExp::Vertices(edge, start, end);
        myNumbers[place + 1] = NumberOf(start);
        myNumbers[place + static_cast<U32>(count)] = NumberOf(end);
        if (degenerated) {
            // All nodes of a degenerated edge are its vertex.
            std::fill(myNumbers.begin() + place + 1, myNumbers.end(), myNumbers[place + 1]);
        } else {
            myEdges.Bind(edge, place);
        }
        return place + 1;
    }

    U32 NumberOf(const TopoDS_Vertex& vertex)
    {
        if (vertex.IsNull()) {
            return NoIndex;
        }
        if (const U32* known = myVertices.Seek(vertex)) {
            return *known;
        }
        const U32 number = NewPoint();
        myVertices.Bind(vertex, number);
        return number;
    }

    U32 NewPoint()
    {
        myPoints.emplace_back();
        myIsSet.push_back(false);
        return static_cast<U32>(myPoints.size() - 1);
    }

    /// The first face decides: another's coordinates may differ in the last digit.
    void SetPoint(U32 number, const Poly_Triangulation& triangulation, int node,
                  const TopLoc_Location& location)
    {
        if (!myIsSet[number]) {
            myPoints[number] = triangulation.Node(node);
            if (!location.IsIdentity()) {
                myPoints[number].Transform(location.Transformation());
            }
            myIsSet[number] = true;
        }
    }

    ShapeIndexMap myEdges; ///< place of the edge's node count in myNumbers; the nodes' numbers follow it
    ShapeIndexMap myVertices;
    std::vector<U32> myNumbers;
    std::vector<gp_Pnt> myPoints;
    std::vector<bool> myIsSet;
};

/// What a face carries, as triangles of nodes counted from 0.
class Extraction
{
public:
    explicit Extraction(std::size_t groupCount) : myAssembly(groupCount) {}

    /// The faces of one group must come together.
    void Add(const GroupedFace& item)
    {
        TopLoc_Location location;
        const Handle(Poly_Triangulation)& triangulation = BRep_Tool::Triangulation(item.face, location);
        if (triangulation.IsNull() || triangulation->NbTriangles() == 0) {
            return;
        }
        const gp_Trsf placement = location.Transformation();
        myFace.Clear();
        myFace.shared.assign(static_cast<std::size_t>(triangulation->NbNodes()), NoIndex);
        myNodes.Collect(item.face, triangulation, location, myFace.shared);
        AddPoints(*triangulation, placement);
        ComputeNormals(item.face, *triangulation, placement, myFace.normals);
        AddTriangles(*triangulation, item.face.Orientation() == TopAbs_REVERSED);
        myAssembly.Add(item.group, myFace);
    }

    void Reserve(const std::vector<GroupedFace>& faces, std::size_t groupCount)
    {
        std::vector<std::size_t> triangles(groupCount, 0);
        std::vector<std::size_t> nodes(groupCount, 0);
        for (const GroupedFace& item : faces) {
            TopLoc_Location location;
            const Handle(Poly_Triangulation)& triangulation = BRep_Tool::Triangulation(item.face, location);
            if (!triangulation.IsNull()) {
                triangles[item.group] += static_cast<std::size_t>(triangulation->NbTriangles());
                nodes[item.group] += static_cast<std::size_t>(triangulation->NbNodes());
            }
        }
        for (std::size_t i = 0; i < groupCount; ++i) {
            myAssembly.Reserve(i, triangles[i], nodes[i]);
        }
    }

    std::vector<TriangleTables> Take() { return myAssembly.Take(); }

private:
    void AddPoints(const Poly_Triangulation& triangulation, const gp_Trsf& placement)
    {
        const bool isPlaced = placement.Form() != gp_Identity;
        for (std::size_t node = 0; node < myFace.shared.size(); ++node) {
            gp_Pnt point;
            if (myFace.shared[node] != NoIndex) {
                point = myNodes.Point(myFace.shared[node]);
            } else {
                point = triangulation.Node(static_cast<int>(node) + 1);
                if (isPlaced) {
                    point.Transform(placement);
                }
            }
            myFace.points.emplace_back(point.X(), point.Y(), point.Z());
        }
    }

    void AddTriangles(const Poly_Triangulation& triangulation, bool isReversed)
    {
        for (int i = 1; i <= triangulation.NbTriangles(); ++i) {
            NodeTriangle nodes;
            triangulation.Triangle(i).Get(nodes[0], nodes[1], nodes[2]);
            if (isReversed) {
                std::swap(nodes[1], nodes[2]);
            }
            myFace.triangles.push_back({nodes[0] - 1, nodes[1] - 1, nodes[2] - 1});
        }
    }

    mesh::TriangleAssembly myAssembly;
    SharedNodes myNodes;
    mesh::FaceTriangles myFace; ///< the one at hand
};

} // namespace

std::vector<TriangleTables> ExtractTriangles(const std::vector<GroupedFace>& faces, std::size_t groupCount)
{
    std::vector<std::size_t> order(faces.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return faces[a].group < faces[b].group; });
    Extraction extraction(groupCount);
    extraction.Reserve(faces, groupCount);
    for (const std::size_t i : order) {
        extraction.Add(faces[i]);
    }
    return extraction.Take();
}

} // namespace cadex::occt
