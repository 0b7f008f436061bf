// The reader of clear text on STEP and IFC files that our own writers make, and what memory a large file
// takes.
//
//     clear_text_bench [--triangles N] [--rounds N]
//     clear_text_bench --megabytes 1024        # also reads and transfers a STEP file of about this size
//
// Data: a wavy torus of 400,000 triangles in one part. Lines: loading (the index in one pass), all reals, all
// references, each in megabytes a second of processor time, the median of the rounds; beside it, for scale, a
// plain count of the commas and the same numbers by strtod. Peaks: the highest memory of a process that does
// nothing else, as a multiple of the file's size, for the index and for reading and transferring the file.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cadex/IFC_Reader.hxx>
#include <cadex/IFC_Writer.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/STEP_Reader.hxx>
#include <cadex/STEP_Writer.hxx>

#include "bench/Torus.h"
#include "sdk/model/TriangleSets.h"
#include "sdk/part21/ClearText.h"
#include "sdk/text/FileBytes.h"

using namespace cadex;
using part21::ClearText;
using part21::Cursor;

namespace {

namespace fs = std::filesystem;

ModelData_Model TorusModel(long triangles)
{
    const ModelData_PolyRepresentation mesh(internal::MakeTriangleSet(Torus(triangles)));
    ModelData_Model model;
    model.AddRoot(ModelData_Part(mesh, "torus"));
    return model;
}

bool WriteTorus(long triangles, bool isIfc, const fs::path& file)
{
    const ModelData_Model model = TorusModel(triangles);
    const auto write = [&](Base_Writer&& writer) {
        return writer.Transfer(model) && writer.WriteFile(file.c_str());
    };
    return isIfc ? write(IFC_Writer()) : write(STEP_Writer());
}

double ProcessorSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

double MedianSeconds(int rounds, const std::function<void()>& work)
{
    std::vector<double> seconds;
    for (int i = 0; i < rounds; ++i) {
        const double start = ProcessorSeconds();
        work();
        seconds.push_back(ProcessorSeconds() - start);
    }
    std::nth_element(seconds.begin(), seconds.begin() + rounds / 2, seconds.end());
    return seconds[static_cast<std::size_t>(rounds / 2)];
}

/// Every real outside of texts, found by its first character and read by strtod.
double SumByStrtod(const std::string& bytes, std::size_t& count)
{
    double sum = 0;
    bool quoted = false;
    for (const char* at = bytes.c_str(); *at != 0;) {
        quoted = quoted != (*at == '\'');
        if (!quoted && ((*at >= '0' && *at <= '9') || *at == '-' || *at == '+')) {
            char* end = nullptr;
            const double value = std::strtod(at, &end);
            const std::string_view text(at, static_cast<std::size_t>(end - at));
            if (end != at && text.find('.') != std::string_view::npos) {
                sum += value;
                ++count;
            }
            at = end != at ? end : at + 1;
        } else if (!quoted && *at == '#') {
            ++at;
            while (*at >= '0' && *at <= '9') {
                ++at;
            }
        } else {
            ++at;
        }
    }
    return sum;
}

void Measure(const char* name, const fs::path& file, int rounds)
{
    std::string bytes;
    if (!text::ReadBytes(file, bytes)) {
        std::printf("%s: not written\n", name);
        return;
    }
    const double megabytes = static_cast<double>(bytes.size()) / 1e6;
    const auto line = [&](const char* what, double seconds, const std::string& found) {
        std::printf("  %-28s %8.0f MB/s   %s\n", what, megabytes / std::max(seconds, 1e-9), found.c_str());
    };
    std::printf("%s, %.1f MB\n", name, megabytes);
    std::ptrdiff_t commas = 0;
    const double plain = MedianSeconds(rounds, [&] { commas = std::count(bytes.begin(), bytes.end(), ','); });
    line("count of commas", plain, std::to_string(commas));
    std::size_t plainReals = 0;
    const double strtodSeconds = MedianSeconds(rounds, [&] {
        plainReals = 0;
        SumByStrtod(bytes, plainReals);
    });
    line("numbers by strtod", strtodSeconds, std::to_string(plainReals) + " reals");

    ClearText text;
    std::vector<double> seconds;
    for (int i = 0; i < rounds; ++i) {
        std::string copy = bytes;
        text = ClearText();
        const double start = ProcessorSeconds();
        text.Load(std::move(copy));
        seconds.push_back(ProcessorSeconds() - start);
    }
    std::sort(seconds.begin(), seconds.end());
    line("load", seconds[seconds.size() / 2], std::to_string(text.Count()) + " records");

    const auto points =
        text.OfType(text.CountOf("CARTESIAN_POINT") > 0 ? "CARTESIAN_POINT" : "IFCCARTESIANPOINTLIST3D");
    std::vector<double> reals;
    const double realSeconds = MedianSeconds(rounds, [&] {
        reals.clear();
        for (const ClearText::Record& record : points) {
            Cursor arguments = text.Arguments(record);
            if (arguments.Next() == Cursor::Kind::String) {
                arguments.Skip();
            }
            arguments.AppendReals(reals);
        }
    });
    line("coordinates", realSeconds, std::to_string(reals.size()) + " reals, time for the file's size");
    std::vector<part21::RecordId> ids;
    const double referenceSeconds = MedianSeconds(rounds, [&] {
        ids.clear();
        for (const ClearText::Record& record : text.Records()) {
            text.AppendReferences(record, ids);
        }
    });
    line("references", referenceSeconds, std::to_string(ids.size()) + " references");
}

/// Highest memory of a process of its own, in megabytes; 0 when the work fails.
double PeakOf(const std::function<bool()>& work)
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(work() ? 0 : 1);
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child || status != 0) {
        return 0;
    }
#ifdef __APPLE__
    return static_cast<double>(usage.ru_maxrss) / 1e6;
#else
    return static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
#endif
}

void MeasurePeaks(const char* name, const fs::path& file, bool isIfc)
{
    const double megabytes = static_cast<double>(fs::file_size(file)) / 1e6;
    const double index = PeakOf([&] {
        std::string bytes;
        ClearText text;
        return text::ReadBytes(file, bytes) && text.Load(std::move(bytes));
    });
    const double import = PeakOf([&] {
        ModelData_Model model;
        const auto read = [&](Base_Reader&& reader) {
            return reader.ReadFile(file.c_str()) && reader.Transfer(model);
        };
        return isIfc ? read(IFC_Reader()) : read(STEP_Reader());
    });
    std::printf("%s, %.1f MB, peak: index %.0f MB (%.2f times), read and transfer %.0f MB (%.2f times)\n",
                name, megabytes, index, index / megabytes, import, import / megabytes);
}

} // namespace

int main(int argc, char** argv)
{
    long triangles = 400'000;
    long largeMegabytes = 0;
    int rounds = 5;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string_view option = argv[i];
        const long value = std::max(1L, std::strtol(argv[i + 1], nullptr, 10));
        triangles = option == "--triangles" ? value : triangles;
        rounds = option == "--rounds" ? static_cast<int>(value) : rounds;
        largeMegabytes = option == "--megabytes" ? value : largeMegabytes;
    }
    const fs::path folder = fs::temp_directory_path();
    const fs::path step = folder / "clear_text_bench.stp";
    const fs::path ifc = folder / "clear_text_bench.ifc";
    // In processes of their own, so that the peaks below are those of reading.
    PeakOf([&] { return WriteTorus(triangles, false, step); });
    PeakOf([&] { return WriteTorus(triangles, true, ifc); });
    MeasurePeaks("STEP", step, false);
    MeasurePeaks("IFC", ifc, true);
    if (largeMegabytes > 0) {
        const double share =
            static_cast<double>(largeMegabytes) * 1e6 / static_cast<double>(fs::file_size(step));
        const fs::path large = folder / "clear_text_bench_large.stp";
        PeakOf([&] {
            return WriteTorus(static_cast<long>(share * static_cast<double>(triangles)), false, large);
        });
        MeasurePeaks("large STEP", large, false);
        fs::remove(large);
    }
    Measure("STEP", step, rounds);
    Measure("IFC", ifc, rounds);
    fs::remove(step);
    fs::remove(ifc);
    return 0;
}
