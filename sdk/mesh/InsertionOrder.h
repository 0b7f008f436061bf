// The order in which points go into a triangulation.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "sdk/mesh/PlanePredicates.h"

namespace cadex::mesh {

/// Bounds of points in the plane.
struct PlaneExtent
{
    PlanePoint low{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    PlanePoint high{-std::numeric_limits<double>::max(), -std::numeric_limits<double>::max()};

    explicit PlaneExtent(const std::vector<PlanePoint>& points)
    {
        for (const PlanePoint& point : points) {
            low = {std::min(low.x, point.x), std::min(low.y, point.y)};
            high = {std::max(high.x, point.x), std::max(high.y, point.y)};
        }
    }
    double Size() const { return std::max(high.x - low.x, high.y - low.y); }
};

/// An order of insertion in which each point lies near the one before and the triangulation is never far from
/// even: rounds of random points, each twice as large as the one before, each along Hilbert's curve.
///
/// NOTE: N. Amenta, S. Choi, G. Rote, "Incremental constructions con BRIO", SoCG 2003.
std::vector<int> InsertionOrder(const std::vector<PlanePoint>& points);

/// Scatters numbers, the same ones everywhere.
inline std::uint32_t Scattered(std::uint32_t number)
{
    number = (number ^ (number >> 16)) * 0x45d9f3bU;
    number = (number ^ (number >> 16)) * 0x45d9f3bU;
    return number ^ (number >> 16);
}

} // namespace cadex::mesh
