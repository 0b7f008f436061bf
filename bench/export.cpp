// Exports of host documents to files, and the reading of such a file with many instances.
//
//     own_percent         the share of the library and of the SDK's data model that it fills: the same export
//     into
//                         engines that do nothing
//     bytes_each          how much one more instance adds to the file, or keeps in memory after an import
//
// Each benchmark looks at its file. Times are processor time, fastest of the iterations for the shares.

#include "cadexchange/CZemtarCADExchangeReader.h"
#include "cadexchange/CZemtarCADExchangeWriter.h"
#include "host/CZemtarUnit.h"
#include "sdk/model/EngineRegistry.h"
#include "tests/support/SceneBuilder.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <new>
#include <string>

using namespace Zemtar;
using namespace Zemtar::Test;

namespace {

std::size_t bytesInUse = 0;
constexpr std::size_t HeaderSize = alignof(std::max_align_t);

double Seconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

class NoEngine : public cadex::internal::WriterEngine
{
public:
    bool Transfer(const cadex::ModelData_Model&, const cadex::Base_WriterParameters&) override
    {
        return true;
    }
    bool WriteFile(const std::filesystem::path&) override { return true; }
};

struct Target
{
    CZemtarCADExchangeWriter::eWriterType type;
    const char* name;

    std::string Path() const
    {
        return (std::filesystem::temp_directory_path() / (std::string("zemtar-export-bench.") + name))
            .string();
    }
};
constexpr Target Step{CZemtarCADExchangeWriter::eWriterSTEP, "stp"};
constexpr Target Iges{CZemtarCADExchangeWriter::eWriterIGES, "igs"};
constexpr Target Ifc{CZemtarCADExchangeWriter::eWriterIFC, "ifc"};

double ExportSeconds(CZemtarDocument& document, const Target& target)
{
    CZemtarCADExchangeWriter writer;
    writer.SetCADWriterType(target.type);
    const double start = Seconds();
    writer.Export(&document, target.Path().c_str(), nullptr, nullptr, nullptr, nullptr,
                  CZemtarUnit(eLengthUnitMillimetre));
    return Seconds() - start;
}

double OwnSeconds(CZemtarDocument& document, const Target& target)
{
    auto& registry = cadex::internal::EngineRegistry::Instance();
    const auto format = static_cast<cadex::internal::Format>(target.type);
    const auto before = registry.SetWriter(format, [] { return std::make_unique<NoEngine>(); });
    const double seconds = ExportSeconds(document, target);
    registry.SetWriter(format, before);
    return seconds;
}

void Share(benchmark::State& state, CZemtarDocument& document, const Target& target)
{
    double whole = 1e9;
    double own = 1e9;
    for ([[maybe_unused]] auto _ : state) {
        std::filesystem::remove(target.Path());
        const double seconds = ExportSeconds(document, target);
        if (!std::filesystem::exists(target.Path())) {
            state.SkipWithError("not written");
            return;
        }
        state.SetIterationTime(seconds);
        whole = std::min(whole, seconds);
        own = std::min(own, OwnSeconds(document, target));
    }
    state.counters["own_percent"] = 100.0 * own / whole;
    state.counters["MB"] = static_cast<double>(std::filesystem::file_size(target.Path())) / 1e6;
    std::filesystem::remove(target.Path());
}

/// A closed ring of side x side squares, two triangles each, with normals.
CZemtarGeometry* Ring(const SceneBuilder& build, CZemtarDocument& document, unsigned side)
{
    constexpr double turn = 2.0 * 3.14159265358979;
    SceneBuilder::Points points;
    std::vector<unsigned> corners;
    auto* normals = CZemtarVerticiesNormalsTable::Create(&document, true);
    for (unsigned a = 0; a < side; ++a) {
        for (unsigned b = 0; b < side; ++b) {
            const double u = turn * a / side;
            const double v = turn * b / side;
            const double radius = 0.05 + 0.02 * std::cos(v);
            points.push_back({radius * std::cos(u), radius * std::sin(u), 0.02 * std::sin(v)});
            normals->Append(std::cos(u) * std::cos(v), std::sin(u) * std::cos(v), std::sin(v));
            const unsigned nextA = (a + 1) % side;
            const unsigned nextB = (b + 1) % side;
            corners.insert(corners.end(), {a * side + b, nextA * side + b, nextA * side + nextB, a * side + b,
                                           nextA * side + nextB, a * side + nextB});
        }
    }
    CZemtarGeometry* geometry = build.Triangles(points, corners);
    geometry->SetVerticiesNormalsTable(normals);
    return geometry;
}

using Document = std::unique_ptr<CZemtarDocument>;

void OneMesh(benchmark::State& state, const Target& target)
{
    const Document document(CZemtarDocument::Create(true));
    const SceneBuilder build(*document);
    const auto side = static_cast<unsigned>(std::sqrt(static_cast<double>(state.range(0)) / 2.0));
    build.Mesh("ring", nullptr, Ring(build, *document, side), {}, build.Material(0.2, 0.4, 0.6));
    Share(state, *document, target);
}

/// 1,000 parts of 200 triangles with a colour and 20 properties each.
void ManyParts(benchmark::State& state, const Target& target)
{
    const Document document(CZemtarDocument::Create(true));
    const SceneBuilder build(*document);
    CZemtarSceneNode* top = build.Group("top", nullptr, CZemtarSceneNode::eNodeTypeAssembly);
    for (int i = 0; i < 1000; ++i) {
        CZemtarSceneNode* part =
            build.Group("part", top, CZemtarSceneNode::eNodeTypePart, Placement({0.2 * i, 0.0, 0.0}));
        for (int property = 0; property < 20; ++property) {
            part->MetaData()->SetValue("some value", CZemtarString("Property ") + CZemtarString(property),
                                       "A", "");
        }
        build.Mesh("ring", part, Ring(build, *document, 10), {}, build.Material(i / 1000.0, 0.4, 0.6));
    }
    Share(state, *document, target);
}

/// A part of 20,000 triangles, once and 10,000 times more: the file, and what reading it takes.
Document Instances(int count)
{
    Document document(CZemtarDocument::Create(true));
    const SceneBuilder build(*document);
    CZemtarSceneNode* top = build.Group("top", nullptr, CZemtarSceneNode::eNodeTypeAssembly);
    CZemtarGeometry* geometry = Ring(build, *document, 100);
    for (int i = 0; i < count; ++i) {
        const double angle = 0.1 * i;
        build.Mesh(
            "screw M8 x 20", top, geometry,
            Placement({angle / 3.0, 1.0 / (1.0 + angle), -angle},
                      {std::cos(angle), -std::sin(angle), 0, std::sin(angle), std::cos(angle), 0, 0, 0, 1}));
    }
    return document;
}

void ManyInstances(benchmark::State& state)
{
    constexpr int extra = 10000;
    const Document once = Instances(1);
    const Document often = Instances(extra + 1);
    ExportSeconds(*once, Step);
    const auto bytesOfOne = static_cast<double>(std::filesystem::file_size(Step.Path()));
    Share(state, *often, Step);
    ExportSeconds(*often, Step);
    const auto bytes = static_cast<double>(std::filesystem::file_size(Step.Path()));
    state.counters["bytes_each"] = (bytes - bytesOfOne) / extra;
}

struct Read
{
    Document document;
    double seconds;
    double bytes;

    Read()
    {
        CZemtarCADExchangeReader reader;
        reader.SetCADReaderType(CZemtarCADExchangeReader::eReaderSTEP);
        reader.setTessellationFactor(50);
        reader.setUseParallelProcessing(false);
        const std::size_t before = bytesInUse;
        const double start = Seconds();
        document.reset(reader.Import(Step.Path().c_str()));
        seconds = Seconds() - start;
        bytes = static_cast<double>(bytesInUse - before);
    }
};

void ImportManyInstances(benchmark::State& state)
{
    constexpr int extra = 10000;
    const Document often = Instances(extra + 1);
    ExportSeconds(*Instances(1), Step);
    const Read first;
    ExportSeconds(*often, Step);
    for ([[maybe_unused]] auto _ : state) {
        const Read all;
        if (!all.document || all.document->Nodes().size() < 2 * extra) {
            state.SkipWithError("instances are missing");
            return;
        }
        state.SetIterationTime(all.seconds - first.seconds);
        // The walk's table of nodes is kept until the next import, so that a little of it counts.
        state.counters["bytes_each"] = (all.bytes - first.bytes) / extra;
    }
    std::filesystem::remove(Step.Path());
}

BENCHMARK_CAPTURE(OneMesh, step, Step)
    ->Arg(100000)
    ->Arg(1000000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OneMesh, iges, Iges)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OneMesh, ifc, Ifc)->Arg(100000)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ManyParts, step, Step)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ManyParts, ifc, Ifc)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ManyInstances)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ImportManyInstances)->UseManualTime()->Unit(benchmark::kMillisecond);

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
