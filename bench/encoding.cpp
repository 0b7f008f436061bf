// Detection and repair of a text file of 100 MB, beside the least that must be done with its bytes: the
// detector alone, and the codec alone in one call that also encodes; all on one thread.
//
// Data: STEP-like lines, each tenth with a name in Korean (windows-949, which the detector recognises within
// the first block) or German (ISO-8859-1, of which it is not sure before the end).

#include "common/encoding/CZemtarConvert.h"
#include "common/encoding/CZemtarEncoding.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTextCodec>
#include <benchmark/benchmark.h>
#include <uchardet.h>

#include <array>
#include <cstdlib>

namespace Zemtar {
namespace {

constexpr qsizetype kBytes = 100'000'000;

struct Script
{
    const char* label;
    const char* detected;
    const char* codec;
    const char* name;
};

const std::array<Script, 2> kScripts = {{
    {"Korean", "UHC", "EUC-KR", "\xBC\xB3\xB0\xE8 \xB5\xB5\xB8\xE9\xC0\xBB \xBA\xC0\xB4\xCF\xB4\xD9"},
    {"German", "ISO-8859-1", "Windows-1252",
     "Gr\xF6\xDF"
     "e der Gesch\xE4"
     "ftsf\xFChrung"},
}};

/// The text, once in memory and once on disk; copies go to a folder of their own.
struct Data
{
    explicit Data(const Script& kind) : script(kind)
    {
        text.reserve(kBytes + 1000);
        for (int line = 1; text.size() < kBytes; ++line) {
            text += '#' + QByteArray::number(line) + "=CARTESIAN_POINT('";
            text += (line % 10 == 0 ? script.name : "") + QByteArray("',(12.5,-3.25,1.E-3));\n");
        }
        QFile file(folder.filePath("text.stp"));
        if (file.open(QIODevice::WriteOnly)) {
            file.write(text);
        }
        path = CZemtarConvert::QStringToCZemtarString(file.fileName());
        qputenv("TMPDIR", copies.path().toUtf8());
    }

    const Script& script;
    QByteArray text;
    QTemporaryDir folder;
    QTemporaryDir copies;
    CZemtarString path;
};

const Data& dataOf(benchmark::State& state)
{
    static const std::array<Data, 2> data = {Data(kScripts[0]), Data(kScripts[1])};
    const Data& result = data.at(static_cast<std::size_t>(state.range(0)));
    state.SetLabel(result.script.label);
    return result;
}

void report(benchmark::State& state, const Data& data)
{
    state.SetBytesProcessed(state.iterations() * data.text.size());
}

void detectFile(benchmark::State& state)
{
    const Data& data = dataOf(state);
    for ([[maybe_unused]] auto _ : state) {
        const char* name = CZemtarEncoding::DetectFileEncoding(data.path);
        if (name == nullptr || QByteArray(name) != data.script.detected) {
            state.SkipWithError("not detected");
        }
        std::free(const_cast<char*>(name));
    }
    report(state, data);
}

void detectorAlone(benchmark::State& state)
{
    const Data& data = dataOf(state);
    for ([[maybe_unused]] auto _ : state) {
        const uchardet_t detector = uchardet_new();
        uchardet_handle_data(detector, data.text.constData(), static_cast<std::size_t>(data.text.size()));
        uchardet_data_end(detector);
        benchmark::DoNotOptimize(uchardet_get_charset(detector));
        uchardet_delete(detector);
    }
    report(state, data);
}

void encodeFile(benchmark::State& state)
{
    const Data& data = dataOf(state);
    for ([[maybe_unused]] auto _ : state) {
        const CZemtarString copy =
            CZemtarEncoding::EncodeFileToUtf8(data.path, data.script.detected, false, state.range(1) != 0);
        if (copy == data.path) {
            state.SkipWithError("not converted");
        }
    }
    report(state, data);
}

void codecAlone(benchmark::State& state)
{
    const Data& data = dataOf(state);
    const QTextCodec* const codec = QTextCodec::codecForName(data.script.codec);
    for ([[maybe_unused]] auto _ : state) {
        QTextCodec::ConverterState converter;
        const int size = static_cast<int>(data.text.size());
        const QString decoded = codec->toUnicode(data.text.constData(), size, &converter);
        benchmark::DoNotOptimize(decoded.toUtf8().size());
    }
    report(state, data);
}

BENCHMARK(detectFile)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(detectorAlone)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(encodeFile)->ArgNames({"", "ascii"})->ArgsProduct({{0, 1}, {0, 1}})->Unit(benchmark::kMillisecond);
BENCHMARK(codecAlone)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace Zemtar

BENCHMARK_MAIN();
