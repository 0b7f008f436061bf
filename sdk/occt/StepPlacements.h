// Where a STEP file places an occurrence, from the text alone.
#pragma once

#include <optional>

#include <cadex/ModelData_Transformation.hxx>

#include "sdk/occt/StepStructure.h"
#include "sdk/occt/StepText.h"

namespace cadex {
namespace occt {

/// The placement of an instance in millimetres; nothing when it is not given by two axis placements (a
/// scaling operator, a mapped item, no placement at all), or when an axis placement is degenerate.
///
/// NOTE: ISO 10303-43, item_defined_transformation: the first axis placement, in the representation of the
/// placed product, goes to the second, in that of the assembly. Files with the two representations swapped
/// are common.
std::optional<ModelData_Transformation> ReadPlacement(const StepText& text, const StepStructure& structure,
                                                      const StepInstance& instance);

} // namespace occt
} // namespace cadex
