// Visits the textures of a set by their concrete class.
#pragma once

#include <cadex/Base_Export.hxx>

namespace cadex {

class ModelData_FileTexture;
class ModelData_PixMapTexture;

class CADEX_EXPORT ModelData_TextureVisitor
{
public:
    virtual ~ModelData_TextureVisitor() = default;
    virtual void operator()(const ModelData_FileTexture& theTexture) = 0;
    virtual void operator()(const ModelData_PixMapTexture& theTexture) = 0;
};

} // namespace cadex
