#pragma once

#include "host/CZemtarEntity.h"
#include "host/CZemtarString.h"
#include "host/ZemtarCoreExport.h"

#include <set>

namespace Zemtar {

/// A named state of the scene: which nodes are hidden in it.
class ZEMTAR_CORE_EXPORT CZemtarSceneState : public CZemtarEntity
{
public:
    /// Makes a state in which every node shows in `document`, which owns it; null without a document.
    static CZemtarSceneState* Create(CZemtarDocument* document);

    const CZemtarString& Name() const { return m_name; }
    void SetName(CZemtarString name) { m_name = name; }
    bool IsHidden(const CZemtarID& node) const { return m_hidden.count(node) != 0; }
    void SetHidden(const CZemtarID& node, bool hidden);

    const char* ArchiveName() const override { return "scene-state"; }

protected:
    using CZemtarEntity::CZemtarEntity;

private:
    CZemtarString m_name;
    std::set<CZemtarID> m_hidden;
};

} // namespace Zemtar
