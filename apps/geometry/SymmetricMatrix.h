#pragma once

#include "apps/geometry/Vector.h"

#include <array>

/// A symmetric 3 x 3 matrix: the spread of points about their mean, or of directions.
class SymmetricMatrix
{
public:
    /// Adds the product of a vector with itself.
    void AddSquare(const Vec3& v, double weight = 1.0)
    {
        const double e[3] = {v.x, v.y, v.z};
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t j = 0; j < 3; ++j) {
                m_rows[i][j] += weight * e[i] * e[j];
            }
        }
    }

    /// Gives the main axes, of length one and square to each other, that of the largest spread first; with
    /// `values`, the spread along each.
    std::array<Vec3, 3> Axes(std::array<double, 3>* values = nullptr) const;

private:
    std::array<std::array<double, 3>, 3> m_rows{};
};
