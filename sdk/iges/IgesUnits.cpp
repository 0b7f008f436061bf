#include "sdk/iges/IgesUnits.h"

namespace cadex::iges {

namespace {

struct Entry
{
    Base_LengthUnit unit;
    IgesUnit iges;
};

// NOTE: flags and names of IGES 5.3, section 2.2.4.3.14 and 2.2.4.3.15.
constexpr Entry Units[] = {
    {Base_LU_Millimeters, {2, "MM", 1}},    {Base_LU_Centimeters, {10, "CM", 10}},
    {Base_LU_Meters, {6, "M", 1e3}},        {Base_LU_Inches, {1, "INCH", 25.4}},
    {Base_LU_Feets, {4, "FT", 304.8}},      {Base_LU_Yards, {4, "FT", 304.8}},
    {Base_LU_Micrometers, {9, "UM", 1e-3}}, {Base_LU_Decimeters, {10, "CM", 10}},
    {Base_LU_Kilometers, {7, "KM", 1e6}},   {Base_LU_Mils, {8, "MIL", 0.0254}},
    {Base_LU_Miles, {5, "MI", 1609344}},
};

} // namespace

IgesUnit IgesUnitOf(Base_LengthUnit unit)
{
    for (const Entry& entry : Units) {
        if (entry.unit == unit) {
            return entry.iges;
        }
    }
    return Units[0].iges;
}

} // namespace cadex::iges
