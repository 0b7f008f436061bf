// The exact shape of a part. Its content belongs to the engine that made it.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_Representation.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_BRepRepresentation : public ModelData_Representation
{
public:
    ModelData_BRepRepresentation() = default; ///< null handle

    static IdType GetTypeId() { return internal::TypeBRepRepresentation; }
};

} // namespace cadex
