// One target for each format that this build reads: reading, building, meshing, and what was promised of it.
#include "fuzz/FormatSeeds.h"
#include "fuzz/Target.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <sstream>

#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/internal/Reports.hxx>

#include "tests/support/EngineFormats.h"

namespace Zemtar::Fuzz {
namespace {

using namespace cadex;
using internal::Report;
using internal::Reports;

using Test::EngineFormat;

const EngineFormat& FormatOf(const Target& target)
{
    for (const EngineFormat& format : Test::EngineFormats) {
        if (format.name == std::string_view(target.name)) {
            return format;
        }
    }
    std::abort();
}

/// What every mesh keeps to: its numbers are numbers.
class Inspection : public ModelData_Model::VoidElementVisitor
{
public:
    void operator()(const ModelData_Part& part) override
    {
        if (++myParts > MostParts) {
            return;
        }
        const ModelData_PolyRepresentation mesh = part.PolyRepresentation(ModelData_RM_Poly);
        for (std::size_t i = 0; !mesh.IsNull() && i < mesh.Get().Size(); ++i) {
            const ModelData_PolyVertexSet& set = mesh.Get()[i];
            if (set.IsOfType<ModelData_IndexedTriangleSet>()) {
                Look(static_cast<const ModelData_IndexedTriangleSet&>(set));
            }
        }
    }
    bool VisitEnter(const ModelData_Assembly&) override { return myParts <= MostParts; }
    bool VisitEnter(const ModelData_Instance&) override { return myParts <= MostParts; }

private:
    static constexpr int MostParts = 1000;

    static void Look(const ModelData_IndexedTriangleSet& set)
    {
        for (int face = 0; face < set.NumberOfFaces(); ++face) {
            for (int k = 0; k < 3; ++k) {
                const ModelData_Point& p = set.Coordinate(face, k);
                Require(std::isfinite(p.X()) && std::isfinite(p.Y()) && std::isfinite(p.Z()),
                        "coordinates are numbers");
                if (set.HasNormals()) {
                    const ModelData_Vectorf& n = set.VertexNormal(face, k);
                    Require(std::isfinite(n.X()) && std::isfinite(n.Y()) && std::isfinite(n.Z()),
                            "normals are numbers");
                }
            }
        }
    }

    int myParts = 0;
};

bool Read(const EngineFormat& format, Base_Reader& reader, std::string_view bytes)
{
    if (!format.isReadByKernel) {
        std::istringstream stream{std::string(bytes)};
        return reader.ReadFile(stream);
    }
    const std::string file = WorkFolder() + "/input" + format.extension;
    WriteBytes(file, bytes);
    return reader.ReadFile(file.c_str());
}

/// A fault that the kernel caught and worded. Letter by letter: libFuzzer would learn the words from a search
/// and put them into files, whose words some reports repeat.
bool IsProcessorFault(std::string_view text)
{
    constexpr std::string_view Signals[] = {"SIGSEGV 'segmentation violation'", "SIGBUS 'bus error'"};
    return std::any_of(std::begin(Signals), std::end(Signals), [&](std::string_view signal) {
        const auto isSame = [](char a, char b) { return (a ^ b) == 0; };
        return std::search(text.begin(), text.end(), signal.begin(), signal.end(), isSame) != text.end();
    });
}

void Run(const Target& target, std::string_view bytes)
{
    const EngineFormat& format = FormatOf(target);
    Reports::Clear();
    ModelData_Model model;
    const auto reader = format.reader();
    const bool isRead = Read(format, *reader, bytes) && reader->Transfer(model);
    if (isRead) {
        ModelAlgo_BRepMesherParameters parameters;
        parameters.SetAngularDeflection(0.42);
        parameters.SetChordalDeflection(0.0076);
        ModelAlgo_BRepMesher(parameters).Compute(model, true);
        Inspection inspection;
        model.Accept(inspection);
    }
    Require(isRead != model.IsEmpty(), "what is read has roots, what is refused leaves none");
    bool isRefused = false;
    for (const Report& report : Reports::Take()) {
        isRefused = isRefused || report.kind == Report::Kind::Refused;
        Require(format.isReadByKernel || !IsProcessorFault(report.text), report.text.c_str());
    }
    Require(isRead || isRefused, "what is refused says why");
}

std::vector<std::string> Seeds(const Target& target)
{
    namespace fs = std::filesystem;
    const EngineFormat& format = FormatOf(target);
    std::vector<std::string> seeds;
    for (const bool isAssembly : {false, true}) {
        const auto writer = format.CanWrite() ? format.writer() : nullptr;
        const std::string file = WorkFolder() + "/seed" + format.extension;
        if (writer && writer->Transfer(Test::MakeSeedModel(isAssembly)) && writer->WriteFile(file.c_str())) {
            seeds.push_back(BytesOf(file));
        }
    }
    for (std::string& bytes : ComposedSeeds(format.name)) {
        if (bytes.size() <= target.longest) {
            seeds.push_back(std::move(bytes));
        }
    }
    std::vector<fs::path> folders = {ZEMTAR_SOURCE_DIR "/examples"};
    for (const auto& room : fs::directory_iterator(ZEMTAR_SOURCE_DIR "/tests/sdk")) {
        if (fs::is_directory(room.path() / "fixtures")) {
            folders.push_back(room.path() / "fixtures");
        }
    }
    for (const fs::path& folder : folders) {
        for (const auto& file : fs::directory_iterator(folder)) {
            if (file.path().extension() == format.extension && fs::file_size(file) <= target.longest) {
                seeds.push_back(BytesOf(file.path().string()));
            }
        }
    }
    return seeds;
}

} // namespace

std::vector<Target> ReaderTargets()
{
    std::vector<Target> targets;
    for (const EngineFormat& format : Test::EngineFormats) {
        if (format.CanRead()) {
            targets.push_back({format.name, Run, Seeds});
        }
    }
    return targets;
}

} // namespace Zemtar::Fuzz
