// The per-point verdict bytes of the steps that judge in one pass and mark in the next.
#pragma once

#include "exec/Hd.h"

#include <cstdint>

namespace vx {

/// Verdicts of 1 (a point the step marks, or one that joins a growth), for counting.
struct IsMarked {
    VX_HD bool operator()(uint8_t v) const { return v == 1; }
};

} // namespace vx
