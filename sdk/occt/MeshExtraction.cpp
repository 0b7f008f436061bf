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

#include "sdk/mesh/SliverFlips.h"
#include "sdk/occt/SurfaceNormals.h"

namespace cadex::occt {

using mesh::FlipSlivers;
using mesh::NodeTriangle;

namespace {

constexpr U32 NoIndex = 0xFFFFFFFFU;

// Cosine of the angle up to which normals at one point are taken as one: 0.1 degrees.
constexpr double SameNormal = 1 - 1.5e-6;

using ShapeIndexMap = NCollection_DataMap<TopoDS_Shape, U32, TopTools_ShapeMapHasher>;

/// The points that faces share: nodes on edges and at vertices, numbered over the whole shape.
class SharedNodes
{
public:
    /// Writes into `sharedOfNode` (by node, from 1) the numbers of the nodes of `face` that lie on its edges.
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
                const auto node = static_cast<std::size_t>(polygon->Node(i));
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
    std::size_t Count() const { return myPoints.size(); }

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

/// What a group has made of a shared point.
struct SharedUse
{
    std::size_t group = static_cast<std::size_t>(-1);
    U32 point = NoIndex;
    U32 normals = NoIndex; ///< chain of the normals used at the point
};

/// Which normals have been used at a point: a chain of links for each, so that equal normals of neighbouring
/// faces become one.
class NormalChains
{
public:
    /// A normal of the chain that is the same as `normal`, or NoIndex.
    U32 Find(U32 chain, const std::vector<ModelData_Vectorf>& normals, const ModelData_Vectorf& normal) const
    {
        for (; chain != NoIndex; chain = myLinks[chain].previous) {
            const ModelData_Vectorf& used = normals[myLinks[chain].normal];
            if (static_cast<double>(used.X()) * normal.X() + static_cast<double>(used.Y()) * normal.Y() +
                    static_cast<double>(used.Z()) * normal.Z() >
                SameNormal) {
                return myLinks[chain].normal;
            }
        }
        return NoIndex;
    }
    void Add(U32& chain, U32 normal)
    {
        myLinks.push_back({normal, chain});
        chain = static_cast<U32>(myLinks.size() - 1);
    }

private:
    struct Link
    {
        U32 normal;
        U32 previous;
    };
    std::vector<Link> myLinks;
};

/// By the right-hand rule; a triangle without area gives the z axis.
ModelData_Vectorf FacetNormal(const ModelData_Point& a, const ModelData_Point& b, const ModelData_Point& c)
{
    const gp_XYZ origin(a.X(), a.Y(), a.Z());
    const gp_XYZ product =
        (gp_XYZ(b.X(), b.Y(), b.Z()) - origin).Crossed(gp_XYZ(c.X(), c.Y(), c.Z()) - origin);
    const double size = product.Modulus();
    if (!(size > 0)) {
        return {0, 0, 1};
    }
    return {static_cast<float>(product.X() / size), static_cast<float>(product.Y() / size),
            static_cast<float>(product.Z() / size)};
}

U32 Append(TriangleTables& table, const ModelData_Vectorf& normal)
{
    table.normals.push_back(normal);
    return static_cast<U32>(table.normals.size() - 1);
}

class Extraction
{
public:
    explicit Extraction(std::size_t groupCount) : myTables(groupCount) {}

    void Reserve(const std::vector<GroupedFace>& faces)
    {
        std::vector<std::size_t> triangles(myTables.size(), 0);
        std::vector<std::size_t> nodes(myTables.size(), 0);
        for (const GroupedFace& item : faces) {
            TopLoc_Location location;
            const Handle(Poly_Triangulation)& triangulation = BRep_Tool::Triangulation(item.face, location);
            if (!triangulation.IsNull()) {
                triangles[item.group] += static_cast<std::size_t>(triangulation->NbTriangles());
                nodes[item.group] += static_cast<std::size_t>(triangulation->NbNodes());
            }
        }
        for (std::size_t i = 0; i < myTables.size(); ++i) {
            myTables[i].pointIndices.reserve(3 * triangles[i]);
            myTables[i].normalIndices.reserve(3 * triangles[i]);
            myTables[i].points.reserve(nodes[i]);
        }
    }

    /// The faces of one group must come together.
    void Add(const GroupedFace& item)
    {
        TopLoc_Location location;
        const Handle(Poly_Triangulation)& triangulation = BRep_Tool::Triangulation(item.face, location);
        if (triangulation.IsNull() || triangulation->NbTriangles() == 0) {
            return;
        }
        const gp_Trsf placement = location.Transformation();
        myShared.assign(static_cast<std::size_t>(triangulation->NbNodes()) + 1, NoIndex);
        myNodes.Collect(item.face, triangulation, location, myShared);
        myUses.resize(myNodes.Count());
        ComputeNormals(item.face, *triangulation, placement, myNormals);
        AddNodes(item.group, *triangulation, placement);
        AddTriangles(myTables[item.group], *triangulation, item.face.Orientation() == TopAbs_REVERSED);
    }

    std::vector<TriangleTables> Take()
    {
        for (TriangleTables& table : myTables) {
            if (table.points.capacity() > table.points.size() + table.points.size() / 4) {
                table.points.shrink_to_fit();
            }
        }
        return std::move(myTables);
    }

private:
    /// Fills myPointOf and myNormalOf, and with them the tables.
    void AddNodes(std::size_t group, const Poly_Triangulation& triangulation, const gp_Trsf& placement)
    {
        TriangleTables& table = myTables[group];
        const auto count = static_cast<std::size_t>(triangulation.NbNodes());
        const bool isFlat = myNormals.size() == 1;
        const bool isPlaced = placement.Form() != gp_Identity;
        myPointOf.resize(count + 1);
        myNormalOf.resize(count + 1);
        U32 flatNormal = NoIndex;
        for (std::size_t node = 1; node <= count; ++node) {
            const ModelData_Vectorf& normal = myNormals[isFlat ? 0 : node - 1];
            const bool isKnown = normal != ModelData_Vectorf();
            if (myShared[node] != NoIndex) {
                SharedUse& use = UseOf(group, myShared[node]);
                myPointOf[node] = use.point;
                myNormalOf[node] = isKnown ? SharedNormal(table, use, normal, flatNormal) : NoIndex;
                continue;
            }
            gp_Pnt point = triangulation.Node(static_cast<int>(node));
            if (isPlaced) {
                point.Transform(placement);
            }
            myPointOf[node] = static_cast<U32>(table.points.size());
            table.points.emplace_back(point.X(), point.Y(), point.Z());
            myNormalOf[node] = !isKnown ? NoIndex
                               : isFlat ? FlatNormal(table, normal, flatNormal)
                                        : Append(table, normal);
        }
    }

    SharedUse& UseOf(std::size_t group, U32 shared)
    {
        SharedUse& use = myUses[shared];
        if (use.group != group) {
            std::vector<ModelData_Point>& points = myTables[group].points;
            const gp_Pnt& point = myNodes.Point(shared);
            use = {group, static_cast<U32>(points.size()), NoIndex};
            points.emplace_back(point.X(), point.Y(), point.Z());
        }
        return use;
    }

    /// The normal that a face around the point has used already, when it is the same; else a new one. `flat`
    /// is the one normal of a plane, made when first needed.
    U32 SharedNormal(TriangleTables& table, SharedUse& use, const ModelData_Vectorf& normal, U32& flat)
    {
        const U32 known = myChains.Find(use.normals, table.normals, normal);
        if (known != NoIndex) {
            return known;
        }
        const U32 index = myNormals.size() == 1 ? FlatNormal(table, normal, flat) : Append(table, normal);
        myChains.Add(use.normals, index);
        return index;
    }

    static U32 FlatNormal(TriangleTables& table, const ModelData_Vectorf& normal, U32& flat)
    {
        if (flat == NoIndex) {
            flat = Append(table, normal);
        }
        return flat;
    }

    void AddTriangles(TriangleTables& table, const Poly_Triangulation& triangulation, bool isReversed)
    {
        myTriangles.clear();
        for (int i = 1; i <= triangulation.NbTriangles(); ++i) {
            NodeTriangle nodes;
            triangulation.Triangle(i).Get(nodes[0], nodes[1], nodes[2]);
            if (isReversed) {
                std::swap(nodes[1], nodes[2]);
            }
            const U32 a = PointOf(nodes[0]);
            const U32 b = PointOf(nodes[1]);
            const U32 c = PointOf(nodes[2]);
            if (a != b && b != c && c != a) {
                myTriangles.push_back(nodes);
            }
        }
        FlipSlivers(myTriangles, table.points, myPointOf);
        for (const NodeTriangle& nodes : myTriangles) {
            AddTriangle(table, nodes);
        }
    }

    void AddTriangle(TriangleTables& table, const NodeTriangle& nodes)
    {
        U32 continued = NoIndex;
        for (const int node : nodes) {
            U32 normal = myNormalOf[static_cast<std::size_t>(node)];
            if (normal == NoIndex) {
                continued = continued != NoIndex ? continued : Append(table, ContinuedNormal(table, nodes));
                normal = continued;
            }
            table.pointIndices.push_back(PointOf(node));
            table.normalIndices.push_back(normal);
        }
    }

    U32 PointOf(int node) const { return myPointOf[static_cast<std::size_t>(node)]; }

    /// The mean of those corners that have a normal; the facet's own when none has.
    ModelData_Vectorf ContinuedNormal(const TriangleTables& table, const NodeTriangle& nodes) const
    {
        gp_XYZ sum(0, 0, 0);
        for (const int node : nodes) {
            const U32 known = myNormalOf[static_cast<std::size_t>(node)];
            if (known != NoIndex) {
                const ModelData_Vectorf& normal = table.normals[known];
                sum += gp_XYZ(normal.X(), normal.Y(), normal.Z());
            }
        }
        const double size = sum.Modulus();
        if (size < gp::Resolution()) {
            return FacetNormal(table.points[PointOf(nodes[0])], table.points[PointOf(nodes[1])],
                               table.points[PointOf(nodes[2])]);
        }
        sum /= size;
        return {static_cast<float>(sum.X()), static_cast<float>(sum.Y()), static_cast<float>(sum.Z())};
    }

    std::vector<TriangleTables> myTables;
    SharedNodes myNodes;
    std::vector<SharedUse> myUses; ///< by shared number
    NormalChains myChains;
    // Of the face at hand, by node from 1 (normals from 0):
    std::vector<U32> myShared;
    std::vector<U32> myPointOf;
    std::vector<U32> myNormalOf;
    std::vector<ModelData_Vectorf> myNormals;
    std::vector<NodeTriangle> myTriangles;
};

} // namespace

std::vector<TriangleTables> ExtractTriangles(const std::vector<GroupedFace>& faces, std::size_t groupCount)
{
    std::vector<std::size_t> order(faces.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return faces[a].group < faces[b].group; });
    Extraction extraction(groupCount);
    extraction.Reserve(faces);
    for (const std::size_t i : order) {
        extraction.Add(faces[i]);
    }
    return extraction.Take();
}

TriangleTables FacetTables(const std::vector<ModelData_Point>& points, const std::vector<U32>& indices)
{
    TriangleTables table;
    table.points = points;
    table.pointIndices = indices;
    table.normalIndices.reserve(indices.size());
    NormalChains chains;
    std::vector<U32> chainOf(points.size(), NoIndex);
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        const U32* corner = &indices[i];
        const ModelData_Vectorf normal = FacetNormal(points[corner[0]], points[corner[1]], points[corner[2]]);
        U32 own = NoIndex;
        for (int k = 0; k < 3; ++k) {
            U32 index = chains.Find(chainOf[corner[k]], table.normals, normal);
            if (index == NoIndex) {
                index = own != NoIndex ? own : Append(table, normal);
                own = index;
                chains.Add(chainOf[corner[k]], index);
            }
            table.normalIndices.push_back(index);
        }
    }
    return table;
}

} // namespace cadex::occt
