// Curves of 3DM files as curves of the kernel.
#pragma once

#include <vector>

#include <Geom2d_BSplineCurve.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_Curve.hxx>
#include <gp_Pnt.hxx>

#include "sdk/rhino/RhinoTables.h"

namespace cadex::rhino {

/// A curve with the interval on which the file uses it. The kernel's parameter follows from the file's by an
/// affine map.
struct Curve
{
    Handle(Geom_Curve) curve = {};
    double begin = 0; ///< the file's interval
    double end = 1;
    double first = 0; ///< the same on the kernel's curve
    double last = 1;
    std::vector<gp_Pnt> corners = {}; ///< of a line or polyline, which is these and nothing else

    double At(double parameter) const { return first + (parameter - begin) * (last - first) / (end - begin); }
    gp_Pnt Start() const { return curve->Value(first); }
    gp_Pnt End() const { return curve->Value(last); }
};

/// Whether a class is one of curves, so that ReadCurve can read its data.
bool IsCurve(const Uuid& classId);

/// Reads a curve's data. `scale` multiplies all lengths: millimetres of the file's unit for curves in space,
/// 1 for curves on surfaces, which lie in the plane z = 0. A curve that makes no sense (no length, knots that
/// run backwards) has a null handle; the data are read to their end nevertheless.
Curve ReadCurve(const Uuid& classId, Chunk& data, double scale);

/// Reads a class wrapper that must hold a curve, or nothing: then the handle is null.
Curve ReadCurveObject(Chunk& parent, double scale);

/// A curve of pieces before they are joined. A curve without pieces stands alone in `curve`.
struct CurveTree
{
    Curve curve;
    std::vector<CurveTree> pieces;
    std::vector<double> parameters; ///< at the ends of the pieces: one more than there are pieces
};

/// Reads a class wrapper that must hold a curve and leaves its pieces apart.
CurveTree ReadCurveTree(Chunk& parent, double scale);

/// The curve within its interval as a spline over [begin, end], joined to one where it has pieces. Arcs are
/// exact in shape.
Handle(Geom_BSplineCurve) SplineOf(const Curve& curve);

/// Knots as the file has them (without the first and the last of the usual vector) as the kernel wants them.
/// False when they do not rise or have too many alike.
struct Knots
{
    std::vector<double> values;
    std::vector<int> multiplicities;
};
bool MakeKnots(const std::vector<double>& knots, int degree, Knots& result);

} // namespace cadex::rhino
