#pragma once

#include "apps/geometry/Vector.h"

#include <QString>

#include <array>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

namespace Zemtar {
class CZemtar3DObject;
class CZemtarDocument;
class CZemtarGeometry;
class CZemtarMaterial;
class CZemtarMatrix;
class CZemtarSceneNode;
class CZemtarTextureCoordinatesTable;
} // namespace Zemtar

/// Gives the box around a transformed box; an empty one when a corner is no place.
Bounds Transformed(const Bounds& box, const Zemtar::CZemtarMatrix& matrix);

/// A geometry that is drawn, however many nodes show it. Counts are those of the tables; what is damaged in
/// them is left out when the geometry is packed.
struct Shape
{
    const Zemtar::CZemtarGeometry* geometry = nullptr;
    const Zemtar::CZemtarTextureCoordinatesTable* textureCoordinates = nullptr; ///< null: not textured
    Bounds bounds;                                                              ///< of its usable vertices
    std::uint32_t vertices = 0;
    std::uint32_t triangles = 0;
    std::uint32_t segments = 0;
};

/// What a material shows: an sRGB colour with its opacity, 0 to 1, and the number of its picture file.
struct Look
{
    static constexpr int NoTexture = -1;

    std::array<float, 4> color{0.8F, 0.8F, 0.8F, 1.0F};
    int texture = NoTexture;
    bool lit = true;

    bool IsTransparent() const { return color[3] < 0.999F; }
};

/// A mesh node: a shape in a place of the world, with a look.
struct Instance
{
    const Zemtar::CZemtar3DObject* node = nullptr;
    std::uint32_t shape = 0;
    std::uint32_t look = 0;
    std::array<double, 12> toWorld{}; ///< rows 0 to 2 of the transform
    Bounds bounds;                    ///< in the world; contains the shape's box

    Vec3 ToWorld(const Vec3& p) const
    {
        const auto& m = toWorld;
        return {Dot({m[0], m[1], m[2]}, p) + m[3], Dot({m[4], m[5], m[6]}, p) + m[7],
                Dot({m[8], m[9], m[10]}, p) + m[11]};
    }
};

/// Instances from `first` to before `last`.
struct InstanceRange
{
    std::uint32_t first = 0;
    std::uint32_t last = 0;

    bool IsEmpty() const { return first >= last; }
    bool Contains(std::uint32_t instance) const { return instance >= first && instance < last; }
};

/// A document's tree flattened for drawing: each geometry once, and one instance for each mesh node, in
/// depth-first order, so that a node with all that is below it is one range of instances. Deleted nodes, and
/// mesh nodes that have nothing to draw or a transform that is not finite, are left out.
///
///     const SceneModel model(*document);
///     const Bounds part = model.Extent(model.RangeOf(node));
///
/// The document must outlive the model and stay as it is. One thread at a time.
class SceneModel
{
public:
    SceneModel() = default; ///< nothing to draw
    explicit SceneModel(const Zemtar::CZemtarDocument& document);

    const std::vector<Shape>& Shapes() const { return m_shapes; }
    const std::vector<Instance>& Instances() const { return m_instances; }
    const std::vector<Look>& Looks() const { return m_looks; }
    /// Gives the picture files that looks refer to.
    const std::vector<QString>& Textures() const { return m_textures; }

    const Look& LookOf(const Instance& instance) const { return m_looks[instance.look]; }
    const Shape& ShapeOf(const Instance& instance) const { return m_shapes[instance.shape]; }
    InstanceRange All() const { return {0, static_cast<std::uint32_t>(m_instances.size())}; }
    /// Gives the instances at and below a node; none for a node that is not of the document.
    InstanceRange RangeOf(const Zemtar::CZemtarSceneNode* node) const;
    /// Gives the box around all, or some, instances; empty without any.
    const Bounds& Extent() const { return m_extent; }
    Bounds Extent(const InstanceRange& range) const;
    /// Appends points of an instance, in the world, that no other of its points lies beyond, near enough; for
    /// `Camera::Fit`.
    void AddOutermost(std::uint32_t instance, std::vector<Vec3>& points) const;
    /// Gives them for some instances.
    std::vector<Vec3> Outermost(const InstanceRange& range) const;

    /// Moves instances away from where the document has them, by one way in the world each; none puts all
    /// back.
    void Displace(const std::vector<Vec3>& ways);
    /// Gives the way by which an instance is moved.
    Vec3 DisplacementOf(std::uint32_t instance) const
    {
        return instance < m_ways.size() ? m_ways[instance] : Vec3();
    }

private:
    class Builder;

    std::vector<Shape> m_shapes;
    std::vector<Instance> m_instances;
    std::vector<Look> m_looks;
    std::vector<QString> m_textures;
    std::unordered_map<const Zemtar::CZemtarSceneNode*, InstanceRange> m_ranges;
    Bounds m_extent;
    std::vector<Vec3> m_ways;
    mutable std::vector<std::vector<Vec3>> m_outermost; ///< of each shape, once it was asked for
};
