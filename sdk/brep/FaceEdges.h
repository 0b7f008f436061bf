// The edges of a body, divided as its faces need them.
#pragma once

#include <vector>

#include "sdk/brep/EdgeDiscretisation.h"
#include "sdk/brep/ResolvedFace.h"

namespace cadex::brep {

/// Divides all edges of the resolved faces, and finer where an edge's polyline, led over a curved surface,
/// would leave it by more than the chord. Throws Standard_Failure where the kernel does.
void DivideEdges(const std::vector<ResolvedFace>& faces, EdgeDiscretisation& edges);

} // namespace cadex::brep
