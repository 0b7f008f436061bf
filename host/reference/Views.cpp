// Cameras, section planes, scene states and the fonts of 3D text.

#include "host/CZemtar3DTextGeometryGenerator.h"
#include "host/CZemtarCamera.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarSceneState.h"
#include "host/CZemtarSectionPlane.h"
#include "host/CZemtarUnit.h"

#include <algorithm>

namespace Zemtar {
namespace {

CZemtar3DVertex Scaled(const CZemtar3DVertex& point, const CZemtarLengthRatio& ratio)
{
    return {ratio.Apply(point.X()), ratio.Apply(point.Y()), ratio.Apply(point.Z())};
}

} // namespace

CZemtarCamera* CZemtarCamera::Create(CZemtarDocument* document)
{
    using Self = CZemtarCamera;
    return document != nullptr ? document->Adopt(std::unique_ptr<Self>(new Self(*document))) : nullptr;
}

void CZemtarCamera::ScaleLengths(const CZemtarLengthRatio& ratio)
{
    m_position = Scaled(m_position, ratio);
    m_target = Scaled(m_target, ratio);
}

CZemtarSectionPlane* CZemtarSectionPlane::Create(CZemtarDocument* document)
{
    using Self = CZemtarSectionPlane;
    return document != nullptr ? document->Adopt(std::unique_ptr<Self>(new Self(*document))) : nullptr;
}

void CZemtarSectionPlane::ScaleLengths(const CZemtarLengthRatio& ratio)
{
    m_origin = Scaled(m_origin, ratio);
}

CZemtarSceneState* CZemtarSceneState::Create(CZemtarDocument* document)
{
    using Self = CZemtarSceneState;
    return document != nullptr ? document->Adopt(std::unique_ptr<Self>(new Self(*document))) : nullptr;
}

void CZemtarSceneState::SetHidden(const CZemtarID& node, bool hidden)
{
    if (hidden) {
        m_hidden.insert(node);
    } else {
        m_hidden.erase(node);
    }
}

CZemtar3DTextGeometryGenerator* CZemtar3DTextGeometryGenerator::getInstance()
{
    static CZemtar3DTextGeometryGenerator instance;
    return &instance;
}

void CZemtar3DTextGeometryGenerator::RegisterFont(const CZemtarFont& font)
{
    const auto known = std::ranges::find_if(m_fonts, [&font](const CZemtarFont& other) {
        return other.FontName().IsEqualTo(font.FontName(), false);
    });
    if (known != m_fonts.end()) {
        *known = font;
    } else {
        m_fonts.push_back(font);
    }
}

const CZemtarFont* CZemtar3DTextGeometryGenerator::FindFont(const CZemtarString& name) const
{
    const auto found = std::ranges::find_if(
        m_fonts, [&name](const CZemtarFont& font) { return font.FontName().IsEqualTo(name, false); });
    return found != m_fonts.end() ? &*found : nullptr;
}

} // namespace Zemtar
