// The body of a part as a description: what stands behind a part's B-rep representation when a format's room
// has described it. Triangles come from the description; kernel shapes are built when somebody asks.
//
//     auto* body = new DescribedBRep(std::move(description));
//     part.AddRepresentation(internal::MakeHandle<ModelData_BRepRepresentation>(body));
#pragma once

#include <optional>
#include <utility>

#include "sdk/brep/BodyIntegrals.h"
#include "sdk/brep/Description.h"
#include "sdk/occt/EngineBRep.h"

namespace cadex::brep {

class DescribedBRep final : public occt::EngineBRep
{
public:
    explicit DescribedBRep(Description description) : myDescription(std::move(description)) {}
    /// A description of that shape.
    DescribedBRep(Description description, TopoDS_Shape shape)
        : myDescription(std::move(description)), myShape(std::move(shape))
    {
    }

    const Description& Data() const { return myDescription; }

    /// A face in several shells has triangles for each.
    ModelData_PolyRepresentation Mesh(const occt::MeshTolerances& tolerances, bool mergeFaceSets,
                                      const Base_UTF16String& partName) const override;

    /// Built when first asked for, unless it was given; null when nothing can be built.
    TopoDS_Shape KernelShape() const override;

    double Area() const override;

private:
    /// From the exact faces; by the kernel's shape where that does not go.
    std::optional<occt::MassProperties> IntegrateMass() const override;
    const std::optional<BodyIntegrals>& Integrals() const;
    const ResolvedBody& Resolved() const;

    const Description myDescription;
    mutable std::optional<ResolvedBody> myResolved; ///< while it may be of use
    mutable bool myAreIntegralsKnown = false;
    mutable std::optional<BodyIntegrals> myIntegrals;
    mutable std::optional<TopoDS_Shape> myShape;
};

} // namespace cadex::brep
