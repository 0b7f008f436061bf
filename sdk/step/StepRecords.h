// Records of geometry and topology: which type each is, and what has been made of it.
//
//     StepRecords records(text);
//     const ClearText::Record& face = records.Get(id);
//     if (records.TypeOf(face) == StepType::AdvancedFace) { ... records.Arguments(face) ... }
//
// Types are told apart by number, not by name: a name is looked at once for a file, not once for a record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "sdk/step/StepText.h"

namespace cadex::step {

/// Types of records that bodies are made of. One enumerator stands for all types that are read alike.
enum class StepType : std::uint8_t
{
    Other,
    Complex, ///< of several types: ask for the part of each
    CartesianPoint,
    Direction,
    Vector,
    Axis1Placement,
    Axis2Placement2d,
    Axis2Placement3d,
    TransformationOperator,

    Line,
    Circle,
    Ellipse,
    Hyperbola,
    Parabola,
    Polyline,
    SplineWithKnots,
    SplineUniform,
    SplineQuasiUniform,
    SplineBezier,
    TrimmedCurve,
    CompositeCurve,
    CompositeSegment,
    OffsetCurve,
    CurveReplica,
    SurfaceCurve,
    Pcurve,
    DegeneratePcurve,

    Plane,
    Cylinder,
    Cone,
    Sphere,
    Torus,
    Revolution,
    Extrusion,
    SurfaceWithKnots,
    SurfaceUniform,
    SurfaceQuasiUniform,
    SurfaceBezier,
    TrimmedSurface,
    BoundedSurface,
    OffsetSurface,
    SurfaceReplica,

    VertexPoint,
    EdgeCurve,
    Edge,
    OrientedEdge,
    EdgeLoop,
    PolyLoop,
    VertexLoop,
    FaceBound,
    AdvancedFace,
    Face,
    OrientedFace,
    Shell,
    ClosedShell,
    OrientedShell,
    WireShell,
    EdgeSet,

    Solid,
    SolidWithVoids,
    ShellModel,
    FaceModel,
    GeometricSet,
    EdgeWireframe,
    ShellWireframe,
    MappedItem,
    Csg, ///< of any kind: see StepSolids

    TriangulatedFace,
    ComplexTriangulatedFace,
    TriangulatedSurface,
    ComplexTriangulatedSurface,
    TessellatedShell,
    TessellatedSolid,
    TessellatedCurves,
    TessellatedEdge,
    TessellatedSet,
    CoordinatesList,

    ShapeRepresentation, ///< every type that ends so
    Representation
};

/// A record that cannot be read: absent, of a type that does not belong there, or with arguments that make
/// no sense. What needs it cannot be made.
class Damaged : public std::runtime_error
{
public:
    explicit Damaged(const std::string& what, RecordId theRecord = 0)
        : std::runtime_error(what), record(theRecord)
    {
    }
    RecordId record;
};

/// A sound record of a kind that is not read here. What needs it alone is left out.
class Unsupported : public std::runtime_error
{
public:
    explicit Unsupported(const std::string& what, RecordId theRecord = 0)
        : std::runtime_error(what), record(theRecord)
    {
    }
    RecordId record;
};

class StepRecords
{
public:
    using Record = ClearText::Record;

    /// The text must outlive it.
    explicit StepRecords(const ClearText& text);

    const ClearText& Text() const { return myText; }

    StepType TypeOf(const Record& record) const { return myTypes[record.type]; }
    /// Other for a record that is absent.
    StepType TypeOf(RecordId id) const
    {
        const Record* record = myText.Find(id);
        return record != nullptr ? TypeOf(*record) : StepType::Other;
    }
    /// Throws Damaged when there is no such record.
    const Record& Get(RecordId id) const;
    /// Throws Damaged when it is absent or of another type.
    const Record& Get(RecordId id, StepType type) const;
    std::size_t PlaceOf(const Record& record) const
    {
        return static_cast<std::size_t>(&record - myText.Records().data());
    }

    /// Behind the name that the record begins with.
    Cursor Named(const Record& record) const
    {
        Cursor arguments = myText.Arguments(record);
        arguments.Skip();
        return arguments;
    }
    /// Of one part of a complex instance, which has no name in front; found tells whether there is one.
    Cursor Part(const Record& record, std::string_view type, bool& found) const
    {
        return myText.Arguments(record.id, type, found);
    }
    bool HasPart(const Record& record, std::string_view type) const
    {
        bool found = false;
        Part(record, type, found);
        return found;
    }

    /// The name that a representation item has been given; empty when it is blank.
    Base_UTF16String LabelOf(const Record& record) const;

    /// The type's name, for reports: of a complex instance "complex instance".
    std::string NameOf(const Record& record) const;

private:
    const ClearText& myText;
    std::vector<StepType> myTypes; // by the number of the type
};

/// Throws Damaged when the cursor has failed.
void Expect(const Cursor& cursor, const StepRecords::Record& record);

/// The numbers of a list, the integers of a list.
std::vector<double> ReadReals(Cursor& cursor);
std::vector<int> ReadIntegers(Cursor& cursor);
/// A list of lists of references, of numbers.
std::vector<std::vector<RecordId>> ReadReferenceRows(Cursor& cursor);
std::vector<std::vector<double>> ReadRealRows(Cursor& cursor);
/// .T. or anything else than .F.
bool ReadBoolean(Cursor& cursor);

/// What has been made of which record, as numbers; forgotten in one step.
class RecordSlots
{
public:
    explicit RecordSlots(std::size_t count) : mySlots(count) {}

    static constexpr int None = -1;

    void Forget() { ++myStamp; }
    int Find(std::size_t place) const
    {
        return mySlots[place].stamp == myStamp ? mySlots[place].number : None;
    }
    void Set(std::size_t place, int number) { mySlots[place] = {myStamp, number}; }

private:
    struct Slot
    {
        std::uint32_t stamp = 0;
        int number = None;
    };
    std::vector<Slot> mySlots;
    std::uint32_t myStamp = 1;
};

} // namespace cadex::step
