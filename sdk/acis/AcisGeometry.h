// Curves and surfaces of SAT files as those of the kernel, in millimetres.
//
// Splines are the exact ones and the approximation that all other procedural curves and surfaces (blends,
// offsets, intersections, laws) carry as their "full" form.
#pragma once

#include <functional>
#include <optional>
#include <unordered_map>

#include <Geom_BSplineSurface.hxx>
#include <Geom_Curve.hxx>
#include <Geom_Surface.hxx>
#include <gp_Ax3.hxx>

#include "sdk/acis/AcisRecords.h"

namespace cadex::acis {

/// A curve; the kernel's parameter is factor times the file's.
struct Curve
{
    Handle(Geom_Curve) curve = {}; ///< null when it makes no sense
    double factor = 1;
};

/// A cone over an ellipse; it becomes a surface when its extent is known.
struct EllipticCone
{
    gp_Ax3 axes;
    double radius = 0; ///< of the larger axis at the origin
    double ratio = 1;  ///< of the other one
    double angle = 0;
};

struct Surface
{
    Handle(Geom_Surface) surface = {}; ///< null when it makes no sense, and for an elliptic cone
    std::optional<EllipticCone> cone = {};
    bool isReversed = false; ///< the file's normal is opposite to the kernel's
};

class GeometryReader
{
public:
    explicit GeometryReader(const Records& records) : myRecords(records), myScale(records.Head().millimetres)
    {
    }

    /// `record` may be None or of any type.
    const Curve& CurveOf(int record);
    const Surface& SurfaceOf(int record);
    /// Nothing when the record is no point.
    std::optional<gp_Pnt> PointOf(int record) const;

private:
    Curve ReadCurve(std::size_t record);
    Surface ReadSurface(std::size_t record);
    Curve ReadStraight(Fields fields) const;
    Curve ReadEllipse(Fields fields) const;
    Curve ReadSplineCurve(Fields fields);
    Surface ReadPlane(Fields fields) const;
    Surface ReadCone(Fields fields) const;
    Surface ReadSphere(Fields fields) const;
    Surface ReadTorus(Fields fields) const;
    Surface ReadSplineSurface(Fields fields);

    const Records& myRecords;
    const double myScale;
    std::unordered_map<int, Curve> myCurves; ///< by record
    std::unordered_map<int, Surface> mySurfaces;
    std::unordered_map<std::size_t, Handle(Geom_Curve)> mySplineCurves; ///< by the field of the block
    std::unordered_map<std::size_t, Handle(Geom_Surface)> mySplineSurfaces;
};

/// The cone between two heights over its origin (of which the part beyond the apex is left off), exact as a
/// rational spline; null when nothing is left.
Handle(Geom_Surface) MakeSurface(const EllipticCone& cone, double lowest, double highest);

} // namespace cadex::acis
