// What a part, an instance or a set looks like: a colour or a material, and textures.
//
//     ModelData_Appearance red(ModelData_Color(1.f, 0.f, 0.f, 0.5f));
//     part.SetAppearance(red);
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>

#include <cadex/ModelData_BaseObject.hxx>
#include <cadex/ModelData_Color.hxx>
#include <cadex/ModelData_Material.hxx>
#include <cadex/ModelData_TextureSet.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_Appearance : public ModelData_BaseObject
{
public:
    ModelData_Appearance() = default; ///< null handle
    ModelData_Appearance(initialized);
    ModelData_Appearance(const ModelData_Color& theColor);
    ModelData_Appearance(const ModelData_Material& theMaterial);

    /// Colour and material exist side by side; the last one set of each kind counts.
    void Set(const ModelData_Color& theColor);
    void Set(const ModelData_Material& theMaterial);

    /// True when there is a material or a colour; a lone colour becomes the diffuse colour of a default
    /// material. False, with the argument untouched, otherwise and on a null handle.
    bool ToMaterial(ModelData_Material& theMaterial) const;
    /// True when there is a colour, or a material, whose diffuse colour it then is.
    bool ToColor(ModelData_Color& theColor) const;

    /// Null handle when none.
    ModelData_TextureSet TextureSet() const;
    void SetTextureSet(const ModelData_TextureSet& theTextureSet);

    static IdType GetTypeId() { return internal::TypeAppearance; }
};

/// Compares content: colour, material, and the textures' identity. Compare base-class references for the
/// identity of the appearances themselves.
CADEX_EXPORT bool operator==(const ModelData_Appearance& theLeft, const ModelData_Appearance& theRight);
inline bool operator!=(const ModelData_Appearance& theLeft, const ModelData_Appearance& theRight)
{
    return !(theLeft == theRight);
}

/// Hashes content, in agreement with ==.
struct CADEX_EXPORT ModelData_AppearanceHash
{
    std::size_t operator()(const ModelData_Appearance& theAppearance) const;
};

} // namespace cadex
