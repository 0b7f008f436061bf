// Volume, centroid and area of a described body, from its exact faces.
#pragma once

#include <optional>

#include "sdk/brep/Description.h"
#include "sdk/occt/MassProperties.h"

namespace cadex::brep {

struct BodyIntegrals
{
    /// As ComputeMass of MassProperties.h has it: of the closed bodies together; none when a solid is open or
    /// has no volume.
    std::optional<occt::MassProperties> mass = {};
    double area = 0; ///< of all faces, square millimetres
};

/// None when it takes the kernel's shape: a face is not resolved, shells are not oriented, or the description
/// holds shapes of the kernel. Faces are integrated on several threads where `isParallel`. Throws
/// std::bad_alloc, nothing else; to be called under the engine's guard.
std::optional<BodyIntegrals> IntegrateBody(const Description& description, bool isParallel);

} // namespace cadex::brep
