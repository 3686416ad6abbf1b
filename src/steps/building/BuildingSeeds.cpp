#include "steps/building/BuildingSeedsDriver.h"

VX_INSTANTIATE_STEP(runBuildingSeeds)
