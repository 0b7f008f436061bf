#include "sdk/jt/JtSceneWriter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Part.hxx>

#include "sdk/jt/JtContainer.h"
#include "sdk/jt/JtUnits.h"
#include "sdk/part21/PropertyTexts.h"

namespace cadex::jt {

namespace {

constexpr std::uint32_t PropertyState = 0x40000000;
constexpr std::uint8_t AttributeState = 8; ///< it is kept in the file

/// Bits of a material: how it would be blended, and whether it is.
constexpr std::uint16_t MaterialBits = 0x3980;
constexpr std::uint16_t BlendedBit = 0x10;

const UnitName& UnitOf(Base_LengthUnit unit)
{
    const auto* found = std::find_if(std::begin(UnitNames), std::end(UnitNames),
                                     [unit](const UnitName& entry) { return entry.unit == unit; });
    return found != std::end(UnitNames) ? *found : UnitNames[0];
}

Base_UTF16String TextOf(std::u16string_view text)
{
    return {reinterpret_cast<const UTF16*>(text.data()), text.size()};
}

std::int32_t Bounded(std::size_t count)
{
    return static_cast<std::int32_t>(std::min<std::size_t>(count, std::numeric_limits<std::int32_t>::max()));
}

} // namespace

void Extent::Include(const std::array<float, 6>& other)
{
    for (std::size_t i = 0; i < 3; ++i) {
        box[i] = isEmpty ? other[i] : std::min(box[i], other[i]);
        box[3 + i] = isEmpty ? other[3 + i] : std::max(box[3 + i], other[3 + i]);
    }
    isEmpty = false;
}

SceneWriter::SceneWriter(const mesh::ExportPlan& plan, const std::vector<std::vector<WrittenShape>>& shapes,
                         const std::vector<Extent>& extents, Base_LengthUnit unit)
    : myPlan(plan),
      myShapes(shapes),
      myExtents(extents),
      myUnitName(TextOf(UnitOf(unit).name)),
      myUnitsPerMillimetre(static_cast<float>(1 / UnitOf(unit).millimetres))
{
}

std::string SceneWriter::Write(const std::vector<std::size_t>& roots, const Base_UTF16String& fileName,
                               const OtherFile& otherFile)
{
    myOtherFile = otherFile;
    const std::int32_t top = NewId();
    Ids children;
    Extent extent;
    for (const std::size_t root : roots) {
        children.push_back(IdOfDefinition(root));
        const Extent& one = myExtents[root];
        if (!one.isEmpty) {
            extent.Include(one.box);
        }
        extent.area += one.area;
        extent.vertices += one.vertices;
        extent.primitives += one.primitives;
    }
    WritePartition(top, children, fileName, extent);
    AddName(top, myPlan.modelName, false, 0);
    while (!myPending.empty()) {
        const std::size_t definition = myPending.back();
        myPending.pop_back();
        WriteDefinition(definition);
    }
    myOut.EndList();
    WriteProperties();
    return myOut.Bytes();
}

std::int32_t SceneWriter::IdOfDefinition(std::size_t definition)
{
    const auto [place, isNew] = myDefinitions.try_emplace(definition, 0);
    if (isNew) {
        place->second = NewId();
        myPending.push_back(definition);
    }
    return place->second;
}

void SceneWriter::WriteDefinition(std::size_t definition)
{
    const mesh::ExportPlan::Definition& planned = myPlan.definitions[definition];
    const std::int32_t id = myDefinitions.at(definition);
    const bool isPart = planned.element.IsOfType<ModelData_Part>();
    const Base_UTF16String name = planned.element.IsNull() ? myPlan.modelName : planned.element.Name();
    AddName(id, name, isPart, 0);
    if (const Base_UTF16String file = myOtherFile(definition); !file.IsEmpty()) {
        WritePartition(id, {}, file, myExtents[definition]);
        return;
    }
    AddProperty(id, "JT_PROP_MEASUREMENT_UNITS", myUnitName);
    if (!planned.element.IsNull()) {
        AddProperties(id, planned.element.Properties());
    }
    if (isPart) {
        WritePart(definition, id);
        return;
    }
    Ids instances(planned.occurrences.size());
    std::generate(instances.begin(), instances.end(), [this] { return NewId(); });
    const Ids attributes = planned.element.IsNull() ? Ids() : AttributesOf(planned.element.Appearance());
    BeginGroup(kind::Assembly, id, attributes, instances);
    myOut.I16(1);
    myOut.End();
    WriteAttributes();
    for (std::size_t i = 0; i < instances.size(); ++i) {
        WriteInstance(planned.occurrences[i], instances[i], i);
    }
}

void SceneWriter::WritePart(std::size_t definition, std::int32_t id)
{
    const std::vector<WrittenShape>& shapes = myShapes[definition];
    const bool hasShapes = !shapes.empty();
    const std::int32_t levels = hasShapes ? NewId() : 0;
    BeginGroup(kind::Part, id, AttributesOf(myPlan.definitions[definition].element.Appearance()),
               hasShapes ? Ids{levels} : Ids());
    myOut.I16(1);
    myOut.I16(1);
    myOut.I32(0);
    myOut.End();
    WriteAttributes();
    if (!hasShapes) {
        return;
    }
    const std::int32_t group = NewId();
    BeginGroup(kind::RangeLevels, levels, {}, {group});
    for (int i = 0; i < 6; ++i) {
        myOut.U32(0); // one level alone: no ranges, no centre of them
    }
    myOut.End();
    Ids ids(shapes.size());
    std::generate(ids.begin(), ids.end(), [this] { return NewId(); });
    BeginGroup(kind::Group, group, {}, ids);
    myOut.End();
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        WriteShapeNode(shapes[i], ids[i]);
    }
}

void SceneWriter::WriteShapeNode(const WrittenShape& shape, std::int32_t id)
{
    const ShapeFacts& facts = shape.facts;
    BeginNode(facts.isLines ? kind::Polylines : kind::Triangles, BaseType::Shape, id,
              AttributesOf(shape.look));
    PutBox(facts.box);
    PutBox(facts.box);
    myOut.F32(static_cast<float>(facts.area));
    PutRanges(facts.vertices, 1, facts.primitives);
    myOut.I32(Bounded(facts.bytes));
    myOut.F32(0); // not compressed with a loss
    myOut.I32(facts.hasNormals ? 1 : 0);
    myOut.I32(facts.hasUvs ? 1 : 0);
    myOut.I32(0); // colours
    myOut.U32(0); // bits of vertices, normals, texture coordinates, colours: exact
    if (facts.isLines) {
        myOut.F32(0);
    }
    myOut.End();
    WriteAttributes();
    const std::int32_t atom = NewId();
    myAtoms.Begin(kind::LateLoadedProperty, BaseType::LateLoadedProperty);
    myAtoms.I32(atom);
    myAtoms.U32(PropertyState);
    myAtoms.Id(shape.segment);
    myAtoms.I32(segment::FirstLevel);
    myAtoms.End();
    myProperties[id].emplace_back(AtomOf("JT_LLPROP_SHAPEIMPL"), atom);
}

void SceneWriter::WriteInstance(const mesh::ExportPlan::Occurrence& occurrence, std::int32_t id,
                                std::size_t number)
{
    Ids attributes = AttributesOf(occurrence.instance.Appearance());
    if (const std::int32_t transform = TransformOf(occurrence); transform != 0) {
        attributes.push_back(transform);
    }
    BeginNode(kind::Instance, BaseType::Node, id, attributes);
    myOut.I32(IdOfDefinition(occurrence.definition));
    myOut.End();
    WriteAttributes();
    AddName(id, occurrence.instance.Name(),
            myPlan.definitions[occurrence.definition].element.IsOfType<ModelData_Part>(), number);
    AddProperties(id, occurrence.instance.Properties());
}

void SceneWriter::WritePartition(std::int32_t id, const Ids& children, const Base_UTF16String& file,
                                 const Extent& extent)
{
    BeginGroup(kind::Partition, id, {}, children);
    myOut.I32(1); // the second box is there
    myOut.Text(file);
    PutBox(extent.box);
    myOut.F32(static_cast<float>(extent.area));
    PutRanges(extent.vertices, 1, extent.primitives);
    PutBox(extent.box);
    myOut.End();
}

void SceneWriter::BeginNode(const Guid& kind, BaseType type, std::int32_t id, const Ids& attributes)
{
    const auto putIds = [this](const Ids& ids) {
        myOut.Count(ids.size());
        std::for_each(ids.begin(), ids.end(), [this](std::int32_t one) { myOut.I32(one); });
    };
    myOut.Begin(kind, type);
    myOut.I32(id);
    myOut.U32(0); // shown
    putIds(attributes);
}

void SceneWriter::BeginGroup(const Guid& kind, std::int32_t id, const Ids& attributes, const Ids& children)
{
    BeginNode(kind, BaseType::Group, id, attributes);
    myOut.Count(children.size());
    for (const std::int32_t child : children) {
        myOut.I32(child);
    }
}

void SceneWriter::PutBox(const std::array<float, 6>& box)
{
    std::for_each(box.begin(), box.end(), [this](float value) { myOut.F32(value); });
}

/// Least and most over the levels of detail, of which there is one.
void SceneWriter::PutRanges(std::size_t vertices, std::size_t nodes, std::size_t primitives)
{
    for (const std::size_t count : {vertices, vertices, nodes, nodes, primitives, primitives}) {
        myOut.I32(Bounded(count));
    }
}

SceneWriter::Ids SceneWriter::AttributesOf(const ModelData_Appearance& look)
{
    ModelData_Material material;
    if (look.IsNull() || !look.ToMaterial(material)) {
        return {};
    }
    const auto [place, isNew] = myMaterials.try_emplace(look, 0);
    if (isNew) {
        place->second = NewId();
        const auto put = [this](const ModelData_Color& colour, float alpha) {
            for (const float value : {colour.R(), colour.G(), colour.B(), alpha}) {
                myAttributes.F32(value);
            }
        };
        const float alpha = material.DiffuseColor().A();
        myAttributes.Begin(kind::MaterialAttribute, BaseType::Attribute);
        myAttributes.I32(place->second);
        myAttributes.U8(AttributeState);
        myAttributes.U32(0);
        myAttributes.U16(alpha < 1 ? MaterialBits | BlendedBit : MaterialBits);
        put(material.AmbientColor(), 1);
        put(material.DiffuseColor(), alpha);
        put(material.SpecularColor(), 1);
        put(material.EmissionColor(), 1);
        myAttributes.F32(material.Shininess());
        myAttributes.End();
    }
    return {place->second};
}

/// 0 where it stands as it is.
std::int32_t SceneWriter::TransformOf(const mesh::ExportPlan::Occurrence& occurrence)
{
    std::array<float, 16> matrix{};
    matrix[15] = 1;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            matrix[4 * row + column] = static_cast<float>(occurrence.rotation[3 * column + row]);
        }
        matrix[12 + row] = static_cast<float>(occurrence.translation[row]) * myUnitsPerMillimetre;
    }
    std::uint16_t mask = 0;
    for (std::size_t i = 0; i < 16; ++i) {
        mask = static_cast<std::uint16_t>(mask << 1 | (matrix[i] != (i % 5 == 0 ? 1.F : 0.F) ? 1 : 0));
    }
    if (mask == 0) {
        return 0;
    }
    const std::int32_t id = NewId();
    myAttributes.Begin(kind::TransformAttribute, BaseType::Attribute);
    myAttributes.I32(id);
    myAttributes.U8(AttributeState);
    myAttributes.U32(0);
    myAttributes.U16(mask);
    for (std::size_t i = 0; i < 16; ++i) {
        if ((mask >> (15 - i) & 1) != 0) {
            myAttributes.F32(matrix[i]);
        }
    }
    myAttributes.End();
    return id;
}

void SceneWriter::WriteAttributes()
{
    myOut.Raw(myAttributes.Bytes());
    myAttributes = {};
}

std::int32_t SceneWriter::AtomOf(const Base_UTF16String& text)
{
    const auto [place, isNew] = myTexts.try_emplace(text.ToUTF8(), 0);
    if (isNew) {
        place->second = NewId();
        myAtoms.Begin(kind::StringProperty, BaseType::Property);
        myAtoms.I32(place->second);
        myAtoms.U32(PropertyState);
        myAtoms.Text(text);
        myAtoms.End();
    }
    return place->second;
}

void SceneWriter::AddProperty(std::int32_t node, const Base_UTF16String& key, const Base_UTF16String& value)
{
    myProperties[node].emplace_back(AtomOf(key), AtomOf(value));
}

/// Keys of what is told of the thing end in two colons.
void SceneWriter::AddProperties(std::int32_t node, const ModelData_PropertyTable& table)
{
    part21::PropertyTexts texts;
    table.Accept(texts);
    for (const auto& [key, value] : texts.texts) {
        AddProperty(node, key + "::", value);
    }
}

/// Names say what they are of, their version, and which of several it is.
void SceneWriter::AddName(std::int32_t node, const Base_UTF16String& name, bool isPart, std::size_t number)
{
    if (!name.IsEmpty()) {
        const std::string ending = (isPart ? ".part;0;" : ".asm;0;") + std::to_string(number) + ":";
        AddProperty(node, "JT_PROP_NAME", name + Base_UTF16String(ending.c_str()));
    }
}

void SceneWriter::WriteProperties()
{
    myOut.Raw(myAtoms.Bytes());
    myOut.EndList();
    myOut.I16(1);
    myOut.Count(myProperties.size());
    for (const auto& [node, pairs] : myProperties) {
        myOut.I32(node);
        for (const auto& [key, value] : pairs) {
            myOut.I32(key);
            myOut.I32(value);
        }
        myOut.I32(0);
    }
}

} // namespace cadex::jt
