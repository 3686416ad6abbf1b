// Height above ground: a plane read back exactly, holes filled from their neighbours, file
// order kept across decompositions, no ground, and the refusals.
#include "height/HeightTestSupport.h"

#include <algorithm>
#include <limits>

using namespace vxtest;
using namespace heighttest;

namespace {

class HeightAboveGround : public SettingTest {};

/// Every point (not only ground) with a known height, spread over the whole extent, edges and
/// corners included.
template <class T> std::vector<VX_Point<T>> objectsOverPlane(std::vector<double>& truth)
{
    std::vector<VX_Point<T>> pts;
    const double where[][3] = {{0.0, 0.0, 0.5},  {40.0, 30.0, 12.0}, {0.0, 30.0, 3.0},   {40.0, 0.0, 0.2},
                               {13.3, 7.7, 1.5}, {20.1, 15.2, 25.0}, {39.9, 14.4, 0.05}, {7.25, 29.9, 8.0},
                               {31.6, 2.2, 4.4}, {25.5, 25.5, -0.3}};
    for (const auto& w : where) {
        pts.push_back(above<T>(w[0], w[1], w[2], plane));
        truth.push_back(w[2]);
    }
    return pts;
}

template <class T> void planeIsReadBackExactly(const Setting& s, double spacing, double cell)
{
    std::vector<double> truth;
    auto pts = objectsOverPlane<T>(truth);
    const std::size_t objects = pts.size();
    addGround<T>(pts, 40, 30, spacing, plane, [](double, double) { return false; });
    Vexaro<T> v;
    v.set_HeightAboveGroundCellSize(T(cell));
    const auto h = heights(v, s, pts);
    for (std::size_t i = 0; i < objects; ++i)
        EXPECT_NEAR(h[i], truth[i], 0.02) << "object " << i << " spacing " << spacing << " cell " << cell;
    double worst = 0;
    for (std::size_t i = objects; i < pts.size(); ++i)
        worst = std::max(worst, std::abs(double(h[i])));
    EXPECT_LT(worst, 0.02) << "ground points lie on the surface";
}

TEST_P(HeightAboveGround, SlopingPlaneIsReadBackWithinTwoCentimetres)
{
    for (double cell : {1.0, 2.5}) {
        planeIsReadBackExactly<float>(GetParam(), 0.5, cell);
        planeIsReadBackExactly<double>(GetParam(), 0.5, cell);
    }
    planeIsReadBackExactly<double>(GetParam(), 0.3, 1.0);
}

/// A 12 m square hole in the ground and a 3 m wide ground strip along one edge only: the hole is
/// filled by the rings, the far side by the nearest-value fill, and the relaxation puts both on
/// the plane the ground spans.
template <class T> void holesAreFilledFromTheNeighbours(const Setting& s)
{
    std::vector<VX_Point<T>> pts;
    std::vector<double> truth;
    const double inside[][2] = {{20, 15}, {15, 10}, {25.5, 19.5}, {14.2, 20.7}};
    for (const auto& w : inside) {
        pts.push_back(above<T>(w[0], w[1], 2.0, plane));
        truth.push_back(2.0);
    }
    addGround<T>(pts, 40, 30, 0.5, plane,
                 [](double x, double y) { return x > 14 && x < 26 && y > 9 && y < 21; });
    Vexaro<T> v;
    const auto h = heights(v, s, pts);
    for (std::size_t i = 0; i < truth.size(); ++i)
        EXPECT_NEAR(h[i], truth[i], 0.05) << "point in the hole " << i;

    // Flat ground only along x < 3 of a 200 m wide cloud: far points are still measured against it.
    std::vector<VX_Point<T>> strip;
    const auto flat = [](double, double) { return 7.0; };
    strip.push_back(above<T>(200, 10, 4.0, flat));
    strip.push_back(above<T>(120, 0, 1.0, flat));
    addGround<T>(strip, 3, 20, 0.5, flat, [](double, double) { return false; });
    Vexaro<T> w;
    const auto hs = heights(w, s, strip);
    EXPECT_NEAR(hs[0], 4.0, 1e-3);
    EXPECT_NEAR(hs[1], 1.0, 1e-3);
}

TEST_P(HeightAboveGround, HolesAreFilledFromTheNeighbours)
{
    holesAreFilledFromTheNeighbours<float>(GetParam());
    holesAreFilledFromTheNeighbours<double>(GetParam());
}

template <class T> void noGroundGivesNaN(const Setting& s)
{
    Vexaro<T> v;
    configure(v, s);
    std::vector<VX_Point<T>> pts = {point<T>(0, 0, 1, 1), point<T>(5, 5, 2, 3), point<T>(9, 1, 0, 6)};
    v.loadDirectData(pts.data(), 3);
    CaptureStdout out;
    v.computeHeightAboveGround(2);
    EXPECT_NE(out.text().find("ERROR! No ground points of class 2"), std::string::npos) << out.text();
    std::vector<float> h(3, 0.f);
    v.saveHeightAboveGroundToBuffer(h.data(), 3);
    for (float x : h)
        EXPECT_TRUE(std::isnan(x));
    // Nothing to tier against: every class stays.
    v.classifyByHeightAboveGround(3, 4, 5);
    EXPECT_EQ(classes(v), (std::vector<int>{1, 3, 6}));
}

TEST_P(HeightAboveGround, NoGroundGivesNaNHeights)
{
    noGroundGivesNaN<float>(GetParam());
    noGroundGivesNaN<double>(GetParam());
}

/// After a decomposition the steps run on links sorted by cell; the heights still come out in
/// the order the points were given.
template <class T> void fileOrderSurvivesDecomposition(const Setting& s)
{
    std::vector<VX_Point<T>> pts;
    std::vector<double> truth;
    // A regular ground grid over [0, 30] x [0, 20] in a scrambled order, interleaved with objects,
    // so that no order by cell matches the given order.
    std::vector<VX_Point<T>> ground;
    addGround<T>(ground, 30, 20, 0.5, plane, [](double, double) { return false; });
    const std::size_t g = ground.size(); // 61 x 41, coprime with the stride below
    std::size_t next = 0;
    for (int k = 0; k < 60; ++k) {
        const double x = (k * 37) % 60 * 0.5, y = (k * 11) % 40 * 0.5, hgt = 0.1 * k;
        pts.push_back(above<T>(x, y, hgt, plane, k % 2 ? 1 : 5));
        truth.push_back(hgt);
        for (std::size_t j = 0; j < g / 60 + 1 && next < g; ++j, ++next) {
            pts.push_back(ground[(next * 1009) % g]);
            truth.push_back(0.0);
        }
    }
    Vexaro<T> v;
    configure(v, s);
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    CaptureStdout quiet;
    v.regularGridDecomposition2D(3.0, 3.0);
    v.computeHeightAboveGround(2);
    std::vector<float> h(pts.size());
    v.saveHeightAboveGroundToBuffer(h.data(), static_cast<int>(h.size()));
    for (std::size_t i = 0; i < pts.size(); ++i)
        ASSERT_NEAR(h[i], truth[i], 0.02) << "point " << i;
    // The step leaves the grid of the decomposition usable and the classes untouched.
    v.resetPointCloudClasses(1);
    for (int c : classes(v))
        EXPECT_EQ(c, 1);
}

TEST_P(HeightAboveGround, HeightsAreInFileOrderAfterADecomposition)
{
    fileOrderSurvivesDecomposition<float>(GetParam());
    fileOrderSurvivesDecomposition<double>(GetParam());
}

template <class T> void tiersFollowTheLimits(const Setting& s)
{
    std::vector<VX_Point<T>> pts;
    const double hs[] = {0.1, 0.39, 0.41, 1.5, 1.99, 2.01, 9.0};
    for (int k = 0; k < 7; ++k)
        pts.push_back(above<T>(2.0 + 4 * k, 10, hs[k], plane, 1));
    pts.push_back(above<T>(5, 5, 5.0, plane, 6)); // not admitted: stays a building
    addGround<T>(pts, 30, 20, 0.5, plane, [](double, double) { return false; });
    Vexaro<T> v;
    heights(v, s, pts);
    const std::vector<int> table = allowTable({1});
    v.set_AllowedInputClasses(const_cast<int*>(table.data()), static_cast<int>(table.size()));
    CaptureStdout quiet;
    v.classifyByHeightAboveGround(3, 4, 5);
    auto c = classes(v);
    EXPECT_EQ(std::vector<int>(c.begin(), c.begin() + 8), (std::vector<int>{3, 3, 4, 4, 4, 5, 5, 6}));
    EXPECT_EQ(c[8], 2) << "ground is not admitted";

    v.set_VegetationLowLimit(T(1.0));
    v.set_VegetationHighLimit(T(5.0));
    v.set_AllowedInputClasses(const_cast<int*>(allowTable({3, 4, 5}).data()), 256);
    v.classifyByHeightAboveGround(13, 14, 15);
    c = classes(v);
    EXPECT_EQ(std::vector<int>(c.begin(), c.begin() + 8), (std::vector<int>{13, 13, 13, 14, 14, 14, 15, 6}));
}

TEST_P(HeightAboveGround, TiersFollowTheVegetationLimits)
{
    tiersFollowTheLimits<float>(GetParam());
    tiersFollowTheLimits<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, HeightAboveGround, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);

TEST(HeightAboveGroundLimits, AnAbsurdRasterIsRefusedWithItsExtentAndCellSize)
{
    Vexaro<double> v;
    configure(v, {"cpu", true});
    std::vector<VX_Point<double>> pts = {point<double>(0, 0, 0, 2), point<double>(200000, 150000, 0, 2)};
    v.loadDirectData(pts.data(), 2);
    v.set_HeightAboveGroundCellSize(0.01);
    CaptureStdout out;
    v.computeHeightAboveGround(2);
    const std::string text = out.text();
    EXPECT_NE(text.find("ERROR! Height above ground raster too large"), std::string::npos) << text;
    EXPECT_NE(text.find("extent 200000 x 150000 at cell size 0.01"), std::string::npos) << text;
    std::vector<float> h(2, 0.f);
    v.saveHeightAboveGroundToBuffer(h.data(), 2);
    EXPECT_TRUE(std::isnan(h[0]) && std::isnan(h[1]));
    EXPECT_NE(out.text().find("run computeHeightAboveGround first"), std::string::npos);

    // The same cloud with cells the raster can hold.
    v.set_HeightAboveGroundCellSize(1000.0);
    v.computeHeightAboveGround(2);
    v.saveHeightAboveGroundToBuffer(h.data(), 2);
    EXPECT_NEAR(h[0], 0.0, 1e-6);
    EXPECT_NEAR(h[1], 0.0, 1e-6);
}

TEST(HeightAboveGroundLimits, AStrayPointFarFromTheGroundReadsTheSurfaceAtItsEdge)
{
    // Ground over 10 m x 10 m rising 0.1 m a metre in x, and one other point 1,000 km away: the
    // raster spans the ground only, and the stray point reads the height at the raster's edge
    // (x = 10 m: 1 m) rather than a slope extrapolated over 1,000 km.
    Vexaro<double> v;
    configure(v, {"cpu", true});
    std::vector<VX_Point<double>> pts;
    for (int i = 0; i <= 10; ++i)
        for (int j = 0; j <= 10; ++j)
            pts.push_back(point<double>(i, j, 0.1 * i, 2));
    pts.push_back(point<double>(1.0e6, 5, 7, 1));
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    CaptureStdout out;
    v.computeHeightAboveGround(2);
    std::vector<float> h(pts.size(), 0.f);
    v.saveHeightAboveGroundToBuffer(h.data(), static_cast<int>(h.size()));
    EXPECT_EQ(out.text().find("ERROR"), std::string::npos) << out.text();
    EXPECT_NEAR(h.back(), 6.0, 0.05);
    for (std::size_t i = 0; i + 1 < h.size(); ++i)
        ASSERT_NEAR(h[i], 0.0, 0.02) << i;
}

TEST(HeightAboveGroundLimits, CellSizeOutsideItsRangeRefusesBothSteps)
{
    for (double bad : {0.0, -1.0, 0.001, 5000.0, std::numeric_limits<double>::quiet_NaN()}) {
        Vexaro<double> v;
        configure(v, {"cpu", true});
        std::vector<VX_Point<double>> pts = {point<double>(0, 0, 0, 2), point<double>(1, 1, 3, 1)};
        v.loadDirectData(pts.data(), 2);
        v.set_HeightAboveGroundCellSize(bad);
        CaptureStdout out;
        v.computeHeightAboveGround(2);
        EXPECT_NE(out.text().find("ERROR! Parameter out of range, step not run: HeightAboveGroundCellSize"),
                  std::string::npos)
            << out.text();
        v.classifyByHeightAboveGround(3, 4, 5);
        EXPECT_EQ(classes(v), (std::vector<int>{2, 1}));
    }
    Vexaro<float> f;
    EXPECT_FLOAT_EQ(f.get_HeightAboveGroundCellSize(), 1.0f);
    configure(f, {"cpu", true});
    std::vector<VX_Point<float>> pts = {point<float>(0, 0, 0, 2), point<float>(1, 1, 3, 1)};
    f.loadDirectData(pts.data(), 2);
    f.set_VegetationHighLimit(std::numeric_limits<float>::infinity());
    CaptureStdout out;
    f.computeHeightAboveGround(2);
    EXPECT_NE(out.text().find("VegetationHighLimit"), std::string::npos) << out.text();
}

TEST(HeightAboveGroundLimits, HeightsBelongToTheCloudTheyWereComputedFor)
{
    Vexaro<float> v;
    configure(v, {"cpu", true});
    std::vector<VX_Point<float>> pts = {point<float>(0, 0, 0, 2), point<float>(1, 1, 3, 1)};
    v.loadDirectData(pts.data(), 2);
    CaptureStdout out;
    v.computeHeightAboveGround(2);
    std::vector<float> h(2);
    v.saveHeightAboveGroundToBuffer(h.data(), 2);
    EXPECT_NEAR(h[1], 3.0f, 1e-5f);
    // Another cloud of the same size: the old heights are not handed out for it.
    pts[1].z = 7;
    v.loadDirectData(pts.data(), 2);
    v.saveHeightAboveGroundToBuffer(h.data(), 2);
    EXPECT_TRUE(std::isnan(h[1]));
    v.computeHeightAboveGround(2);
    v.saveHeightAboveGroundToBuffer(h.data(), 2);
    EXPECT_NEAR(h[1], 7.0f, 1e-5f);
    // A buffer of the wrong size is refused and left as it is.
    std::vector<float> shortBuffer(1, -1.f);
    v.saveHeightAboveGroundToBuffer(shortBuffer.data(), 1);
    EXPECT_EQ(shortBuffer[0], -1.f);
    EXPECT_NE(out.text().find("heights above ground can't be saved"), std::string::npos);
}

} // namespace
