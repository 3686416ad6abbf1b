// A small fixed scene with a bit of everything the vegetation step looks at: ground, a tree with
// non-last returns, a shrub, grass, a flat roof, chaos points, points of the initial class and
// points left on the building plane class. Coordinates are multiples of 1/64, exact in float.
#pragma once

#include "common/TestSupport.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace vegtest {

/// Deterministic numbers in [0, 1), multiples of 1/64.
class Steps64 {
public:
    explicit Steps64(uint32_t seed) : state_(seed) {}
    double next()
    {
        state_ = state_ * 1664525u + 1013904223u;
        return double((state_ >> 10) % 64u) / 64.0;
    }

private:
    uint32_t state_;
};

template <class T> std::vector<VX_Point<T>> mixedScene()
{
    using vxtest::point;
    std::vector<VX_Point<T>> pts;
    Steps64 r(12345u);
    for (int ix = 0; ix <= 16; ++ix)
        for (int iy = 0; iy <= 16; ++iy)
            pts.push_back(point<T>(T(ix * 0.5), T(iy * 0.5), T(r.next() / 16), 2, 1, T(0), T(0), T(1)));
    // A tree: crown from 2 to 5 m, mostly non-last returns, scattered normals.
    for (int k = 0; k < 60; ++k) {
        const T x = T(4 + 2 * r.next() - 1), y = T(4 + 2 * r.next() - 1), z = T(2 + 3 * r.next());
        const T nx = T(r.next() - 0.5), ny = T(r.next() - 0.5), nz = T(r.next() - 0.5);
        pts.push_back(point<T>(x, y, z, k % 7 == 0 ? 0 : 1, k % 3 == 0 ? 1 : 0, nx, ny, nz));
    }
    // A shrub around (1.5, 6) from 0.5 to 1.5 m.
    for (int k = 0; k < 25; ++k) {
        const T x = T(1.5 + r.next() - 0.5), y = T(6 + r.next() - 0.5), z = T(0.5 + r.next());
        pts.push_back(point<T>(x, y, z, 1, k % 2, T(r.next() - 0.5), T(0.5), T(r.next())));
    }
    // Grass around (6, 6), a few centimetres to 0.3 m.
    for (int k = 0; k < 25; ++k) {
        const T x = T(6 + r.next() - 0.5), y = T(6 + r.next() - 0.5), z = T(0.0625 + r.next() / 4);
        pts.push_back(point<T>(x, y, z, k % 5 == 0 ? 10 : 1, k % 4 == 0 ? 0 : 1, T(r.next()), T(0), T(1)));
    }
    // A flat roof at 3 m.
    for (int ix = 0; ix < 4; ++ix)
        for (int iy = 0; iy < 4; ++iy)
            pts.push_back(point<T>(T(6 + ix * 0.5), T(0.5 + iy * 0.5), T(3), 6, 1, T(0), T(0), T(1)));
    // Points under the roof edge and chaos points in the crown.
    for (int k = 0; k < 6; ++k)
        pts.push_back(point<T>(T(5.5), T(0.5 + k * 0.25), T(1 + k * 0.25), 1, 0));
    for (int k = 0; k < 6; ++k)
        pts.push_back(point<T>(T(4 + k * 0.125), T(4), T(3 + k * 0.25), 11, 0));
    return pts;
}

inline size_t countVegetation(const std::vector<int>& classes, int low = 3, int medium = 4, int high = 5)
{
    size_t n = 0;
    for (int c : classes)
        n += (c == low || c == medium || c == high) ? 1 : 0;
    return n;
}

} // namespace vegtest
