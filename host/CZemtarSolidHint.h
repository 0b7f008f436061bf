#pragma once

#include "host/CZemtarID.h"
#include "host/CZemtarMatrix.h"
#include "host/CZemtarSolidAttributes.h"
#include "host/ZemtarCoreExport.h"

#include <vector>

namespace Zemtar {

/// Tells the host that the meshes below a node are the skin of one solid, and what is known of that solid.
/// Built by an importer and copied into a node with `CZemtarSceneNode::SolidHintSet`.
class ZEMTAR_CORE_EXPORT CZemtarSolidHint : public CZemtarArchivable
{
public:
    const CZemtarSolidAttributes& Attributes() const { return m_attributes; }
    CZemtarSolidAttributes& Attributes() { return m_attributes; }

    /// The inertia of the body at density 1 about its centre of mass in the upper left 3 by 3 block, in
    /// metres to the fifth power; the identity matrix when it is not known.
    const CZemtarMatrix& InertiaMatrix() const { return m_inertia; }
    void SetInertiaMatrix(const CZemtarMatrix& inertia) { m_inertia = inertia; }

    /// The ids of the nodes that make up the solid.
    const std::vector<CZemtarID>& ChildIDs() const { return m_childIDs; }
    std::vector<CZemtarID>& ChildIDs() { return m_childIDs; }
    void AppendChildID(const CZemtarID& id) { m_childIDs.push_back(id); }

    const char* ArchiveName() const override { return "solid-hint"; }

private:
    CZemtarSolidAttributes m_attributes;
    CZemtarMatrix m_inertia;
    std::vector<CZemtarID> m_childIDs;
};

} // namespace Zemtar
