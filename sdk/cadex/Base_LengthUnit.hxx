// Length units of files. Inside the SDK every length is in millimetres.
#pragma once

namespace cadex {

enum Base_LengthUnit
{
    Base_LU_Millimeters,
    Base_LU_Centimeters,
    Base_LU_Meters,
    Base_LU_Inches,
    Base_LU_Feets,
    Base_LU_Yards,
    Base_LU_Micrometers,
    Base_LU_Decimeters,
    Base_LU_Kilometers,
    Base_LU_Mils,
    Base_LU_Miles
};

} // namespace cadex
