#include "sdk/mesh/InsertionOrder.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>

namespace cadex::mesh {

namespace {

// Fewer points are inserted as they come.
constexpr std::size_t FewPoints = 24;

/// Place along Hilbert's curve over a square of 2^16 by 2^16 cells.
std::uint32_t HilbertPlace(std::uint32_t x, std::uint32_t y)
{
    std::uint32_t place = 0;
    for (std::uint32_t side = 1U << 15; side > 0; side /= 2) {
        const std::uint32_t right = (x & side) != 0 ? 1 : 0;
        const std::uint32_t upper = (y & side) != 0 ? 1 : 0;
        place += side * side * ((3 * right) ^ upper);
        if (upper == 0) {
            if (right == 1) {
                x = ~x;
                y = ~y;
            }
            std::swap(x, y);
        }
    }
    return place;
}

} // namespace

std::vector<int> InsertionOrder(const std::vector<PlanePoint>& points)
{
    std::vector<int> order(points.size());
    std::iota(order.begin(), order.end(), 0);
    if (points.size() <= FewPoints) {
        return order;
    }
    const PlaneExtent extent(points);
    const double scale = extent.Size() > 0 ? 65535 / extent.Size() : 0;
    std::vector<std::uint64_t> keys(points.size());
    const auto largestRound = static_cast<std::uint32_t>(std::log2(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i) {
        std::uint32_t round = 0;
        for (std::uint32_t bits = Scattered(static_cast<std::uint32_t>(i)); (bits & 1) == 0 && bits != 0;
             bits /= 2) {
            ++round;
        }
        const auto x = static_cast<std::uint32_t>((points[i].x - extent.low.x) * scale);
        const auto y = static_cast<std::uint32_t>((points[i].y - extent.low.y) * scale);
        keys[i] = (static_cast<std::uint64_t>(largestRound - std::min(round, largestRound)) << 32) |
                  HilbertPlace(x, y);
    }
    std::sort(order.begin(), order.end(), [&](int a, int b) {
        const std::uint64_t left = keys[static_cast<std::size_t>(a)];
        const std::uint64_t right = keys[static_cast<std::size_t>(b)];
        return left != right ? left < right : a < b;
    });
    return order;
}

} // namespace cadex::mesh
