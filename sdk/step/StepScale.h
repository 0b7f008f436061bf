// Units of a representation's context.
#pragma once

#include "sdk/step/StepText.h"

namespace cadex::step {

struct StepScale
{
    double length = 1; ///< millimetres in one unit of length
    double angle = 1;  ///< radians in one unit of plane angle

    bool operator==(const StepScale&) const = default;
};

/// Of a representation's context; what it does not give is millimetres and radians.
StepScale ContextScale(const ClearText& text, RecordId context);

} // namespace cadex::step
