#pragma once

#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// One polygon of a table, as a view: it holds until the table changes.
class ZEMTAR_CORE_EXPORT CZemtar3DPolygon
{
public:
    CZemtar3DPolygon(const unsigned int* indices, unsigned int count) : m_indices(indices), m_count(count) {}

    unsigned int VertexCount() const { return m_count; }
    /// Gives the index of a corner's vertex; a corner beyond `VertexCount()` is undefined behaviour.
    unsigned int VertexIndex(unsigned int corner) const { return m_indices[corner]; }

private:
    const unsigned int* m_indices;
    unsigned int m_count;
};

} // namespace Zemtar
