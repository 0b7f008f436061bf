// What the STEP writer writes, the engine's own reader gives back: tree, names, placements, colours,
// properties, shapes.
#include <gtest/gtest.h>

#include <cmath>

#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/STEP_Reader.hxx>

#include "../PropertyText.h"
#include "tests/sdk/step/StepModels.h"

namespace {

using namespace cadex;

/// A model as text, one line an element.
class Description : public ModelData_Model::ElementVisitor
{
public:
    explicit Description(const ModelData_Model& model) { model.Accept(*this); }

    std::string text;

    void operator()(const ModelData_Part& part) override
    {
        Begin("part", part);
        const ModelData_PolyShapeList& shapes = part.PolyRepresentation(ModelData_RM_Poly).Get();
        for (std::size_t i = 0; i < shapes.Size(); ++i) {
            text += '\n' + std::string(myDepth + 1, ' ') + std::to_string(shapes[i].TypeId());
            if (shapes[i].IsOfType<ModelData_IndexedTriangleSet>()) {
                const auto& set = static_cast<const ModelData_IndexedTriangleSet&>(shapes[i]);
                text += ' ' + std::to_string(set.NumberOfFaces()) + " triangles";
            }
            const ModelData_Appearance own = shapes[i].Appearance();
            AddColor(own.IsNull() ? part.Appearance() : own);
        }
        text += '\n';
    }
    bool VisitEnter(const ModelData_Assembly& assembly) override
    {
        Begin("assembly", assembly);
        text += '\n';
        return ++myDepth != 0;
    }
    void VisitLeave(const ModelData_Assembly&) override { --myDepth; }
    bool VisitEnter(const ModelData_Instance& instance) override
    {
        Begin("instance", instance);
        for (int i = 0; i < 12 && !instance.Transformation().IsIdentity(); ++i) {
            text += ' ' + std::to_string(std::lround(1000 * instance.Transformation().Data(i / 4, i % 4)));
        }
        text += '\n';
        return ++myDepth != 0;
    }
    void VisitLeave(const ModelData_Instance&) override { --myDepth; }

private:
    void Begin(const char* kind, const ModelData_SceneGraphElement& element)
    {
        PropertyText properties;
        element.Properties().Accept(properties);
        text += std::string(myDepth, ' ') + kind + " '" + element.Name().ToUTF8() + "'";
        std::istringstream lines(properties.text);
        for (std::string line; std::getline(lines, line);) {
            const std::string name = line.substr(0, line.find('='));
            if (name != "Schema" && name != "Preprocessor" && name != "Time Stamp") { // the file's own
                text += " {" + line + '}';
            }
        }
    }
    void AddColor(const ModelData_Appearance& appearance)
    {
        ModelData_Color color;
        if (appearance.ToColor(color)) {
            for (std::size_t i = 0; i < 4; ++i) {
                text += ' ' + std::to_string(std::lround(1e6 * static_cast<double>(color[i])));
            }
        }
    }

    std::size_t myDepth = 0;
};

ModelData_PropertyTable Table(const char* name, const char* value)
{
    ModelData_PropertyTable table;
    table.Add(name, Base_UTF16String(value));
    table.Add("Anzahl", 3);
    table.Add("Faktor", 0.25);
    table.Add(name, Base_UTF16String("again"));
    return table;
}

TEST(StepRoundTrip, KeepsEverythingThatStepCanHold)
{
    ModelData_Part part = CubePart("W\u00fcrfel \u65e5\u672c \U0001F600 'q' \\");
    part.SetAppearance(ModelData_Appearance(ModelData_Color(0.2f, 0.4f, 0.6f, 0.25f)));
    part.AddProperties(Table("Werkstoff", "St\u00e4hl \u92fc"));
    ModelData_Part colourless = CubePart("", 3);
    ModelData_PolyLineSet line;
    const ModelData_Point points[] = {{0, 0, 0}, {1, 2, 3}};
    line.AddPolyLine(points, 2);
    line.SetAppearance(ModelData_Appearance(ModelData_Color(0.f, 1.f, 0.f)));
    ModelData_Transformation placement;
    placement.SetRotationPart(0, -1, 0, 1, 0, 0, 0, 0, 1);
    placement.SetTranslationPart(100, 20, 3);
    ModelData_Assembly inner("inner");
    ModelData_Instance first(part, placement, "first");
    first.AddProperties(Table("Lage", "links"));
    inner.AddInstance(first);
    inner.AddInstance(ModelData_Instance(part, "second"));
    inner.AddInstance(ModelData_Instance(colourless, "c"));
    inner.AddProperties(Table("Baugruppe", "ja"));
    ModelData_Assembly root("root");
    root.AddInstance(ModelData_Instance(inner, placement, "one"));
    root.AddInstance(ModelData_Instance(inner, "two"));
    root.AddInstance(ModelData_Instance(PartOf(line, "line"), "l"));

    ScratchFolder folder;
    ASSERT_TRUE(WriteStep(ModelOf(root), folder / "trip.step", Base_LU_Inches));
    STEP_Reader reader;
    ModelData_Model back;
    ASSERT_TRUE(reader.ReadFile(Base_UTF16String((folder / "trip.step").c_str())) && reader.Transfer(back));
    ModelAlgo_BRepMesher().Compute(back, true);
    EXPECT_EQ(Description(back).text, Description(ModelOf(root)).text);
    EXPECT_EQ(back.Name(), Base_UTF16String("trip"));
}

} // namespace
