#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Tells whether triangles bound a volume: each of their sides is run through once in each direction, seen by
/// the places of the corners, whatever their numbers.
///
///     ClosedSurface surface(vertices.Data(), vertices.Count());
///     for (...) { surface.Add(a, b, c); }
///     if (surface.IsClosed()) ...
///
/// No table of sides is needed: each side from a to b adds h(a) f(b) - h(b) f(a), modulo 2^64, so that the
/// opposite side takes it away again, and sides that are left alone leave a sum that is hardly ever zero.
class ClosedSurface
{
public:
    /// `places`: three numbers a vertex, which must stay; all of them are read where that pays.
    ClosedSurface(const double* places, std::size_t count);

    void Add(std::uint32_t a, std::uint32_t b, std::uint32_t c)
    {
        m_sum += SumOfSides(HashAt(a), HashAt(b), HashAt(c));
        ++m_triangles;
    }
    bool IsClosed() const { return m_triangles > 0 && m_sum == 0; }

private:
    /// Two random numbers of a place, 32 bits each in one.
    static std::uint64_t HashOf(const double* place);
    std::uint64_t HashAt(std::uint32_t vertex) const
    {
        return m_table.empty() ? HashOf(m_places + std::size_t{3} * vertex) : m_table[vertex];
    }
    static std::uint64_t SumOfSides(std::uint64_t a, std::uint64_t b, std::uint64_t c)
    {
        constexpr std::uint64_t Half = 0xFFFFFFFFU;
        const std::uint64_t p = a >> 32U;
        const std::uint64_t q = b >> 32U;
        const std::uint64_t r = c >> 32U;
        return (a & Half) * (q - r) + (b & Half) * (r - p) + (c & Half) * (p - q);
    }

    const double* m_places;
    std::vector<std::uint64_t> m_table; ///< empty where it would be large: the numbers are made anew then
    std::uint64_t m_sum = 0;
    std::uint64_t m_triangles = 0;
};
