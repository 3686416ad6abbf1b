// The scene kinds (hall, terraces, forest), densities, units and stray returns of the generator:
// each landscape has the shape and truth it promises.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "las/LasFile.h"
#include "scene/Scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <vector>

using vx::scene::generateScene;
using vx::scene::Scene;
using vx::scene::SceneKind;
using vx::scene::SceneOptions;
using vx::scene::SceneUnits;

namespace {

Scene make(SceneKind kind, std::size_t points, uint64_t seed = 1, double density = 10.0)
{
    SceneOptions o;
    o.kind = kind;
    o.targetPoints = points;
    o.seed = seed;
    o.density = density;
    return generateScene(o);
}

std::map<int, double> shares(const Scene& s)
{
    std::map<int, double> share;
    for (const auto& p : s.points)
        share[p.truth] += 1.0 / static_cast<double>(s.points.size());
    return share;
}

bool samePoints(const Scene& a, const Scene& b)
{
    if (a.points.size() != b.points.size())
        return false;
    for (std::size_t i = 0; i < a.points.size(); ++i) {
        const auto &p = a.points[i], &q = b.points[i];
        if (p.x != q.x || p.y != q.y || p.z != q.z || p.gpsTime != q.gpsTime || p.intensity != q.intensity ||
            p.returnNumber != q.returnNumber || p.numberOfReturns != q.numberOfReturns || p.truth != q.truth)
            return false;
    }
    return true;
}

/// Lowest ground-truth height in each cell of a grid over the scene; NaN where no ground lies.
struct GroundGrid {
    int n = 0;
    double cell = 1;
    std::vector<double> z;
    GroundGrid(const Scene& s, double cellSize) : n(static_cast<int>(s.side / cellSize)), cell(cellSize)
    {
        z.assign(static_cast<std::size_t>(n) * n, NAN);
        for (const auto& p : s.points) {
            const int i = static_cast<int>(p.x / cell), j = static_cast<int>(p.y / cell);
            if (p.truth != 2 || i >= n || j >= n)
                continue;
            double& v = z[static_cast<std::size_t>(i) * n + j];
            v = std::isnan(v) ? p.z : std::min(v, p.z);
        }
    }
    double at(int i, int j) const { return z[static_cast<std::size_t>(i) * n + j]; }
};

} // namespace

TEST(SceneKinds, EachKindIsRepeatableAndFollowsTheTarget)
{
    for (SceneKind kind : {SceneKind::Terraces, SceneKind::Forest, SceneKind::Hall}) {
        SCOPED_TRACE(vx::scene::sceneKindName(kind));
        // A hall scene is at least 150 m wide: about 260 000 points at 10 pulses per m².
        const std::size_t target = kind == SceneKind::Hall ? 400000 : 100000;
        const Scene a = make(kind, target, 3);
        EXPECT_TRUE(samePoints(a, make(kind, target, 3)));
        EXPECT_FALSE(samePoints(a, make(kind, target, 4)));
        EXPECT_NEAR(static_cast<double>(a.points.size()), static_cast<double>(target), 0.05 * target);
        EXPECT_EQ(a.kind, kind);
        for (const auto& p : a.points) {
            ASSERT_TRUE(p.x >= 0 && p.y >= 0 && p.x < a.side && p.y < a.side);
            ASSERT_TRUE(p.returnNumber >= 1 && p.returnNumber <= p.numberOfReturns && p.numberOfReturns <= 5);
            if (p.truth == 2) {
                ASSERT_EQ(p.returnNumber, p.numberOfReturns) << "ground is always a pulse's last return";
            }
        }
    }
}

TEST(SceneKinds, TheHallRoofIsBuildingAndSixtyMetresWide)
{
    const Scene s = make(SceneKind::Hall, 100000, 2);
    EXPECT_GE(s.side, vx::scene::kHallSceneSide);
    EXPECT_GE(s.buildings, 4) << "the hall and at least three houses";
    EXPECT_GT(s.trees, 5);
    const auto share = shares(s);
    EXPECT_GT(share.at(6), 0.15) << "the hall alone covers 4800 of 22500 m²";
    EXPECT_GT(share.at(2), 0.4);
    EXPECT_GT(share.at(5), 0.01);

    // The hall's flat roof holds the most building returns at one height (10 cm bins).
    std::map<long, std::size_t> levels;
    for (const auto& p : s.points)
        if (p.truth == 6)
            ++levels[std::lround(p.z * 10.0)];
    const auto roof = std::max_element(levels.begin(), levels.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    // The hall: the largest 8-connected patch of 1 m cells holding returns of that roof level.
    const int n = static_cast<int>(s.side) + 1;
    std::vector<std::vector<const vx::scene::ScenePoint*>> cells(static_cast<std::size_t>(n) * n);
    for (const auto& p : s.points)
        if (p.truth == 6 && std::fabs(p.z * 10.0 - roof->first) <= 1.5)
            cells[static_cast<std::size_t>(p.x) * n + static_cast<std::size_t>(p.y)].push_back(&p);
    std::vector<int> patch(cells.size(), -1);
    std::vector<std::size_t> patchSize;
    for (std::size_t start = 0; start < cells.size(); ++start) {
        if (cells[start].empty() || patch[start] >= 0)
            continue;
        const int id = static_cast<int>(patchSize.size());
        patchSize.push_back(0);
        std::vector<std::size_t> todo = {start};
        patch[start] = id;
        while (!todo.empty()) {
            const std::size_t c = todo.back();
            todo.pop_back();
            ++patchSize.back();
            const int i = static_cast<int>(c) / n, j = static_cast<int>(c) % n;
            for (int di = -1; di <= 1; ++di)
                for (int dj = -1; dj <= 1; ++dj) {
                    const int a = i + di, b = j + dj;
                    const std::size_t k = static_cast<std::size_t>(a) * n + b;
                    if (a >= 0 && b >= 0 && a < n && b < n && !cells[k].empty() && patch[k] < 0) {
                        patch[k] = id;
                        todo.push_back(k);
                    }
                }
        }
    }
    ASSERT_FALSE(patchSize.empty());
    const int hall =
        static_cast<int>(std::max_element(patchSize.begin(), patchSize.end()) - patchSize.begin());
    std::vector<const vx::scene::ScenePoint*> onRoof;
    for (std::size_t k = 0; k < cells.size(); ++k)
        if (patch[k] == hall)
            onRoof.insert(onRoof.end(), cells[k].begin(), cells[k].end());
    ASSERT_GT(onRoof.size(), 30000u);
    // Its narrowest extent over all directions is the width, its extent across that the length.
    double narrowest = 1e300, length = 0;
    for (int degree = 0; degree < 180; ++degree) {
        const double a = degree * 3.14159265358979 / 180.0, c = std::cos(a), d = std::sin(a);
        double lo = 1e300, hi = -1e300, lo2 = 1e300, hi2 = -1e300;
        for (const auto* p : onRoof) {
            lo = std::min(lo, p->x * c + p->y * d), hi = std::max(hi, p->x * c + p->y * d);
            lo2 = std::min(lo2, -p->x * d + p->y * c), hi2 = std::max(hi2, -p->x * d + p->y * c);
        }
        if (hi - lo < narrowest)
            narrowest = hi - lo, length = hi2 - lo2;
    }
    EXPECT_GT(narrowest, 59.0);
    EXPECT_LT(narrowest, 60.5);
    EXPECT_GT(length, 79.0);
    EXPECT_LT(length, 80.5);
    // 8 to 10 m over the lowest ground under it, which lies no lower than the scene's lowest.
    double lowestGround = 1e300;
    for (const auto& p : s.points)
        if (p.truth == 2)
            lowestGround = std::min(lowestGround, p.z);
    EXPECT_GT(roof->first / 10.0 - lowestGround, 7.9);
}

TEST(SceneKinds, TheForestHidesMostOfTheGround)
{
    for (uint64_t seed : {1u, 2u}) {
        const Scene town = make(SceneKind::Town, 100000, seed),
                    forest = make(SceneKind::Forest, 100000, seed);
        const auto townShare = shares(town), forestShare = shares(forest);
        EXPECT_LT(forestShare.at(2), 0.5 * townShare.at(2));
        EXPECT_GT(forestShare.at(5), 0.5);
        EXPECT_GT(forestShare.at(3) + forestShare.at(4), 0.005) << "the understorey";
        EXPECT_EQ(forestShare.count(6), 0u);
        // Few pulses reach the ground.
        std::size_t pulses = 0, toGround = 0;
        for (const auto& p : forest.points) {
            pulses += p.returnNumber == 1;
            toGround += p.truth == 2;
        }
        EXPECT_LT(toGround, pulses / 3);
        EXPECT_GT(forest.trees, forest.side * forest.side / 50.0) << "a tree on most 6 m squares";
    }
}

TEST(SceneKinds, TheMountainForestStandsOnASteepSlope)
{
    for (uint64_t seed : {1u, 2u}) {
        const Scene s = make(SceneKind::MountainForest, 100000, seed);
        // The least-squares plane through the ground rises 0.4-0.6 per run (the tilt), give or take
        // what the spurs and the gully add over a scene 70 m wide.
        double n = 0, sx = 0, sy = 0, sz = 0, sxx = 0, sxy = 0, syy = 0, sxz = 0, syz = 0;
        for (const auto& p : s.points)
            if (p.truth == 2) {
                n += 1, sx += p.x, sy += p.y, sz += p.z;
                sxx += p.x * p.x, sxy += p.x * p.y, syy += p.y * p.y, sxz += p.x * p.z, syz += p.y * p.z;
            }
        ASSERT_GT(n, 100);
        const double cxx = sxx - sx * sx / n, cxy = sxy - sx * sy / n, cyy = syy - sy * sy / n;
        const double cxz = sxz - sx * sz / n, cyz = syz - sy * sz / n, det = cxx * cyy - cxy * cxy;
        const double a = (cxz * cyy - cyz * cxy) / det, b = (cyz * cxx - cxz * cxy) / det;
        const double slope = std::sqrt(a * a + b * b);
        EXPECT_GT(slope, 0.3);
        EXPECT_LT(slope, 0.75);
        // The forest's canopy over it.
        const auto share = shares(s);
        EXPECT_GT(share.at(5), 0.5);
        EXPECT_LT(share.at(2), 0.25);
        EXPECT_EQ(share.count(6), 0u);
    }
}

TEST(SceneKinds, TerracesHaveStepsAndThirtyDegreeSlopes)
{
    const Scene s = make(SceneKind::Terraces, 300000, 1);
    const GroundGrid g(s, 1.0);
    // Steps: neighbouring 1 m cells whose lowest ground differs by 1 to 2 m.
    std::size_t steps = 0;
    for (int i = 0; i + 1 < g.n; ++i)
        for (int j = 0; j + 1 < g.n; ++j)
            for (const double other : {g.at(i + 1, j), g.at(i, j + 1)}) {
                const double dz = std::fabs(other - g.at(i, j));
                steps += dz >= 0.9 && dz <= 2.1;
            }
    EXPECT_GT(steps, 40u);
    // Gradients over 4 m: many near 30 degrees (tan 0.577), many flat (the terraces).
    std::size_t cells = 0, steep = 0, flat = 0;
    for (int i = 2; i + 2 < g.n; ++i)
        for (int j = 2; j + 2 < g.n; ++j) {
            const double gx = (g.at(i + 2, j) - g.at(i - 2, j)) / 4.0,
                         gy = (g.at(i, j + 2) - g.at(i, j - 2)) / 4.0;
            if (std::isnan(gx) || std::isnan(gy))
                continue;
            const double slope = std::sqrt(gx * gx + gy * gy);
            ++cells;
            steep += slope > 0.53 && slope < 0.63;
            flat += slope < 0.05;
        }
    EXPECT_GT(steep, cells / 20);
    EXPECT_GT(flat, cells / 5);
    EXPECT_GE(s.buildings, 2);
    EXPECT_GT(s.trees, 5);
    const auto share = shares(s);
    EXPECT_GT(share.at(2), 0.5);
    EXPECT_GT(share.at(6), 0.01);
}

TEST(SceneKinds, DensityIsTheOneAskedFor)
{
    for (SceneKind kind : {SceneKind::Town, SceneKind::Terraces, SceneKind::Forest}) {
        for (double density : {0.2, 30.0}) {
            SCOPED_TRACE(std::string(vx::scene::sceneKindName(kind)) + " at " + std::to_string(density));
            const std::size_t target = density < 1 ? 30000 : 200000;
            const Scene s = make(kind, target, 1, density);
            EXPECT_NEAR(static_cast<double>(s.points.size()), static_cast<double>(target), 0.05 * target);
            std::size_t pulses = 0;
            for (const auto& p : s.points)
                pulses += p.returnNumber == 1;
            const double perSquareMetre = static_cast<double>(pulses) / (s.side * s.side);
            EXPECT_NEAR(perSquareMetre, density, 0.12 * density);
            if (kind == SceneKind::Forest)
                continue;
            // On open ground: cells that hold nothing but single ground returns.
            const double cell = density < 1 ? 10.0 : 2.0;
            const int n = static_cast<int>(s.side / cell);
            std::vector<int> count(static_cast<std::size_t>(n) * n, 0);
            std::vector<bool> open(count.size(), true);
            for (const auto& p : s.points) {
                const int i = static_cast<int>(p.x / cell), j = static_cast<int>(p.y / cell);
                if (i >= n || j >= n)
                    continue;
                const std::size_t k = static_cast<std::size_t>(i) * n + j;
                ++count[k];
                open[k] = open[k] && p.truth == 2 && p.numberOfReturns == 1;
            }
            double points = 0, area = 0;
            for (std::size_t k = 0; k < count.size(); ++k)
                if (open[k] && count[k] > 0)
                    points += count[k], area += cell * cell;
            ASSERT_GT(area, 0.05 * s.side * s.side);
            EXPECT_NEAR(points / area, density, 0.12 * density);
        }
    }
}

TEST(SceneKinds, FeetAreTheMetreSceneDividedByTheFoot)
{
    for (SceneKind kind : {SceneKind::Town, SceneKind::Terraces}) {
        SceneOptions o;
        o.kind = kind;
        o.targetPoints = 30000;
        o.seed = 5;
        const Scene metres = generateScene(o);
        for (SceneUnits units : {SceneUnits::Feet, SceneUnits::UsSurveyFeet}) {
            o.units = units;
            const Scene feet = generateScene(o);
            const double foot = units == SceneUnits::Feet ? 0.3048 : 1200.0 / 3937.0;
            EXPECT_EQ(vx::scene::unitLength(units), foot);
            EXPECT_EQ(feet.units, units);
            ASSERT_EQ(feet.points.size(), metres.points.size());
            EXPECT_EQ(feet.side, metres.side / foot);
            EXPECT_EQ(feet.originX, metres.originX / foot);
            for (std::size_t i = 0; i < feet.points.size(); ++i) {
                const auto &f = feet.points[i], &m = metres.points[i];
                ASSERT_EQ(f.x, m.x / foot) << i;
                ASSERT_EQ(f.y, m.y / foot) << i;
                ASSERT_EQ(f.z, m.z / foot) << i;
                ASSERT_EQ(f.truth, m.truth);
                ASSERT_EQ(f.gpsTime, m.gpsTime);
                ASSERT_EQ(f.returnNumber, m.returnNumber);
            }
        }
    }
}

TEST(SceneKinds, StrayReturnsFarAboveAndBelowTheGround)
{
    for (SceneKind kind : {SceneKind::Town, SceneKind::Forest}) {
        SceneOptions o;
        o.kind = kind;
        o.targetPoints = 50000;
        o.seed = 7;
        const Scene plain = generateScene(o);
        o.strayReturns = true;
        const Scene stray = generateScene(o);
        // The plain scene's points, in order, and the strays among them.
        std::vector<vx::scene::ScenePoint> extra;
        std::size_t k = 0;
        for (const auto& p : stray.points) {
            const auto& q = plain.points[std::min(k, plain.points.size() - 1)];
            if (k < plain.points.size() && p.x == q.x && p.y == q.y && p.z == q.z && p.truth == q.truth)
                ++k;
            else
                extra.push_back(p);
        }
        EXPECT_EQ(k, plain.points.size());
        int high = 0, low = 0;
        for (const auto& p : extra) {
            EXPECT_EQ(p.numberOfReturns, 1);
            // Height over the nearest ground return of the scene.
            double best = 1e300, ground = 0;
            for (const auto& q : plain.points)
                if (q.truth == 2) {
                    const double d = (q.x - p.x) * (q.x - p.x) + (q.y - p.y) * (q.y - p.y);
                    if (d < best)
                        best = d, ground = q.z;
                }
            const double above = p.z - ground;
            if (p.truth == 18) {
                ++high;
                EXPECT_GT(above, 199.0);
                EXPECT_LT(above, 1503.0);
            } else {
                ++low;
                EXPECT_EQ(p.truth, 7);
                EXPECT_LT(above, -4.5);
                EXPECT_GT(above, -51.0);
            }
        }
        EXPECT_GE(high, 6);
        EXPECT_LE(high, 9);
        EXPECT_GE(low, 3);
        EXPECT_LE(low, 5);
        // A tight cluster: at least three high returns within 2 m of each other.
        int clustered = 0;
        for (const auto& p : extra)
            for (const auto& q : extra)
                if (&p != &q && p.truth == 18 && q.truth == 18 && std::fabs(p.x - q.x) < 1.0 &&
                    std::fabs(p.y - q.y) < 1.0 && std::fabs(p.z - q.z) < 2.0) {
                    ++clustered;
                    break;
                }
        EXPECT_GE(clustered, 3);
    }
}

TEST(SceneKinds, LasFilesCarryTheCoordinateSystem)
{
    SceneOptions o;
    o.targetPoints = 2000;
    for (SceneUnits units : {SceneUnits::Metres, SceneUnits::Feet, SceneUnits::UsSurveyFeet}) {
        o.units = units;
        const Scene s = generateScene(o);
        const std::string path = ::testing::TempDir() + "scene-units.las";
        vx::scene::writeSceneLas(s, path, "");
        const auto f = vx::las::LasFile::read(path);
        std::remove(path.c_str());
        EXPECT_EQ(f.bytes()[6] & 0x10, 0x10) << "the WKT bit of the global encoding";
        ASSERT_EQ(f.vlrs().size(), 1u);
        EXPECT_EQ(f.vlrs()[0].userId, "LASF_Projection");
        EXPECT_EQ(f.vlrs()[0].recordId, 2112);
        const std::string wkt = vx::scene::sceneWkt(units);
        EXPECT_EQ(f.vlrs()[0].payloadSize, wkt.size() + 1);
        const std::string held(reinterpret_cast<const char*>(f.bytes().data()) + f.header().headerSize + 54,
                               wkt.size());
        EXPECT_EQ(held, wkt);
        EXPECT_EQ(f.bytes()[f.header().headerSize + 54 + wkt.size()], 0);
        if (units == SceneUnits::Metres) {
            EXPECT_EQ(wkt.rfind("PROJCS[\"WGS 84 / UTM zone 33N\"", 0), 0u);
            EXPECT_NE(wkt.find("UNIT[\"metre\",1"), std::string::npos);
            EXPECT_EQ(wkt.find("foot"), std::string::npos);
        } else {
            const std::string unit = units == SceneUnits::Feet
                                         ? "UNIT[\"foot\",0.3048,"
                                         : "UNIT[\"US survey foot\",0.3048006096012192,";
            EXPECT_EQ(wkt.rfind("COMPD_CS[", 0), 0u);
            const auto vertical = wkt.find("VERT_CS[");
            ASSERT_NE(vertical, std::string::npos);
            EXPECT_NE(wkt.find(unit), std::string::npos);
            EXPECT_NE(wkt.find(unit, vertical), std::string::npos) << "heights in feet too";
            EXPECT_EQ(wkt.find("metre"), std::string::npos);
        }
        // File coordinates are the scene's, in its unit.
        EXPECT_NEAR(f.x(0), s.originX + s.points[0].x, 0.006);
        EXPECT_NEAR(f.z(0), s.points[0].z, 0.006);
    }
}

#endif
