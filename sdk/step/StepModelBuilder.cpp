#include "sdk/step/StepModelBuilder.h"

#include <string_view>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/internal/Progress.hxx>

#include "sdk/text/PlainText.h"

namespace cadex::step {

using text::IsBlankText;
namespace {

class Builder
{
public:
    Builder(const StepContent& content, StepGeometry& geometry)
        : myContent(content), myGeometry(geometry), myElements(content.structure.products.size())
    {
    }

    bool Run(ModelData_Model& model)
    {
        for (const std::size_t number : myContent.structure.childrenFirst) {
            if (!internal::Progress::GoesOn()) {
                return false;
            }
            MakeElement(number);
        }
        std::vector<ModelData_SceneGraphElement> roots;
        for (const std::size_t number : myContent.structure.roots) {
            roots.push_back(myElements[number]);
        }
        for (const StepBody& body : myGeometry.LooseBodies()) {
            roots.push_back(MakePart(body, body.name));
            myHasBodies = true;
        }
        if (roots.empty() || (myContent.hasGeometry && !myHasBodies)) {
            return false;
        }
        if (roots.size() == 1 && roots.front().Name().IsEmpty()) {
            roots.front().SetName(myContent.rootName);
        }
        for (ModelData_SceneGraphElement& root : roots) {
            AddCopy(root, myContent.header);
            model.AddRoot(root);
        }
        return true;
    }

private:
    // A table of the element's own: elements that are given one table would share it.
    static void AddCopy(ModelData_SceneGraphElement& element, const ModelData_PropertyTable& table)
    {
        if (table.IsEmpty()) {
            return;
        }
        ModelData_PropertyTable copy{initialized()};
        copy.Add(table);
        element.AddProperties(copy);
    }

    static ModelData_Part MakePart(const StepBody& body, const Base_UTF16String& name)
    {
        ModelData_Part part(name);
        if (!body.representation.IsNull()) {
            part.AddRepresentation(body.representation);
        }
        if (!body.appearance.IsNull()) {
            part.SetAppearance(body.appearance);
        }
        return part;
    }

    void MakeElement(std::size_t number)
    {
        const StepProduct& product = myContent.structure.products[number];
        const StepBody body = myGeometry.Body(number);
        myHasBodies = myHasBodies || !body.representation.IsNull();
        ModelData_SceneGraphElement& element = myElements[number];
        if (product.isAssembly && (!product.instances.empty() || body.representation.IsNull())) {
            element = MakeAssembly(product, body);
        } else {
            element = MakePart(body, product.name);
        }
        const auto style = myContent.styles.products.find(number);
        if (style != myContent.styles.products.end() && !style->second.surface.IsNull()) {
            element.SetAppearance(style->second.surface);
        }
        const auto table = myContent.properties.products.find(number);
        if (table != myContent.properties.products.end()) {
            AddCopy(element, table->second);
        }
    }

    ModelData_Assembly MakeAssembly(const StepProduct& product, const StepBody& body)
    {
        ModelData_Assembly assembly(product.name);
        if (!body.representation.IsNull()) {
            assembly.AddInstance(ModelData_Instance(MakePart(body, product.name), product.name));
        }
        for (const std::size_t number : product.instances) {
            const StepInstance& use = myContent.structure.instances[number];
            const ModelData_SceneGraphElement& child = myElements[use.child];
            ModelData_Instance instance(child, use.name.IsEmpty() ? child.Name() : use.name);
            const ModelData_Transformation placement = myGeometry.Placement(number);
            if (!placement.IsIdentity()) {
                instance.SetTransformation(placement);
            }
            const auto style = myContent.styles.instances.find(number);
            if (style != myContent.styles.instances.end()) {
                const StepStyle& look = style->second;
                instance.SetAppearance(look.surface.IsNull() ? look.curve : look.surface);
            }
            const auto table = myContent.properties.instances.find(number);
            if (table != myContent.properties.instances.end()) {
                AddCopy(instance, table->second);
            }
            assembly.AddInstance(instance);
        }
        return assembly;
    }

    const StepContent& myContent;
    StepGeometry& myGeometry;
    std::vector<ModelData_SceneGraphElement> myElements;
    bool myHasBodies = false;
};

// The name that the file gives itself, without folder and extension, else its name on disk.
Base_UTF16String RootName(const ClearText& text, const Base_UTF16String& fileName)
{
    Cursor header = text.Header("FILE_NAME");
    std::string_view name = header.String();
    const std::size_t folder = name.find_last_of("/\\");
    if (folder != std::string_view::npos) {
        name.remove_prefix(folder + 1);
    }
    name = name.substr(0, name.rfind('.'));
    return IsBlankText(name) ? fileName : DecodeString(name);
}

bool IsMoreThanPlacements(const ClearText& text, RecordId representation)
{
    const ClearText::Record* record = text.Find(representation);
    if (record == nullptr) {
        return false;
    }
    Cursor arguments = text.Arguments(*record);
    arguments.Skip();
    if (!arguments.EnterList()) {
        return false;
    }
    while (arguments.More() && !arguments.Failed()) {
        const ClearText::Record* item = text.Find(arguments.Reference());
        if (item != nullptr && !EndsWith(text.TypeName(*item), "PLACEMENT_3D")) {
            return true;
        }
    }
    return false;
}

} // namespace

bool ReadStepContent(const ClearText& text, const Base_UTF16String& fileName, StepContent& content)
{
    if (!content.structure.Build(text)) {
        return false;
    }
    AppearanceCache appearances;
    content.styles.Read(text, content.structure, appearances);
    content.properties.Read(text, content.structure);
    content.header = ReadStepHeader(text);
    content.rootName = RootName(text, fileName);
    for (const StepProduct& product : content.structure.products) {
        for (const RecordId representation : product.representations) {
            content.hasGeometry = content.hasGeometry || IsMoreThanPlacements(text, representation);
        }
    }
    return true;
}

bool BuildStepModel(const StepContent& content, StepGeometry& geometry, ModelData_Model& model)
{
    return Builder(content, geometry).Run(model);
}

} // namespace cadex::step
