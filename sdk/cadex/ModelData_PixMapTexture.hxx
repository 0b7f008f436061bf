// Texture whose image lies in memory.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_PixMap.hxx>
#include <cadex/ModelData_Texture.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_PixMapTexture : public ModelData_Texture
{
public:
    ModelData_PixMapTexture() = default; ///< null handle
    ModelData_PixMapTexture(initialized);
    ModelData_PixMapTexture(const ModelData_PixMap& thePixMap);

    /// Null handle when none.
    ModelData_PixMap PixMap() const;
    void SetPixMap(const ModelData_PixMap& thePixMap);

    static IdType GetTypeId() { return internal::TypePixMapTexture; }
};

} // namespace cadex
