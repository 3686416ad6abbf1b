// The host and CUDA backends give the same features point by point.
#include "features/FeatureTestSupport.h"

#include <random>

using namespace vxtest;

namespace {

/// A few thousand points: a noisy slope, a gabled roof and a loose volume of vegetation.
template <class T> std::vector<VX_Point<T>> mixedCloud()
{
    std::mt19937 rng(99);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    std::normal_distribution<double> noise(0.0, 0.02);
    std::vector<VX_Point<T>> pts;
    for (int i = 0; i < 3000; ++i) {
        const double x = 20 * u(rng), y = 15 * u(rng);
        pts.push_back(point<T>(T(x), T(y), T(50 + 0.1 * x + noise(rng))));
    }
    for (int i = 0; i < 800; ++i) {
        const double x = 22 + 6 * u(rng), y = 10 * u(rng);
        pts.push_back(point<T>(T(x), T(y), T(58 + 2 - std::fabs(y - 5) * 0.4)));
    }
    for (int i = 0; i < 600; ++i)
        pts.push_back(point<T>(T(5 + 3 * u(rng)), T(5 + 3 * u(rng)), T(53 + 5 * u(rng))));
    return pts;
}

template <class T> std::vector<VX_Point<T>> featuresOn(const std::string& backend, bool soa)
{
    Vexaro<T> v;
    configure(v, {backend, soa});
    auto out = normalsOf(v, mixedCloud<T>());
    CaptureStdout quiet;
    v.regularGridDecomposition2D(4.0, 4.0);
    v.calculateHeightIndex(8);
    return points(v);
}

} // namespace

TEST(FeatureBackends, HostAndCudaAgree)
{
    if (!cudaAvailable())
        GTEST_SKIP() << "no CUDA device";
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        for (bool soa : {false, true}) {
            const auto host = featuresOn<T>("cpu", soa), device = featuresOn<T>("cuda", soa);
            ASSERT_EQ(host.size(), device.size());
            for (std::size_t i = 0; i < host.size(); ++i) {
                EXPECT_EQ(host[i].classification, device[i].classification) << i;
                EXPECT_EQ(host[i].heightIndex, device[i].heightIndex) << i;
                EXPECT_NEAR(host[i].nx, device[i].nx, 1e-6) << i;
                EXPECT_NEAR(host[i].ny, device[i].ny, 1e-6) << i;
                EXPECT_NEAR(host[i].nz, device[i].nz, 1e-6) << i;
            }
        }
    });
}
