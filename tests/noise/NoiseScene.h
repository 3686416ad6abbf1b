// A small town block for the noise step: flat ground, two trees, two buildings, and noise with
// its truth (high returns far up, a tight cluster far up, low returns below the ground, lone
// returns just off the ground and far away).
#pragma once

#include "common/TestSupport.h"

#include <cmath>
#include <random>
#include <vector>

namespace noisetest {

using vxtest::point;
using vxtest::Setting;
using Lines = std::vector<std::string>;

constexpr int kInput = 1, kLowNoise = 7, kHighNoise = 18;

enum class Truth { Kept, Low, High };

template <class T> struct Scene {
    std::vector<VX_Point<T>> points;
    std::vector<Truth> truth;
    void add(double x, double y, double z, Truth t = Truth::Kept, int cls = kInput)
    {
        points.push_back(point<T>(T(x), T(y), T(z), cls));
        truth.push_back(t);
    }
    /// The classes the step should give: the noise classes to noise, the input class elsewhere.
    std::vector<int> expectedClasses() const
    {
        std::vector<int> out;
        for (std::size_t i = 0; i < truth.size(); ++i)
            out.push_back(truth[i] == Truth::Low    ? kLowNoise
                          : truth[i] == Truth::High ? kHighNoise
                                                    : points[i].classification);
        return out;
    }
    int count(Truth t) const
    {
        int n = 0;
        for (Truth x : truth)
            n += x == t;
        return n;
    }
};

constexpr double kGround = 100.0;

inline bool insideBox(double x, double y, double x0, double y0, double x1, double y1)
{
    return x >= x0 && x <= x1 && y >= y0 && y <= y1;
}

/// Ground of 40 m x 40 m at 0.5 m spacing (4 points per square metre) with centimetre relief;
/// building A (walls sampled every 0.5 m, flat roof 12 m up), building B (roof 15 m up, no wall
/// returns), tree A (returns from the trunk to the top at 24 m) and tree B (crown from 12 m to
/// 25 m, nothing beneath it). Noise goes into the open ground between them.
template <class T> Scene<T> townBlock(bool withNoise = true)
{
    Scene<T> s;
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    for (int i = 0; i < 80; ++i)
        for (int j = 0; j < 80; ++j) {
            const double x = 0.25 + 0.5 * i, y = 0.25 + 0.5 * j;
            if (insideBox(x, y, 4, 4, 14, 12) || insideBox(x, y, 24, 26, 34, 36))
                continue;
            s.add(x, y, kGround + 0.02 * std::sin(x) * std::cos(y));
        }
    // Building A: roof and walls.
    for (double x = 4; x <= 14.001; x += 0.5)
        for (double y = 4; y <= 12.001; y += 0.5)
            s.add(x, y, kGround + 12);
    for (double z = 0.5; z < 12; z += 0.5) {
        for (double x = 4; x <= 14.001; x += 0.5) {
            s.add(x, 4, kGround + z);
            s.add(x, 12, kGround + z);
        }
        for (double y = 4.5; y <= 11.501; y += 0.5) {
            s.add(4, y, kGround + z);
            s.add(14, y, kGround + z);
        }
    }
    // Building B: roof only, 15 m above the ground around it.
    for (double x = 24; x <= 34.001; x += 0.5)
        for (double y = 26; y <= 36.001; y += 0.5)
            s.add(x, y, kGround + 15);
    // Tree A at (30, 8): trunk returns and a crown from 3 m to 24 m.
    for (double z = 0.5; z < 3; z += 0.5)
        s.add(30 + 0.1 * u(rng), 8 + 0.1 * u(rng), kGround + z);
    for (int k = 0; k < 700; ++k) {
        const double h = 3 + 21 * u(rng), r = 3.5 * (24 - h) / 21 * std::sqrt(u(rng)), a = 6.2832 * u(rng);
        s.add(30 + r * std::cos(a), 8 + r * std::sin(a), kGround + h);
    }
    // Tree B at (10, 30): a dense crown from 12 m to 25 m, no returns below it.
    for (int k = 0; k < 700; ++k) {
        const double h = 12 + 13 * u(rng), r = 3.5 * std::sqrt(u(rng)), a = 6.2832 * u(rng);
        s.add(10 + r * std::cos(a), 30 + r * std::sin(a), kGround + h);
    }
    if (!withNoise)
        return s;
    // Single high returns 300 m to 1,500 m up, each over open ground in a block of its own.
    const double highX[] = {20, 37, 2, 20, 38}, highY[] = {3, 20, 20, 38, 2};
    for (int k = 0; k < 5; ++k)
        s.add(highX[k], highY[k], kGround + 300 * (k + 1), Truth::High);
    // A tight cluster of four returns 900 m up.
    for (int k = 0; k < 4; ++k)
        s.add(20 + 0.3 * (k % 2), 20 + 0.3 * (k / 2), kGround + 900 + 0.2 * k, Truth::High);
    // Low returns 20 m to 40 m below the ground.
    const double lowX[] = {18, 38, 2}, lowY[] = {12, 12, 38};
    for (int k = 0; k < 3; ++k)
        s.add(lowX[k], lowY[k], kGround - 20 - 10 * k, Truth::Low);
    // Lone returns: 3 m above and 3 m below open ground (no neighbour within 2 m), and one at
    // ground height 60 m away from the block.
    s.add(20.1, 29.1, kGround + 3, Truth::High);
    s.add(38.1, 28.1, kGround - 3, Truth::Low);
    s.add(100, 100, kGround, Truth::High);
    return s;
}

/// Loads the scene into v on the setting, with planar columns of `cell`, printing nothing.
template <class T>
void load(Vexaro<T>& v, const Setting& s, std::vector<VX_Point<T>> pts, double cell = 2.0,
          int messageLevel = 0)
{
    vxtest::configure(v, s, messageLevel);
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    vxtest::CaptureStdout quiet;
    v.regularGridDecomposition2D(cell, cell);
}

/// What the driver printed: the lines after the step's mode line and before its timing lines.
inline Lines driverLines(const vxtest::CaptureStdout& out)
{
    Lines mine;
    bool inside = false;
    for (const std::string& line : out.lines()) {
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

} // namespace noisetest
