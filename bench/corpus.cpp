// Thousands of real STEP files, each read, built and meshed in a process of its own; a seeded sample of them
// also by the bare kernel, whose number of placed parts, volume and bounds must be the same.
//
//     corpus_bench [--files N] [--sample N] [--seed N] [--seconds N] FOLDER...
//
// `--files`: a seeded choice of so many (default: all); `--sample`: how many are compared (default 500);
// `--seconds`: what one file may take (default 120). Prints what failed or differs, the slowest files, and
// the largest in memory.
#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <BRepBndLib.hxx>
#include <BRepGProp.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <Bnd_Box.hxx>
#include <GProp_GProps.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_Printer.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelAlgo_ValidationProperty.hxx>
#include <cadex/ModelAlgo_ValidationPropertyData.hxx>
#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/STEP_Reader.hxx>
#include <cadex/internal/Reports.hxx>

#include "bench/cad_files.h"
#include "bench/own_process.h"

using namespace cadex;

namespace {

constexpr double ChordalDeflection = 0.0076;
constexpr double AngularDeflection = 24.0 * 3.14159265358979323846 / 180.0;
/// Of the whole volume, and of the bounds' diagonal: two meshes of one arc differ by their chords.
constexpr double VolumeShare = 1e-3;
constexpr double BoundsShare = 1e-2;
constexpr std::size_t Listed = 10;

struct Facts
{
    bool isRead = false;
    long parts = 0; ///< as often as they are placed
    long triangles = 0;
    long leftOut = 0; ///< reports of bodies, faces ... that are missing
    double volume = 0;
    std::array<double, 3> low = {1e300, 1e300, 1e300};
    std::array<double, 3> high = {-1e300, -1e300, -1e300};
    std::array<char, 120> reason = {}; ///< the first thing refused or left out

    double Diagonal() const
    {
        double square = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            square += (high[k] - low[k]) * (high[k] - low[k]);
        }
        return triangles > 0 ? std::sqrt(square) : 0;
    }
};

using Matrix = std::array<double, 12>; // three rows of four

Matrix Product(const Matrix& a, const ModelData_Transformation& b)
{
    Matrix product{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            double sum = column == 3 ? a[4 * row + 3] : 0.0;
            for (std::size_t k = 0; k < 3; ++k) {
                sum += a[4 * row + k] * b.Data(static_cast<int>(k), static_cast<int>(column));
            }
            product[4 * row + column] = sum;
        }
    }
    return product;
}

double Determinant(const Matrix& m)
{
    return m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8]) +
           m[2] * (m[4] * m[9] - m[5] * m[8]);
}

class Measurement : public ModelData_Model::VoidElementVisitor
{
public:
    explicit Measurement(Facts& facts) : myFacts(facts) {}

    using VoidElementVisitor::VisitEnter;
    using VoidElementVisitor::VisitLeave;
    bool VisitEnter(const ModelData_Instance& instance) override
    {
        myPlaces.push_back(Product(myPlaces.back(), instance.Transformation()));
        return true;
    }
    void VisitLeave(const ModelData_Instance&) override { myPlaces.pop_back(); }
    void operator()(const ModelData_Part& part) override
    {
        const ModelData_PolyRepresentation mesh = part.PolyRepresentation(ModelData_RM_Poly);
        if (part.BRepRepresentation().IsNull()) {
            return;
        }
        ++myFacts.parts;
        ModelAlgo_ValidationPropertyData data;
        if (ModelAlgo_ValidationProperty::ComputeValidationProperties(part, data)) {
            myFacts.volume += std::abs(data.Volume() * Determinant(myPlaces.back()));
        }
        for (std::size_t i = 0; !mesh.IsNull() && i < mesh.Get().Size(); ++i) {
            if (mesh.Get()[i].IsOfType<ModelData_IndexedTriangleSet>()) {
                Add(static_cast<const ModelData_IndexedTriangleSet&>(mesh.Get()[i]));
            }
        }
    }

private:
    void Add(const ModelData_IndexedTriangleSet& set)
    {
        myFacts.triangles += set.NumberOfFaces();
        const Matrix& m = myPlaces.back();
        for (int face = 0; face < set.NumberOfFaces(); ++face) {
            for (int corner = 0; corner < 3; ++corner) {
                const ModelData_Point& p = set.Coordinate(face, corner);
                for (std::size_t k = 0; k < 3; ++k) {
                    const double at =
                        m[4 * k] * p.X() + m[4 * k + 1] * p.Y() + m[4 * k + 2] * p.Z() + m[4 * k + 3];
                    myFacts.low[k] = std::min(myFacts.low[k], at);
                    myFacts.high[k] = std::max(myFacts.high[k], at);
                }
            }
        }
    }

    Facts& myFacts;
    std::vector<Matrix> myPlaces{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}};
};

Facts ByEngine(const std::string& file)
{
    Facts facts;
    ModelData_Model model;
    STEP_Reader reader;
    facts.isRead = reader.ReadFile(file.c_str()) && reader.Transfer(model);
    if (facts.isRead) {
        ModelAlgo_BRepMesherParameters parameters;
        parameters.SetChordalDeflection(ChordalDeflection);
        parameters.SetAngularDeflection(AngularDeflection);
        ModelAlgo_BRepMesher(parameters).Compute(model, true);
        Measurement measurement(facts);
        model.Accept(measurement);
    }
    for (const internal::Report& report : internal::Reports::Take()) {
        const bool isLost =
            report.kind == internal::Report::Kind::LeftOut || report.kind == internal::Report::Kind::Refused;
        if (isLost && facts.reason.front() == 0) {
            std::snprintf(facts.reason.data(), facts.reason.size(), "%s", report.text.c_str());
        }
        facts.leftOut += report.kind == internal::Report::Kind::LeftOut ? static_cast<long>(report.count) : 0;
    }
    return facts;
}

long PlacedParts(const TDF_Label& label)
{
    if (!XCAFDoc_ShapeTool::IsAssembly(label)) {
        return 1;
    }
    long count = 0;
    TDF_LabelSequence components;
    XCAFDoc_ShapeTool::GetComponents(label, components);
    for (const TDF_Label& component : components) {
        TDF_Label referred;
        count += XCAFDoc_ShapeTool::GetReferredShape(component, referred) ? PlacedParts(referred) : 0;
    }
    return count;
}

Facts ByKernel(const std::string& file)
{
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_Printer));
    Facts facts;
    Handle(TDocStd_Document) document;
    XCAFApp_Application::GetApplication()->NewDocument("BinXCAF", document);
    STEPCAFControl_Reader reader;
    facts.isRead = reader.ReadFile(file.c_str()) == IFSelect_RetDone && reader.Transfer(document);
    TDF_LabelSequence roots;
    XCAFDoc_DocumentTool::ShapeTool(document->Main())->GetFreeShapes(roots);
    for (const TDF_Label& root : roots) {
        facts.parts += PlacedParts(root);
        const TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(root);
        for (TopExp_Explorer solids(shape, TopAbs_SOLID); solids.More(); solids.Next()) {
            GProp_GProps properties;
            BRepGProp::VolumeProperties(solids.Current(), properties);
            facts.volume += std::abs(properties.Mass());
        }
        const BRepMesh_IncrementalMesh mesh(shape, ChordalDeflection, true, AngularDeflection);
        for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
            Bnd_Box box;
            BRepBndLib::Add(faces.Current(), box, true);
            if (box.IsVoid()) {
                continue;
            }
            box.SetGap(0);
            std::array<double, 3> low{};
            std::array<double, 3> high{};
            box.Get(low[0], low[1], low[2], high[0], high[1], high[2]);
            for (std::size_t k = 0; k < 3; ++k) {
                facts.low[k] = std::min(facts.low[k], low[k]);
                facts.high[k] = std::max(facts.high[k], high[k]);
            }
            ++facts.triangles;
        }
    }
    return facts;
}

std::string Difference(const Facts& engine, const Facts& kernel)
{
    std::string text;
    const auto add = [&](const char* what, double ours, double theirs) {
        char line[120];
        std::snprintf(line, sizeof line, "  %s %.6g, kernel %.6g", what, ours, theirs);
        text += line;
    };
    if (engine.isRead != kernel.isRead) {
        add("read", engine.isRead, kernel.isRead);
        return text;
    }
    if (engine.parts != kernel.parts) {
        add("parts", static_cast<double>(engine.parts), static_cast<double>(kernel.parts));
    }
    const double most = std::max(engine.volume, kernel.volume);
    if (std::abs(engine.volume - kernel.volume) > VolumeShare * most) {
        add("volume", engine.volume, kernel.volume);
    }
    const double diagonal = std::max(engine.Diagonal(), kernel.Diagonal());
    for (std::size_t k = 0; k < 3; ++k) {
        if (std::abs(engine.low[k] - kernel.low[k]) > BoundsShare * diagonal) {
            add("low", engine.low[k], kernel.low[k]);
        }
        if (std::abs(engine.high[k] - kernel.high[k]) > BoundsShare * diagonal) {
            add("high", engine.high[k], kernel.high[k]);
        }
    }
    return text;
}

struct Options
{
    std::size_t files = std::numeric_limits<std::size_t>::max();
    std::size_t sample = 500;
    unsigned seed = 1;
    unsigned seconds = 120;
    std::vector<std::string> folders;
};

bool Parse(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (!argument.starts_with("--")) {
            options.folders.push_back(argument);
            continue;
        }
        if (++i == argc) {
            return false;
        }
        const auto number = static_cast<unsigned>(std::atol(argv[i]));
        if (argument == "--files") {
            options.files = number;
        } else if (argument == "--sample") {
            options.sample = number;
        } else if (argument == "--seed") {
            options.seed = number;
        } else if (argument == "--seconds") {
            options.seconds = number;
        } else {
            return false;
        }
    }
    return !options.folders.empty();
}

std::string NameOf(const std::string& file)
{
    return std::filesystem::path(file).filename().string();
}

using Measured = std::pair<std::string, Run<Facts>>;

void PrintLargest(const char* title, std::vector<Measured>& files, double Run<Facts>::*value)
{
    std::sort(files.begin(), files.end(),
              [value](const Measured& a, const Measured& b) { return a.second.*value > b.second.*value; });
    std::printf("\n%s\n", title);
    for (std::size_t i = 0; i < std::min(Listed, files.size()); ++i) {
        std::printf("  %9.3f  %9ld triangles  %s\n", files[i].second.*value, files[i].second.made.triangles,
                    NameOf(files[i].first).c_str());
    }
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!Parse(argc, argv, options)) {
        std::fprintf(stderr, "corpus_bench [--files N] [--sample N] [--seed N] [--seconds N] FOLDER...\n");
        return 2;
    }
    std::vector<std::string> files = CadFilesOf(options.folders);
    std::mt19937 random(options.seed);
    // by hand, since the standard's shuffle differs from library to library
    for (std::size_t i = files.size(); i > 1; --i) {
        std::swap(files[i - 1], files[random() % i]);
    }
    files.resize(std::min(files.size(), options.files));

    std::vector<Measured> all;
    long failed = 0;
    long incomplete = 0;
    double seconds = 0;
    double bytes = 0;
    for (const std::string& file : files) {
        const Run<Facts> run = InOwnProcess<Facts>([&file] { return ByEngine(file); }, options.seconds);
        const Facts& facts = run.made;
        bytes += static_cast<double>(std::filesystem::file_size(file));
        seconds += run.seconds;
        if (!run.ended || !facts.isRead || facts.triangles == 0) {
            ++failed;
            std::printf("FAILED  %s: %s (signal %d)\n", NameOf(file).c_str(), facts.reason.data(),
                        run.signal);
        } else if (facts.leftOut > 0) {
            ++incomplete;
            std::printf("LEFT OUT %ld  %s: %s\n", facts.leftOut, NameOf(file).c_str(), facts.reason.data());
        }
        std::fflush(stdout);
        all.emplace_back(file, run);
    }

    long differs = 0;
    double ours = 0;
    double theirs = 0;
    const std::size_t sample = std::min(options.sample, files.size());
    for (std::size_t i = 0; i < sample; ++i) { // the files are shuffled already
        const Run<Facts> kernel =
            InOwnProcess<Facts>([&] { return ByKernel(files[i]); }, 20 * options.seconds);
        const std::string difference = Difference(all[i].second.made, kernel.made);
        ours += all[i].second.seconds;
        theirs += kernel.seconds;
        if (!difference.empty()) {
            ++differs;
            std::printf("DIFFERS  %s:%s\n", NameOf(files[i]).c_str(), difference.c_str());
            std::fflush(stdout);
        }
    }
    PrintLargest("slowest (seconds of the processor)", all, &Run<Facts>::seconds);
    PrintLargest("largest in memory (MB)", all, &Run<Facts>::megabytes);
    std::printf("\n%zu files, %.0f MB, %.1f s: %ld failed, %ld lost something\n", files.size(), bytes / 1e6,
                seconds, failed, incomplete);
    std::printf("%zu compared with the bare kernel: %ld differ; %.1f s against %.1f s, %.4f\n", sample,
                differs, ours, theirs, theirs > 0 ? ours / theirs : 0.0);
    return failed > 0 ? 1 : 0;
}
