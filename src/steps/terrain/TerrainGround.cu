#include "steps/terrain/TerrainGroundDriver.h"

VX_INSTANTIATE_STEP(runTerrainGround)
