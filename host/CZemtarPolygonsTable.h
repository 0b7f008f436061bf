#pragma once

#include "host/CZemtar3DPolygon.h"
#include "host/CZemtarEntity.h"
#include "host/ZemtarCoreExport.h"

#include <cstddef>
#include <vector>

namespace Zemtar {

/// The polygons of a geometry as vertex indices in one block of memory: triangles for the most part, but
/// polygons of any number of corners can stand among them.
///
///     triangles->Reserve(count);
///     triangles->Append(0, 1, 2);
///     const unsigned int* corners = triangles->Data();   // 3 * Count() indices when IsTriangles()
class ZEMTAR_CORE_EXPORT CZemtarPolygonsTable : public CZemtarEntity
{
public:
    /// Makes an empty table in `document`, which owns it; null without a document.
    static CZemtarPolygonsTable* Create(CZemtarDocument* document);
    /// Makes a copy of the table in `document`.
    CZemtarPolygonsTable* CreateCopy(CZemtarDocument& document) const;

    unsigned int Count() const
    {
        return static_cast<unsigned int>(IsTriangles() ? m_indices.size() / 3 : m_starts.size() - 1);
    }
    /// Gives the polygon; an index beyond `Count()` is undefined behaviour.
    CZemtar3DPolygon Item(unsigned int index) const;

    /// Appends a triangle.
    virtual void Append(unsigned int a, unsigned int b, unsigned int c);
    /// Appends a polygon of `count` corners; one of fewer than three is not taken.
    virtual void AppendPolygon(const unsigned int* indices, unsigned int count);

    /// Makes room for `triangles` triangles altogether.
    void Reserve(std::size_t triangles) { m_indices.reserve(3 * triangles); }
    /// Tells whether all polygons are triangles.
    bool IsTriangles() const { return m_starts.empty(); }
    /// Gives all corners' indices, polygon after polygon; their number is `IndexCount()`.
    const unsigned int* Data() const { return m_indices.data(); }
    unsigned int* Data() { return m_indices.data(); }
    std::size_t IndexCount() const { return m_indices.size(); }

    const char* ArchiveName() const override { return "polygons-table"; }

protected:
    explicit CZemtarPolygonsTable(CZemtarDocument& document) : CZemtarEntity(document) {}

private:
    void AppendCorners(const unsigned int* indices, unsigned int count);

    std::vector<unsigned int> m_indices;
    std::vector<std::size_t>
        m_starts; ///< empty while all are triangles; else each polygon's start, and the end
};

} // namespace Zemtar
