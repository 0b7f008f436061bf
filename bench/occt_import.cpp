// The engine's reading and meshing beside a bare OpenCASCADE program (bare_import.cpp) that does the same, in
// processor time and memory, each in a process of its own, in turns within one run; the ratio is that of the
// medians.
//
// First the files given, and those in the folders given (default: the examples, and the STEP and IGES files
// that Debian's occt-misc and netgen-doc install, as far as they are there), at the importer's default
// tolerances. Then a torus of planar triangular facets (default 100,000). Areas must agree within one in a
// hundred, for facets also the number of triangles; a STEP file that takes 20 milliseconds longer than
// OpenCASCADE alone, or half of its memory, is marked.
//
//     occt_import_bench [--facets N] [--rounds N] [FILE or FOLDER...]
//     occt_import_bench --rounds 1 --facets 0 /usr/share/kicad/3dmodels     # kicad-packages3d: 6,000 files
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <cadex/IGES_Reader.hxx>
#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/STEP_Reader.hxx>
#include <cadex/STEP_Writer.hxx>

#include "bench/bare_import.h"
#include "bench/cad_files.h"
#include "bench/own_process.h"

using namespace cadex;

namespace {

constexpr double ChordalDeflection = 0.0076;
constexpr double AngularDeflection = 24.0 * 3.14159265358979323846 / 180.0;
constexpr double SlowerBy = 0.02; // seconds

struct Made
{
    long triangles = -1; // -1: not read
    double area = 0;
};

using ImportRun = Run<Made>;

double AreaOf(const double* a, const double* b, const double* c)
{
    double square = 0;
    for (int k = 0; k < 3; ++k) {
        const int i = (k + 1) % 3;
        const int j = (k + 2) % 3;
        const double cross = (b[i] - a[i]) * (c[j] - a[j]) - (b[j] - a[j]) * (c[i] - a[i]);
        square += cross * cross;
    }
    return std::sqrt(square) / 2;
}

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
                Add(static_cast<const ModelData_IndexedTriangleSet&>(mesh.Get()[i]));
            }
        }
    }

    Made made{.triangles = 0};

private:
    void Add(const ModelData_IndexedTriangleSet& set)
    {
        made.triangles += set.NumberOfFaces();
        for (int face = 0; face < set.NumberOfFaces(); ++face) {
            double corners[3][3];
            for (int k = 0; k < 3; ++k) {
                const ModelData_Point& p = set.Coordinate(face, k);
                corners[k][0] = p.X();
                corners[k][1] = p.Y();
                corners[k][2] = p.Z();
            }
            made.area += AreaOf(corners[0], corners[1], corners[2]);
        }
    }

    std::vector<const void*> mySeen;
};

Made MadeByEngine(const std::string& file)
{
    ModelData_Model model;
    const auto read = [&](Base_Reader&& reader) {
        return reader.ReadFile(file.c_str()) && reader.Transfer(model);
    };
    const char kind = std::filesystem::path(file).extension().string().substr(1, 1)[0];
    if (!(kind == 'i' ? read(IGES_Reader()) : read(STEP_Reader()))) {
        return {};
    }
    ModelAlgo_BRepMesherParameters parameters;
    parameters.SetChordalDeflection(ChordalDeflection);
    parameters.SetAngularDeflection(AngularDeflection);
    ModelAlgo_BRepMesher(parameters).Compute(model, true);
    TriangleCounter counter;
    model.Accept(counter);
    return counter.made;
}

Made MadeBare(const std::string& file)
{
    const BareMesh mesh = BareImport(file);
    Made made;
    made.triangles = mesh.read ? static_cast<long>(mesh.indices.size() / 3) : -1;
    const auto corner = [&](std::size_t i) {
        return &mesh.positions[3 * static_cast<std::size_t>(mesh.indices[i])];
    };
    for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
        made.area += AreaOf(corner(i), corner(i + 1), corner(i + 2));
    }
    return made;
}

// What other programs on the machine add is never negative.
ImportRun Fastest(const std::vector<ImportRun>& runs)
{
    return *std::min_element(runs.begin(), runs.end(),
                             [](const ImportRun& a, const ImportRun& b) { return a.seconds < b.seconds; });
}

struct Pair
{
    ImportRun bare;
    ImportRun engine;
};

Pair Compare(const std::string& file, int rounds)
{
    std::vector<ImportRun> bare;
    std::vector<ImportRun> engine;
    for (int i = 0; i < rounds; ++i) {
        bare.push_back(InOwnProcess<Made>([&] { return MadeBare(file); }));
        engine.push_back(InOwnProcess<Made>([&] { return MadeByEngine(file); }));
    }
    return {Fastest(bare), Fastest(engine)};
}

// False when the two did not make the same of the file.
bool Print(const std::string& name, const Pair& pair, bool exact)
{
    const Made& bare = pair.bare.made;
    const Made& engine = pair.engine.made;
    const bool same = bare.triangles >= 0 && engine.triangles >= 0 &&
                      std::abs(bare.area - engine.area) <= 0.01 * bare.area &&
                      (!exact || bare.triangles == engine.triangles);
    const bool isSlower = pair.engine.seconds > pair.bare.seconds + SlowerBy;
    const bool isLarger = pair.engine.megabytes > pair.bare.megabytes / 2;
    std::printf("%-28.28s %9ld %9ld %8.4f %9.3f %9.3f %7.3f %8.0f %8.0f%s%s%s\n", name.c_str(),
                bare.triangles, engine.triangles, engine.area / bare.area, pair.bare.seconds,
                pair.engine.seconds, pair.engine.seconds / pair.bare.seconds, pair.bare.megabytes,
                pair.engine.megabytes, same ? "" : "  DIFFERS", isSlower ? "  SLOWER" : "",
                isLarger ? "  more than half" : "");
    std::fflush(stdout);
    return same;
}

std::vector<std::string> DefaultFiles()
{
    std::vector<std::string> files;
    for (const char* folder : {ZEMTAR_SOURCE_DIR "/examples", "/usr/share/opencascade/data/step",
                               "/usr/share/opencascade/data/iges", "/usr/share/doc/netgen/examples"}) {
        if (std::filesystem::is_directory(folder)) {
            files.emplace_back(folder);
        }
    }
    return CadFilesOf(files);
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
    int rounds = 7;
    std::vector<std::string> paths;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--facets" && i + 1 < argc) {
            facets = std::atoi(argv[++i]);
        } else if (std::string(argv[i]) == "--rounds" && i + 1 < argc) {
            rounds = std::max(1, std::atoi(argv[++i]));
        } else {
            paths.emplace_back(argv[i]);
        }
    }
    bool good = true;
    std::printf("%-28s %9s %9s %8s %9s %9s %7s %8s %8s\n", "file", "bare tri.", "triangles", "area", "bare s",
                "engine s", "ratio", "bare MB", "eng. MB");
    Pair total;
    for (const std::string& file : paths.empty() ? DefaultFiles() : CadFilesOf(paths)) {
        const Pair pair = Compare(file, rounds);
        good = Print(std::filesystem::path(file).filename().string(), pair, false) && good;
        total.bare.seconds += pair.bare.seconds;
        total.engine.seconds += pair.engine.seconds;
    }
    std::printf("%-28s %9s %9s %8s %9.3f %9.3f %7.3f\n", "all", "", "", "", total.bare.seconds,
                total.engine.seconds, total.engine.seconds / total.bare.seconds);
    if (facets > 0) {
        const std::string torus = WriteTorus(facets);
        const Pair pair = Compare(torus, 1);
        good = Print("facets", pair, true) && good;
        std::remove(torus.c_str());
    }
    return good ? 0 : 1;
}
