// STEP export of one mesh, beside the kernel's writer in its faceted mode, which is the fastest of its ways;
// and of one part placed many times.
//
// Data: a wavy torus, closed, its vertices shared; written to a file. Counters: bytes a triangle or an
// instance, how far the process's peak memory rose while writing (build before, so that only the writing
// counts), and, on the kernel's line, how many times the time and size of ours it takes.

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/STEP_Writer.hxx>

#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_Printer.hxx>
#include <STEPControl_Writer.hxx>
#include <benchmark/benchmark.h>

#include <cmath>
#include <ctime>
#include <filesystem>

#include <sys/resource.h>

#include "bench/Torus.h"
#include "sdk/model/TriangleSets.h"
#include "sdk/occt/FacetedBRep.h"
#include "sdk/occt/MeshToShape.h"

namespace cadex {
namespace {

constexpr std::int64_t kCompared = 100'000; // triangles

std::filesystem::path Target()
{
    return std::filesystem::temp_directory_path() / "step_write_bench.stp";
}

double PeakMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
#ifdef __APPLE__
    return static_cast<double>(usage.ru_maxrss) / 1e6;
#else
    return static_cast<double>(usage.ru_maxrss) / 1e3;
#endif
}

/// Processor time and size of what was written last.
struct Result
{
    double seconds = 0;
    double bytes = 0;
};

template <typename Write>
Result Measure(benchmark::State& state, Write write)
{
    Result result;
    for ([[maybe_unused]] auto _ : state) {
        const std::clock_t start = std::clock();
        if (!write()) {
            state.SkipWithError("not written");
            return result;
        }
        result.seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    }
    result.bytes = static_cast<double>(std::filesystem::file_size(Target()));
    std::filesystem::remove(Target());
    return result;
}

bool WriteModel(const ModelData_Model& model)
{
    STEP_Writer writer;
    return writer.Transfer(model) && writer.WriteFile(Base_UTF16String(Target().c_str()));
}

Result g_ours; // for kCompared triangles

void Mesh(benchmark::State& state)
{
    const ModelData_IndexedTriangleSet set = internal::MakeTriangleSet(Torus(state.range(0)));
    ModelData_Model model;
    model.AddRoot(ModelData_Part(ModelData_PolyRepresentation(set), "torus"));
    const double before = PeakMegabytes();
    const Result result = Measure(state, [&] { return WriteModel(model); });
    state.counters["peak_rise_MB"] = PeakMegabytes() - before;
    state.counters["bytes_per_triangle"] = result.bytes / set.NumberOfFaces();
    state.counters["triangles_per_second"] = set.NumberOfFaces() / result.seconds;
    if (state.range(0) == kCompared) {
        g_ours = result;
    }
}

void Instances(benchmark::State& state)
{
    const ModelData_IndexedTriangleSet set = internal::MakeTriangleSet(Torus(8));
    const ModelData_Part part(ModelData_PolyRepresentation(set), "screw M8 x 20");
    ModelData_Assembly root("root");
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        const double angle = 0.1 * static_cast<double>(i);
        ModelData_Transformation placement;
        placement.SetRotationPart(std::cos(angle), -std::sin(angle), 0, std::sin(angle), std::cos(angle), 0,
                                  0, 0, 1);
        placement.SetTranslationPart(angle / 3, 1 / (1 + angle), -angle);
        placement.SetScaleFactor(1000);
        root.AddInstance(ModelData_Instance(part, placement, "screw M8 x 20:1"));
    }
    ModelData_Model model;
    model.AddRoot(root);
    const Result result = Measure(state, [&] { return WriteModel(model); });
    state.counters["bytes_per_instance"] = result.bytes / static_cast<double>(state.range(0));
}

void KernelFaceted(benchmark::State& state)
{
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_Printer));
    internal::TriangleArrays arrays = Torus(kCompared);
    occt::FacetedBRep facets;
    facets.groups.push_back({std::move(arrays.points), std::move(arrays.indices), {}});
    facets.closed = true;
    const TopoDS_Shape shape = occt::MakeShape(facets); // building it is not counted
    const Result result = Measure(state, [&] {
        STEPControl_Writer writer;
        return writer.Transfer(shape, STEPControl_FacetedBrep) == IFSelect_RetDone &&
               writer.Write(Target().c_str()) == IFSelect_RetDone;
    });
    if (g_ours.seconds > 0) {
        state.counters["times_our_time"] = result.seconds / g_ours.seconds;
        state.counters["times_our_size"] = result.bytes / g_ours.bytes;
    }
}

BENCHMARK(Mesh)->Arg(10'000)->Arg(kCompared)->Arg(1'000'000)->Arg(5'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(Instances)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(KernelFaceted)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace cadex

BENCHMARK_MAIN();
