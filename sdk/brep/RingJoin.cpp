#include "sdk/brep/RingJoin.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include <Geom_BSplineCurve.hxx>
#include <Precision.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt.hxx>

#include "sdk/brep/Tolerances.h"

namespace cadex::brep {

namespace {

// ------------------------------------------------------------------------------------------------ own edges

bool IsRuling(const Surface& surface, const gp_Vec2d& way)
{
    return (surface.kind == SurfaceKind::Cylinder || surface.kind == SurfaceKind::Cone) &&
           std::abs(way.X()) < tolerance::SameAxis;
}

/// The curve in space of a straight way on the surface: the cubic spline through points of it, with their
/// tangents.
Handle(Geom_Curve)
    CurveAlong(const Surface& surface, const gp_Pnt2d& from, const gp_Vec2d& way, double length)
{
    constexpr int Spans = 16;
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
    edge.isUsable = true;
    edge.start = start;
    edge.end = end;
    edge.last = length;
    if (IsRuling(resolution.surface, way)) {
        const gp_Pnt begin = resolution.surface.Value(from), finish = resolution.surface.Value(to);
        if (begin.Distance(finish) < tolerance::Coincident) {
            return std::nullopt;
        }
        edge.kind = CurveKind::Line;
        edge.origin = begin;
        edge.direction = gp_Dir(gp_Vec(begin, finish));
    } else {
        edge.kind = CurveKind::Spline;
        edge.curve = CurveAlong(resolution.surface, from, way, length);
    }
    RingUse use;
    use.kind = UseKind::Own;
    use.edge = static_cast<int>(resolution.face.ownEdges.size());
    use.last = length;
    use.curve = StraightCurve(from, to, 0, length);
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

/// Lets the ring start with another use; what comes before goes on behind its end.
void StartWith(const Surface& surface, OpenRing& ring, std::size_t number)
{
    const gp_Vec2d round(ring.winding[0] * surface.period[0], ring.winding[1] * surface.period[1]);
    for (std::size_t i = 0; i < number; ++i) {
        ring.uses[i].curve.Shift(round);
    }
    std::rotate(ring.uses.begin(), ring.uses.begin() + static_cast<std::ptrdiff_t>(number), ring.uses.end());
}

struct Bridge
{
    std::size_t from = 0; ///< use of the first ring that the seam starts before
    std::size_t to = 0;   ///< of the second
    double aside = 0;     ///< how far the seam is from going straight across
};

/// Pairs of vertices of two rings between which a seam may go, the straightest first.
std::vector<Bridge> BridgesBetween(const Surface& surface, const OpenRing& a, const OpenRing& b, int around)
{
    constexpr std::size_t MostBridges = 64;
    const double period = surface.period[around];
    std::vector<Bridge> bridges;
    for (std::size_t i = 0; i < a.uses.size(); ++i) {
        for (std::size_t j = 0; j < b.uses.size(); ++j) {
            const double way = a.uses[i].From().Coord(around + 1) - b.uses[j].From().Coord(around + 1);
            bridges.push_back({i, j, std::abs(way - period * std::round(way / period))});
        }
    }
    const auto isStraighter = [](const Bridge& x, const Bridge& y) {
        return x.aside < y.aside - tolerance::SameAxis ||
               (x.aside < y.aside + tolerance::SameAxis && std::pair(x.from, x.to) < std::pair(y.from, y.to));
    };
    const auto end = bridges.begin() + static_cast<std::ptrdiff_t>(std::min(MostBridges, bridges.size()));
    std::partial_sort(bridges.begin(), end, bridges.end(), isStraighter);
    bridges.erase(end, bridges.end());
    return bridges;
}

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

    static int AroundOf(const OpenRing& ring) { return ring.winding[0] != 0 ? 0 : 1; }

    /// Going round with the material on the left, a ring in the sense of u has it above in v, one in the
    /// sense of v has it below in u.
    static bool IsLower(const OpenRing& ring)
    {
        return AroundOf(ring) == 0 ? ring.winding[0] > 0 : ring.winding[1] < 0;
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

    /// Where both directions are periodic the second ring must come on the material's side of the first.
    gp_Vec2d ShiftOfSecond(const gp_Pnt2d& end, const gp_Pnt2d& start, const OpenRing& first) const
    {
        double shift[2] = {0, 0};
        for (const int k : {0, 1}) {
            const double period = mySurface.period[k];
            if (period > 0) {
                shift[k] = period * std::round((end.Coord(k + 1) - start.Coord(k + 1)) / period);
            }
        }
        const int across = 1 - AroundOf(first);
        if (const double period = mySurface.period[across]; period > 0) {
            double way = start.Coord(across + 1) - end.Coord(across + 1);
            way -= period * std::floor(way / period);
            if (way > period - tolerance::SameParameter || way < tolerance::SameParameter) {
                way = period; // both are one edge: once round the other direction
            }
            if (!IsLower(first)) {
                way -= way < period ? period : 2 * period;
            }
            shift[across] = end.Coord(across + 1) + way - start.Coord(across + 1);
        }
        return {shift[0], shift[1]};
    }

    ResolveStatus JoinPair(OpenRing& a, OpenRing& b)
    {
        if (!AreOpposite(a, b)) {
            return ResolveStatus::Windings;
        }
        for (const Bridge& bridge : BridgesBetween(mySurface, a, b, AroundOf(a))) {
            OpenRing first = a, second = b;
            StartWith(mySurface, first, bridge.from);
            StartWith(mySurface, second, bridge.to);
            const gp_Pnt2d begin = first.uses.front().From(), end = first.uses.back().To();
            ShiftRing(second, ShiftOfSecond(end, second.uses.front().From(), first));
            const gp_Pnt2d beyond = second.uses.front().From();
            if (!IsFree(end, beyond, first, second)) {
                continue;
            }
            const std::optional<RingUse> seam = AddOwnEdge(myResolution, StartOf(first.uses.front()),
                                                           StartOf(second.uses.front()), end, beyond);
            if (!seam) {
                continue;
            }
            first.uses.push_back(*seam);
            first.uses.insert(first.uses.end(), second.uses.begin(), second.uses.end());
            first.uses.push_back(Back(*seam, gp_Vec2d(end, begin)));
            AddJoined(std::move(first));
            return ResolveStatus::Done;
        }
        return ResolveStatus::NoSeam;
    }

    ResolveStatus JoinPole(OpenRing& ring)
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
        const int vertex = PoleVertex(*pole);
        for (std::size_t i = 0; i < ring.uses.size(); ++i) {
            OpenRing whole = ring;
            StartWith(mySurface, whole, i);
            const gp_Pnt2d begin = whole.uses.front().From(), end = whole.uses.back().To();
            gp_Pnt2d top = end, back = begin;
            top.SetCoord(across + 1, pole->level);
            back.SetCoord(across + 1, pole->level);
            if (!IsFree(end, top, whole, whole)) {
                continue;
            }
            const std::optional<RingUse> seam =
                AddOwnEdge(myResolution, StartOf(whole.uses.front()), vertex, end, top);
            if (!seam) {
                continue;
            }
            whole.uses.push_back(*seam);
            whole.uses.push_back(PoleUse(top, back, vertex));
            whole.uses.push_back(Back(*seam, gp_Vec2d(end, begin)));
            AddJoined(std::move(whole));
            return ResolveStatus::Done;
        }
        return ResolveStatus::NoSeam;
    }

    int PoleVertex(const Pole& pole) { return myResolution.VertexAt(pole.point, myRings); }

    int StartOf(const RingUse& use) const { return myResolution.face.StartOf(myResolution.body, use); }

    void AddJoined(OpenRing&& ring)
    {
        ring.winding[0] = ring.winding[1] = 0;
        Measure(myResolution, ring);
        myJoined.push_back(ring);
        myRings.push_back(std::move(ring));
    }

    /// Whether the way crosses neither the two rings nor any other, wherever their periods bring them.
    bool IsFree(const gp_Pnt2d& from, const gp_Pnt2d& to, const OpenRing& first, const OpenRing& second) const
    {
        if (Crosses(from, to, first) || Crosses(from, to, second)) {
            return false;
        }
        return std::none_of(myRings.begin(), myRings.end(),
                            [&](const OpenRing& ring) { return Crosses(from, to, ring); });
    }

    bool Crosses(const gp_Pnt2d& from, const gp_Pnt2d& to, const OpenRing& ring) const
    {
        const gp_XY a = from.XY(), b = to.XY();
        const std::size_t count = ring.outline.size();
        const std::size_t links = ring.IsWinding() ? count - 1 : count;
        for (std::size_t i = 0; i < links; ++i) {
            if (CrossesLink(a, b, ring.outline[i], ring.outline[(i + 1) % count])) {
                return true;
            }
        }
        return false;
    }

    /// In the middle of both, not at their ends: seams start and end on rings.
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
        const double scale = tolerance::SameParameter * (ab.Modulus() + cd.Modulus());
        const double c1 = ab.Crossed(c - a), d1 = ab.Crossed(d - a), a2 = cd.Crossed(a - c),
                     b2 = cd.Crossed(b - c);
        return ((c1 > scale && d1 < -scale) || (c1 < -scale && d1 > scale)) &&
               ((a2 > scale && b2 < -scale) || (a2 < -scale && b2 > scale));
    }

    Resolution& myResolution;
    const Surface& mySurface;
    std::vector<OpenRing>& myRings;
    std::vector<OpenRing> myJoined;
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

    int VertexAt(const gp_Pnt2d& corner) { return myResolution.VertexAt(mySurface.Value(corner), myRings); }

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
