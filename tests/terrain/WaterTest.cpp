// The water search: ground returns that are dark, sparse, single and level over a body of some
// size take the water class; dark roads, bright gaps, sloping or small patches, canopy shadows
// and every point that is not ground keep their class. Without intensities, or with intensities
// that are all the same, nothing changes.
#include "common/TestSupport.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

using namespace vxtest;

namespace {

class Water : public SettingTest {};

constexpr int kGround = 2, kWater = 9, kBuilding = 6;
constexpr int kEither = -1;                    ///< expected class of a point the step may leave either way
constexpr double kSide = 60.0, kSpacing = 0.5; ///< 4 returns a square metre on land

/// A built cloud: points, the intensity and number of returns of each, and the class the step
/// should leave it with.
struct Cloud {
    std::vector<VX_Point<double>> points;
    std::vector<int> intensities, returns, expected;
    void add(double x, double y, double z, int cls, int intensity, int pulseReturns, int expect)
    {
        points.push_back(point<double>(x, y, z, cls));
        intensities.push_back(intensity);
        returns.push_back(pulseReturns);
        expected.push_back(expect);
    }
};

/// A deterministic scatter in [-1, 1].
double jitter(double x, double y)
{
    return std::sin(12.9898 * x + 78.233 * y) * std::cos(3.1 * x - 1.7 * y);
}

/// What a patch of the plot is: its height, intensity, returns, kept share of the pulses, and the
/// class the step should give its ground.
struct Surface {
    double z;
    int intensity, returns;
    int keepEvery; ///< 1: every pulse returns; 4: a quarter
    int expect;
};

/// A 60 m x 60 m plot of bright, dense ground at height 10 with a sloping 5 %, in which `patch`
/// says what lies where (nullptr: plain ground).
Cloud plot(const std::function<const Surface*(double x, double y)>& patch)
{
    const Surface land{10.0, 2000, 1, 1, kGround};
    Cloud c;
    int k = 0;
    for (double x = 0.25; x < kSide; x += kSpacing)
        for (double y = 0.25; y < kSide; y += kSpacing, ++k) {
            const Surface* s = patch(x, y);
            if (!s)
                s = &land;
            if (k % s->keepEvery != 0)
                continue;
            const double z = s->z + (s == &land ? 0.05 * x : 0.0) + 0.03 * jitter(x, y);
            const int intensity = s->intensity + static_cast<int>(100 * jitter(y, x));
            c.add(x, y, z, kGround, intensity, s->returns, s->expect);
        }
    return c;
}

/// The lake of most tests: a band 20 m wide across the plot, level at height 9, dark, a quarter
/// of its pulses returning.
const Surface kLake{9.0, 400, 1, 4, kWater};

bool inBand(double x)
{
    return x >= 20 && x < 40;
}

/// The plot with the lake band.
Cloud lake()
{
    return plot([](double x, double) { return inBand(x) ? &kLake : nullptr; });
}

/// The classes the cloud's points start with.
std::vector<int> startClasses(const Cloud& c)
{
    std::vector<int> out;
    for (const auto& p : c.points)
        out.push_back(p.classification);
    return out;
}

template <class T>
std::vector<int> classify(const Cloud& c, const Setting& s, std::string* log = nullptr,
                          const std::function<void(Vexaro<T>&)>& tune = nullptr, bool pulses = true)
{
    std::vector<VX_Point<T>> pts;
    for (const auto& p : c.points)
        pts.push_back(point<T>(T(p.x), T(p.y), T(p.z), p.classification));
    Vexaro<T> v;
    configure(v, s, 2);
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    if (pulses) {
        v.loadIntensitiesFromBuffer(c.intensities.data(), static_cast<int>(c.intensities.size()));
        v.loadReturnCountsFromBuffer(c.returns.data(), static_cast<int>(c.returns.size()));
    }
    {
        CaptureStdout quiet;
        v.regularGridDecomposition2D(5.0, 5.0);
    }
    v.set_WaterCellSize(T(2));
    if (tune)
        tune(v);
    CaptureStdout out;
    v.classifyWater(kGround, kWater);
    if (log)
        *log = out.text();
    return classes(v);
}

void expectClasses(const std::vector<int>& got, const Cloud& c)
{
    ASSERT_EQ(got.size(), c.expected.size());
    std::size_t wrong = 0;
    std::string first;
    for (std::size_t k = 0; k < got.size(); ++k)
        if (c.expected[k] != kEither && got[k] != c.expected[k] && ++wrong <= 3)
            first += " (" + std::to_string(c.points[k].x) + ", " + std::to_string(c.points[k].y) +
                     "): " + std::to_string(got[k]) + " not " + std::to_string(c.expected[k]) + ";";
    EXPECT_EQ(wrong, 0u) << first;
}

template <class T> void lakeIsWater(const Setting& s)
{
    const Cloud c = lake();
    std::string log;
    expectClasses(classify<T>(c, s, &log), c);
    EXPECT_NE(log.find("Water bodies, cells, points: 1 "), std::string::npos) << log;
}

TEST_P(Water, ADarkSparseLevelBodyIsWater)
{
    lakeIsWater<float>(GetParam());
    lakeIsWater<double>(GetParam());
}

TEST_P(Water, DarkRoadsBrightGapsSlopesAndShadowsStayGround)
{
    // Each band has all but one of the signs of water.
    const Surface road{9.0, 400, 1, 1, kGround};   // dark and level, but as dense as the land
    const Surface gap{9.0, 2000, 1, 4, kGround};   // sparse and level, but bright
    const Surface shadow{9.0, 400, 2, 4, kGround}; // under a canopy: pulses with several returns
    for (const Surface* band : {&road, &gap, &shadow}) {
        const Cloud c = plot([band](double x, double) { return inBand(x) ? band : nullptr; });
        expectClasses(classify<float>(c, GetParam()), c);
    }
    // Dark and sparse, but rising 3 m across the band: no still water.
    std::vector<Surface> slope;
    for (int k = 0; k < 40; ++k)
        slope.push_back({9.0 + 0.075 * k, 400, 1, 4, kGround});
    const Cloud sloping = plot([&](double x, double) {
        return inBand(x) ? &slope[static_cast<std::size_t>((x - 20) / kSpacing)] : nullptr;
    });
    expectClasses(classify<float>(sloping, GetParam()), sloping);
}

TEST_P(Water, BodiesSmallerThanTheLeastSizeStayGround)
{
    // A dark, sparse puddle of 8 m x 8 m: under the 10 m square of WaterMinSize.
    const Surface puddle{9.0, 400, 1, 4, kGround};
    const Cloud c = plot(
        [&](double x, double y) { return (x >= 26 && x < 34 && y >= 26 && y < 34) ? &puddle : nullptr; });
    expectClasses(classify<float>(c, GetParam()), c);
    // The same puddle is water with a least size of 5 m (16 cells, more than the ten a body needs).
    const auto got =
        classify<float>(c, GetParam(), nullptr, [](Vexaro<float>& v) { v.set_WaterMinSize(5.f); });
    std::size_t water = 0;
    for (int cls : got)
        water += cls == kWater;
    EXPECT_GT(water, 20u);
}

TEST_P(Water, OnlyGroundPointsTakeTheClass)
{
    Cloud c = lake();
    // A boat on the lake keeps its class. The water in the cells it shares (2 m cells, more than
    // a tenth of whose points are the boat's) may stay ground; the rest of the lake is water.
    for (double x = 29; x < 31; x += 0.5)
        c.add(x, 30, 10.5, kBuilding, 3000, 1, kBuilding);
    for (std::size_t k = 0; k < c.points.size(); ++k)
        if (c.expected[k] == kWater && std::fabs(c.points[k].x - 30) < 2.5 &&
            std::fabs(c.points[k].y - 30) < 2.5)
            c.expected[k] = kEither;
    expectClasses(classify<float>(c, GetParam()), c);
}

TEST_P(Water, WithoutIntensitiesNothingChanges)
{
    const Cloud c = lake();
    const std::vector<int> before = startClasses(c);
    std::string log;
    EXPECT_EQ(classify<float>(c, GetParam(), &log, nullptr, false), before);
    EXPECT_NE(log.find("ERROR! No intensities or return counts for this cloud"), std::string::npos) << log;
    // Intensities that are all the same: a file that recorded none.
    Cloud flat = c;
    for (int& i : flat.intensities)
        i = 0;
    EXPECT_EQ(classify<float>(flat, GetParam(), &log), before);
    EXPECT_NE(log.find("Water search not run: the ground's intensities are all the same"), std::string::npos)
        << log;
}

TEST_P(Water, RefusalsLeaveTheClasses)
{
    const Cloud c = lake();
    const std::vector<int> before = startClasses(c);
    const std::vector<std::function<void(Vexaro<float>&)>> bad = {
        [](Vexaro<float>& v) { v.set_WaterDarkRatio(1.5f); },
        [](Vexaro<float>& v) { v.set_WaterCellSize(0.f); },
        [](Vexaro<float>& v) { v.set_WaterRelief(std::nanf("")); },
        [](Vexaro<float>& v) { v.set_WaterMinSize(-1.f); },
    };
    for (const auto& tune : bad) {
        std::string log;
        EXPECT_EQ(classify<float>(c, GetParam(), &log, tune), before);
        EXPECT_NE(log.find("ERROR! Parameter out of range, step not run"), std::string::npos) << log;
    }
}

TEST_P(Water, ARasterTooLargeIsRefused)
{
    // Millimetre cells over the 60 m plot would take 3.6 billion of them.
    const Cloud c = lake();
    const std::vector<int> before = startClasses(c);
    std::string log;
    EXPECT_EQ(classify<float>(c, GetParam(), &log, [](Vexaro<float>& v) { v.set_WaterCellSize(0.001f); }),
              before);
    EXPECT_NE(log.find("ERROR! Water raster too large, step not run"), std::string::npos) << log;
}

TEST_P(Water, IntensitiesOfTheWrongLengthOrRangeAreNotKept)
{
    const Cloud c = lake();
    std::vector<VX_Point<float>> pts;
    for (const auto& p : c.points)
        pts.push_back(point<float>(float(p.x), float(p.y), float(p.z), p.classification));
    Vexaro<float> v;
    configure(v, GetParam(), 2);
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    v.loadReturnCountsFromBuffer(c.returns.data(), static_cast<int>(c.returns.size()));
    {
        CaptureStdout out;
        v.loadIntensitiesFromBuffer(c.intensities.data(), static_cast<int>(c.intensities.size()) - 1);
        std::vector<int> bad = c.intensities;
        bad[7] = 70000;
        v.loadIntensitiesFromBuffer(bad.data(), static_cast<int>(bad.size()));
        EXPECT_EQ(out.lines().size(), 2u) << out.text();
        EXPECT_NE(out.text().find("Point: 7"), std::string::npos) << out.text();
    }
    {
        CaptureStdout quiet;
        v.regularGridDecomposition2D(5.f, 5.f);
    }
    CaptureStdout out;
    v.classifyWater(kGround, kWater);
    EXPECT_TRUE(anyLineStartsWith(out.lines(), "ERROR! No intensities or return counts for this cloud"))
        << out.text();
    // A new cloud drops the intensities of the last one.
    v.loadIntensitiesFromBuffer(c.intensities.data(), static_cast<int>(c.intensities.size()));
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    v.loadReturnCountsFromBuffer(c.returns.data(), static_cast<int>(c.returns.size()));
    {
        CaptureStdout quiet;
        v.regularGridDecomposition2D(5.f, 5.f);
    }
    CaptureStdout again;
    v.classifyWater(kGround, kWater);
    EXPECT_TRUE(anyLineStartsWith(again.lines(), "ERROR! No intensities or return counts for this cloud"))
        << again.text();
}

INSTANTIATE_TEST_SUITE_P(Layouts, Water, ::testing::ValuesIn(allSettings()), settingName);

} // namespace
