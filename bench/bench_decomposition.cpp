// Times the grid decomposition of generated ALS-like clouds on the host backend.
// Usage: bench_decomposition [points...]   (default 1000000 10000000)
#include "BenchScene.h"
#include "api/EngineAccess.h"

#include <sys/resource.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <vector>

namespace {

/// About 10 points per square metre: rolling terrain, box roofs, tree crowns.
std::vector<VX_Point<float>> scene(int n)
{
    const double side = vxbench::sceneSide(n);
    std::vector<VX_Point<float>> pts(n);
    vx::scene::SequenceRandom s(12345);
    for (int i = 0; i < n; ++i) {
        const double x = s.uniform() * side, y = s.uniform() * side;
        double z = vxbench::rollingTerrain(x, y);
        const double kind = s.uniform();
        if (vxbench::underBoxRoof(x, y))
            z += 8.0; // roofs
        else if (kind < 0.2)
            z += 2.0 + 12.0 * s.uniform(); // vegetation
        pts[i] = {float(x - side / 2), float(y - side / 2), float(z), 0, 0, 0, 0.f, 1, kind < 0.1 ? 0 : 1};
    }
    return pts;
}

long peakRssMb()
{
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss / 1024;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<int> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.push_back(std::atoi(argv[i]));
    if (sizes.empty())
        sizes = {1000000, 10000000};
    for (int n : sizes) {
        for (bool soa : {false, true}) {
            auto pts = scene(n);
            Vexaro<float> v;
            v.setComputeBackend("cpu");
            v.setMessageLevel(0);
            v.set_SoA(soa);
            v.loadDirectData(pts.data(), n);
            pts = {};
            std::ostringstream sink;
            auto* old = std::cout.rdbuf(sink.rdbuf());
            const auto t0 = std::chrono::steady_clock::now();
            v.regularGridDecomposition3D(3.0, 3.0, 3.0);
            const double s = vxbench::secondsSince(t0);
            std::cout.rdbuf(old);
            std::printf("decomposition %s n=%d cells=%d: %.3f s (%.2f Mpoints/s) incl. upload and host sync, "
                        "peak RSS %ld MB\n",
                        soa ? "SoA" : "AoS", n, vx::EngineAccess<float>::engine(v).grid.groupCount, s,
                        n / s / 1e6, peakRssMb());
        }
    }
    return 0;
}
