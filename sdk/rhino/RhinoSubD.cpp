#include "sdk/rhino/RhinoSubD.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>
#include <unordered_set>

#include <gp_XYZ.hxx>

namespace cadex::rhino {

namespace {

constexpr Uuid SubDId("f09ba4d9-455b-42c3-ba3b-e6ccacef853b");

/// The net is refined this often, or less often when that would give more faces than these.
constexpr int MostRefinements = 3;
constexpr std::size_t MostFaces = 200'000;

/// Two ends in any order.
std::uint64_t KeyOf(U32 a, U32 b)
{
    return std::uint64_t{std::min(a, b)} << 32 | std::max(a, b);
}

/// A control net. Edges at the border and creases are sharp.
struct Net
{
    std::vector<gp_XYZ> points;
    std::vector<bool> isCorner; ///< by point: it does not move
    std::vector<std::vector<U32>> faces;
    std::unordered_set<std::uint64_t> creases;
};

/// Items of known size, each after its size; 0 stands for one that is not there, 255 ends them.
void SkipAdditions(Chunk& level)
{
    for (std::uint8_t size = level.U8(); size != 255; size = level.U8()) {
        level.Skip(size);
    }
}

/// What every vertex, edge and face begins with; gives its number within the file.
std::uint32_t ReadComponent(Chunk& level)
{
    const std::uint32_t number = level.U32();
    level.Skip(4 + 2);
    SkipAdditions(level);
    return number;
}

struct Link
{
    std::uint32_t number = 0;
    bool isReversed = false;
};

std::vector<Link> ReadLinks(Chunk& level)
{
    std::vector<Link> links(level.Get<std::uint16_t>());
    for (Link& link : links) {
        link.number = level.U32();
        link.isReversed = (level.U8() & 1) != 0;
    }
    return links;
}

/// Numbers in the file run through vertices, edges and faces.
struct Ranges
{
    std::uint32_t vertices = 0;
    std::uint32_t edges = 0;
    std::uint32_t faces = 0;
    std::uint32_t end = 0;
};

void ReadVertices(Chunk& level, const Ranges& ranges, double millimetres, Net& net)
{
    constexpr std::uint8_t CornerTag = 3;
    constexpr std::size_t LimitSize = 101; ///< a point of the surface and its directions, kept for speed
    for (std::uint32_t number = ranges.vertices; number < ranges.edges; ++number) {
        if (ReadComponent(level) != number) {
            throw Unreadable("the vertices of a subdivision surface are out of order");
        }
        net.isCorner.push_back(level.U8() == CornerTag);
        const auto point = level.Doubles<3>();
        net.points.emplace_back(point[0] * millimetres, point[1] * millimetres, point[2] * millimetres);
        level.Skip(4); // numbers of edges and faces
        if (const std::uint8_t size = level.U8(); size == 4) {
            level.Skip(level.Count(LimitSize) * LimitSize);
        } else {
            level.Skip(size);
        }
        ReadLinks(level);
        ReadLinks(level);
        SkipAdditions(level);
    }
}

/// Gives the two ends of each edge.
std::vector<std::array<U32, 2>> ReadEdges(Chunk& level, const Ranges& ranges, Net& net)
{
    constexpr std::uint8_t CreaseTag = 2;
    std::vector<std::array<U32, 2>> edges;
    for (std::uint32_t number = ranges.edges; number < ranges.faces; ++number) {
        if (ReadComponent(level) != number) {
            throw Unreadable("the edges of a subdivision surface are out of order");
        }
        const bool isCrease = level.U8() == CreaseTag;
        level.Skip(2 + 24); // number of faces; coefficients, sharpness
        const std::vector<Link> ends = ReadLinks(level);
        ReadLinks(level);
        SkipAdditions(level);
        std::array<U32, 2> edge{};
        for (std::size_t i = 0; i < 2; ++i) {
            if (ends.size() != 2 || ends[i].number < ranges.vertices || ends[i].number >= ranges.edges) {
                throw Unreadable("an edge of a subdivision surface has no ends");
            }
            edge[i] = ends[i].number - ranges.vertices;
        }
        edges.push_back(edge);
        if (isCrease) {
            net.creases.insert(KeyOf(edge[0], edge[1]));
        }
    }
    return edges;
}

void ReadFaces(Chunk& level, const Ranges& ranges, const std::vector<std::array<U32, 2>>& edges, Net& net)
{
    for (std::uint32_t number = ranges.faces; number < ranges.end; ++number) {
        if (ReadComponent(level) != number) {
            throw Unreadable("the faces of a subdivision surface are out of order");
        }
        level.Skip(8 + 2); // of other levels; number of edges
        std::vector<U32> corners;
        for (const Link& link : ReadLinks(level)) {
            if (link.number < ranges.edges || link.number >= ranges.faces) {
                throw Unreadable("a face of a subdivision surface has no edges");
            }
            corners.push_back(edges[link.number - ranges.edges][link.isReversed ? 1 : 0]);
        }
        SkipAdditions(level);
        if (corners.size() >= 3) {
            net.faces.push_back(std::move(corners));
        }
    }
}

Net ReadNet(Chunk& level, double millimetres)
{
    constexpr std::size_t LeastComponent = 12;
    level.Skip(2 + 3 + 48); // number of the level, kind of surface, box
    const auto ranges = level.Get<Ranges>();
    if (ranges.edges < ranges.vertices || ranges.faces < ranges.edges || ranges.end < ranges.faces ||
        ranges.end - ranges.vertices > level.Left() / LeastComponent) {
        throw Unreadable("a subdivision surface claims more than there is");
    }
    Net net;
    ReadVertices(level, ranges, millimetres, net);
    const std::vector<std::array<U32, 2>> edges = ReadEdges(level, ranges, net);
    ReadFaces(level, ranges, edges, net);
    return net;
}

struct NetEdge
{
    U32 index = 0; ///< of its point in the refined net
    gp_XYZ faceSum{0, 0, 0};
    int faces = 0;
    bool isSharp = false;
};

/// One step after E. Catmull and J. Clark, "Recursively generated B-spline surfaces on arbitrary topological
/// meshes" (1978), with the usual rules for creases and corners.
Net Refined(const Net& net)
{
    std::unordered_map<std::uint64_t, NetEdge> edges;
    std::vector<gp_XYZ> centres;
    for (const std::vector<U32>& face : net.faces) {
        gp_XYZ centre(0, 0, 0);
        for (const U32 corner : face) {
            centre += net.points[corner];
        }
        centre /= static_cast<double>(face.size());
        for (std::size_t i = 0; i < face.size(); ++i) {
            NetEdge& edge = edges[KeyOf(face[i], face[(i + 1) % face.size()])];
            edge.faceSum += centre;
            ++edge.faces;
        }
        centres.push_back(centre);
    }
    Net result;
    result.points.resize(net.points.size() + edges.size() + centres.size());
    result.isCorner = net.isCorner;
    result.isCorner.resize(result.points.size());

    struct Around
    {
        gp_XYZ faces{0, 0, 0};
        gp_XYZ middles{0, 0, 0};
        gp_XYZ sharpEnds{0, 0, 0};
        int faceCount = 0;
        int edgeCount = 0;
        int sharpCount = 0;
    };
    std::vector<Around> around(net.points.size());
    auto next = static_cast<U32>(net.points.size());
    for (auto& [key, edge] : edges) {
        const auto a = static_cast<U32>(key >> 32);
        const auto b = static_cast<U32>(key & 0xFFFFFFFF);
        const gp_XYZ middle = (net.points[a] + net.points[b]) / 2;
        edge.index = next++;
        edge.isSharp = edge.faces != 2 || net.creases.count(key) != 0;
        result.points[edge.index] = edge.isSharp ? middle : (middle * 2 + edge.faceSum) / 4;
        for (const U32 end : {a, b}) {
            around[end].middles += middle;
            ++around[end].edgeCount;
            if (edge.isSharp) {
                around[end].sharpEnds += net.points[end == a ? b : a];
                ++around[end].sharpCount;
                result.creases.insert(KeyOf(end, edge.index));
            }
        }
    }
    for (std::size_t i = 0; i < net.faces.size(); ++i) {
        const std::vector<U32>& face = net.faces[i];
        result.points[next] = centres[i];
        for (std::size_t k = 0; k < face.size(); ++k) {
            const U32 before = face[(k + face.size() - 1) % face.size()];
            const U32 after = face[(k + 1) % face.size()];
            around[face[k]].faces += centres[i];
            ++around[face[k]].faceCount;
            result.faces.push_back(
                {face[k], edges[KeyOf(face[k], after)].index, next, edges[KeyOf(before, face[k])].index});
        }
        ++next;
    }
    for (std::size_t i = 0; i < net.points.size(); ++i) {
        const Around& ring = around[i];
        const gp_XYZ& point = net.points[i];
        const double count = ring.edgeCount;
        if (net.isCorner[i] || ring.sharpCount > 2 || ring.faceCount == 0) {
            result.points[i] = point;
        } else if (ring.sharpCount == 2) {
            result.points[i] = (point * 6 + ring.sharpEnds) / 8;
        } else {
            result.points[i] =
                (ring.faces / ring.faceCount + ring.middles / count * 2 + point * (count - 3)) / count;
        }
    }
    return result;
}

/// Corners that meet at a point over edges that are not sharp share a normal, and a point of the mesh.
class NetMesh
{
public:
    explicit NetMesh(const Net& net) : myNet(net)
    {
        for (const std::vector<U32>& face : net.faces) {
            myFirst.push_back(static_cast<U32>(myParent.size()));
            myParent.resize(myParent.size() + face.size());
        }
        std::iota(myParent.begin(), myParent.end(), U32{0});
        JoinCorners();
    }

    internal::TriangleArrays Arrays()
    {
        internal::TriangleArrays arrays;
        std::vector<gp_XYZ> normals;
        std::vector<U32> pointOf(myParent.size(), 0xFFFFFFFF);
        for (std::size_t f = 0; f < myNet.faces.size(); ++f) {
            const std::vector<U32>& face = myNet.faces[f];
            gp_XYZ normal(0, 0, 0);
            for (std::size_t k = 0; k < face.size(); ++k) {
                normal += myNet.points[face[k]].Crossed(myNet.points[face[(k + 1) % face.size()]]);
            }
            std::vector<U32> corners;
            for (std::size_t k = 0; k < face.size(); ++k) {
                U32& point = pointOf[RootOf(myFirst[f] + static_cast<U32>(k))];
                if (point == 0xFFFFFFFF) {
                    point = static_cast<U32>(arrays.points.size());
                    const gp_XYZ& at = myNet.points[face[k]];
                    arrays.points.emplace_back(at.X(), at.Y(), at.Z());
                    normals.emplace_back(0, 0, 0);
                }
                normals[point] += normal;
                corners.push_back(point);
            }
            for (std::size_t k = 2; k < corners.size(); ++k) {
                arrays.indices.insert(arrays.indices.end(), {corners[0], corners[k - 1], corners[k]});
            }
        }
        for (const gp_XYZ& normal : normals) {
            const double length = normal.Modulus();
            const gp_XYZ unit = length > 0 ? normal / length : normal;
            arrays.normals.emplace_back(static_cast<float>(unit.X()), static_cast<float>(unit.Y()),
                                        static_cast<float>(unit.Z()));
        }
        return arrays;
    }

private:
    U32 RootOf(U32 corner)
    {
        while (myParent[corner] != corner) {
            myParent[corner] = myParent[myParent[corner]];
            corner = myParent[corner];
        }
        return corner;
    }

    void JoinCorners()
    {
        std::unordered_map<std::uint64_t, std::array<U32, 2>> seen; // corners at the lower and the higher end
        for (std::size_t f = 0; f < myNet.faces.size(); ++f) {
            const std::vector<U32>& face = myNet.faces[f];
            for (std::size_t k = 0; k < face.size(); ++k) {
                const std::size_t after = (k + 1) % face.size();
                const std::uint64_t key = KeyOf(face[k], face[after]);
                if (myNet.creases.count(key) != 0) {
                    continue;
                }
                std::array<U32, 2> ends = {myFirst[f] + static_cast<U32>(k),
                                           myFirst[f] + static_cast<U32>(after)};
                if (face[k] > face[after]) {
                    std::swap(ends[0], ends[1]);
                }
                const auto [other, isNew] = seen.try_emplace(key, ends);
                if (!isNew) {
                    myParent[RootOf(ends[0])] = RootOf(other->second[0]);
                    myParent[RootOf(ends[1])] = RootOf(other->second[1]);
                }
            }
        }
    }

    const Net& myNet;
    std::vector<U32> myFirst;  ///< corner of each face
    std::vector<U32> myParent; ///< of each corner
};

} // namespace

bool IsSubD(const Uuid& classId)
{
    return classId == SubDId;
}

Mesh ReadSubD(Chunk& data, double millimetres)
{
    Mesh mesh;
    const bool isThere = data.U8() == 1;
    if (!isThere) {
        data.SkipRest();
        return mesh;
    }
    Chunk::Version version;
    Chunk surface = data.Versioned(version);
    const std::uint32_t levels = surface.U32();
    surface.Skip(12 + 48); // highest numbers, box
    if (version.major == 1 && levels > 0) {
        Chunk level = surface.Versioned(version);
        if (version.major == 1) {
            Net net = ReadNet(level, millimetres);
            std::size_t faces = net.faces.size() * 4;
            for (int i = 0; i < MostRefinements && faces <= MostFaces; ++i, faces *= 4) {
                net = Refined(net);
            }
            mesh.arrays = NetMesh(net).Arrays();
            const bool isMore = level.Bool();
            if (!isMore) {
                level.Finish();
            }
        }
    }
    surface.SkipRest();
    data.SkipRest();
    return mesh;
}

} // namespace cadex::rhino
