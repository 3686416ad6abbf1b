// What the added steps read of each pulse beside the coordinates, for clouds that come from
// buffers rather than LAS files: the number of returns and the intensity.
#include "api/StepRun.h"

#include <cstdint>
#include <vector>

namespace {

/// values[0..count) as U when there is one a point of the loaded cloud and each lies within
/// 0..most; otherwise the message that says why, and nothing.
template <class U>
bool perPointValues(const int* values, int count, std::size_t points, int most, const char* what,
                    std::vector<U>& out, std::string& why)
{
    if (count < 0 || static_cast<std::size_t>(count) != points || (count > 0 && !values)) {
        why = std::string("ERROR! ") + what +
              " must come one a point of the loaded cloud; none kept. Given: " + vx::toText(count);
        return false;
    }
    out.resize(points);
    for (std::size_t i = 0; i < points; ++i) {
        if (values[i] < 0 || values[i] > most) {
            why = std::string("ERROR! ") + what + " outside 0.." + std::to_string(most) +
                  ", none kept. Point: " + vx::toText(i);
            return false;
        }
        out[i] = static_cast<U>(values[i]);
    }
    return true;
}

} // namespace

template <class T> void Vexaro<T>::loadReturnCountsFromBuffer(const int* numberOfReturns, int count)
{
    std::vector<uint8_t> counts;
    std::string why;
    const std::size_t n = core->dataLoaded ? core->store.records.size() : 0;
    if (!core->dataLoaded ||
        !perPointValues(numberOfReturns, count, n, 255, "Number of returns", counts, why)) {
        facadeMessage(0, core->dataLoaded ? why : "ERROR! Data not loaded!");
        return;
    }
    core->store.returnCounts = std::move(counts);
}

template <class T> void Vexaro<T>::loadIntensitiesFromBuffer(const int* intensities, int count)
{
    std::vector<uint16_t> values;
    std::string why;
    const std::size_t n = core->dataLoaded ? core->store.records.size() : 0;
    if (!core->dataLoaded || !perPointValues(intensities, count, n, 65535, "Intensities", values, why)) {
        facadeMessage(0, core->dataLoaded ? why : "ERROR! Data not loaded!");
        return;
    }
    core->store.intensities = std::move(values);
}

template <class T> void Vexaro<T>::classifyWater(int groundClass, int waterClass)
{
    if (!addedStepReady(vexaro::Water, "Water search"))
        return;
    core->slots.GroundClass = groundClass;
    core->slots.TargetClass = waterClass;
    runStep("both", [&] { VX_STEP(runWater, runWater); });
}

#undef VX_STEP

template void Vexaro<float>::loadReturnCountsFromBuffer(const int*, int);
template void Vexaro<double>::loadReturnCountsFromBuffer(const int*, int);
template void Vexaro<float>::loadIntensitiesFromBuffer(const int*, int);
template void Vexaro<double>::loadIntensitiesFromBuffer(const int*, int);
template void Vexaro<float>::classifyWater(int, int);
template void Vexaro<double>::classifyWater(int, int);
