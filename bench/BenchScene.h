// What the benchmarks share besides the scenes' seeded generator (scene/Random.h, the tests'
// one): the rolling terrain and the box roof lattice of their generated ALS-like scenes, and a
// stopwatch.
#pragma once

#include "scene/Random.h"

#include <chrono>
#include <cmath>
#include <cstdint>

namespace vxbench {

/// Side of the square that holds n points at about 10 points per square metre.
inline double sceneSide(int n)
{
    return std::sqrt(n / 10.0);
}

/// Height of the rolling terrain over (x, y), around 0.
inline double rollingTerrain(double x, double y)
{
    return 5.0 * std::sin(x / 40.0) + 3.0 * std::cos(y / 25.0);
}

/// Whether (x, y) lies under a flat box roof: 20 m by 15 m on a 60 m lattice.
inline bool underBoxRoof(double x, double y)
{
    return std::fmod(x, 60.0) < 20.0 && std::fmod(y, 60.0) < 15.0;
}

/// Seconds elapsed since t0.
inline double secondsSince(std::chrono::steady_clock::time_point t0)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

} // namespace vxbench
