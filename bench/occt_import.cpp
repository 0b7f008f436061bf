// The engine's reading and meshing beside a bare OpenCASCADE program (bare_import.cpp) that does the same, in
// processor time and memory, each in a process of its own, in turns within one run; the ratio is that of the
// medians.
//
// First the files given (default: the examples, and the STEP and IGES files that Debian's occt-misc,
// netgen-doc and gmsh-doc install, as far as they are there), at the importer's default tolerances. Then a
// torus of planar triangular facets (default 100,000). The number of triangles must agree within one in a
// hundred, for facets exactly.
//
//     occt_import_bench [--facets N] [FILE...]
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cadex/IGES_Reader.hxx>
#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/STEP_Reader.hxx>
#include <cadex/STEP_Writer.hxx>

#include "bench/bare_import.h"

using namespace cadex;

namespace {

constexpr double ChordalDeflection = 0.0076;
constexpr double AngularDeflection = 24.0 * 3.14159265358979323846 / 180.0;
constexpr int Rounds = 7;

struct Run
{
    long triangles = -1; // -1: not read
    double seconds = 0;  // of the processor
    double megabytes = 0;
};

// Each part once, as a bare program has each shape once.
class TriangleCounter : public ModelData_Model::VoidElementVisitor
{
public:
    void operator()(const ModelData_Part& part) override
    {
        const void* identity = part.Impl();
        if (std::find(mySeen.begin(), mySeen.end(), identity) != mySeen.end()) {
            return;
        }
        mySeen.push_back(identity);
        const ModelData_PolyRepresentation mesh = part.PolyRepresentation(ModelData_RM_Poly);
        for (std::size_t i = 0; !mesh.IsNull() && i < mesh.Get().Size(); ++i) {
            if (mesh.Get()[i].IsOfType<ModelData_IndexedTriangleSet>()) {
                count += static_cast<const ModelData_IndexedTriangleSet&>(mesh.Get()[i]).NumberOfFaces();
            }
        }
    }

    long count = 0;

private:
    std::vector<const void*> mySeen;
};

long CountWithEngine(const std::string& file)
{
    ModelData_Model model;
    const auto read = [&](Base_Reader&& reader) {
        return reader.ReadFile(file.c_str()) && reader.Transfer(model);
    };
    const char kind = std::filesystem::path(file).extension().string().substr(1, 1)[0];
    if (!(kind == 'i' ? read(IGES_Reader()) : read(STEP_Reader()))) {
        return -1;
    }
    ModelAlgo_BRepMesherParameters parameters;
    parameters.SetChordalDeflection(ChordalDeflection);
    parameters.SetAngularDeflection(AngularDeflection);
    ModelAlgo_BRepMesher(parameters).Compute(model, true);
    TriangleCounter counter;
    model.Accept(counter);
    return counter.count;
}

long CountBare(const std::string& file)
{
    const BareMesh mesh = BareImport(file);
    return mesh.read ? static_cast<long>(mesh.indices.size() / 3) : -1;
}

Run InOwnProcess(const std::function<long()>& work)
{
    int ends[2];
    if (pipe(ends) != 0) {
        return {};
    }
    std::fflush(stdout); // or the child prints it once more
    const pid_t child = fork();
    if (child == 0) {
        const long count = work();
        const bool told = write(ends[1], &count, sizeof count) == static_cast<ssize_t>(sizeof count);
        _exit(told ? 0 : 1);
    }
    close(ends[1]);
    Run run;
    long count = -1;
    if (read(ends[0], &count, sizeof count) == static_cast<ssize_t>(sizeof count)) {
        run.triangles = count;
    }
    close(ends[0]);
    int status = 0;
    rusage usage = {};
    wait4(child, &status, 0, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
    };
    run.seconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
#if defined(__APPLE__)
    run.megabytes = static_cast<double>(usage.ru_maxrss) / 1048576.0; // bytes there, kilobytes elsewhere
#else
    run.megabytes = static_cast<double>(usage.ru_maxrss) / 1024.0;
#endif
    return run;
}

// What other programs on the machine add is never negative.
Run Fastest(const std::vector<Run>& runs)
{
    return *std::min_element(runs.begin(), runs.end(),
                             [](const Run& a, const Run& b) { return a.seconds < b.seconds; });
}

struct Pair
{
    Run bare;
    Run engine;
};

Pair Compare(const std::string& file, int rounds)
{
    std::vector<Run> bare;
    std::vector<Run> engine;
    for (int i = 0; i < rounds; ++i) {
        bare.push_back(InOwnProcess([&] { return CountBare(file); }));
        engine.push_back(InOwnProcess([&] { return CountWithEngine(file); }));
    }
    return {Fastest(bare), Fastest(engine)};
}

// False when the two did not make the same of the file.
bool Print(const std::string& name, const Pair& pair, double tolerance)
{
    const double difference = std::abs(static_cast<double>(pair.bare.triangles - pair.engine.triangles));
    const bool same =
        pair.bare.triangles >= 0 && difference <= tolerance * static_cast<double>(pair.bare.triangles);
    std::printf("%-28s %9ld %9.3f %9.3f %7.2f %8.0f %8.0f%s\n", name.c_str(), pair.engine.triangles,
                pair.bare.seconds, pair.engine.seconds, pair.engine.seconds / pair.bare.seconds,
                pair.bare.megabytes, pair.engine.megabytes, same ? "" : "  TRIANGLES DIFFER");
    std::fflush(stdout);
    return same;
}

std::vector<std::string> DefaultFiles()
{
    std::vector<std::string> files;
    const std::string examples = ZEMTAR_SOURCE_DIR "/examples";
    for (const std::string& folder :
         {examples, std::string("/usr/share/opencascade/data/step"),
          std::string("/usr/share/opencascade/data/iges"), std::string("/usr/share/doc/netgen/examples")}) {
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(folder, none)) {
            const std::string extension = entry.path().extension().string();
            if (extension == ".step" || extension == ".stp" || extension == ".igs" || extension == ".iges") {
                files.push_back(entry.path().string());
            }
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string WriteTorus(int facets)
{
    const int around = std::max(3, static_cast<int>(std::lround(std::sqrt(facets / 2.0 * 0.8))));
    const int along = facets / 2 / around;
    const auto turn = [](int i, int n) { return 2 * 3.14159265358979323846 * i / n; };
    std::vector<ModelData_Point> points;
    std::vector<int> indices;
    for (int i = 0; i < along; ++i) {
        for (int j = 0; j < around; ++j) {
            const double radius = 50 + 20 * std::cos(turn(j, around));
            points.emplace_back(radius * std::cos(turn(i, along)), radius * std::sin(turn(i, along)),
                                20 * std::sin(turn(j, around)));
            const auto at = [&](int a, int b) { return (a % along) * around + b % around; };
            for (const int corner :
                 {at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j), at(i + 1, j + 1), at(i, j + 1)}) {
                indices.push_back(corner);
            }
        }
    }
    ModelData_IndexedTriangleSet set{initialized()};
    set.AddCoordinates(points.data(), points.size(), indices.data(), indices.size());
    ModelData_Model model;
    model.AddRoot(ModelData_Part(ModelData_PolyRepresentation(set), "torus"));
    const std::string file = (std::filesystem::temp_directory_path() / "occt_import_bench.stp").string();
    STEP_Writer writer;
    return writer.Transfer(model) && writer.WriteFile(file.c_str()) ? file : std::string();
}

} // namespace

int main(int argc, char** argv)
{
    int facets = 100000;
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--facets" && i + 1 < argc) {
            facets = std::atoi(argv[++i]);
        } else {
            files.emplace_back(argv[i]);
        }
    }
    bool good = true;
    std::printf("%-28s %9s %9s %9s %7s %8s %8s\n", "file", "triangles", "bare s", "engine s", "ratio",
                "bare MB", "eng. MB");
    Pair total;
    for (const std::string& file : files.empty() ? DefaultFiles() : files) {
        const Pair pair = Compare(file, Rounds);
        good = Print(std::filesystem::path(file).filename().string(), pair, 0.01) && good;
        total.bare.seconds += pair.bare.seconds;
        total.engine.seconds += pair.engine.seconds;
    }
    std::printf("%-28s %9s %9.3f %9.3f %7.2f\n", "all", "", total.bare.seconds, total.engine.seconds,
                total.engine.seconds / total.bare.seconds);
    if (facets > 0) {
        const std::string torus = WriteTorus(facets);
        const Pair pair = Compare(torus, 1);
        good = Print("facets", pair, 0.0) && good;
        std::remove(torus.c_str());
    }
    return good ? 0 : 1;
}
