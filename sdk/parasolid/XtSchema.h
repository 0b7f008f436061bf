// What the nodes of a Parasolid transmit file consist of: the tables of schema 13006, and how files of other
// versions differ from them.
//
//     const Layout* layout = BaseLayout(type);            // null: unknown to 13006
//     const int slot = layout->SlotOf(Field::Surface);    // place of the field among the node's values
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace cadex::parasolid {

/// Types of nodes that have a meaning here, numbered as in the files.
namespace type {
inline constexpr int Assembly = 10;
inline constexpr int Instance = 11;
inline constexpr int Body = 12;
inline constexpr int Shell = 13;
inline constexpr int Face = 14;
inline constexpr int Loop = 15;
inline constexpr int Edge = 16;
inline constexpr int Fin = 17;
inline constexpr int Vertex = 18;
inline constexpr int Region = 19;
inline constexpr int Point = 29;
inline constexpr int Line = 30;
inline constexpr int Circle = 31;
inline constexpr int Ellipse = 32;
inline constexpr int Intersection = 38;
inline constexpr int Chart = 40;
inline constexpr int Limit = 41;
inline constexpr int SplineVertices = 45;
inline constexpr int Plane = 50;
inline constexpr int Cylinder = 51;
inline constexpr int Cone = 52;
inline constexpr int Sphere = 53;
inline constexpr int Torus = 54;
inline constexpr int Blend = 56;
inline constexpr int BlendBound = 59;
inline constexpr int Offset = 60;
inline constexpr int Swept = 67;
inline constexpr int Spun = 68;
inline constexpr int List = 70;
inline constexpr int ListBlock = 74;
inline constexpr int AttributeName = 79;
inline constexpr int AttributeDefinition = 80;
inline constexpr int Attribute = 81;
inline constexpr int Integers = 82;
inline constexpr int Reals = 83;
inline constexpr int Characters = 84;
inline constexpr int Unicode = 98;
inline constexpr int Transform = 100;
inline constexpr int World = 101;
inline constexpr int SplineSurface = 124;
inline constexpr int NurbsSurface = 126;
inline constexpr int Multiplicities = 127;
inline constexpr int Knots = 128;
inline constexpr int TrimmedCurve = 133;
inline constexpr int SplineCurve = 134;
inline constexpr int NurbsCurve = 136;
inline constexpr int CurveInSurface = 137;
} // namespace type

/// The fields that are asked for, whatever node they belong to.
enum class Field : std::uint8_t
{
    Assembly,
    Axis,
    BCurve,
    Base,
    BasisCurve,
    Blend,
    BlendType,
    Body,
    BodyType,
    Boundary,
    BSplineVertices,
    Centre,
    Chart,
    ChordalError,
    Closed,
    CosHalfAngle,
    Curve,
    Definition,
    Degree,
    Direction,
    Edge,
    End,
    Entries,
    Face,
    Fields,
    Forward,
    Backward,
    FrontFace,
    FrontShell,
    Halfedge,
    Hvec,
    Identifier,
    KnotMult,
    Knots,
    Loop,
    MajorRadius,
    MinorRadius,
    Mult,
    NKnots,
    NUKnots,
    NUVertices,
    NVKnots,
    NVVertices,
    NVertices,
    Next,
    NextFront,
    NextInPart,
    NextOfPart,
    NodeId,
    Normal,
    Nurbs,
    Offset,
    Original,
    Other,
    Owner,
    Parm1,
    Parm2,
    Part,
    Periodic,
    Point,
    Point1,
    Point2,
    Profile,
    Pvec,
    Radius,
    Range,
    Rational,
    Region,
    RotationMatrix,
    Scale,
    Section,
    Sense,
    Shell,
    SinHalfAngle,
    Spine,
    Start,
    String,
    SubInstance,
    Surface,
    Sweep,
    Tolerance,
    ToleranceToOriginal,
    Transform,
    TranslationVector,
    Type,
    UDegree,
    UKnotMult,
    UKnots,
    UPeriodic,
    VDegree,
    VKnotMult,
    VKnots,
    VPeriodic,
    Values,
    Vertex,
    VertexDim,
    Vertices,
    XAxis,
    Unknown ///< all others
};

/// The field of that name, Unknown when none is asked for by it.
Field FieldNamed(std::string_view name);

struct FieldLayout
{
    Field field = Field::Unknown;
    char kind = 'd'; ///< u c l n w d p f i v b h, as the schema has it
    int count = 0;   ///< 0: one; 1: as many as the node says, the last field; more: an array of so many
    bool IsVariable() const { return count == 1; }
    int Times() const { return count == 0 ? 1 : count; }
};

/// Numbers that a value of the kind consists of; 0 when there is no such kind.
int NumbersOf(char kind);

class Layout
{
public:
    Layout() { mySlots.fill(Absent); }
    explicit Layout(std::vector<FieldLayout> fields);

    const std::vector<FieldLayout>& Fields() const { return myFields; }
    bool HasVariable() const { return !myFields.empty() && myFields.back().IsVariable(); }

    static constexpr int Absent = -1;
    /// Place of the field's first number among those of the node.
    int SlotOf(Field field) const { return mySlots[static_cast<std::size_t>(field)]; }
    const FieldLayout* Find(Field field) const;

private:
    std::vector<FieldLayout> myFields;
    std::array<std::int32_t, static_cast<std::size_t>(Field::Unknown) + 1> mySlots{};
};

/// Of schema 13006; null when it has no such node.
const Layout* BaseLayout(int type);

/// What files without a schema of their own have in place of the base's layout; null when that is the base's.
/// Fins and bodies have grown with version 12.
const Layout* FixedLayout(int type, int version);

} // namespace cadex::parasolid
