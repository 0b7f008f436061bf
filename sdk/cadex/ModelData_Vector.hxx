// Directions and displacements, in double and single precision.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/internal/BasePoint.hxx>

namespace cadex {

typedef internal::ModelData_BaseVector<float> ModelData_Vectorf;
typedef internal::ModelData_BaseVector<double> ModelData_Vectord;

class CADEX_EXPORT ModelData_Vector : public internal::ModelData_BaseVector<double>
{
public:
    constexpr ModelData_Vector() = default; ///< zeros
    constexpr ModelData_Vector(double theX, double theY, double theZ) : ModelData_BaseVector(theX, theY, theZ)
    {
    }
};

} // namespace cadex
