#include "cadexchange/CZemtarCADExchangeReaderHandler.h"

#include "host/CZemtar3DObject.h"
#include "host/CZemtarGeometry.h"
#include "host/CZemtarMesh.h"
#include "host/CZemtarPolyLinesTable.h"
#include "host/CZemtarPolygonsTable.h"
#include "host/CZemtarTextureCoordinatesTable.h"
#include "host/CZemtarVerticiesNormalsTable.h"
#include "host/CZemtarVerticiesTable.h"

#include <algorithm>
#include <cstddef>

namespace Zemtar {

namespace {

using TriangleSet = cadex::ModelData_IndexedTriangleSet;

template <class Triple>
void StoreTriple(const Triple& triple, double* entry)
{
    entry[0] = triple.X();
    entry[1] = triple.Y();
    entry[2] = triple.Z();
}

/// Sets of up to this many faces are merged once, at their end.
constexpr std::size_t FacesMergedAtOnce = 32768;

/// The tables of one mesh while they are filled from a triangle set. Every corner first gets a vertex of its
/// own, so that the tables stay aligned by index; the host's merge then joins the identical ones. Large sets
/// are merged in a few steps, which gives the same as merging once and never holds all the corners.
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
        const auto faces = static_cast<std::size_t>(set.NumberOfFaces());
        polygons->Reserve(faces);
        std::size_t done = 0;
        std::size_t step = faces <= FacesMergedAtOnce ? faces : std::max(FacesMergedAtOnce / 2, faces / 8);
        do {
            step = std::min(step, faces - done);
            Append(set, done, step);
            CZemtarMesh::CombineIdenticalVerticesInPlace(vertices, normals, polygons, textureCoordinates,
                                                         false, nullptr);
            done += step;
            step = NextStep(done, faces);
        } while (done < faces);
    }

    CZemtarVerticiesNormalsTable* const normals;
    CZemtarVerticiesTable* const vertices;
    CZemtarPolygonsTable* const polygons;
    CZemtarTextureCoordinatesTable* const textureCoordinates;

private:
    /// As many faces as fill the tables to twice the size that they will probably end with. Where corners are
    /// hardly shared that is all that remain: then there is nothing to save.
    std::size_t NextStep(std::size_t done, std::size_t faces) const
    {
        const auto held = static_cast<double>(vertices->Count());
        const double expected =
            held * static_cast<double>(faces) / static_cast<double>(std::max(done, std::size_t{1}));
        return std::max(faces / 8, static_cast<std::size_t>((2.0 * expected - held) / 3.0));
    }

    void Append(const TriangleSet& set, std::size_t first, std::size_t count)
    {
        const unsigned int held = vertices->Count();
        AppendCorners(*vertices, first, count, [&](int face, int corner, double* entry) {
            StoreTriple(set.Coordinate(face, corner), entry);
        });
        if (set.HasUVCoordinates()) {
            AppendCorners(*textureCoordinates, first, count, [&](int face, int corner, double* entry) {
                const cadex::ModelData_Point2d& uv = set.UVCoordinate(face, corner);
                entry[0] = uv.X();
                entry[1] = uv.Y();
            });
        }
        if (set.HasNormals()) {
            AppendCorners(*normals, first, count, [&](int face, int corner, double* entry) {
                StoreTriple(set.VertexNormal(face, corner), entry);
            });
        }
        for (unsigned int corner = held; corner < vertices->Count(); corner += 3) {
            polygons->Append(corner, corner + 1, corner + 2);
        }
    }

    /// Appends one entry for each corner of each face; `write` stores a corner's numbers.
    template <class Table, class Write>
    static void AppendCorners(Table& table, std::size_t firstFace, std::size_t faceCount, Write write)
    {
        const std::size_t held = table.Count();
        table.Reserve(held + 3 * faceCount); // just that: growing by itself would double it
        table.Resize(held + 3 * faceCount);
        double* entry = table.Data() + held * Table::Width;
        const auto end = static_cast<int>(firstFace + faceCount);
        for (auto face = static_cast<int>(firstFace); face < end; ++face) {
            for (int corner = 0; corner < 3; ++corner) {
                write(face, corner, entry);
                entry += Table::Width;
            }
        }
    }
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
