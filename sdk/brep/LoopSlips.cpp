#include "sdk/brep/LoopSlips.h"

#include <algorithm>

#include "sdk/mesh/PlanePredicates.h"

namespace cadex::brep {

using mesh::Delaunay;
using mesh::PlanePoint;

namespace {

// Corners that are left out of loops which cross, and the size of loops that are searched for them.
constexpr std::size_t MostSlips = 32;
constexpr std::size_t MostSlippedNodes = 2000;

/// A place beyond all others, for nodes that stand aside.
PlanePoint OutsideOf(const std::vector<PlanePoint>& places)
{
    PlanePoint low = places.front();
    PlanePoint high = low;
    for (const PlanePoint& place : places) {
        low = {std::min(low.x, place.x), std::min(low.y, place.y)};
        high = {std::max(high.x, place.x), std::max(high.y, place.y)};
    }
    return {2 * low.x - high.x - 1, 2 * low.y - high.y - 1};
}

} // namespace

bool LoopSlips::Start(Delaunay::Loops loops, double reach, Delaunay& delaunay)
{
    std::vector<PlanePoint> scaled = myScaled;
    if (scaled.size() > MostSlippedNodes) {
        return false;
    }
    const PlanePoint outside = OutsideOf(scaled);
    while (const std::optional<Corner> corner = CornerThatSlipped(loops)) {
        std::vector<int>& loop = loops[corner->loop];
        if (loop.size() <= 3 || mySlips.size() == MostSlips) {
            return false;
        }
        const Slip slip = SlipAt(loop, corner->index);
        if (WayToSide(slip) > reach) {
            return false;
        }
        mySlips.push_back(slip);
        scaled[static_cast<std::size_t>(slip.node)] = outside;
        loop.erase(loop.begin() + static_cast<std::ptrdiff_t>(corner->index));
    }
    return delaunay.Start(scaled, loops) == Delaunay::Outcome::Done;
}

LoopSlips::Slip LoopSlips::SlipAt(const std::vector<int>& loop, std::size_t index)
{
    return {loop[index], loop[(index + loop.size() - 1) % loop.size()], loop[(index + 1) % loop.size()]};
}

/// Of the ends of two sides that cross, the one that is nearest to the line of its neighbours.
std::optional<LoopSlips::Corner> LoopSlips::CornerThatSlipped(const Delaunay::Loops& loops) const
{
    std::vector<Corner> corners;
    for (std::size_t loop = 0; loop < loops.size(); ++loop) {
        for (std::size_t i = 0; i < loops[loop].size(); ++i) {
            corners.push_back({loop, i});
        }
    }
    const auto next = [&](const Corner& corner) {
        return Corner{corner.loop, (corner.index + 1) % loops[corner.loop].size()};
    };
    const auto nodeOf = [&](const Corner& corner) { return loops[corner.loop][corner.index]; };
    const auto wayOf = [&](const Corner& corner) {
        return WayToSide(SlipAt(loops[corner.loop], corner.index));
    };
    for (std::size_t i = 0; i < corners.size(); ++i) {
        for (std::size_t j = i + 1; j < corners.size(); ++j) {
            const std::array<Corner, 4> ends = {corners[i], next(corners[i]), corners[j], next(corners[j])};
            if (DoSidesCross(nodeOf(ends[0]), nodeOf(ends[1]), nodeOf(ends[2]), nodeOf(ends[3]))) {
                return *std::min_element(ends.begin(), ends.end(), [&](const Corner& a, const Corner& b) {
                    return wayOf(a) < wayOf(b);
                });
            }
        }
    }
    return std::nullopt;
}

bool LoopSlips::DoSidesCross(int a, int b, int c, int d) const
{
    const auto side = [&](int from, int to, int node) {
        return Orientation(myScaled[static_cast<std::size_t>(from)], myScaled[static_cast<std::size_t>(to)],
                           myScaled[static_cast<std::size_t>(node)]);
    };
    return side(a, b, c) * side(a, b, d) < 0 && side(c, d, a) * side(c, d, b) < 0;
}

double LoopSlips::WayToSide(const Slip& slip) const
{
    const gp_XYZ point = myPositionOf(slip.node);
    const gp_XYZ from = myPositionOf(slip.before);
    const gp_XYZ way = myPositionOf(slip.behind) - from;
    const double square = way.SquareModulus();
    const double along = square > 0 ? std::clamp((point - from).Dot(way) / square, 0.0, 1.0) : 0;
    return (point - from - way * along).Modulus();
}

bool LoopSlips::PutBack(std::vector<std::array<int, 3>>& triangles) const
{
    for (std::size_t i = mySlips.size(); i-- > 0;) {
        if (!PutBack(mySlips[i], triangles)) {
            return false;
        }
    }
    return true;
}

bool LoopSlips::PutBack(const Slip& slip, std::vector<std::array<int, 3>>& triangles)
{
    for (std::array<int, 3>& triangle : triangles) {
        for (std::size_t k = 0; k < 3; ++k) {
            if (triangle[k] == slip.before && triangle[(k + 1) % 3] == slip.behind) {
                const int across = triangle[(k + 2) % 3];
                triangle[(k + 1) % 3] = slip.node;
                triangles.push_back({slip.node, slip.behind, across});
                return true;
            }
        }
    }
    return false;
}

} // namespace cadex::brep
