// Height index of points within their cell.
#include "features/FeatureTestSupport.h"

using namespace vxtest;

namespace {

/// Height indices (by point) after a cubic decomposition of edge `cell`, with an optional
/// allowed-classes table.
template <class T>
std::vector<float> heightIndices(Vexaro<T>& v, std::vector<VX_Point<T>> pts, double cell,
                                 std::vector<int> table = {})
{
    CaptureStdout quiet;
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    if (!table.empty())
        v.set_AllowedInputClasses(table.data(), static_cast<int>(table.size()));
    v.regularGridDecomposition3Dcube(cell);
    v.calculateHeightIndex(8);
    std::vector<float> out;
    for (const auto& p : points(v))
        out.push_back(p.heightIndex);
    return out;
}

/// The coordinate a kernel reads: float in the per-field layout.
template <class T> T coord(double z, bool soa)
{
    return soa ? T(float(z)) : T(z);
}

/// The index of z between lo and hi as the kernel forms it: in T, stored as float.
template <class T> float expectedIndex(double z, double lo, double hi, bool soa)
{
    T h = (coord<T>(z, soa) - coord<T>(lo, soa)) / (coord<T>(hi, soa) - coord<T>(lo, soa));
    return float(h < T(0) ? T(0) : h);
}

} // namespace

class HeightIndexCase : public SettingTest {};

TEST_P(HeightIndexCase, RelativeHeightBetweenTheLowestAndHighestPointOfTheCell)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        const bool soa = GetParam().soa;
        // Two cells of edge 10: three points in the first, two in the second.
        std::vector<VX_Point<T>> pts{point<T>(0, 0, 0.1), point<T>(1, 0, 0.2), point<T>(0, 1, 0.7),
                                     point<T>(15, 0, 3), point<T>(16, 0, 5)};
        Vexaro<T> v;
        configure(v, GetParam());
        const auto hi = heightIndices(v, pts, 10.0);
        EXPECT_EQ(hi[0], 0.0f);
        EXPECT_EQ(hi[1], expectedIndex<T>(0.2, 0.1, 0.7, soa));
        EXPECT_EQ(hi[2], 1.0f);
        EXPECT_EQ(hi[3], 0.0f);
        EXPECT_EQ(hi[4], 1.0f);
    });
}

TEST_P(HeightIndexCase, EqualHeightsHaveNoSpan)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        std::vector<VX_Point<T>> pts;
        for (int i = 0; i < 6; ++i)
            pts.push_back(point<T>(T(i), T(i % 2), T(3)));
        Vexaro<T> v;
        configure(v, GetParam());
        for (float h : heightIndices(v, pts, 100.0))
            EXPECT_EQ(h, 1.01f);
    });
}

TEST_P(HeightIndexCase, OneAdmittedPointHasNoSpan)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        std::vector<VX_Point<T>> pts{point<T>(0, 0, 1, 1), point<T>(1, 0, 2, 4), point<T>(2, 0, 3, 4)};
        Vexaro<T> v;
        configure(v, GetParam());
        for (float h : heightIndices(v, pts, 100.0, allowTable({1})))
            EXPECT_EQ(h, 1.01f);
        Vexaro<T> alone;
        configure(alone, GetParam());
        EXPECT_EQ(heightIndices(alone, {point<T>(4, 4, 4)}, 1.0)[0], 1.01f);
    });
}

TEST_P(HeightIndexCase, PointsNotAdmittedGetTheMarkWhateverTheirHeight)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        // Class 9 is not admitted: neither its low nor its high point widens the span.
        std::vector<VX_Point<T>> pts{point<T>(0, 0, 2, 1), point<T>(1, 0, 6, 1),  point<T>(2, 0, -50, 9),
                                     point<T>(3, 0, 4, 9), point<T>(4, 0, 90, 9), point<T>(5, 0, 3, 1)};
        Vexaro<T> v;
        configure(v, GetParam());
        const auto hi = heightIndices(v, pts, 1000.0, allowTable({1}));
        EXPECT_EQ(hi, (std::vector<float>{0.0f, 1.0f, 1.01f, 1.01f, 1.01f, 0.25f}));
    });
}

TEST_P(HeightIndexCase, NegativeTableEntriesCountForTheSpanButGetTheMark)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        auto table = allowTable({1});
        table[3] = -1;
        std::vector<VX_Point<T>> pts{point<T>(0, 0, 0, 1), point<T>(1, 0, 5, 1), point<T>(2, 0, 10, 3)};
        Vexaro<T> v;
        configure(v, GetParam());
        EXPECT_EQ(heightIndices(v, pts, 1000.0, table), (std::vector<float>{0.0f, 0.5f, 1.01f}));
    });
}

TEST_P(HeightIndexCase, From2000PointsACellIsSampledAtEverySecondPosition)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        const bool soa = GetParam().soa;
        for (int n : {1999, 2000}) {
            // One cell; the highest and the lowest point sit at odd positions (1 and 3), which a
            // step of 2 passes over. Even positions lie at 1 or 1.5, odd ones at 1.25 or 1.75.
            std::vector<VX_Point<T>> pts;
            for (int j = 0; j < n; ++j) {
                double z = 1.0 + (j % 4) * 0.25;
                if (j == 1)
                    z = 10.0;
                if (j == 3)
                    z = 0.0;
                pts.push_back(point<T>(T((j % 50) * 0.2), T((j / 50) * 0.2), T(z)));
            }
            Vexaro<T> v;
            configure(v, GetParam());
            const auto hi = heightIndices(v, pts, 1000.0);
            const double lo = n < 2000 ? 0.0 : 1.0, top = n < 2000 ? 10.0 : 1.5;
            for (int j = 0; j < n; ++j)
                ASSERT_EQ(hi[j], expectedIndex<T>(pts[j].z, lo, top, soa)) << n << " " << j;
            if (n == 1999) {
                EXPECT_EQ(hi[1], 1.0f);
                EXPECT_EQ(hi[3], 0.0f);
                EXPECT_EQ(hi[5], 0.125f);
            } else {
                EXPECT_EQ(hi[1], 18.0f); // above the sampled maximum: no upper clamp
                EXPECT_EQ(hi[3], 0.0f);  // below the sampled minimum: clamped
                EXPECT_EQ(hi[7], 1.5f);
            }
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Features, HeightIndexCase, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
