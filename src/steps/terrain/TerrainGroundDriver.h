// Driver of the terrain-surface ground step; compiled once per backend.
//
// The lowest admitted point of every raster cell gives a rough surface. Openings with square
// windows of growing half-width then cut away everything narrower than the window: a cell is an
// object when one opening lowers it by more than a sloping terrain could drop over the window's
// growth. Surfaces that drop by a wall's height along their whole outline are objects too,
// however wide, and wide objects that drop by no wall anywhere are terrain (see
// EnclosedSurfaces.h). What stays, filled across the objects from the ground
// around them, is the terrain; admitted points near it become ground.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "steps/common/StepDrivers.h"
#include "steps/terrain/EnclosedSurfaces.h"
#include "steps/terrain/LandBeyondDecks.h"
#include "steps/terrain/PointRasterKernels.h"
#include "steps/terrain/SurfaceFill.h"
#include "steps/terrain/TerrainState.h"

#include <thrust/iterator/counting_iterator.h>
#include <thrust/transform_reduce.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace vx::VX_BACKEND_NS {

/// Replaces b with the opening of a (erosion, then dilation, each as rows then columns); cells
/// without points take part as kUnknown (see there).
template <class T>
void openSurface(const StepContext<T>& c, const RasterGrid& g, const float* lowest, int r, Buffer<float>& a,
                 Buffer<float>& b, Buffer<float>& tmp, Buffer<float>& gs, Buffer<float>& hs)
{
    auto pass = [&](const float* in, float* out, bool rows, bool maximum) {
        const int n = rows ? g.ny : g.nx;
        k_lineExtreme k{
            in, out, gs.data(), hs.data(), rows ? g.nx : 1, rows ? 1 : g.nx, rows ? g.nx : g.ny, r, maximum};
        launch(c.launchConfig(n), n, k);
    };
    const int cells = g.cells();
    pass(a.data(), tmp.data(), true, false);
    pass(tmp.data(), b.data(), false, false);
    launch(c.launchConfig(cells), cells, k_unknownAs{b.data(), lowest, -kUnknown});
    pass(b.data(), tmp.data(), true, true);
    pass(tmp.data(), b.data(), false, true);
    launch(c.launchConfig(cells), cells, k_unknownAs{b.data(), lowest, kUnknown});
}

/// The climb's reach between neighbouring cells of edge `cell`.
template <class P> ClimbReach climbReach(const P& par, float cell)
{
    return {static_cast<float>(par.TerrainClimb) * cell, par.TerrainClimbMaxRise > 0
                                                             ? static_cast<float>(par.TerrainClimbMaxRise)
                                                             : std::numeric_limits<float>::max()};
}

/// Clears the object flag of every smooth object whose height span exceeds
/// TerrainObjectMaxRise (see k_releaseTallObjects). The spans spread one cell a pass; a smooth
/// surface that the openings cut is at most about twice the widest window across, and the
/// passes stop earlier when nothing changes.
template <class T>
void releaseTallObjects(const StepContext<T>& c, const RasterGrid& g, const float* lowest,
                        Buffer<unsigned char>& object, int widest)
{
    const auto& par = c.par();
    const Backend backend = c.backend();
    const int cells = g.cells();
    Buffer<float> lo(backend, cells), hi(backend, cells), lo2(backend, cells), hi2(backend, cells);
    mem::copy(backend, lo.data(), lowest, sizeof(float) * cells);
    mem::copy(backend, hi.data(), lowest, sizeof(float) * cells);
    Buffer<int> changed(backend, 1);
    const ClimbReach reach = climbReach(par, g.cell);
    for (int pass = 0; pass < 4 * widest + 4; ++pass) {
        fillWith(changed.data(), 1, 0);
        launch(c.launchConfig(cells), cells,
               k_spreadObjectSpan{lowest, object.data(), lo.data(), hi.data(), lo2.data(), hi2.data(), g.nx,
                                  g.ny, reach, changed.data()});
        std::swap(lo, lo2);
        std::swap(hi, hi2);
        int any = 0;
        changed.download(&any, 1);
        if (!any)
            break;
    }
    launch(c.launchConfig(cells), cells,
           k_releaseTallObjects{lo.data(), hi.data(), object.data(),
                                static_cast<float>(par.TerrainObjectMaxRise)});
}

/// Gives object cells joined to the terrain by a climbable surface back to the terrain, pass after
/// pass until none joins, leaving out the cells that `strip` marks where it is given. An object
/// is at most twice the widest window across, so that many passes reach every cell of it.
template <class T>
void climbFromTerrain(const StepContext<T>& c, const RasterGrid& g, const float* lowest,
                      const unsigned char* strip, const ClimbReach& reach, int widest,
                      Buffer<unsigned char>& object)
{
    const int cells = g.cells();
    Buffer<unsigned char> other(c.backend(), cells);
    Buffer<int> changed(c.backend(), 1);
    for (int pass = 0; pass < 2 * widest + 2; ++pass) {
        fillWith(changed.data(), 1, 0);
        launch(c.launchConfig(cells), cells,
               k_climbFromTerrain{lowest, strip, object.data(), other.data(), g.nx, g.ny, reach,
                                  changed.data()});
        std::swap(object, other);
        int any = 0;
        changed.download(&any, 1);
        if (!any)
            break;
    }
}

/// Marks the cells of surfaces that walls enclose as objects (see markEnclosedSurfaces), then
/// gives back to the terrain the cut objects that no wall bounds (releaseUnwalledObjects): two
/// cells join one surface when they differ by less than half TerrainWallHeight, and a roof spans
/// at most TerrainObjectMaxRise where that is set.
template <class T>
void cutEnclosedSurfaces(const StepContext<T>& c, const RasterGrid& g, const Buffer<float>& lowest,
                         Buffer<unsigned char>& object)
{
    const auto& par = c.par();
    const std::size_t cells = static_cast<std::size_t>(g.cells());
    std::vector<float> heights(cells);
    std::vector<unsigned char> flags(cells);
    lowest.download(heights.data(), cells);
    object.download(flags.data(), cells);
    const float wall = static_cast<float>(par.TerrainWallHeight);
    const std::size_t marked = markEnclosedSurfaces(
        heights, g.nx, g.ny, EnclosureRule{0.5f * wall, wall, static_cast<float>(par.TerrainObjectMaxRise)},
        flags);
    c.msg(2, "Terrain cells cut as enclosed surfaces:", marked);
    const std::size_t released =
        releaseUnwalledObjects(heights, g.nx, g.ny, EnclosureRule{0.5f * wall, wall, 0.0f}, flags);
    c.msg(2, "Terrain cells given back as unwalled objects:", released);
    if (marked > 0 || released > 0)
        object.upload(flags.data(), cells);
}

/// Gives back to the terrain the land that the climb reaches only across the decks (see
/// releaseLandBeyondDecks).
template <class T>
void releaseLandBeyond(const StepContext<T>& c, const RasterGrid& g, const Buffer<unsigned char>& strip,
                       const Buffer<unsigned char>& free, Buffer<unsigned char>& object)
{
    const std::size_t cells = static_cast<std::size_t>(g.cells());
    std::vector<unsigned char> s(cells), f(cells), o(cells);
    strip.download(s.data(), cells);
    free.download(f.data(), cells);
    object.download(o.data(), cells);
    const std::size_t released = releaseLandBeyondDecks(g.nx, g.ny, s, f, o);
    c.msg(2, "Terrain cells given back beyond the decks:", released);
    if (released > 0)
        object.upload(o.data(), cells);
}

template <class T> void runTerrainGround(StepContext<T>& c)
{
    const auto& par = c.par();
    const int groundClass = c.slots().GroundClass;
    c.msg(4, "Terrain surface ground", groundClass);
    if (!c.requireGrid())
        return;
    const int n = c.pointCount();
    const Backend backend = c.backend();
    c.visit([&](auto layout) {
        using L = decltype(layout);
        const auto pts = c.points(layout);
        const PlanBox box = thrust::transform_reduce(
            policy(), thrust::counting_iterator<int>(0), thrust::counting_iterator<int>(n),
            k_admittedBox<T, L>{pts, c.allowed()}, PlanBox{1, 1, 0, 0}, PlanBoxUnion{});
        if (box.empty()) {
            c.msg(1, "Terrain surface: no admitted point, nothing to do");
            return;
        }
        const double cell = static_cast<double>(par.TerrainCellSize);
        RasterGrid g;
        if (!rasterOver(box, cell, static_cast<double>(kMaxTerrainCells), g)) {
            c.msg(0, "ERROR! Terrain raster too large, step not run:",
                  std::to_string(box.maxX - box.minX) + " x " + std::to_string(box.maxY - box.minY) +
                      " extent at cell size " + std::to_string(cell));
            return;
        }
        const int cells = g.cells();
        const int widest = static_cast<int>(std::ceil(static_cast<double>(par.TerrainWindow) / cell));

        Buffer<int> lowestBits(backend, cells);
        fillWith(lowestBits.data(), cells, kNoHeight);
        launch(c.launchConfig(n), n, k_lowestPerCell<T, L>{pts, c.allowed(), g, lowestBits.data()});
        Buffer<float> lowest(backend, cells);
        launch(c.launchConfig(cells), cells, k_decodeLowest{lowestBits.data(), lowest.data()});
        lowestBits.reset();

        // The progressive opening runs on the lowest surface; cells without points take no part.
        const int stride = widest > kMostOpenings ? (widest + kMostOpenings - 1) / kMostOpenings : 1;
        Buffer<float> a(backend, cells), b(backend, cells), tmp(backend, cells), gs(backend, cells),
            hs(backend, cells);
        mem::copy(backend, a.data(), lowest.data(), sizeof(float) * cells);
        launch(c.launchConfig(cells), cells, k_unknownAs{a.data(), lowest.data(), kUnknown});
        Buffer<unsigned char> object(backend, cells);
        fillWith(object.data(), cells, static_cast<unsigned char>(0));
        int previous = 0;
        for (int r = stride; previous < widest; r += stride) {
            const int radius = r < widest ? r : widest;
            openSurface(c, g, lowest.data(), radius, a, b, tmp, gs, hs);
            const float limit =
                static_cast<float>(par.TerrainStepHeight) +
                static_cast<float>(par.TerrainSlope) * static_cast<float>((radius - previous) * cell);
            launch(c.launchConfig(cells), cells,
                   k_markObjects{a.data(), b.data(), lowest.data(), object.data(), limit});
            std::swap(a, b);
            previous = radius;
        }
        gs.reset(), hs.reset(), tmp.reset(), b.reset(), a.reset();

        // Objects whose climbable surface rises further than a roof can are terrain: hills,
        // headlands and terraces wider than the window lets through.
        if (par.TerrainClimb > 0 && par.TerrainObjectMaxRise > 0)
            releaseTallObjects(c, g, lowest.data(), object, widest);

        // Objects joined to the terrain by a climbable surface are terrain (a ridge, a cliff
        // with returns on its face), except the raised level strips of bridge decks.
        Buffer<unsigned char> strip, free;
        if (par.TerrainClimb > 0) {
            const ClimbReach reach = climbReach(par, static_cast<float>(cell));
            if (par.TerrainBridgeWidth > 0 && par.TerrainWallHeight > 0) {
                // Strips level within the roughness of bare ground, whose edges drop, at once, a
                // wall's height more than the climb takes between two cells.
                strip = Buffer<unsigned char>(backend, cells);
                const float drop = static_cast<float>(par.TerrainWallHeight) +
                                   static_cast<float>(par.TerrainClimb) * static_cast<float>(cell);
                launch(c.launchConfig(cells), cells,
                       k_markRaisedStrips{lowest.data(), object.data(), strip.data(), g.nx, g.ny,
                                          static_cast<float>(par.TerrainStepHeight), drop,
                                          static_cast<float>(cell),
                                          static_cast<float>(par.TerrainBridgeWidth)});
            }
            climbFromTerrain(c, g, lowest.data(), strip.data(), reach, widest, object);
            // The decks are the strips that the climb would have taken; land that the climb
            // reaches only across them is terrain.
            if (strip.data()) {
                free = Buffer<unsigned char>(backend, cells);
                mem::copy(backend, free.data(), object.data(), cells);
                climbFromTerrain(c, g, lowest.data(), nullptr, reach, widest, free);
                releaseLandBeyond(c, g, strip, free, object);
            }
        }

        // Walls decide what the windows cannot: roofs wider than any window, terrace levels that a
        // steep bank parts from the terrain.
        if (par.TerrainWallHeight > 0)
            cutEnclosedSurfaces(c, g, lowest, object);

        // Decks among the objects that the walls left.
        Buffer<unsigned char> deck;
        if (free.data() && c.slots().TargetClass >= 0) {
            deck = Buffer<unsigned char>(backend, cells);
            launch(c.launchConfig(cells), cells,
                   k_markDecks{strip.data(), object.data(), free.data(), deck.data()});
        }
        strip.reset();
        free.reset();

        Buffer<float> filled(backend, cells);
        launch(c.launchConfig(cells), cells, k_keepGround{lowest.data(), object.data(), filled.data()});
        fillSurface(c, g, filled);
        launch(c.launchConfig(n), n,
               k_groundNearSurface<T, L>{pts, c.allowed(), g, filled.data(),
                                         static_cast<float>(par.TerrainGroundDistance),
                                         static_cast<float>(par.TerrainGradientFactor), groundClass});
        if (deck.data())
            launch(c.launchConfig(n), n,
                   k_deckPoints<T, L>{pts, c.allowed(), g, lowest.data(), deck.data(),
                                      static_cast<float>(par.TerrainGroundDistance), c.slots().TargetClass});

        auto& state = c.template state<TerrainState>();
        state.grid = g;
        state.surface = std::move(filled);
    });
    c.checkDeviceError();
    c.msg(2, "Terrain surface ground done!");
}

} // namespace vx::VX_BACKEND_NS
