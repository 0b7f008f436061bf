// Textures of an appearance, in order of addition.
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>

#include <cadex/ModelData_BaseObject.hxx>

namespace cadex {

class ModelData_Texture;
class ModelData_TextureVisitor;

class CADEX_EXPORT ModelData_TextureSet : public ModelData_BaseObject
{
public:
    ModelData_TextureSet() = default; ///< null handle
    ModelData_TextureSet(initialized);

    /// Visits each texture in order of addition.
    void Accept(ModelData_TextureVisitor& theVisitor) const;
    /// Appends a texture; a null one is not added.
    void Add(const ModelData_Texture& theTexture);
    std::size_t NumberOfTextures() const;
    bool IsEmpty() const { return NumberOfTextures() == 0; }

    static IdType GetTypeId() { return internal::TypeTextureSet; }
};

} // namespace cadex
