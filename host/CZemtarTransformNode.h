#pragma once

#include "host/CZemtarSceneNode.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// A group: a node that holds others and places them by its local transform.
class ZEMTAR_CORE_EXPORT CZemtarTransformNode : public CZemtarSceneNode
{
public:
    /// Makes a plain group, without a parent, in `document`, which owns it; null without a document.
    static CZemtarSceneNode* Create(CZemtarDocument* document);

    const char* ArchiveName() const override { return "transform-node"; }

protected:
    using CZemtarSceneNode::CZemtarSceneNode;
    std::unique_ptr<CZemtarSceneNode> CloneSelf(CZemtarTreeCopy& copy) const override;
};

} // namespace Zemtar
