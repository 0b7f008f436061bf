#pragma once

#include "apps/export/SceneParts.h"

#include "host/CZemtarMatrix.h"
#include "host/CZemtarSceneNode.h"

/// A part's shape in the world, in a length unit, as single precision.
class PlacedShape
{
public:
    PlacedShape(const SceneParts& scene, const ScenePart& part, double unitsPerMetre);

    const ShapeView& Shape() const { return *m_shape; }
    Vec3 Place(std::uint32_t vertex) const;
    /// A vector of length one.
    Vec3 Normal(std::uint32_t vertex) const;
    /// Calls `take(a, b, c)` for each triangle, wound so that its front stays the front in a mirror.
    template <class Take>
    void ForEachTriangle(const Take& take) const
    {
        m_shape->ForEachTriangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            m_mirrored ? take(a, c, b) : take(a, b, c);
        });
    }

private:
    const ShapeView* m_shape;
    Zemtar::CZemtarMatrix m_matrix;
    std::array<Vec3, 3> m_normalRows; ///< the cofactors, which turn normals
    double m_unitsPerMetre;
    bool m_mirrored;
};

/// Calls `take(part, placedShape)` for each part that shows something.
template <class Take>
void ForEachPlacedShape(const SceneParts& scene, double unitsPerMetre, const Take& take)
{
    for (const ScenePart& part : scene.Parts()) {
        if (part.shape != ScenePart::None) {
            take(part, PlacedShape(scene, part, unitsPerMetre));
        }
    }
}

/// The number of triangles in the world; zero is a std::runtime_error, and so are more than 32 bits count.
std::uint32_t WorldTriangleCount(const SceneParts& scene);
