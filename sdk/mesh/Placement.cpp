#include "sdk/mesh/Placement.h"

#include <algorithm>
#include <cmath>

namespace cadex::mesh {

namespace {

double Largest(const Matrix3& matrix)
{
    double largest = 0;
    for (const double value : matrix) {
        largest = std::max(largest, std::abs(value));
    }
    return largest;
}

double LargestDifference(const Matrix3& left, const Matrix3& right)
{
    double largest = 0;
    for (std::size_t i = 0; i < 9; ++i) {
        largest = std::max(largest, std::abs(left[i] - right[i]));
    }
    return largest;
}

Matrix3 Scaled(Matrix3 matrix, double factor)
{
    for (double& value : matrix) {
        value *= factor;
    }
    return matrix;
}

Matrix3 InverseTransposed(const Matrix3& m)
{
    return Scaled(Cofactors(m), 1 / Determinant(m));
}

/// The nearest orthogonal matrix, by Newton's iteration with scaling.
Matrix3 NearestOrthogonal(Matrix3 x)
{
    for (int step = 0; step < 100; ++step) {
        const Matrix3 y = InverseTransposed(x);
        const double scale = std::sqrt(Largest(y) / Largest(x));
        Matrix3 next;
        for (std::size_t i = 0; i < 9; ++i) {
            next[i] = (x[i] * scale + y[i] / scale) / 2;
        }
        const double change = LargestDifference(next, x);
        x = next;
        if (change < 1e-15) {
            break;
        }
    }
    return x;
}

double Rounded(double value, int digits)
{
    const double shift = std::pow(10., digits - 1 - std::floor(std::log10(std::abs(value))));
    return std::round(value * shift) / shift;
}

/// A factor with few digits when the given one is that up to noise: 1000, not 1000.0000000002.
double CleanFactor(double factor)
{
    const double simple = Rounded(factor, 4);
    return std::abs(simple - factor) <= ResidualTolerance * std::abs(factor) ? simple : Rounded(factor, 12);
}

} // namespace

Matrix3 Multiply(const Matrix3& left, const Matrix3& right)
{
    Matrix3 product{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            product[3 * i + j] =
                left[3 * i] * right[j] + left[3 * i + 1] * right[3 + j] + left[3 * i + 2] * right[6 + j];
        }
    }
    return product;
}

Vector3 Multiply(const Matrix3& m, const Vector3& v)
{
    return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2], m[3] * v[0] + m[4] * v[1] + m[5] * v[2],
            m[6] * v[0] + m[7] * v[1] + m[8] * v[2]};
}

double Determinant(const Matrix3& m)
{
    return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
           m[2] * (m[3] * m[7] - m[4] * m[6]);
}

Matrix3 Cofactors(const Matrix3& m)
{
    return {m[4] * m[8] - m[5] * m[7], m[5] * m[6] - m[3] * m[8], m[3] * m[7] - m[4] * m[6],
            m[2] * m[7] - m[1] * m[8], m[0] * m[8] - m[2] * m[6], m[1] * m[6] - m[0] * m[7],
            m[1] * m[5] - m[2] * m[4], m[2] * m[3] - m[0] * m[5], m[0] * m[4] - m[1] * m[3]};
}

Matrix3 Transposed(const Matrix3& m)
{
    return {m[0], m[3], m[6], m[1], m[4], m[7], m[2], m[5], m[8]};
}

Matrix3 Inverse(const Matrix3& m)
{
    return Transposed(InverseTransposed(m));
}

Affine AffineOf(const ModelData_Transformation& transformation)
{
    Affine affine;
    double* element = affine.linear.data();
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            *element++ = transformation.Data(i, j);
        }
        affine.translation[static_cast<std::size_t>(i)] = transformation.Data(i, 3);
    }
    return affine;
}

bool SameResidual(const Matrix3& left, const Matrix3& right)
{
    return LargestDifference(left, right) <= ResidualTolerance * std::max(Largest(left), Largest(right));
}

bool SplitMatrix(const Matrix3& matrix, Split& split)
{
    if (!std::all_of(matrix.begin(), matrix.end(), [](double value) { return std::isfinite(value); })) {
        return false;
    }
    split = {Identity3, matrix};
    const double size = Largest(matrix);
    const Matrix3 unit = size > 0 ? Scaled(matrix, 1 / size) : matrix;
    const double determinant = Determinant(unit);
    if (size == 0 || std::abs(determinant) < 1e-12) {
        return true;
    }
    split.rotation = Scaled(NearestOrthogonal(unit), determinant < 0 ? -1 : 1);
    const Matrix3 product = Multiply(Transposed(split.rotation), matrix);
    const Matrix3 flipped = Transposed(product);
    for (std::size_t i = 0; i < 9; ++i) {
        split.residual[i] = (product[i] + flipped[i]) / 2;
    }
    const double factor = CleanFactor((product[0] + product[4] + product[8]) / 3);
    if (SameResidual(split.residual, Scaled(Identity3, factor))) {
        split.residual = Scaled(Identity3, factor);
        Matrix3 plain = matrix;
        for (double& value : plain) {
            value /= factor;
        }
        if (LargestDifference(plain, split.rotation) < 1e-12) {
            split.rotation = plain; // keeps zeros and ones as they are
        }
    }
    return true;
}

} // namespace cadex::mesh
