#include "apps/geometry/ClosedSurface.h"

#include <bit>

ClosedSurface::ClosedSurface(const double* places, std::size_t count) : m_places(places)
{
    constexpr std::size_t Most = 4'000'000; // 32 MB
    if (count <= Most) {
        m_table.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            m_table[i] = HashOf(places + 3 * i);
        }
    }
}

std::uint64_t ClosedSurface::HashOf(const double* place)
{
    // The sums turn -0 into 0; the factors are odd and random.
    std::uint64_t h = std::bit_cast<std::uint64_t>(place[0] + 0.0) * 0x9E3779B97F4A7C15U;
    h = (h ^ h >> 32U) + std::bit_cast<std::uint64_t>(place[1] + 0.0) * 0xC2B2AE3D27D4EB4FU;
    h = (h ^ h >> 29U) + std::bit_cast<std::uint64_t>(place[2] + 0.0) * 0x165667B19E3779F9U;
    h = (h ^ h >> 31U) * 0xD6E8FEB86659FD93U;
    return h ^ h >> 32U;
}
