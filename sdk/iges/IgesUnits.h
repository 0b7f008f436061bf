// The length units of IGES files.
#pragma once

#include <cadex/Base_LengthUnit.hxx>

namespace cadex::iges {

struct IgesUnit
{
    int flag;           ///< of the global section
    const char* name;   ///< likewise
    double millimetres; ///< in one unit
};

/// IGES has no decimetres and no yards: centimetres and feet take their place, as any reader sees from the
/// file. What is no unit gives millimetres.
IgesUnit IgesUnitOf(Base_LengthUnit unit);

} // namespace cadex::iges
