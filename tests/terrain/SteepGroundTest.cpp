// Steep ground: points on a face between ground at its foot and at its top join the ground when
// the face is a surface, high and well sampled; trees on the face, walls without ground above,
// low steps, sparse faces and points not admitted keep their class.
#include "terrain/BuiltScene.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace vxtest;
using namespace terraintest;

namespace {

class SteepGround : public SettingTest {};

constexpr int kFace = 1, kGround = 2, kBuilding = 6;

/// Rough rock: a decimetre of relief, the same wherever the scene is built.
double texture(double x, double y)
{
    return 0.1 * std::sin(3.1 * x + 1.3 * y) * std::cos(2.3 * y - 0.7 * x);
}

/// Ground 30 m x 16 m: level at 100 m for x < 12, a face from x = 12 rising `rise` m over `run` m,
/// level again beyond. The level parts are sampled every `spacing` m in plan and are ground
/// already (as the terrain step leaves them). The face is sampled every `spacing` m along y and
/// every 2 `spacing` m up, from 0.4 m above its foot to 0.3 m or more below its top, as oblique
/// pulses see a cliff; it is class 1. Where `faceJoins`, its points more than 1.5 m from its foot
/// and its top should become ground; those within 0.5 m keep their class (the gap); the others
/// may go either way. `skipTop` leaves out the top ground with 5 < y < 11 within 1 m of the edge.
Built cliff(double spacing, double rise, double run, bool faceJoins, bool skipTop = false)
{
    Built s;
    const int nx = static_cast<int>(30.0 / spacing), ny = static_cast<int>(16.0 / spacing);
    for (int i = 0; i < nx; ++i)
        for (int j = 0; j < ny; ++j) {
            const double x = (i + 0.5) * spacing, y = (j + 0.5) * spacing;
            if (x < 12.0)
                s.add(x, y, 100.0 + texture(x, y), kGround, kGround);
            else if (x > 12.0 + run && !(skipTop && x < 13.0 + run && y > 5 && y < 11))
                s.add(x, y, 100.0 + rise + texture(x, y), kGround, kGround);
        }
    for (double up = 0.4; up < rise - 0.3; up += 2.0 * spacing) {
        const double x = 12.0 + run * up / rise;
        const bool inner = up > 1.5 && up < rise - 1.5, rim = up < 0.5 || up > rise - 0.5;
        const int expect = !faceJoins || rim ? kFace : inner ? kGround : kEither;
        for (int j = 0; j < ny; ++j) {
            const double y = (j + 0.5) * spacing;
            s.add(x, y, 100.0 + up + texture(x, y), kFace, expect);
        }
    }
    return s;
}

/// Runs the step on the scene with one host thread; `tune` sets parameters first.
template <class T, class Tune>
std::vector<int> run(const Built& scene, const Setting& s, Tune tune, std::string* log = nullptr)
{
    return runStep<T>(
        scene, s, 2.0, {kFace}, tune, [](Vexaro<T>& v) { v.classifySteepGround(kGround); }, log);
}

template <class T> std::vector<int> run(const Built& scene, const Setting& s, std::string* log = nullptr)
{
    return run<T>(
        scene, s, [](Vexaro<T>&) {}, log);
}

template <class T> void aHighFaceJoins(const Setting& s)
{
    // 12.2 m over 1.8 m (82 degrees) at 0.3 m spacing: about 20 points in each ball on the face.
    // Only its middle has ground above and below within range; the rest joins in a second pass.
    Built scene = cliff(0.3, 12.2, 1.8, true);
    // A crown growing out of the face halfway up: scattered over a ball, as leaves are. The face
    // points beside it read it in their balls and may go either way.
    const std::size_t crownStart = scene.points.size();
    for (int k = 0; k < 60; ++k) {
        const double a = 2.399963 * k, h = 1.0 - 2.0 * (k + 0.5) / 60.0,
                     r = 1.2 * std::cbrt((k % 7 + 1) / 7.0);
        const double c = std::sqrt(1.0 - h * h);
        scene.add(11.5 + r * c * std::cos(a), 8.0 + r * c * std::sin(a), 105.5 + r * h, kFace, kFace);
    }
    for (std::size_t k = 0; k < crownStart; ++k)
        for (std::size_t m = crownStart; m < scene.points.size(); ++m) {
            const auto &p = scene.points[k], &q = scene.points[m];
            if (scene.expected[k] == kGround && std::hypot(p.x - q.x, p.y - q.y, p.z - q.z) < 1.5 &&
                p.classification == kFace)
                scene.expected[k] = kEither;
        }
    // A wall standing on the top ground, 8 m high, with its roof: ground lies below it only.
    for (double z = 0.3; z < 8.0; z += 0.3)
        for (double y = 2.0; y < 6.0; y += 0.3)
            scene.add(20.0, y, 112.0 + z, kFace, kFace);
    for (double x = 20.0; x < 26.0; x += 0.3)
        for (double y = 2.0; y < 6.0; y += 0.3)
            scene.add(x, y, 120.0, kBuilding, kBuilding);
    std::string log;
    expectClasses(run<T>(scene, s, &log), scene);
    EXPECT_NE(log.find("Steep ground points:"), std::string::npos) << log;
    // The surface test is what keeps the crown: without it, crown points between the ground at
    // the foot and at the top join.
    const auto loose = run<T>(scene, s, [](Vexaro<T>& v) { v.set_SteepGroundVariation(1.0f); });
    int crownJoined = 0;
    for (std::size_t m = crownStart; m < loose.size(); ++m)
        crownJoined += loose[m] == kGround;
    EXPECT_GT(crownJoined, 0);
}

template <class T> void theFaceIsTakenFromItsEdgesInwards(const Setting& s)
{
    // Without the top ground along 6 m of the edge, the face there has no ground above it within
    // range until its neighbours along the face have joined.
    const Built scene = cliff(0.3, 12.2, 1.8, true, true);
    expectClasses(run<T>(scene, s), scene);
}

template <class T> void lowSparseAndRoughFacesStay(const Setting& s)
{
    // A 4.2 m step is within the relief.
    const Built low = cliff(0.3, 4.2, 0.6, false);
    expectClasses(run<T>(low, s), low);
    Built lower = cliff(0.3, 4.2, 0.6, true);
    expectClasses(run<T>(lower, s, [](Vexaro<T>& v) { v.set_SteepGroundRelief(T(3)); }), lower);
    // At 1.1 m spacing the ball on the face holds too few points to be a surface.
    const Built sparse = cliff(1.1, 12.2, 1.0, false);
    expectClasses(run<T>(sparse, s), sparse);
    // A variation of 0 passes no real face.
    const Built rough = cliff(0.3, 12.2, 1.8, false);
    expectClasses(run<T>(rough, s, [](Vexaro<T>& v) { v.set_SteepGroundVariation(0.0f); }), rough);
}

template <class T> void refusalsLeaveTheClasses(const Setting& s)
{
    Built scene = cliff(0.3, 12.2, 1.8, false);
    // No ground: nothing to stand between.
    for (auto& p : scene.points)
        p.classification = kFace;
    for (auto& e : scene.expected)
        e = kFace;
    expectClasses(run<T>(scene, s), scene);

    const Built face = cliff(0.3, 12.2, 1.8, false);
    std::string log;
    // A range wider than the grid's columns.
    expectClasses(run<T>(
                      face, s, [](Vexaro<T>& v) { v.set_SteepGroundRange(T(3)); }, &log),
                  face);
    EXPECT_NE(log.find("Grid columns narrower than SteepGroundRange"), std::string::npos) << log;
    // A parameter out of its limits.
    expectClasses(run<T>(
                      face, s, [](Vexaro<T>& v) { v.set_SteepGroundMinPoints(2); }, &log),
                  face);
    EXPECT_NE(log.find("SteepGroundMinPoints = 2"), std::string::npos) << log;
    // Not admitted.
    EXPECT_EQ(run<T>(face, s,
                     [](Vexaro<T>& v) {
                         const std::vector<int> none = allowTable({});
                         v.set_AllowedInputClasses(const_cast<int*>(none.data()),
                                                   static_cast<int>(none.size()));
                     }),
              face.expected);
}

} // namespace

TEST_P(SteepGround, AHighFaceJoinsAndTreesAndWallsOnItStay)
{
    aHighFaceJoins<float>(GetParam());
    aHighFaceJoins<double>(GetParam());
}

TEST_P(SteepGround, TheFaceIsTakenFromItsEdgesInwards)
{
    theFaceIsTakenFromItsEdgesInwards<float>(GetParam());
    theFaceIsTakenFromItsEdgesInwards<double>(GetParam());
}

TEST_P(SteepGround, LowSparseAndRoughFacesStay)
{
    lowSparseAndRoughFacesStay<float>(GetParam());
    lowSparseAndRoughFacesStay<double>(GetParam());
}

TEST_P(SteepGround, RefusalsLeaveTheClasses)
{
    refusalsLeaveTheClasses<float>(GetParam());
    refusalsLeaveTheClasses<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, SteepGround, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
