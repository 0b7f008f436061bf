// Curves and surfaces of Parasolid files as those of the kernel, in millimetres.
//
//     GeometryReader geometry(nodes);
//     const Curve& curve = geometry.CurveOf(edge.Pointer(Field::Curve));
//     if (!curve.curve.IsNull()) { ... }
#pragma once

#include <cmath>
#include <optional>
#include <unordered_map>

#include <Geom2d_BSplineCurve.hxx>
#include <Geom_Curve.hxx>
#include <Geom_Surface.hxx>
#include <gp_Ax3.hxx>
#include <gp_Pnt.hxx>

#include "sdk/brep/Surface.h"
#include "sdk/parasolid/XtBlends.h"
#include "sdk/parasolid/XtNodes.h"

namespace cadex::parasolid {

inline constexpr double Millimetres = 1000; ///< in a unit of length of the format

/// Parts lie within a box of a kilometre; points beyond twice that are damage (millimetres).
inline constexpr double SizeBox = 1e6;
inline bool IsInBox(const gp_XYZ& point)
{
    return std::abs(point.X()) <= SizeBox && std::abs(point.Y()) <= SizeBox && std::abs(point.Z()) <= SizeBox;
}

struct Curve
{
    Handle(Geom_Curve) curve = {}; ///< null when it makes no sense or is of an unknown kind
    bool isReversed = false;       ///< the file's curve runs against the kernel's
    /// Parameters on the kernel's curve, first < last, of a piece of it; equal: the whole curve.
    double first = 0;
    double last = 0;
    double factor = 1; ///< the kernel's parameter is that times the file's; 0: not known
};

/// Where the file's parameters of a surface are on the kernel's.
struct ParameterMap
{
    double uFactor = 1; ///< of the file's
    double vFactor = 1;
    bool isSwapped = false; ///< the file's u is the kernel's v
    bool isKnown = true;
};

struct Surface
{
    Handle(Geom_Surface) surface = {}; ///< null when it makes no sense or is of an unknown kind
    bool isReversed = false;           ///< the file's normal is opposite to the kernel's
    ParameterMap map = {};
};

/// A curve in the parameters of a surface, with the curve in space that it is.
struct SurfaceCurve
{
    Handle(Geom2d_BSplineCurve) inSurface = {}; ///< of the kernel's parameters
    Handle(Geom_Curve) inSpace = {};            ///< null when it makes no sense; the same parameter
    double first = 0;
    double last = 0;
    bool isReversed = false; ///< the file's curve runs from `last` to `first`
    int surface = 0;         ///< node
};

class GeometryReader
{
public:
    explicit GeometryReader(const Nodes& nodes) : myNodes(nodes) {}

    /// Any index; what is no curve gives one without geometry.
    const Curve& CurveOf(int index);
    const Surface& SurfaceOf(int index);
    /// Of a rolling-ball blend of one radius, on two surfaces along a spine that can be evaluated. It refers
    /// to surfaces of the reader. What SurfaceOf gives for one has no geometry: that depends on the face.
    std::optional<Blend> BlendOf(int index);
    /// Of a fin: a curve in a surface, or a piece of one.
    SurfaceCurve SurfaceCurveOf(int index);

private:
    Curve ReadCurve(const Node& node);
    Surface ReadSurface(const Node& node);
    Curve ReadTrimmed(const Node& node);
    Curve ReadIntersection(const Node& node);
    Surface ReadSwept(const Node& node);
    Surface ReadSpun(const Node& node);
    Surface ReadOffset(const Node& node);
    std::optional<Blend> ReadBlend(const Node& node);
    std::optional<Blend> BlendBeside(const Node& intersection);
    Support SupportOf(int index);
    /// As the room of bodies evaluates it; its geometry is null when it cannot.
    const brep::Surface& EvaluatedSurface(int index);

    const Nodes& myNodes;
    std::unordered_map<int, Curve> myCurves;
    std::unordered_map<int, Surface> mySurfaces;
    std::unordered_map<int, brep::Surface> myEvaluated;
    std::unordered_map<int, std::optional<Blend>> myBlends;
    int myDepth = 0; ///< of geometry made of other geometry
};

} // namespace cadex::parasolid
