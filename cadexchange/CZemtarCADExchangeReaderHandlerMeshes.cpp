#include "cadexchange/CZemtarCADExchangeReaderHandler.h"

#include "host/CZemtar3DObject.h"
#include "host/CZemtarGeometry.h"
#include "host/CZemtarMesh.h"
#include "host/CZemtarPolyLinesTable.h"
#include "host/CZemtarPolygonsTable.h"
#include "host/CZemtarTextureCoordinatesTable.h"
#include "host/CZemtarVerticiesNormalsTable.h"
#include "host/CZemtarVerticiesTable.h"

#include <cstddef>

namespace Zemtar {

namespace {

/// Fills a table with one entry for each corner of each face; `write` stores a corner's numbers.
template <class Table, class Write>
void FillCorners(Table& table, int faces, Write write)
{
    table.Resize(std::size_t{3} * static_cast<std::size_t>(faces));
    double* entry = table.Data();
    for (int face = 0; face < faces; ++face) {
        for (int corner = 0; corner < 3; ++corner) {
            write(face, corner, entry);
            entry += Table::Width;
        }
    }
}

template <class Triple>
void StoreTriple(const Triple& triple, double* entry)
{
    entry[0] = triple.X();
    entry[1] = triple.Y();
    entry[2] = triple.Z();
}

void FillTriangles(CZemtarPolygonsTable& polygons, int faces)
{
    polygons.Reserve(static_cast<std::size_t>(faces));
    for (unsigned int corner = 0; corner < 3 * static_cast<unsigned int>(faces); corner += 3) {
        polygons.Append(corner, corner + 1, corner + 2);
    }
}

} // namespace

void CZemtarCADExchangeReaderHandler::Process3DObject(cadex::ModelData_PolyRepresentation representation)
{
    const cadex::ModelData_PolyShapeList& shapes = representation.Get();
    for (cadex::ModelData_PolyShapeList::SizeType i = 0; i < shapes.Size(); ++i) {
        const cadex::ModelData_PolyVertexSet& shape = shapes.Element(i);
        if (shape.TypeId() == cadex::ModelData_IndexedTriangleSet::GetTypeId()) {
            ProcessTriangleSet(static_cast<const cadex::ModelData_IndexedTriangleSet&>(shape));
        } else if (m_importPolylines && shape.TypeId() == cadex::ModelData_PolyLineSet::GetTypeId()) {
            ProcessPolyLineSet(static_cast<const cadex::ModelData_PolyLineSet&>(shape));
        }
    }
}

void CZemtarCADExchangeReaderHandler::ProcessTriangleSet(const cadex::ModelData_IndexedTriangleSet& triangles)
{
    CZemtar3DObject* object = CZemtar3DObject::Create(m_document);
    CZemtarGeometry* geometry = CZemtarGeometry::Create(m_document);
    auto* normals = CZemtarVerticiesNormalsTable::Create(m_document, true);
    auto* vertices = CZemtarVerticiesTable::Create(m_document, true);
    auto* polygons = CZemtarPolygonsTable::Create(m_document);
    auto* textureCoordinates = CZemtarTextureCoordinatesTable::Create(m_document, true);

    // Every corner first gets a vertex of its own, so that the tables stay aligned by index; the host's merge
    // then joins the identical ones.
    const int faces = triangles.NumberOfFaces();
    FillCorners(*vertices, faces, [&](int face, int corner, double* entry) {
        StoreTriple(triangles.Coordinate(face, corner), entry);
    });
    if (triangles.HasUVCoordinates()) {
        FillCorners(*textureCoordinates, faces, [&](int face, int corner, double* entry) {
            const cadex::ModelData_Point2d& uv = triangles.UVCoordinate(face, corner);
            entry[0] = uv.X();
            entry[1] = uv.Y();
        });
    }
    if (triangles.HasNormals()) {
        FillCorners(*normals, faces, [&](int face, int corner, double* entry) {
            StoreTriple(triangles.VertexNormal(face, corner), entry);
        });
    }
    FillTriangles(*polygons, faces);
    CZemtarMesh::CombineIdenticalVerticesInPlace(vertices, normals, polygons, textureCoordinates, false,
                                                 nullptr);

    UseAppearance(triangles.Appearance());
    geometry->SetVerticiesNormalsTable(normals);
    geometry->SetVerticiesTable(vertices);
    geometry->SetPolygonsTable(polygons);
    object->SetGeometry(geometry);
    object->SetTextureCoordinatesTable(textureCoordinates);
    Place(object, triangles);
}

void CZemtarCADExchangeReaderHandler::ProcessPolyLineSet(const cadex::ModelData_PolyLineSet& polylines)
{
    CZemtar3DObject* object = CZemtar3DObject::Create(m_document);
    CZemtarGeometry* geometry = CZemtarGeometry::Create(m_document);
    auto* vertices = CZemtarVerticiesTable::Create(m_document, true);
    auto* segments = CZemtarPolyLinesTable::Create(m_document);

    for (int line = 0; line < polylines.NumberOfPolyLines(); ++line) {
        const int points = polylines.NumberOfVertices(line);
        for (int i = 0; i < points; ++i) {
            const cadex::ModelData_Point& point = polylines.Coordinate(line, i);
            vertices->Append(point.X(), point.Y(), point.Z());
        }
        // Indices count from 0 in each polyline, not in the set: this is wanted.
        for (int i = 0; i + 1 < points; ++i) {
            segments->Append(static_cast<unsigned int>(i), static_cast<unsigned int>(i) + 1);
        }
    }

    UseAppearance(polylines.Appearance());
    geometry->SetVerticiesTable(vertices);
    geometry->SetPolyLinesTable(segments);
    object->SetGeometry(geometry);
    Place(object, polylines);
}

void CZemtarCADExchangeReaderHandler::Place(CZemtar3DObject* object,
                                            const cadex::ModelData_PolyVertexSet& set)
{
    if (m_currentMaterial != nullptr) {
        object->SetMaterial(m_currentMaterial);
    }
    object->SetParent(m_nodeStack.back());
    object->SetName(set.Name().ToWString());
}

} // namespace Zemtar
