#include "sdk/ifc/IfcAlignment.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "sdk/ifc/IfcLoft.h"

namespace cadex::ifc {
namespace {

const gp_XYZ Up(0, 0, 1);

/// How a curve of the plane bends, by the length along it: lines, arcs and spirals.
struct Bending
{
    std::array<double, 8> powers{}; ///< curvature is the sum of powers[n] s^n, 1/mm^(n + 1); above zero: left
    double sine = 0;                ///< and of sine sin(rate s), cosine cos(rate s), 1/mm
    double cosine = 0;
    double rate = 0; ///< radians per millimetre

    bool IsRound() const
    {
        return sine == 0 && cosine == 0 &&
               std::all_of(powers.begin() + 1, powers.end(), [](double power) { return power == 0; });
    }
    /// By how much the heading changes from 0 to s, radians.
    double Turn(double s) const
    {
        double turn = 0;
        for (std::size_t n = powers.size(); n-- > 0;) {
            turn = (turn + powers[n] / static_cast<double>(n + 1)) * s;
        }
        return rate == 0 ? turn
                         : turn + sine / rate * (1 - std::cos(rate * s)) + cosine / rate * std::sin(rate * s);
    }
};

/// A stretch of such a curve.
struct Bend
{
    gp_XYZ start;       ///< z = 0
    double heading = 0; ///< radians from the x axis
    Bending bending;
    double from = 0;   ///< where it begins on the curve, millimetres
    double sense = 1;  ///< -1: it runs back along the curve
    double length = 0; ///< millimetres

    double HeadingAt(double s) const { return heading + bending.Turn(from + sense * s) - bending.Turn(from); }

    gp_XYZ At(double s) const
    {
        const double curvature = sense * bending.powers[0];
        if (bending.IsRound() && std::abs(curvature * s) < 1e-12) {
            return start + gp_XYZ(std::cos(heading), std::sin(heading), 0) * s;
        }
        if (bending.IsRound()) {
            const double end = heading + curvature * s;
            return start + gp_XYZ(std::sin(end) - std::sin(heading), std::cos(heading) - std::cos(end), 0) /
                               curvature;
        }
        // NOTE: Simpson's rule; a step turns by less than a tenth of a radian, so that its error is below
        // 1e-7 of the way.
        const int steps = 2 * std::clamp(static_cast<int>(10 * TurnTo(s)) + 32, 32, 1000);
        gp_XYZ sum;
        for (int i = 0; i <= steps; ++i) {
            const double weight = i == 0 || i == steps ? 1 : (i % 2 == 1 ? 4 : 2);
            const double angle = HeadingAt(s * i / steps);
            sum += gp_XYZ(std::cos(angle), std::sin(angle), 0) * weight;
        }
        return start + sum * (s / (3 * steps));
    }

private:
    /// To and fro together.
    double TurnTo(double s) const
    {
        constexpr int Samples = 16;
        double turn = 0;
        for (int i = 0; i < Samples; ++i) {
            turn += std::abs(HeadingAt(s * (i + 1) / Samples) - HeadingAt(s * i / Samples));
        }
        return turn;
    }
};

double MeasureOf(const Context& context, const Entity& entity, std::size_t index)
{
    return context.Length(entity, index); // also out of a typed value: IFCLENGTHMEASURE(12.)
}

/// A spiral and the terms of its curvature in their order from the first argument on: powers of the length by
/// their exponents.
struct SpiralKind
{
    std::string_view name;
    int highest; ///< power, of the first term; the others descend to the constant one
    bool hasSine = false;
    bool hasCosine = false; ///< such a term comes before the powers
};
constexpr SpiralKind SpiralKinds[] = {
    {"IFCCLOTHOID", 1},
    {"IFCSECONDORDERPOLYNOMIALSPIRAL", 2},
    {"IFCTHIRDORDERPOLYNOMIALSPIRAL", 3},
    {"IFCSEVENTHORDERPOLYNOMIALSPIRAL", 7},
    {"IFCSINESPIRAL", 1, true, false},
    {"IFCCOSINESPIRAL", 0, false, true},
};

/// NOTE: ISO 16739-1:2024, IfcSpiral and its subtypes: a term A of the power n adds A / |A|^(n + 2) s^n to
/// the curvature, a sine term sin(2 pi s / L) / A, a cosine term cos(pi s / L) / A, where L is the length of
/// the segment. Terms but the first may be left out.
Bending ReadSpiral(const Context& context, const Entity& spiral, const SpiralKind& kind, double length)
{
    const auto term = [&](std::size_t index) {
        const double value = context.Length(spiral, index);
        return std::abs(value) > 1e-3 ? value : 0;
    };
    if (term(1) == 0) {
        throw Unbuildable("a spiral without its first term");
    }
    Bending bending;
    std::size_t index = 1;
    if (kind.hasSine || kind.hasCosine) {
        bending.rate = (kind.hasSine ? 2 : 1) * M_PI / length;
        (kind.hasSine ? bending.sine : bending.cosine) = 1 / term(index);
        ++index;
    }
    const int lowest = kind.name == "IFCCLOTHOID" ? 1 : 0;
    for (int power = kind.highest; power >= lowest; --power, ++index) {
        if (const double value = term(index); value != 0) {
            bending.powers[static_cast<std::size_t>(power)] =
                value / std::pow(std::abs(value), static_cast<double>(power + 2));
        }
    }
    return bending;
}

/// IfcCurveSegment: Transition, Placement, SegmentStart, SegmentLength, ParentCurve.
Bend ReadBend(const Context& context, const Entity& segment)
{
    const Affine placement = context.Placement(segment.Ref(1));
    const Entity parent = segment.Ref(4);
    const double length = MeasureOf(context, segment, 3);
    const gp_XYZ ahead = Column(placement, 1);
    Bend bend;
    bend.start = Origin(placement);
    bend.heading = std::atan2(ahead.Y(), ahead.X());
    bend.from = MeasureOf(context, segment, 2);
    bend.sense = length < 0 ? -1 : 1;
    bend.length = std::abs(length);
    const auto* kind = std::find_if(std::begin(SpiralKinds), std::end(SpiralKinds),
                                    [&](const SpiralKind& known) { return known.name == parent.TypeName(); });
    if (parent.Is(Type::IfcCircle)) {
        bend.bending.powers[0] = 1 / context.PositiveLength(parent, 1);
    } else if (kind != std::end(SpiralKinds) && bend.length > 0) {
        bend.bending = ReadSpiral(context, parent, *kind, bend.length);
    } else if (!parent.Is(Type::IfcLine) && bend.length > 0) {
        throw Unbuildable("an alignment with a segment of an unknown kind");
    }
    return bend;
}

class BentWay : public Alignment
{
public:
    BentWay(Context& context, const Entity& curve)
    {
        for (const Id id : curve.Refs(0)) {
            context.Step();
            const Bend bend = ReadBend(context, context.file.Get(id));
            if (bend.length > 0) {
                myStarts.push_back(myLength);
                myBends.push_back(bend);
                myLength += bend.length;
            }
        }
        if (myBends.empty()) {
            throw Unbuildable("an alignment without segments");
        }
    }

    double Length() const override { return myLength; }
    Place At(double distance) const override
    {
        const auto after = std::upper_bound(myStarts.begin() + 1, myStarts.end(), distance);
        const auto index = static_cast<std::size_t>(after - myStarts.begin()) - 1;
        const Bend& bend = myBends[index];
        const double s = distance - myStarts[index];
        const double heading = bend.HeadingAt(s);
        return {bend.At(s), gp_XYZ(std::cos(heading), std::sin(heading), 0)};
    }

private:
    std::vector<Bend> myBends;
    std::vector<double> myStarts;
    double myLength = 0;
};

/// Any other curve, by lengths along it.
class PathWay : public Alignment
{
public:
    explicit PathWay(Path path) : myPath(std::move(path))
    {
        for (Piece& piece : myPath) {
            piece.span = LengthOf(piece);
            myLength += piece.span;
        }
        if (!(myLength > 0)) {
            throw Unbuildable("an alignment without length");
        }
    }

    double Length() const override { return myLength; }
    Place At(double distance) const override
    {
        const double step = std::min(1.0, myLength / 1000); // millimetres
        const double from = std::clamp(distance, 0.0, myLength - step);
        const Path here = Stretch(myPath, from, from + step);
        const gp_XYZ tangent = Unit(here.back().end - here.front().start, gp_XYZ(1, 0, 0));
        return {here.front().start + tangent * (distance - from), tangent};
    }

private:
    Path myPath;
    double myLength = 0;
};

/// Heights over a stretch of the way: straight, round or a polynomial.
struct Grade
{
    double start = 0; ///< distance along the way
    double height = 0;
    double slope = 0;                 ///< sine of the angle at the start
    double curvature = 0;             ///< of an arc, 1/mm; above zero when it bends upwards
    std::vector<double> coefficients; ///< of a polynomial of the file's lengths
    double from = 0;                  ///< its parameter at the start
    double unit = 1;                  ///< millimetres of the file's length

    /// The height, and by how much it rises.
    std::pair<double, double> At(double distance) const
    {
        const double along = distance - start;
        if (!coefficients.empty()) {
            const double t = (along + from) / unit;
            return {height + (Value(t) - Value(from / unit)) * unit, Derivative(t)};
        }
        const double sine = std::clamp(slope + curvature * along, -0.99, 0.99);
        const double rise = sine / std::sqrt(1 - sine * sine);
        if (curvature == 0) {
            return {height + rise * along, rise};
        }
        return {height + (std::sqrt(1 - slope * slope) - std::sqrt(1 - sine * sine)) / curvature, rise};
    }

    double Value(double t) const
    {
        double value = 0;
        for (std::size_t i = coefficients.size(); i-- > 0;) {
            value = value * t + coefficients[i];
        }
        return value;
    }
    double Derivative(double t) const
    {
        double value = 0;
        for (std::size_t i = coefficients.size(); i-- > 1;) {
            value = value * t + static_cast<double>(i) * coefficients[i];
        }
        return value;
    }
};

Grade ReadGrade(const Context& context, const Entity& segment)
{
    const Affine placement = context.Placement(segment.Ref(1));
    const Entity parent = segment.Ref(4);
    Grade grade;
    grade.start = Origin(placement).X();
    grade.height = Origin(placement).Y();
    grade.slope = std::clamp(Column(placement, 1).Y(), -0.99, 0.99);
    grade.from = MeasureOf(context, segment, 2);
    grade.unit = context.toMillimetres;
    if (parent.Is(Type::IfcCircle)) {
        const double sense = MeasureOf(context, segment, 3) < 0 ? -1 : 1;
        grade.curvature = sense / context.PositiveLength(parent, 1);
    } else if (parent.TypeName() == "IFCPOLYNOMIALCURVE") {
        grade.coefficients = parent.Reals(2); // Position, CoefficientsX, CoefficientsY, CoefficientsZ
    } else if (!parent.Is(Type::IfcLine)) {
        throw Unbuildable("a profile of heights with a segment of an unknown kind");
    }
    return grade;
}

/// IfcGradientCurve: Segments, SelfIntersect, BaseCurve, EndPoint.
class GradedWay : public Alignment
{
public:
    GradedWay(Context& context, const Entity& curve) : myBase(AlignmentOf(context, curve.Ref(2)))
    {
        for (const Id id : curve.Refs(0)) {
            context.Step();
            myGrades.push_back(ReadGrade(context, context.file.Get(id)));
        }
        if (myGrades.empty()) {
            throw Unbuildable("a profile of heights without segments");
        }
        std::stable_sort(myGrades.begin(), myGrades.end(),
                         [](const Grade& a, const Grade& b) { return a.start < b.start; });
    }

    double Length() const override { return myBase->Length(); }
    Place At(double distance) const override
    {
        Place place = myBase->At(distance);
        const auto after =
            std::upper_bound(myGrades.begin() + 1, myGrades.end(), distance,
                             [](double value, const Grade& grade) { return value < grade.start; });
        const auto [height, rise] = (after - 1)->At(distance);
        place.point.SetZ(height);
        place.tangent = Unit(gp_XYZ(place.tangent.X(), place.tangent.Y(), rise), place.tangent);
        return place;
    }

private:
    std::shared_ptr<const Alignment> myBase;
    std::vector<Grade> myGrades;
};

bool HasCurveSegments(const Context& context, const Entity& curve)
{
    const std::vector<Id> segments = curve.Refs(0);
    return !segments.empty() && context.file.Get(segments.front()).TypeName() == "IFCCURVESEGMENT";
}

/// Distances between which the way turns by little, both ends included.
void AddStops(const Alignment& way, double from, double to, int depth, std::vector<double>& stops)
{
    constexpr double CosineOfTurn = 0.999; // two and a half degrees
    constexpr int Deepest = 10;
    const double middle = (from + to) / 2;
    const gp_XYZ here = way.At(middle).tangent;
    const bool straight = way.At(from).tangent.Dot(here) > CosineOfTurn &&
                          here.Dot(way.At(to).tangent) > CosineOfTurn && depth > 1;
    if (!straight && depth < Deepest) {
        AddStops(way, from, middle, depth + 1, stops);
        AddStops(way, middle, to, depth + 1, stops);
        return;
    }
    stops.push_back(to);
}

int& AlignmentDepth()
{
    thread_local int depth = 0;
    return depth;
}

std::shared_ptr<const Alignment> ReadWay(Context& context, const Entity& curve)
{
    const Nesting nesting(AlignmentDepth());
    if (curve.TypeName() == "IFCGRADIENTCURVE") {
        return std::make_shared<GradedWay>(context, curve);
    }
    if (curve.TypeName() == "IFCSEGMENTEDREFERENCECURVE") {
        context.Report(Report::Kind::Noted, "the cant of a way is not shown");
        return AlignmentOf(context, curve.Ref(2));
    }
    if (HasCurveSegments(context, curve)) {
        return std::make_shared<BentWay>(context, curve);
    }
    return std::make_shared<PathWay>(ReadCurve(context, curve));
}

/// Where a point along a curve is, and the upright frame there.
struct Stand
{
    double distance = 0;
    double left = 0; ///< of the way, millimetres
    double above = 0;
    double ahead = 0;
};

/// IfcPointByDistanceExpression: DistanceAlong, OffsetLateral, OffsetVertical, OffsetLongitudinal,
/// BasisCurve.
Stand StandOf(const Context& context, const Entity& axes)
{
    const Entity point = axes.Ref(0);
    if (point.TypeName() != "IFCPOINTBYDISTANCEEXPRESSION") {
        throw Unbuildable("a place along a curve without a distance");
    }
    return {MeasureOf(context, point, 0), context.Length(point, 1), context.Length(point, 2),
            context.Length(point, 3)};
}

Affine FrameAt(const Alignment& way, const Stand& stand)
{
    const Alignment::Place place = way.At(stand.distance);
    Affine frame = Frame(place.point, Up, place.tangent);
    const gp_XYZ origin = Apply(frame, gp_XYZ(stand.ahead, stand.left, stand.above));
    frame.translation = {origin.X(), origin.Y(), origin.Z()};
    return frame;
}

} // namespace

std::shared_ptr<const Alignment> AlignmentOf(Context& context, const Entity& curve)
{
    std::shared_ptr<const Alignment>& known = context.alignments[curve.Id()];
    if (known == nullptr) {
        known = ReadWay(context, curve);
    }
    return known;
}

bool IsAlignment(const Context& context, const Entity& curve)
{
    return curve.TypeName() == "IFCGRADIENTCURVE" || curve.TypeName() == "IFCSEGMENTEDREFERENCECURVE" ||
           (curve.Is(Type::IfcCompositeCurve) && HasCurveSegments(context, curve));
}

Path ReadAlignment(Context& context, const Entity& curve)
{
    const std::shared_ptr<const Alignment> way = AlignmentOf(context, curve);
    std::vector<double> stops{0};
    AddStops(*way, 0, way->Length(), 0, stops);
    context.Steps(stops.size());
    Path path;
    for (std::size_t i = 1; i < stops.size(); ++i) {
        Piece piece = Straight(way->At(stops[i - 1]).point, way->At(stops[i]).point);
        piece.span = (stops[i] - stops[i - 1]) / context.toMillimetres;
        path.push_back(piece);
    }
    return path;
}

Affine LinearPlacement(Context& context, const Entity& axes)
{
    const Stand stand = StandOf(context, axes);
    const std::shared_ptr<const Alignment> way = AlignmentOf(context, axes.Ref(0).Ref(4));
    const gp_XYZ z = context.Direction(axes.Ref(1), gp_XYZ(0, 0, 1));
    const gp_XYZ x = context.Direction(axes.Ref(2), gp_XYZ(1, 0, 0));
    return Compose(FrameAt(*way, stand), Frame(gp_XYZ(), z, x));
}

Polyhedron ReadSectionedSolid(Context& context, const Entity& solid)
{
    const std::shared_ptr<const Alignment> way = AlignmentOf(context, solid.Ref(0));
    const std::vector<Id> profiles = solid.Refs(1);
    const std::vector<Id> positions = solid.Refs(2);
    if (profiles.size() < 2 || positions.size() != profiles.size()) {
        throw Unbuildable("sections without positions");
    }
    std::vector<Stand> stands;
    std::vector<Section> outlines;
    for (std::size_t i = 0; i < profiles.size(); ++i) {
        stands.push_back(StandOf(context, context.file.Get(positions[i])));
        const std::vector<Region> regions = ReadProfile(context, context.file.Get(profiles[i]));
        if (regions.size() != 1 || regions.front().open) {
            throw Unbuildable("a section that is no single area");
        }
        outlines.push_back(SectionOf(context, regions.front()));
    }
    std::vector<Section> sections;
    const auto add = [&](std::size_t before, double share) {
        const std::size_t after = std::min(before + 1, stands.size() - 1);
        const auto mixed = [share](double a, double b) { return a + (b - a) * share; };
        const Stand& a = stands[before];
        const Stand& b = stands[after];
        const Affine frame = FrameAt(*way, {mixed(a.distance, b.distance), mixed(a.left, b.left),
                                            mixed(a.above, b.above), mixed(a.ahead, b.ahead)});
        Section& section = sections.emplace_back(Mixed(outlines[before], outlines[after], share));
        for (std::vector<gp_XYZ>& loop : section) {
            for (gp_XYZ& point : loop) {
                point = Apply(frame, gp_XYZ(0, point.X(), point.Y()));
            }
        }
    };
    add(0, 0);
    for (std::size_t i = 0; i + 1 < stands.size(); ++i) {
        const double from = stands[i].distance;
        const double to = stands[i + 1].distance;
        if (!(to > from)) {
            throw Unbuildable("sections that do not follow each other");
        }
        std::vector<double> stops;
        AddStops(*way, from, to, 0, stops);
        context.Steps(stops.size() * outlines.front().front().size());
        for (const double stop : stops) {
            add(i, (stop - from) / (to - from));
        }
    }
    return Loft(sections, false);
}

Polyhedron ReadSectionedSpine(Context& context, const Entity& spine)
{
    const std::vector<Id> profiles = spine.Refs(1);
    const std::vector<Id> positions = spine.Refs(2);
    if (profiles.size() < 2 || positions.size() != profiles.size()) {
        throw Unbuildable("sections without positions");
    }
    std::vector<Section> sections;
    for (std::size_t i = 0; i < profiles.size(); ++i) {
        const std::vector<Region> regions = ReadProfile(context, context.file.Get(profiles[i]));
        if (regions.size() != 1 || regions.front().open) {
            throw Unbuildable("a section that is no single area");
        }
        const Affine frame = context.Placement(context.file.Get(positions[i]));
        Section& section = sections.emplace_back(SectionOf(context, regions.front()));
        for (std::vector<gp_XYZ>& loop : section) {
            for (gp_XYZ& point : loop) {
                point = Apply(frame, point);
            }
        }
    }
    return Loft(sections, false);
}

} // namespace cadex::ifc
