// Rolled steel sections and trapezia. Each outline is written down corner by corner, counter-clockwise from
// the lower left, with its fillets; sloping flanges keep the thickness that the profile gives in the middle
// of the flange.
#include <cmath>

#include "sdk/ifc/IfcProfiles.h"

namespace cadex::ifc {
namespace {

class Outline
{
public:
    void Add(double x, double y, double radius = 0)
    {
        myCorners.emplace_back(x, y, 0);
        myRadii.push_back(radius > 0 ? radius : 0);
    }
    /// The corners so far once more, point-mirrored at the origin.
    void AddPointMirrored()
    {
        const std::size_t count = myCorners.size();
        for (std::size_t i = 0; i < count; ++i) {
            Add(-myCorners[i].X(), -myCorners[i].Y(), myRadii[i]);
        }
    }
    Path Closed() const { return Polygon(myCorners, myRadii); }

private:
    std::vector<gp_XYZ> myCorners;
    std::vector<double> myRadii;
};

double Slope(const Context& context, const Entity& profile, std::size_t index)
{
    return std::tan(profile.Real(index, 0) * context.toRadians);
}

/// IfcIShapeProfileDef: OverallWidth, OverallDepth, WebThickness, FlangeThickness, FilletRadius,
/// FlangeEdgeRadius, FlangeSlope.
Path ReadIShape(const Context& context, const Entity& profile)
{
    const double x = context.PositiveLength(profile, 3) / 2;
    const double y = context.PositiveLength(profile, 4) / 2;
    const double web = context.PositiveLength(profile, 5) / 2;
    const double flange = context.PositiveLength(profile, 6);
    const double fillet = context.Length(profile, 7);
    const double edge = context.Length(profile, 8);
    const double rise = Slope(context, profile, 9) * (x - web) / 2;
    Outline outline;
    outline.Add(-x, -y);
    outline.Add(x, -y);
    outline.Add(x, -y + flange - rise, edge);
    outline.Add(web, -y + flange + rise, fillet);
    outline.Add(web, y - flange - rise, fillet);
    outline.Add(x, y - flange + rise, edge);
    outline.Add(x, y);
    outline.Add(-x, y);
    outline.Add(-x, y - flange + rise, edge);
    outline.Add(-web, y - flange - rise, fillet);
    outline.Add(-web, -y + flange + rise, fillet);
    outline.Add(-x, -y + flange - rise, edge);
    return outline.Closed();
}

/// IfcAsymmetricIShapeProfileDef: BottomFlangeWidth, OverallDepth, WebThickness, BottomFlangeThickness,
/// BottomFlangeFilletRadius, TopFlangeWidth, TopFlangeThickness, TopFlangeFilletRadius, further radii and
/// slopes.
Path ReadAsymmetricIShape(const Context& context, const Entity& profile)
{
    const double bottom = context.PositiveLength(profile, 3) / 2;
    const double y = context.PositiveLength(profile, 4) / 2;
    const double web = context.PositiveLength(profile, 5) / 2;
    const double bottomFlange = context.PositiveLength(profile, 6);
    const double bottomFillet = context.Length(profile, 7);
    const double top = context.PositiveLength(profile, 8) / 2;
    const double topFlange = context.Length(profile, 9, bottomFlange);
    const double topFillet = context.Length(profile, 10);
    Outline outline;
    outline.Add(-bottom, -y);
    outline.Add(bottom, -y);
    outline.Add(bottom, -y + bottomFlange);
    outline.Add(web, -y + bottomFlange, bottomFillet);
    outline.Add(web, y - topFlange, topFillet);
    outline.Add(top, y - topFlange);
    outline.Add(top, y);
    outline.Add(-top, y);
    outline.Add(-top, y - topFlange);
    outline.Add(-web, y - topFlange, topFillet);
    outline.Add(-web, -y + bottomFlange, bottomFillet);
    outline.Add(-bottom, -y + bottomFlange);
    return outline.Closed();
}

/// IfcLShapeProfileDef: Depth, Width, Thickness, FilletRadius, EdgeRadius, LegSlope.
Path ReadLShape(const Context& context, const Entity& profile)
{
    const double y = context.PositiveLength(profile, 3) / 2;
    const double x = context.Length(profile, 4, 2 * y) / 2;
    const double thickness = context.PositiveLength(profile, 5);
    const double fillet = context.Length(profile, 6);
    const double edge = context.Length(profile, 7);
    const double slope = Slope(context, profile, 8);
    // the legs' inner sides lean so that the thickness is right in the middle of each leg
    const double footTip = thickness - slope * (x - thickness / 2);
    const double footRoot = thickness + slope * (x - thickness / 2);
    const double legTip = thickness - slope * (y - thickness / 2);
    const double legRoot = thickness + slope * (y - thickness / 2);
    Outline outline;
    outline.Add(-x, -y);
    outline.Add(x, -y);
    outline.Add(x, -y + footTip, edge);
    outline.Add(-x + legRoot, -y + footRoot, fillet);
    outline.Add(-x + legTip, y, edge);
    outline.Add(-x, y);
    return outline.Closed();
}

/// IfcTShapeProfileDef: Depth, FlangeWidth, WebThickness, FlangeThickness, FilletRadius, FlangeEdgeRadius,
/// WebEdgeRadius, WebSlope, FlangeSlope. The flange is on top.
Path ReadTShape(const Context& context, const Entity& profile)
{
    const double y = context.PositiveLength(profile, 3) / 2;
    const double x = context.PositiveLength(profile, 4) / 2;
    const double web = context.PositiveLength(profile, 5) / 2;
    const double flange = context.PositiveLength(profile, 6);
    const double fillet = context.Length(profile, 7);
    const double flangeEdge = context.Length(profile, 8);
    const double webEdge = context.Length(profile, 9);
    const double lean = Slope(context, profile, 10) * (2 * y - flange) / 2;
    const double rise = Slope(context, profile, 11) * (x - web) / 2;
    Outline outline;
    outline.Add(-(web - lean), -y, webEdge);
    outline.Add(web - lean, -y, webEdge);
    outline.Add(web + lean, y - flange - rise, fillet);
    outline.Add(x, y - flange + rise, flangeEdge);
    outline.Add(x, y);
    outline.Add(-x, y);
    outline.Add(-x, y - flange + rise, flangeEdge);
    outline.Add(-(web + lean), y - flange - rise, fillet);
    return outline.Closed();
}

/// IfcUShapeProfileDef: Depth, FlangeWidth, WebThickness, FlangeThickness, FilletRadius, EdgeRadius,
/// FlangeSlope. The web is on the left.
Path ReadUShape(const Context& context, const Entity& profile)
{
    const double y = context.PositiveLength(profile, 3) / 2;
    const double x = context.PositiveLength(profile, 4) / 2;
    const double web = context.PositiveLength(profile, 5);
    const double flange = context.PositiveLength(profile, 6);
    const double fillet = context.Length(profile, 7);
    const double edge = context.Length(profile, 8);
    const double rise = Slope(context, profile, 9) * (2 * x - web) / 2;
    Outline outline;
    outline.Add(-x, -y);
    outline.Add(x, -y);
    outline.Add(x, -y + flange - rise, edge);
    outline.Add(-x + web, -y + flange + rise, fillet);
    outline.Add(-x + web, y - flange - rise, fillet);
    outline.Add(x, y - flange + rise, edge);
    outline.Add(x, y);
    outline.Add(-x, y);
    return outline.Closed();
}

/// IfcCShapeProfileDef: Depth, Width, WallThickness, Girth, InternalFilletRadius.
Path ReadCShape(const Context& context, const Entity& profile)
{
    const double y = context.PositiveLength(profile, 3) / 2;
    const double x = context.PositiveLength(profile, 4) / 2;
    const double wall = context.PositiveLength(profile, 5);
    const double girth = context.PositiveLength(profile, 6);
    const double inner = context.Length(profile, 7);
    const double outer = inner > 0 ? inner + wall : 0;
    Outline outline;
    outline.Add(-x, -y, outer);
    outline.Add(x, -y, outer);
    outline.Add(x, -y + girth);
    outline.Add(x - wall, -y + girth);
    outline.Add(x - wall, -y + wall, inner);
    outline.Add(-x + wall, -y + wall, inner);
    outline.Add(-x + wall, y - wall, inner);
    outline.Add(x - wall, y - wall, inner);
    outline.Add(x - wall, y - girth);
    outline.Add(x, y - girth);
    outline.Add(x, y, outer);
    outline.Add(-x, y, outer);
    return outline.Closed();
}

/// IfcZShapeProfileDef: Depth, FlangeWidth, WebThickness, FlangeThickness, FilletRadius, EdgeRadius. The
/// lower flange points right, the upper one left.
Path ReadZShape(const Context& context, const Entity& profile)
{
    const double y = context.PositiveLength(profile, 3) / 2;
    const double width = context.PositiveLength(profile, 4);
    const double web = context.PositiveLength(profile, 5) / 2;
    const double flange = context.PositiveLength(profile, 6);
    const double fillet = context.Length(profile, 7);
    const double edge = context.Length(profile, 8);
    const double x = width - web;
    Outline outline;
    outline.Add(-web, -y);
    outline.Add(x, -y);
    outline.Add(x, -y + flange, edge);
    outline.Add(web, -y + flange, fillet);
    outline.AddPointMirrored();
    return outline.Closed();
}

/// IfcTrapeziumProfileDef: BottomXDim, TopXDim, YDim, TopXOffset; centred by its bottom and its height.
Path ReadTrapezium(const Context& context, const Entity& profile)
{
    const double bottom = context.PositiveLength(profile, 3);
    const double top = context.PositiveLength(profile, 4);
    const double y = context.PositiveLength(profile, 5) / 2;
    const double offset = context.Length(profile, 6);
    Outline outline;
    outline.Add(-bottom / 2, -y);
    outline.Add(bottom / 2, -y);
    outline.Add(-bottom / 2 + offset + top, y);
    outline.Add(-bottom / 2 + offset, y);
    return outline.Closed();
}

} // namespace

Path ReadShapeProfile(Context& context, const Entity& profile)
{
    switch (profile.Type()) {
    case Type::IfcIShapeProfileDef:
        return ReadIShape(context, profile);
    case Type::IfcAsymmetricIShapeProfileDef:
        return ReadAsymmetricIShape(context, profile);
    case Type::IfcLShapeProfileDef:
        return ReadLShape(context, profile);
    case Type::IfcTShapeProfileDef:
        return ReadTShape(context, profile);
    case Type::IfcUShapeProfileDef:
        return ReadUShape(context, profile);
    case Type::IfcCShapeProfileDef:
        return ReadCShape(context, profile);
    case Type::IfcZShapeProfileDef:
        return ReadZShape(context, profile);
    case Type::IfcTrapeziumProfileDef:
        return ReadTrapezium(context, profile);
    default:
        throw Unbuildable("a profile of an unknown kind");
    }
}

} // namespace cadex::ifc
