// Launching a kernel that writes its own point's class while its rules read the classes of its
// neighbours: the classes come out as one ascending pass over the sorted positions leaves them,
// on every backend and with any number of threads.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "exec/Memory.h"
#include "grid/Frontier.h"

#include <cstdint>
#include <utility>

namespace vx::VX_BACKEND_NS {

/// out[p] = the class of point p in the point views.
template <class Points> struct ClassesOut {
    Points pts;
    int* out;
    VX_HD void operator()(int p) const { out[p] = pts.cls(p); }
};

/// Before a round: the point at sorted position i starts again from its class as the launch
/// began when its cell is active, and keeps what the last round gave it otherwise.
template <class Points, class Index> struct ClassesForRound {
    Points pts;
    Index itg;
    const int* start;
    const int* last;
    const uint8_t* active;
    int count;
    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int p = itg.pointIndex(i);
        pts.setCls(p, active[itg.group(i)] ? start[p] : last[p]);
    }
};

/// Kernel k at the positions of active cells only.
template <class K> struct AtActiveCells {
    K k;
    const uint8_t* active;
    VX_HD void operator()(int i) const
    {
        if (i < k.count && active[k.itg.group(i)])
            k(i);
    }
};

/// Runs kernel k over the n sorted positions. k reads its neighbours' classes through classSeen,
/// visits the block of cells around its own (forEachNeighbourOf) and writes no class but its
/// own point's. On the device the classes are those of one ascending pass over the positions,
/// which one host thread makes as it stands. Several host threads run the pass as the host
/// always has, blocks of positions side by side (a round costs more there than the few points
/// that the threads' order changes).
///
/// The device runs in rounds, each from the classes as the launch began: a thread reads a
/// neighbour before it in the order as the previous round left it, and any other as the launch
/// began, and the rounds end when one changes nothing. The first position reads nothing that
/// changes and is final after the first round; a later one is final one round after the last
/// earlier position it reads, so the rounds end with the classes of the ascending pass. After
/// the first round only the points of cells whose block held a change are judged again
/// (grid/Frontier.h): the others would read what they read before. Returns the rounds.
template <class T, class K> int launchInPlace(StepContext<T>& c, const LaunchConfig& cfg, int n, K k)
{
    if (!c.inPlaceRounds()) {
        launch(cfg, n, k);
        return 1;
    }
    const int points = c.pointCount(), cells = c.groupCount();
    if (points < 1 || cells < 1)
        return 0;
    const LaunchConfig perPoint = c.quietLaunchConfig(points), perCell = c.quietLaunchConfig(cells);
    const auto size = static_cast<std::size_t>(points);
    Buffer<int> start(c.backend(), size), previous(c.backend(), size), latest(c.backend(), size);
    Buffer<uint8_t> changed(c.backend(), static_cast<std::size_t>(cells)),
        active(c.backend(), static_cast<std::size_t>(cells));
    using Points = decltype(k.pts);
    using Index = decltype(k.itg);
    launch(perPoint, points, ClassesOut<Points>{k.pts, start.data()});
    mem::copy(c.backend(), previous.data(), start.data(), size * sizeof(int));
    k.inPlace = {start.data(), previous.data()};
    launch(cfg, n, k);
    // Position by position the rounds settle, so n + 1 rounds always end them.
    int rounds = 1;
    for (; rounds <= n; ++rounds) {
        launch(perPoint, points, ClassesOut<Points>{k.pts, latest.data()});
        fillWith(changed.data(), cells, uint8_t{0});
        launch(perPoint, points,
               MarkCells<Index, ClassChanged>{k.itg, {latest.data(), previous.data()}, changed.data(), n});
        std::swap(previous, latest);
        if (countIf(changed.data(), cells, IsSet{}) == 0)
            break;
        launch(perCell, cells, ActivateAroundChanges<T>{k.grid, changed.data(), active.data(), cells});
        launch(perPoint, points,
               ClassesForRound<Points, Index>{k.pts, k.itg, start.data(), previous.data(), active.data(), n});
        k.inPlace.previous = previous.data();
        launch(cfg, n, AtActiveCells<K>{k, active.data()});
    }
    c.checkDeviceError();
    return rounds;
}

} // namespace vx::VX_BACKEND_NS
