#include "sdk/jt/JtScene.h"

#include <algorithm>
#include <bit>

#include "sdk/jt/JtElements.h"

namespace cadex::jt {

namespace {

constexpr std::uint32_t IgnoredNode = 1;
constexpr std::uint8_t IgnoredAttribute = 4;

struct NodeClass
{
    Guid id;
    Node::Kind kind;
};
constexpr NodeClass NodeClasses[] = {
    {kind::Group, Node::Kind::Group},
    {kind::BaseNode, Node::Kind::NullShape},
    {kind::Instance, Node::Kind::Instance},
    {kind::Levels, Node::Kind::Levels},
    {kind::RangeLevels, Node::Kind::Levels},
    {kind::Assembly, Node::Kind::Assembly},
    {kind::Part, Node::Kind::Part},
    {kind::Partition, Node::Kind::Partition},
    {kind::Switch, Node::Kind::Switch},
    {kind::NullShape, Node::Kind::NullShape},
    {kind::BaseShape, Node::Kind::NullShape},
    {kind::VertexShape, Node::Kind::Shape},
    {kind::Triangles, Node::Kind::Shape},
    {kind::Polylines, Node::Kind::Shape},
    {kind::Polygons, Node::Kind::Shape},
    {kind::Points, Node::Kind::Shape},
    {kind::Primitives, Node::Kind::Primitive},
    {kind::Wires, Node::Kind::Wires},
};

/// Nodes of classes to come are taken for what they are based on.
Node::Kind KindOf(const Element& element)
{
    for (const NodeClass& known : NodeClasses) {
        if (known.id == element.kind) {
            return known.kind;
        }
    }
    return element.baseType == static_cast<std::uint8_t>(BaseType::Group) ? Node::Kind::Group
                                                                          : Node::Kind::NullShape;
}

void SkipVersion(Bytes& in)
{
    if (!in.FileFormat().IsV8()) {
        in.Version();
    }
}

std::vector<std::int32_t> ReadIds(Bytes& in)
{
    std::vector<std::int32_t> ids(in.Count(4));
    for (std::int32_t& id : ids) {
        id = in.I32();
    }
    return ids;
}

std::array<float, 6> ReadBox(Bytes& in)
{
    std::array<float, 6> box{};
    for (float& value : box) {
        value = in.F32();
    }
    return box;
}

bool HasChildren(Node::Kind kind)
{
    return kind < Node::Kind::Shape && kind != Node::Kind::Instance;
}

Node ReadNode(Element element)
{
    Bytes& in = element.data;
    Node node;
    node.kind = KindOf(element);
    SkipVersion(in);
    node.isHidden = (in.U32() & IgnoredNode) != 0;
    node.attributes = ReadIds(in);
    if (node.kind == Node::Kind::Instance) {
        SkipVersion(in);
        node.children = {in.I32()};
        return node;
    }
    if (node.kind == Node::Kind::Shape) {
        SkipVersion(in);
        in.Skip(24); // the box, after a transformation that readers do not need
        node.box = ReadBox(in);
        node.area = in.F32();
        return node;
    }
    if (!HasChildren(node.kind)) {
        return node;
    }
    SkipVersion(in);
    node.children = ReadIds(in);
    if (node.kind == Node::Kind::Partition) {
        in.I32();
        node.file = in.Text();
    } else if (node.kind == Node::Kind::Switch) {
        SkipVersion(in);
        node.selected = in.I32();
    }
    return node;
}

/// NOTE: bits of a material of version 8: some of its colours are one number for red, green and blue.
namespace pattern {
constexpr std::uint16_t IsUsed = 1;
constexpr std::uint16_t Ambient = 2;
constexpr std::uint16_t Specular = 4;
constexpr std::uint16_t Emission = 8;
} // namespace pattern

constexpr std::uint16_t IsBlended = 16;

Material ReadMaterial(Bytes& in)
{
    const std::uint16_t flags = in.U16();
    const bool isPattern = in.FileFormat().IsV8() && (flags & pattern::IsUsed) != 0;
    const auto colour = [&](std::uint16_t bit) {
        Material::Rgba rgba{};
        if (isPattern && (flags & bit) != 0) {
            const float grey = in.F32();
            rgba = {grey, grey, grey, 1};
        } else {
            for (float& value : rgba) {
                value = in.F32();
            }
        }
        return rgba;
    };
    Material material;
    material.isBlended = (flags & IsBlended) != 0;
    material.ambient = colour(pattern::Ambient);
    material.diffuse = colour(0);
    material.specular = colour(pattern::Specular);
    material.emission = colour(pattern::Emission);
    material.shininess = in.F32();
    return material;
}

constexpr Matrix IdentityMatrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

/// Only the elements that differ from the identity are stored; the highest bit tells of the first one.
Matrix ReadTransform(Bytes& in)
{
    const std::uint16_t mask = in.U16();
    const auto count = static_cast<std::size_t>(std::popcount(mask));
    const bool isDouble = count > 0 && in.Left() >= count * sizeof(double);
    Matrix matrix = IdentityMatrix;
    for (std::size_t i = 0; i < 16; ++i) {
        if ((mask >> (15 - i) & 1) != 0) {
            matrix[i] = isDouble ? in.F64() : static_cast<double>(in.F32());
        }
    }
    return matrix;
}

Attribute ReadAttribute(Element element)
{
    Bytes& in = element.data;
    Attribute attribute;
    SkipVersion(in);
    attribute.isIgnored = (in.U8() & IgnoredAttribute) != 0;
    in.U32(); // fields that do not take part
    if (in.FileFormat().IsV10()) {
        in.U32(); // and those that do so for good
    }
    SkipVersion(in);
    if (element.kind == kind::MaterialAttribute) {
        attribute.material = ReadMaterial(in);
    } else if (element.kind == kind::TransformAttribute) {
        attribute.transform = ReadTransform(in);
    }
    return attribute;
}

Date ReadDate(Bytes& in)
{
    Date date;
    for (std::int16_t& field : date.fields) {
        field = in.I16();
    }
    return date;
}

PropertyValue ReadProperty(Element element)
{
    Bytes& in = element.data;
    SkipVersion(in);
    in.U32(); // state
    SkipVersion(in);
    if (element.kind == kind::StringProperty) {
        return in.Text();
    }
    if (element.kind == kind::IntegerProperty) {
        return in.I32();
    }
    if (element.kind == kind::FloatProperty) {
        return in.F32();
    }
    if (element.kind == kind::DateProperty) {
        return ReadDate(in);
    }
    if (element.kind == kind::LateLoadedProperty) {
        LateLoaded late;
        late.segment = in.Id();
        late.type = in.I32();
        return late;
    }
    return std::u16string();
}

using Atoms = std::unordered_map<std::int32_t, PropertyValue>;

/// Key and value of each property, by ids; 0 ends those of a node.
void ReadPropertyTable(Bytes& in, const Atoms& atoms, Scene& scene)
{
    in.Version();
    const std::size_t count = in.Count(8);
    for (std::size_t i = 0; i < count; ++i) {
        const auto owner = scene.nodes.find(in.I32());
        for (std::int32_t key = in.I32(); key != 0; key = in.I32()) {
            const auto value = atoms.find(in.I32());
            const auto name = atoms.find(key);
            if (owner == scene.nodes.end() || value == atoms.end() || name == atoms.end()) {
                continue;
            }
            if (const auto* text = std::get_if<std::u16string>(&name->second)) {
                owner->second.properties.push_back({*text, value->second});
            }
        }
    }
}

} // namespace

const std::u16string* Node::Text(std::u16string_view key) const
{
    for (const Property& property : properties) {
        if (property.key == key) {
            return std::get_if<std::u16string>(&property.value);
        }
    }
    return nullptr;
}

Scene ReadScene(const Container& file, Budget& unpacked)
{
    std::string storage;
    Bytes in = file.Open(file.SceneGraph(), storage, unpacked);
    Scene scene;
    bool hasRoot = false;
    for (;;) {
        Element element = ReadElement(in, true);
        if (element.kind == kind::End) {
            break;
        }
        if (element.kind == kind::TextureAttribute) {
            ++scene.textures;
        }
        const std::int32_t id = element.id;
        if (element.baseType == static_cast<std::uint8_t>(BaseType::Attribute)) {
            scene.attributes[id] = ReadAttribute(std::move(element));
        } else if (element.baseType <= static_cast<std::uint8_t>(BaseType::Shape)) {
            scene.nodes[id] = ReadNode(std::move(element));
            scene.root = hasRoot ? scene.root : id;
            hasRoot = true;
        }
    }
    if (!hasRoot) {
        throw Unreadable("the scene graph is empty");
    }
    Atoms atoms;
    for (;;) {
        Element element = ReadElement(in, true);
        if (element.kind == kind::End) {
            break;
        }
        const std::int32_t id = element.id;
        atoms[id] = ReadProperty(std::move(element));
    }
    ReadPropertyTable(in, atoms, scene);
    return scene;
}

/// NOTE: "Property Proxy Meta Data Element": keys and values until an empty key.
std::vector<Property> ReadMetaData(Bytes in)
{
    Element element = ReadElement(in, false);
    std::vector<Property> properties;
    if (element.kind != kind::MetaDataElement) {
        return properties;
    }
    Bytes& data = element.data;
    SkipVersion(data);
    for (;;) {
        Property property;
        property.key = data.Text();
        if (property.key.empty()) {
            return properties;
        }
        switch (data.U8()) {
        case 1:
            property.value = data.Text();
            break;
        case 2:
            property.value = data.I32();
            break;
        case 3:
            property.value = data.F32();
            break;
        case 4:
            property.value = ReadDate(data);
            break;
        default:
            throw Unreadable("meta data of an unknown kind");
        }
        properties.push_back(std::move(property));
    }
}

} // namespace cadex::jt
