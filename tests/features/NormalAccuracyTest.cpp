// Normals of noisy planes with known orientation.
#include "features/FeatureTestSupport.h"

#include <random>

using namespace vxtest;

namespace {

constexpr double kPi = 3.14159265358979323846;

struct Plane {
    double n[3]; ///< unit normal, pointing up
    double u[3]; ///< in-plane axes
    double v[3];
};

Plane randomPlane(std::mt19937& rng)
{
    std::uniform_real_distribution<double> tiltOf(0.0, 60.0 * kPi / 180.0), azimuthOf(0.0, 2.0 * kPi);
    const double tilt = tiltOf(rng), azimuth = azimuthOf(rng);
    Plane p{};
    const double n[3] = {std::sin(tilt) * std::cos(azimuth), std::sin(tilt) * std::sin(azimuth),
                         std::cos(tilt)};
    // u: the horizontal direction within the plane; v = n x u.
    double u[3] = {-std::sin(azimuth), std::cos(azimuth), 0.0};
    const double v[3] = {n[1] * u[2] - n[2] * u[1], n[2] * u[0] - n[0] * u[2], n[0] * u[1] - n[1] * u[0]};
    for (int k = 0; k < 3; ++k)
        p.n[k] = n[k], p.u[k] = u[k], p.v[k] = v[k];
    return p;
}

/// A 16 x 16 patch, 0.25 apart, centred at (5, -3, 120), with 1 cm of noise along the normal.
template <class T> std::vector<VX_Point<T>> noisyPatch(const Plane& pl, std::mt19937& rng)
{
    std::normal_distribution<double> noise(0.0, 0.01);
    std::vector<VX_Point<T>> pts;
    for (int a = 0; a < 16; ++a)
        for (int b = 0; b < 16; ++b) {
            const double s = (a - 7.5) * 0.25, t = (b - 7.5) * 0.25, e = noise(rng);
            const double c[3] = {5.0, -3.0, 120.0};
            double q[3];
            for (int k = 0; k < 3; ++k)
                q[k] = c[k] + s * pl.u[k] + t * pl.v[k] + e * pl.n[k];
            pts.push_back(point<T>(T(q[0]), T(q[1]), T(q[2])));
        }
    return pts;
}

} // namespace

class NormalAccuracy : public SettingTest {};

TEST_P(NormalAccuracy, NoisyTiltedPlanesWithinOneDegree)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        std::mt19937 rng(20240611);
        for (int plane = 0; plane < 8; ++plane) {
            const Plane pl = randomPlane(rng);
            Vexaro<T> v;
            configure(v, GetParam());
            const auto out = normalsOf(v, noisyPatch<T>(pl, rng));
            double worst = 0.0;
            for (const auto& p : out) {
                ASSERT_GT(length(p), 0.0);
                const double cosine = (p.nx * pl.n[0] + p.ny * pl.n[1] + p.nz * pl.n[2]) / length(p);
                worst = std::max(worst, std::acos(std::min(1.0, cosine)) * 180.0 / kPi);
            }
            EXPECT_LT(worst, 1.0) << "plane " << plane;
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Features, NormalAccuracy, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
