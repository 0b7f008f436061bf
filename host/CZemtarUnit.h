#pragma once

#include "host/enumLengthUnit.h"

namespace Zemtar {

/// The unit that lengths are given in: metres by default, as in documents.
class CZemtarUnit
{
public:
    CZemtarUnit() = default;
    CZemtarUnit(enumLengthUnit unit) : m_lengthUnit(unit) {}

    enumLengthUnit GetLengthUnit() const { return m_lengthUnit; }
    void SetLengthUnit(enumLengthUnit unit) { m_lengthUnit = unit; }

    /// Gives the length of one unit in metres, exact to the last bit of a double; 1 for a number that is no
    /// unit.
    static double MetresPerUnit(enumLengthUnit unit);

private:
    enumLengthUnit m_lengthUnit = eLengthUnitMetre;
};

} // namespace Zemtar
