#include "host/CZemtarDocument.h"

#include "host/CZemtarMaterial.h"
#include "host/CZemtarSceneNode.h"
#include "host/CZemtarUnit.h"

#include <algorithm>
#include <iterator>

namespace Zemtar {
namespace {

CZemtarID IdOf(const std::unique_ptr<CZemtarEntity>& entity)
{
    return entity->ID();
}

} // namespace

CZemtarEntity::CZemtarEntity(CZemtarDocument& document) : m_document(&document), m_id(document.NextID()) {}

CZemtarDocument::CZemtarDocument() = default;
// Entities refer to one another freely, so none may touch another one in its destructor.
CZemtarDocument::~CZemtarDocument() = default;

CZemtarDocument* CZemtarDocument::Create(bool empty)
{
    std::unique_ptr<CZemtarDocument> document(new CZemtarDocument());
    if (!empty) {
        CZemtarMaterial::Create(document.get())->SetName("Default");
    }
    return document.release();
}

void CZemtarDocument::ApplyUnitToDocument()
{
    const CZemtarLengthRatio ratio = CZemtarUnit::MetreRatio(m_originalUnit);
    if (!m_unitApplied && !ratio.IsOne()) {
        for (const auto& entity : m_entities) {
            entity->ScaleLengths(ratio);
        }
    }
    m_unitApplied = true;
}

std::vector<CZemtarSceneNode*> CZemtarDocument::RootNodes() const
{
    std::vector<CZemtarSceneNode*> roots;
    std::ranges::copy_if(m_nodes, std::back_inserter(roots), [](const CZemtarSceneNode* node) {
        return node->Parent() == nullptr && !node->IsDeleted();
    });
    return roots;
}

CZemtarEntity* CZemtarDocument::FindEntity(const CZemtarID& id) const
{
    const auto found = std::ranges::lower_bound(m_entities, id, {}, IdOf);
    return found != m_entities.end() && (*found)->ID() == id ? found->get() : nullptr;
}

void CZemtarDocument::AdoptEntity(std::unique_ptr<CZemtarEntity> entity)
{
    CZemtarEntity* const raw = entity.get();
    // Nearly always the end: ids ascend in the order of construction.
    const bool last = m_entities.empty() || m_entities.back()->ID() < raw->ID();
    m_entities.insert(last ? m_entities.end() : std::ranges::upper_bound(m_entities, raw->ID(), {}, IdOf),
                      std::move(entity));
    if (auto* node = dynamic_cast<CZemtarSceneNode*>(raw)) {
        m_nodes.push_back(node);
    } else if (auto* material = dynamic_cast<CZemtarMaterial*>(raw)) {
        m_materials.push_back(material);
    }
}

} // namespace Zemtar
