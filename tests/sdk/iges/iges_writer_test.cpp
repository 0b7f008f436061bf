// The IGES writer, read back with the kernel's own reader.
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include <BRepBndLib.hxx>
#include <BRepGProp.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <GProp_GProps.hxx>
#include <IGESCAFControl_Reader.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <cadex/IGES_Writer.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>

#include "sdk/occt/EngineScope.h"
#include "tests/sdk/MeshModels.h"

using namespace cadex;
using namespace cadex::test;

namespace {

constexpr double Nan = std::numeric_limits<double>::quiet_NaN();

struct ReadBack
{
    int roots = 0;
    int solids = 0;
    int closedShells = 0;
    int faces = 0;
    int looseEdges = 0;
    double volume = 0;
    std::array<double, 6> bounds{}; ///< low, then high
    std::set<std::string> names;
    std::map<std::array<int, 3>, int> faceColors; ///< in thousandths
};

int Count(const TopoDS_Shape& shape, TopAbs_ShapeEnum what, TopAbs_ShapeEnum outside = TopAbs_SHAPE)
{
    int count = 0;
    for (TopExp_Explorer it(shape, what, outside); it.More(); it.Next()) {
        ++count;
    }
    return count;
}

void Measure(const TopoDS_Shape& shape, const Handle(XCAFDoc_ColorTool) & colors, ReadBack& result,
             Bnd_Box& box)
{
    result.solids += Count(shape, TopAbs_SOLID);
    result.faces += Count(shape, TopAbs_FACE);
    result.looseEdges += Count(shape, TopAbs_EDGE, TopAbs_FACE);
    for (TopExp_Explorer it(shape, TopAbs_SHELL); it.More(); it.Next()) {
        result.closedShells += BRep_Tool::IsClosed(it.Current()) ? 1 : 0;
    }
    GProp_GProps properties;
    BRepGProp::VolumeProperties(shape, properties, true);
    result.volume += properties.Mass();
    for (TopExp_Explorer it(shape, TopAbs_VERTEX); it.More(); it.Next()) {
        box.Add(BRep_Tool::Pnt(TopoDS::Vertex(it.Current())));
    }
    for (TopExp_Explorer it(shape, TopAbs_FACE); it.More(); it.Next()) {
        Quantity_Color color;
        if (colors->GetColor(it.Current(), XCAFDoc_ColorSurf, color) ||
            colors->GetColor(it.Current(), XCAFDoc_ColorGen, color)) {
            double rgb[3];
            color.Values(rgb[0], rgb[1], rgb[2], Quantity_TOC_sRGB);
            ++result.faceColors[{static_cast<int>(std::lround(rgb[0] * 1000)),
                                 static_cast<int>(std::lround(rgb[1] * 1000)),
                                 static_cast<int>(std::lround(rgb[2] * 1000))}];
        }
    }
}

bool Read(const std::filesystem::path& file, ReadBack& result)
{
    return occt::RunGuarded(occt::EngineUse::Iges, [&] {
        Handle(TDocStd_Document) document = new TDocStd_Document("BinXCAF");
        IGESCAFControl_Reader reader;
        if (reader.ReadFile(file.string().c_str()) != IFSelect_RetDone || !reader.Transfer(document)) {
            return false;
        }
        const Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(document->Main());
        TDF_LabelSequence roots;
        shapes->GetFreeShapes(roots);
        Bnd_Box box;
        for (const TDF_Label& root : roots) {
            ++result.roots;
            Handle(TDataStd_Name) name;
            if (root.FindAttribute(TDataStd_Name::GetID(), name)) {
                result.names.insert(TCollection_AsciiString(name->Get()).ToCString());
            }
            Measure(XCAFDoc_ShapeTool::GetShape(root), XCAFDoc_DocumentTool::ColorTool(document->Main()),
                    result, box);
        }
        if (!box.IsVoid()) {
            box.SetGap(0);
            auto& b = result.bounds;
            box.Get(b[0], b[1], b[2], b[3], b[4], b[5]);
        }
        return true;
    });
}

class IgesWriter : public ::testing::Test
{
protected:
    bool Write(const ModelData_Model& model, Base_LengthUnit unit = Base_LU_Millimeters)
    {
        IGES_Writer writer;
        writer.Parameters().LengthUnit() = unit;
        return writer.Transfer(model) && writer.WriteFile(Base_UTF16String(File().c_str()));
    }

    ReadBack RoundTrip(const ModelData_Model& model, Base_LengthUnit unit = Base_LU_Millimeters)
    {
        ReadBack result;
        EXPECT_TRUE(Write(model, unit));
        EXPECT_TRUE(Read(File(), result));
        return result;
    }

    std::string File() const { return (folder.Path() / "model.igs").string(); }
    std::string Text() const
    {
        std::ifstream file(File(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    ScratchFolder folder;
};

void ExpectBounds(const ReadBack& read, const std::array<double, 6>& expected)
{
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_NEAR(read.bounds[i], expected[i], 1e-7 * std::max(1.0, std::abs(expected[i]))) << i;
    }
}

const BoxMesh Brick{{1, 2, 3}, {11, 22, 33}};

TEST_F(IgesWriter, ClosedMeshIsASolidOfTheSameSizeInEveryUnit)
{
    for (int unit = Base_LU_Millimeters; unit <= Base_LU_Miles; ++unit) {
        SCOPED_TRACE(unit);
        const ReadBack read =
            RoundTrip(ModelOf(MeshPart(MakeSet({Brick}))), static_cast<Base_LengthUnit>(unit));
        EXPECT_EQ(read.solids, 1);
        EXPECT_EQ(read.closedShells, 1);
        EXPECT_EQ(read.faces, 12);
        EXPECT_NEAR(read.volume, 6000, 1e-5);
        ExpectBounds(read, {1, 2, 3, 11, 22, 33});
    }
}

TEST_F(IgesWriter, PlacementsAreBakedIntoTheCoordinates)
{
    // Shared by a mirrored, a sheared and a plainly turned instance, all under a factor of 1000.
    const ModelData_Part part = MeshPart(MakeSet({Brick}), "brick");
    ModelData_Assembly group("group");
    group.AddInstance(
        ModelData_Instance(part, Transformation({-1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}), "mirrored"));
    group.AddInstance(
        ModelData_Instance(part, Transformation({1, 1, 0, 0, 2, 0, 0, 0, 1}, {0, 0, 100}), "sheared"));
    group.AddInstance(
        ModelData_Instance(part, Transformation({0, -1, 0, 1, 0, 0, 0, 0, 1}, {0, 0, 200}), "turned"));
    ModelData_Assembly root("root");
    root.AddInstance(ModelData_Instance(group, Transformation(NoRotation, {1, 0, 0}, 1000), "top"));
    const ReadBack read = RoundTrip(ModelOf(root));
    EXPECT_EQ(read.solids, 3);
    EXPECT_NEAR(read.volume / 1e9, 6000 + 12000 + 6000, 1e-3);
    ExpectBounds(read, {-21000, 1000, 3000, 34000, 44000, 233000});
    EXPECT_EQ(read.names, (std::set<std::string>{"mirrored", "sheared", "turned"}));
}

TEST_F(IgesWriter, CoordinatesFarFromTheOriginKeepTheirShape)
{
    const ReadBack read =
        RoundTrip(ModelOf(MeshPart(MakeSet({{{1e6, -1e6, 1e6}, {1e6 + 1, 1 - 1e6, 1e6 + 0.25}}}))));
    EXPECT_NEAR(read.bounds[3] - read.bounds[0], 1, 1e-6);
    EXPECT_NEAR(read.bounds[5] - read.bounds[2], 0.25, 1e-6);
    EXPECT_EQ(read.solids, 1);
}

TEST_F(IgesWriter, CavitiesAndBodiesTurnedInsideOut)
{
    ReadBack read = RoundTrip(ModelOf(MeshPart(
        MakeSet({{{0, 0, 0}, {10, 10, 10}}, {{2, 2, 2}, {4, 4, 4}, true}, {{20, 0, 0}, {21, 1, 1}}}))));
    EXPECT_EQ(read.solids, 2);
    EXPECT_NEAR(read.volume, 1000 - 8 + 1, 1e-6);

    read = RoundTrip(ModelOf(MeshPart(MakeSet({{{0, 0, 0}, {2, 2, 2}, true}}))));
    EXPECT_EQ(read.solids, 1);
    EXPECT_NEAR(read.volume, 8, 1e-6);
}

TEST_F(IgesWriter, OpenMeshesPolylinesColoursAndNames)
{
    ModelData_IndexedTriangleSet red{initialized()};
    Brick.AddTo(red, 0, 4);
    red.SetAppearance(ModelData_Appearance(ModelData_Color(1.F, 0.25F, 0.F, 0.5F)));
    ModelData_IndexedTriangleSet plain{initialized()};
    Brick.AddTo(plain, 4, 11);
    ModelData_PolyLineSet lines{initialized()};
    const ModelData_Point path[] = {{0, 0, 0}, {5, 0, 0}, {5, 5, 0}, {5, 5, 50}};
    lines.AddPolyLine(path + 1, 3);
    lines.AddPolyLine(path, 2);
    lines.AddPolyLine(path, 1); // nothing to draw
    ModelData_PolyRepresentation shapes{initialized()};
    shapes.Add(red);
    shapes.Add(plain);
    shapes.Add(lines);
    ModelData_Part part(shapes, "Gr\xC3\xB6\xC3\x9F"
                                "e \xF0\x9F\x98\x80 bolt with a long name");
    part.SetAppearance(ModelData_Appearance(ModelData_Color(0.F, 0.F, 1.F)));

    const ReadBack read = RoundTrip(ModelOf(part));
    EXPECT_EQ(read.solids, 0);
    EXPECT_EQ(read.faces, 11);
    EXPECT_EQ(read.looseEdges, 3);
    ExpectBounds(read, {0, 0, 0, 11, 22, 50});
    EXPECT_EQ(read.faceColors, (std::map<std::array<int, 3>, int>{{{0, 0, 1000}, 7}, {{1000, 250, 0}, 4}}));
    EXPECT_NE(Text().find("Gr__e _ bolt with a long name"), std::string::npos);
    for (const char c : Text()) {
        ASSERT_TRUE(c == '\n' || (c >= ' ' && c <= '~'));
    }
}

TEST_F(IgesWriter, TwoColoursOfOneClosedBodyStayOneSolid)
{
    ModelData_PolyRepresentation shapes{initialized()};
    for (const std::size_t first : {0U, 6U}) {
        ModelData_IndexedTriangleSet half{initialized()};
        Brick.AddTo(half, first, first + 6);
        half.SetAppearance(ModelData_Appearance(ModelData_Color(first == 0 ? 1.F : 0.F, 1.F, 0.F)));
        shapes.Add(half);
    }
    const ReadBack read = RoundTrip(ModelOf(ModelData_Part(shapes, "two")));
    EXPECT_EQ(read.solids, 1);
    EXPECT_NEAR(read.volume, 6000, 1e-6);
    EXPECT_EQ(read.faceColors, (std::map<std::array<int, 3>, int>{{{0, 1000, 0}, 6}, {{1000, 1000, 0}, 6}}));
}

TEST_F(IgesWriter, ABodyWithATriangleOnALineStaysClosed)
{
    // The middle of the edge from corner 0 to corner 1 is a corner for one side only; 0 1 8 has no area.
    ModelData_IndexedTriangleSet set{initialized()};
    Brick.AddTo(set, 0, 4);
    Brick.AddTo(set, 5, 12);
    const ModelData_Point points[] = {{1, 2, 3}, {6, 2, 3}, {11, 2, 3}, {1, 2, 33}};
    const int indices[] = {0, 1, 3, 1, 2, 3, 0, 2, 1};
    set.AddCoordinates(points, 4, indices, 9);
    set.SetAppearance(ModelData_Appearance(ModelData_Color(1.F, 0.F, 0.F)));
    const ReadBack read = RoundTrip(ModelOf(MeshPart(set)));
    EXPECT_EQ(read.solids, 1);
    EXPECT_EQ(read.closedShells, 1);
    EXPECT_NEAR(read.volume, 6000, 1e-6);
    EXPECT_EQ(read.faceColors, (std::map<std::array<int, 3>, int>{{{1000, 0, 0}, 14}}));
}

TEST_F(IgesWriter, BadTrianglesAreLeftOutAndBadPlacementsRefused)
{
    ModelData_IndexedTriangleSet set = MakeSet({Brick});
    const ModelData_Point bad[] = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {Nan, 0, 0}, {0, 1, 0}};
    const int indices[] = {0, 1, 2, 0, 1, 3, 0, 0, 1, 0, 1, 4};
    set.AddCoordinates(bad, 5, indices, 12);
    const ReadBack read = RoundTrip(ModelOf(MeshPart(set)));
    EXPECT_EQ(read.faces, 12 + 1);
    EXPECT_NEAR(read.volume, 6000, 1e-6);

    for (const double value : {Nan, std::numeric_limits<double>::infinity()}) {
        ModelData_Assembly root("root");
        root.AddInstance(
            ModelData_Instance(MeshPart(MakeSet({Brick})), Transformation(NoRotation, {value, 0, 0})));
        EXPECT_FALSE(Write(ModelOf(root)));
    }
    // A flattened solid has no inside, and what is scaled to nothing is not there.
    ModelData_Assembly root("root");
    root.AddInstance(ModelData_Instance(MeshPart(MakeSet({Brick})),
                                        Transformation({1, 0, 0, 0, 1, 0, 0, 0, 0}, {0, 0, 0})));
    root.AddInstance(
        ModelData_Instance(MeshPart(MakeSet({Brick})), Transformation(NoRotation, {0, 0, 0}, 0)));
    EXPECT_EQ(RoundTrip(ModelOf(root)).faces, 4);
    // Nothing to write is still a file.
    EXPECT_TRUE(Write(ModelOf(ModelData_Assembly("empty"))));
    EXPECT_TRUE(std::filesystem::exists(File()));
}

TEST_F(IgesWriter, AFailedWriteLeavesTheOldFileAndNothingElse)
{
    std::ofstream(File()) << "old";
    IGES_Writer writer;
    EXPECT_FALSE(writer.WriteFile(Base_UTF16String(File().c_str()))); // nothing transferred
    ASSERT_TRUE(writer.Transfer(ModelOf(MeshPart(MakeSet({Brick})))));
    EXPECT_FALSE(writer.WriteFile(Base_UTF16String((folder.Path() / "missing" / "m.igs").string().c_str())));
    EXPECT_FALSE(writer.WriteFile(Base_UTF16String(folder.Path().string().c_str())));
    EXPECT_EQ(Text(), "old");
    // One transfer serves several files.
    EXPECT_TRUE(writer.WriteFile(Base_UTF16String(File().c_str())));
    EXPECT_TRUE(writer.WriteFile(Base_UTF16String((folder.Path() / "\xE5\xAD\x97.igs").string().c_str())));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 2);
#ifdef __linux__
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_FALSE(writer.WriteFile("/dev/full"));
    }
#endif
}

} // namespace
