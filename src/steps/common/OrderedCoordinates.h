// The coordinates in sorted order for a step's neighbourhood visits; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Launch.h"
#include "grid/OrderedXyz.h"

#include <cstddef>

namespace vx::VX_BACKEND_NS {

/// The coordinates of layout L in sorted order, gathered on the first call after a
/// decomposition (one launch, three values a point) and kept with the grid's links, so the
/// steps that follow on the same grid share them.
template <class T, class L>
OrderedXyz<typename PointsOf<T, L>::Real> orderedXyz(const StepContext<T>& c, L layout)
{
    auto& buffer = c.orderedBuffer(layout);
    const int n = c.pointCount();
    if (!buffer && n > 0) {
        buffer.allocate(c.backend(), 3 * static_cast<std::size_t>(n));
        launch(
            c.quietLaunchConfig(n), n,
            k_gatherOrderedXyz<PointsOf<T, L>, IndexOf<L>>{c.points(layout), c.index(layout), buffer.data()});
    }
    return {buffer.data()};
}

} // namespace vx::VX_BACKEND_NS
