// What the added steps read of each pulse beside the coordinates, for clouds that come from
// buffers rather than LAS files: the number of returns and the intensity.
#include "api/StepRun.h"

#include <cstdint>
#include <vector>

namespace {

/// values[0..count) as U into `out` when a cloud is loaded, they come one a point of it and each
/// lies within 0..most; otherwise the message that says why ("" when kept).
template <class T, class U>
std::string perPointValues(const ClassifierCore<T>& core, const int* values, int count, int most,
                           const char* what, std::vector<U>& out)
{
    if (!core.dataLoaded)
        return "ERROR! Data not loaded!";
    const std::size_t points = core.store.records.size();
    if (count < 0 || static_cast<std::size_t>(count) != points || (count > 0 && !values))
        return std::string("ERROR! ") + what +
               " must come one a point of the loaded cloud; none kept. Given: " + vx::toText(count);
    out.resize(points);
    for (std::size_t i = 0; i < points; ++i) {
        if (values[i] < 0 || values[i] > most)
            return std::string("ERROR! ") + what + " outside 0.." + std::to_string(most) +
                   ", none kept. Point: " + vx::toText(i);
        out[i] = static_cast<U>(values[i]);
    }
    return "";
}

} // namespace

template <class T> void Vexaro<T>::loadReturnCountsFromBuffer(const int* numberOfReturns, int count)
{
    std::vector<uint8_t> counts;
    const std::string why = perPointValues(*core, numberOfReturns, count, 255, "Number of returns", counts);
    if (why.empty())
        core->store.returnCounts = std::move(counts);
    else
        facadeMessage(0, why);
}

template <class T> void Vexaro<T>::loadIntensitiesFromBuffer(const int* intensities, int count)
{
    std::vector<uint16_t> values;
    const std::string why = perPointValues(*core, intensities, count, 65535, "Intensities", values);
    if (why.empty())
        core->store.intensities = std::move(values);
    else
        facadeMessage(0, why);
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
