// Triangles that fill a planar polygon with holes: ear clipping, after the holes have been joined to the
// outline by bridges (D. Eberly, "Triangulation by Ear Clipping").
#include <algorithm>
#include <cmath>

#include "sdk/ifc/IfcFacets.h"

namespace cadex {
namespace internal {
namespace ifc {
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

/// The closed triangle, its corners excepted.
bool Contains(const Point2& a, const Point2& b, const Point2& c, const Point2& p)
{
    return Cross(a, b, p) >= 0 && Cross(b, c, p) >= 0 && Cross(c, a, p) >= 0 && !Same(a, p) && !Same(b, p) &&
           !Same(c, p);
}

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
            myRing = std::move(ring);
        } else {
            myHoles.push_back(std::move(ring));
        }
    }

    void Run(std::vector<U32>& triangles)
    {
        JoinHoles();
        Clip(triangles);
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
        const auto byX = [](const Point2& a, const Point2& b) { return a.x < b.x; };
        return static_cast<std::size_t>(std::max_element(points.begin(), points.end(), byX) - points.begin());
    }

    /// The corner of the ring that sees the point, which lies inside: on the edge hit first towards +x, or
    /// the corner nearest to that direction that stands in between.
    std::size_t VisibleFrom(const Point2& p) const
    {
        double nearest = INFINITY;
        std::size_t best = 0;
        const std::size_t count = myRing.size();
        for (std::size_t i = 0; i < count; ++i) {
            const Point2 a = At(myRing[i]);
            const Point2 b = At(myRing[(i + 1) % count]);
            if (a.y > p.y || b.y < p.y || a.y == b.y) {
                continue; // only edges that rise past the point bound the inside on its right
            }
            const double x = a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y);
            if (x >= p.x && x < nearest) {
                nearest = x;
                best = a.x > b.x ? i : (i + 1) % count;
            }
        }
        const Point2 hit{nearest, p.y};
        const Point2 candidate = At(myRing[best]);
        double steepest = INFINITY;
        for (std::size_t i = 0; i < count && std::isfinite(nearest); ++i) {
            const Point2 q = At(myRing[i]);
            const bool inside =
                candidate.y < p.y ? Contains(p, candidate, hit, q) : Contains(p, hit, candidate, q);
            const bool reflex =
                Cross(At(myRing[(i + count - 1) % count]), q, At(myRing[(i + 1) % count])) <= 0;
            const double slope = q.x > p.x ? std::abs(q.y - p.y) / (q.x - p.x) : INFINITY;
            if (inside && reflex && slope < steepest) {
                steepest = slope;
                best = i;
            }
        }
        return best;
    }

    void JoinHoles()
    {
        struct Hole
        {
            std::vector<U32> ring;
            double right;
        };
        std::vector<Hole> holes;
        for (std::vector<U32>& ring : myHoles) {
            std::vector<Point2> points;
            points.reserve(ring.size());
            for (U32 index : ring) {
                points.push_back(At(index));
            }
            const std::size_t right = Rightmost(points);
            std::rotate(ring.begin(), ring.begin() + static_cast<std::ptrdiff_t>(right), ring.end());
            holes.push_back({std::move(ring), points[right].x});
        }
        std::sort(holes.begin(), holes.end(), [](const Hole& a, const Hole& b) { return a.right > b.right; });
        for (const Hole& hole : holes) {
            myContext.Steps(myRing.size());
            const std::size_t at = VisibleFrom(At(hole.ring.front()));
            std::vector<U32> bridge(hole.ring);
            bridge.push_back(hole.ring.front());
            bridge.push_back(myRing[at]);
            myRing.insert(myRing.begin() + static_cast<std::ptrdiff_t>(at) + 1, bridge.begin(), bridge.end());
        }
    }

    bool IsEar(std::size_t previous, std::size_t corner, std::size_t next)
    {
        const Point2 a = myPoints[previous];
        const Point2 b = myPoints[corner];
        const Point2 c = myPoints[next];
        if (Cross(a, b, c) <= 0) {
            return false;
        }
        std::size_t steps = 0;
        for (std::size_t i = myNext[next]; i != previous; i = myNext[i]) {
            ++steps;
            if (Contains(a, b, c, myPoints[i])) {
                myContext.Steps(steps);
                return false;
            }
        }
        myContext.Steps(steps);
        return true;
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

    void Clip(std::vector<U32>& triangles)
    {
        Link();
        std::size_t left = myRing.size();
        std::size_t corner = 0;
        std::size_t missed = 0;
        while (left > 2) {
            const std::size_t previous = myPrevious[corner];
            const std::size_t next = myNext[corner];
            const double turn = Cross(myPoints[previous], myPoints[corner], myPoints[next]);
            // Once around without an ear: the outline crosses itself somewhere. Any corner is cut off then,
            // so that the rest can go on.
            const bool stuck = missed > left;
            const bool ear = turn != 0 && (stuck || IsEar(previous, corner, next));
            if (ear) {
                triangles.insert(triangles.end(), {myRing[previous], myRing[corner], myRing[next]});
            }
            if (ear || turn == 0) {
                myNext[previous] = next;
                myPrevious[next] = previous;
                --left;
                missed = 0;
                // going on behind the neighbour keeps triangles from becoming a fan of slivers
                corner = myNext[next];
                continue;
            }
            ++missed;
            corner = next;
        }
    }

    Context& myContext;
    const Polyhedron& myBody;
    int myDrop = 3;
    bool myFlip = false;
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
    clipper.Run(triangles);
}

} // namespace ifc
} // namespace internal
} // namespace cadex
