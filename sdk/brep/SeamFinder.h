// Where a seam can run between rings that go round a closed surface. A step of ResolveFace; nobody else needs
// it.
#pragma once

#include <cstddef>
#include <vector>

#include "sdk/brep/Rings.h"

namespace cadex::brep {

/// The direction that a ring goes round in: 0 for u, 1 for v.
int AroundOf(const OpenRing& ring);

/// Going round with the material on the left, a ring in the sense of u has it above in v, one in the sense of
/// v has it below in u: whether the material is on the upper side.
bool IsLower(const OpenRing& ring);

/// Once along the ring.
gp_Vec2d RoundOf(const Surface& surface, const OpenRing& ring);

/// Lets the ring start with another use; what comes before goes on behind its end.
void StartWith(const Surface& surface, OpenRing& ring, std::size_t number);

/// One straight piece of a seam: from a vertex of a ring to one of the next ring, or to a pole.
struct Leg
{
    std::size_t exit = 0;  ///< use of the ring before that starts where the leg does
    std::size_t entry = 0; ///< use of the ring behind that starts where the leg ends
    gp_Pnt2d from;
    gp_Pnt2d to;
    OpenRing ring; ///< the ring behind, where the leg meets it; without uses: the pole
};

/// A seam from a ring that goes round to `second`, another one, or where that is null to the pole: straight
/// across where that is free, else by way of the holes that are in between, whose vertices it may use. The
/// legs in order; empty when there is no way.
std::vector<Leg> FindSeam(const Surface& surface, const OpenRing& first, const std::vector<OpenRing>& holes,
                          const OpenRing* second, const Pole* pole);

} // namespace cadex::brep
