// Accuracy figures from class lists.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "EvalTable.h"
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
    for (int c : {0, 1, 7, 9, 17, 18, 64, 208, 214})
        EXPECT_EQ(categoryOf(c), kOtherCategory);
    EXPECT_FALSE(scoredReference(0));
    for (int c : {1, 2, 6, 208})
        EXPECT_TRUE(scoredReference(c));
}

TEST(Evaluation, VegetationF1AndTierAccuracy)
{
    // Reference vegetation: the first seven points (3, 3, 4, 4, 5, 5, 5).
    const std::vector<int> reference = {3, 3, 4, 4, 5, 5, 5, 2, 6, 1, 18};
    const std::vector<int> classified = {3, 4, 4, 2, 5, 5, 3, 3, 6, 5, 4};
    const Evaluation e = evaluate(reference, classified);
    // Found as some vegetation class: all but the fourth (TP 6, FN 1). Taken for vegetation: the
    // ground point, the class 1 point and the noise point 18, which is "other" (FP 3).
    // F1 = 2 TP / (2 TP + FP + FN) = 12 / 16.
    EXPECT_DOUBLE_EQ(e.f1(kVegetationCategory), 12.0 / 16.0);
    // Very same class: the first, third, fifth and sixth of the seven.
    EXPECT_EQ(e.vegetationPoints, 7u);
    EXPECT_EQ(e.tierKept, 4u);
    EXPECT_DOUBLE_EQ(e.tierAccuracy, 4.0 / 7.0);
    EXPECT_DOUBLE_EQ(e.f1(kBuildingCategory), 1.0);
    EXPECT_EQ(e.matrix[kOtherCategory][kVegetationCategory], 2u);
}

TEST(Evaluation, TierAccuracyWithoutReferenceVegetationIsNotANumber)
{
    const Evaluation e = evaluate({2, 6, 1}, {5, 5, 5});
    EXPECT_TRUE(std::isnan(e.tierAccuracy));
    EXPECT_TRUE(std::isnan(e.f1(kVegetationCategory)));
    EXPECT_EQ(formatEvaluation(e).find("nan"), std::string::npos);
}

TEST(Evaluation, F1IsZeroWhenNothingOfAReferenceCategoryIsFound)
{
    // Reference buildings exist, none is classified building: precision has no value, F1 is 0.
    const Evaluation e = evaluate({6, 6, 2}, {2, 2, 2});
    EXPECT_TRUE(std::isnan(e.precision(kBuildingCategory)));
    EXPECT_DOUBLE_EQ(e.f1(kBuildingCategory), 0.0);
    // No reference building: F1 has no value even where buildings are claimed.
    EXPECT_TRUE(std::isnan(evaluate({2, 2}, {6, 2}).f1(kBuildingCategory)));
}

TEST(Evaluation, ReferenceClassZeroIsLeftOut)
{
    // Only the middle point is scored: ground kept.
    const Evaluation e = evaluate({0, 2, 0}, {2, 2, 5});
    EXPECT_EQ(e.points, 1u);
    EXPECT_EQ(e.unscored, 2u);
    EXPECT_EQ(e.groundKept, 1u);
    EXPECT_EQ(e.otherAccepted + e.otherKept, 0u);
    EXPECT_DOUBLE_EQ(e.totalError, 0.0);
    EXPECT_TRUE(std::isnan(e.typeII));
    EXPECT_TRUE(std::isnan(e.f1(kVegetationCategory)));
}

TEST(EvalTable, MeanSkipsUndefinedFiguresAndRowsNotCompared)
{
    EvalRow withBuilding;
    withBuilding.file = "a.las";
    // Building F1: TP 1, FN 1, FP 0 -> 2/3. Tier: 1 of 2. No seconds.
    withBuilding.evaluation = evaluate({6, 6, 3, 4, 2}, {6, 2, 3, 3, 2});
    EvalRow withoutBuilding;
    withoutBuilding.file = "b.las";
    withoutBuilding.evaluation = evaluate({5, 5, 2, 2}, {5, 5, 2, 2}); // building n/a, tier 1
    withoutBuilding.seconds = 3.0;
    EvalRow missing;
    missing.file = "c.las";
    missing.status = EvalRow::kMissing;
    missing.seconds = 100.0; // ignored: the row was not compared
    EvalRow failed;
    failed.file = "d.las";
    failed.status = EvalRow::kFailed;
    failed.error = "unreadable";

    const RowFigures m = meanFigures({withBuilding, withoutBuilding, missing, failed});
    EXPECT_DOUBLE_EQ(m.points, 9.0);
    EXPECT_DOUBLE_EQ(m.buildingF1, 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(m.tierAccuracy, (0.5 + 1.0) / 2);
    EXPECT_DOUBLE_EQ(m.seconds, 3.0);
    // Type I: a.las 0 of 1 ground rejected, b.las 0 of 2: both 0.
    EXPECT_DOUBLE_EQ(m.typeI, 0.0);
    // Type II: a.las takes 1 of 4 non-ground for ground, b.las none of 2.
    EXPECT_DOUBLE_EQ(m.typeII, (0.25 + 0.0) / 2);

    // Nothing compared: every figure is undefined.
    const RowFigures none = meanFigures({missing, failed});
    EXPECT_DOUBLE_EQ(none.points, 0.0);
    EXPECT_TRUE(std::isnan(none.kappa));
    EXPECT_TRUE(std::isnan(none.seconds));
}

TEST(EvalTable, CsvQuotesFieldsThatNeedIt)
{
    EvalRow failed;
    failed.file = "odd, \"name\".las";
    failed.status = EvalRow::kFailed;
    failed.error = "holds 3 points, not 2";
    const std::string csv = formatEvalCsv({failed}, false);
    EXPECT_EQ(csv.substr(csv.find('\n') + 1),
              "\"odd, \"\"name\"\".las\",,,,,,,,,,\"error: holds 3 points, not 2\"\n");
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
