#include "sdk/occt/MeshBodies.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include <gp_XYZ.hxx>

namespace cadex::occt {

namespace {

using internal::MeshTopology;
using internal::Vector3;

// A volume that is this small beside the sum of the triangles' shares, signs left aside, is rounding noise.
constexpr double NoVolume = 1e-9;

gp_XYZ ToXYZ(const Vector3& point)
{
    return {point[0], point[1], point[2]};
}

/// Volume and box of a closed piece.
struct Extent
{
    double volume = 0; ///< signed; 0 when it is noise
    gp_XYZ low;
    gp_XYZ high;
};

class BodyFinder
{
public:
    explicit BodyFinder(const PlacedMesh& placed) : myPlaced(placed), myPieces(placed.topology.pieces)
    {
        for (const MeshTopology::Piece& piece : myPieces) {
            myExtents.push_back(piece.closed ? Measure(piece) : Extent());
        }
    }

    std::vector<MeshBody> Find() const
    {
        std::vector<MeshBody> bodies(myPieces.size());
        std::vector<bool> isVoid(myPieces.size(), false);
        for (std::size_t i = 0; i < myPieces.size(); ++i) {
            bodies[i].outer = i;
            bodies[i].isClosed = myExtents[i].volume != 0;
            if (myExtents[i].volume < 0) {
                const std::optional<std::size_t> around = BodyAround(i);
                bodies[i].isTurned = !around;
                isVoid[i] = around.has_value();
                if (around) {
                    bodies[*around].voids.push_back(i);
                }
            }
        }
        std::erase_if(bodies, [&](const MeshBody& body) { return isVoid[body.outer]; });
        return bodies;
    }

private:
    std::array<gp_XYZ, 3> Corners(std::size_t place) const
    {
        const std::array<U32, 3> corners = myPlaced.Corners(myPlaced.topology.triangles[place]);
        return {ToXYZ(myPlaced.vertices[corners[0]]), ToXYZ(myPlaced.vertices[corners[1]]),
                ToXYZ(myPlaced.vertices[corners[2]])};
    }

    Extent Measure(const MeshTopology::Piece& piece) const
    {
        Extent result;
        const gp_XYZ origin = Corners(piece.first)[0];
        result.low = result.high = origin;
        double sum = 0;
        for (std::size_t i = piece.first; i < piece.last; ++i) {
            const std::array<gp_XYZ, 3> corners = Corners(i);
            for (const gp_XYZ& point : corners) {
                for (int axis = 1; axis <= 3; ++axis) {
                    result.low.SetCoord(axis, std::min(result.low.Coord(axis), point.Coord(axis)));
                    result.high.SetCoord(axis, std::max(result.high.Coord(axis), point.Coord(axis)));
                }
            }
            const double share =
                (corners[0] - origin).Dot((corners[1] - origin).Crossed(corners[2] - origin)) / 6;
            result.volume += share;
            sum += std::abs(share);
        }
        if (!(std::abs(result.volume) > NoVolume * sum)) {
            result.volume = 0;
        }
        return result;
    }

    static bool IsBoxInside(const Extent& inner, const Extent& outer)
    {
        for (int axis = 1; axis <= 3; ++axis) {
            if (inner.low.Coord(axis) <= outer.low.Coord(axis) ||
                inner.high.Coord(axis) >= outer.high.Coord(axis)) {
                return false;
            }
        }
        return true;
    }

    /// NOTE: winding number as the sum of solid angles (Van Oosterom and Strackee, 1983): 1 inside, 0
    /// outside.
    bool IsPointInside(const MeshTopology::Piece& outer, const gp_XYZ& point) const
    {
        double angle = 0;
        for (std::size_t i = outer.first; i < outer.last; ++i) {
            std::array<gp_XYZ, 3> to = Corners(i);
            for (gp_XYZ& corner : to) {
                corner -= point;
            }
            const double a = to[0].Modulus();
            const double b = to[1].Modulus();
            const double c = to[2].Modulus();
            angle += 2 * std::atan2(to[0].Dot(to[1].Crossed(to[2])), a * b * c + to[0].Dot(to[1]) * c +
                                                                         to[1].Dot(to[2]) * a +
                                                                         to[2].Dot(to[0]) * b);
        }
        return angle > 2 * M_PI;
    }

    std::optional<std::size_t> BodyAround(std::size_t cavity) const
    {
        std::optional<std::size_t> best;
        double smallest = std::numeric_limits<double>::infinity();
        const gp_XYZ point = Corners(myPieces[cavity].first)[0];
        for (std::size_t i = 0; i < myPieces.size(); ++i) {
            if (myExtents[i].volume > 0 && myExtents[i].volume < smallest &&
                IsBoxInside(myExtents[cavity], myExtents[i]) && IsPointInside(myPieces[i], point)) {
                best = i;
                smallest = myExtents[i].volume;
            }
        }
        return best;
    }

    const PlacedMesh& myPlaced;
    const std::vector<MeshTopology::Piece>& myPieces;
    std::vector<Extent> myExtents;
};

} // namespace

PlacedMesh::PlacedMesh(const internal::TriangleSetImpl& theMesh, const internal::Affine& placement)
    : mesh(theMesh),
      topology(theMesh, placement.linear),
      isMirrored(internal::Determinant(placement.linear) < 0)
{
    vertices.reserve(topology.pointOf.size());
    for (const U32 point : topology.pointOf) {
        Vector3 mapped = internal::Mapped(placement.linear, mesh.points[point]);
        for (std::size_t i = 0; i < 3; ++i) {
            mapped[i] += placement.translation[i];
        }
        vertices.push_back(mapped);
    }
}

std::array<U32, 3> PlacedMesh::Corners(U32 triangle, bool isTurned) const
{
    std::array<U32, 3> corners = topology.CornersOf(mesh, triangle);
    if (isTurned != isMirrored) {
        std::swap(corners[1], corners[2]);
    }
    return corners;
}

std::vector<MeshBody> FindBodies(const PlacedMesh& placed)
{
    return BodyFinder(placed).Find();
}

void Append(internal::TriangleSetImpl& target, const std::vector<ModelData_Point>& points,
            const std::vector<U32>& indices)
{
    const auto first = static_cast<U32>(target.points.size());
    target.points.insert(target.points.end(), points.begin(), points.end());
    target.indices.reserve(target.indices.size() + indices.size());
    for (const U32 index : indices) {
        target.indices.push_back(first + index);
    }
}

} // namespace cadex::occt
