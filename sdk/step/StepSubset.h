// The part of a STEP file that the kernel needs when the text alone tells what is assembled from what.
#pragma once

#include <string>

#include "sdk/step/StepStructure.h"
#include "sdk/step/StepText.h"

namespace cadex::step {

/// The file without the uses of products in others and their placements, and without the representations of
/// what is assembled; every product stands alone in it. Numbers of records stay. The representations left out
/// must hold nothing but axes (StepPlacements::AssembliesHoldAxesOnly).
std::string WithoutInstances(const ClearText& text, const StepStructure& structure);

} // namespace cadex::step
