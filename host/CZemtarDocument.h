#pragma once

#include "host/CZemtarID.h"
#include "host/ZemtarCoreExport.h"
#include "host/enumLengthUnit.h"

#include <memory>
#include <vector>

namespace Zemtar {

class CZemtarEntity;
class CZemtarMaterial;
class CZemtarSceneNode;

/// A scene: a forest of nodes and all that they use. It owns every entity that was made in it and releases
/// them when it is destroyed; pointers into it end with it.
///
///     std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
///     CZemtarSceneNode* group = CZemtarTransformNode::Create(document.get());
///     group->SetName("wheel");
///     for (CZemtarSceneNode* root : document->RootNodes()) { ... }
///
/// Lengths are in metres. Who fills a document in another unit says so with `SetOriginalLengthUnit` and then
/// calls `ApplyUnitToDocument`. A document is used by one thread at a time.
class ZEMTAR_CORE_EXPORT CZemtarDocument final
{
public:
    /// Makes a document, which the caller owns and deletes. With `empty` nothing is in it; otherwise it holds
    /// one material named "Default".
    static CZemtarDocument* Create(bool empty);
    ~CZemtarDocument();
    CZemtarDocument(const CZemtarDocument&) = delete;
    CZemtarDocument& operator=(const CZemtarDocument&) = delete;

    /// Stores the unit that the content was made in; metres by default.
    void SetOriginalLengthUnit(enumLengthUnit unit) { m_originalUnit = unit; }
    enumLengthUnit OriginalLengthUnit() const { return m_originalUnit; }
    /// Converts all lengths from the original unit to metres: vertex positions (shared ones once),
    /// translations of nodes and transforms, centres of solid hints, camera and section plane positions.
    /// Volumes and inertia are in metres already. Only the first call in a document's life converts.
    void ApplyUnitToDocument();
    bool IsUnitApplied() const { return m_unitApplied; }

    /// Gives the nodes without a parent, in order of creation; deleted ones are left out.
    std::vector<CZemtarSceneNode*> RootNodes() const;
    /// Gives all nodes in order of creation, deleted ones included.
    const std::vector<CZemtarSceneNode*>& Nodes() const { return m_nodes; }
    /// Gives all materials in order of creation, deleted ones included.
    const std::vector<CZemtarMaterial*>& Materials() const { return m_materials; }
    /// Finds an entity by its id; null when the document has none such.
    CZemtarEntity* FindEntity(const CZemtarID& id) const;

    /// Takes ownership of an entity constructed for this document and gives it back. Each class's `Create`
    /// calls it; so does an application for entities of its own classes.
    template <class Entity>
    Entity* Adopt(std::unique_ptr<Entity> entity)
    {
        Entity* raw = entity.get();
        AdoptEntity(std::move(entity));
        return raw;
    }

private:
    friend class CZemtarEntity;
    CZemtarDocument();
    CZemtarID NextID() { return CZemtarID(++m_lastID); }
    void AdoptEntity(std::unique_ptr<CZemtarEntity> entity);

    std::vector<std::unique_ptr<CZemtarEntity>> m_entities; ///< ids ascending
    std::vector<CZemtarSceneNode*> m_nodes;
    std::vector<CZemtarMaterial*> m_materials;
    unsigned long long m_lastID = 0;
    enumLengthUnit m_originalUnit = eLengthUnitMetre;
    bool m_unitApplied = false;
};

} // namespace Zemtar
