#include "sdk/ifc/IfcTree.h"

#include <cadex/ModelData_Instance.hxx>
#include <cadex/internal/Progress.hxx>

#include "sdk/occt/EngineScope.h"

namespace cadex::ifc {
namespace {

/// Walkers of the model recurse; assemblies nested deeper are attached to this level.
constexpr int DeepestAssembly = 256;
/// Maps within maps multiply; a model that would unfold to more than this is not built any further.
constexpr std::size_t MostExpanded = 2'000'000;

Base_UTF16String NameOf(const Entity& object)
{
    const Base_UTF16String name = object.Text(2);
    return name.IsEmpty() ? Base_UTF16String(std::string(DisplayName(object.TypeName())).c_str()) : name;
}

bool IsOpening(Type type)
{
    return type == Type::IfcOpeningElement || type == Type::IfcOpeningStandardCase ||
           type == Type::IfcVoidingFeature;
}

/// Identifiers of representations that are not the object's visible shape (IFC4, IfcShapeRepresentation).
bool IsAuxiliary(const std::string& identifier)
{
    for (const char* known :
         {"Axis", "Box", "FootPrint", "Profile", "CoG", "Clearance", "Reference", "Lighting"}) {
        if (identifier == known) {
            return true;
        }
    }
    return false;
}

} // namespace

ModelBuilder::ModelBuilder(const IfcFile& file)
    : myFile(file),
      myContext(file),
      myRelations(file),
      myStyles(file, myRelations),
      myProperties(file, myRelations),
      myBodies(myContext, myRelations, myStyles)
{
}

bool ModelBuilder::Build(ModelData_Model& model)
{
    std::vector<ModelData_Assembly> roots;
    for (Id id : myRelations.projects) {
        const Entity project = myFile.Get(id);
        ModelData_Assembly assembly(NameOf(project));
        assembly.AddProperties(myProperties.OfObject(project));
        roots.push_back(assembly);
        myBuilt.insert(id);
        myPending.push_back({id, assembly, 0, 1});
    }
    if (roots.empty()) {
        roots.emplace_back(initialized());
    }
    const Pending root{0, roots.front(), 0, 1};
    const auto drain = [&] {
        while (!myPending.empty()) {
            const Pending next = std::move(myPending.back());
            myPending.pop_back();
            BuildChildren(next);
        }
    };
    drain();
    BuildOrphans(root);
    if (internal::Progress::IsCancelled()) {
        return false;
    }
    for (const ModelData_Assembly& assembly : roots) {
        model.AddRoot(assembly);
    }
    return true;
}

void ModelBuilder::BuildChildren(const Pending& parent)
{
    for (Id child : ShownChildren(parent.object)) {
        BuildObject(child, parent);
    }
}

/// Objects that no relation reaches from a project: first those that are nobody's child, then what is left in
/// circles.
void ModelBuilder::BuildOrphans(const Pending& root)
{
    for (const bool claimed : {false, true}) {
        for (Id id : myRelations.objects) {
            if (myBuilt.count(id) != 0 || (myRelations.hasParent.count(id) != 0) != claimed) {
                continue;
            }
            const Entity object = myFile.Get(id);
            if (IsShown(object) && (object.IsSet(6) || myRelations.children.count(id) != 0)) {
                BuildObject(id, root);
            }
            while (!myPending.empty()) {
                const Pending next = std::move(myPending.back());
                myPending.pop_back();
                BuildChildren(next);
            }
        }
    }
}

bool ModelBuilder::IsShown(const Entity& object) const
{
    return object && !IsOpening(object.Type()) && !object.Is(Type::IfcDistributionPort);
}

std::vector<Id> ModelBuilder::ShownChildren(Id object) const
{
    std::vector<Id> children;
    for (Id id : myRelations.List(myRelations.children, object)) {
        if (myBuilt.count(id) == 0 && IsShown(myFile.Get(id))) {
            children.push_back(id);
        }
    }
    return children;
}

void ModelBuilder::BuildObject(Id id, const Pending& parent)
{
    if (!myBuilt.insert(id).second ||
        !internal::Progress::GoesOn(myBuilt.size(), myRelations.objects.size())) {
        return;
    }
    myWholeOf.emplace(id, parent.object);
    const Entity object = myFile.Get(id);
    const Base_UTF16String name = NameOf(object);
    const Affine at = myContext.RelativePlacement(parent.placement, object.RefId(5));
    const ModelData_PropertyTable properties = myProperties.OfObject(object);
    std::vector<Placed> shape = ShapeOfObject(object, name);
    for (const Placed& placed : shape) {
        myUnfolded += 1 + ExpandedSize(placed.element);
    }
    if (myUnfolded > MostExpanded) {
        shape.clear();
    }
    const bool group = !ShownChildren(id).empty() || IsSpatial(object.TypeName());
    if (!group && shape.size() == 1 && shape.front().shared) {
        AddInstance(parent.assembly, shape.front().element, Compose(at, shape.front().at), name, &properties);
        return;
    }
    if (!group && shape.size() <= 1) {
        ModelData_SceneGraphElement element = shape.empty() ? ModelData_Part(name) : shape.front().element;
        element.AddProperties(properties);
        AddInstance(parent.assembly, element, at, name, nullptr);
        return;
    }
    ModelData_Assembly assembly(name);
    assembly.AddProperties(properties);
    AddInstance(parent.assembly, assembly, at, name, nullptr);
    for (const Placed& placed : shape) {
        AddInstance(assembly, placed.element, placed.at, name, nullptr);
    }
    const bool deep = parent.depth >= DeepestAssembly;
    myPending.push_back({id, deep ? parent.assembly : assembly, deep ? parent.placement : object.RefId(5),
                         deep ? parent.depth : parent.depth + 1});
}

void ModelBuilder::AddInstance(const ModelData_Assembly& parent, const ModelData_SceneGraphElement& element,
                               const Affine& at, const Base_UTF16String& name,
                               const ModelData_PropertyTable* properties)
{
    ModelData_Instance instance(element, name);
    if (!IsIdentity(at)) {
        instance.SetTransformation(occt::ToTransformation(at));
    }
    if (properties != nullptr) {
        instance.AddProperties(*properties);
    }
    ModelData_Assembly(parent).AddInstance(instance);
    myExpanded[parent.Impl()] += 1 + ExpandedSize(element);
}

std::size_t ModelBuilder::ExpandedSize(const ModelData_SceneGraphElement& element) const
{
    const auto size = myExpanded.find(element.Impl());
    return size == myExpanded.end() ? 0 : size->second;
}

std::vector<Id> ModelBuilder::Representations(const Entity& object) const
{
    // Body where there is one, else whatever is no auxiliary geometry; annotations always, and grids and
    // annotations in all their forms.
    const bool drawing = object.Is(Type::IfcAnnotation) || object.Is(Type::IfcGrid);
    std::vector<Id> bodies;
    std::vector<Id> others;
    std::vector<Id> annotations;
    Id bodyContext = 0;
    for (Id id : object.Ref(6).Refs(2)) {
        const Entity representation = myFile.Get(id);
        const std::string identifier = representation.Text(1).ToUTF8();
        if (!representation.Is(Type::IfcShapeRepresentation) ||
            representation.Text(2).ToUTF8() == "BoundingBox") {
            continue;
        }
        if (identifier == "Body" && (bodies.empty() || representation.RefId(0) == bodyContext)) {
            bodyContext = representation.RefId(0);
            bodies.push_back(id);
        } else if (identifier == "Annotation") {
            annotations.push_back(id);
        } else if (identifier != "Body" && (drawing || !IsAuxiliary(identifier))) {
            others.push_back(id);
        }
    }
    std::vector<Id>& chosen = bodies.empty() || drawing ? others : bodies;
    chosen.insert(chosen.end(), annotations.begin(), annotations.end());
    return chosen;
}

std::vector<ModelBuilder::Placed> ModelBuilder::ShapeOfObject(const Entity& object,
                                                              const Base_UTF16String& name)
{
    std::vector<Placed> placed;
    if (object.Is(Type::IfcSpace) || object.Is(Type::IfcVirtualElement)) {
        return placed;
    }
    std::vector<Body> bodies;
    const AtWork atWork(myContext, object.Id());
    const ModelData_Appearance fallback = myStyles.OfObject(object.Id());
    try {
        const std::vector<Id> representations = Representations(object);
        if (!representations.empty() && HasOpenings(object.Id())) {
            return CutShape(object, representations, name, fallback);
        }
        for (Id id : representations) {
            AddItems(myFile.Get(id), name, fallback, placed, bodies);
        }
        if (object.Is(Type::IfcGrid) && bodies.empty() && placed.empty()) {
            AddGridAxes(object, bodies);
        }
        std::vector<Placed> own;
        for (ModelData_Part& part : MakeParts(myContext, name, std::move(bodies), fallback)) {
            own.push_back({part, Affine(), false});
        }
        placed.insert(placed.begin(), own.begin(), own.end());
    } catch (const Unbuildable& reason) {
        // what stands so far is the shape
        myContext.Report(Report::Kind::LeftOut, reason.what());
    }
    return placed;
}

std::vector<ModelBuilder::Placed> ModelBuilder::CutShape(const Entity& object,
                                                         const std::vector<Id>& representations,
                                                         const Base_UTF16String& name,
                                                         const ModelData_Appearance& fallback)
{
    std::vector<Body> bodies;
    for (Id id : representations) {
        myBodies.ReadFlat(myFile.Get(id), Affine(), bodies);
    }
    std::vector<Body> cut = bodies;
    const bool done = occt::RunGuarded(occt::EngineUse::Geometry, [&] {
        CutOpenings(myContext, cut, Openings(object));
        return true;
    });
    if (!done) {
        myContext.Report(Report::Kind::Repaired, "openings that the kernel cannot cut");
    }
    std::vector<Placed> placed;
    for (ModelData_Part& part : MakeParts(myContext, name, std::move(done ? cut : bodies), fallback)) {
        placed.push_back({part, Affine(), false});
    }
    return placed;
}

bool ModelBuilder::HasOpenings(Id object) const
{
    for (Id whole = object; whole != 0;) {
        if (myRelations.openings.count(whole) != 0) {
            return true;
        }
        const auto next = myWholeOf.find(whole);
        whole = next == myWholeOf.end() ? 0 : next->second;
    }
    return false;
}

std::vector<Body> ModelBuilder::Openings(const Entity& object)
{
    std::vector<Body> tools;
    for (Id whole = object.Id(); whole != 0;) {
        for (Id id : myRelations.List(myRelations.openings, whole)) {
            const Entity opening = myFile.Get(id);
            const Affine at = myContext.RelativePlacement(object.RefId(5), opening.RefId(5));
            for (Id representation : Representations(opening)) {
                myBodies.ReadFlat(myFile.Get(representation), at, tools);
            }
        }
        const auto next = myWholeOf.find(whole);
        whole = next == myWholeOf.end() ? 0 : next->second;
    }
    return tools;
}

void ModelBuilder::AddGridAxes(const Entity& grid, std::vector<Body>& bodies)
{
    for (std::size_t argument = 7; argument <= 9; ++argument) // UAxes, VAxes, WAxes
    {
        for (Id axis : grid.Refs(argument)) {
            const Entity curve = myFile.Get(axis).Ref(1);
            if (curve) {
                myBodies.Read(curve, bodies);
            }
        }
    }
}

void ModelBuilder::AddItems(const Entity& representation, const Base_UTF16String& name,
                            const ModelData_Appearance& fallback, std::vector<Placed>& placed,
                            std::vector<Body>& bodies)
{
    for (Id id : representation.Refs(3)) {
        const Entity item = myFile.Get(id);
        if (!item.Is(Type::IfcMappedItem)) {
            myBodies.Read(item, bodies);
            continue;
        }
        const ModelData_Appearance style = myStyles.OfItem(id);
        const Entity map = item.Ref(0);
        if (!map.Is(Type::IfcRepresentationMap)) {
            Reports::Add(Report::Kind::LeftOut, "a mapped item without anything to place", id);
            continue;
        }
        const ModelData_SceneGraphElement element = MapElement(map, name, style.IsNull() ? fallback : style);
        if (!element.IsNull()) {
            try {
                placed.push_back({element, MappingOf(myContext, item), true});
            } catch (const Unbuildable&) {
                // a mapped item without a place is none
            }
        }
    }
}

ModelData_SceneGraphElement ModelBuilder::MapElement(const Entity& map, const Base_UTF16String& name,
                                                     const ModelData_Appearance& fallback)
{
    if (myOpenMaps.count(map.Id()) != 0 || myOpenMaps.size() > 16) {
        return {};
    }
    // A map whose bodies all have a look of their own is one part, whatever wears it.
    const auto styled = myMaps.find({map.Id(), nullptr});
    const auto known = myMaps.find({map.Id(), fallback.Impl()});
    if (styled != myMaps.end() || known != myMaps.end()) {
        return known != myMaps.end() ? known->second : styled->second;
    }
    myOpenMaps.insert(map.Id());
    const Entity type = myFile.Get(Relations::Find(myRelations.typeOfMap, map.Id()));
    const Base_UTF16String own = type && !type.Text(2).IsEmpty() ? type.Text(2) : name;
    std::vector<Placed> placed;
    std::vector<Body> bodies;
    AddItems(map.Ref(1), own, fallback, placed, bodies);
    bool independent = placed.empty();
    for (const Body& body : bodies) {
        independent = independent && !body.appearance.IsNull();
    }
    for (ModelData_Part& part : MakeParts(myContext, own, std::move(bodies), fallback)) {
        placed.push_back({part, Affine(), false});
    }
    ModelData_SceneGraphElement element;
    if (placed.size() == 1 && IsIdentity(placed.front().at) && !placed.front().shared) {
        element = placed.front().element;
    } else if (!placed.empty()) {
        ModelData_Assembly assembly(own);
        for (const Placed& part : placed) {
            AddInstance(assembly, part.element, part.at, own, nullptr);
        }
        element =
            myExpanded[assembly.Impl()] <= MostExpanded ? ModelData_SceneGraphElement(assembly) : element;
    }
    if (type && !element.IsNull()) {
        element.AddProperties(myProperties.OfType(type));
    }
    myOpenMaps.erase(map.Id());
    myMaps[{map.Id(), independent ? nullptr : fallback.Impl()}] = element;
    return element;
}

} // namespace cadex::ifc
