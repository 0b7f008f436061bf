#include "apps/render/ShapeData.h"

#include "apps/geometry/PolygonCut.h"

#include "host/CZemtarGeometry.h"
#include "host/CZemtarTextureCoordinatesTable.h"

#include <bit>

using namespace Zemtar;

namespace {

constexpr double Radian = 3.14159265358979323846 / 180.0;

/// Packs a number from -1 to 1 into 10 bits, two's complement.
std::uint32_t TenBits(double value)
{
    return static_cast<std::uint32_t>(std::lround(value * 511.0)) & 0x3FFU;
}

std::uint32_t PackedNormal(const double* normal)
{
    const Vec3 n{normal[0], normal[1], normal[2]};
    const double length = Length(n);
    if (!(length > 0.0) || !std::isfinite(length)) {
        return 0;
    }
    return TenBits(n.x / length) | TenBits(n.y / length) << 10U | TenBits(n.z / length) << 20U;
}

double FromTenBits(std::uint32_t bits)
{
    const int value = static_cast<int>(bits & 0x3FFU);
    return (value < 512 ? value : value - 1024) / 511.0;
}

Vec3 UnpackedNormal(std::uint32_t bits)
{
    return {FromTenBits(bits), FromTenBits(bits >> 10U), FromTenBits(bits >> 20U)};
}

Vec3 PlaceOf(const PackedVertex& vertex)
{
    return {vertex.x, vertex.y, vertex.z};
}

std::uint32_t HashOf(const PackedVertex& vertex)
{
    std::uint64_t hash = 0;
    for (const float value : {vertex.x, vertex.y, vertex.z}) {
        // The sum turns -0 into 0; the factor is 2^64 divided by the golden ratio, odd.
        hash = (hash ^ std::bit_cast<std::uint32_t>(value + 0.0F)) * 0x9E3779B97F4A7C15U;
        hash ^= hash >> 32U;
    }
    return static_cast<std::uint32_t>(hash);
}

/// Gives for each vertex the first one in the same place, through a flat hash table.
std::vector<std::uint32_t> FirstVertices(const std::vector<PackedVertex>& vertices)
{
    constexpr std::uint32_t None = 0xFFFFFFFFU;
    const std::size_t size = std::bit_ceil(2 * vertices.size() + 1);
    std::vector<std::uint32_t> table(size, None);
    std::vector<std::uint32_t> first(vertices.size());
    for (std::uint32_t i = 0; i < vertices.size(); ++i) {
        const PackedVertex& vertex = vertices[i];
        std::size_t slot = HashOf(vertex) & (size - 1);
        while (table[slot] != None) {
            const PackedVertex& other = vertices[table[slot]];
            if (other.x == vertex.x && other.y == vertex.y && other.z == vertex.z) {
                break;
            }
            slot = (slot + 1) & (size - 1);
        }
        if (table[slot] == None) {
            table[slot] = i;
        }
        first[i] = table[slot];
    }
    return first;
}

/// One triangle's side, filed under its lower vertex.
struct Side
{
    std::uint32_t higher;
    std::uint32_t triangle : 31; ///< its first corner's index
    std::uint32_t upwards : 1;   ///< the triangle runs from the lower vertex to the higher one
};

/// Files the sides of all triangles by their lower vertex: `sides[starts[v]]` to before `sides[starts[v+1]]`.
/// One counting pass and one filling pass; no sorting of millions.
void FileSides(const std::vector<std::uint32_t>& corners, const std::vector<std::uint32_t>& first,
               std::vector<std::uint32_t>& starts, std::vector<Side>& sides)
{
    const auto forEachSide = [&](auto&& take) {
        for (std::uint32_t t = 0; t < corners.size(); t += 3) {
            for (std::uint32_t k = 0; k < 3; ++k) {
                const std::uint32_t a = first[corners[t + k]];
                const std::uint32_t b = first[corners[t + (k + 1) % 3]];
                if (a != b) {
                    take(std::min(a, b), Side{std::max(a, b), t & 0x7FFFFFFFU, a < b});
                }
            }
        }
    };
    starts.assign(first.size() + 2, 0);
    forEachSide([&](std::uint32_t lower, const Side&) { ++starts[lower + 2]; });
    for (std::size_t i = 2; i < starts.size(); ++i) {
        starts[i] += starts[i - 1];
    }
    sides.resize(starts.back());
    forEachSide([&](std::uint32_t lower, const Side& side) { sides[starts[lower + 1]++] = side; });
}

/// Tells where the surface has a fold between two triangles.
class Folds
{
public:
    Folds(const std::vector<PackedVertex>& vertices, const std::vector<std::uint32_t>& corners,
          const std::vector<std::uint32_t>& first)
        : m_vertices(vertices), m_corners(corners), m_first(first)
    {
    }

    /// Where both triangles have normals at the ends of their common side, those decide: they are the true
    /// surface's, while facets of a coarse mesh meet at angles even where the surface is smooth.
    bool IsCrease(std::uint32_t lower, const Side& s, const Side& t) const
    {
        // Neighbours that run along their side in one direction wind differently: one normal is turned.
        const double turned = s.upwards == t.upwards ? -1.0 : 1.0;
        for (const std::uint32_t place : {lower, s.higher}) {
            const Vec3 n = VertexNormal(s, place);
            const Vec3 m = VertexNormal(t, place);
            if (!(Dot(n, n) > 0.0 && Dot(m, m) > 0.0)) {
                return Differ(FacetNormal(s), turned * FacetNormal(t), m_facetCosine);
            }
            // Normals follow the surface, not the winding: either turn may be right.
            if (Differ(n, m, m_normalCosine) && Differ(n, -1.0 * m, m_normalCosine)) {
                return true;
            }
        }
        return false;
    }

    /// Whether one of the two is flat and the other bent, by the normals at their corners. A sliver of a bent
    /// face has hardly a bend of its own: what counts as flat is one that would show the other's.
    bool IsTangent(const Side& s, const Side& t) const
    {
        const Bend a = BendOf(s);
        const Bend b = BendOf(t);
        return (IsFlat(a) && b.curvature * a.height > LeastBend) ||
               (IsFlat(b) && a.curvature * b.height > LeastBend);
    }

private:
    struct Bend
    {
        double angle = 0;     ///< radians, the largest between normals at two corners
        double curvature = 0; ///< the largest of such an angle by the length between the corners
        double height = 0;    ///< the smallest of the triangle
    };

    static constexpr double LeastBend = 0.5 * Radian;
    /// Packed normals are exact to a tenth of a degree.
    static bool IsFlat(const Bend& bend) { return bend.angle < 0.4 * Radian; }

    Bend BendOf(const Side& side) const
    {
        Bend bend;
        double longest = 0;
        for (std::uint32_t k = 0; k < 3; ++k) {
            const PackedVertex& from = m_vertices[m_corners[side.triangle + k]];
            const PackedVertex& to = m_vertices[m_corners[side.triangle + (k + 1) % 3]];
            const double length = Length(PlaceOf(to) - PlaceOf(from));
            if (!(length > 0)) {
                return {};
            }
            const Vec3 n = UnpackedNormal(from.normal);
            const Vec3 m = UnpackedNormal(to.normal);
            const double angle = std::atan2(Length(Cross(n, m)), Dot(n, m));
            bend.angle = std::max(bend.angle, angle);
            bend.curvature = std::max(bend.curvature, angle / length);
            longest = std::max(longest, length);
        }
        bend.height = Length(FacetNormal(side)) / longest;
        return bend;
    }
    static bool Differ(const Vec3& n, const Vec3& m, double cosine)
    {
        return Dot(n, m) < cosine * Length(n) * Length(m);
    }
    Vec3 VertexNormal(const Side& side, std::uint32_t place) const
    {
        for (std::uint32_t k = 0; k < 3; ++k) {
            const std::uint32_t corner = m_corners[side.triangle + k];
            if (m_first[corner] == place) {
                return UnpackedNormal(m_vertices[corner].normal);
            }
        }
        return {};
    }
    Vec3 FacetNormal(const Side& side) const
    {
        const Vec3 a = PlaceOf(m_vertices[m_corners[side.triangle]]);
        const Vec3 b = PlaceOf(m_vertices[m_corners[side.triangle + 1]]);
        const Vec3 c = PlaceOf(m_vertices[m_corners[side.triangle + 2]]);
        return Cross(b - a, c - a);
    }

    const double m_facetCosine = std::cos(ShapeData::CreaseAngle * Radian);
    const double m_normalCosine = std::cos(ShapeData::SeamAngle * Radian);
    const std::vector<PackedVertex>& m_vertices;
    const std::vector<std::uint32_t>& m_corners;
    const std::vector<std::uint32_t>& m_first;
};

} // namespace

void ShapeData::Build(const Shape& shape)
{
    m_triangles.clear();
    m_segments.clear();
    PackVertices(shape);
    PackTextureCoordinates(shape);
    if (shape.geometry->PolygonsTable()) {
        CutPolygons(*shape.geometry);
    }
    if (const CZemtarPolyLinesTable* lines = shape.geometry->PolyLinesTable()) {
        for (unsigned i = 0; i < lines->Count(); ++i) {
            const auto [a, b] = lines->Item(i);
            if (IsUsable(a) && IsUsable(b)) {
                m_segments.insert(m_segments.end(), {a, b});
            }
        }
    }
}

void ShapeData::PackVertices(const Shape& shape)
{
    const CZemtarVerticiesTable& table = *shape.geometry->VerticiesTable();
    const CZemtarVerticiesNormalsTable* normals = shape.geometry->VerticiesNormalsTable();
    const std::size_t normalCount = normals ? normals->Count() : 0;
    const Vec3 center = shape.bounds.IsEmpty() ? Vec3() : shape.bounds.Center();
    m_vertices.resize(table.Count());
    m_allUsable = true;
    const double* place = table.Data();
    for (std::size_t i = 0; i < m_vertices.size(); ++i, place += 3) {
        PackedVertex& vertex = m_vertices[i];
        vertex.x = static_cast<float>(place[0] - center.x);
        vertex.y = static_cast<float>(place[1] - center.y);
        vertex.z = static_cast<float>(place[2] - center.z);
        vertex.normal = i < normalCount ? PackedNormal(normals->Data() + 3 * i) : 0;
        m_allUsable = m_allUsable && IsPlace(PlaceOf(vertex));
    }
}

void ShapeData::PackTextureCoordinates(const Shape& shape)
{
    m_textured.clear();
    if (!shape.textureCoordinates) {
        return;
    }
    const CZemtarTextureCoordinatesTable& table = *shape.textureCoordinates;
    m_textured.reserve(m_vertices.size());
    for (std::size_t i = 0; i < m_vertices.size(); ++i) {
        const double* uv = table.Data() + 2 * i;
        m_textured.push_back(i < table.Count() ? TexturedVertex{m_vertices[i], static_cast<float>(uv[0]),
                                                                static_cast<float>(uv[1])}
                                               : TexturedVertex{m_vertices[i], 0.0F, 0.0F});
    }
}

void ShapeData::CutPolygons(const CZemtarGeometry& geometry)
{
    const CZemtarPolygonsTable& polygons = *geometry.PolygonsTable();
    m_triangles.reserve(polygons.IndexCount());
    if (polygons.IsTriangles()) {
        const unsigned* corners = polygons.Data();
        for (std::size_t i = 0; i + 2 < polygons.IndexCount(); i += 3) {
            if (IsUsable(corners[i]) && IsUsable(corners[i + 1]) && IsUsable(corners[i + 2])) {
                m_triangles.insert(m_triangles.end(), corners + i, corners + i + 3);
            }
        }
        return;
    }
    std::vector<std::uint32_t> corners;
    std::vector<Vec3> places;
    for (unsigned p = 0; p < polygons.Count(); ++p) {
        const CZemtar3DPolygon polygon = polygons.Item(p);
        corners.clear();
        places.clear();
        for (unsigned i = 0; i < polygon.VertexCount(); ++i) {
            if (IsUsable(polygon.VertexIndex(i))) {
                corners.push_back(polygon.VertexIndex(i));
                places.push_back(PlaceOf(m_vertices[corners.back()]));
            }
        }
        if (corners.size() == polygon.VertexCount()) {
            CutPolygon(places, [&](std::size_t a, std::size_t b, std::size_t c) {
                m_triangles.insert(m_triangles.end(), {corners[a], corners[b], corners[c]});
            });
        }
    }
}

bool ShapeData::IsUsable(std::uint32_t vertex) const
{
    return vertex < m_vertices.size() && (m_allUsable || IsPlace(PlaceOf(m_vertices[vertex])));
}

FormEdges ShapeData::FindEdges() const
{
    const std::vector<std::uint32_t> first = FirstVertices(m_vertices);
    std::vector<std::uint32_t> starts;
    std::vector<Side> sides;
    FileSides(m_triangles, first, starts, sides);

    const Folds folds(m_vertices, m_triangles, first);
    FormEdges edges;
    for (std::uint32_t v = 0; v < first.size(); ++v) {
        const auto begin = sides.begin() + starts[v];
        const auto end = sides.begin() + starts[v + 1];
        std::sort(begin, end, [](const Side& s, const Side& t) { return s.higher < t.higher; });
        for (auto side = begin; side != end;) {
            const auto next =
                std::find_if(side, end, [&](const Side& s) { return s.higher != side->higher; });
            if (next - side != 2 || folds.IsCrease(v, side[0], side[1])) {
                edges.creases.insert(edges.creases.end(), {v, side->higher});
            } else if (folds.IsTangent(side[0], side[1])) {
                edges.tangents.insert(edges.tangents.end(), {v, side->higher});
            }
            side = next;
        }
    }
    return edges;
}

std::vector<std::uint32_t> ShapeData::FirstInPlace() const
{
    return FirstVertices(m_vertices);
}

Vec3 ShapeData::NormalOf(std::size_t vertex) const
{
    return UnpackedNormal(m_vertices[vertex].normal);
}
