// Kernels of the vegetation step: the filter and its two spreading passes, then the completion.
#pragma once

#include "vegetation/CompletionKernels.h"
#include "vegetation/FilterKernels.h"
