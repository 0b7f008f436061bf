// The renderer on a made assembly: 10,000 instances of 20 shapes, 5 million triangles in all, and the same as
// one shape each; full pictures, quick ones as while a camera moves, and what comes before: flattening,
// upload, feature edges. 1280 x 800 pixels. Skipped where OpenGL 3.3 is missing.

#include "apps/render/Picture.h"
#include "apps/render/Renderer.h"
#include "apps/render/SceneModel.h"
#include "apps/render/ShapeData.h"

#include "host/CZemtar3DObject.h"
#include "host/CZemtarDocument.h"

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>

#include <benchmark/benchmark.h>

#include <cmath>
#include <iostream>

using namespace Zemtar;

namespace {

constexpr unsigned Instances = 10000;
constexpr unsigned Shapes = 20;
constexpr unsigned Rings = 10;
constexpr unsigned Steps = 25; ///< 500 triangles a shape

/// A bumpy ball of Rings * Steps * 2 triangles.
CZemtarGeometry* Ball(CZemtarDocument& document, unsigned seed)
{
    CZemtarGeometry* geometry = CZemtarGeometry::Create(&document);
    auto* vertices = CZemtarVerticiesTable::Create(&document, true);
    auto* normals = CZemtarVerticiesNormalsTable::Create(&document, true);
    auto* triangles = CZemtarPolygonsTable::Create(&document);
    for (unsigned r = 0; r <= Rings; ++r) {
        for (unsigned s = 0; s <= Steps; ++s) {
            const double latitude = 3.14159265 * r / Rings;
            const double longitude = 2.0 * 3.14159265 * s / Steps;
            const double radius = 0.4 + 0.05 * std::sin(longitude * (seed % 5 + 1));
            const double x = std::sin(latitude) * std::cos(longitude);
            const double y = std::sin(latitude) * std::sin(longitude);
            vertices->Append(radius * x, radius * y, radius * std::cos(latitude));
            normals->Append(x, y, std::cos(latitude));
        }
    }
    for (unsigned r = 0; r < Rings; ++r) {
        for (unsigned s = 0; s < Steps; ++s) {
            const unsigned a = r * (Steps + 1) + s;
            triangles->Append(a, a + Steps + 1, a + 1);
            triangles->Append(a + 1, a + Steps + 1, a + Steps + 2);
        }
    }
    geometry->SetVerticiesTable(vertices);
    geometry->SetVerticiesNormalsTable(normals);
    geometry->SetPolygonsTable(triangles);
    return geometry;
}

/// A block of balls, one metre apart, that use `shapes` geometries in turn.
std::unique_ptr<CZemtarDocument> MakeDocument(unsigned shapes)
{
    std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
    std::vector<CZemtarGeometry*> geometries;
    for (unsigned i = 0; i < shapes; ++i) {
        geometries.push_back(Ball(*document, i));
    }
    for (unsigned i = 0; i < Instances; ++i) {
        CZemtar3DObject* object = CZemtar3DObject::Create(document.get());
        object->SetGeometry(geometries[i % shapes]);
        CZemtarMatrix place;
        const unsigned row = i / 25;
        const unsigned layer = i / 500;
        place.M(0, 3) = i % 25;
        place.M(1, 3) = row % 20;
        place.M(2, 3) = layer;
        object->SetLocalMatrix(place);
    }
    return document;
}

class Scene
{
public:
    explicit Scene(unsigned shapes) : m_document(MakeDocument(shapes)), m_model(*m_document)
    {
        m_context.setFormat(RendererFormat());
        m_surface.setFormat(RendererFormat());
        m_surface.create();
        if (!m_context.create() || !m_context.makeCurrent(&m_surface) || !m_renderer.Initialize().isEmpty() ||
            !m_renderer.SetModel(&m_model).isEmpty()) {
            return;
        }
        m_ready = true;
        m_frame.size = QSize(1280, 800);
        m_frame.camera.Fit(m_model.Extent(), 1.6);
    }

    bool IsReady(benchmark::State& state)
    {
        if (!m_ready) {
            state.SkipWithError("no OpenGL 3.3");
        }
        return m_ready;
    }
    void DrawFull()
    {
        m_renderer.StartFull(m_frame);
        while (!m_renderer.Continue(Renderer::QuickLimit)) {
        }
    }
    void Turn() { m_frame.camera.Orbit(1.0, 0.0, m_model.Extent().Center()); }

    std::unique_ptr<CZemtarDocument> m_document;
    SceneModel m_model;
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
    Renderer m_renderer;
    Frame m_frame;
    bool m_ready = false;
};

void FullPicture(benchmark::State& state)
{
    Scene scene(static_cast<unsigned>(state.range(0)));
    if (!scene.IsReady(state)) {
        return;
    }
    scene.m_frame.edges = state.range(1) != 0;
    scene.DrawFull();
    for ([[maybe_unused]] auto _ : state) {
        scene.Turn();
        scene.DrawFull();
    }
    state.counters["triangles"] = static_cast<double>(scene.m_renderer.Triangles());
    state.counters["graphics_MB"] = static_cast<double>(scene.m_renderer.GraphicsBytes()) / 1e6;
}
BENCHMARK(FullPicture)
    ->Args({Shapes, 0})
    ->Args({Shapes, 1})
    ->Args({Instances, 0})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void QuickPicture(benchmark::State& state)
{
    Scene scene(static_cast<unsigned>(state.range(0)));
    if (!scene.IsReady(state)) {
        return;
    }
    scene.DrawFull();
    for (int i = 0; i < 10; ++i) { // the budget finds its size
        scene.Turn();
        scene.m_renderer.DrawQuick(scene.m_frame);
    }
    for ([[maybe_unused]] auto _ : state) {
        scene.Turn();
        scene.m_renderer.DrawQuick(scene.m_frame);
    }
    state.counters["triangles"] = static_cast<double>(scene.m_renderer.Triangles());
}
BENCHMARK(QuickPicture)
    ->Arg(Shapes)
    ->Arg(Instances)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

/// What a picture costs before the card has anything to do: culling and gathering.
void BuildDrawList(benchmark::State& state)
{
    const auto document = MakeDocument(Shapes);
    const SceneModel model(*document);
    DrawList list(model);
    Frame frame;
    frame.camera.Fit(model.Extent(), 1.6);
    DrawRequest request;
    request.origin = model.Extent().Center();
    request.clip = frame.camera.Projection(1.6, model.Extent()) * frame.camera.View(request.origin);
    request.eye = frame.camera.Eye();
    request.forward = frame.camera.Forward();
    request.pixelsPerRadian = 1000.0;
    request.budget = static_cast<std::uint64_t>(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        list.Build(request);
    }
    if (state.range(0) == 0 && list.Ids().size() != Instances) {
        state.SkipWithError("instances are missing");
    }
}
BENCHMARK(BuildDrawList)->Arg(0)->Arg(1000000)->Unit(benchmark::kMicrosecond);

void Flatten(benchmark::State& state)
{
    const auto document = MakeDocument(static_cast<unsigned>(state.range(0)));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(SceneModel(*document).Instances().data());
    }
}
BENCHMARK(Flatten)->Arg(Shapes)->Arg(Instances)->Unit(benchmark::kMillisecond);

void Upload(benchmark::State& state)
{
    Scene scene(static_cast<unsigned>(state.range(0)));
    if (!scene.IsReady(state)) {
        return;
    }
    for ([[maybe_unused]] auto _ : state) {
        scene.m_renderer.SetModel(&scene.m_model);
    }
}
BENCHMARK(Upload)->Arg(Instances)->Unit(benchmark::kMillisecond);

void FindEdges(benchmark::State& state)
{
    const auto document = MakeDocument(Shapes);
    const SceneModel model(*document);
    ShapeData data;
    for ([[maybe_unused]] auto _ : state) {
        for (const Shape& shape : model.Shapes()) {
            data.Build(shape);
            benchmark::DoNotOptimize(data.FindEdges());
        }
    }
    state.SetItemsProcessed(state.iterations() * Shapes * Rings * Steps * 2);
}
BENCHMARK(FindEdges)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    UseDisplayIfAny();
    const QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
