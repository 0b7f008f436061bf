#include "sdk/rhino/RhinoFile.h"

#include <cmath>

#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/rhino/RhinoSubD.h"
#include "sdk/rhino/RhinoTolerances.h"

namespace cadex::rhino {

namespace {

constexpr Uuid PointCloudId("2488f347-f8fa-11d3-bfec-0010830122f0");

ModelData_Point Scaled(const double* xyz, double millimetres)
{
    return {xyz[0] * millimetres, xyz[1] * millimetres, xyz[2] * millimetres};
}

/// Points are polylines of one point each.
ModelData_PolyVertexSet PointSet(const std::vector<double>& coordinates, double millimetres)
{
    ModelData_PolyLineSet set{initialized()};
    for (std::size_t i = 0; i + 2 < coordinates.size(); i += 3) {
        const ModelData_Point point = Scaled(&coordinates[i], millimetres);
        set.AddPolyLine(&point, 1);
    }
    return set;
}

ModelData_PolyVertexSet LineSet(const std::vector<gp_Pnt>& corners)
{
    std::vector<ModelData_Point> points;
    points.reserve(corners.size());
    for (const gp_Pnt& corner : corners) {
        points.emplace_back(corner.X(), corner.Y(), corner.Z());
    }
    ModelData_PolyLineSet set{initialized()};
    set.AddPolyLine(points.data(), points.size());
    return set;
}

/// Other curves become polylines when the part is meshed.
std::unique_ptr<Body> LooseCurve(const Curve& curve)
{
    auto body = std::make_unique<Body>();
    brep::Edge edge;
    edge.curve = curve.curve;
    edge.first = curve.first;
    edge.last = curve.last;
    edge.start = body->description.AddVertex(curve.Start());
    const bool isClosed = curve.Start().Distance(curve.End()) < tolerance::Coincident;
    edge.end = isClosed ? edge.start : body->description.AddVertex(curve.End());
    body->description.curves.push_back({body->description.AddEdge(std::move(edge)), {}});
    return body;
}

void TakeMesh(Mesh&& mesh, Object& object)
{
    object.colour = mesh.colour;
    if (mesh.hasMixedColours) {
        internal::Reports::Add(internal::Report::Kind::LeftOut, "colours of single vertices");
    }
    object.sets.push_back(internal::MakeTriangleSet(std::move(mesh.arrays)));
}

} // namespace

bool RhinoFile::Load(std::string bytes)
{
    mySource = std::make_shared<Source>();
    mySource->bytes = std::move(bytes);
    try {
        mySource->archive.emplace(mySource->bytes);
        mySource->archive->ForEachTable([this](Chunk& table) { ReadTable(table); });
    } catch (const Unreadable& reason) {
        internal::Reports::Add(internal::Report::Kind::Refused, reason.what());
        return false;
    }
    NumberLayersAndMaterials();
    return true;
}

void RhinoFile::ReadTable(Chunk& table)
{
    switch (table.Code()) {
    case code::PropertiesTable:
        table.ForEachRecord([this](Chunk& record) { ReadProperty(record, document); });
        break;
    case code::SettingsTable:
        table.ForEachRecord([this](Chunk& record) { ReadSetting(record, document); });
        break;
    case code::LayerTable:
        table.ForEachRecord([this](Chunk& record) { layers.push_back(ReadLayer(record)); });
        break;
    case code::MaterialTable:
        table.ForEachRecord([this](Chunk& record) { materials.push_back(ReadMaterial(record)); });
        break;
    case code::DefinitionTable:
        table.ForEachRecord([this](Chunk& record) { definitions.push_back(ReadDefinition(record)); });
        break;
    case code::ObjectTable:
        table.ForEachRecord([this](Chunk& record) { ReadObjectRecord(record); });
        break;
    case code::UserTable:
        ReadUserTable(table, document);
        break;
    default:
        table.ForEachRecord([](Chunk&) {});
        break;
    }
}

void RhinoFile::ReadObjectRecord(Chunk& record)
{
    if (record.Code() != code::ObjectRecord) {
        throw Unreadable("the table of objects holds something else");
    }
    if (!internal::Progress::GoesOn(record.Position(), mySource->bytes.size())) {
        throw Unreadable("cancelled");
    }
    Object object;
    bool isKnown = false;
    std::optional<Mesh> mesh;
    record.Child(code::ObjectKind);
    ObjectHead head = ReadObject(record, [&](const Uuid& classId, Chunk& data) {
        isKnown = ReadGeometry(classId, data, object, mesh);
        if (!isKnown) {
            data.SkipRest();
        }
    });
    if (mesh) {
        UseExactPoints(*mesh, head.exactPoints, document.millimetres);
        TakeMesh(std::move(*mesh), object);
    }
    while (!record.AtEnd()) {
        Chunk chunk = record.Child();
        if (chunk.Code() == code::ObjectRecordEnd) {
            break;
        }
        if (chunk.Code() == code::ObjectAttributes) {
            object.attributes = ReadAttributes(chunk);
            chunk.Finish();
        } else if (chunk.Code() == code::AttributesUserData) {
            ObjectHead data;
            ReadUserData(chunk, data);
            object.attributes.strings = std::move(data.strings);
        }
    }
    UserStrings& strings = object.attributes.strings;
    strings.insert(strings.end(), head.strings.begin(), head.strings.end());
    if (isKnown) {
        objects.push_back(std::move(object));
    } else {
        internal::Reports::Add(internal::Report::Kind::LeftOut,
                               "an annotation, light or other object without a shape");
    }
}

/// False when the class has no geometry that is shown.
bool RhinoFile::ReadGeometry(const Uuid& classId, Chunk& data, Object& object, std::optional<Mesh>& mesh)
{
    const double millimetres = document.millimetres;
    if (classId == MeshId) {
        object.kind = "Mesh";
        mesh = ReadMesh(data, millimetres);
    } else if (IsBrep(classId)) {
        object.body = std::make_unique<Body>(ReadBrep(data, {millimetres, &faceColours, mySource}));
        object.kind = object.body->faceCount > 1 ? "Polysurface" : "Surface";
    } else if (IsExtrusion(classId)) {
        object.kind = "Extrusion";
        object.body = std::make_unique<Body>(ReadExtrusion(data, {millimetres, nullptr, nullptr}));
    } else if (IsSurface(classId)) {
        object.kind = "Surface";
        object.body = std::make_unique<Body>(BodyOf(ReadSurface(classId, data, millimetres)));
    } else if (IsSubD(classId)) {
        object.kind = "SubD";
        mesh = ReadSubD(data, millimetres);
    } else if (IsCurve(classId)) {
        object.kind = "Curve";
        const Curve curve = ReadCurve(classId, data, millimetres);
        if (curve.corners.size() >= 2) {
            object.sets.push_back(LineSet(curve.corners));
        } else if (!curve.curve.IsNull()) {
            object.body = LooseCurve(curve);
        }
    } else if (classId == PointId) {
        object.kind = "Point";
        data.ByteVersion();
        object.sets.push_back(PointSet(data.Items<double>(3), millimetres));
    } else if (classId == PointCloudId) {
        object.kind = "Point cloud";
        data.ByteVersion();
        object.sets.push_back(PointSet(data.Items<double>(data.Count(24) * 3), millimetres));
        data.SkipRest();
    } else if (classId == ReferenceId) {
        object.kind = "Block";
        data.ByteVersion();
        Reference reference;
        reference.definition = data.Id();
        reference.matrix = data.Doubles<16>();
        data.Skip(48);
        for (const double value : reference.matrix) {
            if (!std::isfinite(value)) {
                throw Unreadable("a reference has no finite place");
            }
        }
        object.reference = reference;
    } else {
        return false;
    }
    return true;
}

/// Objects name layers and materials by index: those without one of their own are numbered as they stand.
void RhinoFile::NumberLayersAndMaterials()
{
    for (std::size_t i = 0; i < layers.size(); ++i) {
        if (layers[i].index < 0) {
            layers[i].index = static_cast<int>(i);
        }
    }
    for (std::size_t i = 0; i < materials.size(); ++i) {
        if (materials[i].index < 0) {
            materials[i].index = static_cast<int>(i);
        }
    }
}

} // namespace cadex::rhino
