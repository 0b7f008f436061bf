// Host tables to the SDK's triangle and polyline sets.

#include "cadexchange/CZemtarCADExchangeWriterHandler.h"

#include "host/CZemtar3DObject.h"
#include "host/CZemtarGeometry.h"

#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>

#include <vector>

namespace Zemtar {

namespace {

using TriangleSet = cadex::ModelData_IndexedTriangleSet;

template <class Table>
bool IsMissingOrEmpty(const Table* table)
{
    return !table || table->Count() == 0;
}

/// Copies a table of doubles into the SDK's values, entry by entry.
template <class Value, class Number, class Table>
std::vector<Value> TriplesOf(const Table& table)
{
    const double* entry = table.Data();
    std::vector<Value> values;
    values.reserve(table.Count());
    for (unsigned i = 0; i < table.Count(); ++i, entry += 3) {
        values.emplace_back(static_cast<Number>(entry[0]), static_cast<Number>(entry[1]),
                            static_cast<Number>(entry[2]));
    }
    return values;
}

std::vector<cadex::ModelData_Point2d> PairsOf(const CZemtarTextureCoordinatesTable& table)
{
    const double* entry = table.Data();
    std::vector<cadex::ModelData_Point2d> values;
    values.reserve(table.Count());
    for (unsigned i = 0; i < table.Count(); ++i, entry += 2) {
        values.emplace_back(entry[0], entry[1]);
    }
    return values;
}

/// Polygons are taken to be triangles: of a larger one the first three corners are written.
std::vector<TriangleSet::IndexType> CornersOf(const CZemtarPolygonsTable& polygons)
{
    if (polygons.IsTriangles()) {
        return {polygons.Data(), polygons.Data() + polygons.IndexCount()};
    }
    std::vector<TriangleSet::IndexType> corners;
    corners.reserve(std::size_t{3} * polygons.Count());
    for (unsigned i = 0; i < polygons.Count(); ++i) {
        const CZemtar3DPolygon polygon = polygons.Item(i);
        for (unsigned corner = 0; corner < 3; ++corner) {
            corners.push_back(static_cast<TriangleSet::IndexType>(polygon.VertexIndex(corner)));
        }
    }
    return corners;
}

} // namespace

std::unique_ptr<TriangleSet> CZemtarCADExchangeWriterHandler::CreateITS(CZemtar3DObject* object)
{
    const CZemtarGeometry* geometry = object ? object->Geometry() : nullptr;
    if (!geometry || IsMissingOrEmpty(geometry->VerticiesTable()) ||
        IsMissingOrEmpty(geometry->PolygonsTable())) {
        return nullptr;
    }
    auto triangles = std::make_unique<TriangleSet>(cadex::initialized());
    const std::vector<TriangleSet::IndexType> corners = CornersOf(*geometry->PolygonsTable());
    const std::size_t polygonCount = geometry->PolygonsTable()->Count();
    const std::vector<TriangleSet::IndexType> counts(polygonCount, 3);
    {
        const auto points = TriplesOf<cadex::ModelData_Point, double>(*geometry->VerticiesTable());
        triangles->AddCoordinates(points.data(), points.size(), corners.data(), counts.data(), polygonCount);
    }
    if (const CZemtarVerticiesNormalsTable* table = geometry->VerticiesNormalsTable()) {
        const auto normals = TriplesOf<TriangleSet::NormalType, float>(*table);
        triangles->AddNormals(normals.data(), normals.size(), corners.data(), counts.data(), polygonCount);
    }
    if (const CZemtarTextureCoordinatesTable* table = object->TextureCoordinatesTable()) {
        const auto coordinates = PairsOf(*table);
        triangles->AddUVCoordinates(coordinates.data(), coordinates.size(), corners.data(), counts.data(),
                                    polygonCount);
    }
    return triangles;
}

std::unique_ptr<cadex::ModelData_PolyLineSet>
CZemtarCADExchangeWriterHandler::CreatePolyLineSet(CZemtar3DObject* object)
{
    const CZemtarGeometry* geometry = object ? object->Geometry() : nullptr;
    if (!geometry || IsMissingOrEmpty(geometry->VerticiesTable()) ||
        IsMissingOrEmpty(geometry->PolyLinesTable())) {
        return nullptr;
    }
    const CZemtarVerticiesTable& vertices = *geometry->VerticiesTable();
    const auto pointAt = [&](unsigned index) {
        const CZemtar3DVertex vertex = vertices.Item(index);
        return cadex::ModelData_Point(vertex.X(), vertex.Y(), vertex.Z());
    };
    auto lines = std::make_unique<cadex::ModelData_PolyLineSet>(cadex::initialized());
    const CZemtarPolyLinesTable& segments = *geometry->PolyLinesTable();
    for (unsigned i = 0; i < segments.Count(); ++i) {
        const auto [first, second] = segments.Item(i);
        if (first < vertices.Count() && second < vertices.Count()) {
            const cadex::ModelData_Point points[] = {pointAt(first), pointAt(second)};
            lines->AddPolyLine(points, 2);
        }
    }
    return lines;
}

} // namespace Zemtar
