// Exact bodies of other formats beside the same bodies as STEP: reading and meshing at the importer's default
// tolerances, in processor time, in turns within one run; the ratio is that of the medians.
//
// Each file given (default: the examples) is read, its bodies become kernel shapes, and those a STEP file, by
// OpenCASCADE's own writer. A file of another format is timed beside that; a STEP file as ACIS text, binary
// or not, beside it too. Areas must agree within one in a thousand.
//
//     exact_bodies_bench [--rounds N] [FILE...]
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <BRepGProp.hxx>
#include <BRep_Builder.hxx>
#include <GProp_GProps.hxx>
#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <STEPControl_Writer.hxx>
#include <TopoDS_Compound.hxx>

#include <cadex/ACIS_Reader.hxx>
#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/Para_Reader.hxx>
#include <cadex/Rhino_Reader.hxx>
#include <cadex/SLD_Reader.hxx>
#include <cadex/STEP_Reader.hxx>

#include "sdk/mesh/DistinctParts.h"
#include "sdk/occt/EngineBRep.h"
#include "sdk/text/AtomicFile.h"
#include "tests/support/ShapeToSat.h"

using namespace cadex;

namespace {

constexpr double ChordalDeflection = 0.0076;
constexpr double AngularDeflection = 24.0 * 3.14159265358979323846 / 180.0;

bool Read(const std::filesystem::path& file, ModelData_Model& model)
{
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto read = [&](Base_Reader&& reader) {
        return reader.ReadFile(file.string().c_str()) && reader.Transfer(model);
    };
    return extension == ".3dm"                          ? read(Rhino_Reader())
           : extension == ".sat" || extension == ".sab" ? read(ACIS_Reader())
           : extension == ".x_t" || extension == ".x_b" ? read(Para_Reader())
           : extension == ".sldprt"                     ? read(SLD_Reader())
                                                        : read(STEP_Reader());
}

/// Seconds of the processor.
double TimeOf(const std::filesystem::path& file)
{
    const std::clock_t start = std::clock();
    ModelData_Model model;
    if (!Read(file, model)) {
        return -1;
    }
    ModelAlgo_BRepMesherParameters parameters;
    parameters.SetChordalDeflection(ChordalDeflection);
    parameters.SetAngularDeflection(AngularDeflection);
    ModelAlgo_BRepMesher(parameters).Compute(model, true);
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

double AreaOf(const std::filesystem::path& file)
{
    ModelData_Model model;
    double area = 0;
    if (Read(file, model)) {
        for (const ModelData_Part& part : mesh::DistinctParts(model)) {
            if (const auto* body = occt::BRepOf<occt::EngineBRep>(part.BRepRepresentation())) {
                area += body->Area();
            }
        }
    }
    return area;
}

TopoDS_Shape ShapesOf(const std::filesystem::path& file)
{
    TopoDS_Compound all;
    BRep_Builder builder;
    builder.MakeCompound(all);
    ModelData_Model model;
    if (Read(file, model)) {
        for (const ModelData_Part& part : mesh::DistinctParts(model)) {
            const auto* body = occt::BRepOf<occt::EngineBRep>(part.BRepRepresentation());
            const TopoDS_Shape shape = body != nullptr ? body->KernelShape() : TopoDS_Shape();
            if (!shape.IsNull()) {
                builder.Add(all, shape);
            }
        }
    }
    return all;
}

bool Write(const std::filesystem::path& file, const std::string& bytes)
{
    text::AtomicFile target(file);
    return target.IsOpen() && target.Write(bytes) && target.Commit();
}

bool WriteStep(const std::filesystem::path& file, const TopoDS_Shape& shape)
{
    STEPControl_Writer writer;
    return writer.Transfer(shape, STEPControl_AsIs) == IFSelect_RetDone &&
           writer.Write(file.string().c_str()) == IFSelect_RetDone;
}

double Median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

bool Compare(const std::filesystem::path& name, const std::filesystem::path& file,
             const std::filesystem::path& step, int rounds)
{
    const double ours = AreaOf(file);
    const double theirs = AreaOf(step);
    std::vector<double> seconds[2];
    for (int i = 0; i < rounds; ++i) {
        seconds[0].push_back(TimeOf(file));
        seconds[1].push_back(TimeOf(step));
    }
    const double one = Median(seconds[0]);
    const double other = Median(seconds[1]);
    const bool isSame = std::abs(ours - theirs) <= 1e-3 * theirs;
    std::printf("%-44s %8.1f ms %8.1f ms as STEP  %5.2f%s\n", name.string().c_str(), one * 1e3, other * 1e3,
                one / other, isSame ? "" : "  OTHER AREA");
    return isSame;
}

} // namespace

int main(int argc, char** argv)
{
    int rounds = 7;
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--rounds" && i + 1 < argc) {
            rounds = std::max(1, std::atoi(argv[++i]));
        } else {
            files.emplace_back(argv[i]);
        }
    }
    if (files.empty()) {
        files.emplace_back(ZEMTAR_SOURCE_DIR "/examples/pump.step");
    }
    Message::DefaultMessenger()->ChangePrinters().Clear();
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("exact_bodies_bench." + std::to_string(std::time(nullptr)));
    std::filesystem::create_directories(folder);
    bool isGood = true;
    for (const std::filesystem::path& file : files) {
        const TopoDS_Shape shape = ShapesOf(file);
        const std::filesystem::path step = folder / "twin.step";
        if (!WriteStep(step, shape)) {
            std::printf("%s: no bodies\n", file.string().c_str());
            continue;
        }
        const std::string extension = file.extension().string();
        if (extension == ".step" || extension == ".stp") {
            const std::filesystem::path sat = folder / "twin.sat";
            isGood = Write(sat, test::ShapeToSat::Write(shape)) &&
                     Compare(file.filename().string() + " as SAT", sat, step, rounds) && isGood;
        } else {
            isGood = Compare(file.filename(), file, step, rounds) && isGood;
        }
    }
    std::filesystem::remove_all(folder);
    return isGood ? 0 : 1;
}
