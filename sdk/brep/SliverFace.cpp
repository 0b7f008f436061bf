#include "sdk/brep/SliverFace.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include <gp_XYZ.hxx>

namespace cadex::brep {

namespace {

// Longer loops are no slivers.
constexpr std::size_t MostNodes = 1000;

/// A side of the sliver: nodes from one tip to the other, and how far along each lies.
struct Side
{
    std::vector<int> nodes = {};
    std::vector<double> along = {}; ///< as a share of the whole
};

class Stitching
{
public:
    Stitching(const EdgeDiscretisation& edges, const Ring& ring)
    {
        for (const RingUse& use : ring.uses) {
            const std::size_t count = edges.Of(use.edge).parameters.size();
            for (std::size_t i = 0; i + 1 < count; ++i) {
                myMesh.points.push_back(edges.NumberOf(use.edge, use.forward ? i : count - 1 - i));
                myPositions.push_back(edges.Point(myMesh.points.back()).XYZ());
            }
        }
    }

    FaceMesh Run(double width)
    {
        const std::size_t count = myPositions.size();
        if (count < 3 || count > MostNodes) {
            return {};
        }
        const auto [first, last] = Tips();
        const Side right = SideFrom(first, last, 1);
        const Side left = SideFrom(first, last, count - 1);
        if (!IsNear(right, left, width) || !IsNear(left, right, width)) {
            return {};
        }
        Stitch(right, left);
        myMesh.normals.resize(count);
        return std::move(myMesh);
    }

private:
    const gp_XYZ& At(int node) const { return myPositions[static_cast<std::size_t>(node)]; }

    /// The nodes that are farthest apart.
    std::pair<std::size_t, std::size_t> Tips() const
    {
        std::pair<std::size_t, std::size_t> tips;
        double farthest = -1;
        for (std::size_t i = 0; i < myPositions.size(); ++i) {
            for (std::size_t j = i + 1; j < myPositions.size(); ++j) {
                const double square = (myPositions[i] - myPositions[j]).SquareModulus();
                if (square > farthest) {
                    farthest = square;
                    tips = {i, j};
                }
            }
        }
        return tips;
    }

    Side SideFrom(std::size_t first, std::size_t last, std::size_t step) const
    {
        Side side{{static_cast<int>(first)}, {0}};
        for (std::size_t node = first; node != last;) {
            node = (node + step) % myPositions.size();
            side.along.push_back(side.along.back() +
                                 (At(static_cast<int>(node)) - At(side.nodes.back())).Modulus());
            side.nodes.push_back(static_cast<int>(node));
        }
        const double length = side.along.back();
        for (double& along : side.along) {
            along = length > 0 ? along / length : 0;
        }
        return side;
    }

    bool IsNear(const Side& side, const Side& other, double width) const
    {
        return std::all_of(side.nodes.begin(), side.nodes.end(),
                           [&](int node) { return WayTo(other, At(node)) <= width; });
    }

    double WayTo(const Side& side, const gp_XYZ& point) const
    {
        double nearest = (point - At(side.nodes.front())).Modulus();
        for (std::size_t i = 0; i + 1 < side.nodes.size(); ++i) {
            const gp_XYZ& from = At(side.nodes[i]);
            const gp_XYZ way = At(side.nodes[i + 1]) - from;
            const double square = way.SquareModulus();
            const double along = square > 0 ? std::clamp((point - from).Dot(way) / square, 0.0, 1.0) : 0;
            nearest = std::min(nearest, (point - from - way * along).Modulus());
        }
        return nearest;
    }

    /// The material is to the left of the one side and to the right of the other.
    void Stitch(const Side& right, const Side& left)
    {
        for (std::size_t i = 0, j = 0; i + 1 < right.nodes.size() || j + 1 < left.nodes.size();) {
            const bool isRight = j + 1 == left.nodes.size() ||
                                 (i + 1 < right.nodes.size() && right.along[i + 1] <= left.along[j + 1]);
            if (isRight) {
                Add(right.nodes[i], right.nodes[i + 1], left.nodes[j]);
                ++i;
            } else {
                Add(right.nodes[i], left.nodes[j + 1], left.nodes[j]);
                ++j;
            }
        }
    }

    /// None at the tips, where both sides are one node.
    void Add(int a, int b, int c)
    {
        const auto point = [&](int node) { return myMesh.points[static_cast<std::size_t>(node)]; };
        if (point(a) != point(b) && point(b) != point(c) && point(c) != point(a)) {
            myMesh.triangles.push_back({a, b, c});
        }
    }

    FaceMesh myMesh;
    std::vector<gp_XYZ> myPositions; ///< of the nodes
};

} // namespace

FaceMesh StitchSliver(const EdgeDiscretisation& edges, const ResolvedFace& face, double width)
{
    if (face.status != ResolveStatus::Done || face.rings.size() != 1) {
        return {};
    }
    const std::vector<RingUse>& uses = face.rings.front().uses;
    if (std::any_of(uses.begin(), uses.end(), [](const RingUse& use) { return use.kind != UseKind::Edge; })) {
        return {};
    }
    FaceMesh mesh = Stitching(edges, face.rings.front()).Run(width);
    for (auto& triangle : mesh.triangles) {
        if (!face.forward) {
            std::swap(triangle[1], triangle[2]);
        }
    }
    return mesh;
}

} // namespace cadex::brep
