#include "sdk/rhino/RhinoWriter.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <string>

#include <cadex/ModelData_FileTexture.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_TextureSet.hxx>
#include <cadex/ModelData_TextureVisitor.hxx>
#include <cadex/internal/Progress.hxx>

#include "sdk/mesh/PolyLines.h"
#include "sdk/model/Elements.h"
#include "sdk/part21/PropertyTexts.h"
#include "sdk/rhino/RhinoMeshWriter.h"
#include "sdk/rhino/RhinoTables.h"
#include "sdk/rhino/RhinoTolerances.h"
#include "sdk/text/LengthUnits.h"

namespace cadex::rhino {

namespace {

constexpr std::int64_t PointKind = 1;
constexpr std::int64_t CurveKind = 4;
constexpr std::int64_t MeshKind = 0x20;
constexpr std::int64_t ReferenceKind = 0x1000;

/// Numbers of the units of length in the file.
struct UnitNumber
{
    Base_LengthUnit unit;
    std::int32_t number;
};
constexpr UnitNumber UnitNumbers[] = {
    {Base_LU_Micrometers, 1}, {Base_LU_Millimeters, 2}, {Base_LU_Centimeters, 3}, {Base_LU_Meters, 4},
    {Base_LU_Kilometers, 5},  {Base_LU_Mils, 7},        {Base_LU_Inches, 8},      {Base_LU_Feets, 9},
    {Base_LU_Miles, 10},      {Base_LU_Decimeters, 14}, {Base_LU_Yards, 19},
};

std::int32_t NumberOf(Base_LengthUnit unit)
{
    const auto* found = std::find_if(std::begin(UnitNumbers), std::end(UnitNumbers),
                                     [&](const UnitNumber& entry) { return entry.unit == unit; });
    return found != std::end(UnitNumbers) ? found->number : 2;
}

PackedColour Packed(const ModelData_Color& colour)
{
    const auto byteOf = [](float value) {
        const float clamped = std::isfinite(value) ? std::clamp(value, 0.F, 1.F) : 0.F;
        return static_cast<PackedColour>(std::lround(clamped * 255.F));
    };
    return byteOf(colour.R()) | byteOf(colour.G()) << 8 | byteOf(colour.B()) << 16;
}

class FileTextures final : public ModelData_TextureVisitor
{
public:
    std::vector<Base_UTF16String> files;

    void operator()(const ModelData_FileTexture& texture) override
    {
        if (!texture.FilePath().IsEmpty()) {
            files.push_back(texture.FilePath());
        }
    }
    void operator()(const ModelData_PixMapTexture&) override {} // pictures in memory have no file to name
};

/// Not known: readers compute it.
void PutEmptyBox(ChunkWriter& out)
{
    out.PutAll({1., 0., 0., -1., 0., 0.});
}

using mesh::ChainsOf;

} // namespace

RhinoWriter::RhinoWriter(text::ByteSink& sink, const mesh::ExportPlan& plan,
                         const mesh::ExportOptions& options)
    : myOut(sink),
      myPlan(plan),
      myOptions(options),
      myUnitsPerMillimetre(1 / text::LengthUnitOf(options.unit).millimetres),
      myLayout(plan)
{
}

bool RhinoWriter::Write()
{
    do {
        myOut.Bytes("3D Geometry File Format       50");
        myOut.Begin(code::Comment);
        myOut.Bytes("cadex open engine\n\x1A");
        myOut.Put(std::uint8_t{0});
        myOut.End();
        WriteTables();
        WriteEnd();
    } while (myOut.Again());
    return myOut.Ok();
}

void RhinoWriter::WriteTables()
{
    myOut.Begin(code::PropertiesTable);
    myOut.Short(code::LibraryVersion, WrittenLibrary);
    myOut.Short(code::EndOfTable, 0);
    myOut.End();
    WriteSettings();
    WriteEmptyTable(code::BitmapTable);
    WriteEmptyTable(code::MappingTable);
    WriteMaterials();
    WriteEmptyTable(code::LineTypeTable);
    WriteLayers();
    for (const std::uint32_t table : {code::GroupTable, code::FontTable, code::DimensionStyleTable,
                                      code::LightTable, code::HatchPatternTable}) {
        WriteEmptyTable(table);
    }
    WriteDefinitions();
    WriteObjects();
    WriteEmptyTable(code::HistoryTable);
}

void RhinoWriter::WriteEmptyTable(std::uint32_t typeCode)
{
    myOut.Begin(typeCode);
    myOut.Short(code::EndOfTable, 0);
    myOut.End();
}

void RhinoWriter::WriteEnd()
{
    constexpr std::uint64_t EndSize = 4 + 8 + 8;
    const std::uint64_t size = myOut.Position() + EndSize;
    myOut.Begin(code::EndOfFile);
    myOut.Put(size);
    myOut.End();
}

void RhinoWriter::WriteSettings()
{
    myOut.Begin(code::SettingsTable);
    myOut.Begin(code::Units);
    myOut.PutAll({std::int32_t{102}, NumberOf(myOptions.unit)});
    myOut.PutAll({tolerance::Written * myUnitsPerMillimetre, tolerance::WrittenAngle, 0.01});
    myOut.PutAll({std::int32_t{0}, std::int32_t{3}}); // how distances are shown
    myOut.Put(1e-3 / myUnitsPerMillimetre);
    myOut.Text({});
    myOut.End();
    myOut.Short(code::EndOfTable, 0);
    myOut.End();
}

void RhinoWriter::WriteMaterials()
{
    myOut.Begin(code::MaterialTable);
    for (std::size_t i = 0; i < myLayout.materials.size(); ++i) {
        ModelData_Material look;
        myLayout.materials[i].ToMaterial(look);
        const float alpha = look.DiffuseColor().A();
        const double transparency =
            std::isfinite(alpha) ? 1 - std::clamp(static_cast<double>(alpha), 0., 1.) : 0;
        const Base_UTF16String own = myLayout.materials[i].Name();
        const std::string number = "Material " + std::to_string(i + 1);
        myOut.Begin(code::MaterialRecord);
        myOut.BeginObject(MaterialId);
        myOut.Put(std::uint8_t{0x20});
        myOut.BeginVersioned(1, 4);
        myOut.Put(myLayout.IdOf('m', i));
        myOut.Put(static_cast<std::int32_t>(i));
        myOut.Text(own.IsEmpty() ? Base_UTF16String(number.c_str()) : own);
        myOut.Put(Uuid()); // plug-in
        constexpr PackedColour White = 0xFFFFFF;
        myOut.PutAll({Packed(look.AmbientColor()), Packed(look.DiffuseColor()), Packed(look.EmissionColor()),
                      Packed(look.SpecularColor()), White, White});
        myOut.PutAll({1., 0., std::clamp(look.Shininess() / 128., 0., 1.) * 255., transparency});
        FileTextures textures;
        myLayout.materials[i].TextureSet().Accept(textures);
        myOut.BeginVersioned(1, 0);
        myOut.Put(static_cast<std::int32_t>(textures.files.size()));
        for (std::size_t k = 0; k < textures.files.size(); ++k) {
            myOut.BeginObject(TextureId);
            myOut.BeginVersioned(1, 0);
            myOut.Put(myLayout.IdOf('t', i, k));
            myOut.Put(std::int32_t{1});
            myOut.Text(textures.files[k]);
            myOut.Put(std::uint8_t{1});
            myOut.PutAll<std::int32_t>({1, 1, 2, 2, 0, 0, 0}); // colours the surface; filters, wrapping
            myOut.PutIdentity();
            myOut.PutAll({std::uint32_t{0}, std::uint32_t{0}});
            myOut.Put(Uuid());
            myOut.PutAll({0., 1.});             // range of bumps
            myOut.PutAll({1., 0., 0., 1., 0.}); // blending
            myOut.Put(std::uint32_t{0});
            myOut.PutAll({1., 0., 0., 1.});
            myOut.Put(std::int32_t{0});
            myOut.End();
            myOut.EndData();
            myOut.EndObject();
        }
        myOut.End();
        myOut.Text({}); // plug-in's library
        myOut.Put(std::int32_t{0});
        myOut.PutAll<std::uint8_t>({0, 0, 0});
        myOut.PutAll({1., 1., 1.56}); // gloss, refraction
        myOut.End();
        myOut.EndData();
        myOut.EndObject();
        myOut.End();
    }
    myOut.Short(code::EndOfTable, 0);
    myOut.End();
}

void RhinoWriter::WriteLayers()
{
    myOut.Begin(code::LayerTable);
    std::unordered_map<std::string, std::size_t> used;
    for (std::size_t i = 0; i < std::max<std::size_t>(myLayout.roots.size(), 1); ++i) {
        const ModelData_SceneGraphElement root = i < myLayout.roots.size()
                                                     ? myPlan.definitions[myLayout.roots[i]].element
                                                     : ModelData_SceneGraphElement();
        const bool isNamed = !root.IsNull() && !root.Name().IsEmpty();
        const Base_UTF16String& fallback = myPlan.modelName;
        const Base_UTF16String name = isNamed              ? root.Name()
                                      : fallback.IsEmpty() ? Base_UTF16String("Default")
                                                           : fallback;
        constexpr PackedColour Black = 0;
        myOut.Begin(code::LayerRecord);
        myOut.BeginObject(LayerId);
        myOut.Put(std::uint8_t{0x18});
        myOut.PutAll<std::int32_t>({0, static_cast<std::int32_t>(i), -1, -1, 0});
        myOut.Put(Black);
        myOut.PutAll<std::int16_t>({0, 0}); // line style
        myOut.PutAll({0., 0.});
        myOut.Text(NumberedName(name, ++used[name.ToUTF8()]));
        myOut.Put(std::uint8_t{1}); // visible
        myOut.Put(std::int32_t{-1});
        myOut.Put(Black);
        myOut.Put(0.);
        myOut.Put(std::uint8_t{0}); // not locked
        myOut.Put(myLayout.IdOf('l', i));
        myOut.Put(Uuid()); // no parent
        myOut.Put(std::uint8_t{1});
        myOut.BeginVersioned(1, 0);
        myOut.Put(std::int32_t{0});
        myOut.End();
        myOut.Put(Uuid());
        myOut.EndData();
        if (root.IsOfType<ModelData_Assembly>()) {
            WriteStrings(root.Properties());
        }
        myOut.EndObject();
        myOut.End();
    }
    myOut.Short(code::EndOfTable, 0);
    myOut.End();
}

void RhinoWriter::WriteDefinitions()
{
    myOut.Begin(code::DefinitionTable);
    for (const std::size_t index : myPlan.order) { // what blocks hold stands before them
        if (myLayout.blocks[index].isWritten) {
            WriteDefinition(index);
        }
    }
    myOut.Short(code::EndOfTable, 0);
    myOut.End();
}

void RhinoWriter::WriteDefinition(std::size_t index)
{
    const mesh::ExportPlan::Definition& definition = myPlan.definitions[index];
    const std::int32_t unit = NumberOf(myOptions.unit);
    const double metres = 1e-3 / myUnitsPerMillimetre;
    myOut.Begin(code::DefinitionRecord);
    myOut.BeginObject(DefinitionId);
    myOut.Put(std::uint8_t{0x14});
    myOut.Put(myLayout.IdOf('d', index));
    myOut.Put(static_cast<std::int32_t>(myLayout.blocks[index].objects));
    for (std::size_t i = 0; i < myLayout.blocks[index].objects; ++i) {
        myOut.Put(myLayout.IdOf('o', index, i));
    }
    const Base_UTF16String name = definition.element.Name();
    myOut.Text(myLayout.blocks[index].name);
    myOut.Text(myLayout.blocks[index].name == name ? Base_UTF16String() : name); // description
    myOut.Text({});                                                              // where it is described
    myOut.Text({});
    PutEmptyBox(myOut);
    myOut.Put(static_cast<std::int32_t>(Definition::Kind::Static));
    myOut.Text({});                     // no other file
    myOut.PutAll<std::int64_t>({0, 0}); // and so no checksum of it
    myOut.PutAll<std::uint32_t>({0, 0, 0, 0, 0, 0, 0, 0});
    myOut.Put(unit);
    myOut.Put(metres);
    myOut.Put(std::uint8_t{0});
    myOut.BeginVersioned(1, 0);
    myOut.Put(unit);
    myOut.Put(metres);
    myOut.Text({});
    myOut.End();
    myOut.EndData();
    WriteStrings(definition.element.Properties());
    myOut.EndObject();
    myOut.End();
}

void RhinoWriter::WriteObjects()
{
    myOut.Begin(code::ObjectTable);
    const std::size_t count = myPlan.order.size() + myLayout.roots.size();
    std::size_t done = 0;
    const auto goesOn = [&] { return myOut.IsMeasuring() || internal::Progress::GoesOn(done++, count); };
    for (std::size_t i = 0; i < myPlan.order.size() && goesOn(); ++i) {
        if (myLayout.blocks[myPlan.order[i]].isWritten) {
            WriteMembers(myPlan.order[i], false);
        }
    }
    for (std::size_t i = 0; i < myLayout.roots.size() && goesOn(); ++i) {
        WriteMembers(myLayout.roots[i], true);
    }
    myOut.Short(code::EndOfTable, 0);
    myOut.End();
}

/// The objects of a block, or those on the layer of a root.
void RhinoWriter::WriteMembers(std::size_t index, bool isRoot)
{
    const mesh::ExportPlan::Definition& definition = myPlan.definitions[index];
    Attributes attributes;
    attributes.layer = isRoot ? myLayout.blocks[index].layer : 0;
    attributes.isMember = !isRoot;
    attributes.id = myLayout.IdOf('o', index);
    if (definition.element.IsOfType<ModelData_Part>()) {
        if (isRoot) {
            attributes.name = definition.element.Name();
            attributes.properties = definition.element.Properties();
        }
        WriteSets(index, attributes);
        return;
    }
    for (std::size_t i = 0; i < definition.occurrences.size() && myOut.Ok(); ++i) {
        const mesh::ExportPlan::Occurrence& occurrence = definition.occurrences[i];
        attributes.id = myLayout.IdOf('o', index, i);
        WriteOccurrence(occurrence, attributes, myLayout.IsPlain(occurrence, definition, isRoot));
    }
}

void RhinoWriter::WriteOccurrence(const mesh::ExportPlan::Occurrence& occurrence, Attributes attributes,
                                  bool isPlain)
{
    attributes.name = occurrence.instance.Name();
    if (isPlain) {
        attributes.properties = myPlan.definitions[occurrence.definition].element.Properties();
        WriteSets(occurrence.definition, attributes);
    } else {
        attributes.properties = occurrence.instance.Properties();
        attributes.appearance = occurrence.instance.Appearance();
        WriteReference(occurrence, attributes);
    }
}

void RhinoWriter::WriteReference(const mesh::ExportPlan::Occurrence& occurrence, const Attributes& attributes)
{
    const RhinoLayout::Block& block = myLayout.blocks[occurrence.definition];
    const mesh::Matrix3 linear = mesh::Multiply(occurrence.rotation, block.extra);
    BeginObjectRecord(ReferenceKind);
    myOut.BeginObject(ReferenceId);
    myOut.Put(std::uint8_t{0x10});
    myOut.Put(myLayout.IdOf('d', block.base));
    for (std::size_t row = 0; row < 3; ++row) {
        myOut.PutAll({linear[3 * row], linear[3 * row + 1], linear[3 * row + 2],
                      occurrence.translation[row] * myUnitsPerMillimetre});
    }
    myOut.PutAll({0., 0., 0., 1.});
    PutEmptyBox(myOut);
    myOut.EndData();
    myOut.EndObject();
    EndObjectRecord(attributes);
}

std::size_t RhinoWriter::WriteSets(std::size_t index, Attributes attributes)
{
    const mesh::ExportPlan::Definition& definition = myPlan.definitions[index];
    mesh::Matrix3 linear = definition.residual;
    for (double& value : linear) {
        value *= myUnitsPerMillimetre;
    }
    std::size_t count = 0;
    const auto nextId = [&] {
        // a plain part has one object, whose id its parent gave
        if (attributes.isMember && count > 0) {
            attributes.id = myLayout.IdOf('o', index, count);
        } else if (count > 0) {
            attributes.id = myLayout.IdOf('s', index, count);
        }
        ++count;
    };
    const ModelData_PolyShapeList& sets = SetsOf(definition.element);
    for (std::size_t i = 0; i < sets.Size() && myOut.Ok(); ++i) {
        const ModelData_PolyVertexSet& set = sets[i];
        attributes.appearance =
            set.Appearance().IsNull() ? definition.element.Appearance() : set.Appearance();
        if (set.IsOfType<ModelData_IndexedTriangleSet>()) {
            nextId();
            BeginObjectRecord(MeshKind);
            WriteMesh(myOut, *static_cast<internal::TriangleSetImpl*>(set.Impl()), linear);
            EndObjectRecord(attributes);
        } else if (set.IsOfType<ModelData_PolyLineSet>()) {
            for (const auto& chain : ChainsOf(*static_cast<internal::PolyLineSetImpl*>(set.Impl()))) {
                nextId();
                BeginObjectRecord(chain.size() == 1 ? PointKind : CurveKind);
                WriteChain(chain, linear);
                EndObjectRecord(attributes);
            }
        }
    }
    return count;
}

/// A polyline, or a point of its own.
void RhinoWriter::WriteChain(const std::vector<ModelData_Point>& chain, const mesh::Matrix3& linear)
{
    const auto put = [&](const ModelData_Point& point) {
        const mesh::Vector3 mapped = mesh::Multiply(linear, mesh::ToVector(point));
        myOut.PutAll({mapped[0], mapped[1], mapped[2]});
    };
    myOut.BeginObject(chain.size() == 1 ? PointId : PolylineId);
    myOut.Put(std::uint8_t{0x10});
    if (chain.size() == 1) {
        put(chain.front());
    } else {
        myOut.Put(static_cast<std::int32_t>(chain.size()));
        for (const ModelData_Point& point : chain) {
            put(point);
        }
        myOut.Put(static_cast<std::int32_t>(chain.size()));
        for (std::size_t i = 0; i < chain.size(); ++i) {
            myOut.Put(static_cast<double>(i));
        }
        myOut.Put(std::int32_t{3});
    }
    myOut.EndData();
    myOut.EndObject();
}

void RhinoWriter::BeginObjectRecord(std::int64_t kind)
{
    myOut.Begin(code::ObjectRecord);
    myOut.Short(code::ObjectKind, kind);
}

void RhinoWriter::EndObjectRecord(const Attributes& attributes)
{
    const auto putItem = [&](std::uint8_t item, auto value) {
        myOut.Put(item);
        myOut.Put(value);
    };
    const ModelData_Appearance& look = attributes.appearance;
    const bool isMaterial = IsMaterial(look);
    const bool isByParent = look.IsNull() && attributes.isMember;
    ModelData_Color colour;
    const bool hasColour = !look.IsNull() && look.ToColor(colour);
    myOut.Begin(code::ObjectAttributes);
    myOut.Put(std::uint8_t{0x20});
    myOut.Put(attributes.id);
    myOut.Put(attributes.layer);
    if (!attributes.name.IsEmpty()) {
        myOut.Put(std::uint8_t{1});
        myOut.Text(attributes.name);
    }
    if (isMaterial) {
        putItem(4, myLayout.materialOf.at(look));
    }
    if (hasColour) {
        putItem(6, Packed(colour));
    }
    if (attributes.isMember) {
        putItem(12, ObjectMode::DefinitionMember);
    }
    if (hasColour || isByParent) {
        putItem(13, isByParent ? ColourSource::Parent : ColourSource::Object);
    }
    if (isMaterial || isByParent) {
        putItem(16, isByParent ? MaterialSource::Parent : MaterialSource::Object);
    }
    myOut.Put(std::uint8_t{0});
    myOut.End();
    if (!attributes.properties.IsEmpty()) {
        myOut.Begin(code::AttributesUserData);
        WriteStrings(attributes.properties);
        myOut.Short(code::ObjectEnd, 0);
        myOut.End();
    }
    myOut.Short(code::ObjectRecordEnd, 0);
    myOut.End();
}

void RhinoWriter::WriteStrings(const ModelData_PropertyTable& properties)
{
    if (properties.IsEmpty()) {
        return;
    }
    part21::PropertyTexts visitor;
    properties.Accept(visitor);
    myOut.BeginUserData(UserStringsId);
    myOut.BeginVersioned(1, 0);
    myOut.Put(static_cast<std::int32_t>(visitor.texts.size()));
    for (const auto& [key, value] : visitor.texts) {
        myOut.BeginVersioned(1, 0);
        myOut.Text(key);
        myOut.Text(value);
        myOut.End();
    }
    myOut.End();
    myOut.EndUserData();
}

} // namespace cadex::rhino
