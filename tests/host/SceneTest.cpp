// Documents, the tree, placement, units and traversal.

#include "host/CZemtar3DObject.h"
#include "host/CZemtarCamera.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarNodeVisitor.h"
#include "host/CZemtarSolidHint.h"
#include "host/CZemtarTransform.h"
#include "host/CZemtarTransformNode.h"
#include "host/CZemtarUnit.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace Zemtar {
namespace {

CZemtarMatrix Translation(double x, double y, double z)
{
    CZemtarMatrix matrix;
    matrix.M(0, 3) = x;
    matrix.M(1, 3) = y;
    matrix.M(2, 3) = z;
    return matrix;
}

class Scene : public testing::Test
{
protected:
    CZemtarSceneNode* Node(const char* name, CZemtarSceneNode* parent,
                           CZemtarSceneNode::enumNodeType type = CZemtarSceneNode::eNodeTypeGroup)
    {
        CZemtarSceneNode* node = CZemtarTransformNode::Create(document.get());
        node->SetName(name);
        node->SetNodeType(type);
        node->SetParent(parent);
        return node;
    }
    static std::string Names(const std::vector<CZemtarSceneNode*>& nodes)
    {
        std::string names;
        for (const CZemtarSceneNode* node : nodes) {
            names += node->Name().toStdString() + " ";
        }
        return names;
    }
    static std::string ChildNames(const CZemtarSceneNode* node, bool recursive)
    {
        std::vector<CZemtarSceneNode*> children = {nullptr}; // what it held is replaced
        node->Children(children, recursive);
        return Names(children);
    }

    std::unique_ptr<CZemtarDocument> document{CZemtarDocument::Create(true)};
};

TEST_F(Scene, DocumentHoldsWhatIsMadeInIt)
{
    EXPECT_TRUE(document->Nodes().empty() && document->Materials().empty());
    CZemtarSceneNode* group = Node("group", nullptr);
    CZemtar3DObject* mesh = CZemtar3DObject::Create(document.get());
    CZemtarMaterial* material = CZemtarMaterial::Create(document.get());
    EXPECT_EQ(document->Nodes(), (std::vector<CZemtarSceneNode*>{group, mesh}));
    EXPECT_EQ(document->Materials(), std::vector<CZemtarMaterial*>{material});
    for (CZemtarEntity* entity : std::vector<CZemtarEntity*>{group, mesh, material}) {
        EXPECT_EQ(document->FindEntity(entity->ID()), entity);
    }
    EXPECT_TRUE(group->ID() < mesh->ID() && mesh->ID() < material->ID());
    EXPECT_EQ(document->FindEntity(CZemtarID()), nullptr);
    EXPECT_FALSE(group->IsAssembly() || group->IsPart() || group->IsDeleted());

    EXPECT_EQ(CZemtarTransformNode::Create(nullptr), nullptr);
    EXPECT_EQ(CZemtarMaterial::Create(nullptr), nullptr);
    std::unique_ptr<CZemtarDocument> furnished(CZemtarDocument::Create(false));
    ASSERT_EQ(furnished->Materials().size(), 1U);
    EXPECT_EQ(furnished->Materials()[0]->Name().toStdString(), "Default");
}

TEST_F(Scene, ParentsAndChildren)
{
    CZemtarSceneNode* a = Node("a", nullptr);
    CZemtarSceneNode* b = Node("b", nullptr);
    CZemtarSceneNode* c = Node("c", a);
    Node("d", c);
    CZemtarSceneNode* e = Node("e", a);
    EXPECT_EQ(Names(document->RootNodes()), "a b ");
    EXPECT_EQ(ChildNames(a, false), "c e ");
    EXPECT_EQ(ChildNames(a, true), "c d e ");

    EXPECT_EQ(c->SetParent(b), c->ID()); // moved, subtree and all
    EXPECT_EQ(ChildNames(a, true) + "| " + ChildNames(b, true), "e | c d ");
    EXPECT_EQ(e->SetParent(nullptr), e->ID());
    EXPECT_EQ(Names(document->RootNodes()), "a b e ");

    std::unique_ptr<CZemtarDocument> other(CZemtarDocument::Create(true));
    CZemtarSceneNode* foreign = CZemtarTransformNode::Create(other.get());
    EXPECT_TRUE(b->SetParent(c->ChildNodes()[0]).IsNull()) << "a cycle";
    EXPECT_TRUE(b->SetParent(b).IsNull());
    EXPECT_TRUE(b->SetParent(foreign).IsNull());
    EXPECT_EQ(Names(document->RootNodes()), "a b e ");

    c->SetDeleted(true);
    EXPECT_EQ(ChildNames(b, true), "");
    EXPECT_EQ(b->ChildNodes().size(), 1U);
    b->SetDeleted(true);
    EXPECT_EQ(Names(document->RootNodes()), "a e ");
}

TEST_F(Scene, PlacementRunsFromTheRootDown)
{
    CZemtarMatrix turned; // a quarter turn about z
    turned.M(0, 0) = turned.M(1, 1) = 0.0;
    turned.M(0, 1) = -1.0;
    turned.M(1, 0) = 1.0;
    CZemtarSceneNode* outer = Node("outer", nullptr);
    outer->SetLocalMatrix(Translation(10, 0, 0) * turned);
    CZemtarSceneNode* inner = Node("inner", Node("plain", outer));
    CZemtarTransform* transform = CZemtarTransform::Create(document.get());
    EXPECT_TRUE(transform->Matrix().IsIdentity());
    transform->SetMatrix(Translation(1, 2, 3));
    inner->SetLocalTransform(transform);
    transform->SetMatrix(CZemtarMatrix()); // taken over by value

    EXPECT_EQ(inner->LocalToWorldMatrix(true).TransformPoint({0, 0, 0}), CZemtar3DVertex(8, 1, 3));
    EXPECT_EQ(inner->LocalToWorldMatrix(false).TransformPoint({0, 0, 0}), CZemtar3DVertex(10, 0, 0));
    inner->SetLocalTransform(nullptr);
    EXPECT_TRUE(inner->LocalMatrix().IsIdentity());
    EXPECT_EQ(inner->LocalToWorldMatrix(true), outer->LocalMatrix());
}

TEST_F(Scene, UnitIsAppliedOnceToEveryLength)
{
    CZemtarVerticiesTable* vertices = CZemtarVerticiesTable::Create(document.get(), true);
    vertices->Append(1000.0, 25.4, 0.3);
    CZemtarVerticiesNormalsTable* normals = CZemtarVerticiesNormalsTable::Create(document.get(), true);
    normals->Append(0, 0, 1);
    CZemtarGeometry* geometry = CZemtarGeometry::Create(document.get());
    geometry->SetVerticiesTable(vertices);
    geometry->SetVerticiesNormalsTable(normals);
    CZemtarSceneNode* part = Node("part", nullptr);
    for (int i = 0; i < 2; ++i) {
        CZemtar3DObject* mesh = CZemtar3DObject::Create(document.get());
        mesh->SetGeometry(geometry);
        mesh->SetParent(part);
    }
    CZemtarMatrix matrix = Translation(10, -20, 30);
    matrix.M(0, 0) = 2.0;
    part->SetLocalMatrix(matrix);
    CZemtarSolidHint hint;
    hint.Attributes().SetVolume(1e-6);
    hint.Attributes().CenterOfMass().SetXYZ(1, 2, 3);
    part->SolidHintSet(hint);
    CZemtarCamera* camera = CZemtarCamera::Create(document.get());
    camera->SetPosition({0, 0, 500});

    document->SetOriginalLengthUnit(eLengthUnitMillimetre);
    document->ApplyUnitToDocument();
    document->ApplyUnitToDocument();
    EXPECT_EQ(vertices->Item(0), CZemtar3DVertex(1.0, 0.0254, 0.0003)); // exactly what these decimals are
    EXPECT_EQ(normals->Item(0), CZemtar3DVertex(0, 0, 1));
    EXPECT_EQ(part->LocalMatrix().TransformPoint({1, 0, 0}), CZemtar3DVertex(2.01, -0.02, 0.03));
    EXPECT_EQ(part->SolidHint()->Attributes().CenterOfMass(), CZemtar3DVertex(0.001, 0.002, 0.003));
    EXPECT_EQ(part->SolidHint()->Attributes().Volume(), 1e-6);
    EXPECT_EQ(camera->Position(), CZemtar3DVertex(0, 0, 0.5));
    EXPECT_EQ(document->OriginalLengthUnit(), eLengthUnitMillimetre);
    EXPECT_TRUE(document->IsUnitApplied());
}

TEST(Unit, Metres)
{
    const std::pair<int, double> metres[] = {
        {2, 1e-6},    {3, 0.001},   {4, 0.01},    {5, 0.1},       {6, 1.0},  {9, 1000.0}, {13, 2.54e-5},
        {14, 0.0254}, {15, 0.3048}, {16, 0.9144}, {19, 1609.344}, {20, 1.0}, {-1, 1.0}};
    for (const auto& [unit, length] : metres) {
        EXPECT_EQ(CZemtarUnit::MetresPerUnit(static_cast<enumLengthUnit>(unit)), length) << unit;
    }
    EXPECT_EQ(CZemtarUnit().GetLengthUnit(), eLengthUnitMetre);
}

/// Writes down what it is told.
class Recorder : public CZemtarNodeVisitor
{
public:
    bool Apply(CZemtarSceneNode* node, CZemtarMatrix& matrix, CZemtarSceneNode* parent) override
    {
        log +=
            node->Name().toStdString() + "<" + (parent != nullptr ? parent->Name().toStdString() : "") + " ";
        lastX = matrix.M(0, 3);
        ++visits;
        return !node->IsDeleted();
    }
    std::string log;
    double lastX = 0.0;
    int visits = 0;
};

TEST_F(Scene, TraversalSeesThroughGroups)
{
    CZemtarSceneNode* assembly = Node("A", nullptr, CZemtarSceneNode::eNodeTypeAssembly);
    CZemtarSceneNode* instance = Node("i", assembly);
    CZemtarSceneNode* part = Node("P", instance, CZemtarSceneNode::eNodeTypePart);
    Node("m", Node("g", part));
    CZemtarSceneNode* gone = Node("x", assembly);
    Node("y", gone);
    gone->SetDeleted(true);
    Node("n", Node("h", nullptr));
    instance->SetLocalMatrix(Translation(5, 0, 0));
    part->SetLocalMatrix(Translation(2, 0, 0));

    Recorder recorder;
    CZemtarMatrix root = Translation(1, 0, 0);
    recorder.TraverseDocument(document.get(), root, nullptr);
    EXPECT_EQ(recorder.log, "A< i<A P<A g<P m<P x<A h< n< ");
    recorder.log.clear();
    recorder.Traverse(instance, root, assembly);
    EXPECT_EQ(recorder.log, "i<A P<A g<P m<P ");
    EXPECT_EQ(recorder.lastX, 8.0);
    recorder.TraverseDocument(nullptr, root, nullptr);
    recorder.Traverse(nullptr, root, nullptr);
    EXPECT_EQ(recorder.log, "i<A P<A g<P m<P ");
}

TEST_F(Scene, TreesMayBeOfAnyDepth)
{
    constexpr int Depth = 200000;
    CZemtarSceneNode* top = Node("top", nullptr);
    CZemtarSceneNode* bottom = top;
    for (int i = 1; i < Depth; ++i) {
        CZemtarSceneNode* node = CZemtarTransformNode::Create(document.get());
        node->SetParent(bottom);
        bottom = node;
    }
    CZemtarSceneNode* copy = top->CreateTreeCopy(document.get(), bottom, true); // below itself
    std::vector<CZemtarSceneNode*> below;
    copy->Children(below, true);
    EXPECT_EQ(below.size(), Depth - 1U);
    Recorder recorder;
    recorder.Traverse(top, CZemtarMatrix(), nullptr);
    EXPECT_EQ(recorder.visits, 2 * Depth);
    EXPECT_TRUE(below.back()->LocalToWorldMatrix(true).IsIdentity());
}

} // namespace
} // namespace Zemtar
