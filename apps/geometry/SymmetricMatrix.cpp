#include "apps/geometry/SymmetricMatrix.h"

#include <algorithm>
#include <numeric>

std::array<Vec3, 3> SymmetricMatrix::Axes(std::array<double, 3>* values) const
{
    // NOTE: the cyclic Jacobi method (Golub and Van Loan, Matrix Computations, 8.5).
    constexpr int Sweeps = 12;
    auto a = m_rows;
    std::array<std::array<double, 3>, 3> v{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    for (int sweep = 0; sweep < Sweeps; ++sweep) {
        for (std::size_t p = 0; p < 2; ++p) {
            for (std::size_t q = p + 1; q < 3; ++q) {
                if (a[p][q] == 0.0) {
                    continue;
                }
                const double theta = (a[q][q] - a[p][p]) / (2.0 * a[p][q]);
                const double t = std::copysign(1.0, theta) / (std::abs(theta) + std::hypot(theta, 1.0));
                const double c = 1.0 / std::hypot(t, 1.0);
                const double s = t * c;
                for (std::size_t k = 0; k < 3; ++k) {
                    const double kp = a[k][p];
                    a[k][p] = c * kp - s * a[k][q];
                    a[k][q] = s * kp + c * a[k][q];
                }
                for (std::size_t k = 0; k < 3; ++k) {
                    const double pk = a[p][k];
                    a[p][k] = c * pk - s * a[q][k];
                    a[q][k] = s * pk + c * a[q][k];
                    const double kp = v[k][p];
                    v[k][p] = c * kp - s * v[k][q];
                    v[k][q] = s * kp + c * v[k][q];
                }
            }
        }
    }
    std::array<std::size_t, 3> order{0, 1, 2};
    std::sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) { return a[i][i] > a[j][j]; });
    std::array<Vec3, 3> axes;
    for (std::size_t i = 0; i < 3; ++i) {
        axes[i] = {v[0][order[i]], v[1][order[i]], v[2][order[i]]};
        if (values) {
            (*values)[i] = a[order[i]][order[i]];
        }
    }
    return axes;
}
