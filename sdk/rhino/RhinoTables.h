// What stands in the tables of a 3DM file beside geometry: units, notes, layers, materials, definitions of
// blocks, and the attributes of objects.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "sdk/rhino/RhinoChunks.h"

namespace cadex::rhino {

/// Classes of objects and of user data that are read and written.
inline constexpr Uuid MeshId("4ed7d4e4-e947-11d3-bfe5-0010830122f0");
inline constexpr Uuid PointId("c3101a1d-f157-11d3-bfe7-0010830122f0");
inline constexpr Uuid PolylineId("4ed7d4e6-e947-11d3-bfe5-0010830122f0");
inline constexpr Uuid PolyCurveId("4ed7d4e0-e947-11d3-bfe5-0010830122f0");
inline constexpr Uuid NurbsSurfaceId("4ed7d4de-e947-11d3-bfe5-0010830122f0");
inline constexpr Uuid ReferenceId("f9cfb638-b9d4-4340-87e3-c56e7865d96a");
inline constexpr Uuid DefinitionId("26f8bff6-2618-417f-a158-153d64a94989");
inline constexpr Uuid LayerId("95809813-e985-11d3-bfe5-0010830122f0");
inline constexpr Uuid MaterialId("60b5dbbc-e660-11d3-bfe4-0010830122f0");
inline constexpr Uuid TextureId("d6ff106d-329b-4f29-97e2-fd282a618020");
inline constexpr Uuid UserStringsId("ce28de29-f4c5-4faa-a50a-c3a6849b6329");
inline constexpr Uuid ExactPointsId("17f24e75-21be-4a7b-9f3d-7f85225247e3");

/// Red in the lowest byte, then green, blue and transparency (0 is opaque).
using PackedColour = std::uint32_t;
inline constexpr PackedColour UnsetColour = 0xFFFFFFFF;

/// Key and value, in the order of the file.
using UserStrings = std::vector<std::pair<Base_UTF16String, Base_UTF16String>>;

/// The object inside a class wrapper: its class, its data, and the user data behind them.
struct ObjectHead
{
    Uuid classId;
    UserStrings strings;
    std::vector<double> exactPoints; ///< of a mesh in files of version 5: three numbers a vertex
};

/// Reads the wrapper around an object. `readData` gets the class and the chunk with the data and may leave
/// any of it unread; it is not called for the nil class, which stands for no object.
ObjectHead ReadObject(Chunk& parent, const std::function<void(const Uuid& classId, Chunk& data)>& readData);

/// Reads user data up to the end of the chunk or the code that closes it.
void ReadUserData(Chunk& chunk, ObjectHead& head);

enum class ColourSource : std::uint8_t
{
    Layer = 0,
    Object = 1,
    Material = 2,
    Parent = 3
};

enum class MaterialSource : std::uint8_t
{
    Layer = 0,
    Object = 1,
    Parent = 3
};

enum class ObjectMode : std::uint8_t
{
    Normal = 0,
    Hidden = 1,
    Locked = 2,
    DefinitionMember = 3 ///< shown by references to its definition alone
};

struct Attributes
{
    Uuid id;
    Base_UTF16String name;
    Base_UTF16String url;
    int layer = 0;
    int material = -1;
    PackedColour colour = 0;
    bool visible = true;
    ObjectMode mode = ObjectMode::Normal;
    ColourSource colourSource = ColourSource::Layer;
    MaterialSource materialSource = MaterialSource::Layer;
    UserStrings strings;

    bool IsShown() const { return visible && mode != ObjectMode::Hidden; }
};

struct Layer
{
    int index = -1;
    Uuid id;
    Uuid parent;
    Base_UTF16String name;
    PackedColour colour = 0;
    int material = -1;
    bool visible = true;
    bool locked = false;
    UserStrings strings;
};

struct Material
{
    int index = -1;
    Uuid id;
    Base_UTF16String name;
    PackedColour ambient = 0;
    PackedColour diffuse = 0;
    PackedColour emission = 0;
    PackedColour specular = 0;
    double shine = 0;                       ///< 0 to 255
    double transparency = 0;                ///< 0 to 1
    std::vector<Base_UTF16String> textures; ///< files of those that colour the surface
};

struct Definition
{
    enum class Kind
    {
        Static = 1,
        LinkedAndEmbedded = 2,
        Linked = 3 ///< its members are in another file
    };
    Uuid id;
    Base_UTF16String name;
    Base_UTF16String description;
    Base_UTF16String url;
    Base_UTF16String source; ///< file of a linked one
    Kind kind = Kind::Static;
    std::vector<Uuid> members;
    UserStrings strings;
};

/// The name of the n-th thing of a name: with the number in brackets from the second on.
Base_UTF16String NumberedName(const Base_UTF16String& name, std::size_t number);

/// The document as a whole.
struct Document
{
    double millimetres = 1; ///< of one unit of the file
    Base_UTF16String notes;
    Base_UTF16String application;
    Base_UTF16String applicationUrl;
    Base_UTF16String applicationDetails;
    UserStrings strings;
};

void ReadProperty(Chunk& record, Document& document);
void ReadSetting(Chunk& record, Document& document);
/// A user table that a plug-in wrote: only the document's own strings are known.
void ReadUserTable(Chunk& table, Document& document);
Layer ReadLayer(Chunk& record);
Material ReadMaterial(Chunk& record);
Definition ReadDefinition(Chunk& record);
Attributes ReadAttributes(Chunk& chunk);

} // namespace cadex::rhino
