#pragma once

#include "host/CZemtarColor.h"
#include "host/CZemtarEntity.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

class CZemtarMaterial;

/// How a material shows without a renderer of its own. On its own it is unlit: one flat colour, as
/// annotations use. What most materials have is its descendant `CZemtarCommonBasicMaterial`, which is lit and
/// textured.
class ZEMTAR_CORE_EXPORT CZemtarBasicMaterial : public CZemtarEntity
{
public:
    /// Makes a flat white basic material in `document`, which owns it; null without a document.
    static CZemtarBasicMaterial* Create(CZemtarDocument* document);

    /// Gives the one colour that stands for the material where no more can be shown; alpha is the opacity.
    virtual CZemtarColor DisplayColor() const { return m_displayColor; }
    virtual void SetDisplayColor(const CZemtarColor& color) { m_displayColor = color; }

    const char* ArchiveName() const override { return "basic-material"; }

protected:
    using CZemtarEntity::CZemtarEntity;

private:
    friend class CZemtarMaterial;
    /// Makes a basic material of the same class and content in `document`.
    virtual CZemtarBasicMaterial* CloneInto(CZemtarDocument& document) const;

    CZemtarColor m_displayColor{1.0, 1.0, 1.0, 1.0};
};

} // namespace Zemtar
