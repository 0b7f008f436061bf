#include "sdk/brep/RingJoin.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include <Precision.hxx>

#include "sdk/brep/OwnEdges.h"
#include "sdk/brep/SeamFinder.h"
#include "sdk/brep/Tolerances.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::brep {

using occt::CoordinateOf;

namespace {
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
            const double a = CoordinateOf(ring.outline[i], around),
                         b = CoordinateOf(ring.outline[i + 1], around);
            if (a == b) {
                continue;
            }
            const double x = place + period * std::ceil((std::min(a, b) - place) / period);
            if (x <= std::max(a, b)) {
                const double part = (x - a) / (b - a);
                return CoordinateOf(ring.outline[i], across) * (1 - part) +
                       CoordinateOf(ring.outline[i + 1], across) * part;
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
        const double place = CoordinateOf(upper.outline.front(), around);
        return LevelAt(lower, place) > CoordinateOf(upper.outline.front(), across);
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
        const double place = CoordinateOf(winding.front().outline.front(), around);
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
        return Join(a, FindSeam(mySurface, a, myRings, &b, nullptr), nullptr);
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
        return Join(ring, FindSeam(mySurface, ring, myRings, nullptr, &*pole), &*pole);
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
            if (std::abs(CoordinateOf(corner, pole.fixed) - pole.level) < tolerance::SameParameter) {
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
