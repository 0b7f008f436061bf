// Common base of triangle, polyline and point sets.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_BaseObject.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_PolyShape : public ModelData_BaseObject
{
public:
    ModelData_PolyShape() = default;
};

} // namespace cadex
