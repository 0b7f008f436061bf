// Any shape of the kernel as a Description, as a file would give it: vertices, edges, faces and loops,
// without curves on surfaces and without degenerated edges.
//
//     const brep::Description body = DescriptionOf(BRepPrimAPI_MakeBox(1, 2, 3).Shape());
//     const brep::Description bare = DescriptionOf(shape, {.seams = false});   // cylinders as two circles
#pragma once

#include <algorithm>
#include <vector>

#include <BRepClass3d.hxx>
#include <BRepTools_WireExplorer.hxx>
#include <BRep_Tool.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Iterator.hxx>
#include <TopoDS_Shell.hxx>
#include <TopoDS_Solid.hxx>

#include "sdk/brep/Description.h"

namespace cadex::brep {

struct DescriptionOptions
{
    bool seams = true;  ///< false: loops without the edges that a face uses twice
    bool ranges = true; ///< false: edges without the parameters of their ends
};

class DescriptionMaker
{
public:
    explicit DescriptionMaker(const DescriptionOptions& options) : myOptions(options) {}

    Description Make(const TopoDS_Shape& shape)
    {
        for (TopExp_Explorer solid(shape, TopAbs_SOLID); solid.More(); solid.Next()) {
            AddSolid(TopoDS::Solid(solid.Current()));
        }
        for (TopExp_Explorer shell(shape, TopAbs_SHELL, TopAbs_SOLID); shell.More(); shell.Next()) {
            myResult.sheets.push_back(AddShell(shell.Current()));
        }
        for (TopExp_Explorer face(shape, TopAbs_FACE, TopAbs_SHELL); face.More(); face.Next()) {
            myResult.sheets.push_back(myResult.AddShell({.faces = {UseOf(TopoDS::Face(face.Current()))}}));
        }
        for (TopExp_Explorer edge(shape, TopAbs_EDGE, TopAbs_FACE); edge.More(); edge.Next()) {
            myResult.curves.push_back({.edge = NumberOf(TopoDS::Edge(edge.Current()))});
        }
        return std::move(myResult);
    }

private:
    void AddSolid(const TopoDS_Solid& solid)
    {
        const TopoDS_Shell outer = BRepClass3d::OuterShell(solid);
        Solid result;
        for (TopoDS_Iterator shell(solid); shell.More(); shell.Next()) {
            if (shell.Value().IsSame(outer)) {
                result.outer = AddShell(shell.Value());
            } else {
                result.voids.push_back(AddShell(shell.Value()));
            }
        }
        myResult.solids.push_back(result);
    }

    int AddShell(const TopoDS_Shape& shell)
    {
        Shell result;
        for (TopExp_Explorer face(shell, TopAbs_FACE); face.More(); face.Next()) {
            result.faces.push_back(UseOf(TopoDS::Face(face.Current())));
        }
        result.closed = BRep_Tool::IsClosed(shell);
        return myResult.AddShell(std::move(result));
    }

    FaceUse UseOf(const TopoDS_Face& face)
    {
        const int known = myFaces.FindIndex(face);
        if (known > 0) {
            return {known - 1, myFaces(known).Orientation() == face.Orientation()};
        }
        const int number = myFaces.Add(face) - 1;
        myResult.AddFace(Make(face));
        return {number, true};
    }

    Face Make(const TopoDS_Face& face)
    {
        Face result;
        result.surface = myResult.AddSurface(BRep_Tool::Surface(face));
        result.sameSense = face.Orientation() == TopAbs_FORWARD;
        const TopoDS_Face forward = TopoDS::Face(face.Oriented(TopAbs_FORWARD));
        for (TopExp_Explorer wire(forward, TopAbs_WIRE); wire.More(); wire.Next()) {
            Loop loop = Make(TopoDS::Wire(wire.Current()), forward);
            if (!result.sameSense) {
                std::reverse(loop.uses.begin(), loop.uses.end());
                for (EdgeUse& use : loop.uses) {
                    use.forward = !use.forward;
                }
            }
            Add(std::move(loop), result);
        }
        return result;
    }

    Loop Make(const TopoDS_Wire& wire, const TopoDS_Face& face)
    {
        Loop loop;
        for (BRepTools_WireExplorer edge(wire, face); edge.More(); edge.Next()) {
            if (!BRep_Tool::Degenerated(edge.Current())) {
                loop.uses.push_back({.edge = NumberOf(edge.Current()),
                                     .forward = edge.Current().Orientation() == TopAbs_FORWARD});
            }
        }
        return loop;
    }

    /// With seams as it is; else what remains between the seams, closed one by one.
    void Add(Loop&& loop, Face& face) const
    {
        if (myOptions.seams) {
            if (!loop.uses.empty()) {
                face.loops.push_back(std::move(loop));
            }
            return;
        }
        std::vector<EdgeUse> left;
        for (const EdgeUse& use : loop.uses) {
            const auto uses = std::count_if(loop.uses.begin(), loop.uses.end(),
                                            [&](const EdgeUse& other) { return other.edge == use.edge; });
            if (uses == 1) {
                left.push_back(use);
            }
        }
        while (!left.empty()) {
            Loop part;
            const int begin = StartOf(left.front());
            for (int at = begin; part.uses.empty() || at != begin;) {
                const auto next = std::find_if(left.begin(), left.end(),
                                               [&](const EdgeUse& use) { return StartOf(use) == at; });
                if (next == left.end()) {
                    break;
                }
                at = EndOf(*next);
                part.uses.push_back(*next);
                left.erase(next);
            }
            if (part.uses.empty()) {
                break;
            }
            face.loops.push_back(std::move(part));
        }
    }

    int StartOf(const EdgeUse& use) const
    {
        const Edge& edge = myResult.edges[static_cast<std::size_t>(use.edge)];
        return use.forward ? edge.start : edge.end;
    }
    int EndOf(const EdgeUse& use) const
    {
        const Edge& edge = myResult.edges[static_cast<std::size_t>(use.edge)];
        return use.forward ? edge.end : edge.start;
    }

    int NumberOf(const TopoDS_Edge& edge)
    {
        const int known = myEdges.FindIndex(edge);
        if (known > 0) {
            return known - 1;
        }
        const TopoDS_Edge forward = TopoDS::Edge(edge.Oriented(TopAbs_FORWARD));
        Edge result;
        double first = 0, last = 0;
        result.curve = BRep_Tool::Curve(forward, first, last);
        if (myOptions.ranges) {
            result.first = first;
            result.last = last;
        }
        result.start = NumberOf(TopExp::FirstVertex(forward));
        result.end = NumberOf(TopExp::LastVertex(forward));
        result.tolerance = BRep_Tool::Tolerance(forward);
        myResult.AddEdge(std::move(result));
        return myEdges.Add(edge) - 1;
    }

    int NumberOf(const TopoDS_Vertex& vertex)
    {
        if (vertex.IsNull()) {
            return None;
        }
        const int known = myVertices.FindIndex(vertex);
        if (known > 0) {
            return known - 1;
        }
        myResult.AddVertex(BRep_Tool::Pnt(vertex), BRep_Tool::Tolerance(vertex));
        return myVertices.Add(vertex) - 1;
    }

    DescriptionOptions myOptions;
    Description myResult;
    TopTools_IndexedMapOfShape myVertices;
    TopTools_IndexedMapOfShape myEdges;
    TopTools_IndexedMapOfShape myFaces;
};

inline Description DescriptionOf(const TopoDS_Shape& shape, const DescriptionOptions& options = {})
{
    return DescriptionMaker(options).Make(shape);
}

} // namespace cadex::brep
