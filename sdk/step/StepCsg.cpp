#include "sdk/step/StepCsg.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include <BRepAlgoAPI_BooleanOperation.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepOffsetAPI_MakePipe.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeHalfSpace.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRepPrimAPI_MakeWedge.hxx>
#include <Bnd_Box.hxx>
#include <Geom_Plane.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <gp_Circ.hxx>
#include <gp_Pln.hxx>

#include "sdk/brep/ShapeBuilder.h"

namespace cadex::step {

namespace {

constexpr int MaximalNesting = 100;
constexpr double Turn = 2 * 3.14159265358979323846;
// How much farther than the other operand a half space reaches.
constexpr double HalfSpaceReach = 4;

TopoDS_Wire WireOf(const std::vector<CurvePiece>& pieces, RecordId record)
{
    BRepBuilderAPI_MakeWire wire;
    for (const CurvePiece& piece : pieces) {
        BRepBuilderAPI_MakeEdge edge = piece.curve.IsNull()
                                           ? BRepBuilderAPI_MakeEdge(piece.start, piece.end)
                                           : BRepBuilderAPI_MakeEdge(piece.curve, piece.first, piece.last);
        if (!edge.IsDone()) {
            throw Unsupported("a boundary that the kernel refuses", record);
        }
        wire.Add(edge.Edge());
    }
    if (!wire.IsDone()) {
        throw Unsupported("a boundary whose pieces do not meet", record);
    }
    return wire.Wire();
}

double CheckedAngle(double angle, RecordId record)
{
    if (!(std::abs(angle) > 0) || !(std::abs(angle) <= Turn + 1e-9)) {
        throw Damaged("an angle out of range", record);
    }
    return std::clamp(angle, -Turn, Turn);
}

} // namespace

TopoDS_Shape StepCsg::Shape(RecordId id)
{
    const TopoDS_Shape shape = ShapeAt(id, 0);
    if (shape.IsNull() || !TopExp_Explorer(shape, TopAbs_FACE).More()) {
        throw Unsupported("a solid of which nothing is left", id);
    }
    return shape;
}

double StepCsg::Positive(Cursor& cursor, const StepRecords::Record& record)
{
    const double value = cursor.Real() * myGeometry.Units().length;
    Expect(cursor, record);
    if (!(value > 0) || !(value <= MaximalCoordinate)) {
        throw Damaged("a length that is not positive", record.id);
    }
    return value;
}

TopoDS_Shape StepCsg::ShapeAt(RecordId id, int depth)
{
    if (depth > MaximalNesting) {
        throw Damaged("a solid that is made of itself", id);
    }
    myGeometry.CountStep();
    const StepRecords::Record& record = myRecords.Get(id);
    if (myRecords.TypeOf(record) != StepType::Csg) {
        return Described(id);
    }
    const std::string_view name = myRecords.Text().TypeName(record);
    Cursor arguments = myRecords.Named(record);
    if (name == "CSG_SOLID") {
        return ShapeAt(arguments.Reference(), depth + 1);
    }
    if (name == "BOOLEAN_RESULT") {
        return BooleanOf(record, depth);
    }
    if (name == "SOLID_REPLICA") {
        const TopoDS_Shape parent = ShapeAt(arguments.Reference(), depth + 1);
        return BRepBuilderAPI_Transform(parent, myGeometry.Operator(arguments.Reference()), true).Shape();
    }
    if (EndsWith(name, "HALF_SPACE_SOLID") || EndsWith(name, "HALF_SPACE")) {
        throw Unsupported("a half space by itself", id);
    }
    if (name == "SWEPT_DISK_SOLID") {
        return Disk(record);
    }
    return EndsWith(name, "_SOLID") ? Sweep(record, name) : Primitive(record, name);
}

// BOOLEAN_RESULT: name, operator, two operands.
TopoDS_Shape StepCsg::BooleanOf(const StepRecords::Record& record, int depth)
{
    Cursor arguments = myRecords.Named(record);
    const std::string_view operation = arguments.Enumerator();
    RecordId operands[2] = {arguments.Reference(), 0};
    operands[1] = arguments.Reference();
    Expect(arguments, record);
    const auto isHalfSpace = [&](RecordId id) {
        const StepRecords::Record& operand = myRecords.Get(id);
        const std::string_view name = myRecords.Text().TypeName(operand);
        return name == "HALF_SPACE_SOLID" || name == "BOXED_HALF_SPACE";
    };
    TopoDS_Shape shapes[2];
    for (int i = 0; i < 2; ++i) {
        if (!isHalfSpace(operands[i])) {
            shapes[i] = ShapeAt(operands[i], depth + 1);
        }
    }
    for (int i = 0; i < 2; ++i) {
        if (shapes[i].IsNull()) {
            if (shapes[1 - i].IsNull()) {
                throw Unsupported("half spaces by themselves", record.id);
            }
            shapes[i] = HalfSpace(myRecords.Get(operands[i]), shapes[1 - i]);
        }
    }
    BRepAlgoAPI_BooleanOperation boolean;
    TopTools_ListOfShape first;
    TopTools_ListOfShape second;
    first.Append(shapes[0]);
    second.Append(shapes[1]);
    boolean.SetArguments(first);
    boolean.SetTools(second);
    boolean.SetOperation(operation == "UNION"          ? BOPAlgo_FUSE
                         : operation == "INTERSECTION" ? BOPAlgo_COMMON
                                                       : BOPAlgo_CUT);
    boolean.Build();
    if (!boolean.IsDone() || boolean.Shape().IsNull()) {
        throw Unsupported("a boolean that the kernel refuses", record.id);
    }
    return boolean.Shape();
}

TopoDS_Shape StepCsg::Primitive(const StepRecords::Record& record, std::string_view name)
{
    Cursor arguments = myRecords.Named(record);
    if (name == "SPHERE") {
        const double radius = Positive(arguments, record);
        return BRepPrimAPI_MakeSphere(myGeometry.Point(arguments.Reference()), radius).Shape();
    }
    const RecordId position = arguments.Reference();
    if (name == "BLOCK" || name == "RIGHT_ANGULAR_WEDGE") {
        const gp_Ax2 axes = myGeometry.Placement(position).Ax2();
        const double x = Positive(arguments, record);
        const double y = Positive(arguments, record);
        const double z = Positive(arguments, record);
        if (name == "BLOCK") {
            return BRepPrimAPI_MakeBox(axes, x, y, z).Shape();
        }
        // NOTE: the wedge narrows along y, the kernel's too; z is its thickness in both.
        const double top = arguments.Real() * myGeometry.Units().length;
        Expect(arguments, record);
        return BRepPrimAPI_MakeWedge(axes, x, y, z, std::clamp(top, 0.0, MaximalCoordinate)).Shape();
    }
    const gp_Ax1 axis = myGeometry.Axis(position);
    const gp_Ax2 axes(axis.Location(), axis.Direction());
    if (name == "TORUS") {
        const double major = Positive(arguments, record);
        return BRepPrimAPI_MakeTorus(axes, major, Positive(arguments, record)).Shape();
    }
    const double height = Positive(arguments, record);
    if (name == "RIGHT_CIRCULAR_CYLINDER") {
        return BRepPrimAPI_MakeCylinder(axes, Positive(arguments, record), height).Shape();
    }
    // NOTE: the base of a cone lies against its axis; at its point it is cut off where the radius is not 0.
    const double radius = std::max(0.0, arguments.Real() * myGeometry.Units().length);
    const double half = arguments.Real() * myGeometry.Units().angle;
    Expect(arguments, record);
    if (!(half > 0) || !(half < Turn / 4) || !(radius <= MaximalCoordinate)) {
        throw Damaged("a cone that is none", record.id);
    }
    const gp_Ax2 down(axis.Location(), axis.Direction().Reversed());
    return BRepPrimAPI_MakeCone(down, radius, radius + height * std::tan(half), height).Shape();
}

// Name, area or face, then direction and depth, or axis and angle.
TopoDS_Shape StepCsg::Sweep(const StepRecords::Record& record, std::string_view name)
{
    Cursor arguments = myRecords.Named(record);
    const TopoDS_Face area = AreaOf(arguments.Reference());
    const RecordId way = arguments.Reference();
    if (name.substr(0, 8) == "EXTRUDED") {
        const double depth = Positive(arguments, record);
        return BRepPrimAPI_MakePrism(area, gp_Vec(myGeometry.Direction(way)) * depth).Shape();
    }
    const double angle = CheckedAngle(arguments.Real() * myGeometry.Units().angle, record.id);
    Expect(arguments, record);
    const gp_Ax1 axis = myGeometry.Axis(way);
    return std::abs(angle) >= Turn - 1e-9 ? BRepPrimAPI_MakeRevol(area, axis).Shape()
                                          : BRepPrimAPI_MakeRevol(area, axis, angle).Shape();
}

// SWEPT_DISK_SOLID: name, directrix, radius, inner radius, start and end in the directrix' parameter.
TopoDS_Shape StepCsg::Disk(const StepRecords::Record& record)
{
    Cursor arguments = myRecords.Named(record);
    const std::vector<CurvePiece> pieces = myGeometry.Pieces(arguments.Reference());
    const double radius = Positive(arguments, record);
    const double inner = arguments.Next() == Cursor::Kind::Omitted ? 0.0 : Positive(arguments, record);
    const TopoDS_Wire spine = WireOf(pieces, record.id);
    const CurvePiece& first = pieces.front();
    gp_Pnt start = first.start;
    gp_Vec tangent(first.start, first.end);
    if (!first.curve.IsNull()) {
        first.curve->D1(first.first, start, tangent);
    }
    const auto disk = [&](double size) {
        const gp_Circ circle(gp_Ax2(start, gp_Dir(tangent)), size);
        return BRepBuilderAPI_MakeFace(BRepBuilderAPI_MakeWire(BRepBuilderAPI_MakeEdge(circle))).Face();
    };
    const TopoDS_Shape outer = BRepOffsetAPI_MakePipe(spine, disk(radius)).Shape();
    if (!(inner > 0) || inner >= radius) {
        return outer;
    }
    return BRepAlgoAPI_Cut(outer, BRepOffsetAPI_MakePipe(spine, disk(inner)).Shape()).Shape();
}

// As much of the half space as the other operand can meet. Name, surface, agreement: the material lies
// against the surface's normal when it agrees.
TopoDS_Shape StepCsg::HalfSpace(const StepRecords::Record& record, const TopoDS_Shape& other)
{
    Cursor arguments = myRecords.Named(record);
    const BasisSurface base = myGeometry.Surface(arguments.Reference());
    const bool agrees = ReadBoolean(arguments) != base.flipped;
    Bnd_Box box;
    BRepBndLib::Add(other, box);
    if (box.IsVoid()) {
        throw Unsupported("a half space by itself", record.id);
    }
    const gp_Pnt centre((box.CornerMin().XYZ() + box.CornerMax().XYZ()) / 2);
    const double reach = HalfSpaceReach * std::sqrt(box.SquareExtent());
    const auto plane = Handle(Geom_Plane)::DownCast(base.surface);
    if (plane.IsNull()) {
        const TopoDS_Face face = BRepBuilderAPI_MakeFace(base.surface, 1e-6).Face();
        gp_Pnt at;
        gp_Vec du;
        gp_Vec dv;
        double bounds[4] = {0, 0, 0, 0};
        base.surface->Bounds(bounds[0], bounds[1], bounds[2], bounds[3]);
        const double u = std::clamp(0.1, bounds[0], bounds[1]);
        const double v = std::clamp(0.1, bounds[2], bounds[3]);
        base.surface->D1(u, v, at, du, dv);
        const gp_Dir normal(du.Crossed(dv));
        return BRepPrimAPI_MakeHalfSpace(face, at.Translated(gp_Vec(normal) * (agrees ? -1e-3 : 1e-3)))
            .Solid();
    }
    const gp_Dir normal = plane->Axis().Direction();
    const double away = gp_Vec(plane->Location(), centre).Dot(gp_Vec(normal));
    const gp_Pnt foot = centre.Translated(gp_Vec(normal) * -away);
    const TopoDS_Face face =
        BRepBuilderAPI_MakeFace(gp_Pln(foot, normal), -reach, reach, -reach, reach).Face();
    const double depth = (std::abs(away) + reach) * (agrees ? -1 : 1);
    return BRepPrimAPI_MakePrism(face, gp_Vec(normal) * depth).Shape();
}

TopoDS_Face StepCsg::AreaOf(RecordId id)
{
    const StepRecords::Record& record = myRecords.Get(id);
    if (myRecords.TypeOf(record) != StepType::BoundedSurface) {
        const TopExp_Explorer faces(Described(id), TopAbs_FACE);
        if (!faces.More()) {
            throw Unsupported("a sweep of what is no face", id);
        }
        return TopoDS::Face(faces.Current());
    }
    // Name, basis surface, boundaries.
    Cursor arguments = myRecords.Named(record);
    const BasisSurface basis = myGeometry.Surface(arguments.Reference());
    const std::vector<RecordId> boundaries = arguments.References();
    Expect(arguments, record);
    const auto plane = Handle(Geom_Plane)::DownCast(basis.surface);
    if (plane.IsNull() || boundaries.empty()) {
        throw Unsupported("a sweep of an area that is not plane", id);
    }
    // The largest boundary is the outer one, whatever order they come in.
    std::vector<TopoDS_Wire> wires;
    std::size_t outer = 0;
    double largest = -1;
    for (const RecordId boundary : boundaries) {
        wires.push_back(WireOf(myGeometry.Pieces(boundary), boundary));
        Bnd_Box box;
        BRepBndLib::Add(wires.back(), box);
        if (!box.IsVoid() && box.SquareExtent() > largest) {
            largest = box.SquareExtent();
            outer = wires.size() - 1;
        }
    }
    BRepBuilderAPI_MakeFace face(plane->Pln(), wires[outer]);
    for (std::size_t i = 0; i < wires.size(); ++i) {
        if (i != outer) {
            face.Add(TopoDS::Wire(wires[i].Reversed()));
        }
    }
    if (!face.IsDone()) {
        throw Unsupported("an area that the kernel refuses", id);
    }
    return face.Face();
}

TopoDS_Shape StepCsg::Described(RecordId id)
{
    const brep::Description description = myDescribe(id);
    if (description.IsEmpty()) {
        throw Unsupported("an operand that is no solid", id);
    }
    const TopoDS_Shape shape = brep::BuildShape(description).shape;
    if (shape.IsNull()) {
        throw Unsupported("an operand that the kernel refuses", id);
    }
    return shape;
}

} // namespace cadex::step
