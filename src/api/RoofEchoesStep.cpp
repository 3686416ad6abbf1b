// The roof test and the growths by echoes of the facade.
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

#undef VX_STEP

template void Vexaro<float>::classifyRoofsByEchoes(int);
template void Vexaro<double>::classifyRoofsByEchoes(int);
template void Vexaro<float>::growRoofsByEchoes(int);
template void Vexaro<double>::growRoofsByEchoes(int);
template void Vexaro<float>::growVegetationByEchoes(int, int, int);
template void Vexaro<double>::growVegetationByEchoes(int, int, int);
