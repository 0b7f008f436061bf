// What stands behind a part's B-rep representation in the open engine, whatever a format made it of. The
// SDK's mesher, shape converter and validation properties know it only by these operations; each is called
// inside RunGuarded, with the engine's lock held.
//
//     if (const EngineBRep* body = BRepOf<EngineBRep>(part.BRepRepresentation())) { ... body->Mesh(...) ... }
#pragma once

#include <optional>

#include <TopoDS_Shape.hxx>

#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/model/BRepImpl.h"
#include "sdk/occt/MassProperties.h"
#include "sdk/occt/ShapeMesher.h"

namespace cadex::occt {

class EngineBRep : public internal::BRepImpl
{
public:
    /// The body as triangle sets, then polyline sets; a null handle when there is nothing to show.
    ///
    /// Merged: one triangle set for each appearance, the body's own first, the others in the order of the
    /// faces. Not merged: one for each face. Each chain of loose curves is a polyline set of its own. Where
    /// the file tells several solids or sheets of the body apart by names, their sets are apart, too, and
    /// bear these names; all others bear `partName`. There are no texture coordinates where the file has no
    /// textures to place.
    virtual ModelData_PolyRepresentation Mesh(const MeshTolerances& tolerances, bool mergeFaceSets,
                                              const Base_UTF16String& partName) const = 0;

    /// The body as a shape of the kernel, in millimetres and in the part's own coordinates; null where making
    /// it would take longer than reading the file did. Treat it as constant: it may be shared.
    virtual TopoDS_Shape KernelShape() const = 0;

    /// None as for ComputeMass. Integrated once, however many instances ask.
    const std::optional<MassProperties>& Mass() const;

    /// Square millimetres; not a number when a face cannot be integrated.
    virtual double Area() const = 0;

protected:
    virtual std::optional<MassProperties> IntegrateMass() const = 0;

private:
    mutable bool myIsMassKnown = false;
    mutable std::optional<MassProperties> myMass;
};

/// The representation's object as the class asked for; null when the handle is null or its object is of
/// another class.
template <typename T>
const T* BRepOf(const ModelData_BRepRepresentation& representation)
{
    return dynamic_cast<const T*>(representation.Impl());
}

} // namespace cadex::occt
