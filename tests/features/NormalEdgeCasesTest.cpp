// Normals and shape classes on small clouds whose answer is known exactly.
#include "features/FeatureTestSupport.h"

using namespace vxtest;

namespace {

template <class T> using Cloud = std::vector<VX_Point<T>>;

/// A cols x rows grid of points at height z, spacing dx by dy, starting at (x0, y0).
template <class T>
Cloud<T> grid(int cols, int rows, double dx, double dy, double z, double x0 = 0, double y0 = 0)
{
    Cloud<T> pts;
    for (int r = 0; r < rows; ++r)
        for (int k = 0; k < cols; ++k)
            pts.push_back(point<T>(T(x0 + k * dx), T(y0 + r * dy), T(z)));
    return pts;
}

/// What the means hold after the per-field layout stored them as float.
template <class T> T stored(T value, bool soa)
{
    return soa ? T(float(value)) : value;
}

constexpr int kPlanar = 5, kScatter = 6, kLinear = 7;

} // namespace

class NormalEdgeCases : public SettingTest {};

TEST_P(NormalEdgeCases, ExactlyTheMinimalNumberOfNeighboursGivesAMeanButAZeroNormal)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        // Three points that see each other (MinimalNumberOfNN = 3), and a square of four apart.
        Cloud<T> pts{point<T>(0, 0, 0),   point<T>(1, 0, 0),   point<T>(0, 1, 0),  point<T>(10, 10, 0),
                     point<T>(11, 10, 0), point<T>(10, 11, 0), point<T>(11, 11, 0)};
        Vexaro<T> v;
        configure(v, GetParam());
        const auto out = normalsOf(v, pts);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(out[i].nx, T(0));
            EXPECT_EQ(out[i].ny, T(0));
            EXPECT_EQ(out[i].nz, T(0));
            EXPECT_EQ(out[i].classification, 1);
        }
        for (int i = 3; i < 7; ++i) {
            EXPECT_EQ(out[i].nx, T(0));
            EXPECT_EQ(out[i].ny, T(0));
            EXPECT_EQ(out[i].nz, T(1));
        }
        if (GetParam().backend != "cpu")
            return;
        const auto means = phaseOneMeans(v, 1.5);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(means[i].x, stored(T(1) / T(3), GetParam().soa));
            EXPECT_EQ(means[i].y, stored(T(1) / T(3), GetParam().soa));
            EXPECT_EQ(means[i].z, T(0));
        }
    });
}

TEST_P(NormalEdgeCases, ANeighbourExactlyAtTheRangeCountsForTheMeanOnly)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        // From the origin, (1.5, 0, 0) lies exactly at the range 1.5.
        Cloud<T> pts{point<T>(0, 0, 0), point<T>(1, 0, 0), point<T>(0, 1, 0), point<T>(1.5, 0, 0)};
        Vexaro<T> v;
        configure(v, GetParam());
        auto out = normalsOf(v, pts);
        EXPECT_EQ(out[0].nz, T(0)); // three strictly within range: not more than the minimum
        if (GetParam().backend == "cpu") {
            const auto means = phaseOneMeans(v, 1.5);
            EXPECT_EQ(means[0].x, T(0.625)); // all four: (2.5, 1, 0) / 4
            EXPECT_EQ(means[0].y, T(0.25));
            EXPECT_EQ(means[0].z, T(0));
        }
        v.set_MinimalNumberOfNN(2);
        out = normalsOf(v, pts);
        EXPECT_EQ(out[0].nx, T(0));
        EXPECT_EQ(out[0].ny, T(0));
        EXPECT_EQ(out[0].nz, T(1));
    });
}

TEST_P(NormalEdgeCases, HorizontalPatchFacesTheViewHeight)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        for (double z : {100.0, 20000.0}) {
            Vexaro<T> v;
            configure(v, GetParam());
            const auto out = normalsOf(v, grid<T>(7, 7, 0.5, 0.5, z));
            const T up = z < 10000.0 ? T(1) : T(-1);
            for (const auto& p : out) {
                EXPECT_EQ(p.nx, T(0)) << z;
                EXPECT_EQ(p.ny, T(0)) << z;
                EXPECT_EQ(p.nz, up) << z;
            }
            // The centre sees a full disc; border points see elongated parts of one.
            EXPECT_EQ(out[24].classification, kPlanar);
        }
    });
}

TEST_P(NormalEdgeCases, LineGetsTheLinearClassWhereAdmitted)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        Cloud<T> pts;
        for (int i = 0; i < 12; ++i)
            pts.push_back(point<T>(T(0.2 * i), T(0.1 * i), T(50 + 0.05 * i), i % 3 ? 1 : 9));
        Vexaro<T> v;
        configure(v, GetParam());
        auto table = allowTable({1});
        v.set_AllowedInputClasses(table.data(), 256);
        const auto out = normalsOf(v, pts);
        for (int i = 0; i < 12; ++i)
            EXPECT_EQ(out[i].classification, i % 3 ? kLinear : 9) << i;
    });
}

TEST_P(NormalEdgeCases, CollinearNeighboursStillGiveAUnitNormal)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        const double dirs[3][3] = {{0.25, 0, 0}, {0, 0, 0.25}, {0.2, 0.1, 0.05}};
        for (const auto& d : dirs) {
            Cloud<T> pts;
            for (int i = 0; i < 10; ++i)
                pts.push_back(point<T>(T(d[0] * i), T(d[1] * i), T(3 + d[2] * i)));
            Vexaro<T> v;
            configure(v, GetParam());
            const auto out = normalsOf(v, pts);
            const double dl = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
            for (const auto& p : out) {
                EXPECT_NEAR(length(p), 1.0, 1e-6);
                const double along = (p.nx * d[0] + p.ny * d[1] + p.nz * d[2]) / dl;
                EXPECT_NEAR(along, 0.0, 1e-5);
                EXPECT_GE(p.nz, T(0)); // turned upward, below the view height
                EXPECT_EQ(p.classification, kLinear);
            }
        }
    });
}

TEST_P(NormalEdgeCases, PlaneIsPlanarOnlyWhereTheLinearTestFails)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        // Nine columns 0.1 apart (variance 0.0667) and two rows h apart (variance h^2 / 4): the
        // second singular value is 0.6 of the first for h = 0.4, 0.23 of it for h = 0.25.
        for (double h : {0.4, 0.25}) {
            Vexaro<T> v;
            configure(v, GetParam());
            const auto out = normalsOf(v, grid<T>(9, 2, 0.1, h, 100.0));
            for (const auto& p : out)
                EXPECT_EQ(p.classification, h > 0.3 ? kPlanar : kLinear) << h;
        }
        // A tilted square patch is planar too.
        Cloud<T> tilted;
        for (int r = 0; r < 5; ++r)
            for (int k = 0; k < 5; ++k)
                tilted.push_back(point<T>(T(0.2 * k), T(0.2 * r), T(7 + 0.1 * k + 0.05 * r)));
        Vexaro<T> v;
        configure(v, GetParam());
        for (const auto& p : normalsOf(v, tilted))
            EXPECT_EQ(p.classification, kPlanar);
    });
}

TEST_P(NormalEdgeCases, VolumeIsScattered)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        Cloud<T> pts;
        for (int a = 0; a < 3; ++a)
            for (int b = 0; b < 3; ++b)
                for (int c = 0; c < 3; ++c)
                    pts.push_back(point<T>(T(0.4 * a), T(0.35 * b), T(20 + 0.3 * c)));
        Vexaro<T> v;
        configure(v, GetParam());
        for (const auto& p : normalsOf(v, pts)) {
            EXPECT_EQ(p.classification, kScatter);
            EXPECT_NEAR(length(p), 1.0, 1e-6);
        }
    });
}

TEST_P(NormalEdgeCases, PointsNotAdmittedKeepTheirClassButGetNormals)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        auto pts = grid<T>(5, 5, 0.2, 0.2, 100.0);
        for (auto& p : pts)
            p.classification = 2;
        Vexaro<T> v;
        configure(v, GetParam());
        auto table = allowTable({1});
        v.set_AllowedInputClasses(table.data(), 256);
        for (const auto& p : normalsOf(v, pts)) {
            EXPECT_EQ(p.classification, 2);
            EXPECT_EQ(p.nz, T(1));
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Features, NormalEdgeCases, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
