// A body with all its faces resolved: what triangles, integrals and kernel shapes are made from, so that the
// search for curves on surfaces is done once for all of them.
//
//     const ResolvedBody body = ResolveBody(description, true);
//     const BodyTessellation triangles(body, tolerances);
//     const std::optional<BodyIntegrals> integrals = IntegrateBody(body, true);
#pragma once

#include <cstdint>
#include <vector>

#include "sdk/brep/Body.h"
#include "sdk/brep/ResolvedFace.h"

namespace cadex::brep {

/// Where the normals of a shell's faces point to.
enum class ShellSide : std::uint8_t
{
    Unknown, ///< open, or not looked at
    Outwards,
    Inwards
};

struct ResolvedBody
{
    Body body;
    std::vector<ResolvedFace> faces; ///< by the description's numbers; they refer to surfaces of `body`

    const Description& Described() const { return *body.description; }
};

/// The description must outlive the result. Faces are resolved on several threads where `isParallel`. Throws
/// std::bad_alloc, nothing else; to be called under the engine's guard.
ResolvedBody ResolveBody(const Description& description, bool isParallel);

} // namespace cadex::brep
