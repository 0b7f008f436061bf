// GLB, OBJ, PLY and STL files of made documents: what stands in them, what is left out, and what others say
// of them where they are there: the glTF validator (a node package) and assimp.

#include "apps/export/SceneExport.h"

#include "host/CZemtar3DObject.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarTransformNode.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>

using namespace Zemtar;
using testing::HasSubstr;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

/// A tetrahedron of corners at 0 and 1, closed, or without its last side; with vertex 4 no place.
CZemtarGeometry* Tetrahedron(CZemtarDocument* document, bool closed)
{
    auto* places = CZemtarVerticiesTable::Create(document, true);
    auto* normals = CZemtarVerticiesNormalsTable::Create(document, true);
    auto* triangles = CZemtarPolygonsTable::Create(document);
    for (const auto& p : {CZemtar3DVertex(0, 0, 0), {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {NaN, 0, 0}}) {
        places->Append(p.X(), p.Y(), p.Z());
        normals->Append(3 * p.X(), 0, p.Y()); // not of length one
    }
    triangles->Append(0, 2, 1);
    triangles->Append(0, 1, 3);
    triangles->Append(1, 2, 3);
    if (closed) {
        triangles->Append(0, 3, 2);
    }
    triangles->Append(0, 1, 4); // left out, as the next
    triangles->Append(0, 1, 99);
    CZemtarGeometry* geometry = CZemtarGeometry::Create(document);
    geometry->SetVerticiesTable(places);
    geometry->SetVerticiesNormalsTable(normals);
    geometry->SetPolygonsTable(triangles);
    return geometry;
}

CZemtar3DObject* Object(CZemtarDocument* document, CZemtarSceneNode* parent, const char* name,
                        const CZemtarGeometry* geometry, CZemtarMaterial* material)
{
    CZemtar3DObject* object = CZemtar3DObject::Create(document);
    object->SetName(name);
    object->SetGeometry(geometry);
    object->SetMaterial(material);
    object->SetParent(parent);
    return object;
}

/// Two instances of a closed shape, one mirrored; an open one, half transparent, with a picture and one that
/// is gone; a line; a node that stands nowhere.
std::unique_ptr<CZemtarDocument> Model(const QString& picture)
{
    std::unique_ptr<CZemtarDocument> owner(CZemtarDocument::Create(true));
    CZemtarDocument* document = owner.get();
    CZemtarSceneNode* root = CZemtarTransformNode::Create(document);
    root->SetName("\"Läufer\"\n\\ ロータ");
    root->MetaData()->SetValue("7200", "Dichte", "Werk\"stoff", "kg/m³");
    root->MetaData()->SetValue("GG", "Name", "Werk\"stoff", "");
    CZemtarMaterial* red = CZemtarMaterial::Create(document);
    red->BasicMaterialAsGeneralMaterial()->SetDiffuseColor({1.0, 0.0, NaN, 1.0});
    CZemtarMaterial* glass = CZemtarMaterial::Create(document);
    glass->BasicMaterialAsGeneralMaterial()->SetOpacity(0.5);
    glass->BasicMaterialAsGeneralMaterial()->SetTexture(picture.toStdString(), eTextureDiffuse);
    glass->BasicMaterialAsGeneralMaterial()->SetTexture("/nowhere/gone.png", eTextureNormal);

    CZemtarGeometry* closed = Tetrahedron(document, true);
    Object(document, root, "a", closed, red);
    CZemtarMatrix mirror;
    mirror.M(0, 0) = -1.0;
    mirror.M(2, 3) = 5.0;
    Object(document, root, "b", closed, red)->SetLocalMatrix(mirror);
    CZemtar3DObject* open = Object(document, root, "c", Tetrahedron(document, false), glass);
    auto* coordinates = CZemtarTextureCoordinatesTable::Create(document, true);
    for (int i = 0; i < 5; ++i) {
        coordinates->Append(i == 4 ? NaN : 0.25 * i, 0.25);
    }
    open->SetTextureCoordinatesTable(coordinates);

    CZemtarGeometry* line = CZemtarGeometry::Create(document);
    auto* ends = CZemtarVerticiesTable::Create(document, true);
    ends->Append(0, 0, 0);
    ends->Append(0, 0, 2);
    auto* segments = CZemtarPolyLinesTable::Create(document);
    segments->Append(0, 1);
    line->SetVerticiesTable(ends);
    line->SetPolyLinesTable(segments);
    Object(document, root, "axis", line, nullptr);
    mirror.M(1, 3) = NaN;
    Object(document, root, "nowhere", closed, red)->SetLocalMatrix(mirror);
    return owner;
}

QByteArray Bytes(const QString& file)
{
    QFile input(file);
    EXPECT_TRUE(input.open(QIODevice::ReadOnly)) << file.toStdString();
    return input.readAll();
}

template <class Value>
Value At(const QByteArray& bytes, qsizetype offset)
{
    Value value{};
    EXPECT_LE(offset + qsizetype(sizeof(value)), bytes.size());
    std::memcpy(&value, bytes.constData() + offset, sizeof(value));
    return value;
}

struct Glb
{
    QByteArray bytes;
    QJsonObject json;
    qsizetype binary;

    explicit Glb(const QString& file) : bytes(Bytes(file))
    {
        EXPECT_EQ(At<quint32>(bytes, 8), quint32(bytes.size()));
        const qsizetype size = At<quint32>(bytes, 12);
        json = QJsonDocument::fromJson(bytes.mid(20, size)).object();
        binary = 20 + size + 8;
        EXPECT_EQ(At<quint32>(bytes, binary - 8), quint32(bytes.size() - binary));
    }
    /// Where an element of an accessor stands.
    qsizetype Offset(const QJsonValue& accessor, int element, int stride) const
    {
        const QJsonValue entry = json["accessors"][accessor.toInt()];
        const QJsonValue view = json["bufferViews"][entry["bufferView"].toInt()];
        return binary + view["byteOffset"].toInt() + entry["byteOffset"].toInt() +
               qsizetype(element) * stride;
    }
    QJsonObject Node(const char* name) const
    {
        for (const QJsonValue node : json["nodes"].toArray()) {
            if (node["name"] == name) {
                return node.toObject();
            }
        }
        return {};
    }
};

class SceneExport : public testing::Test
{
protected:
    void SetUp() override
    {
        QImage image(3, 2, QImage::Format_RGB32);
        image.fill(Qt::green);
        ASSERT_TRUE(image.save(folder.filePath("grün.bmp")));
        model = Model(folder.filePath("grün.bmp"));
    }
    QString Export(const char* name, const SceneExportSettings& settings)
    {
        const QString file = folder.filePath(name);
        notes = ExportScene(*model, file.toStdString(), settings);
        return file;
    }
    QTemporaryDir folder;
    std::unique_ptr<CZemtarDocument> model;
    std::vector<std::string> notes;
};

} // namespace

TEST_F(SceneExport, GlbKeepsTreeShapesAndLooks)
{
    const Glb glb(Export("m.glb", {}));
    EXPECT_EQ(notes.size(), 4U) << testing::PrintToString(
        notes); // two damaged shapes, a transform, a picture
    const QJsonObject root = glb.json["nodes"][0].toObject();
    EXPECT_EQ(root["name"].toString().toStdString(), "\"Läufer\"\n\\ ロータ");
    EXPECT_EQ(root["extras"]["metadata"]["Werk\"stoff"]["Dichte"]["unit"].toString(),
              QStringLiteral("kg/m³"));
    EXPECT_EQ(root["matrix"][6].toDouble(), -1.0); // y goes to -z
    EXPECT_EQ(root["children"].toArray().size(), 4);
    EXPECT_EQ(glb.Node("a")["mesh"], glb.Node("b")["mesh"]);
    EXPECT_EQ(glb.json["meshes"].toArray().size(), 3);

    const auto look = [&](const char* node) {
        const QJsonValue mesh = glb.json["meshes"][glb.Node(node)["mesh"].toInt()];
        EXPECT_EQ(mesh["primitives"].toArray().size(), 1);
        return glb.json["materials"][mesh["primitives"][0]["material"].toInt()];
    };
    EXPECT_FALSE(look("a").toObject().contains("doubleSided"));
    EXPECT_TRUE(look("c")["doubleSided"].toBool());
    EXPECT_EQ(look("c")["alphaMode"].toString(), "BLEND");
    EXPECT_FALSE(look("c").toObject().contains("normalTexture"));
    const QJsonValue view = glb.json["bufferViews"][glb.json["images"][0]["bufferView"].toInt()];
    const QImage picture = QImage::fromData(
        glb.bytes.mid(glb.binary + view["byteOffset"].toInt(), view["byteLength"].toInt()), "PNG");
    EXPECT_EQ(picture.pixelColor(1, 1), QColor(Qt::green));

    const QJsonValue c = glb.json["meshes"][glb.Node("c")["mesh"].toInt()]["primitives"][0];
    EXPECT_EQ(glb.json["accessors"][c["indices"].toInt()]["count"].toInt(), 9);
    EXPECT_EQ(At<quint16>(glb.bytes, glb.Offset(c["indices"], 7, 2)), 2);
    EXPECT_EQ(At<float>(glb.bytes, glb.Offset(c["attributes"]["POSITION"], 3, 12) + 8), 1.0F);
    EXPECT_EQ(At<float>(glb.bytes, glb.Offset(c["attributes"]["NORMAL"], 1, 12)), 1.0F);
    EXPECT_EQ(At<float>(glb.bytes, glb.Offset(c["attributes"]["TEXCOORD_0"], 0, 8) + 4), 0.75F);
    const QJsonValue axis = glb.json["meshes"][glb.Node("axis")["mesh"].toInt()]["primitives"][0];
    EXPECT_EQ(axis["mode"].toInt(), 1);
}

TEST_F(SceneExport, OthersReadTheFiles)
{
    QStringList glbs{Export("plain.glb", {}), Export("quantized.glb", {.packing = GlbPacking::Quantize})};
    if (HasMeshopt()) {
        glbs << Export("packed.glb", {.packing = GlbPacking::Meshopt});
    }
    const QString node = QStandardPaths::findExecutable("node");
    const int verdict =
        node.isEmpty()
            ? 77
            : QProcess::execute(node, QStringList(ZEMTAR_SOURCE_DIR "/tests/apps/gltf_validate.js") + glbs);
    EXPECT_TRUE(verdict == 0 || verdict == 77) << verdict;
    const QString assimp = QStandardPaths::findExecutable("assimp");
    if (assimp.isEmpty()) {
        GTEST_SKIP() << "assimp is not here; the validator " << (verdict == 0 ? "took all" : "neither");
    }
    // In the GLB file the two instances are one mesh.
    const std::pair<QString, const char*> files[] = {
        {glbs[0], "Faces: 8"},
        {Export("m.obj", {.format = SceneFormat::OBJ}), "Faces: 12"},
        {Export("m.ply", {.format = SceneFormat::PLY}), "Faces: 11"},
        {Export("m.stl", {.format = SceneFormat::STL}), "Faces: 11"}};
    for (const auto& [file, faces] : files) {
        QProcess process;
        process.start(assimp, {"info", file});
        ASSERT_TRUE(process.waitForFinished(60000));
        EXPECT_THAT(QString(process.readAllStandardOutput()).simplified().toStdString(), HasSubstr(faces))
            << file.toStdString();
    }
}

TEST_F(SceneExport, InstancesStandInTheWorldInTheUnit)
{
    const QByteArray stl =
        Bytes(Export("m.stl", {.format = SceneFormat::STL, .unit = eLengthUnitCentimetre}));
    ASSERT_EQ(stl.size(), 84 + 50 * 11);
    EXPECT_EQ(At<quint32>(stl, 80), 11U);
    // The mirrored instance's second side, at y = 0: wound anew, so that it still looks out, to -y.
    EXPECT_EQ(At<float>(stl, 84 + 50 * 5 + 4), -1.0F);
    EXPECT_EQ(At<float>(stl, 84 + 50 * 5 + 12 + 8), 500.0F);

    const QByteArray ply = Bytes(Export("m.ply", {.format = SceneFormat::PLY}));
    const qsizetype body = ply.indexOf("end_header\n") + 11;
    EXPECT_TRUE(ply.contains("element vertex 15\n"));
    EXPECT_EQ(ply.size(), body + 15 * 28 + 11 * 13);
    EXPECT_EQ(At<float>(ply, body + 28), 1000.0F);
    EXPECT_EQ(At<quint8>(ply, body + 24), 255);
    EXPECT_EQ(At<quint32>(ply, body + 15 * 28 + 13 * 4 + 1),
              5U); // the second instance has vertices of its own

    const QByteArray obj = Bytes(Export("m.obj", {.format = SceneFormat::OBJ, .unit = eLengthUnitMetre}));
    EXPECT_TRUE(obj.contains("mtllib m.mtl\no a\nusemtl Material\nv 0 0 0\nv 1 0 0\n"));
    EXPECT_TRUE(obj.contains("\nf 11/1/11 13/3/13 12/2/12\n"));
    EXPECT_TRUE(obj.contains("\nl 16 17\n"));
    EXPECT_TRUE(Bytes(folder.filePath("m.mtl")).contains("newmtl Material_2\n"));
}

TEST_F(SceneExport, AFileIsWholeOrNotThere)
{
    const SceneFormat formats[] = {SceneFormat::GLB, SceneFormat::OBJ, SceneFormat::PLY, SceneFormat::STL};
    const std::unique_ptr<CZemtarDocument> empty(CZemtarDocument::Create(false));
    ASSERT_TRUE(QDir(folder.path()).mkdir("taken"));
    const QStringList before = QDir(folder.path()).entryList();
    for (const SceneFormat format : formats) {
        EXPECT_THROW(ExportScene(*empty, folder.filePath("x").toStdString(), {.format = format}),
                     std::runtime_error);
        for (const char* target : {"none/x", "taken"}) {
            EXPECT_THROW(Export(target, {.format = format}), std::runtime_error) << target;
        }
    }
    for (const SceneFormat format : formats) {
        EXPECT_THROW(Export("x", {.format = format, .progress = [](double) { return false; }}),
                     std::runtime_error);
    }
    EXPECT_EQ(QDir(folder.path()).entryList(), before);
    EXPECT_THROW(ExportScene(*model, "/dev/full", {}), std::runtime_error);
    QFile::link(folder.filePath("real.glb"), folder.filePath("link.glb"));
    Export("link.glb", {});
    EXPECT_TRUE(QFile::exists(folder.filePath("real.glb")));
    EXPECT_TRUE(QFileInfo(folder.filePath("link.glb")).isSymLink());
}
