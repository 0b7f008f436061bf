// Curves of IFC as runs of pieces, before they become edges: cheap to reverse, to move and to join.
//
//     Path outline = ReadCurve(context, profile.Ref(2));
//     TopoDS_Wire wire = WireOf(context, Moved(outline, placement), true);
#pragma once

#include <vector>

#include <Geom_Curve.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TopoDS_Wire.hxx>

#include "sdk/ifc/IfcContext.h"

namespace cadex::ifc {

/// From `start` to `end`, along the curve from `first` to `last` or, without a curve, straight. Millimetres.
struct Piece
{
    gp_XYZ start;
    gp_XYZ end;
    Handle(Geom_Curve) curve;
    double first = 0;
    double last = 0;
    double span = 1; ///< how far the file's own parameter runs over the piece
};

using Path = std::vector<Piece>;

/// IfcCurve of any bounded kind, circles and ellipses; 2D curves lie in z = 0. Unbuildable for others (an
/// infinite line) and for damaged ones.
Path ReadCurve(Context& context, const Entity& curve);

/// The directrix of a sweep, between its StartParam and EndParam, which follow each other in the arguments.
/// They count as the curve does: points of a polyline, angles of a circle, the sum of its segments for a
/// composite curve, or lengths where the file says so. Without them the whole curve.
Path ReadDirectrix(Context& context, const Entity& curve, const Entity& sweep, std::size_t startParam);

Piece Straight(const gp_XYZ& start, const gp_XYZ& end);
/// The arc from start through middle to end; straight when they lie in one line.
Piece Arc(const gp_XYZ& start, const gp_XYZ& middle, const gp_XYZ& end);
/// The whole circle in the frame's xy plane, starting on its x axis.
Path Circle(const Affine& frame, double radius);
Path Ellipse(const Affine& frame, double semiX, double semiY);
/// The closed polygon with corners rounded by these radii (none, or one each; 0: sharp).
Path Polygon(const std::vector<gp_XYZ>& corners, const std::vector<double>& radii = {});
/// The open polygon through the points, its inner corners rounded by one radius (0: sharp).
Path OpenPolygon(const std::vector<gp_XYZ>& points, double radius = 0);

/// The knots of a B-spline with their multiplicities, checked against the number of poles.
struct Knots
{
    Knots(const std::vector<double>& multiplicities, const std::vector<double>& values, int degree,
          int poles);
    TColStd_Array1OfReal values;
    TColStd_Array1OfInteger multiplicities;
};

/// The parameter of the point of the piece's curve that is nearest; Unbuildable when there is none.
double NearestParameter(const Piece& piece, const gp_XYZ& point);
Path Reversed(const Path& path);
/// The part of the path between two places, counted in spans from its start.
Path Stretch(const Path& path, double from, double to);
double LengthOf(const Piece& piece);
Path Moved(const Path& path, const Affine& placement);
/// Every piece straight, so that corners alone describe it.
bool IsStraight(const Path& path);
bool IsClosed(const Context& context, const Path& path);
/// Twice the area in the xy plane by the right-hand rule: above zero when the path runs counter-clockwise.
double SignedArea(const Path& path);
/// Points along the path, both ends included, close to it by the angle (radians) between them.
std::vector<gp_XYZ> Sampled(const Path& path, double angle = 0.2);

/// The corners of a closed polygon, none twice; Unbuildable when there are fewer than three. Curves are
/// sampled.
std::vector<gp_XYZ> Corners(const Context& context, const Path& path, double angle = 0.2);

/// Edges joined at shared vertices; gaps are bridged straight, and so is the last one when the wire shall
/// close.
TopoDS_Wire WireOf(const Context& context, const Path& path, bool close);

} // namespace cadex::ifc
