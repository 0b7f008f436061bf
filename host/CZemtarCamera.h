#pragma once

#include "host/CZemtar3DVertex.h"
#include "host/CZemtarEntity.h"
#include "host/CZemtarString.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// A named perspective view: where it stands, where it looks, which way is up, and how wide it sees.
class ZEMTAR_CORE_EXPORT CZemtarCamera : public CZemtarEntity
{
public:
    /// Makes a camera at (0, 0, 1) that looks at the origin, y up, in `document`, which owns it; null without
    /// a document.
    static CZemtarCamera* Create(CZemtarDocument* document);

    const CZemtarString& Name() const { return m_name; }
    void SetName(CZemtarString name) { m_name = name; }
    const CZemtar3DVertex& Position() const { return m_position; }
    void SetPosition(const CZemtar3DVertex& position) { m_position = position; }
    const CZemtar3DVertex& Target() const { return m_target; }
    void SetTarget(const CZemtar3DVertex& target) { m_target = target; }
    const CZemtar3DVertex& Up() const { return m_up; }
    void SetUp(const CZemtar3DVertex& up) { m_up = up; }
    /// The vertical angle of view, in degrees.
    double FieldOfView() const { return m_fieldOfView; }
    void SetFieldOfView(double degrees) { m_fieldOfView = degrees; }

    const char* ArchiveName() const override { return "camera"; }

protected:
    using CZemtarEntity::CZemtarEntity;

private:
    void ScaleLengths(const CZemtarLengthRatio& ratio) override;

    CZemtarString m_name;
    CZemtar3DVertex m_position{0.0, 0.0, 1.0};
    CZemtar3DVertex m_target;
    CZemtar3DVertex m_up{0.0, 1.0, 0.0};
    double m_fieldOfView = 45.0;
};

} // namespace Zemtar
