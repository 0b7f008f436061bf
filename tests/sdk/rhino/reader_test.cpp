// Reading of files that another implementation wrote (make_fixtures.js), and of real ones where they are at
// hand.
#include "tests/sdk/TreeText.h"
#include "tests/sdk/rhino/Files3dm.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include <gtest/gtest.h>

#include <cadex/internal/Reports.hxx>

#include "sdk/brep/DescribedBRep.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/rhino/RhinoFile.h"

namespace rhinotest {
namespace {

using cadex::test::TreeText;

/// What both fixtures say; the older version cannot hold extrusions, nor strings of objects and documents.
std::string ExpectedTree(bool isNew)
{
    const std::string layer = isNew ? "Schrauben" : "Schrauben (40ab)"; // as their writer called it
    const std::string key = isNew ? " [Schlüssel=Wért]" : "";
    std::string tree = "assembly Teile 部品 [Application=fixture;";
    tree += isNew ? "document key=Wert ✓;" : "";
    tree += "Hidden objects left out=2]\n";
    tree += "  instance " + layer + "\n    assembly " + layer + "\n";
    tree += "      instance sphere\n        part sphere #cccccc exact\n"
            "      instance cylinder\n        part cylinder #cccccc exact\n"
            "      instance place 1 (254 0 0)\n"
            "        part Block #ff9900 [Description=ein Block]: 3 triangles n\n"
            "      instance place 2 (508 0 0)\n"
            "        part Block #ff9900 [Description=ein Block]: 3 triangles n\n";
    tree += "  instance Netz\n    part Netz #cc3366 a0.75 wood.png" + key + ": 3 triangles n\n";
    tree += isNew ? "  instance extrusion\n    part extrusion #199632 exact\n" : "";
    tree += "  instance Curve\n    part Curve #199632: 2 points\n"
            "  instance Point\n    part Point #199632: 1 points\n";
    return tree;
}

TEST(RhinoReader, LayersBlocksLooksAndStringsOfAnotherWriter)
{
    for (const bool isNew : {false, true}) {
        const auto model = Read(Fixture(isNew ? "v8.3dm" : "v3.3dm"));
        ASSERT_TRUE(model);
        EXPECT_EQ(TreeText(*model).text, ExpectedTree(isNew));
    }
}

/// Kernel shapes of the fixture's bodies: volumes from formulas, inches to millimetres.
TEST(RhinoReader, BodiesHaveTheVolumesOfTheirFormulas)
{
    const double inch3 = 25.4 * 25.4 * 25.4;
    const struct
    {
        const char* name;
        double volume;
    } expected[] = {
        {"sphere", 32 * M_PI / 3 * inch3}, {"cylinder", 3 * M_PI * inch3}, {"extrusion", 5 * inch3}};
    cadex::rhino::RhinoFile file;
    ASSERT_TRUE(cadex::occt::RunGuarded(cadex::occt::EngineUse::Geometry,
                                        [&] { return file.Load(Fixture("v8.3dm")); }));
    for (const auto& one : expected) {
        SCOPED_TRACE(one.name);
        const auto object =
            std::find_if(file.objects.begin(), file.objects.end(), [&](const auto& candidate) {
                return candidate.attributes.name == cadex::Base_UTF16String(one.name);
            });
        ASSERT_NE(object, file.objects.end());
        EXPECT_EQ(object->body->lostFaces, 0U);
        EXPECT_EQ(object->body->description.solids.size(), 1U);
        const cadex::brep::DescribedBRep body(object->body->description);
        cadex::occt::RunGuarded(cadex::occt::EngineUse::Geometry, [&] {
            const auto mass = body.Mass();
            EXPECT_TRUE(mass);
            EXPECT_NEAR(mass ? mass->volume : 0, one.volume, 2e-4 * one.volume);
            return true;
        });
    }
}

double AreaOf(const cadex::internal::TriangleArrays& mesh)
{
    double area = 0;
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3) {
        const auto& a = mesh.points[mesh.indices[i]];
        const auto& b = mesh.points[mesh.indices[i + 1]];
        const auto& c = mesh.points[mesh.indices[i + 2]];
        const gp_XYZ u(b.X() - a.X(), b.Y() - a.Y(), b.Z() - a.Z());
        const gp_XYZ v(c.X() - a.X(), c.Y() - a.Y(), c.Z() - a.Z());
        area += u.CrossMagnitude(v) / 2;
    }
    return area;
}

double AreaOf(const cadex::ModelData_PolyRepresentation& representation)
{
    cadex::internal::TriangleArrays mesh;
    double area = 0;
    const cadex::ModelData_PolyShapeList& sets = representation.Get();
    for (std::size_t i = 0; i < sets.Size(); ++i) {
        if (sets[i].IsOfType<cadex::ModelData_IndexedTriangleSet>()) {
            const auto& set = *static_cast<cadex::internal::TriangleSetImpl*>(sets[i].Impl());
            mesh.points = set.points;
            mesh.indices = set.indices;
            area += AreaOf(mesh);
        }
    }
    return area;
}

/// Real files at hand: all are read, their edges end at their vertices, and where the file has meshes of its
/// own for a body, ours have the same area.
TEST(RhinoReader, BodiesOfRealFilesMatchTheirOwnMeshes)
{
    const std::filesystem::path samples = ZEMTAR_SOURCE_DIR "/../shared/samples/3dm";
    if (!std::filesystem::exists(samples)) {
        GTEST_SKIP() << "no samples at hand";
    }
    std::size_t compared = 0;
    const cadex::ModelAlgo_BRepMesherParameters fine(cadex::ModelAlgo_BRepMesherParameters::Fine, true);
    for (const auto& entry : std::filesystem::directory_iterator(samples)) {
        SCOPED_TRACE(entry.path().filename().string());
        cadex::rhino::RhinoFile file;
        ASSERT_TRUE(cadex::occt::RunGuarded(cadex::occt::EngineUse::Geometry,
                                            [&] { return file.Load(BytesOf(entry.path().string())); }));
        for (cadex::rhino::Object& object : file.objects) {
            if (!object.body || object.body->description.faces.empty()) {
                continue;
            }
            const cadex::brep::Description& description = object.body->description;
            for (const cadex::brep::Edge& edge : description.edges) {
                const auto& start = description.vertices.at(static_cast<std::size_t>(edge.start));
                if (!edge.curve.IsNull()) {
                    EXPECT_LE(edge.curve->Value(edge.first).Distance(start.point),
                              0.01 + edge.tolerance + start.tolerance);
                }
            }
            // without surfaces and loops there are the file's own triangles alone
            cadex::brep::Description bare = description;
            bool hasMeshes = true;
            for (cadex::brep::Face& face : bare.faces) {
                face.surface = cadex::brep::None;
                face.loops.clear();
                hasMeshes = hasMeshes && face.fileTriangles != nullptr;
            }
            if (hasMeshes) {
                double own = 0;
                cadex::occt::RunGuarded(cadex::occt::EngineUse::Geometry, [&] {
                    own = AreaOf(
                        cadex::brep::DescribedBRep(bare).Mesh(cadex::occt::MakeTolerances(fine), true, {}));
                    return true;
                });
                EXPECT_GT(own, 0);
                cadex::ModelData_PolyRepresentation ours;
                cadex::occt::RunGuarded(cadex::occt::EngineUse::Geometry, [&] {
                    ours = cadex::brep::DescribedBRep(description)
                               .Mesh(cadex::occt::MakeTolerances(fine), true, {});
                    return true;
                });
                EXPECT_NEAR(AreaOf(ours), own, 0.015 * own);
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 3U);
}

/// The same models in the layout of version 2, which knows no vertices, and of version 3.
TEST(RhinoReader, OldBodiesAreThoseOfTheirNewerTwins)
{
    const std::filesystem::path samples = ZEMTAR_SOURCE_DIR "/../shared/samples/3dm";
    if (!std::filesystem::exists(samples)) {
        GTEST_SKIP() << "no samples at hand";
    }
    const auto bodiesOf = [&](const std::string& name) {
        cadex::rhino::RhinoFile file;
        std::vector<std::array<double, 4>> facts; // faces, solids, area, vertices
        cadex::occt::RunGuarded(cadex::occt::EngineUse::Geometry, [&] {
            EXPECT_TRUE(file.Load(BytesOf((samples / name).string())));
            for (const cadex::rhino::Object& object : file.objects) {
                if (object.body && !object.body->description.faces.empty()) {
                    const cadex::brep::Description& body = object.body->description;
                    const auto mesh =
                        cadex::brep::DescribedBRep(body).Mesh(cadex::occt::MakeTolerances({}), true, {});
                    facts.push_back({static_cast<double>(body.faces.size()),
                                     static_cast<double>(body.solids.size()), AreaOf(mesh),
                                     static_cast<double>(body.vertices.size())});
                }
            }
            return true;
        });
        std::sort(facts.begin(), facts.end());
        return facts;
    };
    for (const char* name : {"T-Joint1.3dm", "Terrain.3dm"}) {
        const auto old = bodiesOf(std::string("v2_") + name);
        const auto twin = bodiesOf(std::string("v3_") + name);
        ASSERT_EQ(old.size(), twin.size()) << name;
        ASSERT_FALSE(old.empty()) << name;
        for (std::size_t i = 0; i < old.size(); ++i) {
            EXPECT_EQ(old[i][0], twin[i][0]);
            EXPECT_EQ(old[i][1], twin[i][1]);
            EXPECT_NEAR(old[i][2], twin[i][2], 1e-4 * twin[i][2]);
            EXPECT_EQ(old[i][3], twin[i][3]);
        }
    }
}

} // namespace
} // namespace rhinotest
