// A document of 5 million triangles to GLB, OBJ, PLY and STL, beside the plain writing of as many bytes, and
// how far the process' memory grows meanwhile. Arguments of a series: the packing.

#include "apps/export/SceneExport.h"

#include "host/CZemtar3DObject.h"
#include "host/CZemtarDocument.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>

using namespace Zemtar;

namespace {

constexpr unsigned Side = 1582; ///< 2 * Side * Side triangles, just over 5 million

const CZemtarDocument& Model()
{
    static const std::unique_ptr<CZemtarDocument> owner(CZemtarDocument::Create(true));
    CZemtarDocument* document = owner.get();
    if (!document->RootNodes().empty()) {
        return *document;
    }
    auto* vertices = CZemtarVerticiesTable::Create(document, true);
    auto* normals = CZemtarVerticiesNormalsTable::Create(document, true);
    auto* triangles = CZemtarPolygonsTable::Create(document);
    vertices->Reserve(std::size_t{Side + 1} * (Side + 1));
    normals->Reserve(std::size_t{Side + 1} * (Side + 1));
    triangles->Reserve(std::size_t{2} * Side * Side);
    for (unsigned r = 0; r <= Side; ++r) {
        for (unsigned s = 0; s <= Side; ++s) {
            const double slope = 0.3 * std::cos(0.1 * s);
            const double length = std::sqrt(1.0 + slope * slope);
            vertices->Append(1e-3 * r, 1e-3 * s, 3e-3 * std::sin(0.1 * s));
            normals->Append(0.0, -slope / length, 1.0 / length);
        }
    }
    for (unsigned r = 0; r < Side; ++r) {
        for (unsigned s = 0; s < Side; ++s) {
            const unsigned a = r * (Side + 1) + s;
            triangles->Append(a, a + Side + 1, a + 1);
            triangles->Append(a + 1, a + Side + 1, a + Side + 2);
        }
    }
    CZemtarGeometry* geometry = CZemtarGeometry::Create(document);
    geometry->SetVerticiesTable(vertices);
    geometry->SetVerticiesNormalsTable(normals);
    geometry->SetPolygonsTable(triangles);
    CZemtar3DObject::Create(document)->SetGeometry(geometry);
    return *document;
}

std::string Target()
{
    return (std::filesystem::temp_directory_path() / "zemtar_scene_export_bench").string();
}

/// The most memory that the process had so far, in units of the system's (kB; bytes on macOS).
double PeakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss);
}

void Export(benchmark::State& state, SceneFormat format, GlbPacking packing)
{
    const CZemtarDocument& document = Model();
    static const double before = PeakMemory(); // once: the first series has the growth
    for ([[maybe_unused]] auto _ : state) {
        ExportScene(document, Target(), {.format = format, .packing = packing});
    }
    state.counters["MB"] = static_cast<double>(std::filesystem::file_size(Target())) * 1e-6;
    state.counters["memory_grown"] = PeakMemory() - before;
    std::filesystem::remove(Target());
    std::filesystem::remove(Target() + ".mtl");
}

/// The bytes of the plain GLB file, which lie ready, to a file: what nobody can undercut.
void WriteBytes(benchmark::State& state)
{
    ExportScene(Model(), Target(), {});
    const std::size_t size = std::filesystem::file_size(Target());
    std::vector<char> bytes(size);
    std::ifstream(Target(), std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(size));
    for ([[maybe_unused]] auto _ : state) { // replaced by renaming, as an export does
        std::ofstream file(Target() + ".part", std::ios::binary);
        file.write(bytes.data(), static_cast<std::streamsize>(size));
        file.close();
        std::filesystem::rename(Target() + ".part", Target());
    }
    state.counters["MB"] = static_cast<double>(size) * 1e-6;
    std::filesystem::remove(Target());
}

BENCHMARK_CAPTURE(Export, glb, SceneFormat::GLB, GlbPacking::None)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(Export, stl, SceneFormat::STL, GlbPacking::None)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(Export, ply, SceneFormat::PLY, GlbPacking::None)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(Export, obj, SceneFormat::OBJ, GlbPacking::None)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(Export, quantized, SceneFormat::GLB, GlbPacking::Quantize)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(WriteBytes)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
