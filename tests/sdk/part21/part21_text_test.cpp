// Syntax of the exchange structure: strings, reals, lists, and a sink that fails.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>

#include <cadex/ModelData_Model.hxx>
#include <cadex/STEP_Writer.hxx>

#include "sdk/part21/Part21Writer.h"
#include "tests/sdk/step/StepModels.h"

namespace {

using namespace cadex;
using namespace cadex::part21;
using text::StreamSink;

TEST(Part21Text, EscapesStrings)
{
    const UTF16 lone[] = {'a', 0xD800, 'b', 0xDC00};
    const struct
    {
        Base_UTF16String text;
        const char* literal;
    } cases[] = {
        {"", "''"},
        {"it's \\ 7~", "'it''s \\\\ 7~'"},
        {"\u00fc", "'\\X2\\00FC\\X0\\'"},
        {"a\u65e5\u672cb", "'a\\X2\\65E5672C\\X0\\b'"},
        {"\u65e5\U0001F600\U0001F601\u672c",
         "'\\X2\\65E5\\X0\\\\X4\\0001F6000001F601\\X0\\\\X2\\672C\\X0\\'"},
        {"a\r\nb\x7f", "'a\\X2\\000D000A\\X0\\b\\X2\\007F\\X0\\'"},
        {Base_UTF16String(lone, 4), "'a\\X2\\FFFD\\X0\\b\\X2\\FFFD\\X0\\'"},
    };
    for (const auto& c : cases) {
        std::string literal;
        AppendPart21String(literal, c.text);
        EXPECT_EQ(literal, c.literal);
    }
}

TEST(Part21Text, PrintsRealsShortWithAPointAndBackTheSame)
{
    const struct
    {
        double value;
        const char* text;
    } cases[] = {{0, "0."},           {-0., "0."},
                 {1, "1."},           {-2.5, "-2.5"},
                 {0.1, "0.1"},        {1e-7, "1.E-07"},
                 {1e22, "1.E+22"},    {1.5e300, "1.5E+300"},
                 {123456, "123456."}, {1 / 3., "0.3333333333333333"}};
    for (const auto& c : cases) {
        EXPECT_EQ(Part21Real(c.value), c.text);
    }
    EXPECT_EQ(Part21Real(0.2f), "0.2");
    for (const double value : {DBL_MAX, DBL_MIN, DBL_TRUE_MIN, -DBL_EPSILON, 4.35, 2e16 / 3}) {
        EXPECT_EQ(std::strtod(Part21Real(value).c_str(), nullptr), value);
    }
}

TEST(Part21Text, WritesEntitiesWithTheirParameters)
{
    std::ostringstream stream;
    StreamSink sink(stream);
    Part21Writer out(sink);
    const Ref loop = out.Reserve();
    const Ref point = out.Add("CARTESIAN_POINT", "", Xyz{1, 2, 0.5});
    out.AddAs(loop, "POLY_LOOP", "it's", RefRange{point, 3, 2}, Ref(), Raw{"*"}, 7, 0.5f);
    out.Add("X", std::vector<Ref>{}, std::array{1., 2.}, TypedReal{"LENGTH_MEASURE", 25.4}, std::string("s"));
    const std::string large(1'000'000, 'x'); // larger than any buffer
    out.Add("LONG", large);
    EXPECT_TRUE(out.EndFile());
    EXPECT_EQ(stream.str(),
              "#2=CARTESIAN_POINT('',(1.,2.,0.5));\n#1=POLY_LOOP('it''s',(#2,#4,#6),$,*,7,0.5);\n"
              "#3=X((),(1.,2.),LENGTH_MEASURE(25.4),'s');\n#4=LONG('" +
                  large + "');\nENDSEC;\nEND-ISO-10303-21;\n");
}

TEST(Part21Text, IsNotRightAfterABadRealOrAFailedWrite)
{
    std::ostringstream stream;
    StreamSink sink(stream);
    Part21Writer nan(sink);
    nan.Add("X", std::nan(""));
    EXPECT_FALSE(nan.EndFile());
    stream.setstate(std::ios::badbit);
    Part21Writer out(sink);
    EXPECT_FALSE(out.EndFile());
}

TEST(Part21Text, HeaderSaysWhoAndWhat)
{
    STEP_Writer writer;
    writer.Parameters().Author() = "J\u00f6rg O'Neil";
    writer.Parameters().Organization() = "W\\erk";
    std::ostringstream stream;
    ASSERT_TRUE(writer.Transfer(ModelOf(CubePart("cube"))) && writer.WriteFile(stream));
    const std::string text = stream.str();
    EXPECT_EQ(text.rfind("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((", 0), 0u);
    EXPECT_NE(text.find(",('J\\X2\\00F6\\X0\\rg O''Neil'),('W\\\\erk'),"), std::string::npos);
    EXPECT_NE(text.find("FILE_SCHEMA(('AUTOMOTIVE_DESIGN { 1 0 10303 214 1 1 1 1 }'));\nENDSEC;\nDATA;\n#1="),
              std::string::npos);
    EXPECT_EQ(Part21TimeStamp(86399), "1970-01-01T23:59:59Z");
    stream.setstate(std::ios::failbit);
    EXPECT_FALSE(writer.WriteFile(stream));
}

} // namespace
