#include "ground/ResetClassesDriver.h"

VX_INSTANTIATE_STEP(runResetClasses)
