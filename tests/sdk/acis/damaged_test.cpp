// SAT files that are damaged, or built to hurt.
#include "tests/sdk/acis/SabFiles.h"
#include "tests/sdk/acis/SatFiles.h"

#include <gtest/gtest.h>

namespace acistest {
namespace {

using cadex::internal::Reports;
using cadex::test::Replaced;
using cadex::test::TakeReason;

std::string Good(int version)
{
    SatText sat(version);
    const int body = AddFrustum(sat, version, {});
    sat.AddAttribute("rgb_color-st-attrib", body, "1 0 0");
    sat.AddAttribute("string_attrib-name_attrib-gen-attrib", body,
                     sat.Text("name") + " " + sat.Text("W\xE9lle"));
    return sat.Str();
}

TEST(AcisDamage, FilesThatAreNoneSayWhy)
{
    const std::string good = Good(700);
    const std::string binary = Binary(good);
    cadex::test::ExpectRefusals<cadex::ACIS_Reader>({
        {"empty", "", "not an ACIS file"},
        {"text", "hello", "not an ACIS file"},
        {"version 1", Replaced(good, "700 ", "105 "), "before version 2"},
        {"binary, a header alone", "ACIS BinaryFile....", "ends too early"},
        {"binary, cut", binary.substr(0, binary.size() / 2), "ends too early"},
        {"binary, an odd tag", std::string(binary).replace(binary.find('\x11'), 1, "\x60"),
         "a tag that is none"},
        {"binary, a text for a name", std::string(binary).replace(binary.find("lump"), 4, "{ # "),
         "a name is none"},
        {"binary, an open block", std::string(binary).insert(binary.find('\x11'), "\x0f"),
         "inside of a block"},
        {"cut", good.substr(0, good.size() / 2), "ends too early"},
        {"without its end", good.substr(0, good.find("End-of")), "ends too early"},
        {"a long text", Replaced(good, "@4 name", "@4000000000 name"), "longer than the file"},
        {"a short text", Replaced(good, "@5 W", "@3 W"), "not the length"},
        {"claims more records", Replaced(good, "700 0", "700 999"), "records are missing"},
        {"an open brace", Replaced(good, "forward single", "{ single"), "inside of a brace"},
    });
    EXPECT_TRUE(Read(good));
    // a copy in UTF-8, whose counts are of characters
    const auto copy = Read(Replaced(good, "W\xE9lle", "W\xC3\xA9lle"));
    ASSERT_TRUE(copy);
    EXPECT_EQ(InstancesOf(*copy).at(0).Name().ToUTF8(), "W\xC3\xA9lle");
}

TEST(AcisDamage, RingsWithoutEndLoseTheirFaceAlone)
{
    for (const char* chain : {"loop", "coedge"}) {
        std::string bytes = Good(700);
        // the second record of the kind goes on with the one before it for ever
        const std::string lead = std::string(chain) + " $-1 -1 $-1 ";
        const std::size_t at = bytes.find(lead, bytes.find(lead) + 1) + lead.size();
        bytes.replace(at, bytes.find(' ', at) - at, chain == std::string("loop") ? "$22" : "$17");
        Reports::Clear();
        const auto model = Read(bytes);
        ASSERT_TRUE(model) << chain;
        EXPECT_EQ(TakeReason(), "a face that could not be read") << chain;
    }
}

/// A spline of a hundred million knots in a file of a kilobyte; a thousand references to nothing.
TEST(AcisDamage, SizesThatLieTakeNoMemory)
{
    for (const char* spline :
         {"{ exactsur full nubs 3 3 open open none none 100000000 100000000 0 3 1 3 }",
          "{ exactsur full nubs 3000000 3 open open none none 2 2 0 3 1 3 0 3 1 3 }", "{ ref 77 }"}) {
        SatText sat(700);
        const int face = sat.Reserve();
        sat.Set(face, "face",
                "$-1 $-1 $-1 $-1 " +
                    Ref(sat.Add("spline-surface", std::string("forward ") + spline + " I I")) +
                    "forward single");
        Reports::Clear();
        EXPECT_FALSE(Read(sat.Str())) << spline; // which was all it had
        EXPECT_EQ(TakeReason(), "a face that could not be read") << spline;
    }
}

TEST(AcisDamage, ThreeHundredDamagedFiles)
{
    cadex::test::ExpectDamagedFilesEndWell<cadex::ACIS_Reader>(
        {Good(400), Good(700), Good(2400), Binary(Good(700)), Binary(Good(2400), true)}, 300, 60);
}

} // namespace
} // namespace acistest
