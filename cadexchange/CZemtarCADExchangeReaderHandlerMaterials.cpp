#include "cadexchange/CZemtarCADExchangeReaderHandler.h"

#include "cadexchange/Truncation.h"
#include "host/CZemtarColor.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarMaterial.h"
#include "host/enumTextureType.h"

#include <cadex/ModelData_Material.hxx>
#include <cadex/ModelData_TextureSet.hxx>

#include <algorithm>
#include <string>

namespace Zemtar {

namespace {

/// All four components neither below 0 nor above 1; NaN is neither.
bool IsInRange(const cadex::ModelData_Color& color)
{
    const float components[] = {color.R(), color.G(), color.B(), color.A()};
    return std::none_of(std::begin(components), std::end(components),
                        [](float component) { return component < 0.0f || component > 1.0f; });
}

CZemtarColor Opaque(const cadex::ModelData_Color& color)
{
    return CZemtarColor(color.R(), color.G(), color.B(), 1.0);
}

/// NaN counts as opaque, so that the object is seen.
double OpacityOf(const cadex::ModelData_Color& color)
{
    const double alpha = color.A();
    return alpha < 0.0 ? 0.0 : alpha < 1.0 ? alpha : 1.0;
}

/// "RGBA:127,63,255,255": the components times 255 in single precision, truncated.
std::string NameOf(const cadex::ModelData_Color& color)
{
    std::string name = "RGBA:";
    for (const float component : {color.R(), color.G(), color.B(), color.A()}) {
        name += std::to_string(TruncateToInt(component * 255.0f)) + ',';
    }
    name.pop_back();
    return name;
}

using ColorSetter = void (CZemtarCommonBasicMaterial::*)(const CZemtarColor&);

void SetColors(CZemtarCommonBasicMaterial& general, const cadex::ModelData_Color& color, ColorSetter authored,
               ColorSetter runTime)
{
    if (IsInRange(color)) {
        (general.*authored)(Opaque(color));
        (general.*runTime)(Opaque(color));
    }
}

void TakeColors(CZemtarMaterial& material, const cadex::ModelData_Material& source)
{
    using General = CZemtarCommonBasicMaterial;
    General& general = *material.BasicMaterialAsGeneralMaterial();
    const cadex::ModelData_Color& diffuse = source.DiffuseColor();
    SetColors(general, diffuse, &General::SetDiffuseColor, &General::SetRunTimeDiffuseColor);
    if (IsInRange(diffuse)) {
        general.SetOpacity(OpacityOf(diffuse));
        general.SetRunTimeOpacity(OpacityOf(diffuse));
        material.SetName(NameOf(diffuse));
    }
    SetColors(general, source.AmbientColor(), &General::SetAmbientColor, &General::SetRunTimeAmbientColor);
    SetColors(general, source.EmissionColor(), &General::SetEmissiveColor, &General::SetRunTimeEmissiveColor);
    SetColors(general, source.SpecularColor(), &General::SetSpecularColor, &General::SetRunTimeSpecularColor);
}

} // namespace

CZemtarMaterial* CZemtarCADExchangeReaderHandler::ProcessMaterial(cadex::ModelData_Appearance appearance)
{
    if (appearance.IsNull()) {
        return nullptr;
    }
    const auto known = m_appearanceMaterials.find(appearance);
    if (known != m_appearanceMaterials.end()) {
        return known->second;
    }
    CZemtarMaterial* material = NewMaterial(appearance);
    if (material != nullptr) {
        m_appearanceMaterials.emplace(appearance, material);
    }
    return material;
}

CZemtarMaterial* CZemtarCADExchangeReaderHandler::NewMaterial(const cadex::ModelData_Appearance& appearance)
{
    CZemtarMaterial* material = nullptr;
    cadex::ModelData_Material source;
    if (appearance.ToMaterial(source)) {
        material = CZemtarMaterial::Create(m_document);
        TakeColors(*material, source);
    }
    const cadex::ModelData_TextureSet textures = appearance.TextureSet();
    if (!textures.IsNull()) {
        m_textureVisitor.Clear();
        textures.Accept(m_textureVisitor);
        const CZemtarString image = m_textureVisitor.GetFilePath();
        if (!image.IsEmpty()) {
            if (material == nullptr) {
                material = CZemtarMaterial::Create(m_document);
            }
            material->BasicMaterialAsGeneralMaterial()->SetTexture(image, eTextureDiffuse);
        }
    }
    return material;
}

void CZemtarCADExchangeReaderHandler::UseAppearance(const cadex::ModelData_Appearance& appearance)
{
    if (CZemtarMaterial* material = ProcessMaterial(appearance)) {
        m_currentMaterial = material;
    }
}

} // namespace Zemtar
