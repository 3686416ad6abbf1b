#include "steps/height/HeightAboveGroundDriver.h"

VX_INSTANTIATE_STEP(runHeightAboveGround)
VX_INSTANTIATE_STEP(runHeightTiers)
VX_INSTANTIATE_STEP(runNearGround)
VX_INSTANTIATE_STEP(runRaisedPoints)
