#include "steps/ground/LowPointsDriver.h"

VX_INSTANTIATE_STEP(runLowPoints)
