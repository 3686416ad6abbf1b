// Helpers of the building step tests: the class numbers used throughout, roof points, loading a
// decomposed cloud on one setting, and running a body for both precisions.
#pragma once

#include "common/TestSupport.h"

#include <string>
#include <vector>

namespace bldtest {

using vxtest::Setting;

constexpr int kBuilding = 6;
constexpr int kGround = 2;
constexpr int kSource = 1;     ///< votes with the plane and the normal test
constexpr int kCompanion = 10; ///< votes with the plane test only
constexpr int kMark = 250;
constexpr int kCandidate = 251;

/// The table of most tests: source, companion and the two temporary marks are admitted; ground
/// and building points are not, so they never change.
inline std::vector<int> defaultTable()
{
    return vxtest::allowTable({kSource, kCompanion, kMark, kCandidate});
}

/// A last return with an upward unit normal.
template <class T> VX_Point<T> up(double x, double y, double z, int cls, int lastReturn = 1)
{
    return vxtest::point<T>(T(x), T(y), T(z), cls, lastReturn, T(0), T(0), T(1));
}

/// Loads pts into v on the setting, admits `table` and decomposes into cubes of edge `cell`, quietly.
template <class T>
void load(Vexaro<T>& v, const Setting& s, std::vector<VX_Point<T>> pts, double cell,
          std::vector<int> table = defaultTable(), int messageLevel = 0)
{
    vxtest::configure(v, s, messageLevel);
    vxtest::CaptureStdout quiet;
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    v.set_AllowedInputClasses(table.data(), static_cast<int>(table.size()));
    v.regularGridDecomposition3Dcube(cell);
}

template <class T> void findSeeds(Vexaro<T>& v)
{
    vxtest::CaptureStdout quiet;
    v.findBuildingSeed(kBuilding, kGround, kSource, kCompanion);
}

template <class T> void grow(Vexaro<T>& v)
{
    vxtest::CaptureStdout quiet;
    v.performIterativeBuildingGrowth(kBuilding, kGround, kSource, kCompanion);
}

/// Leaves only the growth along the roof active: the completion's height limit cannot be met
/// and the closing's radii are empty.
template <class T> void onlyUpdate(Vexaro<T>& v)
{
    v.set_BuildingMinHeight(T(-100));
    v.set_Building3GroundRange(T(0));
}

template <class T> struct Precision {
    using type = T;
};

/// Runs body(Precision<float>{}) and body(Precision<double>{}).
template <class F> void forBothPrecisions(F&& body)
{
    body(Precision<float>{});
    body(Precision<double>{});
}

/// What the driver printed: the lines between the start of the step and its timing lines, the
/// mode line (when there is one) left out.
inline std::vector<std::string> driverLines(const vxtest::CaptureStdout& out)
{
    std::vector<std::string> mine;
    for (const std::string& line : out.lines()) {
        if (line == "SOA " || line == "AOS ")
            continue;
        if (line.rfind("Time: ", 0) == 0)
            break;
        mine.push_back(line);
    }
    return mine;
}

using Classes = std::vector<int>;
using Lines = std::vector<std::string>;

} // namespace bldtest
