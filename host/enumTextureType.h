#pragma once

namespace Zemtar {

/// What a texture of a basic material drives. The numbers are fixed.
enum enumTextureType
{
    eTextureAmbient = 0,
    eTextureDiffuse = 1,
    eTextureSpecular = 2,
    eTextureEmissive = 3,
    eTextureOpacity = 4,
    eTextureBump = 5,
    eTextureNormal = 6,
    eTextureReflection = 7
};

} // namespace Zemtar
