// Triangles that fill a planar polygon with holes.
#include <algorithm>
#include <cmath>

#include "sdk/ifc/IfcFacets.h"
#include "sdk/mesh/Delaunay.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::ifc {

using occt::CoordinateOf;
namespace {

using mesh::Delaunay;
using mesh::PlanePoint;

/// A face seen along its normal: the coordinate in which it is thinnest is left out.
class FlatFace
{
public:
    FlatFace(const Polyhedron& body, const gp_XYZ& normal) : myBody(body)
    {
        const gp_XYZ size(std::abs(normal.X()), std::abs(normal.Y()), std::abs(normal.Z()));
        myDrop = occt::LargestCoordinate(size);
        myFlip = CoordinateOf(normal, myDrop) < 0;
    }

    void AddLoop(const Polyhedron::Loop& loop)
    {
        std::vector<int>& ring = myLoops.emplace_back();
        for (U32 i = 0; i < loop.count; ++i) {
            ring.push_back(static_cast<int>(myPoints.size()));
            myCorners.push_back(myBody.corners[loop.first + i]);
            myPoints.push_back(At(myCorners.back()));
        }
    }

    /// False when the loops cross.
    bool Fill(std::vector<U32>& triangles)
    {
        Delaunay delaunay;
        Delaunay::Outcome outcome = delaunay.Start(myPoints, myLoops);
        if (outcome == Delaunay::Outcome::LoopsCross) {
            JoinTouching();
            outcome = delaunay.Start(myPoints, myLoops);
        }
        for (const Delaunay::Triangle& triangle : delaunay.Triangles()) {
            for (const int corner : triangle) {
                triangles.push_back(myCorners[static_cast<std::size_t>(corner)]);
            }
        }
        return outcome != Delaunay::Outcome::LoopsCross;
    }

private:
    PlanePoint At(U32 index) const
    {
        const gp_XYZ& p = myBody.points[index];
        const PlanePoint flat = myDrop == 0
                                    ? PlanePoint{p.Y(), p.Z()}
                                    : (myDrop == 1 ? PlanePoint{p.Z(), p.X()} : PlanePoint{p.X(), p.Y()});
        return myFlip ? PlanePoint{flat.y, flat.x} : flat;
    }

    /// Leads sides through the corners that touch them but for rounding noise, which would be crossings.
    void JoinTouching()
    {
        double size = 0;
        for (const PlanePoint& p : myPoints) {
            size = std::max({size, std::abs(p.x - myPoints.front().x), std::abs(p.y - myPoints.front().y)});
        }
        const double noise = 1e-9 * size;
        for (std::vector<int>& loop : myLoops) {
            std::vector<int> joined;
            for (std::size_t i = 0; i < loop.size(); ++i) {
                const int from = loop[i];
                const int to = loop[(i + 1) % loop.size()];
                joined.push_back(from);
                for (const int corner : CornersOn(from, to, noise)) {
                    joined.push_back(corner);
                }
            }
            loop = joined;
        }
    }

    std::vector<int> CornersOn(int from, int to, double noise) const
    {
        const PlanePoint& a = myPoints[static_cast<std::size_t>(from)];
        const PlanePoint& b = myPoints[static_cast<std::size_t>(to)];
        const double x = b.x - a.x;
        const double y = b.y - a.y;
        const double length = std::hypot(x, y);
        std::vector<std::pair<double, int>> stops;
        for (std::size_t i = 0; i < myPoints.size(); ++i) {
            const double along = ((myPoints[i].x - a.x) * x + (myPoints[i].y - a.y) * y) / length;
            const double aside = ((myPoints[i].x - a.x) * y - (myPoints[i].y - a.y) * x) / length;
            if (along > noise && along < length - noise && std::abs(aside) <= noise) {
                stops.emplace_back(along, static_cast<int>(i));
            }
        }
        std::sort(stops.begin(), stops.end());
        std::vector<int> corners;
        corners.reserve(stops.size());
        for (const auto& [along, corner] : stops) {
            corners.push_back(corner);
        }
        return corners;
    }

    const Polyhedron& myBody;
    int myDrop = 2;
    bool myFlip = false;
    std::vector<U32> myCorners; ///< of the body, by point
    std::vector<PlanePoint> myPoints;
    Delaunay::Loops myLoops;
};

/// More area than rounding noise, measured by the face itself: whole parts can be a thousandth of a
/// millimetre.
bool HasArea(const Polyhedron& body, const Polyhedron::Loop& loop, const gp_XYZ& area)
{
    double longest = 0;
    const gp_XYZ& first = body.points[body.corners[loop.first]];
    for (U32 i = 1; i < loop.count; ++i) {
        longest = std::max(longest, (body.points[body.corners[loop.first + i]] - first).SquareModulus());
    }
    return area.SquareModulus() > 1e-24 * longest * longest;
}

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
    if (!HasArea(body, outline, area)) {
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
    FlatFace face(body, area);
    for (std::size_t loop = firstLoop; loop < endLoop; ++loop) {
        context.Steps(body.loops[loop].count);
        face.AddLoop(body.loops[loop]);
    }
    if (face.Fill(triangles)) {
        return;
    }
    FlatFace whole(body, area);
    whole.AddLoop(outline);
    if (endLoop > firstLoop + 1 && whole.Fill(triangles)) {
        context.Report(Report::Kind::Repaired, "a face whose holes cross its outline is filled");
        return;
    }
    context.Report(Report::Kind::Repaired, "a face whose outline crosses itself is filled about");
    for (U32 i = 1; i + 1 < outline.count; ++i) {
        triangles.insert(triangles.end(), {corners[0], corners[i], corners[i + 1]});
    }
}

} // namespace cadex::ifc
