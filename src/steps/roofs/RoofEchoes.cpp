#include "steps/roofs/RoofEchoesDriver.h"

VX_INSTANTIATE_STEP(runRoofEchoes)
VX_INSTANTIATE_STEP(runRoofGrowth)
