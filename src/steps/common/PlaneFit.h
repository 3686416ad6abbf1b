// The least-squares plane through a point's neighbours, in offsets from the point and in double
// precision, so that the plane's height at the point is the fit's intercept and Cramer's rule
// keeps the centimetres far from the origin.
#pragma once

#include "exec/Hd.h"

namespace vx {

/// A plane fit reads at least this many neighbours: fewer fit no plane that can be trusted.
constexpr int kPlaneLeastPoints = 6;

/// Sums of the offsets (dx, dy, dz) of a point's neighbours from it.
struct PlaneSums {
    int n = 0;
    double sx = 0, sy = 0, sz = 0, sxx = 0, sxy = 0, syy = 0, sxz = 0, syz = 0, szz = 0;

    VX_HD void add(double dx, double dy, double dz)
    {
        ++n;
        sx += dx, sy += dy, sz += dz;
        sxx += dx * dx, sxy += dx * dy, syy += dy * dy;
        sxz += dx * dz, syz += dy * dz, szz += dz * dz;
    }
};

/// dz = a + b dx + c dy, and the sum of the squared residuals about it.
struct Plane {
    double a, b, c, sse;
};

/// Solves the normal equations by Cramer's rule; false, with `out` untouched, when the
/// neighbours lie on a line or a point.
VX_HD inline bool fitPlane(const PlaneSums& s, Plane& out)
{
    const double n = s.n;
    const double sx = s.sx, sy = s.sy, sz = s.sz, sxx = s.sxx, sxy = s.sxy, syy = s.syy;
    const double sxz = s.sxz, syz = s.syz;
    const double det = n * (sxx * syy - sxy * sxy) - sx * (sx * syy - sxy * sy) + sy * (sx * sxy - sxx * sy);
    const double scale = (sxx + syy) * (sxx + syy) * n;
    if (!(det > scale * 1e-6))
        return false;
    const double a =
        (sz * (sxx * syy - sxy * sxy) - sx * (sxz * syy - sxy * syz) + sy * (sxz * sxy - sxx * syz)) / det;
    const double b =
        (n * (sxz * syy - sxy * syz) - sz * (sx * syy - sxy * sy) + sy * (sx * syz - sxz * sy)) / det;
    const double c =
        (n * (sxx * syz - sxz * sxy) - sx * (sx * syz - sxz * sy) + sz * (sx * sxy - sxx * sy)) / det;
    const double sse = s.szz - a * sz - b * sxz - c * syz;
    out = {a, b, c, sse > 0 ? sse : 0};
    return true;
}

} // namespace vx
