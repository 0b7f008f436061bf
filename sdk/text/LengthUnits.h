// The units of length that files can be written in, as Part 21 text.
#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>

#include <cadex/Base_LengthUnit.hxx>

namespace cadex::text {

/// A unit of length: an SI prefix, or a name for one that is converted.
struct LengthUnitText
{
    Base_LengthUnit unit;
    double millimetres;
    std::string_view prefix; ///< of the metre; empty when converted
    const char* name;        ///< of a converted unit
};

inline constexpr LengthUnitText LengthUnits[] = {
    {Base_LU_Millimeters, 1, ".MILLI.", ""},
    {Base_LU_Centimeters, 10, ".CENTI.", ""},
    {Base_LU_Meters, 1e3, "$", ""},
    {Base_LU_Inches, 25.4, "", "INCH"},
    {Base_LU_Feets, 304.8, "", "FOOT"},
    {Base_LU_Yards, 914.4, "", "YARD"},
    {Base_LU_Micrometers, 1e-3, ".MICRO.", ""},
    {Base_LU_Decimeters, 100, ".DECI.", ""},
    {Base_LU_Kilometers, 1e6, ".KILO.", ""},
    {Base_LU_Mils, 0.0254, "", "MIL"},
    {Base_LU_Miles, 1609344, "", "MILE"},
};

/// Millimetres for a value outside the enumeration.
inline const LengthUnitText& LengthUnitOf(Base_LengthUnit unit)
{
    const auto* found = std::find_if(std::begin(LengthUnits), std::end(LengthUnits),
                                     [unit](const LengthUnitText& entry) { return entry.unit == unit; });
    return found != std::end(LengthUnits) ? *found : LengthUnits[0];
}

} // namespace cadex::text
