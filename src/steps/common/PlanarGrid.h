// The grid check of the steps that search a plan radius through the columns of a planar grid.
#pragma once

#include "core/StepContext.h"

#include <string>

namespace vx {

/// True when the grid is planar, with columns at least `range` wide, so that a point's own and
/// adjacent columns hold every point within that plan radius; otherwise says why. `search` names
/// the step in the message ("Noise search"), `rangeName` its range parameter.
template <class T>
bool planarGridCovers(const StepContext<T>& c, double range, const std::string& search,
                      const std::string& rangeName)
{
    const VX_DecompositionGridParameters<T>& g = c.gridParameters();
    if (g.cellsZ != 1) {
        c.msg(0,
              "ERROR! " + search + " needs a planar grid (regularGridDecomposition2D); step not run. Layers:",
              g.cellsZ);
        return false;
    }
    if (static_cast<double>(g.sizeX) < range || static_cast<double>(g.sizeY) < range) {
        c.msg(0, "ERROR! Grid columns narrower than " + rangeName + "; step not run. Columns:",
              toText(g.sizeX) + " x " + toText(g.sizeY));
        return false;
    }
    return true;
}

} // namespace vx
