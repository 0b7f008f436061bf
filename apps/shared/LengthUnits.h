#pragma once

#include "host/enumLengthUnit.h"

#include <QString>

#include <vector>

/// One length unit that CAD files are written in.
struct LengthUnit
{
    Zemtar::enumLengthUnit unit;
    const char* symbol; ///< "mm", as the user writes it
    const char* name;   ///< "millimetres", in English
};

/// All units that the exporters know, from the smallest to the largest of each system.
const std::vector<LengthUnit>& AllLengthUnits();

/// Gives the usual symbol of a length unit: "mm", "in", ...; empty for a unit that is not in the list.
QString LengthUnitSymbol(Zemtar::enumLengthUnit unit);
/// Finds a unit by its symbol, in any letter case; false when no unit has it.
bool LengthUnitBySymbol(const QString& symbol, Zemtar::enumLengthUnit& unit);
/// Gives all symbols, separated by blanks, for a usage text.
QString LengthUnitSymbols();
