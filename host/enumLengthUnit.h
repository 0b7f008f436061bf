#pragma once

namespace Zemtar {

/// Units of length. The numbers are fixed: documents store them and exporters have tables of them.
enum enumLengthUnit
{
    eLengthUnitAngstrom = 0,
    eLengthUnitNanometre = 1,
    eLengthUnitMicrometre = 2,
    eLengthUnitMillimetre = 3,
    eLengthUnitCentimetre = 4,
    eLengthUnitDecimetre = 5,
    eLengthUnitMetre = 6,
    eLengthUnitDecametre = 7,
    eLengthUnitHectometre = 8,
    eLengthUnitKilometre = 9,
    eLengthUnitMegametre = 10,
    eLengthUnitGigametre = 11,
    eLengthUnitMicroinch = 12,
    eLengthUnitMil = 13,
    eLengthUnitInch = 14,
    eLengthUnitFoot = 15,
    eLengthUnitYard = 16,
    eLengthUnitRod = 17,
    eLengthUnitFurlong = 18,
    eLengthUnitMile = 19
};

} // namespace Zemtar
