// libFuzzer target for the LAS reader: any byte string either fails with a LasError or yields a
// file whose every record can be read, reclassified with its own classes without a byte changing,
// and patched with a creation year.
#include "las/LasFile.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

using vx::las::LasFile;

namespace {
volatile double sink; // keeps the decoded values alive
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    const std::vector<uint8_t> input(data, data + size);
    try {
        LasFile f = LasFile::fromMemory(input, "fuzz input");
        const auto& h = f.header();
        double sum = h.scale[0] + h.offset[1] + h.minBound[2] + h.maxBound[0] + h.pointCount + h.evlrCount;
        for (const auto& v : f.vlrs())
            sum += v.payloadSize + v.recordId + v.userId.size() + v.description.size();
        for (std::size_t i = 0; i < f.size(); ++i) {
            const double values[] = {double(f.rawX(i)),
                                     double(f.rawY(i)),
                                     double(f.rawZ(i)),
                                     f.x(i),
                                     f.y(i),
                                     f.z(i),
                                     double(f.intensity(i)),
                                     double(f.returnNumber(i)),
                                     double(f.numberOfReturns(i)),
                                     f.gpsTime(i)};
            for (double v : values)
                sum += v;
            f.setClassification(i, f.classification(i));
        }
        // Writing back a class the record already holds must leave the bytes as they were.
        if (f.bytes() != input)
            std::abort();
        if (f.size() > 0) {
            try {
                f.setClassification(f.size() - 1, h.pointFormat >= 6 ? 256 : 32);
                std::abort(); // an oversized class must be refused
            } catch (const vexaro::LasError&) {
            }
            f.setClassification(0, h.pointFormat >= 6 ? 255 : 31);
        }
        f.setCreationYear(static_cast<uint16_t>(f.size()));
        if (f.bytes().size() != input.size())
            std::abort();
        sink = sum;
    } catch (const vexaro::LasError&) {
    }
    return 0;
}
