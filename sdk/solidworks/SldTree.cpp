#include "sdk/solidworks/SldTree.h"

#include <algorithm>

#include <cadex/ModelData_Instance.hxx>
#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/brep/DescribedPart.h"
#include "sdk/solidworks/SldContainer.h"
#include "sdk/solidworks/SldExactBody.h"
#include "sdk/solidworks/SldMeshes.h"
#include "sdk/solidworks/SldProperties.h"

namespace cadex::solidworks {

namespace {

using internal::Report;
using internal::Reports;

/// Assemblies within assemblies deeper than this are left out, since walkers of the model recurse.
constexpr int Deepest = 100;
/// An assembly that would unfold to more instances than this is left out.
constexpr std::size_t MostUnfolded = 2'000'000;

Base_UTF16String TextOf(const std::string& utf8)
{
    return {utf8.c_str()};
}

void LeaveOut(const char* what)
{
    Reports::Add(Report::Kind::LeftOut, what);
}

} // namespace

bool SolidWorksFile::Load(const std::string& bytes, const Base_UTF16String& name)
{
    try {
        Container container(bytes);
        for (const char* stream : {"swXmlContents/COMPINSTANCETREE", "swXmlContents/Features"}) {
            if (const std::optional<std::string> xml = container.Read(stream); xml && myModels.root.empty()) {
                myModels = ReadModels(*xml);
            }
        }
        const Model* root = myModels.Root();
        std::optional<std::string> list = container.Read("Contents/DisplayLists");
        if (!list) {
            throw Unreadable(container.Has("Header2") ? "the document has no display list"
                                                      : "not a SolidWorks document");
        }
        myList.emplace(std::move(*list));
        myName = name;
        myProperties = ModelData_PropertyTable{initialized()};
        AddDocumentProperties(container, root != nullptr ? root->configurationNumber : "0", myProperties);
        if (root == nullptr || root->references.empty()) {
            myPartition = ReadPartition(container, root != nullptr ? root->configurationNumber : "0");
        }
        if (root != nullptr) {
            if (!root->configuration.empty()) {
                myProperties.Add("Configuration", TextOf(root->configuration));
            }
            AddMaterial(container, root->configuration, myProperties);
        }
    } catch (const Unreadable& reason) {
        Reports::Add(Report::Kind::Refused, reason.what());
        return false;
    }
    return true;
}

void SolidWorksFile::Build(ModelData_Model& model)
{
    const std::vector<DisplayComponent>& components = myList->Components();
    const Model* root = myModels.Root();
    ModelData_SceneGraphElement element;
    if (root != nullptr && !root->references.empty()) {
        element = AssemblyOf(*root, myName, 0);
    } else if (std::any_of(components.begin(), components.end(),
                           [](const DisplayComponent& component) { return !component.name.empty(); })) {
        element = AssemblyOfComponents();
    } else {
        element = PartOf(components.empty() ? nullptr : &components.front(), myName);
    }
    if (myHidden > 0) {
        myProperties.Add("Hidden components left out", TextOf(std::to_string(myHidden)));
    }
    element.AddProperties(myProperties);
    model.AddRoot(element);
}

ModelData_Part SolidWorksFile::PartOf(const DisplayComponent* component, const Base_UTF16String& name)
{
    ModelData_Part part(name);
    const std::optional<DisplayLook>& look = myList->Look();
    static const std::vector<DisplayBody> nothing;
    const bool isDocument = component == nullptr || component->name.empty();
    if (isDocument &&
        AddExactBody(myPartition, component != nullptr ? component->bodies : nothing, look, myLooks, part)) {
        return part;
    }
    const ModelData_PolyRepresentation meshes =
        component != nullptr ? MeshesOf(component->bodies, look, myLooks) : ModelData_PolyRepresentation();
    if (meshes.IsNull()) {
        LeaveOut("a part without anything displayed");
        return part;
    }
    part.AddRepresentation(meshes);
    const std::optional<DisplayLook>& own = component->bodies.front().look;
    if (own || look) {
        part.SetAppearance(myLooks.Of((own ? own : look)->colour));
    }
    if (const Base_UTF16String material = own ? MaterialName(own->material.ToUTF8()) : Base_UTF16String();
        !material.IsEmpty() && !component->name.empty()) {
        ModelData_PropertyTable table{initialized()};
        table.Add("Material", material);
        part.AddProperties(table);
    }
    return part;
}

/// Shared by all references to a model; null where it cannot be.
ModelData_SceneGraphElement SolidWorksFile::ElementOf(const std::string& identity, int depth)
{
    const auto [known, isNew] = myElements.try_emplace(identity);
    if (!isNew) {
        return known->second; // null while it is being built: it would contain itself
    }
    const Model* model = myModels.Find(identity);
    if (model == nullptr || depth > Deepest) {
        return {};
    }
    ModelData_SceneGraphElement element;
    if (model->references.empty()) {
        element = PartOf(Find(model->name, model->configuration), TextOf(model->name));
    } else {
        element = AssemblyOf(*model, TextOf(model->name), depth);
    }
    myElements[identity] = element;
    return element;
}

ModelData_Assembly SolidWorksFile::AssemblyOf(const Model& model, const Base_UTF16String& name, int depth)
{
    ModelData_Assembly assembly(name);
    std::size_t size = 0;
    for (std::size_t i = 0; i < model.references.size(); ++i) {
        const internal::ProgressRange step(i, model.references.size());
        if (!internal::Progress::GoesOn(0, 1)) {
            break;
        }
        const Model::Reference& reference = model.references[i];
        if (reference.isSuppressed) {
            continue;
        }
        if (reference.isHidden) {
            ++myHidden;
            LeaveOut("a hidden component");
            continue;
        }
        const ModelData_SceneGraphElement element = ElementOf(reference.model, depth + 1);
        if (element.IsNull()) {
            LeaveOut("a component without a model, within itself, or too deep");
            continue;
        }
        const auto below = mySizes.find(element.Impl());
        const std::size_t more = 1 + (below == mySizes.end() ? 0 : below->second);
        if (size + more > MostUnfolded) {
            LeaveOut("an assembly that unfolds to too many instances");
            break;
        }
        size += more;
        if (!reference.isPlaced) {
            Reports::Add(Report::Kind::Repaired, "a component without a place stands as it was drawn");
        }
        assembly.AddInstance(
            ModelData_Instance(element, brep::TransformationOf(reference.placement), TextOf(reference.name)));
    }
    mySizes[assembly.Impl()] = size;
    return assembly;
}

/// Where the file has no tree of its components: those that are displayed, side by side.
ModelData_Assembly SolidWorksFile::AssemblyOfComponents()
{
    ModelData_Assembly assembly(myName);
    std::map<const DisplayComponent*, ModelData_Part> parts;
    for (const DisplayComponent& component : myList->Components()) {
        const DisplayComponent* shown =
            component.bodies.empty() ? Find(component.model, component.configuration) : &component;
        if (shown == nullptr || !internal::Progress::GoesOn()) {
            continue; // an assembly, whose components follow
        }
        ModelData_Part& part = parts[shown];
        if (part.IsNull()) {
            part = PartOf(shown, TextOf(component.model.empty() ? "Part" : component.model));
        }
        // the last step of its path, without the assembly around it
        const std::size_t slash = component.name.rfind('/');
        const std::string name = component.name.substr(slash == std::string::npos ? 0 : slash + 1);
        assembly.AddInstance(ModelData_Instance(part, brep::TransformationOf(component.placement),
                                                TextOf(name.substr(0, name.find('@')))));
    }
    return assembly;
}

/// The first component that has the triangles of the model; null when none has.
const DisplayComponent* SolidWorksFile::Find(const std::string& model, const std::string& configuration) const
{
    const DisplayComponent* byName = nullptr;
    for (const DisplayComponent& component : myList->Components()) {
        if (component.bodies.empty() || component.model != model) {
            continue;
        }
        if (component.configuration == configuration) {
            return &component;
        }
        byName = byName != nullptr ? byName : &component;
    }
    return byName;
}

} // namespace cadex::solidworks
