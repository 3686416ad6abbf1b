// Noise step, pit test: a return sunk below smooth ground by less than the isolation range is low
// noise; hollows, cones, valleys, slopes and ground under a canopy keep their class.
#include "noise/NoiseScene.h"

#include <cmath>

using namespace vxtest;
using namespace noisetest;

namespace {

class NoisePit : public SettingTest {};

/// Ground of 40 m x 30 m at 0.5 m spacing: level for x < 20 with centimetre relief, rising at
/// 0.5 (27 degrees) beyond; returns sunk 0.7 m to 1.8 m below both parts.
template <class T> Scene<T> sunkReturns()
{
    Scene<T> s;
    const auto height = [](double x, double y) {
        return kGround + 0.02 * std::sin(x) * std::cos(y) + (x > 20 ? 0.5 * (x - 20) : 0.0);
    };
    for (int i = 0; i < 80; ++i)
        for (int j = 0; j < 60; ++j) {
            const double x = 0.25 + 0.5 * i, y = 0.25 + 0.5 * j;
            s.add(x, y, height(x, y));
        }
    const double sunkX[] = {5.1, 10.1, 15.1, 27.1, 33.1}, sunkY[] = {7.1, 15.1, 23.1, 9.1, 21.1};
    const double depth[] = {0.7, 1.2, 1.8, 1.0, 1.6};
    for (int k = 0; k < 5; ++k)
        s.add(sunkX[k], sunkY[k], height(sunkX[k], sunkY[k]) - depth[k], Truth::Low);
    return s;
}

/// Level ground at 0.5 m spacing with, each in its own part: a cone-shaped hollow rising at 0.6
/// from one return at its bottom; a V-shaped valley with sides at 0.8; a dense flat canopy 1.5 m
/// up with pairs of ground returns 3 m apart beneath it, which the canopy outweighs in any plane
/// fit; a shrub of returns 0.9 m to 2.5 m up, rough for its height, over a single ground return;
/// a single return 0.3 m below the ground (within the ground's
/// reach, so not a pit at a depth of 0.5 m).
template <class T> Scene<T> hollows()
{
    Scene<T> s;
    for (int i = 0; i < 120; ++i)
        for (int j = 0; j < 60; ++j) {
            const double x = 0.25 + 0.5 * i, y = 0.25 + 0.5 * j;
            double z = kGround;
            if (x < 20) // the cone, bottom at (10.25, 10.25)
                z += std::min(4.0, 0.6 * std::hypot(x - 10.25, y - 10.25));
            else if (x < 40) // the valley along y = 10.25
                z += 0.8 * std::fabs(y - 10.25);
            else if (x > 44 && x < 56 && y > 4 && y < 16 && !(i % 6 <= 1 && j % 6 == 0))
                z += 1.5 + 0.05 * std::sin(3 * x + y); // the canopy, over pairs of ground returns
            else if (std::hypot(x - 50.25, y - 25.25) < 2.3 && !(x == 50.25 && y == 25.25)) {
                const double h = std::sin(12.9898 * i + 78.233 * j) * 43758.5453;
                z += 0.9 + 1.6 * (h - std::floor(h)); // the shrub, over one ground return
            }
            s.add(x, y, z);
        }
    s.add(50.1, 18.1, kGround - 0.3);
    return s;
}

/// Level ground at 0.5 m spacing with groups of returns sunk together, each return 0.3 m from
/// the next: three 1.2 m deep, three 4 m deep (beyond the isolation range of 2 m, within the
/// height gap of 10 m), and four 1.2 m deep.
template <class T> Scene<T> sunkGroups()
{
    Scene<T> s;
    for (int i = 0; i < 80; ++i)
        for (int j = 0; j < 40; ++j)
            s.add(0.25 + 0.5 * i, 0.25 + 0.5 * j, kGround + 0.02 * std::sin(0.5 * i) * std::cos(0.5 * j));
    const double cx[] = {6.1, 18.1, 32.1}, depth[] = {1.2, 4.0, 1.2};
    const int size[] = {3, 3, 4};
    for (int g = 0; g < 3; ++g)
        for (int k = 0; k < size[g]; ++k)
            s.add(cx[g] + 0.3 * (k % 2), 10.1 + 0.3 * (k / 2), kGround - depth[g] + 0.05 * k,
                  size[g] <= 3 ? Truth::Low : Truth::Kept);
    return s;
}

template <class T>
std::vector<int> classify(const Scene<T>& scene, const Setting& s, double pitDepth, int pitGroup = 1)
{
    Vexaro<T> v;
    load(v, s, scene.points);
    v.set_NoisePitDepth(T(pitDepth));
    v.set_NoisePitGroup(pitGroup);
    CaptureStdout out;
    v.classifyNoise(kLowNoise, kHighNoise);
    return classes(v);
}

template <class T> void sunkReturnsAreLow(const Setting& s)
{
    const Scene<T> scene = sunkReturns<T>();
    EXPECT_EQ(classify(scene, s, 0.5), scene.expectedClasses());
    // Without the pit test the ground around keeps every sunk return from being isolated.
    EXPECT_EQ(classify(scene, s, 0.0), std::vector<int>(scene.points.size(), kInput));
    // Deeper than the depth asked for only.
    const std::vector<int> deep = classify(scene, s, 1.3);
    int low = 0;
    for (int c : deep)
        low += c == kLowNoise;
    EXPECT_EQ(low, 2);
}

template <class T> void hollowsStay(const Setting& s)
{
    const Scene<T> scene = hollows<T>();
    EXPECT_EQ(classify(scene, s, 0.5), std::vector<int>(scene.points.size(), kInput));
    EXPECT_EQ(classify(scene, s, 0.2).back(), kLowNoise); // the single return, at a shallower depth
}

template <class T> void sunkGroupsAreLow(const Setting& s)
{
    const Scene<T> scene = sunkGroups<T>();
    // Groups of up to three: the two of three, not the four.
    EXPECT_EQ(classify(scene, s, 0.5, 3), scene.expectedClasses());
    // One at a time, each has the others of its group beside it.
    EXPECT_EQ(classify(scene, s, 0.5, 1), std::vector<int>(scene.points.size(), kInput));
    // Four at a time, the four too.
    const std::vector<int> four = classify(scene, s, 0.5, 4);
    EXPECT_EQ(std::vector<int>(four.end() - 4, four.end()), std::vector<int>(4, kLowNoise));
}

} // namespace

TEST_P(NoisePit, SmallGroupsSunkTogetherAreLow)
{
    sunkGroupsAreLow<float>(GetParam());
    sunkGroupsAreLow<double>(GetParam());
}

TEST_P(NoisePit, SunkReturnsBelowSmoothGroundAreLow)
{
    sunkReturnsAreLow<float>(GetParam());
    sunkReturnsAreLow<double>(GetParam());
}

TEST_P(NoisePit, HollowsValleysAndGroundUnderACanopyStay)
{
    hollowsStay<float>(GetParam());
    hollowsStay<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, NoisePit, ::testing::ValuesIn(vxtest::allSettings()), vxtest::settingName);
