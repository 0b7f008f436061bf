// Our tessellation of described bodies beside the kernel's mesher, on the same faces.
//
// Each body becomes the kernel's shape, meshed by the kernel, and a description of the same faces, meshed
// from there (faces resolved, edges divided, triangles, normals, sets): processor seconds of the best of some
// rounds, and their ratio. Area and volume of both results are compared with the exact ones; a body whose
// mesh is not as good as the kernel's is marked. Then many bodies in one part, with and without threads.
//
//     tessellation_bench [FILE...]       STEP files; default: those of Debian's occt-misc and netgen-doc
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepGProp.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <GProp_GProps.hxx>
#include <STEPControl_Reader.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Shell.hxx>

#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/brep/DescribedBRep.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/occt/OcctBRep.h"
#include "tests/sdk/brep/DescriptionOf.h"

using namespace cadex;

namespace {

constexpr int Rounds = 5;

// What the dialog's default of level 40 asks for.
constexpr occt::MeshTolerances Tolerances{.chord = 0.0076, .angle = 24 * M_PI / 180};

struct Measures
{
    double area = 0;
    double volume = 0;
    long triangles = 0;
};

Measures MeasuresOf(const ModelData_PolyRepresentation& shapes)
{
    Measures result;
    for (std::size_t i = 0; !shapes.IsNull() && i < shapes.Get().Size(); ++i) {
        if (!shapes.Get()[i].IsOfType<ModelData_IndexedTriangleSet>()) {
            continue;
        }
        const auto& set = static_cast<const ModelData_IndexedTriangleSet&>(shapes.Get()[i]);
        const auto at = [&](int face, int slot) {
            const ModelData_Point& point = set.Coordinate(face, slot);
            return gp_XYZ(point.X(), point.Y(), point.Z());
        };
        for (int face = 0; face < set.NumberOfFaces(); ++face) {
            const gp_XYZ a = at(face, 0);
            const gp_XYZ normal = (at(face, 1) - a).Crossed(at(face, 2) - a);
            result.area += normal.Modulus() / 2;
            result.volume += a.Dot(normal) / 6;
            ++result.triangles;
        }
    }
    return result;
}

struct Result
{
    double seconds = 1e30; ///< processor time
    double wall = 1e30;
    Measures measures;
};

void Run(const occt::EngineBRep& body, const occt::MeshTolerances& tolerances, Result& best)
{
    occt::RunGuarded(occt::EngineUse::Geometry, [&] {
        const std::clock_t start = std::clock();
        const auto wall = std::chrono::steady_clock::now();
        const ModelData_PolyRepresentation shapes = body.Mesh(tolerances, true, "body");
        best.wall = std::min(best.wall,
                             std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count());
        best.seconds = std::min(best.seconds, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
        best.measures = MeasuresOf(shapes);
        return true;
    });
}

double Total[2] = {0, 0};

void Compare(const std::string& name, const TopoDS_Shape& shape)
{
    const occt::OcctBRep kernelBody(shape);
    const brep::Description description = brep::DescriptionOf(shape);
    Result kernel;
    Result own;
    for (int round = 0; round < Rounds; ++round) {
        Run(kernelBody, Tolerances, kernel);
        Run(brep::DescribedBRep(description), Tolerances, own); // a new one resolves its faces
    }
    GProp_GProps area;
    GProp_GProps volume;
    BRepGProp::SurfaceProperties(shape, area);
    BRepGProp::VolumeProperties(shape, volume);
    const auto errors = [&](const Measures& measures) {
        return std::array{measures.area / area.Mass() - 1, measures.volume / volume.Mass() - 1};
    };
    const auto [ownArea, ownVolume] = errors(own.measures);
    const auto [kernelArea, kernelVolume] = errors(kernel.measures);
    constexpr double Slack = 0.002;
    const bool isWorse = std::abs(ownArea) > std::abs(kernelArea) + Slack ||
                         std::abs(ownVolume) > std::abs(kernelVolume) + Slack;
    std::printf("%-24.24s kernel %8.5f s %7ld triangles, own %8.5f s %7ld, ratio %.3f; area %+.4f %+.4f "
                "volume %+.4f %+.4f%s\n",
                name.c_str(), kernel.seconds, kernel.measures.triangles, own.seconds, own.measures.triangles,
                own.seconds / kernel.seconds, kernelArea, ownArea, kernelVolume, ownVolume,
                isWorse ? "  WORSE" : "");
    Total[0] += kernel.seconds;
    Total[1] += own.seconds;
}

TopoDS_Shape Drilled()
{
    TopoDS_Shape block = BRepPrimAPI_MakeBox(100, 100, 10).Shape();
    for (int i = 0; i < 25; ++i) {
        const int row = i / 5;
        const gp_Ax2 axis(gp_Pnt(10 + 20 * (i % 5), 10 + 20 * row, -1), gp_Dir(0, 0, 1));
        block = BRepAlgoAPI_Cut(block, BRepPrimAPI_MakeCylinder(axis, 6, 20).Shape()).Shape();
    }
    return block;
}

void CompareFile(const std::string& path)
{
    TopoDS_Shape shape;
    occt::RunGuarded(occt::EngineUse::Geometry, [&] {
        STEPControl_Reader reader;
        if (reader.ReadFile(path.c_str()) == IFSelect_RetDone && reader.TransferRoots() > 0) {
            shape = reader.OneShape();
        }
        return true;
    });
    int number = 0;
    for (TopExp_Explorer it(shape, TopAbs_SOLID); it.More(); it.Next()) {
        constexpr int MostBodies = 3;
        if (++number <= MostBodies) {
            Compare(std::filesystem::path(path).filename().string() + " " + std::to_string(number),
                    it.Current().Located(TopLoc_Location()));
        }
    }
    if (number == 0) {
        std::printf("%s: no bodies\n", path.c_str());
    }
}

void CompareThreads(int count)
{
    BRep_Builder builder;
    TopoDS_Compound row;
    builder.MakeCompound(row);
    for (int i = 0; i < count; ++i) {
        const gp_Ax2 axis(gp_Pnt(100 * i, 0, 0), gp_Dir(0, 0, 1));
        builder.Add(row, BRepPrimAPI_MakeSphere(axis, 10).Shape());
        builder.Add(row, BRepPrimAPI_MakeTorus(axis, 40, 5).Shape());
        builder.Add(row, BRepPrimAPI_MakeCone(axis, 10, 5, 30).Shape());
    }
    const brep::Description description = brep::DescriptionOf(row);
    Result results[2];
    for (int run = 0; run < 2 * Rounds; ++run) {
        occt::MeshTolerances tolerances = Tolerances;
        tolerances.parallel = run % 2 == 1;
        Run(brep::DescribedBRep(description), tolerances, results[run % 2]);
    }
    const bool isSame = results[0].measures.triangles == results[1].measures.triangles &&
                        results[0].measures.volume == results[1].measures.volume;
    std::printf("%5d faces: one thread %.4f s, threads %.4f s, ratio %.2f%s\n", 5 * count, results[0].wall,
                results[1].wall, results[1].wall / results[0].wall, isSame ? "" : "  DIFFERENT");
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> files(argv + 1, argv + argc);
    if (files.empty()) {
        files = {"/usr/share/opencascade/data/step/linkrods.step",
                 "/usr/share/opencascade/data/step/screw.step", "/usr/share/doc/netgen/examples/frame.step"};
    }
    Compare("box", BRepPrimAPI_MakeBox(10, 20, 30).Shape());
    Compare("cylinder", BRepPrimAPI_MakeCylinder(10, 30).Shape());
    Compare("cone", BRepPrimAPI_MakeCone(10, 0, 30).Shape());
    Compare("sphere", BRepPrimAPI_MakeSphere(10).Shape());
    Compare("torus", BRepPrimAPI_MakeTorus(30, 10).Shape());
    Compare("plate of 25 holes", Drilled());
    for (const std::string& file : files) {
        CompareFile(file);
    }
    std::printf("all: kernel %.4f s, own %.4f s, ratio %.3f\n", Total[0], Total[1], Total[1] / Total[0]);
    for (const int count : {5, 20, 80, 320}) {
        CompareThreads(count);
    }
}
