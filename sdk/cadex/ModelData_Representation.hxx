// Common base of the representations of a part.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_BaseObject.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_Representation : public ModelData_BaseObject
{
public:
    ModelData_Representation() = default;
};

} // namespace cadex
