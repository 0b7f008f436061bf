// Points, directions, placements, curves and surfaces of a STEP file as the kernel has them.
//
//     StepGeometryReader geometry(records);
//     geometry.SetUnits({.length = 25.4, .angle = Pi / 180});
//     Handle(Geom_Surface) surface = geometry.Surface(id);   // millimetres, radians
//
// Whatever cannot be read throws Damaged or Unsupported; the kernel's own exceptions pass through. Nothing
// that is returned holds a number that is not finite or beyond MaximalCoordinate.
//
// NOTE: ISO 10303-42. Its parameters are those of the context's units: where the kernel parametrises a curve
// or surface in another way, parameters are converted (see Parametrisation).
#pragma once

#include <array>
#include <vector>

#include <Geom2d_Curve.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_Curve.hxx>
#include <Geom_Surface.hxx>
#include <gp_Ax1.hxx>
#include <gp_Ax3.hxx>
#include <gp_Pnt.hxx>
#include <gp_Trsf.hxx>

#include "sdk/mesh/EngineTolerances.h"
#include "sdk/step/StepRecords.h"
#include "sdk/step/StepScale.h"

namespace cadex::step {

/// Millimetres; what lies beyond is no part of a body, and squares of it would leave the kernel's range.
inline constexpr double MaximalCoordinate = tolerance::LargestCoordinate;

/// How a parameter of the file becomes the kernel's: scale * parameter + shift.
struct Parametrisation
{
    double scale = 1;
    double shift = 0;

    double operator()(double parameter) const { return scale * parameter + shift; }
};

/// A curve without ends of its own, to put an edge on.
struct BasisCurve
{
    Handle(Geom_Curve) curve;
    Parametrisation parameters = {};
};

/// A surface without bounds of its own, to put a face on.
struct BasisSurface
{
    Handle(Geom_Surface) surface;
    Parametrisation u = {};
    Parametrisation v = {};
    bool flipped = false; ///< its normal is against that of the surface in the file
};

/// A surface within bounds in its parameters.
struct SurfacePatch
{
    Handle(Geom_Surface) surface;
    bool flipped = false;
};

/// A bounded piece of a curve.
struct CurvePiece
{
    Handle(Geom_Curve) curve; ///< null: the straight line from start to end
    double first = 0;         ///< below last
    double last = 0;
    gp_Pnt start; ///< at first
    gp_Pnt end;   ///< at last
};

class StepGeometryReader
{
public:
    /// The records must outlive it.
    explicit StepGeometryReader(const StepRecords& records);

    /// Of the context in which the records that are read next stand.
    void SetUnits(const StepScale& scale) { myScale = scale; }

    gp_Pnt Point(RecordId id);
    gp_Dir Direction(RecordId id);
    /// In millimetres.
    gp_Vec Vector(RecordId id);
    /// AXIS2_PLACEMENT_3D.
    gp_Ax3 Placement(RecordId id);
    /// AXIS1_PLACEMENT.
    gp_Ax1 Axis(RecordId id);
    /// CARTESIAN_TRANSFORMATION_OPERATOR_3D: one scale for all directions, perhaps a mirror.
    gp_Trsf Operator(RecordId id);

    /// The curve that an edge lies on: bounds of its own are dropped, the pieces of a composite are joined.
    BasisCurve Curve(RecordId id);
    /// A bounded curve, piece after piece from its start to its end. Throws Unsupported for a curve without
    /// bounds.
    std::vector<CurvePiece> Pieces(RecordId id);
    /// The curve of a PCURVE on its surface, which has been read; null when it is no spline.
    Handle(Geom2d_Curve) CurveOnSurface(RecordId pcurve, const BasisSurface& surface);

    /// The surface that a face lies on: bounds of its own are dropped.
    BasisSurface Surface(RecordId id);
    /// A surface that stands for itself. Throws Unsupported for one without bounds.
    SurfacePatch Patch(RecordId id);

    /// An item of a representation begins: what it may take is counted from here.
    void StartItem() { mySteps = 0; }
    /// Counts one step of reading. Throws Damaged when an item took more than any sound one needs: records
    /// may refer to each other in a way that doubles the work with every level. Then the next ones may take
    /// less.
    void CountStep();

    const StepRecords& Records() const { return myRecords; }
    const StepScale& Units() const { return myScale; }

private:
    class Nesting;

    double Length(Cursor& cursor) { return cursor.Real() * myScale.length; }
    double PositiveLength(Cursor& cursor, const StepRecords::Record& record);
    void ReadTriple(const StepRecords::Record& record, std::array<double, 3>& values);

    BasisCurve Conic(const StepRecords::Record& record, StepType type);
    BasisCurve Line(const StepRecords::Record& record);
    BasisCurve OffsetCurve(const StepRecords::Record& record);
    Handle(Geom_Curve) Joined(RecordId id);
    Handle(Geom_Curve) OfPcurve(const StepRecords::Record& record);
    Handle(Geom_BSplineCurve) Spline(const StepRecords::Record& record, StepType type);
    Handle(Geom2d_Curve) Curve2d(const StepRecords::Record& record);
    std::vector<gp_Pnt> PolylinePoints(const StepRecords::Record& record);
    std::vector<CurvePiece> TrimmedPieces(const StepRecords::Record& record);
    void AppendSegments(const StepRecords::Record& record, std::vector<CurvePiece>& pieces);

    BasisSurface Elementary(const StepRecords::Record& record, StepType type);
    BasisSurface Swept(const StepRecords::Record& record, StepType type);
    BasisSurface TrimmedBasis(const StepRecords::Record& record);
    Handle(Geom_BSplineSurface) SplineSurface(const StepRecords::Record& record, StepType type);

    const StepRecords& myRecords;
    StepScale myScale;
    int myDepth = 0;
    std::size_t mySteps = 0;
    std::size_t myMaximalSteps = 0;
    std::vector<RecordId> myIds;
};

/// Reverses the way along the pieces.
std::vector<CurvePiece> Reversed(std::vector<CurvePiece> pieces);

/// Knots of a spline in one direction, as the kernel takes them: ascending, each once.
class SplineKnots
{
public:
    SplineKnots(std::vector<double> values, std::vector<int> multiplicities, int degree, int poles);
    /// Of the curves and surfaces whose knots follow from their type.
    static SplineKnots Of(StepType type, int degree, int poles);

    const std::vector<double>& Values() const { return myValues; }
    const std::vector<int>& Multiplicities() const { return myMultiplicities; }

private:
    std::vector<double> myValues;
    std::vector<int> myMultiplicities;
};

} // namespace cadex::step
