#pragma once

#include "apps/export/ShapeView.h"

#include <map>
#include <string>
#include <vector>

namespace Zemtar {
class CZemtar3DObject;
class CZemtarDocument;
class CZemtarMaterial;
class CZemtarMatrix;
class CZemtarSceneNode;
} // namespace Zemtar

/// What a material shows, as its author gave it: sRGB, all numbers 0 to 1, and its picture files, UTF-8.
struct Surface
{
    std::string name;
    std::array<double, 3> color{0.8, 0.8, 0.8};
    std::array<double, 3> emissive{};
    double opacity = 1.0;
    bool lit = true;
    std::string colorPicture;
    std::string emissivePicture;
    std::string normalPicture;

    bool HasPictures() const
    {
        return !colorPicture.empty() || !emissivePicture.empty() || !normalPicture.empty();
    }
};

/// Gives the look of a material; without one, a grey. A number that is none counts as the default.
Surface SurfaceOf(const Zemtar::CZemtarMaterial* material);

/// One visible node of the document.
struct ScenePart
{
    static constexpr std::uint32_t None = 0xFFFFFFFFU;

    const Zemtar::CZemtarSceneNode* node = nullptr;
    std::uint32_t parent = None;  ///< none for a root
    std::uint32_t firstChild = 0; ///< the children stand in a row up to the next part's first
    std::uint32_t shape = None;   ///< none for a node that shows nothing
};

/// A document's visible nodes level by level, roots first, and the shapes that they show, each once.
class SceneParts
{
public:
    explicit SceneParts(const Zemtar::CZemtarDocument& document);

    const std::vector<ScenePart>& Parts() const { return m_parts; }
    std::uint32_t RootCount() const { return m_roots; }
    std::uint32_t LastChildOf(std::uint32_t part) const; ///< the one behind it
    const std::vector<ShapeView>& Shapes() const { return m_shapes; }
    const ShapeView& ShapeOf(const ScenePart& part) const { return m_shapes[part.shape]; }
    static const Zemtar::CZemtarMaterial* MaterialOf(const ScenePart& part);
    /// The part's name, or that of the nearest node above that has one.
    std::string NameOf(const ScenePart& part) const;
    /// What was left out, a line each.
    std::vector<std::string>& Notes() { return m_notes; }

private:
    void Append(const Zemtar::CZemtarSceneNode& node, std::uint32_t parent);
    std::uint32_t ShapeNumber(const Zemtar::CZemtar3DObject& object);

    using ShapeKey = std::pair<const Zemtar::CZemtarGeometry*, const Zemtar::CZemtarTextureCoordinatesTable*>;

    std::vector<ScenePart> m_parts;
    std::vector<ShapeView> m_shapes;
    std::map<ShapeKey, std::uint32_t> m_numbers;
    std::vector<std::string> m_notes;
    std::uint32_t m_roots = 0;
};
