// Units of STEP files, as factors to millimetres and radians.
#pragma once

#include "sdk/step/StepText.h"

namespace cadex::step {

/// Millimetres in one of the unit; 0 when the record is no unit of length (or not understood).
double LengthUnitFactor(const ClearText& text, RecordId unit);

/// Radians in one of the unit; 0 when the record is no unit of plane angle (or not understood).
double AngleUnitFactor(const ClearText& text, RecordId unit);

/// Factor that takes a measure to millimetres, square or cubic millimetres: for units of length and for
/// derived units made of lengths alone. 1 for every other unit, which is left as it is.
double MeasureFactor(const ClearText& text, RecordId unit);

/// Millimetres in one of the length unit of a representation's context; 0 when it has none.
double ContextLengthFactor(const ClearText& text, RecordId context);

} // namespace cadex::step
