// Parts and assemblies of SolidWorks files, in both containers.
#include "tests/sdk/solidworks/SldFiles.h"

#include <filesystem>

#include <gtest/gtest.h>

#include <cadex/ModelAlgo_ValidationProperty.hxx>
#include <cadex/ModelAlgo_ValidationPropertyData.hxx>
#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Part.hxx>

#include "sdk/model/Elements.h"
#include "sdk/solidworks/SldContainer.h"
#include "sdk/solidworks/SldDisplayList.h"
#include "tests/sdk/ReadModels.h"
#include "tests/sdk/SeenMesh.h"
#include "tests/sdk/TreeText.h"

namespace sldtest {
namespace {

using cadex::internal::Reports;
using cadex::test::TreeText;

const cadex::ModelData_SceneGraphElement& RootOf(const cadex::ModelData_Model& model)
{
    return cadex::internal::RootsOf(model).front();
}

/// Two bodies, the second with a face of its own colour; the user's properties; a material.
Streams PartStreams()
{
    DisplayText list;
    list.Look(0x0000FF, 0, "Steel");
    list.Body(6);
    AddBox(list, 0.01F, 0.02F, 0.03F);
    list.Body(2);
    list.Face({3}, {{0, 0, 1}, {1, 0, 1}, {0, 1, 1}}, {});
    list.Look(0x336699, 0, "");
    list.Face({5}, {{0, 0, 2}, {1, 0, 2}, {0, 1, 2}, {1, 1, 2}, {0, 2, 2}}, Points(5, {0, 0, 1}));
    list.Look(0x00FF00, 0.25, "Materials|Glass|7", "First");
    list.Look(0xFF0000, 0, "Steel", "Second");
    const std::string material =
        "<materials><material name=\"Lib|Oak &amp; Ash|5\"/><material name=\"Lib|Oak\">"
        "<physicalproperties><DENS value=\"700\"/></physicalproperties></material>"
        "<configurationslist><configuration name=\"Big\" material=\"Lib|Oak|5\"/>"
        "</configurationslist></materials>";
    std::string wide = "\xff\xfe";
    for (const char c : material) {
        wide += c;
        wide += '\0';
    }
    return {
        {"swXmlContents/Features",
         "<s><swModelList><swModel id=\"2\" swName=\"C:\\x.SLDPRT\" swConfigurationName=\"Big\" "
         "swConfigurationId=\"3\"/></swModelList><swConfiguration swModelRef=\"9\"/>"
         "<swConfiguration swMostRecentConfiguration=\"YES\" swModelRef=\"2\"/></s>"},
        {"Header2", "x"},
        {"docProps/core.xml", "<?xml version='1.0'?><c><!-- > --><dc:creator>J\xC3\xBCrg &#233;</dc:creator>"
                              "<dcterms:created>2018-06-27T02:53:23Z</dcterms:created>"
                              "<dcterms:created>2001-06-27T02:53:23Z</dcterms:created></c>"},
        {"docProps/Config-3-Properties.xml",
         "<P><propertySection name=\"UserDefinedProperties\"><property "
         "name=\"\"><vt:i2>65001</vt:i2></property>"
         "<property name=\"Count\"><vt:i4>12</vt:i4></property><property name=\"Mass\"><vt:r8>1.5</vt:r8>"
         "</property><property name=\"Note\"><vt:lpwstr>a &lt; "
         "b</vt:lpwstr></property></propertySection></P>"},
        {"swXmlContents/MATERIALTREE", wide},
        {"Contents/DisplayLists", list.bytes},
    };
}

TEST(SolidWorksReader, APartHasMeshesLooksAndProperties)
{
    Reports::Clear();
    const auto model = Read(Archive(PartStreams()));
    ASSERT_TRUE(model);
    EXPECT_TRUE(Reports::Take().empty());
    EXPECT_EQ(
        TreeText(*model).text,
        "part  #00ff00 a0.75 [Author=J\xC3\xBCrg \xC3\xA9;Created=t 1530068003;Count=i32 12;Mass=d 1.500000;"
        "Note=a < b;Configuration=Big;Material=Oak;Density (kg/m\xC2\xB3)=d 700.000000]: #00ff00 a0.75 12 "
        "triangles n, #0000ff 3 triangles n, #996633 1 triangles n\n");
    const auto& part = static_cast<const cadex::ModelData_Part&>(RootOf(*model));
    const auto& sets = part.PolyRepresentation(cadex::ModelData_RM_Poly);
    EXPECT_EQ(sets.Get()[0].Name().ToUTF8(), "First");
    EXPECT_EQ(sets.Get()[2].Name().ToUTF8(), "Second");

    cadex::ModelData_PolyRepresentation first{cadex::initialized()};
    first.Add(sets.Get()[0]);
    const cadex::test::Seen box(first);
    EXPECT_NEAR(box.volume, 6000, 1e-3); // 10 mm x 20 mm x 30 mm, faces joined to a closed body
    EXPECT_EQ(box.openEdges, 0);
    EXPECT_NEAR(box.worstCosine, 1, 1e-6);
    cadex::ModelData_PolyRepresentation strip{cadex::initialized()};
    strip.Add(sets.Get()[1]);
    EXPECT_NEAR(cadex::test::Seen(strip).surface, 1.5e6, 1e-3) << "every other triangle of a strip is turned";
}

/// The same streams, packed in themselves, small and large ones, with properties in sets of their own.
TEST(SolidWorksReader, OlderFilesAreCompoundFiles)
{
    Streams streams = PartStreams();
    std::string list = streams.back().second;
    streams.pop_back();
    // values of 16 bits, of text with a zero at its end, of time in tenths of microseconds since 1601
    const std::string values = U32(2) + U32(7) + U32(30) + U32(4) + std::string("Ann\0", 4) + U32(64) +
                               Raw(std::uint64_t{131'745'416'030'000'000});
    const std::string summary = U32(56 + values.size()) + U32(4) + U32(9) + U32(40) + U32(4) + U32(48) +
                                U32(12) + U32(60) + U32(8) + U32(48) + values;
    const std::string set =
        U16(0xFFFE) + U16(0) + U32(0) + std::string(16, '\0') + U32(1) +
        std::string("\xe0\x85\x9f\xf2\xf9\x4f\x68\x10\xab\x91\x08\x00\x2b\x27\xb3\xd9", 16) + U32(48) +
        summary;
    for (const bool isLarge : {false, true}) {
        SCOPED_TRACE(isLarge);
        Streams older = {{"\5SummaryInformation", set}, {"Header2", "x"}};
        if (isLarge) {
            older.emplace_back("Contents/DisplayLists", list + std::string(5000, '\0'));
        } else {
            older.emplace_back("Contents/DisplayLists__ZLB", Wrapped(list));
        }
        Reports::Clear();
        const auto model = Read(Compound(older));
        ASSERT_TRUE(model) << cadex::test::TakeReason();
        EXPECT_EQ(TreeText(*model).text,
                  "part  #00ff00 a0.75 [Author=Ann;Created=t 1530068003;Last saved by=Ann]: #00ff00 a0.75 12 "
                  "triangles n, #0000ff 3 triangles n, #996633 1 triangles n\n");
    }
}

std::string Reference(const std::string& name, int number, const std::string& model, const std::string& more)
{
    return "<swReference swName=\"" + name + "\" swReferenceNumber=\"" + std::to_string(number) +
           "\" swModelRef=\"" + model + "\" " + more + "/>";
}

const std::string Turned = "swTransform=\"0 1 0 0 -1 0 0 0 0 0 1 0 0.1 0 0 1\""; ///< by a right angle about z
const std::string Placed = "swTransform=\"1 0 0 0 0 1 0 0 0 0 1 0 0 0 0.5 1\"";

/// A car of two axles, each with two wheels; a wheel and a box that are not shown.
Streams AssemblyStreams()
{
    DisplayText list;
    list.Look(0xC0C0C0, 0, "");
    const std::vector<double> turn = {0, 1, 0, -1, 0, 0, 0, 0, 1};
    const std::vector<double> half = {-1, 0, 0, 0, -1, 0, 0, 0, 1};
    list.Component("Axle-1@Car", {}, {0, 0, .5}, "Base", "Axle");
    list.Component("Axle-1@Car/Wheel-1@Axle", turn, {.1, 0, .5}, "Base", "Wheel");
    list.Body(6);
    AddBox(list, 0.01F, 0.02F, 0.03F);
    list.Look(0x336699, 0, "Lib|Rubber|3", "Tyre");
    list.Component("Axle-1@Car/Wheel-2@Axle", {}, {0, 0, 1}, "Base", "Wheel");
    list.Component("Axle-2@Car", turn, {.1, 0, 0}, "Base", "Axle");
    list.Component("Axle-2@Car/Wheel-1@Axle", half, {.1, .1, 0}, "Base", "Wheel");
    list.Component("Axle-2@Car/Wheel-2@Axle", turn, {.1, 0, .5}, "Base", "Wheel");
    const std::string tree =
        "<sw><swModel id=\"5\" swName=\"Wheel\" swConfigurationName=\"Base\"/>"
        "<swModel id=\"6\" swName=\"Axle\" swConfigurationName=\"Base\">" +
        Reference("Wheel", 1, "5", Turned) + Reference("Wheel", 2, "5", Placed) +
        Reference("Wheel", 3, "5", "swSuppressed=\"YES\" " + Placed) + "</swModel>" +
        "<swModel id=\"2\" swName=\"Car\" swConfigurationName=\"Default\" swConfigurationId=\"0\">" +
        Reference("Axle", 1, "6", Placed) + Reference("Axle", 2, "6", Turned) +
        Reference("Wheel", 9, "5", "swHidden=\"YES\" " + Placed) +
        "</swModel><swConfiguration swModelRef=\"2\"/></sw>";
    return {{"swXmlContents/COMPINSTANCETREE", tree}, {"Contents/DisplayLists", list.bytes}};
}

/// Where the triangles of all instances lie.
class Places final : public cadex::ModelData_Model::ElementVisitor
{
public:
    std::multiset<std::string> corners; ///< rounded to a hundredth of a millimetre

    explicit Places(const cadex::ModelData_Model& model) { model.Accept(*this); }

    void operator()(const cadex::ModelData_Part& part) override
    {
        const auto& sets = part.PolyRepresentation(cadex::ModelData_RM_Poly).Get();
        for (std::size_t i = 0; i < sets.Size(); ++i) {
            const auto& set = static_cast<const cadex::ModelData_IndexedTriangleSet&>(sets[i]);
            for (int face = 0; face < set.NumberOfFaces(); ++face) {
                const cadex::ModelData_Point& corner = set.Coordinate(face, 0);
                double x = corner.X();
                double y = corner.Y();
                double z = corner.Z();
                for (auto at = myOpen.rbegin(); at != myOpen.rend(); ++at) {
                    at->Transform(x, y, z);
                }
                char text[100];
                std::snprintf(text, sizeof text, "%.2f %.2f %.2f", x + 1e-9, y + 1e-9, z + 1e-9);
                corners.insert(text);
            }
        }
    }
    bool VisitEnter(const cadex::ModelData_Assembly&) override { return true; }
    void VisitLeave(const cadex::ModelData_Assembly&) override {}
    bool VisitEnter(const cadex::ModelData_Instance& instance) override
    {
        myOpen.push_back(instance.Transformation());
        return true;
    }
    void VisitLeave(const cadex::ModelData_Instance&) override { myOpen.pop_back(); }

private:
    std::vector<cadex::ModelData_Transformation> myOpen;
};

TEST(SolidWorksReader, AnAssemblyIsItsTreeOfComponents)
{
    Streams streams = AssemblyStreams();
    Reports::Clear();
    const auto model = Read(Archive(streams));
    ASSERT_TRUE(model);
    EXPECT_EQ(cadex::test::TakeReason(), "a hidden component");
    const std::string axle = "    assembly Axle\n"
                             "      instance Wheel-1 (100 0 0)\n"
                             "        part Wheel #996633 [Material=Rubber]: #996633 12 triangles n\n"
                             "      instance Wheel-2 (0 0 500)\n"
                             "        part Wheel #996633 [Material=Rubber]: #996633 12 triangles n\n";
    EXPECT_EQ(TreeText(*model).text, "assembly  [Configuration=Default;Hidden components left out=1]\n"
                                     "  instance Axle-1 (0 0 500)\n" +
                                         axle + "  instance Axle-2 (100 0 0)\n" + axle);

    // without the tree: what is displayed, where it is displayed
    streams.erase(streams.begin());
    const auto flat = Read(Archive(streams));
    ASSERT_TRUE(flat);
    EXPECT_EQ(TreeText(*flat).text.substr(0, 40), "assembly \n  instance Wheel-1 (100 0 500)");
    EXPECT_EQ(Places(*flat).corners.size(), 48U);
    EXPECT_EQ(Places(*model).corners, Places(*flat).corners);
}

TEST(SolidWorksReader, ConfusedTreesLoseOnlyWhatIsConfused)
{
    const Streams good = AssemblyStreams();
    const auto changed = [&](const std::string& from, const std::string& to) {
        Streams streams = good;
        std::string& tree = streams.front().second;
        tree.replace(tree.find(from), from.size(), to);
        return streams;
    };
    const struct
    {
        const char* damage;
        Streams streams;
        const char* reason;
        std::size_t corners;
    } cases[] = {
        {"an axle within itself", changed("swModelRef=\"5\"", "swModelRef=\"6\""),
         "a component without a model, within itself, or too deep", 24},
        {"no such model", changed("swModelRef=\"5\"", "swModelRef=\"55\""),
         "a component without a model, within itself, or too deep", 24},
        {"a place that is none", changed("0 0.5 1\"", "0 nan 1\""),
         "a component without a place stands as it was drawn", 48},
        {"a part that is not displayed", changed("swName=\"Wheel\"", "swName=\"Whale\""),
         "a part without anything displayed", 0},
        {"no root", changed("swConfiguration swModelRef=\"2\"", "swConfiguration swModelRef=\"22\""), "", 48},
    };
    for (const auto& [damage, streams, reason, corners] : cases) {
        SCOPED_TRACE(damage);
        Reports::Clear();
        const auto model = Read(Archive(streams));
        EXPECT_EQ(cadex::test::TakeReason(), reason);
        ASSERT_EQ(model.has_value(), corners > 0) << "a file that has lost all it shows is refused";
        EXPECT_EQ(model ? Places(*model).corners.size() : 0, corners);
    }
}

/// Files of the program itself: closed bodies; in assemblies components are where they are displayed.
TEST(SolidWorksReader, RealFiles)
{
    const std::filesystem::path samples = ZEMTAR_SOURCE_DIR "/../shared/samples/sldprt";
    if (!std::filesystem::exists(samples)) {
        GTEST_SKIP() << "no samples at hand";
    }
    int exactParts = 0;
    for (const auto& entry : std::filesystem::directory_iterator(samples)) {
        SCOPED_TRACE(entry.path().filename());
        const std::string bytes = cadex::test::BytesOf(entry.path());
        const auto model = Read(bytes);
        ASSERT_TRUE(model);
        cadex::solidworks::Container container(bytes);
        const cadex::solidworks::DisplayList list(container.Read("Contents/DisplayLists").value());
        if (entry.path().extension() == ".SLDPRT") {
            const auto& part = static_cast<const cadex::ModelData_Part&>(RootOf(*model));
            ASSERT_EQ(list.Components().size(), 1U);
            const auto displayed =
                Read(Archive({{"Contents/DisplayLists", *container.Read("Contents/DisplayLists")}}));
            ASSERT_TRUE(displayed);
            const auto& shown = static_cast<const cadex::ModelData_Part&>(RootOf(*displayed));
            const cadex::test::Seen seen(shown.PolyRepresentation(cadex::ModelData_RM_Poly));
            EXPECT_GT(seen.volume, 0);
            if (!part.BRepRepresentation().IsNull()) {
                ++exactParts;
                cadex::ModelAlgo_ValidationPropertyData exact;
                EXPECT_TRUE(cadex::ModelAlgo_ValidationProperty::ComputeValidationProperties(part, exact));
                EXPECT_NEAR(exact.Volume(), seen.volume, 0.005 * seen.volume);
            }
            continue;
        }
        // the tree as streams of our own, without its list of components
        Streams displayed = {{"Contents/DisplayLists", *container.Read("Contents/DisplayLists")}};
        const auto flat = Read(Archive(displayed));
        ASSERT_TRUE(flat);
        const Places inTree(*model);
        const Places onScreen(*flat);
        EXPECT_GT(inTree.corners.size(), 100U);
        EXPECT_TRUE(std::includes(onScreen.corners.begin(), onScreen.corners.end(), inTree.corners.begin(),
                                  inTree.corners.end()));
    }
    EXPECT_GE(exactParts, 5);
}

} // namespace
} // namespace sldtest
