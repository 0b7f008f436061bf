#pragma once

#include "host/CZemtar3DVertex.h"
#include "host/CZemtarArchivable.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// What a solid body's shape says about it: its volume and its centre of mass. The original volume is the one
/// that the exact body had when it was read; the volume is the one that the host now assumes, and follows
/// edits.
class ZEMTAR_CORE_EXPORT CZemtarSolidAttributes : public CZemtarArchivable
{
public:
    /// Volumes are in cubic metres.
    double Volume() const { return m_volume; }
    void SetVolume(double volume) { m_volume = volume; }
    double OriginalVolume() const { return m_originalVolume; }
    void SetOriginalVolume(double volume) { m_originalVolume = volume; }

    /// The centre of mass, local to the node, in the document's length unit: who sets it before the
    /// document's unit is applied gives it in the original unit.
    const CZemtar3DVertex& CenterOfMass() const { return m_centerOfMass; }
    CZemtar3DVertex& CenterOfMass() { return m_centerOfMass; }

    const char* ArchiveName() const override { return "solid-attributes"; }

private:
    double m_volume = 0.0;
    double m_originalVolume = 0.0;
    CZemtar3DVertex m_centerOfMass;
};

} // namespace Zemtar
