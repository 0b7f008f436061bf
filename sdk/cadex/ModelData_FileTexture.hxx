// Texture whose image is a file.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_Texture.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_FileTexture : public ModelData_Texture
{
public:
    ModelData_FileTexture() = default; ///< null handle
    explicit ModelData_FileTexture(const Base_UTF16String& theFilePath);

    /// Path of the image as the CAD file gives it; empty on a null handle.
    Base_UTF16String FilePath() const;

    static IdType GetTypeId() { return internal::TypeFileTexture; }
};

} // namespace cadex
