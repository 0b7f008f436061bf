#pragma once

#include "host/ZemtarCoreExport.h"
#include "host/enumLengthUnit.h"

namespace Zemtar {

/// A factor between units as a fraction, so that a conversion is rounded as little as can be: millimetres are
/// divided by 1000, not multiplied by a rounded 0.001.
struct ZEMTAR_CORE_EXPORT CZemtarLengthRatio
{
    double numerator = 1.0;
    double denominator = 1.0;

    double Apply(double length) const { return length * numerator / denominator; }
    bool IsOne() const { return numerator == denominator; }
};

/// The unit that lengths are given in: metres by default, as in documents.
class ZEMTAR_CORE_EXPORT CZemtarUnit
{
public:
    CZemtarUnit() = default;
    CZemtarUnit(enumLengthUnit unit) : m_lengthUnit(unit) {}

    enumLengthUnit GetLengthUnit() const { return m_lengthUnit; }
    void SetLengthUnit(enumLengthUnit unit) { m_lengthUnit = unit; }

    /// Gives the length of one unit in metres as a fraction of whole numbers; one for a number that is no
    /// unit.
    static CZemtarLengthRatio MetreRatio(enumLengthUnit unit);
    /// Gives the same as one rounded number.
    static double MetresPerUnit(enumLengthUnit unit) { return MetreRatio(unit).Apply(1.0); }

private:
    enumLengthUnit m_lengthUnit = eLengthUnitMetre;
};

} // namespace Zemtar
