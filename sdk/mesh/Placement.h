// Splits the matrix of a placement into what a STEP file can place (a rotation and a translation) and what it
// cannot (a scale, a mirror, a shear), which is baked into the geometry.
//
//     Split split;
//     if (SplitMatrix(matrix, split)) { ... matrix == split.rotation * split.residual ... }
#pragma once

#include <array>

#include <cadex/ModelData_Transformation.hxx>

#include "sdk/mesh/Vectors.h"

namespace cadex::mesh {

/// Row by row.
using Matrix3 = std::array<double, 9>;

inline constexpr Matrix3 Identity3{1, 0, 0, 0, 1, 0, 0, 0, 1};

Matrix3 Multiply(const Matrix3& left, const Matrix3& right);
Vector3 Multiply(const Matrix3& matrix, const Vector3& vector);
double Determinant(const Matrix3& matrix);
/// Turns normals as `matrix` turns points, but for their length: the inverse, transposed, times the
/// determinant.
Matrix3 Cofactors(const Matrix3& matrix);
Matrix3 Transposed(const Matrix3& matrix);
/// Of a matrix that can be inverted.
Matrix3 Inverse(const Matrix3& matrix);

struct Affine
{
    Matrix3 linear = Identity3;
    Vector3 translation{};
};

Affine AffineOf(const ModelData_Transformation& transformation);

struct Split
{
    Matrix3 rotation; ///< orthonormal, determinant 1
    Matrix3 residual; ///< symmetric, or the whole matrix if that is singular; a negative determinant mirrors
};

/// Matrices that differ by less than this fraction of their size count as the same residual, so that
/// instances placed by matrices of single precision still share one part.
inline constexpr double ResidualTolerance = 5e-7;

/// True when both give the same geometry within ResidualTolerance.
bool SameResidual(const Matrix3& left, const Matrix3& right);

/// Polar decomposition (N. Higham, "Computing the polar decomposition", 1986, with the determinant's sign
/// moved into the residual). A residual that is a uniform factor within the tolerance becomes exactly that
/// factor. A singular matrix is all residual. False when an element is not finite.
bool SplitMatrix(const Matrix3& matrix, Split& split);

} // namespace cadex::mesh
