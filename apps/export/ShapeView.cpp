#include "apps/export/ShapeView.h"

#include <algorithm>
#include <bit>
#include <cmath>

using namespace Zemtar;

namespace {

/// Two random numbers of a place, 32 bits each in one, for the sum of a surface's sides.
std::uint64_t HashOf(const double* place)
{
    // The sums turn -0 into 0; the factors are odd and random.
    std::uint64_t h = std::bit_cast<std::uint64_t>(place[0] + 0.0) * 0x9E3779B97F4A7C15U;
    h = (h ^ h >> 32U) + std::bit_cast<std::uint64_t>(place[1] + 0.0) * 0xC2B2AE3D27D4EB4FU;
    h = (h ^ h >> 29U) + std::bit_cast<std::uint64_t>(place[2] + 0.0) * 0x165667B19E3779F9U;
    h = (h ^ h >> 31U) * 0xD6E8FEB86659FD93U;
    return h ^ h >> 32U;
}

/// The numbers of a shape's vertices: from a table, or made anew each time where that would be large.
class PlaceHashes
{
public:
    PlaceHashes(const double* places, std::uint32_t count) : m_places(places)
    {
        constexpr std::uint32_t most = 4'000'000; // 32 MB
        if (count <= most) {
            m_table.resize(count);
            for (std::uint32_t i = 0; i < count; ++i) {
                m_table[i] = HashOf(places + std::size_t{3} * i);
            }
        }
    }
    bool IsTable() const { return !m_table.empty(); }
    std::uint64_t FromTable(std::uint32_t vertex) const { return m_table[vertex]; }
    std::uint64_t Anew(std::uint32_t vertex) const { return HashOf(m_places + std::size_t{3} * vertex); }

private:
    const double* m_places;
    std::vector<std::uint64_t> m_table;
};

/// What a triangle's three sides add to the sum.
std::uint64_t SumOfSides(std::uint64_t a, std::uint64_t b, std::uint64_t c)
{
    constexpr std::uint64_t half = 0xFFFFFFFFU;
    const std::uint64_t p = a >> 32U;
    const std::uint64_t q = b >> 32U;
    const std::uint64_t r = c >> 32U;
    return (a & half) * (q - r) + (b & half) * (r - p) + (c & half) * (p - q);
}

} // namespace

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
    constexpr double infinity = std::numeric_limits<double>::infinity();
    std::array<double, 3> low{infinity, infinity, infinity};
    std::array<double, 3> high{-infinity, -infinity, -infinity};
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
    // Each side from a to b adds h(a) f(b) - h(b) f(a), modulo 2^64: the opposite side takes it away again,
    // and sides that are left alone leave a sum that is hardly ever zero. No table of sides is needed.
    std::uint64_t sum = 0;
    const PlaceHashes hashes(m_places, m_vertices);
    if (hashes.IsTable()) {
        ForEachTriangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            sum += SumOfSides(hashes.FromTable(a), hashes.FromTable(b), hashes.FromTable(c));
            ++m_triangles;
        });
    } else {
        ForEachTriangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            sum += SumOfSides(hashes.Anew(a), hashes.Anew(b), hashes.Anew(c));
            ++m_triangles;
        });
    }
    m_closed = m_triangles > 0 && sum == 0;
    m_damaged =
        m_polygons && m_triangles != m_polygons->IndexCount() - std::uint64_t{2} * m_polygons->Count();
    m_soundTriangles = !m_damaged && m_polygons->IsTriangles();
}
