// Small dense linear algebra of the normal step, in double and usable on host and device: the
// closed-form eigenvalues of a symmetric 3 x 3 matrix, null vectors by Gaussian elimination, and
// the normal of a neighbourhood from its covariance.
#pragma once

#include "exec/Hd.h"

#include <math.h>

namespace vx {

struct Vec3d {
    double x, y, z;
};

VX_HD inline Vec3d cross(const Vec3d& a, const Vec3d& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

VX_HD inline double dot(const Vec3d& a, const Vec3d& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// S v for a 3 x 3 matrix S.
VX_HD inline Vec3d multiply(const double s[3][3], const Vec3d& v)
{
    return {s[0][0] * v.x + s[0][1] * v.y + s[0][2] * v.z, s[1][0] * v.x + s[1][1] * v.y + s[1][2] * v.z,
            s[2][0] * v.x + s[2][1] * v.y + s[2][2] * v.z};
}

/// The unit vector along v; a zero vector stays zero. Dividing by the largest component first
/// keeps very small or very large components from under- or overflowing when squared.
VX_HD inline Vec3d normalized(Vec3d v)
{
    double m = ::fabs(v.x);
    if (::fabs(v.y) > m)
        m = ::fabs(v.y);
    if (::fabs(v.z) > m)
        m = ::fabs(v.z);
    if (m == 0.0)
        return {0.0, 0.0, 0.0};
    v = {v.x / m, v.y / m, v.z / m};
    const double len = ::sqrt(dot(v, v));
    return {v.x / len, v.y / len, v.z / len};
}

/// A vector perpendicular to u: u crossed with the coordinate axis of u's smallest absolute
/// component, the later axis on ties.
VX_HD inline Vec3d perpendicularTo(const Vec3d& u)
{
    const double a[3] = {::fabs(u.x), ::fabs(u.y), ::fabs(u.z)};
    int axis = 2;
    if (a[1] < a[axis])
        axis = 1;
    if (a[0] < a[axis])
        axis = 0;
    const Vec3d e{axis == 0 ? 1.0 : 0.0, axis == 1 ? 1.0 : 0.0, axis == 2 ? 1.0 : 0.0};
    return cross(u, e);
}

/// Eigenvalues of the symmetric matrix a in closed form (the trigonometric solution of the
/// characteristic cubic), largest first; negative roots, which only rounding produces, become 0.
VX_HD inline void symmetricEigenvalues(const double a[3][3], double l[3])
{
    const double a00 = a[0][0], a11 = a[1][1], a22 = a[2][2];
    const double a01 = a[0][1], a02 = a[0][2], a12 = a[1][2];
    const double b = -(a00 + a11 + a22);
    const double c = a00 * a11 + a00 * a22 + a11 * a22 - a12 * a12 - a02 * a02 - a01 * a01;
    const double d =
        a02 * a02 * a11 + a12 * a12 * a00 + a01 * a01 * a22 - a00 * a11 * a22 - 2.0 * a01 * a12 * a02;
    const double q = (3.0 * c - b * b) / 9.0;
    const double r = (b * (9.0 * c - 2.0 * b * b) - 27.0 * d) / 54.0;
    double r0, r1, r2;
    if (q >= 0.0) {
        const double s = ::cbrt(r);
        r0 = 2.0 * s - b / 3.0;
        r1 = -s - b / 3.0;
        r2 = r1;
    } else {
        // Repeated roots put the quotient a rounding error beyond [-1, 1], where acos has no value.
        double cosine = r / ::sqrt(-(q * q * q));
        if (cosine > 1.0)
            cosine = 1.0;
        if (cosine < -1.0)
            cosine = -1.0;
        const double theta = ::acos(cosine);
        const double t = 2.0 * ::sqrt(-q);
        const double ct = ::cos(theta / 3.0);
        const double st = ::sin(theta / 3.0);
        const double h = t * (::sqrt(3.0) / 2.0) * st;
        r0 = t * ct - b / 3.0;
        r1 = -t / 2.0 * ct - b / 3.0 - h;
        r2 = -t / 2.0 * ct - b / 3.0 + h;
    }
    l[0] = r0 < 0.0 ? 0.0 : r0;
    l[1] = r1 < 0.0 ? 0.0 : r1;
    l[2] = r2 < 0.0 ? 0.0 : r2;
    double tmp;
    if (l[1] > l[0])
        tmp = l[0], l[0] = l[1], l[1] = tmp;
    if (l[2] > l[1])
        tmp = l[1], l[1] = l[2], l[2] = tmp;
    if (l[1] > l[0])
        tmp = l[0], l[0] = l[1], l[1] = tmp;
}

/// A non-zero x with m x = 0 for a singular m, by Gaussian elimination with partial pivoting (at
/// each stage the row with the largest absolute entry in the pivot column). A column without a
/// pivot is free; of several free columns the first is set to 1, or the last with preferLater.
/// Where rounding leaves three non-zero pivots, the smallest stands for the zero one.
VX_HD inline Vec3d nullVector(const double m[3][3], bool preferLater)
{
    double u[3][3];
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k)
            u[r][k] = m[r][k];
    int pivotCol[3] = {0, 0, 0};
    int rank = 0;
    for (int col = 0; col < 3 && rank < 3; ++col) {
        int best = rank;
        for (int r = rank + 1; r < 3; ++r)
            if (::fabs(u[r][col]) > ::fabs(u[best][col]))
                best = r;
        if (u[best][col] == 0.0)
            continue;
        for (int k = 0; k < 3; ++k) {
            const double t = u[rank][k];
            u[rank][k] = u[best][k];
            u[best][k] = t;
        }
        for (int r = rank + 1; r < 3; ++r) {
            const double f = u[r][col] / u[rank][col];
            u[r][col] = 0.0;
            for (int k = col + 1; k < 3; ++k)
                u[r][k] -= f * u[rank][k];
        }
        pivotCol[rank++] = col;
    }

    int freeCol = -1;
    int droppedRow = -1;
    if (rank == 3) {
        double smallest = 0.0;
        for (int r = 0; r < 3; ++r) {
            const double a = ::fabs(u[r][r]);
            if (droppedRow < 0 || a < smallest || (preferLater && a == smallest))
                smallest = a, droppedRow = r;
        }
        freeCol = droppedRow;
    } else {
        bool pivot[3] = {false, false, false};
        for (int r = 0; r < rank; ++r)
            pivot[pivotCol[r]] = true;
        for (int k = 0; k < 3; ++k)
            if (!pivot[k] && (freeCol < 0 || preferLater))
                freeCol = k;
    }

    double x[3] = {0.0, 0.0, 0.0};
    x[freeCol] = 1.0;
    for (int r = rank - 1; r >= 0; --r) {
        if (r == droppedRow)
            continue;
        const int pc = pivotCol[r];
        double s = 0.0;
        for (int k = pc + 1; k < 3; ++k)
            s += u[r][k] * x[k];
        x[pc] = -s / u[r][pc];
    }
    return {x[0], x[1], x[2]};
}

/// The normal of a neighbourhood from its covariance s: the singular vectors of s come from the
/// eigenvectors of A = s s, whose eigenvalues l (largest first) are returned as well. False when
/// the two spanning vectors are parallel, so that no normal exists.
VX_HD inline bool normalFromCovariance(const double s[3][3], Vec3d& normal, double l[3])
{
    double a[3][3];
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k)
            a[r][k] = s[r][0] * s[0][k] + s[r][1] * s[1][k] + s[r][2] * s[2][k];
    symmetricEigenvalues(a, l);

    double m[3][3];
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k)
            m[r][k] = a[r][k] - (r == k ? l[0] : 0.0);
    Vec3d e1 = nullVector(m, false);
    for (int r = 0; r < 3; ++r)
        m[r][r] = a[r][r] - l[2];
    // On repeated roots both null spaces coincide; taking the other free column keeps e3 apart
    // from e1.
    Vec3d e3 = nullVector(m, true);
    Vec3d e2 = cross(e3, e1);
    e1 = normalized(e1);
    e2 = normalized(e2);
    e3 = normalized(e3);

    const int rank = (l[0] > 1e-10) + (l[1] > 1e-10) + (l[2] > 1e-10);
    Vec3d u1, u2;
    if (rank >= 2) {
        u1 = multiply(s, e1);
        u2 = multiply(s, e2);
        // Rounding in the eigenvalues can lift an exact line to rank 2 with s e2 exactly zero;
        // complete the basis as for rank 1 then.
        if (u2.x == 0.0 && u2.y == 0.0 && u2.z == 0.0)
            u2 = perpendicularTo(u1);
    } else if (rank == 1) {
        u1 = multiply(s, e1);
        u2 = perpendicularTo(u1);
    } else {
        u1 = e1;
        u2 = e2;
    }
    u1 = normalized(u1);
    u2 = normalized(u2);
    const Vec3d n = cross(u1, u2);
    const double len = ::sqrt(dot(n, n));
    if (len == 0.0)
        return false;
    normal = {n.x / len, n.y / len, n.z / len};
    return true;
}

} // namespace vx
