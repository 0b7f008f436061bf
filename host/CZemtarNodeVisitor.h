#pragma once

#include "host/CZemtarMatrix.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

class CZemtarDocument;
class CZemtarSceneNode;

/// Base of visitors that walk a scene. Each node is visited before its children, children in their order, and
/// groups are transparent: what is told as the parent is the nearest ancestor that is an assembly or a part.
/// The walk does not recurse, so trees may be of any depth.
///
///     struct Counter : CZemtarNodeVisitor
///     {
///         unsigned nodes = 0;
///         bool Apply(CZemtarSceneNode*, CZemtarMatrix&, CZemtarSceneNode*) override { ++nodes; return true;
///         }
///     };
///     CZemtarMatrix root;
///     counter.TraverseDocument(document, root, nullptr);
class ZEMTAR_CORE_EXPORT CZemtarNodeVisitor
{
public:
    /// Is called for each node, deleted ones included, with the transform from the node's own coordinates to
    /// the world's and its parent (null at the top). The children are placed by what is left in `matrix`.
    /// False passes the subtree below the node over.
    virtual bool Apply(CZemtarSceneNode* node, CZemtarMatrix& matrix, CZemtarSceneNode* parent) = 0;
    /// Walks all roots of a document, placed by `matrix`; `parent` is told as the parent of the topmost
    /// nodes. Nothing happens without a document.
    virtual void TraverseDocument(CZemtarDocument* document, CZemtarMatrix& matrix, CZemtarSceneNode* parent);
    /// Walks a node and its subtree, as above.
    virtual void Traverse(CZemtarSceneNode* node, CZemtarMatrix matrix, CZemtarSceneNode* parent);

protected:
    CZemtarNodeVisitor() = default;
    CZemtarNodeVisitor(const CZemtarNodeVisitor&) = default;
    CZemtarNodeVisitor& operator=(const CZemtarNodeVisitor&) = default;
    ~CZemtarNodeVisitor() = default;
};

} // namespace Zemtar
