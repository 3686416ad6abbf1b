// Times the iterative ground growth on a generated scene on the host backend.
// Usage: bench_ground [points] [threads]   (default 1000000 points, every core)
//
// The scene: about 10 points per square metre of rolling terrain (normals from its gradient),
// flat box roofs 8 m up and scattered vegetation returns with random normals. Ground seeds are
// placed every 15 m; the growth runs with the default parameters over 2 m cubes.
#include "BenchScene.h"
#include "api/EngineAccess.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

template <class T> std::vector<VX_Point<T>> scene(int n, int& groundTruth)
{
    const double side = vxbench::sceneSide(n);
    std::vector<VX_Point<T>> pts(n);
    vx::scene::SequenceRandom s(4242);
    groundTruth = 0;
    for (int i = 0; i < n; ++i) {
        const double x = s.uniform() * side, y = s.uniform() * side;
        double z = vxbench::rollingTerrain(x, y);
        // Terrain normal from the gradient of z.
        double nx = -(5.0 / 40.0) * std::cos(x / 40.0), ny = (3.0 / 25.0) * std::sin(y / 25.0), nz = 1.0;
        const double len = std::sqrt(nx * nx + ny * ny + nz * nz);
        nx /= len, ny /= len, nz /= len;
        int cls = 1;
        const bool roof = vxbench::underBoxRoof(x, y);
        if (roof) {
            z += 8.0;
            nx = 0, ny = 0, nz = 1;
        } else if (s.uniform() < 0.2) {
            z += 1.0 + 12.0 * s.uniform();
            nx = s.uniform() - 0.5, ny = s.uniform() - 0.5, nz = s.uniform() - 0.5;
        } else {
            ++groundTruth;
            if (std::fmod(x, 15.0) < 0.5 && std::fmod(y, 15.0) < 0.5)
                cls = 2;
        }
        pts[i] = {T(x - side / 2), T(y - side / 2), T(z), T(nx), T(ny), T(nz), 0.f, cls, 1};
    }
    return pts;
}

template <class T> void run(int n, bool soa, int threads)
{
    int truth = 0;
    auto pts = scene<T>(n, truth);
    Vexaro<T> v;
    v.setComputeBackend("cpu");
    v.setHostThreads(threads);
    v.setMessageLevel(2);
    v.setFacadeMessageLevel(0);
    v.set_SoA(soa);
    v.loadDirectData(pts.data(), n);
    pts = {};
    std::vector<int> table(256, 0);
    table[1] = 1;
    v.set_AllowedInputClasses(table.data(), 256);

    std::ostringstream sink;
    auto* old = std::cout.rdbuf(sink.rdbuf());
    v.regularGridDecomposition3Dcube(2.0);
    sink.str("");
    const auto t0 = std::chrono::steady_clock::now();
    v.performIterativeGroundGrowth(2);
    const double secs = vxbench::secondsSince(t0);
    std::cout.rdbuf(old);

    int iterations = 0;
    std::istringstream lines(sink.str());
    for (std::string line; std::getline(lines, line);)
        if (line.rfind("Iteration: ", 0) == 0)
            ++iterations;
    std::vector<VX_Point<T>> out(n);
    v.copyPoints(out.data(), n);
    int ground = 0;
    for (const auto& p : out)
        ground += p.classification == 2;
    std::printf(
        "ground growth %-6s %s n=%d cells=%d threads=%d: %d iterations, %.3f s total, %.3f s per iteration "
        "(incl. remap and count), %d ground of %d generated ground points\n",
        sizeof(T) == 4 ? "float" : "double", soa ? "SoA" : "AoS", n,
        vx::EngineAccess<T>::engine(v).grid.groupCount, vx::EngineAccess<T>::engine(v).effectiveHostThreads(),
        iterations, secs, iterations ? secs / iterations : 0.0, ground, truth);
}

} // namespace

int main(int argc, char** argv)
{
    const int n = argc > 1 ? std::atoi(argv[1]) : 1000000;
    const int threads = argc > 2 ? std::atoi(argv[2]) : 0;
    run<float>(n, false, threads);
    run<float>(n, true, threads);
    run<double>(n, false, threads);
    run<double>(n, true, threads);
    return 0;
}
