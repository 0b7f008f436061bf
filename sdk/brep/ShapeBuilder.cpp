#include "sdk/brep/ShapeBuilder.h"

#include <string>
#include <utility>

#include <BRepCheck_Analyzer.hxx>
#include <BRepClass3d_SolidClassifier.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Shell.hxx>
#include <TopoDS_Solid.hxx>

#include <cadex/internal/Reports.hxx>

#include "sdk/brep/Crossings.h"
#include "sdk/brep/FaceShapes.h"
#include "sdk/brep/Tolerances.h"

namespace cadex::brep {

namespace {

using internal::Report;
using internal::Reports;

class ShapeMaker
{
public:
    ShapeMaker(const ResolvedBody& resolved, const std::vector<ShellSide>& sides)
        : myBody(resolved.body),
          myResolved(resolved.faces),
          mySides(sides),
          myShared(resolved.body),
          myIsTried(resolved.faces.size())
    {
        myBuilt.faces.resize(resolved.faces.size());
        myBuilt.curves.resize(resolved.Described().curves.size());
    }

    BuiltShape Run()
    {
        const Description& description = *myBody.description;
        for (const Solid& solid : description.solids) {
            AddPart([&] { return MakeSolid(solid); });
        }
        for (const int sheet : description.sheets) {
            AddPart([&] { return MakeShell(sheet); });
        }
        for (std::size_t i = 0; i < description.curves.size(); ++i) {
            AddPart([&] { return MakeCurve(i); });
        }
        for (const KernelShape& kernel : description.kernelShapes) {
            AddPart([&] { return kernel.shape; });
        }
        myBuilt.shape = Joined();
        return std::move(myBuilt);
    }

private:
    template <typename Work>
    void AddPart(const Work& work)
    {
        TopoDS_Shape part;
        try {
            OCC_CATCH_SIGNALS
            part = work();
        } catch (const Standard_Failure&) {
            Reports::Add(Report::Kind::LeftOut, "body that the geometry kernel refuses");
        }
        if (!part.IsNull()) {
            myParts.push_back(part);
        }
    }

    TopoDS_Shape Joined() const
    {
        if (myParts.size() <= 1) {
            return myParts.empty() ? TopoDS_Shape() : myParts.front();
        }
        TopoDS_Compound compound;
        BRep_Builder().MakeCompound(compound);
        for (const TopoDS_Shape& part : myParts) {
            BRep_Builder().Add(compound, part);
        }
        return compound;
    }

    /// Made once, however often it is used.
    const TopoDS_Shape& FaceAt(int number)
    {
        const auto index = static_cast<std::size_t>(number);
        if (!myIsTried[index]) {
            myIsTried[index] = true;
            myBuilt.faces[index] = MakeFace(index);
        }
        return myBuilt.faces[index];
    }

    TopoDS_Shape MakeFace(std::size_t index)
    {
        const ResolvedFace& resolved = myResolved[index];
        const Face& given = myBody.description->faces[index];
        std::string trouble = TextOf(resolved.status);
        TopoDS_Shape made;
        if (resolved.status == ResolveStatus::Done) {
            try {
                OCC_CATCH_SIGNALS
                made = MakeFaceShape(myShared, resolved);
                trouble = IsDoubtful(resolved, made) ? "face whose loops cross" : "";
            } catch (const Standard_Failure&) {
                trouble = TextOf(ResolveStatus::Kernel);
            }
        }
        return trouble.empty() ? made : Healed(given, resolved, trouble);
    }

    /// The thorough check is dear; only where loops seem to cross.
    bool IsDoubtful(const ResolvedFace& resolved, const TopoDS_Shape& made) const
    {
        return DoRingsSeemToCross(myBody, resolved) && !BRepCheck_Analyzer(made).IsValid();
    }

    TopoDS_Shape Healed(const Face& given, const ResolvedFace& resolved, const std::string& trouble)
    {
        const TopoDS_Shape healed = HealFace(myBody, given, resolved);
        const bool isHealed = !healed.IsNull();
        ++(isHealed ? myBuilt.healed : myBuilt.leftOut);
        Reports::Add(isHealed ? Report::Kind::Repaired : Report::Kind::LeftOut, trouble, given.record);
        return healed;
    }

    TopoDS_Shape MakeShell(int number)
    {
        const std::vector<Shell>& shells = myBody.description->shells;
        if (number < 0 || static_cast<std::size_t>(number) >= shells.size()) {
            return {};
        }
        TopoDS_Shell shell;
        myBuilder.MakeShell(shell);
        for (const FaceUse& use : shells[static_cast<std::size_t>(number)].faces) {
            if (use.face >= 0 && static_cast<std::size_t>(use.face) < myIsTried.size()) {
                AddFace(shell, FaceAt(use.face), use.forward);
            }
        }
        if (!HasFaces(shell)) {
            return {};
        }
        shell.Closed(BRep_Tool::IsClosed(shell));
        return shell;
    }

    void AddFace(TopoDS_Shell& shell, const TopoDS_Shape& made, bool isForward)
    {
        if (made.IsNull()) {
            return;
        }
        for (TopExp_Explorer face(made, TopAbs_FACE); face.More(); face.Next()) {
            myBuilder.Add(shell, isForward ? face.Current() : face.Current().Reversed());
        }
    }

    TopoDS_Shape MakeSolid(const Solid& given)
    {
        const TopoDS_Shape outer = MakeShell(given.outer);
        if (outer.IsNull()) {
            return {};
        }
        TopoDS_Solid solid;
        myBuilder.MakeSolid(solid);
        myBuilder.Add(solid, Turned(outer, given.outer, false));
        for (const int number : given.voids) {
            const TopoDS_Shape inner = MakeShell(number);
            if (!inner.IsNull()) {
                myBuilder.Add(solid, Turned(inner, number, true));
            }
        }
        return solid;
    }

    /// The shell with its normals away from what it encloses, or towards it (a cavity). An open one stays:
    /// its sides cannot be told.
    TopoDS_Shape Turned(const TopoDS_Shape& shell, int number, bool isVoid)
    {
        if (!shell.Closed()) {
            return shell;
        }
        const auto place = static_cast<std::size_t>(number);
        const ShellSide known = place < mySides.size() ? mySides[place] : ShellSide::Unknown;
        const bool isInsideOut =
            known == ShellSide::Unknown ? IsInsideOut(shell) : known == ShellSide::Inwards;
        return isInsideOut == isVoid ? shell : shell.Reversed();
    }

    /// The kernel's classifier looks at every face; dear.
    bool IsInsideOut(const TopoDS_Shape& shell)
    {
        TopoDS_Solid alone;
        myBuilder.MakeSolid(alone);
        myBuilder.Add(alone, shell);
        BRepClass3d_SolidClassifier classifier(alone);
        classifier.PerformInfinitePoint(tolerance::Coincident);
        return classifier.State() == TopAbs_IN;
    }

    TopoDS_Shape MakeCurve(std::size_t place)
    {
        const int number = myBody.description->curves[place].edge;
        const bool isKnown = number >= 0 && static_cast<std::size_t>(number) < myBody.edges.size();
        if (!isKnown || !myBody.edges[static_cast<std::size_t>(number)].isUsable) {
            ++myBuilt.leftOut;
            Reports::Add(Report::Kind::LeftOut, "curve that cannot be used",
                         isKnown ? myBody.edges[static_cast<std::size_t>(number)].record : 0);
            return {};
        }
        return myBuilt.curves[place] = myShared.EdgeAt(number);
    }

    const Body& myBody;
    const std::vector<ResolvedFace>& myResolved;
    const std::vector<ShellSide>& mySides;
    BRep_Builder myBuilder;
    SharedShapes myShared;
    std::vector<bool> myIsTried;
    std::vector<TopoDS_Shape> myParts;
    BuiltShape myBuilt;
};

} // namespace

BuiltShape BuildShape(const ResolvedBody& resolved, const std::vector<ShellSide>& sides)
{
    return ShapeMaker(resolved, sides).Run();
}

BuiltShape BuildShape(const Description& description)
{
    return BuildShape(ResolveBody(description, false));
}

TopoDS_Shape BuildFace(const Body& body, int face, const ResolvedFace& resolved)
{
    if (face < 0 || static_cast<std::size_t>(face) >= body.description->faces.size()) {
        return {};
    }
    if (resolved.status == ResolveStatus::Done) {
        try {
            OCC_CATCH_SIGNALS
            SharedShapes shared(body);
            return MakeFaceShape(shared, resolved);
        } catch (const Standard_Failure&) {
            // healed below
        }
    }
    return HealFace(body, body.description->faces[static_cast<std::size_t>(face)], resolved);
}

} // namespace cadex::brep
