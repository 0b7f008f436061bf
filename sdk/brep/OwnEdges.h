// Edges of a face's own: seams, and natural bounds of its surface. A step of ResolveFace; nobody else needs
// it.
#pragma once

#include <optional>

#include "sdk/brep/Rings.h"

namespace cadex::brep {

/// Makes an edge of the face's own along the straight way and gives its use from `from` to `to`; nothing when
/// the way has no length.
std::optional<RingUse> AddOwnEdge(Resolution& resolution, int start, int end, const gp_Pnt2d& from,
                                  const gp_Pnt2d& to);

/// The second use of a seam: back along it, moved by the ring's way round.
RingUse Back(const RingUse& seam, const gp_Vec2d& by);

} // namespace cadex::brep
