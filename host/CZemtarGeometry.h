#pragma once

#include "host/CZemtarEntity.h"
#include "host/CZemtarPolyLinesTable.h"
#include "host/CZemtarPolygonsTable.h"
#include "host/CZemtarVerticiesNormalsTable.h"
#include "host/CZemtarVerticiesTable.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// The shape of mesh objects: vertices and what joins them, polygons or line segments. It refers to its
/// tables; those belong to the document, and a geometry made from them is handed to one object or to many
/// (`CZemtar3DObject::SetGeometry`).
///
///     CZemtarGeometry* geometry = CZemtarGeometry::Create(document);
///     geometry->SetVerticiesTable(vertices);
///     geometry->SetPolygonsTable(triangles);
///
/// A table that was never set, or was set to null, is missing: its getter gives null.
class ZEMTAR_CORE_EXPORT CZemtarGeometry : public CZemtarEntity
{
public:
    /// Makes a geometry without tables in `document`, which owns it; null without a document.
    static CZemtarGeometry* Create(CZemtarDocument* document);

    void SetVerticiesTable(const CZemtarVerticiesTable* table);
    void SetVerticiesNormalsTable(const CZemtarVerticiesNormalsTable* table);
    void SetPolygonsTable(CZemtarPolygonsTable* table) { m_polygons = table; }
    void SetPolyLinesTable(CZemtarPolyLinesTable* table) { m_polyLines = table; }

    const CZemtarVerticiesTable* VerticiesTable() const { return m_vertices; }
    const CZemtarVerticiesNormalsTable* VerticiesNormalsTable() const { return m_normals; }
    const CZemtarPolygonsTable* PolygonsTable() const { return m_polygons; }
    const CZemtarPolyLinesTable* PolyLinesTable() const { return m_polyLines; }

    CZemtarVerticiesTable* VerticiesTable() { return m_vertices; }
    CZemtarVerticiesNormalsTable* VerticiesNormalsTable() { return m_normals; }
    CZemtarPolygonsTable* PolygonsTable() { return m_polygons; }
    CZemtarPolyLinesTable* PolyLinesTable() { return m_polyLines; }

    /// Makes a geometry in `document` with copies of all tables.
    CZemtarGeometry* CreateCopy(CZemtarDocument& document) const;
    /// Tells how many mesh objects refer to it.
    unsigned UserCount() const { return m_users; }

    const char* ArchiveName() const override { return "geometry"; }

protected:
    using CZemtarEntity::CZemtarEntity;

private:
    friend class CZemtar3DObject;

    CZemtarVerticiesTable* m_vertices = nullptr;
    CZemtarVerticiesNormalsTable* m_normals = nullptr;
    CZemtarPolygonsTable* m_polygons = nullptr;
    CZemtarPolyLinesTable* m_polyLines = nullptr;
    unsigned m_users = 0;
};

} // namespace Zemtar
