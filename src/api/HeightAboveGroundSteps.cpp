// The height above ground: computing it, copying it out, and tiering the points or giving them
// the ground by it. The heights
// are kept by the step (steps/common/HeightAboveGroundState.h), not in the point records.
#include "api/StepRun.h"
#include "steps/common/HeightAboveGroundState.h"

#include <limits>

namespace {

/// Puts the loaded cloud on the backend when it is not there yet, or when the backend holds
/// another cloud; a grid of that other cloud is dropped with it.
template <class T> void uploadCurrentCloud(ClassifierCore<T>& core)
{
    auto& s = core.store;
    if (s.onDevice() && s.uploaded == s.generation)
        return;
    s.resetDevice();
    core.grid.resetDevice();
    core.uploadPoints();
}

} // namespace

template <class T> bool Vexaro<T>::heightStepReady()
{
    if (!core->dataLoaded) {
        facadeMessage(0, "ERROR! Data not loaded!");
        return false;
    }
    if (!parametersValidFor(vexaro::HeightAboveGround))
        return false;
    uploadCurrentCloud(*core);
    return true;
}

template <class T> void Vexaro<T>::computeHeightAboveGround(int groundClass)
{
    if (!heightStepReady())
        return;
    core->slots.GroundClass = groundClass;
    runStep("both", [&] { VX_STEP(runHeightAboveGround, runHeightAboveGround); });
}

template <class T> void Vexaro<T>::classifyByHeightAboveGround(int lowClass, int mediumClass, int highClass)
{
    if (!heightStepReady())
        return;
    core->slots.TargetClass = lowClass;
    core->slots.TargetClass2 = mediumClass;
    core->slots.TargetClass3 = highClass;
    runStep("both", [&] { VX_STEP(runHeightTiers, runHeightTiers); });
}

template <class T> void Vexaro<T>::classifyNearGround(int groundClass)
{
    if (!heightStepReady())
        return;
    core->slots.GroundClass = groundClass;
    runStep("both", [&] { VX_STEP(runNearGround, runNearGround); });
}

template <class T> void Vexaro<T>::classifyRaisedPoints(int raisedClass)
{
    if (!heightStepReady())
        return;
    core->slots.TargetClass = raisedClass;
    runStep("both", [&] { VX_STEP(runRaisedPoints, runRaisedPoints); });
}

template <class T> std::vector<float> Vexaro<T>::heightsAboveGround()
{
    const auto* state = core->stepStates.template find<vx::HeightAboveGroundState>();
    if (!state || !state->heldFor(core->store.generation, core->store.records.size()))
        return {};
    return state->host;
}

template <class T> void Vexaro<T>::saveHeightAboveGroundToBuffer(float* buffer, int count)
{
    const int n = static_cast<int>(core->store.records.size());
    if (n != count || (count > 0 && !buffer)) {
        facadeMessage(0, "Unexpected loss of data, heights above ground can't be saved");
        return;
    }
    const std::vector<float> heights = heightsAboveGround();
    if (heights.empty() && count > 0)
        facadeMessage(0, "ERROR! No heights above ground for this cloud; run computeHeightAboveGround first");
    for (int i = 0; i < count; ++i)
        buffer[i] =
            heights.empty() ? std::numeric_limits<float>::quiet_NaN() : heights[static_cast<std::size_t>(i)];
}

#undef VX_STEP

template bool Vexaro<float>::heightStepReady();
template bool Vexaro<double>::heightStepReady();
template void Vexaro<float>::computeHeightAboveGround(int);
template void Vexaro<double>::computeHeightAboveGround(int);
template void Vexaro<float>::classifyByHeightAboveGround(int, int, int);
template void Vexaro<double>::classifyByHeightAboveGround(int, int, int);
template void Vexaro<float>::classifyNearGround(int);
template void Vexaro<double>::classifyNearGround(int);
template void Vexaro<float>::classifyRaisedPoints(int);
template void Vexaro<double>::classifyRaisedPoints(int);
template void Vexaro<float>::saveHeightAboveGroundToBuffer(float*, int);
template void Vexaro<double>::saveHeightAboveGroundToBuffer(float*, int);
template std::vector<float> Vexaro<float>::heightsAboveGround();
template std::vector<float> Vexaro<double>::heightsAboveGround();
