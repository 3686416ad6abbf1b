#include "common/TestSupport.h"

#include <random>

using namespace vxtest;

namespace {

template <class T> std::vector<VX_Point<T>> randomCloud(int n, T ex, T ey, T ez, unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    std::vector<VX_Point<T>> pts;
    for (int i = 0; i < n; ++i)
        pts.push_back(point<T>(T(u(rng) * ex - ex / 2), T(u(rng) * ey - ey / 2), T(u(rng) * ez), 1));
    return pts;
}

template <class T> void decomposeQuietly(Vexaro<T>& v, double sx, double sy, double sz)
{
    CaptureStdout quiet;
    v.regularGridDecomposition3D(sx, sy, sz);
}

/// The host copy of the sorted links, as point indices and cells, from the layout in use.
template <class T>
void hostLinks(const ClassifierCore<T>& e, bool soa, std::vector<int>& idx, std::vector<int>& grp)
{
    idx.clear(), grp.clear();
    if (soa) {
        const auto f = e.grid.copyFields();
        idx = f.pointIndex, grp = f.group;
        return;
    }
    for (const auto& l : e.grid.copyIndex())
        idx.push_back(l.pointIndex), grp.push_back(l.group);
}

} // namespace

class Decomposition : public SettingTest {};

TEST_P(Decomposition, PointOnTheMaximumLandsInTheLastCell)
{
    Vexaro<float> v;
    configure(v, GetParam());
    std::vector<VX_Point<float>> pts{point<float>(0, 0, 0), point<float>(10, 0, 0), point<float>(4, 0, 0)};
    v.loadDirectData(pts.data(), 3);
    decomposeQuietly(v, 2.5, 1, 1);
    const auto& g = vxtest::engine(v).grid.parameters;
    EXPECT_EQ(g.cellsX, 5); // trunc(10 / 2.5 + 1)
    EXPECT_EQ(g.cellsY, 1);
    EXPECT_EQ(g.cellsZ, 1);
    EXPECT_EQ(vxtest::engine(v).grid.groupCount, 5);
    // Sorted links: point 0 in cell 0, point 2 in cell 1, point 1 in cell 4 = cellsX - 1.
    std::vector<int> idx, grp;
    hostLinks(vxtest::engine(v), GetParam().soa, idx, grp);
    EXPECT_EQ(idx, (std::vector<int>{0, 2, 1}));
    EXPECT_EQ(grp, (std::vector<int>{0, 1, 4}));
}

TEST_P(Decomposition, ZeroExtentGivesOneCell)
{
    Vexaro<double> v;
    configure(v, GetParam());
    std::vector<VX_Point<double>> pts{point<double>(1, 5, 2), point<double>(1, 5, 2), point<double>(1, 5, 2)};
    v.loadDirectData(pts.data(), 3);
    decomposeQuietly(v, 1, 1, 1);
    const auto& g = vxtest::engine(v).grid.parameters;
    EXPECT_EQ(g.cellsX, 1);
    EXPECT_EQ(g.cellsY, 1);
    EXPECT_EQ(g.cellsZ, 1);
}

TEST_P(Decomposition, PlanarGridIsOneLayerTallerThanTheCloud)
{
    Vexaro<float> v;
    configure(v, GetParam());
    auto pts = randomCloud<float>(200, 10, 10, 1, 3);
    pts[0].z = 0, pts[1].z = 30;
    v.loadDirectData(pts.data(), 200);
    {
        CaptureStdout quiet;
        v.regularGridDecomposition2D(1, 1);
    }
    const auto& g = vxtest::engine(v).grid.parameters;
    EXPECT_EQ(g.cellsZ, 1);
    EXPECT_EQ(g.sizeZ, 130.f);
}

TEST_P(Decomposition, OnePointCloudHasOneRun)
{
    Vexaro<float> v;
    configure(v, GetParam());
    std::vector<VX_Point<float>> pts{point<float>(3, 4, 5)};
    v.loadDirectData(pts.data(), 1);
    decomposeQuietly(v, 1, 1, 1);
    const auto& e = vxtest::engine(v);
    ASSERT_EQ(e.grid.groupCount, 1);
    if (GetParam().soa) {
        const auto f = e.grid.copyFields();
        ASSERT_EQ(f.start.size(), 1u);
        EXPECT_EQ(f.start[0], 0);
        EXPECT_EQ(f.end[0], 1);
        EXPECT_EQ(f.count[0], 1);
    } else {
        const auto groups = e.grid.copyGroups();
        ASSERT_EQ(groups.size(), 1u);
        EXPECT_EQ(groups[0].start, 0);
        EXPECT_EQ(groups[0].end, 1);
        EXPECT_EQ(groups[0].count, 1);
    }
}

TEST_P(Decomposition, PointsOfOneCellKeepAscendingIndexOrder)
{
    Vexaro<float> v;
    configure(v, GetParam());
    auto pts = randomCloud<float>(5000, 20, 20, 5, 11);
    v.loadDirectData(pts.data(), 5000);
    decomposeQuietly(v, 2, 2, 2);
    std::vector<int> idx, grp;
    hostLinks(vxtest::engine(v), GetParam().soa, idx, grp);
    ASSERT_EQ(idx.size(), 5000u);
    for (size_t j = 1; j < idx.size(); ++j) {
        ASSERT_LE(grp[j - 1], grp[j]);
        if (grp[j - 1] == grp[j]) {
            ASSERT_LT(idx[j - 1], idx[j]);
        }
    }
}

TEST_P(Decomposition, RunsCoverTheSortedLinksExactly)
{
    Vexaro<double> v;
    configure(v, GetParam());
    auto pts = randomCloud<double>(3000, 30, 10, 8, 5);
    v.loadDirectData(pts.data(), 3000);
    decomposeQuietly(v, 1.5, 1.5, 1.5);
    const auto& e = vxtest::engine(v);
    const bool soa = GetParam().soa;
    const auto fields = e.grid.copyFields();
    const auto groups = e.grid.copyGroups();
    const auto index = e.grid.copyIndex();
    long total = 0;
    for (int c = 0; c < e.grid.groupCount; ++c) {
        const int start = soa ? fields.start[c] : groups[c].start;
        const int end = soa ? fields.end[c] : groups[c].end;
        const int count = soa ? fields.count[c] : groups[c].count;
        if (start == -1) {
            EXPECT_EQ(end, -1);
            EXPECT_EQ(count, 0);
            continue;
        }
        EXPECT_EQ(count, end - start);
        for (int j = start; j < end; ++j)
            EXPECT_EQ(soa ? fields.group[j] : index[j].group, c);
        total += count;
    }
    EXPECT_EQ(total, 3000);
}

TEST_P(Decomposition, MessagesOfTheDispatchAndTheSynchronisation)
{
    Vexaro<float> v;
    configure(v, GetParam(), 2);
    auto pts = randomCloud<float>(100, 10, 10, 10, 1);
    pts[0].x = -5, pts[0].y = -5, pts[0].z = 0;
    pts[1].x = 5, pts[1].y = 5, pts[1].z = 10; // extent 10 / 5 + 1 = 3 cells a side
    v.loadDirectData(pts.data(), 100);
    const FakeClock clock(12345678); // 1234.5678 ms, printed with six significant digits
    CaptureStdout out;
    v.regularGridDecomposition3Dcube(5.0);
    auto lines = out.lines();
    const bool soa = GetParam().soa;
    std::vector<std::string> head =
        soa ? std::vector<std::string>{"Standard decomposition ", "SoA decomposition ", "Standard ", "SoA ",
                                       "Generating groups:  27"}
            : std::vector<std::string>{"Standard decomposition ", "Standard ", "Generating groups:  27"};
    ASSERT_GE(lines.size(), head.size() + 4);
    for (size_t k = 0; k < head.size(); ++k)
        EXPECT_EQ(lines[k], head[k]);
    size_t k = head.size();
    EXPECT_EQ(lines[k], "Time: 1.23457 s");
    EXPECT_EQ(lines[k + 1], "Time: 1234.57 ms");
    EXPECT_EQ(lines[k + 2], "Syncing Cuda to Host  100");
    EXPECT_EQ(lines[k + 3], "Groups  27");
    if (soa) {
        ASSERT_EQ(lines.size(), k + 6);
        EXPECT_EQ(lines[k + 4], "Soa sync ");
        EXPECT_EQ(lines[k + 5], "Copy ");
    } else {
        EXPECT_EQ(lines.size(), k + 4);
    }
}

TEST_P(Decomposition, WithoutACloudNothingHappensButTheSynchronisation)
{
    Vexaro<float> v;
    configure(v, GetParam(), 2);
    CaptureStdout out;
    v.regularGridDecomposition3Dcube(1.0);
    EXPECT_EQ(out.text(), "Syncing Cuda to Host  0\nGroups  0\n");
}

TEST_P(Decomposition, NotEnoughMemoryGrowsEveryEdgeByHalfAUnit)
{
    Vexaro<float> v;
    configure(v, GetParam(), 1);
    auto pts = randomCloud<float>(100, 100, 100, 1, 2);
    pts[0].x = -50, pts[1].x = 50, pts[0].y = -50, pts[1].y = 50, pts[0].z = 0, pts[1].z = 0.5f;
    v.loadDirectData(pts.data(), 100);
    // 101 x 101 x 1 cells need 122,412 + 800 bytes; allow 80 % of 100,000 so the grid must grow.
    vxtest::engine(v).freeMemoryCap = 100000;
    CaptureStdout out;
    v.regularGridDecomposition3D(1.0, 1.0, 1.0);
    auto lines = out.lines();
    std::vector<std::string> grow;
    for (const auto& l : lines)
        if (l.rfind("Not enough memory", 0) == 0)
            grow.push_back(l);
    ASSERT_FALSE(grow.empty());
    EXPECT_EQ(grow[0], "Not enough memory, increasing groups size:  1.5");
    const auto& g = vxtest::engine(v).grid.parameters;
    const double edge = 1.0 + 0.5 * grow.size();
    EXPECT_EQ(grow.back(), "Not enough memory, increasing groups size:  " + vx::toText(edge));
    EXPECT_FLOAT_EQ(g.sizeX, float(edge));
    EXPECT_FLOAT_EQ(g.sizeY, float(edge));
    EXPECT_FLOAT_EQ(g.sizeZ, float(edge));
    EXPECT_LE(100 * 8 + vxtest::engine(v).grid.groupCount * 12, 80000);
}

TEST_P(Decomposition, HugeExtentNeverWrapsTheCellCount)
{
    Vexaro<double> v;
    configure(v, GetParam(), 0);
    std::vector<VX_Point<double>> pts{point<double>(-1e9, -1e9, 0), point<double>(1e9, 1e9, 1e6),
                                      point<double>(0, 0, 0)};
    v.loadDirectData(pts.data(), 3);
    vxtest::engine(v).freeMemoryCap = 1 << 20;
    decomposeQuietly(v, 0.01, 0.01, 0.01);
    const auto& e = vxtest::engine(v);
    EXPECT_GT(e.grid.groupCount, 0);
    EXPECT_LE(3 * 8 + static_cast<double>(e.grid.groupCount) * 12, 0.8 * (1 << 20));
    EXPECT_EQ(static_cast<long long>(e.grid.parameters.cellsX) * e.grid.parameters.cellsY *
                  e.grid.parameters.cellsZ,
              e.grid.groupCount);
}

TEST_P(Decomposition, AbsurdCellEdgesAreRefused)
{
    Vexaro<float> v;
    configure(v, GetParam(), 0);
    auto pts = randomCloud<float>(10, 1, 1, 1, 4);
    v.loadDirectData(pts.data(), 10);
    CaptureStdout out;
    v.regularGridDecomposition3D(0.0, 1.0, 1.0);
    EXPECT_EQ(out.lines().at(0).rfind("ERROR! Cell edges must be positive and finite", 0), 0u);
    EXPECT_EQ(vxtest::engine(v).grid.groupCount, 0);
}

TEST_P(Decomposition, HostKeepsThePointsInInputOrder)
{
    Vexaro<float> v;
    configure(v, GetParam());
    auto pts = randomCloud<float>(500, 10, 10, 10, 9);
    v.loadDirectData(pts.data(), 500);
    decomposeQuietly(v, 1, 1, 1);
    auto back = points(v);
    ASSERT_EQ(back.size(), pts.size());
    for (size_t i = 0; i < pts.size(); ++i) {
        EXPECT_EQ(back[i].x, pts[i].x);
        EXPECT_EQ(back[i].classification, pts[i].classification);
    }
}

TEST_P(Decomposition, ResultsOnTheBackendReachTheHostRecords)
{
    Vexaro<float> v;
    configure(v, GetParam());
    auto pts = randomCloud<float>(64, 4, 4, 4, 8);
    v.loadDirectData(pts.data(), 64);
    auto table = allowTable({1});
    v.set_AllowedInputClasses(table.data(), 256);
    decomposeQuietly(v, 1, 1, 1);
    {
        CaptureStdout quiet;
        v.resetPointCloudClasses(5);
    }
    const auto back = points(v);
    ASSERT_EQ(back.size(), pts.size());
    for (std::size_t i = 0; i < pts.size(); ++i) {
        EXPECT_EQ(back[i].classification, 5);
        EXPECT_EQ(back[i].x, pts[i].x); // coordinates keep the records' values
    }
}

TEST_P(Decomposition, ArraysOfAnEarlierCloudLeaveANewOneAsLoaded)
{
    Vexaro<float> v;
    configure(v, GetParam());
    auto first = randomCloud<float>(64, 4, 4, 4, 8);
    v.loadDirectData(first.data(), 64);
    auto table = allowTable({1, 3});
    v.set_AllowedInputClasses(table.data(), 256);
    decomposeQuietly(v, 1, 1, 1);
    auto second = randomCloud<float>(64, 4, 4, 4, 9);
    for (auto& p : second)
        p.classification = 3;
    v.loadDirectData(second.data(), 64);
    {
        CaptureStdout quiet;
        v.resetPointCloudClasses(5); // no decomposition of the new cloud yet
    }
    EXPECT_EQ(classes(v), std::vector<int>(64, 3));
}

INSTANTIATE_TEST_SUITE_P(Grid, Decomposition, ::testing::ValuesIn(allSettings()), settingName);

TEST(DecompositionLayouts, FieldAndRecordLayoutsGiveIdenticalLinksAndRuns)
{
    struct Shape {
        int n;
        float ex, ey, ez;
        double edge;
    };
    for (const Shape s : {Shape{50, 5, 5, 5, 1.0}, Shape{2000, 100, 20, 3, 1.5},
                          Shape{20000, 40, 40, 40, 2.0}, Shape{777, 0.0f, 10, 10, 0.5}}) {
        auto pts = randomCloud<float>(s.n, s.ex, s.ey, s.ez, static_cast<unsigned>(s.n));
        Vexaro<float> aos, soa;
        configure(aos, {"cpu", false});
        configure(soa, {"cpu", true});
        aos.loadDirectData(pts.data(), s.n);
        soa.loadDirectData(pts.data(), s.n);
        decomposeQuietly(aos, s.edge, s.edge, s.edge);
        decomposeQuietly(soa, s.edge, s.edge, s.edge);
        const auto& a = vxtest::engine(aos);
        const auto& b = vxtest::engine(soa);
        ASSERT_EQ(a.grid.groupCount, b.grid.groupCount);
        const auto index = a.grid.copyIndex();
        const auto groups = a.grid.copyGroups();
        const auto fields = b.grid.copyFields();
        ASSERT_EQ(index.size(), static_cast<std::size_t>(s.n));
        ASSERT_EQ(fields.pointIndex.size(), static_cast<std::size_t>(s.n));
        for (int j = 0; j < s.n; ++j) {
            ASSERT_EQ(index[j].pointIndex, fields.pointIndex[j]);
            ASSERT_EQ(index[j].group, fields.group[j]);
        }
        ASSERT_EQ(groups.size(), static_cast<std::size_t>(a.grid.groupCount));
        ASSERT_EQ(fields.start.size(), static_cast<std::size_t>(a.grid.groupCount));
        for (int c = 0; c < a.grid.groupCount; ++c) {
            ASSERT_EQ(groups[c].start, fields.start[c]);
            ASSERT_EQ(groups[c].end, fields.end[c]);
            ASSERT_EQ(groups[c].count, fields.count[c]);
        }
    }
}

TEST(DecompositionLayouts, FieldLayoutUploadsFieldArraysOnly)
{
    Vexaro<float> v;
    configure(v, {"cpu", true});
    auto pts = randomCloud<float>(64, 4, 4, 4, 8);
    v.loadDirectData(pts.data(), 64);
    decomposeQuietly(v, 1, 1, 1);
    const auto& e = vxtest::engine(v);
    EXPECT_TRUE(e.store.deviceRecords.empty());
    EXPECT_EQ(e.store.deviceFields.x.size(), 64u);
    EXPECT_EQ(e.store.deviceFields.classification.size(), 64u);
    EXPECT_EQ(e.store.deviceFields.lastReturn.size(), 64u);
    EXPECT_EQ(e.store.records.size(), 64u);
}

TEST(DecompositionLayouts, RecordLayoutUploadsRecordsOnly)
{
    Vexaro<float> v;
    configure(v, {"cpu", false});
    auto pts = randomCloud<float>(64, 4, 4, 4, 8);
    v.loadDirectData(pts.data(), 64);
    decomposeQuietly(v, 1, 1, 1);
    const auto& e = vxtest::engine(v);
    EXPECT_EQ(e.store.deviceRecords.size(), 64u);
    EXPECT_FALSE(static_cast<bool>(e.store.deviceFields));
}

TEST(DecompositionLayouts, ChangingTheLayoutDropsTheArraysOfTheOther)
{
    Vexaro<float> v;
    configure(v, {"cpu", true});
    auto pts = randomCloud<float>(64, 4, 4, 4, 8);
    v.loadDirectData(pts.data(), 64);
    decomposeQuietly(v, 1, 1, 1);
    v.set_SoA(false);
    decomposeQuietly(v, 1, 1, 1);
    const auto& e = vxtest::engine(v);
    EXPECT_EQ(e.store.deviceRecords.size(), 64u);
    EXPECT_FALSE(static_cast<bool>(e.store.deviceFields));
    v.set_SoA(true);
    decomposeQuietly(v, 1, 1, 1);
    EXPECT_TRUE(e.store.deviceRecords.empty());
    EXPECT_EQ(e.store.deviceFields.x.size(), 64u);
}
