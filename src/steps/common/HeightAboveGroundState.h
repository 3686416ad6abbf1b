// What computeHeightAboveGround keeps on the engine: one height a point, in the store's point
// order (which is the file order: a decomposition sorts its links, never the points), on the
// backend for the tiering step and on the host for the copies out.
#pragma once

#include "exec/Buffer.h"

#include <cstddef>
#include <vector>

namespace vx {

struct HeightAboveGroundState {
    Buffer<float> heights;        ///< backend copy, one a point
    std::vector<float> host;      ///< the same values on the host
    unsigned long long cloud = 0; ///< PointStore::generation of the cloud they belong to
    bool computed = false;

    void reset()
    {
        heights.reset();
        host.clear();
        computed = false;
    }
    /// True when the heights belong to the cloud of this generation and size.
    bool heldFor(unsigned long long generation, std::size_t count) const
    {
        return computed && cloud == generation && host.size() == count;
    }
};

} // namespace vx
