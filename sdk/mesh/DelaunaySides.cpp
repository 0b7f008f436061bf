// Sides of loops forced into the triangulation.
#include <algorithm>
#include <deque>
#include <utility>

#include "sdk/mesh/Delaunay.h"
#include "sdk/mesh/DelaunayCorners.h"

namespace cadex::mesh {

namespace {

/// Whether `point` lies ahead on the way from `from` to `to`, which it lies in line with.
bool IsAhead(const PlanePoint& from, const PlanePoint& to, const PlanePoint& point)
{
    return (to.x - from.x) * (point.x - from.x) + (to.y - from.y) * (point.y - from.y) > 0;
}

} // namespace

/// Makes the way between two points one of sides. False when it crosses another such way.
bool Delaunay::Constrain(int from, int to)
{
    std::vector<InnerSide> crossed;
    while (from != to) {
        Side side;
        int target = StepTowards(from, to, side);
        if (target == None) {
            crossed.clear();
            target = to;
            if (side.cell == None || !CollectCrossed(from, target, side, crossed) ||
                !Clear(from, target, crossed)) {
                return false;
            }
            side = FindSide(from, target);
            if (side.cell == None) {
                return false;
            }
        }
        MarkUsed(side);
        Legalise(crossed);
        from = target;
    }
    return true;
}

/// Looks round `from`: gives the next point when a side leads straight towards `to`, with that side; else
/// None, with the side that the way crosses.
int Delaunay::StepTowards(int from, int to, Side& found) const
{
    const int start = CellOf(from);
    int cell = start;
    do {
        const int corner = CornerOf(cell, from);
        const Cell& here = CellAt(cell);
        const int right = here.corners[Index(Next(corner))];
        const int left = here.corners[Index(Previous(corner))];
        const double ofRight = Orientation(At(from), At(to), At(right));
        if (right == to || (ofRight == 0 && IsAhead(At(from), At(to), At(right)))) {
            found = {cell, Previous(corner)};
            return right;
        }
        if (ofRight < 0 && left != to && Orientation(At(from), At(to), At(left)) > 0) {
            found = {cell, corner};
            return None;
        }
        cell = here.neighbours[Index(Next(corner))];
    } while (cell != None && cell != start);
    found = {};
    return None;
}

/// The sides between `from` and `to`, beginning with `first`; `to` becomes the first point on the way. False
/// when one of them belongs to a loop.
bool Delaunay::CollectCrossed(int from, int& to, Side first, std::vector<InnerSide>& crossed) const
{
    const int goal = to;
    for (Side side = first;;) {
        const Cell& here = CellAt(side.cell);
        if (here.uses[Index(side.corner)] != 0 || here.neighbours[Index(side.corner)] == None ||
            crossed.size() > myCells.size()) {
            return false;
        }
        crossed.push_back(
            {here.corners[Index(Next(side.corner))], here.corners[Index(Previous(side.corner))]});
        const Side opposite = Opposite(side);
        const int far = CellAt(opposite.cell).corners[Index(opposite.corner)];
        const double ofFar = Orientation(At(from), At(goal), At(far));
        if (far == goal || ofFar == 0) {
            to = far;
            return true;
        }
        // Seen from beyond, the right end of the crossed side is the one before the far corner.
        side = {opposite.cell, ofFar > 0 ? Next(opposite.corner) : Previous(opposite.corner)};
    }
}

/// Flips the crossed sides out of the way, each when its two cells form a convex quadrilateral.
///
/// NOTE: S. W. Sloan, "A fast algorithm for generating constrained Delaunay triangulations", Computers &
/// Structures 47 (1993). `crossed` becomes the sides that are new.
bool Delaunay::Clear(int from, int to, std::vector<InnerSide>& crossed)
{
    std::deque<InnerSide> waiting(crossed.begin(), crossed.end());
    crossed.clear();
    std::size_t idle = 0;
    while (!waiting.empty()) {
        const InnerSide link = waiting.front();
        waiting.pop_front();
        const Side side = FindSide(link.from, link.to);
        if (side.cell == None || ++idle > waiting.size() + 1) {
            return false;
        }
        const Side opposite = Opposite(side);
        const int near = CellAt(side.cell).corners[Index(side.corner)];
        const int far = CellAt(opposite.cell).corners[Index(opposite.corner)];
        if (Orientation(At(near), At(link.from), At(far)) <= 0 ||
            Orientation(At(far), At(link.to), At(near)) <= 0) {
            waiting.push_back(link);
            continue;
        }
        idle = 0;
        Flip(side);
        const auto isEnd = [&](int node) { return node == from || node == to; };
        const bool isNearRight = Orientation(At(from), At(to), At(near)) < 0;
        if (!isEnd(near) && !isEnd(far) && isNearRight != (Orientation(At(from), At(to), At(far)) < 0)) {
            waiting.push_back({near, far});
        } else {
            crossed.push_back({near, far});
        }
    }
    return true;
}

} // namespace cadex::mesh
