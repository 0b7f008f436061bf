// SolidWorks files that are damaged, or built to hurt.
#include "tests/sdk/solidworks/SldFiles.h"

#include <gtest/gtest.h>

#include "sdk/solidworks/SldBytes.h"

namespace sldtest {
namespace {

using cadex::internal::Reports;
using cadex::test::Overwritten;

std::string Box()
{
    DisplayText list;
    list.Look(0xC0C0C0, 0, "Steel");
    list.Body(6);
    AddBox(list, 0.01F, 0.02F, 0.03F);
    list.Look(0x336699, 0, "Steel", "Box");
    return list.bytes;
}

Streams BoxStreams()
{
    return {{"docProps/core.xml", "<c><dc:title>Box</dc:title></c>"},
            {"PreviewPNG", "picture"},
            {"Contents/DisplayLists", Box()}};
}

TEST(SolidWorksDamage, FilesThatAreNoneSayWhy)
{
    const std::string good = Archive(BoxStreams());
    const std::string old = Compound({{"Contents/DisplayLists", Box()}});
    const std::size_t block = good.find("BLK!");
    const std::size_t directory = good.find("DIR!");
    const std::string largeList = Box() + std::string(5000, '\0');
    const std::string large = Compound({{"Contents/DisplayLists", largeList}});
    const auto folder = cadex::solidworks::ValueAt<std::uint32_t>(large, 48);
    cadex::test::ExpectRefusals<cadex::SLD_Reader>({
        {"empty", "", "not a SolidWorks document"},
        {"text", "hello", "not a SolidWorks document"},
        {"cut", good.substr(0, good.size() / 2), "no directory"},
        {"a transcoded copy", std::string(good).insert(block, "\xC3"), "no directory"},
        {"another document", Archive({{"word/document.xml", "<a/>"}}), "not a SolidWorks document"},
        {"no display list", Archive({{"Header2", "x"}}), "no display list"},
        {"a changed byte", Overwritten(good, block + 60, "\x55\x55"), "checksum"},
        {"a broken first entry", Overwritten(good, directory + 20, "zz"), "not that of its block"},
        {"a broken entry in the middle", Overwritten(good, good.find("DIR!", directory + 1) + 20, "zz"),
         "directory of the file is damaged"},
        {"a broken last entry", Overwritten(good, good.rfind("DIR!") + 20, "zz"), "not that of its block"},
        {"another program's compound file", Compound({{"WordDocument", "x"}}), "not a SolidWorks document"},
        {"a header alone", old.substr(0, 100), "ends in its header"},
        {"odd sectors", Overwritten(old, 30, "\x20"), "sectors of an unknown size"},
        {"cut in its streams", large.substr(0, 2000), "behind the end"},
        {"a table that is nowhere", Overwritten(old, 76, U32(70000)), "behind the end"},
        {"a directory in circles", Overwritten(large, 512 + 4 * folder, U32(folder)), "has no end"},
    });
    EXPECT_TRUE(Read(good));
    EXPECT_TRUE(Read(old));
}

/// Every block of the archive is taken as it is or not at all: a flipped bit in one that is used is seen.
TEST(SolidWorksDamage, ChecksumsCoverWhatIsRead)
{
    const std::string good = Archive(BoxStreams());
    const std::size_t begin = good.rfind("BLK!");
    const std::size_t end = good.find("DIR!");
    for (std::size_t at = begin + 4; at < end; at += 7) {
        std::string bytes = good;
        bytes[at] = static_cast<char>(bytes[at] ^ 4);
        EXPECT_FALSE(Read(bytes)) << at - begin;
    }
}

TEST(SolidWorksDamage, WhatClaimsMoreThanThereIsTakesNoMemory)
{
    DisplayText list;
    list.Body(1);
    list.bytes += U32(4) + U32(8) + U32(2) + U32(0xFFFFFFFF) + std::string(64, '\x01');
    list.Face({3}, {{0, 0, 0}, {1e30F, 0, 0}, {0, 1, 0}}, {});
    Reports::Clear();
    EXPECT_FALSE(Read(Archive({{"Contents/DisplayLists", list.bytes}})));
    EXPECT_EQ(cadex::test::TakeReason(), "a displayed face with a point that is nowhere");

    // a gigabyte of zeros in a block of a megabyte, and a wrapped stream that claims four of them
    Streams zeros = {{"Contents/DisplayLists", std::string((std::size_t{1} << 26) + 1, '\0')}};
    EXPECT_FALSE(Read(Archive(zeros)));
    EXPECT_EQ(cadex::test::TakeReason(), "a packed stream claims too much memory");
    std::string wrapped = Wrapped(Box());
    wrapped.replace(16, 4, U32(0xF0000000));
    EXPECT_FALSE(Read(Compound({{"Contents/DisplayLists__ZLB", wrapped}})));
    EXPECT_EQ(cadex::test::TakeReason(), "a packed stream claims too much memory");
}

/// Twenty assemblies, each with twenty of the next.
TEST(SolidWorksDamage, AssembliesThatUnfoldWithoutEndAreCutOff)
{
    std::string tree = "<sw>";
    for (int i = 0; i < 20; ++i) {
        tree += "<swModel id=\"" + std::to_string(i) + "\" swName=\"m\">";
        for (int k = 0; k < 20; ++k) {
            tree += "<swReference swName=\"c\" swModelRef=\"" + std::to_string(i + 1) +
                    "\" swTransform=\"1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\"/>";
        }
        tree += "</swModel>";
    }
    tree += "<swModel id=\"20\" swName=\"leaf\"/><swConfiguration swModelRef=\"0\"/></sw>";
    DisplayText list;
    list.Component("c@m", {}, {0, 0, 0}, "", "leaf");
    list.Body(6);
    AddBox(list, 0.01F, 0.02F, 0.03F);
    Reports::Clear();
    ASSERT_TRUE(
        Read(Archive({{"swXmlContents/COMPINSTANCETREE", tree}, {"Contents/DisplayLists", list.bytes}})));
    bool isSaid = false;
    for (const auto& report : Reports::Take()) {
        isSaid = isSaid || report.text == "an assembly that unfolds to too many instances";
    }
    EXPECT_TRUE(isSaid);
}

TEST(SolidWorksDamage, TwoHundredDamagedFiles)
{
    const std::string list = Box();
    cadex::test::ExpectDamagedFilesEndWell<cadex::SLD_Reader>(
        {Archive(BoxStreams()), Compound({{"Contents/DisplayLists", list}}),
         Compound({{"Contents/DisplayLists__ZLB", Wrapped(list)}}),
         Compound({{"Contents/DisplayLists", list + std::string(4000, ' ')}})},
        200, 80);
}

} // namespace
} // namespace sldtest
