// The IFC4 writer: what comes back, and whether every entity is one that the schema allows.
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include <cadex/IFC_Writer.hxx>
#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/ModelData_PropertyTable.hxx>

#include "sdk/ifc/IfcFile.h"
#include "sdk/ifc/IfcGuid.h"
#include "tests/sdk/ifc/ReadBack.h"

namespace ifctest {
namespace {

using namespace cadex;
using std::string;

/// A box from the origin, 10 by 20 by 30, with one triangle that has no area and one that points nowhere.
ModelData_Part Box(const char* name, const ModelData_Appearance& look = {})
{
    std::vector<ModelData_Point> points;
    points.reserve(9);
    for (int i = 0; i < 8; ++i) {
        points.emplace_back(i & 1 ? 10 : 0, i & 2 ? 20 : 0, i & 4 ? 30 : 0);
    }
    points.emplace_back(std::numeric_limits<double>::quiet_NaN(), 0, 0);
    const std::vector<int> indices{0, 2, 3, 0, 3, 1, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4, 2, 6, 7,
                                   2, 7, 3, 0, 4, 6, 0, 6, 2, 1, 3, 7, 1, 7, 5, 0, 0, 1, 0, 1, 8};
    ModelData_IndexedTriangleSet mesh{initialized()};
    mesh.AddCoordinates(points.data(), points.size(), indices.data(), indices.size());
    if (!look.IsNull()) {
        mesh.SetAppearance(look);
    }
    ModelData_Part part(name);
    part.AddRepresentation(ModelData_PolyRepresentation(mesh));
    return part;
}

ModelData_Transformation At(double x, double y, double z, double scale = 1)
{
    ModelData_Transformation t;
    t.SetTranslationPart(x, y, z);
    t.SetScaleFactor(scale);
    return t;
}

string Written(const ModelData_Model& model, Base_LengthUnit unit = Base_LU_Millimeters)
{
    const auto file = std::filesystem::temp_directory_path() / "zemtar_ifc_writer_test.ifc";
    IFC_Writer writer;
    writer.Parameters().LengthUnit() = unit;
    const bool done = writer.Transfer(model) && writer.WriteFile(Base_UTF16String(file.string().c_str()));
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    std::filesystem::remove(file);
    return done ? text.str() : string();
}

struct Scene
{
    Scene()
        : red(ModelData_Color(1.F, 0.F, 0.25F, 0.5F)),
          shared(Box("Schraube \u00fc\u4e2d", red)),
          root("engine")
    {
        ModelData_PropertyTable table{initialized()};
        table.Add("Material", Base_UTF16String("Stahl 'x' \\ \u00fc"));
        table.Add("Material", Base_UTF16String("twice"));
        table.Add("Mass", 2.5);
        table.Add("Count", I32(-3));
        table.Add("Big", I64(1) << 40);
        shared.AddProperties(table);
        ModelData_Assembly sub("sub");
        sub.AddInstance(ModelData_Instance(shared, At(100, 0, 0), "first"));
        sub.AddInstance(ModelData_Instance(shared, At(200, 0, 0), "second"));
        ModelData_Part single = Box("single");
        ModelData_PropertyTable own{initialized()};
        own.Add("GlobalId", Base_UTF16String("1JRfqJ_L_Ss0FdkIIEdOB4"));
        own.Add("IfcType", Base_UTF16String("IfcDoor"));
        single.AddProperties(own);
        ModelData_PolyLineSet lines{initialized()};
        const ModelData_Point a[] = {{0, 0, 0}, {5, 0, 0}};
        const ModelData_Point b[] = {{5, 0, 0}, {5, 5, 0}};
        lines.AddPolyLine(a, 2);
        lines.AddPolyLine(b, 2);
        ModelData_Part wire("wire");
        wire.AddRepresentation(ModelData_PolyRepresentation(lines));
        root.AddInstance(ModelData_Instance(sub, At(0, 0, 1000), "sub"));
        root.AddInstance(ModelData_Instance(sub, At(0, 0, 2000), "sub again"));
        root.AddInstance(ModelData_Instance(single, "single"));
        root.AddInstance(ModelData_Instance(wire, "wire"));
        // shared under a scale, and under a mirror, which no mapped item can hold
        root.AddInstance(ModelData_Instance(shared, At(0, 0, 0, 2), "larger"));
        ModelData_Transformation mirror;
        mirror.SetRotationPart(-1, 0, 0, 0, 1, 0, 0, 0, 1);
        root.AddInstance(ModelData_Instance(shared, mirror, "mirrored"));
        model.AddRoot(root);
    }
    ModelData_Appearance red;
    ModelData_Part shared;
    ModelData_Assembly root;
    ModelData_Model model;
};

TEST(IfcWriter, EverythingComesBack)
{
    const Scene scene;
    const ReadBack model(Written(scene.model));
    ASSERT_TRUE(model.transferred);
    const auto parts = model.Parts();
    ASSERT_EQ(parts.size(), 8U);
    std::map<string, const Node*> byPath;
    for (const Node* part : parts) {
        byPath[part->path] = part;
    }
    const string name = "Schraube \u00fc\u4e2d";
    const string top = "engine/engine/engine/";
    const Node* first = byPath.at(top + "sub/sub/first/" + name);
    const Node* second = byPath.at(top + "sub again/sub again/second/" + name);
    const Node* larger = byPath.at(top + "larger/" + name);
    EXPECT_EQ(first->part, second->part);
    EXPECT_EQ(first->part, larger->part);
    EXPECT_EQ(first->triangles, 12);
    EXPECT_NEAR(first->enclosed, 6000, 1e-9);
    EXPECT_NEAR(second->low[0], 200, 1e-9);
    EXPECT_NEAR(second->low[2], 2000, 1e-9);
    EXPECT_NEAR(larger->enclosed, 48000, 1e-8);
    EXPECT_EQ(first->colour, (std::array<float, 4>{1, 0, 0.25F, 0.5F}));
    EXPECT_EQ(first->properties.at("Material"), "twice"); // the last of a name wins, here as in a table
    EXPECT_EQ(first->properties.at("Mass"), "2.5");
    EXPECT_EQ(first->properties.at("Count"), "-3");
    EXPECT_EQ(first->properties.at("Big"), "1099511627776");
    const Node* mirrored = model.Named("mirrored", 'P');
    ASSERT_NE(mirrored, nullptr);
    EXPECT_NEAR(mirrored->enclosed, 6000, 1e-9);
    EXPECT_NEAR(mirrored->low[0], -10, 1e-9);
    EXPECT_EQ(model.Named("wire", 'P')->polylines, 1); // two segments that meet
    const Node* single = model.Named("single", 'P');
    EXPECT_EQ(single->properties.at("GlobalId"), "1JRfqJ_L_Ss0FdkIIEdOB4");
    EXPECT_EQ(single->properties.at("IfcType"), "IfcDoor");
}

TEST(IfcWriter, EveryUnitHoldsTheSameMillimetres)
{
    const Scene scene;
    const ReadBack expected(Written(scene.model));
    for (int unit = Base_LU_Millimeters; unit <= Base_LU_Miles; ++unit) {
        const ReadBack model(Written(scene.model, static_cast<Base_LengthUnit>(unit)));
        ASSERT_EQ(model.nodes.size(), expected.nodes.size()) << unit;
        for (std::size_t i = 0; i < model.nodes.size(); ++i) {
            EXPECT_NEAR(model.nodes[i].enclosed, expected.nodes[i].enclosed, 1e-6) << unit;
            for (std::size_t k = 0; k < 3 && model.nodes[i].triangles > 0; ++k) {
                EXPECT_NEAR(model.nodes[i].low[k], expected.nodes[i].low[k], 2e-9 * 2030) << unit;
                EXPECT_NEAR(model.nodes[i].high[k], expected.nodes[i].high[k], 2e-9 * 2030) << unit;
            }
        }
    }
}

/// What the schema says of an entity's attributes, a letter each: g GlobalId, s string, r real, i integer, e
/// enumeration, b boolean, l list, # reference, t typed value, * derived; upper case: may be unset. NOTE:
/// IFC4 ADD2 TC1, the EXPRESS listing.
const std::map<string, string>& Schema()
{
    static const std::map<string, string> entities = {
        {"IFCCARTESIANPOINT", "l"},
        {"IFCDIRECTION", "l"},
        {"IFCAXIS2PLACEMENT3D", "#@@"},
        {"IFCLOCALPLACEMENT", "@#"},
        {"IFCGEOMETRICREPRESENTATIONCONTEXT", "SsiR#@"},
        {"IFCGEOMETRICREPRESENTATIONSUBCONTEXT", "ss****#ReS"},
        {"IFCSIUNIT", "*eEe"},
        {"IFCDIMENSIONALEXPONENTS", "iiiiiii"},
        {"IFCMEASUREWITHUNIT", "t#"},
        {"IFCCONVERSIONBASEDUNIT", "#es#"},
        {"IFCUNITASSIGNMENT", "l"},
        {"IFCPROJECT", "g@sSSSSl#"},
        {"IFCBUILDING", "g@sSS@@SeRR@"},
        {"IFCELEMENTASSEMBLY", "g@sSS@@See"},
        {"IFCBUILDINGELEMENTPROXY", "g@sSS@@Se"},
        {"IFCBUILDINGELEMENTPROXYTYPE", "g@sSSLLSSe"},
        {"IFCRELAGGREGATES", "g@SS#l"},
        {"IFCRELCONTAINEDINSPATIALSTRUCTURE", "g@SSl#"},
        {"IFCRELDEFINESBYTYPE", "g@SSl#"},
        {"IFCRELDEFINESBYPROPERTIES", "g@SSl#"},
        {"IFCPROPERTYSET", "g@SSl"},
        {"IFCPROPERTYSINGLEVALUE", "sST@"},
        {"IFCCARTESIANPOINTLIST3D", "l"},
        {"IFCTRIANGULATEDFACESET", "#LBlL"},
        {"IFCPOLYLINE", "l"},
        {"IFCGEOMETRICCURVESET", "l"},
        {"IFCSHAPEREPRESENTATION", "#SSl"},
        {"IFCPRODUCTDEFINITIONSHAPE", "SSl"},
        {"IFCREPRESENTATIONMAP", "##"},
        {"IFCMAPPEDITEM", "##"},
        {"IFCCARTESIANTRANSFORMATIONOPERATOR3D", "@@#R@"},
        {"IFCCOLOURRGB", "Srrr"},
        {"IFCSURFACESTYLERENDERING", "#RTTTT@Te"},
        {"IFCSURFACESTYLE", "Sel"},
        {"IFCCURVESTYLE", "S@T@B"},
        {"IFCSTYLEDITEM", "@lS"},
    };
    return entities;
}

bool Fits(char kind, const string& value)
{
    if (value == "$") {
        return kind == '@' || (kind >= 'A' && kind <= 'Z');
    }
    const bool real =
        value.find('.') != string::npos && value.find_first_not_of("0123456789+-.E") == string::npos;
    switch (kind) {
    case 'g':
        return value.size() == 24 && ifc::IsGuid(value.substr(1, 22));
    case 's':
    case 'S':
        return value.front() == '\'' && value.back() == '\'';
    case 'r':
    case 'R':
        return real;
    case 'i':
        return value.find_first_not_of("0123456789-") == string::npos;
    case 'e':
    case 'E':
    case 'b':
    case 'B':
        return value.size() > 2 && value.front() == '.' && value.back() == '.';
    case 'l':
    case 'L':
        return value.front() == '(' && value != "()";
    case '#':
    case '@':
        return value.front() == '#';
    case 't':
    case 'T':
        return value.rfind("IFC", 0) == 0 && value.back() == ')';
    default:
        return value == "*";
    }
}

TEST(IfcWriter, EveryEntityFitsTheSchema)
{
    const Scene scene;
    for (Base_LengthUnit unit : {Base_LU_Millimeters, Base_LU_Inches}) {
        const string text = Written(scene.model, unit);
        for (std::size_t i = 0; i < text.size(); ++i) {
            ASSERT_TRUE(text[i] == '\n' || (text[i] >= 32 && text[i] < 127)) << "byte " << i;
        }
        ifc::IfcFile file;
        ASSERT_TRUE(file.Load(text));
        EXPECT_EQ(file.Schema(), "IFC4");
        std::set<string> guids;
        std::set<string> seen;
        file.ForEach([&](const ifc::IfcFile::Record& record) {
            const ifc::Entity entity = file.At(record);
            const string name(entity.TypeName());
            const auto known = Schema().find(name);
            ASSERT_NE(known, Schema().end()) << name;
            ASSERT_EQ(entity.Size(), known->second.size()) << name;
            seen.insert(name);
            for (std::size_t i = 0; i < entity.Size(); ++i) {
                EXPECT_TRUE(Fits(known->second[i], string(entity.Raw(i))))
                    << name << ' ' << i << ' ' << entity.Raw(i);
                for (ifc::Id id : entity.Refs(i)) {
                    EXPECT_TRUE(static_cast<bool>(file.Get(id))) << name << " refers to nothing";
                }
                if (known->second[i] == 'g') {
                    EXPECT_TRUE(guids.insert(string(entity.Raw(i))).second)
                        << "a GlobalId twice: " << entity.Raw(i);
                }
            }
        });
        EXPECT_GE(seen.size(), Schema().size() - 4); // the converted unit and what only some placements need
    }
}

TEST(IfcWriter, EqualModelsGiveEqualFiles)
{
    const auto body = [](const string& text) { return text.substr(text.find("DATA;")); };
    EXPECT_EQ(body(Written(Scene().model)), body(Written(Scene().model)));
}

TEST(IfcWriter, ModelsThatCannotBeWritten)
{
    EXPECT_TRUE(ReadBack(Written(ModelData_Model())).transferred); // empty, but a file
    Scene scene;
    scene.root.AddInstance(ModelData_Instance(scene.shared, At(0, NAN, 0), "nowhere"));
    EXPECT_EQ(Written(scene.model), "");

    // an existing file survives a failed export
    const auto folder = std::filesystem::temp_directory_path() / "zemtar_ifc_writer_test";
    std::filesystem::create_directories(folder);
    IFC_Writer writer;
    ASSERT_TRUE(writer.Transfer(Scene().model));
    EXPECT_FALSE(writer.WriteFile(Base_UTF16String(folder.string().c_str())));
    EXPECT_FALSE(writer.WriteFile(Base_UTF16String((folder / "missing" / "x.ifc").string().c_str())));
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    std::filesystem::remove_all(folder);
}

TEST(IfcWriter, SmallSetsComeBackWhole)
{
    // a fan of triangles of a hundred thousandth of a millimetre
    std::vector<ModelData_Point> points{{0, 0, 0}};
    std::vector<int> indices;
    for (int i = 0; i < 50; ++i) {
        points.emplace_back(1e-5 * std::cos(0.1 * i), 1e-5 * std::sin(0.1 * i), 1e-6 * i);
        if (i > 0) {
            indices.insert(indices.end(), {0, i, i + 1});
        }
    }
    ModelData_IndexedTriangleSet mesh{initialized()};
    mesh.AddCoordinates(points.data(), points.size(), indices.data(), indices.size());
    ModelData_Part part("dust");
    part.AddRepresentation(ModelData_PolyRepresentation(mesh));
    ModelData_Model model;
    model.AddRoot(part);
    const ReadBack back(Written(model));
    ASSERT_EQ(back.Parts().size(), 1U);
    EXPECT_EQ(back.Parts().front()->triangles, 49);
}

TEST(IfcWriter, InstancesCostLittle)
{
    ModelData_Part screw = Box("screw");
    ModelData_Assembly root("root");
    std::size_t sizes[2] = {0, 0};
    for (int i = 0; i < 2; ++i) {
        for (int k = 0; k < 1000; ++k) {
            ModelData_Transformation turned = At(k * 12.34567, i, 0.1);
            turned.SetRotationPart(0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6);
            root.AddInstance(ModelData_Instance(screw, turned, "screw"));
        }
        ModelData_Model model;
        model.AddRoot(root);
        sizes[i] = Written(model).size();
    }
    EXPECT_LT(sizes[1] - sizes[0], 1500U * 1000U);
}

} // namespace
} // namespace ifctest
