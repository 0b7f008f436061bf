// Files that we wrote, read back: solids, cavities, sheets, faces, colours, names, places, units.
#include "tests/sdk/ReadModels.h"
#include "tests/sdk/acis/SatFiles.h"
#include "tests/support/ModelBuilder.h"

#include <array>

#include <gtest/gtest.h>

#include "sdk/brep/DescribedBRep.h"
#include "sdk/model/TriangleSets.h"

namespace acistest {
namespace {

using namespace cadex;
using Zemtar::Test::MakeAssembly;
using Zemtar::Test::MakeGrid;
using Zemtar::Test::MakePart;

/// Two triangles a side; `isInward` turns them round. Only the sides [first, last) of the six.
ModelData_IndexedTriangleSet Box(double size, bool isInward = false, std::size_t first = 0,
                                 std::size_t last = 6)
{
    constexpr std::array<std::array<U32, 4>, 6> Sides{
        {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}}};
    internal::TriangleArrays arrays;
    for (U32 i = 0; i < 8; ++i) {
        const auto at = [&](U32 bit) { return (i & bit) != 0 ? size : -size; };
        arrays.points.emplace_back(at(1), at(2), at(4));
    }
    for (std::size_t side = first; side < last; ++side) {
        const auto& s = Sides[side];
        const std::array<U32, 6> corners = {s[0], s[1], s[2], s[0], s[2], s[3]};
        arrays.indices.insert(arrays.indices.end(), corners.begin(), corners.end());
        if (isInward) {
            std::swap(arrays.indices.end()[-1], arrays.indices.end()[-2]);
            std::swap(arrays.indices.end()[-4], arrays.indices.end()[-5]);
        }
    }
    return internal::MakeTriangleSet(std::move(arrays));
}

std::string Written(const ModelData_Model& model, Base_LengthUnit unit)
{
    ACIS_Writer writer;
    writer.Parameters().LengthUnit() = unit;
    std::ostringstream stream;
    return writer.Transfer(model) && writer.WriteFile(stream) ? stream.str() : std::string();
}

const brep::Description& Description(const ModelData_Instance& instance)
{
    return static_cast<const brep::DescribedBRep*>(PartOf(instance).BRepRepresentation().Impl())->Data();
}

ModelData_Transformation Shift(double x, double scale = 1, bool mirror = false)
{
    ModelData_Transformation result;
    result.SetRotationPart(0, -1, 0, mirror ? -1 : 1, 0, 0, 0, 0, 1);
    result.SetTranslationPart(x, 2, 3);
    result.SetScaleFactor(scale);
    return result;
}

TEST(AcisWriter, SolidsCavitiesAndSheetsComeBackInEveryUnit)
{
    ModelData_IndexedTriangleSet lid = Box(5, false, 0, 1);
    lid.SetAppearance(ModelData_Color(1.F, 0.F, 0.F));
    ModelData_Part hollow = MakePart("hollow", {lid, Box(5, false, 1, 6), Box(2, true)});
    hollow.SetAppearance(ModelData_Color(0.F, 0.5F, 1.F));
    const ModelData_Part sheet = MakePart("sheet", {MakeGrid(4)});
    ModelData_Model model("model");
    model.AddRoot(MakeAssembly("root", {ModelData_Instance(hollow, Shift(100), "erste Wélle #1"),
                                        ModelData_Instance(hollow, Shift(-100, 2, true), "mirrored"),
                                        ModelData_Instance(sheet, "sheet"),
                                        ModelData_Instance(hollow, Shift(300), "third")}));
    for (const Base_LengthUnit unit : {Base_LU_Millimeters, Base_LU_Meters, Base_LU_Inches}) {
        SCOPED_TRACE(unit);
        const std::string bytes = Written(model, unit);
        EXPECT_EQ(bytes, Written(model, unit));
        EXPECT_EQ(bytes.substr(0, 9), "700 0 4 0");
        const auto back = Read(bytes);
        ASSERT_TRUE(back);
        const auto instances = InstancesOf(*back);
        ASSERT_EQ(instances.size(), 4U);
        EXPECT_EQ(PartOf(instances[3]).Impl(), PartOf(instances[0]).Impl()) << "equal bodies are one part";
        EXPECT_EQ(instances[0].Name().ToUTF8(), "erste Wélle #1");
        for (const std::size_t i : {0, 1}) {
            const brep::Description& body = Description(instances[i]);
            ASSERT_EQ(body.solids.size(), 1U);
            EXPECT_EQ(body.solids[0].voids.size(), 1U);
            EXPECT_EQ(body.faces.size(), 12U);
            EXPECT_EQ(body.edges.size(), 24U);
            const auto data = Properties(PartOf(instances[i]));
            EXPECT_NEAR(data.Volume(), (1000 - 64) * (i == 0 ? 1 : 8), 1e-5);
            // a movement is the body's transform, a mirror is in its points
            EXPECT_EQ(instances[i].HasTransformation(), i == 0);
            const ModelData_Transformation& at = instances[i].Transformation();
            EXPECT_NEAR(data.Centroid().X() + at.Data(0, 3), i == 0 ? 100 : -200, 1e-6);
            EXPECT_NEAR(at.Data(1, 0), i == 0 ? 1 : 0, 1e-12);
            EXPECT_EQ(test::Outline::Colour(PartOf(instances[i]).Appearance()), " rgba 255 0 0 255");
            const auto blue = std::count_if(body.faces.begin(), body.faces.end(), [](const brep::Face& face) {
                return test::Outline::Colour(face.appearance) == " rgba 0 128 255 255";
            });
            EXPECT_EQ(blue, 11);
        }
        const brep::Description& flat = Description(instances[2]);
        EXPECT_EQ(flat.solids.size(), 0U);
        EXPECT_EQ(flat.sheets.size(), 1U);
    }
}

/// An open line, a closed one, and one of another colour, beside triangles, in inches.
TEST(AcisWriter, PolylinesComeBackAsWires)
{
    const auto lines = [](const std::vector<std::vector<ModelData_Point>>& chains,
                          const ModelData_Color& colour) {
        ModelData_PolyLineSet set{initialized()};
        for (const auto& chain : chains) {
            set.AddPolyLine(chain.data(), chain.size());
        }
        set.SetAppearance(colour);
        return set;
    };
    const ModelData_Color red(1.F, 0.F, 0.F);
    ModelData_PolyRepresentation shapes{initialized()};
    shapes.Add(lines({{{0, 0, 0}, {3, 0, 0}, {3, 0, 0}, {3, 4, 0}}, {{9, 9, 9}, {9, 9, 9}}}, red));
    shapes.Add(
        lines({{{0, 0, 1}, {2, 0, 1}, {2, 2, 1}, {0, 2, 1}, {0, 0, 1}}}, ModelData_Color(0.F, 0.F, 1.F)));
    shapes.Add(Box(1));
    ModelData_Model model("model");
    model.AddRoot(
        MakeAssembly("root", {ModelData_Instance(ModelData_Part(shapes, "mixed"), Shift(50), "wired")}));
    internal::Reports::Clear();
    const std::string bytes = Written(model, Base_LU_Inches);
    EXPECT_TRUE(internal::Reports::Take().empty());
    EXPECT_EQ(bytes.substr(0, 9), "700 0 2 0");
    const auto back = Read(bytes);
    ASSERT_TRUE(back);
    const auto instances = InstancesOf(*back);
    ASSERT_EQ(instances.size(), 2U);
    EXPECT_EQ(Description(instances[0]).solids.size(), 1U);
    const brep::Description& wires = Description(instances[1]);
    ASSERT_EQ(wires.curves.size(), 6U);
    EXPECT_EQ(wires.vertices.size(), 7U) << "a closed wire ends where it begins";
    double length = 0;
    int blue = 0;
    for (const brep::LooseCurve& curve : wires.curves) {
        const brep::Edge& edge = wires.edges[static_cast<std::size_t>(curve.edge)];
        length += wires.vertices[static_cast<std::size_t>(edge.start)].point.Distance(
            wires.vertices[static_cast<std::size_t>(edge.end)].point);
        blue += test::Outline::Colour(curve.appearance) == " rgba 0 0 255 255" ? 1 : 0;
    }
    EXPECT_NEAR(length, 7 + 8, 1e-9);
    EXPECT_EQ(blue, 4);
    EXPECT_EQ(test::Outline::Colour(wires.appearance), " rgba 255 0 0 255");
    EXPECT_NEAR(instances[1].Transformation().Data(0, 3), 50, 1e-9);
    EXPECT_EQ(instances[1].Name().ToUTF8(), "wired");
}

/// A flat ring of eight triangles about a hole that touches the rim in a corner: one face whose boundary
/// passes a vertex twice.
TEST(AcisWriter, FacesWithHolesKeepTheirArea)
{
    internal::TriangleArrays arrays;
    const double places[8][2] = {{0, 0}, {6, 0}, {6, 6}, {0, 6}, {2, 2}, {4, 2}, {4, 4}, {2, 4}};
    for (const auto& place : places) {
        arrays.points.emplace_back(place[0], place[1], 1);
    }
    for (const bool isPinched : {false, true}) {
        arrays.points[4] = isPinched ? arrays.points[0] : ModelData_Point(2, 2, 1);
        arrays.indices.clear();
        for (U32 i = 0; i < 4; ++i) {
            const U32 j = (i + 1) % 4;
            arrays.indices.insert(arrays.indices.end(), {i, j, 4 + j, i, 4 + j, 4 + i});
        }
        ModelData_Model model("model");
        internal::TriangleArrays copy = arrays;
        model.AddRoot(MakePart("ring", {internal::MakeTriangleSet(std::move(copy))}));
        const auto back = Read(Written(model, Base_LU_Millimeters));
        ASSERT_TRUE(back);
        EXPECT_EQ(Description(InstancesOf(*back).at(0)).faces.size(), 1U);
        EXPECT_NEAR(AreaOf(*back), isPinched ? 36 - 8 : 36 - 4, 1e-9);
    }
}

} // namespace
} // namespace acistest
