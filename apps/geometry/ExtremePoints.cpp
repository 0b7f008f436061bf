#include "apps/geometry/ExtremePoints.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace {

constexpr int Steps = 2;           ///< directions are whole numbers from -2 to 2 along each axis
constexpr std::size_t Halves = 49; ///< of the primitive ones, one of each opposite pair

std::array<Vec3, Halves> MakeDirections()
{
    std::array<Vec3, Halves> directions;
    std::size_t count = 0;
    for (int x = 0; x <= Steps; ++x) {
        for (int y = -Steps; y <= Steps; ++y) {
            for (int z = -Steps; z <= Steps; ++z) {
                const bool isFirstHalf = x > 0 || (x == 0 && (y > 0 || (y == 0 && z > 0)));
                if (isFirstHalf && std::gcd(std::gcd(x, y), z) == 1) {
                    directions[count++] = {static_cast<double>(x), static_cast<double>(y),
                                           static_cast<double>(z)};
                }
            }
        }
    }
    return directions;
}

} // namespace

std::vector<Vec3> ExtremePoints(const double* places, std::size_t count)
{
    static const std::array<Vec3, Halves> directions = MakeDirections();
    std::array<double, 2 * Halves> reach{};
    std::array<std::size_t, 2 * Halves> farthest{};
    reach.fill(-Bounds::Far);
    for (std::size_t i = 0; i < count; ++i) {
        const Vec3 point{places[3 * i], places[3 * i + 1], places[3 * i + 2]};
        if (!IsPlace(point)) {
            continue;
        }
        for (std::size_t d = 0; d < Halves; ++d) {
            const double along = Dot(directions[d], point);
            if (along > reach[2 * d]) {
                reach[2 * d] = along;
                farthest[2 * d] = i;
            }
            if (-along > reach[2 * d + 1]) {
                reach[2 * d + 1] = -along;
                farthest[2 * d + 1] = i;
            }
        }
    }
    if (reach[0] == -Bounds::Far) {
        return {};
    }
    std::sort(farthest.begin(), farthest.end());
    std::vector<Vec3> points;
    for (auto i = farthest.begin(), end = std::unique(farthest.begin(), farthest.end()); i != end; ++i) {
        points.push_back({places[3 * *i], places[3 * *i + 1], places[3 * *i + 2]});
    }
    return points;
}
