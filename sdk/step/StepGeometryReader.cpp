#include "sdk/step/StepGeometryReader.h"

#include <algorithm>
#include <cmath>

#include <Geom_BSplineCurve.hxx>

#include "sdk/step/StepGeometryNesting.h"

namespace cadex::step {

namespace {

// Times that a sound item goes over one of the file's records, on average: what is mapped is read anew for
// each use.
constexpr std::size_t StepsPerRecord = 100;
constexpr std::size_t StepsOfAnyItem = 100'000;
constexpr std::size_t LeastSteps = 10'000;

bool IsUsable(double value)
{
    return std::abs(value) <= MaximalCoordinate; // false for what is no number
}

} // namespace

StepGeometryReader::StepGeometryReader(const StepRecords& records)
    : myRecords(records), myMaximalSteps(StepsPerRecord * records.Text().Count() + StepsOfAnyItem)
{
}

void StepGeometryReader::CountStep()
{
    if (++mySteps > myMaximalSteps) {
        myMaximalSteps = std::max(LeastSteps, myMaximalSteps / 4);
        throw Damaged("records that lead to each other without end");
    }
}

double StepGeometryReader::PositiveLength(Cursor& cursor, const StepRecords::Record& record)
{
    const double length = Length(cursor);
    Expect(cursor, record);
    if (!(length > 0) || !IsUsable(length)) {
        throw Damaged("a radius that is not positive", record.id);
    }
    return length;
}

void StepGeometryReader::ReadTriple(const StepRecords::Record& record, std::array<double, 3>& values)
{
    Cursor cursor = myRecords.Named(record);
    values = {0, 0, 0};
    std::size_t count = 0;
    for (cursor.EnterList(); count < 3 && cursor.More() && !cursor.Failed(); ++count) {
        values[count] = cursor.Real();
    }
    const bool usable = std::all_of(values.begin(), values.end(), IsUsable);
    if (count < 2 || cursor.Failed() || !usable) {
        throw Damaged("coordinates that are no numbers, or out of range", record.id);
    }
}

gp_Pnt StepGeometryReader::Point(RecordId id)
{
    CountStep();
    std::array<double, 3> c{};
    ReadTriple(myRecords.Get(id, StepType::CartesianPoint), c);
    const gp_Pnt point(c[0] * myScale.length, c[1] * myScale.length, c[2] * myScale.length);
    if (!IsUsable(point.X()) || !IsUsable(point.Y()) || !IsUsable(point.Z())) {
        throw Damaged("coordinates out of range", id);
    }
    return point;
}

gp_Dir StepGeometryReader::Direction(RecordId id)
{
    std::array<double, 3> c{};
    ReadTriple(myRecords.Get(id, StepType::Direction), c);
    const gp_XYZ direction(c[0], c[1], c[2]);
    if (!(direction.Modulus() > gp::Resolution())) {
        throw Damaged("a direction without length", id);
    }
    return gp_Dir(direction);
}

gp_Vec StepGeometryReader::Vector(RecordId id)
{
    const StepRecords::Record& record = myRecords.Get(id, StepType::Vector);
    Cursor arguments = myRecords.Named(record);
    const gp_Dir direction = Direction(arguments.Reference());
    const double length = Length(arguments);
    Expect(arguments, record);
    // Some exporters leave the magnitude 0: the direction is what counts.
    return gp_Vec(direction) * (length > 0 && IsUsable(length) ? length : 1.0);
}

gp_Ax3 StepGeometryReader::Placement(RecordId id)
{
    const StepRecords::Record& record = myRecords.Get(id, StepType::Axis2Placement3d);
    Cursor arguments = myRecords.Named(record);
    const gp_Pnt origin = Point(arguments.Reference());
    const RecordId axis = arguments.Reference();
    const RecordId reference = arguments.More() ? arguments.Reference() : 0;
    // NOTE: build_axes: what is omitted is the z axis, and the x axis unless it is along z.
    const gp_Dir z = axis != 0 ? Direction(axis) : gp::DZ();
    const gp_Dir x = reference != 0 ? Direction(reference) : gp::DX();
    if (!x.IsParallel(z, 1e-9)) {
        return {origin, z, x};
    }
    return {origin, z, std::abs(z.X()) < 0.9 ? gp::DX() : gp::DY()};
}

gp_Ax1 StepGeometryReader::Axis(RecordId id)
{
    const StepRecords::Record& record = myRecords.Get(id);
    if (myRecords.TypeOf(record) != StepType::Axis1Placement) {
        return Placement(id).Axis();
    }
    Cursor arguments = myRecords.Named(record);
    const gp_Pnt origin = Point(arguments.Reference());
    const RecordId axis = arguments.Reference();
    return {origin, axis != 0 ? Direction(axis) : gp::DZ()};
}

gp_Trsf StepGeometryReader::Operator(RecordId id)
{
    const StepRecords::Record& record = myRecords.Get(id);
    bool isComplex = false;
    Cursor arguments = myRecords.Part(record, "CARTESIAN_TRANSFORMATION_OPERATOR", isComplex);
    if (!isComplex) {
        // The names of the representation item and of the transformation, and a description.
        arguments = myRecords.Named(myRecords.Get(id, StepType::TransformationOperator));
        arguments.Skip();
        arguments.Skip();
    }
    const RecordId firstAxis = arguments.Reference();
    const RecordId secondAxis = arguments.Reference();
    const gp_Pnt origin = Point(arguments.Reference());
    double scale = 1.0;
    if (arguments.Next() == Cursor::Kind::Omitted) {
        arguments.Skip();
    } else {
        scale = arguments.Real();
    }
    if (isComplex) {
        arguments = myRecords.Part(record, "CARTESIAN_TRANSFORMATION_OPERATOR_3D", isComplex);
    }
    const RecordId thirdAxis = arguments.More() ? arguments.Reference() : 0;
    if (!(scale > 0) || !IsUsable(scale)) {
        throw Damaged("a transformation without a scale", id);
    }
    // NOTE: base_axis. The third axis holds, the first is made normal to it, the second chooses the hand.
    const gp_Dir z =
        thirdAxis != 0 ? Direction(thirdAxis)
        : firstAxis != 0 && secondAxis != 0 && !Direction(firstAxis).IsParallel(Direction(secondAxis), 1e-9)
            ? Direction(firstAxis).Crossed(Direction(secondAxis))
            : gp::DZ();
    const gp_Dir wanted = firstAxis != 0 ? Direction(firstAxis) : gp::DX();
    const gp_Ax2 axes = wanted.IsParallel(z, 1e-9) ? gp_Ax2(origin, z) : gp_Ax2(origin, z, wanted);
    const bool mirrored = secondAxis != 0 && Direction(secondAxis).Dot(axes.YDirection()) < 0;
    gp_Trsf result;
    result.SetTransformation(gp_Ax3(axes), gp_Ax3());
    if (mirrored) {
        gp_Trsf mirror;
        mirror.SetMirror(gp_Ax2(gp::Origin(), gp::DY()));
        result.Multiply(mirror);
    }
    if (scale != 1.0) {
        gp_Trsf scaling;
        scaling.SetScale(gp::Origin(), scale);
        result.Multiply(scaling);
    }
    return result;
}

SplineKnots::SplineKnots(std::vector<double> values, std::vector<int> multiplicities, int degree, int poles)
{
    if (values.size() < 2 || values.size() != multiplicities.size() || degree < 1 ||
        degree > Geom_BSplineCurve::MaxDegree() || poles <= degree) {
        throw Damaged("a spline whose knots do not fit its poles");
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!IsUsable(values[i]) || multiplicities[i] < 1) {
            throw Damaged("a spline with knots that are none");
        }
        const double gap = myValues.empty() ? 1.0 : values[i] - myValues.back();
        if (gap <= 1e-12 * std::max(1.0, std::abs(values[i]))) {
            if (gap < -1e-9 * std::max(1.0, std::abs(values[i]))) {
                throw Damaged("a spline whose knots do not ascend");
            }
            myMultiplicities.back() += multiplicities[i]; // the same knot once more
            continue;
        }
        myValues.push_back(values[i]);
        myMultiplicities.push_back(multiplicities[i]);
    }
    long sum = 0;
    for (const int m : myMultiplicities) {
        sum += m;
    }
    if (myValues.size() < 2 || sum != static_cast<long>(poles) + degree + 1) {
        throw Damaged("a spline whose knots do not fit its poles");
    }
}

SplineKnots SplineKnots::Of(StepType type, int degree, int poles)
{
    if (degree < 1 || poles <= degree) {
        throw Damaged("a spline without enough poles");
    }
    std::vector<double> values;
    std::vector<int> multiplicities;
    const bool uniform = type == StepType::SplineUniform || type == StepType::SurfaceUniform;
    const bool bezier = type == StepType::SplineBezier || type == StepType::SurfaceBezier;
    if (uniform) {
        for (int i = -degree; i <= poles; ++i) {
            values.push_back(i);
        }
        multiplicities.assign(values.size(), 1);
    } else {
        const int spans = bezier ? (poles - 1) / degree : poles - degree;
        for (int i = 0; i <= spans; ++i) {
            values.push_back(i);
        }
        multiplicities.assign(values.size(), bezier ? degree : 1);
        multiplicities.front() = multiplicities.back() = degree + 1;
    }
    return {std::move(values), std::move(multiplicities), degree, poles};
}

} // namespace cadex::step
