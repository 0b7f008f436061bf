#include "apps/cli/SceneReport.h"

#include "apps/shared/LengthUnits.h"
#include "apps/shared/SafeOutput.h"
#include "common/encoding/CZemtarConvert.h"
#include "host/CZemtar3DObject.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarSolidHint.h"

#include <QJsonArray>

#include <algorithm>
#include <cmath>
#include <map>
#include <ostream>

using namespace Zemtar;

namespace {

QString Text(const CZemtarString& text)
{
    return CZemtarConvert::CZemtarStringToQString(text);
}

/// A text of the file as a part of one line.
std::string Line(const CZemtarString& text)
{
    return Printable(Text(text)).toStdString();
}

const char* KindOf(const CZemtarSceneNode& node)
{
    if (dynamic_cast<const CZemtar3DObject*>(&node)) {
        return "mesh";
    }
    return node.IsAssembly() ? "assembly" : node.IsPart() ? "part" : "group";
}

const CZemtarCommonBasicMaterial* BasicOf(const CZemtarMaterial& material)
{
    return dynamic_cast<const CZemtarCommonBasicMaterial*>(material.BasicMaterial());
}

/// The diffuse texture's file with its folder; empty without one.
QString TextureOf(const CZemtarCommonBasicMaterial& material)
{
    const CZemtarTexture* texture = material.Texture(eTextureDiffuse);
    return texture ? Text(texture->FullFilename(false)) : QString();
}

/// Numbers of one mesh node.
struct MeshCounts
{
    qint64 vertices = 0, triangles = 0, segments = 0, normals = 0, uvs = 0;

    explicit MeshCounts(const CZemtar3DObject& object)
    {
        const CZemtarGeometry* geometry = object.Geometry();
        const auto count = [](const auto* table) { return table ? static_cast<qint64>(table->Count()) : 0; };
        if (geometry) {
            vertices = count(geometry->VerticiesTable());
            triangles = count(geometry->PolygonsTable());
            segments = count(geometry->PolyLinesTable());
            normals = count(geometry->VerticiesNormalsTable());
        }
        uvs = count(object.TextureCoordinatesTable());
    }
};

std::map<CZemtarString, CZemtarMetaData::NamedValues> MetaDataOf(const CZemtarSceneNode& node)
{
    std::map<CZemtarString, CZemtarMetaData::NamedValues> values;
    if (const CZemtarMetaData* metaData = node.MetaData()) {
        metaData->ListNamedValues(values);
    }
    return values;
}

/// A hint's inertia is known when the importer filled the matrix: it clears the bottom-right corner.
bool HasInertia(const CZemtarSolidHint& hint)
{
    return hint.InertiaMatrix().M(3, 3) == 0.0;
}

QJsonArray JsonOf(const std::array<double, 3>& point)
{
    return {point[0], point[1], point[2]};
}

QJsonArray JsonOf(const CZemtarMatrix& matrix, int size)
{
    QJsonArray values;
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column) {
            values.append(matrix.M(row, column));
        }
    }
    return values;
}

QJsonObject JsonOfMetaData(const CZemtarSceneNode& node)
{
    QJsonObject categories;
    for (const auto& [category, pairs] : MetaDataOf(node)) {
        QJsonObject values;
        for (const auto& [name, value] : pairs) {
            values.insert(Text(name), Text(value));
        }
        categories.insert(Text(category), values);
    }
    return categories;
}

QJsonObject JsonOf(const CZemtarSolidHint& hint)
{
    const CZemtarSolidAttributes& attributes = hint.Attributes();
    const CZemtar3DVertex& centre = attributes.CenterOfMass();
    return {{"volume", attributes.Volume()},
            {"centroid", QJsonArray{centre.X(), centre.Y(), centre.Z()}},
            {"inertia", HasInertia(hint) ? QJsonValue(JsonOf(hint.InertiaMatrix(), 3)) : QJsonValue()}};
}

QJsonObject JsonOf(const CZemtarMaterial& material)
{
    QJsonObject json{{"name", Text(material.Name())}};
    if (const CZemtarCommonBasicMaterial* basic = BasicOf(material)) {
        const CZemtarColor colour = basic->DiffuseColor();
        json.insert("diffuse", QJsonArray{colour.R(), colour.G(), colour.B(), colour.A()});
        json.insert("opacity", basic->Opacity());
        json.insert("texture", TextureOf(*basic));
    }
    return json;
}

QJsonObject JsonOf(const CZemtar3DObject& object)
{
    const MeshCounts counts(object);
    return {{"vertices", counts.vertices}, {"triangles", counts.triangles},
            {"segments", counts.segments}, {"normals", counts.normals},
            {"uvs", counts.uvs},           {"geometry", Text(object.GeometyDefinitionID())}};
}

QJsonObject JsonOf(const CZemtarSceneNode& node)
{
    QJsonObject json{{"name", Text(node.Name())},
                     {"type", KindOf(node)},
                     {"matrix", JsonOf(node.LocalMatrix(), 4)},
                     {"metadata", JsonOfMetaData(node)}};
    if (const CZemtarSolidHint* hint = node.SolidHint()) {
        json.insert("solid", JsonOf(*hint));
    }
    if (const auto* object = dynamic_cast<const CZemtar3DObject*>(&node)) {
        json.insert("mesh", JsonOf(*object));
        if (object->Material()) {
            json.insert("material", JsonOf(*object->Material()));
        }
    }
    std::vector<CZemtarSceneNode*> children;
    node.Children(children, false);
    QJsonArray list;
    for (const CZemtarSceneNode* child : children) {
        list.append(JsonOf(*child));
    }
    json.insert("children", list);
    return json;
}

void PrintMesh(std::ostream& out, const CZemtar3DObject& object)
{
    const MeshCounts counts(object);
    if (counts.segments) {
        out << "  " << counts.segments << " segments";
    } else {
        out << "  " << counts.triangles << " triangles";
    }
    if (const CZemtarMaterial* material = object.Material()) {
        out << ", " << Line(material->Name());
        const CZemtarCommonBasicMaterial* basic = BasicOf(*material);
        const QString texture = basic ? TextureOf(*basic) : QString();
        if (!texture.isEmpty()) {
            out << ", texture " << Printable(texture).toStdString();
        }
    }
}

void PrintSolid(std::ostream& out, const CZemtarSolidHint& hint, const std::string& indent)
{
    const CZemtar3DVertex& centre = hint.Attributes().CenterOfMass();
    out << indent << "  volume " << hint.Attributes().Volume() << " m3, centre (" << centre.X() << ", "
        << centre.Y() << ", " << centre.Z() << ") m";
    if (HasInertia(hint)) {
        out << ", inertia (" << hint.InertiaMatrix().M(0, 0) << ", " << hint.InertiaMatrix().M(1, 1) << ", "
            << hint.InertiaMatrix().M(2, 2) << ") m5";
    }
    out << "\n";
}

void PrintNode(std::ostream& out, const CZemtarSceneNode& node, int depth)
{
    const std::string indent(static_cast<std::size_t>(2 * depth), ' ');
    const std::string name = Line(node.Name());
    out << indent << KindOf(node) << " " << (name.empty() ? "(unnamed)" : name);
    if (const auto* object = dynamic_cast<const CZemtar3DObject*>(&node)) {
        PrintMesh(out, *object);
    }
    out << "\n";
    for (const auto& [category, pairs] : MetaDataOf(node)) {
        for (const auto& [key, value] : pairs) {
            out << indent << "  | " << Line(key) << ": " << Line(value) << "\n";
        }
    }
    if (const CZemtarSolidHint* hint = node.SolidHint()) {
        PrintSolid(out, *hint, indent);
    }
    std::vector<CZemtarSceneNode*> children;
    node.Children(children, false);
    for (const CZemtarSceneNode* child : children) {
        PrintNode(out, *child, depth + 1);
    }
}

} // namespace

SceneReport::SceneReport(const CZemtarDocument& document) : m_document(document)
{
    for (const CZemtarSceneNode* root : document.RootNodes()) {
        Count(*root, CZemtarMatrix());
    }
    const auto& materials = document.Materials();
    m_totals.materials =
        std::count_if(materials.begin(), materials.end(),
                      [](const CZemtarMaterial* material) { return !material->IsDeleted(); });
}

void SceneReport::Count(const CZemtarSceneNode& node, const CZemtarMatrix& parentToWorld)
{
    const CZemtarMatrix toWorld = parentToWorld * node.LocalMatrix();
    ++m_totals.nodes;
    m_totals.assemblies += node.IsAssembly();
    m_totals.parts += node.IsPart();
    if (const auto* object = dynamic_cast<const CZemtar3DObject*>(&node)) {
        const MeshCounts counts(*object);
        m_totals.meshes += counts.segments == 0;
        m_totals.polylines += counts.segments != 0;
        m_totals.vertices += counts.vertices;
        m_totals.triangles += counts.triangles;
        m_totals.segments += counts.segments;
        for (unsigned i = 0; i < counts.vertices; ++i) {
            const CZemtar3DVertex p = toWorld.TransformPoint(object->Geometry()->VerticiesTable()->Item(i));
            const std::array<double, 3> point{p.X(), p.Y(), p.Z()};
            for (std::size_t axis = 0; axis < 3; ++axis) {
                m_min[axis] = m_hasBounds ? std::min(m_min[axis], point[axis]) : point[axis];
                m_max[axis] = m_hasBounds ? std::max(m_max[axis], point[axis]) : point[axis];
            }
            m_hasBounds = true;
        }
    }
    std::vector<CZemtarSceneNode*> children;
    node.Children(children, false);
    for (const CZemtarSceneNode* child : children) {
        Count(*child, toWorld);
    }
}

void SceneReport::PrintTree(std::ostream& out) const
{
    for (const CZemtarSceneNode* root : m_document.RootNodes()) {
        PrintNode(out, *root, 0);
    }
}

QJsonObject SceneReport::ToJson() const
{
    QJsonArray roots;
    for (const CZemtarSceneNode* root : m_document.RootNodes()) {
        roots.append(JsonOf(*root));
    }
    const QJsonObject totals{{"nodes", m_totals.nodes},         {"assemblies", m_totals.assemblies},
                             {"parts", m_totals.parts},         {"meshes", m_totals.meshes},
                             {"polylines", m_totals.polylines}, {"vertices", m_totals.vertices},
                             {"triangles", m_totals.triangles}, {"segments", m_totals.segments},
                             {"materials", m_totals.materials}};
    QJsonObject json{{"unit", LengthUnitSymbol(m_document.OriginalLengthUnit())},
                     {"roots", roots},
                     {"totals", totals},
                     {"bounds", QJsonValue()}};
    if (m_hasBounds) {
        json.insert("bounds", QJsonObject{{"min", JsonOf(m_min)}, {"max", JsonOf(m_max)}});
    }
    return json;
}
