// Ground bumps: ground points standing out of the plane of the ground around them take the bump
// class; the ground itself, rounded hilltops, rough ground, sparse ground and points not admitted
// keep their class.
#include "terrain/BuiltScene.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace vxtest;
using namespace terraintest;

namespace {

class GroundBumps : public SettingTest {};

constexpr int kGround = 2, kBump = 1, kBuilding = 6;

/// Centimetres of relief, the same wherever the scene is built.
double relief(double x, double y)
{
    return 0.02 * std::sin(2.1 * x + 0.7 * y) * std::cos(1.3 * y - 0.4 * x);
}

/// Ground of 40 m x 30 m every `spacing` m, tilted by 10 %, from `height(x, y)`; every point is
/// ground and expected to stay so.
template <class Height> Built ground(double spacing, Height height)
{
    Built s;
    for (double x = 0.25; x < 40; x += spacing)
        for (double y = 0.25; y < 30; y += spacing)
            s.add(x, y, 100.0 + 0.1 * x + height(x, y), kGround, kGround);
    return s;
}

template <class T, class Tune>
std::vector<int> run(const Built& scene, const Setting& s, Tune tune, double column = 3.0,
                     std::string* log = nullptr)
{
    return runStep<T>(
        scene, s, column, {kGround}, tune, [](Vexaro<T>& v) { v.classifyGroundBumps(kGround, kBump); }, log);
}

template <class T> std::vector<int> run(const Built& scene, const Setting& s)
{
    return run<T>(scene, s, [](Vexaro<T>&) {});
}

template <class T> void raisedPointsStandOut(const Setting& s)
{
    Built scene = ground(0.5, relief);
    // Returns off a car roof's edge, a low wall and a shrub, standing 0.4 m to 1.2 m above
    // the ground, where the terrain surface's allowance on a slope took them in.
    const double x[] = {5.1, 12.3, 20.2, 20.4, 31.6}, y[] = {7.2, 21.4, 10.1, 10.3, 15.8};
    const double up[] = {0.4, 0.8, 1.0, 1.2, 0.6};
    for (int k = 0; k < 5; ++k)
        scene.add(x[k], y[k], 100.0 + 0.1 * x[k] + relief(x[k], y[k]) + up[k], kGround, kBump);
    // Not admitted: a building point as high stays.
    scene.add(25.1, 25.1, 100.0 + 0.1 * 25.1 + 0.8, kBuilding, kBuilding);
    EXPECT_EQ(run<T>(scene, s), scene.expected);

    // A higher least height keeps the lower ones.
    Built higher = scene;
    higher.expected[higher.expected.size() - 6] = kGround; // 0.4 m
    higher.expected[higher.expected.size() - 2] = kGround; // 0.6 m
    EXPECT_EQ(run<T>(higher, s, [](Vexaro<T>& v) { v.set_BumpHeight(T(0.7)); }), higher.expected);
}

template <class T> void hilltopsRoughAndSparseGroundStay(const Setting& s)
{
    // A knoll 6 m high and 15 m across: its top stands 0.45 m above the plane of the ground
    // within 3 m, which curves away by up to 0.9 m and scatters by 0.26 m about it.
    const Built hill = ground(0.5, [](double x, double y) {
        const double r2 = (x - 20.25) * (x - 20.25) + (y - 15.25) * (y - 15.25);
        return std::max(0.0, 6.0 - 0.1 * r2) + relief(x, y);
    });
    EXPECT_EQ(run<T>(hill, s), hill.expected);
    // The scatter is what keeps the top: without it, the top is a bump.
    const auto noScatter = [](Vexaro<T>& v) { v.set_BumpScatterMultiple(0.0f); };
    EXPECT_NE(run<T>(hill, s, noScatter), hill.expected);

    // Rough ground, up to half a metre (0.14 m RMS): a return 0.38 m above its mean is within
    // three scatters.
    Built rough = ground(0.5, [](double x, double y) {
        const double h = std::sin(12.9898 * x + 78.233 * y) * 43758.5453;
        return 0.5 * (h - std::floor(h));
    });
    rough.add(20.1, 15.1, 100.0 + 2.01 + 0.25 + 0.38, kGround, kGround);
    EXPECT_EQ(run<T>(rough, s), rough.expected);
    EXPECT_EQ(run<T>(rough, s, noScatter).back(), kBump);

    // At 2.5 m spacing a 3 m range holds too few others for a plane.
    Built sparse = ground(2.5, relief);
    sparse.add(20.1, 15.1, 100.0 + 2.01 + 1.0, kGround, kGround);
    EXPECT_EQ(run<T>(sparse, s), sparse.expected);
}

template <class T> void refusalsLeaveTheClasses(const Setting& s)
{
    Built scene = ground(0.5, relief);
    scene.add(20.1, 15.1, 100.0 + 2.01 + 1.0, kGround, kGround);
    std::string log;
    EXPECT_EQ(run<T>(
                  scene, s, [](Vexaro<T>&) {}, 2.0, &log),
              scene.expected);
    EXPECT_NE(log.find("Grid columns narrower than BumpRange"), std::string::npos) << log;
    EXPECT_EQ(run<T>(
                  scene, s, [](Vexaro<T>& v) { v.set_BumpScatterMultiple(-1.0f); }, 3.0, &log),
              scene.expected);
    EXPECT_NE(log.find("BumpScatterMultiple = -1"), std::string::npos) << log;
}

} // namespace

TEST_P(GroundBumps, RaisedPointsStandOutOfTheGround)
{
    raisedPointsStandOut<float>(GetParam());
    raisedPointsStandOut<double>(GetParam());
}

TEST_P(GroundBumps, HilltopsRoughAndSparseGroundStay)
{
    hilltopsRoughAndSparseGroundStay<float>(GetParam());
    hilltopsRoughAndSparseGroundStay<double>(GetParam());
}

TEST_P(GroundBumps, RefusalsLeaveTheClasses)
{
    refusalsLeaveTheClasses<float>(GetParam());
    refusalsLeaveTheClasses<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, GroundBumps, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
