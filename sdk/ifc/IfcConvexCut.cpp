#include "sdk/ifc/IfcConvexCut.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <unordered_map>

namespace cadex::ifc {
namespace {

/// Points nearer than this are one, and lie on a plane that is nearer than this. Millimetres.
constexpr double Near = 1e-6;

using Polygon3 = std::vector<gp_XYZ>;

struct Plane
{
    gp_XYZ normal; ///< outwards, length 1
    double offset = 0;

    double Above(const gp_XYZ& point) const { return normal.Dot(point) - offset; }
    bool Holds(const Polygon3& polygon) const
    {
        return std::all_of(polygon.begin(), polygon.end(),
                           [this](const gp_XYZ& point) { return std::abs(Above(point)) <= Near; });
    }
};

struct Convex
{
    std::vector<Plane> planes;
    std::vector<Polygon3> faces; ///< one for each plane, counter-clockwise seen from outside
    std::vector<gp_XYZ> points;
};

/// False unless the body is convex.
bool MakeConvex(const Polyhedron& body, Convex& convex)
{
    constexpr std::size_t MostFaces = 64; // beyond, the quadratic tests cost more than the kernel
    if (!body.closed || !body.shells.empty() || body.loops.size() < 4 || body.loops.size() > MostFaces) {
        return false;
    }
    for (const Polyhedron::Loop& loop : body.loops) {
        const gp_XYZ area = AreaVector(body, loop);
        if (!loop.outer || !(area.Modulus() > Near * Near)) {
            return false;
        }
        Plane plane{area.Normalized(), 0};
        plane.offset = plane.normal.Dot(body.points[body.corners[loop.first]]);
        Polygon3& face = convex.faces.emplace_back();
        for (U32 i = 0; i < loop.count; ++i) {
            face.push_back(body.points[body.corners[loop.first + i]]);
            convex.points.push_back(face.back());
        }
        convex.planes.push_back(plane);
    }
    return std::all_of(convex.planes.begin(), convex.planes.end(), [&](const Plane& plane) {
        return std::all_of(convex.points.begin(), convex.points.end(),
                           [&](const gp_XYZ& point) { return plane.Above(point) <= Near; });
    });
}

/// Some face of `a` has all of `b` on its outer side, at least `gap` away.
bool Separates(const Convex& a, const Convex& b, double gap)
{
    return std::any_of(a.planes.begin(), a.planes.end(), [&](const Plane& plane) {
        return std::all_of(b.points.begin(), b.points.end(),
                           [&](const gp_XYZ& point) { return plane.Above(point) >= gap; });
    });
}

/// The part of a convex polygon below the plane (J. Sutherland, G. Hodgman).
Polygon3 Clipped(const Polygon3& polygon, const Plane& plane)
{
    Polygon3 result;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const gp_XYZ& a = polygon[i];
        const gp_XYZ& b = polygon[(i + 1) % polygon.size()];
        const double da = plane.Above(a);
        const double db = plane.Above(b);
        if (da <= Near) {
            result.push_back(a);
        }
        if ((da < -Near && db > Near) || (da > Near && db < -Near)) {
            result.push_back(a + (b - a) * (da / (da - db)));
        }
    }
    return result;
}

/// The part of a face inside the body; a face that lies in one of the body's planes is not cut by that plane.
Polygon3 Inside(Polygon3 face, const Convex& body)
{
    for (const Plane& plane : body.planes) {
        if (face.size() < 3) {
            break;
        }
        if (!plane.Holds(face)) {
            face = Clipped(face, plane);
        }
    }
    return face;
}

bool HasArea(const Polygon3& polygon)
{
    gp_XYZ area;
    for (std::size_t i = 2; i < polygon.size(); ++i) {
        area += (polygon[i - 1] - polygon[0]).Crossed(polygon[i] - polygon[0]);
    }
    return area.Modulus() > Near * Near;
}

/// Collects faces with welded points.
class Builder
{
public:
    explicit Builder(Polyhedron& body) : myBody(body) {}

    std::vector<U32> Weld(const Polygon3& polygon)
    {
        std::vector<U32> ring;
        for (const gp_XYZ& point : polygon) {
            const U32 index = IndexOf(point);
            if (ring.empty() || ring.back() != index) {
                ring.push_back(index);
            }
        }
        while (ring.size() > 1 && ring.front() == ring.back()) {
            ring.pop_back();
        }
        return ring;
    }

    void AddLoop(const std::vector<U32>& ring, bool outer)
    {
        myBody.BeginLoop(outer);
        for (U32 index : ring) {
            myBody.AddCorner(index);
        }
    }

    /// Each edge runs once each way.
    bool IsClosed() const
    {
        std::set<std::pair<U32, U32>> edges;
        for (const Polyhedron::Loop& loop : myBody.loops) {
            for (U32 i = 0; i < loop.count; ++i) {
                const U32 a = myBody.corners[loop.first + i];
                const U32 b = myBody.corners[loop.first + (i + 1) % loop.count];
                if (!edges.emplace(a, b).second) {
                    return false;
                }
            }
        }
        return std::all_of(edges.begin(), edges.end(), [&](const std::pair<U32, U32>& edge) {
            return edges.count({edge.second, edge.first}) != 0;
        });
    }

    const gp_XYZ& Point(U32 index) const { return myBody.points[index]; }

private:
    U32 IndexOf(const gp_XYZ& point)
    {
        // bodies of this kind have a few dozen points
        for (U32 i = 0; i < myBody.points.size(); ++i) {
            if ((myBody.points[i] - point).SquareModulus() <= 4 * Near * Near) {
                return i;
            }
        }
        myBody.points.push_back(point);
        return static_cast<U32>(myBody.points.size() - 1);
    }

    Polyhedron& myBody;
};

using Edges = std::multimap<U32, U32>;

/// Adds from -> to, or takes its opposite away if that is there.
void AddEdge(Edges& edges, U32 from, U32 to)
{
    const auto [first, end] = edges.equal_range(to);
    const auto opposite = std::find_if(first, end, [from](const auto& edge) { return edge.second == from; });
    opposite != end ? static_cast<void>(edges.erase(opposite)) : static_cast<void>(edges.emplace(from, to));
}

/// from -> to in the stretches between the points that lie on it.
void AddSplitEdge(const Builder& builder, const std::vector<U32>& points, U32 from, U32 to, Edges& edges)
{
    const gp_XYZ start = builder.Point(from);
    const gp_XYZ way = builder.Point(to) - start;
    std::map<double, U32> stops;
    for (U32 index : points) {
        const double along = (builder.Point(index) - start).Dot(way) / way.SquareModulus();
        const bool on = (start + way * along - builder.Point(index)).Modulus() <= 2 * Near;
        if (index != from && index != to && on && along > 0 && along < 1) {
            stops.emplace(along, index);
        }
    }
    for (const auto& [along, index] : stops) {
        AddEdge(edges, from, index);
        from = index;
    }
    AddEdge(edges, from, to);
}

gp_XYZ RingArea(const Builder& builder, const std::vector<U32>& ring)
{
    gp_XYZ area;
    for (std::size_t i = 2; i < ring.size(); ++i) {
        area += (builder.Point(ring[i - 1]) - builder.Point(ring[0]))
                    .Crossed(builder.Point(ring[i]) - builder.Point(ring[0]));
    }
    return area;
}

/// Rings out of edges that form simple closed curves; false when two meet at a point.
bool TraceRings(Edges edges, std::vector<std::vector<U32>>& rings)
{
    while (!edges.empty()) {
        std::vector<U32> ring;
        const U32 start = edges.begin()->first;
        U32 at = start;
        do {
            const auto next = edges.find(at);
            if (next == edges.end() || edges.count(at) != 1) {
                return false;
            }
            ring.push_back(at);
            at = next->second;
            edges.erase(next);
        } while (at != start);
        rings.push_back(std::move(ring));
    }
    return true;
}

/// The face without the pieces that the tools take out of it. Pieces lie inside the face and do not meet each
/// other.
bool AddRest(Builder& builder, const Polygon3& face, const gp_XYZ& normal,
             const std::vector<Polygon3>& pieces)
{
    std::vector<U32> cutPoints;
    Edges edges;
    std::vector<std::vector<U32>> cuts;
    for (const Polygon3& piece : pieces) {
        cuts.push_back(builder.Weld(piece));
        cutPoints.insert(cutPoints.end(), cuts.back().begin(), cuts.back().end());
    }
    const std::vector<U32> outline = builder.Weld(face);
    for (std::size_t i = 0; i < outline.size(); ++i) {
        AddSplitEdge(builder, cutPoints, outline[i], outline[(i + 1) % outline.size()], edges);
    }
    for (const std::vector<U32>& cut : cuts) {
        for (std::size_t i = 0; i < cut.size(); ++i) {
            AddEdge(edges, cut[(i + 1) % cut.size()], cut[i]);
        }
    }
    std::vector<std::vector<U32>> rings;
    if (!TraceRings(std::move(edges), rings)) {
        return false;
    }
    std::vector<std::vector<U32>> outer;
    std::vector<std::vector<U32>> holes;
    for (std::vector<U32>& ring : rings) {
        (RingArea(builder, ring).Dot(normal) > 0 ? outer : holes).push_back(std::move(ring));
    }
    if (outer.size() > 1 && !holes.empty()) {
        return false; // which hole belongs to which part is a question for the kernel
    }
    for (const std::vector<U32>& ring : outer) {
        builder.AddLoop(ring, true);
    }
    for (const std::vector<U32>& ring : holes) {
        builder.AddLoop(ring, false);
    }
    return true;
}

/// The tools that reach into the body; false when one is not convex or two of them meet.
bool FindTools(const Convex& body, const std::vector<const Polyhedron*>& tools, std::vector<Convex>& meeting)
{
    for (const Polyhedron* tool : tools) {
        Convex convex;
        if (!MakeConvex(*tool, convex)) {
            return false;
        }
        if (Separates(convex, body, -Near) || Separates(body, convex, -Near)) {
            continue;
        }
        for (const Convex& other : meeting) {
            if (!Separates(convex, other, 4 * Near) && !Separates(other, convex, 4 * Near)) {
                return false;
            }
        }
        meeting.push_back(std::move(convex));
    }
    return true;
}

} // namespace

bool CutConvex(const Polyhedron& body, const std::vector<const Polyhedron*>& tools, Polyhedron& result)
{
    Convex convex;
    std::vector<Convex> meeting;
    result = Polyhedron();
    if (!MakeConvex(body, convex) || !FindTools(convex, tools, meeting)) {
        return false;
    }
    if (meeting.empty()) {
        result = body;
        return true;
    }
    Builder builder(result);
    for (std::size_t i = 0; i < convex.faces.size(); ++i) {
        std::vector<Polygon3> pieces;
        for (const Convex& tool : meeting) {
            Polygon3 piece = Inside(convex.faces[i], tool);
            if (HasArea(piece)) {
                pieces.push_back(std::move(piece));
            }
        }
        if (!AddRest(builder, convex.faces[i], convex.planes[i].normal, pieces)) {
            return false;
        }
    }
    for (const Convex& tool : meeting) {
        for (const Polygon3& face : tool.faces) {
            const bool coplanar = std::any_of(convex.planes.begin(), convex.planes.end(),
                                              [&](const Plane& plane) { return plane.Holds(face); });
            const Polygon3 wall = coplanar ? Polygon3() : Inside(face, convex);
            if (HasArea(wall)) {
                std::vector<U32> ring = builder.Weld(wall);
                std::reverse(ring.begin(), ring.end());
                builder.AddLoop(ring, true);
            }
        }
    }
    result.closed = true;
    return builder.IsClosed();
}

} // namespace cadex::ifc
