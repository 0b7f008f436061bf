#pragma once

#include "host/CZemtar3DVertex.h"
#include "host/CZemtarEntity.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// A plane that cuts the scene open: what lies on the side that its normal points to is hidden.
class ZEMTAR_CORE_EXPORT CZemtarSectionPlane : public CZemtarEntity
{
public:
    /// Makes the plane z = 0, hiding what lies above, in `document`, which owns it; null without a document.
    static CZemtarSectionPlane* Create(CZemtarDocument* document);

    const CZemtar3DVertex& Origin() const { return m_origin; }
    void SetOrigin(const CZemtar3DVertex& origin) { m_origin = origin; }
    const CZemtar3DVertex& Normal() const { return m_normal; }
    void SetNormal(const CZemtar3DVertex& normal) { m_normal = normal; }

    const char* ArchiveName() const override { return "section-plane"; }

protected:
    using CZemtarEntity::CZemtarEntity;

private:
    void ScaleLengths(const CZemtarLengthRatio& ratio) override;

    CZemtar3DVertex m_origin;
    CZemtar3DVertex m_normal{0.0, 0.0, 1.0};
};

} // namespace Zemtar
