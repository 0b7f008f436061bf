// Files that are cut off, scrambled or built to hurt.
#include <chrono>
#include <clocale>
#include <fstream>
#include <functional>
#include <locale>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include <cadex/IFC_Reader.hxx>
#include <cadex/ModelData_Model.hxx>

#include "tests/sdk/ifc/IfcText.h"
#include "tests/sdk/ifc/ReadBack.h"

namespace ifctest {
namespace {

using std::string;

string Wall()
{
    IfcText f;
    f.Product("IFCWALL", "wall", f.Shape({f.Box(1000.5, 200.25, 2500.125)}));
    return f.Text();
}

TEST(IfcDamage, FilesThatAreNoneAreRefused)
{
    const string good = Wall();
    const auto without = [&](const string& what, const string& instead = "") {
        string text = good;
        return text.replace(text.find(what), what.size(), instead);
    };
    const std::vector<std::pair<const char*, string>> files = {
        {"empty", ""},
        {"some text", "hello"},
        {"not IFC", without("'IFC4'", "'CONFIG_CONTROL_DESIGN'")},
        {"no schema", without("FILE_SCHEMA(('IFC4'));\n")},
        {"cut off in the data", good.substr(0, good.size() * 2 / 3)},
        {"cut off between instances", good.substr(0, good.rfind(";\n#") + 2)},
        {"no data", without("DATA;\n")},
        {"a string that does not end", without("'wall'", "'wall")},
        {"a comment that does not end", without(";\n#5=", ";\n/* #5=")},
    };
    for (const auto& [damage, text] : files) {
        EXPECT_FALSE(ReadBack(text).read) << damage;
    }
    cadex::IFC_Reader reader;
    EXPECT_FALSE(reader.ReadFile(cadex::Base_UTF16String("/no/such/file.ifc")));
    cadex::ModelData_Model model;
    EXPECT_FALSE(reader.Transfer(model));
}

TEST(IfcDamage, CommentsBlanksAndOddOrderAreNoDamage)
{
    string text = Wall();
    // the first instance goes last, with a comment, a line break and a negative exponent
    const std::size_t first = text.find("#1=");
    const std::size_t end = text.find('\n', first) + 1;
    text.erase(first, end - first);
    text.insert(text.find("ENDSEC;\nEND-ISO"),
                "/* 'odd */ #1 =\r\n IFCCARTESIANPOINT ( ( 0.E-3 ,\t0. , 0 ) ) ;\r\n");
    const ReadBack model(text);
    ASSERT_EQ(model.Parts().size(), 1U);
    EXPECT_NEAR(model.Parts().front()->high[2], 2500.125, 1e-9);
}

TEST(IfcDamage, AFileWithoutAnyBodyLeftFails)
{
    const auto refused = [](const std::function<string(IfcText&)>& item) {
        IfcText f;
        f.Product("IFCWALL", "wall", f.Shape({item(f)}));
        const ReadBack model(f.Text());
        EXPECT_TRUE(model.read);
        EXPECT_FALSE(model.transferred);
        EXPECT_EQ(model.reports.size(), 2U); // the wall, and the file
        return model.reports.empty() ? "" : model.reports.back();
    };
    const string reason = "nothing in the file can be shown";
    EXPECT_EQ(refused([](IfcText& f) { return f.Extrude("#7777", 10); }), reason);
    EXPECT_EQ(refused([](IfcText&) { return "#7777"; }), reason);
    EXPECT_EQ(refused([](IfcText& f) { return f.Add("IFCMAPPEDITEM(#7777,#7778)"); }), reason);
    EXPECT_EQ(refused([](IfcText& f) { return f.Add("IFCSHELLBASEDSURFACEMODEL((#7777))"); }), reason);

    // spatial structure alone is a sound file
    IfcText structure;
    const ReadBack model(structure.Text());
    EXPECT_TRUE(model.transferred);
    EXPECT_GT(model.nodes.size(), 0U);
    EXPECT_TRUE(model.reports.empty());
}

TEST(IfcDamage, DanglingReferencesLoseOnlyWhatTheyNamed)
{
    IfcText f;
    f.Product("IFCWALL", "gone", f.Shape({"#7777", f.Box(1, 1, 1)}));
    f.Product("IFCWALL", "flat", f.Shape({f.Extrude(f.Rectangle(10, 0), 10), f.Extrude("#7777", 10)}));
    f.Product("IFCWALL", "number", f.Shape({f.Extrude(f.Rectangle(10, 10), 10, "$")}), "#7777");
    const ReadBack model(f.Text());
    ASSERT_EQ(model.Parts().size(), 3U);
    EXPECT_GT(model.Named("gone", 'P')->triangles, 0);
    EXPECT_EQ(model.Named("flat", 'P')->triangles, 0);
    EXPECT_GT(model.Named("number", 'P')->triangles, 0);
}

TEST(IfcDamage, CirclesEnd)
{
    IfcText f;
    // placements that stand in each other
    string text = f.Text();
    const string wall = f.Product("IFCWALL", "wall", f.Shape({f.Box(1, 1, 1)}), "#9001");
    // objects that hold each other, one of them reached from the building
    const string other = f.Product("IFCELEMENTASSEMBLY", "other", "$");
    f.Add("IFCRELAGGREGATES(" + f.Guid() + ",$,$,$," + other + ",(" + wall + "," + f.building + "))");
    f.Add("IFCRELAGGREGATES(" + f.Guid() + ",$,$,$," + wall + ",(" + other + "))");
    // and two that only hold each other
    const auto island = [&](const string& name) {
        return f.Add("IFCWALL(" + f.Guid() + ",$,'" + name + "',$,$," + f.placement + "," +
                     f.Definition({f.Shape({f.Box(1, 1, 1)})}) + ",$,$)");
    };
    const string a = island("a");
    const string b = island("b");
    f.Add("IFCRELAGGREGATES(" + f.Guid() + ",$,$,$," + a + ",(" + b + "))");
    f.Add("IFCRELAGGREGATES(" + f.Guid() + ",$,$,$," + b + ",(" + a + "))");
    // a map inside itself, an operand and a curve that are their own parts, a unit made of itself
    const string target = f.Add("IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$," + f.origin + ",1.,$)");
    f.Product("IFCWALL", "map", f.Shape({"#9011"}));
    f.Product("IFCWALL", "operand", f.Shape({"#9020"}));
    f.Product("IFCWALL", "curve", f.Shape({f.Extrude("#9032", 10)}));
    f.Product("IFCWALL", "profile", f.Shape({f.Extrude("#9040", 10)}));
    text = f.Text();
    text.insert(text.find("DATA;\n") + 6,
                "#9001=IFCLOCALPLACEMENT(#9002," + f.axes + ");\n#9002=IFCLOCALPLACEMENT(#9001," + f.axes +
                    ");\n#9010=IFCREPRESENTATIONMAP(" + f.axes + ",#9012);\n#9011=IFCMAPPEDITEM(#9010," +
                    target + ");\n#9012=IFCSHAPEREPRESENTATION(" + f.context +
                    ",'Body','MappedRepresentation',(#9011,#9011));\n"
                    "#9020=IFCBOOLEANRESULT(.DIFFERENCE.,#9020,#9020);\n"
                    "#9030=IFCCOMPOSITECURVE((#9031,#9031),.F.);\n"
                    "#9031=IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.,#9030);\n"
                    "#9032=IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$,#9030);\n"
                    "#9040=IFCCOMPOSITEPROFILEDEF(.AREA.,$,(#9040,#9040),$);\n");
    const ReadBack model(text);
    ASSERT_TRUE(model.transferred);
    for (const char* name : {"wall", "a", "b"}) {
        ASSERT_NE(model.Named(name, 'I'), nullptr) << name;
    }
}

/// Sixty levels of two: unfolded, more steps than any machine makes.
TEST(IfcDamage, ReferencesThatFanOutEnd)
{
    const string op = "#9000=IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$,#1,1.,$);\n";
    string maps = op;
    string curves;
    string operands;
    string profiles;
    for (int i = 0; i < 60; ++i) {
        const auto id = [i](int base, int level) { return "#" + std::to_string(base + i + level); };
        maps += id(10000, 0) + "=IFCREPRESENTATIONMAP(#2," + id(11000, 0) + ");\n" + id(11000, 0) +
                "=IFCSHAPEREPRESENTATION(#3,'Body','MappedRepresentation',(" + id(12000, 0) + "," +
                id(12000, 0) + "));\n" + id(12000, 0) + "=IFCMAPPEDITEM(" + id(10000, 1) + ",#9000);\n";
        curves += id(13000, 0) + "=IFCCOMPOSITECURVE((" + id(14000, 0) + "," + id(14000, 0) + "),.F.);\n" +
                  id(14000, 0) + "=IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.," + id(13000, 1) + ");\n";
        operands += id(15000, 0) + "=IFCBOOLEANRESULT(.UNION.," + id(15000, 1) + "," + id(15000, 1) + ");\n";
        profiles += id(16000, 0) + "=IFCCOMPOSITEPROFILEDEF(.AREA.,$,(" + id(16000, 1) + "," + id(16000, 1) +
                    "),$);\n";
    }
    operands += "#15060=IFCBLOCK(#2,1.,1.,1.);\n";
    profiles += "#16060=IFCCIRCLEPROFILEDEF(.AREA.,$,$,1.);\n";
    curves += "#13060=IFCPOLYLINE((#1,#1));\n#17000=IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$,#13000);\n";
    maps +=
        "#10060=IFCREPRESENTATIONMAP(#2,#11060);\n#11060=IFCSHAPEREPRESENTATION(#3,'Body','CSG',(#15060));\n";
    IfcText f;
    f.Product("IFCWALL", "maps", f.Shape({f.Add("IFCMAPPEDITEM(#10000,#9000)")}));
    f.Product("IFCWALL", "curves", f.Shape({f.Extrude("#17000", 10)}));
    f.Product("IFCWALL", "operands", f.Shape({"#15000"}));
    f.Product("IFCWALL", "profiles", f.Shape({f.Extrude("#16000", 10)}));
    string text = f.Text();
    text.insert(text.find("DATA;\n") + 6, maps + curves + operands + profiles);
    EXPECT_TRUE(ReadBack(text).read);
}

TEST(IfcDamage, DeepNestingNeedsNoStack)
{
    IfcText f;
    string parent = f.building;
    for (int i = 0; i < 20000; ++i) {
        const string child =
            f.Add(IfcText::Join({"IFCELEMENTASSEMBLY(", f.Guid(), ",$,'x',$,$,", f.placement, ",$,$,$,$)"}));
        f.Add(IfcText::Join({"IFCRELAGGREGATES(", f.Guid(), ",$,$,$,", parent, ",(", child, "))"}));
        parent = child;
    }
    string operand = f.Box(10, 10, 10);
    for (int i = 0; i < 5000; ++i) {
        operand = f.Add(IfcText::Join({"IFCBOOLEANRESULT(.DIFFERENCE.,", operand, ",", f.origin, ")"}));
    }
    f.Product("IFCWALL", "operand", f.Shape({operand, f.Box(1, 1, 1)}));
    const ReadBack model(f.Text());
    EXPECT_EQ(model.nodes.size(), 2 * 20000U + 3 + 2);
}

/// Seeded scrambling of the example: whatever comes out, the process goes on and prints nothing.
TEST(IfcDamage, ScrambledFilesNeitherEndTheProcessNorPrint)
{
    std::ifstream stream(ZEMTAR_SOURCE_DIR "/examples/house.ifc", std::ios::binary);
    std::ostringstream whole;
    whole << stream.rdbuf();
    const string good = whole.str();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    int read = 0;
    for (unsigned seed = 0; seed < 24; ++seed) {
        std::mt19937 random(seed);
        string text = good;
        for (int i = 0; i < 4; ++i) {
            // a digit among the arguments of some instance: another number, another reference
            std::size_t at = random() % text.size();
            at = text.find_first_of("0123456789", text.find('(', at));
            if (at != string::npos) {
                text[at] = static_cast<char>('0' + random() % 10);
            }
        }
        if (seed % 3 == 0) {
            text.erase(random() % text.size(), 1 + random() % 40);
        }
        read += ReadBack(text).read ? 1 : 0;
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_GT(read, 10);
}

TEST(IfcDamage, TheLocaleIsNotAsked)
{
    struct CommaNumbers : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const string before = std::setlocale(LC_ALL, nullptr);
    const std::locale global = std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
    for (const char* name : {"de_DE.UTF-8", "C"}) {
        std::setlocale(LC_ALL,
                       name); // where the machine has no German locale, the C++ one above still commas
        IfcText f;
        const string text = Wall();
        const ReadBack model(text);
        ASSERT_EQ(model.Parts().size(), 1U) << name;
        EXPECT_NEAR(model.Parts().front()->high[0], 1000.5 / 2, 1e-9);
        EXPECT_NEAR(model.Parts().front()->high[2], 2500.125, 1e-9);
    }
    std::setlocale(LC_ALL, before.c_str());
    std::locale::global(global);
}

} // namespace
} // namespace ifctest
