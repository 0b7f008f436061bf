// Merging identical vertices, and copies of a part.
//
// Data: a height field of quads, two triangles each, written as an importer writes it: three vertices of
// their own per triangle, with normals and texture coordinates. Smooth: corners at one grid point are
// identical, so that one vertex in six stays. Faceted: each triangle has its own normal, so that all stay.
// `std::unordered_map` does the same in the plainest way, for the ratio. Counters: corners per second, and
// the peak of memory over the tables that were given and over those that were left (allocations are counted,
// so that it is exact).

#include "host/CZemtar3DObject.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMesh.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarTransform.h"
#include "host/CZemtarTransformNode.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <unordered_map>

namespace {

std::size_t heldBytes = 0;
std::size_t peakBytes = 0;

constexpr std::size_t HeaderBytes = alignof(std::max_align_t);

} // namespace

void* operator new(std::size_t size)
{
    auto* block = static_cast<std::byte*>(std::malloc(size + HeaderBytes));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    *reinterpret_cast<std::size_t*>(block) = size;
    heldBytes += size;
    peakBytes = std::max(peakBytes, heldBytes);
    return block + HeaderBytes;
}

void operator delete(void* memory) noexcept
{
    if (memory != nullptr) {
        std::byte* block = static_cast<std::byte*>(memory) - HeaderBytes;
        heldBytes -= *reinterpret_cast<std::size_t*>(block);
        std::free(block);
    }
}

void operator delete(void* memory, std::size_t) noexcept
{
    operator delete(memory);
}

namespace {

using namespace Zemtar;

/// The tables of one mesh, unshared.
struct Unshared
{
    std::unique_ptr<CZemtarDocument> document{CZemtarDocument::Create(true)};
    CZemtarVerticiesTable* vertices = CZemtarVerticiesTable::Create(document.get(), true);
    CZemtarVerticiesNormalsTable* normals = CZemtarVerticiesNormalsTable::Create(document.get(), true);
    CZemtarTextureCoordinatesTable* coordinates =
        CZemtarTextureCoordinatesTable::Create(document.get(), true);
    CZemtarPolygonsTable* polygons = CZemtarPolygonsTable::Create(document.get());

    std::size_t Bytes() const
    {
        return sizeof(double) * (6 * std::size_t{vertices->Count()} + 2 * std::size_t{coordinates->Count()}) +
               sizeof(unsigned) * polygons->IndexCount();
    }
};

/// Makes room for `count` corners.
void Reserve(Unshared& mesh, std::size_t count)
{
    mesh.vertices->Reserve(count);
    mesh.normals->Reserve(count);
    mesh.coordinates->Reserve(count);
}

void MergeTables(Unshared& mesh)
{
    CZemtarMesh::CombineIdenticalVerticesInPlace(mesh.vertices, mesh.normals, mesh.polygons, mesh.coordinates,
                                                 false, nullptr);
}

/// Builds a height field of about that many triangles, and gives how many vertices must stay of it when it is
/// smooth. In steps, it is merged whenever the tables have doubled.
std::size_t Build(Unshared& mesh, std::size_t triangles, bool smooth, bool inSteps = false)
{
    const auto side = static_cast<unsigned>(std::sqrt(static_cast<double>(triangles) / 2.0));
    const std::size_t count = std::size_t{2} * side * side;
    std::size_t room = inSteps ? std::min<std::size_t>(65536, 3 * count) : 3 * count;
    Reserve(mesh, room);
    mesh.polygons->Reserve(count);
    unsigned triangle = 0;
    const auto append = [&](unsigned x, unsigned y) {
        const double u = static_cast<double>(x) / side;
        const double v = static_cast<double>(y) / side;
        mesh.vertices->Append(1000.0 * u, 1000.0 * v, u * v);
        mesh.normals->Append(v, u, smooth ? 1U : triangle);
        mesh.coordinates->Append(u, v);
    };
    for (unsigned y = 0; y < side; ++y) {
        for (unsigned x = 0; x < side; ++x) {
            if (mesh.vertices->Count() + 6 > room) {
                MergeTables(mesh);
                const std::size_t held = mesh.vertices->Count();
                // The share of the polygons bounds how often they are gone through where few vertices stay.
                const std::size_t more =
                    std::max({std::size_t{65536}, held, mesh.polygons->IndexCount() / 16});
                room = held + std::min(more, 3 * (count - triangle));
                Reserve(mesh, room);
            }
            for (const auto& corners : {std::array{0U, 0U, 1U, 0U, 1U, 1U}, {0U, 0U, 1U, 1U, 0U, 1U}}) {
                const unsigned first = mesh.vertices->Count();
                for (std::size_t i = 0; i < 6; i += 2) {
                    append(x + corners[i], y + corners[i + 1]);
                }
                mesh.polygons->Append(first, first + 1, first + 2);
                ++triangle;
            }
        }
    }
    return std::size_t{side + 1} * (side + 1);
}

void Merge(benchmark::State& state)
{
    const bool smooth = state.range(1) != 0;
    std::size_t corners = 0;
    double overGiven = 0.0;
    double overLeft = 0.0;
    while (state.KeepRunning()) {
        state.PauseTiming();
        const std::size_t before = heldBytes;
        auto mesh = std::make_unique<Unshared>();
        const std::size_t expected = Build(*mesh, static_cast<std::size_t>(state.range(0)), smooth);
        const std::size_t given = mesh->Bytes();
        corners = mesh->vertices->Count();
        peakBytes = heldBytes;
        state.ResumeTiming();

        MergeTables(*mesh);

        state.PauseTiming();
        if (mesh->vertices->Count() != (smooth ? expected : corners)) {
            state.SkipWithError("wrong number of vertices");
        }
        const auto peak = static_cast<double>(peakBytes - before);
        overGiven = peak / static_cast<double>(given);
        overLeft = peak / static_cast<double>(mesh->Bytes());
        mesh.reset();
        state.ResumeTiming();
    }
    state.counters["corners/s"] =
        benchmark::Counter(static_cast<double>(corners), benchmark::Counter::kIsIterationInvariantRate);
    state.counters["peak/given"] = overGiven;
    state.counters["peak/left"] = overLeft;
}
BENCHMARK(Merge)
    ->ArgNames({"triangles", "smooth"})
    ->ArgsProduct({{10'000, 100'000, 1'000'000, 5'000'000}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

/// Filling and merging together, at the end (0) or whenever the tables have doubled (1).
void FillAndMerge(benchmark::State& state)
{
    std::size_t corners = 0;
    double overLeft = 0.0;
    while (state.KeepRunning()) {
        const std::size_t before = heldBytes;
        peakBytes = heldBytes;
        Unshared mesh;
        const std::size_t expected =
            Build(mesh, static_cast<std::size_t>(state.range(0)), true, state.range(1) != 0);
        MergeTables(mesh);
        if (mesh.vertices->Count() != expected) {
            state.SkipWithError("wrong number of vertices");
        }
        corners = mesh.polygons->IndexCount();
        overLeft = static_cast<double>(peakBytes - before) / static_cast<double>(mesh.Bytes());
    }
    state.counters["corners/s"] =
        benchmark::Counter(static_cast<double>(corners), benchmark::Counter::kIsIterationInvariantRate);
    state.counters["peak/left"] = overLeft;
}
BENCHMARK(FillAndMerge)
    ->ArgNames({"triangles", "steps"})
    ->ArgsProduct({{100'000, 5'000'000}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

void PlainMerge(benchmark::State& state)
{
    using Key = std::array<double, 8>;
    struct Hash
    {
        std::size_t operator()(const Key& key) const
        {
            std::size_t hash = 0;
            for (const double value : key) {
                hash = hash * 31 + std::hash<double>()(value);
            }
            return hash;
        }
    };
    Unshared mesh;
    const std::size_t expected = Build(mesh, static_cast<std::size_t>(state.range(0)), true);
    const std::size_t corners = mesh.vertices->Count();
    while (state.KeepRunning()) {
        std::unordered_map<Key, unsigned, Hash> kept;
        for (unsigned i = 0; i < corners; ++i) {
            const CZemtar3DVertex p = mesh.vertices->Item(i);
            const CZemtar3DVertex n = mesh.normals->Item(i);
            const CZemtarTextureCoordinate t = mesh.coordinates->Item(i);
            const Key key = {p.X(), p.Y(), p.Z(), n.X(), n.Y(), n.Z(), t.U(), t.V()};
            mesh.polygons->Data()[i] =
                kept.try_emplace(key, static_cast<unsigned>(kept.size())).first->second;
        }
        if (kept.size() != expected) {
            state.SkipWithError("wrong number of vertices");
        }
    }
    state.counters["corners/s"] =
        benchmark::Counter(static_cast<double>(corners), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(PlainMerge)->ArgName("triangles")->Arg(1'000'000)->Unit(benchmark::kMillisecond);

/// A part with one mesh and five properties, copied, renamed and placed as an import does for repeated
/// references.
void CopyPart(benchmark::State& state)
{
    const auto copies = static_cast<int>(state.range(0));
    double bytes = 0.0;
    while (state.KeepRunning()) {
        const std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
        CZemtarSceneNode* root = CZemtarTransformNode::Create(document.get());
        CZemtarSceneNode* part = CZemtarTransformNode::Create(document.get());
        for (int i = 0; i < 5; ++i) {
            part->MetaData()->SetValue(i, CZemtarString("a property ") + CZemtarString(i), "Properties", "");
        }
        CZemtar3DObject* mesh = CZemtar3DObject::Create(document.get());
        mesh->SetGeometry(CZemtarGeometry::Create(document.get()));
        mesh->SetName("the mesh of the part");
        mesh->SetParent(part);
        const std::size_t before = heldBytes;
        for (int i = 0; i < copies; ++i) {
            CZemtarSceneNode* copy = part->CreateTreeCopy(document.get(), nullptr, true);
            copy->SetLocalTransform(CZemtarTransform::Create(document.get()));
            copy->SetName(CZemtarString("instance ") + CZemtarString(i));
            copy->SetParent(root);
            CZemtarMatrix placement;
            placement.M(0, 3) = i + 1.0;
            copy->SetLocalMatrix(placement);
        }
        bytes = static_cast<double>(heldBytes - before) / copies;
        if (mesh->Geometry()->UserCount() != static_cast<unsigned>(copies) + 1) {
            state.SkipWithError("geometry is not shared");
        }
    }
    state.counters["bytes/copy"] = bytes;
    state.counters["copies/s"] =
        benchmark::Counter(static_cast<double>(copies), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(CopyPart)->ArgName("copies")->Arg(10'000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
