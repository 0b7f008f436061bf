// Materials and the basic materials that show them.

#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMaterial.h"

namespace Zemtar {

CZemtarBasicMaterial* CZemtarBasicMaterial::Create(CZemtarDocument* document)
{
    using Self = CZemtarBasicMaterial;
    return document != nullptr ? document->Adopt(std::unique_ptr<Self>(new Self(*document))) : nullptr;
}

CZemtarBasicMaterial* CZemtarBasicMaterial::CloneInto(CZemtarDocument& document) const
{
    CZemtarBasicMaterial* copy = Create(&document);
    copy->m_displayColor = m_displayColor;
    return copy;
}

CZemtarCommonBasicMaterial* CZemtarCommonBasicMaterial::Create(CZemtarDocument* document)
{
    using Self = CZemtarCommonBasicMaterial;
    return document != nullptr ? document->Adopt(std::unique_ptr<Self>(new Self(*document))) : nullptr;
}

CZemtarBasicMaterial* CZemtarCommonBasicMaterial::CloneInto(CZemtarDocument& document) const
{
    CZemtarCommonBasicMaterial* copy = Create(&document);
    copy->m_authored = m_authored;
    copy->m_runTime = m_runTime;
    copy->m_textures = m_textures;
    return copy;
}

void CZemtarCommonBasicMaterial::SetTexture(CZemtarString file, enumTextureType type)
{
    if (file.IsEmpty()) {
        m_textures.erase(type);
    } else {
        m_textures[type] = CZemtarTexture(file);
    }
}

const CZemtarTexture* CZemtarCommonBasicMaterial::Texture(enumTextureType type) const
{
    const auto found = m_textures.find(type);
    return found != m_textures.end() ? &found->second : nullptr;
}

CZemtarTexture* CZemtarCommonBasicMaterial::Texture(enumTextureType type)
{
    const auto found = m_textures.find(type);
    return found != m_textures.end() ? &found->second : nullptr;
}

CZemtarColor CZemtarCommonBasicMaterial::DisplayColor() const
{
    const CZemtarColor& color = m_runTime.diffuse;
    return {color.R(), color.G(), color.B(), m_runTime.opacity};
}

void CZemtarCommonBasicMaterial::SetDisplayColor(const CZemtarColor& color)
{
    for (Look* look : {&m_authored, &m_runTime}) {
        look->diffuse.SetRGBA(color.R(), color.G(), color.B(), 1.0);
        look->opacity = color.A();
    }
}

CZemtarMaterial* CZemtarMaterial::Create(CZemtarDocument* document)
{
    if (document == nullptr) {
        return nullptr;
    }
    CZemtarMaterial* material =
        document->Adopt(std::unique_ptr<CZemtarMaterial>(new CZemtarMaterial(*document)));
    material->m_basic = CZemtarCommonBasicMaterial::Create(document);
    return material;
}

void CZemtarMaterial::SetName(CZemtarString name)
{
    m_name = std::move(name);
}

CZemtarCommonBasicMaterial* CZemtarMaterial::BasicMaterialAsGeneralMaterial() const
{
    return dynamic_cast<CZemtarCommonBasicMaterial*>(m_basic);
}

CZemtarMaterial* CZemtarMaterial::CreateCopy(CZemtarDocument& document) const
{
    CZemtarMaterial* copy = document.Adopt(std::unique_ptr<CZemtarMaterial>(new CZemtarMaterial(document)));
    copy->m_name = m_name;
    copy->m_basic = m_basic != nullptr ? m_basic->CloneInto(document) : nullptr;
    return copy;
}

} // namespace Zemtar
