// Which fragments stay when bodies are joined, cut or intersected.
#pragma once

#include <vector>

#include "sdk/ifc/IfcFragments.h"

namespace cadex::ifc::flat {

/// The operation on the body and tools that do not meet each other; one tool when the kind is no cut. Throws
/// Unbuildable when the budget is spent.
Fragments Combined(Budget& budget, BooleanKind kind, const Fragments& body,
                   const std::vector<const Fragments*>& tools);

} // namespace cadex::ifc::flat
