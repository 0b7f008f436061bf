#include "apps/viewer/MeshProbe.h"

#include <unordered_set>

MeshProbe::MeshProbe(const SceneModel& model, std::uint32_t instance) : m_instance(instance)
{
    const Instance& placed = model.Instances()[instance];
    const Shape& shape = model.ShapeOf(placed);
    m_data.Build(shape);
    const Vec3 center = shape.bounds.IsEmpty() ? Vec3() : shape.bounds.Center();
    const Vec3 way = model.DisplacementOf(instance);
    const auto& m = placed.toWorld;
    const Vec3 rows[] = {{m[0], m[1], m[2]}, {m[4], m[5], m[6]}, {m[8], m[9], m[10]}};
    // The cofactors turn normals right under any scale and shear.
    const Vec3 turns[] = {Cross(rows[1], rows[2]), Cross(rows[2], rows[0]), Cross(rows[0], rows[1])};
    for (std::size_t i = 0; i < m_data.Vertices().size(); ++i) {
        const PackedVertex& vertex = m_data.Vertices()[i];
        m_places.push_back(placed.ToWorld(Vec3{vertex.x, vertex.y, vertex.z} + center) - way);
        const Vec3 own = m_data.NormalOf(i);
        const Vec3 normal{Dot(turns[0], own), Dot(turns[1], own), Dot(turns[2], own)};
        const double length = Length(normal);
        m_normals.push_back(length > 0.0 ? 1.0 / length * normal : Vec3());
    }
    FileSides();
}

void MeshProbe::FileSides()
{
    m_first = m_data.FirstInPlace();
    FormEdges edges = m_data.FindEdges();
    m_edges = std::move(edges.creases);
    m_edges.insert(m_edges.end(), edges.tangents.begin(), edges.tangents.end());
    std::unordered_set<std::uint64_t> bounds;
    for (std::size_t i = 0; i < m_edges.size(); i += 2) {
        bounds.insert(SideOf(m_edges[i], m_edges[i + 1]));
    }
    for (std::size_t t = 0; t < m_data.Triangles().size(); t += 3) {
        for (std::size_t k = 0; k < 3; ++k) {
            const std::uint64_t side = SideOf(m_first[Corners(t)[k]], m_first[Corners(t)[(k + 1) % 3]]);
            if (!bounds.contains(side)) {
                m_sides[side].push_back(t);
            }
        }
    }
}

/// NOTE: Möller and Trumbore (1997); both sides of a triangle count.
std::optional<double> MeshProbe::Distance(const Ray& ray, std::size_t triangle) const
{
    const std::uint32_t* corner = Corners(triangle);
    const Vec3& a = Place(corner[0]);
    const Vec3 u = Place(corner[1]) - a;
    const Vec3 v = Place(corner[2]) - a;
    const Vec3 across = Cross(ray.direction, v);
    const double turn = Dot(u, across);
    if (turn == 0.0) {
        return std::nullopt;
    }
    const Vec3 arm = ray.origin - a;
    const Vec3 other = Cross(arm, u);
    const double s = Dot(arm, across) / turn;
    const double t = Dot(ray.direction, other) / turn;
    const double distance = Dot(v, other) / turn;
    constexpr double Slack = -1e-9; // a ray between two triangles hits one
    if (!(s >= Slack && t >= Slack && s + t <= 1.0 - Slack && distance > 0.0)) {
        return std::nullopt;
    }
    return distance;
}

Vec3 MeshProbe::Snapped(const Vec3& point, double reach) const
{
    Vec3 corner = point;
    Vec3 onEdge = point;
    double toCorner = reach;
    double toEdge = reach;
    for (std::size_t i = 0; i < m_edges.size(); i += 2) {
        const Vec3& a = Place(m_edges[i]);
        const Vec3& b = Place(m_edges[i + 1]);
        const Vec3 along = b - a;
        const double square = Dot(along, along);
        const double place = square > 0.0 ? std::clamp(Dot(point - a, along) / square, 0.0, 1.0) : 0.0;
        const Vec3 foot = a + place * along;
        if (Length(foot - point) < toEdge) {
            toEdge = Length(foot - point);
            onEdge = foot;
        }
        for (const Vec3& end : {a, b}) {
            if (Length(end - point) < toCorner) {
                toCorner = Length(end - point);
                corner = end;
            }
        }
    }
    return toCorner < reach ? corner : onEdge;
}

std::vector<std::uint32_t> MeshProbe::FaceAt(std::size_t triangle) const
{
    std::vector<std::uint32_t> corners;
    std::unordered_set<std::size_t> seen{triangle};
    std::vector<std::size_t> pending{triangle};
    while (!pending.empty()) {
        const std::size_t t = pending.back();
        pending.pop_back();
        corners.insert(corners.end(), Corners(t), Corners(t) + 3);
        for (std::size_t k = 0; k < 3; ++k) {
            const auto side = m_sides.find(SideOf(m_first[Corners(t)[k]], m_first[Corners(t)[(k + 1) % 3]]));
            for (std::size_t i = 0; side != m_sides.end() && i < side->second.size(); ++i) {
                if (seen.insert(side->second[i]).second) {
                    pending.push_back(side->second[i]);
                }
            }
        }
    }
    return corners;
}

double MeshProbe::AreaOf(const std::vector<std::uint32_t>& corners) const
{
    double area = 0.0;
    for (std::size_t i = 0; i < corners.size(); i += 3) {
        const Vec3& a = Place(corners[i]);
        area += 0.5 * Length(Cross(Place(corners[i + 1]) - a, Place(corners[i + 2]) - a));
    }
    return area;
}
