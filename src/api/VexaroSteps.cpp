// The processing methods: store the class arguments, run the driver of the layout in use,
// print the timing lines, bring the results back to the host copy.
#include "api/StepRun.h"

using vx::Messenger;

template <class T> void Vexaro<T>::calculateNormalVectors(int planarClass, int scatterClass, int linearClass)
{
    if (!core->dataLoaded) {
        facadeMessage(0, "ERROR! Data not loaded!");
        return;
    }
    if (!parametersValidFor(vexaro::Normals))
        return;
    // Unset, the cells are as large as the neighbour search so the search sees every neighbour.
    double size = normalVectorDecompositionSize > 0.0
                      ? normalVectorDecompositionSize
                      : static_cast<double>(core->par.NNSearchRange_NormalVectors);
    core->decompose(size, size, size);
    core->syncToHost();
    core->slots.TargetClass = planarClass;
    core->slots.TargetClass2 = scatterClass;
    core->slots.TargetClass3 = linearClass;
    runStep("both", [&] { VX_STEP(runNormals, runNormals); });
    if (autoSaveNormals)
        saveNormalVectors(baseName);
    normalsComputed = true;
}

template <class T> void Vexaro<T>::regularGridDecomposition3D(double sx, double sy, double sz)
{
    core->decompose(sx, sy, sz);
    core->syncToHost();
}

template <class T> void Vexaro<T>::regularGridDecomposition3Dcube(double s)
{
    regularGridDecomposition3D(s, s, s);
}

template <class T> void Vexaro<T>::regularGridDecomposition2D(double sx, double sy)
{
    regularGridDecomposition3D(sx, sy, 0.0);
}

template <class T> void Vexaro<T>::resetPointCloudClasses(int newClass)
{
    if (!parametersValidFor(vexaro::Reset))
        return;
    core->slots.TargetClass = newClass;
    runStep("both", [&] { VX_STEP(runResetClasses, runResetClasses); });
}

template <class T> void Vexaro<T>::gatherLowPoints(int lowClass, int groundClass)
{
    core->slots.TargetClass = lowClass;
    core->slots.GroundClass = groundClass;
    runStep("both", [&] { VX_STEP(runLowPoints, runLowPoints); });
}

template <class T> void Vexaro<T>::calculateHeightIndex(int referenceClass)
{
    core->slots.ReferenceClass = referenceClass;
    runStep("both", [&] { VX_STEP(runHeightIndex, runHeightIndex); });
}

template <class T> void Vexaro<T>::findGroundSeed(int groundClass)
{
    if (!parametersValidFor(vexaro::GroundSeeds))
        return;
    core->slots.GroundClass = groundClass;
    runStep("both", [&] { VX_STEP(runGroundSeeds, runGroundSeeds); });
}

template <class T> void Vexaro<T>::performIterativeGroundGrowth(int groundClass)
{
    if (!parametersValidFor(vexaro::GroundGrowth))
        return;
    core->slots.TargetClass = groundClass;
    runStep("both", [&] { VX_STEP(runGroundGrowth, runGroundGrowth); });
}

template <class T> void Vexaro<T>::performGroundCorrection(int) {}

template <class T>
void Vexaro<T>::performLowPointCorrection(int groundClass, int candidateClass, int replacementClass)
{
    if (!parametersValidFor(vexaro::LowPointCorrection))
        return;
    core->slots.GroundClass = groundClass;
    core->slots.ReferenceClass = candidateClass;
    core->slots.TargetClass = replacementClass;
    runStep("both", [&] { VX_STEP(runLowPointCorrection, runLowPointCorrection); });
}

template <class T>
void Vexaro<T>::findBuildingSeed(int buildingClass, int groundClass, int sourceClass, int companionClass)
{
    if (!parametersValidFor(vexaro::BuildingSeeds))
        return;
    core->slots.TargetClass = buildingClass;
    core->slots.GroundClass = groundClass;
    core->slots.NeighbourPlaneClass = sourceClass;
    core->slots.NeighbourDistanceClass = companionClass;
    runStep("aos-only", [&] { VX_STEP(runBuildingSeeds, runBuildingSeeds); });
}

template <class T>
void Vexaro<T>::performIterativeBuildingGrowth(int buildingClass, int groundClass, int sourceClass,
                                               int companionClass)
{
    if (!parametersValidFor(vexaro::BuildingGrowth))
        return;
    core->slots.TargetClass = buildingClass;
    core->slots.GroundClass = groundClass;
    core->slots.NeighbourPlaneClass = sourceClass;
    core->slots.NeighbourDistanceClass = companionClass;
    runStep("aos-only", [&] { VX_STEP(runBuildingGrowth, runBuildingGrowth); });
}

template <class T>
void Vexaro<T>::performVegetationClassification(int lowVegetationClass, int mediumVegetationClass,
                                                int highVegetationClass, int groundClass, int)
{
    if (!parametersValidFor(vexaro::Vegetation))
        return;
    core->slots.TargetClass = lowVegetationClass;
    core->slots.TargetClass2 = mediumVegetationClass;
    core->slots.TargetClass3 = highVegetationClass;
    core->slots.GroundClass = groundClass;
    runStep("aos-only", [&] { VX_STEP(runVegetation, runVegetation); });
}

template <class T> void Vexaro<T>::classifyTerrainGround(int groundClass, int bridgeDeckClass)
{
    if (!core->dataLoaded) {
        facadeMessage(0, "ERROR! Data not loaded!");
        return;
    }
    if (!parametersValidFor(vexaro::TerrainGround))
        return;
    core->slots.GroundClass = groundClass;
    core->slots.TargetClass = bridgeDeckClass;
    runStep("both", [&] { VX_STEP(runTerrainGround, runTerrainGround); });
}

#undef VX_STEP

#define VX_INSTANTIATE_FACADE_STEPS(T)                                                                       \
    template void Vexaro<T>::calculateNormalVectors(int, int, int);                                          \
    template void Vexaro<T>::regularGridDecomposition3D(double, double, double);                             \
    template void Vexaro<T>::regularGridDecomposition3Dcube(double);                                         \
    template void Vexaro<T>::regularGridDecomposition2D(double, double);                                     \
    template void Vexaro<T>::resetPointCloudClasses(int);                                                    \
    template void Vexaro<T>::gatherLowPoints(int, int);                                                      \
    template void Vexaro<T>::calculateHeightIndex(int);                                                      \
    template void Vexaro<T>::findGroundSeed(int);                                                            \
    template void Vexaro<T>::performIterativeGroundGrowth(int);                                              \
    template void Vexaro<T>::performGroundCorrection(int);                                                   \
    template void Vexaro<T>::performLowPointCorrection(int, int, int);                                       \
    template void Vexaro<T>::findBuildingSeed(int, int, int, int);                                           \
    template void Vexaro<T>::performIterativeBuildingGrowth(int, int, int, int);                             \
    template void Vexaro<T>::performVegetationClassification(int, int, int, int, int);                       \
    template void Vexaro<T>::classifyTerrainGround(int, int);
VX_INSTANTIATE_FACADE_STEPS(float)
VX_INSTANTIATE_FACADE_STEPS(double)
