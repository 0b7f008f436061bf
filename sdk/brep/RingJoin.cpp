#include "sdk/brep/RingJoin.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include <Geom_BSplineCurve.hxx>
#include <Geom_Line.hxx>
#include <Precision.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <gp_Lin.hxx>

#include "sdk/brep/Closing.h"
#include "sdk/brep/Tolerances.h"

namespace cadex::brep {

namespace {

// ------------------------------------------------------------------------------------------------ own edges

/// The curve in space of a straight way on the surface: the cubic spline through points of it, with their
/// tangents.
Handle(Geom_Curve)
    CurveAlong(const Surface& surface, const gp_Pnt2d& from, const gp_Vec2d& way, double length)
{
    constexpr int Spans = 32;
    const gp_Vec2d unit = way / length;
    TColgp_Array1OfPnt poles(1, 2 * Spans + 2);
    TColStd_Array1OfReal knots(1, Spans + 1);
    TColStd_Array1OfInteger multiplicities(1, Spans + 1);
    multiplicities.Init(2);
    multiplicities(1) = multiplicities(Spans + 1) = 4;
    for (int i = 0; i <= Spans; ++i) {
        const double t = length * i / Spans;
        gp_Pnt point;
        gp_Vec du, dv;
        surface.D1(from.Translated(unit * t), point, du, dv);
        const gp_Vec third = (du * unit.X() + dv * unit.Y()) * (length / Spans / 3);
        poles(2 * i + 1) = i == 0 ? point : point.Translated(-third);
        poles(2 * i + 2) = i == Spans ? point : point.Translated(third);
        knots(i + 1) = t;
    }
    return new Geom_BSplineCurve(poles, knots, multiplicities, 3);
}

/// The surface's own curve along a way of constant u or v, which runs through the given place; null where the
/// kernel would approximate it.
Handle(Geom_Curve) IsoCurve(const Surface& surface, const gp_Pnt2d& place, int moving)
{
    if (surface.kind == SurfaceKind::Other || surface.kind == SurfaceKind::Plane) {
        return {};
    }
    const int fixed = 1 - moving;
    double level = place.Coord(fixed + 1);
    if (const double period = surface.period[fixed]; period > 0) {
        level -= period * std::floor((level - surface.low[fixed]) / period);
    }
    return WithoutTrimming(fixed == 0 ? surface.geometry->UIso(level) : surface.geometry->VIso(level));
}

bool LiesOn(const BodyEdge& edge, const RingUse& use, const Surface& surface)
{
    constexpr int Samples = 6;
    for (int i = 0; i <= Samples; ++i) {
        const double t = use.first + (use.last - use.first) * i / Samples;
        if (!(surface.Value(use.curve.Value(t)).Distance(edge.Value(t)) <= tolerance::CurveFitLeast)) {
            return false;
        }
    }
    return true;
}

/// Takes the surface's own curve, exact and with the surface's parameter, where the way goes along one
/// parameter.
bool TakeIsoCurve(const Surface& surface, const gp_Pnt2d& from, const gp_Pnt2d& to, BodyEdge& edge,
                  RingUse& use)
{
    const gp_Vec2d way(from, to);
    const int moving = std::abs(way.X()) < tolerance::SameAxis ? 1 : 0;
    if (std::abs(way.XY().Coord(2 - moving)) >= tolerance::SameAxis) {
        return false;
    }
    const Handle(Geom_Curve) curve = IsoCurve(surface, from, moving);
    if (curve.IsNull()) {
        return false;
    }
    use.forward = way.XY().Coord(moving + 1) > 0;
    const gp_Pnt2d &low = use.forward ? from : to, &high = use.forward ? to : from;
    use.first = edge.first = low.Coord(moving + 1);
    use.last = edge.last = high.Coord(moving + 1);
    use.curve = StraightCurve(low, high, use.first, use.last);
    edge.kind = KindOf(*curve);
    edge.curve = curve;
    if (const auto line = Handle(Geom_Line)::DownCast(curve); !line.IsNull()) {
        edge.curve.Nullify();
        edge.origin = line->Lin().Location();
        edge.direction = line->Lin().Direction();
    }
    return LiesOn(edge, use, surface);
}

/// Makes an edge of the face's own along the straight way and gives its use from `from` to `to`; nothing when
/// the way has no length.
std::optional<RingUse> AddOwnEdge(Resolution& resolution, int start, int end, const gp_Pnt2d& from,
                                  const gp_Pnt2d& to)
{
    const gp_Vec2d way(from, to);
    const double length = way.Magnitude();
    if (!(length > tolerance::SameAxis)) {
        return std::nullopt;
    }
    BodyEdge edge;
    RingUse use;
    if (!TakeIsoCurve(resolution.surface, from, to, edge, use)) {
        edge = {};
        edge.kind = CurveKind::Spline;
        edge.curve = CurveAlong(resolution.surface, from, way, length);
        edge.last = length;
        use = {};
        use.last = length;
        use.curve = StraightCurve(from, to, 0, length);
    }
    edge.isUsable = true;
    edge.start = use.forward ? start : end;
    edge.end = use.forward ? end : start;
    if (edge.Value(edge.first).Distance(edge.Value((edge.first + edge.last) / 2)) < tolerance::Coincident) {
        return std::nullopt;
    }
    use.kind = UseKind::Own;
    use.edge = static_cast<int>(resolution.face.ownEdges.size());
    resolution.face.ownEdges.push_back(edge);
    return use;
}

/// The second use of a seam: back along it, moved by the ring's way round.
RingUse Back(const RingUse& seam, const gp_Vec2d& by)
{
    RingUse back = seam;
    back.forward = !seam.forward;
    back.curve.Shift(by);
    return back;
}

// --------------------------------------------------------------------------------------- seams between rings

/// Going round with the material on the left, a ring in the sense of u has it above in v, one in the sense of
/// v has it below in u.
int AroundOf(const OpenRing& ring)
{
    return ring.winding[0] != 0 ? 0 : 1;
}

bool IsLower(const OpenRing& ring)
{
    return AroundOf(ring) == 0 ? ring.winding[0] > 0 : ring.winding[1] < 0;
}

gp_Vec2d RoundOf(const Surface& surface, const OpenRing& ring)
{
    return {ring.winding[0] * surface.period[0], ring.winding[1] * surface.period[1]};
}

/// Lets the ring start with another use; what comes before goes on behind its end.
void StartWith(const Surface& surface, OpenRing& ring, std::size_t number)
{
    for (std::size_t i = 0; i < number; ++i) {
        ring.uses[i].curve.Shift(RoundOf(surface, ring));
    }
    std::rotate(ring.uses.begin(), ring.uses.begin() + static_cast<std::ptrdiff_t>(number), ring.uses.end());
}

/// One straight piece of a seam: from a vertex of a ring to one of the next ring, or to a pole.
struct Leg
{
    std::size_t exit = 0;  ///< use of the ring before that starts where the leg does
    std::size_t entry = 0; ///< use of the ring behind that starts where the leg ends
    gp_Pnt2d from;
    gp_Pnt2d to;
    OpenRing ring; ///< the ring behind, where the leg meets it; without uses: the pole
};

/// Looks for a seam from a ring that goes round to another one or to a pole: straight across where that is
/// free, else by way of the holes that are in between, whose vertices it may use.
class SeamFinder
{
public:
    SeamFinder(const Surface& surface, const OpenRing& first, const std::vector<OpenRing>& holes)
        : mySurface(surface), myFirst(first), myHoles(holes), myIsVisited(holes.size())
    {
    }

    void SetSecond(const OpenRing& second) { mySecond = &second; }
    void SetPole(const Pole& pole) { myPole = &pole; }

    /// The legs in order; empty when there is no way.
    std::vector<Leg> Find()
    {
        std::vector<Leg> legs;
        constexpr int MostHoles = 4;
        if (!Reach(myFirst, RoundOf(mySurface, myFirst), mySecond, MostHoles, legs)) {
            legs.clear();
        }
        return legs;
    }

private:
    struct Candidate
    {
        std::size_t exit = 0;
        std::size_t entry = 0;
        double aside = 0; ///< how far the leg is from going straight across
    };

    /// From the ring, seen `offset` on, to the goal; a null goal is the pole.
    bool Reach(const OpenRing& from, const gp_Vec2d& offset, const OpenRing* goal, int depth,
               std::vector<Leg>& legs)
    {
        const std::vector<Candidate> candidates = CandidatesFor(from, goal);
        for (const Candidate& candidate : candidates) {
            const auto [begin, end] = EndsOf(from, offset, goal, candidate);
            if (IsFree(begin, end)) {
                legs.push_back(LegOf(begin, end, goal, candidate));
                return true;
            }
        }
        constexpr std::size_t MostDetours = 8;
        for (std::size_t i = 0; depth > 0 && i < std::min(candidates.size(), MostDetours); ++i) {
            const auto [begin, end] = EndsOf(from, offset, goal, candidates[i]);
            if (ReachBy(from, offset, goal, BlockingHole(begin, end), depth, legs)) {
                return true;
            }
        }
        return false;
    }

    bool ReachBy(const OpenRing& from, const gp_Vec2d& offset, const OpenRing* goal,
                 std::optional<std::size_t> hole, int depth, std::vector<Leg>& legs)
    {
        if (!hole) {
            return false;
        }
        const std::size_t kept = legs.size();
        myIsVisited[*hole] = true;
        if (Reach(from, offset, &myHoles[*hole], 0, legs)) {
            const OpenRing placed = legs.back().ring;
            if (Reach(placed, gp_Vec2d(), goal, depth - 1, legs)) {
                return true;
            }
        }
        legs.resize(kept);
        return false;
    }

    std::vector<Candidate> CandidatesFor(const OpenRing& from, const OpenRing* goal) const
    {
        constexpr std::size_t MostCandidates = 64;
        const int around = AroundOf(myFirst);
        const double period = mySurface.period[around];
        std::vector<Candidate> candidates;
        for (std::size_t i = 0; i < from.uses.size(); ++i) {
            if (goal == nullptr) {
                candidates.push_back({i, 0, 0});
                continue;
            }
            for (std::size_t j = 0; j < goal->uses.size(); ++j) {
                const double way =
                    from.uses[i].From().Coord(around + 1) - goal->uses[j].From().Coord(around + 1);
                candidates.push_back({i, j, std::abs(way - period * std::round(way / period))});
            }
        }
        const auto isStraighter = [](const Candidate& a, const Candidate& b) {
            return a.aside < b.aside - tolerance::SameAxis ||
                   (a.aside < b.aside + tolerance::SameAxis &&
                    std::pair(a.exit, a.entry) < std::pair(b.exit, b.entry));
        };
        const auto end =
            candidates.begin() + static_cast<std::ptrdiff_t>(std::min(MostCandidates, candidates.size()));
        std::partial_sort(candidates.begin(), end, candidates.end(), isStraighter);
        candidates.erase(end, candidates.end());
        return candidates;
    }

    std::pair<gp_Pnt2d, gp_Pnt2d> EndsOf(const OpenRing& from, const gp_Vec2d& offset, const OpenRing* goal,
                                         const Candidate& candidate) const
    {
        const gp_Pnt2d begin = from.uses[candidate.exit].From().Translated(offset);
        if (goal == nullptr) {
            gp_Pnt2d end = begin;
            end.SetCoord(myPole->fixed + 1, myPole->level);
            return {begin, end};
        }
        const gp_Pnt2d end = goal->uses[candidate.entry].From();
        return {begin, end.Translated(ShiftOf(begin, end))};
    }

    Leg LegOf(const gp_Pnt2d& begin, const gp_Pnt2d& end, const OpenRing* goal,
              const Candidate& candidate) const
    {
        Leg leg;
        leg.exit = candidate.exit;
        leg.entry = candidate.entry;
        leg.from = begin;
        leg.to = end;
        if (goal != nullptr) {
            leg.ring = *goal;
            ShiftRing(leg.ring, gp_Vec2d(goal->uses[candidate.entry].From(), end));
        }
        return leg;
    }

    /// By whole periods to the nearest place; across the winding, where that is periodic too, to the
    /// material's side.
    gp_Vec2d ShiftOf(const gp_Pnt2d& begin, const gp_Pnt2d& end) const
    {
        double shift[2] = {0, 0};
        for (const int k : {0, 1}) {
            const double period = mySurface.period[k];
            if (period > 0) {
                shift[k] = period * std::round((begin.Coord(k + 1) - end.Coord(k + 1)) / period);
            }
        }
        const int across = 1 - AroundOf(myFirst);
        if (const double period = mySurface.period[across]; period > 0) {
            double way = end.Coord(across + 1) - begin.Coord(across + 1);
            way -= period * std::floor(way / period);
            if (way > period - tolerance::SameParameter || way < tolerance::SameParameter) {
                way = period; // both rings are one edge: once round the other direction
            }
            if (!IsLower(myFirst)) {
                way -= way < period ? period : 2 * period;
            }
            shift[across] = begin.Coord(across + 1) + way - end.Coord(across + 1);
        }
        return {shift[0], shift[1]};
    }

    bool IsFree(const gp_Pnt2d& from, const gp_Pnt2d& to) const
    {
        if (Crosses(from, to, myFirst) || (mySecond != nullptr && Crosses(from, to, *mySecond))) {
            return false;
        }
        return !BlockingHoleAmong(from, to, false);
    }

    /// The hole that a leg would cross and that no leg goes by yet.
    std::optional<std::size_t> BlockingHole(const gp_Pnt2d& from, const gp_Pnt2d& to) const
    {
        return BlockingHoleAmong(from, to, true);
    }

    std::optional<std::size_t> BlockingHoleAmong(const gp_Pnt2d& from, const gp_Pnt2d& to,
                                                 bool isUnvisited) const
    {
        for (std::size_t i = 0; i < myHoles.size(); ++i) {
            if (!(isUnvisited && myIsVisited[i]) && Crosses(from, to, myHoles[i])) {
                return i;
            }
        }
        return std::nullopt;
    }

    bool Crosses(const gp_Pnt2d& from, const gp_Pnt2d& to, const OpenRing& ring) const
    {
        const std::size_t count = ring.outline.size();
        const std::size_t links = ring.IsWinding() ? count - 1 : count;
        for (std::size_t i = 0; i < links; ++i) {
            if (CrossesLink(from.XY(), to.XY(), ring.outline[i], ring.outline[(i + 1) % count])) {
                return true;
            }
        }
        return false;
    }

    /// Through the link, or through its first point; not where the leg itself starts or ends.
    bool CrossesLink(const gp_XY& a, const gp_XY& b, gp_XY c, gp_XY d) const
    {
        for (const int k : {0, 1}) {
            if (const double period = mySurface.period[k]; period > 0) {
                const double middle = (a.Coord(k + 1) + b.Coord(k + 1)) / 2;
                const double turns = std::round(((c.Coord(k + 1) + d.Coord(k + 1)) / 2 - middle) / period);
                c.SetCoord(k + 1, c.Coord(k + 1) - turns * period);
                d.SetCoord(k + 1, d.Coord(k + 1) - turns * period);
            }
        }
        const gp_XY ab = b - a, cd = d - c;
        const double length = ab.Modulus();
        const double nearest = tolerance::SameParameter * (length + cd.Modulus());
        const double along = ab.Dot(c - a) / length;
        const bool isThroughPoint =
            std::abs(ab.Crossed(c - a)) <= nearest * length && along > nearest && along < length - nearest;
        const double scale = nearest * std::max(length, cd.Modulus());
        const double c1 = ab.Crossed(c - a), d1 = ab.Crossed(d - a), a2 = cd.Crossed(a - c),
                     b2 = cd.Crossed(b - c);
        return isThroughPoint || (((c1 > scale && d1 < -scale) || (c1 < -scale && d1 > scale)) &&
                                  ((a2 > scale && b2 < -scale) || (a2 < -scale && b2 > scale)));
    }

    const Surface& mySurface;
    const OpenRing& myFirst;
    const std::vector<OpenRing>& myHoles;
    const OpenRing* mySecond = nullptr;
    const Pole* myPole = nullptr;
    std::vector<bool> myIsVisited;
};

/// Makes one closed ring of a ring that goes round, the seam, and what the seam leads to.
class SeamRing
{
public:
    SeamRing(Resolution& resolution, const OpenRing& first, const std::vector<Leg>& legs)
        : myResolution(resolution), myFirst(first), myLegs(legs)
    {
    }

    /// Nothing when a leg has no length.
    std::optional<OpenRing> Make(const Pole* pole)
    {
        const Surface& surface = myResolution.surface;
        const gp_Vec2d back = RoundOf(surface, myFirst).Reversed();
        OpenRing ring = myFirst;
        StartWith(surface, ring, myLegs.front().exit);
        int vertex = StartOf(ring.uses.front());
        std::vector<RingUse> seams;
        std::vector<std::vector<RingUse>> rests; // of the holes: what the way back takes
        for (std::size_t i = 0; i < myLegs.size(); ++i) {
            const Leg& leg = myLegs[i];
            OpenRing next = leg.ring;
            const bool isPole = next.uses.empty();
            if (!isPole) {
                StartWith(surface, next, leg.entry);
            }
            const int end = isPole ? myResolution.VertexAt(pole->point, {}) : StartOf(next.uses.front());
            const std::optional<RingUse> seam = AddOwnEdge(myResolution, vertex, end, leg.from, leg.to);
            if (!seam) {
                return std::nullopt;
            }
            seams.push_back(*seam);
            ring.uses.push_back(*seam);
            if (isPole) {
                ring.uses.push_back(PoleUse(leg.to, leg.to.Translated(back), end));
            } else if (i + 1 == myLegs.size()) {
                ring.uses.insert(ring.uses.end(), next.uses.begin(), next.uses.end());
            } else {
                const std::size_t count = next.uses.size();
                const std::size_t exit = (myLegs[i + 1].exit + count - leg.entry) % count;
                const auto middle = next.uses.begin() + static_cast<std::ptrdiff_t>(exit);
                ring.uses.insert(ring.uses.end(), next.uses.begin(), middle);
                rests.emplace_back(middle, next.uses.end());
                vertex = StartOf(next.uses[exit]);
            }
        }
        for (std::size_t i = seams.size(); i-- > 0;) {
            ring.uses.push_back(Back(seams[i], back));
            if (i > 0) {
                for (RingUse& use : rests[i - 1]) {
                    use.curve.Shift(back);
                    ring.uses.push_back(use);
                }
            }
        }
        ring.winding[0] = ring.winding[1] = 0;
        Measure(myResolution, ring);
        return ring;
    }

private:
    int StartOf(const RingUse& use) const { return myResolution.face.StartOf(myResolution.body, use); }

    Resolution& myResolution;
    const OpenRing& myFirst;
    const std::vector<Leg>& myLegs;
};

class Joiner
{
public:
    Joiner(Resolution& resolution, std::vector<OpenRing>& rings)
        : myResolution(resolution), mySurface(resolution.surface), myRings(rings)
    {
    }

    ResolveStatus Run()
    {
        std::vector<OpenRing> winding = TakeWinding();
        if (winding.empty()) {
            return ResolveStatus::Done;
        }
        if (winding.size() == 2 && AreOpposite(winding[0], winding[1]) && !AreCaps(winding)) {
            return JoinPair(winding[0], winding[1]);
        }
        return JoinInOrder(winding);
    }

private:
    std::vector<OpenRing> TakeWinding()
    {
        const auto firstWinding = std::stable_partition(
            myRings.begin(), myRings.end(), [](const OpenRing& ring) { return !ring.IsWinding(); });
        std::vector<OpenRing> winding(std::make_move_iterator(firstWinding),
                                      std::make_move_iterator(myRings.end()));
        myRings.erase(firstWinding, myRings.end());
        return winding;
    }

    static bool AreOpposite(const OpenRing& a, const OpenRing& b)
    {
        return a.winding[0] == -b.winding[0] && a.winding[1] == -b.winding[1];
    }

    /// Value of the other parameter where the ring passes the given one.
    double LevelAt(const OpenRing& ring, double place) const
    {
        const int around = AroundOf(ring), across = 1 - around;
        const double period = mySurface.period[around];
        for (std::size_t i = 0; i + 1 < ring.outline.size(); ++i) {
            const double a = ring.outline[i].Coord(around + 1), b = ring.outline[i + 1].Coord(around + 1);
            if (a == b) {
                continue;
            }
            const double x = place + period * std::ceil((std::min(a, b) - place) / period);
            if (x <= std::max(a, b)) {
                const double part = (x - a) / (b - a);
                return ring.outline[i].Coord(across + 1) * (1 - part) +
                       ring.outline[i + 1].Coord(across + 1) * part;
            }
        }
        return (ring.low[across] + ring.high[across]) / 2;
    }

    /// Two rings whose materials lie away from each other, each around a pole of its own.
    bool AreCaps(const std::vector<OpenRing>& pair) const
    {
        const OpenRing& lower = IsLower(pair[0]) ? pair[0] : pair[1];
        const OpenRing& upper = IsLower(pair[0]) ? pair[1] : pair[0];
        const int around = AroundOf(lower), across = 1 - around;
        if (mySurface.period[across] > 0 || mySurface.poles.size() < 2) {
            return false;
        }
        const double place = upper.outline.front().Coord(around + 1);
        return LevelAt(lower, place) > upper.outline.front().Coord(across + 1);
    }

    /// Bands and caps one above the other: each lower bound with the upper bound above it.
    ResolveStatus JoinInOrder(std::vector<OpenRing>& winding)
    {
        const int around = AroundOf(winding.front()), across = 1 - around;
        for (const OpenRing& ring : winding) {
            if (ring.winding[across] != 0 || std::abs(ring.winding[around]) != 1) {
                return ResolveStatus::Windings;
            }
        }
        const double place = winding.front().outline.front().Coord(around + 1);
        const double period = mySurface.period[across];
        const auto level = [&](const OpenRing& ring) {
            const double value = LevelAt(ring, place);
            return period > 0 ? value - period * std::floor(value / period) : value;
        };
        std::sort(winding.begin(), winding.end(),
                  [&](const OpenRing& a, const OpenRing& b) { return level(a) < level(b); });
        if (period > 0 && !IsLower(winding.front())) {
            std::rotate(winding.begin(), winding.begin() + 1, winding.end());
        }
        return JoinSorted(winding);
    }

    ResolveStatus JoinSorted(std::vector<OpenRing>& winding)
    {
        for (std::size_t i = 0; i < winding.size();) {
            const bool isPair = i + 1 < winding.size() && IsLower(winding[i]) && !IsLower(winding[i + 1]);
            const ResolveStatus status = isPair ? JoinPair(winding[i], winding[i + 1]) : JoinPole(winding[i]);
            if (status != ResolveStatus::Done) {
                return status;
            }
            i += isPair ? 2 : 1;
        }
        return ResolveStatus::Done;
    }

    ResolveStatus JoinPair(const OpenRing& a, const OpenRing& b)
    {
        if (!AreOpposite(a, b)) {
            return ResolveStatus::Windings;
        }
        SeamFinder finder(mySurface, a, myRings);
        finder.SetSecond(b);
        return Join(a, finder.Find(), nullptr);
    }

    ResolveStatus JoinPole(const OpenRing& ring)
    {
        const int around = AroundOf(ring), across = 1 - around;
        const bool isUpper = IsLower(ring);
        const auto pole =
            std::find_if(mySurface.poles.begin(), mySurface.poles.end(), [&](const Pole& candidate) {
                return candidate.fixed == across && candidate.isUpper == isUpper;
            });
        const bool isFarther = pole != mySurface.poles.end() &&
                               (isUpper ? ring.high[across] <= pole->level + tolerance::SameParameter
                                        : ring.low[across] >= pole->level - tolerance::SameParameter);
        if (!isFarther || std::abs(ring.winding[around]) != 1 || ring.winding[across] != 0) {
            return ResolveStatus::Windings;
        }
        SeamFinder finder(mySurface, ring, myRings);
        finder.SetPole(*pole);
        return Join(ring, finder.Find(), &*pole);
    }

    /// Holes that the seam goes by are part of the joined ring afterwards.
    ResolveStatus Join(const OpenRing& first, const std::vector<Leg>& legs, const Pole* pole)
    {
        if (legs.empty()) {
            return ResolveStatus::NoSeam;
        }
        std::optional<OpenRing> joined = SeamRing(myResolution, first, legs).Make(pole);
        if (!joined) {
            return ResolveStatus::NoSeam;
        }
        for (const Leg& leg : legs) {
            std::erase_if(myRings, [&](const OpenRing& ring) {
                return !leg.ring.uses.empty() && ring.uses.front().edge == leg.ring.uses.front().edge &&
                       ring.uses.front().forward == leg.ring.uses.front().forward;
            });
        }
        myRings.push_back(std::move(*joined));
        return ResolveStatus::Done;
    }

    Resolution& myResolution;
    const Surface& mySurface;
    std::vector<OpenRing>& myRings;
};

// -------------------------------------------------------------------------------------------- natural bounds

/// The widest gap that the rings leave free in a periodic direction; its middle. The natural bound when it is
/// free.
std::optional<double> FreePlace(const Surface& surface, const std::vector<OpenRing>& rings, int direction)
{
    const double period = surface.period[direction], low = surface.naturalLow[direction];
    std::vector<std::pair<double, double>> taken;
    for (const OpenRing& ring : rings) {
        const double turns = std::floor((ring.low[direction] - low) / period) * period;
        const double first = ring.low[direction] - turns - low, last = ring.high[direction] - turns - low;
        taken.emplace_back(first, last);
        taken.emplace_back(first + period, last + period);
    }
    std::sort(taken.begin(), taken.end());
    double end = taken.empty() ? 0 : -std::numeric_limits<double>::max(), widest = 0, place = 0;
    for (const auto& [first, last] : taken) {
        if (first - end > widest && end > -period) {
            widest = first - end;
            place = (first + end) / 2;
        }
        end = std::max(end, last);
    }
    const bool isLowFree = std::none_of(taken.begin(), taken.end(), [&](const auto& interval) {
        return interval.first <= period && interval.second >= period;
    });
    if (taken.empty() || isLowFree) {
        return low;
    }
    return widest > tolerance::SameParameter ? std::optional(low + place) : std::nullopt;
}

class NaturalRing
{
public:
    NaturalRing(Resolution& resolution, std::vector<OpenRing>& rings)
        : myResolution(resolution), mySurface(resolution.surface), myRings(rings)
    {
    }

    ResolveStatus Run()
    {
        for (const int k : {0, 1}) {
            myLow[k] = mySurface.naturalLow[k];
            myHigh[k] = mySurface.naturalHigh[k];
            if (mySurface.isSpindle && k == 1) {
                myLow[k] = mySurface.low[k];
                myHigh[k] = mySurface.high[k];
            }
            if (IsWhole(k)) {
                const std::optional<double> place = FreePlace(mySurface, myRings, k);
                if (!place) {
                    return ResolveStatus::NoSeam;
                }
                myLow[k] = *place;
                myHigh[k] = *place + mySurface.period[k];
            } else if (Precision::IsInfinite(myLow[k]) || Precision::IsInfinite(myHigh[k])) {
                return ResolveStatus::Unbounded;
            }
        }
        return AddSides() ? ResolveStatus::Done : ResolveStatus::NoOuterLoop;
    }

private:
    bool IsWhole(int direction) const
    {
        const double range = mySurface.naturalHigh[direction] - mySurface.naturalLow[direction];
        return mySurface.period[direction] > 0 &&
               range >= mySurface.period[direction] - tolerance::SameParameter;
    }

    const Pole* PoleOf(int fixed, bool isUpper) const
    {
        const double level = isUpper ? myHigh[fixed] : myLow[fixed];
        for (const Pole& pole : mySurface.poles) {
            if (pole.fixed == fixed && pole.isUpper == isUpper &&
                std::abs(pole.level - level) < tolerance::SameParameter) {
                return &pole;
            }
        }
        return nullptr;
    }

    /// A corner in a pole is the pole's vertex: the surface is not exact there.
    int VertexAt(const gp_Pnt2d& corner)
    {
        for (const Pole& pole : mySurface.poles) {
            if (std::abs(corner.Coord(pole.fixed + 1) - pole.level) < tolerance::SameParameter) {
                return myResolution.VertexAt(pole.point, myRings);
            }
        }
        return myResolution.VertexAt(mySurface.Value(corner), myRings);
    }

    /// A side between two corners; of a closed direction the second side is the first one, used backwards.
    bool AddSide(OpenRing& ring, const gp_Pnt2d& from, const gp_Pnt2d& to, int fixed, bool isUpper,
                 const RingUse* twin, const gp_Vec2d& toTwin)
    {
        if (const Pole* pole = PoleOf(fixed, isUpper)) {
            ring.uses.push_back(PoleUse(from, to, myResolution.VertexAt(pole->point, myRings)));
            return true;
        }
        if (twin != nullptr && IsWhole(fixed)) {
            ring.uses.push_back(Back(*twin, toTwin));
            return true;
        }
        const std::optional<RingUse> use = AddOwnEdge(myResolution, VertexAt(from), VertexAt(to), from, to);
        if (use) {
            ring.uses.push_back(*use);
        }
        return use.has_value();
    }

    bool AddSides()
    {
        const gp_Pnt2d a(myLow[0], myLow[1]), b(myHigh[0], myLow[1]), c(myHigh[0], myHigh[1]),
            d(myLow[0], myHigh[1]);
        OpenRing ring;
        if (!AddSide(ring, a, b, 1, false, nullptr, {}) || !AddSide(ring, b, c, 0, true, nullptr, {})) {
            return false;
        }
        const RingUse bottom = ring.uses[0], right = ring.uses[1];
        if (!AddSide(ring, c, d, 1, true, bottom.kind == UseKind::Own ? &bottom : nullptr, gp_Vec2d(a, d)) ||
            !AddSide(ring, d, a, 0, false, right.kind == UseKind::Own ? &right : nullptr, gp_Vec2d(b, a))) {
            return false;
        }
        Measure(myResolution, ring);
        myRings.push_back(std::move(ring));
        return true;
    }

    Resolution& myResolution;
    const Surface& mySurface;
    std::vector<OpenRing>& myRings;
    double myLow[2] = {0, 0};
    double myHigh[2] = {0, 0};
};

} // namespace

ResolveStatus JoinWindings(Resolution& resolution, std::vector<OpenRing>& rings)
{
    return Joiner(resolution, rings).Run();
}

bool IsClosedSurface(const Surface& surface)
{
    const auto isClosed = [&](int direction) {
        if (surface.period[direction] > 0) {
            return true;
        }
        const auto hasPole = [&](bool isUpper) {
            return std::any_of(surface.poles.begin(), surface.poles.end(), [&](const Pole& pole) {
                return pole.fixed == direction && pole.isUpper == isUpper;
            });
        };
        return surface.kind != SurfaceKind::Cone && hasPole(false) && hasPole(true);
    };
    return isClosed(0) && isClosed(1);
}

ResolveStatus AddNaturalRing(Resolution& resolution, std::vector<OpenRing>& rings)
{
    return NaturalRing(resolution, rings).Run();
}

} // namespace cadex::brep
