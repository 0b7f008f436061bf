// The SDK's triangle sets as importers and exporters use them: filled in three calls, read corner by corner.
//
// Data: a strip with positions, normals and texture coordinates, six corners for two points. The figure is
// corners a second on one core.

#include <cadex/ModelData_IndexedTriangleSet.hxx>

#include <benchmark/benchmark.h>

#include <vector>

namespace cadex {
namespace {

struct Strip
{
    explicit Strip(std::int64_t triangles) : counts(static_cast<std::size_t>(triangles), 3)
    {
        for (int i = 0; i < triangles + 2; ++i) {
            points.emplace_back(i, i % 2, 1);
            normals.emplace_back(0.f, 0.f, 1.f);
            uvs.emplace_back(i, i % 2);
        }
        for (int i = 0; i < triangles; ++i) {
            indices.insert(indices.end(), {i, i + 1, i + 2});
        }
    }

    ModelData_IndexedTriangleSet Set() const
    {
        ModelData_IndexedTriangleSet set;
        set.AddCoordinates(points.data(), points.size(), indices.data(), counts.data(), counts.size());
        set.AddNormals(normals.data(), normals.size(), indices.data(), counts.data(), counts.size());
        set.AddUVCoordinates(uvs.data(), uvs.size(), indices.data(), counts.data(), counts.size());
        return set;
    }

    std::vector<ModelData_Point> points;
    std::vector<ModelData_Vectorf> normals;
    std::vector<ModelData_Point2d> uvs;
    std::vector<int> indices;
    std::vector<int> counts;
};

void Report(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * state.range(0) * 3);
}

void Fill(benchmark::State& state)
{
    const Strip strip(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        if (strip.Set().NumberOfFaces() != state.range(0)) {
            state.SkipWithError("triangles lost");
        }
    }
    Report(state);
}

void ReadCorners(benchmark::State& state)
{
    const ModelData_IndexedTriangleSet set = Strip(state.range(0)).Set();
    double sum = 0;
    for ([[maybe_unused]] auto _ : state) {
        sum = 0;
        for (int face = 0; face < set.NumberOfFaces(); ++face) {
            for (int slot = 0; slot < 3; ++slot) {
                const ModelData_Point& point = set.Coordinate(face, slot);
                if (set.HasUVCoordinates()) {
                    sum += set.UVCoordinate(face, slot).X() - point.X();
                }
                if (set.HasNormals()) {
                    sum += static_cast<double>(set.VertexNormal(face, slot).Z()) * point.Z();
                }
            }
        }
        benchmark::DoNotOptimize(sum);
    }
    if (sum != 3. * static_cast<double>(state.range(0))) {
        state.SkipWithError("wrong corners");
    }
    Report(state);
}

BENCHMARK(Fill)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadCorners)->Arg(10'000)->Arg(5'000'000)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace cadex

BENCHMARK_MAIN();
