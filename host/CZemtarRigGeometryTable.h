#pragma once

#include "host/CZemtarEntity.h"
#include "host/ZemtarCoreExport.h"

#include <array>
#include <cstddef>
#include <vector>

namespace Zemtar {

/// How the bones of a rig move a geometry's vertices, by the vertices' index: up to four bones each, with
/// their weights.
class ZEMTAR_CORE_EXPORT CZemtarRigGeometryTable : public CZemtarEntity
{
public:
    /// The bones of one vertex; unused places have weight 0.
    struct Influence
    {
        std::array<unsigned int, 4> bones{};
        std::array<float, 4> weights{};
        bool operator==(const Influence&) const = default;
    };

    /// Makes an empty table in `document`, which owns it; null without a document.
    static CZemtarRigGeometryTable* Create(CZemtarDocument* document);

    unsigned int Count() const { return static_cast<unsigned int>(m_influences.size()); }
    const Influence& Item(unsigned int index) const { return m_influences[index]; }
    virtual void Append(const Influence& influence);
    void Resize(std::size_t count) { m_influences.resize(count); }
    void ReleaseSurplus() { m_influences.shrink_to_fit(); }
    Influence* Data() { return m_influences.data(); }

    const char* ArchiveName() const override { return "rig-geometry-table"; }

protected:
    explicit CZemtarRigGeometryTable(CZemtarDocument& document) : CZemtarEntity(document) {}

private:
    std::vector<Influence> m_influences;
};

} // namespace Zemtar
