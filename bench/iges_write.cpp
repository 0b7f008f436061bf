// IGES export of a closed triangle mesh: the engine's writer beside a bare program that does it with the
// kernel's translator the fastest way known (one vertex a point, one line an edge, plane faces, a solid, no
// curves in parameter space). Both files are read back and must hold the same solid. The ratio is of
// processor time, one run, the best of three each.
//
//     iges_write_bench [TRIANGLES]        default 10000 and 30000
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <vector>

#include <BRepGProp.hxx>
#include <GProp_GProps.hxx>
#include <IGESCAFControl_Reader.hxx>
#include <IGESCAFControl_Writer.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <cadex/IGES_Writer.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/model/TriangleSets.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/occt/FacetedBRep.h"
#include "sdk/occt/MeshToShape.h"

using namespace cadex;

namespace {

constexpr int Repeats = 3;

/// A wavy torus of about `count` triangles.
occt::FacetGroup Torus(int count)
{
    const int across = std::max(3, static_cast<int>(std::lround(std::sqrt(count / 2.0 * 0.8))));
    const int around = count / 2 / across;
    occt::FacetGroup mesh;
    const auto index = [&](int i, int j) { return static_cast<U32>((i % around) * across + j % across); };
    for (int i = 0; i < around; ++i) {
        for (int j = 0; j < across; ++j) {
            const double u = 2 * M_PI * i / around;
            const double v = 2 * M_PI * j / across;
            const double r = 20 + 1.5 * std::sin(5 * u + 3 * v);
            mesh.points.emplace_back((50 + r * std::cos(v)) * std::cos(u),
                                     (50 + r * std::cos(v)) * std::sin(u), r * std::sin(v));
            for (const U32 corner : {index(i, j), index(i + 1, j), index(i + 1, j + 1), index(i, j),
                                     index(i + 1, j + 1), index(i, j + 1)}) {
                mesh.indices.push_back(corner);
            }
        }
    }
    return mesh;
}

double Seconds(const std::function<bool()>& work)
{
    double best = 1e30;
    for (int i = 0; i < Repeats; ++i) {
        const std::clock_t start = std::clock();
        if (!work()) {
            std::fprintf(stderr, "writing failed\n");
            std::exit(1);
        }
        best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    return best;
}

bool WriteWithEngine(const occt::FacetGroup& mesh, const std::string& file)
{
    internal::TriangleArrays arrays;
    arrays.points = mesh.points;
    arrays.indices = mesh.indices;
    ModelData_Model model;
    model.AddRoot(ModelData_Part(ModelData_PolyRepresentation(MakeTriangleSet(std::move(arrays))), "torus"));
    IGES_Writer writer;
    return writer.Transfer(model) && writer.WriteFile(Base_UTF16String(file.c_str()));
}

bool WriteWithKernel(const occt::FacetGroup& mesh, const std::string& file)
{
    return occt::RunGuarded(occt::EngineUse::Iges, [&] {
        occt::FacetedBRep facets;
        facets.groups.push_back(mesh);
        Handle(TDocStd_Document) document = new TDocStd_Document("BinXCAF");
        const TDF_Label part =
            XCAFDoc_DocumentTool::ShapeTool(document->Main())->AddShape(occt::MakeShape(facets), false);
        TDataStd_Name::Set(part, "torus");
        occt::SetEngineSetting("write.iges.brep.mode", 1);
        IGESCAFControl_Writer writer;
        return writer.Transfer(document) && writer.Write(file.c_str());
    });
}

bool IsWhole(const std::string& file, std::size_t triangles, double& volume)
{
    return occt::RunGuarded(occt::EngineUse::Iges, [&] {
        IGESControl_Reader reader;
        if (reader.ReadFile(file.c_str()) != IFSelect_RetDone || reader.TransferRoots() != 1) {
            return false;
        }
        std::size_t faces = 0;
        for (TopExp_Explorer it(reader.OneShape(), TopAbs_FACE); it.More(); it.Next()) {
            ++faces;
        }
        GProp_GProps properties;
        BRepGProp::VolumeProperties(reader.OneShape(), properties, true);
        volume = properties.Mass();
        return faces == triangles;
    });
}

int Compare(int count)
{
    const occt::FacetGroup mesh = Torus(count);
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    const std::string own = (folder / "bench_own.igs").string();
    const std::string kernel = (folder / "bench_kernel.igs").string();
    const double ownSeconds = Seconds([&] { return WriteWithEngine(mesh, own); });
    const double kernelSeconds = Seconds([&] { return WriteWithKernel(mesh, kernel); });
    const std::size_t triangles = mesh.indices.size() / 3;
    double ownVolume = 0;
    double kernelVolume = 0;
    const bool isWhole = IsWhole(own, triangles, ownVolume) && IsWhole(kernel, triangles, kernelVolume) &&
                         std::abs(ownVolume / kernelVolume - 1) < 1e-9;
    std::printf("%7zu triangles: engine %.3f s %.1f MB, kernel %.3f s %.1f MB, ratio %.2f, %s\n", triangles,
                ownSeconds, static_cast<double>(std::filesystem::file_size(own)) / 1e6, kernelSeconds,
                static_cast<double>(std::filesystem::file_size(kernel)) / 1e6, ownSeconds / kernelSeconds,
                isWhole ? "same solid" : "NOT THE SAME");
    std::filesystem::remove(own);
    std::filesystem::remove(kernel);
    return isWhole && ownSeconds <= kernelSeconds ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 1) {
        return Compare(std::max(12, std::atoi(argv[1])));
    }
    return Compare(10000) | Compare(30000);
}
