// Reading: bodies against the volumes of their formulas in the layouts of several versions; looks, names and
// places; splines; real files against the same bodies in STEP where they are at hand.
#include "tests/sdk/ReadModels.h"
#include "tests/sdk/acis/SabFiles.h"
#include "tests/sdk/acis/SatFiles.h"

#include <filesystem>

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBuilderAPI_GTransform.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepGProp.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <GProp_GProps.hxx>
#include <gp_GTrsf.hxx>

#include <gtest/gtest.h>

#include <cadex/internal/Reports.hxx>

#include "tests/support/ShapeToSat.h"

namespace acistest {
namespace {

using cadex::internal::Reports;

std::string FrustumFile(int version, const Frustum& frustum, double millimetres = 1)
{
    SatText sat(version, millimetres);
    AddFrustum(sat, version, frustum);
    return sat.Str();
}

TEST(AcisReader, CylindersAndConesOfEveryLayoutHaveTheirVolumes)
{
    const Frustum shapes[] = {{3, 3, 5, 1}, {3, 2, 5, 1}, {2, 3, 5, 1}, {3, 3, 5, 0.5}, {3, 2, 5, 0.5}};
    for (const Frustum& shape : shapes) {
        for (const int version : {400, 500, 700, 2000, 3100}) {
            SCOPED_TRACE(std::to_string(version) + " " + std::to_string(shape.top) + " " +
                         std::to_string(shape.ratio));
            Reports::Clear();
            const auto model = Read(FrustumFile(version, shape, 10));
            ASSERT_TRUE(model);
            EXPECT_TRUE(Reports::Take().empty());
            const auto instances = InstancesOf(*model);
            ASSERT_EQ(instances.size(), 1U);
            const double volume = 1000 * shape.Volume();
            EXPECT_NEAR(Properties(PartOf(instances[0])).Volume(), volume, 1e-6 * volume);
        }
    }
}

TEST(AcisReader, NamesColoursPropertiesAndTransforms)
{
    for (const int version : {400, 700, 2400}) {
        SCOPED_TRACE(version);
        SatText sat(version, 1000);
        const int transform = sat.Reserve();
        const int body = AddFrustum(sat, version, {}, transform);
        const std::string switches = version >= 2000 ? "2 1 1 1 1 0 1 1 1 " : "";
        sat.AddTransform(transform, "0 1 0 -1 0 0 0 0 1 7 8 9 2"); // x to y, y to -x, twice as large
        sat.AddAttribute("rgb_color-st-attrib", body, switches + "0.25 0.5 1");
        sat.AddAttribute("rgb_color-st-attrib", body + 3, switches + "1 0 0"); // the first face
        sat.AddAttribute("string_attrib-name_attrib-gen-attrib", body,
                         switches + sat.Text("Name") + " " + sat.Text("W\xE9lle"));
        sat.AddAttribute("string_attrib-name_attrib-gen-attrib", body,
                         switches + sat.Text("Norm") + " " + sat.Text("ISO4014"));
        const auto model = Read(sat.Str());
        ASSERT_TRUE(model);
        cadex::test::MeshBodies(*model);
        const std::string outline = cadex::test::Outline::Of(*model);
        for (const bool isWide : {false, true}) {
            const auto binary = version < 700 ? model : Read(Binary(sat.Str(), isWide));
            ASSERT_TRUE(binary) << isWide;
            cadex::test::MeshBodies(*binary);
            EXPECT_EQ(cadex::test::Outline::Of(*binary), outline) << isWide;
        }
        EXPECT_NE(outline.find("instance 'Wélle' at 7000 8000 9000 x axis 0 2 0"), std::string::npos)
            << outline;
        EXPECT_NE(outline.find("part 'Wélle' rgba 64 128 255 255 [Norm = ISO4014]"), std::string::npos)
            << outline;
        EXPECT_NE(outline.find("triangles rgba 255 0 0 255"), std::string::npos) << outline;
    }
}

/// Bodies in other places and under other names share their part; those of another shape, another colour of a
/// face or of the body, or another property do not.
TEST(AcisReader, EqualBodiesAreOnePart)
{
    for (const int version : {400, 700, 2400}) {
        SCOPED_TRACE(version);
        SatText sat(version);
        std::vector<int> bodies;
        for (int i = 0; i < 7; ++i) {
            const int transform = sat.Reserve();
            bodies.push_back(AddFrustum(sat, version, {3, i == 3 ? 2.5 : 2, 5, 1}, transform));
            sat.AddTransform(transform, "1 0 0 0 1 0 0 0 1 " + std::to_string(i) + " 0 0 1");
        }
        sat.AddAttribute("string_attrib-name_attrib-gen-attrib", bodies[2],
                         sat.Text("name") + " " + sat.Text("x"));
        sat.AddAttribute("rgb_color-st-attrib", bodies[4] + 3, "1 0 0"); // the first face
        sat.AddAttribute("rgb_color-st-attrib", bodies[5], "0 1 0");
        sat.AddAttribute("string_attrib-name_attrib-gen-attrib", bodies[6],
                         sat.Text("Norm") + " " + sat.Text("x"));
        const auto model = Read(sat.Str());
        ASSERT_TRUE(model);
        const auto instances = InstancesOf(*model);
        ASSERT_EQ(instances.size(), 7U);
        const auto isFirst = [&](std::size_t i) {
            return PartOf(instances[i]).Impl() == PartOf(instances[0]).Impl();
        };
        EXPECT_TRUE(isFirst(1) && isFirst(2));
        EXPECT_FALSE(isFirst(3) || isFirst(4) || isFirst(5) || isFirst(6));
        EXPECT_EQ(instances[2].Transformation().Data(0, 3), 2);
        EXPECT_EQ(instances[2].Name().ToUTF8(), "x");
    }
}

/// A sphere with a spherical cavity of negative radius, a torus; faces without loops.
TEST(AcisReader, CavitiesAndClosedSurfaces)
{
    SatText sat(700);
    const auto addBody = [&](const std::vector<std::string>& surfaces) {
        const int body = sat.Reserve();
        const int lump = sat.Reserve();
        int next = -1;
        for (const std::string& surface : surfaces) {
            const int shell = sat.Reserve();
            const int face = sat.Reserve();
            const int geometry =
                sat.Add(surface.substr(0, surface.find(' ')), surface.substr(surface.find(' ')));
            sat.Set(shell, "shell", Ref(next) + "$-1 " + Ref(face) + "$-1 " + Ref(lump));
            sat.Set(face, "face", "$-1 $-1 " + Ref(shell) + "$-1 " + Ref(geometry) + "forward single");
            next = shell;
        }
        sat.Set(body, "body", Ref(lump) + "$-1 $-1");
        sat.Set(lump, "lump", "$-1 " + Ref(next) + Ref(body));
    };
    addBody({"sphere-surface 1 2 3 -5 1 0 0 0 0 1 forward_v I I I I",
             "sphere-surface 1 2 3 10 1 0 0 0 0 1 forward_v I I I I"});
    addBody({"torus-surface 0 0 0 0 0 1 10 2 1 0 0 forward_v I I I I"});
    const auto model = Read(sat.Str());
    ASSERT_TRUE(model);
    const auto instances = InstancesOf(*model);
    ASSERT_EQ(instances.size(), 2U);
    const double hollow = 4 * M_PI / 3 * 875;
    const double torus = 2 * M_PI * M_PI * 40;
    EXPECT_NEAR(Properties(PartOf(instances[0])).Volume(), hollow, 1e-6 * hollow);
    EXPECT_NEAR(Properties(PartOf(instances[1])).Volume(), torus, 1e-6 * torus);
}

/// Two faces on one bilinear patch, the second through a reference; an edge is a reversed spline.
TEST(AcisReader, SplinesAndReferencesToThem)
{
    SatText sat(700);
    const int body = sat.Reserve();
    const int lump = sat.Reserve();
    const int shell = sat.Reserve();
    sat.Set(body, "body", Ref(lump) + "$-1 $-1");
    sat.Set(lump, "lump", "$-1 " + Ref(shell) + Ref(body));
    const double corners[4][2] = {{0, 0}, {4, 0}, {4, 3}, {0, 3}};
    const auto at = [&](int i) {
        return std::to_string(corners[i % 4][0]) + " " + std::to_string(corners[i % 4][1]) + " 0 ";
    };
    int first = -1;
    for (const bool isReference : {false, true}) {
        const int face = sat.Reserve();
        const int loop = sat.Reserve();
        const std::string spline = "{ blendsur full nubs 1 1 open open none none 2 2 0 1 4 1 0 1 3 1 " +
                                   at(0) + at(1) + at(3) + at(2) + "0 spline forward { exactsur null } }";
        const int surface =
            sat.Add("spline-surface", "forward " + (isReference ? "{ ref 0 }" : spline) + " I I I I");
        int vertices[4];
        int coedges[4];
        for (int i = 0; i < 4; ++i) {
            vertices[i] = sat.Add("vertex", "$-1 " + Ref(sat.Add("point", at(i))));
            coedges[i] = sat.Reserve();
        }
        for (int i = 0; i < 4; ++i) {
            const std::string curve = i == 2 ? "reversed { exactcur full nubs 1 open 2 0 1 4 1 " + at(3) +
                                                   at(2) + "0 null_surface } I I"
                                             : "";
            const int geometry = i == 2 ? sat.Add("intcurve-curve", curve)
                                        : sat.Add("straight-curve", at(i) +
                                                                        (i == 0   ? "1 0 0"
                                                                         : i == 1 ? "0 1 0"
                                                                                  : "0 -1 0") +
                                                                        " I I");
            const std::string range[2] = {i == 2 ? "-4 " : "0 ", i == 2 ? "0 " : i == 0 ? "4 " : "3 "};
            const int edge =
                sat.Add("edge", Ref(vertices[i]) + range[0] + Ref(vertices[(i + 1) % 4]) + range[1] +
                                    Ref(coedges[i]) + Ref(geometry) + "forward @7 unknown");
            sat.Set(coedges[i], "coedge",
                    Ref(coedges[(i + 1) % 4]) + Ref(coedges[(i + 3) % 4]) + "$-1 " + Ref(edge) + "forward " +
                        Ref(loop) + "$-1");
        }
        sat.Set(loop, "loop", "$-1 " + Ref(coedges[0]) + Ref(face));
        sat.Set(face, "face",
                Ref(first) + Ref(loop) + Ref(shell) + "$-1 " + Ref(surface) + "forward double out");
        first = face;
    }
    sat.Set(shell, "shell", "$-1 $-1 " + Ref(first) + "$-1 " + Ref(lump));
    for (const std::string& bytes : {sat.Str(), Binary(sat.Str())}) {
        Reports::Clear();
        const auto model = Read(bytes);
        ASSERT_TRUE(model);
        EXPECT_TRUE(Reports::Take().empty());
        EXPECT_NEAR(AreaOf(*model), 24, 1e-9);
    }
}

/// Bodies of the kernel's, written with all their surfaces and curves: seams, poles, apexes, rounds.
TEST(AcisReader, KernelBodiesKeepTheirVolumes)
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(10, 20, 30).Shape();
    BRepFilletAPI_MakeFillet rounded(box);
    for (TopExp_Explorer edge(box, TopAbs_EDGE); edge.More(); edge.Next()) {
        rounded.Add(2, TopoDS::Edge(edge.Current()));
    }
    const gp_Ax2 tilted(gp_Pnt(5, 10, -5), gp_Dir(0.1, 0.2, 1));
    gp_GTrsf stretch;
    stretch.SetVectorialPart(gp_Mat(1, 0, 0, 0, 2, 0, 0, 0, 3));
    const std::pair<const char*, TopoDS_Shape> shapes[] = {
        {"rounded box", rounded.Shape()},
        {"drilled box", BRepAlgoAPI_Cut(box, BRepPrimAPI_MakeCylinder(tilted, 3, 50).Shape()).Shape()},
        {"cone cut", BRepAlgoAPI_Cut(box, BRepPrimAPI_MakeCone(tilted, 4, 1, 50).Shape()).Shape()},
        {"pointed cone", BRepPrimAPI_MakeCone(tilted, 4, 0, 10).Shape()},
        {"ball", BRepPrimAPI_MakeSphere(tilted, 4).Shape()},
        {"ring with a slit", BRepPrimAPI_MakeTorus(tilted, 10, 3, 5.).Shape()},
        {"spline", BRepBuilderAPI_GTransform(rounded.Shape(), stretch).Shape()},
    };
    for (const auto& [name, shape] : shapes) {
        SCOPED_TRACE(name);
        GProp_GProps exact;
        BRepGProp::VolumeProperties(shape, exact, 1e-9);
        const std::string sat = cadex::test::ShapeToSat::Write(shape);
        for (const std::string& bytes : {sat, Binary(sat)}) {
            Reports::Clear();
            const auto model = Read(bytes);
            ASSERT_TRUE(model);
            const auto instances = InstancesOf(*model);
            ASSERT_EQ(instances.size(), 1U);
            EXPECT_NEAR(Properties(PartOf(instances[0])).Volume(), exact.Mass(), 1e-5 * exact.Mass());
            EXPECT_EQ(cadex::test::TakeReason(), "");
        }
    }
}

/// Files of other writers at hand: areas as those of the same bodies in STEP, of which one names its
/// metres in a way that is read as millimetres.
TEST(AcisReader, RealFilesMatchTheirTwins)
{
    const std::filesystem::path samples = ZEMTAR_SOURCE_DIR "/../shared/samples/sat";
    if (!std::filesystem::exists(samples)) {
        GTEST_SKIP() << "no samples at hand";
    }
    const struct
    {
        const char* sat;
        const char* step;
    } twins[] = {{"bsplinesurfacewithknots.sat", "bsplinesurfacewithknots.stp"},
                 {"plate_2_curved_complex.sat", "plate_2_curved_complex.stp"},
                 {"flat_plate_sesam_10x10.sat", "flat_plate_abaqus_10x10_m.stp"}};
    for (const auto& [sat, step] : twins) {
        SCOPED_TRACE(sat);
        const auto model = Read(cadex::test::BytesOf(samples / sat));
        cadex::ModelData_Model twin;
        ASSERT_TRUE(model && cadex::test::Import(samples / "step_twins" / step, twin));
        const double ours = AreaOf(*model);
        const double theirs = AreaOf(twin);
        EXPECT_NEAR(ours, theirs, 1e-6 * theirs);
    }
    EXPECT_TRUE(Read(cadex::test::BytesOf(samples / "degenerate_first_loop.sat")))
        << "a wrong count in the header";
    const auto wire = Read(cadex::test::BytesOf(samples / "single_beam_sesam.sat"));
    ASSERT_TRUE(wire);
    cadex::test::MeshBodies(*wire);
    EXPECT_NE(cadex::test::Outline::Of(*wire).find("2 points"), std::string::npos);
}

} // namespace
} // namespace acistest
