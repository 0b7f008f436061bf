// Product structure of STEP files: trees, names, placements, sharing, units, properties, and models that are
// refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "sdk/mesh/Placement.h"
#include "sdk/model/BRepImpl.h"
#include "tests/sdk/step/StepModels.h"
#include "tests/sdk/step/XcafReadback.h"

namespace {

using namespace cadex;

ModelData_Transformation Placement(const double (&r)[9], double x, double y, double z, double scale = 1)
{
    ModelData_Transformation t;
    t.SetRotationPart(r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7], r[8]);
    t.SetTranslationPart(x, y, z);
    t.SetScaleFactor(scale);
    return t;
}

constexpr double Upright[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
constexpr double Turned[9] = {0, -1, 0, 1, 0, 0, 0, 0, 1};
constexpr double Tilted[9] = {0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6};
constexpr double Mirrored[9] = {-1, 0, 0, 0, 1, 0, 0, 0, 1};
constexpr double Stretched[9] = {1, 0, 0, 0, 2, 0, 0, 0, 0.5};
constexpr double Sheared[9] = {1, 0.5, 0, 0, 1, 0.25, 0, 0, 1};
constexpr double Flattened[9] = {1, 0, 0, 0, 1, 0, 0, 0, 0};

/// Every triangle of a model in the world, by the transformations' own arithmetic.
class WorldTriangles : public ModelData_Model::VoidElementVisitor
{
public:
    using VoidElementVisitor::VisitEnter;
    using VoidElementVisitor::VisitLeave;
    std::vector<Corners> triangles;

    bool VisitEnter(const ModelData_Instance& instance) override
    {
        myPath.push_back(instance.HasTransformation() ? instance.Transformation()
                                                      : ModelData_Transformation());
        return true;
    }
    void VisitLeave(const ModelData_Instance&) override { myPath.pop_back(); }
    void operator()(const ModelData_Part& part) override
    {
        const auto& set = static_cast<const ModelData_IndexedTriangleSet&>(
            part.PolyRepresentation(ModelData_RM_Poly).Get()[0]);
        bool mirrored = false;
        for (const ModelData_Transformation& t : myPath) {
            mirrored ^= mesh::Determinant(mesh::AffineOf(t).linear) < 0;
        }
        for (int f = 0; f < set.NumberOfFaces(); ++f) {
            Corners corners;
            for (const int k : {0, mirrored ? 2 : 1, mirrored ? 1 : 2}) {
                double p[3] = {set.Coordinate(f, k).X(), set.Coordinate(f, k).Y(), set.Coordinate(f, k).Z()};
                for (std::size_t i = myPath.size(); i-- > 0;) {
                    myPath[i].Transform(p[0], p[1], p[2]);
                }
                corners.push_back({p[0], p[1], p[2]});
            }
            triangles.push_back(corners);
        }
    }

private:
    std::vector<ModelData_Transformation> myPath;
};

/// The triangle beginning at its least corner, on a grid far coarser than any rounding and finer than the
/// model.
std::vector<std::vector<long>> Canonical(const std::vector<Corners>& triangles, double grid)
{
    // Off the round numbers, which would fall on either side of a boundary.
    const auto cell = [grid](double x) { return std::lround(x / grid + 0.3141592); };
    std::vector<std::vector<long>> result;
    for (const Corners& corners : triangles) {
        std::vector<std::vector<long>> rounded;
        for (const auto& p : corners) {
            rounded.push_back({cell(p[0]), cell(p[1]), cell(p[2])});
        }
        std::rotate(rounded.begin(), std::min_element(rounded.begin(), rounded.end()), rounded.end());
        std::vector<long> flat;
        for (const auto& p : rounded) {
            flat.insert(flat.end(), p.begin(), p.end());
        }
        result.push_back(flat);
    }
    std::sort(result.begin(), result.end());
    return result;
}

void ExpectSameWorld(const ModelData_Model& model, const XcafReadback& file, double grid)
{
    WorldTriangles expected;
    model.Accept(expected);
    ASSERT_TRUE(file.ok);
    EXPECT_EQ(Canonical(file.triangles, grid), Canonical(expected.triangles, grid));
}

TEST(StepStructure, KeepsTreeAndNamesInAnyScript)
{
    const char* name = "Zahnrad \u00fc \u65e5\u672c \U0001F600 it's a \\ \"quoted\" one\tx";
    const ModelData_Part part = CubePart(name);
    ModelData_Assembly inner("inner");
    inner.AddInstance(ModelData_Instance(part, Placement(Turned, 1, 2, 3), name));
    inner.AddInstance(ModelData_Instance(part, ""));
    inner.AddInstance(ModelData_Instance("of nothing"));
    ModelData_Assembly root("root");
    root.AddInstance(ModelData_Instance(inner, "left"));
    root.AddInstance(ModelData_Instance(inner, Placement(Tilted, 100, 0, 0), "right"));
    root.AddInstance(ModelData_Instance(CubePart("", 2), "unnamed part"));
    root.AddInstance(ModelData_Instance(ModelData_Assembly("empty"), "e"));
    ScratchFolder folder;
    ASSERT_TRUE(WriteStep(ModelOf(root), folder / "tree.step"));
    const XcafReadback file(folder / "tree.step");
    const std::string leaf = std::string("part ") + name + "\n";
    const std::string in =
        "  assembly inner\n   instance " + std::string(name) + "\n    " + leaf + "   instance \n    " + leaf;
    EXPECT_EQ(file.tree, "assembly root\n instance left\n" + in + " instance right\n" + in +
                             " instance unnamed part\n  part \n instance e\n  part empty\n");
    ExpectSameWorld(ModelOf(root), file, 1e-3);
}

TEST(StepStructure, WritesEveryRootAlsoBareInstances)
{
    ModelData_Model model("both");
    model.AddRoot(CubePart("a", 1));
    model.AddRoot(ModelData_Instance(CubePart("b", 2), Placement(Turned, 5, 5, 5), "placed"));
    model.AddRoot(CubePart("c", 3));
    ScratchFolder folder;
    ASSERT_TRUE(WriteStep(model, folder / "roots.step"));
    const XcafReadback file(folder / "roots.step");
    EXPECT_EQ(CountOf(file.tree, "part "), 3u);
    EXPECT_NE(file.tree.find("assembly both\n instance placed\n  part b\n"), std::string::npos);
    ExpectSameWorld(model, file, 1e-3);
}

TEST(StepStructure, PlacesWhatStepCannotScaleMirrorOrShear)
{
    const ModelData_Part part = CubePart("part");
    ModelData_Assembly inner("inner");
    inner.AddInstance(ModelData_Instance(part, Placement(Tilted, 3, 4, 5), "tilted"));
    inner.AddInstance(ModelData_Instance(part, Placement(Stretched, 20, 0, 0), "stretched"));
    inner.AddInstance(ModelData_Instance(part, Placement(Mirrored, 0, 40, 0), "mirrored"));
    ModelData_Assembly root("root");
    double x = 0;
    for (const auto* matrix : {&Upright, &Turned, &Mirrored, &Stretched, &Sheared}) {
        for (const double scale : {1., 0.125, 3.}) {
            x += 100;
            root.AddInstance(ModelData_Instance(inner, Placement(*matrix, x, -x, 7, scale), "i"));
        }
    }
    ScratchFolder folder;
    ASSERT_TRUE(WriteStep(ModelOf(root), folder / "matrices.step"));
    const XcafReadback file(folder / "matrices.step");
    ExpectSameWorld(ModelOf(root), file, 1e-3);
    // A mirror keeps the bodies' insides inside: every determinant counts with its size.
    EXPECT_NEAR(file.volume, 3 * 1000. * 5 * (1 + 1 / 512. + 27), 1e-3);
}

TEST(StepStructure, FlattenedPartsBecomeSurfaces)
{
    ModelData_Assembly root("root");
    root.AddInstance(ModelData_Instance(CubePart("cube"), Placement(Flattened, 1, 2, 3), "flat"));
    root.AddInstance(
        ModelData_Instance(CubePart("cube"), Placement({0, 0, 0, 0, 0, 0, 0, 0, 0}, 1, 2, 3), "gone"));
    ScratchFolder folder;
    ASSERT_TRUE(WriteStep(ModelOf(root), folder / "flat.step"));
    const XcafReadback file(folder / "flat.step");
    ASSERT_TRUE(file.ok);
    EXPECT_EQ(file.solids, 0);
    EXPECT_EQ(file.triangles.size(), 4u); // top and bottom; the sides have no area
}

TEST(StepStructure, SharesPartsUnderOneFactorAndStaysSmall)
{
    ModelData_Assembly root("root");
    ModelData_Assembly group("group");
    const ModelData_Part part = CubePart("screw");
    const std::size_t count = 1000;
    for (std::size_t i = 0; i < count; ++i) {
        const double a = 0.1 * static_cast<double>(i);
        // Single precision, as hosts keep it: no matrix is exactly a rotation.
        const double c = static_cast<float>(std::cos(a));
        const double s = static_cast<float>(std::sin(a));
        group.AddInstance(ModelData_Instance(
            part, Placement({c, -s, 0, s, c, 0, 0, 0, 1}, a / 7, 1 / (a + 3), -a), "instance of the screw"));
    }
    root.AddInstance(ModelData_Instance(group, Placement(Turned, 0, 0, 0, 1000), "top"));
    ScratchFolder folder;
    ASSERT_TRUE(WriteStep(ModelOf(root), folder / "many.step"));
    const std::string text = ContentOf(folder / "many.step");
    EXPECT_EQ(CountOf(text, "FACETED_BREP("), 1u);
    EXPECT_EQ(CountOf(text, "NEXT_ASSEMBLY_USAGE_OCCURRENCE("), count + 1);
    EXPECT_LT(text.size() / count, 1000u);
    const XcafReadback file(folder / "many.step");
    EXPECT_EQ(file.parts, 1);
    ExpectSameWorld(ModelOf(root), file, 10); // in a world of 140 m; a grid that rounding does not cross
}

TEST(StepStructure, GivesTheSameMillimetresInEveryUnit)
{
    ModelData_Assembly root("root");
    root.AddInstance(ModelData_Instance(CubePart("cube", 12.5), Placement(Tilted, 100, 200, 300, 2), "i"));
    ScratchFolder folder;
    for (int unit = Base_LU_Millimeters; unit <= Base_LU_Miles; ++unit) {
        SCOPED_TRACE(unit);
        const auto path = folder / "unit.step";
        ASSERT_TRUE(WriteStep(ModelOf(root), path, static_cast<Base_LengthUnit>(unit)));
        const XcafReadback file(path);
        ExpectSameWorld(ModelOf(root), file, 1e-3);
        EXPECT_NEAR(file.volume, 25 * 25 * 25, 1e-6);
    }
    ASSERT_TRUE(WriteStep(ModelOf(root), folder / "inch.step", Base_LU_Inches));
    EXPECT_EQ(CountOf(ContentOf(folder / "inch.step"), "CONVERSION_BASED_UNIT('INCH'"), 1u);
}

TEST(StepStructure, WritesPropertiesAsUserDefinedAttributes)
{
    ModelData_PropertyTable table;
    table.Add("Stahl", Base_UTF16String("\u92fc"));
    table.Add("n", I64{1} << 40);
    table.Add("x", 0.25);
    table.Add("nan", std::numeric_limits<double>::quiet_NaN());
    table.Add("t", ModelData_PropertyTable::TimeType(86400));
    table.Add("p", ModelData_Point(1, 2.5, -3));
    table.Add("n", 42);
    ModelData_Part part = CubePart("part");
    part.AddProperties(table);
    ScratchFolder folder;
    ASSERT_TRUE(WriteStep(ModelOf(part), folder / "properties.step"));
    const std::string text = ContentOf(folder / "properties.step");
    std::size_t at = 0;
    for (const char* entity :
         {"DESCRIPTIVE_REPRESENTATION_ITEM('Stahl','\\X2\\92FC\\X0\\')",
          "DESCRIPTIVE_REPRESENTATION_ITEM('n','1099511627776')",
          "VALUE_REPRESENTATION_ITEM('x',RATIO_MEASURE(0.25))",
          "DESCRIPTIVE_REPRESENTATION_ITEM('nan','nan')",
          "DESCRIPTIVE_REPRESENTATION_ITEM('t','1970-01-02T00:00:00Z')",
          "DESCRIPTIVE_REPRESENTATION_ITEM('p','1. 2.5 -3.')", "INTEGER_REPRESENTATION_ITEM('n',42)",
          "PROPERTY_DEFINITION('user defined attribute'"}) {
        at = text.find(entity, at);
        EXPECT_NE(at, std::string::npos) << entity;
    }
}

TEST(StepStructure, RefusesWhatItCannotWriteRight)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const auto refused = [](const ModelData_Instance& instance) {
        ModelData_Assembly root("root");
        root.AddInstance(ModelData_Instance(CubePart("good"), "good"));
        root.AddInstance(instance);
        return !STEP_Writer().Transfer(ModelOf(root));
    };
    const ModelData_Part part = CubePart("part");
    ModelData_Instance ofInstance("outer");
    ofInstance.SetReference(ModelData_Instance(part));
    EXPECT_TRUE(refused(ModelData_Instance(part, Placement({nan, 0, 0, 0, 1, 0, 0, 0, 1}, 0, 0, 0))));
    EXPECT_TRUE(refused(ModelData_Instance(part, Placement(Turned, 0, inf, 0))));
    EXPECT_TRUE(refused(ModelData_Instance(part, Placement(Turned, 1e300, 0, 0, 1e300))));
    EXPECT_TRUE(refused(ofInstance));
    EXPECT_FALSE(refused(ModelData_Instance(part)));

    ModelData_Assembly loop("loop");
    ModelData_Instance around("around");
    loop.AddInstance(around);
    ModelData_Assembly above("above");
    above.AddInstance(ModelData_Instance(loop));
    around.SetReference(above);
    EXPECT_FALSE(STEP_Writer().Transfer(ModelOf(loop)));
    around.SetReference(ModelData_Part());

    ModelData_Part exact("exact shape, never meshed");
    exact.AddRepresentation(internal::MakeHandle<ModelData_BRepRepresentation>(new internal::BRepImpl));
    EXPECT_FALSE(STEP_Writer().Transfer(ModelOf(exact)));
}

TEST(StepStructure, WritesEmptyAndVeryDeepModels)
{
    ScratchFolder folder;
    EXPECT_TRUE(WriteStep(ModelData_Model(), folder / "nothing.step"));
    ModelData_Part bare("without a shape");
    EXPECT_TRUE(WriteStep(ModelOf(bare), folder / "bare.step"));
    EXPECT_TRUE(XcafReadback(folder / "bare.step").ok);
    ModelData_SceneGraphElement top = CubePart("bottom");
    for (int i = 0; i < 20'000; ++i) {
        ModelData_Assembly above("level");
        above.AddInstance(ModelData_Instance(top, Placement(Turned, 1, 0, 0)));
        top = above;
    }
    EXPECT_TRUE(WriteStep(ModelOf(top), folder / "deep.step"));
}

} // namespace
