// Accuracy figures from class lists.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "Evaluation.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vx::app;

TEST(Evaluation, Categories)
{
    EXPECT_EQ(categoryOf(2), kGroundCategory);
    EXPECT_EQ(categoryOf(6), kBuildingCategory);
    for (int c : {3, 4, 5})
        EXPECT_EQ(categoryOf(c), kVegetationCategory);
    for (int c : {0, 1, 7, 9, 17, 18, 64})
        EXPECT_EQ(categoryOf(c), kOtherCategory);
}

TEST(Evaluation, GroundErrorsAndKappa)
{
    // 4 ground (3 kept, 1 rejected), 6 non-ground (2 accepted as ground, 4 kept).
    const std::vector<int> reference = {2, 2, 2, 2, 6, 6, 5, 5, 1, 7};
    const std::vector<int> classified = {2, 2, 2, 1, 2, 6, 2, 5, 1, 7};
    const Evaluation e = evaluate(reference, classified);
    EXPECT_EQ(e.points, 10u);
    EXPECT_EQ(e.groundKept, 3u);
    EXPECT_EQ(e.groundRejected, 1u);
    EXPECT_EQ(e.otherAccepted, 2u);
    EXPECT_EQ(e.otherKept, 4u);
    EXPECT_DOUBLE_EQ(e.typeI, 0.25);
    EXPECT_DOUBLE_EQ(e.typeII, 2.0 / 6.0);
    EXPECT_DOUBLE_EQ(e.totalError, 0.3);
    // Observed 0.7; chance (4 * 5 + 6 * 5) / 100 = 0.5.
    EXPECT_NEAR(e.kappa, 0.4, 1e-12);
    EXPECT_EQ(e.matrix[kBuildingCategory][kGroundCategory], 1u);
    EXPECT_DOUBLE_EQ(e.recall(kBuildingCategory), 0.5);
    EXPECT_DOUBLE_EQ(e.precision(kGroundCategory), 0.6);
    EXPECT_DOUBLE_EQ(e.f1(kVegetationCategory), 2 * 1.0 * 0.5 / 1.5);
    EXPECT_DOUBLE_EQ(e.overallAccuracy(), 0.7);
}

TEST(Evaluation, UndefinedFiguresAreNotNumbers)
{
    const Evaluation e = evaluate({5, 5}, {5, 5});
    EXPECT_TRUE(std::isnan(e.typeI));
    EXPECT_DOUBLE_EQ(e.typeII, 0.0);
    EXPECT_TRUE(std::isnan(e.kappa));
    EXPECT_TRUE(std::isnan(e.f1(kBuildingCategory)));
    EXPECT_DOUBLE_EQ(e.f1(kVegetationCategory), 1.0);
    EXPECT_EQ(formatEvaluation(e).find("nan"), std::string::npos);
}

TEST(Evaluation, NumberFormats)
{
    EXPECT_EQ(grouped(0), "0");
    EXPECT_EQ(grouped(999), "999");
    EXPECT_EQ(grouped(1000), "1,000");
    EXPECT_EQ(grouped(-1234567), "-1,234,567");
    EXPECT_EQ(percent(0.123456), "12.35 %");
    EXPECT_EQ(percent(std::nan("")), "n/a");
}

#endif
