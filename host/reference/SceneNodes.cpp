// The nodes of a scene: the base, groups and mesh objects.

#include "host/CZemtar3DObject.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarSolidHint.h"
#include "host/CZemtarTransform.h"
#include "host/CZemtarTransformNode.h"
#include "host/reference/TreeCopy.h"

#include <algorithm>
#include <string>

namespace Zemtar {
namespace {

bool IsWithin(const CZemtarSceneNode* node, const CZemtarSceneNode* subtree)
{
    while (node != nullptr && node != subtree) {
        node = node->Parent();
    }
    return node == subtree;
}

void ScaleTranslation(CZemtarMatrix& matrix, const CZemtarLengthRatio& ratio)
{
    for (int row = 0; row < 3; ++row) {
        matrix.M(row, 3) = ratio.Apply(matrix.M(row, 3));
    }
}

} // namespace

CZemtarSceneNode::CZemtarSceneNode(CZemtarDocument& document) : CZemtarEntity(document) {}

CZemtarSceneNode::~CZemtarSceneNode() = default;

void CZemtarSceneNode::SetName(CZemtarString name)
{
    m_name = std::move(name);
}

CZemtarID CZemtarSceneNode::SetParent(CZemtarSceneNode* parent)
{
    const bool foreign = parent != nullptr && parent->Document() != Document();
    // A node without children has no subtree to fall into; this keeps building a deep tree from the top
    // linear.
    const bool cycle = parent == this || (!m_children.empty() && IsWithin(parent, this));
    if (foreign || cycle) {
        return {};
    }
    if (m_parent != nullptr) {
        std::erase(m_parent->m_children, this);
    }
    m_parent = parent;
    if (parent != nullptr) {
        parent->m_children.push_back(this);
    }
    return ID();
}

void CZemtarSceneNode::Children(std::vector<CZemtarSceneNode*>& children, bool recursive) const
{
    children.clear();
    std::vector<CZemtarSceneNode*> pending(m_children.rbegin(), m_children.rend());
    while (!pending.empty()) {
        CZemtarSceneNode* node = pending.back();
        pending.pop_back();
        if (node->IsDeleted()) {
            continue;
        }
        children.push_back(node);
        if (recursive) {
            pending.insert(pending.end(), node->m_children.rbegin(), node->m_children.rend());
        }
    }
}

CZemtarSceneNode* CZemtarSceneNode::CreateTreeCopy(CZemtarDocument* document, CZemtarSceneNode* parent,
                                                   bool shareGeometry) const
{
    if (document == nullptr || (parent != nullptr && parent->Document() != document)) {
        return nullptr;
    }
    // Hung in only at the end, so that a copy put into its own source does not meet itself.
    CZemtarSceneNode* copy = CZemtarTreeCopy(*Document(), *document, shareGeometry).Run(*this);
    if (parent != nullptr) {
        copy->m_parent = parent;
        parent->m_children.push_back(copy);
    }
    return copy;
}

void CZemtarSceneNode::SetLocalMatrix(const CZemtarMatrix& matrix)
{
    if (matrix.IsIdentity()) {
        m_localMatrix.reset();
    } else if (m_localMatrix) {
        *m_localMatrix = matrix;
    } else {
        m_localMatrix = std::make_unique<CZemtarMatrix>(matrix);
    }
}

void CZemtarSceneNode::SetLocalTransform(const CZemtarTransform* transform)
{
    SetLocalMatrix(transform != nullptr ? transform->Matrix() : CZemtarMatrix());
}

CZemtarMatrix CZemtarSceneNode::LocalToWorldMatrix(bool includeLocal) const
{
    CZemtarMatrix matrix;
    for (const CZemtarSceneNode* node = includeLocal ? this : m_parent; node != nullptr;
         node = node->m_parent) {
        if (node->m_localMatrix) {
            matrix = *node->m_localMatrix * matrix;
        }
    }
    return matrix;
}

CZemtarMetaData* CZemtarSceneNode::MetaData()
{
    if (!m_metaData) {
        m_metaData = std::make_unique<CZemtarMetaData>();
    }
    return m_metaData.get();
}

const CZemtarMetaData* CZemtarSceneNode::MetaData() const
{
    static const CZemtarMetaData empty;
    return m_metaData ? m_metaData.get() : &empty;
}

void CZemtarSceneNode::SolidHintSet(const CZemtarSolidHint& hint)
{
    m_solidHint = std::make_unique<CZemtarSolidHint>(hint);
}

void CZemtarSceneNode::ScaleLengths(const CZemtarLengthRatio& ratio)
{
    if (m_localMatrix) {
        ScaleTranslation(*m_localMatrix, ratio);
    }
    if (m_solidHint) {
        CZemtar3DVertex& center = m_solidHint->Attributes().CenterOfMass();
        center.SetXYZ(ratio.Apply(center.X()), ratio.Apply(center.Y()), ratio.Apply(center.Z()));
    }
}

CZemtarTransform* CZemtarTransform::Create(CZemtarDocument* document)
{
    using Self = CZemtarTransform;
    return document != nullptr ? document->Adopt(std::unique_ptr<Self>(new Self(*document))) : nullptr;
}

void CZemtarTransform::ScaleLengths(const CZemtarLengthRatio& ratio)
{
    ScaleTranslation(m_matrix, ratio);
}

CZemtarSceneNode* CZemtarTransformNode::Create(CZemtarDocument* document)
{
    using Self = CZemtarTransformNode;
    return document != nullptr ? document->Adopt(std::unique_ptr<Self>(new Self(*document))) : nullptr;
}

std::unique_ptr<CZemtarSceneNode> CZemtarTransformNode::CloneSelf(CZemtarTreeCopy& copy) const
{
    return std::unique_ptr<CZemtarSceneNode>(new CZemtarTransformNode(copy.Target()));
}

CZemtar3DObject* CZemtar3DObject::Create(CZemtarDocument* document)
{
    using Self = CZemtar3DObject;
    return document != nullptr ? document->Adopt(std::unique_ptr<Self>(new Self(*document))) : nullptr;
}

void CZemtar3DObject::SetGeometry(const CZemtarGeometry* geometry)
{
    // Every geometry was made by a document, never const; attaching changes nothing of it but its count of
    // users.
    auto* shared = const_cast<CZemtarGeometry*>(geometry);
    if (shared != nullptr) {
        ++shared->m_users;
    }
    if (m_geometry != nullptr) {
        --m_geometry->m_users;
    }
    m_geometry = shared;
}

CZemtarGeometry* CZemtar3DObject::EditableGeometry()
{
    if (m_geometry != nullptr && m_geometry->UserCount() > 1) {
        SetGeometry(m_geometry->CreateCopy(*Document()));
    }
    return m_geometry;
}

CZemtarString CZemtar3DObject::GeometyDefinitionID() const
{
    if (m_geometry == nullptr) {
        return {};
    }
    std::wstring id = std::to_wstring(m_geometry->ID().Value());
    if (m_textureCoordinates != nullptr && !m_textureCoordinates->IsEmpty()) {
        id.append(L"-").append(std::to_wstring(m_textureCoordinates->ID().Value()));
    }
    return {id};
}

void CZemtar3DObject::SetTextureCoordinatesTable(CZemtarTextureCoordinatesTable* table)
{
    if (table != nullptr) {
        ++table->m_users;
    }
    if (m_textureCoordinates != nullptr) {
        --m_textureCoordinates->m_users;
    }
    m_textureCoordinates = table;
}

CZemtarTextureCoordinatesTable* CZemtar3DObject::EditableTextureCoordinatesTable()
{
    if (m_textureCoordinates != nullptr && m_textureCoordinates->UserCount() > 1) {
        SetTextureCoordinatesTable(m_textureCoordinates->CreateCopy(*Document()));
    }
    return m_textureCoordinates;
}

std::unique_ptr<CZemtarSceneNode> CZemtar3DObject::CloneSelf(CZemtarTreeCopy& copy) const
{
    std::unique_ptr<CZemtar3DObject> clone(new CZemtar3DObject(copy.Target()));
    clone->SetGeometry(copy.CopyOf(m_geometry));
    clone->SetTextureCoordinatesTable(copy.CopyOf(m_textureCoordinates));
    clone->SetMaterial(copy.CopyOf(m_material));
    return clone;
}

} // namespace Zemtar
