// Copies of trees and what they share.

#include "host/CZemtar3DObject.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarSolidHint.h"
#include "host/CZemtarTransformNode.h"
#include "host/CZemtarWriter.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace Zemtar {
namespace {

/// A part "screw" with two meshes that share one geometry, and a third that was deleted.
class TreeCopy : public testing::Test
{
protected:
    TreeCopy()
    {
        geometry = CZemtarGeometry::Create(document.get());
        CZemtarVerticiesTable* vertices = CZemtarVerticiesTable::Create(document.get(), true);
        vertices->Append(1, 2, 3);
        geometry->SetVerticiesTable(vertices);
        part = CZemtarTransformNode::Create(document.get());
        part->SetName("screw");
        part->SetNodeType(CZemtarSceneNode::eNodeTypePart);
        part->MetaData()->SetValue("M4", "Size", "Properties", "");
        material = CZemtarMaterial::Create(document.get());
        CZemtarSolidHint hint;
        for (const char* name : {"head", "thread", "gone"}) {
            CZemtar3DObject* mesh = CZemtar3DObject::Create(document.get());
            mesh->SetName(name);
            mesh->SetGeometry(geometry);
            mesh->SetMaterial(material);
            mesh->SetParent(part);
            hint.AppendChildID(mesh->ID());
        }
        part->ChildNodes()[2]->SetDeleted(true);
        hint.Attributes().SetVolume(0.5);
        part->SolidHintSet(hint);
        CZemtarMatrix matrix;
        matrix.M(2, 3) = 4.0;
        part->SetLocalMatrix(matrix);
    }

    static std::vector<CZemtar3DObject*> Meshes(const CZemtarSceneNode* node)
    {
        std::vector<CZemtarSceneNode*> children;
        node->Children(children, true);
        std::vector<CZemtar3DObject*> meshes;
        meshes.reserve(children.size());
        for (CZemtarSceneNode* child : children) {
            meshes.push_back(dynamic_cast<CZemtar3DObject*>(child));
        }
        return meshes;
    }
    void ExpectLikeScrew(const CZemtarSceneNode* copy) const
    {
        EXPECT_EQ(copy->Name().toStdString(), "screw");
        EXPECT_TRUE(copy->IsPart());
        EXPECT_EQ(copy->LocalMatrix(), part->LocalMatrix());
        EXPECT_EQ(copy->MetaData()->Value("Size", "Properties").toStdString(), "M4");
        const auto meshes = Meshes(copy);
        ASSERT_EQ(meshes.size(), 2U);
        EXPECT_EQ(meshes[1]->Name().toStdString(), "thread");
        ASSERT_NE(copy->SolidHint(), nullptr);
        EXPECT_EQ(copy->SolidHint()->Attributes().Volume(), 0.5);
        EXPECT_EQ(copy->SolidHint()->ChildIDs()[0], meshes[0]->ID());
        EXPECT_EQ(copy->SolidHint()->ChildIDs()[1], meshes[1]->ID());
    }

    std::unique_ptr<CZemtarDocument> document{CZemtarDocument::Create(true)};
    CZemtarGeometry* geometry = nullptr;
    CZemtarMaterial* material = nullptr;
    CZemtarSceneNode* part = nullptr;
};

TEST_F(TreeCopy, SharesGeometryUntilOneIsEdited)
{
    CZemtarSceneNode* copy = part->CreateTreeCopy(document.get(), nullptr, true);
    ExpectLikeScrew(copy);
    EXPECT_EQ(copy->Parent(), nullptr);
    CZemtar3DObject* original = Meshes(part)[0];
    CZemtar3DObject* edited = Meshes(copy)[0];
    EXPECT_EQ(edited->Geometry(), geometry);
    EXPECT_EQ(edited->Material(), material);
    EXPECT_TRUE(edited->GeometyDefinitionID() == original->GeometyDefinitionID());
    EXPECT_FALSE(edited->GeometyDefinitionID().IsEmpty());

    edited->EditableGeometry()->VerticiesTable()->Data()[0] = 9.0;
    EXPECT_EQ(original->Geometry()->VerticiesTable()->Item(0).X(), 1.0);
    EXPECT_TRUE(edited->GeometyDefinitionID() != original->GeometyDefinitionID());
    const CZemtarGeometry* own = edited->Geometry();
    EXPECT_EQ(edited->EditableGeometry(), own); // alone by now

    copy->MetaData()->SetValue("M5", "Size", "Properties", "");
    EXPECT_EQ(part->MetaData()->Value("Size", "Properties").toStdString(), "M4");
    EXPECT_TRUE(CZemtar3DObject::Create(document.get())->GeometyDefinitionID().IsEmpty());
}

TEST_F(TreeCopy, TextureCoordinatesAreSharedLikeGeometry)
{
    CZemtar3DObject* first = Meshes(part)[0];
    CZemtar3DObject* second = Meshes(part)[1];
    CZemtarTextureCoordinatesTable* table = CZemtarTextureCoordinatesTable::Create(document.get(), true);
    first->SetTextureCoordinatesTable(table);
    EXPECT_TRUE(first->GeometyDefinitionID() == second->GeometyDefinitionID()); // an empty table is none
    table->Append(0.25, 0.75);
    EXPECT_TRUE(first->GeometyDefinitionID() != second->GeometyDefinitionID());
    second->SetTextureCoordinatesTable(table);
    EXPECT_TRUE(first->GeometyDefinitionID() == second->GeometyDefinitionID());
    second->EditableTextureCoordinatesTable()->Data()[0] = 0.5;
    EXPECT_EQ(table->Item(0), CZemtarTextureCoordinate(0.25, 0.75));
    EXPECT_TRUE(first->GeometyDefinitionID() != second->GeometyDefinitionID());
}

TEST_F(TreeCopy, OwnGeometryAndOtherDocuments)
{
    CZemtarSceneNode* apart = part->CreateTreeCopy(document.get(), part, false);
    EXPECT_EQ(apart->Parent(), part);
    apart->SetParent(nullptr);
    ExpectLikeScrew(apart);
    const auto own = Meshes(apart);
    EXPECT_TRUE(own[0]->GeometyDefinitionID() != own[1]->GeometyDefinitionID());
    EXPECT_EQ(own[0]->Geometry()->VerticiesTable()->Item(0), CZemtar3DVertex(1, 2, 3));

    material->BasicMaterialAsGeneralMaterial()->SetTexture("/oak.png", eTextureDiffuse);
    std::unique_ptr<CZemtarDocument> other(CZemtarDocument::Create(true));
    CZemtarSceneNode* abroad = part->CreateTreeCopy(other.get(), nullptr, true);
    ExpectLikeScrew(abroad);
    document.reset(); // nothing of the copy refers to the source
    const auto meshes = Meshes(abroad);
    EXPECT_EQ(meshes[0]->Geometry(), meshes[1]->Geometry());
    EXPECT_EQ(meshes[0]->Geometry()->VerticiesTable()->Item(0), CZemtar3DVertex(1, 2, 3));
    ASSERT_EQ(other->Materials(), std::vector<CZemtarMaterial*>{meshes[0]->Material()});
    EXPECT_EQ(meshes[1]->Material(), meshes[0]->Material());
    const auto* texture = meshes[0]->Material()->BasicMaterialAsGeneralMaterial()->Texture(eTextureDiffuse);
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texture->FullFilename(false).toStdString(), "/oak.png");
    EXPECT_EQ(abroad->CreateTreeCopy(nullptr, nullptr, true), nullptr);
}

/// Keeps what it was asked to write.
class RecordingWriter : public CZemtarWriter
{
public:
    bool Export(CZemtarDocument* document, CZemtarString fileName, CZemtarTransform* transform,
                std::vector<CZemtarCamera*>*, std::vector<CZemtarSceneState*>*, CZemtarSectionPlane*,
                CZemtarUnit unit) override
    {
        EXPECT_EQ(transform, nullptr);
        const auto roots = document->RootNodes();
        EXPECT_EQ(roots.size(), 1U);
        file = fileName;
        name = roots[0]->Name();
        height = roots[0]->LocalMatrix().M(2, 3);
        lengthUnit = unit.GetLengthUnit();
        return true;
    }
    CZemtarString file;
    CZemtarString name;
    double height = 0.0;
    enumLengthUnit lengthUnit = eLengthUnitMetre;
};

TEST_F(TreeCopy, WriterExportsOneNode)
{
    CZemtarSceneNode* outer = CZemtarTransformNode::Create(document.get());
    outer->SetLocalMatrix(part->LocalMatrix());
    part->SetParent(outer);
    document->SetOriginalLengthUnit(eLengthUnitInch);
    RecordingWriter writer;
    EXPECT_TRUE(writer.ExportSceneNode(part, "screw.stp", true));
    EXPECT_TRUE(writer.file == "screw.stp" && writer.name == "screw");
    EXPECT_EQ(writer.height, 8.0);
    EXPECT_EQ(writer.lengthUnit, eLengthUnitInch);
    writer.ExportSceneNode(part, "screw.stp", false);
    EXPECT_EQ(writer.height, 4.0);
    EXPECT_FALSE(writer.ExportSceneNode(nullptr, "screw.stp", true));
}

} // namespace
} // namespace Zemtar
