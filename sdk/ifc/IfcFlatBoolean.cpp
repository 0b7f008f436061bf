// Faces are cut into convex fragments along the planes of the other body's faces; a fragment then lies
// inside, outside or on the other body as a whole, which a ray tells. Those that stay are put
// together again face by face.
#include "sdk/ifc/IfcFlatBoolean.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <unordered_map>

namespace cadex::ifc {
namespace {

/// Points nearer than this to a plane lie in it; points nearer than four times this are one. Millimetres.
constexpr double Near = 1e-5;
constexpr double Weld = 4 * Near;

using Polygon3 = std::vector<gp_XYZ>;

struct Box
{
    gp_XYZ low{1e300, 1e300, 1e300};
    gp_XYZ high{-1e300, -1e300, -1e300};

    void Add(const gp_XYZ& p)
    {
        low.SetCoord(std::min(low.X(), p.X()), std::min(low.Y(), p.Y()), std::min(low.Z(), p.Z()));
        high.SetCoord(std::max(high.X(), p.X()), std::max(high.Y(), p.Y()), std::max(high.Z(), p.Z()));
    }
    void Add(const Polygon3& polygon)
    {
        for (const gp_XYZ& p : polygon) {
            Add(p);
        }
    }
    bool Meets(const Box& other, double gap) const
    {
        return low.X() <= other.high.X() + gap && low.Y() <= other.high.Y() + gap &&
               low.Z() <= other.high.Z() + gap && other.low.X() <= high.X() + gap &&
               other.low.Y() <= high.Y() + gap && other.low.Z() <= high.Z() + gap;
    }
    bool Holds(const gp_XYZ& p, double gap) const
    {
        Box point;
        point.Add(p);
        return Meets(point, gap);
    }
};

struct Plane
{
    gp_XYZ normal; ///< outwards, length 1
    double offset = 0;

    double Above(const gp_XYZ& p) const { return normal.Dot(p) - offset; }
    bool Holds(const Polygon3& polygon) const
    {
        return std::all_of(polygon.begin(), polygon.end(),
                           [this](const gp_XYZ& p) { return std::abs(Above(p)) <= Near; });
    }
};

/// A convex piece of a face.
struct Fragment
{
    Polygon3 points;
    Plane plane;
    std::size_t face = 0; ///< fragments with one number are pieces of one face
    Box box;

    void SetPoints(Polygon3 polygon)
    {
        points = std::move(polygon);
        box = Box();
        box.Add(points);
    }
    gp_XYZ Middle() const
    {
        gp_XYZ sum;
        for (const gp_XYZ& p : points) {
            sum += p;
        }
        return sum / static_cast<double>(points.size());
    }
    /// A point of the plane lies in the fragment.
    bool Covers(const gp_XYZ& p) const
    {
        for (std::size_t i = 0; i < points.size(); ++i) {
            const gp_XYZ edge = points[(i + 1) % points.size()] - points[i];
            if (edge.Crossed(p - points[i]).Dot(plane.normal) < 0) {
                return false;
            }
        }
        return true;
    }
};

using Fragments = std::vector<Fragment>;

bool IsConvex(const Polygon3& polygon, const gp_XYZ& normal)
{
    const std::size_t count = polygon.size();
    for (std::size_t i = 0; i < count; ++i) {
        const gp_XYZ in = polygon[(i + 1) % count] - polygon[i];
        const gp_XYZ out = polygon[(i + 2) % count] - polygon[(i + 1) % count];
        if (in.Crossed(out).Dot(normal) <= 0 || in.Dot(out) < -0.999 * in.Modulus() * out.Modulus()) {
            return false;
        }
    }
    return count <= 8; // a turn more than once around has more corners than this
}

/// Cuts bodies into fragments and numbers their faces.
class FragmentMaker
{
public:
    explicit FragmentMaker(Context& context) : myContext(context) {}

    Fragments Make(const Polyhedron& body)
    {
        Fragments fragments;
        for (std::size_t loop = 0; loop < body.loops.size(); loop = body.FaceEnd(loop)) {
            AddFace(body, loop, body.FaceEnd(loop), fragments);
        }
        return fragments;
    }

private:
    void AddFace(const Polyhedron& body, std::size_t first, std::size_t end, Fragments& fragments)
    {
        gp_XYZ area = AreaVector(body, body.loops[first]);
        if (!(area.Modulus() > Near * Near)) {
            return;
        }
        Polygon3 outline;
        for (U32 i = 0; i < body.loops[first].count; ++i) {
            outline.push_back(body.points[body.corners[body.loops[first].first + i]]);
        }
        const gp_XYZ normal = area.Normalized();
        const Plane plane{normal, normal.Dot(outline.front())};
        bool flat = true;
        for (std::size_t loop = first; loop < end; ++loop) {
            for (U32 i = 0; i < body.loops[loop].count; ++i) {
                const gp_XYZ& p = body.points[body.corners[body.loops[loop].first + i]];
                flat = flat && std::abs(plane.Above(p)) <= Near;
            }
        }
        ++myFaces;
        if (flat && end == first + 1 && IsConvex(outline, normal)) {
            Add(std::move(outline), plane, fragments);
            return;
        }
        std::vector<U32> triangles;
        TriangulateFace(myContext, body, first, end, triangles);
        for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
            Polygon3 triangle{body.points[triangles[i]], body.points[triangles[i + 1]],
                              body.points[triangles[i + 2]]};
            area = (triangle[1] - triangle[0]).Crossed(triangle[2] - triangle[0]);
            if (!(area.Modulus() > Near * Near)) {
                continue;
            }
            Plane own = plane;
            if (!flat) {
                // a warped face is as many faces as it has triangles
                ++myFaces;
                own.normal = area.Normalized();
                own.offset = own.normal.Dot(triangle[0]);
            }
            Add(std::move(triangle), own, fragments);
        }
    }

    void Add(Polygon3 points, const Plane& plane, Fragments& fragments) const
    {
        Fragment& fragment = fragments.emplace_back();
        fragment.SetPoints(std::move(points));
        fragment.plane = plane;
        fragment.face = myFaces;
    }

    Context& myContext;
    std::size_t myFaces = 0;
};

/// Both sides of the plane; false when the polygon lies on one side.
bool Split(const Polygon3& polygon, const Plane& plane, Polygon3& above, Polygon3& below)
{
    bool isAbove = false;
    bool isBelow = false;
    for (const gp_XYZ& p : polygon) {
        const double height = plane.Above(p);
        isAbove = isAbove || height > Near;
        isBelow = isBelow || height < -Near;
    }
    if (!isAbove || !isBelow) {
        return false;
    }
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const gp_XYZ& a = polygon[i];
        const gp_XYZ& b = polygon[(i + 1) % polygon.size()];
        const double da = plane.Above(a);
        const double db = plane.Above(b);
        if (da >= -Near) {
            above.push_back(a);
        }
        if (da <= Near) {
            below.push_back(a);
        }
        if ((da < -Near && db > Near) || (da > Near && db < -Near)) {
            const gp_XYZ cut = a + (b - a) * (da / (da - db));
            above.push_back(cut);
            below.push_back(cut);
        }
    }
    return true;
}

/// How a fragment lies to a body.
enum class Side
{
    Outside,
    Inside,
    OnSame,    ///< in a face that looks the same way
    OnOpposite ///< in a face that looks the other way
};

/// NOTE: solid angle of a triangle: Van Oosterom and Strackee, 1983.
double SolidAngle(gp_XYZ a, gp_XYZ b, gp_XYZ c, const gp_XYZ& eye)
{
    a -= eye;
    b -= eye;
    c -= eye;
    const double la = a.Modulus();
    const double lb = b.Modulus();
    const double lc = c.Modulus();
    return 2 * std::atan2(a.Dot(b.Crossed(c)), la * lb * lc + a.Dot(b) * lc + b.Dot(c) * la + c.Dot(a) * lb);
}

/// Work that one operation may cause: a wall with some thousand openings needs a tenth of it.
class Budget
{
public:
    void Spend(std::size_t steps)
    {
        if (steps > myLeft) {
            throw Unbuildable("a boolean operation that takes too much work");
        }
        myLeft -= steps;
    }

private:
    std::size_t myLeft = 100'000'000;
};

/// Closed bodies that do not meet each other.
class Cutter
{
public:
    Cutter(Budget& budget, const std::vector<const Fragments*>& others) : myBudget(budget)
    {
        for (const Fragments* fragments : others) {
            Other& other = myOthers.emplace_back();
            other.fragments = fragments;
            for (const Fragment& fragment : *fragments) {
                other.box.Add(fragment.points);
            }
        }
    }

    /// Calls `take(fragment, side)` for pieces that lie on one side as a whole.
    template <typename Take>
    void Cut(const Fragments& fragments, Take take) const
    {
        for (const Fragment& fragment : fragments) {
            Fragments pieces{fragment};
            for (const Other& other : myOthers) {
                if (other.box.Meets(fragment.box, Weld)) {
                    Divide(fragment, *other.fragments, pieces);
                }
            }
            for (const Fragment& piece : pieces) {
                take(piece, SideOf(piece));
            }
        }
    }

private:
    struct Other
    {
        const Fragments* fragments;
        Box box;
    };

    void Divide(const Fragment& fragment, const Fragments& other, Fragments& pieces) const
    {
        for (const Fragment& knife : other) {
            if (!knife.box.Meets(fragment.box, Weld)) {
                continue;
            }
            const std::size_t count = pieces.size();
            myBudget.Spend(count);
            for (std::size_t i = 0; i < count; ++i) {
                Polygon3 above;
                Polygon3 below;
                if (knife.box.Meets(pieces[i].box, Weld) &&
                    Split(pieces[i].points, knife.plane, above, below)) {
                    Fragment rest = pieces[i];
                    pieces[i].SetPoints(std::move(above));
                    rest.SetPoints(std::move(below));
                    pieces.push_back(std::move(rest));
                }
            }
        }
    }

    Side SideOf(const Fragment& piece) const
    {
        const gp_XYZ middle = piece.Middle();
        for (const Other& other : myOthers) {
            if (other.box.Holds(middle, Weld)) {
                const Side side = SideOf(piece, middle, *other.fragments);
                if (side != Side::Outside) {
                    return side;
                }
            }
        }
        return Side::Outside;
    }

    Side SideOf(const Fragment& piece, const gp_XYZ& middle, const Fragments& other) const
    {
        myBudget.Spend(other.size() / 4);
        bool clear = true;
        int crossed = 0;
        for (const Fragment& face : other) {
            if (face.box.Meets(piece.box, Weld) && face.plane.Holds(piece.points) && face.Covers(middle)) {
                return face.plane.normal.Dot(piece.plane.normal) > 0 ? Side::OnSame : Side::OnOpposite;
            }
            clear = clear && AddCrossing(face, middle, crossed);
        }
        const bool inside = clear ? crossed != 0 : IsWoundRound(middle, other);
        return inside ? Side::Inside : Side::Outside;
    }

    /// Counts the face if the ray along x from `eye` passes through it; false when it comes too near to the
    /// face's edge, or the face to the eye, to tell.
    static bool AddCrossing(const Fragment& face, const gp_XYZ& eye, int& crossed)
    {
        const Box& box = face.box;
        if (eye.Y() < box.low.Y() - Weld || eye.Y() > box.high.Y() + Weld || eye.Z() < box.low.Z() - Weld ||
            eye.Z() > box.high.Z() + Weld || eye.X() > box.high.X() + Weld) {
            return true;
        }
        const double slope = face.plane.normal.X();
        const double height = face.plane.Above(eye);
        if (std::abs(slope) < 1e-6 || std::abs(height) <= Weld) {
            return false;
        }
        const double distance = -height / slope;
        if (distance < 0) {
            return true;
        }
        const gp_XYZ hit = eye + gp_XYZ(distance, 0, 0);
        bool near = false;
        for (std::size_t i = 0; i < face.points.size(); ++i) {
            const gp_XYZ edge = face.points[(i + 1) % face.points.size()] - face.points[i];
            const double aside = edge.Crossed(hit - face.points[i]).Dot(face.plane.normal) / edge.Modulus();
            if (aside < -Weld) {
                return true;
            }
            near = near || aside <= Weld;
        }
        crossed += slope > 0 ? 1 : -1;
        return !near;
    }

    bool IsWoundRound(const gp_XYZ& eye, const Fragments& other) const
    {
        myBudget.Spend(10 * other.size());
        double angle = 0;
        for (const Fragment& face : other) {
            for (std::size_t i = 2; i < face.points.size(); ++i) {
                angle += SolidAngle(face.points[0], face.points[i - 1], face.points[i], eye);
            }
        }
        return std::abs(angle) > 2 * M_PI;
    }

    Budget& myBudget;
    std::vector<Other> myOthers;
};

void Turn(Fragment& fragment)
{
    std::reverse(fragment.points.begin(), fragment.points.end());
    fragment.plane.normal.Reverse();
    fragment.plane.offset = -fragment.plane.offset;
}

/// The body and tools that do not meet each other; one tool when the kind is no cut.
Fragments Combined(Budget& budget, BooleanKind kind, const Fragments& body,
                   const std::vector<const Fragments*>& tools)
{
    Fragments result;
    const Side wanted = kind == BooleanKind::Common ? Side::Inside : Side::Outside;
    Cutter(budget, tools).Cut(body, [&](const Fragment& piece, Side side) {
        const Side on = kind == BooleanKind::Cut ? Side::OnOpposite : Side::OnSame;
        if (side == wanted || side == on) {
            result.push_back(piece);
        }
    });
    const Cutter byBody(budget, {&body});
    for (const Fragments* tool : tools) {
        byBody.Cut(*tool, [&](const Fragment& piece, Side side) {
            if (side == (kind == BooleanKind::Fuse ? Side::Outside : Side::Inside)) {
                result.push_back(piece);
                if (kind == BooleanKind::Cut) {
                    Turn(result.back());
                }
            }
        });
    }
    return result;
}

Box BoxOf(const Fragments& fragments)
{
    Box box;
    for (const Fragment& fragment : fragments) {
        box.Add(fragment.points);
    }
    return box;
}

/// Takes tools that do not meet each other out of the list.
std::vector<const Fragments*> TakeApart(std::vector<Fragments>& tools, std::vector<bool>& taken)
{
    std::vector<const Fragments*> apart;
    std::vector<Box> boxes;
    for (std::size_t i = 0; i < tools.size(); ++i) {
        const Box box = BoxOf(tools[i]);
        const auto meets = [&](const Box& other) { return other.Meets(box, 2 * Weld); };
        if (!taken[i] && std::none_of(boxes.begin(), boxes.end(), meets)) {
            taken[i] = true;
            apart.push_back(&tools[i]);
            boxes.push_back(box);
        }
    }
    return apart;
}

using Ring = std::vector<U32>;

/// Puts fragments together again.
class Assembly
{
public:
    Assembly(Budget& budget, Polyhedron& result) : myBudget(budget), myResult(result) {}

    /// False when the result has open edges.
    bool Put(const Fragments& fragments)
    {
        std::map<std::size_t, std::vector<Ring>> ringsOf; // by face
        std::map<std::size_t, gp_XYZ> normalOf;
        for (const Fragment& fragment : fragments) {
            Ring ring = WeldedRing(fragment.points);
            if (ring.size() >= 3) {
                ringsOf[fragment.face].push_back(std::move(ring));
                normalOf[fragment.face] = fragment.plane.normal;
            }
        }
        SortPoints();
        for (auto& [face, rings] : ringsOf) {
            for (Ring& ring : rings) {
                ring = WithCornersOnEdges(ring);
            }
            Merge(rings, normalOf[face]);
        }
        DropNeedlessCorners();
        for (const Face& face : myFaces) {
            for (std::size_t i = 0; i < face.size(); ++i) {
                myResult.BeginLoop(i == 0);
                for (const U32 corner : face[i]) {
                    myResult.AddCorner(corner);
                }
            }
        }
        myResult.closed = true;
        return IsClosed();
    }

private:
    using Face = std::vector<Ring>; ///< the outline and its holes

    struct Cell
    {
        std::int64_t x, y, z;
        bool operator==(const Cell& other) const { return x == other.x && y == other.y && z == other.z; }
    };
    struct CellHash
    {
        std::size_t operator()(const Cell& c) const
        {
            return static_cast<std::size_t>(c.x * 73856093 ^ c.y * 19349663 ^ c.z * 83492791);
        }
    };

    static Cell CellOf(const gp_XYZ& p)
    {
        return {std::llround(p.X() / (4 * Weld)), std::llround(p.Y() / (4 * Weld)),
                std::llround(p.Z() / (4 * Weld))};
    }

    U32 IndexOf(const gp_XYZ& p)
    {
        const Cell at = CellOf(p);
        for (int i = 0; i < 27; ++i) {
            const auto known = myCells.find({at.x + i % 3 - 1, at.y + i / 3 % 3 - 1, at.z + i / 9 - 1});
            if (known == myCells.end()) {
                continue;
            }
            for (const U32 index : known->second) {
                if ((myResult.points[index] - p).SquareModulus() <= Weld * Weld) {
                    return index;
                }
            }
        }
        const auto index = static_cast<U32>(myResult.points.size());
        myCells[at].push_back(index);
        myResult.points.push_back(p);
        return index;
    }

    Ring WeldedRing(const Polygon3& polygon)
    {
        Ring ring;
        for (const gp_XYZ& p : polygon) {
            const U32 index = IndexOf(p);
            if (ring.empty() || ring.back() != index) {
                ring.push_back(index);
            }
        }
        while (ring.size() > 1 && ring.front() == ring.back()) {
            ring.pop_back();
        }
        return ring;
    }

    void SortPoints()
    {
        Box box;
        box.Add(myResult.points);
        const gp_XYZ size = box.high - box.low;
        myAxis = size.X() >= size.Y() && size.X() >= size.Z() ? 1 : (size.Y() >= size.Z() ? 2 : 3);
        for (U32 i = 0; i < myResult.points.size(); ++i) {
            mySorted.emplace_back(myResult.points[i].Coord(myAxis), i);
        }
        std::sort(mySorted.begin(), mySorted.end());
    }

    /// The ring with all corners of other fragments that lie on its edges.
    Ring WithCornersOnEdges(const Ring& ring)
    {
        Ring whole;
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const U32 from = ring[i];
            const U32 to = ring[(i + 1) % ring.size()];
            whole.push_back(from);
            const std::vector<U32>& between = Between(std::min(from, to), std::max(from, to));
            if (from < to) {
                whole.insert(whole.end(), between.begin(), between.end());
            } else {
                whole.insert(whole.end(), between.rbegin(), between.rend());
            }
        }
        return whole;
    }

    /// The corners on the way between two, found once for both its directions.
    const std::vector<U32>& Between(U32 from, U32 to)
    {
        const auto [entry, fresh] = myBetween.try_emplace({from, to});
        if (!fresh) {
            return entry->second;
        }
        const gp_XYZ& start = myResult.points[from];
        const gp_XYZ& end = myResult.points[to];
        const gp_XYZ way = end - start;
        const double low = std::min(start.Coord(myAxis), end.Coord(myAxis)) - Weld;
        const double high = std::max(start.Coord(myAxis), end.Coord(myAxis)) + Weld;
        std::vector<std::pair<double, U32>> stops;
        auto at = std::lower_bound(mySorted.begin(), mySorted.end(), std::make_pair(low, U32{0}));
        std::size_t steps = 0;
        for (; at != mySorted.end() && at->first <= high; ++at, ++steps) {
            const gp_XYZ reach = myResult.points[at->second] - start;
            const double along = reach.Dot(way) / way.SquareModulus();
            if (at->second != from && at->second != to && along > 0 && along < 1 &&
                (reach - way * along).SquareModulus() <= Weld * Weld) {
                stops.emplace_back(along, at->second);
            }
        }
        myBudget.Spend(steps / 8);
        std::sort(stops.begin(), stops.end());
        for (const auto& [along, index] : stops) {
            entry->second.push_back(index);
        }
        return entry->second;
    }

    gp_XYZ RingArea(const Ring& ring) const
    {
        gp_XYZ area;
        for (std::size_t i = 2; i < ring.size(); ++i) {
            area += (myResult.points[ring[i - 1]] - myResult.points[ring[0]])
                        .Crossed(myResult.points[ring[i]] - myResult.points[ring[0]]);
        }
        return area;
    }

    /// The fragments of one face as few faces with holes; as they are where their outlines meet in points.
    void Merge(const std::vector<Ring>& rings, const gp_XYZ& normal)
    {
        std::set<std::pair<U32, U32>> edges;
        bool simple = true;
        for (const Ring& ring : rings) {
            for (std::size_t i = 0; i < ring.size(); ++i) {
                const U32 from = ring[i];
                const U32 to = ring[(i + 1) % ring.size()];
                if (edges.erase({to, from}) == 0) {
                    simple = edges.emplace(from, to).second && simple;
                }
            }
        }
        std::vector<Ring> traced;
        std::vector<Face> faces;
        if (!simple || !Trace(edges, traced) || !Nest(traced, normal, faces)) {
            for (const Ring& ring : rings) {
                myFaces.push_back({ring});
            }
            return;
        }
        myFaces.insert(myFaces.end(), faces.begin(), faces.end());
    }

    static bool Trace(const std::set<std::pair<U32, U32>>& edges, std::vector<Ring>& rings)
    {
        std::unordered_map<U32, U32> next;
        for (const auto& [from, to] : edges) {
            if (!next.emplace(from, to).second) {
                return false;
            }
        }
        while (!next.empty()) {
            Ring& ring = rings.emplace_back();
            const U32 start = next.begin()->first;
            U32 at = start;
            do {
                const auto step = next.find(at);
                if (step == next.end()) {
                    return false;
                }
                ring.push_back(at);
                at = step->second;
                next.erase(step);
            } while (at != start);
        }
        return true;
    }

    bool Nest(const std::vector<Ring>& rings, const gp_XYZ& normal, std::vector<Face>& faces) const
    {
        std::vector<const Ring*> holes;
        for (const Ring& ring : rings) {
            if (RingArea(ring).Dot(normal) > 0) {
                faces.push_back({ring});
            } else {
                holes.push_back(&ring);
            }
        }
        for (const Ring* hole : holes) {
            Face* around = nullptr;
            for (Face& face : faces) {
                if (faces.size() == 1 || IsWithin(myResult.points[hole->front()], face.front(), normal)) {
                    around = &face;
                }
            }
            if (around == nullptr) {
                return false;
            }
            around->push_back(*hole);
        }
        return true;
    }

    bool IsWithin(const gp_XYZ& p, const Ring& ring, const gp_XYZ& normal) const
    {
        double turn = 0;
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const gp_XYZ a = myResult.points[ring[i]] - p;
            const gp_XYZ b = myResult.points[ring[(i + 1) % ring.size()]] - p;
            turn += std::atan2(a.Crossed(b).Dot(normal), a.Dot(b));
        }
        return turn > M_PI;
    }

    /// Takes out corners in the middle of a straight edge that nothing else ends at.
    void DropNeedlessCorners()
    {
        constexpr U32 None = 0xFFFFFFFFU;
        std::vector<std::array<U32, 2>> neighbours(myResult.points.size(), {None, None});
        std::vector<bool> needed(myResult.points.size(), false);
        const auto note = [&](U32 corner, U32 neighbour) {
            std::array<U32, 2>& known = neighbours[corner];
            if (known[0] == None || known[0] == neighbour) {
                known[0] = neighbour;
            } else if (known[1] == None || known[1] == neighbour) {
                known[1] = neighbour;
            } else {
                needed[corner] = true;
            }
        };
        for (const Face& face : myFaces) {
            for (const Ring& ring : face) {
                for (std::size_t i = 0; i < ring.size(); ++i) {
                    note(ring[i], ring[(i + 1) % ring.size()]);
                    note(ring[(i + 1) % ring.size()], ring[i]);
                }
            }
        }
        for (U32 i = 0; i < needed.size(); ++i) {
            if (!needed[i] && neighbours[i][1] != None) {
                const gp_XYZ a = myResult.points[neighbours[i][0]] - myResult.points[i];
                const gp_XYZ b = myResult.points[neighbours[i][1]] - myResult.points[i];
                needed[i] = a.Dot(b) >= 0 || a.Crossed(b).Modulus() > Weld * (b - a).Modulus();
            }
        }
        for (Face& face : myFaces) {
            for (Ring& ring : face) {
                ring.erase(
                    std::remove_if(ring.begin(), ring.end(), [&](U32 corner) { return !needed[corner]; }),
                    ring.end());
            }
        }
    }

    bool IsClosed() const
    {
        std::map<std::pair<U32, U32>, int> edges;
        for (const Face& face : myFaces) {
            for (const Ring& ring : face) {
                for (std::size_t i = 0; i < ring.size(); ++i) {
                    const U32 from = ring[i];
                    const U32 to = ring[(i + 1) % ring.size()];
                    edges[std::minmax(from, to)] += from < to ? 1 : -1;
                }
            }
        }
        return std::all_of(edges.begin(), edges.end(), [](const auto& edge) { return edge.second == 0; });
    }

    Budget& myBudget;
    Polyhedron& myResult;
    std::unordered_map<Cell, std::vector<U32>, CellHash> myCells;
    std::vector<std::pair<double, U32>> mySorted; ///< points along myAxis
    int myAxis = 1;
    std::map<std::pair<U32, U32>, std::vector<U32>> myBetween;
    std::vector<Face> myFaces;
};

} // namespace

bool CombineFlat(Context& context, BooleanKind kind, const Polyhedron& body,
                 const std::vector<const Polyhedron*>& tools, Polyhedron& result)
{
    const auto isClosed = [](const Polyhedron* tool) { return tool->closed; };
    if (!body.closed || !std::all_of(tools.begin(), tools.end(), isClosed)) {
        return false;
    }
    Budget budget;
    FragmentMaker maker(context);
    Fragments fragments = maker.Make(body);
    std::vector<Fragments> knives;
    knives.reserve(tools.size());
    for (const Polyhedron* tool : tools) {
        knives.push_back(maker.Make(*tool));
    }
    if (kind == BooleanKind::Cut) {
        std::vector<bool> taken(knives.size(), false);
        for (std::vector<const Fragments*> apart = TakeApart(knives, taken); !apart.empty();
             apart = TakeApart(knives, taken)) {
            fragments = Combined(budget, kind, fragments, apart);
        }
    } else {
        for (const Fragments& tool : knives) {
            fragments = Combined(budget, kind, fragments, {&tool});
        }
    }
    result = Polyhedron();
    return Assembly(budget, result).Put(fragments);
}

Polyhedron Snapped(const Polyhedron& tool, const Polyhedron& body, double precision)
{
    constexpr std::size_t MostWork = 10'000'000; // of large bodies, a skin more does not matter
    Polyhedron snapped = tool;
    if (body.loops.size() * tool.points.size() > MostWork) {
        return snapped;
    }
    Box around;
    around.Add(tool.points);
    for (std::size_t loop = 0; loop < body.loops.size(); loop = body.FaceEnd(loop)) {
        Box box;
        for (U32 i = 0; i < body.loops[loop].count; ++i) {
            box.Add(body.points[body.corners[body.loops[loop].first + i]]);
        }
        const gp_XYZ area = AreaVector(body, body.loops[loop]);
        if (!box.Meets(around, precision) || !(area.Modulus() > Near * Near)) {
            continue;
        }
        const gp_XYZ normal = area.Normalized();
        const Plane plane{normal, normal.Dot(body.points[body.corners[body.loops[loop].first]])};
        for (gp_XYZ& point : snapped.points) {
            const double height = plane.Above(point);
            if (height != 0 && std::abs(height) <= precision) {
                point -= normal * height;
            }
        }
    }
    return snapped;
}

} // namespace cadex::ifc
