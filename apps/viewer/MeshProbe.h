#pragma once

#include "apps/render/SceneModel.h"
#include "apps/render/ShapeData.h"

#include <optional>
#include <unordered_map>

/// A straight look into the scene, in the world.
struct Ray
{
    Vec3 origin;
    Vec3 direction; ///< of any length
};

/// A point of an instance's surface.
struct SurfacePoint
{
    std::uint32_t instance = 0;
    std::size_t triangle = 0; ///< its first corner's index in the probe
    Vec3 point;               ///< in the world, where the document has it
    Vec3 normal;              ///< of the facet, length one, towards the look
};

/// Looks closely at one instance of a scene: where a ray hits it, which face that is, what of it is near.
/// A face is what can be reached over smooth sides: feature and tangent edges bound it. All lengths are in
/// metres; an instance that is displaced counts as where the document has it. The model must outlive the
/// probe.
class MeshProbe
{
public:
    MeshProbe(const SceneModel& model, std::uint32_t instance);

    std::uint32_t Number() const { return m_instance; }
    /// The nearest hit whose point `isShown` accepts.
    template <class IsShown>
    std::optional<SurfacePoint> Hit(const Ray& ray, const IsShown& isShown) const;
    /// The corner, or else the place on a feature edge, nearest to a point and within reach; else the point.
    Vec3 Snapped(const Vec3& point, double reach) const;

    /// A face: the corners of its triangles, three each, as indices of `Places`.
    std::vector<std::uint32_t> FaceAt(std::size_t triangle) const;
    double AreaOf(const std::vector<std::uint32_t>& corners) const;
    const Vec3& Place(std::uint32_t vertex) const { return m_places[vertex]; }
    /// Of length one; zero where the mesh has none.
    const Vec3& Normal(std::uint32_t vertex) const { return m_normals[vertex]; }
    /// The corners of a triangle.
    const std::uint32_t* Corners(std::size_t triangle) const { return m_data.Triangles().data() + triangle; }

private:
    void FileSides();
    static std::uint64_t SideOf(std::uint32_t a, std::uint32_t b)
    {
        return std::uint64_t{std::min(a, b)} << 32U | std::max(a, b);
    }
    std::optional<double> Distance(const Ray& ray, std::size_t triangle) const;

    std::uint32_t m_instance;
    ShapeData m_data;
    std::vector<Vec3> m_places;
    std::vector<Vec3> m_normals;
    std::vector<std::uint32_t> m_first; ///< the first vertex in the place of each
    std::vector<std::uint32_t> m_edges; ///< creases, then tangents; pairs
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> m_sides; ///< triangles at smooth sides
};

template <class IsShown>
std::optional<SurfacePoint> MeshProbe::Hit(const Ray& ray, const IsShown& isShown) const
{
    std::optional<SurfacePoint> best;
    double nearest = Bounds::Far;
    for (std::size_t t = 0; t < m_data.Triangles().size(); t += 3) {
        const std::optional<double> distance = Distance(ray, t);
        if (!distance || *distance >= nearest) {
            continue;
        }
        const Vec3 point = ray.origin + *distance * ray.direction;
        if (isShown(point)) {
            nearest = *distance;
            const std::uint32_t* corner = Corners(t);
            const Vec3 normal =
                Cross(Place(corner[1]) - Place(corner[0]), Place(corner[2]) - Place(corner[0]));
            const double side = Dot(normal, ray.direction) > 0.0 ? -1.0 : 1.0;
            best = SurfacePoint{m_instance, t, point, side / Length(normal) * normal};
        }
    }
    return best;
}
