#pragma once

#include "apps/render/SceneModel.h"

#include <cstdint>
#include <vector>

/// A vertex as the graphics card takes it: the place relative to the shape's centre, in metres, and the
/// normal, 10 bits a component; zero stands for no normal.
struct PackedVertex
{
    float x;
    float y;
    float z;
    std::uint32_t normal;
};
static_assert(sizeof(PackedVertex) == 16);

struct TexturedVertex
{
    PackedVertex base;
    float u;
    float v;
};
static_assert(sizeof(TexturedVertex) == 24);

/// The edges that draw a shape's form; two vertex indices each, each edge once.
struct FormEdges
{
    std::vector<std::uint32_t> creases;
    std::vector<std::uint32_t> tangents; ///< where a flat face goes on smoothly into a curved one
};

/// A shape's tables turned into what is drawn: packed vertices, triangles of vertex indices (polygons are
/// cut into triangles) and line segments. Corners out of range or that are no place (`IsPlace`) take their
/// triangle or segment with them; the rest is kept.
///
///     ShapeData data;                       // its memory serves one shape after the other
///     data.Build(model.Shapes()[0]);
///     Upload(data.Vertices(), data.Triangles());
class ShapeData
{
public:
    void Build(const Shape& shape);

    const std::vector<PackedVertex>& Vertices() const { return m_vertices; }
    /// Gives the vertices with their texture coordinates; none for a shape without.
    const std::vector<TexturedVertex>& TexturedVertices() const { return m_textured; }
    const std::vector<std::uint32_t>& Triangles() const { return m_triangles; } ///< three each
    const std::vector<std::uint32_t>& Segments() const { return m_segments; }   ///< two each

    /// Finds the edges that draw the shape's form: where a surface ends, where the normals on both sides of a
    /// triangle's side differ by more than `SeamAngle` degrees, and, without normals, where the triangles
    /// meet at more than `CreaseAngle` degrees. Vertices in one place count as one.
    FormEdges FindEdges() const;
    static constexpr double CreaseAngle = 28.0;
    static constexpr double SeamAngle = 12.0;

    /// Gives for each vertex the first one in the same place, which `FindEdges` names.
    std::vector<std::uint32_t> FirstInPlace() const;
    /// Gives a vertex' normal, near enough to length one; zero for none.
    Vec3 NormalOf(std::size_t vertex) const;

private:
    void PackVertices(const Shape& shape);
    void PackTextureCoordinates(const Shape& shape);
    void CutPolygons(const Zemtar::CZemtarGeometry& geometry);
    bool IsUsable(std::uint32_t vertex) const;

    std::vector<PackedVertex> m_vertices;
    std::vector<TexturedVertex> m_textured;
    std::vector<std::uint32_t> m_triangles;
    std::vector<std::uint32_t> m_segments;
    bool m_allUsable = true;
};
