#include "apps/export/PlacedShape.h"

#include <stdexcept>

using namespace Zemtar;

PlacedShape::PlacedShape(const SceneParts& scene, const ScenePart& part, double unitsPerMetre)
    : m_shape(&scene.ShapeOf(part)),
      m_matrix(part.node->LocalToWorldMatrix(true)),
      m_unitsPerMetre(unitsPerMetre)
{
    const auto row = [this](int r) { return Vec3{m_matrix.M(r, 0), m_matrix.M(r, 1), m_matrix.M(r, 2)}; };
    m_normalRows = {Cross(row(1), row(2)), Cross(row(2), row(0)), Cross(row(0), row(1))};
    m_mirrored = Dot(row(0), m_normalRows[0]) < 0.0;
}

Vec3 PlacedShape::Place(std::uint32_t vertex) const
{
    const double* p = m_shape->Place(vertex);
    const CZemtar3DVertex q = m_matrix.TransformPoint({p[0], p[1], p[2]});
    return m_unitsPerMetre * Vec3{q.X(), q.Y(), q.Z()};
}

Vec3 PlacedShape::Normal(std::uint32_t vertex) const
{
    const std::array<double, 3> n = m_shape->Normal(vertex);
    const Vec3 local{n[0], n[1], n[2]};
    const Vec3 turned{Dot(m_normalRows[0], local), Dot(m_normalRows[1], local), Dot(m_normalRows[2], local)};
    const double length = (m_mirrored ? -1.0 : 1.0) * Length(turned);
    return length != 0.0 && std::isfinite(length) ? 1.0 / length * turned : Vec3{0.0, 0.0, 1.0};
}

std::uint32_t WorldTriangleCount(const SceneParts& scene)
{
    std::uint64_t count = 0;
    for (const ScenePart& part : scene.Parts()) {
        count += part.shape != ScenePart::None ? scene.ShapeOf(part).TriangleCount() : 0;
    }
    if (count == 0) {
        throw std::runtime_error("the document has no triangles");
    }
    if (count > std::numeric_limits<std::uint32_t>::max()) {
        throw std::runtime_error("the format counts no more than 4,294,967,295 triangles");
    }
    return static_cast<std::uint32_t>(count);
}
