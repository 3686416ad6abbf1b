// Near ground: admitted points within NearGroundDistance of the ground surface, above or below,
// become ground; farther ones, points without a height and points not admitted keep their class.
// Raised points: admitted points more than NearGroundDistance above the surface, and no higher
// than RaisedPointsMaxHeight where that is set, take the class given; the others keep theirs.
#include "height/HeightTestSupport.h"

using namespace vxtest;
using namespace heighttest;

namespace {

class NearGround : public SettingTest {};

template <class T> void pointsNearTheSurfaceJoinIt(const Setting& s)
{
    std::vector<VX_Point<T>> pts;
    // Noise (7) at these heights over a sloping ground with a 10 m hole, as under a canopy that
    // no ground return of its own crossed.
    const double hs[] = {0.0, 0.3, -0.3, 0.49, -0.49, 0.51, -0.51, -3.0, 20.0};
    for (int k = 0; k < 9; ++k)
        pts.push_back(above<T>(11.0 + k, 11.0 + 0.5 * k, hs[k], plane, 7));
    pts.push_back(above<T>(12.0, 16.0, 0.1, plane, 6)); // not admitted: stays a building
    addGround<T>(pts, 40, 30, 0.5, plane,
                 [](double x, double y) { return x > 10 && x < 20 && y > 10 && y < 20; });
    Vexaro<T> v;
    heights(v, s, pts);
    const std::vector<int> table = allowTable({7});
    v.set_AllowedInputClasses(const_cast<int*>(table.data()), static_cast<int>(table.size()));
    CaptureStdout quiet;
    v.classifyNearGround(2);
    auto c = classes(v);
    EXPECT_EQ(std::vector<int>(c.begin(), c.begin() + 10), (std::vector<int>{2, 2, 2, 2, 2, 7, 7, 7, 7, 6}));

    // A wider distance takes the next two.
    v.set_NearGroundDistance(T(0.6));
    v.classifyNearGround(2);
    c = classes(v);
    EXPECT_EQ(std::vector<int>(c.begin(), c.begin() + 10), (std::vector<int>{2, 2, 2, 2, 2, 2, 2, 7, 7, 6}));
}

template <class T> void raisedPointsTakeTheirClass(const Setting& s)
{
    std::vector<VX_Point<T>> pts;
    // Low points (7) at these heights over the same ground and hole.
    const double hs[] = {0.0, 0.3, -0.3, 0.49, -0.49, 0.51, -0.51, -3.0, 20.0};
    for (int k = 0; k < 9; ++k)
        pts.push_back(above<T>(11.0 + k, 11.0 + 0.5 * k, hs[k], plane, 7));
    pts.push_back(above<T>(12.0, 16.0, 5.0, plane, 6)); // not admitted: stays a building
    addGround<T>(pts, 40, 30, 0.5, plane,
                 [](double x, double y) { return x > 10 && x < 20 && y > 10 && y < 20; });
    Vexaro<T> v;
    heights(v, s, pts);
    const std::vector<int> table = allowTable({7});
    v.set_AllowedInputClasses(const_cast<int*>(table.data()), static_cast<int>(table.size()));
    CaptureStdout quiet;
    v.classifyRaisedPoints(1);
    auto c = classes(v);
    EXPECT_EQ(std::vector<int>(c.begin(), c.begin() + 10), (std::vector<int>{7, 7, 7, 7, 7, 1, 7, 7, 1, 6}));

    // A wider distance keeps the lower one; the ground never changes.
    for (int k = 0; k < 9; ++k)
        pts[static_cast<std::size_t>(k)].classification = 7;
    Vexaro<T> w;
    heights(w, s, pts);
    w.set_AllowedInputClasses(const_cast<int*>(table.data()), static_cast<int>(table.size()));
    w.set_NearGroundDistance(T(0.6));
    w.classifyRaisedPoints(1);
    c = classes(w);
    EXPECT_EQ(std::vector<int>(c.begin(), c.begin() + 10), (std::vector<int>{7, 7, 7, 7, 7, 7, 7, 7, 1, 6}));
    EXPECT_EQ(std::vector<int>(c.begin() + 10, c.end()), std::vector<int>(pts.size() - 10, 2));

    // A ceiling under 20 m keeps the highest one, as birds and haze are kept; one above takes it.
    for (const auto& [ceiling, highest] : {std::pair{10.0, 7}, std::pair{20.5, 1}}) {
        for (int k = 0; k < 9; ++k)
            pts[static_cast<std::size_t>(k)].classification = 7;
        Vexaro<T> u;
        heights(u, s, pts);
        u.set_AllowedInputClasses(const_cast<int*>(table.data()), static_cast<int>(table.size()));
        u.set_RaisedPointsMaxHeight(T(ceiling));
        u.classifyRaisedPoints(1);
        c = classes(u);
        EXPECT_EQ(std::vector<int>(c.begin(), c.begin() + 10),
                  (std::vector<int>{7, 7, 7, 7, 7, 1, 7, 7, highest, 6}))
            << ceiling;
    }
}

template <class T> void withoutHeightsNothingChanges(const Setting& s)
{
    // No ground at all: every height is NaN and nothing becomes ground.
    std::vector<VX_Point<T>> pts;
    for (int k = 0; k < 20; ++k)
        pts.push_back(vxtest::point<T>(T(k), T(k % 5), T(0), 7));
    Vexaro<T> v;
    heights(v, s, pts);
    const std::vector<int> table = allowTable({7});
    v.set_AllowedInputClasses(const_cast<int*>(table.data()), static_cast<int>(table.size()));
    CaptureStdout out;
    v.classifyNearGround(2);
    v.classifyRaisedPoints(1);
    EXPECT_EQ(classes(v), std::vector<int>(pts.size(), 7));

    // Heights of another cloud are refused with the message of the tiers.
    Vexaro<T> w;
    configure(w, s);
    w.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    CaptureStdout refused;
    w.classifyNearGround(2);
    w.classifyRaisedPoints(1);
    EXPECT_NE(refused.text().find("run computeHeightAboveGround first"), std::string::npos) << refused.text();
    EXPECT_EQ(classes(w), std::vector<int>(pts.size(), 7));
}

} // namespace

TEST_P(NearGround, PointsWithinTheDistanceOfTheSurfaceJoinIt)
{
    pointsNearTheSurfaceJoinIt<float>(GetParam());
    pointsNearTheSurfaceJoinIt<double>(GetParam());
}

TEST_P(NearGround, PointsRaisedAboveTheDistanceTakeTheirClass)
{
    raisedPointsTakeTheirClass<float>(GetParam());
    raisedPointsTakeTheirClass<double>(GetParam());
}

TEST_P(NearGround, WithoutHeightsNothingChanges)
{
    withoutHeightsNothingChanges<float>(GetParam());
    withoutHeightsNothingChanges<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, NearGround, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
