// Triangles and polylines that a STEP file gives as such.
//
//     StepTessellated reader(geometry, styles);
//     reader.Read(record, look, curveLook);
//     for (occt::FacetGroup& group : reader.Facets()) { ... }
//
// NOTE: ISO 10303-42:2014, tessellated shape (AP242). Faces index points of a coordinates list, directly or
// through pnindex; normals are none, one for the whole face, or one for each of its points.
#pragma once

#include <array>
#include <cstddef>
#include <unordered_map>
#include <vector>

#include <gp_Trsf.hxx>

#include <cadex/ModelData_Appearance.hxx>

#include "sdk/occt/FacetedBRep.h"
#include "sdk/step/StepGeometryReader.h"
#include "sdk/step/StepStyles.h"

namespace cadex::step {

class StepTessellated
{
public:
    /// Both must outlive it.
    StepTessellated(StepGeometryReader& geometry, const StepStyles& styles)
        : myGeometry(geometry), myRecords(geometry.Records()), myStyles(styles)
    {
    }

    /// Adds a tessellated item: face, surface set, shell, solid, curve set, edge or a set of such. Throws as
    /// the geometry reader does.
    void Read(const StepRecords::Record& record, const ModelData_Appearance& surface,
              const ModelData_Appearance& curve);

    /// The exact solid, shell or face that a tessellated one stands for, as it says itself or its first
    /// member does; 0 when there is none.
    RecordId LinkOf(const StepRecords::Record& record) const;

    /// One group for each look, and for triangles with and without normals.
    std::vector<occt::FacetGroup>& Facets() { return myFacets; }
    std::vector<occt::FacetCurve>& Polylines() { return myPolylines; }
    /// Everything was given as solids, and each triangle has a neighbour at each of its edges.
    bool IsSolid() const;

private:
    struct Looks
    {
        ModelData_Appearance surface;
        ModelData_Appearance curve;
    };
    struct Coordinates
    {
        std::vector<ModelData_Point> points;
    };

    void ReadItem(RecordId id, Looks looks, int depth);
    void ReadMembers(Cursor arguments, const Looks& looks, int depth);
    void ReadFace(const StepRecords::Record& record, Cursor arguments, bool isFace, bool isComplex,
                  const Looks& looks);
    void ReadLines(const StepRecords::Record& record, Cursor arguments, bool isSet, const Looks& looks);
    const Coordinates& CoordinatesOf(RecordId id);
    std::size_t GroupOf(const ModelData_Appearance& look, bool hasNormals);

    StepGeometryReader& myGeometry;
    const StepRecords& myRecords;
    const StepStyles& myStyles;
    std::vector<occt::FacetGroup> myFacets;
    std::vector<occt::FacetCurve> myPolylines;
    std::unordered_map<RecordId, Coordinates> myCoordinates; ///< in the item's own place
    gp_Trsf myPlacement;
    bool mySolidsOnly = true;
    int mySolidDepth = 0;
};

} // namespace cadex::step
