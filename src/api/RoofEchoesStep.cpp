// The roof test and the growths by echoes of the facade, and the return counts it reads for clouds that come
// from buffers rather than LAS files.
#include "api/StepRun.h"

template <class T> void Vexaro<T>::classifyRoofsByEchoes(int buildingClass)
{
    if (!addedStepReady(vexaro::RoofEchoes, "Roof search by echoes"))
        return;
    core->slots.TargetClass = buildingClass;
    runStep("both", [&] { VX_STEP(runRoofEchoes, runRoofEchoes); });
}

template <class T> void Vexaro<T>::growRoofsByEchoes(int buildingClass)
{
    if (!addedStepReady(vexaro::RoofEchoes, "Roof growth by echoes"))
        return;
    core->slots.TargetClass = buildingClass;
    runStep("both", [&] { VX_STEP(runRoofGrowth, runRoofGrowth); });
}

template <class T> void Vexaro<T>::growVegetationByEchoes(int lowClass, int mediumClass, int highClass)
{
    if (!addedStepReady(vexaro::RoofEchoes | vexaro::HeightAboveGround, "Vegetation growth by echoes"))
        return;
    core->slots.TargetClass = lowClass;
    core->slots.TargetClass2 = mediumClass;
    core->slots.TargetClass3 = highClass;
    runStep("both", [&] { VX_STEP(runVegetationGrowth, runVegetationGrowth); });
}

template <class T> void Vexaro<T>::loadReturnCountsFromBuffer(const int* numberOfReturns, int count)
{
    const auto n = core->store.records.size();
    if (!core->dataLoaded || count < 0 || static_cast<std::size_t>(count) != n ||
        (count > 0 && !numberOfReturns)) {
        facadeMessage(0, "ERROR! Return counts must come one a point of the loaded cloud; none kept. Given:",
                      vx::toText(count));
        return;
    }
    std::vector<uint8_t> counts(n);
    for (std::size_t i = 0; i < n; ++i) {
        const int r = numberOfReturns[i];
        if (r < 0 || r > 255) {
            facadeMessage(0, "ERROR! Number of returns outside 0..255, none kept. Point:", vx::toText(i));
            return;
        }
        counts[i] = static_cast<uint8_t>(r);
    }
    core->store.returnCounts = std::move(counts);
}

#undef VX_STEP

template void Vexaro<float>::classifyRoofsByEchoes(int);
template void Vexaro<double>::classifyRoofsByEchoes(int);
template void Vexaro<float>::growRoofsByEchoes(int);
template void Vexaro<double>::growRoofsByEchoes(int);
template void Vexaro<float>::growVegetationByEchoes(int, int, int);
template void Vexaro<double>::growVegetationByEchoes(int, int, int);
template void Vexaro<float>::loadReturnCountsFromBuffer(const int*, int);
template void Vexaro<double>::loadReturnCountsFromBuffer(const int*, int);
