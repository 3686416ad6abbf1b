// Peak memory and time of Vexaro::loadLASFile on a generated 10,000,000-point file.
// Usage: bench_load [FILE]   (default /tmp/vexaro-bench-load.las; generated when missing)
#include "las/LasFile.h"

#include <Vexaro.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace {

void generate(const std::string& path, int n)
{
    const double scale[3] = {0.01, 0.01, 0.01}, offset[3] = {0, 0, 0};
    auto f = vx::las::LasFile::create(4, 6, scale, offset);
    f.reserve(n);
    for (int i = 0; i < n; ++i) {
        vx::las::NewPoint p;
        p.x = (i % 3163) * 0.31, p.y = (i / 3163) * 0.31, p.z = (i % 97) * 0.05;
        p.intensity = static_cast<uint16_t>(i);
        f.addPoint(p);
    }
    f.write(path);
}

} // namespace

int main(int argc, char** argv)
{
    const std::string path = argc > 1 ? argv[1] : "/tmp/vexaro-bench-load.las";
    struct stat st {};
    if (stat(path.c_str(), &st) != 0) {
        generate(path, 10000000);
        stat(path.c_str(), &st);
    }
    // Load in a fresh process so that its peak is the load's alone.
    for (const char* precision : {"float", "double"}) {
        pid_t child = fork();
        if (child == 0) {
            const auto t0 = std::chrono::steady_clock::now();
            if (std::string(precision) == "float") {
                Vexaro<float> v;
                v.setFacadeMessageLevel(0);
                v.loadLASFile(path);
            } else {
                Vexaro<double> v;
                v.setFacadeMessageLevel(0);
                v.loadLASFile(path);
            }
            const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
            rusage u{};
            getrusage(RUSAGE_SELF, &u);
            const double mb = st.st_size / 1048576.0, peak = u.ru_maxrss / 1024.0;
            std::printf(
                "loadLASFile %s: %.0f MiB file in %.2f s (%.0f MB/s), peak RSS %.0f MiB = %.2f x file\n",
                precision, mb, s, st.st_size / s / 1e6, peak, peak / mb);
            std::fflush(stdout);
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
    }
    return 0;
}
