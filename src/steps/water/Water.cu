#include "steps/water/WaterDriver.h"

VX_INSTANTIATE_STEP(runWater)
