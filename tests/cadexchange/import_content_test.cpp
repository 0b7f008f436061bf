// What nodes and meshes carry: materials, textures, metadata and solid hints.

#include "cadexchange/CZemtarMetaDataVisitor.h"
#include "host/CZemtar3DObject.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarSolidHint.h"
#include "sdk/occt/OcctBRep.h"
#include "tests/support/ModelBuilder.h"
#include "tests/support/RecordingEngines.h"

#include <cadex/ModelData_FileTexture.hxx>
#include <cadex/ModelData_PixMapTexture.hxx>
#include <cadex/ModelData_TextureSet.hxx>

#include <BRepPrimAPI_MakeBox.hxx>
#include <gp_Trsf.hxx>

#include <QImage>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#include <fstream>
#include <limits>
#include <numeric>

using namespace Zemtar;
using namespace Zemtar::Test;
using cadex::ModelData_Appearance;
using cadex::ModelData_Color;
using testing::ElementsAre;
namespace fs = std::filesystem;

namespace {

constexpr float Nan = std::numeric_limits<float>::quiet_NaN();

/// The materials of a part's meshes, one for each appearance.
class Looks
{
public:
    explicit Looks(const std::vector<ModelData_Appearance>& looks)
    {
        std::vector<cadex::ModelData_PolyVertexSet> meshes;
        for (const auto& look : looks) {
            meshes.push_back(MakeGrid(1));
            meshes.back().SetAppearance(look);
        }
        document = ImportModel({MakePart("part", meshes)});
        for (const CZemtarSceneNode* mesh : document->RootNodes()[0]->ChildNodes()) {
            materials.push_back(dynamic_cast<const CZemtar3DObject*>(mesh)->Material());
        }
    }
    const CZemtarCommonBasicMaterial& First() const
    {
        return *materials[0]->BasicMaterialAsGeneralMaterial();
    }

    std::unique_ptr<CZemtarDocument> document;
    std::vector<const CZemtarMaterial*> materials;
};

/// The values of a table's properties as they arrive in a part's node.
std::vector<std::string> Imported(const cadex::ModelData_PropertyTable& table)
{
    cadex::ModelData_Part part("part");
    part.AddProperties(table);
    std::map<CZemtarString, CZemtarMetaData::NamedValues> values;
    ImportModel({part})->RootNodes()[0]->MetaData()->ListNamedValues(values);
    std::vector<std::string> texts;
    for (const auto& property : values["Properties"]) {
        texts.push_back(property.second.toStdString());
    }
    return texts;
}

class Textures : public testing::Test
{
protected:
    Textures()
    {
        fs::create_directories(folder / "in" / "folder.png");
        fs::create_directory_symlink(folder / "in", folder / "link");
        std::ofstream(folder / "in" / "wood.jpg") << "wood";
    }
    /// The file that a material gets for a texture, below the folder; empty for no material.
    std::string Extract(const cadex::ModelData_Texture& texture, const std::string& output) const
    {
        CZemtarCADExchangeReader().setTextureOutputDirectory((folder / "").string() + output);
        cadex::ModelData_TextureSet set{cadex::initialized()};
        set.Add(texture);
        ModelData_Appearance look{cadex::initialized()};
        look.SetTextureSet(set);
        const Looks looks({look});
        return !looks.materials[0] ? ""
                                   : looks.First()
                                         .Texture(eTextureDiffuse)
                                         ->FullFilename(false)
                                         .toStdString()
                                         .substr((folder / "").string().size());
    }
    std::string ExtractFile(const char* name, const std::string& output) const
    {
        return Extract(cadex::ModelData_FileTexture((folder / name).c_str()), output);
    }
    std::string ExtractPixMap(std::size_t width, std::size_t height,
                              cadex::ModelData_PixelFormat format) const
    {
        std::vector<unsigned char> pixels(4 * width * height + 1);
        std::iota(pixels.begin(), pixels.end(), static_cast<unsigned char>(0));
        return Extract(cadex::ModelData_PixMapTexture({pixels.data(), width, height, format}), "in");
    }

    const QTemporaryDir temporary;
    const fs::path folder = temporary.path().toStdString();
};

} // namespace

TEST(Materials, EachColorIsTestedOnItsOwn)
{
    const std::tuple<ModelData_Color, const char*, double, double> cases[] = {
        {{0.5f, 0.25f, 1.0f, 1.0f}, "RGBA:127,63,255,255", 0.5, 1.0},
        {{1.0f, 1.0f, 1.0f, 0.3f}, "RGBA:255,255,255,76", 1.0, 0.3f},
        {{0.0f, 0.0f, 0.0f, 0.0f}, "RGBA:0,0,0,0", 0.0, 0.0},
        {{1.2f, 0.0f, 0.0f, 1.0f}, "Material", 0.8, 1.0},
        {{0.0f, 0.0f, 0.0f, -0.1f}, "Material", 0.8, 1.0},
        {{0.5f, 0.0f, 0.0f, Nan}, "RGBA:127,0,0,-2147483648", 0.5, 1.0},
    };
    const ModelData_Color bad(0.5f, 2.0f, 0.5f);
    for (const auto& [diffuse, name, red, opacity] : cases) {
        const Looks looks(
            {cadex::ModelData_Material(bad, diffuse, {0.1f, 0.0f, 0.0f, 0.5f}, {0.0f, 0.2f, 0.0f}, 3.0f)});
        const CZemtarCommonBasicMaterial& general = looks.First();
        EXPECT_EQ(looks.materials[0]->Name().toStdString(), name);
        EXPECT_DOUBLE_EQ(general.DiffuseColor().R(), red) << name;
        EXPECT_EQ(general.DiffuseColor().A(), 1.0) << name;
        EXPECT_EQ(general.RunTimeDiffuseColor(), general.DiffuseColor());
        EXPECT_EQ(general.Opacity(), opacity) << name;
        EXPECT_EQ(general.RunTimeOpacity(), opacity) << name;
        EXPECT_EQ(general.AmbientColor(), CZemtarColor(0.2, 0.2, 0.2, 1.0));
        EXPECT_EQ(general.RunTimeSpecularColor(), CZemtarColor(0.1f, 0.0, 0.0, 1.0));
        EXPECT_EQ(general.EmissiveColor(), CZemtarColor(0.0, 0.2f, 0.0, 1.0));
    }
}

TEST(Materials, OnePerAppearanceObject)
{
    const ModelData_Appearance red(ModelData_Color(1.0f, 0.0f, 0.0f));
    const ModelData_Appearance equal(ModelData_Color(1.0f, 0.0f, 0.0f));
    const Looks looks({red, equal, red, ModelData_Appearance(cadex::initialized())});
    EXPECT_EQ(looks.materials[0], looks.materials[2]);
    EXPECT_NE(looks.materials[0], looks.materials[1]) << "identity, not content, decides";
    EXPECT_EQ(looks.document->Materials().size(), 2u);
}

TEST_F(Textures, FilesAreCopiedRightBehindTheFolder)
{
    EXPECT_EQ(ExtractFile("in/wood.jpg", "out/"), "out/wood.jpg");
    EXPECT_EQ(ExtractFile("in/wood.jpg", "out"), "outwood.jpg");
    EXPECT_TRUE(fs::exists(folder / "outwood.jpg"));
    EXPECT_EQ(ExtractFile("in/wood.jpg", "link/"), "link/wood.jpg");
    EXPECT_EQ(fs::file_size(folder / "in/wood.jpg"), 4u) << "sources are never touched";
    fs::remove(folder / "out/wood.jpg");
    fs::create_symlink(folder / "in/wood.jpg", folder / "out/wood.jpg");
    fs::create_directory(folder / "aliases");
    fs::create_symlink(folder / "out/wood.jpg", folder / "aliases/wood.jpg");
    EXPECT_EQ(ExtractFile("aliases/wood.jpg", "out/"), "out/wood.jpg");
    EXPECT_FALSE(fs::is_symlink(folder / "out/wood.jpg")) << "the folder has a file of its own";
    EXPECT_EQ(fs::file_size(folder / "out/wood.jpg"), 4u);
    EXPECT_EQ(ExtractFile("aliases/wood.jpg", "out/"), "out/wood.jpg") << "now a link to the target";
    EXPECT_EQ(fs::file_size(folder / "aliases/wood.jpg"), 4u);
    fs::create_directory_symlink(folder / "aliases", folder / "aliases too");
    EXPECT_EQ(ExtractFile("aliases/wood.jpg", "aliases too/"), "aliases too/wood.jpg");
    EXPECT_TRUE(fs::is_symlink(folder / "aliases/wood.jpg")) << "a source that is a link stays one";
    EXPECT_EQ(ExtractFile("in/wood.jpg", "in/wood.jpg/"), "") << "the folder is a file";
    for (const char* name : {"in/missing.png", "in/folder.png", "in/"}) {
        EXPECT_EQ(ExtractFile(name, "out/"), "") << name;
    }
}

TEST_F(Textures, PixMapsAreNumberedForTheProcess)
{
    const int first = std::stoi(ExtractPixMap(4, 2, cadex::ModelData_PF_RGBA).substr(3));
    const auto path = [&](int number) { return "in/" + std::to_string(first + number) + ".png"; };
    const auto image = [&](int number) {
        return QImage(QString::fromStdString((folder / path(number)).string()));
    };
    EXPECT_EQ(ExtractPixMap(5, 5, cadex::ModelData_PF_RGB), path(1));
    EXPECT_EQ(ExtractPixMap(4, 2, cadex::ModelData_PF_RGB), path(2));
    EXPECT_EQ(ExtractPixMap(2, 2, cadex::ModelData_PF_Luminance), path(3)) << "a path even though";
    EXPECT_EQ(ExtractPixMap(0, 2, cadex::ModelData_PF_RGB), path(4));
    EXPECT_TRUE(image(3).isNull() && image(4).isNull()) << "nothing is written";
    EXPECT_EQ(image(0).size(), QSize(2, 4)) << "width and height are exchanged";
    EXPECT_EQ(image(0).pixel(0, 3), qRgba(0, 1, 2, 3)) << "RGBA is written bottom row first";
    EXPECT_EQ(image(1).pixel(0, 1), qRgb(15, 16, 17)) << "rows without gaps";
    EXPECT_EQ(image(2).pixel(1, 3), qRgb(21, 22, 23));
}

TEST(MetaData, BecomesTextsInTheOrderOfNames)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    cadex::ModelData_PropertyTable table{cadex::initialized()};
    table.Add("place", cadex::ModelData_Point(1, 2, 3));
    table.Add("extent", cadex::ModelData_Box());
    EXPECT_TRUE(Imported(table).empty());
    std::vector<std::string> expected;
    const auto add = [&](const char* text, auto... values) { // names of two digits keep the order
        ((table.Add(std::to_string(10 + table.Size()).c_str(), values), expected.emplace_back(text)), ...);
    };
    add("1", cadex::I64{4294967297}, cadex::I32{1}, 1.99f);
    add("0", -0.5f, 0.999, -0.0);
    add("-2147483648", cadex::I64{1} << 31, 1e10f, Nan, -2147483648.9, 2147483648.0, infinity, -infinity);
    add("2147483647", 2147483647.9);
    using Time = cadex::ModelData_PropertyTable::TimeType;
    add("1970-01-01T00:00:00Z", Time(0));
    add("2021-03-04T05:06:07Z", Time(1614834367));
    add("", Time(std::numeric_limits<time_t>::max()), cadex::Base_UTF16String());
    for (const char* value : {"first", "\xF0\x9F\x94\xA9"}) {
        table.Add("\xE6\x9D\x90", cadex::Base_UTF16String(value));
        table.Add("", cadex::Base_UTF16String(value));
    }
    expected.insert(expected.begin(), "\xF0\x9F\x94\xA9"); // no name
    expected.emplace_back("\xF0\x9F\x94\xA9");
    EXPECT_EQ(Imported(table), expected);
    CZemtarMetaDataVisitor visitor;
    EXPECT_TRUE(visitor.GetValue("new").IsEmpty());
    EXPECT_EQ(visitor.GetKeys().size(), 1u) << "an unknown key is inserted";
}

TEST(SolidHints, OfTheExactShape)
{
    gp_Trsf moved;
    moved.SetTranslation(gp_Vec(100.0, 0.0, 0.0));
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(10.0, 10.0, 10.0).Shape();
    for (const TopoDS_Shape& shape : {box, box.Located(TopLoc_Location(moved))}) {
        const bool placed = !shape.Location().IsIdentity();
        cadex::ModelData_Part part("part");
        part.AddRepresentation(cadex::internal::MakeHandle<cadex::ModelData_BRepRepresentation>(
            new cadex::occt::OcctBRep(shape)));
        const auto document = ImportModel({part, MakePart("mesh", {MakeGrid(1)})});
        EXPECT_EQ(document->RootNodes()[1]->SolidHint(), nullptr) << "no exact shape";
        const CZemtarSceneNode& node = *document->RootNodes()[0];
        ASSERT_TRUE(node.SolidHint());
        const CZemtarSolidAttributes& attributes = node.SolidHint()->Attributes();
        EXPECT_NEAR(attributes.Volume(), 1e-6, 1e-15);
        EXPECT_EQ(attributes.OriginalVolume(), attributes.Volume());
        EXPECT_NEAR(attributes.CenterOfMass().X(), placed ? 0.105 : 0.005, 1e-12) << "metres";
        EXPECT_THAT(node.SolidHint()->ChildIDs(), ElementsAre(node.ChildNodes().at(0)->ID()));
        const CZemtarMatrix& inertia = node.SolidHint()->InertiaMatrix();
        EXPECT_EQ(inertia.IsIdentity(), !placed) << "known for placed shapes alone";
        EXPECT_NEAR(inertia.M(1, 1), placed ? 1e5 / 6 * 1e-15 : 1.0, 1e-22);
        EXPECT_EQ(inertia.M(3, 3), placed ? 0.0 : 1.0);
    }
}
