// The split of a matrix into a rotation and a residual.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "sdk/mesh/Placement.h"

namespace {

using namespace cadex::mesh;

double LargestDifference(const Matrix3& left, const Matrix3& right)
{
    double largest = 0;
    for (std::size_t i = 0; i < 9; ++i) {
        largest = std::max(largest, std::abs(left[i] - right[i]));
    }
    return largest;
}

Matrix3 Transposed(const Matrix3& m)
{
    return {m[0], m[3], m[6], m[1], m[4], m[7], m[2], m[5], m[8]};
}

TEST(SplitMatrix, GivesARotationAndARestForAnyMatrix)
{
    std::mt19937 random(7);
    std::normal_distribution<double> normal;
    for (int i = 0; i < 2000; ++i) {
        Matrix3 m;
        for (double& value : m) {
            value = normal(random) * std::pow(10., i % 13 - 6);
        }
        if (i % 5 == 0) {
            m[0] *= 1e-4; // far from a rotation
            m[3] *= 1e-4;
            m[6] *= 1e-4;
        }
        double size = 0;
        for (const double value : m) {
            size = std::max(size, std::abs(value));
        }
        Split split;
        ASSERT_TRUE(SplitMatrix(m, split));
        EXPECT_LT(LargestDifference(Multiply(split.rotation, Transposed(split.rotation)), Identity3), 1e-12);
        EXPECT_NEAR(Determinant(split.rotation), 1, 1e-12);
        EXPECT_LT(LargestDifference(Multiply(split.rotation, split.residual), m), 1e-12 * size);
        EXPECT_EQ(std::signbit(Determinant(split.residual)), std::signbit(Determinant(m)));
    }
}

TEST(SplitMatrix, KeepsExactFactorsExact)
{
    const Matrix3 turn{0, -1, 0, 1, 0, 0, 0, 0, 1};
    for (const double factor : {1., 1000., 0.001, 25.4, -1., -2.5}) {
        Matrix3 m = turn;
        for (double& value : m) {
            value *= factor;
        }
        Split split;
        ASSERT_TRUE(SplitMatrix(m, split));
        EXPECT_EQ(split.rotation, turn) << factor;
        EXPECT_EQ(split.residual, (Matrix3{factor, 0, 0, 0, factor, 0, 0, 0, factor}));
    }
}

TEST(SplitMatrix, LeavesSingularMatricesWholeAndRefusesNumbersThatAreNone)
{
    const Matrix3 flat{1, 2, 3, 2, 4, 6, 0, 0, 1};
    Split split;
    ASSERT_TRUE(SplitMatrix(flat, split));
    EXPECT_EQ(split.residual, flat);
    EXPECT_EQ(split.rotation, Identity3);
    ASSERT_TRUE(SplitMatrix({}, split));
    EXPECT_EQ(split.residual, Matrix3{});
    ASSERT_TRUE(SplitMatrix({1e-200, 0, 0, 0, 1e-200, 0, 0, 0, 1e-200}, split));
    EXPECT_EQ(split.rotation, Identity3);
    EXPECT_FALSE(SplitMatrix({1, 0, 0, 0, std::numeric_limits<double>::quiet_NaN(), 0, 0, 0, 1}, split));
    EXPECT_FALSE(SplitMatrix({1, 0, 0, 0, std::numeric_limits<double>::infinity(), 0, 0, 0, 1}, split));
}

} // namespace
