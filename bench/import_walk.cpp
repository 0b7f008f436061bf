// The library's own work in an import: models built in memory come straight out of an engine double, so that
// what is timed is the walk, the host's merge and the tables. Each benchmark checks its document.
//
//     corners        triangle corners a second, one thread
//     peak_written   highest memory in use during the import, by the tables before the merge
//     peak_finished  the same, by the tables after it: what sharing saves is on top here

#include "cadexchange/CZemtarCADExchangeReader.h"
#include "cadexchange/CZemtarCADExchangeReaderHandler.h"
#include "host/CZemtar3DObject.h"
#include "host/CZemtarMetaData.h"
#include "tests/support/ModelBuilder.h"
#include "tests/support/RecordingEngines.h"

#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelAlgo_BRepMesherParameters.hxx>
#include <cadex/ModelAlgo_ValidationProperty.hxx>
#include <cadex/ModelAlgo_ValidationPropertyData.hxx>
#include <cadex/ModelData_ShapeConverter.hxx>
#include <cadex/STEP_Reader.hxx>
#include <cadex/STEP_Writer.hxx>

#include <TopoDS_Shape.hxx>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <new>

using namespace Zemtar;
using namespace Zemtar::Test;

namespace {

// Plain numbers: atomic ones would be measured too, and nothing here runs in a second thread.
std::size_t bytesInUse = 0;
std::size_t bytesAtPeak = 0;
constexpr std::size_t HeaderSize = alignof(std::max_align_t);

/// Processor time: other programs on the machine do not count, and nothing here waits.
double Seconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

struct Measured
{
    std::unique_ptr<CZemtarDocument> document;
    double seconds;
    double bytesKept;
    double bytesAtPeak;
};

Measured Import(const std::vector<cadex::ModelData_SceneGraphElement>& roots)
{
    const std::size_t before = bytesInUse;
    bytesAtPeak = before;
    const double start = Seconds();
    auto document = ImportModel(roots);
    const double seconds = Seconds() - start;
    return {std::move(document), seconds, static_cast<double>(bytesInUse - before),
            static_cast<double>(bytesAtPeak - before)};
}

std::size_t TableBytes(const CZemtarDocument& document)
{
    std::size_t bytes = 0;
    for (const CZemtarSceneNode* node : document.Nodes()) {
        if (const auto* object = dynamic_cast<const CZemtar3DObject*>(node)) {
            const CZemtarGeometry& geometry = *object->Geometry();
            const std::size_t doubles = 3u * geometry.VerticiesTable()->Count() +
                                        3u * geometry.VerticiesNormalsTable()->Count() +
                                        2u * object->TextureCoordinatesTable()->Count();
            bytes += doubles * sizeof(double) + geometry.PolygonsTable()->IndexCount() * sizeof(unsigned int);
        }
    }
    return bytes;
}

std::size_t Triangles(const CZemtarDocument& document)
{
    std::size_t count = 0;
    for (const CZemtarSceneNode* node : document.Nodes()) {
        if (const auto* object = dynamic_cast<const CZemtar3DObject*>(node)) {
            count += object->Geometry()->PolygonsTable()->Count();
        }
    }
    return count;
}

/// One mesh with normals: all corners around a point alike (smooth), or those of one triangle only (flat).
void WalkAndMerge(benchmark::State& state, bool smooth)
{
    const int cells = static_cast<int>(std::sqrt(static_cast<double>(state.range(0)) / 2.0));
    const std::size_t triangles = 2u * static_cast<std::size_t>(cells) * static_cast<std::size_t>(cells);
    const auto part = MakePart("part", {MakeGrid(cells, smooth ? Normals::Smooth : Normals::Flat)});
    const double written =
        static_cast<double>(triangles) * (3 * 6 * sizeof(double) + 3 * sizeof(unsigned int));
    for ([[maybe_unused]] auto _ : state) {
        const Measured result = Import({part});
        if (Triangles(*result.document) != triangles) {
            state.SkipWithError("triangles are missing");
        }
        state.SetIterationTime(result.seconds);
        state.counters["peak_written"] = result.bytesAtPeak / written;
        state.counters["peak_finished"] =
            result.bytesAtPeak / static_cast<double>(TableBytes(*result.document));
    }
    state.counters["corners"] = benchmark::Counter(3.0 * static_cast<double>(triangles),
                                                   benchmark::Counter::kIsIterationInvariantRate);
}

void WalkSmooth(benchmark::State& state)
{
    WalkAndMerge(state, true);
}
void WalkFlat(benchmark::State& state)
{
    WalkAndMerge(state, false);
}

/// One part of 20,000 triangles, once and 10,000 times more.
void Instances(benchmark::State& state)
{
    constexpr int extra = 10000;
    const auto part = MakePart("part", {MakeGrid(100, Normals::Smooth)});
    const auto once = MakeAssembly("top", {cadex::ModelData_Instance(part, "first")});
    const auto often = MakeAssembly("top", {cadex::ModelData_Instance(part, "first")});
    for (int i = 0; i < extra; ++i) {
        cadex::ModelData_Transformation placement;
        placement.SetTranslationPart(i, 0.0, 0.0);
        cadex::ModelData_Assembly(often).AddInstance(cadex::ModelData_Instance(part, placement, "instance"));
    }
    for ([[maybe_unused]] auto _ : state) {
        const Measured first = Import({once});
        const Measured all = Import({often});
        if (all.document->RootNodes().at(0)->ChildNodes().size() != extra + 1) {
            state.SkipWithError("instances are missing");
        }
        state.SetIterationTime(all.seconds - first.seconds);
        state.counters["bytes_each"] = (all.bytesKept - first.bytesKept) / extra;
    }
}

/// 10,000 parts of 800 triangles, with 20 properties and a colour of its own each, and without.
void PropertiesAndMaterials(benchmark::State& state)
{
    std::vector<cadex::ModelData_SceneGraphElement> plain;
    std::vector<cadex::ModelData_SceneGraphElement> rich;
    for (int i = 0; i < 10000; ++i) {
        const auto mesh = MakeGrid(20, Normals::Smooth);
        plain.push_back(MakePart("part", {mesh}));
        auto part = MakePart("part", {mesh});
        cadex::ModelData_PropertyTable table{cadex::initialized()};
        for (int property = 0; property < 20; ++property) {
            const std::string name = "Property " + std::to_string(property);
            table.Add(name.c_str(), cadex::Base_UTF16String("some value of the property"));
        }
        part.AddProperties(table);
        part.SetAppearance(
            cadex::ModelData_Appearance(cadex::ModelData_Color(0.0f, 0.0f, static_cast<float>(i) / 1e4f)));
        rich.push_back(part);
    }
    double without = Import(plain).seconds;
    double best = Import(rich).seconds;
    for ([[maybe_unused]] auto _ : state) {
        without = std::min(without, Import(plain).seconds);
        const Measured with = Import(rich);
        std::map<CZemtarString, CZemtarMetaData::NamedValues> values;
        with.document->RootNodes().back()->MetaData()->ListNamedValues(values);
        if (values["Properties"].size() != 20 || with.document->Materials().size() != rich.size()) {
            state.SkipWithError("properties or materials are missing");
        }
        state.SetIterationTime(with.seconds);
        best = std::min(best, with.seconds);
        state.counters["share_percent"] = 100.0 * (best - without) / best;
    }
}

/// Makes the SDK calls of an import and nothing else.
class SdkCalls : public cadex::ModelData_Model::VoidElementVisitor
{
public:
    explicit SdkCalls(const char* file)
    {
        cadex::STEP_Reader reader;
        cadex::ModelData_Model model;
        reader.Parameters().PreferredBRepRepresentationType() = cadex::STEP_ReaderParameters::All;
        m_isRead = reader.ReadFile(file) && reader.Transfer(model);
        cadex::ModelAlgo_BRepMesherParameters parameters;
        double angle = 0.0;
        double chord = 0.0;
        CZemtarCADExchangeReaderHandler::getInstance()->ProcessTessellation(0, angle, chord);
        parameters.SetAngularDeflection(angle * 3.1415926535 / 180.0);
        parameters.SetChordalDeflection(chord);
        cadex::ModelAlgo_BRepMesher(parameters).Compute(model, true);
        model.Accept(*this);
    }
    bool IsRead() const { return m_isRead; }
    void operator()(const cadex::ModelData_Part& part) override
    {
        cadex::ModelAlgo_ValidationPropertyData data;
        const double start = Seconds();
        if (cadex::ModelAlgo_ValidationProperty::ComputeValidationProperties(part, data)) {
            cadex::ModelData_ShapeConverter::Convert(part);
        }
        massSeconds += Seconds() - start;
    }
    double massSeconds = 0.0;

private:
    bool m_isRead = false;
};

/// What the library adds to the SDK's own time for a file: finest tessellation, one thread, fastest of three
/// each.
void OwnShare(benchmark::State& state, const char* file)
{
    CZemtarCADExchangeReader reader;
    reader.SetCADReaderType(CZemtarCADExchangeReader::eReaderSTEP);
    reader.setUseParallelProcessing(false);
    reader.setTessellationFactor(20);
    double whole = 1e9;
    double sdk = 1e9;
    double mass = 1e9;
    for ([[maybe_unused]] auto _ : state) {
        double start = Seconds();
        const std::unique_ptr<CZemtarDocument> document(reader.Import(file));
        const double seconds = Seconds() - start;
        whole = std::min(whole, seconds);
        cadex::Base_Settings::Default()->SetValue(cadex::Base_Settings::ConcurrentMode, false);
        start = Seconds();
        const SdkCalls calls(file);
        sdk = std::min(sdk, Seconds() - start);
        mass = std::min(mass, calls.massSeconds);
        if (!document || !calls.IsRead() || Triangles(*document) == 0) {
            state.SkipWithError("the file cannot be read");
            break;
        }
        state.SetIterationTime(seconds);
        state.counters["triangles"] = static_cast<double>(Triangles(*document));
        state.counters["own_percent"] = 100.0 * (whole - sdk) / whole;
        state.counters["mass_percent"] = 100.0 * mass / whole;
    }
}

/// A closed ring of side x side squares, two triangles each.
cadex::ModelData_IndexedTriangleSet MakeRing(int side)
{
    std::vector<cadex::ModelData_Point> points;
    std::vector<int> corners;
    for (int i = 0; i < side * side; ++i) {
        const int row = i / side;
        const double around = 2.0 * 3.14159265358979 * row / side;
        const double across = 2.0 * 3.14159265358979 * (i % side) / side;
        const double radius = 100.0 + 30.0 * std::cos(across);
        points.emplace_back(radius * std::cos(around), radius * std::sin(around), 30.0 * std::sin(across));
        const int nextRow = (row + 1) % side * side;
        const int a = i;
        const int b = row * side + (i + 1) % side;
        const int c = nextRow + i % side;
        const int d = nextRow + (i + 1) % side;
        corners.insert(corners.end(), {a, c, b, b, c, d});
    }
    cadex::ModelData_IndexedTriangleSet set{cadex::initialized()};
    set.AddCoordinates(points.data(), points.size(), corners.data(), corners.size());
    return set;
}

/// A faceted ring of 100,352 triangles, written by the SDK.
void OwnShareFacets(benchmark::State& state)
{
    const std::string file = (std::filesystem::temp_directory_path() / "zemtar-import-bench.step").string();
    cadex::ModelData_Model model;
    model.AddRoot(MakePart("ring", {MakeRing(224)}));
    cadex::STEP_Writer writer;
    if (!writer.Transfer(model) || !writer.WriteFile(file.c_str())) {
        state.SkipWithError("the file cannot be written");
    }
    OwnShare(state, file.c_str());
    std::filesystem::remove(file);
}

/// A curved part, from the samples that ./dev installs.
void OwnShareCurved(benchmark::State& state)
{
    OwnShare(state, "/usr/share/opencascade/data/step/linkrods.step");
}

BENCHMARK(OwnShareFacets)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(OwnShareCurved)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(WalkSmooth)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Arg(5000000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(WalkFlat)->Arg(10000)->Arg(100000)->Arg(1000000)->Arg(5000000)->UseManualTime()->Unit(
    benchmark::kMillisecond);
BENCHMARK(Instances)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(PropertiesAndMaterials)->Iterations(4)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

// Counts what is in use; each block carries its size in front.
void* operator new(std::size_t size)
{
    auto* memory = static_cast<char*>(std::malloc(size + HeaderSize));
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    *reinterpret_cast<std::size_t*>(memory) = size;
    bytesInUse += size;
    bytesAtPeak = std::max(bytesAtPeak, bytesInUse);
    return memory + HeaderSize;
}
void operator delete(void* memory) noexcept
{
    if (memory != nullptr) {
        char* block = static_cast<char*>(memory) - HeaderSize;
        bytesInUse -= *reinterpret_cast<std::size_t*>(block);
        std::free(block);
    }
}
void operator delete(void* memory, std::size_t) noexcept
{
    operator delete(memory);
}

BENCHMARK_MAIN();
