// Pair of doubles, used for texture coordinates.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/internal/BasePoint.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_Point2d : public internal::ModelData_BasePoint2d<double>
{
public:
    constexpr ModelData_Point2d() = default; ///< zeros
    constexpr ModelData_Point2d(double theX, double theY) : ModelData_BasePoint2d(theX, theY) {}
};

} // namespace cadex
