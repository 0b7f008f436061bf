#include "sdk/step/StepUnits.h"

#include <array>
#include <cmath>
#include <string_view>
#include <vector>

#include "sdk/text/SiPrefixes.h"

namespace cadex::step {

namespace {

constexpr double MillimetresPerMetre = 1000.0;
constexpr int MaximalNesting = 4; // of conversion-based units

/// A quantity whose units are read: the SI unit's name, what one of it is here, and the records that give a
/// measure of it.
struct Quantity
{
    std::string_view siName;
    double siFactor;
    std::array<std::string_view, 2> measures;
};

constexpr Quantity Length{"METRE", MillimetresPerMetre, {"LENGTH_MEASURE_WITH_UNIT", "MEASURE_WITH_UNIT"}};
constexpr Quantity PlaneAngle{"RADIAN", 1.0, {"PLANE_ANGLE_MEASURE_WITH_UNIT", "MEASURE_WITH_UNIT"}};

double SiFactor(Cursor si, const Quantity& quantity)
{
    const auto isName = [&](Cursor at) {
        return at.Next() == Cursor::Kind::Enumerator && at.Enumerator() == quantity.siName;
    };
    // A simple instance has the derived dimensions first.
    if (si.Next() == Cursor::Kind::Omitted) {
        Cursor ahead = si;
        ahead.Skip();
        if (!isName(ahead)) {
            si.Skip();
        }
    }
    // Some writers leave the prefix out where they mean none: SI_UNIT(.METRE.).
    if (isName(si)) {
        return quantity.siFactor;
    }
    const double prefix =
        si.Next() == Cursor::Kind::Enumerator ? text::SiPrefixOf(Cursor(si).Enumerator()).factor : 1.0;
    si.Skip();
    return isName(si) ? prefix * quantity.siFactor : 0.0;
}

double UnitFactor(const ClearText& text, RecordId unit, const Quantity& quantity, int nesting = 0)
{
    bool found = false;
    if (const Cursor si = text.Arguments(unit, "SI_UNIT", found); found) {
        return SiFactor(si, quantity);
    }
    Cursor conversion = text.Arguments(unit, "CONVERSION_BASED_UNIT", found);
    if (!found || nesting > MaximalNesting) {
        return 0.0;
    }
    conversion.Skip();
    const RecordId measure = conversion.Reference();
    for (const std::string_view type : quantity.measures) {
        Cursor arguments = text.Arguments(measure, type, found);
        if (!found || !arguments.More()) {
            continue;
        }
        const bool typed = !arguments.EnterTyped().empty();
        const double value = arguments.Real();
        if (typed) {
            arguments.Leave();
        }
        const double factor = value * UnitFactor(text, arguments.Reference(), quantity, nesting + 1);
        return !arguments.Failed() && factor > 0.0 && std::isfinite(factor) ? factor : 0.0;
    }
    return 0.0;
}

} // namespace

double LengthUnitFactor(const ClearText& text, RecordId unit)
{
    return UnitFactor(text, unit, Length);
}

double AngleUnitFactor(const ClearText& text, RecordId unit)
{
    return UnitFactor(text, unit, PlaneAngle);
}

double MeasureFactor(const ClearText& text, RecordId unit)
{
    if (const double length = LengthUnitFactor(text, unit); length > 0.0) {
        return length;
    }
    bool found = false;
    Cursor derived = text.Arguments(unit, "DERIVED_UNIT", found);
    const std::vector<RecordId> elements = derived.References();
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
    const std::vector<RecordId> units = arguments.References();
    for (const RecordId unit : units) {
        if (const double factor = LengthUnitFactor(text, unit); factor > 0.0) {
            return factor;
        }
    }
    return 0.0;
}

} // namespace cadex::step
