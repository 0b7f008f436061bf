#pragma once

#include "apps/geometry/PolygonCut.h"

#include "host/CZemtarGeometry.h"
#include "host/CZemtarTextureCoordinatesTable.h"

#include <array>
#include <cstdint>

/// The shape of mesh nodes as writers of files see it: triangles and segments between sound vertices, in one
/// block each, without a copy. What names a vertex that is not there, or one that is no place, is left out.
class ShapeView
{
public:
    /// Looks through the tables once. `coordinates`: null for none. Tables whose length is not that of the
    /// vertices count as missing.
    ShapeView(const Zemtar::CZemtarGeometry& geometry,
              const Zemtar::CZemtarTextureCoordinatesTable* coordinates);

    std::uint32_t VertexCount() const { return m_vertices; }
    std::uint64_t TriangleCount() const { return m_triangles; }
    std::uint64_t SegmentCount() const { return m_segments; }
    bool IsEmpty() const { return m_triangles + m_segments == 0; }
    bool HasNormals() const { return m_normals != nullptr; }
    bool HasCoordinates() const { return m_coordinates != nullptr; }
    /// Tells whether the triangles bound a volume: each of their sides is run through once in each direction.
    bool IsClosed() const { return m_closed; }
    /// Tells whether something was left out.
    bool IsDamaged() const { return m_damaged; }
    /// The box of the sound vertices, in single precision.
    const std::array<float, 3>& Low() const { return m_low; }
    const std::array<float, 3>& High() const { return m_high; }

    /// The vertex' place; that of a sound one for a vertex that is no place.
    const double* Place(std::uint32_t vertex) const
    {
        const double* place = m_places + std::size_t{3} * vertex;
        return m_allPlaces || IsPlace(place) ? place : m_places + std::size_t{3} * m_firstPlace;
    }
    /// A vector of length one; along z for a normal that has no direction.
    std::array<double, 3> Normal(std::uint32_t vertex) const
    {
        const double* n = m_normals + std::size_t{3} * vertex;
        if (std::abs(n[0] * n[0] + n[1] * n[1] + n[2] * n[2] - 1.0) < 1e-6) {
            return {n[0], n[1], n[2]};
        }
        const double length = std::hypot(n[0], n[1], n[2]);
        if (!(length > 0.0) || !std::isfinite(length)) {
            return {0.0, 0.0, 1.0};
        }
        return {n[0] / length, n[1] / length, n[2] / length};
    }
    /// Texture coordinates, zero where they are no numbers.
    std::array<double, 2> Coordinate(std::uint32_t vertex) const
    {
        constexpr double Farthest = 1e30;
        const double* uv = m_coordinates + std::size_t{2} * vertex;
        return {std::abs(uv[0]) < Farthest ? uv[0] : 0.0, std::abs(uv[1]) < Farthest ? uv[1] : 0.0};
    }

    /// The triangles' corners in a row, where nothing is left out or cut; else null.
    const unsigned* SoundTriangles() const { return m_soundTriangles ? m_polygons->Data() : nullptr; }
    /// Calls `take(a, b, c)` for each triangle.
    template <class Take>
    void ForEachTriangle(const Take& take) const;
    /// Calls `take(a, b)` for each segment.
    template <class Take>
    void ForEachSegment(const Take& take) const;

private:
    static bool IsPlace(const double* place)
    {
        constexpr double Farthest = 1e15; // beyond, single precision has no room for a model
        return std::abs(place[0]) < Farthest && std::abs(place[1]) < Farthest &&
               std::abs(place[2]) < Farthest;
    }
    bool IsUsable(std::uint32_t vertex) const
    {
        return vertex < m_vertices && (m_allPlaces || IsPlace(m_places + std::size_t{3} * vertex));
    }
    void InspectVertices();
    void InspectTriangles();

    const Zemtar::CZemtarPolygonsTable* m_polygons;
    const Zemtar::CZemtarPolyLinesTable* m_lines;
    const double* m_places = nullptr;
    const double* m_normals = nullptr;
    const double* m_coordinates = nullptr;
    std::uint32_t m_vertices = 0;
    std::uint32_t m_firstPlace = 0;
    std::uint64_t m_triangles = 0;
    std::uint64_t m_segments = 0;
    std::array<float, 3> m_low{};
    std::array<float, 3> m_high{};
    bool m_allPlaces = true;
    bool m_soundTriangles = false;
    bool m_closed = false;
    bool m_damaged = false;
};

template <class Take>
void ShapeView::ForEachTriangle(const Take& take) const
{
    if (!m_polygons) {
        return;
    }
    if (m_polygons->IsTriangles()) {
        const unsigned* corners = m_polygons->Data();
        const bool isSound = m_soundTriangles;
        for (const unsigned* end = corners + m_polygons->IndexCount(); corners != end; corners += 3) {
            if (isSound || (IsUsable(corners[0]) && IsUsable(corners[1]) && IsUsable(corners[2]))) {
                take(corners[0], corners[1], corners[2]);
            }
        }
        return;
    }
    std::vector<Vec3> places;
    for (unsigned p = 0; p < m_polygons->Count(); ++p) {
        const Zemtar::CZemtar3DPolygon polygon = m_polygons->Item(p);
        places.clear();
        for (unsigned i = 0; i < polygon.VertexCount() && IsUsable(polygon.VertexIndex(i)); ++i) {
            const double* place = Place(polygon.VertexIndex(i));
            places.push_back({place[0], place[1], place[2]});
        }
        if (places.size() == polygon.VertexCount()) {
            CutPolygon(places, [&](std::size_t a, std::size_t b, std::size_t c) {
                take(polygon.VertexIndex(static_cast<unsigned>(a)),
                     polygon.VertexIndex(static_cast<unsigned>(b)),
                     polygon.VertexIndex(static_cast<unsigned>(c)));
            });
        }
    }
}

template <class Take>
void ShapeView::ForEachSegment(const Take& take) const
{
    for (unsigned i = 0; m_lines && i < m_lines->Count(); ++i) {
        const auto [a, b] = m_lines->Item(i);
        if (IsUsable(a) && IsUsable(b)) {
            take(a, b);
        }
    }
}
