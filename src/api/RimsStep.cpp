// The ground-rim step of the facade: raised points that continue the ground beside them at their
// own height, the upper edges of terraces and banks, join the ground.
#include "api/StepRun.h"

template <class T> void Vexaro<T>::classifyGroundRims(int groundClass)
{
    if (!addedStepReady(vexaro::Rims, "Ground rim search"))
        return;
    core->slots.GroundClass = groundClass;
    runStep("both", [&] { VX_STEP(runRims, runRims); });
}

#undef VX_STEP

template void Vexaro<float>::classifyGroundRims(int);
template void Vexaro<double>::classifyGroundRims(int);
