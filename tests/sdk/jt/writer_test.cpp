// Files that we wrote, read back: the tree, looks, properties, shapes; in one file and divided.
#include "tests/sdk/ScratchFolder.h"
#include "tests/sdk/TreeText.h"
#include "tests/sdk/jt/JtFiles.h"
#include "tests/sdk/jt/JtModels.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "sdk/jt/JtStrips.h"

namespace jttest {
namespace {

using namespace cadex;
using test::TreeText;

void ExpectSame(const Sums& sums, const Sums& expected)
{
    EXPECT_NEAR(sums.area / expected.area, 1, 1e-5);
    EXPECT_NEAR(sums.volume / expected.volume, 1, 1e-5);
    EXPECT_NEAR(sums.normals / expected.normals, 1, 1e-5);
}

TEST(JtWriter, TreeLooksPropertiesAndShapesComeBackInEveryUnit)
{
    for (const Base_LengthUnit unit : {Base_LU_Millimeters, Base_LU_Meters, Base_LU_Inches, Base_LU_Miles}) {
        const auto model = Read(Written(Machine(), unit));
        ASSERT_TRUE(model) << unit;
        EXPECT_EQ(TreeText(*model).text, MachineText) << unit;
        ExpectSame(SumsOf(*model), SumsOf(Machine()));
    }
}

TEST(JtWriter, ADividedFileIsTheSameModel)
{
    for (const auto split : {JT_WriterParameters::PerPart, JT_WriterParameters::Shattered}) {
        const test::ScratchFolder folder;
        const std::string path = (folder.Path() / "größe.jt").string();
        JT_Writer writer;
        writer.Parameters().SetFileSplitMode(split);
        ASSERT_TRUE(writer.Transfer(Machine()) && writer.WriteFile(path.c_str()));
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path() / "größe")) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        std::vector<std::string> expected = {"a.part;1;2_.jt", "bolt (2).jt", "bolt (3).jt", "bolt.jt",
                                             "wire.jt"};
        if (split == JT_WriterParameters::Shattered) {
            expected.insert(expected.end() - 1, "inner.jt");
        }
        EXPECT_EQ(names, expected);
        JT_Reader reader;
        ModelData_Model model;
        ASSERT_TRUE(reader.ReadFile(path.c_str()) && reader.Transfer(model));
        EXPECT_EQ(TreeText(model).text, MachineText);
        ExpectSame(SumsOf(model), SumsOf(Machine()));

        std::filesystem::remove(folder.Path() / "größe" / "wire.jt");
        std::filesystem::resize_file(folder.Path() / "größe" / "bolt.jt", 300);
        ModelData_Model rest;
        internal::Reports::Clear();
        ASSERT_TRUE(reader.ReadFile(path.c_str()) && reader.Transfer(rest));
        std::string reasons;
        for (const internal::Report& report : internal::Reports::Take()) {
            reasons += report.text + "\n";
        }
        EXPECT_NE(reasons.find("another file that is not there: größe/wire.jt"), std::string::npos)
            << reasons;
        EXPECT_NE(reasons.find("another file: a segment lies beyond"), std::string::npos) << reasons;
    }
}

/// A part file that cannot be written leaves no main file, and none of the others that were made for it.
TEST(JtWriter, AFailureLeavesNothingBehind)
{
    const test::ScratchFolder folder;
    std::filesystem::create_directories(folder.Path() / "a" / "wire.jt"); // a folder in the way
    JT_Writer writer;
    writer.Parameters().SetFileSplitMode(JT_WriterParameters::PerPart);
    ASSERT_TRUE(writer.Transfer(Machine()));
    EXPECT_FALSE(writer.WriteFile((folder.Path() / "a.jt").string().c_str()));
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path())) {
        files += entry.is_regular_file() ? 1 : 0;
    }
    EXPECT_EQ(files, 0U);
}

TEST(JtWriter, PointsThatAreNotFiniteAreLeftOut)
{
    ModelData_IndexedTriangleSet bad = Zemtar::Test::MakeGrid(1);
    const ModelData_Point points[] = {{0, 0, 0}, {1e300, 0, 0}, {0, 1, 0}};
    const int corners[] = {0, 1, 2};
    bad.AddCoordinates(points, 3, corners, 3);
    ModelData_Model model;
    model.AddRoot(Zemtar::Test::MakeAssembly(
        "root",
        {ModelData_Instance(Zemtar::Test::MakePart("part", {bad, Zemtar::Test::MakeGrid(2)}), "part")}));
    const auto back = Read(Written(model));
    ASSERT_TRUE(back);
    EXPECT_EQ(TreeText(*back).text, "assembly root\n  instance part\n    part part: 8 triangles\n");
}

TEST(JtWriter, StripsHoldEveryTriangleOnceWoundAsItIs)
{
    std::mt19937 random(8);
    for (const bool isGrid : {true, false}) {
        std::vector<U32> indices;
        for (U32 i = 0; i < 600; ++i) {
            if (isGrid) {
                const U32 a = i / 20 * 21 + i % 20;
                indices.insert(indices.end(), {a, a + 1, a + 21, a + 1, a + 22, a + 21});
            } else {
                for (int k = 0; k < 3; ++k) {
                    indices.push_back(random() % 30);
                }
            }
        }
        const auto sorted = [](std::vector<std::array<U32, 3>> triangles) {
            for (std::array<U32, 3>& t : triangles) {
                std::rotate(t.begin(), std::min_element(t.begin(), t.end()), t.end());
            }
            std::sort(triangles.begin(), triangles.end());
            return triangles;
        };
        std::vector<std::array<U32, 3>> expected;
        for (std::size_t i = 0; i < indices.size(); i += 3) {
            if (indices[i] != indices[i + 1] && indices[i + 1] != indices[i + 2] &&
                indices[i] != indices[i + 2]) {
                expected.push_back({indices[i], indices[i + 1], indices[i + 2]});
            }
        }
        const jt::Strips strips = jt::MakeStrips(indices, 700);
        std::vector<std::array<U32, 3>> found;
        for (std::size_t s = 0; s + 1 < strips.starts.size(); ++s) {
            for (U32 k = strips.starts[s] + 2; k < strips.starts[s + 1]; ++k) {
                const bool isTurned = (k - strips.starts[s]) % 2 != 0;
                found.push_back({strips.corners[isTurned ? k - 1 : k - 2],
                                 strips.corners[isTurned ? k - 2 : k - 1], strips.corners[k]});
            }
        }
        EXPECT_EQ(sorted(found), sorted(expected));
        EXPECT_LT(strips.corners.size(), (isGrid ? 1.2 : 3) * static_cast<double>(expected.size()));
    }
}

} // namespace
} // namespace jttest
