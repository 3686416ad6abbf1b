#include "steps/ground/GroundGrowthDriver.h"

VX_INSTANTIATE_STEP(runGroundGrowth)
