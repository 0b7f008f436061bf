#include "apps/export/SceneParts.h"

#include "host/CZemtar3DObject.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMaterial.h"

#include <algorithm>
#include <cmath>

using namespace Zemtar;

namespace {

double Channel(double value, double otherwise)
{
    return std::isnan(value) ? otherwise : std::clamp(value, 0.0, 1.0);
}

std::array<double, 3> ChannelsOf(const CZemtarColor& color, double otherwise)
{
    return {Channel(color.R(), otherwise), Channel(color.G(), otherwise), Channel(color.B(), otherwise)};
}

std::string PictureOf(const CZemtarCommonBasicMaterial& material, enumTextureType type)
{
    const CZemtarTexture* texture = material.Texture(type);
    return texture ? texture->FullFilename(true).toStdString() : std::string();
}

bool IsFinite(const CZemtarMatrix& matrix)
{
    return std::all_of(matrix.Data(), matrix.Data() + 12, [](double value) { return std::isfinite(value); });
}

} // namespace

Surface SurfaceOf(const CZemtarMaterial* material)
{
    Surface surface;
    if (!material || !material->BasicMaterial()) {
        return surface;
    }
    surface.name = material->Name().toStdString();
    if (const CZemtarCommonBasicMaterial* general = material->BasicMaterialAsGeneralMaterial()) {
        surface.color = ChannelsOf(general->DiffuseColor(), 0.8);
        surface.emissive = ChannelsOf(general->EmissiveColor(), 0.0);
        surface.opacity = Channel(general->Opacity(), 1.0);
        surface.colorPicture = PictureOf(*general, eTextureDiffuse);
        surface.emissivePicture = PictureOf(*general, eTextureEmissive);
        surface.normalPicture = PictureOf(*general, eTextureNormal);
        return surface;
    }
    const CZemtarColor color = material->BasicMaterial()->DisplayColor();
    surface.color = ChannelsOf(color, 0.8);
    surface.opacity = Channel(color.A(), 1.0);
    surface.lit = false;
    return surface;
}

SceneParts::SceneParts(const CZemtarDocument& document)
{
    for (const CZemtarSceneNode* root : document.RootNodes()) {
        Append(*root, ScenePart::None);
    }
    m_roots = static_cast<std::uint32_t>(m_parts.size());
    for (std::uint32_t i = 0; i < m_parts.size(); ++i) {
        m_parts[i].firstChild = static_cast<std::uint32_t>(m_parts.size());
        for (const CZemtarSceneNode* child : m_parts[i].node->ChildNodes()) {
            if (!child->IsDeleted()) {
                Append(*child, i);
            }
        }
    }
}

void SceneParts::Append(const CZemtarSceneNode& node, std::uint32_t parent)
{
    if (!IsFinite(node.LocalMatrix())) {
        m_notes.push_back("the transform of \"" + node.Name().toStdString() +
                          "\" is not finite; it is left out with all that is below");
        return;
    }
    ScenePart part;
    part.node = &node;
    part.parent = parent;
    if (const auto* object = dynamic_cast<const CZemtar3DObject*>(&node); object && object->Geometry()) {
        part.shape = ShapeNumber(*object);
    }
    m_parts.push_back(part);
}

std::uint32_t SceneParts::ShapeNumber(const CZemtar3DObject& object)
{
    const CZemtarTextureCoordinatesTable* coordinates = object.TextureCoordinatesTable();
    const ShapeKey key{object.Geometry(), coordinates && !coordinates->IsEmpty() ? coordinates : nullptr};
    const auto [entry, isNew] = m_numbers.try_emplace(key, ScenePart::None);
    if (isNew) {
        const ShapeView shape(*key.first, key.second);
        if (shape.IsDamaged()) {
            m_notes.push_back(
                "\"" + object.Name().toStdString() +
                "\" has coordinates or indices that are no places; what needs them is left out");
        }
        if (!shape.IsEmpty()) {
            entry->second = static_cast<std::uint32_t>(m_shapes.size());
            m_shapes.push_back(shape);
        }
    }
    return entry->second;
}

std::uint32_t SceneParts::LastChildOf(std::uint32_t part) const
{
    return part + 1 < m_parts.size() ? m_parts[part + 1].firstChild
                                     : static_cast<std::uint32_t>(m_parts.size());
}

const CZemtarMaterial* SceneParts::MaterialOf(const ScenePart& part)
{
    return static_cast<const CZemtar3DObject*>(part.node)->Material();
}

std::string SceneParts::NameOf(const ScenePart& part) const
{
    const CZemtarSceneNode* node = part.node;
    while (node->Name().IsEmpty() && node->Parent()) {
        node = node->Parent();
    }
    return node->Name().toStdString();
}
