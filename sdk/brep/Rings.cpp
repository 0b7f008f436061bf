#include "sdk/brep/Rings.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "sdk/brep/SurfaceProjection.h"
#include "sdk/brep/Tolerances.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::brep {

using occt::CoordinateOf;
using occt::SetCoordinate;

namespace {

/// A jump of more than this share of a period, or of the surface, is no inaccuracy.
constexpr double FarShare = 0.1;

gp_Vec2d Along(int direction, double length)
{
    return direction == 0 ? gp_Vec2d(length, 0) : gp_Vec2d(0, length);
}

/// How far the ring goes along a pole from one curve's end to the next one's start: with the material on the
/// left, and once round between the two uses of one seam.
double PoleWay(double from, double to, double period, const Pole& pole, bool isSameEdge)
{
    double way = to - from;
    if (period <= 0) {
        return way;
    }
    const bool isDown = pole.fixed == 1 ? pole.isUpper : !pole.isUpper;
    way -= period * std::floor(way / period);
    if (way > period - tolerance::SameParameter || way < tolerance::SameParameter) {
        way = 0;
    }
    if (way > 0) {
        return isDown ? way - period : way;
    }
    return isSameEdge ? (isDown ? -period : period) : 0;
}

class Chainer
{
public:
    Chainer(Resolution& resolution, OpenRing& ring)
        : myResolution(resolution), mySurface(resolution.surface), myRing(ring)
    {
    }

    ResolveStatus Run()
    {
        for (RingUse& use : myRing.uses) {
            if (!myChained.empty() && !Append(use)) {
                return ResolveStatus::LoopNotClosed;
            }
            myChained.push_back(use);
        }
        if (!Close()) {
            return ResolveStatus::LoopNotClosed;
        }
        JoinEnds();
        myRing.uses.swap(myChained);
        return ResolveStatus::Done;
    }

private:
    int StartOf(const RingUse& use) const { return myResolution.face.StartOf(myResolution.body, use); }

    const Pole* PoleOf(const RingUse& use) const
    {
        if (mySurface.poles.empty()) {
            return nullptr;
        }
        const BodyEdge& edge = myResolution.face.EdgeOf(myResolution.body, use);
        const gp_Pnt end = edge.Value(use.forward ? use.first : use.last);
        const gp_Pnt2d middle = use.curve.Value((use.first + use.last) / 2);
        const double reach = std::max(PoleReach(mySurface), tolerance::PoleReach * RoughLength(edge));
        return PoleAt(mySurface, end, reach, middle);
    }

    /// Moves the use to the end of the chain, with a way along the pole in between where both meet in one.
    bool Append(RingUse& use)
    {
        const RingUse& before = myChained.back();
        const gp_Pnt2d end = before.To(), start = use.From();
        if (const Pole* pole = PoleOf(use)) {
            const int moving = 1 - pole->fixed;
            const double way = PoleWay(CoordinateOf(end, moving), CoordinateOf(start, moving),
                                       mySurface.period[moving], *pole, before.edge == use.edge);
            if (mySurface.period[moving] > 0) {
                use.curve.Shift(Along(moving, CoordinateOf(end, moving) + way - CoordinateOf(start, moving)));
            }
            AddPoleUse(*pole, end, way, StartOf(use));
            return true;
        }
        gp_Vec2d shift;
        for (const int k : {0, 1}) {
            if (mySurface.period[k] > 0) {
                const double turns =
                    std::round((CoordinateOf(end, k) - CoordinateOf(start, k)) / mySurface.period[k]);
                shift += Along(k, turns * mySurface.period[k]);
            }
        }
        use.curve.Shift(shift);
        return Meets(end, use.From(), StartOf(use));
    }

    void AddPoleUse(const Pole& pole, const gp_Pnt2d& from, double way, int vertex)
    {
        if (std::abs(way) > tolerance::SameParameter) {
            gp_Pnt2d begin = from;
            SetCoordinate(begin, pole.fixed, pole.level);
            myChained.push_back(PoleUse(begin, begin.Translated(Along(1 - pole.fixed, way)), vertex));
        }
    }

    bool Meets(const gp_Pnt2d& end, const gp_Pnt2d& start, int vertex) const
    {
        if (end.Distance(start) <= tolerance::SamePlace) {
            return true;
        }
        for (const int k : {0, 1}) {
            const double range =
                mySurface.period[k] > 0 ? mySurface.period[k] : mySurface.high[k] - mySurface.low[k];
            if (std::abs(CoordinateOf(end, k) - CoordinateOf(start, k)) > FarShare * range) {
                return false;
            }
        }
        const double reach =
            std::max(tolerance::LoopGap, 4 * myResolution.face.VertexOf(myResolution.body, vertex).tolerance);
        return mySurface.Value(end).Distance(mySurface.Value(start)) <= reach + EndGap(vertex);
    }

    /// How far the edges around the vertex end from it: the gap on the surface cannot be smaller.
    double EndGap(int vertex) const
    {
        double gap = 0;
        const gp_Pnt& point = myResolution.PointOf(vertex);
        for (const RingUse& use : myRing.uses) {
            const BodyEdge& edge = myResolution.face.EdgeOf(myResolution.body, use);
            if (edge.start == vertex) {
                gap = std::max(gap, mySurface.Value(use.curve.Value(use.first)).Distance(point));
            }
            if (edge.end == vertex) {
                gap = std::max(gap, mySurface.Value(use.curve.Value(use.last)).Distance(point));
            }
        }
        return std::min(2 * gap, tolerance::OffSurfaceMost);
    }

    bool Close()
    {
        const RingUse first = myChained.front();
        if (const Pole* pole = PoleOf(first)) {
            const RingUse& last = myChained.back();
            const int moving = 1 - pole->fixed;
            const gp_Pnt2d end = last.To();
            const double way =
                PoleWay(CoordinateOf(end, moving), CoordinateOf(first.From(), moving),
                        mySurface.period[moving], *pole, last.edge == first.edge && myChained.size() > 1);
            AddPoleUse(*pole, end, way, StartOf(first));
        }
        gp_Pnt2d end = myChained.back().To();
        const gp_Pnt2d start = first.From();
        for (const int k : {0, 1}) {
            if (mySurface.period[k] > 0) {
                const double turns =
                    std::round((CoordinateOf(end, k) - CoordinateOf(start, k)) / mySurface.period[k]);
                myRing.winding[k] = static_cast<int>(turns);
                end.Translate(Along(k, -turns * mySurface.period[k]));
            }
        }
        return PoleOf(first) != nullptr || Meets(end, start, StartOf(first));
    }

    /// Projected curves end where their neighbours start: tangent ones would cross beside the vertex else.
    void JoinEnds()
    {
        for (std::size_t i = 0; i < myChained.size(); ++i) {
            RingUse& use = myChained[i];
            RingUse& next = myChained[(i + 1) % myChained.size()];
            const gp_Pnt2d end = use.To();
            gp_Pnt2d start = next.From();
            for (const int k : {0, 1}) {
                if (mySurface.period[k] > 0) {
                    const double turns =
                        std::round((CoordinateOf(start, k) - CoordinateOf(end, k)) / mySurface.period[k]);
                    start.Translate(Along(k, -turns * mySurface.period[k]));
                }
            }
            const gp_Vec2d gap(end, start);
            if (gap.Magnitude() == 0) {
                continue;
            }
            const bool isUseMovable = use.curve.isProjected, isNextMovable = next.curve.isProjected;
            if (isUseMovable) {
                MoveEnd(use.curve, use.forward, isNextMovable ? gap / 2 : gap);
            }
            if (isNextMovable) {
                MoveEnd(next.curve, !next.forward, isUseMovable ? gap / -2 : -gap);
            }
        }
    }

    Resolution& myResolution;
    const Surface& mySurface;
    OpenRing& myRing;
    std::vector<RingUse> myChained;
};

double AreaOf(const std::vector<gp_XY>& outline)
{
    double twice = 0;
    for (std::size_t i = 1; i + 1 < outline.size(); ++i) {
        twice += (outline[i] - outline[0]).Crossed(outline[i + 1] - outline[0]);
    }
    return twice / 2;
}

// ----------------------------------------------------------------------------------------------- nesting

/// Moves a hole by periods into the outline of the outer ring; false when it lies in none of its places
/// there.
bool MoveInto(const Surface& surface, const OpenRing& outer, OpenRing& hole)
{
    const auto places = [&](int k, std::vector<double>& shifts) {
        const double period = surface.period[k];
        shifts.assign(1, 0);
        if (period > 0) {
            const double first = std::ceil((outer.low[k] - hole.high[k]) / period);
            const double last = std::floor((outer.high[k] - hole.low[k]) / period);
            constexpr double MostPlaces = 8;
            shifts.clear();
            for (double turn = first; turn <= last && turn < first + MostPlaces; ++turn) {
                shifts.push_back(turn * period);
            }
        }
    };
    std::vector<double> us, vs;
    places(0, us);
    places(1, vs);
    for (const double u : us) {
        for (const double v : vs) {
            const gp_XY by(u, v);
            const auto inside =
                std::count_if(hole.outline.begin(), hole.outline.end(),
                              [&](const gp_XY& point) { return IsInside(outer.outline, point + by); });
            // Points may lie on the outer ring where the two touch.
            if (2 * static_cast<std::size_t>(inside) > hole.outline.size()) {
                ShiftRing(hole, gp_Vec2d(by));
                return true;
            }
        }
    }
    return false;
}

Ring Finished(OpenRing&& open, bool isOuter)
{
    Ring ring;
    ring.uses = std::move(open.uses);
    ring.isOuter = isOuter;
    for (const int k : {0, 1}) {
        ring.low[k] = open.low[k];
        ring.high[k] = open.high[k];
    }
    return ring;
}

/// A region with one outer ring, and what lies in it.
struct Region
{
    OpenRing outer;
    std::vector<OpenRing> holes;
};

/// Puts each hole into the smallest outer ring around it; one that lies in none belongs to the first, where
/// only a single outer ring leaves no choice.
bool Distribute(const Surface& surface, std::vector<Region>& regions, std::vector<OpenRing>& holes)
{
    const bool isOpen = surface.period[0] <= 0 && surface.period[1] <= 0;
    if (regions.size() == 1 && isOpen) {
        regions.front().holes = std::move(holes);
        return true;
    }
    std::sort(regions.begin(), regions.end(),
              [](const Region& a, const Region& b) { return a.outer.area < b.outer.area; });
    for (OpenRing& hole : holes) {
        const auto region = std::find_if(regions.begin(), regions.end(), [&](const Region& candidate) {
            return MoveInto(surface, candidate.outer, hole);
        });
        if (region == regions.end() && regions.size() > 1) {
            return false;
        }
        (region == regions.end() ? regions.front() : *region).holes.push_back(std::move(hole));
    }
    return true;
}

/// Whether the senses of the rings are those of one region with holes.
bool AreSensesSound(const std::vector<OpenRing>& rings)
{
    const OpenRing* largest = nullptr;
    int positive = 0;
    for (const OpenRing& ring : rings) {
        positive += ring.area > 0 ? 1 : 0;
        if (largest == nullptr || std::abs(ring.area) > std::abs(largest->area)) {
            largest = &ring;
        }
    }
    return positive == 1 && largest->area > 0;
}

/// Gives each ring the sense that its depth asks for: outermost ones bound material, those in them holes, and
/// so on. True when a ring was turned.
bool TurnByDepth(const Surface& surface, std::vector<OpenRing>& rings)
{
    std::sort(rings.begin(), rings.end(),
              [](const OpenRing& a, const OpenRing& b) { return std::abs(a.area) > std::abs(b.area); });
    bool isTurned = false;
    for (std::size_t i = 0; i < rings.size(); ++i) {
        const auto depth =
            std::count_if(rings.begin(), rings.begin() + static_cast<std::ptrdiff_t>(i),
                          [&](const OpenRing& around) { return MoveInto(surface, around, rings[i]); });
        if ((depth % 2 == 0) != (rings[i].area > 0)) {
            TurnRing(rings[i]);
            isTurned = true;
        }
    }
    return isTurned;
}

/// By whole periods to where the middle of the outer ring lies in the range of the surface, as the kernel
/// prefers.
void MoveToRange(const Surface& surface, Region& region)
{
    gp_XY by;
    for (const int k : {0, 1}) {
        if (surface.period[k] > 0) {
            const double middle = (region.outer.low[k] + region.outer.high[k]) / 2;
            const double turns =
                std::floor((middle - surface.low[k]) / surface.period[k] + tolerance::SamePlace);
            SetCoordinate(by, k, -turns * surface.period[k]);
        }
    }
    ShiftRing(region.outer, gp_Vec2d(by));
    for (OpenRing& hole : region.holes) {
        ShiftRing(hole, gp_Vec2d(by));
    }
}

} // namespace

int Resolution::AddVertex(const gp_Pnt& point)
{
    face.ownVertices.push_back({point, tolerance::Coincident});
    return static_cast<int>(body.vertices.size() + face.ownVertices.size()) - 1;
}

int Resolution::VertexAt(const gp_Pnt& point, const std::vector<OpenRing>& rings)
{
    const double reach = PoleReach(surface);
    for (const OpenRing& ring : rings) {
        for (const RingUse& use : ring.uses) {
            const int vertex = face.StartOf(body, use);
            if (PointOf(vertex).Distance(point) < reach) {
                return vertex;
            }
        }
    }
    for (std::size_t i = 0; i < face.ownVertices.size(); ++i) {
        if (face.ownVertices[i].point.Distance(point) < tolerance::Coincident) {
            return static_cast<int>(body.vertices.size() + i);
        }
    }
    return AddVertex(point);
}

ResolveStatus Chain(Resolution& resolution, OpenRing& ring)
{
    return Chainer(resolution, ring).Run();
}

std::vector<gp_XY> OutlineOf(const Body& body, const ResolvedFace& face, const std::vector<RingUse>& uses)
{
    constexpr int Curved = 12;
    std::vector<gp_XY> outline;
    outline.reserve(uses.size());
    for (const RingUse& use : uses) {
        if (use.kind == UseKind::Pole) {
            outline.push_back(use.From().XY());
            continue;
        }
        const BodyEdge& edge = face.EdgeOf(body, use);
        const bool isPlane = face.surface->kind == SurfaceKind::Plane;
        const bool isStraight = isPlane ? edge.kind == CurveKind::Line : use.curve.IsStraight();
        const int count = isStraight ? 1 : Curved;
        for (int i = 0; i < count; ++i) {
            const double part = static_cast<double>(i) / count;
            const double t = use.first + (use.last - use.first) * (use.forward ? part : 1 - part);
            gp_Pnt2d place;
            if (isPlane) {
                ProjectElementary(*face.surface, edge.Value(t), place);
            } else {
                place = use.curve.Value(t);
            }
            outline.push_back(place.XY());
        }
    }
    return outline;
}

void Measure(const Resolution& resolution, OpenRing& ring)
{
    ring.outline = OutlineOf(resolution.body, resolution.face, ring.uses);
    if (ring.IsWinding()) {
        ring.outline.push_back(ring.uses.back().To().XY());
    }
    ring.area = AreaOf(ring.outline);
    for (const int k : {0, 1}) {
        ring.low[k] = std::numeric_limits<double>::max();
        ring.high[k] = -std::numeric_limits<double>::max();
        for (const gp_XY& point : ring.outline) {
            ring.low[k] = std::min(ring.low[k], CoordinateOf(point, k));
            ring.high[k] = std::max(ring.high[k], CoordinateOf(point, k));
        }
    }
}

void ShiftRing(OpenRing& ring, const gp_Vec2d& by)
{
    if (by.X() == 0 && by.Y() == 0) {
        return;
    }
    for (RingUse& use : ring.uses) {
        use.curve.Shift(by);
    }
    for (gp_XY& point : ring.outline) {
        point += by.XY();
    }
    for (const int k : {0, 1}) {
        ring.low[k] += CoordinateOf(by, k);
        ring.high[k] += CoordinateOf(by, k);
    }
}

void TurnRing(OpenRing& ring)
{
    std::reverse(ring.uses.begin(), ring.uses.end());
    for (RingUse& use : ring.uses) {
        use.forward = !use.forward;
    }
    std::reverse(ring.outline.begin(), ring.outline.end());
    ring.area = -ring.area;
}

bool IsInside(const std::vector<gp_XY>& outline, const gp_XY& point)
{
    bool isInside = false;
    for (std::size_t i = 0, j = outline.size() - 1; i < outline.size(); j = i++) {
        const gp_XY &a = outline[i], &b = outline[j];
        if ((a.Y() > point.Y()) != (b.Y() > point.Y()) &&
            point.X() < (b.X() - a.X()) * (point.Y() - a.Y()) / (b.Y() - a.Y()) + a.X()) {
            isInside = !isInside;
        }
    }
    return isInside;
}

ResolveStatus Nest(Resolution& resolution, std::vector<OpenRing>&& rings)
{
    if (rings.empty()) {
        return ResolveStatus::NoOuterLoop;
    }
    if (!AreSensesSound(rings)) {
        resolution.face.isTurned = TurnByDepth(resolution.surface, rings);
    }
    std::vector<Region> regions;
    std::vector<OpenRing> holes;
    for (OpenRing& ring : rings) {
        if (ring.area > 0) {
            regions.push_back({std::move(ring), {}});
        } else {
            holes.push_back(std::move(ring));
        }
    }
    if (regions.empty() || !Distribute(resolution.surface, regions, holes)) {
        return ResolveStatus::NoOuterLoop;
    }
    for (Region& region : regions) {
        MoveToRange(resolution.surface, region);
        resolution.face.rings.push_back(Finished(std::move(region.outer), true));
        for (OpenRing& hole : region.holes) {
            resolution.face.rings.push_back(Finished(std::move(hole), false));
        }
    }
    return ResolveStatus::Done;
}

RingUse PoleUse(const gp_Pnt2d& from, const gp_Pnt2d& to, int vertex)
{
    RingUse use;
    use.kind = UseKind::Pole;
    use.pole = vertex;
    use.last = from.Distance(to);
    use.curve = StraightCurve(from, to, 0, use.last);
    return use;
}

} // namespace cadex::brep
