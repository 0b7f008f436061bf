#pragma once

#include "host/CZemtarEntity.h"
#include "host/CZemtarMatrix.h"
#include "host/CZemtarString.h"
#include "host/ZemtarCoreExport.h"

#include <memory>
#include <vector>

namespace Zemtar {

class CZemtarMetaData;
class CZemtarSolidHint;
class CZemtarTransform;
class CZemtarTreeCopy;

/// A node of the scene tree: a name, a local transform, children, metadata and a kind. Concrete nodes are
/// groups (`CZemtarTransformNode`) and meshes (`CZemtar3DObject`).
///
///     CZemtarSceneNode* part = CZemtarTransformNode::Create(document);
///     part->SetNodeType(CZemtarSceneNode::eNodeTypePart);
///     part->SetParent(assembly);
///
/// A node takes a few hundred bytes; matrix, metadata and solid hint are held only where they were set.
class ZEMTAR_CORE_EXPORT CZemtarSceneNode : public CZemtarEntity
{
public:
    /// Parts and assemblies give the scene its structure; plain groups, the default, only place what is below
    /// them.
    enum enumNodeType
    {
        eNodeTypePart = 0,
        eNodeTypeAssembly = 1,
        eNodeTypeGroup = 2
    };

    ~CZemtarSceneNode() override;

    const CZemtarString& Name() const { return m_name; }
    virtual void SetName(CZemtarString name);
    enumNodeType NodeType() const { return m_nodeType; }
    void SetNodeType(enumNodeType type) { m_nodeType = type; }
    bool IsPart() const { return m_nodeType == eNodeTypePart; }
    bool IsAssembly() const { return m_nodeType == eNodeTypeAssembly; }

    // The tree

    /// Moves the node, with its subtree, to the end of `parent`'s children; null makes it a root. Gives the
    /// node's id. A parent in the node's own subtree or in another document changes nothing and gives the
    /// null id.
    CZemtarID SetParent(CZemtarSceneNode* parent);
    CZemtarSceneNode* Parent() const { return m_parent; }
    /// Replaces what `children` holds by the children in order or, with `recursive`, by the whole subtree
    /// below, each node before its children. Deleted nodes, and what is below them, are left out.
    void Children(std::vector<CZemtarSceneNode*>& children, bool recursive) const;
    /// Gives the direct children, deleted ones included.
    const std::vector<CZemtarSceneNode*>& ChildNodes() const { return m_children; }
    /// Copies the node and its subtree (deleted nodes left out) into `document`, below `parent` or as a root:
    /// names, kinds, transforms, metadata, solid hints (naming the copied children) and materials. With
    /// `shareGeometry` the copies share the geometry, and its definition id, until one of them is edited;
    /// without, each gets its own at once. In another document geometry and materials are copied once each.
    /// Gives the copy; null without a document or with a parent of another one.
    CZemtarSceneNode* CreateTreeCopy(CZemtarDocument* document, CZemtarSceneNode* parent,
                                     bool shareGeometry) const;

    // Placement

    CZemtarMatrix LocalMatrix() const { return m_localMatrix ? *m_localMatrix : CZemtarMatrix(); }
    void SetLocalMatrix(const CZemtarMatrix& matrix);
    /// Takes over the transform's matrix as it is now; null gives the identity.
    void SetLocalTransform(const CZemtarTransform* transform);
    /// Gives the transform from the node's own coordinates to the world's or, without `includeLocal`, from
    /// its parent's.
    CZemtarMatrix LocalToWorldMatrix(bool includeLocal) const;

    // What is known of it

    /// Never null; belongs to the node.
    CZemtarMetaData* MetaData();
    const CZemtarMetaData* MetaData() const;
    /// Copies the hint into the node, in place of an earlier one.
    void SolidHintSet(const CZemtarSolidHint& hint);
    /// Null when none was set; valid until the next `SolidHintSet`.
    const CZemtarSolidHint* SolidHint() const { return m_solidHint.get(); }

protected:
    explicit CZemtarSceneNode(CZemtarDocument& document);

    /// Makes a node of the same class in the copy's document, with what the class itself holds; the rest is
    /// copied by the base.
    virtual std::unique_ptr<CZemtarSceneNode> CloneSelf(CZemtarTreeCopy& copy) const = 0;

private:
    friend class CZemtarTreeCopy;
    void ScaleLengths(const CZemtarLengthRatio& ratio) override;

    CZemtarString m_name;
    CZemtarSceneNode* m_parent = nullptr;
    std::vector<CZemtarSceneNode*> m_children;
    std::unique_ptr<CZemtarMatrix> m_localMatrix; ///< null: the identity
    std::unique_ptr<CZemtarMetaData> m_metaData;  ///< null: empty
    std::unique_ptr<CZemtarSolidHint> m_solidHint;
    enumNodeType m_nodeType = eNodeTypeGroup;
};

} // namespace Zemtar
