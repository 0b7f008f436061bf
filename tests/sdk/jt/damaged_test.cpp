// JT files that are damaged, or built to hurt.
#include "tests/sdk/jt/JtFiles.h"
#include "tests/sdk/jt/JtModels.h"
#include "tests/support/DamagedFiles.h"

#include <gtest/gtest.h>

namespace jttest {
namespace {

using namespace cadex;
using cadex::test::Overwritten;

TEST(JtDamage, FilesThatAreNoneSayWhy)
{
    const std::string good = Written(Machine());
    cadex::test::ExpectRefusals<cadex::JT_Reader>({
        {"empty", "", "not a JT file"},
        {"text", std::string(200, 'x'), "not a JT file"},
        {"version 7", Overwritten(good, 8, "7"), "version 7 are not supported"},
        {"a version to come", Overwritten(good, 8, "11.0"), "version 11 are not supported"},
        {"no version", Overwritten(good, 8, "x"), "not a JT file"},
        {"an unknown order of bytes", Overwritten(good, 80, "\x02"), "not a JT file"},
        {"the other order of bytes", Overwritten(good, 80, "\x01"), "beyond the end"},
        {"a table that is nowhere", Overwritten(good, 85, "\xFF\xFF\xFF\x7F"),
         "table of segments lies beyond"},
        {"many segments", Overwritten(good, 105, "\xFF\xFF\xFF\x7F"), "count is larger"},
        {"no scene graph", Overwritten(good, 89, "????"), "no scene graph"},
        {"another segment", Overwritten(good, good.size() - 100, std::string(100, '\0')), ""},
        {"cut", good.substr(0, good.size() / 2), "beyond the end"},
        {"an insertion", good.substr(0, 500) + "!" + good.substr(500), "not what the table says"},
    });
    EXPECT_TRUE(Read(good));
}

TEST(JtDamage, TwoHundredDamagedFiles)
{
    test::ExpectDamagedFilesEndWell<JT_Reader>({Written(Machine())}, 200, 150);
}

} // namespace
} // namespace jttest
