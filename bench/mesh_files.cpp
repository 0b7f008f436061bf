// Formats of meshes out and in: 3DM, JT.
//
// Data: a wavy torus of 200,000 triangles with normals and texture coordinates, its vertices shared, written
// to a stream in memory and read from one. Counter: bytes a triangle.

#include <cadex/JT_Reader.hxx>
#include <cadex/JT_Writer.hxx>
#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/Rhino_Reader.hxx>
#include <cadex/Rhino_Writer.hxx>

#include <benchmark/benchmark.h>

#include <cmath>
#include <ctime>
#include <numbers>
#include <sstream>

#include "bench/Torus.h"

namespace cadex {
namespace {

constexpr U32 kAround = 316; // squared and doubled: 200,000 triangles

/// With a normal and a texture coordinate a point.
ModelData_Model WavyTorus()
{
    internal::TriangleArrays arrays = Torus(std::int64_t{2} * kAround * kAround);
    for (U32 i = 0; i < kAround; ++i) {
        for (U32 j = 0; j < kAround; ++j) {
            const double u = 2 * std::numbers::pi * i / kAround;
            const double v = 2 * std::numbers::pi * j / kAround;
            arrays.normals.emplace_back(static_cast<float>(std::cos(v) * std::cos(u)),
                                        static_cast<float>(std::cos(v) * std::sin(u)),
                                        static_cast<float>(std::sin(v)));
            arrays.uvs.emplace_back(static_cast<double>(i) / kAround, static_cast<double>(j) / kAround);
        }
    }
    ModelData_Assembly root("root");
    root.AddInstance(ModelData_Instance(
        ModelData_Part(ModelData_PolyRepresentation(internal::MakeTriangleSet(std::move(arrays))), "torus"),
        "torus"));
    ModelData_Model model;
    model.AddRoot(root);
    return model;
}

template <typename Writer>
std::string Written(const ModelData_Model& model)
{
    std::ostringstream stream;
    Writer writer;
    return writer.Transfer(model) && writer.WriteFile(stream) ? std::move(stream).str() : std::string();
}

template <typename Writer>
void Write(benchmark::State& state)
{
    const ModelData_Model model = WavyTorus();
    double bytes = 0;
    for ([[maybe_unused]] auto _ : state) {
        const std::string file = Written<Writer>(model);
        bytes = static_cast<double>(file.size());
    }
    if (bytes == 0) {
        state.SkipWithError("not written");
    }
    state.counters["bytes_per_triangle"] = bytes / (2.0 * kAround * kAround);
}

template <typename Reader, typename Writer>
void Read(benchmark::State& state)
{
    const std::string file = Written<Writer>(WavyTorus());
    for ([[maybe_unused]] auto _ : state) {
        std::istringstream stream(file);
        Reader reader;
        ModelData_Model model;
        if (!reader.ReadFile(stream) || !reader.Transfer(model)) {
            state.SkipWithError("not read");
            return;
        }
    }
}

BENCHMARK(Write<Rhino_Writer>)->Unit(benchmark::kMillisecond);
BENCHMARK(Read<Rhino_Reader, Rhino_Writer>)->Unit(benchmark::kMillisecond);
BENCHMARK(Write<JT_Writer>)->Unit(benchmark::kMillisecond);
BENCHMARK(Read<JT_Reader, JT_Writer>)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace cadex

BENCHMARK_MAIN();
