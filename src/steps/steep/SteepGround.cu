#include "steps/steep/SteepGroundDriver.h"

VX_INSTANTIATE_STEP(runSteepGround)
