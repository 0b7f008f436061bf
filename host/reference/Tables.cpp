// The tables of a geometry and the geometry that refers to them.

#include "host/CZemtarDocument.h"
#include "host/CZemtarGeometry.h"
#include "host/CZemtarRigGeometryTable.h"
#include "host/CZemtarTextureCoordinatesTable.h"

namespace Zemtar {

CZemtarVerticiesTable* CZemtarVerticiesTable::Create(CZemtarDocument* document, bool doublePrecision)
{
    using Table = CZemtarVerticiesTable;
    return document != nullptr
               ? document->Adopt(std::unique_ptr<Table>(new Table(*document, doublePrecision)))
               : nullptr;
}

CZemtarVerticiesTable* CZemtarVerticiesTable::CreateCopy(CZemtarDocument& document) const
{
    return document.Adopt(std::unique_ptr<CZemtarVerticiesTable>(new CZemtarVerticiesTable(document, *this)));
}

void CZemtarVerticiesTable::Append(double x, double y, double z)
{
    AppendEntry({x, y, z});
}

void CZemtarVerticiesTable::ScaleLengths(const CZemtarLengthRatio& ratio)
{
    ScaleAll(ratio);
}

CZemtarVerticiesNormalsTable* CZemtarVerticiesNormalsTable::Create(CZemtarDocument* document,
                                                                   bool doublePrecision)
{
    using Table = CZemtarVerticiesNormalsTable;
    return document != nullptr
               ? document->Adopt(std::unique_ptr<Table>(new Table(*document, doublePrecision)))
               : nullptr;
}

CZemtarVerticiesNormalsTable* CZemtarVerticiesNormalsTable::CreateCopy(CZemtarDocument& document) const
{
    using Table = CZemtarVerticiesNormalsTable;
    return document.Adopt(std::unique_ptr<Table>(new Table(document, *this)));
}

void CZemtarVerticiesNormalsTable::Append(double x, double y, double z)
{
    AppendEntry({x, y, z});
}

CZemtarTextureCoordinatesTable* CZemtarTextureCoordinatesTable::Create(CZemtarDocument* document,
                                                                       bool doublePrecision)
{
    using Table = CZemtarTextureCoordinatesTable;
    return document != nullptr
               ? document->Adopt(std::unique_ptr<Table>(new Table(*document, doublePrecision)))
               : nullptr;
}

CZemtarTextureCoordinatesTable* CZemtarTextureCoordinatesTable::CreateCopy(CZemtarDocument& document) const
{
    using Table = CZemtarTextureCoordinatesTable;
    return document.Adopt(std::unique_ptr<Table>(new Table(document, *this)));
}

void CZemtarTextureCoordinatesTable::Append(double u, double v)
{
    AppendEntry({u, v});
}

CZemtarPolygonsTable* CZemtarPolygonsTable::Create(CZemtarDocument* document)
{
    using Table = CZemtarPolygonsTable;
    return document != nullptr ? document->Adopt(std::unique_ptr<Table>(new Table(*document))) : nullptr;
}

CZemtarPolygonsTable* CZemtarPolygonsTable::CreateCopy(CZemtarDocument& document) const
{
    CZemtarPolygonsTable* copy = Create(&document);
    copy->m_indices = m_indices;
    copy->m_starts = m_starts;
    return copy;
}

CZemtar3DPolygon CZemtarPolygonsTable::Item(unsigned int index) const
{
    if (IsTriangles()) {
        return {m_indices.data() + std::size_t{3} * index, 3};
    }
    const std::size_t start = m_starts[index];
    return {m_indices.data() + start, static_cast<unsigned int>(m_starts[index + 1] - start)};
}

void CZemtarPolygonsTable::Append(unsigned int a, unsigned int b, unsigned int c)
{
    const unsigned int corners[] = {a, b, c};
    AppendCorners(corners, 3);
}

void CZemtarPolygonsTable::AppendPolygon(const unsigned int* indices, unsigned int count)
{
    if (indices != nullptr && count >= 3) {
        AppendCorners(indices, count);
    }
}

void CZemtarPolygonsTable::AppendCorners(const unsigned int* indices, unsigned int count)
{
    if (count != 3 && IsTriangles()) {
        for (std::size_t start = 0; start <= m_indices.size(); start += 3) {
            m_starts.push_back(start);
        }
    }
    m_indices.insert(m_indices.end(), indices, indices + count);
    if (!IsTriangles()) {
        m_starts.push_back(m_indices.size());
    }
}

CZemtarPolyLinesTable* CZemtarPolyLinesTable::Create(CZemtarDocument* document)
{
    using Table = CZemtarPolyLinesTable;
    return document != nullptr ? document->Adopt(std::unique_ptr<Table>(new Table(*document))) : nullptr;
}

CZemtarPolyLinesTable* CZemtarPolyLinesTable::CreateCopy(CZemtarDocument& document) const
{
    CZemtarPolyLinesTable* copy = Create(&document);
    copy->m_indices = m_indices;
    return copy;
}

void CZemtarPolyLinesTable::Append(unsigned int a, unsigned int b)
{
    m_indices.insert(m_indices.end(), {a, b});
}

CZemtarRigGeometryTable* CZemtarRigGeometryTable::Create(CZemtarDocument* document)
{
    using Table = CZemtarRigGeometryTable;
    return document != nullptr ? document->Adopt(std::unique_ptr<Table>(new Table(*document))) : nullptr;
}

void CZemtarRigGeometryTable::Append(const Influence& influence)
{
    m_influences.push_back(influence);
}

CZemtarGeometry* CZemtarGeometry::Create(CZemtarDocument* document)
{
    using Self = CZemtarGeometry;
    return document != nullptr ? document->Adopt(std::unique_ptr<Self>(new Self(*document))) : nullptr;
}

// Every table was made by a document, never const: the caller's const says only that attaching does not
// change it.
void CZemtarGeometry::SetVerticiesTable(const CZemtarVerticiesTable* table)
{
    m_vertices = const_cast<CZemtarVerticiesTable*>(table);
}

void CZemtarGeometry::SetVerticiesNormalsTable(const CZemtarVerticiesNormalsTable* table)
{
    m_normals = const_cast<CZemtarVerticiesNormalsTable*>(table);
}

CZemtarGeometry* CZemtarGeometry::CreateCopy(CZemtarDocument& document) const
{
    const auto copied = [&document](auto* table) {
        return table != nullptr ? table->CreateCopy(document) : nullptr;
    };
    CZemtarGeometry* copy = Create(&document);
    copy->m_vertices = copied(m_vertices);
    copy->m_normals = copied(m_normals);
    copy->m_polygons = copied(m_polygons);
    copy->m_polyLines = copied(m_polyLines);
    return copy;
}

} // namespace Zemtar
