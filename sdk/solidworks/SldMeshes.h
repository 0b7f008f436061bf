// From displayed bodies to triangle sets.
#pragma once

#include <vector>

#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/model/AppearanceCache.h"
#include "sdk/solidworks/SldDisplayList.h"

namespace cadex::solidworks {

/// A set for each look of each body, named after the body, with normals; faces of one set share their points
/// and, where they meet smoothly, their normals. `look` is that of bodies without their own. Null when there
/// are no triangles.
ModelData_PolyRepresentation MeshesOf(const std::vector<DisplayBody>& bodies,
                                      const std::optional<DisplayLook>& look,
                                      internal::AppearanceCache& looks);

/// Of all triangles, square millimetres.
double AreaOf(const std::vector<DisplayBody>& bodies);

} // namespace cadex::solidworks
