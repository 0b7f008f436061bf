// Any shape of the kernel as a Description, as a file would give it: vertices, edges, faces and loops,
// without curves on surfaces and without degenerated edges.
//
//     const brep::Description body = DescriptionOf(BRepPrimAPI_MakeBox(1, 2, 3).Shape());
//     const brep::Description bare = DescriptionOf(shape, {.seams = false});   // cylinders as two circles
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "sdk/brep/ShapeDescription.h"

namespace cadex::brep {

struct DescriptionOptions
{
    bool seams = true;  ///< false: loops without the edges that a face uses twice
    bool ranges = true; ///< false: edges without the parameters of their ends
};

/// What remains of a loop between its seams, closed piece by piece.
inline std::vector<Loop> LoopsWithoutSeams(const Description& body, const Loop& loop)
{
    const auto vertexOf = [&](const EdgeUse& use, bool isStart) {
        const Edge& edge = body.edges[static_cast<std::size_t>(use.edge)];
        return use.forward == isStart ? edge.start : edge.end;
    };
    std::vector<EdgeUse> left;
    for (const EdgeUse& use : loop.uses) {
        const auto uses = std::count_if(loop.uses.begin(), loop.uses.end(),
                                        [&](const EdgeUse& other) { return other.edge == use.edge; });
        if (uses == 1) {
            left.push_back(use);
        }
    }
    std::vector<Loop> loops;
    while (!left.empty()) {
        Loop part;
        const int begin = vertexOf(left.front(), true);
        for (int at = begin; part.uses.empty() || at != begin;) {
            const auto next = std::find_if(left.begin(), left.end(),
                                           [&](const EdgeUse& use) { return vertexOf(use, true) == at; });
            if (next == left.end()) {
                break;
            }
            at = vertexOf(*next, false);
            part.uses.push_back(*next);
            left.erase(next);
        }
        if (part.uses.empty()) {
            break;
        }
        loops.push_back(std::move(part));
    }
    return loops;
}

inline Description DescriptionOf(const TopoDS_Shape& shape, const DescriptionOptions& options = {})
{
    Description body = DescribeShape(shape).value_or(Description());
    for (Face& face : body.faces) {
        for (Loop& loop : face.loops) {
            for (EdgeUse& use : loop.uses) {
                use.curveOnSurface.Nullify();
            }
        }
        if (!options.seams) {
            for (const Loop& loop : std::exchange(face.loops, {})) {
                for (Loop& part : LoopsWithoutSeams(body, loop)) {
                    face.loops.push_back(std::move(part));
                }
            }
        }
    }
    for (Edge& edge : body.edges) {
        if (!options.ranges) {
            edge.first = edge.last = 0;
        }
    }
    return body;
}

} // namespace cadex::brep
