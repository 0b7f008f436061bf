// Units of length as JT files name them.
#pragma once

#include <string_view>

#include <cadex/Base_LengthUnit.hxx>

namespace cadex::jt {

struct UnitName
{
    Base_LengthUnit unit;
    std::u16string_view name; ///< readers take it in any case
    double millimetres;
};

inline constexpr UnitName UnitNames[] = {
    {Base_LU_Millimeters, u"Millimeters", 1},
    {Base_LU_Centimeters, u"Centimeters", 10},
    {Base_LU_Meters, u"Meters", 1000},
    {Base_LU_Inches, u"Inches", 25.4},
    {Base_LU_Feets, u"Feet", 304.8},
    {Base_LU_Yards, u"Yards", 914.4},
    {Base_LU_Micrometers, u"Micrometers", 1e-3},
    {Base_LU_Decimeters, u"Decimeters", 100},
    {Base_LU_Kilometers, u"Kilometers", 1e6},
    {Base_LU_Mils, u"Mils", 0.0254},
    {Base_LU_Miles, u"Miles", 1609344},
};

} // namespace cadex::jt
