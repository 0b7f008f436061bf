// What meshing and mass properties cost beside reading, and what threads bring.
//
// First the stages of an import of each file given (default: those that Debian's occt-misc and netgen-doc
// install), in processor and in wall-clock time, with the share of the mass properties. Then plates of 25 to
// 1600 holes, meshed with and without threads: where the two cross is the number of faces from which
// ShapeMesher uses threads.
//
//     mesh_and_mass_bench [FILE...]
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <TopoDS_Compound.hxx>

#include <cadex/IGES_Reader.hxx>
#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelAlgo_ValidationProperty.hxx>
#include <cadex/STEP_Reader.hxx>

#include "sdk/mesh/DistinctParts.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/occt/ShapeMesher.h"

using namespace cadex;

namespace {

struct Time
{
    double wall = 0;
    double processor = 0;
};

Time Measure(const std::function<void()>& work)
{
    const auto wall = std::chrono::steady_clock::now();
    const std::clock_t processor = std::clock();
    work();
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count(),
            static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC};
}

/// The dialog's default: level 40 gives 24 degrees and 0.0076.
ModelAlgo_BRepMesherParameters DefaultParameters()
{
    ModelAlgo_BRepMesherParameters parameters(ModelAlgo_BRepMesherParameters::Fine, true);
    parameters.SetAngularDeflection(24 * 3.1415926535 / 180);
    parameters.SetChordalDeflection(0.0076);
    return parameters;
}

template <typename Reader>
void Stages(const std::string& file)
{
    Reader reader;
    ModelData_Model model;
    bool isRead = false;
    const Time read =
        Measure([&] { isRead = reader.ReadFile(Base_UTF16String(file.c_str())) && reader.Transfer(model); });
    if (!isRead) {
        std::printf("%-28s cannot be read\n", std::filesystem::path(file).filename().c_str());
        return;
    }
    const Time mesh = Measure([&] { ModelAlgo_BRepMesher(DefaultParameters()).Compute(model, true); });
    int known = 0;
    const Time mass = Measure([&] {
        for (const ModelData_Part& part : mesh::DistinctParts(model)) {
            ModelAlgo_ValidationPropertyData data;
            known += ModelAlgo_ValidationProperty::ComputeValidationProperties(part, data) ? 1 : 0;
        }
    });
    std::printf("%-28s read %.3f (%.3f)  mesh %.3f (%.3f)  mass %.3f (%.3f), %4.1f %% of the wall time, %d "
                "parts known\n",
                std::filesystem::path(file).filename().c_str(), read.wall, read.processor, mesh.wall,
                mesh.processor, mass.wall, mass.processor,
                100 * mass.wall / (read.wall + mesh.wall + mass.wall), known);
}

/// `count` cylinders and tori in a row: four faces a pair.
TopoDS_Shape Row(int count)
{
    BRep_Builder builder;
    TopoDS_Compound row;
    builder.MakeCompound(row);
    for (int i = 0; i < count; ++i) {
        const gp_Ax2 axis(gp_Pnt(100 * i, 0, 0), gp_Dir(0, 0, 1));
        builder.Add(row, BRepPrimAPI_MakeCylinder(axis, 10, 30).Shape());
        builder.Add(row, BRepPrimAPI_MakeTorus(axis, 40, 5).Shape());
    }
    return row;
}

void Threads(int pairs)
{
    const TopoDS_Shape row = Row(pairs);
    occt::MeshTolerances tolerances = occt::MakeTolerances(DefaultParameters());
    double best[2] = {1e30, 1e30};
    for (int run = 0; run < 6; ++run) {
        tolerances.parallel = run % 2 == 1;
        best[run % 2] = std::min(best[run % 2], Measure([&] {
                                                    occt::RunGuarded(occt::EngineUse::Geometry, [&] {
                                                        occt::MeshFaces(row, tolerances);
                                                        return true;
                                                    });
                                                }).wall);
    }
    std::printf("%5d faces: one thread %.4f, threads %.4f, ratio %.2f\n", 4 * pairs, best[0], best[1],
                best[1] / best[0]);
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> files(argv + 1, argv + argc);
    if (files.empty()) {
        files = {"/usr/share/opencascade/data/step/linkrods.step",
                 "/usr/share/opencascade/data/step/screw.step",
                 "/usr/share/opencascade/data/iges/bearing.iges",
                 "/usr/share/opencascade/data/iges/hammer.iges", "/usr/share/doc/netgen/examples/frame.step"};
    }
    for (const std::string& file : files) {
        if (file.find(".ig") != std::string::npos) {
            Stages<IGES_Reader>(file);
        } else {
            Stages<STEP_Reader>(file);
        }
    }
    for (const int pairs : {3, 10, 30, 100, 300}) {
        Threads(pairs);
    }
}
