#include "sdk/jt/JtTree.h"

#include <algorithm>
#include <system_error>

#include <cadex/ModelData_Instance.hxx>
#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/mesh/PlacedParts.h"
#include "sdk/model/Elements.h"
#include "sdk/text/FileBytes.h"
#include "sdk/text/Utf.h"

namespace cadex::jt {

namespace {

using internal::Report;
using internal::Reports;

/// Instances multiply; an element that would unfold to more than this is left out.
constexpr std::size_t MostUnfolded = 2'000'000;

/// Begins of keys that speak of the file, not of the thing, and whole ones.
constexpr std::u16string_view InnerBegins[] = {
    u"JT_PROP_", u"JT_LLPROP_", u"JT_PMI_", u"LODLabel", u"_nTris", u"BSphere", u"LAYERFILTER",
};
constexpr std::u16string_view InnerKeys[] = {
    u"PartitionType", u"SUBNODE", u"TOOLKIT_CUSTOMER", u"PMI_TYPE_TABLE",
    u"Angular",       u"Chordal", u"SegLength",
};

void LeaveOut(const std::string& what)
{
    Reports::Add(Report::Kind::LeftOut, what);
}

/// `key` is without the colons behind it.
bool IsInner(std::u16string_view key)
{
    return std::any_of(std::begin(InnerBegins), std::end(InnerBegins),
                       [&](std::u16string_view begin) { return key.starts_with(begin); }) ||
           std::find(std::begin(InnerKeys), std::end(InnerKeys), key) != std::end(InnerKeys);
}

/// "wheel" for "wheel.part;12;0:": toolkits put a kind, a version and a number behind names.
std::u16string CleanName(std::u16string name)
{
    const auto isNumber = [&](std::size_t from, std::size_t to) {
        return from < to && std::all_of(name.begin() + static_cast<std::ptrdiff_t>(from),
                                        name.begin() + static_cast<std::ptrdiff_t>(to),
                                        [](char16_t c) { return c >= u'0' && c <= u'9'; });
    };
    if (!name.empty() && name.back() == u':') {
        const std::size_t second = name.rfind(u';');
        const std::size_t first =
            second == std::u16string::npos || second == 0 ? second : name.rfind(u';', second - 1);
        if (first != std::u16string::npos && first < second && isNumber(first + 1, second) &&
            isNumber(second + 1, name.size() - 1)) {
            name.resize(first);
        }
    }
    for (const std::u16string_view ending : {u".part", u".asm"}) {
        if (name.size() > ending.size() && name.ends_with(ending)) {
            name.resize(name.size() - ending.size());
        }
    }
    return name;
}

/// Empty when the node has none.
Base_UTF16String NameOf(const Node& node)
{
    for (const char16_t* key : {u"JT_PROP_NAME", u"Name::", u"CAD_PARTNAME::"}) {
        const std::u16string* name = node.Text(key);
        if (name != nullptr && !name->empty()) {
            return text::ToSdkString(CleanName(*name));
        }
    }
    return {};
}

std::string TextOf(const Date& date)
{
    const auto twoDigits = [](int value) { return (value < 10 ? "0" : "") + std::to_string(value); };
    const auto& f = date.fields;
    return std::to_string(f[0]) + '-' + twoDigits(f[1] + 1) + '-' + twoDigits(f[2]) + ' ' + twoDigits(f[3]) +
           ':' + twoDigits(f[4]) + ':' + twoDigits(f[5]);
}

void AddProperties(const std::vector<Property>& properties, ModelData_PropertyTable& table)
{
    for (const Property& property : properties) {
        std::u16string name = property.key;
        while (!name.empty() && name.back() == u':') {
            name.pop_back();
        }
        if (IsInner(name) || std::holds_alternative<LateLoaded>(property.value)) {
            continue;
        }
        const Base_UTF16String key = text::ToSdkString(name);
        if (const auto* string = std::get_if<std::u16string>(&property.value)) {
            table.Add(key, text::ToSdkString(*string));
        } else if (const auto* integer = std::get_if<std::int32_t>(&property.value)) {
            table.Add(key, static_cast<I32>(*integer));
        } else if (const auto* real = std::get_if<float>(&property.value)) {
            table.Add(key, *real);
        } else if (const auto* date = std::get_if<Date>(&property.value)) {
            table.Add(key, Base_UTF16String(TextOf(*date).c_str()));
        }
    }
}

/// The names of folders and the file, from a path with either kind of slash.
std::filesystem::path PathOf(const std::u16string& name)
{
    std::u16string slashes = name;
    std::replace(slashes.begin(), slashes.end(), u'\\', u'/');
    const std::string utf8 = text::ToSdkString(slashes).ToUTF8();
    return {std::u8string(utf8.begin(), utf8.end())};
}

/// Where a file of that name lies beside or below the one that names it; empty when it does not.
std::filesystem::path FindBeside(const Document& document, const std::u16string& name)
{
    if (document.folder.empty() || name.empty()) {
        return {};
    }
    std::filesystem::path path = PathOf(name).lexically_normal();
    if (path.is_absolute() || path.begin() == path.end() || *path.begin() == "..") {
        path = path.filename(); // of another machine, or out of the folder
    }
    const std::filesystem::path stem(std::u8string(document.stem.begin(), document.stem.end()));
    for (const std::filesystem::path& candidate : {document.folder / path, document.folder / path.filename(),
                                                   document.folder / stem / path.filename()}) {
        std::error_code error;
        if (std::filesystem::is_regular_file(candidate, error) && !error) {
            return candidate;
        }
    }
    return {};
}

/// The unit of the first node from the top that has one.
double UnitOfFile(const Scene& scene)
{
    std::vector<std::int32_t> open{scene.root};
    for (std::size_t i = 0; i < open.size() && i < 1000; ++i) {
        const auto node = scene.nodes.find(open[i]);
        if (node == scene.nodes.end()) {
            continue;
        }
        if (const std::optional<double> unit = MillimetresOf(node->second)) {
            return *unit;
        }
        open.insert(open.end(), node->second.children.begin(), node->second.children.end());
    }
    return 1;
}

} // namespace

bool JtFile::Load(std::string bytes, const Base_UTF16String& name, const std::filesystem::path& folder)
{
    myRoot = {};
    try {
        Document document(std::move(bytes));
        document.folder = folder;
        document.stem = name.ToUTF8();
        myRoot = TreeBuilder().Build(document, name);
    } catch (const Unreadable& reason) {
        Reports::Add(Report::Kind::Refused, reason.what());
        return false;
    }
    return true;
}

void JtFile::Build(ModelData_Model& model) const
{
    model.AddRoot(myRoot);
}

ModelData_Assembly TreeBuilder::Build(Document& document, const Base_UTF16String& name)
{
    document.number = ++myDocuments;
    document.millimetres = UnitOfFile(document.scene);
    for (std::size_t i = 0; i < document.scene.textures; ++i) {
        LeaveOut("a texture");
    }
    const auto root = document.scene.nodes.find(document.scene.root);
    Target target;
    target.assembly = ModelData_Assembly(name);
    target.millimetres = document.millimetres;
    Above above;
    above.placement = PlacementOf(root->second, document.scene);
    above.look = myLooks.Of(root->second, document.scene, {});
    if (HasStructure(document, document.scene.root)) {
        if (root->second.kind == Node::Kind::Partition) {
            above.ifNone = NameOf(root->second);
        }
        AddChildren(document, root->second, target, above);
    } else {
        AddChild(document, document.scene.root, target, {});
    }
    const std::vector<ModelData_Instance>& instances = internal::ImplOf(target.assembly).instances;
    if (instances.size() == 1 && !instances.front().HasTransformation() &&
        instances.front().Appearance().IsNull() &&
        instances.front().Reference().IsOfType<ModelData_Assembly>()) {
        const ModelData_SceneGraphElement only = instances.front().Reference();
        return static_cast<const ModelData_Assembly&>(only);
    }
    target.assembly.AddProperties(PropertiesOf(document, root->second));
    return target.assembly;
}

/// Whether there are parts or assemblies at or below a node, or only shapes.
bool TreeBuilder::HasStructure(const Document& document, std::int32_t id)
{
    const auto known = myHaveStructure.find({document.number, id});
    if (known != myHaveStructure.end()) {
        return known->second;
    }
    const auto node = document.scene.nodes.find(id);
    if (node == document.scene.nodes.end()) {
        throw Unreadable("a node has a child that is not there");
    }
    if (++myDepth > DeepestNode) {
        throw Unreadable("nodes are nested too deep");
    }
    myHaveStructure[{document.number, id}] = false; // for a node that contains itself
    const Node::Kind kind = node->second.kind;
    bool has = kind == Node::Kind::Assembly || kind == Node::Kind::Part ||
               (kind == Node::Kind::Partition && node->second.children.empty());
    for (const std::int32_t child : node->second.children) {
        has = HasStructure(document, child) || has;
    }
    --myDepth;
    myHaveStructure[{document.number, id}] = has;
    return has;
}

void TreeBuilder::AddChildren(Document& document, const Node& node, Target& target, const Above& above)
{
    for (const std::int32_t child : ShownChildren(node)) {
        AddChild(document, child, target, above);
    }
}

void TreeBuilder::AddChild(Document& document, std::int32_t id, Target& target, const Above& above)
{
    const auto found = document.scene.nodes.find(id);
    if (found == document.scene.nodes.end()) {
        throw Unreadable("a node has a child that is not there");
    }
    const Node& node = found->second;
    if (node.isHidden) {
        LeaveOut("a hidden node");
        return;
    }
    if (myDepth > DeepestNode) {
        throw Unreadable("nodes are nested too deep, or contain themselves");
    }
    document.CountVisit();
    ++myDepth;
    Above here = above;
    here.placement = mesh::Compose(above.placement, PlacementOf(node, document.scene));
    const bool isElement = node.kind == Node::Kind::Assembly || node.kind == Node::Kind::Part ||
                           (node.kind != Node::Kind::Instance && !HasStructure(document, id));
    if (isElement) {
        Place(ElementOf(document, id, node, above, target.millimetres), target, here);
    } else {
        here.look = myLooks.Of(node, document.scene, above.look);
        const Base_UTF16String own = NameOf(node);
        Base_UTF16String& name = node.kind == Node::Kind::Instance ? here.name : here.ifNone;
        name = own.IsEmpty() ? name : own;
        if (node.kind == Node::Kind::Instance) {
            here.properties = PropertiesOf(document, node);
        }
        if (node.kind == Node::Kind::Partition && node.children.empty()) {
            AddExternal(document, node, target, here);
        } else {
            AddChildren(document, node, target, here);
        }
    }
    --myDepth;
}

void TreeBuilder::AddExternal(Document& document, const Node& node, Target& target, const Above& above)
{
    const std::filesystem::path path = FindBeside(document, node.file);
    if (path.empty()) {
        LeaveOut("what lies in another file that is not there: " + text::ToSdkString(node.file).ToUTF8());
        return;
    }
    Place(OtherFile(path, text::StemOf(path)), target, above);
}

/// Null, with the reason reported, when the file cannot be read.
TreeBuilder::Built TreeBuilder::OtherFile(const std::filesystem::path& path, const Base_UTF16String& name)
{
    const auto known = myFiles.find(path);
    if (known != myFiles.end()) {
        return known->second;
    }
    if (std::find(myOpenFiles.begin(), myOpenFiles.end(), path) != myOpenFiles.end()) {
        LeaveOut("a file that contains itself");
        return {};
    }
    Built built;
    std::string bytes;
    const int depth = myDepth;
    myOpenFiles.push_back(path);
    if (text::ReadBytes(path, bytes)) {
        try {
            Document other(std::move(bytes));
            other.folder = path.parent_path();
            other.stem = name.ToUTF8();
            const ModelData_Assembly root = Build(other, name);
            const std::vector<ModelData_Instance>& instances = internal::ImplOf(root).instances;
            built.element = root;
            built.millimetres = other.millimetres;
            built.size = instances.size();
            if (instances.size() == 1 && !instances.front().HasTransformation() &&
                instances.front().Reference().IsOfType<ModelData_Part>()) {
                built.element = instances.front().Reference(); // a file of one part is that part
            }
        } catch (const Unreadable& reason) {
            myDepth = depth;
            LeaveOut("what lies in another file: " + std::string(reason.what()));
        }
    }
    myOpenFiles.pop_back();
    return myFiles[path] = built;
}

TreeBuilder::Built TreeBuilder::ElementOf(Document& document, std::int32_t id, const Node& node,
                                          const Above& above, double millimetres)
{
    const auto known = myElements.find({document.number, id});
    if (known != myElements.end()) {
        return known->second;
    }
    Base_UTF16String name = NameOf(node);
    if (name.IsEmpty()) {
        name = above.ifNone.IsEmpty() ? above.name : above.ifNone;
    }
    Built built;
    const bool isGeometry = node.kind != Node::Kind::Assembly && node.kind != Node::Kind::Part;
    built.millimetres = MillimetresOf(node).value_or(isGeometry ? millimetres : document.millimetres);
    if (node.kind == Node::Kind::Assembly) {
        Target target;
        target.assembly = ModelData_Assembly(name);
        target.millimetres = built.millimetres;
        target.assembly.SetAppearance(myLooks.Of(node, document.scene, {}));
        AddChildren(document, node, target, {});
        built.element = target.assembly;
        built.size = target.size;
    } else {
        built.element = PartMaker(document, myLooks).Make(node, name, built.millimetres);
        built.size = 1;
    }
    if (!built.element.IsNull()) {
        built.element.AddProperties(PropertiesOf(document, node));
    }
    myElements[{document.number, id}] = built;
    return built;
}

void TreeBuilder::Place(const Built& built, Target& target, const Above& above)
{
    if (built.element.IsNull()) {
        return;
    }
    if (target.size + built.size + 1 > MostUnfolded) {
        LeaveOut("an element that unfolds to too many instances");
        return;
    }
    target.size += built.size + 1;
    const Base_UTF16String name = above.name.IsEmpty() ? built.element.Name() : above.name;
    ModelData_Instance instance(built.element, name);
    mesh::Affine placement = above.placement;
    const double factor = target.millimetres / built.millimetres;
    for (double& value : placement.linear) {
        value *= factor;
    }
    for (double& value : placement.translation) {
        value *= target.millimetres;
    }
    if (!mesh::IsIdentity(placement)) {
        const mesh::Matrix3& m = placement.linear;
        ModelData_Transformation transformation;
        transformation.SetRotationPart(m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8]);
        transformation.SetTranslationPart(placement.translation[0], placement.translation[1],
                                          placement.translation[2]);
        instance.SetTransformation(transformation);
    }
    instance.SetAppearance(above.look);
    if (!above.properties.IsEmpty()) {
        instance.AddProperties(above.properties);
    }
    target.assembly.AddInstance(instance);
}

/// Those that stand with the node, and those of its segment of meta data.
ModelData_PropertyTable TreeBuilder::PropertiesOf(Document& document, const Node& node) const
{
    ModelData_PropertyTable table{initialized()};
    AddProperties(node.properties, table);
    const LateLoaded* late = FindLateLoaded(node, segment::MetaData);
    const Segment* segment = late == nullptr ? nullptr : document.file.Find(late->segment);
    if (segment != nullptr) {
        std::string storage;
        AddProperties(ReadMetaData(document.file.Open(*segment, storage, document.unpacked)), table);
    }
    return table;
}

} // namespace cadex::jt
