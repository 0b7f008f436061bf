// Curves of alignments (IFC4X3): a way in the plane made of lines, arcs and spirals, a profile of heights
// over it, and places that are told by a distance along it.
//
//     const std::shared_ptr<const Alignment> road = AlignmentOf(context, curve);
//     const Alignment::Place place = road->At(1250'000); // millimetres from its start
#pragma once

#include <memory>
#include <vector>

#include "sdk/ifc/IfcCurves.h"
#include "sdk/ifc/IfcFacets.h"

namespace cadex::ifc {

class Alignment
{
public:
    struct Place
    {
        gp_XYZ point;
        gp_XYZ tangent; ///< length 1
    };

    virtual ~Alignment() = default;
    /// Distances count in the plane where the curve has a profile of heights, else along it. Millimetres.
    virtual double Length() const = 0;
    virtual Place At(double distance) const = 0;
};

/// IfcGradientCurve, IfcSegmentedReferenceCurve (as the curve that it refers to), an IfcCompositeCurve of
/// IfcCurveSegments, or any other bounded curve. Read once for each curve. Unbuildable for others.
std::shared_ptr<const Alignment> AlignmentOf(Context& context, const Entity& curve);

/// The curve is one that ReadCurve leaves to ReadAlignment.
bool IsAlignment(const Context& context, const Entity& curve);
/// The curve as chords that turn by a few degrees each; spans are lengths in the file's unit.
Path ReadAlignment(Context& context, const Entity& curve);

/// IfcAxis2PlacementLinear: the frame at a point along a curve. Its z axis is upright and its x axis goes
/// along the curve; directions that the file gives refer to that frame.
Affine LinearPlacement(Context& context, const Entity& axes);

/// IfcSectionedSolidHorizontal: (Directrix, CrossSections, CrossSectionPositions). Sections stand upright,
/// their x axis to the left of the way.
Polyhedron ReadSectionedSolid(Context& context, const Entity& solid);

/// IfcSectionedSpine: (SpineCurve, CrossSections, CrossSectionPositions). Straight from section to section,
/// whose positions hold all that the body needs of the spine.
Polyhedron ReadSectionedSpine(Context& context, const Entity& spine);

} // namespace cadex::ifc
