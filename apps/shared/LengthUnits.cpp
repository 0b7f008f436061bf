#include "apps/shared/LengthUnits.h"

#include <QStringList>

#include <algorithm>

using namespace Zemtar;

const std::vector<LengthUnit>& AllLengthUnits()
{
    static const std::vector<LengthUnit> units = {
        {eLengthUnitMicrometre, "um", "micrometres"},
        {eLengthUnitMillimetre, "mm", "millimetres"},
        {eLengthUnitCentimetre, "cm", "centimetres"},
        {eLengthUnitDecimetre, "dm", "decimetres"},
        {eLengthUnitMetre, "m", "metres"},
        {eLengthUnitKilometre, "km", "kilometres"},
        {eLengthUnitMil, "mil", "mils"},
        {eLengthUnitInch, "in", "inches"},
        {eLengthUnitFoot, "ft", "feet"},
        {eLengthUnitYard, "yd", "yards"},
        {eLengthUnitMile, "mi", "miles"},
    };
    return units;
}

QString LengthUnitSymbol(enumLengthUnit unit)
{
    const auto& units = AllLengthUnits();
    const auto found =
        std::find_if(units.begin(), units.end(), [&](const LengthUnit& entry) { return entry.unit == unit; });
    return found == units.end() ? QString() : QString::fromLatin1(found->symbol);
}

bool LengthUnitBySymbol(const QString& symbol, enumLengthUnit& unit)
{
    const auto& units = AllLengthUnits();
    const auto found = std::find_if(units.begin(), units.end(), [&](const LengthUnit& entry) {
        return symbol.compare(QLatin1String(entry.symbol), Qt::CaseInsensitive) == 0;
    });
    if (found == units.end()) {
        return false;
    }
    unit = found->unit;
    return true;
}

QString LengthUnitSymbols()
{
    QStringList symbols;
    for (const LengthUnit& entry : AllLengthUnits()) {
        symbols << QString::fromLatin1(entry.symbol);
    }
    return symbols.join(' ');
}
