#include "apps/render/GpuScene.h"

#include "apps/render/Shaders.h"
#include "apps/render/ShapeData.h"
#include "apps/render/SolidShapes.h"
#include "apps/render/TextureFile.h"

#include <QCoreApplication>

#include <cstddef>

namespace {

constexpr std::uint32_t MostShortVertices = 65536;
constexpr std::size_t TexelBytes = 4 * sizeof(float);
constexpr std::size_t TexelsPerInstance = 4;

std::size_t IndexBytes(GLenum type)
{
    return type == GL_UNSIGNED_SHORT ? 2 : 4;
}

/// NOTE: IEC 61966-2-1, the transfer function of sRGB.
float Linear(float encoded)
{
    return encoded <= 0.04045F ? encoded / 12.92F : std::pow((encoded + 0.055F) / 1.055F, 2.4F);
}

const void* Offset(std::size_t bytes)
{
    return reinterpret_cast<const void*>(bytes);
}

void ClearErrors(GpuScene::Gl& gl)
{
    // A lost context reports errors without end.
    for (int i = 0; i < 16 && gl.glGetError() != GL_NO_ERROR; ++i) {
    }
}

} // namespace

QString GpuScene::Upload(const SceneModel& model, const Vec3& origin)
{
    Release();
    m_model = &model;
    if (model.Instances().empty()) {
        return {};
    }
    ClearErrors(m_gl);
    LayOut();
    if (!Allocate() || !UploadInstances(origin)) {
        Release();
        return QCoreApplication::translate("Renderer", "The model does not fit into the graphics memory.");
    }
    ShapeData data;
    for (std::uint32_t i = 0; i < model.Shapes().size(); ++i) {
        data.Build(model.Shapes()[i]);
        UploadShape(i, data);
    }
    UploadTextures();
    return {};
}

void GpuScene::LayOut()
{
    m_shapes.clear();
    for (const Shape& shape : m_model->Shapes()) {
        Placed placed;
        placed.textured = shape.textureCoordinates != nullptr;
        placed.indexType = shape.vertices <= MostShortVertices ? GL_UNSIGNED_SHORT : GL_UNSIGNED_INT;
        Arena& arena = m_arenas[placed.textured ? 1 : 0];
        const std::size_t vertexSize = placed.textured ? sizeof(TexturedVertex) : sizeof(PackedVertex);
        placed.baseVertex = static_cast<std::uint32_t>(arena.vertexBytes / vertexSize);
        arena.vertexBytes += vertexSize * shape.vertices;
        const auto reserve = [&](Part& part, std::size_t indices) {
            part.offset = arena.indexBytes;
            arena.indexBytes += (indices * IndexBytes(placed.indexType) + 3) / 4 * 4;
        };
        reserve(placed.parts[PartFaces], std::size_t{3} * shape.triangles);
        reserve(placed.parts[PartSegments], std::size_t{2} * shape.segments);
        m_shapes.push_back(placed);
    }
}

bool GpuScene::Allocate()
{
    for (Arena& arena : m_arenas) {
        if (arena.vertexBytes == 0) {
            continue;
        }
        m_gl.glGenBuffers(1, &arena.vertices);
        m_gl.glGenBuffers(1, &arena.indices);
        m_gl.glGenVertexArrays(1, &arena.faceState);
        DeclareState(arena.faceState, arena, arena.indices, &arena == &m_arenas[1]);
        m_gl.glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(arena.vertexBytes), nullptr,
                          GL_STATIC_DRAW);
        m_gl.glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(arena.indexBytes), nullptr,
                          GL_STATIC_DRAW);
        m_bytes += arena.vertexBytes + arena.indexBytes;
    }
    m_gl.glBindVertexArray(0);
    return m_gl.glGetError() == GL_NO_ERROR;
}

void GpuScene::DeclareState(GLuint state, const Arena& arena, GLuint indices, bool textured)
{
    const GLsizei stride = textured ? sizeof(TexturedVertex) : sizeof(PackedVertex);
    m_gl.glBindVertexArray(state);
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, arena.vertices);
    m_gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indices);
    m_gl.glEnableVertexAttribArray(Shaders::AttributePosition);
    m_gl.glVertexAttribPointer(Shaders::AttributePosition, 3, GL_FLOAT, GL_FALSE, stride, nullptr);
    m_gl.glEnableVertexAttribArray(Shaders::AttributeNormal);
    m_gl.glVertexAttribPointer(Shaders::AttributeNormal, 4, GL_INT_2_10_10_10_REV, GL_TRUE, stride,
                               Offset(offsetof(PackedVertex, normal)));
    if (textured) {
        m_gl.glEnableVertexAttribArray(Shaders::AttributeTextureCoordinate);
        m_gl.glVertexAttribPointer(Shaders::AttributeTextureCoordinate, 2, GL_FLOAT, GL_FALSE, stride,
                                   Offset(offsetof(TexturedVertex, u)));
    }
    m_gl.glEnableVertexAttribArray(Shaders::AttributeInstance);
    m_gl.glVertexAttribDivisor(Shaders::AttributeInstance, 1);
}

void GpuScene::UploadShape(std::uint32_t number, const ShapeData& data)
{
    Placed& placed = m_shapes[number];
    if (data.Vertices().empty()) {
        return;
    }
    const Arena& arena = m_arenas[placed.textured ? 1 : 0];
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, arena.vertices);
    const auto upload = [&](const auto& vertices) {
        const std::size_t size = sizeof(vertices[0]);
        m_gl.glBufferSubData(GL_ARRAY_BUFFER, static_cast<GLintptr>(placed.baseVertex * size),
                             static_cast<GLsizeiptr>(vertices.size() * size), vertices.data());
    };
    placed.textured ? upload(data.TexturedVertices()) : upload(data.Vertices());
    m_gl.glBindVertexArray(arena.faceState);
    for (const PartKind part : {PartFaces, PartSegments}) {
        UploadIndices(placed, placed.parts[part], part == PartFaces ? data.Triangles() : data.Segments(),
                      placed.parts[part].offset);
    }
    m_gl.glBindVertexArray(0);
}

void GpuScene::UploadIndices(const Placed& placed, Part& part, const std::vector<std::uint32_t>& indices,
                             std::size_t offset)
{
    part.offset = offset;
    part.count = static_cast<std::uint32_t>(indices.size());
    const void* data = indices.data();
    if (placed.indexType == GL_UNSIGNED_SHORT) {
        m_shortIndices.assign(indices.begin(), indices.end());
        data = m_shortIndices.data();
    }
    m_gl.glBufferSubData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLintptr>(offset),
                         static_cast<GLsizeiptr>(indices.size() * IndexBytes(placed.indexType)), data);
}

std::vector<float> GpuScene::InstanceTexels(const Vec3& origin) const
{
    const auto& instances = m_model->Instances();
    std::vector<float> texels;
    texels.reserve(instances.size() * TexelsPerInstance * 4);
    for (const Instance& instance : instances) {
        const auto& m = instance.toWorld;
        const Vec3 center = m_model->ShapeOf(instance).bounds.Center();
        const double shift[] = {origin.x, origin.y, origin.z};
        for (std::size_t row = 0; row < 3; ++row) {
            const double* r = m.data() + 4 * row;
            const double move = Dot({r[0], r[1], r[2]}, center) + r[3] - shift[row];
            texels.insert(texels.end(), {static_cast<float>(r[0]), static_cast<float>(r[1]),
                                         static_cast<float>(r[2]), static_cast<float>(move)});
        }
        const auto& color = m_model->LookOf(instance).color;
        texels.insert(texels.end(), {Linear(color[0]), Linear(color[1]), Linear(color[2]), color[3]});
    }
    return texels;
}

void GpuScene::UpdateInstances(const Vec3& origin)
{
    if (m_instanceBuffer != 0) {
        const std::vector<float> texels = InstanceTexels(origin);
        m_gl.glBindBuffer(GL_TEXTURE_BUFFER, m_instanceBuffer);
        m_gl.glBufferSubData(GL_TEXTURE_BUFFER, 0, static_cast<GLsizeiptr>(texels.size() * sizeof(float)),
                             texels.data());
    }
}

bool GpuScene::UploadInstances(const Vec3& origin)
{
    GLint limit = 0;
    m_gl.glGetIntegerv(GL_MAX_TEXTURE_BUFFER_SIZE, &limit);
    const auto& instances = m_model->Instances();
    if (instances.size() > static_cast<std::size_t>(limit) / TexelsPerInstance) {
        return false;
    }
    const std::vector<float> texels = InstanceTexels(origin);
    m_gl.glGenBuffers(1, &m_instanceBuffer);
    m_gl.glBindBuffer(GL_TEXTURE_BUFFER, m_instanceBuffer);
    m_gl.glBufferData(GL_TEXTURE_BUFFER, static_cast<GLsizeiptr>(texels.size() * sizeof(float)),
                      texels.data(), GL_STATIC_DRAW);
    m_gl.glGenTextures(1, &m_instanceTexture);
    m_gl.glBindTexture(GL_TEXTURE_BUFFER, m_instanceTexture);
    m_gl.glTexBuffer(GL_TEXTURE_BUFFER, GL_RGBA32F, m_instanceBuffer);
    m_bytes += instances.size() * TexelsPerInstance * TexelBytes;
    return m_gl.glGetError() == GL_NO_ERROR;
}

void GpuScene::UploadTextures()
{
    GLint largest = 0;
    m_gl.glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    for (const QString& file : m_model->Textures()) {
        const QImage image = ReadTexture(file, largest);
        GLuint texture = 0;
        if (!image.isNull()) {
            m_gl.glGenTextures(1, &texture);
            m_gl.glBindTexture(GL_TEXTURE_2D, texture);
            m_gl.glTexImage2D(GL_TEXTURE_2D, 0, GL_SRGB8_ALPHA8, image.width(), image.height(), 0, GL_RGBA,
                              GL_UNSIGNED_BYTE, image.constBits());
            m_gl.glGenerateMipmap(GL_TEXTURE_2D);
            m_gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
            m_gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
            m_bytes += static_cast<std::uint64_t>(image.sizeInBytes()) * 4 / 3;
        }
        m_textures.push_back(texture);
    }
}

void GpuScene::NeedEdges()
{
    if (m_hasEdges || !m_model) {
        return;
    }
    m_hasEdges = true;
    ShapeData data;
    std::vector<std::vector<std::uint32_t>> edges[2];
    edges[0].resize(m_shapes.size());
    edges[1].resize(m_shapes.size());
    std::size_t bytes[2] = {0, 0};
    for (std::size_t i = 0; i < m_shapes.size(); ++i) {
        data.Build(m_model->Shapes()[i]);
        FormEdges found = data.FindEdges();
        std::size_t& end = bytes[m_shapes[i].textured ? 1 : 0];
        edges[0][i] = std::move(found.creases);
        edges[1][i] = std::move(found.tangents);
        for (std::size_t k = 0; k < 2; ++k) {
            m_shapes[i].parts[PartEdges + k].offset = end;
            end += (edges[k][i].size() * IndexBytes(m_shapes[i].indexType) + 3) / 4 * 4;
        }
    }
    for (std::size_t a = 0; a < 2; ++a) {
        Arena& arena = m_arenas[a];
        if (bytes[a] == 0) {
            continue;
        }
        m_gl.glGenBuffers(1, &arena.edges);
        m_gl.glGenVertexArrays(1, &arena.edgeState);
        DeclareState(arena.edgeState, arena, arena.edges, a == 1);
        m_gl.glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(bytes[a]), nullptr,
                          GL_STATIC_DRAW);
        m_bytes += bytes[a];
        for (std::size_t i = 0; i < m_shapes.size(); ++i) {
            for (std::size_t k = 0; m_shapes[i].textured == (a == 1) && k < 2; ++k) {
                Part& part = m_shapes[i].parts[PartEdges + k];
                UploadIndices(m_shapes[i], part, edges[k][i], part.offset);
            }
        }
    }
    m_gl.glBindVertexArray(0);
}

void GpuScene::NeedSolids()
{
    if (m_hasSolids || !m_model) {
        return;
    }
    m_hasSolids = true;
    const std::vector<int> solids = FindSolids(*m_model);
    for (std::size_t i = 0; i < m_shapes.size(); ++i) {
        m_shapes[i].solid = solids[i];
    }
}

std::uint32_t GpuScene::IndexCount(std::uint32_t shape, PartKind part) const
{
    return m_shapes[shape].parts[part].count;
}

void GpuScene::Draw(std::uint32_t shape, PartKind part, std::uint32_t first, std::uint32_t count,
                    std::uint32_t ids, std::uint32_t instances)
{
    const Placed& placed = m_shapes[shape];
    const Arena& arena = m_arenas[placed.textured ? 1 : 0];
    m_gl.glBindVertexArray(part == PartEdges || part == PartTangents ? arena.edgeState : arena.faceState);
    m_gl.glVertexAttribIPointer(Shaders::AttributeInstance, 1, GL_UNSIGNED_INT, 0,
                                Offset(ids * sizeof(std::uint32_t)));
    const std::size_t offset = placed.parts[part].offset + first * IndexBytes(placed.indexType);
    m_gl.glDrawElementsInstancedBaseVertex(
        part == PartFaces ? GL_TRIANGLES : GL_LINES, static_cast<GLsizei>(count), placed.indexType,
        Offset(offset), static_cast<GLsizei>(instances), static_cast<GLint>(placed.baseVertex));
}

GLuint GpuScene::Texture(int number) const
{
    const auto index = static_cast<std::size_t>(number);
    return number >= 0 && index < m_textures.size() ? m_textures[index] : 0;
}

void GpuScene::Release()
{
    for (Arena& arena : m_arenas) {
        const GLuint buffers[] = {arena.vertices, arena.indices, arena.edges};
        const GLuint states[] = {arena.faceState, arena.edgeState};
        m_gl.glDeleteBuffers(3, buffers);
        m_gl.glDeleteVertexArrays(2, states);
        arena = {};
    }
    m_gl.glDeleteTextures(static_cast<GLsizei>(m_textures.size()), m_textures.data());
    m_gl.glDeleteTextures(1, &m_instanceTexture);
    m_gl.glDeleteBuffers(1, &m_instanceBuffer);
    m_textures.clear();
    m_shapes.clear();
    m_instanceTexture = m_instanceBuffer = 0;
    m_model = nullptr;
    m_bytes = 0;
    m_hasEdges = m_hasSolids = false;
}
