// Land that only bridge decks join to the rest of the terrain: the climb leaves the decks out, so
// that they stay cut, and a piece of land beyond a river whose water gives few returns, with banks
// steeper than the climb, is then reached from nowhere; the openings cut it when it is narrower
// than the window (a corner of the tile beyond the river), and its ground would become roofs.
//
// Runs on the host over the raster flags, as the enclosed surfaces do: one breadth-first pass
// labels the regions.
#pragma once

#include "steps/terrain/EnclosedSurfaces.h"

#include <cstddef>
#include <vector>

namespace vx {

/// Gives back to the terrain (object[c] = 0) the land beyond the decks: cells that the climb
/// around the strips (`object`) leaves cut but the climb across them (`free`) gives back, outside
/// the strips themselves, joined through their eight neighbours into regions. A region with at
/// least kLeastInnerCells cells whose four edge neighbours all belong to it is land. Cells of a
/// deck that the strip test missed (its ends, a ramp) go with the land they touch; alone, and
/// like a road on an embankment beside a deck, they are narrower and stay what the climb made
/// them. Returns the number of cells given back.
inline std::size_t releaseLandBeyondDecks(int nx, int ny, const std::vector<unsigned char>& strip,
                                          const std::vector<unsigned char>& free,
                                          std::vector<unsigned char>& object)
{
    const std::size_t cells = static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
    if (nx <= 0 || ny <= 0 || strip.size() != cells || free.size() != cells || object.size() != cells)
        return 0;
    auto beyond = [&](std::size_t c) { return object[c] != 0 && free[c] == 0 && strip[c] == 0; };
    std::vector<int> region(cells, -1);
    std::vector<std::size_t> queue, members;
    std::size_t released = 0;
    int label = 0;
    for (std::size_t start = 0; start < cells; ++start) {
        if (!beyond(start) || region[start] >= 0)
            continue;
        queue.assign(1, start);
        members.clear();
        region[start] = label;
        while (!queue.empty()) {
            const std::size_t c = queue.back();
            queue.pop_back();
            members.push_back(c);
            const int x = static_cast<int>(c % static_cast<std::size_t>(nx));
            const int y = static_cast<int>(c / static_cast<std::size_t>(nx));
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const int u = x + dx, v = y + dy;
                    if ((dx == 0 && dy == 0) || u < 0 || v < 0 || u >= nx || v >= ny)
                        continue;
                    const std::size_t n = static_cast<std::size_t>(v) * nx + u;
                    if (beyond(n) && region[n] < 0) {
                        region[n] = label;
                        queue.push_back(n);
                    }
                }
        }
        int inner = 0;
        for (std::size_t c : members) {
            const int x = static_cast<int>(c % static_cast<std::size_t>(nx));
            const int y = static_cast<int>(c / static_cast<std::size_t>(nx));
            const bool in = x > 0 && y > 0 && x + 1 < nx && y + 1 < ny && region[c - 1] == label &&
                            region[c + 1] == label && region[c - nx] == label && region[c + nx] == label;
            inner += in ? 1 : 0;
        }
        if (inner >= kLeastInnerCells) {
            for (std::size_t c : members)
                object[c] = 0;
            released += members.size();
        }
        ++label;
    }
    return released;
}

} // namespace vx
