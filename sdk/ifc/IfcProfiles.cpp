#include "sdk/ifc/IfcProfiles.h"

#include <algorithm>

#include <BRep_Builder.hxx>
#include <Geom_Plane.hxx>

#include "sdk/mesh/EngineTolerances.h"

namespace cadex::ifc {
namespace {

std::vector<gp_XYZ> Rectangle(double width, double height)
{
    const double x = width / 2;
    const double y = height / 2;
    return {{-x, -y, 0}, {x, -y, 0}, {x, y, 0}, {-x, y, 0}};
}

Path Oriented(Path path, bool counterClockwise)
{
    return (SignedArea(path) > 0) == counterClockwise ? std::move(path) : Reversed(path);
}

Region RegionOf(Path outer, std::vector<Path> holes = {})
{
    Region region{Oriented(std::move(outer), true), {}, false};
    for (Path& hole : holes) {
        region.holes.push_back(Oriented(std::move(hole), false));
    }
    return region;
}

Region ReadHollowRectangle(const Context& context, const Entity& profile)
{
    const double width = context.PositiveLength(profile, 3);
    const double height = context.PositiveLength(profile, 4);
    const double wall = context.PositiveLength(profile, 5);
    if (2 * wall >= std::min(width, height)) {
        throw Unbuildable("walls thicker than the profile");
    }
    const std::vector<double> inner(4, context.Length(profile, 6));
    const std::vector<double> outer(4, context.Length(profile, 7));
    return RegionOf(Polygon(Rectangle(width, height), outer),
                    {Polygon(Rectangle(width - 2 * wall, height - 2 * wall), inner)});
}

Region ReadParameterised(Context& context, const Entity& profile)
{
    switch (profile.Type()) {
    case Type::IfcRectangleProfileDef:
        return RegionOf(
            Polygon(Rectangle(context.PositiveLength(profile, 3), context.PositiveLength(profile, 4))));
    case Type::IfcRoundedRectangleProfileDef:
        return RegionOf(
            Polygon(Rectangle(context.PositiveLength(profile, 3), context.PositiveLength(profile, 4)),
                    std::vector<double>(4, context.Length(profile, 5))));
    case Type::IfcRectangleHollowProfileDef:
        return ReadHollowRectangle(context, profile);
    case Type::IfcCircleProfileDef:
        return RegionOf(Circle({}, context.PositiveLength(profile, 3)));
    case Type::IfcCircleHollowProfileDef: {
        const double radius = context.PositiveLength(profile, 3);
        const double wall = context.PositiveLength(profile, 4);
        if (wall >= radius) {
            return RegionOf(Circle({}, radius));
        }
        return RegionOf(Circle({}, radius), {Circle({}, radius - wall)});
    }
    case Type::IfcEllipseProfileDef:
        return RegionOf(Ellipse({}, context.PositiveLength(profile, 3), context.PositiveLength(profile, 4)));
    default:
        return RegionOf(ReadShapeProfile(context, profile));
    }
}

Region MovedRegion(const Region& region, Affine placement)
{
    if (IsIdentity(placement)) {
        return region;
    }
    if (mesh::Determinant(placement.linear) < 0) {
        // In z = 0 a mirror equals a half turn in space, which keeps arcs arcs.
        placement = occt::ToAffine(Column(placement, 1), Column(placement, 2),
                                   Column(placement, 3).Reversed(), Origin(placement));
    }
    Region moved{Moved(region.outer, placement), {}, region.open};
    for (const Path& hole : region.holes) {
        moved.holes.push_back(Moved(hole, placement));
    }
    // a mirror turns the outlines round
    return region.open ? moved : RegionOf(moved.outer, moved.holes);
}

/// The band of this thickness along a centre line.
Region Band(const Path& centre, double thickness)
{
    const std::vector<gp_XYZ> points = Sampled(centre, 0.1);
    std::vector<gp_XYZ> left;
    std::vector<gp_XYZ> right;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const gp_XYZ in = Unit(points[i] - points[i > 0 ? i - 1 : 0], gp_XYZ());
        const gp_XYZ out = Unit(points[std::min(i + 1, points.size() - 1)] - points[i], gp_XYZ());
        const gp_XYZ along = Unit(in + out, in);
        // a mitre at each corner, no longer than four times the half thickness
        const double stretch = 1 / std::max(0.25, along.Dot(out.Modulus() > 0 ? out : in));
        const gp_XYZ aside = gp_XYZ(-along.Y(), along.X(), 0) * (thickness / 2 * stretch);
        left.push_back(points[i] - aside);
        right.push_back(points[i] + aside);
    }
    left.insert(left.end(), right.rbegin(), right.rend());
    return RegionOf(Polygon(left));
}

int& ProfileDepth()
{
    thread_local int depth = 0;
    return depth;
}

} // namespace

std::vector<Region> ReadProfile(Context& context, const Entity& profile)
{
    const Nesting nesting(ProfileDepth());
    context.Step();
    std::vector<Region> regions;
    switch (profile.Type()) {
    case Type::IfcArbitraryClosedProfileDef:
        return {RegionOf(ReadCurve(context, profile.Ref(2)))};
    case Type::IfcArbitraryProfileDefWithVoids: {
        std::vector<Path> holes;
        for (Id id : profile.Refs(3)) {
            holes.push_back(ReadCurve(context, context.file.Get(id)));
        }
        return {RegionOf(ReadCurve(context, profile.Ref(2)), std::move(holes))};
    }
    case Type::IfcArbitraryOpenProfileDef:
        return {{ReadCurve(context, profile.Ref(2)), {}, true}};
    case Type::IfcCenterLineProfileDef:
        return {Band(ReadCurve(context, profile.Ref(2)), context.PositiveLength(profile, 3))};
    case Type::IfcCompositeProfileDef:
        for (Id id : profile.Refs(2)) {
            for (Region& region : ReadProfile(context, context.file.Get(id))) {
                regions.push_back(std::move(region));
            }
        }
        return regions;
    case Type::IfcDerivedProfileDef:
    case Type::IfcMirroredProfileDef: {
        Affine placement;
        placement.linear[0] = -1; // the mirrored one mirrors about its y axis
        if (profile.Is(Type::IfcDerivedProfileDef)) {
            placement = context.Operator(profile.Ref(3));
        }
        for (const Region& region : ReadProfile(context, profile.Ref(2))) {
            regions.push_back(MovedRegion(region, placement));
        }
        return regions;
    }
    default:
        return {MovedRegion(ReadParameterised(context, profile), context.Placement(profile.Ref(2)))};
    }
}

TopoDS_Face FaceOf(const Context& context, const Region& region, const Affine& placement)
{
    const BRep_Builder builder;
    TopoDS_Face face;
    builder.MakeFace(face, new Geom_Plane(ToAxes(placement)), tolerance::Coincident);
    builder.Add(face, WireOf(context, Moved(region.outer, placement), true));
    for (const Path& hole : region.holes) {
        builder.Add(face, WireOf(context, Moved(hole, placement), true));
    }
    return face;
}

} // namespace cadex::ifc
