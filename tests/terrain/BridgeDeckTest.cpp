// Bridge decks in the terrain step: a deck across a cutting meets the road at its ends, so the
// climb would walk onto it from there; its edges fall at once to the floor below, which no slope
// and no terrace step does, and the climb leaves it cut.
#include "terrain/TerrainStepRun.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using terraintest::classify;
using terraintest::point;

/// 160 m x 100 m at 1 m spacing: level ground cut along y by a channel whose floor, 6 m down,
/// spans x = 66-94 between banks of 45 degrees, and a deck 10 m wide (y = 45-55) across it at
/// the level of the road, 0.1 m up, from x = 59 to 101. Under the deck only the deck is seen;
/// with `water`, nothing is seen of the floor at all.
template <class T> std::vector<VX_Point<T>> cuttingWithADeck(bool water = false)
{
    std::vector<VX_Point<T>> pts;
    for (int i = 0; i < 160; ++i)
        for (int j = 0; j < 100; ++j) {
            const double x = i + 0.5, y = j + 0.5;
            const double d = std::fabs(x - 80.0);
            double z = d < 14 ? -6.0 : (d < 20 ? -(20.0 - d) : 0.0);
            const bool deck = y > 45 && y < 55 && d < 21;
            if (deck)
                z = 0.1;
            else if (water && d < 14)
                continue;
            pts.push_back(point<T>(x, y, z + 0.02 * std::sin(i * 1.7 + j)));
        }
    return pts;
}

/// The general preset's terrain values, with the bridge width given.
template <class T> void generalTerrain(Vexaro<T>& v, double bridgeWidth)
{
    v.set_TerrainWindow(T(40));
    v.set_TerrainSlope(T(0.5));
    v.set_TerrainClimb(T(0.8));
    v.set_TerrainClimbMaxRise(T(0.5));
    v.set_TerrainWallHeight(T(2.5));
    v.set_TerrainBridgeWidth(T(bridgeWidth));
}

struct DeckCount {
    int deckOverFloor = 0, deckOverFloorGround = 0, deckOverFloorDeck = 0, groundLost = 0, elsewhereDeck = 0;
};

template <class T>
DeckCount classifyCutting(bool soa, double bridgeWidth, int deckClass = -1, bool water = false)
{
    const auto pts = cuttingWithADeck<T>(water);
    const auto out = classify<T>(
        pts, soa, [bridgeWidth](Vexaro<T>& v) { generalTerrain(v, bridgeWidth); }, deckClass);
    DeckCount n;
    for (std::size_t k = 0; k < pts.size(); ++k) {
        const double x = static_cast<double>(pts[k].x), y = static_cast<double>(pts[k].y);
        const bool deck = y > 45 && y < 55 && std::fabs(x - 80.0) < 21;
        if (deck && std::fabs(x - 80.0) < 14) {
            ++n.deckOverFloor;
            n.deckOverFloorGround += out[k] == 2;
            n.deckOverFloorDeck += out[k] == 17;
        }
        n.groundLost += !deck && out[k] != 2;
        n.elsewhereDeck += !deck && out[k] == 17;
    }
    return n;
}

TEST(BridgeDeck, ADeckAcrossACuttingIsNotGround)
{
    for (bool soa : {true, false}) {
        SCOPED_TRACE(soa ? "SoA" : "AoS");
        const DeckCount f = classifyCutting<float>(soa, 40.0);
        EXPECT_GT(f.deckOverFloor, 250);
        EXPECT_EQ(f.deckOverFloorGround, 0);
        EXPECT_EQ(f.groundLost, 0) << "the floor, the banks and the road beside the deck";
        const DeckCount d = classifyCutting<double>(soa, 40.0);
        EXPECT_EQ(d.deckOverFloorGround, 0);
        EXPECT_EQ(d.groundLost, 0);
    }
}

TEST(BridgeDeck, TheDeckTakesItsClassWhereOneIsGiven)
{
    for (bool soa : {true, false}) {
        SCOPED_TRACE(soa ? "SoA" : "AoS");
        const DeckCount f = classifyCutting<float>(soa, 40.0, 17);
        EXPECT_EQ(f.deckOverFloorDeck, f.deckOverFloor);
        EXPECT_EQ(f.elsewhereDeck, 0);
        EXPECT_EQ(f.groundLost, 0);
        const DeckCount d = classifyCutting<double>(soa, 40.0, 17);
        EXPECT_EQ(d.deckOverFloorDeck, d.deckOverFloor);
        EXPECT_EQ(d.elsewhereDeck, 0);
    }
    // Without a class the deck keeps the class it had; without the width no deck is found.
    EXPECT_EQ(classifyCutting<float>(true, 40.0).deckOverFloorDeck, 0);
    EXPECT_EQ(classifyCutting<float>(true, 0.0, 17).deckOverFloorDeck, 0);
}

TEST(BridgeDeck, ADeckOverWaterThatGivesNoReturnsIsFound)
{
    // Nothing is seen beside the deck over the floor: its edges fall to the banks beyond the
    // empty cells, which the walks along the diagonals reach within the width from most of it.
    const DeckCount n = classifyCutting<float>(true, 40.0, 17, true);
    EXPECT_GT(n.deckOverFloor, 250);
    EXPECT_GT(n.deckOverFloorDeck, n.deckOverFloor * 9 / 10);
    EXPECT_EQ(n.deckOverFloorGround, 0);
    EXPECT_EQ(n.elsewhereDeck, 0);
    EXPECT_EQ(n.groundLost, 0);
}

TEST(BridgeDeck, WithoutTheWidthTheClimbTakesTheDeck)
{
    const DeckCount off = classifyCutting<float>(true, 0.0);
    EXPECT_GT(off.deckOverFloorGround, off.deckOverFloor / 2);
    // Narrower than the deck, the width finds no strip either.
    const DeckCount narrow = classifyCutting<float>(true, 5.0);
    EXPECT_GT(narrow.deckOverFloorGround, narrow.deckOverFloor / 2);
}

TEST(BridgeDeck, TerraceStepsAndSteepBanksAreNoDeckEdges)
{
    // A causeway 10 m across, 3 m up, whose sides fall 1.5 m a cell, and a terrace level 2 m up
    // behind a step of one cell: neither falls a wall's height more than the climb takes, so
    // with the width on they stay what the climb makes of them, as without it.
    std::vector<VX_Point<float>> pts;
    for (int i = 0; i < 160; ++i)
        for (int j = 0; j < 60; ++j) {
            const double x = i + 0.5;
            double z = 0;
            if (x > 30 && x < 44)
                z = std::fmin(3.0, 1.5 * std::fmin(std::floor(x - 30), std::floor(44 - x)));
            if (x > 100 && x < 130)
                z = 2.0;
            pts.push_back(point<float>(x, j + 0.5, z + 0.02 * std::sin(i * 1.7 + j)));
        }
    const auto with = classify<float>(pts, true, [](Vexaro<float>& v) { generalTerrain(v, 40.0); });
    const auto without = classify<float>(pts, true, [](Vexaro<float>& v) { generalTerrain(v, 0.0); });
    EXPECT_EQ(with, without);
}

TEST(BridgeDeck, ANegativeWidthIsRefusedAndChangesNothing)
{
    EXPECT_EQ(Vexaro<float>().get_TerrainBridgeWidth(), 0.0f) << "off by default";
    const auto out =
        classify<float>(cuttingWithADeck<float>(), true, [](Vexaro<float>& v) { generalTerrain(v, -1.0); });
    for (int c : out)
        ASSERT_EQ(c, 1);
}

} // namespace
