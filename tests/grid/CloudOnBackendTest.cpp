// The cloud stays on the backend between steps: a decomposition uploads it only when the backend
// arrays need it, a sync leaves the results there, and the host copy catches up when it is read
// (only the classes when only they are asked for) or before the arrays are dropped.
#include "common/Probe.h"
#include "common/TestSupport.h"
#include "core/StepContext.h"

using namespace vxtest;

namespace {

std::vector<VX_Point<float>> row(int n, int cls)
{
    std::vector<VX_Point<float>> pts;
    for (int i = 0; i < n; ++i) {
        pts.push_back(point<float>(float(i), 0.5f * float(i % 3), 1.f));
        pts.back().classification = cls;
    }
    return pts;
}

void decompose(Vexaro<float>& v)
{
    CaptureStdout quiet;
    v.regularGridDecomposition2D(2.0, 2.0);
}

/// The class of point p as the backend arrays of the layout in use hold it (host backend).
int backendClass(Vexaro<float>& v, int p)
{
    auto& e = engine(v);
    return e.store.visit([&](auto layout) { return e.store.points(layout).cls(p); });
}

/// What a step does: takes the views through its context, writes a normal and a class, syncs.
void step(Vexaro<float>& v, int p, int cls)
{
    {
        vx::StepContext<float> c(engine(v));
        c.visit([&](auto layout) {
            c.points(layout).setNormal(p, 0.f, 0.f, 1.f);
            c.points(layout).setCls(p, cls);
        });
    }
    CaptureStdout quiet;
    engine(v).syncToHost();
}

class CloudOnBackend : public SettingTest {
protected:
    void SetUp() override
    {
        if (GetParam().backend != "cpu")
            GTEST_SKIP() << "reads the backend arrays directly";
        configure(v, GetParam());
        auto pts = row(20, 1);
        v.loadDirectData(pts.data(), 20);
        decompose(v);
    }
    Vexaro<float> v;
};

} // namespace

TEST_P(CloudOnBackend, ResultsStayOnTheBackendUntilTheHostReadsThem)
{
    auto& store = engine(v).store;
    step(v, 4, 6);
    EXPECT_TRUE(store.deviceMatchesHost);
    EXPECT_NE(store.hostBehind, 0u);
    EXPECT_EQ(store.records[4].classification, 1); // not fetched yet
    decompose(v);                                  // nothing to upload: the result stays
    EXPECT_EQ(backendClass(v, 4), 6);
    EXPECT_EQ(points(v)[4].classification, 6);
    EXPECT_EQ(points(v)[4].nz, 1.f);
    EXPECT_EQ(store.hostBehind, 0u);
}

TEST_P(CloudOnBackend, AClassReadFetchesTheClassesAlone)
{
    auto& store = engine(v).store;
    step(v, 4, 6);
    std::vector<short> classes(20);
    v.saveClassesToBuffer(classes.data(), 20);
    EXPECT_EQ(classes[4], 6);
    EXPECT_EQ(store.records[4].classification, 6);
    if (GetParam().soa) {
        EXPECT_EQ(store.records[4].nz, 0.f); // the normals wait for a read that asks for them
        EXPECT_EQ(points(v)[4].nz, 1.f);
    }
}

TEST_P(CloudOnBackend, ResultsComeBackBeforeTheArraysGo)
{
    step(v, 4, 6);
    engine(v).store.resetDevice();
    EXPECT_EQ(engine(v).store.records[4].classification, 6);
    EXPECT_EQ(engine(v).store.records[4].nz, 1.f);
}

TEST_P(CloudOnBackend, ANewCloudOfTheSameSizeIsUploaded)
{
    step(v, 4, 6);
    auto second = row(20, 5);
    v.loadDirectData(second.data(), 20);
    EXPECT_FALSE(engine(v).store.deviceMatchesHost);
    decompose(v);
    EXPECT_EQ(backendClass(v, 4), 5);
    EXPECT_EQ(points(v)[4].classification, 5);
}

INSTANTIATE_TEST_SUITE_P(Layouts, CloudOnBackend, ::testing::ValuesIn(allSettings()), settingName);
