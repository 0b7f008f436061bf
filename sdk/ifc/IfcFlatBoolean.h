// Boolean operations on closed bodies with flat faces, of any form: what the faster cut of convex bodies does
// not take, and a hundred times faster than the kernel's operation where walls have many openings.
#pragma once

#include <vector>

#include "sdk/ifc/IfcFacets.h"
#include "sdk/ifc/IfcSolids.h"

namespace cadex::ifc {

/// The operation on the body and each of the tools in turn. The result is closed: each edge runs once each
/// way, and no corner lies on the edge of another face. False, with `result` unspecified, when a body is open
/// or the result would be; the kernel is asked then. An empty result is one without loops.
bool CombineFlat(Context& context, BooleanKind kind, const Polyhedron& body,
                 const std::vector<const Polyhedron*>& tools, Polyhedron& result);

/// The tool with those corners that are within `precision` of a plane of the body's faces, there where the
/// face lies, moved into that plane: an opening that ends a hair before the wall's end shall leave no skin.
Polyhedron Snapped(const Polyhedron& tool, const Polyhedron& body, double precision);

} // namespace cadex::ifc
