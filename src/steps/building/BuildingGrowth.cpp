#include "steps/building/BuildingGrowthDriver.h"

VX_INSTANTIATE_STEP(runBuildingGrowth)
