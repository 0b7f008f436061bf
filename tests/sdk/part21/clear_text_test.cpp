// What is odd in a file has one answer: the same cases as a STEP and as an IFC file, and the reader alone.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <cadex/IFC_Reader.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_SceneGraphElement.hxx>
#include <cadex/STEP_Reader.hxx>
#include <cadex/internal/Formats.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/part21/ClearText.h"
#include "tests/sdk/ReadModels.h"
#include "tests/sdk/ScratchFolder.h"

namespace cadex::test {
namespace {

using internal::Reports;
using part21::ClearText;
using part21::Cursor;

/// A file with one thing of one triangle in it, whose name is given as a literal of clear text.
struct Content
{
    std::string name = "'thing'";
    std::string beforeStart = {};
    std::string beforeEnd = {}; ///< behind the records
    std::string end = "ENDSEC;\nEND-ISO-10303-21;\n";
    std::string beforeThing = {}; ///< behind the other records
};

std::string StepText(const Content& content)
{
    return content.beforeStart +
           "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n"
           "#1=APPLICATION_CONTEXT('');\n#2=PRODUCT_CONTEXT('',#1,'mechanical');\n"
           "#3=PRODUCT_DEFINITION_CONTEXT('',#1,'design');\n" +
           content.beforeThing + "#10=PRODUCT('p'," + content.name +
           ",'',(#2));\n#11=PRODUCT_DEFINITION_FORMATION('','',#10);\n"
           "#12=PRODUCT_DEFINITION('',$,#11,#3);\n"
           "#20=PRODUCT_DEFINITION_SHAPE('','',#12);\n#21=SHAPE_DEFINITION_REPRESENTATION(#20,#22);\n"
           "#22=TESSELLATED_SHAPE_REPRESENTATION('',(#23),#25);\n"
           "#23=TRIANGULATED_SURFACE_SET('',#24,3,(),(),((1,2,3)));\n"
           "#24=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n"
           "#25=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#26))"
           "REPRESENTATION_CONTEXT('',''));\n#26=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n" +
           content.beforeEnd + content.end;
}

std::string IfcText(const Content& content)
{
    return content.beforeStart + "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n" +
           content.beforeThing + "#10=IFCPROJECT('0123456789012345678901',$," + content.name +
           ",$,$,$,$,$,$);\n"
           "#20=IFCRELAGGREGATES('0123456789012345678902',$,$,$,#10,(#21));\n"
           "#21=IFCBUILDINGELEMENTPROXY('0123456789012345678903',$,$,$,$,$,#22,$,$);\n"
           "#22=IFCPRODUCTDEFINITIONSHAPE($,$,(#23));\n"
           "#23=IFCSHAPEREPRESENTATION(#24,'Body','Tessellation',(#27));\n"
           "#24=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5,#25,$);\n"
           "#25=IFCAXIS2PLACEMENT3D(#26,$,$);\n#26=IFCCARTESIANPOINT((0.,0.,0.));\n"
           "#27=IFCTRIANGULATEDFACESET(#28,$,.F.,((1,2,3)),$);\n"
           "#28=IFCCARTESIANPOINTLIST3D(((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n" +
           content.beforeEnd + content.end;
}

struct Outcome
{
    bool isRead = false;
    std::string name;
    bool isReported = false;
};

template <typename Reader>
Outcome Read(const std::string& text, const char* fileName)
{
    const ScratchFolder folder;
    const std::filesystem::path path = folder.Path() / fileName;
    WriteBytes(path, text);
    Reports::Clear();
    Reader reader;
    ModelData_Model model;
    Outcome result;
    result.isRead = reader.ReadFile(Base_UTF16String(path.string().c_str())) && reader.Transfer(model);
    if (result.isRead) {
        result.name = internal::RootsOf(model).front().Name().ToUTF8();
    }
    result.isReported = !Reports::Take().empty();
    return result;
}

std::vector<Outcome> ReadAsBoth(const Content& content)
{
    std::vector<Outcome> outcomes = {Read<STEP_Reader>(StepText(content), "thing.stp")};
    if (internal::CanRead(internal::Format::IFC)) {
        outcomes.push_back(Read<IFC_Reader>(IfcText(content), "thing.ifc"));
    }
    return outcomes;
}

TEST(ClearText, NamesAreTheSameInEveryFormat)
{
    const struct
    {
        std::string raw;
        std::string utf8;
    } Names[] = {
        {"plain", "plain"},
        {"it''s a \\\\", "it's a \\"},
        {"wrapped\r\n here\n", "wrapped here"},
        {"a\ttab", "a\ttab"},
        {"\\X\\FC\\S\\|", "üü"},
        {"\\X2\\04120430\n043B\\X0\\", "Вал"},
        {"\\X2\\D83DDE00\\X0\\\\X4\\0001F600\\X0\\", "😀😀"},
        {"\\PE\\\\S\\P\\PB\\\\S\\9", "аš"},
        {"raw \xC3\xBC", "raw ü"},
        {"latin \xFC", "latin ü"},
        {"over-long \xC0\xAF", "over-long À¯"},
        {"\\X2\\zz", "\\X2\\zz"},
        {"(a, #1; /* no comment */)", "(a, #1; /* no comment */)"},
    };
    for (const auto& name : Names) {
        for (const Outcome& outcome : ReadAsBoth({.name = "'" + name.raw + "'"})) {
            EXPECT_TRUE(outcome.isRead) << name.raw;
            EXPECT_EQ(outcome.name, name.utf8) << name.raw;
        }
    }
}

TEST(ClearText, OdditiesHaveOneAnswer)
{
    const struct
    {
        const char* what;
        Content content;
        bool isRead;
        bool isReported;
    } Cases[] = {
        {"nothing", {}, true, false},
        {"byte order mark", {.beforeStart = "\xEF\xBB\xBF"}, true, false},
        {"comments",
         {.name = "/* ' */'thing'/*;*/", .beforeStart = "/* a */ ", .beforeEnd = "/* #1=( */"},
         true,
         false},
        {"control characters between", {.name = "\t\v'thing'\f\x01"}, true, false},
        {"two data sections", {.beforeThing = "ENDSEC;\nDATA('b',('X'));\n"}, true, false},
        {"records of other sections",
         {.beforeThing = "ENDSEC;\nREFERENCE;\n#10=<x>;\nENDSEC;\nDATA;\n"},
         true,
         false},
        {"one record twice", {.beforeEnd = "#90=A(1.);\n#90=A(1.);\n"}, true, false},
        {"two records of one number", {.beforeEnd = "#90=A(1.);\n#90=A(2.);\n"}, true, true},
        {"a list that does not end", {.beforeEnd = "#90=A((1.);\n"}, true, true},
        {"no semicolon", {.beforeEnd = "#90=A(1.)\n#91=A(1.);\n"}, true, true},
        {"text between records", {.beforeEnd = "hello;\n"}, true, true},
        {"a number that is none", {.beforeEnd = "#=A(1.);\n#99999999999=A(1.);\n"}, true, true},
        {"no end of the file", {.end = "ENDSEC;\n"}, true, false},
        {"no end of the section", {.end = "END-ISO-10303-21;\n"}, true, false},
        {"cut off between records", {.end = ""}, false, true},
        {"cut off in a record", {.beforeEnd = "#90=A(", .end = ""}, false, true},
        {"a comment that does not end", {.beforeEnd = "/* "}, false, true},
        {"a text that does not end", {.beforeEnd = "#90=A(');\n"}, false, true},
        {"another start", {.beforeStart = "x"}, false, true},
    };
    for (const auto& test : Cases) {
        for (const Outcome& outcome : ReadAsBoth(test.content)) {
            EXPECT_EQ(outcome.isRead, test.isRead) << test.what;
            EXPECT_EQ(outcome.name, test.isRead ? "thing" : "") << test.what;
            EXPECT_EQ(outcome.isReported, test.isReported) << test.what;
        }
    }
}

TEST(ClearText, ArgumentsByCursorAndAsTheyStand)
{
    Cursor cursor(
        "1., -1.5D3 , +2 ,.5, 1e-400, (1,(2.,#3)), LENGTH_MEASURE ( 3.5 ), $, .T., \"0AF\", 'a''b'");
    EXPECT_EQ(cursor.Real(), 1.0);
    EXPECT_EQ(cursor.Real(), -1500.0);
    EXPECT_EQ(cursor.Integer(), 2);
    EXPECT_EQ(cursor.Real(), 0.5);
    EXPECT_EQ(cursor.Real(), 0.0);
    EXPECT_EQ(cursor.Raw(), "(1,(2.,#3))");
    EXPECT_EQ(cursor.Raw(), "LENGTH_MEASURE ( 3.5 )");
    EXPECT_EQ(cursor.Next(), Cursor::Kind::Omitted);
    EXPECT_EQ(cursor.Reference(), 0U);
    EXPECT_EQ(cursor.Enumerator(), "T");
    EXPECT_EQ(cursor.Next(), Cursor::Kind::Binary);
    cursor.Skip();
    EXPECT_EQ(cursor.String(), "a''b");
    EXPECT_FALSE(cursor.More());
    EXPECT_FALSE(cursor.Failed());
    for (const char* none : {"1e999", "1.2.3", "1x", "'1'", "", "."}) {
        Cursor other(none);
        other.Real();
        EXPECT_TRUE(other.Failed()) << none;
    }
}

TEST(ClearText, RecordsByNumberAndType)
{
    std::string bytes = "ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n#4000000000=B(#7);\n";
    for (int i = 1; i <= 50; ++i) {
        bytes += "#" + std::to_string(i) + (i % 2 == 0 ? "=A(" : "=B(") + std::to_string(i) + ".);\n";
    }
    bytes += "#60=(C(1)D(2,#8)E());\n";
    ClearText text;
    ASSERT_TRUE(text.Load(bytes + "ENDSEC;\n"));
    EXPECT_EQ(text.Count(), 52U);
    EXPECT_EQ(text.CountOf("A"), 25U);
    EXPECT_EQ(text.CountOf("B"), 26U);
    EXPECT_EQ(text.CountOf("X"), 0U);
    ASSERT_NE(text.Find(4000000000U), nullptr);
    EXPECT_EQ(text.TypeName(*text.Find(4000000000U)), "B");
    EXPECT_EQ(text.Find(51), nullptr);
    bool found = false;
    Cursor part = text.Arguments(60, "D", found);
    ASSERT_TRUE(found);
    EXPECT_EQ(part.Integer(), 2);
    EXPECT_EQ(part.Reference(), 8U);
    std::vector<part21::RecordId> numbers;
    text.ForEachByNumber([&](const ClearText::Record& record) { numbers.push_back(record.id); });
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    EXPECT_EQ(numbers.size(), 52U);
}

} // namespace
} // namespace cadex::test
