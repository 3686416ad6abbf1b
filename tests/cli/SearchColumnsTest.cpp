// Search ranges so wide that every point of a large cloud reads a large part of it are refused
// before the work; the derived ranges, small clouds and unknown densities pass.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "ParameterTable.h"
#include "SearchColumns.h"

#include <gtest/gtest.h>

#include <string>

using namespace vx::app;

namespace {

DataScale cloud(std::size_t points, double density, double metresPerUnit = 1)
{
    DataScale s;
    s.points = points;
    s.density = density;
    s.metresPerUnit = s.metresPerVerticalUnit = metresPerUnit;
    return s;
}

} // namespace

TEST(SearchColumns, AbsurdRangesOnALargeCloudAreRefused)
{
    // Two million points at 13 pts/m²: columns of 1000 m hold all of them.
    try {
        checkSearchColumns(1000, "NoiseRange", cloud(2000000, 13));
        FAIL() << "not refused";
    } catch (const UsageError& e) {
        const std::string m = e.what();
        EXPECT_NE(m.find("NoiseRange 1000.0 makes each of the 2,000,000 points read about 2,000,000"),
                  std::string::npos)
            << m;
        EXPECT_NE(m.find("set a smaller range"), std::string::npos) << m;
    }
    // 100 m columns: 117,000 a point.
    EXPECT_THROW(checkSearchColumns(100, "NoiseRange", cloud(2000000, 13)), UsageError);
    // The same in feet.
    EXPECT_THROW(checkSearchColumns(100 / 0.3048, "NoiseRange", cloud(2000000, 13, 0.3048)), UsageError);
}

TEST(SearchColumns, DerivedRangesSmallCloudsAndUnknownDensitiesPass)
{
    // The widest derived column of dense data, and of sparse data.
    EXPECT_NO_THROW(checkSearchColumns(2.5, "search ranges", cloud(50000000, 30)));
    EXPECT_NO_THROW(checkSearchColumns(7, "search ranges", cloud(50000000, 0.2)));
    // 30 m columns of dense data: 8,100 points a point, minutes on the largest tiles.
    EXPECT_NO_THROW(checkSearchColumns(30, "search ranges", cloud(50000000, 1)));
    // A small cloud read whole by every point.
    EXPECT_NO_THROW(checkSearchColumns(1000, "NoiseRange", cloud(3000, 3)));
    EXPECT_NO_THROW(checkSearchColumns(1000, "NoiseRange", cloud(200000, 3)));
    // No density measured (--preset none).
    EXPECT_NO_THROW(checkSearchColumns(1000, "NoiseRange", DataScale{}));
}

#endif
