// Rings that go round a closed surface, and surfaces without rings: joined and bounded so that every ring
// comes back to where it starts. The steps of ResolveFace; nobody else needs them.
#pragma once

#include <vector>

#include "sdk/brep/Rings.h"

namespace cadex::brep {

/// Joins rings that go round, two by two by a seam in between, or one with a pole. Afterwards none goes
/// round.
ResolveStatus JoinWindings(Resolution& resolution, std::vector<OpenRing>& rings);

/// Whether the surface, between its natural bounds, closes on all sides, by periods and poles.
bool IsClosedSurface(const Surface& surface);

/// Adds the ring of the whole surface: along its poles, seams and natural bounds. Seams of periodic
/// directions keep out of the way of the rings that are there. Unbounded when the surface has no end.
ResolveStatus AddNaturalRing(Resolution& resolution, std::vector<OpenRing>& rings);

} // namespace cadex::brep
