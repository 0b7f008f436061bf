// Swept solids and CSG primitives.
#include <algorithm>
#include <cmath>

#include <BRepBndLib.hxx>
#include <BRepGProp.hxx>
#include <BRepLib.hxx>
#include <BRepOffsetAPI_MakePipeShell.hxx>
#include <BRepOffsetAPI_ThruSections.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeWedge.hxx>
#include <BRep_Builder.hxx>
#include <GProp_GProps.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Solid.hxx>

#include "sdk/ifc/IfcLoft.h"
#include "sdk/ifc/IfcSolids.h"

namespace cadex::ifc {
namespace {

/// One shape as it is, several as a compound.
TopoDS_Shape Together(const std::vector<TopoDS_Shape>& shapes)
{
    if (shapes.empty()) {
        throw Unbuildable("a sweep of nothing");
    }
    if (shapes.size() == 1) {
        return shapes.front();
    }
    const BRep_Builder builder;
    TopoDS_Compound compound;
    builder.MakeCompound(compound);
    for (const TopoDS_Shape& shape : shapes) {
        builder.Add(compound, shape);
    }
    return compound;
}

/// A solid that a sweep turned inside out, turned right.
TopoDS_Shape Outwards(TopoDS_Shape shape)
{
    if (shape.ShapeType() == TopAbs_SOLID) {
        TopoDS_Solid solid = TopoDS::Solid(shape);
        BRepLib::OrientClosedSolid(solid);
        return solid;
    }
    return shape;
}

/// What is swept: a face with area, or the line of an open profile.
TopoDS_Shape Generator(const Context& context, const Region& region, const Affine& placement)
{
    return region.open ? TopoDS_Shape(WireOf(context, Moved(region.outer, placement), false))
                       : TopoDS_Shape(FaceOf(context, region, placement));
}

TopoDS_Shape Extrude(Context& context, const Entity& solid, const std::vector<Region>& regions,
                     const Affine& placement)
{
    const gp_XYZ direction = context.Direction(solid.Ref(2), gp_XYZ(0, 0, 1));
    const double depth = context.PositiveLength(solid, 3);
    if (std::abs(direction.Z()) < 1e-9) {
        throw Unbuildable("an extrusion within its own plane");
    }
    const gp_Vec way(Turned(placement, direction * depth));
    std::vector<TopoDS_Shape> shapes;
    for (const Region& region : regions) {
        TopoDS_Shape base = Generator(context, region, placement);
        if (direction.Z() < 0) {
            base.Reverse(); // the sweep takes the base's side for the one that it leaves
        }
        shapes.push_back(BRepPrimAPI_MakePrism(base, way).Shape());
    }
    return Together(shapes);
}

/// Ruled between the profile and its end, hole by hole.
TopoDS_Shape Taper(Context& context, const Entity& solid, const std::vector<Region>& regions,
                   const Affine& placement)
{
    const gp_XYZ direction = context.Direction(solid.Ref(2), gp_XYZ(0, 0, 1));
    Affine end = placement;
    const gp_XYZ top = Apply(placement, direction * context.PositiveLength(solid, 3));
    end.translation = {top.X(), top.Y(), top.Z()};
    const std::vector<Region> ends = ReadProfile(context, solid.Ref(4));
    const auto ruled = [&](const Path& from, const Path& to) {
        BRepOffsetAPI_ThruSections sections(true, true);
        sections.AddWire(WireOf(context, Moved(from, placement), true));
        sections.AddWire(WireOf(context, Moved(to, end), true));
        sections.Build();
        if (!sections.IsDone()) {
            throw Unbuildable("a taper that cannot be built");
        }
        return sections.Shape();
    };
    std::vector<TopoDS_Shape> shapes;
    for (std::size_t i = 0; i < regions.size() && i < ends.size(); ++i) {
        TopoDS_Shape shape = ruled(regions[i].outer, ends[i].outer);
        std::vector<TopoDS_Shape> holes;
        for (std::size_t hole = 0; hole < std::min(regions[i].holes.size(), ends[i].holes.size()); ++hole) {
            holes.push_back(ruled(regions[i].holes[hole], ends[i].holes[hole]));
        }
        if (!holes.empty() && !Combine(context, BooleanKind::Cut, shape, holes, shape)) {
            throw Unbuildable("a taper whose holes cannot be cut");
        }
        shapes.push_back(shape);
    }
    return Together(shapes);
}

/// The profile has points on both sides of the axis, which lies in its plane.
bool CrossesAxis(const Region& region, const Affine& axis, const Affine& placement)
{
    const gp_XYZ aside = Column(axis, 3).Crossed(Column(placement, 3));
    double low = 0;
    double high = 0;
    for (const gp_XYZ& point : Sampled(Moved(region.outer, placement))) {
        const double distance = (point - Origin(axis)).Dot(aside);
        low = std::min(low, distance);
        high = std::max(high, distance);
    }
    constexpr double Touching = 1e-4; // millimetres
    return low < -Touching && high > Touching;
}

/// What both sides of a profile sweep when it lies across the axis: revolved in one go, they would pass
/// through each other.
TopoDS_Shape RevolveBothSides(const Context& context, const Region& region, const Affine& axis,
                              const Affine& placement, double angle)
{
    const TopoDS_Shape base = FaceOf(context, region, placement);
    Bnd_Box box;
    BRepBndLib::Add(base, box);
    const double reach = 4 * std::sqrt(box.SquareExtent()) + 1;
    const gp_XYZ along = Column(axis, 3);
    const gp_XYZ up = Column(placement, 3);
    const gp_XYZ middle = (box.CornerMin().XYZ() + box.CornerMax().XYZ()) / 2;
    const gp_XYZ foot = Origin(axis) + along * (middle - Origin(axis)).Dot(along);
    TopoDS_Shape result;
    for (const double side : {1.0, -1.0}) {
        Affine half;
        const gp_XYZ aside = along.Crossed(up) * side;
        half = occt::ToAffine(aside, up.Crossed(aside), up, foot);
        const Region square{
            Polygon({{0, -reach, 0}, {reach, -reach, 0}, {reach, reach, 0}, {0, reach, 0}}), {}, false};
        TopoDS_Shape part;
        if (!Combine(context, BooleanKind::Common, base, {FaceOf(context, square, half)}, part)) {
            throw Unbuildable("a revolution across its axis");
        }
        const gp_Ax1 about(gp_Pnt(Origin(axis)), gp_Dir(along));
        TopoDS_Shape body = std::abs(angle) >= 2 * M_PI - 1e-9
                                ? BRepPrimAPI_MakeRevol(part, about).Shape()
                                : BRepPrimAPI_MakeRevol(part, about, angle).Shape();
        TopExp_Explorer solid(body, TopAbs_SOLID);
        if (!solid.More()) {
            throw Unbuildable("a revolution across its axis");
        }
        body = Outwards(solid.Current());
        if (!result.IsNull() && !Combine(context, BooleanKind::Fuse, result, {body}, body)) {
            throw Unbuildable("a revolution across its axis");
        }
        result = body;
    }
    return result;
}

TopoDS_Shape Revolve(Context& context, const Entity& solid, const std::vector<Region>& regions,
                     const Affine& placement)
{
    const Affine axis = Compose(placement, context.Placement(solid.Ref(2)));
    const gp_Ax1 about(gp_Pnt(Origin(axis)), gp_Dir(Column(axis, 3)));
    const double angle = solid.Real(3) * context.toRadians;
    if (!(std::abs(angle) > 1e-9)) {
        throw Unbuildable("a revolution by nothing");
    }
    std::vector<TopoDS_Shape> shapes;
    for (const Region& region : regions) {
        if (!region.open && CrossesAxis(region, axis, placement)) {
            shapes.push_back(RevolveBothSides(context, region, axis, placement, angle));
            continue;
        }
        const TopoDS_Shape base = Generator(context, region, placement);
        const bool whole = std::abs(angle) >= 2 * M_PI - 1e-9;
        shapes.push_back(Outwards(whole ? BRepPrimAPI_MakeRevol(base, about).Shape()
                                        : BRepPrimAPI_MakeRevol(base, about, angle).Shape()));
    }
    return Together(shapes);
}

/// IfcRevolvedAreaSolidTapered: SweptArea, Position, Axis, Angle, EndSweptArea. The outline changes evenly
/// with the angle.
Solid RevolveTapered(Context& context, const Entity& solid, const std::vector<Region>& regions,
                     const Affine& placement)
{
    constexpr double Step = 0.1; // radians
    const std::vector<Region> ends = ReadProfile(context, solid.Ref(4));
    const Affine axis = Compose(placement, context.Placement(solid.Ref(2)));
    const double angle = std::clamp(solid.Real(3) * context.toRadians, -2 * M_PI + 1e-6, 2 * M_PI - 1e-6);
    if (regions.size() != 1 || ends.size() != 1 || !(std::abs(angle) > 1e-9)) {
        throw Unbuildable("a tapered revolution of several areas or by nothing");
    }
    const Section from = SectionOf(context, regions.front());
    const Section to = SectionOf(context, ends.front());
    const int steps = std::max(1, static_cast<int>(std::ceil(std::abs(angle) / Step)));
    std::vector<Section> sections;
    for (int i = 0; i <= steps; ++i) {
        const double share = static_cast<double>(i) / steps;
        gp_Trsf turn;
        turn.SetRotation(gp_Ax1(gp_Pnt(Origin(axis)), gp_Dir(Column(axis, 3))), angle * share);
        Section& section = sections.emplace_back(Mixed(from, to, share));
        for (std::vector<gp_XYZ>& loop : section) {
            for (gp_XYZ& point : loop) {
                point = Apply(placement, point);
                turn.Transforms(point);
            }
        }
    }
    context.Report(Report::Kind::Noted, "a tapered revolution is made of flat faces");
    return Solid(Loft(sections, false));
}

/// Direction of a piece at one of its ends.
gp_XYZ Tangent(const Piece& piece, bool atEnd)
{
    if (piece.curve.IsNull()) {
        return Unit(piece.end - piece.start, gp_XYZ(0, 0, 1));
    }
    gp_Pnt point;
    gp_Vec tangent;
    piece.curve->D1(atEnd ? piece.last : piece.first, point, tangent);
    return Unit(tangent.XYZ(), gp_XYZ(0, 0, 1));
}

gp_XYZ StartTangent(const Path& path)
{
    return Tangent(path.front(), false);
}

/// Few pieces and fewer corners: the kernel needs a second and more for each corner of many.
bool IsForKernel(const Path& path)
{
    constexpr std::size_t MostPieces = 40;
    constexpr std::size_t MostCorners = 5;
    constexpr double CosineOfCorner = 0.9999;
    std::size_t corners = 0;
    for (std::size_t i = 1; i < path.size(); ++i) {
        corners += Tangent(path[i - 1], true).Dot(Tangent(path[i], false)) < CosineOfCorner ? 1 : 0;
    }
    return path.size() <= MostPieces && corners <= MostCorners;
}

/// The outline carried along the path, closed by caps; `binormal` keeps it upright, where there is one.
TopoDS_Shape Pipe(const Context& context, const Path& path, const TopoDS_Wire& outline,
                  const gp_XYZ* binormal)
{
    BRepOffsetAPI_MakePipeShell pipe(WireOf(context, path, false));
    if (binormal != nullptr) {
        pipe.SetMode(gp_Dir(*binormal));
    }
    pipe.SetTransitionMode(BRepBuilderAPI_RightCorner);
    pipe.Add(outline);
    pipe.Build();
    if (!pipe.IsDone() || !pipe.MakeSolid()) {
        throw Unbuildable("a sweep along a curve that cannot be built");
    }
    return Outwards(pipe.Shape());
}

/// The kernel's sweep of a region; null when it fails.
TopoDS_Shape TryPipe(const Context& context, const Path& path, const Region& region, const Affine& start,
                     const gp_XYZ* binormal)
{
    try {
        TopoDS_Shape shape =
            Pipe(context, path, WireOf(context, Moved(region.outer, start), !region.open), binormal);
        std::vector<TopoDS_Shape> holes;
        for (const Path& hole : region.holes) {
            holes.push_back(Pipe(context, path, WireOf(context, Moved(hole, start), true), binormal));
        }
        return holes.empty() || Combine(context, BooleanKind::Cut, shape, holes, shape) ? shape
                                                                                        : TopoDS_Shape();
    } catch (const Unbuildable&) {
        return {};
    } catch (const Standard_Failure&) {
        return {};
    }
}

/// Polygons tell the volume that the kernel's sweep should have.
bool HasVolumeOf(const TopoDS_Shape& shape, const Polyhedron& loft)
{
    constexpr double Share = 0.05; // chords of the polygons, and corners
    GProp_GProps properties;
    BRepGProp::VolumeProperties(shape, properties);
    const double volume = loft.SignedVolume(0, loft.loops.size()) / 6;
    return std::abs(properties.Mass() - volume) <= Share * volume;
}

/// A region carried along the path: exact where the kernel can, else polygons.
Solid SweepRegion(Context& context, const Path& path, const Region& region, const Affine& start,
                  const gp_XYZ* binormal)
{
    if (region.open) {
        const TopoDS_Shape sheet = TryPipe(context, path, region, start, binormal);
        if (sheet.IsNull()) {
            throw Unbuildable("a sweep along a curve that cannot be built");
        }
        return Solid(sheet);
    }
    Polyhedron loft = LoftAlong(context, path, region, start, binormal);
    const TopoDS_Shape shape =
        IsForKernel(path) ? TryPipe(context, path, region, start, binormal) : TopoDS_Shape();
    if (!shape.IsNull() && HasVolumeOf(shape, loft)) {
        return Solid(shape);
    }
    if (!IsStraight(path) || !IsStraight(region.outer)) {
        context.Report(Report::Kind::Noted, "a sweep along a long or narrow way is made of flat faces");
    }
    return Solid(std::move(loft));
}

Solid Together(const std::vector<Solid>& solids)
{
    if (solids.size() == 1) {
        return solids.front();
    }
    std::vector<TopoDS_Shape> shapes;
    shapes.reserve(solids.size());
    for (const Solid& solid : solids) {
        shapes.push_back(solid.Shape());
    }
    return Solid(Together(shapes));
}

/// IfcFixedReferenceSweptAreaSolid and IfcSurfaceCurveSweptAreaSolid: (SweptArea, Position, Directrix,
/// StartParam, EndParam, FixedReference or ReferenceSurface). The profile's x axis keeps to the reference
/// direction or to the surface's normal, which is taken as constant: reference surfaces are planes in
/// practice.
Solid SweepAlong(Context& context, const Entity& solid, const std::vector<Region>& regions,
                 const Affine& placement)
{
    const Path path = Moved(ReadDirectrix(context, solid.Ref(2), solid, 3), placement);
    const Entity reference = solid.Ref(5);
    const gp_XYZ local = reference.Is(Type::IfcDirection) ? context.Direction(reference, gp_XYZ(0, 0, 1))
                                                          : Column(context.Placement(reference.Ref(0)), 3);
    const gp_XYZ upright = Unit(Turned(placement, local), gp_XYZ(0, 0, 1));
    if (path.empty()) {
        throw Unbuildable("a sweep along nothing");
    }
    const Affine start = Frame(path.front().start, StartTangent(path), upright);
    std::vector<Solid> solids;
    solids.reserve(regions.size());
    for (const Region& region : regions) {
        solids.push_back(SweepRegion(context, path, region, start, &upright));
    }
    return Together(solids);
}

} // namespace

namespace {

/// One outline and its copy at the other end, with the walls between; the floor's corners, then the roof's.
void AddWalls(const std::vector<gp_XYZ>& outline, const gp_XYZ& way, Polyhedron& body,
              std::vector<U32>& floor, std::vector<U32>& roof)
{
    for (const gp_XYZ& corner : outline) {
        floor.push_back(static_cast<U32>(body.points.size()));
        body.points.push_back(corner);
        roof.push_back(static_cast<U32>(body.points.size()));
        body.points.push_back(corner + way);
    }
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const std::size_t next = (i + 1) % outline.size();
        body.AddFace({floor[i], floor[next], roof[next], roof[i]});
    }
}

void AddCap(const std::vector<std::vector<U32>>& rings, bool reversed, Polyhedron& body)
{
    for (std::size_t i = 0; i < rings.size(); ++i) {
        body.BeginLoop(i == 0);
        for (std::size_t k = 0; k < rings[i].size(); ++k) {
            body.AddCorner(rings[i][reversed ? rings[i].size() - 1 - k : k]);
        }
    }
}

} // namespace

bool ReadPrism(Context& context, const Entity& solid, Polyhedron& body)
{
    if (!solid.Is(Type::IfcExtrudedAreaSolid)) {
        return false;
    }
    const std::vector<Region> regions = ReadProfile(context, solid.Ref(0));
    for (const Region& region : regions) {
        if (region.open || !IsStraight(region.outer) ||
            !std::all_of(region.holes.begin(), region.holes.end(), IsStraight)) {
            return false;
        }
    }
    const Affine placement = context.Placement(solid.Ref(1));
    const gp_XYZ direction = context.Direction(solid.Ref(2), gp_XYZ(0, 0, 1));
    const gp_XYZ way = Turned(placement, direction * context.PositiveLength(solid, 3));
    if (std::abs(direction.Z()) < 1e-9) {
        return false;
    }
    for (const Region& region : regions) {
        std::vector<const Path*> paths{&region.outer};
        for (const Path& hole : region.holes) {
            paths.push_back(&hole);
        }
        if (!body.loops.empty()) {
            body.shells.push_back(body.loops.size());
        }
        const std::size_t first = body.loops.size();
        std::vector<std::vector<U32>> floors;
        std::vector<std::vector<U32>> roofs;
        for (const Path* path : paths) {
            const std::vector<gp_XYZ> corners = Corners(context, Moved(*path, placement));
            AddWalls(corners, way, body, floors.emplace_back(), roofs.emplace_back());
        }
        AddCap(floors, true, body);
        AddCap(roofs, false, body);
        if (direction.Z() < 0) {
            body.Reverse(first, body.loops.size());
        }
    }
    body.closed = true;
    return !regions.empty();
}

Solid ReadSweptArea(Context& context, const Entity& solid)
{
    const Affine placement = context.Placement(solid.Ref(1));
    const std::vector<Region> regions = ReadProfile(context, solid.Ref(0));
    switch (solid.Type()) {
    case Type::IfcExtrudedAreaSolid:
        return Solid(Extrude(context, solid, regions, placement));
    case Type::IfcExtrudedAreaSolidTapered:
        return Solid(Taper(context, solid, regions, placement));
    case Type::IfcRevolvedAreaSolid:
        return Solid(Revolve(context, solid, regions, placement));
    case Type::IfcRevolvedAreaSolidTapered:
        return RevolveTapered(context, solid, regions, placement);
    case Type::IfcFixedReferenceSweptAreaSolid:
    case Type::IfcSurfaceCurveSweptAreaSolid:
        return SweepAlong(context, solid, regions, placement);
    default:
        throw Unbuildable("a sweep of an unknown kind");
    }
}

Solid ReadSweptDisk(Context& context, const Entity& solid)
{
    // Directrix, Radius, InnerRadius, StartParam, EndParam [, FilletRadius]
    Path path = ReadDirectrix(context, solid.Ref(0), solid, 3);
    const double radius = context.PositiveLength(solid, 1);
    const double inner = context.Length(solid, 2);
    if (solid.Is(Type::IfcSweptDiskSolidPolygonal) && IsStraight(path) && !path.empty()) {
        std::vector<gp_XYZ> points{path.front().start};
        for (const Piece& piece : path) {
            points.push_back(piece.end);
        }
        path = OpenPolygon(points, context.Length(solid, 5));
    }
    if (path.empty()) {
        throw Unbuildable("a disk swept along nothing");
    }
    Region disk{Circle({}, radius), {}, false};
    if (inner > 0 && inner < radius) {
        disk.holes.push_back(Reversed(Circle({}, inner)));
    }
    const Affine start = Frame(path.front().start, StartTangent(path), gp_XYZ(0, 0, 1));
    return SweepRegion(context, path, disk, start, nullptr);
}

TopoDS_Shape ReadPrimitive(Context& context, const Entity& primitive)
{
    const gp_Ax2 axes = ToAxes(context.Placement(primitive.Ref(0))).Ax2();
    switch (primitive.Type()) {
    case Type::IfcBlock: // a corner at the origin
        return BRepPrimAPI_MakeBox(axes, context.PositiveLength(primitive, 1),
                                   context.PositiveLength(primitive, 2), context.PositiveLength(primitive, 3))
            .Shape();
    case Type::IfcRectangularPyramid: {
        // A corner of the base at the origin, the tip above the middle. The kernel's wedge rises along its y
        // axis, so its axes z, x, y are the pyramid's x, y, z.
        const double x = context.PositiveLength(primitive, 1);
        const double y = context.PositiveLength(primitive, 2);
        const double height = context.PositiveLength(primitive, 3);
        const gp_Ax2 wedge(axes.Location(), axes.XDirection(), axes.YDirection());
        return BRepPrimAPI_MakeWedge(wedge, y, height, x, y / 2, x / 2, y / 2, x / 2).Shape();
    }
    case Type::IfcRightCircularCone:
        return BRepPrimAPI_MakeCone(axes, context.PositiveLength(primitive, 2), 0,
                                    context.PositiveLength(primitive, 1))
            .Shape();
    case Type::IfcRightCircularCylinder:
        return BRepPrimAPI_MakeCylinder(axes, context.PositiveLength(primitive, 2),
                                        context.PositiveLength(primitive, 1))
            .Shape();
    case Type::IfcSphere:
        return BRepPrimAPI_MakeSphere(axes, context.PositiveLength(primitive, 1)).Shape();
    default:
        throw Unbuildable("a primitive of an unknown kind");
    }
}

} // namespace cadex::ifc
