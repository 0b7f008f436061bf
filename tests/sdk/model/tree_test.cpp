// The model tree: handles, the walk, and models that are very deep or contain themselves.
#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <type_traits>

namespace {

using namespace cadex;

/// Writes the calls down; refuses to enter names in `closed`.
class Recorder : public ModelData_Model::VoidElementVisitor
{
public:
    std::string calls;
    std::set<std::string> closed;
    std::size_t depth = 0;
    std::size_t deepest = 0;

    void operator()(const ModelData_Part& part) override { calls += part.Name().ToUTF8() + ' '; }
    bool VisitEnter(const ModelData_Assembly& assembly) override { return Enter(assembly); }
    void VisitLeave(const ModelData_Assembly&) override { Leave(); }
    bool VisitEnter(const ModelData_Instance& instance) override { return Enter(instance); }
    void VisitLeave(const ModelData_Instance&) override { Leave(); }

private:
    bool Enter(const ModelData_BaseObject& object)
    {
        const std::string name = object.Name().ToUTF8();
        calls += name + "( ";
        deepest = std::max(deepest, ++depth);
        return closed.count(name) == 0;
    }
    void Leave()
    {
        calls += ") ";
        --depth;
    }
};

std::string CallsOf(const ModelData_Model& model, std::set<std::string> closed = {})
{
    Recorder recorder;
    recorder.closed = std::move(closed);
    model.Accept(recorder);
    EXPECT_EQ(recorder.depth, 0u);
    return recorder.calls;
}

TEST(Tree, IsVisitedInOrderAndEveryEntryIsLeft)
{
    const ModelData_Part part("p");
    ModelData_Assembly inner("inner");
    inner.AddInstance(ModelData_Instance(part, "i1"));
    inner.AddInstance(ModelData_Instance("nothing"));
    ModelData_Assembly outer("outer");
    outer.AddInstance(ModelData_Instance(inner, "a"));
    outer.AddInstance(ModelData_Instance(inner, "b"));
    outer.AddInstance(ModelData_Instance());
    ModelData_Model model;
    model.AddRoot(outer);
    model.AddRoot(part);
    model.AddRoot(ModelData_Part());
    EXPECT_EQ(model.NumberOfRoots(), 2u);
    const std::string in = "inner( i1( p ) nothing( ) ) ";
    EXPECT_EQ(CallsOf(model), "outer( a( " + in + ") b( " + in + ") ) p ");
    EXPECT_EQ(CallsOf(model, {"b", "i1"}), "outer( a( inner( i1( ) nothing( ) ) ) b( ) ) p ");
    EXPECT_EQ(CallsOf(model, {"outer"}), "outer( ) p ");
}

TEST(Tree, MayBeDeepWithoutADeepStack)
{
    constexpr std::size_t levels = 300'000;
    ModelData_Assembly top("leaf");
    for (std::size_t i = 1; i < levels; ++i) {
        ModelData_Assembly above("x");
        above.AddInstance(ModelData_Instance(top));
        top = above;
    }
    Recorder recorder;
    top.Accept(recorder);
    EXPECT_EQ(recorder.deepest, 2 * levels - 1);
    top.Nullify(); // releases the whole chain
}

TEST(Tree, EndsWhereItContainsItself)
{
    ModelData_Assembly assembly("a");
    ModelData_Instance loop(assembly, "i");
    assembly.AddInstance(loop);
    ModelData_Instance selfish("s");
    selfish.SetReference(selfish);
    ModelData_Model model;
    model.AddRoot(assembly);
    model.AddRoot(selfish);
    EXPECT_EQ(CallsOf(model), "a( i( a( ) ) ) s( s( ) ) ");
    loop.SetReference(ModelData_Part()); // lets go of the cycles
    selfish.SetReference(ModelData_Part());
}

TEST(Handles, AreThinSharedAndTypedByTheirObject)
{
    static_assert(sizeof(ModelData_Part) == sizeof(void*) && !std::is_polymorphic_v<ModelData_Part>);
    ModelData_Part part("p");
    const ModelData_SceneGraphElement element = part;
    const ModelData_Part twin("p");
    part.SetName("renamed");
    EXPECT_EQ(element.Name(), Base_UTF16String("renamed"));
    EXPECT_TRUE(element == part && element != twin);
    EXPECT_EQ(ModelData_BaseObjectHash()(element), ModelData_BaseObjectHash()(part));
    EXPECT_TRUE(element.IsOfType<ModelData_Part>() && !element.IsOfType<ModelData_Assembly>());
    EXPECT_EQ(ModelData_Part().TypeId(), 0);
    part.Nullify();
    EXPECT_TRUE(part.IsNull() && !element.IsNull());

    ModelData_Assembly made; // a mutator of a null handle makes its object
    made.AddInstance(ModelData_Instance(twin));
    EXPECT_EQ(made.NumberOfInstances(), 1u);
    ModelData_SceneGraphElement none;
    none.SetName("lost");
    none.SetAppearance(ModelData_Appearance(initialized()));
    none.AddProperties(ModelData_PropertyTable(initialized()));
    EXPECT_TRUE(none.IsNull() && none.Properties().IsNull() && none.Appearance().IsNull() &&
                none.Name().IsEmpty());
    delete new ModelData_Assembly("on the SDK's heap");
}

} // namespace
