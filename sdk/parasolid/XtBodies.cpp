#include "sdk/parasolid/XtBodies.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

#include <Geom_ConicalSurface.hxx>
#include <Geom_SphericalSurface.hxx>

#include "sdk/brep/Conics.h"
#include "sdk/brep/KernelTasks.h"
#include "sdk/brep/Shells.h"

namespace cadex::parasolid {

namespace {

std::size_t At(int index)
{
    return static_cast<std::size_t>(index);
}

class BodyDescriber
{
public:
    BodyDescriber(const Nodes& nodes, GeometryReader& geometry, AttributeTable& attributes, XtBody& body)
        : myNodes(nodes),
          myGeometry(geometry),
          myAttributes(attributes),
          myBody(body),
          myTarget(body.description)
    {
    }

    void Describe(const Node& body)
    {
        myTarget.appearance = myAttributes.LookOf(body.Index());
        CollectShells(body);
        for (const ShellEntry& shell : myShells) {
            ForEachInChain(shell.node.Pointer(Field::Face), Field::Next, type::Face,
                           [&](const Node& face) { AddFace(face); });
            ForEachInChain(shell.node.Pointer(Field::FrontFace), Field::NextFront, type::Face,
                           [&](const Node& face) { AddFace(face); });
        }
        FinishShells();
        ForEachInChain(body.Pointer(Field::Edge), Field::Next, type::Edge,
                       [&](const Node& edge) { AddLooseEdge(edge); });
    }

private:
    struct EdgeEntry
    {
        int index = brep::None;
        bool isAligned = true; ///< runs as the file's edge
        int fin = 0;           ///< whose curve in its surface the edge was made of
        Handle(Geom2d_Curve) inSurface = {};
    };
    struct ShellEntry
    {
        Node node;
        int solid = brep::None; ///< number of the solid region that it bounds
        int index = brep::None; ///< of the description
        bool isWhole = true;
    };

    /// Nodes of one type, each once; a chain ends where it comes to another.
    template <typename Visit>
    void ForEachInChain(int first, Field next, int type, const Visit& visit)
    {
        std::unordered_set<int> seen;
        for (Node node = myNodes.At(first); node.Type() == type && seen.insert(node.Index()).second;
             node = myNodes.At(node.Pointer(next))) {
            visit(node);
        }
    }

    /// Of regions; files without any have shells alone, which bound the material of a solid body.
    void CollectShells(const Node& body)
    {
        const auto add = [&](int first, int solid) {
            ForEachInChain(first, Field::Next, type::Shell, [&](const Node& shell) {
                if (myShellOf.emplace(shell.Index(), myShells.size()).second) {
                    myShells.push_back({shell, solid});
                }
            });
        };
        ForEachInChain(body.Pointer(Field::Region), Field::Next, type::Region, [&](const Node& region) {
            const bool isSolid = region.Character(Field::Type) == 'S';
            add(region.Pointer(Field::Shell), isSolid ? mySolids++ : brep::None);
        });
        constexpr int SolidBody = 1;
        add(body.Pointer(Field::Shell),
            mySolids == 0 && body.Integer(Field::BodyType) == SolidBody ? mySolids++ : brep::None);
    }

    ShellEntry* SolidShell(int node)
    {
        const auto found = myShellOf.find(node);
        ShellEntry* entry = found == myShellOf.end() ? nullptr : &myShells[found->second];
        return entry != nullptr && entry->solid != brep::None ? entry : nullptr;
    }

    /// A face bounds the material behind it, and where cells meet also that in front of it; with material
    /// nowhere or on both sides of one cell it is a sheet.
    void AddFace(const Node& source)
    {
        if (!mySeenFaces.insert(source.Index()).second) {
            return;
        }
        ++myBody.faces;
        ShellEntry* behind = SolidShell(source.Pointer(Field::Shell));
        ShellEntry* front = SolidShell(source.Pointer(Field::FrontShell));
        if (behind != nullptr && front != nullptr && behind->solid == front->solid) {
            behind = front = nullptr;
        }
        brep::Face face;
        if (!ReadFace(source, face)) {
            ++myBody.lostFaces;
            for (ShellEntry* shell : {behind, front}) {
                if (shell != nullptr) {
                    shell->isWhole = false;
                }
            }
            return;
        }
        const int index = myTarget.AddFace(std::move(face));
        if (behind != nullptr) {
            AddToShell(*behind, {index, true});
        }
        if (front != nullptr) {
            AddToShell(*front, {index, false});
        }
        if (behind == nullptr && front == nullptr) {
            if (mySheet == brep::None) {
                mySheet = myTarget.AddShell({});
            }
            myTarget.shells[At(mySheet)].faces.push_back({index, true});
        }
    }

    void AddToShell(ShellEntry& shell, const brep::FaceUse& use)
    {
        if (shell.index == brep::None) {
            shell.index = myTarget.AddShell({});
        }
        myTarget.shells[At(shell.index)].faces.push_back(use);
    }

    bool ReadFace(const Node& source, brep::Face& face)
    {
        const int surfaceNode = source.Pointer(Field::Surface);
        if (myNodes.At(surfaceNode).Type() == type::Blend) {
            return ReadBlendFace(source, face);
        }
        const Surface& surface = myGeometry.SurfaceOf(surfaceNode);
        if (surface.surface.IsNull() || !AddLoops(source, surface, face)) {
            return false;
        }
        if (face.loops.empty() && !IsBounded(surface.surface)) {
            return false;
        }
        const auto [known, isNew] = mySurfaces.try_emplace(surfaceNode, brep::None);
        if (isNew) {
            known->second = myTarget.AddSurface(surface.surface);
        }
        face.surface = known->second;
        face.sameSense = (source.Character(Field::Sense) == '-') == surface.isReversed;
        face.appearance = myAttributes.LookOf(source.Index());
        face.record = At(source.Index());
        return true;
    }

    /// The surface of a blend is made as far as the face needs it; the loops tell its sense.
    bool ReadBlendFace(const Node& source, brep::Face& face)
    {
        constexpr double Within = 1e-4;
        const std::optional<Blend> blend = myGeometry.BlendOf(source.Pointer(Field::Surface));
        if (!blend || !AddLoops(source, {}, face) || face.loops.empty()) {
            return false;
        }
        std::optional<bool> isForward;
        Handle(Geom_Surface) surface;
        brep::Try([&] {
            std::vector<std::vector<gp_Pnt>> loops;
            std::vector<gp_Pnt> all;
            for (const brep::Loop& loop : face.loops) {
                loops.push_back(PointsOf(loop));
                all.insert(all.end(), loops.back().begin(), loops.back().end());
            }
            surface = MakeBlendSurface(*blend, all, Within);
            if (!surface.IsNull()) {
                isForward = RunsAboutNormal(brep::MakeSurface(surface), loops);
            }
        });
        if (!isForward) {
            return false;
        }
        face.surface = myTarget.AddSurface(surface);
        face.sameSense = *isForward;
        face.appearance = myAttributes.LookOf(source.Index());
        face.record = At(source.Index());
        return true;
    }

    /// Some points along the loop, in its sense.
    std::vector<gp_Pnt> PointsOf(const brep::Loop& loop) const
    {
        constexpr int Steps = 12;
        std::vector<gp_Pnt> points;
        for (const brep::EdgeUse& use : loop.uses) {
            const brep::Edge& edge = myTarget.edges[At(use.edge)];
            const auto [first, last] = RangeOf(edge);
            for (int i = 0; i < Steps; ++i) {
                const double part = static_cast<double>(use.forward ? i : Steps - i) / Steps;
                points.push_back(edge.curve->Value(first + (last - first) * part));
            }
        }
        return points;
    }

    std::pair<double, double> RangeOf(const brep::Edge& edge) const
    {
        const Geom_Curve& curve = *edge.curve;
        if (edge.first < edge.last) {
            return {edge.first, edge.last};
        }
        if (edge.start == brep::None) {
            return {curve.FirstParameter(), curve.LastParameter()};
        }
        const Tube around{edge.curve, 0};
        const double first = around.Nearest(myTarget.vertices[At(edge.start)].point, {}).value_or(0);
        double last = around.Nearest(myTarget.vertices[At(edge.end)].point, {}).value_or(first);
        if (edge.start == edge.end && !curve.IsPeriodic()) {
            return {curve.FirstParameter(), curve.LastParameter()};
        }
        if (curve.IsPeriodic() && last <= first + 1e-9) {
            last += curve.Period();
        }
        return {first, last};
    }

    static bool IsBounded(const Handle(Geom_Surface) & surface)
    {
        double bounds[4];
        surface->Bounds(bounds[0], bounds[1], bounds[2], bounds[3]);
        return std::all_of(std::begin(bounds), std::end(bounds),
                           [](double bound) { return std::abs(bound) < brep::FarAway; });
    }

    bool AddLoops(const Node& source, const Surface& surface, brep::Face& face)
    {
        bool isSound = true;
        ForEachInChain(source.Pointer(Field::Loop), Field::Next, type::Loop,
                       [&](const Node& loop) { isSound = isSound && AddLoop(loop, surface, face); });
        return isSound;
    }

    /// A ring of fins; one fin without an edge stands for a vertex, which says something at the apex of a
    /// cone and the pole of a sphere alone.
    bool AddLoop(const Node& source, const Surface& surface, brep::Face& face)
    {
        brep::Loop loop;
        const int first = source.Pointer(Field::Halfedge);
        int fin = first;
        do {
            const Node node = myNodes.At(fin);
            if (node.Type() != type::Fin || !mySeenFins.insert(fin).second) {
                return false;
            }
            const int edgeNode = node.Pointer(Field::Edge);
            if (edgeNode == 0) {
                loop.vertex = VertexOf(node.Pointer(Field::Vertex));
            } else {
                const EdgeEntry& edge = EdgeOf(edgeNode);
                if (edge.index == brep::None) {
                    return false;
                }
                const bool isForward = node.Character(Field::Sense) != '-';
                loop.uses.push_back({edge.index, isForward == edge.isAligned,
                                     fin == edge.fin ? edge.inSurface : Handle(Geom2d_Curve)()});
            }
            fin = node.Pointer(Field::Forward);
        } while (fin != first && fin != 0);
        const bool hasPoles =
            !surface.surface.IsNull() && (surface.surface->IsKind(STANDARD_TYPE(Geom_ConicalSurface)) ||
                                          surface.surface->IsKind(STANDARD_TYPE(Geom_SphericalSurface)));
        if (!loop.uses.empty()) {
            loop.vertex = brep::None;
            face.loops.push_back(std::move(loop));
        } else if (hasPoles && loop.vertex != brep::None) {
            face.loops.push_back(std::move(loop));
        }
        return true;
    }

    int VertexOf(int index)
    {
        const auto [place, isNew] = myVertices.try_emplace(index, brep::None);
        const Node vertex = myNodes.At(index);
        if (!isNew || vertex.Type() != type::Vertex) {
            return place->second;
        }
        const gp_XYZ point = myNodes.At(vertex.Pointer(Field::Point)).Vector(Field::Pvec) * Millimetres;
        if (IsInBox(point)) {
            place->second = myTarget.AddVertex(gp_Pnt(point), ToleranceOf(vertex));
        }
        return place->second;
    }

    static double ToleranceOf(const Node& node)
    {
        constexpr double Exact = 1e-5; // the format's resolution, in millimetres
        const double tolerance = node.Number(Field::Tolerance) * Millimetres;
        return tolerance > Exact && tolerance < brep::FarAway ? tolerance : Exact;
    }

    const EdgeEntry& EdgeOf(int index)
    {
        const auto [place, isNew] = myEdges.try_emplace(index);
        const Node edge = myNodes.At(index);
        if (isNew && edge.Type() == type::Edge) {
            place->second = ReadEdge(edge);
        }
        return place->second;
    }

    /// The fins of an edge, by sense: the first of each.
    struct EdgeFins
    {
        Node along;
        Node against;
    };
    EdgeFins FinsOf(const Node& edge)
    {
        EdgeFins fins;
        ForEachInChain(edge.Pointer(Field::Halfedge), Field::Other, type::Fin, [&](const Node& fin) {
            Node& place = fin.Character(Field::Sense) == '-' ? fins.against : fins.along;
            if (!place) {
                place = fin;
            }
        });
        return fins;
    }

    /// A fin has the vertex at its end.
    EdgeEntry ReadEdge(const Node& source)
    {
        EdgeEntry entry;
        const EdgeFins fins = FinsOf(source);
        const int endNode = fins.along
                                ? fins.along.Pointer(Field::Vertex)
                                : myNodes.At(fins.against.Pointer(Field::Backward)).Pointer(Field::Vertex);
        const int startNode = fins.against
                                  ? fins.against.Pointer(Field::Vertex)
                                  : myNodes.At(fins.along.Pointer(Field::Backward)).Pointer(Field::Vertex);
        brep::Edge edge;
        edge.start = VertexOf(startNode);
        edge.end = VertexOf(endNode);
        if ((edge.start == brep::None) != (edge.end == brep::None)) {
            return entry;
        }
        edge.tolerance = ToleranceOf(source);
        edge.record = At(source.Index());
        if (const int curveNode = source.Pointer(Field::Curve); myNodes.At(curveNode)) {
            const Curve& curve = myGeometry.CurveOf(curveNode);
            edge.curve = curve.curve;
            entry.isAligned = !curve.isReversed;
        } else {
            TakeFinCurve(fins, edge, entry);
        }
        if (edge.curve.IsNull()) {
            return entry;
        }
        if (!entry.isAligned) {
            std::swap(edge.start, edge.end);
        }
        entry.index = myTarget.AddEdge(std::move(edge));
        return entry;
    }

    /// A tolerant edge has a curve in the surface of each of its fins; it becomes the first that makes sense.
    /// The curve runs as its fin, or where the vertices say so against it.
    void TakeFinCurve(const EdgeFins& fins, brep::Edge& edge, EdgeEntry& entry)
    {
        for (const Node& fin : {fins.along, fins.against}) {
            const SurfaceCurve curve = myGeometry.SurfaceCurveOf(fin.Pointer(Field::Curve));
            if (curve.inSpace.IsNull()) {
                continue;
            }
            edge.curve = curve.inSpace;
            edge.first = curve.first;
            edge.last = curve.last;
            entry.fin = fin.Index();
            entry.inSurface = curve.inSurface;
            entry.isAligned = curve.isReversed == (fin.Character(Field::Sense) == '-');
            if (edge.start != brep::None) {
                FitEnds(edge, entry);
            }
            return;
        }
    }

    /// Turns the edge where its ends are the other way round, and lets the vertices reach them.
    void FitEnds(const brep::Edge& edge, EdgeEntry& entry)
    {
        const gp_Pnt from = edge.curve->Value(edge.first);
        const gp_Pnt to = edge.curve->Value(edge.last);
        brep::Vertex& start = myTarget.vertices[At(edge.start)];
        brep::Vertex& end = myTarget.vertices[At(edge.end)];
        const double along = start.point.Distance(from) + end.point.Distance(to);
        const double against = start.point.Distance(to) + end.point.Distance(from);
        if (edge.start != edge.end) {
            entry.isAligned = along <= against;
        }
        const bool isAligned = entry.isAligned;
        start.tolerance = std::max(start.tolerance, start.point.Distance(isAligned ? from : to));
        end.tolerance = std::max(end.tolerance, end.point.Distance(isAligned ? to : from));
    }

    /// Edges without a face: wires.
    void AddLooseEdge(const Node& source)
    {
        if (myEdges.find(source.Index()) != myEdges.end()) {
            return;
        }
        const EdgeEntry& edge = EdgeOf(source.Index());
        if (edge.index == brep::None) {
            ++myBody.lostCurves;
            return;
        }
        myTarget.curves.push_back({edge.index, myAttributes.LookOf(source.Index())});
    }

    /// Shells of material that hang together bound solids, those of one region together; others are sheets.
    void FinishShells()
    {
        brep::ClosedShells closedShells(myTarget);
        std::vector<std::vector<int>> solids(At(mySolids));
        for (const ShellEntry& entry : myShells) {
            if (entry.index == brep::None) {
                continue;
            }
            brep::Shell& shell = myTarget.shells[At(entry.index)];
            shell.closed = entry.isWhole && closedShells.Has(entry.index);
            if (shell.closed) {
                solids[At(entry.solid)].push_back(entry.index);
            } else {
                myTarget.sheets.push_back(entry.index);
            }
        }
        for (std::vector<int>& shells : solids) {
            if (!shells.empty()) {
                myTarget.solids.push_back(brep::SolidOf(myTarget, std::move(shells)));
            }
        }
        if (mySheet != brep::None) {
            myTarget.sheets.push_back(mySheet);
        }
    }

    const Nodes& myNodes;
    GeometryReader& myGeometry;
    AttributeTable& myAttributes;
    XtBody& myBody;
    brep::Description& myTarget;
    std::vector<ShellEntry> myShells;
    std::unordered_map<int, std::size_t> myShellOf; ///< by node
    int mySolids = 0;                               ///< regions
    int mySheet = brep::None;                       ///< shell of the faces that bound no region
    std::unordered_map<int, int> myVertices;
    std::unordered_map<int, EdgeEntry> myEdges;
    std::unordered_map<int, int> mySurfaces;
    std::unordered_set<int> mySeenFaces;
    std::unordered_set<int> mySeenFins;
};

} // namespace

XtBody DescribeBody(const Nodes& nodes, const Node& body, GeometryReader& geometry,
                    AttributeTable& attributes)
{
    XtBody result;
    result.node = body.Index();
    result.name = attributes.NameOf(body.Index());
    result.properties = attributes.PropertiesOf(body.Index());
    BodyDescriber(nodes, geometry, attributes, result).Describe(body);
    return result;
}

} // namespace cadex::parasolid
