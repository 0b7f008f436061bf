// Hostile documents and targets, through the exporter and the engines of the build to a file and back: what
// can be written is written right, the rest is left out or refused with the exporter's message, and a file
// that was there survives.

#include "cadexchange/CZemtarCADExchangeReader.h"
#include "cadexchange/CZemtarCADExchangeWriter.h"
#include "host/CZemtarUnit.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/SceneFacts.h"
#include "tests/support/TestFolder.h"

#include <cadex/internal/Formats.hxx>

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <iostream>

#include <sys/resource.h>

using namespace Zemtar;
using namespace Zemtar::Test;
using Reader = CZemtarCADExchangeReader;
using Writer = CZemtarCADExchangeWriter;

namespace {

struct Format
{
    const char* name;
    int number;

    friend std::ostream& operator<<(std::ostream& out, const Format& format) { return out << format.name; }
};

class BadExport : public testing::TestWithParam<Format>, protected TestFolder
{
protected:
    void SetUp() override
    {
        if (!cadex::internal::CanWrite(static_cast<cadex::internal::Format>(GetParam().number))) {
            GTEST_SKIP() << "no engine";
        }
    }

    QString Target() const { return path(QString("engine.") + GetParam().name); }

    /// Gives what was written to standard error.
    std::string Export(const QString& file)
    {
        Writer writer;
        Prepare(writer);
        testing::internal::CaptureStderr();
        EXPECT_FALSE(writer.Export(document.get(), toHost(file), nullptr, nullptr, nullptr, nullptr,
                                   CZemtarUnit(eLengthUnitMillimetre)));
        return testing::internal::GetCapturedStderr();
    }
    void Prepare(Writer& writer) const
    {
        writer.SetCADWriterType(static_cast<Writer::eWriterType>(GetParam().number));
    }

    SceneFacts Read() const
    {
        Reader reader;
        reader.SetCADReaderType(static_cast<Reader::eReaderType>(GetParam().number));
        reader.setTessellationFactor(50);
        reader.setUseParallelProcessing(false);
        reader.setImportPolyLines(true);
        const std::unique_ptr<CZemtarDocument> back(reader.Import(toHost(Target())));
        EXPECT_TRUE(back);
        return SceneFacts(back ? *back : *document);
    }
    SceneFacts Back()
    {
        EXPECT_EQ(Export(Target()), "");
        return Read();
    }

    std::unique_ptr<CZemtarDocument> document{CZemtarDocument::Create(true)};
    const SceneBuilder build{*document};
};

constexpr double Nan = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST_P(BadExport, DocumentsWithoutContent)
{
    const auto expectNothing = [this] {
        if (GetParam().number == Writer::eWriterIGES) {
            // A file of this format without entities is written, but nobody reads one.
            EXPECT_EQ(Export(Target()), "");
            EXPECT_GT(read(Target()).size(), 100);
            return;
        }
        const SceneFacts back = Back();
        EXPECT_EQ(back.triangles, 0u);
        EXPECT_EQ(back.curves, 0.0);
    };
    expectNothing();
    CZemtarSceneNode* gone = build.Group("gone", nullptr, CZemtarSceneNode::eNodeTypeAssembly);
    build.Mesh("below", gone, build.Box(1, 1, 1));
    gone->SetDeleted(true);
    build.Mesh("hollow", nullptr, nullptr);
    build.Mesh("no tables", nullptr, CZemtarGeometry::Create(document.get()));
    build.Mesh("empty tables", nullptr, build.Triangles({}, {}));
    build.Mesh("lone points", nullptr, build.Triangles({{1, 2, 3}}, {}));
    build.Mesh("all bad", nullptr, build.Triangles({{Nan, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 2}));
    expectNothing();
    build.Mesh("no line", nullptr, build.Line({{1, 1, 1}, {1, 1, 1}}));
    expectNothing();
}

TEST_P(BadExport, BadTrianglesAreLeftOutAndTheOthersKept)
{
    CZemtarGeometry* box = build.Box(1, 2, 3);
    for (const double bad : {Nan, HUGE_VAL, 1e200}) {
        box->VerticiesTable()->Append(0, bad, 0);
    }
    CZemtarPolygonsTable& polygons = *box->PolygonsTable();
    for (const unsigned bad : {8u, 9u, 10u, 11u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        polygons.Append(0, bad, 1);
    }
    polygons.Append(1, 1, 2);
    box->SetVerticiesNormalsTable(CZemtarVerticiesNormalsTable::Create(document.get(), true));
    CZemtar3DObject* mesh = build.Mesh("box", nullptr, box);
    mesh->SetTextureCoordinatesTable(CZemtarTextureCoordinatesTable::Create(document.get(), true));

    const unsigned quad[] = {0, 1, 2, 3};
    CZemtarGeometry* sheet = build.Triangles({{5, 0, 0}, {6, 0, 0}, {6, 1, 0}, {5, 9, 0}}, {});
    sheet->PolygonsTable()->AppendPolygon(quad, 4);
    sheet->PolygonsTable()->AppendPolygon(quad, 2);
    build.Mesh("only the first three corners of four", nullptr, sheet);
    CZemtarGeometry* line = build.Line({{0, 0, 0}, {1, 0, 0}, {Nan, 0, 0}});
    line->PolyLinesTable()->Append(1, 77);
    build.Mesh("line", nullptr, line);

    const SceneFacts back = Back();
    EXPECT_EQ(back.triangles, 13u);
    EXPECT_EQ(back.slivers, 0u);
    EXPECT_NEAR(back.volume, 6.0, 1e-9);
    EXPECT_NEAR(back.areas.begin()->second, 22.5, 1e-9);
    EXPECT_NEAR(back.curves, 1.0, 1e-9);
}

TEST_P(BadExport, EveryPlacementIsTheWorldPlacement)
{
    const Turn turns[] = {{-1, 0, 0, 0, 1, 0, 0, 0, 1},     {1, 0, 0, 0, 2, 0, 0, 0, 0.5},
                          {1, 0.5, 0, 0, 1, 0.25, 0, 0, 1}, {0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6},
                          {1, 0, 0, 0, 1, 0, 0, 0, 0},      {1e-3, 0, 0, 0, -1e-3, 0, 0, 0, 1e-3}};
    CZemtarGeometry* box = build.Box(1, 2, 3);
    for (const Turn& outer : turns) {
        CZemtarSceneNode* part =
            build.Group("part", nullptr, CZemtarSceneNode::eNodeTypePart, Placement({10, 0, 0}, outer));
        for (const Turn& inner : turns) {
            build.Mesh("box", part, box, Placement({0, 5, -5}, inner));
        }
        const SceneFacts before(*document);
        const SceneFacts back = Back();
        EXPECT_LE(back.bounds.DistanceTo(before.bounds), 1e-6 * before.bounds.Size());
        EXPECT_NEAR(back.volume, before.volume, 1e-6 * before.volume);
        EXPECT_NEAR(back.areas.begin()->second, before.areas.begin()->second,
                    1e-6 * before.areas.begin()->second);
        EXPECT_GE(back.triangles + before.slivers, before.triangles);
        EXPECT_LE(back.triangles, before.triangles);
        part->SetDeleted(true);
    }
}

TEST_P(BadExport, PlacementsThatAreNoNumbersAreRefused)
{
    write(QString("engine.") + GetParam().name, "before");
    for (const double bad : {Nan, HUGE_VAL}) {
        for (int column = 0; column < 4; ++column) {
            CZemtarMatrix matrix;
            matrix.M(1, column) = bad;
            CZemtarSceneNode* mesh = build.Mesh("box", nullptr, build.Box(1, 1, 1), matrix);
            EXPECT_EQ(Export(Target()), "Failed to transfer model data to specified format\n");
            EXPECT_EQ(read(Target()), "before");
            mesh->SetDeleted(true);
        }
    }
}

TEST_P(BadExport, NodesHandedInDirectly)
{
    CZemtarSceneNode* car =
        build.Group("car", nullptr, CZemtarSceneNode::eNodeTypeAssembly, Placement({1, 0, 0}));
    CZemtarSceneNode* group =
        build.Group("group", car, CZemtarSceneNode::eNodeTypeGroup, Placement({0, 2, 0}));
    CZemtarSceneNode* mesh = build.Mesh("box", group, build.Box(1, 1, 1), Placement({0, 0, 4}));
    build.Mesh("sheet", car, build.Triangle());
    Writer writer;
    Prepare(writer);
    for (CZemtarSceneNode* node : {group, mesh}) {
        for (const bool world : {true, false}) {
            writer.ExportSceneNode(node, toHost(Target()), world);
            const SceneFacts back = Read();
            EXPECT_EQ(back.triangles, 12u);
            EXPECT_NEAR(back.bounds.min[0], world ? 1.0 : 0.0, 1e-9);
            EXPECT_NEAR(back.bounds.min[1], world || node == group ? 2.0 : 0.0, 1e-9);
            EXPECT_NEAR(back.bounds.min[2], 4.0, 1e-9);
        }
    }
}

TEST_P(BadExport, VeryDeepTreesAndOddNames)
{
    const std::string odd = "'\\X2\\ \"x\"; /* */ #1= \t\x01 \xF0\x9F\x98\x80 " + std::string(3000, 'n');
    CZemtarSceneNode* inner = nullptr;
    for (int depth = 0; depth < 900; ++depth) {
        inner =
            build.Group(odd.c_str(), inner, CZemtarSceneNode::eNodeTypeAssembly, Placement({0.001, 0, 0}));
    }
    build.Mesh(odd.c_str(), inner, build.Box(1, 1, 1));
    const SceneFacts before(*document);
    const SceneFacts back = Back();
    EXPECT_EQ(back.triangles, 12u);
    EXPECT_LE(back.bounds.DistanceTo(before.bounds), 1e-9);
    if (GetParam().number == Writer::eWriterSTEP) {
        EXPECT_EQ(back.groups.back(), before.nodes.back());
    }
}

TEST_P(BadExport, TargetsThatCannotBeWrittenStayAsTheyAre)
{
    for (int i = 0; i < 40; ++i) {
        build.Mesh("box", nullptr, build.Box(1, 1, 1), Placement({2.0 * i, 0, 0}));
    }
    const QString old = write(QString("engine.") + GetParam().name, "before");
    const QString name = QString("/a.") + GetParam().name;
    for (const QString& file : {path("missing") + name, old + name, path(""), QString()}) {
        EXPECT_EQ(Export(file), "Failed to write the file " + toHost(file).toStdString() + "\n");
    }
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t size : {0, 5000, 20000}) {
        rlimit small = before;
        small.rlim_cur = size;
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        Writer writer;
        Prepare(writer);
        // Standard error is not captured here: that would write a file.
        writer.Export(document.get(), toHost(old), nullptr, nullptr, nullptr, nullptr,
                      CZemtarUnit(eLengthUnitMillimetre));
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_EQ(read(old), "before");
    }
    std::signal(SIGXFSZ, handler);
    std::cerr.clear(); // the file that it goes to, if any, was full too
    EXPECT_EQ(QDir(path("")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);
    EXPECT_EQ(Export(old), "");
    EXPECT_GT(read(old).size(), 20000);
}

INSTANTIATE_TEST_SUITE_P(, BadExport,
                         testing::Values(Format{"stp", Writer::eWriterSTEP},
                                         Format{"igs", Writer::eWriterIGES},
                                         Format{"ifc", Writer::eWriterIFC}));
