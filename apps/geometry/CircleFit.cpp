#include "apps/geometry/CircleFit.h"

#include "apps/geometry/SymmetricMatrix.h"

#include <array>

namespace {

constexpr double Tolerance = 0.01; ///< of the radius
/// Normals of a cylinder lie in a plane: so small is the mean square of what stands out of it.
constexpr double MostOutOfPlane = 1e-3;
/// And a flat face has no second direction.
constexpr double LeastInPlane = 1e-4;

/// The center, and the mean distance from it, of points near a circle or sphere, by linear least squares:
/// |p|^2 = 2 c p + d for all points (Kasa 1976). `unknowns`: 2 in the plane x, y, else 3.
template <std::size_t Unknowns>
bool FitCenter(const std::vector<Vec3>& points, Vec3& center)
{
    std::array<std::array<double, Unknowns + 2>, Unknowns + 1> m{};
    for (const Vec3& p : points) {
        const double e[] = {p.x, p.y, p.z};
        std::array<double, Unknowns + 2> row{};
        double square = 0.0;
        for (std::size_t i = 0; i < Unknowns; ++i) {
            row[i] = 2.0 * e[i];
            square += e[i] * e[i];
        }
        row[Unknowns] = 1.0;
        row[Unknowns + 1] = square;
        for (std::size_t i = 0; i <= Unknowns; ++i) {
            for (std::size_t j = 0; j < row.size(); ++j) {
                m[i][j] += row[i] * row[j];
            }
        }
    }
    for (std::size_t column = 0; column <= Unknowns; ++column) { // Gauss and Jordan, with row pivots
        std::size_t pivot = column;
        for (std::size_t i = column + 1; i <= Unknowns; ++i) {
            pivot = std::abs(m[i][column]) > std::abs(m[pivot][column]) ? i : pivot;
        }
        if (!(std::abs(m[pivot][column]) > 1e-14)) {
            return false;
        }
        std::swap(m[pivot], m[column]);
        for (std::size_t i = 0; i <= Unknowns; ++i) {
            const double factor = i == column ? 0.0 : m[i][column] / m[column][column];
            for (std::size_t j = column; j < m[i].size(); ++j) {
                m[i][j] -= factor * m[column][j];
            }
        }
    }
    const auto unknown = [&](std::size_t i) { return m[i][Unknowns + 1] / m[i][i]; };
    center = {unknown(0), unknown(1), Unknowns == 3 ? unknown(2) : 0.0};
    return IsFinite(center);
}

/// Takes mean radius and largest deviation of points around a center; false where they are too far off.
bool Measure(const std::vector<Vec3>& points, const Vec3& center, RoundSurface& surface)
{
    double sum = 0.0;
    for (const Vec3& p : points) {
        sum += Length(p - center);
    }
    surface.radius = sum / static_cast<double>(points.size());
    surface.deviation = 0.0;
    for (const Vec3& p : points) {
        surface.deviation = std::max(surface.deviation, std::abs(Length(p - center) - surface.radius));
    }
    return surface.deviation <= Tolerance * surface.radius;
}

} // namespace

std::optional<RoundSurface> FitRoundSurface(const std::vector<Vec3>& points, const std::vector<Vec3>& normals)
{
    SymmetricMatrix directions;
    Bounds box;
    double count = 0.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        directions.AddSquare(normals[i]);
        count += Dot(normals[i], normals[i]);
        box.Add(points[i]);
    }
    std::array<double, 3> spread{};
    const std::array<Vec3, 3> axes = directions.Axes(&spread);
    if (points.size() < 4 || !(box.Radius() > 0.0) || spread[1] < LeastInPlane * count) {
        return std::nullopt;
    }
    // Within a box of size one about zero, numbers are all alike.
    const double scale = 1.0 / box.Radius();
    const bool isCylinder = spread[2] < MostOutOfPlane * count;
    std::vector<Vec3> own;
    for (const Vec3& p : points) {
        const Vec3 arm = scale * (p - box.Center());
        own.push_back(isCylinder ? Vec3{Dot(axes[0], arm), Dot(axes[1], arm), 0.0} : arm);
    }
    RoundSurface surface;
    Vec3 center;
    if (!(isCylinder ? FitCenter<2>(own, center) : FitCenter<3>(own, center)) ||
        !Measure(own, center, surface)) {
        return std::nullopt;
    }
    surface.radius /= scale;
    surface.deviation /= scale;
    const Vec3 arm = isCylinder ? center.x * axes[0] + center.y * axes[1] : center;
    surface.center = box.Center() + 1.0 / scale * arm;
    surface.axis = isCylinder ? axes[2] : Vec3();
    return surface;
}
