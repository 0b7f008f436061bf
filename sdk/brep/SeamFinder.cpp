#include "sdk/brep/SeamFinder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "sdk/brep/Tolerances.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::brep {

using occt::CoordinateOf;
using occt::SetCoordinate;

namespace {

class SeamFinder
{
public:
    SeamFinder(const Surface& surface, const OpenRing& first, const std::vector<OpenRing>& holes,
               const OpenRing* second, const Pole* pole)
        : mySurface(surface),
          myFirst(first),
          myHoles(holes),
          mySecond(second),
          myPole(pole),
          myIsVisited(holes.size())
    {
    }

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
                    CoordinateOf(from.uses[i].From(), around) - CoordinateOf(goal->uses[j].From(), around);
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
            SetCoordinate(end, myPole->fixed, myPole->level);
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
                shift[k] = period * std::round((CoordinateOf(begin, k) - CoordinateOf(end, k)) / period);
            }
        }
        const int across = 1 - AroundOf(myFirst);
        if (const double period = mySurface.period[across]; period > 0) {
            double way = CoordinateOf(end, across) - CoordinateOf(begin, across);
            way -= period * std::floor(way / period);
            if (way > period - tolerance::SameParameter || way < tolerance::SameParameter) {
                way = period; // both rings are one edge: once round the other direction
            }
            if (!IsLower(myFirst)) {
                way -= way < period ? period : 2 * period;
            }
            shift[across] = CoordinateOf(begin, across) + way - CoordinateOf(end, across);
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
                const double middle = (CoordinateOf(a, k) + CoordinateOf(b, k)) / 2;
                const double turns =
                    std::round(((CoordinateOf(c, k) + CoordinateOf(d, k)) / 2 - middle) / period);
                SetCoordinate(c, k, CoordinateOf(c, k) - turns * period);
                SetCoordinate(d, k, CoordinateOf(d, k) - turns * period);
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
    const OpenRing* mySecond;
    const Pole* myPole;
    std::vector<bool> myIsVisited;
};

} // namespace

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

void StartWith(const Surface& surface, OpenRing& ring, std::size_t number)
{
    for (std::size_t i = 0; i < number; ++i) {
        ring.uses[i].curve.Shift(RoundOf(surface, ring));
    }
    std::rotate(ring.uses.begin(), ring.uses.begin() + static_cast<std::ptrdiff_t>(number), ring.uses.end());
}

std::vector<Leg> FindSeam(const Surface& surface, const OpenRing& first, const std::vector<OpenRing>& holes,
                          const OpenRing* second, const Pole* pole)
{
    return SeamFinder(surface, first, holes, second, pole).Find();
}

} // namespace cadex::brep
