#include "sdk/step/StepScale.h"

#include <vector>

#include "sdk/step/StepUnits.h"

namespace cadex::step {

StepScale ContextScale(const ClearText& text, RecordId context)
{
    StepScale scale;
    if (const double length = ContextLengthFactor(text, context); length > 0) {
        scale.length = length;
    }
    bool found = false;
    Cursor arguments = text.Arguments(context, "GLOBAL_UNIT_ASSIGNED_CONTEXT", found);
    const std::vector<RecordId> units = arguments.References();
    for (const RecordId unit : units) {
        if (const double angle = AngleUnitFactor(text, unit); angle > 0) {
            scale.angle = angle;
            break;
        }
    }
    return scale;
}

} // namespace cadex::step
