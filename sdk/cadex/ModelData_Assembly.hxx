// A group of instances, in order.
//
//     ModelData_Assembly assembly("Gearbox");
//     assembly.AddInstance(ModelData_Instance(part, "left wheel"));
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>

#include <cadex/ModelData_SceneGraphElement.hxx>

namespace cadex {

class ModelData_Instance;

class CADEX_EXPORT ModelData_Assembly : public ModelData_SceneGraphElement
{
public:
    ModelData_Assembly() = default; ///< null handle
    ModelData_Assembly(initialized);
    ModelData_Assembly(const Base_UTF16String& theName);

    /// Appends an instance, which may be the child of one assembly only; a null instance is not added.
    void AddInstance(const ModelData_Instance& theInstance);
    std::size_t NumberOfInstances() const;

    static IdType GetTypeId() { return internal::TypeAssembly; }
};

} // namespace cadex
