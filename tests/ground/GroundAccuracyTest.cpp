// The whole ground sequence on a generated terrain with known ground: normals, reset, low
// points, seeds, growth and low-point correction must find the ground with a total error under
// 5 per cent, on both layouts.
//
// The terrain (60 m x 60 m, about 4 ground points per square metre, z noise of +-1 cm): a slope
// of 8 per cent along x, a rounded ridge 3 m high along x at y = 30, gentle undulation. On it four
// box buildings (6 to 8 m wide, roofs 4 to 7 m up, sparse wall points), ten trees (crowns of
// radius 2 to 3 m centred 4 to 6 m up), eight low shrubs (0.3 to 1.5 m) and 40 isolated noise
// points 2 to 6 m under the surface.
//
// Parameters (defaults unless named):
//   normals: search range 1.5, cubes of 1.5, at least 3 neighbours; shape classes all 1, so the
//            classes stay as loaded;
//   reset:   every point to class 1 (range 0), then zero normals to low class 7;
//   seeds:   height index in planar cells of 10 m (wider than any building, so every column
//            holds ground), maximum height index 0.001, admitted class 1 only;
//   growth:  cubes of 2 m, range 1.5, plane distance 0.05, cosine 0.99, height 0.3, admitted
//            class 1 only; above-plane radius 0.2 instead of 0.5: with centimetre noise a ground
//            point often lies a little above the tangent plane of a close neighbour, and over
//            0.5 m the ground missed here is 13 per cent (2.9 at 0.2, 2.1 with the test off;
//            the rest mostly lies next to shrubs, whose points tilt the ground normals);
//   low-point correction: planar cells of 5 m, range 1.0, candidates 7, replacement 1.
#include "ground/GroundTestSupport.h"
#include "scene/Random.h"
#include "scene/Terrain.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

using namespace vxtest;
using namespace groundtest;

namespace {

class GroundAccuracy : public SettingTest {};

using Rng = vx::scene::SequenceRandom;

double terrain(double x, double y)
{
    const double ridge = 3.0 * std::exp(-((y - 30.0) / 8.0) * ((y - 30.0) / 8.0));
    return vx::scene::rollingSlope(x, y, 0.08, 0.5, 7.0, 9.0) + ridge;
}

struct Box {
    double x0, y0, x1, y1, top;
    bool covers(double x, double y) const { return x >= x0 && x <= x1 && y >= y0 && y <= y1; }
};

struct Scene {
    std::vector<VX_Point<double>> points;
    std::vector<bool> ground;
    std::vector<bool> noise;
};

Scene generate()
{
    Rng r(20240611);
    Scene sc;
    auto add = [&](double x, double y, double z, bool isGround, bool isNoise = false) {
        sc.points.push_back(point<double>(x, y, z, 1, 1));
        sc.ground.push_back(isGround);
        sc.noise.push_back(isNoise);
    };
    const double side = 60.0;
    std::vector<Box> boxes;
    const double centres[4][2] = {{12, 12}, {45, 15}, {15, 46}, {44, 44}};
    for (const auto& c : centres) {
        const double w = r.uniform(6, 8), d = r.uniform(6, 8);
        const double base = terrain(c[0], c[1]);
        boxes.push_back({c[0] - w / 2, c[1] - d / 2, c[0] + w / 2, c[1] + d / 2, base + r.uniform(4, 7)});
    }
    // Ground, hidden under the roofs.
    for (int i = 0; i < int(side * side * 4); ++i) {
        const double x = r.uniform(0, side), y = r.uniform(0, side);
        bool covered = false;
        for (const Box& b : boxes)
            covered = covered || b.covers(x, y);
        if (!covered)
            add(x, y, terrain(x, y) + r.uniform(-0.01, 0.01), true);
    }
    for (const Box& b : boxes) {
        const double area = (b.x1 - b.x0) * (b.y1 - b.y0);
        for (int i = 0; i < int(area * 4); ++i)
            add(r.uniform(b.x0, b.x1), r.uniform(b.y0, b.y1), b.top + r.uniform(-0.01, 0.01), false);
        // A few wall points on the four sides.
        const double perimeter = 2 * (b.x1 - b.x0 + b.y1 - b.y0);
        for (int i = 0; i < int(perimeter * 2); ++i) {
            double t = r.uniform(0, perimeter), x, y;
            if (t < b.x1 - b.x0)
                x = b.x0 + t, y = b.y0;
            else if ((t -= b.x1 - b.x0) < b.y1 - b.y0)
                x = b.x1, y = b.y0 + t;
            else if ((t -= b.y1 - b.y0) < b.x1 - b.x0)
                x = b.x1 - t, y = b.y1;
            else
                t -= b.x1 - b.x0, x = b.x0, y = b.y1 - t;
            const double foot = terrain(x, y);
            add(x, y, r.uniform(foot + 0.5, b.top), false);
        }
    }
    for (int t = 0; t < 10; ++t) {
        double cx, cy;
        bool clear;
        do {
            cx = r.uniform(4, side - 4), cy = r.uniform(4, side - 4);
            clear = true;
            for (const Box& b : boxes)
                clear = clear && !Box{b.x0 - 4, b.y0 - 4, b.x1 + 4, b.y1 + 4, 0}.covers(cx, cy);
        } while (!clear);
        const double radius = r.uniform(2, 3), cz = terrain(cx, cy) + r.uniform(4, 6);
        for (int i = 0; i < 150; ++i) {
            double dx, dy, dz;
            do
                dx = r.uniform(-1, 1), dy = r.uniform(-1, 1), dz = r.uniform(-1, 1);
            while (dx * dx + dy * dy + dz * dz > 1);
            add(cx + radius * dx, cy + radius * dy, cz + radius * dz, false);
        }
    }
    // Low shrubs, 0.3 to 1.5 m above the ground.
    for (int t = 0; t < 8; ++t) {
        const double cx = r.uniform(3, side - 3), cy = r.uniform(3, side - 3);
        for (int i = 0; i < 40; ++i) {
            const double x = cx + r.uniform(-1, 1), y = cy + r.uniform(-1, 1);
            add(x, y, terrain(x, y) + r.uniform(0.3, 1.5), false);
        }
    }
    for (int i = 0; i < 40; ++i) {
        const double x = r.uniform(2, side - 2), y = r.uniform(2, side - 2);
        add(x, y, terrain(x, y) - r.uniform(2, 6), false, true);
    }
    return sc;
}

struct Errors {
    double typeI, typeII, total, noiseKept;
};

template <class T> Errors classifyGround(const Setting& s, const Scene& sc)
{
    std::vector<VX_Point<T>> pts;
    for (const auto& p : sc.points)
        pts.push_back(point<T>(T(p.x), T(p.y), T(p.z), 1, 1));
    Vexaro<T> v;
    configure(v, s, 0);
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    CaptureStdout quiet;
    v.calculateNormalVectors(1, 1, 1);
    v.regularGridDecomposition3Dcube(2.0);
    v.resetPointCloudClasses(1);
    v.gatherLowPoints(7, 2);
    allow(v, {1});
    v.regularGridDecomposition2D(10.0, 10.0);
    v.calculateHeightIndex(0);
    v.findGroundSeed(2);
    v.regularGridDecomposition3Dcube(2.0);
    v.set_GroundGrowthRangeLowest(T(0.2));
    v.performIterativeGroundGrowth(2);
    v.regularGridDecomposition2D(5.0, 5.0);
    v.performLowPointCorrection(2, 7, 1);

    const std::vector<int> cls = classes(v);
    long groundCount = 0, otherCount = 0, missed = 0, wrong = 0, noise = 0, noiseKept = 0;
    for (std::size_t i = 0; i < cls.size(); ++i) {
        const bool asGround = cls[i] == 2;
        if (sc.ground[i])
            ++groundCount, missed += !asGround;
        else
            ++otherCount, wrong += asGround;
        if (sc.noise[i])
            ++noise, noiseKept += cls[i] == 7;
    }
    return {double(missed) / groundCount, double(wrong) / otherCount, double(missed + wrong) / cls.size(),
            double(noiseKept) / noise};
}

template <class T> void accuracy(const Setting& s)
{
    static const Scene sc = generate();
    const Errors e = classifyGround<T>(s, sc);
    std::printf("[ ground %s %s %zu points ] type I %.2f %%, type II %.2f %%, total %.2f %%, noise kept as "
                "low %.0f %%\n",
                sizeof(T) == 4 ? "float" : "double", s.soa ? "SoA" : "AoS", sc.points.size(), 100 * e.typeI,
                100 * e.typeII, 100 * e.total, 100 * e.noiseKept);
    EXPECT_LT(e.total, 0.05);
    EXPECT_LT(e.typeII, 0.05);
    EXPECT_GE(e.noiseKept, 0.9);
}

} // namespace

TEST_P(GroundAccuracy, GeneratedTerrainWithinFivePerCentTotalError)
{
    accuracy<float>(GetParam());
    accuracy<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, GroundAccuracy, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
