// Units of STEP files, as factors to millimetres.
#pragma once

#include "sdk/occt/StepText.h"

namespace cadex {
namespace occt {

/// Millimetres in one of the unit; 0 when the record is no unit of length (or not understood).
double LengthUnitFactor(const StepText& text, StepId unit);

/// Factor that takes a measure to millimetres, square or cubic millimetres: for units of length and for
/// derived units made of lengths alone. 1 for every other unit, which is left as it is.
double MeasureFactor(const StepText& text, StepId unit);

/// Millimetres in one of the length unit of a representation's context; 0 when it has none.
double ContextLengthFactor(const StepText& text, StepId context);

} // namespace occt
} // namespace cadex
