#include "steps/vegetation/VegetationDriver.h"

VX_INSTANTIATE_STEP(runVegetation)
