#include "steps/roofs/EchoGrowthDriver.h"
#include "steps/roofs/RoofEchoesDriver.h"

VX_INSTANTIATE_STEP(runRoofEchoes)
VX_INSTANTIATE_STEP(runRoofGrowth)
VX_INSTANTIATE_STEP(runVegetationGrowth)
