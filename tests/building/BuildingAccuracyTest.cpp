// The whole sequence on a generated town with known building points (GeneratedTown.h): normals,
// ground and then the building steps must find the buildings with an F1 score of at least 0.90
// on both layouts and both precisions.
//
// Parameters (defaults unless named):
//   normals:   search range 1.5, cubes of 1.5, at least 3 neighbours; shape classes all 1, so the
//              classes stay as loaded;
//   reset:     every point to class 1 (cubes of 2 m), then zero normals to low class 7;
//   seeds:     height index in planar cells of 15 m (wider than any footprint, so every column
//              holds ground), admitted class 1 only;
//   growth:    cubes of 2 m, above-plane radius 0.2 (as in the ground accuracy test), admitted
//              class 1 only;
//   buildings: cubes of 2 m (as large as the widest radius in use: the ground range of the seeds
//              and twice the closing's ground range), source class 1, companion class 0 (absent),
//              admitted classes 1, 250 and 251 (the marks must be admitted for the candidates to
//              join under the roof).
#include "building/BuildingTestSupport.h"
#include "building/GeneratedTown.h"

#include <cstdio>

using namespace bldtest;
using vxtest::CaptureStdout;

namespace {

struct Score {
    double precision, recall, f1;
    long truth, found;
};

template <class T> Score classifyTown(const Setting& s, const Town& town)
{
    std::vector<VX_Point<T>> pts;
    for (const auto& p : town.points)
        pts.push_back(vxtest::point<T>(T(p.x), T(p.y), T(p.z), p.classification, p.lastReturn));
    Vexaro<T> v;
    vxtest::configure(v, s, 0);
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    CaptureStdout quiet;
    auto allow = [&](std::initializer_list<int> admitted) {
        std::vector<int> table = vxtest::allowTable(admitted);
        v.set_AllowedInputClasses(table.data(), static_cast<int>(table.size()));
    };
    v.calculateNormalVectors(1, 1, 1);
    v.regularGridDecomposition3Dcube(2.0);
    v.resetPointCloudClasses(1);
    v.gatherLowPoints(7, 2);
    allow({1});
    v.regularGridDecomposition2D(15.0, 15.0);
    v.calculateHeightIndex(0);
    v.findGroundSeed(2);
    v.regularGridDecomposition3Dcube(2.0);
    v.set_GroundGrowthRangeLowest(T(0.2));
    v.performIterativeGroundGrowth(2);

    allow({kSource, kMark, kCandidate});
    v.findBuildingSeed(kBuilding, kGround, kSource, 0);
    v.performIterativeBuildingGrowth(kBuilding, kGround, kSource, 0);

    const Classes cls = vxtest::classes(v);
    long truePositives = 0, found = 0, truth = 0;
    for (std::size_t i = 0; i < cls.size(); ++i) {
        const bool asBuilding = cls[i] == kBuilding;
        found += asBuilding;
        truth += town.building[i];
        truePositives += asBuilding && town.building[i];
    }
    const double precision = found ? double(truePositives) / found : 0.0;
    const double recall = truth ? double(truePositives) / truth : 0.0;
    const double f1 = precision + recall > 0 ? 2 * precision * recall / (precision + recall) : 0.0;
    return {precision, recall, f1, truth, found};
}

template <class T> void expectAccurate(const Setting& s)
{
    static const Town town = generateTown();
    const Score e = classifyTown<T>(s, town);
    std::printf("[ buildings %s %s %zu points, %ld building ] precision %.3f, recall %.3f, F1 %.3f\n",
                sizeof(T) == 4 ? "float" : "double", s.soa ? "SoA" : "AoS", town.points.size(), e.truth,
                e.precision, e.recall, e.f1);
    EXPECT_GE(e.f1, 0.90);
}

class BuildingAccuracy : public vxtest::SettingTest {};

} // namespace

TEST(GeneratedTown, HasTheDocumentedHousesAndTrees)
{
    const Town town = generateTown();
    EXPECT_EQ(town.houses.size(), 8u);
    EXPECT_EQ(town.trees.size(), 14u);
    EXPECT_EQ(town.treesOverRoofs, 5);
    int flat = 0, pitched = 0;
    for (const House& h : town.houses)
        (h.roof == Roof::Flat ? flat : pitched) += 1;
    EXPECT_EQ(flat, 3);
    EXPECT_EQ(pitched, 5);
}

TEST_P(BuildingAccuracy, GeneratedTownReachesAnF1OfNinetyPerCent)
{
    expectAccurate<float>(GetParam());
    expectAccurate<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, BuildingAccuracy, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
