// A face as the tessellator and the builder of kernel shapes want it: closed rings of edges, each with its
// curve on the surface, joined by seams where the surface closes and led along its poles.
//
//     const Body body = MakeBody(description);
//     const ResolvedFace face = ResolveFace(body, 3);
//     if (face.status == ResolveStatus::Done) {
//         for (const Ring& ring : face.rings) {
//             for (const RingUse& use : ring.uses) { ... face.EdgeOf(body, use), use.curve.Value(t) ... }
//         }
//     }
//
// A face needs nothing but the body, which it only reads: faces of one body may be resolved on several
// threads.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "sdk/brep/Body.h"
#include "sdk/brep/CurveOnSurface.h"
#include "sdk/brep/Surface.h"

namespace cadex::brep {

enum class UseKind : std::uint8_t
{
    Edge, ///< an edge of the body, shared with other faces
    Own,  ///< an edge of this face alone: a seam, which is used twice, or a natural bound of the surface
    Pole  ///< a way along a pole: a line in the parameters, one point in space
};

struct RingUse
{
    UseKind kind = UseKind::Edge;
    int edge = None;     ///< number in Body::edges, or in ResolvedFace::ownEdges
    int pole = None;     ///< of a Pole: its vertex
    bool forward = true; ///< along the ring the edge's parameter grows
    double first = 0;    ///< range of the edge's parameter, of a Pole that of its curve
    double last = 0;
    CurveOnSurface curve = {}; ///< not set on planes, see Surface::kind: project the edge's points instead

    gp_Pnt2d From() const { return curve.Value(forward ? first : last); }
    gp_Pnt2d To() const { return curve.Value(forward ? last : first); }
};

/// Closed in the parameters of the surface; where it goes once round a periodic direction the curves go on
/// beyond the period. Outer rings run counter-clockwise in (u, v), the others clockwise.
struct Ring
{
    std::vector<RingUse> uses = {};
    bool isOuter = false;
    double low[2] = {0, 0}; ///< bounds in u and v, about: curves are sampled
    double high[2] = {0, 0};
};

struct ResolvedFace
{
    ResolveStatus status = ResolveStatus::NoFace;
    const Surface* surface = nullptr; ///< that of the body, or one of the face's own
    bool forward = true;              ///< the face's normal is du x dv of `surface`
    bool isTurned = false;            ///< the loops ran the wrong way round and were turned
    std::vector<int> strayEdges = {}; ///< of the body: they ran against their loops, which was mended
    /// Each outer ring is followed by the holes in it. More than one outer ring where the loops bound several
    /// regions (two bands of a cylinder).
    std::vector<Ring> rings = {};
    std::vector<BodyEdge> ownEdges = {};
    std::vector<Vertex> ownVertices = {}; ///< numbered on after those of the body
    std::shared_ptr<const Surface> ownSurface = {};

    const BodyEdge& EdgeOf(const Body& body, const RingUse& use) const
    {
        return (use.kind == UseKind::Own ? ownEdges : body.edges)[static_cast<std::size_t>(use.edge)];
    }
    const Vertex& VertexOf(const Body& body, int number) const
    {
        const auto index = static_cast<std::size_t>(number);
        return index < body.vertices.size() ? body.vertices[index]
                                            : ownVertices[index - body.vertices.size()];
    }
    /// Vertices at which the use starts and ends along its ring.
    int StartOf(const Body& body, const RingUse& use) const
    {
        if (use.kind == UseKind::Pole) {
            return use.pole;
        }
        const BodyEdge& edge = EdgeOf(body, use);
        return use.forward ? edge.start : edge.end;
    }
    int EndOf(const Body& body, const RingUse& use) const
    {
        if (use.kind == UseKind::Pole) {
            return use.pole;
        }
        const BodyEdge& edge = EdgeOf(body, use);
        return use.forward ? edge.end : edge.start;
    }
};

/// Never throws but for memory. A failure leaves no rings, and `surface` where there is one.
ResolvedFace ResolveFace(const Body& body, int face);

} // namespace cadex::brep
