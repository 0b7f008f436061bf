// Walks a model down to its parts with the placement of each, as the instances above it add up.
#pragma once

#include <functional>

#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>

#include "sdk/mesh/Placement.h"

namespace cadex::mesh {

/// First `inner`, then `outer`.
Affine Compose(const Affine& outer, const Affine& inner);
ModelData_Point Apply(const Affine& affine, const ModelData_Point& point);

/// Of a matrix that can be inverted.
Affine Inverse(const Affine& affine);

bool IsFinite(const Affine& affine);
/// A rotation or mirror with one scale factor other than zero for all directions, within 1e-9.
bool IsSimilarity(const Affine& affine);
/// A similarity that mirrors nothing.
bool IsMovement(const Affine& affine);
bool IsIdentity(const Affine& affine);

/// A part where it stands in the model.
struct PlacedPart
{
    const ModelData_Part& part;
    const Affine& placement;
    Base_UTF16String name; ///< of the nearest instance above the part, else the part's
    ModelData_Appearance
        appearance; ///< the part's, else of the nearest element above; null when none has one
};

/// Calls back for each part as often as it is placed, in the order of the model.
void ForEachPlacedPart(const ModelData_Model& model, const std::function<void(const PlacedPart&)>& visit);
void ForEachPlacedPart(const ModelData_SceneGraphElement& element,
                       const std::function<void(const PlacedPart&)>& visit);

} // namespace cadex::mesh
