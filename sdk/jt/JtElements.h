// The elements that segments are made of: a length, the class, and the data.
#pragma once

#include <cstdint>

#include "sdk/jt/JtBytes.h"

namespace cadex::jt {

/// Ids of classes.
namespace kind {
inline constexpr Guid End("ffffffff-ffff-ffff-ffff-ffffffffffff"); ///< of a list of elements
inline constexpr Guid BaseNode("10dd1035-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid Group("10dd101b-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid Instance("10dd102a-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid Levels("10dd102c-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid RangeLevels("10dd104c-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid Assembly("ce357245-38fb-11d1-a506-006097bdc6e1");
inline constexpr Guid Part("ce357244-38fb-11d1-a506-006097bdc6e1");
inline constexpr Guid Partition("10dd103e-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid Switch("10dd10f3-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid NullShape("d239e7b6-dd77-4289-a07d-b0ee79f79494");
inline constexpr Guid BaseShape("10dd1059-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid VertexShape("10dd107f-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid Triangles("10dd1077-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid Polylines("10dd1046-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid Polygons("10dd1048-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid Points("98134716-0010-0818-1998-080009835d5a");
inline constexpr Guid Primitives("e40373c1-1ad9-11d3-9daf-00a0c9c7dd2c");
inline constexpr Guid Wires("4cc7a521-0728-11d3-9d8b-00a0c9c7dd2c");
inline constexpr Guid MaterialAttribute("10dd1030-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid TransformAttribute("10dd1083-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid TextureAttribute("10dd1073-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid StringProperty("10dd106e-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid IntegerProperty("10dd102b-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid FloatProperty("10dd1019-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid DateProperty("ce357246-38fb-11d1-a506-006097bdc6e1");
inline constexpr Guid LateLoadedProperty("e0b05be5-fbbd-11d1-a3a7-00aa00d10954");
inline constexpr Guid MetaDataElement("ce357247-38fb-11d1-a506-006097bdc6e1");
inline constexpr Guid TriangleLevel("10dd10ab-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid PolylineLevel("10dd10a1-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid PolygonLevel("10dd109f-2ac8-11d1-9b6b-0080c7bb5997");
inline constexpr Guid PointLevel("98134716-0011-0818-1998-080009835d5a");
} // namespace kind

/// What the data of an element begin with, after their length and class.
enum class BaseType : std::uint8_t
{
    Node = 0,
    Group = 1,
    Shape = 2,
    Attribute = 3,
    ShapeLevel = 4,
    Property = 5,
    ReferenceProperty = 6,
    LateLoadedProperty = 8,
    MetaData = 9
};

struct Element
{
    Guid kind;
    std::uint8_t baseType = 255;
    std::int32_t id = 0; ///< 0 for those that have none
    Bytes data;
};

/// Reads an element, and moves behind it. Elements of scene graphs have ids; of others, only from version 9
/// on.
inline Element ReadElement(Bytes& in, bool isOfScene)
{
    const std::size_t size = in.Count(1);
    Element element{{}, 255, 0, Bytes(in.Take(size), in.FileFormat())};
    element.kind = element.data.Id();
    if (element.kind == kind::End) {
        return element;
    }
    element.baseType = element.data.U8();
    if (isOfScene || !in.FileFormat().IsV8()) {
        element.id = element.data.I32();
    }
    return element;
}

} // namespace cadex::jt
