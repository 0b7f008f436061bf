// Loose points. The open engine makes none; importers skip them by their type id.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_PolyVertexSet.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_PolyPointSet : public ModelData_PolyVertexSet
{
public:
    ModelData_PolyPointSet() = default; ///< null handle
    explicit ModelData_PolyPointSet(initialized);

    static IdType GetTypeId() { return internal::TypePolyPointSet; }
};

} // namespace cadex
