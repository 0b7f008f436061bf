#include "sdk/brep/KernelFaces.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>
#include <vector>

#include <BRepMesh_Context.hxx>
#include <BRepMesh_Deflection.hxx>
#include <BRepMesh_EdgeDiscret.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepMesh_ShapeTool.hxx>
#include <BRep_Tool.hxx>
#include <IMeshData_Curve.hxx>
#include <IMeshData_Edge.hxx>
#include <IMeshData_Face.hxx>
#include <IMeshData_Model.hxx>
#include <IMeshData_PCurve.hxx>
#include <IMeshTools_CurveTessellator.hxx>
#include <IMeshTools_ModelAlgo.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <Poly_Triangulation.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_DataMapOfShapeInteger.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>

#include "sdk/brep/ShapeBuilder.h"
#include "sdk/occt/Deadline.h"
#include "sdk/occt/SurfaceNormals.h"

namespace cadex::brep {

namespace {

using mesh::FaceTriangles;

// A built edge is the described one when both agree in three points to this many millimetres.
constexpr double SameEdge = 1e-6;

// A sound face takes milliseconds; one on damaged geometry may take for ever.
constexpr double SecondsForFace = 1;

/// Which edges of a built face are which of the body.
class EdgeNumbers
{
public:
    EdgeNumbers(const Body& body, const Face& face, const EdgeDiscretisation& edges,
                const TopoDS_Shape& shape)
        : myBody(body)
    {
        std::set<int> candidates;
        for (const Loop& loop : face.loops) {
            for (const EdgeUse& use : loop.uses) {
                const auto edge = static_cast<std::size_t>(use.edge);
                if (use.edge >= 0 && edge < body.edges.size() && !edges.Of(use.edge).parameters.empty()) {
                    candidates.insert(use.edge);
                }
            }
        }
        for (TopExp_Explorer it(shape, TopAbs_EDGE); it.More(); it.Next()) {
            const TopoDS_Edge& built = TopoDS::Edge(it.Current());
            const auto found = std::find_if(candidates.begin(), candidates.end(),
                                            [&](int number) { return IsSame(built, number); });
            if (found != candidates.end()) {
                myNumbers.Bind(built, *found);
            }
        }
    }

    /// None when it is no edge of the body.
    int Of(const TopoDS_Edge& edge) const
    {
        const int* number = myNumbers.Seek(edge);
        return number != nullptr ? *number : None;
    }

private:
    bool IsSame(const TopoDS_Edge& built, int number) const
    {
        double first = 0;
        double last = 0;
        const Handle(Geom_Curve) curve = BRep_Tool::Curve(built, first, last);
        const BodyEdge& edge = myBody.edges[static_cast<std::size_t>(number)];
        return !curve.IsNull() && IsNear(curve->Value(first), edge.Value(edge.first)) &&
               IsNear(curve->Value((first + last) / 2), edge.Value((edge.first + edge.last) / 2)) &&
               IsNear(curve->Value(last), edge.Value(edge.last));
    }
    static bool IsNear(const gp_Pnt& a, const gp_Pnt& b) { return a.SquareDistance(b) < SameEdge * SameEdge; }

    const Body& myBody;
    TopTools_DataMapOfShapeInteger myNumbers;
};

/// Edges with more points are of damaged geometry; the kernel would take gigabytes for them.
constexpr int MostEdgePoints = 20000;

/// The step of the kernel's mesher that divides edges: takes the division that is there.
class GivenEdges : public IMeshTools_ModelAlgo
{
public:
    GivenEdges(const EdgeNumbers& numbers, const EdgeDiscretisation& edges)
        : myNumbers(numbers), myEdges(edges)
    {
    }

protected:
    Standard_Boolean performInternal(const Handle(IMeshData_Model) & model,
                                     const IMeshTools_Parameters& parameters,
                                     const Message_ProgressRange&) override
    {
        for (int i = 0; i < model->EdgesNb(); ++i) {
            const IMeshData::IEdgeHandle& edge = model->GetEdge(i);
            try {
                Divide(edge, model->GetMaxSize(), parameters);
            } catch (const Standard_Failure&) {
                edge->SetStatus(IMeshData_Failure);
            }
        }
        return true;
    }

private:
    void Divide(const IMeshData::IEdgeHandle& edge, double size,
                const IMeshTools_Parameters& parameters) const
    {
        for (int i = 0; i < edge->PCurvesNb(); ++i) {
            BRepMesh_ShapeTool::CheckAndUpdateFlags(edge, edge->GetPCurve(i));
        }
        const int number = edge->GetDegenerated() ? None : myNumbers.Of(edge->GetEdge());
        if (number != None) {
            const EdgePolyline& line = myEdges.Of(number);
            edge->SetDeflection(line.chord);
            edge->SetAngularDeflection(parameters.Angle);
            for (std::size_t i = 0; i < line.parameters.size(); ++i) {
                edge->GetCurve()->AddPoint(myEdges.Point(myEdges.NumberOf(number, i)), line.parameters[i]);
            }
        } else {
            BRepMesh_Deflection::ComputeDeflection(edge, size, parameters);
            const IMeshData::IPCurveHandle& curve = edge->GetPCurve(0);
            const Handle(IMeshTools_CurveTessellator) tessellator =
                BRepMesh_EdgeDiscret::CreateEdgeTessellator(edge, curve->GetOrientation(), curve->GetFace(),
                                                            parameters);
            if (tessellator->PointsNb() > MostEdgePoints) {
                edge->SetStatus(IMeshData_Failure);
                return;
            }
            BRepMesh_EdgeDiscret::Tessellate3d(edge, tessellator, true);
        }
        BRepMesh_EdgeDiscret::Tessellate2d(edge, true);
    }

    const EdgeNumbers& myNumbers;
    const EdgeDiscretisation& myEdges;
};

/// Mean of the chords of the edges that are known.
double ChordOf(const Face& face, const EdgeDiscretisation& edges)
{
    double sum = 0;
    int count = 0;
    for (const Loop& loop : face.loops) {
        for (const EdgeUse& use : loop.uses) {
            if (use.edge >= 0 && edges.Of(use.edge).chord > 0) {
                sum += edges.Of(use.edge).chord;
                ++count;
            }
        }
    }
    return count > 0 ? sum / count : ChordFor(edges.Tolerances(), edges.BodySize(), edges.BodySize());
}

/// Appends what the mesher left in a face.
void Extract(const TopoDS_Face& face, const EdgeNumbers& numbers, const EdgeDiscretisation& edges,
             FaceTriangles& result)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation) triangulation = BRep_Tool::Triangulation(face, location);
    if (triangulation.IsNull()) {
        return;
    }
    const std::size_t base = result.points.size();
    const auto count = static_cast<std::size_t>(triangulation->NbNodes());
    for (int i = 1; i <= triangulation->NbNodes(); ++i) {
        const gp_Pnt point = triangulation->Node(i).Transformed(location.Transformation());
        result.points.emplace_back(point.X(), point.Y(), point.Z());
        result.shared.push_back(mesh::NoIndex);
    }
    for (TopExp_Explorer it(face, TopAbs_EDGE); it.More(); it.Next()) {
        const TopoDS_Edge& edge = TopoDS::Edge(it.Current());
        const int number = numbers.Of(edge);
        const Handle(Poly_PolygonOnTriangulation) polygon =
            BRep_Tool::PolygonOnTriangulation(edge, triangulation, location);
        if (number == None || polygon.IsNull() || polygon->NbNodes() < 2) {
            continue;
        }
        // NOTE: the mesher adds points to seams, which no other face has; their ends are shared all the same.
        const std::size_t places = edges.Of(number).parameters.size();
        const bool isAsGiven = static_cast<std::size_t>(polygon->NbNodes()) == places;
        for (int i = 1; i <= polygon->NbNodes(); i += isAsGiven ? 1 : polygon->NbNodes() - 1) {
            const std::size_t place = isAsGiven ? static_cast<std::size_t>(i - 1) : i == 1 ? 0 : places - 1;
            const int shared = edges.NumberOf(number, place);
            const std::size_t node = base + static_cast<std::size_t>(polygon->Node(i)) - 1;
            const gp_Pnt& point = edges.Point(shared);
            result.shared[node] = static_cast<U32>(shared);
            result.points[node] = {point.X(), point.Y(), point.Z()};
        }
    }
    std::vector<ModelData_Vectorf> normals;
    occt::ComputeNormals(face, *triangulation, location.Transformation(), normals);
    normals.resize(count, normals.front());
    result.normals.insert(result.normals.end(), normals.begin(), normals.end());
    for (int i = 1; i <= triangulation->NbTriangles(); ++i) {
        mesh::NodeTriangle nodes;
        triangulation->Triangle(i).Get(nodes[0], nodes[1], nodes[2]);
        if (face.Orientation() == TopAbs_REVERSED) {
            std::swap(nodes[1], nodes[2]);
        }
        for (int& node : nodes) {
            node += static_cast<int>(base) - 1;
        }
        result.triangles.push_back(nodes);
    }
}

} // namespace

FaceTriangles MeshWithKernel(const Body& body, int face, const ResolvedFace& resolved,
                             const EdgeDiscretisation& edges)
{
    FaceTriangles result;
    const TopoDS_Shape shape = BuildFace(body, face, resolved);
    if (shape.IsNull()) {
        return result;
    }
    const Face& described = body.description->faces[static_cast<std::size_t>(face)];
    const EdgeNumbers numbers(body, described, edges, shape);
    const Handle(BRepMesh_Context) context = new BRepMesh_Context(IMeshTools_MeshAlgoType_DEFAULT);
    context->SetEdgeDiscret(new GivenEdges(numbers, edges));
    BRepMesh_IncrementalMesh mesher;
    mesher.SetShape(shape);
    mesher.ChangeParameters().Deflection = ChordOf(described, edges);
    mesher.ChangeParameters().Angle = edges.Tolerances().angle;
    const Handle(occt::Deadline) deadline = new occt::Deadline(SecondsForFace);
    mesher.Perform(context, deadline->Start());
    for (TopExp_Explorer it(shape, TopAbs_FACE); it.More(); it.Next()) {
        Extract(TopoDS::Face(it.Current()), numbers, edges, result);
    }
    return result;
}

} // namespace cadex::brep
