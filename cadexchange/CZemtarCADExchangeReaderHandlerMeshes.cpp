#include "cadexchange/CZemtarCADExchangeReaderHandler.h"

#include "host/CZemtar3DObject.h"
#include "host/CZemtarGeometry.h"
#include "host/CZemtarMesh.h"
#include "host/CZemtarPolyLinesTable.h"
#include "host/CZemtarPolygonsTable.h"
#include "host/CZemtarTextureCoordinatesTable.h"
#include "host/CZemtarVerticiesNormalsTable.h"
#include "host/CZemtarVerticiesTable.h"

namespace Zemtar {

namespace {

using TriangleSet = cadex::ModelData_IndexedTriangleSet;

/// The tables of one mesh while they are filled from a triangle set. Every corner first gets a vertex of its
/// own, so that the tables stay aligned by index; the host's merge then joins the identical ones. Nothing but
/// appending is asked of the tables, and of the host one merge a set: a host whose merge has a tolerance sees
/// all corners at once.
class MeshTables
{
public:
    explicit MeshTables(CZemtarDocument* document)
        : normals(CZemtarVerticiesNormalsTable::Create(document, true)),
          vertices(CZemtarVerticiesTable::Create(document, true)),
          polygons(CZemtarPolygonsTable::Create(document)),
          textureCoordinates(CZemtarTextureCoordinatesTable::Create(document, true))
    {
    }

    void Fill(const TriangleSet& set)
    {
        const bool hasUVs = set.HasUVCoordinates();
        const bool hasNormals = set.HasNormals();
        const int faces = set.NumberOfFaces();
        unsigned int vertex = 0;
        for (int face = 0; face < faces; ++face) {
            for (int corner = 0; corner < 3; ++corner) {
                const cadex::ModelData_Point& point = set.Coordinate(face, corner);
                vertices->Append(point.X(), point.Y(), point.Z());
                if (hasUVs) {
                    const cadex::ModelData_Point2d& uv = set.UVCoordinate(face, corner);
                    textureCoordinates->Append(uv.X(), uv.Y());
                }
                if (hasNormals) {
                    const auto& normal = set.VertexNormal(face, corner);
                    normals->Append(normal.X(), normal.Y(), normal.Z());
                }
            }
            polygons->Append(vertex, vertex + 1, vertex + 2);
            vertex += 3;
        }
        CZemtarMesh::CombineIdenticalVerticesInPlace(vertices, normals, polygons, textureCoordinates, false,
                                                     nullptr);
    }

    CZemtarVerticiesNormalsTable* const normals;
    CZemtarVerticiesTable* const vertices;
    CZemtarPolygonsTable* const polygons;
    CZemtarTextureCoordinatesTable* const textureCoordinates;
};

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
    MeshTables tables(m_document);
    tables.Fill(triangles);

    UseAppearance(triangles.Appearance());
    geometry->SetVerticiesNormalsTable(tables.normals);
    geometry->SetVerticiesTable(tables.vertices);
    geometry->SetPolygonsTable(tables.polygons);
    object->SetGeometry(geometry);
    object->SetTextureCoordinatesTable(tables.textureCoordinates);
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
