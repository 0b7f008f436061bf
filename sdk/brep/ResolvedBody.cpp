#include "sdk/brep/ResolvedBody.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "sdk/brep/KernelTasks.h"

namespace cadex::brep {

namespace {

/// Arcs that run against every loop in which they are, one of which was the wrong way round without them.
/// Files have them where a mirror has turned the curve but not the order of its ends: what is meant is the
/// other part of the circle.
std::vector<int> ArcsWithSwappedEnds(const ResolvedBody& resolved)
{
    struct Uses
    {
        int other = 0; // all uses less those against their loops
        bool isTurned = false;
    };
    std::unordered_map<int, Uses> arcs;
    for (const ResolvedFace& face : resolved.faces) {
        for (const int edge : face.strayEdges) {
            const CurveKind kind = resolved.body.edges[static_cast<std::size_t>(edge)].kind;
            if (kind == CurveKind::Circle || kind == CurveKind::Ellipse) {
                Uses& uses = arcs[edge];
                --uses.other;
                uses.isTurned = uses.isTurned || face.isTurned;
            }
        }
    }
    if (arcs.empty()) {
        return {};
    }
    for (const Face& face : resolved.Described().faces) {
        for (const Loop& loop : face.loops) {
            for (const EdgeUse& use : loop.uses) {
                if (const auto arc = arcs.find(use.edge); arc != arcs.end()) {
                    ++arc->second.other;
                }
            }
        }
    }
    std::vector<int> swapped;
    for (const auto& [edge, uses] : arcs) {
        if (uses.other == 0 && uses.isTurned) {
            swapped.push_back(edge);
        }
    }
    return swapped;
}

/// Takes the other part of the curve.
void SwapEnds(BodyEdge& arc)
{
    std::swap(arc.start, arc.end);
    arc.first = std::exchange(arc.last, arc.first + arc.curve->Period());
}

} // namespace

ResolvedBody ResolveBody(const Description& description, bool isParallel)
{
    ResolvedBody result{MakeBody(description), std::vector<ResolvedFace>(description.faces.size())};
    ForEach(result.faces.size(), isParallel,
            [&](std::size_t face) { result.faces[face] = ResolveFace(result.body, static_cast<int>(face)); });
    if (const std::vector<int> arcs = ArcsWithSwappedEnds(result); !arcs.empty()) {
        for (const int arc : arcs) {
            SwapEnds(result.body.edges[static_cast<std::size_t>(arc)]);
        }
        for (std::size_t face = 0; face < result.faces.size(); ++face) {
            if (const std::vector<int> stray = std::move(result.faces[face].strayEdges); !stray.empty()) {
                result.faces[face] = ResolveFace(result.body, static_cast<int>(face));
                result.faces[face].strayEdges = stray;
            }
        }
    }
    return result;
}

} // namespace cadex::brep
