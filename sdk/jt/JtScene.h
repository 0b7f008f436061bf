// The scene graph of a JT file: its nodes, how they look and are placed, and their properties.
//
//     const Scene scene = ReadScene(container, budget);
//     for (const std::int32_t child : scene.nodes.at(scene.root).children) { ... }
//
// NOTE: JT File Format Reference, "LSG Segment". Elements refer to each other by ids of the file's own.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "sdk/jt/JtContainer.h"

namespace cadex::jt {

/// Row by row, of row vectors: the translation is in the last row.
using Matrix = std::array<double, 16>;

struct Material
{
    using Rgba = std::array<float, 4>;
    Rgba ambient{};
    Rgba diffuse{};
    Rgba specular{};
    Rgba emission{};
    float shininess = 0;
    bool isBlended = false; ///< else the diffuse colour covers, whatever its last number says
};

/// An attribute of nodes; neither material nor transform: of a kind that is not shown.
struct Attribute
{
    bool isIgnored = false; ///< it does not count
    std::optional<Material> material;
    std::optional<Matrix> transform;
};

/// Data that are loaded when they are asked for.
struct LateLoaded
{
    Guid segment;
    int type = 0; ///< of the segment
};
struct Date
{
    std::array<std::int16_t, 6> fields{}; ///< year, month (0 .. 11), day, hour, minute, second
};
using PropertyValue = std::variant<std::u16string, std::int32_t, float, Date, LateLoaded>;

struct Property
{
    std::u16string key;
    PropertyValue value;
};

struct Node
{
    enum class Kind : std::uint8_t
    {
        Group,
        Partition,
        Assembly,
        Part,
        Instance,
        Levels, ///< children are levels of detail, the finest first
        Switch,
        Shape,
        NullShape,
        Primitive, ///< a box, sphere ... of no triangles
        Wires      ///< of a harness
    };
    Kind kind = Kind::Group;
    bool isHidden = false;
    std::vector<std::int32_t> attributes;
    std::vector<std::int32_t> children;
    std::int32_t selected = 0;  ///< of a switch: which child is shown
    std::u16string file;        ///< of a partition: where its nodes are, unless it has children
    std::array<float, 6> box{}; ///< of a shape, in its own coordinates
    float area = 0;             ///< of a shape
    std::vector<Property> properties;

    /// Null when it has none of that key.
    const std::u16string* Text(std::u16string_view key) const;
};

struct Scene
{
    std::unordered_map<std::int32_t, Node> nodes;
    std::unordered_map<std::int32_t, Attribute> attributes;
    std::int32_t root = 0;
    std::size_t textures = 0; ///< images that are left out
};

/// Throws Unreadable. `unpacked` counts bytes.
Scene ReadScene(const Container& file, Budget& unpacked);

/// What a segment of meta data says of the node that names it.
std::vector<Property> ReadMetaData(Bytes in);

} // namespace cadex::jt
