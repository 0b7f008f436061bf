#include "sdk/brep/ResolvedFace.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include <Standard_Failure.hxx>

#include "sdk/brep/RingJoin.h"
#include "sdk/brep/Rings.h"
#include "sdk/brep/SurfaceProjection.h"
#include "sdk/brep/Tolerances.h"

namespace cadex::brep {

namespace {

class Resolver
{
public:
    Resolver(const Body& body, const Face& given, const Surface& surface, ResolvedFace& face)
        : myGiven(given), myResolution{body, surface, face}
    {
    }

    ResolveStatus Run()
    {
        std::vector<OpenRing> rings;
        for (const Loop& loop : myGiven.loops) {
            OpenRing ring;
            const ResolveStatus status = Open(loop, ring);
            if (status != ResolveStatus::Done) {
                return status;
            }
            if (!ring.uses.empty()) {
                Measure(myResolution, ring);
                rings.push_back(std::move(ring));
            }
        }
        return Complete(std::move(rings));
    }

private:
    const Surface& TheSurface() const { return myResolution.surface; }
    const Body& TheBody() const { return myResolution.body; }

    ResolveStatus Open(const Loop& loop, OpenRing& ring)
    {
        for (const EdgeUse& given : loop.uses) {
            const ResolveStatus status = Take(given, ring);
            if (status != ResolveStatus::Done) {
                return status;
            }
        }
        if (ring.uses.empty()) {
            return ResolveStatus::Done;
        }
        if (!myResolution.face.forward) {
            TurnRing(ring); // the loops are given about the face's normal
        }
        if (!IsConnected(ring) && !TurnStrayEdges(ring)) {
            return ResolveStatus::LoopNotConnected;
        }
        return TheSurface().kind == SurfaceKind::Plane ? ResolveStatus::Done : Chain(myResolution, ring);
    }

    ResolveStatus Take(const EdgeUse& given, OpenRing& ring) const
    {
        if (given.edge < 0 || static_cast<std::size_t>(given.edge) >= TheBody().edges.size()) {
            return ResolveStatus::BadEdge;
        }
        const BodyEdge& edge = TheBody().edges[static_cast<std::size_t>(given.edge)];
        if (!edge.isUsable) {
            return edge.isPoint ? ResolveStatus::Done : ResolveStatus::BadEdge;
        }
        RingUse use;
        use.edge = given.edge;
        use.forward = given.forward;
        use.first = edge.first;
        use.last = edge.last;
        if (TheSurface().kind != SurfaceKind::Plane) {
            const ResolveStatus status = PlaceOnSurface(TheSurface(), edge, given.curveOnSurface, use.curve);
            if (status != ResolveStatus::Done) {
                return status;
            }
        }
        ring.uses.push_back(std::move(use));
        return ResolveStatus::Done;
    }

    bool DoMeet(const RingUse& before, const RingUse& behind) const
    {
        const ResolvedFace& face = myResolution.face;
        const int end = face.EndOf(TheBody(), before);
        const int start = face.StartOf(TheBody(), behind);
        const Vertex &a = face.VertexOf(TheBody(), end), &b = face.VertexOf(TheBody(), start);
        const double reach = std::max(tolerance::SamePlace, a.tolerance + b.tolerance);
        return end == start || a.point.Distance(b.point) < reach;
    }

    bool IsConnected(const OpenRing& ring) const
    {
        for (std::size_t i = 0; i < ring.uses.size(); ++i) {
            if (!DoMeet(ring.uses[i], ring.uses[(i + 1) % ring.uses.size()])) {
                return false;
            }
        }
        return true;
    }

    /// Some files have single edges of a loop the wrong way round. Of both ways to go along the loop the one
    /// is taken that turns fewer edges, and fewer lines where that is equal: arcs are what goes wrong. False
    /// when neither closes.
    bool TurnStrayEdges(OpenRing& ring) const
    {
        std::optional<OpenRing> best;
        std::vector<int> strayEdges;
        auto least = std::pair(ring.uses.size(), std::size_t{0});
        for (const bool isAsFirst : {true, false}) {
            OpenRing turned = ring;
            std::vector<int> stray;
            std::size_t lines = 0;
            for (std::size_t i = 0; i < turned.uses.size(); ++i) {
                RingUse& use = turned.uses[i];
                if (i == 0 ? !isAsFirst : !DoMeet(turned.uses[i - 1], use)) {
                    use.forward = !use.forward;
                    stray.push_back(use.edge);
                    lines += myResolution.face.EdgeOf(TheBody(), use).kind == CurveKind::Line ? 1U : 0U;
                }
            }
            if (const auto cost = std::pair(stray.size(), lines); cost < least && IsConnected(turned)) {
                least = cost;
                best = std::move(turned);
                strayEdges = std::move(stray);
            }
        }
        if (best) {
            ring = std::move(*best);
            std::vector<int>& all = myResolution.face.strayEdges;
            all.insert(all.end(), strayEdges.begin(), strayEdges.end());
        }
        return best.has_value();
    }

    ResolveStatus Complete(std::vector<OpenRing>&& rings)
    {
        const ResolveStatus joined = JoinWindings(myResolution, rings);
        if (joined != ResolveStatus::Done) {
            return joined;
        }
        const bool isOuterMissing =
            std::none_of(rings.begin(), rings.end(), [](const OpenRing& ring) { return ring.area > 0; });
        if (myGiven.isNaturallyBounded) {
            for (OpenRing& ring : rings) {
                if (ring.area > 0) {
                    TurnRing(ring);
                }
            }
        }
        if (rings.empty() || myGiven.isNaturallyBounded ||
            (isOuterMissing && IsClosedSurface(TheSurface()))) {
            const ResolveStatus natural = AddNaturalRing(myResolution, rings);
            if (natural != ResolveStatus::Done) {
                return natural;
            }
        }
        return Nest(myResolution, std::move(rings));
    }

    const Face& myGiven;
    Resolution myResolution;
};

ResolveStatus ResolveOn(const Body& body, const Face& given, const Surface& surface, ResolvedFace& face)
{
    face.rings.clear();
    face.ownEdges.clear();
    face.ownVertices.clear();
    face.isTurned = false;
    face.strayEdges.clear();
    face.surface = &surface;
    try {
        face.status = Resolver(body, given, surface, face).Run();
    } catch (const Standard_Failure&) {
        face.status = ResolveStatus::Kernel;
    }
    if (face.status != ResolveStatus::Done) {
        face.rings.clear();
    }
    return face.status;
}

/// Whether the edges of a face on a spindle torus lie on its inner part.
bool IsOnInnerPart(const Body& body, const Face& given, const Surface& outer, const Surface& inner)
{
    double off[2] = {0, 0};
    for (const Loop& loop : given.loops) {
        for (const EdgeUse& use : loop.uses) {
            if (use.edge < 0 || static_cast<std::size_t>(use.edge) >= body.edges.size() ||
                !body.edges[static_cast<std::size_t>(use.edge)].isUsable) {
                continue;
            }
            const BodyEdge& edge = body.edges[static_cast<std::size_t>(use.edge)];
            const gp_Pnt middle = edge.Value((edge.first + edge.last) / 2);
            gp_Pnt2d place;
            off[0] += ProjectElementary(outer, middle, place);
            off[1] += ProjectElementary(inner, middle, place);
        }
    }
    return off[1] < off[0];
}

/// Directions for the poles of a sphere that edges are unlikely to meet.
std::vector<gp_Ax3> OtherAxes(const gp_Ax3& axes)
{
    const gp_XYZ x = axes.XDirection().XYZ(), y = axes.YDirection().XYZ(), z = axes.Direction().XYZ();
    constexpr double Ways[][3] = {
        {1, 0, 0}, {0, 1, 0}, {0.61, 0.53, 0.59}, {-0.57, 0.67, 0.47}, {0.31, -0.83, 0.46}};
    std::vector<gp_Ax3> others;
    for (const auto& way : Ways) {
        others.emplace_back(axes.Location(), gp_Dir(x * way[0] + y * way[1] + z * way[2]));
    }
    return others;
}

/// An edge that runs over a pole of a sphere has no curve there: the sphere gets its poles elsewhere.
void ResolveOnOtherAxes(const Body& body, const Face& given, const Surface& sphere, ResolvedFace& face)
{
    const bool isOutward = face.forward;
    for (const gp_Ax3& axes : OtherAxes(sphere.axes)) {
        face.ownSurface = std::make_shared<const Surface>(WithAxes(sphere, axes));
        face.forward = isOutward != (face.ownSurface->isTurned != sphere.isTurned);
        if (ResolveOn(body, given, *face.ownSurface, face) == ResolveStatus::Done) {
            return;
        }
    }
}

double AreaOf(const ResolvedFace& face)
{
    double area = 0;
    for (const Ring& ring : face.rings) {
        area += ring.isOuter ? (ring.high[0] - ring.low[0]) * (ring.high[1] - ring.low[1]) : 0;
    }
    return area;
}

void ResolveWithSense(const Body& body, const Face& given, const Surface& surface, ResolvedFace& face)
{
    if (surface.isSpindle) {
        const Surface inner = InnerPart(surface);
        if (IsOnInnerPart(body, given, surface, inner)) {
            face.ownSurface = std::make_shared<const Surface>(inner);
            ResolveOn(body, given, *face.ownSurface, face);
            return;
        }
    }
    ResolveOn(body, given, surface, face);
    if (surface.kind == SurfaceKind::Sphere && face.status == ResolveStatus::EdgeOverPole) {
        ResolveOnOtherAxes(body, given, surface, face);
    }
}

} // namespace

ResolvedFace ResolveFace(const Body& body, int number)
{
    ResolvedFace face;
    if (number < 0 || static_cast<std::size_t>(number) >= body.description->faces.size()) {
        return face;
    }
    const Face& given = body.description->faces[static_cast<std::size_t>(number)];
    face.status = ResolveStatus::NoSurface;
    if (given.surface < 0 || static_cast<std::size_t>(given.surface) >= body.surfaces.size()) {
        return face;
    }
    const Surface& surface = body.surfaces[static_cast<std::size_t>(given.surface)];
    if (surface.geometry.IsNull()) {
        return face;
    }
    face.surface = &surface;
    face.forward = given.sameSense != surface.isTurned;
    ResolveWithSense(body, given, surface, face);
    if (surface.isAmbiguous && !given.loops.empty()) {
        ResolvedFace other;
        other.forward = given.sameSense == surface.isTurned;
        ResolveWithSense(body, given, surface, other);
        const bool isOtherBetter = face.status != ResolveStatus::Done || AreaOf(other) < AreaOf(face);
        if (other.status == ResolveStatus::Done && isOtherBetter) {
            return other;
        }
    }
    return face;
}

} // namespace cadex::brep
