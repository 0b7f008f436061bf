#pragma once

/// The shader programs of the renderer, GLSL 3.30. All that draws the model shares one vertex stage, which
/// reads an instance's placement and colour from a buffer texture (four texels each: three matrix rows, the
/// colour in linear light).
namespace Shaders {

/// Where the vertex stage finds its inputs.
enum VertexAttribute
{
    AttributePosition = 0,
    AttributeNormal = 1,
    AttributeTextureCoordinate = 2,
    AttributeInstance = 3
};

/// Texture units.
enum TextureUnit
{
    UnitInstances = 0,
    UnitTexture = 1
};

extern const char* const ModelVertex;
extern const char* const FaceFragment; ///< surfaces, lit from both sides
extern const char* const LineFragment; ///< line segments in their colour
extern const char* const EdgeFragment; ///< feature edges: darker than the surface, lighter on black
extern const char* const PickFragment; ///< the instance's number plus 1
extern const char* const MaskFragment; ///< white

extern const char* const BackgroundVertex; ///< one triangle that covers the picture
extern const char* const BackgroundFragment;
extern const char* const OutlineFragment; ///< a line around the white of a mask

extern const char* const AxesVertex;
extern const char* const AxesFragment;

} // namespace Shaders
