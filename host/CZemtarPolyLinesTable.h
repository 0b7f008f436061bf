#pragma once

#include "host/CZemtarEntity.h"
#include "host/ZemtarCoreExport.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace Zemtar {

/// The line segments of a geometry: pairs of vertex indices in one block of memory.
class ZEMTAR_CORE_EXPORT CZemtarPolyLinesTable : public CZemtarEntity
{
public:
    /// Makes an empty table in `document`, which owns it; null without a document.
    static CZemtarPolyLinesTable* Create(CZemtarDocument* document);
    /// Makes a copy of the table in `document`.
    CZemtarPolyLinesTable* CreateCopy(CZemtarDocument& document) const;

    unsigned int Count() const { return static_cast<unsigned int>(m_indices.size() / 2); }
    /// Gives the segment's two vertex indices; an index beyond `Count()` is undefined behaviour.
    std::pair<unsigned int, unsigned int> Item(unsigned int index) const
    {
        const unsigned int* segment = m_indices.data() + std::size_t{2} * index;
        return {segment[0], segment[1]};
    }
    virtual void Append(unsigned int a, unsigned int b);

    /// Makes room for `segments` segments altogether.
    void Reserve(std::size_t segments) { m_indices.reserve(2 * segments); }
    /// Gives 2 * Count() indices.
    const unsigned int* Data() const { return m_indices.data(); }

    const char* ArchiveName() const override { return "polylines-table"; }

protected:
    explicit CZemtarPolyLinesTable(CZemtarDocument& document) : CZemtarEntity(document) {}

private:
    std::vector<unsigned int> m_indices;
};

} // namespace Zemtar
