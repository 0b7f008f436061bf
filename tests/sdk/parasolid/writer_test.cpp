// Files that we wrote, read back: solids, cavities, sheets, faces, colours, names, places; and how their
// nodes hang together, which a reader may ask for where ours does not.
#include "tests/sdk/MeshModels.h"
#include "tests/sdk/ReadModels.h"
#include "tests/sdk/parasolid/XtShapes.h"
#include "tests/support/ModelBuilder.h"

#include <gtest/gtest.h>

#include <cadex/Para_Writer.hxx>

#include "sdk/brep/DescribedBRep.h"
#include "sdk/parasolid/XtNodes.h"

namespace xttest {
namespace {

using namespace cadex;
using test::MakeSet;
using Zemtar::Test::MakeAssembly;
using Zemtar::Test::MakeGrid;
using Zemtar::Test::MakePart;

std::string Written(const ModelData_Model& model)
{
    Para_Writer writer;
    std::ostringstream stream;
    return writer.Transfer(model) && writer.WriteFile(stream) ? stream.str() : std::string();
}

/// A box of 10 with a cavity of 4, whose walls are blue.
ModelData_Part Hollow()
{
    ModelData_IndexedTriangleSet cavity = MakeSet({{{-2, -2, -2}, {2, 2, 2}, true}});
    cavity.SetAppearance(ModelData_Color(0.F, 0.5F, 1.F));
    ModelData_Part part = MakePart("hollow", {MakeSet({{{-5, -5, -5}, {5, 5, 5}}}), cavity});
    part.SetAppearance(ModelData_Color(1.F, 0.F, 0.F));
    return part;
}

ModelData_Model Several()
{
    const ModelData_Part sheet = MakePart("sheet", {MakeGrid(4)});
    ModelData_Model model("model");
    const auto place = [](double x, double scale) {
        return test::Transformation({0, -1, 0, 1, 0, 0, 0, 0, 1}, {x, 2, 3}, scale);
    };
    model.AddRoot(MakeAssembly("root", {ModelData_Instance(Hollow(), place(100, 1), "erste Welle"),
                                        ModelData_Instance(Hollow(), place(-100, 2), "zweite W\xC3\xA9lle"),
                                        ModelData_Instance(sheet, "a\\b")}));
    return model;
}

TEST(ParasolidWriter, SolidsCavitiesAndSheetsComeBack)
{
    const std::string bytes = Written(Several());
    EXPECT_EQ(bytes, Written(Several()));
    const auto back = Read(bytes);
    ASSERT_TRUE(back) << test::TakeReason();
    const auto& root = static_cast<const ModelData_Assembly&>(internal::RootsOf(*back).front());
    const std::vector<ModelData_Instance>& instances = internal::ImplOf(root).instances;
    ASSERT_EQ(instances.size(), 3U);
    EXPECT_EQ(instances[0].Name().ToUTF8(), "erste Welle");
    EXPECT_EQ(instances[1].Name().ToUTF8(), "zweite W\xC3\xA9lle");
    EXPECT_EQ(instances[2].Name().ToUTF8(), "a\\b");
    const auto parts = mesh::DistinctParts(*back);
    for (const std::size_t i : {0, 1}) {
        const auto& body =
            static_cast<const brep::DescribedBRep*>(parts[i].BRepRepresentation().Impl())->Data();
        ASSERT_EQ(body.solids.size(), 1U);
        EXPECT_EQ(body.solids[0].voids.size(), 1U);
        EXPECT_EQ(body.faces.size(), 12U);
        EXPECT_EQ(body.edges.size(), 24U);
        EXPECT_EQ(test::Outline::Colour(parts[i].Appearance()), " rgba 255 0 0 255");
        EXPECT_EQ(std::count_if(body.faces.begin(), body.faces.end(),
                                [](const brep::Face& face) {
                                    return test::Outline::Colour(face.appearance) == " rgba 0 128 255 255";
                                }),
                  6);
        ModelAlgo_ValidationPropertyData data;
        ASSERT_TRUE(ModelAlgo_ValidationProperty::ComputeValidationProperties(parts[i], data));
        EXPECT_NEAR(data.Volume(), (1000 - 64) * (i == 0 ? 1 : 8), 1e-5);
        EXPECT_NEAR(data.Centroid().X(), i == 0 ? 100 : -200, 1e-6);
    }
    const auto& flat = static_cast<const brep::DescribedBRep*>(parts[2].BRepRepresentation().Impl())->Data();
    EXPECT_EQ(flat.solids.size(), 0U);
    EXPECT_EQ(flat.sheets.size(), 1U);
}

TEST(ParasolidWriter, OneBodyIsTheRootOfItsFile)
{
    const std::string bytes = Written(test::ModelOf(Hollow()));
    const Nodes nodes(bytes);
    EXPECT_EQ(nodes[0].Type(), type::Body);
    EXPECT_EQ(nodes.At(1).Type(), type::Body);
    const auto back = Read(bytes);
    ASSERT_TRUE(back);
    EXPECT_NEAR(VolumeOf(*back), (1000 - 64) * 1e-9, 1e-15);
}

/// Fins, their rings, partners and vertices; chains that lead through all nodes of a kind; unique numbers.
TEST(ParasolidWriter, NodesHangTogether)
{
    const Nodes nodes(Written(Several()));
    std::map<int, int> counts;
    std::map<int, std::set<int>> ids; // by the node of the body
    int body = 0;
    for (std::size_t i = 0; i < nodes.Size(); ++i) {
        const Node node = nodes[i];
        ++counts[node.Type()];
        EXPECT_EQ(nodes.At(node.Index()).Type(), node.Type());
        body = node.Type() == type::Body ? node.Index() : body;
        if (const int id = node.Integer(Field::NodeId); id > 0 && node.Type() != type::Instance) {
            EXPECT_TRUE(ids[body].insert(id).second) << node.Index();
        }
        if (node.Type() != type::Fin) {
            continue;
        }
        const Node other = nodes.At(node.Pointer(Field::Other));
        const Node edge = nodes.At(node.Pointer(Field::Edge));
        EXPECT_EQ(other.Pointer(Field::Other), node.Index());
        EXPECT_EQ(other.Pointer(Field::Edge), edge.Index());
        EXPECT_NE(other.Character(Field::Sense), node.Character(Field::Sense));
        EXPECT_NE(other.Pointer(Field::Vertex), node.Pointer(Field::Vertex));
        if (const Node next = nodes.At(node.Pointer(Field::Forward))) {
            EXPECT_EQ(next.Pointer(Field::Backward), node.Index());
            EXPECT_EQ(nodes.At(next.Pointer(Field::Other)).Pointer(Field::Vertex),
                      node.Pointer(Field::Vertex));
        }
    }
    const auto chained = [&](Field head, int kind) {
        int sum = 0;
        for (std::size_t i = 0; i < nodes.Size(); ++i) {
            for (Node node = nodes[i].Type() == type::Body ? nodes.At(nodes[i].Pointer(head)) : Node(); node;
                 node = nodes.At(node.Pointer(Field::Next))) {
                EXPECT_EQ(node.Type(), kind);
                ++sum;
            }
        }
        return sum;
    };
    EXPECT_EQ(chained(Field::Edge, type::Edge), counts[type::Edge]);
    EXPECT_EQ(chained(Field::Vertex, type::Vertex), counts[type::Vertex]);
    EXPECT_EQ(chained(Field::Region, type::Region), counts[type::Region]);
    EXPECT_EQ(counts[type::Body], 3);
    EXPECT_EQ(counts[type::Region], 3 + 3 + 1);
    EXPECT_EQ(counts[type::AttributeDefinition], 4);
}

} // namespace
} // namespace xttest
