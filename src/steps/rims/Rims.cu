#include "steps/rims/RimsDriver.h"

VX_INSTANTIATE_STEP(runRims)
