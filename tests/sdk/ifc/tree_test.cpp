// The tree that a file becomes: names, properties, looks, shared parts, openings, drawings.
#include <cmath>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/sdk/ifc/IfcText.h"
#include "tests/sdk/ifc/ReadBack.h"

namespace ifctest {
namespace {

using std::string;

string FileText(const string& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

string Property(IfcText& f, const string& name, const string& value, const string& unit = "$")
{
    return f.Add("IFCPROPERTYSINGLEVALUE('" + name + "',$," + value + "," + unit + ")");
}

void AddSet(IfcText& f, const string& object, const string& set)
{
    f.Add("IFCRELDEFINESBYPROPERTIES(" + f.Guid() + ",$,$,$,(" + object + ")," + set + ")");
}

TEST(IfcTree, SpatialStructureNamesAndPlacements)
{
    for (const char* schema : {"IFC2X3", "IFC4", "IFC4X3_ADD2"}) {
        IfcText f(schema);
        const string placeStorey = f.Add("IFCLOCALPLACEMENT(" + f.placement + "," + f.Axes(0, 0, 3000) + ")");
        const string storey = f.Add("IFCBUILDINGSTOREY(" + f.Guid() + ",$,'Erster Stock',$,$," + placeStorey +
                                    ",$,'first',.ELEMENT.,3.)");
        f.Add("IFCRELAGGREGATES(" + f.Guid() + ",$,$,$," + f.building + ",(" + storey + "))");
        const string turned = f.Axes(f.Point(1000, 0, 0), "$", f.Direction(0, 1, 0));
        const string wall =
            f.Add("IFCWALLSTANDARDCASE(" + f.Guid() + ",$,'W\\X2\\00E4\\X0\\nd \\S\\|',$,'thick',#9000," +
                  f.Definition({f.Shape({f.Box(200, 100, 50)})}) + ",'tag 1')");
        f.Add(IfcText::Join(
            {"IFCRELCONTAINEDINSPATIALSTRUCTURE(", f.Guid(), ",$,$,$,(", wall, "),", storey, ")"}));
        string text = f.Text();
        text.insert(text.find("DATA;\n") + 6,
                    IfcText::Join({"#9000=IFCLOCALPLACEMENT(", placeStorey, ",", turned, ");\n"}));
        const ReadBack model(text);
        ASSERT_EQ(model.nodes.size(), 7U);
        const Node& part = *model.Parts().front();
        EXPECT_EQ(part.path,
                  "project/building/building/Erster Stock/Erster Stock/W\u00e4nd \u00fc/W\u00e4nd \u00fc");
        EXPECT_EQ(part.properties.at("IfcType"), "IfcWallStandardCase");
        EXPECT_EQ(part.properties.at("ObjectType"), "thick");
        EXPECT_EQ(part.properties.at("Tag"), "tag 1");
        EXPECT_EQ(part.properties.at("GlobalId").size(), 22U);
        EXPECT_EQ(model.Named("Erster Stock", 'A')->properties.at("LongName"), "first");
        // turned by a quarter at (1000, 0), one storey up
        EXPECT_NEAR(part.low[0], 950, 1e-9);
        EXPECT_NEAR(part.high[1], 100, 1e-9);
        EXPECT_NEAR(part.low[2], 3000, 1e-9);
    }
}

TEST(IfcTree, PropertiesAndQuantitiesAsTextWithUnits)
{
    IfcText f;
    const string wall = f.Product("IFCWALL", "wall", f.Shape({f.Box(10, 10, 10)}));
    const string watt = f.Add("IFCSIUNIT(*,.POWERUNIT.,.KILO.,.WATT.)");
    const string list =
        f.Add("IFCPROPERTYLISTVALUE('Sizes',$,(IFCLENGTHMEASURE(1.),IFCLENGTHMEASURE(2.5)),$)");
    const string bounded = f.Add("IFCPROPERTYBOUNDEDVALUE('Range',$,IFCREAL(4.),IFCREAL(-1.5),$)");
    const string enumerated =
        f.Add("IFCPROPERTYENUMERATEDVALUE('Status',$,(IFCLABEL('NEW'),IFCLABEL('OLD')),$)");
    const string complex =
        f.Add("IFCCOMPLEXPROPERTY('Glass',$,'glazing',(" + Property(f, "Panes", "IFCINTEGER(3)") + "))");
    AddSet(
        f, wall,
        f.Add("IFCPROPERTYSET(" + f.Guid() + ",$,'Pset',$," +
              IfcText::List(
                  {Property(f, "Outside", "IFCBOOLEAN(.T.)"), Property(f, "Area", "IFCAREAMEASURE(2.5)"),
                   Property(f, "Power", "IFCPOWERMEASURE(1.5)", watt), Property(f, "Count", "IFCINTEGER(-7)"),
                   Property(f, "Label", "IFCLABEL('it''s \\\\ \\X2\\D83DDE00\\X0\\')"),
                   Property(f, "Empty", "$"), list, bounded, enumerated, complex}) +
              ")"));
    AddSet(f, wall,
           f.Add("IFCELEMENTQUANTITY(" + f.Guid() + ",$,'Qto',$,$,(" +
                 f.Add("IFCQUANTITYLENGTH('Length',$,$,10.,$)") + "))"));
    const string typeSet =
        f.Add("IFCPROPERTYSET(" + f.Guid() + ",$,'Pset',$,(" + Property(f, "Count", "IFCINTEGER(1)") + "," +
              Property(f, "Maker", "IFCLABEL('us')") + "))");
    const string type =
        f.Add("IFCWALLTYPE(" + f.Guid() + ",$,'T200',$,$,(" + typeSet + "),$,$,$,.SOLIDWALL.)");
    f.Add("IFCRELDEFINESBYTYPE(" + f.Guid() + ",$,$,$,(" + wall + ")," + type + ")");
    const ReadBack model(f.Text());
    const auto& p = model.Named("wall", 'P')->properties;
    const std::map<string, string> expected = {{"Pset.Outside", "true"},
                                               {"Pset.Area", "2.5 m\u00b2"},
                                               {"Pset.Power", "1.5 kW"},
                                               {"Pset.Count", "-7"},
                                               {"Pset.Label", "it's \\ \U0001F600"},
                                               {"Pset.Sizes", "1 mm, 2.5 mm"},
                                               {"Pset.Range", "-1.5 .. 4"},
                                               {"Pset.Status", "NEW, OLD"},
                                               {"Pset.Glass.Panes", "3"},
                                               {"Qto.Length", "10 mm"},
                                               {"Pset.Maker", "us"},
                                               {"TypeName", "T200"}};
    for (const auto& [name, value] : expected) {
        EXPECT_EQ(p.count(name) != 0 ? p.at(name) : "(none)", value) << name;
    }
    EXPECT_EQ(p.count("Pset.Empty"), 0U);
}

TEST(IfcTree, MappedItemsShareOnePart)
{
    IfcText f;
    const string body = f.Box(10, 10, 10);
    f.Colour(body, 0.25, 0.5, 0.75, 0.25);
    const string map = f.Add("IFCREPRESENTATIONMAP(" + f.Axes(0, 0, 10) + "," + f.Shape({body}) + ")");
    f.Add("IFCBUILDINGELEMENTPROXYTYPE(" + f.Guid() + ",$,'screw',$,$,$,(" + map + "),$,$,.NOTDEFINED.)");
    for (int i = 0; i < 3; ++i) {
        const string op = f.Add("IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$," + f.Point(100. * i, 0, 0) + "," +
                                IfcText::Number(i == 2 ? 2 : 1) + ",$)");
        const string item = f.Add(IfcText::Join({"IFCMAPPEDITEM(", map, ",", op, ")"}));
        f.Product("IFCBUILDINGELEMENTPROXY", "use " + std::to_string(i),
                  f.Shape({item}, "'Body'", "'MappedRepresentation'"));
    }
    const ReadBack model(f.Text());
    const auto parts = model.Parts();
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_EQ(parts[0]->part, parts[1]->part);
    EXPECT_EQ(parts[0]->part, parts[2]->part);
    EXPECT_EQ(parts[0]->name, "screw");
    EXPECT_EQ(parts[1]->colour, (std::array<float, 4>{0.25F, 0.5F, 0.75F, 0.75F}));
    EXPECT_EQ(model.Named("use 1", 'I')->properties.at("IfcType"), "IfcBuildingElementProxy");
    // the map's origin lies where the target says: the box stands 10 lower, and twice as large the third time
    EXPECT_NEAR(parts[1]->low[0], 95, 1e-9);
    EXPECT_NEAR(parts[1]->low[2], -10, 1e-9);
    EXPECT_NEAR(parts[2]->low[2], -20, 1e-9);
    EXPECT_NEAR(parts[2]->enclosed, 8000, 1e-6);
}

TEST(IfcTree, AMirroredMappedItemStillFacesOutwards)
{
    IfcText f;
    const string map = f.Add("IFCREPRESENTATIONMAP(" + f.axes + "," + f.Shape({f.Box(10, 20, 30)}) + ")");
    const string op =
        f.Add("IFCCARTESIANTRANSFORMATIONOPERATOR3DNONUNIFORM(" + f.Direction(1, 0, 0) + "," +
              f.Direction(0, -1, 0) + "," + f.origin + ",1.," + f.Direction(0, 0, 1) + ",2.,1.)");
    // cut, so that the mirror is baked into the body
    const string wall =
        f.Product("IFCWALL", "wall", f.Shape({f.Add("IFCMAPPEDITEM(" + map + "," + op + ")")}));
    const string opening = f.Add("IFCOPENINGELEMENT(" + f.Guid() + ",$,'o',$,$," + f.placement + "," +
                                 f.Definition({f.Shape({f.Box(2, 100, 5)})}) + ",$,.OPENING.)");
    f.Add("IFCRELVOIDSELEMENT(" + f.Guid() + ",$,$,$," + wall + "," + opening + ")");
    const ReadBack model(f.Text());
    ASSERT_EQ(model.Parts().size(), 1U);
    EXPECT_NEAR(model.Parts().front()->enclosed, 10 * 40 * 30 - 2 * 40 * 5, 1e-6);
}

TEST(IfcTree, OpeningsAreCutAndNeitherTheyNorSpacesAreBodies)
{
    IfcText f;
    const string wall = f.Product("IFCWALL", "wall", f.Shape({f.Box(1000, 200, 1000)}));
    const auto cut = [&](double z) {
        const string at = f.Add("IFCLOCALPLACEMENT(" + f.placement + "," + f.Axes(0, 0, z) + ")");
        const string opening = f.Add("IFCOPENINGELEMENT(" + f.Guid() + ",$,'hole',$,$," + at + "," +
                                     f.Definition({f.Shape({f.Box(100, 300, 100)})}) + ",$,.OPENING.)");
        f.Add("IFCRELVOIDSELEMENT(" + f.Guid() + ",$,$,$," + wall + "," + opening + ")");
    };
    cut(0);
    cut(300);
    cut(5000); // beside the wall
    const string space =
        f.Add("IFCSPACE(" + f.Guid() + ",$,'room',$,$," + f.placement + "," +
              f.Definition({f.Shape({f.Box(5000, 5000, 2000)})}) + ",$,.ELEMENT.,.INTERNAL.,$)");
    f.Add("IFCRELAGGREGATES(" + f.Guid() + ",$,$,$," + f.building + ",(" + space + "))");
    const ReadBack model(f.Text());
    ASSERT_EQ(model.Parts().size(), 1U);
    EXPECT_NEAR(model.Parts().front()->solid, 2e8 - 2 * 100 * 200 * 100, 1);
    ASSERT_NE(model.Named("room", 'A'), nullptr);
    EXPECT_EQ(model.Named("hole", 'I'), nullptr);
}

TEST(IfcTree, BodiesOfManyFacesAreCutToo)
{
    // a drum of 4000 sides, 100 in radius and 50 high
    constexpr int Sides = 4000;
    string points;
    std::vector<string> bottom;
    std::vector<string> top;
    for (int i = 0; i < 2 * Sides; ++i) {
        const double angle = 2 * M_PI * (i % Sides) / Sides;
        points += (i > 0 ? ",(" : "(") + IfcText::Number(100 * std::cos(angle)) + "," +
                  IfcText::Number(100 * std::sin(angle)) + (i < Sides ? ",0.)" : ",50.)");
        (i < Sides ? bottom : top).push_back(std::to_string(i + 1));
    }
    IfcText f;
    const string list = f.Add("IFCCARTESIANPOINTLIST3D((" + points + "))");
    std::vector<string> faces{
        f.Add("IFCINDEXEDPOLYGONALFACE(" + IfcText::List(top) + ")"),
        f.Add("IFCINDEXEDPOLYGONALFACE(" + IfcText::List({bottom.rbegin(), bottom.rend()}) + ")")};
    for (std::size_t i = 0; i < Sides; ++i) {
        const std::size_t next = (i + 1) % Sides;
        faces.push_back(f.Add("IFCINDEXEDPOLYGONALFACE(" +
                              IfcText::List({bottom[i], bottom[next], top[next], top[i]}) + ")"));
    }
    const string drum = f.Add("IFCPOLYGONALFACESET(" + list + ",.T.," + IfcText::List(faces) + ",$)");
    const string element = f.Product("IFCFOOTING", "drum", f.Shape({drum}));
    const string hole = f.Definition({f.Shape({f.Extrude(f.Rectangle(40, 30), 100, f.Axes(10, 0, -20))})});
    const string opening =
        f.Add("IFCOPENINGELEMENT(" + f.Guid() + ",$,'hole',$,$," + f.placement + "," + hole + ",$,$)");
    f.Add("IFCRELVOIDSELEMENT(" + f.Guid() + ",$,$,$," + element + "," + opening + ")");
    const ReadBack model(f.Text());
    ASSERT_EQ(model.Parts().size(), 1U);
    const double ground = Sides / 2.0 * 1e4 * std::sin(2 * M_PI / Sides);
    EXPECT_NEAR(model.Parts().front()->enclosed, 50 * (ground - 1200), 1);
    EXPECT_EQ(model.Parts().front()->openEdges, 0);
}

TEST(IfcTree, LayersHaveTheOpeningsOfTheirWall)
{
    IfcText f;
    const string wall = f.Product("IFCWALL", "wall", "$");
    std::vector<string> layers;
    for (const double y : {0.0, 100.0}) {
        const string shape =
            f.Definition({f.Shape({f.Extrude(f.Rectangle(1000, 100), 2000, f.Axes(0, y, 0))})});
        layers.push_back(f.Add("IFCBUILDINGELEMENTPART(" + f.Guid() + ",$,'layer',$,$," + f.placement + "," +
                               shape + ",$,$)"));
    }
    f.Add("IFCRELAGGREGATES(" + f.Guid() + ",$,$,$," + wall + "," + IfcText::List(layers) + ")");
    const string hole = f.Definition({f.Shape({f.Extrude(f.Rectangle(200, 1000), 500, f.Axes(0, 0, 500))})});
    const string opening =
        f.Add("IFCOPENINGELEMENT(" + f.Guid() + ",$,'hole',$,$," + f.placement + "," + hole + ",$,$)");
    f.Add("IFCRELVOIDSELEMENT(" + f.Guid() + ",$,$,$," + wall + "," + opening + ")");
    const ReadBack model(f.Text());
    int layersSeen = 0;
    for (const Node* part : model.Parts()) {
        if (part->name == "layer") {
            ++layersSeen;
            EXPECT_NEAR(part->enclosed, 100 * (1000 * 2000 - 200 * 500), 1e-3);
            EXPECT_EQ(part->openEdges, 0);
        }
    }
    EXPECT_EQ(layersSeen, 2);
}

TEST(IfcTree, AnnotationsAndGridsBecomePolylines)
{
    IfcText f("IFC2X3");
    const string curves =
        f.Add("IFCGEOMETRICCURVESET((" + f.Polyline({{0, 0, 0}, {10, 0, 0}}) + "," +
              f.Polyline({{10, 0, 0}, {10, 10, 0}}) + "," + f.Add("IFCCIRCLE(" + f.axes + ",50.)") + "))");
    const string note = f.Add("IFCANNOTATION(" + f.Guid() + ",$,'note',$,$," + f.placement + "," +
                              f.Definition({f.Shape({curves}, "'Annotation'", "'GeometricCurveSet'")}) + ")");
    const auto axis = [&](double x) {
        return f.Add("IFCGRIDAXIS('A'," + f.Polyline({{x, -100}, {x, 100}}) + ",.T.)");
    };
    const string grid = f.Add("IFCGRID(" + f.Guid() + ",$,'grid',$,$," + f.placement + ",$,(" + axis(0) +
                              "," + axis(50) + "),(" + axis(7) + "),$)");
    f.Contain({note, grid});
    const ReadBack model(f.Text());
    EXPECT_EQ(model.Named("note", 'P')->polylines, 2); // the two lines meet
    EXPECT_NEAR(model.Named("note", 'P')->high[0], 50, 1e-6);
    EXPECT_EQ(model.Named("grid", 'P')->polylines, 3);
}

TEST(IfcTree, LooksComeFromItemsMaterialsAndColourMaps)
{
    IfcText f;
    // two items that look different, in one part
    const string red = f.Box(10, 10, 10);
    const string green = f.Extrude(f.Rectangle(5, 5), 5, f.Axes(0, 0, 50));
    f.Colour(red, 1, 0, 0, 0);
    f.Colour(green, 0, 1, 0, 0.5);
    f.Product("IFCBEAM", "two", f.Shape({red, green}));
    // by the material
    const string beam = f.Product("IFCBEAM", "steel", f.Shape({f.Box(1, 1, 1)}));
    const string rgb = f.Add("IFCCOLOURRGB($,0.5,0.5,0.5)");
    const string style =
        f.Add("IFCSURFACESTYLE($,.BOTH.,(" + f.Add("IFCSURFACESTYLESHADING(" + rgb + ",0.5)") + "))");
    const string styled =
        f.Add("IFCSTYLEDITEM($,(" + f.Add("IFCPRESENTATIONSTYLEASSIGNMENT((" + style + "))") + "),$)");
    const string representation = f.Add("IFCSTYLEDREPRESENTATION(" + f.context + ",$,$,(" + styled + "))");
    const string material = f.Add("IFCMATERIAL('Steel',$,$)");
    f.Add("IFCMATERIALDEFINITIONREPRESENTATION($,$,(" + representation + ")," + material + ")");
    f.Add("IFCRELASSOCIATESMATERIAL(" + f.Guid() + ",$,$,$,(" + beam + ")," + material + ")");
    // by the face
    const string points = f.Add("IFCCARTESIANPOINTLIST3D(((0.,0.,0.),(1.,0.,0.),(0.,1.,0.),(0.,0.,1.)))");
    const string set =
        f.Add("IFCTRIANGULATEDFACESET(" + points + ",$,.T.,((1,3,2),(1,2,4),(2,3,4),(1,4,3)),$)");
    f.Add("IFCINDEXEDCOLOURMAP(" + set + ",0.5," + f.Add("IFCCOLOURRGBLIST(((1.,1.,0.),(0.,0.,1.)))") +
          ",(1,2,1,1))");
    f.Product("IFCBEAM", "faces", f.Shape({set}, "'Body'", "'Tessellation'"));

    const ReadBack model(f.Text());
    const Node& two = *model.Named("two", 'P');
    ASSERT_EQ(two.setColours.size(), 2U);
    EXPECT_EQ(two.setColours[0], (std::array<float, 4>{1, 0, 0, 1}));
    EXPECT_EQ(two.setColours[1], (std::array<float, 4>{0, 1, 0, 0.5F}));
    EXPECT_EQ(model.Named("steel", 'P')->colour, (std::array<float, 4>{0.5F, 0.5F, 0.5F, 0.5F}));
    EXPECT_EQ(model.Named("steel", 'P')->properties.at("Material"), "Steel");
    const Node& faces = *model.Named("faces", 'P');
    ASSERT_EQ(faces.setColours.size(), 2U);
    EXPECT_EQ(faces.setColours[0], (std::array<float, 4>{1, 1, 0, 0.5F}));
    EXPECT_EQ(faces.setColours[1], (std::array<float, 4>{0, 0, 1, 0.5F}));
    EXPECT_EQ(faces.triangles, 4);
}

TEST(IfcTree, WhatNobodyContainsStandsUnderTheProject)
{
    IfcText f;
    f.Add("IFCPUMP(" + f.Guid() + ",$,'lost',$,$," + f.placement + "," +
          f.Definition({f.Shape({f.Box(1, 1, 1)})}) + ",$,$)");
    f.Add("IFCSOMETHINGNEW(" + f.Guid() + ",$,'unknown',$,$," + f.placement + "," +
          f.Definition({f.Shape({f.Box(1, 1, 1), f.Add("IFCUNKNOWNSOLID(1.,(2,3))")})}) + ",$)");
    const ReadBack model(f.Text());
    ASSERT_EQ(model.Parts().size(), 2U);
    EXPECT_EQ(model.Parts()[0]->path, "project/lost/lost");
    EXPECT_EQ(model.Parts()[1]->properties.at("IfcType"), "IFCSOMETHINGNEW");
    EXPECT_GT(model.Parts()[1]->triangles, 0);
}

TEST(IfcTree, TheExampleHouse)
{
    const ReadBack model(FileText(ZEMTAR_SOURCE_DIR "/examples/house.ifc"));
    ASSERT_TRUE(model.transferred);
    EXPECT_NEAR(model.Named("Wall south", 'P')->solid * 1e-9, 4.992 - 2 * 0.3456 - 1.01 * 2.13 * 0.24, 1e-6);
    EXPECT_NEAR(model.Named("Schornstein \u70df\u56f1", 'P')->solid * 1e-9, 3.6 * (0.36 - 0.09), 1e-9);
    EXPECT_EQ(model.Named("T\u00fcr", 'P')->properties.at("IfcType"), "IfcDoor");
    const string wall = "Pset_WallCommon.ThermalTransmittance";
    EXPECT_EQ(model.Named("Wall east", 'P')->properties.at(wall), "0.24 W/(m\u00b2\u00b7K)");
    for (const Node* part : model.Parts()) {
        EXPECT_TRUE(part->triangles > 0 || part->polylines > 0) << part->path;
        EXPECT_GE(part->enclosed, 0) << part->path;
    }
}

} // namespace
} // namespace ifctest
