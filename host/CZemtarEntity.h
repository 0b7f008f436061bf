#pragma once

#include "host/CZemtarArchivable.h"
#include "host/CZemtarID.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

class CZemtarDocument;
struct CZemtarLengthRatio;

/// Base of all that a document owns: nodes, geometry, tables, materials. An entity is made by the static
/// `Create` of its class, lives until its document ends, and is told from others by its id. Deleting one sets
/// a flag, so that it can be undone; traversals and lists pass deleted nodes over.
class ZEMTAR_CORE_EXPORT CZemtarEntity : public CZemtarArchivable
{
public:
    CZemtarEntity(const CZemtarEntity&) = delete;
    CZemtarEntity& operator=(const CZemtarEntity&) = delete;

    CZemtarID ID() const { return m_id; }
    CZemtarDocument* Document() const { return m_document; }
    bool IsDeleted() const { return m_deleted; }
    void SetDeleted(bool deleted) { m_deleted = deleted; }

protected:
    /// Takes the next id of `document`; `CZemtarDocument::Adopt` then makes the document its owner.
    explicit CZemtarEntity(CZemtarDocument& document);

private:
    friend class CZemtarDocument;
    /// Converts every length that the entity itself holds; called once for each entity when a unit is
    /// applied.
    virtual void ScaleLengths(const CZemtarLengthRatio&) {}

    CZemtarDocument* m_document;
    CZemtarID m_id;
    bool m_deleted = false;
};

} // namespace Zemtar
