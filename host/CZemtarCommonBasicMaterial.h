#pragma once

#include "host/CZemtarBasicMaterial.h"
#include "host/CZemtarTexture.h"
#include "host/ZemtarCoreExport.h"
#include "host/enumTextureType.h"

#include <map>

namespace Zemtar {

/// The general basic material: a colour for each of four roles, an opacity and textures.
///
///     CZemtarCommonBasicMaterial* general = material->BasicMaterialAsGeneralMaterial();
///     general->SetDiffuseColor(red);
///     general->SetRunTimeDiffuseColor(red);
///     general->SetTexture("/textures/wood.png", eTextureDiffuse);
///
/// Each colour and the opacity stand in two fields: the one that the author gave, which is stored and
/// exported, and the run-time one, which is drawn and which animations and highlights may change. Who gives a
/// new material its look writes both. Colours are sRGB, 0 to 1; opacity runs from 0, invisible, to 1.
class ZEMTAR_CORE_EXPORT CZemtarCommonBasicMaterial : public CZemtarBasicMaterial
{
public:
    /// Makes one in `document`, which owns it; null without a document. Defaults: diffuse light grey (0.8),
    /// ambient 0.2, specular and emissive black, opacity 1, no texture.
    static CZemtarCommonBasicMaterial* Create(CZemtarDocument* document);

    const CZemtarColor& DiffuseColor() const { return m_authored.diffuse; }
    const CZemtarColor& AmbientColor() const { return m_authored.ambient; }
    const CZemtarColor& SpecularColor() const { return m_authored.specular; }
    const CZemtarColor& EmissiveColor() const { return m_authored.emissive; }
    double Opacity() const { return m_authored.opacity; }
    void SetDiffuseColor(const CZemtarColor& color) { m_authored.diffuse = color; }
    void SetAmbientColor(const CZemtarColor& color) { m_authored.ambient = color; }
    void SetSpecularColor(const CZemtarColor& color) { m_authored.specular = color; }
    void SetEmissiveColor(const CZemtarColor& color) { m_authored.emissive = color; }
    void SetOpacity(double opacity) { m_authored.opacity = opacity; }

    const CZemtarColor& RunTimeDiffuseColor() const { return m_runTime.diffuse; }
    const CZemtarColor& RunTimeAmbientColor() const { return m_runTime.ambient; }
    const CZemtarColor& RunTimeSpecularColor() const { return m_runTime.specular; }
    const CZemtarColor& RunTimeEmissiveColor() const { return m_runTime.emissive; }
    double RunTimeOpacity() const { return m_runTime.opacity; }
    void SetRunTimeDiffuseColor(const CZemtarColor& color) { m_runTime.diffuse = color; }
    void SetRunTimeAmbientColor(const CZemtarColor& color) { m_runTime.ambient = color; }
    void SetRunTimeSpecularColor(const CZemtarColor& color) { m_runTime.specular = color; }
    void SetRunTimeEmissiveColor(const CZemtarColor& color) { m_runTime.emissive = color; }
    void SetRunTimeOpacity(double opacity) { m_runTime.opacity = opacity; }

    /// Sets the image file that drives `type`, given with its folder; an empty name removes the texture.
    void SetTexture(CZemtarString file, enumTextureType type);
    /// Gives the texture of that type, or null; valid until it is removed.
    const CZemtarTexture* Texture(enumTextureType type) const;
    CZemtarTexture* Texture(enumTextureType type);

    /// The run-time diffuse colour with the run-time opacity as alpha; setting it sets both fields of both.
    CZemtarColor DisplayColor() const override;
    void SetDisplayColor(const CZemtarColor& color) override;

    const char* ArchiveName() const override { return "common-basic-material"; }

protected:
    using CZemtarBasicMaterial::CZemtarBasicMaterial;

private:
    CZemtarBasicMaterial* CloneInto(CZemtarDocument& document) const override;

    struct Look
    {
        CZemtarColor diffuse{0.8, 0.8, 0.8, 1.0};
        CZemtarColor ambient{0.2, 0.2, 0.2, 1.0};
        CZemtarColor specular{0.0, 0.0, 0.0, 1.0};
        CZemtarColor emissive{0.0, 0.0, 0.0, 1.0};
        double opacity = 1.0;
    };

    Look m_authored;
    Look m_runTime;
    std::map<enumTextureType, CZemtarTexture> m_textures;
};

} // namespace Zemtar
