#include "steps/bumps/BumpsDriver.h"

VX_INSTANTIATE_STEP(runBumps)
