// The body of a part as a description: what stands behind a part's B-rep representation when a format's room
// has described it. Triangles come from the description; kernel shapes are built when somebody asks.
//
//     auto* body = new DescribedBRep(std::move(description));
//     part.AddRepresentation(internal::MakeHandle<ModelData_BRepRepresentation>(body));
#pragma once

#include <optional>

#include <TopoDS_Shape.hxx>

#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/brep/Description.h"
#include "sdk/model/BRepImpl.h"
#include "sdk/occt/MassProperties.h"
#include "sdk/occt/OcctBRep.h"
#include "sdk/occt/ShapeMesher.h"

namespace cadex::brep {

/// Guarded by the engine's lock; every function but the constructor is to be called under the guard.
class DescribedBRep : public internal::BRepImpl
{
public:
    explicit DescribedBRep(Description description) : myDescription(std::move(description)) {}

    const Description& Data() const { return myDescription; }

    /// Triangle sets, then polyline sets; a null handle when there is nothing to show.
    ///
    /// Merged: one triangle set for each appearance, the body's own first, the others in the order of the
    /// faces. Not merged: one for each face. Each chain of loose curves is a polyline set of its own. The
    /// sets bear `setName`. A face in several shells has triangles for each.
    ModelData_PolyRepresentation Mesh(const occt::MeshTolerances& tolerances, bool mergeFaceSets,
                                      const Base_UTF16String& setName) const;

    /// The kernel's shape, built when first asked for; null when nothing can be built.
    const TopoDS_Shape& Shape() const;

    /// As of the shape (MassProperties.h), integrated once.
    std::optional<occt::MassProperties> Mass() const;
    double Area() const;

private:
    const Description myDescription;
    mutable std::optional<TopoDS_Shape> myShape;
    mutable occt::KnownMass myMass;
};

} // namespace cadex::brep
