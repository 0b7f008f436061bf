#include "sdk/ifc/IfcFragmentAssembly.h"
#include "sdk/occt/Coordinates.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace cadex::ifc::flat {

using occt::CoordinateOf;

namespace {

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
        myAxis = occt::LargestCoordinate(size);
        for (U32 i = 0; i < myResult.points.size(); ++i) {
            mySorted.emplace_back(CoordinateOf(myResult.points[i], myAxis), i);
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
        const double low = std::min(CoordinateOf(start, myAxis), CoordinateOf(end, myAxis)) - Weld;
        const double high = std::max(CoordinateOf(start, myAxis), CoordinateOf(end, myAxis)) + Weld;
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
    int myAxis = 0;
    std::map<std::pair<U32, U32>, std::vector<U32>> myBetween;
    std::vector<Face> myFaces;
};

} // namespace

bool Assemble(Budget& budget, const Fragments& fragments, Polyhedron& result)
{
    return Assembly(budget, result).Put(fragments);
}

} // namespace cadex::ifc::flat
