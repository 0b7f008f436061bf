#include "apps/render/SolidShapes.h"

#include "apps/geometry/ClosedSurface.h"
#include "apps/render/ShapeData.h"

#include "host/CZemtar3DObject.h"

#include <map>

using namespace Zemtar;

namespace {

/// Triangles of one or several shapes in one row.
class Surfaces
{
public:
    void Add(const Shape& shape)
    {
        m_data.Build(shape);
        const CZemtarVerticiesTable& table = *shape.geometry->VerticiesTable();
        const auto first = static_cast<std::uint32_t>(m_places.size() / 3);
        m_places.insert(m_places.end(), table.Data(), table.Data() + std::size_t{3} * table.Count());
        for (const std::uint32_t corner : m_data.Triangles()) {
            m_corners.push_back(first + corner);
        }
    }
    /// The sign of the volume; 0 where the triangles bound none.
    int Sign() const
    {
        ClosedSurface surface(m_places.data(), m_places.size() / 3);
        const Vec3 origin = m_corners.empty() ? Vec3() : At(m_corners.front());
        double volume = 0.0;
        for (std::size_t t = 0; t + 2 < m_corners.size(); t += 3) {
            surface.Add(m_corners[t], m_corners[t + 1], m_corners[t + 2]);
            volume += Dot(At(m_corners[t]) - origin,
                          Cross(At(m_corners[t + 1]) - origin, At(m_corners[t + 2]) - origin));
        }
        return !surface.IsClosed() ? 0 : volume > 0.0 ? 1 : volume < 0.0 ? -1 : 0;
    }

private:
    Vec3 At(std::uint32_t corner) const
    {
        const double* place = m_places.data() + std::size_t{3} * corner;
        return {place[0], place[1], place[2]};
    }

    ShapeData m_data;
    std::vector<double> m_places;
    std::vector<std::uint32_t> m_corners;
};

} // namespace

std::vector<int> FindSolids(const SceneModel& model)
{
    std::vector<int> solids;
    for (const Shape& shape : model.Shapes()) {
        Surfaces surface;
        surface.Add(shape);
        solids.push_back(surface.Sign());
    }
    std::map<const CZemtarSceneNode*, std::vector<const Instance*>> families;
    for (const Instance& instance : model.Instances()) {
        if (solids[instance.shape] == 0 && instance.node->Parent()) {
            families[instance.node->Parent()].push_back(&instance);
        }
    }
    for (const auto& [parent, members] : families) {
        Surfaces surface;
        bool isTogether = members.size() > 1 && solids[members.front()->shape] == 0;
        for (const Instance* member : members) {
            isTogether = isTogether && member->toWorld == members.front()->toWorld;
        }
        if (!isTogether) {
            continue; // or a copy that is done already
        }
        for (const Instance* member : members) {
            surface.Add(model.ShapeOf(*member));
        }
        const int sign = surface.Sign();
        for (const Instance* member : members) {
            solids[member->shape] = sign;
        }
    }
    return solids;
}
