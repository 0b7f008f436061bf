// Pixel work of the image utilities on 24-megapixel images, one thread, beside the plain per-pixel form of
// the same work (on a 1.5-megapixel piece of the picture) and beside QImage::copy. Each result is checked
// against the plain form.
//
// "Mpx/s" is the speed, "x_plain" how many times that of the plain form, "copies" the time in plain copies of
// the image (for the blur: in each of its four passes), all from one run.

#include "bench/PlainTwins.h"
#include "common/image/ImageFilters.h"
#include "common/image/ImageMaps.h"
#include "common/image/ZemtarImage.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <cstdlib>
#include <ctime>
#include <iostream>

namespace {

using namespace Zemtar;

/// Smooth colour with fine noise, as photographs have it.
QImage picture(int width, int height, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator random(1);
    for (int y = 0; y < height; ++y) {
        QRgb* const row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int noise = static_cast<int>(random.generate() & 15);
            row[x] = qRgb((x / 24 + noise) & 255, (y / 16 + noise) & 255, ((x + y) / 40 + 2 * noise) & 255);
        }
    }
    return image.convertToFormat(format);
}

const QImage& largePicture()
{
    static const QImage image = picture(6000, 4000);
    return image;
}

const QImage& smallPicture()
{
    static const QImage image = largePicture().copy(1000, 1000, 1500, 1000);
    return image;
}

double cpuSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The shortest of some runs, in seconds.
template <class Work>
double secondsOf(Work work, int runs = 3)
{
    double best = 1e9;
    for (int i = 0; i < runs; ++i) {
        const double start = cpuSeconds();
        work();
        best = std::min(best, cpuSeconds() - start);
    }
    return best;
}

double copySeconds()
{
    static const double seconds =
        secondsOf([] { benchmark::DoNotOptimize(largePicture().copy().bits()); }, 5);
    return seconds;
}

void check(bool isRight, const char* what)
{
    if (!isRight) {
        std::cerr << what << " differs from its plain form\n";
        std::exit(1);
    }
}

/// Fills the target, which has the source's size and format, or replaces it.
using Kernel = void (*)(QImage* source, QImage* target);

struct Work
{
    const char* name;
    Kernel fast, plain;
    int passes = 1;
    QImage::Format format = QImage::Format_RGB32;
};

/// A filter with its amount fixed.
template <void (*filter)(QImage*, QImage*, int), int delta>
void fastFilter(QImage* source, QImage* target)
{
    filter(source, target, delta);
}

template <PlainTwins::Change change, int delta>
void plainFilter(QImage* source, QImage* target)
{
    PlainTwins::perPixel(change)(source, target, delta);
}

constexpr Work kWorks[] = {
    {"brightness", fastFilter<ZemtarImage::brightness, 0>, plainFilter<PlainTwins::brightness, 0>},
    {"greyScale", ZemtarImage::greyScale, plainFilter<PlainTwins::greyScale, 0>},
    {"warm", fastFilter<ZemtarImage::warm, 30>, plainFilter<PlainTwins::warm, 30>},
    {"cool", fastFilter<ZemtarImage::cool, 30>, plainFilter<PlainTwins::cool, 30>},
    {"saturation", fastFilter<ZemtarImage::saturation, 40>, plainFilter<PlainTwins::saturation, 40>},
    {"sharpen", ZemtarImage::sharpen, [](QImage* s, QImage* t) { PlainTwins::sharpen(s, t, 0); }},
    {"sharpen_in_place", [](QImage*, QImage* t) { ZemtarImage::sharpen(t, t); },
     [](QImage*, QImage* t) { PlainTwins::sharpen(t, t, 0); }},
    {"warm_premultiplied", fastFilter<ZemtarImage::warm, 30>, plainFilter<PlainTwins::warm, 30>, 1,
     QImage::Format_ARGB32_Premultiplied},
    {"warm_16_bit", fastFilter<ZemtarImage::warm, 30>, plainFilter<PlainTwins::warm, 30>, 1,
     QImage::Format_RGBA64},
    {"edgify", [](QImage*, QImage* t) { ZemtarImage::edgify(t); },
     [](QImage*, QImage* t) { PlainTwins::edgify(t); }},
    {"blurred", [](QImage* s, QImage* t) { *t = ImageFilters::blurred(*s, s->rect(), 5); },
     [](QImage* s, QImage* t) { *t = PlainTwins::blurred(*s, s->rect(), 5); }, 4},
    {"normal_map", [](QImage*, QImage* t) { *t = ImageMaps::normalMap(std::move(*t), 2.0, false); },
     [](QImage* s, QImage* t) { *t = PlainTwins::normalMap(*s, 2.0, false); }},
    {"height_map", [](QImage*, QImage* t) { *t = ImageMaps::heightMap(std::move(*t), 60.0, 30.0, false); },
     [](QImage* s, QImage* t) { *t = PlainTwins::heightMap(*s, 60.0, 30.0, false); }},
    {"tileable_normal_map", [](QImage* s, QImage* t) { *t = ImageMaps::tileableNormalMap(*s); },
     [](QImage* s, QImage* t) { *t = PlainTwins::tileableMap(*s); }},
};

/// Runs the fast form on the large picture and reports it beside the plain form.
void compare(benchmark::State& state)
{
    const Work& work = kWorks[state.range(0)];
    state.SetLabel(work.name);
    QImage source = smallPicture().convertToFormat(work.format), expected = source.copy(),
           target = source.copy();
    work.fast(&source, &target);
    const double plainSeconds = secondsOf([&] { work.plain(&source, &expected); }, 1);
    check(target == expected, work.name);
    source = largePicture().convertToFormat(work.format);
    target = source.copy();
    double best = 1e9;
    for ([[maybe_unused]] auto _ : state) {
        best = std::min(best, secondsOf([&] { work.fast(&source, &target); }, 1));
    }
    const double pixels = 24e6;
    state.counters["Mpx/s"] = pixels / best / 1e6;
    state.counters["x_plain"] = (plainSeconds / 1.5e6) / (best / pixels);
    state.counters["copies"] = best / copySeconds() / work.passes;
}

BENCHMARK(compare)
    ->DenseRange(0, static_cast<int>(std::size(kWorks)) - 1)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

/// The whole of GenerateNormalFromTexture at its largest size, and the share of it that the PNG encoder
/// takes.
void generateNormal(benchmark::State& state)
{
    const QTemporaryDir folder;
    const std::string in = folder.filePath("in.png").toStdString(),
                      out = folder.filePath("out.png").toStdString();
    const QImage image = picture(4096, 4096);
    image.save(folder.filePath("in.png"));
    double total = 1e9;
    for ([[maybe_unused]] auto _ : state) {
        total = std::min(
            total, secondsOf([&] { ZemtarImage::GenerateNormalFromTexture(in.c_str(), out.c_str()); }, 1));
    }
    const QImage map(folder.filePath("out.png"));
    check(map == ImageMaps::tileableNormalMap(image), "GenerateNormalFromTexture");
    state.counters["encoder"] =
        secondsOf([&] { map.save(folder.filePath("again.png"), "png", 50); }, 2) / total;
    state.counters["map"] = secondsOf([&] { ImageMaps::tileableNormalMap(image); }, 2) / total;
}

BENCHMARK(generateNormal)->Unit(benchmark::kMillisecond)->Iterations(2);

} // namespace

BENCHMARK_MAIN();
