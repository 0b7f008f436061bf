#include "sdk/ifc/IfcUnits.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "sdk/text/SiPrefixes.h"

namespace cadex::ifc {
namespace {

struct Symbol
{
    std::string_view name;
    const char* symbol;
};
constexpr Symbol SiSymbols[] = {
    {"AMPERE", "A"},        {"BECQUEREL", "Bq"},      {"CANDELA", "cd"}, {"COULOMB", "C"},
    {"CUBIC_METRE", "m³"},  {"DEGREE_CELSIUS", "°C"}, {"FARAD", "F"},    {"GRAM", "g"},
    {"GRAY", "Gy"},         {"HENRY", "H"},           {"HERTZ", "Hz"},   {"JOULE", "J"},
    {"KELVIN", "K"},        {"LUMEN", "lm"},          {"LUX", "lx"},     {"METRE", "m"},
    {"MOLE", "mol"},        {"NEWTON", "N"},          {"OHM", "Ω"},      {"PASCAL", "Pa"},
    {"RADIAN", "rad"},      {"SECOND", "s"},          {"SIEMENS", "S"},  {"SIEVERT", "Sv"},
    {"SQUARE_METRE", "m²"}, {"STERADIAN", "sr"},      {"TESLA", "T"},    {"VOLT", "V"},
    {"WATT", "W"},          {"WEBER", "Wb"}};
constexpr Symbol ConversionSymbols[] = {{"DEGREE", "°"},        {"INCH", "in"},        {"FOOT", "ft"},
                                        {"YARD", "yd"},         {"MILE", "mi"},        {"MINUTE", "min"},
                                        {"HOUR", "h"},          {"DAY", "d"},          {"POUND", "lb"},
                                        {"OUNCE", "oz"},        {"LITRE", "l"},        {"SQUARE INCH", "in²"},
                                        {"SQUARE FOOT", "ft²"}, {"CUBIC INCH", "in³"}, {"CUBIC FOOT", "ft³"},
                                        {"GON", "gon"},         {"FAHRENHEIT", "°F"}};

std::string UpperCase(std::string text)
{
    for (char& c : text) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    }
    return text;
}

/// The factor of a named unit to its SI unit without prefix: metres, radians. 0 when the chain of definitions
/// does not end in one.
double FactorToSi(const Entity& unit, int depth = 0)
{
    if (unit.Is(Type::IfcSIUnit)) {
        return text::SiPrefixOf(unit.Enumeration(2)).factor;
    }
    const bool converted =
        unit.Is(Type::IfcConversionBasedUnit) || unit.Is(Type::IfcConversionBasedUnitWithOffset);
    if (!converted || depth > 8) {
        return 0;
    }
    const Entity measure = unit.Ref(3);
    return measure.Real(0, 0) * FactorToSi(measure.Ref(1), depth + 1);
}

std::string Power(int exponent)
{
    static constexpr const char* Digits[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    if (exponent == 1) {
        return {};
    }
    return exponent < 10 ? std::string(Digits[exponent]) : std::string("^").append(std::to_string(exponent));
}

/// "W" and "m²·K" out of (watt, 1), (square metre, -1), (kelvin, -1): the two sides of the fraction.
std::string DerivedSymbol(const Entity& unit)
{
    std::string above;
    std::string below;
    int belowCount = 0;
    for (Id id : unit.Refs(0)) {
        const Entity element = unit.File().Get(id);
        const auto exponent = static_cast<int>(element.Integer(1, 1));
        const std::string symbol = UnitSymbol(element.Ref(0));
        if (symbol.empty() || exponent == 0 || !element.Is(Type::IfcDerivedUnitElement)) {
            return {};
        }
        std::string& side = exponent > 0 ? above : below;
        belowCount += exponent < 0 ? 1 : 0;
        side += (side.empty() ? "" : "·") + symbol + Power(std::min(std::abs(exponent), 99));
    }
    if (below.empty()) {
        return above;
    }
    std::string symbol = above.empty() ? "1" : above;
    symbol.append(belowCount > 1 ? "/(" : "/").append(below).append(belowCount > 1 ? ")" : "");
    return symbol;
}

bool IsNamed(const Entity& unit)
{
    return unit.Is(Type::IfcSIUnit) || unit.Is(Type::IfcConversionBasedUnit) ||
           unit.Is(Type::IfcConversionBasedUnitWithOffset) || unit.Is(Type::IfcContextDependentUnit);
}

Entity FirstUnitAssignment(const IfcFile& file)
{
    for (const Id project : file.IdsOf(Type::IfcProject)) {
        const Entity assignment = file.Get(project).Ref(8);
        if (assignment.Is(Type::IfcUnitAssignment)) {
            return assignment;
        }
    }
    const std::vector<Id> assignments = file.IdsOf(Type::IfcUnitAssignment);
    return assignments.empty() ? Entity() : file.Get(assignments.front());
}

} // namespace

std::string UnitSymbol(const Entity& unit)
{
    if (unit.Is(Type::IfcSIUnit)) {
        const char* prefix = text::SiPrefixOf(unit.Enumeration(2)).symbol;
        for (const Symbol& symbol : SiSymbols) {
            if (symbol.name == unit.Enumeration(3)) {
                return std::string(prefix) + symbol.symbol;
            }
        }
        return {};
    }
    if (unit.Is(Type::IfcDerivedUnit)) {
        return DerivedSymbol(unit);
    }
    if (unit.Is(Type::IfcMonetaryUnit)) {
        const std::string_view currency = unit.Enumeration(0); // an enumeration in IFC2X3, a label in IFC4
        return currency.empty() ? unit.Text(0).ToUTF8() : std::string(currency);
    }
    if (IsNamed(unit)) {
        std::string name = unit.Text(2).ToUTF8();
        for (const Symbol& symbol : ConversionSymbols) {
            if (symbol.name == UpperCase(name)) {
                return symbol.symbol;
            }
        }
        return name;
    }
    return {};
}

ProjectUnits ReadProjectUnits(const IfcFile& file)
{
    ProjectUnits units;
    const Entity assignment = FirstUnitAssignment(file);
    for (Id id : assignment.Refs(0)) {
        const Entity unit = file.Get(id);
        const std::string kind(unit.Is(Type::IfcMonetaryUnit) ? std::string_view("MONETARYUNIT")
                                                              : unit.Enumeration(1));
        const std::string symbol = UnitSymbol(unit);
        if (!kind.empty() && !symbol.empty()) {
            units.symbols.emplace(kind, symbol);
        }
        const double factor = IsNamed(unit) ? FactorToSi(unit) : 0;
        if (kind == "LENGTHUNIT" && factor > 0) {
            // 0.001 * 1000 is exactly 1, and so for every prefix in use
            units.toMillimetres = factor * 1000;
        } else if (kind == "PLANEANGLEUNIT" && factor > 0) {
            units.toRadians = factor;
        }
    }
    return units;
}

std::string MeasureSymbol(const ProjectUnits& units, std::string_view measureType)
{
    constexpr std::string_view Suffix = "MEASURE";
    if (measureType.substr(0, 3) != "IFC" || measureType.size() < 3 + Suffix.size() ||
        measureType.substr(measureType.size() - Suffix.size()) != Suffix) {
        return {};
    }
    std::string_view kind = measureType.substr(3, measureType.size() - 3 - Suffix.size());
    for (std::string_view narrowing : {"POSITIVE", "NONNEGATIVE"}) {
        if (kind.substr(0, narrowing.size()) == narrowing) {
            kind.remove_prefix(narrowing.size());
        }
    }
    const auto found = units.symbols.find(std::string(kind) + "UNIT");
    return found == units.symbols.end() ? std::string() : found->second;
}

} // namespace cadex::ifc
