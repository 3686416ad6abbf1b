// Seed corpus for the LAS reader fuzz target, made at run time so that no binary seeds live in the
// repository: truncated copies of real files, the same files cut down to a few points with the
// counts patched so they stay readable, and small generated files of every version and format.
//
//   make_las_seeds <output folder> [file.las ...]
#include "las/LasFile.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using vx::las::LasFile;

namespace {

void save(const std::string& path, const std::vector<uint8_t>& bytes, std::size_t length)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(std::min(length, bytes.size())));
}

void putLe(std::vector<uint8_t>& b, std::size_t at, uint64_t v, int n)
{
    for (int k = 0; k < n; ++k)
        b[at + k] = static_cast<uint8_t>(v >> (8 * k));
}

/// The file with only its first `keep` points and no EVLRs, its counts patched to match.
std::vector<uint8_t> shortened(const LasFile& f, std::size_t keep)
{
    const auto& h = f.header();
    std::vector<uint8_t> b(f.bytes().begin(),
                           f.bytes().begin() + h.offsetToPointData + keep * h.recordLength);
    uint32_t legacy = 0;
    for (int k = 3; k >= 0; --k)
        legacy = (legacy << 8) | b[107 + k];
    if (legacy != 0)
        putLe(b, 107, keep, 4);
    if (h.versionMinor >= 4) {
        putLe(b, 235, 0, 8); // first EVLR
        putLe(b, 243, 0, 4); // EVLR count
        putLe(b, 247, keep, 8);
    }
    return b;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s <output folder> [file.las ...]\n", argv[0]);
        return 2;
    }
    const std::string dir = argv[1];
    int written = 0;
    for (int a = 2; a < argc; ++a) {
        std::ifstream in(argv[a], std::ios::binary);
        const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                                         std::istreambuf_iterator<char>());
        const std::string stem = dir + "/sample" + std::to_string(a - 1);
        save(stem + "_head375", bytes, 375);
        save(stem + "_head4096", bytes, 4096);
        written += 2;
        try {
            const LasFile f = LasFile::read(argv[a]);
            for (const std::size_t keep : {std::size_t{1}, std::size_t{8}}) {
                if (keep > f.size())
                    continue;
                const auto cut = shortened(f, keep);
                save(stem + "_points" + std::to_string(keep), cut, cut.size());
                ++written;
            }
        } catch (const vexaro::LasError& e) {
            std::fprintf(stderr, "%s\n", e.what());
        }
    }

    const double scale[3] = {0.01, 0.01, 0.001}, offset[3] = {1000, 2000, 0};
    for (int minor = 0; minor <= 4; ++minor) {
        for (int format = 0; format <= 10; ++format) {
            LasFile f =
                LasFile::create(static_cast<uint8_t>(minor), static_cast<uint8_t>(format), scale, offset);
            for (int i = 0; i < 3; ++i) {
                vx::las::NewPoint p;
                p.x = 1000 + i;
                p.y = 2000 - i;
                p.z = 0.5 * i;
                p.intensity = static_cast<uint16_t>(100 * i);
                p.numberOfReturns = 3;
                p.returnNumber = i + 1;
                p.classification = 2 + i;
                p.gpsTime = i;
                f.addPoint(p);
            }
            f.write(dir + "/generated_1." + std::to_string(minor) + "_format" + std::to_string(format) +
                    ".las");
            ++written;
        }
    }
    std::printf("%d seed files in %s\n", written, dir.c_str());
    return 0;
}
