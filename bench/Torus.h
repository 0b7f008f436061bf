// A wavy torus, closed, its vertices shared: the mesh of the writers' benchmarks.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

#include "sdk/model/TriangleSets.h"

namespace cadex {

/// About as many triangles as asked for.
inline internal::TriangleArrays Torus(std::int64_t triangles)
{
    const auto around = static_cast<U32>(std::sqrt(static_cast<double>(triangles) / 2));
    internal::TriangleArrays arrays;
    arrays.points.reserve(std::size_t{around} * around);
    arrays.indices.reserve(std::size_t{around} * around * 6);
    for (U32 i = 0; i < around; ++i) {
        for (U32 j = 0; j < around; ++j) {
            const double u = 2 * std::numbers::pi * i / around;
            const double v = 2 * std::numbers::pi * j / around;
            const double r = 20 + 1.5 * std::sin(5 * u + 3 * v);
            arrays.points.emplace_back((50 + r * std::cos(v)) * std::cos(u),
                                       (50 + r * std::cos(v)) * std::sin(u), r * std::sin(v));
            const U32 a = i * around + j;
            const U32 b = (i + 1) % around * around + j;
            const U32 c = (i + 1) % around * around + (j + 1) % around;
            const U32 d = i * around + (j + 1) % around;
            arrays.indices.insert(arrays.indices.end(), {a, b, c, a, c, d});
        }
    }
    return arrays;
}

} // namespace cadex
