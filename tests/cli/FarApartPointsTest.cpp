// Clouds whose points lie far apart: a stray return 1,000 km off, two patches 5 km apart, and
// 6,000 points over 2 km2. Each runs in memory that follows the points, never the extent.
#include "CliTestSupport.h"

#include <las/LasFile.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <sys/resource.h>

using clitest::classesOf;
using clitest::run;
using clitest::scratch;

namespace {

struct Spot {
    double x, y, z;
};

std::string writeCloud(const std::string& name, const std::vector<Spot>& spots)
{
    const double scale[3] = {0.01, 0.01, 0.01}, offset[3] = {0, 0, 0};
    auto file = vx::las::LasFile::create(2, 1, scale, offset);
    for (const auto& s : spots) {
        vx::las::NewPoint p;
        p.x = s.x, p.y = s.y, p.z = s.z;
        p.classification = 1;
        file.addPoint(p);
    }
    const std::string path = (scratch() / name).string();
    file.write(path);
    return path;
}

/// Flat ground with 5 cm of relief: n points over w x h at (x0, y0).
void addPatch(std::vector<Spot>& spots, int n, double x0, double y0, double w, double h, unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    for (int i = 0; i < n; ++i) {
        const double x = x0 + w * u(rng), y = y0 + h * u(rng);
        spots.push_back({x, y, 100.0 + 0.05 * std::sin(x) * std::cos(y)});
    }
}

/// Largest resident set of the children run so far, in megabytes.
double childPeakMegabytes()
{
    rusage use{};
    getrusage(RUSAGE_CHILDREN, &use);
    return static_cast<double>(use.ru_maxrss) / 1024.0;
}

} // namespace

TEST(FarApartPoints, AStrayReturnFarAwayIsNoiseAndStretchesNothing)
{
    // 1,000 points in 10 m and one 1,000 km off in x and in y: a grid over the box around both
    // would hold 10^11 cells.
    std::vector<Spot> spots;
    addPatch(spots, 1000, 0, 0, 10, 10, 1);
    spots.push_back({1.0e6, 1.0e6, 100.0});
    const std::string in = writeCloud("far.las", spots);
    const auto r = run({"classify", in, "-o", "out.las"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("1 stray returns far from the rest of the cloud are noise"), std::string::npos)
        << r.err;
    const auto classes = classesOf((scratch() / "out.las").string());
    ASSERT_EQ(classes.size(), spots.size());
    EXPECT_EQ(classes.back(), 7);
    EXPECT_GE(std::count(classes.begin(), classes.end() - 1, 2), 950);
    EXPECT_LT(childPeakMegabytes(), 200.0);
}

TEST(FarApartPoints, TheLibraryGroundStepsToo)
{
    // --preset none runs the library's own ground steps; the parts are split all the same.
    std::vector<Spot> spots;
    addPatch(spots, 1000, 0, 0, 10, 10, 5);
    spots.push_back({-1.0e6, 2.0e6, 100.0});
    const std::string in = writeCloud("far.las", spots);
    const auto r = run({"classify", in, "-o", "out.las", "--preset", "none"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto classes = classesOf((scratch() / "out.las").string());
    ASSERT_EQ(classes.size(), spots.size());
    EXPECT_EQ(classes.back(), 7);
    EXPECT_LT(childPeakMegabytes(), 200.0);
}

TEST(FarApartPoints, PatchesFarApartAreClassifiedOneByOne)
{
    std::vector<Spot> spots;
    addPatch(spots, 2000, 0, 0, 20, 20, 2);
    addPatch(spots, 2000, 5000, 3000, 20, 20, 3);
    const std::string in = writeCloud("two.las", spots);
    const auto r = run({"classify", in, "-o", "out.las", "--hag"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("the cloud falls into 2 parts far apart"), std::string::npos) << r.err;
    const auto classes = classesOf((scratch() / "out.las").string());
    EXPECT_GE(std::count(classes.begin(), classes.begin() + 2000, 2), 1900);
    EXPECT_GE(std::count(classes.begin() + 2000, classes.end(), 2), 1900);
    EXPECT_LT(childPeakMegabytes(), 200.0);
}

TEST(FarApartPoints, SixThousandPointsOverTwoSquareKilometres)
{
    std::vector<Spot> spots;
    addPatch(spots, 6000, 0, 0, 2000, 1000, 4);
    const std::string in = writeCloud("sparse.las", spots);
    const auto r = run({"classify", in, "-o", "out.las"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(classesOf((scratch() / "out.las").string()).size(), spots.size());
    EXPECT_LT(childPeakMegabytes(), 200.0);
}
