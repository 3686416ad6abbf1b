// Helpers of the ground step tests: a decomposed cloud on one setting, and the lines a step's
// driver printed.
#pragma once

#include "common/TestSupport.h"

#include <string>
#include <vector>

namespace groundtest {

using vxtest::Setting;

/// Loads pts into v on the setting and decomposes it quietly: cubes of edge `cell`, or planar
/// cells of that edge when `planar`.
template <class T>
void load(Vexaro<T>& v, const Setting& s, std::vector<VX_Point<T>> pts, double cell, bool planar = false,
          int messageLevel = 0)
{
    vxtest::configure(v, s, messageLevel);
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    vxtest::CaptureStdout quiet;
    if (planar)
        v.regularGridDecomposition2D(cell, cell);
    else
        v.regularGridDecomposition3Dcube(cell);
}

template <class T> void allow(Vexaro<T>& v, std::initializer_list<int> admitted)
{
    std::vector<int> table = vxtest::allowTable(admitted);
    v.set_AllowedInputClasses(table.data(), static_cast<int>(table.size()));
}

/// What the driver printed: the lines after the step's mode line and before its timing lines.
inline std::vector<std::string> driverLines(const vxtest::CaptureStdout& out)
{
    std::vector<std::string> all = out.lines(), mine;
    bool inside = false;
    for (const std::string& line : all) {
        if (!inside) {
            inside = line == "SOA " || line == "AOS ";
            continue;
        }
        if (line.rfind("Time: ", 0) == 0)
            break;
        mine.push_back(line);
    }
    return mine;
}

using Lines = std::vector<std::string>;

/// A point with the upward normal (0, 0, 1).
template <class T> VX_Point<T> up(T x, T y, T z, int cls, int lastReturn = 1)
{
    return vxtest::point<T>(x, y, z, cls, lastReturn, 0, 0, 1);
}

/// The growth driver's lines for a loop whose passes changed the ground count by `differences`.
inline Lines loopLines(const std::vector<long long>& differences)
{
    Lines l{"Threads:  256", "Blocks:  1"};
    for (std::size_t k = 0; k < differences.size(); ++k) {
        l.push_back("Iteration:  " + std::to_string(k + 1));
        l.push_back("Ground points difference:  " + std::to_string(differences[k]));
    }
    return l;
}

} // namespace groundtest
