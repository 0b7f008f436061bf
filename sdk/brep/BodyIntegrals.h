// Volume, centroid and area of a described body, from its exact faces.
#pragma once

#include <optional>
#include <vector>

#include "sdk/brep/ResolvedBody.h"
#include "sdk/occt/MassProperties.h"

namespace cadex::brep {

struct BodyIntegrals
{
    /// As ComputeMass of MassProperties.h has it: of the closed bodies together; none when a solid is open or
    /// has no volume.
    std::optional<occt::MassProperties> mass = {};
    double area = 0; ///< of all faces, square millimetres
    /// By the description's numbers, of the shells that solids and sheets are made of.
    std::vector<ShellSide> sides = {};
};

/// None when it takes the kernel's shape: a face is not resolved, shells are not oriented, or the description
/// holds shapes of the kernel. Faces are integrated on several threads where `isParallel`. Throws
/// std::bad_alloc, nothing else; to be called under the engine's guard.
std::optional<BodyIntegrals> IntegrateBody(const ResolvedBody& body, bool isParallel);

} // namespace cadex::brep
