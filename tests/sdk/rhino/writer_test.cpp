// Files that we wrote, read back: the tree, what is shared, looks, properties, exact points.
#include "tests/sdk/TreeText.h"
#include "tests/sdk/rhino/Files3dm.h"
#include "tests/support/ModelBuilder.h"

#include <gtest/gtest.h>

#include "sdk/model/Elements.h"
#include "sdk/model/TriangleSets.h"

namespace rhinotest {
namespace {

using cadex::test::TreeText;

using namespace cadex;
using Zemtar::Test::MakeAssembly;
using Zemtar::Test::MakeGrid;
using Zemtar::Test::MakePart;
using Zemtar::Test::Normals;

ModelData_Appearance Glass()
{
    ModelData_Appearance look(
        ModelData_Material(ModelData_Color(51, 51, 51), ModelData_Color(204, 51, 102, 127),
                           ModelData_Color(255, 255, 255), ModelData_Color(0, 0, 0), 64));
    ModelData_TextureSet textures{initialized()};
    textures.Add(ModelData_FileTexture("bilder/holz 木.png"));
    look.SetTextureSet(textures);
    return look;
}

ModelData_PropertyTable Table(const char* name, const char* value)
{
    ModelData_PropertyTable table{initialized()};
    table.Add(name, Base_UTF16String(value));
    return table;
}

ModelData_Transformation Shift(double x, double scale = 1, bool mirror = false)
{
    ModelData_Transformation result;
    result.SetRotationPart(0, -1, 0, mirror ? -1 : 1, 0, 0, 0, 0, 1);
    result.SetTranslationPart(x, 2, 3);
    result.SetScaleFactor(scale);
    return result;
}

ModelData_PolyLineSet Lines(std::initializer_list<std::vector<ModelData_Point>> lines)
{
    ModelData_PolyLineSet set{initialized()};
    for (const auto& line : lines) {
        set.AddPolyLine(line.data(), line.size());
    }
    return set;
}

/// A nested assembly, a part in three places of which one is mirrored, one of two sets, lines, points.
ModelData_Model Machine()
{
    ModelData_Part bolt = MakePart("bolt", {MakeGrid(2, Normals::Smooth, true)});
    bolt.SetAppearance(Glass());
    bolt.AddProperties(Table("Norm", "ISO 4014"));
    ModelData_IndexedTriangleSet red = MakeGrid(1);
    red.SetAppearance(ModelData_Color(1.F, 0.F, 0.F));
    ModelData_IndexedTriangleSet blue = MakeGrid(3);
    blue.SetAppearance(ModelData_Color(0.F, 0.F, 1.F));
    const ModelData_Part two = MakePart("two", {red, blue});
    ModelData_Part wire =
        MakePart("wire", {Lines({{{0, 0, 0}, {1, 0, 0}}, {{1, 0, 0}, {1, 1, 0}}, {{5, 5, 5}, {6, 6, 6}}})});
    wire.SetAppearance(ModelData_Color(0.F, 1.F, 0.F));
    ModelData_Part plain = MakePart("plain", {MakeGrid(1, Normals::Flat)});
    plain.SetAppearance(ModelData_Color(1.F, 1.F, 0.F));
    plain.AddProperties(Table("leer", ""));
    ModelData_Instance first(bolt, Shift(10), "first");
    first.AddProperties(Table("Lage", "links"));
    // "two" holds a part of its own name, and is one of two of that name
    ModelData_Assembly inner = MakeAssembly("two", {ModelData_Instance(two, "two"), first});
    inner.AddProperties(Table("Stufe", "2"));
    ModelData_Assembly outer =
        MakeAssembly("Maschine 车", {ModelData_Instance(inner, Shift(100), "Gruppe"),
                                     ModelData_Instance(bolt, Shift(20, 2), "second"),
                                     ModelData_Instance(bolt, Shift(30, 1, true), "mirrored"),
                                     ModelData_Instance(wire, "wire"), ModelData_Instance(plain, "plain")});
    outer.AddProperties(Table("Autor", "wir"));
    ModelData_Model model("Maschine");
    model.AddRoot(outer);
    return model;
}

constexpr const char* MachineText =
    "assembly Maschine 车 [Autor=wir]\n"
    "  instance Gruppe (100 2 3)\n"
    "    assembly two [Stufe=2]\n"
    "      instance two (0 0 0)\n"
    "        part two #ff0000: #ff0000 2 triangles, #0000ff 18 triangles\n"
    "      instance first [Lage=links] (10 2 3)\n"
    "        part bolt #cc3366 a0.498039 bilder/holz 木.png [Norm=ISO 4014]: 8 triangles n uv\n"
    "  instance second (40 4 6)\n"
    "    part bolt #cc3366 a0.498039 bilder/holz 木.png [Norm=ISO 4014]: 8 triangles n uv\n"
    "  instance mirrored (30 2 3)\n"
    "    part bolt #cc3366 a0.498039 bilder/holz 木.png [Norm=ISO 4014]: 8 triangles n uv\n"
    "  instance wire (0 0 0)\n"
    "    part wire #00ff00: #00ff00 3 points, #00ff00 2 points\n"
    "  instance plain\n"
    "    part plain #ffff00 [leer=]: 2 triangles n\n";

const ModelData_Instance& Child(const ModelData_Model& model, std::size_t index)
{
    const ModelData_SceneGraphElement& root = internal::RootsOf(model).front();
    return internal::ImplOf(static_cast<const ModelData_Assembly&>(root)).instances.at(index);
}

TEST(RhinoWriter, TreeLooksAndPropertiesComeBackInEveryUnit)
{
    for (const Base_LengthUnit unit : {Base_LU_Millimeters, Base_LU_Meters, Base_LU_Inches, Base_LU_Miles}) {
        const auto model = Read(Written(Machine(), unit));
        ASSERT_TRUE(model) << unit;
        EXPECT_EQ(TreeText(*model).text, MachineText) << unit;
    }
}

TEST(RhinoWriter, ScaledAndMirroredPlacesShareThePart)
{
    const auto model = Read(Written(Machine()));
    ASSERT_TRUE(model);
    EXPECT_EQ(Child(*model, 1).Reference(), Child(*model, 2).Reference());
    const ModelData_Transformation& mirrored = Child(*model, 2).Transformation();
    const ModelData_Transformation expected = Shift(30, 1, true);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            EXPECT_NEAR(mirrored.Data(row, column), expected.Data(row, column), 1e-12);
        }
    }
}

TEST(RhinoWriter, PointsNormalsAndCoordinatesAreThoseOfEachCorner)
{
    // one normal for each triangle, points shared: the file needs vertices of its own
    ModelData_IndexedTriangleSet before = MakeGrid(4, Normals::Flat, true);
    const_cast<internal::TriangleSetImpl&>(internal::ImplOf(before)).points[3] = {1. / 3, 2. / 3,
                                                                                  1e7 + 1. / 7};
    ModelData_Model model;
    model.AddRoot(MakeAssembly("root", {ModelData_Instance(MakePart("grid", {before}), "grid")}));
    const auto back = Read(Written(model, Base_LU_Feets));
    ASSERT_TRUE(back);
    const ModelData_Part part = static_cast<const ModelData_Part&>(
        static_cast<const ModelData_SceneGraphElement&>(Child(*back, 0).Reference()));
    const auto& after =
        static_cast<const ModelData_IndexedTriangleSet&>(part.PolyRepresentation(ModelData_RM_Poly).Get()[0]);
    ASSERT_EQ(after.NumberOfFaces(), before.NumberOfFaces());
    for (int face = 0; face < before.NumberOfFaces(); ++face) {
        for (int slot = 0; slot < 3; ++slot) {
            const ModelData_Point& a = before.Coordinate(face, slot);
            const ModelData_Point& b = after.Coordinate(face, slot);
            EXPECT_NEAR(a.X(), b.X(), 1e-12);
            EXPECT_NEAR(a.Z(), b.Z(), 1e-14 * (1 + std::abs(a.Z())) * 4);
            EXPECT_FLOAT_EQ(before.VertexNormal(face, slot).X(), after.VertexNormal(face, slot).X());
            EXPECT_FLOAT_EQ(static_cast<float>(before.UVCoordinate(face, slot).Y()),
                            static_cast<float>(after.UVCoordinate(face, slot).Y()));
        }
    }
}

TEST(RhinoWriter, OddModels)
{
    ModelData_Model empty("leer");
    const auto nothing = Read(Written(empty));
    ASSERT_TRUE(nothing);
    EXPECT_EQ(TreeText(*nothing).text, "assembly \n");

    const double nan = std::numeric_limits<double>::quiet_NaN();
    ModelData_IndexedTriangleSet broken = MakeGrid(1);
    const_cast<internal::TriangleSetImpl&>(internal::ImplOf(broken)).points[0] = {nan, 0, 0};
    ModelData_Model bare;
    bare.AddRoot(MakePart("loose", {broken}));
    bare.AddRoot(MakeAssembly("none", {}));
    bare.AddRoot(MakePart("", {Lines({{{1, 2, 3}}})}));
    const auto back = Read(Written(bare));
    ASSERT_TRUE(back);
    EXPECT_EQ(TreeText(*back).text, "assembly \n"
                                    "  instance loose\n"
                                    "    assembly loose\n"
                                    "      instance loose\n"
                                    "        part loose #cccccc: 1 triangles\n"
                                    "  instance Default\n"
                                    "    assembly Default\n"
                                    "      instance Point\n"
                                    "        part Point #000000: 1 points\n");

    ModelData_Assembly circle("circle");
    circle.AddInstance(ModelData_Instance(circle, "again"));
    ModelData_Model endless;
    endless.AddRoot(circle);
    EXPECT_TRUE(Written(endless).empty());
    internal::ImplOf(circle).instances.clear(); // releases itself
}

TEST(RhinoWriter, TheSameModelGivesTheSameFile)
{
    EXPECT_EQ(Written(Machine()), Written(Machine()));
}

} // namespace
} // namespace rhinotest
