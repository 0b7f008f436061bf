#include "sdk/mesh/MeshBodies.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

#include "sdk/mesh/EngineTolerances.h"

namespace cadex::mesh {

namespace {

/// Volume and box of a closed piece.
struct Extent
{
    double volume = 0; ///< signed; 0 when it is noise
    Vector3 low{};
    Vector3 high{};
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
    std::array<Vector3, 3> Corners(std::size_t place) const
    {
        const std::array<U32, 3> corners = myPlaced.Corners(myPlaced.topology.triangles[place]);
        return {myPlaced.vertices[corners[0]], myPlaced.vertices[corners[1]], myPlaced.vertices[corners[2]]};
    }

    Extent Measure(const MeshTopology::Piece& piece) const
    {
        Extent result;
        const Vector3 origin = Corners(piece.first)[0];
        result.low = result.high = origin;
        double sum = 0;
        for (std::size_t i = piece.first; i < piece.last; ++i) {
            const std::array<Vector3, 3> corners = Corners(i);
            for (const Vector3& point : corners) {
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    result.low[axis] = std::min(result.low[axis], point[axis]);
                    result.high[axis] = std::max(result.high[axis], point[axis]);
                }
            }
            const double share =
                Dot(Minus(corners[0], origin), Cross(Minus(corners[1], origin), Minus(corners[2], origin))) /
                6;
            result.volume += share;
            sum += std::abs(share);
        }
        if (!(std::abs(result.volume) > tolerance::NoVolume * sum)) {
            result.volume = 0;
        }
        return result;
    }

    static bool IsBoxInside(const Extent& inner, const Extent& outer)
    {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            if (inner.low[axis] <= outer.low[axis] || inner.high[axis] >= outer.high[axis]) {
                return false;
            }
        }
        return true;
    }

    /// NOTE: winding number as the sum of solid angles (Van Oosterom and Strackee, 1983): 1 inside, 0
    /// outside.
    bool IsPointInside(const MeshTopology::Piece& outer, const Vector3& point) const
    {
        double angle = 0;
        for (std::size_t i = outer.first; i < outer.last; ++i) {
            std::array<Vector3, 3> to = Corners(i);
            for (Vector3& corner : to) {
                corner = Minus(corner, point);
            }
            const double a = Length(to[0]);
            const double b = Length(to[1]);
            const double c = Length(to[2]);
            angle += 2 * std::atan2(Dot(to[0], Cross(to[1], to[2])), a * b * c + Dot(to[0], to[1]) * c +
                                                                         Dot(to[1], to[2]) * a +
                                                                         Dot(to[2], to[0]) * b);
        }
        return angle > 2 * std::numbers::pi;
    }

    std::optional<std::size_t> BodyAround(std::size_t cavity) const
    {
        std::optional<std::size_t> best;
        double smallest = std::numeric_limits<double>::infinity();
        const Vector3 point = Corners(myPieces[cavity].first)[0];
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

PlacedMesh::PlacedMesh(const internal::TriangleSetImpl& theMesh, const Affine& placement)
    : mesh(theMesh), topology(theMesh, placement.linear), isMirrored(Determinant(placement.linear) < 0)
{
    vertices.reserve(topology.pointOf.size());
    for (const U32 point : topology.pointOf) {
        Vector3 mapped = Mapped(placement.linear, mesh.points[point]);
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

} // namespace cadex::mesh
