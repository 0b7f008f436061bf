// Bodies, sheets and wires of a STEP file as a description: what its representation items say, with the looks
// that the file gives them.
//
//     StepBodyReader reader(records, styles);
//     StepBodyContent content = reader.Read(product.representations, look);
//     if (!content.description.IsEmpty()) { ... }
//
// A record that cannot be read costs the body that needs it; one of a kind that is not read here costs what
// it alone describes. Both are reported. A solid that has lost a face becomes a sheet: it claims to be no
// more than it is.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include <cadex/ModelData_Appearance.hxx>

#include "sdk/brep/Description.h"
#include "sdk/occt/FacetedBRep.h"
#include "sdk/step/StepGeometryReader.h"
#include "sdk/step/StepRecords.h"
#include "sdk/step/StepStyles.h"

namespace cadex::step {

/// What some representations hold. Solids, sheets and facets bear their items' names where these tell
/// them apart.
struct StepBodyContent
{
    brep::Description description;
    /// Triangles and polylines that the file gives as such.
    std::vector<occt::FacetGroup> facets;
    std::vector<occt::FacetCurve> polylines;
    bool facetsAreClosed = true; ///< all of the facets belong to tessellated solids
    bool hasItems = false;       ///< something was there to be read, whatever came of it

    bool IsEmpty() const { return description.IsEmpty() && facets.empty() && polylines.empty(); }
};

class StepBodyReader
{
public:
    /// Both must outlive it.
    StepBodyReader(const StepRecords& records, const StepStyles& styles);

    /// Everything in the representations, each item once. `whole` is the look of what has no other.
    /// `placedElsewhere` are representations whose mapped items are instances of the model, not content.
    StepBodyContent Read(const std::vector<RecordId>& representations, const ModelData_Appearance& whole,
                         const std::vector<RecordId>& placedElsewhere = {});
    /// Items that no representation holds, in millimetres and radians.
    StepBodyContent ReadItems(const std::vector<RecordId>& items);

private:
    struct Looks
    {
        ModelData_Appearance surface;
        ModelData_Appearance curve;
    };
    struct Sizes;
    Sizes SizesNow() const;

    void ReadRepresentation(RecordId id, const Looks& looks);
    void ReadItem(RecordId id, const Looks& looks);
    void ReadByType(const StepRecords::Record& record, const Looks& looks);
    /// Drops what the work has added when it throws, and reports why.
    void Keep(RecordId item, const std::function<void()>& work);
    bool Succeeds(RecordId item, const std::function<void()>& work);

    void ReadSolid(const StepRecords::Record& record, bool hasVoids, const Looks& looks);
    void ReadShells(const StepRecords::Record& record, const Looks& looks);
    void ReadSet(const StepRecords::Record& record, const Looks& looks);
    void ReadEdges(const StepRecords::Record& record, const Looks& looks);
    void ReadWires(const StepRecords::Record& record, const Looks& looks);
    void ReadMapped(const StepRecords::Record& record, const Looks& looks);
    void ReadKernelShape(const StepRecords::Record& record, const Looks& looks);
    void ReadTessellated(const StepRecords::Record& record, const Looks& looks);
    bool IsShown(RecordId exact) const;
    void ReadComplex(const StepRecords::Record& record, const Looks& looks);
    void ReadOther(const StepRecords::Record& record, StepType type, const Looks& looks);
    brep::Description DescriptionOf(RecordId id, const Looks& looks);
    void AddSheet(RecordId id, const Looks& looks);
    void AddSheetOfFace(RecordId id, const Looks& looks);
    void AddPatch(RecordId id, const Looks& looks);
    void AddCurves(RecordId id, const Looks& looks);
    void AddLooseEdge(RecordId id, const Looks& looks);
    /// Gives the vertex at which the piece ends; it starts at the previous one when that is there.
    int AddPiece(const CurvePiece& piece, int previous, const ModelData_Appearance& look, RecordId record);

    /// The shell, turned round when it is not forward; whole tells whether no face was left out.
    int AddShell(RecordId id, bool forward, Looks looks, bool& whole, int depth = 0);
    int FaceOf(RecordId id, Looks looks, bool& forward, int depth = 0);
    brep::Face MakeFace(const StepRecords::Record& record, bool hasSurface);
    brep::Face MakeBoundedFace(const StepRecords::Record& record);
    brep::Loop LoopOf(RecordId bound, RecordId surface, int number);
    void AppendUse(RecordId orientedEdge, RecordId surface, int number, brep::Loop& loop);
    brep::Loop PolyLoopOf(const StepRecords::Record& record);
    Handle(Geom2d_Curve) CurveOn(RecordId curve, RecordId surface, const BasisSurface& basis);
    int SurfaceOf(RecordId id);
    int AddSurface(const BasisSurface& basis);
    int PlaneOf(const std::vector<brep::Loop>& loops, RecordId record);
    int EdgeOf(RecordId id, bool& sameSense);
    brep::EdgeUse LineBetween(int start, int end);
    int VertexOf(RecordId id);
    int VertexAt(RecordId cartesianPoint);
    const gp_Pnt& PointAt(int vertex) const
    {
        return myBody->vertices[static_cast<std::size_t>(vertex)].point;
    }

    Looks LooksOf(RecordId id, Looks inherited) const;
    void Start(StepBodyContent& content, const ModelData_Appearance& whole);
    void ForgetShared();
    void Finish();
    void FindCommonLook();
    template <typename Visit>
    void ForEachName(const Sizes& first, const Visit& visit);
    void DropCommonName();
    void Restore(const Sizes& sizes);

    const StepRecords& myRecords;
    const StepStyles& myStyles;
    StepGeometryReader myGeometry;
    StepBodyContent* myContent = nullptr;
    brep::Description* myBody = nullptr; ///< that of the content
    RecordSlots myVertices;              ///< of vertices and points of polygons
    RecordSlots myEdges;
    RecordSlots mySurfaces;
    RecordSlots myItems; ///< what has been read, so that nothing comes twice
    /// By number of the surface, from the first of the description.
    std::vector<BasisSurface> myBases;
    std::unordered_map<std::uint64_t, int> myLines; ///< between two vertices, the lower number in front
    std::vector<ModelData_Appearance> myBodyLooks;  ///< of the solids, sheets and sets as wholes
    ModelData_Appearance myWhole;
    std::vector<RecordId> myPlacedElsewhere;
    int myMapDepth = 0;
};

} // namespace cadex::step
