// Fragments put together again, face by face, as a body without needless corners.
#pragma once

#include "sdk/ifc/IfcFragments.h"

namespace cadex::ifc::flat {

/// Appends the body to `result`. False when it has open edges. Throws Unbuildable when the budget is spent.
bool Assemble(Budget& budget, const Fragments& fragments, Polyhedron& result);

} // namespace cadex::ifc::flat
