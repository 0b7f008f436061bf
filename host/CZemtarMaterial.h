#pragma once

#include "host/CZemtarEntity.h"
#include "host/CZemtarString.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

class CZemtarBasicMaterial;
class CZemtarCommonBasicMaterial;

/// A material of a document, which mesh objects refer to: a name and a basic material.
///
///     CZemtarMaterial* material = CZemtarMaterial::Create(document);
///     material->SetName("brass");
///     material->BasicMaterialAsGeneralMaterial()->SetOpacity(0.5);
class ZEMTAR_CORE_EXPORT CZemtarMaterial : public CZemtarEntity
{
public:
    /// Makes a material named "Material" with a general basic material in `document`, which owns it; null
    /// without a document.
    static CZemtarMaterial* Create(CZemtarDocument* document);

    virtual const CZemtarString& Name() const { return m_name; }
    virtual void SetName(CZemtarString name);

    /// Gives the basic material; null when it was taken away.
    CZemtarBasicMaterial* BasicMaterial() const { return m_basic; }
    /// Replaces the basic material by another one of the same document; null takes it away.
    void SetBasicMaterial(CZemtarBasicMaterial* basic) { m_basic = basic; }
    /// Gives the basic material where it is a general one, which that of a new material is; null otherwise.
    CZemtarCommonBasicMaterial* BasicMaterialAsGeneralMaterial() const;

    /// Makes a copy in `document`, with a basic material of its own.
    CZemtarMaterial* CreateCopy(CZemtarDocument& document) const;

    const char* ArchiveName() const override { return "material"; }

protected:
    using CZemtarEntity::CZemtarEntity;

private:
    CZemtarString m_name = "Material";
    CZemtarBasicMaterial* m_basic = nullptr;
};

} // namespace Zemtar
