// 3DM files that are damaged, or built to hurt.
#include "tests/sdk/rhino/Files3dm.h"
#include "tests/sdk/rhino/Tables3dm.h"
#include "tests/support/ModelBuilder.h"

#include <gtest/gtest.h>

#include "sdk/rhino/RhinoChunkWriter.h"
#include "sdk/rhino/RhinoTables.h"
#include "sdk/text/AtomicFile.h"

namespace rhinotest {
namespace {

using cadex::test::Overwritten;

using namespace cadex;
using internal::Report;
using internal::Reports;
using test::TakeReason;
namespace code = rhino::code;

TEST(RhinoDamage, FilesThatAreNoneSayWhy)
{
    const std::string good = Fixture("v8.3dm");
    cadex::test::ExpectRefusals<cadex::Rhino_Reader>({
        {"empty", "", "not a 3DM file"},
        {"text", "hello", "not a 3DM file"},
        {"version 1", Overwritten(good, 24, "       1"), "version 1 are not supported"},
        {"a version to come", Overwritten(good, 24, "     500"), "unknown version"},
        {"no number", Overwritten(good, 24, "     8x0"), "not a 3DM file"},
        {"cut", good.substr(0, good.size() / 2), "does not fit"},
        {"without its end", good.substr(0, good.size() - 20), "ends too early"},
        {"more behind a table",
         good.substr(0, good.size() - 20) + std::string(8, '\x01') + good.substr(good.size() - 20),
         "does not fit"},
        {"the wrong size", good.substr(0, good.size() - 8) + std::string(8, '\0'), "size that it had"},
        {"a changed name", Overwritten(good, good.find("N\0e\0t\0z", 0, 7), "M"), "checksum"},
    });
    EXPECT_TRUE(Read(good));
}

TEST(RhinoDamage, TwoHundredDamagedFiles)
{
    ModelData_Model model("seed");
    std::vector<ModelData_Instance> places;
    const ModelData_Part grid =
        Zemtar::Test::MakePart("grid", {Zemtar::Test::MakeGrid(8, Zemtar::Test::Normals::Smooth, true)});
    for (int i = 0; i < 5; ++i) {
        places.emplace_back(grid, "place");
    }
    model.AddRoot(Zemtar::Test::MakeAssembly("root", places));
    test::ExpectDamagedFilesEndWell<Rhino_Reader>({Fixture("v3.3dm"), Fixture("v8.3dm"), Written(model)}, 200,
                                                  120);
}

void Reference(rhino::ChunkWriter& out, std::uint8_t id, std::uint8_t definition, bool isMember)
{
    out.Begin(code::ObjectRecord);
    out.Short(code::ObjectKind, 0x1000);
    out.BeginObject(rhino::ReferenceId);
    out.Put(std::uint8_t{0x10});
    out.Put(Number(definition));
    out.PutIdentity();
    out.PutAll({0., 0., 0., 0., 0., 0.});
    out.EndData();
    out.EndObject();
    out.Begin(code::ObjectAttributes);
    out.Put(std::uint8_t{0x20});
    out.Put(Number(id));
    out.Put(std::int32_t{0});
    out.PutAll<std::uint8_t>({12, static_cast<std::uint8_t>(isMember ? 3 : 0), 0});
    out.End();
    out.Short(code::ObjectRecordEnd, 0);
    out.End();
}

/// Blocks 1 .. count; each holds `width` references to the next, the last ones to block `last`.
std::string Nested(std::uint8_t count, std::size_t width, std::uint8_t last)
{
    return FileOf([&](rhino::ChunkWriter& out) {
        out.Begin(code::DefinitionTable);
        for (std::uint8_t i = 1; i <= count; ++i) {
            out.Begin(code::DefinitionRecord);
            out.BeginObject(rhino::DefinitionId);
            out.Put(std::uint8_t{0x10});
            out.Put(Number(i));
            out.Put(static_cast<std::int32_t>(width));
            for (std::size_t k = 0; k < width; ++k) {
                out.Put(Number(static_cast<std::uint8_t>(100 + i)));
            }
            out.Text("block");
            out.Text({});
            out.Text({});
            out.Text({});
            out.PutAll({0., 0., 0., 0., 0., 0.});
            out.Put(std::int32_t{1});
            out.Text({});
            out.EndData();
            out.EndObject();
            out.End();
        }
        out.Short(code::EndOfTable, 0);
        out.End();
        out.Begin(code::ObjectTable);
        for (std::uint8_t i = 1; i <= count; ++i) {
            Reference(out, static_cast<std::uint8_t>(100 + i),
                      i < count ? static_cast<std::uint8_t>(i + 1) : last, true);
        }
        Reference(out, 99, 1, false);
        out.Short(code::EndOfTable, 0);
        out.End();
    });
}

TEST(RhinoDamage, BlocksInCirclesAndBlocksWithoutEndAreCutOff)
{
    Reports::Clear();
    EXPECT_FALSE(Read(Nested(3, 1, 1))); // there is nothing else in it
    EXPECT_EQ(TakeReason(), "a block that contains itself");
    Reports::Clear();
    EXPECT_FALSE(Read(Nested(40, 20, 77))); // 20 to the 40th
    bool isSaid = false;
    for (const Report& report : Reports::Take()) {
        isSaid = isSaid || report.text == "a block that unfolds to too many instances";
    }
    EXPECT_TRUE(isSaid);
}

/// A mesh of a hundred million vertices in a packed buffer of a few bytes.
TEST(RhinoDamage, ABufferThatClaimsGigabytesIsRefusedBeforeMemoryIsTaken)
{
    constexpr std::int32_t Claimed = 100'000'000;
    const std::string bytes = FileOf([&](rhino::ChunkWriter& out) {
        out.Begin(code::ObjectTable);
        out.Begin(code::ObjectRecord);
        out.Short(code::ObjectKind, 0x20);
        out.BeginObject(rhino::MeshId);
        out.Put(std::uint8_t{0x35});
        out.PutAll({Claimed, std::int32_t{0}});
        out.Bytes(std::string(64 + 16 + 64 + 4 + 5, '\0'));
        out.Put(std::int32_t{4});
        out.PutAll({std::uint32_t{Claimed} * 12, std::uint32_t{0}});
        out.Put(std::uint8_t{1});
        out.Begin(code::Anonymous);
        out.Bytes(std::string(1000, 'x'));
        out.End();
        out.EndData();
        out.EndObject();
        out.Short(code::ObjectRecordEnd, 0);
        out.End();
        out.Short(code::EndOfTable, 0);
        out.End();
    });
    Reports::Clear();
    EXPECT_FALSE(Read(bytes));
    EXPECT_NE(TakeReason().find("too much memory"), std::string::npos);
}

} // namespace
} // namespace rhinotest
