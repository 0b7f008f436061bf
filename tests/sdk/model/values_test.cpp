// Values and content: transformations, colours, appearances, properties.
#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_FileTexture.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PixMapTexture.hxx>
#include <cadex/ModelData_PropertyTable.hxx>
#include <cadex/ModelData_TextureSet.hxx>
#include <cadex/ModelData_TextureVisitor.hxx>
#include <cadex/ModelData_Transformation.hxx>

#include <gtest/gtest.h>

#include <string>

#include "../PropertyText.h"

namespace {

using namespace cadex;

TEST(Transformation, ScalesTheWholePlacement)
{
    ModelData_Transformation t;
    EXPECT_TRUE(t.IsIdentity());
    t.SetRotationPart(0, -1, 0, 1, 0, 0, 0, 0, 1);
    t.SetTranslationPart(ModelData_Vector(1, 2, 3));
    t.SetScaleFactor(1000);
    double x = 5;
    double y = 6;
    double z = 7;
    t.Transform(x, y, z);
    EXPECT_EQ(x, 1000 * (-6 + 1));
    EXPECT_EQ(y, 1000 * (5 + 2));
    EXPECT_EQ(z, 1000 * (7 + 3));
    EXPECT_EQ(t.Data(0, 1), -1000);
    EXPECT_EQ(t.Data(2, 3), 3000);
    EXPECT_FALSE(t.IsIdentity());
}

TEST(Appearance, ComparesContentWhileItsBaseComparesIdentity)
{
    const ModelData_Color red(1.f, 0.f, 0.f, 0.5f);
    ModelData_Appearance a(red);
    const ModelData_Appearance b(red);
    const auto same = [](const ModelData_BaseObject& left, const ModelData_BaseObject& right) {
        return left == right;
    };
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(same(a, b));
    EXPECT_EQ(ModelData_AppearanceHash()(a), ModelData_AppearanceHash()(b));
    EXPECT_TRUE(a != ModelData_Appearance(ModelData_Material(red)));
    EXPECT_TRUE(a != ModelData_Appearance());
    a.SetTextureSet(ModelData_TextureSet(initialized()));
    EXPECT_TRUE(a != b);
}

TEST(Appearance, GivesAMaterialOfItsColourOrMaterial)
{
    ModelData_Material material;
    EXPECT_EQ(material.AmbientColor().R(), 0.2f);
    EXPECT_FALSE(ModelData_Appearance().ToMaterial(material));
    EXPECT_FALSE(ModelData_Appearance(initialized()).ToMaterial(material));
    ModelData_Appearance appearance; // null: setting makes it
    appearance.Set(ModelData_Color(255, 51, 0, 51));
    ASSERT_TRUE(appearance.ToMaterial(material));
    EXPECT_EQ(material.DiffuseColor(), ModelData_Color(1.f, 0.2f, 0.f, 0.2f));
    EXPECT_EQ(material.AmbientColor().R(), 0.2f);
    ModelData_Material own(ModelData_Color(static_cast<int>(0x80FF0000)));
    own.Shininess() = 20;
    appearance.Set(own);
    ASSERT_TRUE(appearance.ToMaterial(material));
    EXPECT_EQ(material, own);
    EXPECT_NEAR(material.DiffuseColor().A(), 128 / 255., 1e-7);
    EXPECT_FALSE(ModelData_Color(1.f, 2.f, 0.f).IsValid());
}

TEST(Textures, AreVisitedByKindInOrder)
{
    struct : ModelData_TextureVisitor
    {
        std::string seen;
        void operator()(const ModelData_FileTexture& t) override { seen += t.FilePath().ToUTF8() + ' '; }
        void operator()(const ModelData_PixMapTexture& t) override
        {
            seen += std::to_string(t.PixMap().PixelDataSize()) + ' ';
        }
    } visitor;
    const unsigned char pixels[24] = {};
    constexpr std::size_t huge = static_cast<std::size_t>(-1) / 2;
    ModelData_TextureSet set;
    set.Add(ModelData_FileTexture("wood.png"));
    set.Add(ModelData_PixMapTexture(ModelData_PixMap(pixels, 4, 2, ModelData_PF_RGB)));
    set.Add(ModelData_PixMapTexture(ModelData_PixMap(pixels, huge, huge, ModelData_PF_RGBA))); // refused
    set.Add(ModelData_PixMapTexture(ModelData_PixMap(nullptr, 4, 2, ModelData_PF_RGB)));
    set.Add(ModelData_Texture());
    set.Accept(visitor);
    EXPECT_EQ(visitor.seen, "wood.png 24 0 0 ");
}

TEST(Properties, KeepOrderKindAndDoubledNames)
{
    ModelData_PropertyTable table;
    table.Add("b", 1);
    table.Add("a", I64{1} << 40);
    table.Add("b", Base_UTF16String("zwei"));
    table.Add("f", 0.5f);
    table.Add("d", 0.25);
    table.Add("t", ModelData_PropertyTable::TimeType(86400));
    table.Add("p", ModelData_Point(1, 2, 3));
    table.Add("box", ModelData_Box(ModelData_Point(4, 4, 4), ModelData_Point(1, 1, 1)));
    const std::string once = "b=i32 1\na=i64 1099511627776\nb=zwei\nf=f 0.500000\nd=d 0.250000\nt=t 86400\n"
                             "p=p 2.000000\nbox=b 4.000000\n";
    PropertyText printer;
    table.Accept(printer);
    EXPECT_EQ(printer.text, once);
    table.Add(table);
    printer.text.clear();
    table.Accept(printer);
    EXPECT_EQ(printer.text, once + once);
    ModelData_PropertyTable().Accept(printer);
    EXPECT_EQ(ModelData_PropertyTable().Size(), 0u);
}

TEST(Properties, LinkTheFirstTableAndAppendFurtherOnes)
{
    ModelData_Part part("p");
    ModelData_PropertyTable first{initialized()};
    ModelData_PropertyTable second{initialized()};
    second.Add("s", 1);
    part.AddProperties(first);
    first.Add("later", 1);
    part.AddProperties(second);
    EXPECT_TRUE(part.Properties() == first);
    EXPECT_EQ(part.Properties().Size(), 2u);
    EXPECT_EQ(second.Size(), 1u);
}

} // namespace
