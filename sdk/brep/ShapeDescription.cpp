#include "sdk/brep/ShapeDescription.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include <BRepClass3d.hxx>
#include <BRepLib.hxx>
#include <BRepTools_WireExplorer.hxx>
#include <BRep_Tool.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Iterator.hxx>
#include <TopoDS_Shell.hxx>
#include <TopoDS_Solid.hxx>
#include <TopoDS_Wire.hxx>

#include "sdk/brep/DescribedBRep.h"
#include "sdk/brep/KernelTasks.h"

namespace cadex::brep {

namespace {

class DescriptionMaker
{
public:
    std::optional<Description> Make(const TopoDS_Shape& shape)
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
        TopTools_IndexedMapOfShape loose;
        for (TopExp_Explorer edge(shape, TopAbs_EDGE, TopAbs_FACE); edge.More(); edge.Next()) {
            if (loose.FindIndex(edge.Current()) == 0 &&
                !BRep_Tool::Degenerated(TopoDS::Edge(edge.Current()))) {
                loose.Add(edge.Current());
                myResult.curves.push_back({.edge = NumberOf(TopoDS::Edge(edge.Current()))});
            }
        }
        return myIsWhole && !myResult.IsEmpty() ? std::optional(std::move(myResult)) : std::nullopt;
    }

    /// By the numbers of the description.
    const TopoDS_Shape& FaceAt(std::size_t number) const { return myFaces(static_cast<int>(number) + 1); }
    const TopoDS_Shape& EdgeAt(int number) const { return myEdges(number + 1); }

private:
    void AddSolid(const TopoDS_Solid& solid)
    {
        const TopoDS_Shell outer = BRepClass3d::OuterShell(solid);
        Solid result;
        for (TopoDS_Iterator shell(solid); shell.More(); shell.Next()) {
            if (shell.Value().ShapeType() != TopAbs_SHELL) {
                continue;
            }
            if (shell.Value().IsSame(outer)) {
                result.outer = AddShell(shell.Value());
            } else {
                result.voids.push_back(AddShell(shell.Value()));
            }
        }
        myResult.solids.push_back(std::move(result));
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
        myResult.AddFace(Described(face));
        return {number, true};
    }

    Face Described(const TopoDS_Face& face)
    {
        Face result;
        result.surface = myResult.AddSurface(BRep_Tool::Surface(face));
        result.sameSense = face.Orientation() == TopAbs_FORWARD;
        const TopoDS_Face forward = TopoDS::Face(face.Oriented(TopAbs_FORWARD));
        for (TopExp_Explorer wire(forward, TopAbs_WIRE); wire.More(); wire.Next()) {
            Loop loop = LoopOf(TopoDS::Wire(wire.Current()), forward);
            if (!result.sameSense) {
                std::reverse(loop.uses.begin(), loop.uses.end());
                for (EdgeUse& use : loop.uses) {
                    use.forward = !use.forward;
                }
            }
            if (!loop.uses.empty()) {
                result.loops.push_back(std::move(loop));
            }
        }
        return result;
    }

    Loop LoopOf(const TopoDS_Wire& wire, const TopoDS_Face& face)
    {
        Loop loop;
        int explored = 0;
        for (BRepTools_WireExplorer edge(wire, face); edge.More(); edge.Next(), ++explored) {
            AddUse(edge.Current(), face, loop);
        }
        // The explorer ends early where it does not see how edges go on.
        myIsWhole = myIsWhole && explored == CountOf(wire);
        return loop;
    }

    static int CountOf(const TopoDS_Wire& wire)
    {
        int count = 0;
        for (TopoDS_Iterator edge(wire); edge.More(); edge.Next()) {
            const TopAbs_Orientation way = edge.Value().Orientation();
            count += way == TopAbs_FORWARD || way == TopAbs_REVERSED ? 1 : 0;
        }
        return count;
    }

    void AddUse(const TopoDS_Edge& edge, const TopoDS_Face& face, Loop& loop)
    {
        if (BRep_Tool::Degenerated(edge)) {
            return;
        }
        double first = 0, last = 0;
        const int number = NumberOf(edge);
        loop.uses.push_back({.edge = number,
                             .forward = edge.Orientation() == TopAbs_FORWARD,
                             .curveOnSurface = BRep_Tool::CurveOnSurface(edge, face, first, last)});
    }

    int NumberOf(const TopoDS_Edge& edge)
    {
        const int known = myEdges.FindIndex(edge);
        if (known > 0) {
            return known - 1;
        }
        const TopoDS_Edge forward = TopoDS::Edge(edge.Oriented(TopAbs_FORWARD));
        Edge result;
        result.curve = CurveOf(forward, result.first, result.last);
        result.start = NumberOf(TopExp::FirstVertex(forward));
        result.end = NumberOf(TopExp::LastVertex(forward));
        result.tolerance = BRep_Tool::Tolerance(forward);
        myIsWhole = myIsWhole && !result.curve.IsNull();
        myResult.AddEdge(std::move(result));
        return myEdges.Add(edge) - 1;
    }

    static Handle(Geom_Curve) CurveOf(const TopoDS_Edge& edge, double& first, double& last)
    {
        Handle(Geom_Curve) curve = BRep_Tool::Curve(edge, first, last);
        if (curve.IsNull() && BRepLib::BuildCurve3d(edge)) {
            curve = BRep_Tool::Curve(edge, first, last);
        }
        return curve;
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

    Description myResult;
    bool myIsWhole = true;
    TopTools_IndexedMapOfShape myVertices;
    TopTools_IndexedMapOfShape myEdges;
    TopTools_IndexedMapOfShape myFaces;
};

/// Those that differ from the body's.
void AddAppearances(const occt::OcctBRep& body, const DescriptionMaker& maker, Description& description)
{
    description.appearance = body.appearance;
    for (std::size_t face = 0; face < description.faces.size(); ++face) {
        if (const ModelData_Appearance* own = body.appearances.Seek(maker.FaceAt(face))) {
            description.faces[face].appearance = *own;
        }
    }
    for (LooseCurve& curve : description.curves) {
        if (const ModelData_Appearance* own = body.appearances.Seek(maker.EdgeAt(curve.edge))) {
            curve.appearance = *own;
        }
    }
}

} // namespace

std::optional<Description> DescribeShape(const TopoDS_Shape& shape)
{
    return DescriptionMaker().Make(shape);
}

occt::EngineBRep* MakeShapeBRep(const occt::OcctBRep& body)
{
    DescriptionMaker maker;
    std::optional<Description> description;
    if (!Try([&] { description = maker.Make(body.shape); }) || !description) {
        auto copy = std::make_unique<occt::OcctBRep>(body.shape);
        copy->appearance = body.appearance;
        copy->appearances = body.appearances;
        return copy.release();
    }
    AddAppearances(body, maker, *description);
    return new DescribedBRep(std::move(*description), body.shape);
}

} // namespace cadex::brep
