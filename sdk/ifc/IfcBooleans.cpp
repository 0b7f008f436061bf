// Boolean results and half spaces.
#include <algorithm>
#include <cmath>

#include <BRepAlgoAPI_Common.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBndLib.hxx>
#include <BRepGProp.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Tool.hxx>
#include <GProp_GProps.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_ListOfShape.hxx>
#include <TopoDS.hxx>

#include "sdk/ifc/IfcConvexCut.h"
#include "sdk/ifc/IfcFlatBoolean.h"
#include "sdk/ifc/IfcSolids.h"
#include "sdk/mesh/EngineTolerances.h"

namespace cadex::ifc {
namespace {

bool Has(const TopoDS_Shape& shape, TopAbs_ShapeEnum kind)
{
    return !shape.IsNull() && TopExp_Explorer(shape, kind).More();
}

/// Every shell of the solids is closed.
bool IsSound(const TopoDS_Shape& shape)
{
    for (TopExp_Explorer shells(shape, TopAbs_SHELL); shells.More(); shells.Next()) {
        if (!BRep_Tool::IsClosed(shells.Current())) {
            return false;
        }
    }
    return true;
}

double Diagonal(const Bnd_Box& box)
{
    return box.IsVoid() ? 0 : std::sqrt(box.SquareExtent());
}

gp_XYZ Middle(const Bnd_Box& box)
{
    return (box.CornerMin().XYZ() + box.CornerMax().XYZ()) / 2;
}

/// How far a tool must reach from `origin` to pass every point of the body.
double Reach(const Bnd_Box& body, const gp_XYZ& origin)
{
    return body.IsVoid() ? 1e6 : 1.1 * ((Middle(body) - origin).Modulus() + Diagonal(body)) + 1;
}

/// Where the vertical through a point of the boundary's plane meets the base plane.
double HeightOver(const gp_XYZ& point, const gp_XYZ& up, const Affine& plane)
{
    const gp_XYZ normal = Column(plane, 3);
    return (Origin(plane) - point).Dot(normal) / up.Dot(normal);
}

/// The prism over a straight outline between a far floor and the base plane: exact, and without a boolean
/// operation.
Polyhedron TruncatedPrism(const std::vector<gp_XYZ>& outline, const gp_XYZ& up, const Affine& plane,
                          double reach, bool below)
{
    Polyhedron body;
    std::vector<U32> floor;
    std::vector<U32> roof;
    for (const gp_XYZ& corner : outline) {
        const double height = HeightOver(corner, up, plane);
        const double far = below ? std::min(height, 0.0) - reach : std::max(height, 0.0) + reach;
        floor.push_back(static_cast<U32>(body.points.size()));
        body.points.push_back(corner + up * (below ? far : height));
        roof.push_back(static_cast<U32>(body.points.size()));
        body.points.push_back(corner + up * (below ? height : far));
    }
    const std::size_t count = outline.size();
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t next = (i + 1) % count;
        body.AddFace({floor[i], floor[next], roof[next], roof[i]});
    }
    body.AddFace(roof);
    body.AddFace({floor.rbegin(), floor.rend()});
    body.closed = true;
    return body;
}

} // namespace

const TopoDS_Shape& Solid::Shape() const
{
    if (myFlat && myShape.IsNull()) {
        myShape = ShapeOf(myFacets);
    }
    return myShape;
}

Bnd_Box Solid::Bounds() const
{
    Bnd_Box box;
    if (myFlat) {
        for (U32 corner : myFacets.corners) {
            box.Add(gp_Pnt(myFacets.points[corner]));
        }
    } else {
        BRepBndLib::Add(myShape, box, false);
    }
    return box;
}

namespace {

double VolumeOf(const TopoDS_Shape& shape)
{
    GProp_GProps properties;
    BRepGProp::VolumeProperties(shape, properties);
    return properties.Mass();
}

/// The result of an operation on bodies of these volumes can have this volume.
bool IsPlausible(BooleanKind kind, double body, double tools, double largestTool, double result)
{
    const double slack = 1e-4 * std::max(body, result) + 1e-3;
    switch (kind) {
    case BooleanKind::Cut:
        return result <= body + slack && result >= body - tools - slack;
    case BooleanKind::Fuse:
        return result <= body + tools + slack && result >= std::max(body, largestTool) - slack;
    default:
        return result <= std::min(body, tools) + slack;
    }
}

/// One run of the kernel's operation; null when it fails.
TopoDS_Shape Operate(BooleanKind kind, const TopoDS_Shape& body, const std::vector<TopoDS_Shape>& tools,
                     double fuzziness)
{
    TopTools_ListOfShape arguments;
    arguments.Append(body);
    TopTools_ListOfShape toolList;
    for (const TopoDS_Shape& tool : tools) {
        toolList.Append(tool);
    }
    BRepAlgoAPI_Cut cut;
    BRepAlgoAPI_Fuse fuse;
    BRepAlgoAPI_Common common;
    BRepAlgoAPI_BooleanOperation& operation =
        kind == BooleanKind::Cut
            ? static_cast<BRepAlgoAPI_BooleanOperation&>(cut)
            : (kind == BooleanKind::Fuse ? static_cast<BRepAlgoAPI_BooleanOperation&>(fuse) : common);
    operation.SetArguments(arguments);
    operation.SetTools(toolList);
    operation.SetRunParallel(false);
    operation.SetNonDestructive(true);
    operation.SetToFillHistory(false);
    operation.SetFuzzyValue(fuzziness);
    operation.Build();
    if (!operation.IsDone() || operation.HasErrors()) {
        return {};
    }
    const TopoDS_Shape shape = operation.Shape();
    const bool solid = Has(body, TopAbs_SOLID);
    const bool empty = !Has(shape, TopAbs_FACE);
    // Nothing left is an answer of a cut or an intersection; faces without a solid, or a solid with a gap,
    // are none.
    const bool sound =
        empty ? kind != BooleanKind::Fuse : !solid || (Has(shape, TopAbs_SOLID) && IsSound(shape));
    return sound ? shape : TopoDS_Shape();
}

/// The same, and what comes out has a volume that can be right.
TopoDS_Shape OperateSoundly(BooleanKind kind, const TopoDS_Shape& body,
                            const std::vector<TopoDS_Shape>& tools, double fuzziness)
{
    const TopoDS_Shape shape = Operate(kind, body, tools, fuzziness);
    if (shape.IsNull() || !Has(body, TopAbs_SOLID)) {
        return shape;
    }
    double all = 0;
    double largest = 0;
    for (const TopoDS_Shape& tool : tools) {
        const double volume = std::abs(VolumeOf(tool));
        all += volume;
        largest = std::max(largest, volume);
    }
    const double whole = std::abs(VolumeOf(body));
    const double rest = VolumeOf(shape);
    if (!IsPlausible(kind, whole, all, largest, rest)) {
        return {};
    }
    if (kind == BooleanKind::Cut && rest > whole * (1 - 1e-9)) {
        // Nothing was taken away, though the boxes meet: right only when nothing is common.
        const TopoDS_Shape common = Operate(BooleanKind::Common, body, tools, fuzziness);
        if (!common.IsNull() && VolumeOf(common) > 1e-6 * whole) {
            return {};
        }
    }
    return shape;
}

double VolumeOf(const Polyhedron& body)
{
    return body.SignedVolume(0, body.loops.size()) / 6;
}

bool CombinePolygons(Context& context, BooleanKind kind, const Solid& body,
                     const std::vector<const Solid*>& tools, Polyhedron& result)
{
    std::vector<Polyhedron> snapped;
    snapped.reserve(tools.size());
    double all = 0;
    double largest = 0;
    for (const Solid* tool : tools) {
        snapped.push_back(Snapped(tool->Facets(), body.Facets(), context.fuzziness));
        const double volume = VolumeOf(snapped.back());
        all += volume;
        largest = std::max(largest, volume);
    }
    std::vector<const Polyhedron*> flat;
    flat.reserve(snapped.size());
    for (const Polyhedron& tool : snapped) {
        flat.push_back(&tool);
    }
    const double whole = VolumeOf(body.Facets());
    const auto plausible = [&] { return IsPlausible(kind, whole, all, largest, VolumeOf(result)); };
    return (kind == BooleanKind::Cut && CutConvex(body.Facets(), flat, result) && plausible()) ||
           (CombineFlat(context, kind, body.Facets(), flat, result) && plausible());
}

} // namespace

bool Combine(Context& context, BooleanKind kind, const Solid& body, const std::vector<const Solid*>& tools,
             Solid& result)
{
    const auto isFlat = [](const Solid* tool) { return tool->IsFlat(); };
    Polyhedron polygons;
    if (body.IsFlat() && std::all_of(tools.begin(), tools.end(), isFlat) &&
        CombinePolygons(context, kind, body, tools, polygons)) {
        result = Solid(std::move(polygons));
        return true;
    }
    const auto isSmall = [](const Solid* solid) {
        return !solid->IsFlat() || solid->Facets().loops.size() <= MostFacesOfShape;
    };
    if (!isSmall(&body) || !std::all_of(tools.begin(), tools.end(), isSmall)) {
        result = body;
        return false;
    }
    std::vector<TopoDS_Shape> shapes;
    shapes.reserve(tools.size());
    for (const Solid* tool : tools) {
        shapes.push_back(tool->Shape());
    }
    TopoDS_Shape shape;
    const bool done = Combine(context, kind, body.Shape(), shapes, shape);
    polygons = Polyhedron();
    result = FacetsOf(shape, polygons) ? Solid(std::move(polygons)) : Solid(shape);
    return done;
}

bool Combine(const Context& context, BooleanKind kind, TopoDS_Shape body,
             const std::vector<TopoDS_Shape>& tools, TopoDS_Shape& result)
{
    // what the file means by the same place first: openings that end a hair before a face leave no skin
    for (const double fuzzy : {context.fuzziness, tolerance::FinestPrecision, 10 * context.fuzziness}) {
        const TopoDS_Shape shape = OperateSoundly(kind, body, tools, fuzzy);
        if (!shape.IsNull()) {
            result = shape;
            return true;
        }
    }
    result = body;
    if (tools.size() == 1) {
        return false;
    }
    bool all = true;
    for (const TopoDS_Shape& tool : tools) {
        all = Combine(context, kind, result, {tool}, result) && all;
    }
    return all;
}

Polyhedron ReadHalfSpace(Context& context, const Entity& halfSpace, const Bnd_Box& body)
{
    const Affine plane = context.Placement(halfSpace.Ref(0).Ref(0));
    // with agreement the half space lies on the side that the normal points away from
    const bool below = halfSpace.Boolean(1, true);
    if (!halfSpace.Is(Type::IfcPolygonalBoundedHalfSpace)) {
        const gp_XYZ normal = Column(plane, 3);
        const gp_XYZ middle = body.IsVoid() ? Origin(plane) : Middle(body);
        const gp_XYZ foot = middle - normal * (middle - Origin(plane)).Dot(normal);
        const double reach = Reach(body, foot);
        const gp_XYZ x = Column(plane, 1) * reach;
        const gp_XYZ y = Column(plane, 2) * reach;
        return TruncatedPrism({foot - x - y, foot + x - y, foot + x + y, foot - x + y}, normal, plane,
                              2 * reach, below);
    }
    const Affine position = context.Placement(halfSpace.Ref(2));
    const gp_XYZ up = Column(position, 3);
    const double slant = up.Dot(Column(plane, 3));
    Path outline = ReadCurve(context, halfSpace.Ref(3));
    if (std::abs(slant) < 1e-9) {
        throw Unbuildable("a bounded half space along its own boundary");
    }
    outline = SignedArea(outline) < 0 ? Reversed(outline) : outline;
    // curved boundaries become fine polygons: the tool is thrown away after the cut
    const std::vector<gp_XYZ> corners = Corners(context, Moved(outline, position), 0.05);
    return TruncatedPrism(corners, up, plane, Reach(body, corners.front()), below == (slant > 0));
}

/// What a cylinder, sphere or torus encloses, or what of the surroundings of the body it leaves out.
TopoDS_Shape ReadRoundSpace(const Context& context, const Entity& halfSpace, const Bnd_Box& body)
{
    const Entity surface = halfSpace.Ref(0);
    const Affine frame = context.Placement(surface.Ref(0));
    const double reach = Reach(body, Origin(frame));
    gp_Ax2 axes = ToAxes(frame).Ax2();
    TopoDS_Shape inside;
    if (halfSpace.Is(Type::IfcPolygonalBoundedHalfSpace)) {
        throw Unbuildable("a bounded half space that no plane bounds");
    }
    if (surface.Is(Type::IfcCylindricalSurface)) {
        axes.Translate(gp_Vec(axes.Direction()) * -reach);
        inside = BRepPrimAPI_MakeCylinder(axes, context.PositiveLength(surface, 1), 2 * reach).Shape();
    } else if (surface.Is(Type::IfcSphericalSurface)) {
        inside = BRepPrimAPI_MakeSphere(axes, context.PositiveLength(surface, 1)).Shape();
    } else if (surface.Is(Type::IfcToroidalSurface)) {
        inside = BRepPrimAPI_MakeTorus(axes, context.PositiveLength(surface, 1),
                                       context.PositiveLength(surface, 2))
                     .Shape();
    } else {
        throw Unbuildable("a half space bounded by a surface that does not close");
    }
    // with agreement the half space lies on the side that the normal points away from: inside
    if (halfSpace.Boolean(1, true)) {
        return inside;
    }
    if (body.IsVoid()) {
        throw Unbuildable("a half space without a body to be cut");
    }
    const gp_XYZ margin(1, 1, 1); // millimetres
    const TopoDS_Shape around =
        BRepPrimAPI_MakeBox(gp_Pnt(body.CornerMin().XYZ() - margin), gp_Pnt(body.CornerMax().XYZ() + margin))
            .Shape();
    return BRepAlgoAPI_Cut(around, inside).Shape();
}

bool SolidReader::IsSolid(Type type)
{
    switch (type) {
    case Type::IfcExtrudedAreaSolid:
    case Type::IfcExtrudedAreaSolidTapered:
    case Type::IfcRevolvedAreaSolid:
    case Type::IfcRevolvedAreaSolidTapered:
    case Type::IfcFixedReferenceSweptAreaSolid:
    case Type::IfcSurfaceCurveSweptAreaSolid:
    case Type::IfcSweptDiskSolid:
    case Type::IfcSweptDiskSolidPolygonal:
    case Type::IfcBooleanResult:
    case Type::IfcBooleanClippingResult:
    case Type::IfcCsgSolid:
    case Type::IfcBlock:
    case Type::IfcRectangularPyramid:
    case Type::IfcRightCircularCone:
    case Type::IfcRightCircularCylinder:
    case Type::IfcSphere:
    case Type::IfcAdvancedBrep:
    case Type::IfcAdvancedBrepWithVoids:
        return true;
    default:
        return false;
    }
}

Solid SolidReader::Read(const Entity& item)
{
    const Nesting nesting(myDepth);
    myContext.Steps(100);
    Polyhedron prism;
    TopoDS_Shape shape;
    switch (item.Type()) {
    case Type::IfcExtrudedAreaSolid:
        if (ReadPrism(myContext, item, prism)) {
            return Solid(std::move(prism));
        }
        return ReadSweptArea(myContext, item);
    case Type::IfcExtrudedAreaSolidTapered:
    case Type::IfcRevolvedAreaSolid:
    case Type::IfcRevolvedAreaSolidTapered:
    case Type::IfcFixedReferenceSweptAreaSolid:
    case Type::IfcSurfaceCurveSweptAreaSolid:
        return ReadSweptArea(myContext, item);
    case Type::IfcSweptDiskSolid:
    case Type::IfcSweptDiskSolidPolygonal:
        return ReadSweptDisk(myContext, item);
    case Type::IfcBooleanResult:
    case Type::IfcBooleanClippingResult:
        return ReadBoolean(item);
    case Type::IfcCsgSolid:
        return Read(item.Ref(0));
    case Type::IfcFacetedBrep:
    case Type::IfcFacetedBrepWithVoids:
    case Type::IfcTriangulatedFaceSet:
    case Type::IfcPolygonalFaceSet:
        return Solid(ReadPolyhedron(myContext, item));
    case Type::IfcAdvancedBrep:
    case Type::IfcAdvancedBrepWithVoids:
        shape = ReadAdvancedBrep(myContext, item);
        break;
    default:
        shape = ReadPrimitive(myContext, item);
        break;
    }
    if (shape.IsNull()) {
        throw Unbuildable("a solid of nothing");
    }
    return Solid(shape);
}

Solid SolidReader::ReadOperand(const Entity& item, const Bnd_Box& other)
{
    switch (item.Type()) {
    case Type::IfcHalfSpaceSolid:
    case Type::IfcBoxedHalfSpace: // its box is a hint for other kernels
    case Type::IfcPolygonalBoundedHalfSpace:
        return item.Ref(0).Is(Type::IfcPlane) ? Solid(ReadHalfSpace(myContext, item, other))
                                              : Solid(ReadRoundSpace(myContext, item, other));
    default:
        return Read(item);
    }
}

Solid SolidReader::ReadBoolean(const Entity& item)
{
    const auto known = myBooleans.find(item.Id());
    if (known != myBooleans.end()) {
        return known->second;
    }
    const AtWork atWork(myContext, item.Id());
    // Operator, FirstOperand, SecondOperand
    const std::string_view name = item.Enumeration(0);
    const BooleanKind kind = name == "UNION"          ? BooleanKind::Fuse
                             : name == "INTERSECTION" ? BooleanKind::Common
                                                      : BooleanKind::Cut;
    Solid result = ReadOperand(item.Ref(1), Bnd_Box());
    try {
        const Solid tool = ReadOperand(item.Ref(2), result.Bounds());
        if (!Combine(myContext, kind, Solid(result), {&tool}, result)) {
            myContext.Report(Report::Kind::Repaired,
                             "a boolean operation that fails; its first body stays whole");
        }
    } catch (const Unbuildable& reason) {
        // an operand that cannot be built leaves the first one as it is
        myContext.Report(Report::Kind::LeftOut, reason.what());
    }
    myBooleans[item.Id()] = result;
    return result;
}

} // namespace cadex::ifc
