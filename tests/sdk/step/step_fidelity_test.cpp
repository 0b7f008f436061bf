// Real STEP files, as far as they are installed, against OpenCASCADE alone (which heals what it reads): what
// comes of a file is the same but for the places of the triangles' corners.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bench/bare_import.h"
#include "tests/sdk/MeshModels.h"
#include "tests/sdk/step/MeshFacts.h"
#include "tests/sdk/step/XcafReadback.h"

namespace cadex::test {
namespace {

// Debian's occt-misc, netgen-doc, gmsh-doc and kicad-packages3d: assemblies, turned and blended parts,
// threads, toroids, splines, instances, colours of faces.
constexpr const char* Files[] = {
    // NOLINTNEXTLINE(bugprone-suspicious-missing-comma): a folder and a name
    ZEMTAR_SOURCE_DIR "/examples/pump.step",
    "/usr/share/opencascade/data/step/linkrods.step",
    "/usr/share/opencascade/data/step/screw.step",
    "/usr/share/doc/netgen/examples/frame.step",
    "/usr/share/doc/gmsh-doc/doc/gmsh/demos/api/as1-tu-203.stp.gz",
    "/usr/share/doc/gmsh-doc/doc/gmsh/demos/api/step_boundary_colors.stp.gz",
    "/usr/share/doc/gmsh-doc/doc/gmsh/demos/boolean/component8.step.gz",
    "/usr/share/kicad/3dmodels/Battery.3dshapes/BatteryHolder_Keystone_106_1x20mm.step",
    "/usr/share/kicad/3dmodels/Package_TO_SOT_THT.3dshapes/TO-18-2_Lens.step",
};

// Chords are 0.0076 of the size of an edge: two sets of them enclose as much within this share.
constexpr double AreaTolerance = 5e-3;
constexpr double VolumeTolerance = 1e-2;
constexpr double BoundsTolerance = 2e-3; // of the size

/// The file, unpacked into the folder where it is packed; empty when it is not there.
std::string Unpacked(const std::string& path, const ScratchFolder& folder)
{
    if (!std::filesystem::exists(path)) {
        return {};
    }
    const std::filesystem::path file = path;
    if (file.extension() != ".gz") {
        return path;
    }
    const std::string plain = (folder.Path() / file.stem()).string();
    return std::system(("gzip -dc '" + path + "' > '" + plain + "'").c_str()) == 0 ? plain : std::string();
}

std::multiset<std::string> PartNames(const std::string& text, const std::string& before,
                                     const std::string& behind)
{
    std::multiset<std::string> names;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t start = line.find_first_not_of(' ');
        if (start == std::string::npos || line.compare(start, before.size(), before) != 0) {
            continue;
        }
        const std::string name = line.substr(start + before.size());
        names.insert(behind.empty() ? name : name.substr(0, name.find(behind)));
    }
    return names;
}

} // namespace

TEST(StepFidelity, FilesAreWhatTheBareKernelMakesOfThem)
{
    const ScratchFolder folder;
    int compared = 0;
    for (const char* path : Files) {
        const std::string file = Unpacked(path, folder);
        if (file.empty()) {
            continue;
        }
        ++compared;
        const BareMesh bare = BareImport(file);
        const MeshFacts theirs = TriangleFacts(bare.positions, bare.indices);
        const MeshFacts ours = FileFacts(file);
        EXPECT_TRUE(ours.isRead) << path;
        EXPECT_EQ(ours.reports, "") << path;
        EXPECT_NEAR(ours.area, theirs.area, AreaTolerance * theirs.area) << path;
        EXPECT_NEAR(ours.volume, theirs.volume, VolumeTolerance * theirs.volume) << path;
        EXPECT_EQ(ours.openEdges, 0) << path;
        EXPECT_EQ(ours.against, 0) << path;
        double size = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            size = std::max(size, theirs.high[axis] - theirs.low[axis]);
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            EXPECT_NEAR(ours.low[axis], theirs.low[axis], BoundsTolerance * size) << path;
            EXPECT_NEAR(ours.high[axis], theirs.high[axis], BoundsTolerance * size) << path;
        }
        const XcafReadback readback(file);
        if (const auto names = PartNames(readback.tree, "part ", ""); names.count("") == 0) {
            EXPECT_EQ(PartNames(ours.outline, "part '", "'"), names) << path;
        }
        for (const std::string& colour : readback.colors) {
            std::istringstream words(colour);
            std::string kind;
            double c[3] = {0, 0, 0}; // transparency stands elsewhere in some files
            words >> kind >> c[0] >> c[1] >> c[2];
            std::ostringstream wanted;
            wanted << "rgba";
            for (const double component : c) {
                wanted << ' ' << std::lround(component * 255);
            }
            EXPECT_NE(ours.outline.find(wanted.str()), std::string::npos) << path << ": " << colour;
        }
    }
    if (compared == 0) {
        GTEST_SKIP() << "no files installed";
    }
}

} // namespace cadex::test
