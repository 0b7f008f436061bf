// Import, export and import again, as a law: for the examples, for real CAD files where there are some, and
// for a scene in every length unit, which a plain OpenCASCADE program opens as well.

#include "cadexchange/CZemtarCADExchangeReader.h"
#include "cadexchange/CZemtarCADExchangeWriter.h"
#include "host/CZemtarUnit.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/SceneFacts.h"
#include "tests/support/TestFolder.h"

#include <cadex/internal/Formats.hxx>

#include <gtest/gtest.h>

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRep_Tool.hxx>
#include <IGESControl_Reader.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_Printer.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <STEPControl_Reader.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Shape.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <cmath>
#include <filesystem>
#include <map>
#include <ostream>
#include <sstream>

using namespace Zemtar;
using namespace Zemtar::Test;
using Reader = CZemtarCADExchangeReader;
using Writer = CZemtarCADExchangeWriter;

namespace {

struct Format
{
    const char* name;
    Reader::eReaderType reader;
    Writer::eWriterType writer;
    bool keepsTree; ///< names, metadata and shared parts
};
constexpr Format Step{"stp", Reader::eReaderSTEP, Writer::eWriterSTEP, true};
constexpr Format Iges{"igs", Reader::eReaderIGES, Writer::eWriterIGES, false};
constexpr Format Ifc{"ifc", Reader::eReaderIFC, Writer::eWriterIFC, true};
constexpr Format Rhino{"3dm", Reader::eReaderRhino, Writer::eWriterRhino, true};

bool HasEngine(const Format& format)
{
    return cadex::internal::CanWrite(static_cast<cadex::internal::Format>(format.writer));
}

std::unique_ptr<CZemtarDocument> Import(const CZemtarString& file, Reader::eReaderType type)
{
    Reader reader;
    reader.SetCADReaderType(type);
    reader.setTessellationFactor(80);
    reader.setUseParallelProcessing(false);
    reader.setImportPolyLines(true);
    return std::unique_ptr<CZemtarDocument>(reader.Import(file));
}

/// What comes back of a document that is written to a file.
std::unique_ptr<CZemtarDocument> Back(CZemtarDocument& document, const CZemtarString& file,
                                      const Format& format, enumLengthUnit unit = eLengthUnitMillimetre)
{
    Writer writer;
    writer.SetCADWriterType(format.writer);
    writer.Export(&document, file, nullptr, nullptr, nullptr, nullptr, CZemtarUnit(unit));
    return Import(file, format.reader);
}

/// 3DM has colours in steps of 1/255 and gives surfaces without one a light grey.
std::map<std::string, double> AreasIn3dm(const std::map<std::string, double>& areas)
{
    std::map<std::string, double> result;
    for (const auto& [colour, area] : areas) {
        std::istringstream in(colour.empty() ? "8000 8000 8000 " : colour);
        std::ostringstream out;
        std::string word;
        for (int i = 0; in >> word; ++i) {
            const bool isComponent = i < 3;
            isComponent ? out << std::lround(std::lround(std::stod(word) / 1e4 * 255) / 255.0 * 1e4)
                        : out << word;
            out << ' ';
        }
        result[out.str()] += area;
    }
    return result;
}

void DropMetaData(SceneFacts::Labels& labels)
{
    for (std::vector<std::string>& node : labels) {
        node.resize(1);
    }
}

void ExpectSame(const SceneFacts& before, const SceneFacts& after, const Format& format)
{
    EXPECT_LE(after.triangles, before.triangles);
    EXPECT_GE(after.triangles + before.slivers, before.triangles);
    EXPECT_LE(after.bounds.DistanceTo(before.bounds), 1e-6 * before.bounds.Size());
    EXPECT_NEAR(after.volume, before.volume,
                1e-3 * std::abs(before.volume) + 1e-9 * std::pow(before.bounds.Size(), 3));
    EXPECT_NEAR(after.curves, before.curves, 1e-6 * before.curves);
    const auto areas = format.writer == Writer::eWriterRhino ? AreasIn3dm(before.areas) : before.areas;
    for (const auto& [colour, area] : areas) {
        EXPECT_NEAR(after.areas.count(colour) ? after.areas.at(colour) : 0.0, area, 1e-3 * area)
            << "colour " << colour;
    }
    EXPECT_EQ(after.areas.size(), areas.size());
    if (!format.keepsTree) {
        return;
    }
    EXPECT_EQ(after.uses, before.uses);
    // Assemblies and parts come back as assemblies, meshes as parts, below a root named after the file.
    SceneFacts::Labels expected = before.nodes;
    SceneFacts::Labels found = after.groups;
    if (format.writer == Writer::eWriterIFC) {
        found.erase(found.begin());
        DropMetaData(expected);
        DropMetaData(found);
    }
    ASSERT_FALSE(found.empty());
    EXPECT_EQ(found.front().front(), "back");
    found.erase(found.begin());
    EXPECT_EQ(found, expected);
}

/// A bolt shared by three places at two depths, in two colours, a loose triangle and a polyline.
std::unique_ptr<CZemtarDocument> Scene()
{
    std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
    const SceneBuilder build(*document);
    CZemtarSceneNode* car = build.Group("Wagen 车 \U0001F600", nullptr, CZemtarSceneNode::eNodeTypeAssembly,
                                        Placement({1.5, -2.25, 0.125}));
    car->MetaData()->SetValue("Grün", "Farbe", "A", "");
    car->MetaData()->SetValue("", "empty 空", "A", "");
    const Turn turned = {0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6};
    CZemtarSceneNode* place =
        build.Group("place", car, CZemtarSceneNode::eNodeTypeGroup, Placement({0, 0.001, 0}, turned));
    CZemtarSceneNode* wheel = build.Group("wheel", place, CZemtarSceneNode::eNodeTypePart);
    CZemtarGeometry* bolt = build.Box(0.01, 0.02, 0.03);
    CZemtarMaterial* blue = build.Material(0.2, 0.4, 0.6);
    build.Mesh("bolt", wheel, bolt, Placement({0.1, 0.2, 0.3}), blue);
    build.Mesh("bolt", car, bolt, Placement({-0.1, 0, 0}, turned), blue);
    build.Mesh("bolt 3", nullptr, bolt, {}, blue);
    build.Mesh("sheet", car, build.Triangle(), {}, build.Material(1, 0, 0.5));
    build.Mesh("line", wheel, build.Line({{0, 0, 0}, {0.2, 0.25, -0.2}, {0.6, 0.5, -0.55}, {1, 1, -1}}), {},
               blue);
    return document;
}

Bounds MillimetresByKernel(const CZemtarString& file, bool iges)
{
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_Printer));
    STEPControl_Reader step;
    IGESControl_Reader igesReader;
    XSControl_Reader& reader = iges ? static_cast<XSControl_Reader&>(igesReader) : step;
    Bounds bounds;
    EXPECT_EQ(reader.ReadFile(file.toStdString().c_str()), IFSelect_RetDone);
    reader.TransferRoots();
    for (TopExp_Explorer it(reader.OneShape(), TopAbs_VERTEX); it.More(); it.Next()) {
        const gp_Pnt p = BRep_Tool::Pnt(TopoDS::Vertex(it.Current()));
        bounds.Add({p.X() / 1000.0, p.Y() / 1000.0, p.Z() / 1000.0});
    }
    return bounds;
}

class RoundTrip : public testing::Test, protected TestFolder
{
};

} // namespace

TEST_F(RoundTrip, HoldsInEveryUnitAndOpensInAPlainKernelProgram)
{
    const auto document = Scene();
    const SceneFacts before(*document);
    for (const Format& format : {Step, Iges, Ifc, Rhino}) {
        for (int unit = eLengthUnitAngstrom; HasEngine(format) && unit <= eLengthUnitMile; ++unit) {
            SCOPED_TRACE(std::string(format.name) + " in unit " + std::to_string(unit));
            const CZemtarString file = host(QString("back.") + format.name);
            const auto back = Back(*document, file, format, static_cast<enumLengthUnit>(unit));
            ASSERT_TRUE(back);
            const SceneFacts after(*back);
            EXPECT_EQ(after.slivers, 0u);
            ExpectSame(before, after, format);
            if (format.writer == Writer::eWriterSTEP || format.writer == Writer::eWriterIGES) {
                EXPECT_LE(
                    MillimetresByKernel(file, format.writer == Writer::eWriterIGES).DistanceTo(before.bounds),
                    1e-7);
            }
        }
    }
}

/// The kernel's own file of boxes in two levels of assemblies, all of them turned.
TEST_F(RoundTrip, ManyInstancesStandWhereTheKernelPutThem)
{
    Handle(TDocStd_Document) document;
    XCAFApp_Application::GetApplication()->NewDocument("BinXCAF", document);
    const Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(document->Main());
    const TDF_Label box = shapes->AddShape(BRepPrimAPI_MakeBox(1.0, 2.0, 3.0).Shape(), false);
    const TDF_Label row = shapes->NewShape();
    const TDF_Label top = shapes->NewShape();
    const auto placed = [](int i) {
        gp_Trsf turn;
        gp_Trsf move;
        turn.SetRotation(gp_Ax1(gp_Pnt(1, 0, 0), gp_Dir(1, 2, 3)), 0.1 * (i + 1));
        move.SetTranslation(gp_Vec(10.0 * i, -i, 5));
        return move * turn;
    };
    constexpr int count = 160;
    for (int i = 0; i < count; ++i) {
        shapes->AddComponent(row, box, TopLoc_Location(placed(i)));
    }
    shapes->AddComponent(top, row, TopLoc_Location(placed(7)));
    for (int i = 0; i < count; ++i) {
        shapes->AddComponent(top, box, TopLoc_Location(placed(200 + i)));
    }
    shapes->UpdateAssemblies();
    STEPCAFControl_Writer writer;
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_Printer));
    ASSERT_TRUE(writer.Transfer(document));
    ASSERT_EQ(writer.Write(path("many.stp").toStdString().c_str()), IFSelect_RetDone);
    XCAFApp_Application::GetApplication()->Close(document);

    const auto imported = Import(host("many.stp"), Reader::eReaderSTEP);
    ASSERT_TRUE(imported);
    EXPECT_EQ(SceneFacts(*imported).uses, std::vector<int>{2 * count});
    int number = 0;
    for (const CZemtarSceneNode* node : imported->Nodes()) {
        if (dynamic_cast<const CZemtar3DObject*>(node)) {
            const gp_Trsf expected =
                number < count ? placed(7) * placed(number) : placed(200 + number - count);
            const CZemtarMatrix found = node->LocalToWorldMatrix(true);
            for (int line = 0; line < 3; ++line) {
                for (int column = 0; column < 4; ++column) {
                    EXPECT_NEAR(found.M(line, column) * (column == 3 ? 1000.0 : 1.0),
                                expected.Value(line + 1, column + 1), 1e-9);
                }
            }
            ++number;
        }
    }
    EXPECT_EQ(number, 2 * count);
}

struct Source
{
    const char* path;
    Reader::eReaderType type;

    friend std::ostream& operator<<(std::ostream& out, const Source& source) { return out << source.path; }
};

class RoundTripOfFiles : public testing::TestWithParam<Source>, protected TestFolder
{
};

TEST_P(RoundTripOfFiles, KeepsWhatTheFileCanHold)
{
    std::string file = GetParam().path;
    if (!std::filesystem::exists(file)) {
        GTEST_SKIP() << "not at hand: " << file;
    }
    if (file.ends_with(".gz")) {
        const std::string plain = path("plain.stp").toStdString();
        ASSERT_EQ(std::system(("gzip -dc '" + file + "' >'" + plain + "'").c_str()), 0);
        file = plain;
    }
    const auto document = Import(file, GetParam().type);
    ASSERT_TRUE(document);
    const SceneFacts before(*document);
    ASSERT_GT(before.triangles, 0u);
    for (const Format& format : {Step, Iges, Ifc, Rhino}) {
        if (HasEngine(format)) {
            SCOPED_TRACE(format.name);
            const auto back = Back(*document, host(QString("back.") + format.name), format);
            ASSERT_TRUE(back);
            ExpectSame(before, SceneFacts(*back), format);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    , RoundTripOfFiles,
    testing::Values(
        Source{ZEMTAR_SOURCE_DIR "/examples/pump.step", Reader::eReaderSTEP},
        Source{ZEMTAR_SOURCE_DIR "/examples/bracket.igs", Reader::eReaderIGES},
        Source{"/usr/share/opencascade/data/step/linkrods.step", Reader::eReaderSTEP},
        Source{"/usr/share/opencascade/data/step/screw.step", Reader::eReaderSTEP},
        Source{"/usr/share/opencascade/data/iges/bearing.iges", Reader::eReaderIGES},
        Source{"/usr/share/opencascade/data/iges/hammer.iges", Reader::eReaderIGES},
        Source{"/usr/share/doc/netgen/examples/frame.step", Reader::eReaderSTEP},
        Source{"/usr/share/doc/gmsh-doc/doc/gmsh/demos/api/as1-tu-203.stp.gz", Reader::eReaderSTEP},
        Source{"/usr/share/doc/gmsh-doc/doc/gmsh/demos/api/step_boundary_colors.stp.gz", Reader::eReaderSTEP},
        Source{"/usr/share/doc/gmsh-doc/doc/gmsh/tutorial/t20_data.step.gz", Reader::eReaderSTEP}));
