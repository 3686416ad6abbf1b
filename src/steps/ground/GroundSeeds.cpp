#include "steps/ground/GroundSeedsDriver.h"

VX_INSTANTIATE_STEP(runGroundSeeds)
