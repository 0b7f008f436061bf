// One part's B-rep, exact or faceted, as a poly representation.
#pragma once

#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/occt/OcctBRep.h"
#include "sdk/occt/ShapeMesher.h"

namespace cadex::occt {

/// Meshes the shape and gives its triangle sets, then its polyline sets; a null handle when there is nothing
/// to show.
///
/// Merged: one triangle set for each appearance, the body's own first, the others in the order of the faces.
/// Not merged: one for each face. Each chain of loose curves is a polyline set of its own. The sets bear
/// `name`. There are no texture coordinates: STEP and IGES have no textures to place.
ModelData_PolyRepresentation MeshShape(const OcctBRep& brep, const MeshTolerances& tolerances,
                                       bool mergeFaceSets, const Base_UTF16String& name);

/// The facets as they stand, one triangle set for each appearance, each corner with the normal of its facet.
ModelData_PolyRepresentation MeshFacets(const FacetedBRep& brep, const Base_UTF16String& name);

} // namespace cadex::occt
