#include "sdk/step/StepRecords.h"

#include <limits>
#include <unordered_map>

#include "sdk/text/PlainText.h"

namespace cadex::step {

namespace {

struct NamedType
{
    std::string_view name;
    StepType type;
};

// NOTE: ISO 10303-42 (geometry, topology, solids), 10303-43 (representations), 10303-42:2014 (tessellation).
constexpr NamedType NamedTypes[] = {
    {"CARTESIAN_POINT", StepType::CartesianPoint},
    {"DIRECTION", StepType::Direction},
    {"VECTOR", StepType::Vector},
    {"AXIS1_PLACEMENT", StepType::Axis1Placement},
    {"AXIS2_PLACEMENT_2D", StepType::Axis2Placement2d},
    {"AXIS2_PLACEMENT_3D", StepType::Axis2Placement3d},
    {"CARTESIAN_TRANSFORMATION_OPERATOR_3D", StepType::TransformationOperator},

    {"LINE", StepType::Line},
    {"CIRCLE", StepType::Circle},
    {"ELLIPSE", StepType::Ellipse},
    {"HYPERBOLA", StepType::Hyperbola},
    {"PARABOLA", StepType::Parabola},
    {"POLYLINE", StepType::Polyline},
    {"B_SPLINE_CURVE_WITH_KNOTS", StepType::SplineWithKnots},
    {"UNIFORM_CURVE", StepType::SplineUniform},
    {"QUASI_UNIFORM_CURVE", StepType::SplineQuasiUniform},
    {"BEZIER_CURVE", StepType::SplineBezier},
    {"TRIMMED_CURVE", StepType::TrimmedCurve},
    {"COMPOSITE_CURVE", StepType::CompositeCurve},
    {"COMPOSITE_CURVE_ON_SURFACE", StepType::CompositeCurve},
    {"BOUNDARY_CURVE", StepType::CompositeCurve},
    {"OUTER_BOUNDARY_CURVE", StepType::CompositeCurve},
    {"COMPOSITE_CURVE_SEGMENT", StepType::CompositeSegment},
    {"REPARAMETRISED_COMPOSITE_CURVE_SEGMENT", StepType::CompositeSegment},
    {"OFFSET_CURVE_3D", StepType::OffsetCurve},
    {"CURVE_REPLICA", StepType::CurveReplica},
    {"SURFACE_CURVE", StepType::SurfaceCurve},
    {"SEAM_CURVE", StepType::SurfaceCurve},
    {"INTERSECTION_CURVE", StepType::SurfaceCurve},
    {"BOUNDED_SURFACE_CURVE", StepType::SurfaceCurve},
    {"PCURVE", StepType::Pcurve},
    {"BOUNDED_PCURVE", StepType::Pcurve},
    {"DEGENERATE_PCURVE", StepType::DegeneratePcurve},
    {"EVALUATED_DEGENERATE_PCURVE", StepType::DegeneratePcurve},

    {"PLANE", StepType::Plane},
    {"CYLINDRICAL_SURFACE", StepType::Cylinder},
    {"CONICAL_SURFACE", StepType::Cone},
    {"SPHERICAL_SURFACE", StepType::Sphere},
    {"TOROIDAL_SURFACE", StepType::Torus},
    {"DEGENERATE_TOROIDAL_SURFACE", StepType::Torus},
    {"SURFACE_OF_REVOLUTION", StepType::Revolution},
    {"SURFACE_OF_LINEAR_EXTRUSION", StepType::Extrusion},
    {"B_SPLINE_SURFACE_WITH_KNOTS", StepType::SurfaceWithKnots},
    {"UNIFORM_SURFACE", StepType::SurfaceUniform},
    {"QUASI_UNIFORM_SURFACE", StepType::SurfaceQuasiUniform},
    {"BEZIER_SURFACE", StepType::SurfaceBezier},
    {"RECTANGULAR_TRIMMED_SURFACE", StepType::TrimmedSurface},
    {"CURVE_BOUNDED_SURFACE", StepType::BoundedSurface},
    {"OFFSET_SURFACE", StepType::OffsetSurface},
    {"SURFACE_REPLICA", StepType::SurfaceReplica},

    {"VERTEX_POINT", StepType::VertexPoint},
    {"EDGE_CURVE", StepType::EdgeCurve},
    {"EDGE", StepType::Edge},
    {"ORIENTED_EDGE", StepType::OrientedEdge},
    {"EDGE_LOOP", StepType::EdgeLoop},
    {"PATH", StepType::EdgeLoop},
    {"OPEN_PATH", StepType::EdgeLoop},
    {"POLY_LOOP", StepType::PolyLoop},
    {"VERTEX_LOOP", StepType::VertexLoop},
    {"FACE_BOUND", StepType::FaceBound},
    {"FACE_OUTER_BOUND", StepType::FaceBound},
    {"ADVANCED_FACE", StepType::AdvancedFace},
    {"FACE_SURFACE", StepType::AdvancedFace},
    {"FACE", StepType::Face},
    {"ORIENTED_FACE", StepType::OrientedFace},
    {"OPEN_SHELL", StepType::Shell},
    {"CONNECTED_FACE_SET", StepType::Shell},
    {"CLOSED_SHELL", StepType::ClosedShell},
    {"ORIENTED_OPEN_SHELL", StepType::OrientedShell},
    {"ORIENTED_CLOSED_SHELL", StepType::OrientedShell},
    {"WIRE_SHELL", StepType::WireShell},
    {"CONNECTED_EDGE_SET", StepType::EdgeSet},

    {"MANIFOLD_SOLID_BREP", StepType::Solid},
    {"FACETED_BREP", StepType::Solid},
    {"BREP_WITH_VOIDS", StepType::SolidWithVoids},
    {"SHELL_BASED_SURFACE_MODEL", StepType::ShellModel},
    {"FACE_BASED_SURFACE_MODEL", StepType::FaceModel},
    {"GEOMETRIC_SET", StepType::GeometricSet},
    {"GEOMETRIC_CURVE_SET", StepType::GeometricSet},
    {"EDGE_BASED_WIREFRAME_MODEL", StepType::EdgeWireframe},
    {"SHELL_BASED_WIREFRAME_MODEL", StepType::ShellWireframe},
    {"MAPPED_ITEM", StepType::MappedItem},
    {"CSG_SOLID", StepType::Csg},
    {"BOOLEAN_RESULT", StepType::Csg},
    {"BLOCK", StepType::Csg},
    {"RIGHT_ANGULAR_WEDGE", StepType::Csg},
    {"RIGHT_CIRCULAR_CYLINDER", StepType::Csg},
    {"RIGHT_CIRCULAR_CONE", StepType::Csg},
    {"SPHERE", StepType::Csg},
    {"TORUS", StepType::Csg},
    {"EXTRUDED_AREA_SOLID", StepType::Csg},
    {"REVOLVED_AREA_SOLID", StepType::Csg},
    {"EXTRUDED_FACE_SOLID", StepType::Csg},
    {"REVOLVED_FACE_SOLID", StepType::Csg},
    {"SWEPT_DISK_SOLID", StepType::Csg},
    {"HALF_SPACE_SOLID", StepType::Csg},
    {"BOXED_HALF_SPACE", StepType::Csg},
    {"SOLID_REPLICA", StepType::Csg},

    {"TRIANGULATED_FACE", StepType::TriangulatedFace},
    {"COMPLEX_TRIANGULATED_FACE", StepType::ComplexTriangulatedFace},
    {"TRIANGULATED_SURFACE_SET", StepType::TriangulatedSurface},
    {"COMPLEX_TRIANGULATED_SURFACE_SET", StepType::ComplexTriangulatedSurface},
    {"TESSELLATED_SHELL", StepType::TessellatedShell},
    {"TESSELLATED_SOLID", StepType::TessellatedSolid},
    {"TESSELLATED_CURVE_SET", StepType::TessellatedCurves},
    {"TESSELLATED_EDGE", StepType::TessellatedEdge},
    {"TESSELLATED_CONNECTING_EDGE", StepType::TessellatedEdge},
    {"TESSELLATED_GEOMETRIC_SET", StepType::TessellatedSet},
    {"TESSELLATED_WIRE", StepType::TessellatedSet},
    {"COORDINATES_LIST", StepType::CoordinatesList},

    {"REPRESENTATION", StepType::Representation},
    {"TESSELLATED_SHAPE_REPRESENTATION", StepType::ShapeRepresentation},
};

StepType TypeNamed(std::string_view name)
{
    static const std::unordered_map<std::string_view, StepType> types = [] {
        std::unordered_map<std::string_view, StepType> result;
        for (const NamedType& named : NamedTypes) {
            result.emplace(named.name, named.type);
        }
        return result;
    }();
    if (const auto found = types.find(name); found != types.end()) {
        return found->second;
    }
    return EndsWith(name, "SHAPE_REPRESENTATION") ? StepType::ShapeRepresentation : StepType::Other;
}

// Calls `read` for each list in a list.
template <typename Read>
void ForEachRow(Cursor& cursor, const Read& read)
{
    if (!cursor.EnterList()) {
        return;
    }
    while (cursor.More() && !cursor.Failed()) {
        read();
    }
    cursor.Leave();
}

} // namespace

StepRecords::StepRecords(const ClearText& text) : myText(text)
{
    // Records are sorted by type, those of several types first.
    std::uint32_t last = 0;
    myTypes.push_back(StepType::Complex);
    for (const Record& record : text.Records()) {
        if (record.type != last) {
            last = record.type;
            myTypes.resize(last + 1U, StepType::Other);
            myTypes[last] = TypeNamed(text.TypeName(record));
        }
    }
}

const StepRecords::Record& StepRecords::Get(RecordId id) const
{
    const Record* record = myText.Find(id);
    if (record == nullptr) {
        throw Damaged("a reference to a record that is not there", id);
    }
    return *record;
}

const StepRecords::Record& StepRecords::Get(RecordId id, StepType type) const
{
    const Record& record = Get(id);
    if (TypeOf(record) != type) {
        throw Damaged("a reference to a record of another type, " + NameOf(record), id);
    }
    return record;
}

std::string StepRecords::NameOf(const Record& record) const
{
    return record.type == 0 ? "complex instance" : std::string(myText.TypeName(record));
}

Base_UTF16String StepRecords::LabelOf(const Record& record) const
{
    bool isComplex = false;
    Cursor arguments = Part(record, "REPRESENTATION_ITEM", isComplex);
    if (!isComplex) {
        arguments = myText.Arguments(record);
    }
    const std::string_view label = arguments.String();
    return text::IsBlankText(label) ? Base_UTF16String() : DecodeString(label);
}

void Expect(const Cursor& cursor, const StepRecords::Record& record)
{
    if (cursor.Failed()) {
        throw Damaged("a record with other arguments than its type has", record.id);
    }
}

std::vector<double> ReadReals(Cursor& cursor)
{
    std::vector<double> values;
    ForEachRow(cursor, [&] { values.push_back(cursor.Real()); });
    return values;
}

std::vector<int> ReadIntegers(Cursor& cursor)
{
    std::vector<int> values;
    ForEachRow(cursor, [&] {
        const std::int64_t value = cursor.Integer();
        const bool fits =
            value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
        values.push_back(fits ? static_cast<int>(value) : 0);
    });
    return values;
}

std::vector<std::vector<RecordId>> ReadReferenceRows(Cursor& cursor)
{
    std::vector<std::vector<RecordId>> rows;
    ForEachRow(cursor, [&] { cursor.References(rows.emplace_back()); });
    return rows;
}

std::vector<std::vector<double>> ReadRealRows(Cursor& cursor)
{
    std::vector<std::vector<double>> rows;
    ForEachRow(cursor, [&] { rows.push_back(ReadReals(cursor)); });
    return rows;
}

bool ReadBoolean(Cursor& cursor)
{
    return cursor.Enumerator() != "F";
}

} // namespace cadex::step
