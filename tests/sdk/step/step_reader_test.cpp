// STEP files as the model shows them.
#include <array>
#include <functional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sdk/occt/EngineScope.h"
#include "sdk/step/StepBodies.h"
#include "sdk/step/StepFacets.h"
#include "tests/sdk/MeshModels.h"
#include "tests/sdk/ReadModels.h"
#include "tests/sdk/SeedFiles.h"

namespace cadex::test {
namespace {

using ::testing::HasSubstr;

// A cube of 20 (in the unit) made of polygons: one quad is coloured, `inward` turns all loops and planes. The
// product stands twice in an assembly, the second time turned by 90 degrees about z and moved; a polyline
// lies beside.
std::string FacetedCube(const std::string& unit, bool inward, const std::string& extra = "")
{
    std::string text = R"(ISO-10303-21;
HEADER;
FILE_DESCRIPTION((''),'2;1');
FILE_NAME('C:\\parts\\w\X2\00FC\X0\rfel.stp','2001-02-03T04:05:06+01:00',('A','B'),(''),'','','');
FILE_SCHEMA(('AUTOMOTIVE_DESIGN { 1 0 10303 214 1 1 1 1 }'));
ENDSEC;
DATA;
#1=APPLICATION_CONTEXT('');
#2=PRODUCT_CONTEXT('',#1,'mechanical');
#3=PRODUCT_DEFINITION_CONTEXT('part definition',#1,'design');
#4=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#5,#6,#7))REPRESENTATION_CONTEXT('',''));
#5=)" + unit + R"(
#6=(NAMED_UNIT(*)PLANE_ANGLE_UNIT()SI_UNIT($,.RADIAN.));
#7=(NAMED_UNIT(*)SI_UNIT($,.STERADIAN.)SOLID_ANGLE_UNIT());
#8=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));
#9=DIMENSIONAL_EXPONENTS(1.,0.,0.,0.,0.,0.,0.);
#10=PRODUCT('cube','','of quads',(#2));
#11=PRODUCT_DEFINITION_FORMATION('','',#10);
#12=PRODUCT_DEFINITION('design','',#11,#3);
#13=PRODUCT_DEFINITION_SHAPE('','',#12);
#14=SHAPE_DEFINITION_REPRESENTATION(#13,#15);
#15=SHAPE_REPRESENTATION('',(#30),#4);
#16=SHAPE_REPRESENTATION_RELATIONSHIP('','',#15,#17);
#17=FACETED_BREP_SHAPE_REPRESENTATION('',(#70,#30),#4);
#18=SHAPE_REPRESENTATION_RELATIONSHIP('','',#15,#19);
#19=GEOMETRICALLY_BOUNDED_WIREFRAME_SHAPE_REPRESENTATION('',(#90),#4);
#20=PRODUCT('top','Top','',(#2));
#21=PRODUCT_DEFINITION_FORMATION('','',#20);
#22=PRODUCT_DEFINITION('design','',#21,#3);
#23=PRODUCT_DEFINITION_SHAPE('','',#22);
#24=SHAPE_DEFINITION_REPRESENTATION(#23,#25);
#25=SHAPE_REPRESENTATION('',(#30,#31),#4);
#30=AXIS2_PLACEMENT_3D('',#32,#33,#34);
#31=AXIS2_PLACEMENT_3D('',#35,#33,#36);
#32=CARTESIAN_POINT('',(0.,0.,0.));
#33=DIRECTION('',(0.,0.,1.));
#34=DIRECTION('',(1.,0.,0.));
#35=CARTESIAN_POINT('',(5.,6.,7.));
#36=DIRECTION('',(0.,1.,0.));
#40=NEXT_ASSEMBLY_USAGE_OCCURRENCE('1','left','',#22,#12,$);
#41=PRODUCT_DEFINITION_SHAPE('','',#40);
#42=(REPRESENTATION_RELATIONSHIP('','',#15,#25)REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#43)SHAPE_REPRESENTATION_RELATIONSHIP());
#43=ITEM_DEFINED_TRANSFORMATION('','',#30,#30);
#44=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#42,#41);
#50=NEXT_ASSEMBLY_USAGE_OCCURRENCE('2','right','',#22,#12,$);
#51=PRODUCT_DEFINITION_SHAPE('','',#50);
#52=(REPRESENTATION_RELATIONSHIP('','',#15,#25)REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#53)SHAPE_REPRESENTATION_RELATIONSHIP());
#53=ITEM_DEFINED_TRANSFORMATION('','',#30,#31);
#54=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#52,#51);
#60=STYLED_ITEM('',(#61),#70);
#61=PRESENTATION_STYLE_ASSIGNMENT((#62));
#62=SURFACE_STYLE_USAGE(.BOTH.,#63);
#63=SURFACE_SIDE_STYLE('',(#64,#67));
#64=SURFACE_STYLE_FILL_AREA(#65);
#65=FILL_AREA_STYLE('',(#66));
#66=FILL_AREA_STYLE_COLOUR('',#69);
#67=SURFACE_STYLE_RENDERING_WITH_PROPERTIES(.NORMAL_SHADING.,#69,(#68));
#68=SURFACE_STYLE_TRANSPARENT(0.25);
#69=COLOUR_RGB('',0.2,0.4,0.6);
#70=FACETED_BREP('',#71);
#71=CLOSED_SHELL('',(#201,#202,#203,#204,#205,#206));
#72=OVER_RIDING_STYLED_ITEM('',(#73),#203,#60);
#73=PRESENTATION_STYLE_ASSIGNMENT((#74));
#74=SURFACE_STYLE_USAGE(.POSITIVE.,#75);
#75=SURFACE_SIDE_STYLE('',(#76));
#76=SURFACE_STYLE_FILL_AREA(#77);
#77=FILL_AREA_STYLE('',(#78));
#78=FILL_AREA_STYLE_COLOUR('',#79);
#79=DRAUGHTING_PRE_DEFINED_COLOUR('yellow');
#90=GEOMETRIC_CURVE_SET('',(#91));
#91=POLYLINE('',(#100,#107,#103));
)";
    for (int i = 0; i < 8; ++i) {
        text += "#" + std::to_string(100 + i) + "=CARTESIAN_POINT('',(" + ((i & 1) != 0 ? "20." : "0.") +
                ((i & 2) != 0 ? ",20." : ",0.") + ((i & 4) != 0 ? ",20.));\n" : ",0.));\n");
    }
    constexpr std::array<std::array<int, 4>, 6> Quads = {
        {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}}};
    constexpr const char* Normals[] = {"0.,0.,-1.", "0.,0.,1.",  "0.,-1.,0.",
                                       "0.,1.,0.",  "-1.,0.,0.", "1.,0.,0."};
    for (std::size_t f = 0; f < Quads.size(); ++f) {
        const std::string k = std::to_string(f + 1);
        const auto point = [&](std::size_t i) {
            return "#" + std::to_string(100 + Quads[f][inward ? 3 - i : i]);
        };
        text += "#20" + k + "=FACE_SURFACE('',(#21" + k + "),#23" + k + (inward ? ",.F.);\n" : ",.T.);\n");
        text += "#21" + k + "=FACE_OUTER_BOUND('',#22" + k + ",.T.);\n";
        text += "#22" + k + "=POLY_LOOP('',(" + point(0) + "," + point(1) + "," + point(2) + "," + point(3) +
                "));\n";
        text += "#23" + k + "=PLANE('',#24" + k + ");\n#24" + k + "=AXIS2_PLACEMENT_3D('',#" +
                std::to_string(100 + Quads[f][0]) + ",#25" + k + ",$);\n#25" + k + "=DIRECTION('',(" +
                Normals[f] + "));\n";
    }
    return text + extra + "ENDSEC;\nEND-ISO-10303-21;\n";
}

constexpr const char* Millimetres = "(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));";
constexpr const char* Inches = "(CONVERSION_BASED_UNIT('INCH',#302)LENGTH_UNIT()NAMED_UNIT(#9));\n"
                               "#302=LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(25.4),#8);";

std::string ImportText(const std::string& text)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path() / "file.stp", text);
    ModelData_Model model;
    return Import(folder.Path() / "file.stp", model) ? Outline::Of(model) : "not read";
}

// What one of the two readers of bodies makes of a text.
std::string Through(const std::string& bytes, bool described)
{
    part21::ClearText text;
    step::StepContent content;
    ModelData_Model model;
    if (!text.Load(bytes) || !step::ReadStepContent(text, "file", content)) {
        return "refused";
    }
    bool done = false;
    if (described) {
        done = occt::RunGuarded(occt::EngineUse::Geometry, [&] {
            step::StepBodies geometry;
            geometry.Read(text, content, STEP_ReaderParameters::All);
            return step::BuildStepModel(content, geometry, model);
        });
    } else {
        step::StepFacets geometry;
        done = geometry.Read(text, content) && step::BuildStepModel(content, geometry, model);
    }
    ModelAlgo_BRepMesher().Compute(model, true);
    return done ? Outline::Of(model) : "not read";
}

} // namespace

TEST(StepReader, TheExampleIsWhole)
{
    ModelData_Model model;
    ASSERT_TRUE(Import(ZEMTAR_SOURCE_DIR "/examples/pump.step", model));
    EXPECT_EQ(model.NumberOfRoots(), 1U);
    const std::string outline = Outline::Of(model);
    for (const char* line : {
             "assembly 'Kreiselpumpe ポンプ' [Auftrag = 2024-117 \"Nordkai\"] [Drehzahl = i32 2900] "
             "[Leistung = real 1.5] "
             "[Freigegeben = true] [Time Stamp = time 1714979289] [Author = Design office] [Organization = "
             "Pump works]",
             "  instance 'Läufer' at 0 0 -6\n    assembly 'Läufer ロータ'\n      instance 'Welle'\n        "
             "part 'Вал' rgba "
             "184 184 191 255 [Материал = Сталь 45] volume",
             "        part '叶轮' rgba 217 140 51 255 [材料 = CuSn10] [叶片数 = i32 7] volume",
             "    part 'Gehäuse' rgba 41 84 133 255 [Werkstoff = EN-GJL-250] [Dichte = real 7200] volume",
             " triangles rgba 204 209 214 255\n", // the machined face
             "  instance 'Deckel' [Hinweis = mit 6 Nm anziehen] at 0 0 41\n    part 'Deckel (Sichtglas)' "
             "rgba 140 199 230 89",
             "      instance 'Schraube 8' at 37.477 -37.477 0 x axis 0.707 -0.707 0\n",
             "    part 'Achse' rgba 217 26 26 255\n      2 points rgba 217 26 26 255\n",
         }) {
        EXPECT_THAT(outline, HasSubstr(line));
    }
}

TEST(StepReader, InstancesCarryTheirOwnColours)
{
    const std::string outline = ImportText(StepSeeds()[1].bytes);
    EXPECT_THAT(outline, HasSubstr("  instance 'first'\n    part 'Box' rgba 51 102 153 128"));
    EXPECT_THAT(
        outline,
        HasSubstr("  instance 'second' rgba 0 255 0 255 at 100 0 0\n    part 'Box' rgba 51 102 153 128"));
    EXPECT_THAT(outline, HasSubstr(" points\n")) << "the loose curve beside solid and face";
}

TEST(StepReader, FacetsAreWhatTheirDescriptionsAre)
{
    for (const bool inward : {false, true}) {
        for (const char* unit : {Millimetres, Inches}) {
            const std::string text = FacetedCube(unit, inward);
            const std::string facets = Through(text, false);
            EXPECT_EQ(facets, Through(text, true)) << text.substr(text.find("#5="), 60);
            EXPECT_THAT(facets, HasSubstr(unit == Inches ? "volume 1.31097e+08" : "volume 8000"));
            EXPECT_THAT(facets, HasSubstr("  instance 'right' at " +
                                          std::string(unit == Inches ? "127 152.4 177.8" : "5 6 7") +
                                          " x axis 0 1 0\n"));
            EXPECT_THAT(facets,
                        HasSubstr("10 triangles rgba 51 102 153 191\n      2 triangles rgba 255 255 0 255\n"
                                  "      3 points"));
        }
    }
    // Some writers leave out the prefix where they mean none.
    EXPECT_EQ(Through(FacetedCube("(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.METRE.));", false), false),
              Through(FacetedCube("(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));", false), false));
    // A body with shared edges and lines.
    EXPECT_EQ(Through(StepSeeds()[2].bytes, false), Through(StepSeeds()[2].bytes, true));
    // Faces with holes, curved ones and small polyhedra are described.
    EXPECT_EQ(Through(StepSeeds()[0].bytes, false), "not read");
}

TEST(StepReader, PropertiesKeepTypesAndComeInMillimetres)
{
    const std::string outline =
        ImportText(FacetedCube(Inches, false, R"(#400=PROPERTY_DEFINITION('material property','x',#12);
#401=REPRESENTATION('density',(#402),#4);
#402=MEASURE_REPRESENTATION_ITEM('density measure',NUMERIC_MEASURE(7.85),#403);
#403=DERIVED_UNIT((#404));
#404=DERIVED_UNIT_ELEMENT(#405,1.);
#405=(MASS_UNIT()NAMED_UNIT(*)SI_UNIT(.KILO.,.GRAM.));
#406=PROPERTY_DEFINITION_REPRESENTATION(#400,#401);
#410=PROPERTY_DEFINITION('user defined attribute',$,#41);
#411=REPRESENTATION('',(#412,#413,#414,#415,#416,#417),#4);
#412=MEASURE_REPRESENTATION_ITEM('length',LENGTH_MEASURE(2.),#5);
#413=(LENGTH_MEASURE_WITH_UNIT()MEASURE_REPRESENTATION_ITEM()MEASURE_WITH_UNIT(POSITIVE_LENGTH_MEASURE(3.),#8)REPRESENTATION_ITEM('complex'));
#414=INTEGER_REPRESENTATION_ITEM('large',5000000000);
#415=BOOLEAN_REPRESENTATION_ITEM('flag',.F.);
#416=CARTESIAN_POINT('centre',(1.,2.,3.));
#417=DESCRIPTIVE_REPRESENTATION_ITEM('','a
 \X2\6F22D83DDE00\X0\ ''b''');
#418=PROPERTY_DEFINITION_REPRESENTATION(#410,#411);
)"));
    EXPECT_THAT(outline, HasSubstr("part 'cube' [Description = of quads] [density = real 7.85]"));
    EXPECT_THAT(outline,
                HasSubstr("instance 'left' [length = real 50.8] [complex = real 3] [large = i64 5000000000] "
                          "[flag = false] [centre = point real 25.4 / real 50.8 / real 76.2] [user defined "
                          "attribute = a 漢😀 'b']"));
    EXPECT_THAT(outline,
                HasSubstr("assembly 'Top' [Product ID = top] [Time Stamp = time 981169506] [Author = A, B]"));
}

} // namespace cadex::test
