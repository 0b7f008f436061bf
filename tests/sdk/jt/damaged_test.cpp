// JT files that are damaged, or built to hurt.
#include "tests/sdk/jt/JtFiles.h"
#include "tests/sdk/jt/JtModels.h"
#include "tests/support/DamagedFiles.h"

#include <gtest/gtest.h>

namespace jttest {
namespace {

using namespace cadex;

TEST(JtDamage, FilesThatAreNoneSayWhy)
{
    const std::string good = Written(Machine());
    const auto changed = [&](std::size_t at, const std::string& bytes) {
        std::string copy = good;
        return copy.replace(at, bytes.size(), bytes);
    };
    const struct
    {
        const char* damage;
        std::string bytes;
        const char* reason;
    } files[] = {
        {"empty", "", "not a JT file"},
        {"text", std::string(200, 'x'), "not a JT file"},
        {"version 7", changed(8, "7"), "version 7 are not supported"},
        {"a version to come", changed(8, "11.0"), "version 11 are not supported"},
        {"no version", changed(8, "x"), "not a JT file"},
        {"an unknown order of bytes", changed(80, "\x02"), "not a JT file"},
        {"the other order of bytes", changed(80, "\x01"), "beyond the end"},
        {"a table that is nowhere", changed(85, "\xFF\xFF\xFF\x7F"), "table of segments lies beyond"},
        {"many segments", changed(105, "\xFF\xFF\xFF\x7F"), "count is larger"},
        {"no scene graph", changed(89, "????"), "no scene graph"},
        {"another segment", changed(good.size() - 100, std::string(100, '\0')), ""},
        {"cut", good.substr(0, good.size() / 2), "beyond the end"},
        {"an insertion", good.substr(0, 500) + "!" + good.substr(500), "not what the table says"},
    };
    for (const auto& [damage, bytes, reason] : files) {
        internal::Reports::Clear();
        EXPECT_FALSE(Read(bytes)) << damage;
        const std::string why = test::TakeReason();
        EXPECT_NE(why.find(reason), std::string::npos) << damage << ": " << why;
        EXPECT_NE(why, "") << damage;
    }
    EXPECT_TRUE(Read(good));
}

TEST(JtDamage, TwoHundredDamagedFiles)
{
    test::ExpectDamagedFilesEndWell<JT_Reader>({Written(Machine())}, 200, 150);
}

} // namespace
} // namespace jttest
