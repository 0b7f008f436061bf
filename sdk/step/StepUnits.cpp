#include "sdk/step/StepUnits.h"

#include <cmath>
#include <string_view>
#include <vector>

#include "sdk/text/SiPrefixes.h"

namespace cadex::step {

namespace {

constexpr double MillimetresPerMetre = 1000.0;
constexpr int MaximalNesting = 4; // of conversion-based units

double LengthFactor(const ClearText& text, RecordId unit, int nesting)
{
    bool found = false;
    if (Cursor si = text.Arguments(unit, "SI_UNIT", found); found) {
        // A simple instance has the derived dimensions first.
        if (si.Next() == Cursor::Kind::Omitted) {
            Cursor ahead = si;
            ahead.Skip();
            if (ahead.Next() != Cursor::Kind::Enumerator || Cursor(ahead).Enumerator() != "METRE") {
                si.Skip();
            }
        }
        // Some writers leave the prefix out where they mean none: SI_UNIT(.METRE.).
        if (si.Next() == Cursor::Kind::Enumerator && Cursor(si).Enumerator() == "METRE") {
            return MillimetresPerMetre;
        }
        const double prefix =
            si.Next() == Cursor::Kind::Enumerator ? text::SiPrefixOf(Cursor(si).Enumerator()).factor : 1.0;
        si.Skip();
        return si.Enumerator() == "METRE" ? prefix * MillimetresPerMetre : 0.0;
    }
    Cursor conversion = text.Arguments(unit, "CONVERSION_BASED_UNIT", found);
    if (!found || nesting > MaximalNesting) {
        return 0.0;
    }
    conversion.Skip();
    const RecordId measure = conversion.Reference();
    for (const std::string_view type : {"LENGTH_MEASURE_WITH_UNIT", "MEASURE_WITH_UNIT"}) {
        Cursor arguments = text.Arguments(measure, type, found);
        if (!found || !arguments.More()) {
            continue;
        }
        const bool typed = !arguments.EnterTyped().empty();
        const double value = arguments.Real();
        if (typed) {
            arguments.Leave();
        }
        const double factor = LengthFactor(text, arguments.Reference(), nesting + 1);
        return arguments.Failed() || !(value > 0.0) ? 0.0 : value * factor;
    }
    return 0.0;
}

} // namespace

double LengthUnitFactor(const ClearText& text, RecordId unit)
{
    return LengthFactor(text, unit, 0);
}

double MeasureFactor(const ClearText& text, RecordId unit)
{
    if (const double length = LengthUnitFactor(text, unit); length > 0.0) {
        return length;
    }
    bool found = false;
    Cursor derived = text.Arguments(unit, "DERIVED_UNIT", found);
    std::vector<RecordId> elements;
    derived.References(elements);
    double factor = 1.0;
    for (const RecordId element : elements) {
        Cursor arguments = text.Arguments(element, "DERIVED_UNIT_ELEMENT", found);
        const double length = LengthUnitFactor(text, arguments.Reference());
        const double exponent = arguments.Real();
        if (!found || !(length > 0.0)) {
            return 1.0;
        }
        factor *= std::pow(length, exponent);
    }
    return factor;
}

double ContextLengthFactor(const ClearText& text, RecordId context)
{
    bool found = false;
    Cursor arguments = text.Arguments(context, "GLOBAL_UNIT_ASSIGNED_CONTEXT", found);
    std::vector<RecordId> units;
    arguments.References(units);
    for (const RecordId unit : units) {
        if (const double factor = LengthUnitFactor(text, unit); factor > 0.0) {
            return factor;
        }
    }
    return 0.0;
}

} // namespace cadex::step
