#include "host/reference/TreeCopy.h"

#include "host/CZemtarDocument.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarSolidHint.h"

#include <algorithm>
#include <vector>

namespace Zemtar {
namespace {

/// Lets a copied hint name the copied children: `children[i]` was copied from the node with `sourceIds[i]`.
/// Ids of other nodes stay.
void RenameChildren(CZemtarSolidHint& hint, const std::vector<CZemtarID>& sourceIds,
                    const std::vector<CZemtarSceneNode*>& children)
{
    std::size_t expected = 0; // hints list children in their order, so that each search is one step
    for (CZemtarID& id : hint.ChildIDs()) {
        for (std::size_t tried = 0; tried < sourceIds.size(); ++tried, ++expected) {
            expected %= sourceIds.size();
            if (sourceIds[expected] == id) {
                id = children[expected++]->ID();
                break;
            }
        }
    }
}

} // namespace

CZemtarSceneNode* CZemtarTreeCopy::Run(const CZemtarSceneNode& root)
{
    struct Open
    {
        const CZemtarSceneNode* source;
        CZemtarSceneNode* copy;
        std::size_t nextChild;
        std::vector<CZemtarID> sourceIds; ///< of the children that were copied
    };
    CZemtarSceneNode* const result = CopyNode(root);
    std::vector<Open> path;
    path.push_back({&root, result, 0, {}});
    while (!path.empty()) {
        Open& open = path.back();
        if (open.nextChild == open.source->m_children.size()) {
            if (open.copy->m_solidHint) {
                RenameChildren(*open.copy->m_solidHint, open.sourceIds, open.copy->m_children);
            }
            path.pop_back();
            continue;
        }
        const CZemtarSceneNode* child = open.source->m_children[open.nextChild++];
        if (child->IsDeleted()) {
            continue;
        }
        CZemtarSceneNode* copy = CopyNode(*child);
        copy->m_parent = open.copy;
        open.copy->m_children.push_back(copy);
        if (open.copy->m_solidHint) {
            open.sourceIds.push_back(child->ID());
        }
        path.push_back({child, copy, 0, {}});
    }
    return result;
}

CZemtarSceneNode* CZemtarTreeCopy::CopyNode(const CZemtarSceneNode& source)
{
    CZemtarSceneNode* copy = m_target.Adopt(source.CloneSelf(*this));
    copy->m_name = source.m_name;
    copy->m_nodeType = source.m_nodeType;
    copy->m_children.reserve(source.m_children.size());
    if (source.m_localMatrix) {
        copy->m_localMatrix = std::make_unique<CZemtarMatrix>(*source.m_localMatrix);
    }
    if (source.m_metaData && !source.m_metaData->IsEmpty()) {
        copy->m_metaData = std::make_unique<CZemtarMetaData>(*source.m_metaData);
    }
    if (source.m_solidHint) {
        copy->m_solidHint = std::make_unique<CZemtarSolidHint>(*source.m_solidHint);
    }
    return copy;
}

/// Gives what stands for `shared` in the copy: itself, one copy for all who refer to it, or a new copy each
/// time.
template <class Shared>
Shared* CZemtarTreeCopy::CopyShared(Shared* shared, std::unordered_map<const Shared*, Shared*>& copies)
{
    if (shared == nullptr || (m_sameDocument && m_shareGeometry)) {
        return shared;
    }
    if (!m_shareGeometry) {
        return shared->CreateCopy(m_target);
    }
    Shared*& copy = copies[shared];
    if (copy == nullptr) {
        copy = shared->CreateCopy(m_target);
    }
    return copy;
}

CZemtarGeometry* CZemtarTreeCopy::CopyOf(CZemtarGeometry* geometry)
{
    return CopyShared(geometry, m_geometries);
}

CZemtarTextureCoordinatesTable* CZemtarTreeCopy::CopyOf(CZemtarTextureCoordinatesTable* table)
{
    return CopyShared(table, m_textureCoordinates);
}

CZemtarMaterial* CZemtarTreeCopy::CopyOf(CZemtarMaterial* material)
{
    if (material == nullptr || m_sameDocument) {
        return material;
    }
    CZemtarMaterial*& copy = m_materials[material];
    if (copy == nullptr) {
        copy = material->CreateCopy(m_target);
    }
    return copy;
}

} // namespace Zemtar
