// The whole vegetation step on a small mixed scene: points of classes the table does not admit
// never change, and both layouts and both backends give the same classes.
#include "vegetation/MixedScene.h"
#include "vegetation/VegetationTestSupport.h"

using namespace vxtest;
using namespace vegtest;

namespace {

class VegetationScene : public SettingTest {};

/// Settings under which every pass has work to do on the mixed scene.
template <class T> void eager(Vexaro<T>& v)
{
    v.set_VegetationProcOfChaos(0.f);
    v.set_VegetationRatio(0.f);
}

template <class T> void unadmittedPointsNeverChange(const Setting& s)
{
    const auto scene = mixedScene<T>();
    const auto before = [&] {
        std::vector<int> c;
        for (const auto& q : scene)
            c.push_back(q.classification);
        return c;
    }();
    // Nothing admitted: nothing changes.
    EXPECT_EQ(runStep<T>(s, scene, allowTable({}), eager<T>, {}, 2.0), before);
    // Some admitted: only those may change, and some of them do.
    for (const auto& admitted : {std::vector<int>{1}, std::vector<int>{0, 10}, std::vector<int>{1, 10, 11}}) {
        std::vector<int> table(256, 0);
        for (int c : admitted)
            table[c] = 1;
        const auto after = runStep<T>(s, scene, table, eager<T>, {}, 2.0);
        size_t changed = 0;
        for (size_t i = 0; i < scene.size(); ++i) {
            if (table[before[i]] < 1) {
                EXPECT_EQ(after[i], before[i]) << "point " << i;
            }
            changed += after[i] != before[i];
        }
        EXPECT_GT(changed, 0u);
    }
}

template <class T> void layoutsAndBackendsAgree(const Setting& s)
{
    // Coordinates are exact in float, so the per-field copies hold the same numbers.
    const auto scene = mixedScene<T>();
    const auto table = allowTable({0, 1, 10});
    const auto reference = runStep<T>(Setting{"cpu", false}, scene, table, eager<T>, {}, 2.0);
    EXPECT_GT(countVegetation(reference), 10u);
    EXPECT_EQ(runStep<T>(s, scene, table, eager<T>, {}, 2.0), reference);
}

} // namespace

TEST_P(VegetationScene, PointsOfClassesNotAdmittedNeverChange)
{
    unadmittedPointsNeverChange<float>(GetParam());
    unadmittedPointsNeverChange<double>(GetParam());
}

TEST_P(VegetationScene, SameClassesAsTheHostStructureLayout)
{
    layoutsAndBackendsAgree<float>(GetParam());
    layoutsAndBackendsAgree<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Settings, VegetationScene, ::testing::ValuesIn(allSettings()), settingName);
