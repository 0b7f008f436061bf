#include "apps/export/ShapeView.h"

#include "apps/geometry/ClosedSurface.h"

#include <algorithm>
#include <cmath>

using namespace Zemtar;

ShapeView::ShapeView(const CZemtarGeometry& geometry, const CZemtarTextureCoordinatesTable* coordinates)
    : m_polygons(geometry.PolygonsTable()), m_lines(geometry.PolyLinesTable())
{
    const CZemtarVerticiesTable* vertices = geometry.VerticiesTable();
    if (!vertices || vertices->IsEmpty()) {
        return;
    }
    m_vertices = vertices->Count();
    m_places = vertices->Data();
    const CZemtarVerticiesNormalsTable* normals = geometry.VerticiesNormalsTable();
    m_normals = normals && normals->Count() == m_vertices ? normals->Data() : nullptr;
    m_coordinates = coordinates && coordinates->Count() == m_vertices ? coordinates->Data() : nullptr;
    InspectVertices();
    InspectTriangles();
    ForEachSegment([this](std::uint32_t, std::uint32_t) { ++m_segments; });
    m_damaged = m_damaged || !m_allPlaces || (m_lines && m_segments != m_lines->Count());
}

void ShapeView::InspectVertices()
{
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    std::array<double, 3> low{Infinity, Infinity, Infinity};
    std::array<double, 3> high{-Infinity, -Infinity, -Infinity};
    bool any = false;
    for (std::uint32_t i = 0; i < m_vertices; ++i) {
        const double* place = m_places + std::size_t{3} * i;
        if (!IsPlace(place)) {
            m_allPlaces = false;
            continue;
        }
        m_firstPlace = any ? m_firstPlace : i;
        any = true;
        for (unsigned axis = 0; axis < 3; ++axis) {
            low[axis] = std::min(low[axis], place[axis]);
            high[axis] = std::max(high[axis], place[axis]);
        }
    }
    for (unsigned axis = 0; any && axis < 3; ++axis) { // rounding keeps the order
        m_low[axis] = static_cast<float>(low[axis]);
        m_high[axis] = static_cast<float>(high[axis]);
    }
}

void ShapeView::InspectTriangles()
{
    if (!m_polygons) {
        return;
    }
    ClosedSurface surface(m_places, m_vertices);
    ForEachTriangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        surface.Add(a, b, c);
        ++m_triangles;
    });
    m_closed = surface.IsClosed();
    m_damaged =
        m_polygons && m_triangles != m_polygons->IndexCount() - std::uint64_t{2} * m_polygons->Count();
    m_soundTriangles = !m_damaged && m_polygons->IsTriangles();
}
