// Materials, metadata and the small services.

#include "host/CZemtar3DTextGeometryGenerator.h"
#include "host/CZemtarBranding.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarTransformNode.h"
#include "host/CZemtarUUID.h"

#include <gtest/gtest.h>

#include <memory>

namespace Zemtar {
namespace {

TEST(Content, GeneralAndFlatMaterials)
{
    std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
    CZemtarMaterial* material = CZemtarMaterial::Create(document.get());
    CZemtarCommonBasicMaterial* general = material->BasicMaterialAsGeneralMaterial();
    ASSERT_NE(general, nullptr);
    EXPECT_EQ(material->BasicMaterial(), general);
    general->SetDisplayColor(CZemtarColor(0.1, 0.2, 0.3, 0.4));
    EXPECT_EQ(general->DiffuseColor(), CZemtarColor(0.1, 0.2, 0.3, 1.0));
    EXPECT_EQ(general->Opacity(), 0.4);
    general->SetRunTimeOpacity(1.0); // a highlight does not touch what is stored
    EXPECT_EQ(general->Opacity(), 0.4);
    EXPECT_EQ(general->DisplayColor(), CZemtarColor(0.1, 0.2, 0.3, 1.0));
    EXPECT_EQ(general->Texture(eTextureDiffuse), nullptr);
    general->SetTexture("/oak.png", eTextureDiffuse);
    ASSERT_NE(general->Texture(eTextureDiffuse), nullptr);
    EXPECT_EQ(general->Texture(eTextureBump), nullptr);
    general->SetTexture("", eTextureDiffuse);
    EXPECT_EQ(general->Texture(eTextureDiffuse), nullptr);

    CZemtarBasicMaterial* flat = CZemtarBasicMaterial::Create(document.get());
    flat->SetDisplayColor(CZemtarColor(1, 0, 0, 1));
    material->SetBasicMaterial(flat);
    EXPECT_EQ(material->BasicMaterialAsGeneralMaterial(), nullptr);
    EXPECT_EQ(material->CreateCopy(*document)->BasicMaterial()->DisplayColor(), CZemtarColor(1, 0, 0, 1));
    material->SetBasicMaterial(nullptr);
    EXPECT_EQ(material->CreateCopy(*document)->BasicMaterial(), nullptr);
}

TEST(Content, MetaDataKeepsOrderAndReplacesByName)
{
    std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
    CZemtarSceneNode* node = CZemtarTransformNode::Create(document.get());
    EXPECT_TRUE(std::as_const(*node).MetaData()->IsEmpty());
    CZemtarMetaData* data = node->MetaData();
    data->SetValue("1", "z", "B", "mm");
    data->SetValue("2", "a", "B", "");
    data->InsertCatagory("A");
    data->InsertCatagory("B"); // keeps what is in it
    data->SetValue("3", "z", "B", "");

    std::map<CZemtarString, CZemtarMetaData::NamedValues> values;
    values["stale"];
    data->ListNamedValues(values);
    ASSERT_EQ(values.size(), 2U);
    EXPECT_TRUE(values["A"].empty());
    ASSERT_EQ(values["B"].size(), 2U);
    EXPECT_TRUE(values["B"][0].first == "z" && values["B"][0].second == "3");
    EXPECT_TRUE(values["B"][1].first == "a" && values["B"][1].second == "2");
    EXPECT_TRUE(data->Unit("z", "B").IsEmpty() && data->Value("z", "A").IsEmpty());

    for (int i = 0; i < 20000; ++i) {
        data->SetValue(i, CZemtarString("k") + CZemtarString((i * 7919) % 20000), "many", "");
    }
    EXPECT_EQ(data->Value("k7919", "many").toStdString(), "1");
}

TEST(Content, UuidText)
{
    const char* canonical = "{6ba7b810-9dad-11d1-80b4-00c04fd430c8}";
    for (const char* text : {canonical, "6BA7B810-9DAD-11d1-80B4-00C04FD430C8"}) {
        EXPECT_EQ(static_cast<CZemtarString>(CZemtarUUID(text)).toStdString(), canonical);
    }
    for (const char* text :
         {"", "not a uuid", "{6ba7b810-9dad-11d1-80b4-00c04fd430c8", "6ba7b8109dad11d180b400c04fd430c8",
          "{6ba7b810-9dad-11d1-80b4-00c04fd430cg}", "6ba7b810-9dad-11d1-80b4+00c04fd430c8"}) {
        EXPECT_TRUE(CZemtarUUID(text).IsNull()) << text;
    }
    EXPECT_EQ(static_cast<CZemtarString>(CZemtarUUID()).toStdString(),
              "{00000000-0000-0000-0000-000000000000}");
}

TEST(Content, ServicesAnswer)
{
    const CZemtarBranding* branding = CZemtarBranding::getInstance();
    for (const int which : {0, 3, 5}) {
        EXPECT_FALSE(branding->getString(static_cast<CZemtarBranding::String>(which)).empty()) << which;
    }

    CZemtarFont font;
    font.SetFontName("Sans");
    font.SetFontFileBold("/fonts/bold.ttf");
    CZemtar3DTextGeometryGenerator* generator = CZemtar3DTextGeometryGenerator::getInstance();
    generator->RegisterFont(font);
    font.SetFontFileNormal("/fonts/normal.ttf");
    generator->RegisterFont(font);
    EXPECT_EQ(generator->Fonts().size(), 1U);
    ASSERT_NE(generator->FindFont("sans"), nullptr);
    EXPECT_TRUE(generator->FindFont("sans")->IsBold() && !generator->FindFont("sans")->IsItalic());
    EXPECT_EQ(generator->FindFont("serif"), nullptr);
}

} // namespace
} // namespace Zemtar
