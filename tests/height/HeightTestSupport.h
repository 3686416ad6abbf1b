// Helpers of the height-above-ground tests: clouds over a known ground surface and the heights
// the library reports for them.
#pragma once

#include "common/TestSupport.h"

#include <cmath>
#include <vector>

namespace heighttest {

using vxtest::Setting;

/// The sloping test surface.
inline double plane(double x, double y)
{
    return 5.0 + 0.2 * x - 0.1 * y;
}

/// Ground (class 2) on a regular grid of `spacing` over [0, width] x [0, depth] on `surface`,
/// skipping the points for which `skip` is true.
template <class T, class S, class K>
void addGround(std::vector<VX_Point<T>>& pts, double width, double depth, double spacing, S surface, K skip)
{
    for (double y = 0; y <= depth + 1e-9; y += spacing)
        for (double x = 0; x <= width + 1e-9; x += spacing)
            if (!skip(x, y))
                pts.push_back(vxtest::point<T>(T(x), T(y), T(surface(x, y)), 2));
}

/// A point of class cls at (x, y), `height` above `surface`.
template <class T, class S> VX_Point<T> above(double x, double y, double height, S surface, int cls = 1)
{
    return vxtest::point<T>(T(x), T(y), T(surface(x, y) + height), cls);
}

/// Loads pts on the setting (no decomposition) and computes the heights above class 2.
template <class T> std::vector<float> heights(Vexaro<T>& v, const Setting& s, std::vector<VX_Point<T>> pts)
{
    vxtest::configure(v, s);
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    vxtest::CaptureStdout quiet;
    v.computeHeightAboveGround(2);
    std::vector<float> out(pts.size());
    v.saveHeightAboveGroundToBuffer(out.data(), static_cast<int>(out.size()));
    return out;
}

} // namespace heighttest
