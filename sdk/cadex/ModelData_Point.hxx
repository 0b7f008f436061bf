// Position in space, in millimetres.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/internal/BasePoint.hxx>

namespace cadex {

typedef internal::ModelData_BasePoint<double> ModelData_Pointd;

class CADEX_EXPORT ModelData_Point : public internal::ModelData_BasePoint<double>
{
public:
    constexpr ModelData_Point() = default; ///< the origin
    constexpr ModelData_Point(double theX, double theY, double theZ) : ModelData_BasePoint(theX, theY, theZ)
    {
    }
    constexpr ModelData_Point(const ModelData_Pointd& theOther) : ModelData_BasePoint(theOther) {}
};

} // namespace cadex
