// IFC reading, from file text to meshed model, beside IFC++ with its fastest geometry (Carve); and IFC
// writing of one mesh of 100,000 triangles.
//
// Data: a made building (walls with one opening each, faceted bodies of 288 triangles, properties; IFC2X3,
// millimetres) and, where it is installed, the house of Debian's assimp-testmodels. Each read checks that
// every element has come with triangles. Counters: megabytes of text a second and, on IFC++'s line, how many
// times our processor time it takes. Where IFC++ is not installed its lines are missing.

#include <cadex/IFC_Reader.hxx>
#include <cadex/IFC_Writer.hxx>
#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include <benchmark/benchmark.h>

#include <cmath>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <numbers>
#include <sstream>

#include "sdk/model/TriangleSets.h"

#ifdef ZEMTAR_BENCH_IFCPP
#include <ifcpp/geometry/Carve/GeometryConverter.h>
#include <ifcpp/model/BuildingModel.h>
#include <ifcpp/reader/ReaderSTEP.h>
#endif

namespace {

using namespace cadex;

double ProcessorSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

class MadeBuilding
{
public:
    explicit MadeBuilding(int elements)
    {
        const std::string origin = Add("IFCCARTESIANPOINT((0.,0.,0.))");
        const std::string axes = Add("IFCAXIS2PLACEMENT3D(" + origin + ",$,$)");
        myContext = Add("IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5," + axes + ",$)");
        const std::string length = Add("IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.)");
        const std::string angle = Add("IFCSIUNIT(*,.PLANEANGLEUNIT.,$,.RADIAN.)");
        const std::string units = Add("IFCUNITASSIGNMENT((" + length + "," + angle + "))");
        const std::string project =
            Add("IFCPROJECT(" + Guid() + ",$,'p',$,$,$,$,(" + myContext + ")," + units + ")");
        myPlacement = Add("IFCLOCALPLACEMENT($," + axes + ")");
        const std::string building =
            Add("IFCBUILDING(" + Guid() + ",$,'b',$,$," + myPlacement + ",$,$,.ELEMENT.,$,$,$)");
        Add("IFCRELAGGREGATES(" + Guid() + ",$,$,$," + project + ",(" + building + "))");
        std::string contained;
        for (int i = 0; i < elements; ++i) {
            contained += (contained.empty() ? "" : ",") + (i % 4 == 0 ? Wall(i) : Torus(i));
        }
        Add("IFCRELCONTAINEDINSPATIALSTRUCTURE(" + Guid() + ",$,$,$,(" + contained + ")," + building + ")");
    }

    std::string Text() const
    {
        return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
               "FILE_SCHEMA(('IFC2X3'));\nENDSEC;\nDATA;\n" +
               myData + "ENDSEC;\nEND-ISO-10303-21;\n";
    }

private:
    std::string Add(const std::string& entity)
    {
        std::string id = "#" + std::to_string(++myCount);
        myData += id + "=" + entity + ";\n";
        return id;
    }
    std::string Guid()
    {
        const std::string number = std::to_string(++myGuids);
        return "'" + std::string(22 - number.size(), '0') + number + "'";
    }
    std::string Product(const std::string& type, int number, const std::string& item, const std::string& tail)
    {
        const std::string at = Add("IFCCARTESIANPOINT((" + std::to_string(number * 1500) + ".,0.,0.))");
        const std::string place =
            Add("IFCLOCALPLACEMENT(" + myPlacement + "," + Add("IFCAXIS2PLACEMENT3D(" + at + ",$,$)") + ")");
        const std::string shape = Add("IFCSHAPEREPRESENTATION(" + myContext + ",'Body','',(" + item + "))");
        std::string product = Add(type + "(" + Guid() + ",$,'e',$,$," + place + "," +
                                  Add("IFCPRODUCTDEFINITIONSHAPE($,$,(" + shape + "))") + tail);
        const std::string value = Add("IFCPROPERTYSINGLEVALUE('Mark',$,IFCLABEL('x'),$)");
        const std::string set = Add("IFCPROPERTYSET(" + Guid() + ",$,'Pset',$,(" + value + "))");
        Add("IFCRELDEFINESBYPROPERTIES(" + Guid() + ",$,$,$,(" + product + ")," + set + ")");
        return product;
    }
    std::string Box(const char* size)
    {
        const std::string origin = Add("IFCCARTESIANPOINT((0.,0.))");
        const std::string place = Add("IFCAXIS2PLACEMENT2D(" + origin + ",$)");
        const std::string profile = Add("IFCRECTANGLEPROFILEDEF(.AREA.,$," + place + size + ")");
        const std::string position =
            Add("IFCAXIS2PLACEMENT3D(" + Add("IFCCARTESIANPOINT((0.,0.,0.))") + ",$,$)");
        return Add("IFCEXTRUDEDAREASOLID(" + profile + "," + position + "," +
                   Add("IFCDIRECTION((0.,0.,1.))") + ",1000.)");
    }
    std::string Wall(int number)
    {
        std::string wall = Product("IFCWALLSTANDARDCASE", number, Box(",1000.,200."), ",$)");
        const std::string opening = Product("IFCOPENINGELEMENT", number, Box(",300.,400."), ",$)");
        Add("IFCRELVOIDSELEMENT(" + Guid() + ",$,$,$," + wall + "," + opening + ")");
        return wall;
    }
    std::string Torus(int number)
    {
        constexpr int Around = 12;
        std::vector<std::string> points;
        for (int i = 0; i < Around * Around; ++i) {
            const int ring = i / Around;
            const double u = 2 * std::numbers::pi * ring / Around;
            const double v = 2 * std::numbers::pi * (i % Around) / Around;
            std::ostringstream text;
            text.precision(9);
            text << std::showpoint << "IFCCARTESIANPOINT((" << (500 + 200 * std::cos(v)) * std::cos(u) << ","
                 << (500 + 200 * std::cos(v)) * std::sin(u) << "," << 200 * std::sin(v) << "))";
            points.push_back(Add(text.str()));
        }
        std::string faces;
        for (int i = 0; i < 2 * Around * Around; ++i) {
            const int quad = i / 2;
            const auto at = [&](int du, int dv) -> const std::string& {
                const auto row = static_cast<std::size_t>((quad / Around + du) % Around);
                return points[row * Around + static_cast<std::size_t>((quad % Around + dv) % Around)];
            };
            const std::string loop = Add("IFCPOLYLOOP((" + at(0, 0) + "," + (i % 2 ? at(1, 1) : at(1, 0)) +
                                         "," + (i % 2 ? at(0, 1) : at(1, 1)) + "))");
            faces +=
                (i == 0 ? "" : ",") + Add("IFCFACE((" + Add("IFCFACEOUTERBOUND(" + loop + ",.T.)") + "))");
        }
        return Product("IFCBUILDINGELEMENTPROXY", number,
                       Add("IFCFACETEDBREP(" + Add("IFCCLOSEDSHELL((" + faces + "))") + ")"), ",$,$)");
    }

    std::string myData;
    std::string myContext;
    std::string myPlacement;
    int myCount = 0;
    int myGuids = 0;
};

const std::string& Data(std::int64_t which)
{
    static std::map<std::int64_t, std::string> texts;
    std::string& text = texts[which];
    if (text.empty() && which == 0) {
        text = MadeBuilding(100).Text();
    } else if (text.empty()) {
        std::ostringstream bytes;
        bytes << std::ifstream("/usr/share/assimp/models/IFC/AC14-FZK-Haus.ifc", std::ios::binary).rdbuf();
        text = bytes.str();
    }
    return text;
}

struct CountParts : ModelData_Model::VoidElementVisitor
{
    void operator()(const ModelData_Part& part) override
    {
        filled += part.PolyRepresentation(ModelData_RM_Poly).IsNull() ? 0 : 1;
    }
    int filled = 0;
};

/// Ours: read, transfer, mesh at the import's default tolerances. The number of parts with a mesh.
int ReadOnce(const std::string& text)
{
    std::istringstream stream(text);
    IFC_Reader reader;
    ModelData_Model model;
    if (!reader.ReadFile(stream) || !reader.Transfer(model)) {
        return 0;
    }
    ModelAlgo_BRepMesherParameters tolerances;
    tolerances.SetAngularDeflection(24 * std::numbers::pi / 180);
    tolerances.SetChordalDeflection(0.0076);
    ModelAlgo_BRepMesher(tolerances).Compute(model, true);
    CountParts count;
    model.Accept(count);
    return count.filled;
}

std::map<std::int64_t, double>& OurSeconds()
{
    static std::map<std::int64_t, double> seconds;
    return seconds;
}

void BM_Read(benchmark::State& state)
{
    const std::string& text = Data(state.range(0));
    if (text.empty() || ReadOnce(text) < 100) {
        state.SkipWithError(text.empty() ? "file not installed" : "elements are missing");
        return;
    }
    double best = INFINITY;
    for ([[maybe_unused]] auto _ : state) {
        const double start = ProcessorSeconds();
        benchmark::DoNotOptimize(ReadOnce(text));
        best = std::min(best, ProcessorSeconds() - start);
    }
    OurSeconds()[state.range(0)] = best;
    state.counters["MB/s"] = static_cast<double>(text.size()) / 1e6 / best;
}
BENCHMARK(BM_Read)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2);

#ifdef ZEMTAR_BENCH_IFCPP
void BM_ReadIfcpp(benchmark::State& state)
{
    const std::string& text = Data(state.range(0));
    if (text.empty()) {
        state.SkipWithError("file not installed");
        return;
    }
    double best = INFINITY;
    for ([[maybe_unused]] auto _ : state) {
        const double start = ProcessorSeconds();
        auto model = std::make_shared<BuildingModel>();
        std::string copy = text;
        ReaderSTEP().loadModelFromString(copy, model);
        GeometryConverter geometry(model);
        geometry.convertGeometry();
        benchmark::DoNotOptimize(geometry.getShapeInputData().size());
        best = std::min(best, ProcessorSeconds() - start);
    }
    state.counters["MB/s"] = static_cast<double>(text.size()) / 1e6 / best;
    state.counters["times_ours"] = best / OurSeconds()[state.range(0)];
}
BENCHMARK(BM_ReadIfcpp)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2);
#endif

void BM_Write(benchmark::State& state)
{
    const auto around = static_cast<U32>(std::sqrt(static_cast<double>(state.range(0)) / 2));
    internal::TriangleArrays arrays;
    for (U32 i = 0; i < around * around; ++i) {
        const U32 ring = i / around;
        const double u = 2 * std::numbers::pi * ring / around;
        const double v = 2 * std::numbers::pi * (i % around) / around;
        arrays.points.emplace_back((50 + 20 * std::cos(v)) * std::cos(u),
                                   (50 + 20 * std::cos(v)) * std::sin(u), 20 * std::sin(v));
        const U32 b = (i / around + 1) % around * around + i % around;
        const U32 c = (i / around + 1) % around * around + (i + 1) % around;
        const U32 d = i / around * around + (i + 1) % around;
        arrays.indices.insert(arrays.indices.end(), {i, b, c, i, c, d});
    }
    ModelData_Part part("torus");
    part.AddRepresentation(ModelData_PolyRepresentation(internal::MakeTriangleSet(std::move(arrays))));
    ModelData_Model model;
    model.AddRoot(part);
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "ifc_bench.ifc";
    for ([[maybe_unused]] auto _ : state) {
        IFC_Writer writer;
        if (!writer.Transfer(model) || !writer.WriteFile(Base_UTF16String(file.string().c_str()))) {
            state.SkipWithError("not written");
            break;
        }
    }
    state.counters["bytes_a_triangle"] =
        static_cast<double>(std::filesystem::file_size(file)) / static_cast<double>(state.range(0));
    std::filesystem::remove(file);
}
BENCHMARK(BM_Write)->Arg(100'000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
