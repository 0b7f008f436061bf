// STEP files with one thing wrong: what is lost, what stays, what is said.
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/sdk/step/MeshFacts.h"
#include "tests/sdk/step/StepTextBuilder.h"

namespace cadex::test {
namespace {

using ::testing::HasSubstr;

std::string R(int number)
{
    return StepTextBuilder::Ref(number);
}

// A cube of 2 and a can of radius 1 and height 3; the cube comes to harm.
struct Harm
{
    const char* name;
    const char* record; ///< of the cube, the first of its kind
    const char* from;
    const char* to;
};

std::string Harmed(const Harm& harm)
{
    StepTextBuilder step;
    const int cube = step.Solid(step.CubeFaces({10, 10, 10}, 2));
    const int can = step.Solid(step.CanFaces({0, 0, 0}, 1, 3));
    std::string text = step.Text({cube, can});
    const std::size_t record = text.find(harm.record);
    const std::size_t at = text.find(harm.from, record);
    EXPECT_NE(at, std::string::npos) << harm.name;
    return text.replace(at, std::string(harm.from).size(), harm.to);
}

// Bodies that lead to themselves, or deeper than any sound file goes.
std::string Chain(const std::string& type, const std::string& front, const std::string& behind, int length,
                  bool isRing)
{
    StepTextBuilder step;
    int last = step.Solid(step.CubeFaces({0, 0, 0}, 2));
    for (int i = 0; i < length; ++i) {
        last = step.Add(type + "(''," + front + R(isRing && i == 0 ? last + 2 : last) + behind + ")");
    }
    const int can = step.Solid(step.CanFaces({0, 0, 0}, 1, 3));
    return step.Text({last, can});
}

constexpr double CanVolume = 9.42477796;

} // namespace

TEST(StepDamage, CostsTheBodyThatNeedsTheRecord)
{
    constexpr Harm Harms[] = {
        {"a reference to nothing", "=VERTEX_POINT(", "#", "#9999"},
        {"a reference to another type", "=ORIENTED_EDGE(", "*,*,#", "*,*,#1+"},
        {"a face that is no face", "=CLOSED_SHELL(", "(#", "(#1,#"},
        {"a loop that is none", "=FACE_BOUND('',#", "#", "#1"},
        {"a coordinate that is no number", "=CARTESIAN_POINT(", "(10.", "(NAN"},
        {"a coordinate beyond all range", "=CARTESIAN_POINT(", "(10.", "(1.E300"},
        {"an infinite coordinate", "=CARTESIAN_POINT(", "(10.", "(1.E999"},
        {"a missing list", "=EDGE_LOOP(", "'',(", "'',"},
        {"a shell without faces", "=CLOSED_SHELL('',", "(#", "($),(#"},
        {"a shell that is none", "=MANIFOLD_SOLID_BREP('',#", "#", "#1"},
    };
    for (const Harm& harm : Harms) {
        const MeshFacts facts = ImportFacts(Harmed(harm));
        EXPECT_TRUE(facts.isRead) << harm.name;
        EXPECT_NEAR(facts.mass, CanVolume, 1e-4) << harm.name;
        EXPECT_NEAR(facts.high[0], 1, 1e-6) << harm.name << ": nothing of the cube is left";
        EXPECT_EQ(facts.openEdges, 0) << harm.name;
        EXPECT_NE(facts.reports, "") << harm.name;
    }
}

TEST(StepDamage, FailsWhenNothingIsLeft)
{
    StepTextBuilder step;
    std::string text = step.Text({step.Solid(step.CubeFaces({0, 0, 0}, 2))});
    text.replace(text.find("CLOSED_SHELL"), 12, "CLOSED_BOTTLE");
    const MeshFacts facts = ImportFacts(text);
    EXPECT_FALSE(facts.isRead);
    EXPECT_THAT(facts.reports, HasSubstr("a shell that is none, CLOSED_BOTTLE"));
    EXPECT_THAT(facts.reports, HasSubstr("nothing in the file can be shown"));
}

TEST(StepDamage, ARepresentationWithoutOwnerStandsForItself)
{
    StepTextBuilder step;
    std::string text = step.Text({step.Solid(step.CubeFaces({0, 0, 0}, 2))});
    text.replace(text.find("SHAPE_DEFINITION_REPRESENTATION"), 5, "SHARK");
    const MeshFacts facts = ImportFacts(text);
    EXPECT_TRUE(facts.isRead);
    EXPECT_NEAR(facts.mass, 8, 1e-6);
}

TEST(StepDamage, WhatNoBodyNeedsRefusesNothing)
{
    StepTextBuilder step;
    const int cube = step.Solid(step.CubeFaces({0, 0, 0}, 2));
    const int text = step.Add("TEXT_LITERAL('','note',#99999,'baseline left',.RIGHT.,#99998)");
    step.Add("DRAUGHTING_CALLOUT('',(#99997))");
    step.Add("ANNOTATION_OCCURRENCE('',(),#" + std::to_string(text) + ")");
    const MeshFacts facts = ImportFacts(step.Text({text, cube}));
    EXPECT_NEAR(facts.mass, 8, 1e-6);
}

TEST(StepDamage, AFaceOfAnUnknownKindMakesASolidASheet)
{
    StepTextBuilder step;
    std::string text = step.Text({step.Solid(step.CubeFaces({0, 0, 0}, 2))});
    text.replace(text.find("=PLANE("), 7, "=BLOB(");
    const MeshFacts facts = ImportFacts(text);
    EXPECT_EQ(facts.triangles, 10);
    EXPECT_EQ(facts.mass, 0) << "what is open claims no volume";
    EXPECT_THAT(facts.reports, HasSubstr("a face: a surface of an unknown kind, BLOB"));
}

TEST(StepDamage, CirclesAndDepthEnd)
{
    for (const bool isRing : {true, false}) {
        for (const auto& [type, front, behind] :
             {std::array{"CSG_SOLID", "", ""},
              {"SHELL_BASED_SURFACE_MODEL", "(", ")"},
              {"ORIENTED_CLOSED_SHELL", "*,", ",.F."},
              {"ORIENTED_FACE", "*,", ",.F."},
              {"TRIMMED_CURVE", "", ",(PARAMETER_VALUE(0.)),(PARAMETER_VALUE(1.)),.T.,.PARAMETER."},
              {"OFFSET_SURFACE", "", ",1.,.F."},
              {"TESSELLATED_GEOMETRIC_SET", "(", ")"},
              {"CONNECTED_EDGE_SET", "(", ")"},
              {"COMPOSITE_CURVE", "(", "),.F."},
              {"TESSELLATED_SOLID", "(", "),$"}}) {
            const MeshFacts facts = ImportFacts(Chain(type, front, behind, isRing ? 2 : 100'000, isRing));
            EXPECT_TRUE(facts.isRead) << type;
            EXPECT_GT(facts.mass, CanVolume - 1e-4) << type;
        }
    }
}

// Each level maps the one below twice: a file of a few lines that would be a body of 2^60 cubes.
TEST(StepDamage, MappedItemsThatDoubleEnd)
{
    StepTextBuilder step;
    const int context = step.Context();
    std::vector<int> items = {step.Solid(step.CubeFaces({0, 0, 0}, 2))};
    const int can = step.Solid(step.CanFaces({0, 0, 0}, 1, 3));
    for (int level = 0; level < 30; ++level) {
        const int axes = step.Axes({0, 0, 0});
        const int map =
            step.Add("REPRESENTATION_MAP(" + R(axes) + "," + R(step.Representation(items, context)) + ")");
        items.clear();
        for (int i = 0; i < 2; ++i) {
            items.push_back(step.Add("MAPPED_ITEM(''," + R(map) + "," + R(axes) + ")"));
        }
    }
    items.push_back(can);
    const MeshFacts facts = ImportFacts(step.Text(items));
    EXPECT_TRUE(facts.isRead);
    EXPECT_THAT(facts.reports, HasSubstr("records that lead to each other without end"));
}

TEST(StepDamage, GeometryThatIsNone)
{
    const struct
    {
        const char* name;
        std::function<int(StepTextBuilder&)> surface;
    } Cases[] = {
        {"no radius",
         [](auto& s) {
             return s.On("CYLINDRICAL_SURFACE", s.Axes({0, 0, 0}), "0.");
         }},
        {"a negative radius",
         [](auto& s) {
             return s.On("SPHERICAL_SURFACE", s.Axes({0, 0, 0}), "-1.");
         }},
        {"a flat cone",
         [](auto& s) {
             return s.On("CONICAL_SURFACE", s.Axes({0, 0, 0}), "1.,1.5707963267949");
         }},
        {"an axis without length",
         [](auto& s) {
             return s.On("PLANE", s.Axes({0, 0, 0}, {0, 0, 0}));
         }},
        {"uneven rows",
         [](auto& s) {
             return s.Add("BEZIER_SURFACE('',1,1,((" + R(s.Point({0, 0, 0})) + "," + R(s.Point({1, 0, 0})) +
                          "),(" + R(s.Point({0, 1, 0})) + ")),.UNSPECIFIED.,.F.,.F.,.F.)");
         }},
        {"knots that do not fit",
         [](auto& s) {
             const std::string row = "(" + R(s.Point({0, 0, 0})) + "," + R(s.Point({1, 0, 0})) + ")";
             return s.Add("B_SPLINE_SURFACE_WITH_KNOTS('',1,1,(" + row + "," + row +
                          "),.UNSPECIFIED.,.F.,.F.,.F.,(2,2),(9,2),(0.,1.),(0.,1.),.UNSPECIFIED.)");
         }},
        {"a huge degree",
         [](auto& s) {
             const std::string row = "(" + R(s.Point({0, 0, 0})) + "," + R(s.Point({1, 0, 0})) + ")";
             return s.Add("BEZIER_SURFACE('',4000000000,1,(" + row + "," + row +
                          "),.UNSPECIFIED.,.F.,.F.,.F.)");
         }},
        {"a line turned about itself",
         [](auto& s) {
             return s.Add("SURFACE_OF_REVOLUTION(''," + R(s.LineThrough({0, 0, 0}, {0, 0, 1})) + "," +
                          R(s.Axis({0, 0, 0}, {0, 0, 1})) + ")");
         }},
    };
    for (const auto& one : Cases) {
        StepTextBuilder step;
        const int can = step.Solid(step.CanFaces({0, 0, 0}, 1, 3));
        const int surface = one.surface(step);
        const int vertex = step.Vertex({5, 5, 5});
        const int ring = step.Edge(vertex, vertex, step.Circle({5, 5, 5}, 0.5));
        const int face = step.Face(surface, {step.Bound({ring})});
        const int solid = step.Solid({face, step.Face(surface, {step.BoundAt(vertex)})});
        const MeshFacts facts = ImportFacts(step.Text({solid, can}));
        EXPECT_TRUE(facts.isRead) << one.name;
        EXPECT_GT(facts.triangles, 0) << one.name;
        EXPECT_LT(facts.high[0], 1e3) << one.name;
        EXPECT_NE(facts.reports, "") << one.name;
    }
}

} // namespace cadex::test
