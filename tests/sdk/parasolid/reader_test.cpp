// Assemblies, attributes, partitions, wires and sheets; real files against what is known of them; damage.
#include "tests/sdk/ReadModels.h"
#include "tests/sdk/TreeText.h"
#include "tests/sdk/parasolid/XtShapes.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "sdk/occt/EngineScope.h"
#include "sdk/parasolid/XtFile.h"

namespace xttest {
namespace {

using cadex::internal::Reports;
using cadex::test::MeshBodies;
using cadex::test::Replaced;
using cadex::test::TakeReason;

int AddTransform(XtText& xt, const Values& rotation, const Values& shift)
{
    return xt.Add(
        type::Transform,
        {{Field::RotationMatrix, rotation}, {Field::TranslationVector, shift}, {Field::Scale, {1}}});
}

int AddInstance(XtText& xt, int assembly, int part, int transform)
{
    return xt.Add(type::Instance, {{Field::Assembly, {1. * assembly}},
                                   {Field::Part, {1. * part}},
                                   {Field::Transform, {1. * transform}}});
}

/// A pair of pins in a frame, the frame twice; the second pin is turned and see-through.
XtText Frames()
{
    XtText xt;
    const int top = xt.Add(type::Assembly);
    const int frame = xt.Add(type::Assembly);
    const int pin = AddCylinderBody(xt, 0.001, 0.01);
    AddInstance(xt, top, frame, 0);
    AddInstance(xt, top, frame, AddTransform(xt, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {0.5, 0, 0}));
    AddInstance(xt, frame, pin, 0);
    const int turned =
        AddInstance(xt, frame, pin, AddTransform(xt, {0, -1, 0, 1, 0, 0, 0, 0, 1}, {0, 0.25, 0}));
    AddAttribute(xt, frame, "SDL/TYSA_NAME", type::Characters, Codes("frame"));
    AddAttribute(xt, turned, "SDL/TYSA_NAME", type::Characters, Codes("other\\pin"));
    AddAttribute(xt, turned, "SDL/TYSA_COLOUR", type::Reals, {0, 0, 1});
    AddAttribute(xt, turned, "SDL/TYSA_TRANSLUCENCY", type::Reals, {0.25});
    AddAttribute(xt, pin, "SDL/TYSA_NAME", type::Characters, Codes("no name"));
    AddAttribute(xt, pin, "SDL/TYSA_UNAME", type::Unicode, {0x53, 0x74, 0x69, 0x66, 0x74, 0x03B1});
    AddAttribute(xt, pin, "SDL/TYSA_COLOUR_2", type::Reals, {1, 0, 0});
    AddAttribute(xt, pin, "SDL/TYSA_LAYER", type::Integers, {7});
    AddAttribute(xt, pin, "SDL/TYSA_DENSITY", type::Reals, {7850});
    AddAttribute(xt, pin, "ACME/grade", type::Characters, Codes("S355"));
    AddAttribute(xt, pin, "SDL/TYSA_HATCHING", type::Reals, {1, 2, 3});
    return xt;
}

TEST(ParasolidReader, AssembliesNamesLooksAndProperties)
{
    const char* expected =
        "assembly Assembly 1 [Schema=%]\n"
        "  instance frame\n"
        "    assembly frame\n"
        "      instance Stift\xCE\xB1\n"
        "        part Stift\xCE\xB1 #ff0000 [Layer=7;Density=7850;ACME/grade=S355] exact\n"
        "      instance other\\pin #0000ff a0.75 (0 250 0)\n"
        "        part Stift\xCE\xB1 #ff0000 [Layer=7;Density=7850;ACME/grade=S355] exact\n"
        "  instance frame (500 0 0)\n"
        "    assembly frame\n"
        "      instance Stift\xCE\xB1\n"
        "        part Stift\xCE\xB1 #ff0000 [Layer=7;Density=7850;ACME/grade=S355] exact\n"
        "      instance other\\pin #0000ff a0.75 (0 250 0)\n"
        "        part Stift\xCE\xB1 #ff0000 [Layer=7;Density=7850;ACME/grade=S355] exact\n";
    const XtText xt = Frames();
    for (const bool hasOwnSchema : {false, true}) {
        for (const std::string& bytes : {xt.Text(hasOwnSchema), xt.Binary(hasOwnSchema)}) {
            const auto model = Read(bytes);
            ASSERT_TRUE(model) << TakeReason();
            std::string text = expected;
            text.replace(text.find('%'), 1, hasOwnSchema ? "SCH_3100000_31000_13006" : "SCH_1300000_13006");
            EXPECT_EQ(cadex::test::TreeText(*model).text, text);
            EXPECT_NEAR(VolumeOf(*model), M_PI * 1e-8, 1e-14);
        }
    }
}

TEST(ParasolidReader, RingsOfAssembliesAreCut)
{
    XtText xt;
    const int a = xt.Add(type::Assembly);
    const int b = xt.Add(type::Assembly);
    AddInstance(xt, a, b, 0);
    AddInstance(xt, b, AddCylinderBody(xt, 0.001, 0.01), 0);
    AddInstance(xt, b, a, 0);
    AddInstance(xt, b, 99999, 0);
    Reports::Clear();
    const auto model = Read(xt.Text());
    ASSERT_TRUE(model);
    EXPECT_EQ(TakeReason(), "an instance without a part or a placement that makes sense, or of too many");
    EXPECT_EQ(cadex::test::TreeText(*model).text.find("assembly Assembly 1"), 0U);
}

/// Each level holds the next one ten times, and there are more levels than anything can walk down.
TEST(ParasolidReader, AssembliesThatUnfoldWithoutEndAreCut)
{
    XtText xt;
    int below = AddCylinderBody(xt, 0.001, 0.01);
    for (int level = 0; level < 300; ++level) {
        const int assembly = xt.Add(type::Assembly);
        for (int i = 0; i < (level < 20 ? 10 : 1); ++i) {
            AddInstance(xt, assembly, below, 0);
        }
        below = assembly;
    }
    Reports::Clear();
    ASSERT_TRUE(Read(xt.Binary()));
    EXPECT_NE(TakeReason(), "");
    cadex::occt::RunGuarded(cadex::occt::EngineUse::Geometry, [&] {
        const XtContents contents = ReadXt(xt.Binary());
        std::vector<std::size_t> levels(contents.assemblies.size());
        for (std::size_t i = 0; i < levels.size(); ++i) { // the one below comes first in this file
            for (const XtInstance& instance : contents.assemblies[i].instances) {
                levels[i] = 1 + (instance.element.isAssembly ? levels[instance.element.number] : 0);
            }
            EXPECT_LE(levels[i], 100U);
        }
        return true;
    });
}

/// Several bodies in a partition: a wire, a sheet and a point beside a solid.
TEST(ParasolidReader, PartitionsWiresAndSheets)
{
    XtText xt;
    xt.Add(type::World, {{Field::Body, {2}}});
    AddCylinderBody(xt, 0.001, 0.01);
    XtBodyText wire(xt, 2);
    const int from = wire.Vertex(0, 0, 0);
    const int to = wire.Vertex(0.003, 0, 0.004);
    wire.Edge(xt.Add(type::Line, {{Field::Pvec, {0, 0, 0}}, {Field::Direction, {0.6, 0, 0.8}}}), from, to);
    wire.Edge(AddCircle(xt, 0, 0.002));
    wire.Finish();
    XtBodyText sheet(xt, 3);
    sheet.Face(AddPlane(xt, {0, 0, 0.02}, {0, 0, 1}), '+', {{{sheet.Edge(AddCircle(xt, 0.02, 0.002))}}});
    sheet.Finish();
    XtBodyText point(xt, 2);
    point.Finish();
    for (const std::string& bytes : {xt.Text(), xt.Binary()}) {
        Reports::Clear();
        cadex::occt::RunGuarded(cadex::occt::EngineUse::Geometry, [&] {
            const XtContents contents = ReadXt(bytes);
            EXPECT_EQ(contents.roots.size(), 4U);
            EXPECT_EQ(contents.bodies[0].description.solids.size(), 1U);
            EXPECT_EQ(contents.bodies[1].description.curves.size(), 2U);
            EXPECT_EQ(contents.bodies[2].description.sheets.size(), 1U);
            return true;
        });
        const auto model = Read(bytes);
        ASSERT_TRUE(model);
        MeshBodies(*model);
        EXPECT_EQ(TakeReason(), "a body without faces or curves");
        const auto parts = cadex::mesh::DistinctParts(*model);
        ASSERT_EQ(parts.size(), 3U);
        EXPECT_EQ(parts[1].PolyRepresentation(cadex::ModelData_RM_Poly).Get().Size(), 2U);
        EXPECT_EQ(parts[2].PolyRepresentation(cadex::ModelData_RM_Poly).Get().Size(), 1U);
    }
}

/// One is of version 9; the others have twins in STEP.
TEST(ParasolidReader, RealFilesHaveTheVolumesOfTheirTwins)
{
    const std::filesystem::path samples = ZEMTAR_SOURCE_DIR "/../shared/samples/x_t";
    if (!std::filesystem::exists(samples)) {
        GTEST_SKIP() << "no samples at hand";
    }
    const struct
    {
        const char* name;
        double volume; ///< cubic millimetres
    } files[] = {{"nut.x_t", M_PI * (25.4 * 25.4 - 12.7 * 12.7) * 25.4},
                 {"Part_Studio_1_-_Part_1.x_t", 9735.545830},
                 {"Part_Studio_1_-_Part_3.x_t", 7377.168097}};
    for (const auto& [name, volume] : files) {
        Reports::Clear();
        const auto model = Read(cadex::test::BytesOf(samples / name));
        ASSERT_TRUE(model) << name;
        EXPECT_NEAR(VolumeOf(*model) * 1e9, volume, 1e-6 * volume) << name;
        EXPECT_EQ(TakeReason(), "") << name;
    }
}

TEST(ParasolidDamage, FilesThatAreNoneSayWhy)
{
    const XtText xt = Frames();
    const std::string text = xt.Text();
    const std::string own = xt.Binary(true);
    cadex::test::ExpectRefusals<cadex::Para_Reader>({
        {"empty", "", "not a Parasolid"},
        {"text", "hello", "not a Parasolid"},
        {"header alone", text.substr(0, text.find("T33")), "not a Parasolid"},
        {"binary of a machine", "B   " + own, "one kind of machine"},
        {"cut", text.substr(0, text.size() / 2), "ends too early"},
        {"cut binary", own.substr(0, own.size() / 2), "ends too early"},
        {"another base", Replaced(own, "13006", "14000"), "unknown schema"},
        {"no schema", Replaced(text, "SCH_", "XXX_"), "not a schema"},
        {"letters beyond ASCII", Replaced(text, "SCH_", "S\x87H_"), "not a schema"},
        {"a long name", Replaced(text, "T33 ", "T99999999 "), "longer than the file"},
        {"a letter in the schema", Replaced(own, "CCCCCCCC", "CCCQCCCC"), "schema that makes no sense"},
    });
}

TEST(ParasolidDamage, TwoHundredDamagedFiles)
{
    const XtText frames = Frames();
    XtText pucks;
    AddPuck(pucks, {0.005, 0.01, 0.001, true, true});
    AddPuck(pucks, {0.005, 0.01, 0.001, false, true});
    cadex::test::ExpectDamagedFilesEndWell<cadex::Para_Reader>(
        {frames.Text(), frames.Binary(true), pucks.Text(true), pucks.Binary()}, 280, 60);
}

} // namespace
} // namespace xttest
