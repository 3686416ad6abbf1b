// The steep-ground step of the facade: points on faces too steep for a terrain surface of cells
// join the ground found by an earlier step.
#include "api/StepRun.h"

template <class T> void Vexaro<T>::classifySteepGround(int groundClass)
{
    if (!addedStepReady(vexaro::SteepGround, "Steep ground search"))
        return;
    core->slots.TargetClass = groundClass;
    runStep("both", [&] { VX_STEP(runSteepGround, runSteepGround); });
}

#undef VX_STEP

template void Vexaro<float>::classifySteepGround(int);
template void Vexaro<double>::classifySteepGround(int);
