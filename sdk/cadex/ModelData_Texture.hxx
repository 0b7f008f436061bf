// Common base of textures.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_BaseObject.hxx>

namespace cadex {

class ModelData_TextureVisitor;

class CADEX_EXPORT ModelData_Texture : public ModelData_BaseObject
{
public:
    ModelData_Texture() = default; ///< null handle

    /// Calls the visitor's operation for the concrete class; none on a null handle.
    void Accept(ModelData_TextureVisitor& theVisitor) const;

    static IdType GetTypeId() { return internal::TypeTexture; }
};

} // namespace cadex
