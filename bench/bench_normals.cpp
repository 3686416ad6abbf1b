// Times the normal vectors on a generated airborne-scan-like cloud on the host backend, with
// the default parameters and cubic cells of 1.5.
// Usage: bench_normals [points] [shuffled]   (default 1000000 points in scan-line order; any
// second argument shuffles the input order, the worst case for memory locality)
#include "BenchScene.h"
#include "api/EngineAccess.h"
#include "core/StepContext.h"
#include "steps/common/StepDrivers.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <utility>
#include <vector>

namespace {

double terrain(double x, double y)
{
    return 200.0 + 5.0 * std::sin(x / 40.0) + 3.0 * std::cos(y / 25.0);
}

/// Height of a gabled roof over (x, y), or a negative value outside every building. Buildings
/// stand on a 60 m lattice, 20 m by 15 m, ridge along x.
double roof(double x, double y)
{
    const double u = std::fmod(x, 60.0), v = std::fmod(y, 60.0);
    if (u < 5.0 || u >= 25.0 || v < 5.0 || v >= 20.0)
        return -1.0;
    return terrain(x - u + 15.0, y - v + 12.5) + 6.0 + 3.0 * (1.0 - std::fabs(v - 12.5) / 7.5);
}

/// Crown of the tree nearest to (x, y): trees on a jittered 12 m lattice away from buildings.
bool crown(double x, double y, double& top, double& radius, double& dist)
{
    const double cx = std::floor(x / 12.0) * 12.0 + 6.0, cy = std::floor(y / 12.0) * 12.0 + 6.0;
    vx::scene::SequenceRandom s(static_cast<uint64_t>(cx * 7919.0 + cy * 104729.0));
    const double tx = cx + (s.uniform() - 0.5) * 4.0, ty = cy + (s.uniform() - 0.5) * 4.0;
    if (s.uniform() < 0.5 || roof(tx, ty) >= 0.0)
        return false;
    radius = 2.5 + 2.5 * s.uniform();
    top = terrain(tx, ty) + 8.0 + 8.0 * s.uniform();
    dist = std::hypot(x - tx, y - ty);
    return dist < radius;
}

/// About 10 points per square metre in scan-line order: rolling terrain, gabled roofs, tree
/// crowns that some pulses pass through to the ground.
std::vector<VX_Point<float>> scene(int n)
{
    const double spacing = std::sqrt(0.1);
    const int perRow = static_cast<int>(std::sqrt(double(n)));
    std::vector<VX_Point<float>> pts;
    pts.reserve(n);
    vx::scene::SequenceRandom s(2024);
    for (int i = 0; i < n; ++i) {
        const int row = i / perRow, col = i % perRow;
        const double x = (col + 0.6 * (s.uniform() - 0.5)) * spacing,
                     y = (row + 0.6 * (s.uniform() - 0.5)) * spacing;
        double z = terrain(x, y);
        const double r = roof(x, y);
        double top = 0, radius = 0, dist = 0;
        if (r >= 0.0)
            z = r;
        else if (crown(x, y, top, radius, dist) && s.uniform() < 0.7)
            z = top - (radius - std::sqrt(radius * radius - dist * dist)) - 3.0 * s.uniform();
        VX_Point<float> p{};
        p.x = float(x), p.y = float(y), p.z = float(z);
        p.classification = 1;
        p.lastReturn = 1;
        pts.push_back(p);
    }
    return pts;
}

template <class T> void bench(const std::vector<VX_Point<float>>& cloud, bool soa)
{
    std::vector<VX_Point<T>> pts(cloud.size());
    for (std::size_t i = 0; i < cloud.size(); ++i) {
        const auto& c = cloud[i];
        pts[i] = {c.x, c.y, c.z, 0, 0, 0, 0.f, c.classification, c.lastReturn};
    }
    const int n = static_cast<int>(pts.size());
    Vexaro<T> v;
    v.setComputeBackend("cpu");
    v.setHostThreads(0);
    v.set_SoA(soa);
    v.loadDirectData(pts.data(), n);
    v.set_NormalVectorDecompositionSize(1.5);

    std::ostringstream sink;
    auto* old = std::cout.rdbuf(sink.rdbuf());
    auto t0 = std::chrono::steady_clock::now();
    v.calculateNormalVectors(5, 6, 7);
    const double full = vxbench::secondsSince(t0);
    t0 = std::chrono::steady_clock::now();
    vx::StepContext<T> context(vx::EngineAccess<T>::engine(v));
    vx::host::runNormals(context);
    const double driver = vxbench::secondsSince(t0);
    std::cout.rdbuf(old);

    std::vector<VX_Point<T>> out(n);
    v.copyPoints(out.data(), n);
    int zero = 0, planar = 0, scatter = 0, linear = 0;
    for (const auto& p : out) {
        zero += p.nx == 0 && p.ny == 0 && p.nz == 0;
        planar += p.classification == 5, scatter += p.classification == 6, linear += p.classification == 7;
    }
    std::printf("%-6s %s n=%d threads=%d cells=%d\n", sizeof(T) == 4 ? "float" : "double",
                soa ? "SoA" : "AoS", n, vx::EngineAccess<T>::engine(v).effectiveHostThreads(),
                vx::EngineAccess<T>::engine(v).grid.groupCount);
    std::printf("  calculateNormalVectors (decomposition, both phases, host sync): %.3f s, %.0f points/s\n",
                full, n / full);
    std::printf("  normal driver alone (both phases):                             %.3f s, %.0f points/s\n",
                driver, n / driver);
    std::printf("  zero normals %d, planar %d, scatter %d, linear %d\n", zero, planar, scatter, linear);
}

} // namespace

int main(int argc, char** argv)
{
    const int n = argc > 1 ? std::atoi(argv[1]) : 1000000;
    auto cloud = scene(n);
    if (argc > 2) {
        vx::scene::SequenceRandom s(99);
        for (std::size_t i = cloud.size(); i > 1; --i)
            std::swap(cloud[i - 1], cloud[s.next() % i]);
        std::printf("input order shuffled\n");
    }
    bench<float>(cloud, true); // the default layout and precision
    bench<float>(cloud, false);
    bench<double>(cloud, true);
    bench<double>(cloud, false);
    return 0;
}
