// Which records of a damaged STEP file matter.
#pragma once

#include <vector>

#include "sdk/occt/StepText.h"

namespace cadex {
namespace occt {

/// True when products, their placements or their shapes refer, over any number of steps, to one of the
/// records. What nothing of that refers to (properties, approvals, annotations, styles) may be damaged, or of
/// an edition that the kernel does not know, without harm: the kernel never looks at it. Records without a
/// number (0) always matter.
bool NeedsAnyForShapes(const StepText& text, const std::vector<StepId>& records);

} // namespace occt
} // namespace cadex
