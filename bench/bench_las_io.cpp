// LAS codec throughput: writes and reads a generated 10,000,000-point format-6 file (best of 3),
// decodes every record's coordinates and class, and measures the peak memory of a read in a
// fresh process.
//
//   bench_las_io [file path, default /tmp/vexaro_bench_las.las] [points, default 10000000]
#include "las/LasFile.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using vx::las::LasFile;

namespace {

double seconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

/// The child mode: one read, then the process's own peak resident set in KiB on stdout.
int readOnce(const char* path)
{
    const LasFile f = LasFile::read(path);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%ld %zu\n", usage.ru_maxrss, f.size());
    return 0;
}

/// Peak RSS (KiB) of a fresh process that only reads the file.
long readPeakRssKiB(const std::string& path)
{
    int pipeFd[2];
    if (pipe(pipeFd) != 0)
        return -1;
    const pid_t child = fork();
    if (child == 0) {
        dup2(pipeFd[1], STDOUT_FILENO);
        close(pipeFd[0]);
        execl("/proc/self/exe", "bench_las_io", "--read-once", path.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    close(pipeFd[1]);
    char text[128] = {};
    const ssize_t got = ::read(pipeFd[0], text, sizeof text - 1);
    close(pipeFd[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (got <= 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return -1;
    return std::strtol(text, nullptr, 10);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--read-once") == 0)
        return readOnce(argv[2]);
    const std::string path = argc > 1 ? argv[1] : "/tmp/vexaro_bench_las.las";
    const std::size_t points = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 10000000;

    auto t0 = std::chrono::steady_clock::now();
    const double scale[3] = {0.01, 0.01, 0.01}, offset[3] = {500000, 5000000, 0};
    std::size_t bytes = 0;
    {
        LasFile file = LasFile::create(4, 6, scale, offset);
        file.reserve(points);
        vx::las::NewPoint p;
        uint32_t state = 12345;
        for (std::size_t i = 0; i < points; ++i) {
            state = state * 1664525u + 1013904223u;
            p.x = 500000 + (i % 4000) * 0.25;
            p.y = 5000000 + static_cast<double>(i / 4000) * 0.25;
            p.z = 100 + (state >> 20) * 0.01;
            p.intensity = static_cast<uint16_t>(state >> 16);
            p.numberOfReturns = 1 + (state >> 8) % 4;
            p.returnNumber = 1 + (state >> 12) % p.numberOfReturns;
            p.classification = 1 + (state >> 4) % 6;
            p.gpsTime = 3.0e8 + i * 1e-5;
            file.addPoint(p);
        }
        const double generate = seconds(t0);
        bytes = file.bytes().size();
        std::printf("LAS I/O benchmark: %zu points, LAS 1.4 format 6, %zu bytes, %s\n", points, bytes,
                    path.c_str());
        std::printf("generate (addPoint):           %.3f s\n", generate);

        double bestWrite = 1e300;
        for (int run = 0; run < 3; ++run) {
            t0 = std::chrono::steady_clock::now();
            file.write(path);
            bestWrite = std::min(bestWrite, seconds(t0));
        }
        std::printf("write, best of 3:              %.3f s  %8.1f MB/s\n", bestWrite,
                    bytes / bestWrite / 1e6);
    }

    double bestRead = 1e300, bestDecode = 1e300, checksum = 0;
    for (int run = 0; run < 3; ++run) {
        t0 = std::chrono::steady_clock::now();
        const LasFile file = LasFile::read(path);
        bestRead = std::min(bestRead, seconds(t0));
        t0 = std::chrono::steady_clock::now();
        double sum = 0;
        for (std::size_t i = 0; i < file.size(); ++i)
            sum += file.x(i) + file.y(i) + file.z(i) + file.classification(i) + file.returnNumber(i);
        bestDecode = std::min(bestDecode, seconds(t0));
        checksum = sum;
    }
    std::printf("read (page cache), best of 3: %.3f s  %8.1f MB/s\n", bestRead, bytes / bestRead / 1e6);
    std::printf("decode x,y,z,class,return:     %.3f s  %8.1f M points/s (checksum %.6g)\n", bestDecode,
                points / bestDecode / 1e6, checksum);
    const long rss = readPeakRssKiB(path);
    std::printf("peak RSS of a process that reads the file: %.1f MiB (file %.1f MiB)\n", rss / 1024.0,
                bytes / 1048576.0);
    return 0;
}
