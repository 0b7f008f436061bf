#pragma once

#include "apps/render/SceneModel.h"

#include <QOpenGLFunctions_3_3_Core>
#include <QString>

#include <vector>

class ShapeData;

/// A model's buffers and textures on the graphics card: each shape once, in one of two arenas (with and
/// without texture coordinates), 16-bit indices where they suffice, and a buffer texture with the placement
/// and colour of each instance. Every call needs the OpenGL context that it was made in to be current.
class GpuScene
{
public:
    using Gl = QOpenGLFunctions_3_3_Core;

    explicit GpuScene(Gl& gl) : m_gl(gl) {}
    ~GpuScene() { Release(); }
    GpuScene(const GpuScene&) = delete;
    GpuScene& operator=(const GpuScene&) = delete;

    /// Uploads a model in place of the earlier one; the model must outlive its use here. Gives an empty text
    /// or, with nothing held, why it did not fit.
    QString Upload(const SceneModel& model, const Vec3& origin);
    /// Finds and uploads the feature edges, once for a model.
    void NeedEdges();
    /// Finds which shapes bound volumes, once for a model.
    void NeedSolids();
    /// Takes the places of the model's instances anew.
    void UpdateInstances(const Vec3& origin);
    void Release();

    /// What is drawn of a shape.
    enum PartKind
    {
        PartFaces,
        PartSegments,
        PartEdges,
        PartTangents,
        PartCount
    };
    /// Gives the number of indices of a part.
    std::uint32_t IndexCount(std::uint32_t shape, PartKind part) const;
    /// Draws indices `first` to before `first + count` of a shape's part, once for each of the instance
    /// numbers that stand in the bound GL_ARRAY_BUFFER from `ids` (a number of entries) on.
    void Draw(std::uint32_t shape, PartKind part, std::uint32_t first, std::uint32_t count, std::uint32_t ids,
              std::uint32_t instances);

    /// 1 for a shape that bounds a volume, wound outwards, -1 for one that is wound inwards, 0 for open ones,
    /// and before `NeedSolids`.
    int SolidOf(std::uint32_t shape) const { return m_shapes[shape].solid; }
    GLuint InstanceTexture() const { return m_instanceTexture; }
    /// Gives the texture of that number; 0 when its file could not be read.
    GLuint Texture(int number) const;
    /// Gives the bytes of all buffers and textures.
    std::uint64_t Bytes() const { return m_bytes; }

private:
    struct Arena
    {
        GLuint vertices = 0;
        GLuint indices = 0;
        GLuint edges = 0;
        GLuint faceState = 0; ///< vertex array objects
        GLuint edgeState = 0;
        std::size_t vertexBytes = 0;
        std::size_t indexBytes = 0;
    };
    struct Part
    {
        std::size_t offset = 0; ///< in bytes
        std::uint32_t count = 0;
    };
    struct Placed
    {
        bool textured = false;
        GLenum indexType = 0;
        std::uint32_t baseVertex = 0;
        Part parts[PartCount];
        int solid = 0;
    };

    void LayOut();
    bool Allocate();
    void DeclareState(GLuint state, const Arena& arena, GLuint indices, bool textured);
    void UploadShape(std::uint32_t number, const ShapeData& data);
    void UploadIndices(const Placed& placed, Part& part, const std::vector<std::uint32_t>& indices,
                       std::size_t offset);
    std::vector<float> InstanceTexels(const Vec3& origin) const;
    bool UploadInstances(const Vec3& origin);
    void UploadTextures();

    Gl& m_gl;
    const SceneModel* m_model = nullptr;
    Arena m_arenas[2];
    std::vector<Placed> m_shapes;
    std::vector<GLuint> m_textures;
    GLuint m_instanceBuffer = 0;
    GLuint m_instanceTexture = 0;
    std::uint64_t m_bytes = 0;
    bool m_hasEdges = false;
    bool m_hasSolids = false;
    std::vector<std::uint16_t> m_shortIndices;
};
