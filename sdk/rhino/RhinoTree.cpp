#include "sdk/rhino/RhinoTree.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_set>

#include <cadex/ModelData_FileTexture.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/ModelData_TextureSet.hxx>
#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/brep/DescribedBRep.h"

namespace cadex::rhino {

namespace {

/// Blocks nest within blocks; deeper ones are left out, since walkers of the model recurse.
constexpr std::size_t DeepestBlock = 100;
/// Layers deeper than this stand in the last one's assembly.
constexpr int DeepestLayer = 100;
/// Blocks within blocks multiply; a block that would unfold to more instances than this is left out.
constexpr std::size_t MostUnfolded = 2'000'000;

constexpr float HighestShine = 255;
constexpr float HighestShininess = 128;

float ComponentOf(PackedColour colour, int shift)
{
    return static_cast<float>(colour >> shift & 255) / 255.F;
}

ModelData_Color ColourOf(PackedColour colour, float alpha = 1)
{
    return {ComponentOf(colour, 0), ComponentOf(colour, 8), ComponentOf(colour, 16), alpha};
}

ModelData_Appearance AppearanceOf(const Material& material)
{
    const double opacity = std::clamp(1 - material.transparency, 0.0, 1.0);
    const double shine = std::clamp(material.shine, 0.0, static_cast<double>(HighestShine));
    ModelData_Appearance appearance(ModelData_Material(
        ColourOf(material.ambient),
        ColourOf(material.diffuse, std::isfinite(opacity) ? static_cast<float>(opacity) : 1),
        ColourOf(material.specular), ColourOf(material.emission),
        std::isfinite(shine) ? static_cast<float>(shine) / HighestShine * HighestShininess : 0));
    if (!material.textures.empty()) {
        ModelData_TextureSet textures{initialized()};
        for (const Base_UTF16String& file : material.textures) {
            textures.Add(ModelData_FileTexture(file));
        }
        appearance.SetTextureSet(textures);
    }
    return appearance;
}

bool IsSurface(const Object& object)
{
    if (object.body) {
        return object.body->description.curves.empty();
    }
    return object.reference.has_value() ||
           std::none_of(object.sets.begin(), object.sets.end(), [](const ModelData_PolyVertexSet& set) {
               return set.IsOfType<ModelData_PolyLineSet>();
           });
}

ModelData_PropertyTable TableOf(const UserStrings& strings)
{
    if (strings.empty()) {
        return {};
    }
    ModelData_PropertyTable table{initialized()};
    for (const auto& [key, value] : strings) {
        table.Add(key, value);
    }
    return table;
}

ModelData_PropertyTable TableOf(const Attributes& attributes)
{
    ModelData_PropertyTable table = TableOf(attributes.strings);
    if (!attributes.url.IsEmpty()) {
        if (table.IsNull()) {
            table = ModelData_PropertyTable{initialized()};
        }
        table.Add("URL", attributes.url);
    }
    return table;
}

void AddText(ModelData_PropertyTable& table, const char* name, const Base_UTF16String& value)
{
    if (!value.IsEmpty()) {
        table.Add(name, value);
    }
}

ModelData_Transformation TransformationOf(const std::array<double, 16>& matrix, double millimetres)
{
    ModelData_Transformation result;
    result.SetRotationPart(matrix[0], matrix[1], matrix[2], matrix[4], matrix[5], matrix[6], matrix[8],
                           matrix[9], matrix[10]);
    result.SetTranslationPart(matrix[3] * millimetres, matrix[7] * millimetres, matrix[11] * millimetres);
    return result;
}

Base_UTF16String NameOf(const Object& object)
{
    return object.attributes.name.IsEmpty() ? Base_UTF16String(object.kind) : object.attributes.name;
}

} // namespace

Looks::Looks(const RhinoFile& file) : myFile(file)
{
    for (const Layer& layer : file.layers) {
        myLayers.emplace(layer.index, &layer);
    }
    for (const Material& material : file.materials) {
        myMaterials.emplace(material.index, &material);
    }
}

const Layer* Looks::LayerOf(const Attributes& attributes) const
{
    const auto found = myLayers.find(attributes.layer);
    return found == myLayers.end() ? nullptr : found->second;
}

bool Looks::IsByParent(const Attributes& attributes)
{
    return attributes.materialSource == MaterialSource::Parent ||
           attributes.colourSource == ColourSource::Parent;
}

ModelData_Appearance Looks::OfMaterial(int index)
{
    const auto material = myMaterials.find(index);
    if (material == myMaterials.end()) {
        return {};
    }
    ModelData_Appearance& look = myMaterialLooks[index];
    if (look.IsNull()) {
        look = AppearanceOf(*material->second);
    }
    return look;
}

ModelData_Appearance Looks::OfColour(PackedColour colour)
{
    return myColours.Of(
        internal::Colour{ComponentOf(colour, 0), ComponentOf(colour, 8), ComponentOf(colour, 16), 1});
}

ModelData_Appearance Looks::Of(const Object& object, const ModelData_Appearance& parent)
{
    const Attributes& attributes = object.attributes;
    const bool isSurface = IsSurface(object);
    if (isSurface) {
        const Layer* layer = LayerOf(attributes);
        ModelData_Appearance look;
        if (attributes.materialSource == MaterialSource::Object) {
            look = OfMaterial(attributes.material);
        } else if (attributes.materialSource == MaterialSource::Parent && !parent.IsNull()) {
            look = parent;
        } else if (layer != nullptr) {
            look = OfMaterial(layer->material);
        }
        if (!look.IsNull()) {
            return look;
        }
    }
    return object.colour ? OfColour(*object.colour) : DisplayColour(object, parent, isSurface);
}

ModelData_Appearance Looks::DisplayColour(const Object& object, const ModelData_Appearance& parent,
                                          bool isSurface)
{
    constexpr PackedColour ColourBits = 0x00FFFFFF;
    const Attributes& attributes = object.attributes;
    if (attributes.colourSource == ColourSource::Object) {
        return OfColour(attributes.colour);
    }
    if (attributes.colourSource == ColourSource::Parent && !parent.IsNull()) {
        return parent;
    }
    if (attributes.colourSource == ColourSource::Material) {
        const auto material = myMaterials.find(attributes.material);
        if (material != myMaterials.end()) {
            return OfColour(material->second->diffuse);
        }
    }
    const Layer* layer = LayerOf(attributes);
    const PackedColour colour = layer != nullptr ? layer->colour : 0;
    if (isSurface && (colour & ColourBits) == 0) {
        const ModelData_Color grey = ModelData_Material().DiffuseColor();
        return myColours.Of(internal::Colour{grey.R(), grey.G(), grey.B(), 1});
    }
    return OfColour(colour);
}

ModelBuilder::ModelBuilder(RhinoFile& file, const Base_UTF16String& name)
    : myFile(file), myName(name), myLooks(file)
{
    for (const Layer& layer : file.layers) {
        if (!layer.id.IsNil()) {
            myLayersById.emplace(layer.id, &layer);
        }
    }
    for (const Definition& definition : file.definitions) {
        myDefinitions.emplace(definition.id, &definition);
    }
    std::map<Uuid, bool> isMember;
    for (const Definition& definition : file.definitions) {
        for (const Uuid& member : definition.members) {
            isMember[member] = true;
        }
    }
    for (Object& object : file.objects) {
        if (isMember.count(object.attributes.id) != 0) {
            myObjects.emplace(object.attributes.id, &object);
        }
    }
}

void ModelBuilder::Build(ModelData_Model& model)
{
    PlaceLayers();
    ModelData_Assembly document(myName);
    std::size_t done = 0;
    for (Object& object : myFile.objects) {
        if (!internal::Progress::GoesOn(done++, myFile.objects.size())) {
            return;
        }
        if (object.attributes.mode == ObjectMode::DefinitionMember) {
            continue;
        }
        if (!IsShown(object)) {
            ++myHidden;
            continue;
        }
        const Layer* layer = myLooks.LayerOf(object.attributes);
        ModelData_Assembly parent = layer != nullptr ? AssemblyOf(*layer) : document;
        AddObject(parent, object, {});
    }
    if (myTops.size() == 1 && document.NumberOfInstances() == 0) {
        document = myTops.front();
    } else {
        for (const ModelData_Assembly& top : myTops) {
            document.AddInstance(ModelData_Instance(top, top.Name()));
        }
    }
    AddProperties(document);
    model.AddRoot(document);
}

void ModelBuilder::AddProperties(ModelData_Assembly& root) const
{
    const Document& document = myFile.document;
    ModelData_PropertyTable table{initialized()};
    AddText(table, "Notes", document.notes);
    AddText(table, "Application", document.application);
    AddText(table, "Application URL", document.applicationUrl);
    AddText(table, "Application details", document.applicationDetails);
    for (const auto& [key, value] : document.strings) {
        table.Add(key, value);
    }
    if (myHidden > 0) {
        table.Add("Hidden objects left out", Base_UTF16String(std::to_string(myHidden).c_str()));
        for (std::size_t i = 0; i < myHidden; ++i) {
            internal::Reports::Add(internal::Report::Kind::LeftOut, "a hidden object");
        }
    }
    if (!table.IsEmpty()) {
        root.AddProperties(table);
    }
}

const Layer* ModelBuilder::ParentOf(const Layer& layer) const
{
    const auto parent = layer.parent.IsNil() ? myLayersById.end() : myLayersById.find(layer.parent);
    return parent == myLayersById.end() ? nullptr : parent->second;
}

bool ModelBuilder::IsShown(const Object& object) const
{
    if (!object.attributes.IsShown()) {
        return false;
    }
    int depth = 0;
    for (const Layer* layer = myLooks.LayerOf(object.attributes); layer != nullptr && depth < DeepestLayer;
         layer = ParentOf(*layer), ++depth) {
        if (!layer->visible) {
            return false;
        }
    }
    return true;
}

/// Makes the assemblies of the layers that will be needed, in the order of the file.
void ModelBuilder::PlaceLayers()
{
    std::unordered_set<const Layer*> used;
    for (const Object& object : myFile.objects) {
        if (object.attributes.mode == ObjectMode::DefinitionMember || !IsShown(object)) {
            continue;
        }
        const Layer* layer = myLooks.LayerOf(object.attributes);
        while (layer != nullptr && used.insert(layer).second) {
            layer = ParentOf(*layer);
        }
    }
    for (const Layer& layer : myFile.layers) {
        if (used.count(&layer) != 0) {
            AssemblyOf(layer);
        }
    }
}

ModelData_Assembly ModelBuilder::AssemblyOf(const Layer& layer)
{
    std::vector<const Layer*> path; // from the layer upwards, to the first that stands
    for (const Layer* next = &layer; next != nullptr && myAssemblies.count(next) == 0;
         next = ParentOf(*next)) {
        if (std::find(path.begin(), path.end(), next) != path.end()) {
            break; // layers in a circle: one of them is the top
        }
        path.push_back(next);
    }
    const Layer* above = path.empty() ? nullptr : ParentOf(*path.back());
    const auto standing = myAssemblies.find(above);
    ModelData_Assembly parent = standing == myAssemblies.end() ? ModelData_Assembly() : standing->second;
    int depth = 0;
    std::reverse(path.begin(), path.end());
    for (const Layer* next : path) {
        if (++depth > DeepestLayer) {
            myAssemblies.emplace(next, parent);
            continue;
        }
        ModelData_Assembly assembly(next->name);
        assembly.AddProperties(TableOf(next->strings));
        if (parent.IsNull()) {
            myTops.push_back(assembly);
        } else {
            parent.AddInstance(ModelData_Instance(assembly, assembly.Name()));
        }
        myAssemblies.emplace(next, assembly);
        parent = assembly;
    }
    return myAssemblies.at(&layer);
}

void ModelBuilder::AddObject(ModelData_Assembly& parent, Object& object,
                             const ModelData_Appearance& parentLook)
{
    // what stands outside of blocks is counted as a whole
    const void* owner = myOpen.empty() ? nullptr : parent.Impl();
    const ModelData_Appearance look = myLooks.Of(object, parentLook);
    if (!object.reference) {
        const Base_UTF16String name = NameOf(object);
        ModelData_Part part = PartOf(object, name, look);
        part.AddProperties(TableOf(object.attributes));
        parent.AddInstance(ModelData_Instance(part, name));
        ++mySizes[owner];
        return;
    }
    const ModelData_SceneGraphElement element = ElementOf(object.reference->definition, look);
    if (element.IsNull()) {
        return;
    }
    std::size_t& size = mySizes[owner];
    if (size + SizeOf(element) + 1 > MostUnfolded) {
        internal::Reports::Add(internal::Report::Kind::LeftOut, "a block that unfolds to too many instances");
        return;
    }
    size += SizeOf(element) + 1;
    const Base_UTF16String& own = object.attributes.name;
    ModelData_Instance instance(element,
                                TransformationOf(object.reference->matrix, myFile.document.millimetres),
                                own.IsEmpty() ? element.Name() : own);
    instance.AddProperties(TableOf(object.attributes));
    parent.AddInstance(instance);
}

std::size_t ModelBuilder::SizeOf(const ModelData_SceneGraphElement& element) const
{
    const auto size = mySizes.find(element.Impl());
    return size == mySizes.end() ? 0 : size->second;
}

/// Whether the look of a reference shows through somewhere in the block.
bool ModelBuilder::DependsOnParent(const Uuid& id)
{
    const auto known = myDependsOnParent.find(id);
    if (known != myDependsOnParent.end()) {
        return known->second;
    }
    myDependsOnParent[id] = false; // for a block that contains itself
    const auto definition = myDefinitions.find(id);
    bool depends = false;
    if (definition != myDefinitions.end()) {
        for (const Uuid& member : definition->second->members) {
            const auto object = myObjects.find(member);
            depends = depends || (object != myObjects.end() && Looks::IsByParent(object->second->attributes));
        }
    }
    myDependsOnParent[id] = depends;
    return depends;
}

ModelData_SceneGraphElement ModelBuilder::ElementOf(const Uuid& id, const ModelData_Appearance& parentLook)
{
    const auto definition = myDefinitions.find(id);
    if (definition == myDefinitions.end()) {
        internal::Reports::Add(internal::Report::Kind::LeftOut, "a reference to a block that is not there");
        return {};
    }
    if (std::find(myOpen.begin(), myOpen.end(), id) != myOpen.end()) {
        internal::Reports::Add(internal::Report::Kind::LeftOut, "a block that contains itself");
        return {};
    }
    const std::pair<Uuid, const void*> key(id, DependsOnParent(id) ? parentLook.Impl() : nullptr);
    const auto known = myElements.find(key);
    if (known != myElements.end()) {
        return known->second;
    }
    if (myOpen.size() >= DeepestBlock) {
        internal::Reports::Add(internal::Report::Kind::LeftOut, "blocks nested too deep");
        return {};
    }
    myOpen.push_back(id);
    ModelData_SceneGraphElement element = BuildDefinition(*definition->second, parentLook);
    myOpen.pop_back();
    ModelData_PropertyTable table = TableOf(definition->second->strings);
    if (table.IsNull()) {
        table = ModelData_PropertyTable{initialized()};
    }
    AddText(table, "Description", definition->second->description);
    AddText(table, "URL", definition->second->url);
    AddText(table, "Linked file", definition->second->source);
    if (!table.IsEmpty()) {
        element.AddProperties(table);
    }
    myElements.emplace(key, element);
    return element;
}

ModelData_SceneGraphElement ModelBuilder::BuildDefinition(const Definition& definition,
                                                          const ModelData_Appearance& parentLook)
{
    std::vector<Object*> members;
    for (const Uuid& id : definition.members) {
        const auto object = myObjects.find(id);
        if (object == myObjects.end()) {
            continue;
        }
        if (IsShown(*object->second)) {
            members.push_back(object->second);
        } else {
            ++myHidden;
        }
    }
    if (definition.kind == Definition::Kind::Linked && members.empty()) {
        internal::Reports::Add(internal::Report::Kind::LeftOut, "a block in another file");
    }
    const bool isOne =
        !members.empty() && std::all_of(members.begin(), members.end(), [&](const Object* object) {
            const Base_UTF16String& name = object->attributes.name;
            return !object->reference && !object->body && (name.IsEmpty() || name == definition.name);
        });
    if (isOne) {
        return PartOfSets(members, definition.name, parentLook);
    }
    if (members.size() == 1 && !members.front()->reference) {
        Object& only = *members.front();
        ModelData_Part part = PartOf(only, definition.name, myLooks.Of(only, parentLook));
        part.AddProperties(TableOf(only.attributes));
        return part;
    }
    ModelData_Assembly assembly(definition.name);
    for (Object* member : members) {
        AddObject(assembly, *member, parentLook);
    }
    return assembly;
}

/// Meshes and polylines that have no name of their own are the sets of one part.
ModelData_Part ModelBuilder::PartOfSets(const std::vector<Object*>& members, const Base_UTF16String& name,
                                        const ModelData_Appearance& parentLook)
{
    ModelData_Part part(name);
    ModelData_PolyRepresentation representation{initialized()};
    part.SetAppearance(myLooks.Of(*members.front(), parentLook));
    for (const Object* member : members) {
        const ModelData_Appearance look = myLooks.Of(*member, parentLook);
        for (ModelData_PolyVertexSet set : member->sets) {
            set.SetName(name);
            if (members.size() > 1 && !Looks::IsByParent(member->attributes)) {
                set.SetAppearance(look);
            }
            representation.Add(set);
        }
        part.AddProperties(TableOf(member->attributes));
    }
    part.AddRepresentation(representation);
    return part;
}

/// The exact body; or, where it makes no sense, the file's own mesh of it.
void ModelBuilder::AddBody(Body& body, const ModelData_Appearance& look, ModelData_Part& part,
                           ModelData_PolyRepresentation& meshes) const
{
    using Kind = internal::Report::Kind;
    if (!body.description.IsEmpty()) {
        brep::Description description = body.description;
        description.appearance = look;
        auto* exact = new brep::DescribedBRep(std::move(description));
        part.AddRepresentation(internal::MakeHandle<ModelData_BRepRepresentation>(exact));
    } else if (body.mesh) {
        ModelData_PolyVertexSet set = internal::MakeTriangleSet(internal::TriangleArrays(body.mesh->arrays));
        set.SetName(part.Name());
        meshes.Add(set);
        internal::Reports::Add(Kind::Repaired,
                               "a body that makes no sense is shown as the file's mesh of it");
    }
    if (body.lostFaces > 0 && !body.mesh) {
        internal::Reports::Add(Kind::LeftOut,
                               "a face that makes no sense, but for the file's own mesh of it");
    }
}

ModelData_Part ModelBuilder::PartOf(Object& object, const Base_UTF16String& name,
                                    const ModelData_Appearance& look)
{
    ModelData_Part part(name);
    part.SetAppearance(look);
    ModelData_PolyRepresentation representation{initialized()};
    for (ModelData_PolyVertexSet set : object.sets) {
        set.SetName(name);
        representation.Add(set);
    }
    if (object.body) {
        AddBody(*object.body, look, part, representation);
    }
    if (representation.Get().Size() > 0) {
        part.AddRepresentation(representation);
    }
    return part;
}

} // namespace cadex::rhino
