// Triangles that fill a planar polygon with holes: ear clipping, after the holes have been joined to the
// outline by bridges (D. Eberly, "Triangulation by Ear Clipping").
#include <algorithm>
#include <cmath>
#include <functional>

#include "sdk/ifc/IfcFacets.h"

namespace cadex::ifc {
namespace {

struct Point2
{
    double x;
    double y;
};

double Cross(const Point2& a, const Point2& b, const Point2& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

bool Same(const Point2& a, const Point2& b)
{
    return a.x == b.x && a.y == b.y;
}

double Distance(const Point2& a, const Point2& b)
{
    return std::hypot(b.x - a.x, b.y - a.y);
}

/// How strictly a corner is taken for an ear, from the first time around the outline on.
enum class Pass
{
    Clear,   ///< a triangle with area, no other corner on its edges, rounding noise taken into account
    Strict,  ///< the same to the last digit
    Corner,  ///< any corner to the left: the outline crosses itself somewhere
    Anything ///< so that the rest can go on
};

class EarClipper
{
public:
    EarClipper(Context& context, const Polyhedron& body, const gp_XYZ& normal)
        : myContext(context), myBody(body)
    {
        // the face seen along its normal: the coordinate in which it is thinnest is left out
        const gp_XYZ size(std::abs(normal.X()), std::abs(normal.Y()), std::abs(normal.Z()));
        myDrop = size.X() >= size.Y() && size.X() >= size.Z() ? 1 : (size.Y() >= size.Z() ? 2 : 3);
        myFlip = normal.Coord(myDrop) < 0;
    }

    void AddLoop(const Polyhedron::Loop& loop)
    {
        std::vector<U32> ring;
        double area = 0;
        for (U32 i = 0; i < loop.count; ++i) {
            ring.push_back(myBody.corners[loop.first + i]);
        }
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const Point2 a = At(ring[i]);
            const Point2 b = At(ring[(i + 1) % ring.size()]);
            area += a.x * b.y - b.x * a.y;
        }
        if ((area > 0) != loop.outer) {
            std::reverse(ring.begin(), ring.end()); // holes are sometimes wound like outlines
        }
        if (loop.outer) {
            const Point2 first = At(ring.front());
            for (const U32 index : ring) {
                mySlack = std::max(mySlack, 1e-10 * Distance(first, At(index)));
            }
            myRing = std::move(ring);
        } else {
            myHoles.push_back(std::move(ring));
        }
    }

    /// False when the outline crosses itself, so that what comes out fills the face only about.
    bool Run(std::vector<U32>& triangles)
    {
        const bool joined = JoinHoles();
        return Clip(triangles) && joined;
    }

private:
    Point2 At(U32 index) const
    {
        const gp_XYZ& p = myBody.points[index];
        const Point2 flat =
            myDrop == 1 ? Point2{p.Y(), p.Z()} : (myDrop == 2 ? Point2{p.Z(), p.X()} : Point2{p.X(), p.Y()});
        return myFlip ? Point2{flat.y, flat.x} : flat;
    }

    static std::size_t Rightmost(const std::vector<Point2>& points)
    {
        const auto further = [](const Point2& a, const Point2& b) {
            return a.x < b.x || (a.x == b.x && a.y < b.y);
        };
        return static_cast<std::size_t>(std::max_element(points.begin(), points.end(), further) -
                                        points.begin());
    }

    /// The way from the ring's corner to p starts into the face. Bridges pass a point several times; each
    /// passage sees another sector of it.
    bool LooksTo(std::size_t corner, const Point2& p) const
    {
        const std::size_t count = myRing.size();
        const Point2 before = At(myRing[(corner + count - 1) % count]);
        const Point2 q = At(myRing[corner]);
        const Point2 after = At(myRing[(corner + 1) % count]);
        const bool leftOfIn = Cross(before, q, p) > 0;
        const bool leftOfOut = Cross(q, after, p) > 0;
        return Cross(before, q, after) > 0 ? leftOfIn && leftOfOut : leftOfIn || leftOfOut;
    }

    /// Nothing of the loop stands in the way from p to q, whose ends may touch it.
    bool IsFree(const Point2& p, const Point2& q, const std::vector<U32>& loop) const
    {
        Point2 a = At(loop.back());
        for (const U32 index : loop) {
            const Point2 b = At(index);
            const double sideA = Cross(p, q, a);
            const double sideB = Cross(p, q, b);
            const bool crosses = ((sideA > 0 && sideB < 0) || (sideA < 0 && sideB > 0)) &&
                                 (Cross(a, b, p) > 0) != (Cross(a, b, q) > 0) && !Same(a, q) && !Same(b, q) &&
                                 Cross(a, b, p) != 0 && Cross(a, b, q) != 0;
            const double along = (b.x - p.x) * (q.x - p.x) + (b.y - p.y) * (q.y - p.y);
            const double whole = (q.x - p.x) * (q.x - p.x) + (q.y - p.y) * (q.y - p.y);
            if (crosses || (sideB == 0 && along > 0 && along < whole && !Same(b, p) && !Same(b, q))) {
                return false;
            }
            a = b;
        }
        return true;
    }

    struct Hole
    {
        std::vector<U32> ring; ///< from its rightmost corner on
        Point2 right;
    };

    /// The nearest corner of the ring that the hole's rightmost corner sees; the ring's size when there is
    /// none. Only corners on its right are asked: one of them can always be seen, and the holes that are
    /// still to come lie on its left.
    std::size_t VisibleFrom(const std::vector<Hole>& holes, std::size_t hole)
    {
        const Point2& p = holes[hole].right;
        std::vector<std::pair<double, std::size_t>> candidates; // by squared distance, nearest on top
        for (std::size_t i = 0; i < myRing.size(); ++i) {
            const Point2 q = At(myRing[i]);
            if (q.x >= p.x) {
                candidates.emplace_back((q.x - p.x) * (q.x - p.x) + (q.y - p.y) * (q.y - p.y), i);
            }
        }
        const std::greater<> nearestFirst;
        std::make_heap(candidates.begin(), candidates.end(), nearestFirst);
        while (!candidates.empty()) {
            const auto [distance, corner] = candidates.front();
            const Point2 q = At(myRing[corner]);
            // a hole that touches the ring is joined at that point, in the sector that the hole lies in
            const Point2 towards = distance > 0 ? p : At(holes[hole].ring[1]);
            bool free = LooksTo(corner, towards);
            if (free && distance > 0) {
                myContext.Steps(myRing.size());
                free = IsFree(p, q, myRing);
                // of the holes to come, only those that end at the same x can stand in a vertical way
                for (std::size_t i = hole; free && i < holes.size() && holes[i].right.x >= p.x; ++i) {
                    free = IsFree(p, q, holes[i].ring);
                }
            }
            if (free) {
                return corner;
            }
            std::pop_heap(candidates.begin(), candidates.end(), nearestFirst);
            candidates.pop_back();
        }
        return myRing.size();
    }

    /// False when a hole cannot be reached, because it lies outside or crosses the outline; the face is
    /// filled there.
    bool JoinHoles()
    {
        std::vector<Hole> holes;
        for (std::vector<U32>& ring : myHoles) {
            std::vector<Point2> points;
            points.reserve(ring.size());
            for (U32 index : ring) {
                points.push_back(At(index));
            }
            const std::size_t right = Rightmost(points);
            std::rotate(ring.begin(), ring.begin() + static_cast<std::ptrdiff_t>(right), ring.end());
            holes.push_back({std::move(ring), points[right]});
        }
        std::sort(holes.begin(), holes.end(), [](const Hole& a, const Hole& b) {
            return a.right.x > b.right.x || (a.right.x == b.right.x && a.right.y > b.right.y);
        });
        bool joined = true;
        for (std::size_t hole = 0; hole < holes.size(); ++hole) {
            myContext.Steps(myRing.size());
            const std::size_t at = VisibleFrom(holes, hole);
            if (at == myRing.size()) {
                joined = false;
                continue;
            }
            std::vector<U32> bridge(holes[hole].ring);
            bridge.push_back(bridge.front());
            bridge.push_back(myRing[at]);
            myRing.insert(myRing.begin() + static_cast<std::ptrdiff_t>(at) + 1, bridge.begin(), bridge.end());
        }
        return joined;
    }

    /// The outline passes b once more, at `other`, and comes from and goes into the angle at b: what seems an
    /// ear is not the face then, or all of it is filled already.
    bool PassesWithin(std::size_t other, const Point2& a, const Point2& b, const Point2& c) const
    {
        const auto within = [&](const Point2& p) { return Cross(a, b, p) >= 0 && Cross(b, c, p) >= 0; };
        return within(myPoints[myPrevious[other]]) && within(myPoints[myNext[other]]);
    }

    bool IsEar(std::size_t previous, std::size_t corner, std::size_t next, Pass pass)
    {
        const Point2& a = myPoints[previous];
        const Point2& b = myPoints[corner];
        const Point2& c = myPoints[next];
        const double ab = Distance(a, b);
        const double bc = Distance(b, c);
        const double slack = pass == Pass::Clear ? mySlack : 0;
        if (!(Cross(a, b, c) > slack * std::max(ab, bc))) {
            return pass == Pass::Anything;
        }
        if (pass >= Pass::Corner) {
            return true;
        }
        const double ca = Distance(c, a);
        std::size_t steps = 0;
        bool free = true;
        for (std::size_t i = myNext[next]; free && i != previous; i = myNext[i]) {
            const Point2& p = myPoints[i];
            free = Cross(a, b, p) < -slack * ab || Cross(b, c, p) < -slack * bc ||
                   Cross(c, a, p) < -slack * ca || Same(a, p) || Same(c, p) ||
                   (Same(b, p) && !PassesWithin(i, a, b, c));
            ++steps;
        }
        myContext.Steps(steps);
        return free;
    }

    void Link()
    {
        const std::size_t count = myRing.size();
        myNext.resize(count);
        myPrevious.resize(count);
        myPoints.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            myNext[i] = (i + 1) % count;
            myPrevious[i] = (i + count - 1) % count;
            myPoints[i] = At(myRing[i]);
        }
    }

    /// The outline comes back the way it went: a bridge whose surroundings are filled, or no length at all.
    bool IsSpike(std::size_t previous, std::size_t corner, std::size_t next) const
    {
        const Point2& a = myPoints[previous];
        const Point2& b = myPoints[corner];
        const Point2& c = myPoints[next];
        return Cross(a, b, c) == 0 && (a.x - b.x) * (c.x - b.x) + (a.y - b.y) * (c.y - b.y) >= 0;
    }

    // A corner in line with its neighbours stays until a triangle takes it in: the face beyond the edge has
    // it too, and one that leaves it out would leave a gap.
    bool Clip(std::vector<U32>& triangles)
    {
        Link();
        std::size_t left = myRing.size();
        std::size_t corner = 0;
        std::size_t missed = 0;
        bool sound = true;
        while (left > 2) {
            const std::size_t previous = myPrevious[corner];
            const std::size_t next = myNext[corner];
            const bool spike = IsSpike(previous, corner, next);
            const auto pass = static_cast<Pass>(std::min<std::size_t>(missed / (left + 1), 3));
            sound = sound && pass < Pass::Corner;
            const bool ear = !spike && IsEar(previous, corner, next, pass);
            if (ear) {
                triangles.insert(triangles.end(), {myRing[previous], myRing[corner], myRing[next]});
            }
            if (ear || spike) {
                myNext[previous] = next;
                myPrevious[next] = previous;
                --left;
                missed = 0;
                // going on behind the neighbour keeps triangles from becoming a fan of slivers
                corner = spike ? previous : myNext[next];
                continue;
            }
            ++missed;
            corner = next;
        }
        return sound;
    }

    Context& myContext;
    const Polyhedron& myBody;
    int myDrop = 3;
    bool myFlip = false;
    double mySlack = 0; ///< distance that is rounding noise, in millimetres
    std::vector<U32> myRing;
    std::vector<std::vector<U32>> myHoles;
    std::vector<Point2> myPoints;
    std::vector<std::size_t> myNext;
    std::vector<std::size_t> myPrevious;
};

/// A quadrilateral along the diagonal that leaves two triangles on the same side as the whole.
void SplitQuad(const Polyhedron& body, const U32* q, const gp_XYZ& normal, std::vector<U32>& triangles)
{
    const auto turns = [&](int a, int b, int c) {
        const gp_XYZ& p = body.points[q[a]];
        return (body.points[q[b]] - p).Crossed(body.points[q[c]] - p).Dot(normal) > 0;
    };
    if (turns(0, 1, 2) && turns(0, 2, 3)) {
        triangles.insert(triangles.end(), {q[0], q[1], q[2], q[0], q[2], q[3]});
    } else {
        triangles.insert(triangles.end(), {q[1], q[2], q[3], q[1], q[3], q[0]});
    }
}

} // namespace

void TriangulateFace(Context& context, const Polyhedron& body, std::size_t firstLoop, std::size_t endLoop,
                     std::vector<U32>& triangles)
{
    const Polyhedron::Loop& outline = body.loops[firstLoop];
    const gp_XYZ area = AreaVector(body, outline);
    if (!(area.SquareModulus() > 1e-18)) {
        return;
    }
    const U32* corners = &body.corners[outline.first];
    if (outline.count == 3 && endLoop == firstLoop + 1) {
        triangles.insert(triangles.end(), {corners[0], corners[1], corners[2]});
        return;
    }
    if (outline.count == 4 && endLoop == firstLoop + 1) {
        SplitQuad(body, corners, area, triangles);
        return;
    }
    EarClipper clipper(context, body, area);
    for (std::size_t loop = firstLoop; loop < endLoop; ++loop) {
        clipper.AddLoop(body.loops[loop]);
    }
    if (!clipper.Run(triangles)) {
        context.Report(Report::Kind::Repaired,
                       "a face whose outline crosses itself or its holes is filled about");
    }
}

} // namespace cadex::ifc
