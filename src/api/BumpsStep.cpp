// The ground-bump step of the facade: low objects that a terrain surface's allowance took for
// ground stand out of the plane of the ground around them.
#include "api/StepRun.h"

template <class T> void Vexaro<T>::classifyGroundBumps(int groundClass, int bumpClass)
{
    if (!addedStepReady(vexaro::Bumps, "Ground bump search"))
        return;
    core->slots.GroundClass = groundClass;
    core->slots.TargetClass = bumpClass;
    runStep("both", [&] { VX_STEP(runBumps, runBumps); });
}

#undef VX_STEP

template void Vexaro<float>::classifyGroundBumps(int, int);
template void Vexaro<double>::classifyGroundBumps(int, int);
