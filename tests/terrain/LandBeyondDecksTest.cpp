// Land beyond the decks: regions that only the climb across the bridge decks reaches go back to
// the terrain when they are wide; narrow ones, roofs that neither climb reaches and the decks
// themselves stay cut.
#include "steps/terrain/LandBeyondDecks.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

using vx::releaseLandBeyondDecks;

namespace {

constexpr int kNx = 40, kNy = 30;

struct Flags {
    std::vector<unsigned char> strip = std::vector<unsigned char>(kNx * kNy, 0);
    std::vector<unsigned char> free = std::vector<unsigned char>(kNx * kNy, 0);
    std::vector<unsigned char> object = std::vector<unsigned char>(kNx * kNy, 0);
    std::size_t at(int x, int y) const { return static_cast<std::size_t>(y) * kNx + x; }
    /// Cells x0 <= x < x1, y0 <= y < y1 cut by the climb around the strips, and what the climb
    /// across them makes of them.
    void cut(int x0, int x1, int y0, int y1, bool freeToo, bool onStrip = false)
    {
        for (int y = y0; y < y1; ++y)
            for (int x = x0; x < x1; ++x) {
                object[at(x, y)] = 1;
                free[at(x, y)] = freeToo ? 1 : 0;
                strip[at(x, y)] = onStrip ? 1 : 0;
            }
    }
};

TEST(LandBeyondDecks, WideLandThatOnlyTheDeckReachesIsTerrain)
{
    // A deck across x 10-11 (the strip test found it), the land beyond it 28 x 30 cells, and a
    // roof on that land that the climb across the deck does not take either.
    Flags f;
    f.cut(10, 12, 0, kNy, false, true);
    f.cut(12, kNx, 0, kNy, false);
    f.cut(20, 26, 10, 16, true);
    const std::size_t land = static_cast<std::size_t>(28 * 30 - 36);
    EXPECT_EQ(releaseLandBeyondDecks(kNx, kNy, f.strip, f.free, f.object), land);
    for (int y = 0; y < kNy; ++y)
        for (int x = 10; x < kNx; ++x) {
            const bool deck = x < 12, roof = x >= 20 && x < 26 && y >= 10 && y < 16;
            EXPECT_EQ(f.object[f.at(x, y)], deck || roof ? 1 : 0) << x << " " << y;
        }
}

TEST(LandBeyondDecks, NarrowRegionsStay)
{
    // A region of 12 x 10 cells holds 80 inner cells, fewer than the least: the fringe of a deck
    // or a road on an embankment. Joined to the wide land beyond, it goes with it.
    Flags f;
    f.cut(10, 12, 0, kNy, false, true);
    f.cut(12, 24, 0, 10, false);
    std::vector<unsigned char> before = f.object;
    EXPECT_EQ(releaseLandBeyondDecks(kNx, kNy, f.strip, f.free, f.object), 0u);
    EXPECT_EQ(f.object, before);

    f.cut(12, 24, 10, 20, false);
    EXPECT_EQ(releaseLandBeyondDecks(kNx, kNy, f.strip, f.free, f.object), static_cast<std::size_t>(12 * 20));
}

TEST(LandBeyondDecks, FlagsOfAnotherSizeChangeNothing)
{
    Flags f;
    f.cut(12, kNx, 0, kNy, false);
    std::vector<unsigned char> shortFree(10, 0);
    const std::vector<unsigned char> before = f.object;
    EXPECT_EQ(releaseLandBeyondDecks(kNx, kNy, f.strip, shortFree, f.object), 0u);
    EXPECT_EQ(releaseLandBeyondDecks(0, kNy, f.strip, f.free, f.object), 0u);
    EXPECT_EQ(f.object, before);
}

} // namespace
