#include "sdk/rhino/RhinoTables.h"

#include <cmath>

namespace cadex::rhino {

namespace {

constexpr Uuid DocumentStringsId("06f3218e-f5ec-4f6c-b74c-14583f0ed7bc");

/// Objects stand within objects (segments of curves, meshes of faces); deeper ones are refused.
constexpr int DeepestObject = 32;

// Versions of the writing library from which layouts differ.
constexpr std::uint32_t ToolkitWithItems = 200712190;
constexpr std::uint32_t ToolkitWithParents = 200505110;
constexpr std::uint32_t ToolkitWithComponents = 2348833910;

/// Millimetres of the numbered units of length; 0 where there is none.
constexpr double Millimetres[] = {0,       1e-3, 1,    10,   1e3, 1e6, 2.54e-5, 0.0254, 25.4, 304.8,
                                  1609344, 0,    1e-7, 1e-6, 100, 1e4, 1e5,     1e9,    1e12, 914.4};
constexpr int CustomUnit = 11;

/// Counts the objects that are open.
class Nesting
{
public:
    explicit Nesting(ArchiveFacts& facts) : myFacts(facts)
    {
        if (++myFacts.depth > DeepestObject) {
            --myFacts.depth;
            throw Unreadable("objects are nested too deep");
        }
    }
    ~Nesting() { --myFacts.depth; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

private:
    ArchiveFacts& myFacts;
};

void ReadStrings(Chunk& body, UserStrings& strings)
{
    Chunk::Version version;
    Chunk list = body.Versioned(version);
    const std::size_t count = list.Count(16);
    for (std::size_t i = 0; i < count; ++i) {
        Chunk pair = list.Versioned(version);
        Base_UTF16String key = pair.Text();
        strings.emplace_back(std::move(key), pair.Text());
        pair.Finish();
    }
    list.Finish();
}

void ReadExactPoints(Chunk& body, std::vector<double>& points)
{
    Chunk::Version version;
    Chunk data = body.Versioned(version);
    data.Skip(16); // two counts and two checksums
    points = data.Items<double>(data.Count(24) * 3);
    data.Finish();
}

void ReadUserDatum(Chunk& chunk, ObjectHead& head)
{
    const auto readHeader = [](Chunk& header) {
        const Uuid classId = header.Id();
        header.SkipRest();
        return classId;
    };
    Uuid classId;
    if (chunk.ByteVersion().major == 2) {
        Chunk header = chunk.Child(code::UserDataHeader);
        classId = readHeader(header);
    } else {
        classId = chunk.Id();
        chunk.Skip(16 + 4 + 128);
    }
    Chunk body = chunk.Child(code::Anonymous);
    if (classId == UserStringsId) {
        ReadStrings(body, head.strings);
        body.Finish();
    } else if (classId == ExactPointsId) {
        ReadExactPoints(body, head.exactPoints);
        body.Finish();
    }
    chunk.Finish();
}

/// The identity in front of components of newer files: either each item has a byte that says whether it is
/// there, or bits say so for all of them.
void ReadComponent(Chunk& parent, Uuid& id, int& index, Base_UTF16String& name)
{
    Chunk chunk = parent.Child();
    chunk.Skip(8); // version
    const bool isByBits = chunk.Code() == code::Anonymous;
    const std::uint32_t bits = isByBits ? chunk.U32() : 0;
    const auto hasItem = [&](std::uint32_t bit) { return isByBits ? (bits & bit) != 0 : chunk.U8() == 1; };
    if (!isByBits && chunk.Code() != code::Component) {
        throw Unreadable("a component has no identity");
    }
    if (hasItem(0)) {
        chunk.Skip(12); // serial numbers
    }
    if (hasItem(1)) {
        id = chunk.Id();
    }
    if (hasItem(2)) {
        chunk.Skip(isByBits ? 16 : 4); // parent; kind
    }
    if (hasItem(4)) {
        index = chunk.I32();
    }
    if (hasItem(8)) {
        name = chunk.Text();
    }
    chunk.Finish();
}

/// Adds the file of a texture that colours the surface.
void ReadTexture(Chunk& data, std::vector<Base_UTF16String>& textures)
{
    constexpr int ColourTexture = 1;
    Chunk::Version version;
    Chunk chunk = data.Versioned(version);
    chunk.Skip(16 + 4);
    const Base_UTF16String file = chunk.Text();
    const bool isOn = chunk.Bool();
    if (isOn && chunk.I32() == ColourTexture && !file.IsEmpty()) {
        textures.push_back(file);
    }
    chunk.SkipRest();
}

void ReadMaterialBody(Chunk& chunk, Material& material)
{
    chunk.Skip(16); // plug-in
    material.ambient = chunk.U32();
    material.diffuse = chunk.U32();
    material.emission = chunk.U32();
    material.specular = chunk.U32();
    chunk.Skip(8 + 16); // reflection, transparent colour; refraction, reflectivity
    material.shine = chunk.Double();
    material.transparency = chunk.Double();
    Chunk::Version version; // the list of textures has a count where versions stand elsewhere
    Chunk textures = chunk.Versioned(version);
    const int count = textures.I32();
    for (int i = 0; i < count; ++i) {
        ReadObject(textures, [&](const Uuid& classId, Chunk& data) {
            if (classId == TextureId) {
                ReadTexture(data, material.textures);
            }
        });
    }
    chunk.SkipRest();
}

void ReadOldMaterial(Chunk& data, Material& material)
{
    material.ambient = data.U32();
    material.diffuse = data.U32();
    material.emission = data.U32();
    material.specular = data.U32();
    material.shine = data.Double();
    material.transparency = data.Double();
    data.Skip(4 + 4 + 20);
    if (Base_UTF16String file = data.Text(); !file.IsEmpty()) {
        material.textures.push_back(std::move(file));
    }
    data.Skip(8);
    data.Text(); // bump
    data.Skip(16);
    data.Text(); // environment
    data.Skip(8);
    material.index = data.I32();
    data.Skip(16);
    data.Text(); // plug-in
    material.name = data.Text();
}

/// "wheel (2)" described as "wheel" is called wheel: blocks have to differ in their names.
void TakePlainName(Definition& definition)
{
    const std::string name = definition.name.ToUTF8();
    const std::string plain = definition.description.ToUTF8();
    const bool isNumbered = name.size() > plain.size() + 3 && name.starts_with(plain + " (") &&
                            name.back() == ')' &&
                            name.find_first_not_of("0123456789", plain.size() + 2) == name.size() - 1;
    if (!plain.empty() && isNumbered) {
        definition.name = definition.description;
        definition.description.Clear();
    }
}

/// Items with a number each, up to 0. A number that is not known ends the reading: newer files append.
void ReadAttributeItems(Chunk& chunk, Attributes& attributes)
{
    for (std::uint8_t item = chunk.U8(); item != 0; item = chunk.U8()) {
        switch (item) {
        case 1:
            attributes.name = chunk.Text();
            break;
        case 2:
            attributes.url = chunk.Text();
            break;
        case 3:
        case 7:
        case 10:
        case 22:
            chunk.Skip(4);
            break;
        case 4:
            attributes.material = chunk.I32();
            break;
        case 5:
            chunk.SkipChild(); // for renderers
            break;
        case 6:
            attributes.colour = chunk.U32();
            break;
        case 8:
            chunk.Skip(8);
            break;
        case 9:
        case 14:
        case 15:
        case 17:
        case 19:
            chunk.Skip(1);
            break;
        case 11:
            attributes.visible = chunk.Bool();
            break;
        case 12:
            attributes.mode = static_cast<ObjectMode>(chunk.U8() & 15);
            break;
        case 13:
            attributes.colourSource = static_cast<ColourSource>(chunk.U8());
            break;
        case 16:
            attributes.materialSource = static_cast<MaterialSource>(chunk.U8());
            break;
        case 18:
            chunk.Skip(chunk.Count(4) * 4);
            break;
        case 20:
            chunk.Skip(16);
            break;
        case 21:
            chunk.Skip(chunk.Count(32) * 32);
            break;
        default:
            chunk.SkipRest();
            return;
        }
    }
}

void ReadOldAttributes(Chunk& chunk, int minor, Attributes& attributes)
{
    attributes.layer = chunk.I32();
    attributes.material = chunk.I32();
    attributes.colour = chunk.U32();
    chunk.Skip(20 + 4);
    attributes.mode = static_cast<ObjectMode>(chunk.U8() & 15);
    attributes.colourSource = static_cast<ColourSource>(chunk.U8());
    chunk.Skip(1);
    attributes.materialSource = static_cast<MaterialSource>(chunk.U8());
    attributes.name = chunk.Text();
    attributes.url = chunk.Text();
    if (minor >= 1) {
        chunk.Skip(chunk.Count(4) * 4); // groups
    }
    if (minor >= 2) {
        attributes.visible = chunk.Bool();
    }
    chunk.SkipRest();
}

} // namespace

ObjectHead ReadObject(Chunk& parent, const std::function<void(const Uuid& classId, Chunk& data)>& readData)
{
    const Nesting nesting(parent.Facts());
    ObjectHead head;
    Chunk object = parent.Child(code::Object);
    Chunk classChunk = object.Child(code::ObjectClass);
    head.classId = classChunk.Id();
    classChunk.Finish();
    if (head.classId.IsNil()) {
        return head;
    }
    Chunk data = object.Child(code::ObjectData);
    readData(head.classId, data);
    data.Finish();
    ReadUserData(object, head);
    object.Finish();
    return head;
}

void ReadUserData(Chunk& chunk, ObjectHead& head)
{
    while (!chunk.AtEnd()) {
        Chunk item = chunk.Child();
        if (item.IsShort()) {
            break;
        }
        if (item.Code() == code::UserData) {
            ReadUserDatum(item, head);
        }
    }
}

Base_UTF16String NumberedName(const Base_UTF16String& name, std::size_t number)
{
    return number < 2 ? name : name + Base_UTF16String((" (" + std::to_string(number) + ")").c_str());
}

void ReadProperty(Chunk& record, Document& document)
{
    if (record.Code() == code::LibraryVersion) {
        record.Facts().toolkit = static_cast<std::uint32_t>(record.Value());
    } else if (record.Code() == code::Notes) {
        record.ByteVersion();
        record.Skip(4);
        document.notes = record.Text();
    } else if (record.Code() == code::Application) {
        record.ByteVersion();
        document.application = record.Text();
        document.applicationUrl = record.Text();
        document.applicationDetails = record.Text();
    }
}

void ReadSetting(Chunk& record, Document& document)
{
    if (record.Code() != code::Units) {
        return;
    }
    const int version = record.I32();
    const int unit = record.I32();
    record.Skip(24); // tolerances
    const double known = unit > 0 && unit < static_cast<int>(std::size(Millimetres)) ? Millimetres[unit] : 0;
    if (known > 0) {
        document.millimetres = known;
    } else if (unit == CustomUnit && version >= 102) {
        record.Skip(8);
        const double metres = record.Double();
        document.millimetres = std::isfinite(metres) && metres > 0 ? metres * 1000 : 1;
    }
}

void ReadUserTable(Chunk& table, Document& document)
{
    Chunk head = table.Child();
    const bool isStrings = head.Code() == code::UserTableUuid && head.Id() == DocumentStringsId;
    while (isStrings && !table.AtEnd()) {
        Chunk record = table.Child();
        if (record.Code() == code::UserTableData) {
            ObjectHead strings = ReadObject(record, [](const Uuid&, Chunk& data) { data.SkipRest(); });
            document.strings = std::move(strings.strings);
        }
    }
}

Layer ReadLayer(Chunk& record)
{
    Layer layer;
    ObjectHead head = ReadObject(record, [&](const Uuid&, Chunk& data) {
        const int minor = data.ByteVersion().minor;
        const int mode = data.I32();
        layer.index = data.I32();
        data.Skip(4);
        layer.material = data.I32();
        data.Skip(4);
        layer.colour = data.U32();
        data.Skip(20);
        layer.name = data.Text();
        layer.visible = minor >= 1 ? data.Bool() : mode != 1;
        if (minor >= 2) {
            data.Skip(4);
        }
        if (minor >= 3) {
            data.Skip(4 + 8);
        }
        layer.locked = minor >= 4 ? data.Bool() : mode == 2;
        if (minor >= 5) {
            layer.id = data.Id();
        }
        if (minor >= 6 && record.Facts().toolkit > ToolkitWithParents) {
            layer.parent = data.Id();
        }
        data.SkipRest();
    });
    layer.strings = std::move(head.strings);
    return layer;
}

Material ReadMaterial(Chunk& record)
{
    Material material;
    ReadObject(record, [&](const Uuid&, Chunk& data) {
        const ArchiveFacts& facts = data.Facts();
        Chunk::Version version;
        if (facts.version >= 60 && facts.toolkit >= ToolkitWithComponents) {
            Chunk chunk = data.Versioned(version);
            ReadComponent(chunk, material.id, material.index, material.name);
            ReadMaterialBody(chunk, material);
        } else if (data.ByteVersion().major == 2) {
            Chunk chunk = data.Versioned(version);
            material.id = chunk.Id();
            material.index = chunk.I32();
            material.name = chunk.Text();
            ReadMaterialBody(chunk, material);
        } else {
            ReadOldMaterial(data, material);
        }
        data.SkipRest();
    });
    return material;
}

Definition ReadDefinition(Chunk& record)
{
    Definition definition;
    ObjectHead head = ReadObject(record, [&](const Uuid&, Chunk& data) {
        if (data.Facts().version >= 60) {
            Chunk::Version version;
            Chunk chunk = data.Versioned(version);
            int index = -1;
            ReadComponent(chunk, definition.id, index, definition.name);
            definition.kind = static_cast<Definition::Kind>(chunk.I32());
            chunk.SkipChild(); // unit
            definition.description = chunk.Text();
            definition.url = chunk.Text();
            chunk.Text(); // its tag
            chunk.Skip(48);
            if (chunk.Bool()) {
                definition.members = chunk.Array<Uuid>();
            }
        } else {
            data.ByteVersion();
            definition.id = data.Id();
            definition.members = data.Array<Uuid>();
            definition.name = data.Text();
            definition.description = data.Text();
            definition.url = data.Text();
            data.Text();
            data.Skip(48);
            definition.kind = static_cast<Definition::Kind>(data.I32());
            definition.source = data.Text();
        }
        data.SkipRest();
    });
    definition.strings = std::move(head.strings);
    TakePlainName(definition);
    return definition;
}

Attributes ReadAttributes(Chunk& chunk)
{
    Attributes attributes;
    const Chunk::Version version = chunk.ByteVersion();
    attributes.id = chunk.Id();
    if (chunk.Facts().version >= 5 && chunk.Facts().toolkit >= ToolkitWithItems) {
        attributes.layer = chunk.I32();
        ReadAttributeItems(chunk, attributes);
    } else {
        ReadOldAttributes(chunk, version.minor, attributes);
    }
    return attributes;
}

} // namespace cadex::rhino
