// The cell counts of the data profile: a table that grows with the cells it holds.
#include "CellHash.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>

using vx::app::CellHash;

TEST(CellHash, GrowsPastItsFirstRoomAndKeepsEveryCount)
{
    std::mt19937_64 rng(7);
    std::map<uint64_t, uint32_t> expected;
    CellHash cells(4); // far fewer than the cells added
    for (int i = 0; i < 20000; ++i) {
        const uint64_t key = rng() % 5000 * 0x100000001ull;
        const uint32_t count = cells.add(key);
        EXPECT_EQ(count, ++expected[key]);
    }
    EXPECT_EQ(cells.size(), expected.size());
    for (const auto& [key, count] : expected)
        EXPECT_EQ(cells.count(key), count);
    EXPECT_EQ(cells.count(5001 * 0x100000001ull), 0u);
    std::size_t visited = 0;
    cells.forEach([&](uint64_t key, uint32_t count) {
        ++visited;
        EXPECT_EQ(count, expected.at(key));
    });
    EXPECT_EQ(visited, expected.size());
}

TEST(CellHash, EmptyTableCountsNothing)
{
    CellHash cells;
    EXPECT_EQ(cells.size(), 0u);
    EXPECT_EQ(cells.count(0), 0u);
    EXPECT_EQ(cells.add(0), 1u);
    EXPECT_EQ(cells.count(0), 1u);
}
