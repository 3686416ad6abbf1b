// Low-point correction: the per-cell ground model, its spreading, the filter and the messages.
#include "ground/GroundTestSupport.h"
#include "steps/ground/GroundModel.h"

using namespace vxtest;
using namespace groundtest;

namespace {

class LowPointCorrection : public SettingTest {};

template <class T> Lines correct(Vexaro<T>& v, int ground = 2, int candidate = 8, int replacement = 1)
{
    CaptureStdout out;
    v.performLowPointCorrection(ground, candidate, replacement);
    return driverLines(out);
}

template <class T> void tangentPlaneOfAnyGroundPointDecides(const Setting& s)
{
    // Five below the ground point at the origin; the second ground point's plane lies below the
    // candidate, so that one alone makes it no low point. The filter ignores the admission table.
    std::vector<VX_Point<T>> pts{up<T>(0, 0, 0, 2), up<T>(T(0.5), 0, -5, 8), up<T>(T(0.2), 0, -9, 5)};
    Vexaro<T> v;
    load<T>(v, s, pts, 2.0, true);
    allow(v, {1});
    correct(v);
    EXPECT_EQ(classes(v), (std::vector<int>{2, 8, 5}));

    pts.push_back(up<T>(1, 0, -6, 2));
    Vexaro<T> w;
    load<T>(w, s, pts, 2.0, true);
    correct(w);
    EXPECT_EQ(classes(w), (std::vector<int>{2, 1, 5, 2}));
}

template <class T> void exactlyRangeBelowIsNoLowPoint(const Setting& s)
{
    // Cell 0 holds the ground point, cell 1 none: its model is spread from cell 0. In each cell
    // one candidate exactly 1 below, one 1.5 below.
    Vexaro<T> v;
    load<T>(v, s,
            {up<T>(T(0.5), T(0.5), 0, 2), up<T>(T(0.625), T(0.5), -1, 8), up<T>(T(0.75), T(0.5), T(-1.5), 8),
             up<T>(T(1.5), T(0.5), -1, 8), up<T>(T(1.625), T(0.5), T(-1.5), 8)},
            1.0, true);
    correct(v);
    EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 8, 1, 8}));
    v.set_LowPointFilteringRange(T(0.5));
    correct(v, 2, 8, 3);
    EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 8, 1, 8}));
    v.set_LowPointFilteringRange(T(2));
    correct(v, 2, 8, 3);
    EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 3, 1, 3}));
}

template <class T> void withoutGroundEveryCandidateIsReplaced(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s,
            {up<T>(T(0.5), T(0.5), 0, 8), up<T>(T(1.5), T(0.5), -3, 8), up<T>(T(2.5), T(0.5), -10, 8),
             up<T>(T(2.5), T(0.5), -20, 5)},
            1.0, true, 4);
    EXPECT_EQ(correct(v),
              (Lines{"Threads:  256", "Blocks:  1", "Gathering ground info: 2", "Groups: 3", "Info spread 3",
                     "Info spread:  3", "Groups:  3", "Filtering low points:  1"}));
    EXPECT_EQ(classes(v), (std::vector<int>{1, 1, 1, 5}));
}

template <class T> void zeroNormalGroundCountsAsNoGround(const Setting& s, bool zeroNormals)
{
    // Cell 0 ground, cell 1 ground (with or without normals), cell 2 only a candidate.
    Vexaro<T> v;
    auto middle = up<T>(T(1.5), T(0.5), 0, 2);
    if (zeroNormals)
        middle.nz = 0;
    load<T>(v, s, {up<T>(T(0.5), T(0.5), 0, 2), middle, up<T>(T(2.5), T(0.5), -5, 8)}, 1.0, true, 4);
    const Lines lines = correct(v);
    if (zeroNormals) {
        EXPECT_EQ(lines,
                  (Lines{"Threads:  256", "Blocks:  1", "Gathering ground info: 2", "Groups: 3",
                         "Info spread 2", "Info spread:  2", "Groups:  3", "Filtering low points:  1"}));
        EXPECT_EQ(classes(v), (std::vector<int>{2, 2, 1}));
    } else {
        EXPECT_EQ(lines,
                  (Lines{"Threads:  256", "Blocks:  1", "Gathering ground info: 2", "Groups: 3",
                         "Info spread 1", "Info spread:  0", "Groups:  3", "Filtering low points:  1"}));
        EXPECT_EQ(classes(v), (std::vector<int>{2, 2, 8}));
    }
}

template <class T> void allGroundMeansNoSpreading(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, {up<T>(T(0.5), T(0.5), 0, 2), up<T>(T(1.5), T(0.5), -3, 2), up<T>(T(1.5), T(0.5), -5, 8)},
            1.0, true, 4);
    EXPECT_EQ(correct(v), (Lines{"Threads:  256", "Blocks:  1", "Gathering ground info: 2", "Groups: 2",
                                 "Info spread 0", "Filtering low points:  1"}));
    EXPECT_EQ(classes(v), (std::vector<int>{2, 2, 8}));
    v.setMessageLevel(3);
    EXPECT_EQ(correct(v, 2, 8, 7), (Lines{"Threads:  256", "Blocks:  1"}));
}

template <class T> void modelIsKeptAndReplacedByTheNextCall(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s,
            {point<T>(T(0.5), T(0.5), 0, 2, 1, 0, 0, 1),
             point<T>(T(0.75), T(0.5), T(0.25), 2, 1, 0, T(0.5), T(0.75)), up<T>(T(1.5), T(0.5), -5, 8)},
            1.0, true);
    correct(v);
    auto& c = vxtest::engine(v);
    const auto& model = c.stepStates.template get<vx::GroundModelState<T>>();
    ASSERT_EQ(c.grid.groupCount, 2);
    struct Cell {
        double x, y, z, nx, ny, nz;
        bool has;
    };
    auto cell = [&](int g) {
        if (c.store.fieldsLayout) {
            const auto& m = model.groundModelSoA;
            return Cell{m.x.data()[g],  m.y.data()[g],  m.z.data()[g],        m.nx.data()[g],
                        m.ny.data()[g], m.nz.data()[g], m.hasGround.data()[g]};
        }
        const auto& m = model.groundModel.data()[g];
        return Cell{double(m.x),  double(m.y),  double(m.z), double(m.nx),
                    double(m.ny), double(m.nz), m.hasGround};
    };
    const Cell own = cell(0), filled = cell(1);
    EXPECT_EQ(own.x, 0.625);
    EXPECT_EQ(own.y, 0.5);
    EXPECT_EQ(own.z, 0.125);
    EXPECT_EQ(own.nx, 0.0);
    EXPECT_EQ(own.ny, 0.25);
    EXPECT_EQ(own.nz, 0.875);
    EXPECT_TRUE(own.has);
    EXPECT_EQ(filled.x, 1.5); // the cell's lower corner
    EXPECT_EQ(filled.y, 0.5);
    EXPECT_EQ(filled.z, 0.125);
    EXPECT_EQ(filled.ny, 0.25);
    EXPECT_EQ(filled.nz, 0.875);
    EXPECT_TRUE(filled.has);
    EXPECT_EQ(c.store.fieldsLayout ? model.groundModelSoA.x.size() : model.groundModel.size(), 2u);

    // Another grid: the next call frees the old model and builds one of the new size.
    {
        CaptureStdout quiet;
        v.regularGridDecomposition2D(0.25, 0.25);
    }
    correct(v);
    EXPECT_EQ(c.store.fieldsLayout ? model.groundModelSoA.x.size() : model.groundModel.size(),
              static_cast<std::size_t>(c.grid.groupCount));
    EXPECT_GT(c.grid.groupCount, 2);
}

template <class T> void tooLittleMemoryAborts(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, {up<T>(T(0.5), T(0.5), 0, 2), up<T>(T(1.5), T(0.5), T(-0.5), 8)}, 1.0, true, 0);
    const std::size_t need = 2 * sizeof(VX_GroundModel<T>);
    vxtest::engine(v).freeMemoryCap = need; // the need must lie strictly below the free memory
    EXPECT_EQ(correct(v), (Lines{"Threads:  256", "Blocks:  1",
                                 "ERROR! Low point correction aborted - too little memory! "}));
    EXPECT_EQ(classes(v), (std::vector<int>{2, 8}));
    const auto& model = vxtest::engine(v).stepStates.template get<vx::GroundModelState<T>>();
    EXPECT_TRUE(model.groundModel.empty());
    EXPECT_TRUE(model.groundModelSoA.x.empty());
    vxtest::engine(v).freeMemoryCap = need + 1;
    EXPECT_EQ(correct(v), (Lines{"Threads:  256", "Blocks:  1"}));
    EXPECT_EQ(classes(v), (std::vector<int>{2, 1}));
}

template <class T> void cellsBeyondThePointLaunchAreNotProcessed(const Setting& s, int threads)
{
    // Three points over eleven cells. With one thread a block the per-cell kernels cover only
    // blocks x threads = 4 cells; cell 10, with the ground and the candidate, is never modelled.
    Vexaro<T> v;
    load<T>(v, s, {up<T>(T(0.5), T(0.5), 0, 2), up<T>(T(10.5), T(0.5), 0, 2), up<T>(T(10.6), T(0.5), -5, 8)},
            1.0, true);
    v.set_Threads(threads);
    const Lines lines = correct(v);
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[1], "Blocks:  " + std::to_string(3 / threads + 1));
    EXPECT_EQ(vxtest::engine(v).grid.groupCount, 11);
    EXPECT_EQ(classes(v), (std::vector<int>{2, 2, threads == 1 ? 1 : 8}));
}

template <class T> void deviceErrorIsReported(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, {up<T>(T(0.5), T(0.5), 0, 2), up<T>(T(1.5), T(0.5), -5, 8)}, 1.0, true, 1);
    std::vector<int> codes;
    v.setDeviceErrorHandler([&](int code) { codes.push_back(code); });
    vxtest::engine(v).pendingError = 77;
    EXPECT_EQ(correct(v), (Lines{"Threads:  256", "Blocks:  1", "ERROR! CUDA returned code:  77"}));
    EXPECT_EQ(codes, std::vector<int>{77});
    EXPECT_EQ(classes(v), (std::vector<int>{2, 8}));
}

} // namespace

TEST_P(LowPointCorrection, TheTangentPlaneOfAnyGroundPointOfTheCellDecides)
{
    tangentPlaneOfAnyGroundPointDecides<float>(GetParam());
    tangentPlaneOfAnyGroundPointDecides<double>(GetParam());
}

TEST_P(LowPointCorrection, ACandidateExactlyRangeBelowIsNoLowPoint)
{
    exactlyRangeBelowIsNoLowPoint<float>(GetParam());
    exactlyRangeBelowIsNoLowPoint<double>(GetParam());
}

TEST_P(LowPointCorrection, WithoutGroundEveryCandidateIsReplaced)
{
    withoutGroundEveryCandidateIsReplaced<float>(GetParam());
    withoutGroundEveryCandidateIsReplaced<double>(GetParam());
}

TEST_P(LowPointCorrection, ACellWhoseGroundHasZeroNormalsCountsAsWithoutGround)
{
    for (bool zero : {true, false}) {
        zeroNormalGroundCountsAsNoGround<float>(GetParam(), zero);
        zeroNormalGroundCountsAsNoGround<double>(GetParam(), zero);
    }
}

TEST_P(LowPointCorrection, NoSpreadingWhenEveryCellHasGround)
{
    allGroundMeansNoSpreading<float>(GetParam());
    allGroundMeansNoSpreading<double>(GetParam());
}

TEST_P(LowPointCorrection, TheModelStaysInTheEngineUntilTheNextCall)
{
    if (GetParam().backend != "cpu")
        GTEST_SKIP() << "reads the model in place";
    modelIsKeptAndReplacedByTheNextCall<float>(GetParam());
    modelIsKeptAndReplacedByTheNextCall<double>(GetParam());
}

TEST_P(LowPointCorrection, TooLittleMemoryAbortsBeforeAnyChange)
{
    tooLittleMemoryAborts<float>(GetParam());
    tooLittleMemoryAborts<double>(GetParam());
}

TEST_P(LowPointCorrection, CellsBeyondThePointLaunchSizeAreNotProcessed)
{
    for (int threads : {1, 256}) {
        cellsBeyondThePointLaunchAreNotProcessed<float>(GetParam(), threads);
        cellsBeyondThePointLaunchAreNotProcessed<double>(GetParam(), threads);
    }
}

TEST_P(LowPointCorrection, ADeviceErrorIsReportedAndTheStepGoesOn)
{
    deviceErrorIsReported<float>(GetParam());
    deviceErrorIsReported<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, LowPointCorrection, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
