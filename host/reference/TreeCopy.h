#pragma once

#include "host/CZemtar3DObject.h"
#include "host/CZemtarMaterial.h"

#include <unordered_map>

namespace Zemtar {

/// One copying of a tree: where to, and what was copied already, so that what the source's nodes share among
/// them their copies share too.
class CZemtarTreeCopy
{
public:
    CZemtarTreeCopy(const CZemtarDocument& source, CZemtarDocument& target, bool shareGeometry)
        : m_target(target), m_sameDocument(&source == &target), m_shareGeometry(shareGeometry)
    {
    }

    CZemtarDocument& Target() const { return m_target; }

    /// Copies a node and its subtree, without recursion, and gives the root of the copy.
    CZemtarSceneNode* Run(const CZemtarSceneNode& root);

    CZemtarGeometry* CopyOf(CZemtarGeometry* geometry);
    CZemtarTextureCoordinatesTable* CopyOf(CZemtarTextureCoordinatesTable* table);
    CZemtarMaterial* CopyOf(CZemtarMaterial* material);

private:
    CZemtarSceneNode* CopyNode(const CZemtarSceneNode& source);
    template <class Shared>
    Shared* CopyShared(Shared* shared, std::unordered_map<const Shared*, Shared*>& copies);

    CZemtarDocument& m_target;
    bool m_sameDocument;
    bool m_shareGeometry;
    std::unordered_map<const CZemtarGeometry*, CZemtarGeometry*> m_geometries;
    std::unordered_map<const CZemtarTextureCoordinatesTable*, CZemtarTextureCoordinatesTable*>
        m_textureCoordinates;
    std::unordered_map<const CZemtarMaterial*, CZemtarMaterial*> m_materials;
};

} // namespace Zemtar
