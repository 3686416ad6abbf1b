// The closed-form eigen solver and the null vectors behind the normals.
#include "steps/common/Eigen3.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using vx::Vec3d;

namespace {

void expectNull(const double m[3][3], const Vec3d& x, double tol)
{
    const double len = std::sqrt(vx::dot(x, x));
    ASSERT_GT(len, 0.0);
    const Vec3d r = vx::multiply(m, x);
    EXPECT_LT(std::sqrt(vx::dot(r, r)) / len, tol);
}

} // namespace

TEST(Eigen3, DiagonalMatrixGivesItsDiagonalLargestFirst)
{
    const double a[3][3] = {{2, 0, 0}, {0, 5, 0}, {0, 0, 1}};
    double l[3];
    vx::symmetricEigenvalues(a, l);
    EXPECT_NEAR(l[0], 5.0, 1e-12);
    EXPECT_NEAR(l[1], 2.0, 1e-12);
    EXPECT_NEAR(l[2], 1.0, 1e-12);
}

TEST(Eigen3, RandomSymmetricMatricesKeepTraceAndDeterminant)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (int n = 0; n < 200; ++n) {
        double b[3][3], a[3][3];
        for (auto& row : b)
            for (double& e : row)
                e = u(rng);
        for (int r = 0; r < 3; ++r)
            for (int k = 0; k < 3; ++k)
                a[r][k] = b[0][r] * b[0][k] + b[1][r] * b[1][k] + b[2][r] * b[2][k];
        double l[3];
        vx::symmetricEigenvalues(a, l);
        EXPECT_GE(l[0], l[1]);
        EXPECT_GE(l[1], l[2]);
        EXPECT_NEAR(l[0] + l[1] + l[2], a[0][0] + a[1][1] + a[2][2], 1e-9);
        for (int k : {0, 2}) {
            double m[3][3];
            for (int r = 0; r < 3; ++r)
                for (int c = 0; c < 3; ++c)
                    m[r][c] = a[r][c] - (r == c ? l[k] : 0.0);
            expectNull(m, vx::nullVector(m, k == 2), 1e-6 * (l[0] + 1e-3));
        }
    }
}

TEST(Eigen3, RepeatedRootsGiveNoNaN)
{
    // diag(1, 1, 0) and diag(1, 0, 0) turned about z: the cosine of the cubic sits at +-1.
    const double c = std::cos(0.3), s = std::sin(0.3);
    const double plane[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 0}};
    const double line[3][3] = {{c * c, c * s, 0}, {c * s, s * s, 0}, {0, 0, 0}};
    for (const auto* a : {plane, line}) {
        double l[3];
        vx::symmetricEigenvalues(a, l);
        for (double e : l)
            EXPECT_FALSE(std::isnan(e));
        EXPECT_NEAR(l[0], 1.0, 1e-7);
        EXPECT_NEAR(l[2], 0.0, 1e-7);
    }
}

TEST(Eigen3, ZeroMatrixTakesTheFirstOrTheLastFreeColumn)
{
    const double zero[3][3] = {};
    const Vec3d first = vx::nullVector(zero, false), last = vx::nullVector(zero, true);
    EXPECT_EQ(first.x, 1.0);
    EXPECT_EQ(first.y, 0.0);
    EXPECT_EQ(first.z, 0.0);
    EXPECT_EQ(last.x, 0.0);
    EXPECT_EQ(last.y, 0.0);
    EXPECT_EQ(last.z, 1.0);
}

TEST(Eigen3, RankTwoMatrixWithAZeroMiddleColumn)
{
    // The second column carries no pivot: the null vector is the y axis.
    const double m[3][3] = {{2, 0, 1}, {0, 0, 0}, {1, 0, 3}};
    const Vec3d x = vx::nullVector(m, true);
    EXPECT_EQ(x.x, 0.0);
    EXPECT_EQ(x.y, 1.0);
    EXPECT_EQ(x.z, 0.0);
}

TEST(Eigen3, RankOneMatrixGivesAPerpendicular)
{
    const double v[3] = {0.3, -0.5, 0.8};
    double m[3][3];
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k)
            m[r][k] = v[r] * v[k];
    for (bool later : {false, true}) {
        const Vec3d x = vx::nullVector(m, later);
        expectNull(m, x, 1e-12);
    }
}

TEST(Eigen3, PerpendicularCrossesTheAxisOfTheSmallestComponent)
{
    const Vec3d p = vx::perpendicularTo({2, 0, 0}); // y and z tie: the later axis, z
    EXPECT_EQ(p.x, 0.0);
    EXPECT_EQ(p.y, -2.0);
    EXPECT_EQ(p.z, 0.0);
    const Vec3d q = vx::perpendicularTo({1, 0.5, 3}); // y is smallest
    EXPECT_EQ(vx::dot(q, {1, 0.5, 3}), 0.0);
    EXPECT_EQ(q.y, 0.0);
}

TEST(Eigen3, NormalOfAnIsotropicOrEmptyNeighbourhoodIsStillAUnitVector)
{
    const double zero[3][3] = {};
    Vec3d n{};
    double l[3];
    ASSERT_TRUE(vx::normalFromCovariance(zero, n, l));
    EXPECT_EQ(n.x, 0.0);
    EXPECT_EQ(n.y, 0.0);
    EXPECT_EQ(n.z, 1.0);
    const double iso[3][3] = {{0.5, 0, 0}, {0, 0.5, 0}, {0, 0, 0.5}};
    ASSERT_TRUE(vx::normalFromCovariance(iso, n, l));
    EXPECT_NEAR(std::sqrt(vx::dot(n, n)), 1.0, 1e-12);
}

TEST(Eigen3, NormalIsTheDirectionOfLeastVariance)
{
    // Covariance of a plane with normal (0, 0.6, 0.8) and little spread along it.
    const Vec3d nrm{0, 0.6, 0.8}, a{1, 0, 0}, b{0, 0.8, -0.6};
    double s[3][3];
    const double ra[3] = {a.x, a.y, a.z}, rb[3] = {b.x, b.y, b.z}, rn[3] = {nrm.x, nrm.y, nrm.z};
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k)
            s[r][k] = 0.3 * ra[r] * ra[k] + 0.2 * rb[r] * rb[k] + 1e-4 * rn[r] * rn[k];
    Vec3d n{};
    double l[3];
    ASSERT_TRUE(vx::normalFromCovariance(s, n, l));
    EXPECT_NEAR(std::fabs(vx::dot(n, nrm)), 1.0, 1e-9);
    EXPECT_NEAR(std::sqrt(l[0]), 0.3, 1e-9);
    EXPECT_NEAR(std::sqrt(l[1]), 0.2, 1e-9);
    EXPECT_NEAR(std::sqrt(l[2]), 1e-4, 1e-9);
}
