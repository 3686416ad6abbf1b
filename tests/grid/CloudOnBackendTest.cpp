// A decomposition uploads the cloud only when the backend arrays no longer match the host copy:
// a step's results that were brought back stay, results a step left unsynced are replaced by the
// host copy as before, and a new cloud is always uploaded.
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

/// What a step does: takes the views through its context and writes a class.
void stepWrites(Vexaro<float>& v, int p, int cls)
{
    vx::StepContext<float> c(engine(v));
    c.visit([&](auto layout) { c.points(layout).setCls(p, cls); });
}

} // namespace

class CloudOnBackend : public SettingTest {};

TEST_P(CloudOnBackend, SyncedResultsStayAndUnsyncedOnesAreReplaced)
{
    if (GetParam().backend != "cpu")
        GTEST_SKIP() << "reads the backend arrays directly";
    Vexaro<float> v;
    configure(v, GetParam());
    auto pts = row(20, 1);
    v.loadDirectData(pts.data(), 20);
    decompose(v);
    EXPECT_TRUE(engine(v).store.deviceMatchesHost);

    // Left on the backend without a sync: the next decomposition uploads the host copy again.
    stepWrites(v, 3, 6);
    EXPECT_FALSE(engine(v).store.deviceMatchesHost);
    decompose(v);
    EXPECT_EQ(backendClass(v, 3), 1);

    // Brought back: the arrays match the host, the upload is skipped and the result stays.
    stepWrites(v, 4, 6);
    engine(v).syncToHost();
    EXPECT_TRUE(engine(v).store.deviceMatchesHost);
    decompose(v);
    EXPECT_EQ(backendClass(v, 4), 6);
    EXPECT_EQ(points(v)[4].classification, 6);
}

TEST_P(CloudOnBackend, ANewCloudOfTheSameSizeIsUploaded)
{
    if (GetParam().backend != "cpu")
        GTEST_SKIP() << "reads the backend arrays directly";
    Vexaro<float> v;
    configure(v, GetParam());
    auto first = row(20, 1), second = row(20, 5);
    v.loadDirectData(first.data(), 20);
    decompose(v);
    v.loadDirectData(second.data(), 20);
    EXPECT_FALSE(engine(v).store.deviceMatchesHost);
    decompose(v);
    EXPECT_EQ(backendClass(v, 7), 5);
}

INSTANTIATE_TEST_SUITE_P(Layouts, CloudOnBackend, ::testing::ValuesIn(allSettings()), settingName);
