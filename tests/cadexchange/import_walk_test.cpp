// The walk over models built in memory: tree, instances, running material, meshes and polylines.

#include "cadexchange/CZemtarCADExchangeReaderHandler.h"
#include "host/CZemtar3DObject.h"
#include "host/CZemtarMaterial.h"
#include "tests/support/ModelBuilder.h"
#include "tests/support/RecordingEngines.h"

#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyPointSet.hxx>
#include <cadex/ModelData_Transformation.hxx>

#include <gmock/gmock.h>

#include <climits>
#include <sstream>

using namespace Zemtar;
using namespace Zemtar::Test;
using cadex::ModelData_Instance;
using testing::ElementsAre;

namespace {

/// The subtree as "kind:name[children]": A assembly, P part, G any other node.
std::string TreeText(const CZemtarSceneNode& node)
{
    std::string text = (node.IsAssembly() ? "A:" : node.IsPart() ? "P:" : "G:") + node.Name().toStdString();
    for (const CZemtarSceneNode* child : node.ChildNodes()) {
        text += (child == node.ChildNodes().front() ? '[' : ' ') + TreeText(*child);
    }
    return node.ChildNodes().empty() ? text : text + ']';
}

const CZemtar3DObject& Mesh(const CZemtarSceneNode* node)
{
    return dynamic_cast<const CZemtar3DObject&>(*node);
}

cadex::ModelData_IndexedTriangleSet Red()
{
    auto grid = MakeGrid(1);
    grid.SetAppearance(cadex::ModelData_Appearance(cadex::ModelData_Color(1.0f, 0.0f, 0.0f)));
    return grid;
}

} // namespace

TEST(ImportWalk, RepeatedReferencesBecomeCopies)
{
    const auto bolt = MakePart("bolt", {MakeGrid(3)});
    const auto pair = MakeAssembly("pair", {ModelData_Instance(bolt, "p1"), ModelData_Instance(bolt, "p2")});
    cadex::ModelData_Transformation moved;
    moved.SetTranslationPart(10.0, 20.0, 30.0);
    moved.SetScaleFactor(2.0);
    const auto top = MakeAssembly(
        "top", {ModelData_Instance(pair, moved, "i1"), ModelData_Instance(pair, "\xE5\xAF\xB9"),
                ModelData_Instance(bolt, moved, "i3"), ModelData_Instance(cadex::initialized())});
    const auto document = ImportModel({top, MakePart("loose", {}), bolt});
    std::vector<std::string> trees;
    for (const CZemtarSceneNode* root : document->RootNodes()) {
        trees.push_back(TreeText(*root));
    }
    EXPECT_THAT(trees, ElementsAre("A:top[G:i1[A:pair[G:p1[P:bolt[G:]] P:p2[G:]]] "
                                   "A:\xE5\xAF\xB9[G:p1[P:bolt[G:]] P:p2[G:]] P:i3[G:] G:]",
                                   "P:loose", "P:bolt[G:]"));
    const auto& children = document->RootNodes()[0]->ChildNodes();
    CZemtarMatrix expected;
    for (int row = 0; row < 3; ++row) {
        expected.M(row, row) = 2.0;
        expected.M(row, 3) = 20.0 * (row + 1) * 0.001; // metres
    }
    EXPECT_EQ(children[0]->LocalMatrix(), expected);
    EXPECT_TRUE(children[1]->LocalMatrix().IsIdentity());
    EXPECT_EQ(children[2]->LocalMatrix(), expected);
    const CZemtarSceneNode* first = children[0]->ChildNodes()[0]->ChildNodes()[0]->ChildNodes()[0];
    EXPECT_EQ(Mesh(first->ChildNodes()[0]).Geometry(), Mesh(children[2]->ChildNodes()[0]).Geometry())
        << "shared";
}

TEST(ImportWalk, TheCurrentMaterialRunsOn)
{
    auto tinted = MakePart("tinted", {MakeGrid(1)});
    tinted.SetAppearance(cadex::ModelData_Appearance(cadex::ModelData_Color(0.0f, 1.0f, 0.0f)));
    const auto document = ImportModel(
        {MakePart("mixed", {MakeGrid(1), Red(), MakeGrid(2)}), MakePart("sibling", {MakeGrid(1)}), tinted});
    std::string names;
    for (const CZemtarSceneNode* root : document->RootNodes()) {
        for (const CZemtarSceneNode* node : root->ChildNodes()) {
            names += Mesh(node).Material() ? Mesh(node).Material()->Name().toStdString() + " " : "none ";
        }
    }
    EXPECT_EQ(names, "none RGBA:255,0,0,255 RGBA:255,0,0,255 RGBA:255,0,0,255 RGBA:0,255,0,255 ");
}

TEST(ImportWalk, MeshesKeepEveryCornerAndShareTheRest)
{
    for (const auto& [cells, kind] :
         {std::pair(0, Normals::Smooth), std::pair(1, Normals::None), std::pair(5, Normals::Smooth),
          std::pair(4, Normals::Flat), std::pair(150, Normals::Smooth), std::pair(151, Normals::Flat)}) {
        const bool uvs = cells % 5 == 0;
        const auto set = MakeGrid(cells, kind, uvs);
        const auto document = ImportModel({MakePart("part", {set})});
        const CZemtar3DObject& mesh = Mesh(document->RootNodes()[0]->ChildNodes().at(0));
        const CZemtarGeometry& geometry = *mesh.Geometry();
        const int shared = cells > 0 ? (cells + 1) * (cells + 1) : 0;
        const auto count = static_cast<unsigned int>(kind == Normals::Flat ? 6 * cells * cells : shared);
        EXPECT_EQ(geometry.VerticiesTable()->Count(), count);
        EXPECT_EQ(geometry.VerticiesNormalsTable()->Count(), kind == Normals::None ? 0 : count);
        EXPECT_EQ(mesh.TextureCoordinatesTable()->Count(), uvs ? count : 0);
        ASSERT_EQ(geometry.PolygonsTable()->IndexCount(), 6u * cells * cells);
        for (int i = 0; i < 3 * set.NumberOfFaces(); ++i) {
            const unsigned int vertex = geometry.PolygonsTable()->Data()[i];
            const auto& p = set.Coordinate(i / 3, i % 3);
            const CZemtar3DVertex point(p.X() / 1000.0, p.Y() / 1000.0, p.Z() / 1000.0);
            EXPECT_EQ(geometry.VerticiesTable()->Item(vertex), point);
            if (set.HasNormals()) {
                const auto& n = set.VertexNormal(i / 3, i % 3);
                const CZemtar3DVertex normal(n.X(), n.Y(), n.Z());
                EXPECT_EQ(geometry.VerticiesNormalsTable()->Item(vertex), normal);
            }
            if (uvs) {
                const auto& uv = set.UVCoordinate(i / 3, i % 3);
                const CZemtarTextureCoordinate coordinate(uv.X(), uv.Y());
                EXPECT_EQ(mesh.TextureCoordinatesTable()->Item(vertex), coordinate);
            }
        }
    }
}

TEST(ImportWalk, PolylinesOnlyWhenAskedFor)
{
    const cadex::ModelData_Point points[] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}};
    cadex::ModelData_PolyLineSet set{cadex::initialized()};
    for (const std::size_t count : {3u, 2u, 1u}) {
        set.AddPolyLine(points, count);
    }
    const auto part = MakePart("wires", {cadex::ModelData_PolyPointSet(cadex::initialized()), set, Red()});
    CZemtarCADExchangeReader().setImportPolyLines(true);
    for (int import = 0; import < 2; ++import) { // the switch lasts
        const auto document = ImportModel({part});
        ASSERT_EQ(document->RootNodes()[0]->ChildNodes().size(), 2u);
        const CZemtar3DObject& lines = Mesh(document->RootNodes()[0]->ChildNodes()[0]);
        EXPECT_EQ(lines.TextureCoordinatesTable(), nullptr);
        EXPECT_EQ(lines.Geometry()->VerticiesTable()->Count(), 6u) << "not merged";
        const CZemtarPolyLinesTable& segments = *lines.Geometry()->PolyLinesTable();
        EXPECT_THAT(std::vector(segments.Data(), segments.Data() + 2 * segments.Count()),
                    ElementsAre(0, 1, 1, 2, 0, 1));
    }
    CZemtarCADExchangeReader().setImportPolyLines(false);
    EXPECT_EQ(ImportModel({part})->RootNodes()[0]->ChildNodes().size(), 1u);
}

TEST(ImportWalk, TessellationBands)
{
    std::ostringstream tolerances;
    for (const int level : {0, 24, 25, 26, 40, 50, 51, 75, 76, 100, 101, INT_MAX, -1, -2, INT_MIN}) {
        double angle = 0.0;
        double chord = 0.0;
        CZemtarCADExchangeReaderHandler::getInstance()->ProcessTessellation(level, angle, chord);
        tolerances << angle << '/' << chord << ' ';
    }
    EXPECT_EQ(tolerances.str(),
              "5/0.0025 14/0.00394 15/0.004 15/0.00424 24/0.0076 30/0.01 30/0.0116 40/0.05 40/0.0512 60/0.08 "
              "30/0.01 30/0.01 0/-0.00224 -1/-0.00248 -1.28849e+09/-515396 ");
}
