// Ground rims: raised points that continue the ground beside them at their own height (the upper
// edge of a terrace step that the surface of cells ran below) join the ground; plants beside the
// step, on level ground, on a slope and beside a narrow crest, points too low or too far from the
// plane, rough ground, points not admitted and refused runs keep their class.
#include "terrain/BuiltScene.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace vxtest;
using namespace terraintest;

namespace {

class GroundRims : public SettingTest {};

constexpr int kGround = 2, kUnclassified = 1, kMedium = 4, kBuilding = 6;

/// Centimetres of relief, the same wherever the scene is built.
double relief(double x, double y)
{
    return 0.02 * std::sin(2.1 * x + 0.7 * y) * std::cos(1.3 * y - 0.4 * x);
}

/// A terrace of 40 m x 30 m every 0.5 m: level ground at 100 m up to x = 20 m, a step of 1.5 m,
/// and the upper level beyond. The upper level's first metre is what the surface of cells missed
/// (class `rim`, expected `rimExpected`); `upper(x, y)` adds to the upper level's height.
template <class Upper> Built terrace(int rim, int rimExpected, Upper upper)
{
    Built s;
    for (double x = 0.25; x < 40; x += 0.5)
        for (double y = 0.25; y < 30; y += 0.5) {
            if (x < 20)
                s.add(x, y, 100.0 + relief(x, y), kGround, kGround);
            else if (x < 21)
                s.add(x, y, 101.5 + relief(x, y) + upper(x, y), rim, rimExpected);
            else
                s.add(x, y, 101.5 + relief(x, y) + upper(x, y), kGround, kGround);
        }
    return s;
}

Built terrace(int rim, int rimExpected)
{
    return terrace(rim, rimExpected, [](double, double) { return 0.0; });
}

/// Runs the heights above ground (3 m cells, so that the cells at the step straddle it, as the
/// terrain's do on sparse data) and the rim search, with `admitted` admitted.
template <class T, class Tune>
std::vector<int> run(const Built& scene, const Setting& s, Tune tune, double column = 3.0,
                     std::string* log = nullptr, bool heights = true)
{
    return runStep<T>(
        scene, s, column, {kUnclassified, kMedium}, tune,
        [heights](Vexaro<T>& v) {
            v.set_HeightAboveGroundCellSize(T(3));
            if (heights)
                v.computeHeightAboveGround(kGround);
            v.classifyGroundRims(kGround);
        },
        log);
}

template <class T> std::vector<int> run(const Built& scene, const Setting& s)
{
    return run<T>(scene, s, [](Vexaro<T>&) {});
}

/// The scene's expected classes with the first points taken from `start`.
std::vector<int> classesOf(const Built& start, const Built& scene)
{
    std::vector<int> out = scene.expected;
    for (std::size_t k = 0; k < start.expected.size(); ++k)
        out[k] = start.expected[k];
    return out;
}

template <class T> void rimsJoinTheGround(const Setting& s)
{
    Built scene = terrace(kUnclassified, kGround);
    // Plants: on the lower level 1 m up, and at the foot of the step 0.8 m up, where the upper
    // level lies 0.7 m above them within range; a medium-vegetation point on the upper level,
    // 0.6 m above it.
    scene.add(10.1, 15.1, 101.0, kUnclassified, kUnclassified);
    scene.add(18.6, 12.1, 100.8, kUnclassified, kUnclassified);
    scene.add(30.1, 10.1, 102.1, kMedium, kMedium);
    // Not admitted: a building point on the rim.
    scene.add(20.6, 20.1, 101.5, kBuilding, kBuilding);
    expectClasses(run<T>(scene, s), scene);

    // A medium-vegetation point on the rim is a rim point too.
    Built medium = terrace(kMedium, kGround);
    expectClasses(run<T>(medium, s), medium);

    // Judged only above RimHeight: with 2 m, the rim's points nearest the upper level's ground
    // (1.0-1.25 m above the heights' surface) stay.
    const std::vector<int> high = run<T>(scene, s, [](Vexaro<T>& v) { v.set_RimHeight(T(2)); });
    EXPECT_EQ(high, classesOf(terrace(kUnclassified, kUnclassified), scene));
}

template <class T> void plantsOnASlopeOrBesideACrestStay(const Setting& s)
{
    // Ground rising by 0.5 m a metre; a shrub 0.5 m above it and a crown 3 m above it. The
    // ground uphill at their height fits the slope's plane, which passes below them.
    Built slope;
    for (double x = 0.25; x < 40; x += 0.5)
        for (double y = 0.25; y < 30; y += 0.5)
            slope.add(x, y, 100.0 + 0.5 * x + relief(x, y), kGround, kGround);
    slope.add(20.1, 15.1, 100.0 + 0.5 * 20.1 + 0.5, kUnclassified, kUnclassified);
    slope.add(24.1, 9.1, 100.0 + 0.5 * 24.1 + 3.0, kMedium, kMedium);
    expectClasses(run<T>(slope, s), slope);

    // Level ground with the crest of a dyke 1 m high and 0.5 m wide, three rows of returns, and a
    // shrub beside it as high: the crest's plane could tilt freely about it, so it is not read.
    Built crest;
    for (double x = 0.25; x < 40; x += 0.5)
        for (double y = 0.25; y < 30; y += 0.5)
            crest.add(x, y, 100.0 + relief(x, y), kGround, kGround);
    for (double x : {25.0, 25.25, 25.5})
        for (double y = 0.25; y < 30; y += 0.5)
            crest.add(x, y, 101.0 + relief(x, y), kGround, kGround);
    crest.add(24.3, 15.1, 101.0, kUnclassified, kUnclassified);
    expectClasses(run<T>(crest, s), crest);
}

template <class T> void farOrRoughGroundLeavesTheRim(const Setting& s)
{
    // The rim lies 0.3 m above the plane of the upper level: farther than RimDistance.
    Built above = terrace(kUnclassified, kUnclassified, [](double x, double) { return x < 21 ? 0.3 : 0.0; });
    expectClasses(run<T>(above, s), above);
    // With a distance of 0.4 m it joins.
    const std::vector<int> wide = run<T>(above, s, [](Vexaro<T>& v) { v.set_RimDistance(T(0.4)); });
    EXPECT_EQ(wide, terrace(kUnclassified, kGround).expected);

    // Every fourth return of the upper level lies 0.36 m above it, the others 0.12 m below: they
    // average the rim's height but scatter by 0.21 m (RMS) about it, more than RimDistance.
    Built rough = terrace(kUnclassified, kUnclassified, [](double x, double y) {
        const bool raised = static_cast<int>(x * 2) % 2 == 0 && static_cast<int>(y * 2) % 2 == 0;
        return x < 21 ? 0.0 : (raised ? 0.36 : -0.12);
    });
    // Within range of the scene's edge a rim point reads half as many: left either way.
    for (std::size_t k = 0; k < rough.points.size(); ++k)
        if (rough.expected[k] == kUnclassified && (rough.points[k].y < 3 || rough.points[k].y > 27))
            rough.expected[k] = kEither;
    expectClasses(run<T>(rough, s), rough);
}

template <class T> void refusalsLeaveTheClasses(const Setting& s)
{
    const Built scene = terrace(kUnclassified, kGround);
    const std::vector<int> start = terrace(kUnclassified, kUnclassified).expected;
    std::string log;
    // Columns narrower than the range.
    EXPECT_EQ(run<T>(
                  scene, s, [](Vexaro<T>&) {}, 2.0, &log),
              start);
    EXPECT_NE(log.find("Grid columns narrower than RimRange"), std::string::npos) << log;
    // No heights above ground.
    EXPECT_EQ(run<T>(
                  scene, s, [](Vexaro<T>&) {}, 3.0, &log, false),
              start);
    EXPECT_NE(log.find("No heights above ground for this cloud"), std::string::npos) << log;
    // A distance out of range.
    EXPECT_EQ(run<T>(
                  scene, s, [](Vexaro<T>& v) { v.set_RimDistance(T(-1)); }, 3.0, &log),
              start);
    EXPECT_NE(log.find("RimDistance = -1"), std::string::npos) << log;
}

} // namespace

TEST_P(GroundRims, RimsJoinTheGround)
{
    rimsJoinTheGround<float>(GetParam());
    rimsJoinTheGround<double>(GetParam());
}

TEST_P(GroundRims, PlantsOnASlopeOrBesideACrestStay)
{
    plantsOnASlopeOrBesideACrestStay<float>(GetParam());
    plantsOnASlopeOrBesideACrestStay<double>(GetParam());
}

TEST_P(GroundRims, FarOrRoughGroundLeavesTheRim)
{
    farOrRoughGroundLeavesTheRim<float>(GetParam());
    farOrRoughGroundLeavesTheRim<double>(GetParam());
}

TEST_P(GroundRims, RefusalsLeaveTheClasses)
{
    refusalsLeaveTheClasses<float>(GetParam());
    refusalsLeaveTheClasses<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, GroundRims, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
