#include "sdk/step/StepScale.h"

#include <cmath>
#include <vector>

#include "sdk/step/StepUnits.h"

namespace cadex::step {

namespace {

constexpr int MaximalNesting = 4; // of conversion-based units

// Radians in one of the unit; 0 when it is none of plane angle.
double AngleFactor(const ClearText& text, RecordId unit, int nesting)
{
    bool found = false;
    text.Arguments(unit, "PLANE_ANGLE_UNIT", found);
    if (!found || nesting > MaximalNesting) {
        return 0;
    }
    Cursor conversion = text.Arguments(unit, "CONVERSION_BASED_UNIT", found);
    if (!found) {
        return 1; // .RADIAN.
    }
    conversion.Skip();
    const RecordId measure = conversion.Reference();
    for (const std::string_view type : {"PLANE_ANGLE_MEASURE_WITH_UNIT", "MEASURE_WITH_UNIT"}) {
        Cursor arguments = text.Arguments(measure, type, found);
        if (!found || !arguments.More()) {
            continue;
        }
        const bool typed = !arguments.EnterTyped().empty();
        const double value = arguments.Real();
        if (typed) {
            arguments.Leave();
        }
        const double factor = value * AngleFactor(text, arguments.Reference(), nesting + 1);
        return !arguments.Failed() && factor > 0 && std::isfinite(factor) ? factor : 0;
    }
    return 0;
}

} // namespace

StepScale ContextScale(const ClearText& text, RecordId context)
{
    StepScale scale;
    if (const double length = ContextLengthFactor(text, context); length > 0) {
        scale.length = length;
    }
    bool found = false;
    Cursor arguments = text.Arguments(context, "GLOBAL_UNIT_ASSIGNED_CONTEXT", found);
    std::vector<RecordId> units;
    arguments.References(units);
    for (const RecordId unit : units) {
        if (const double angle = AngleFactor(text, unit, 0); angle > 0) {
            scale.angle = angle;
            break;
        }
    }
    return scale;
}

} // namespace cadex::step
