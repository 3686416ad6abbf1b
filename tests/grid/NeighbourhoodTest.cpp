#include "grid/Neighbourhood.h"
#include "grid/Layouts.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

using namespace vx;

namespace {

/// Every cell holds `perCell` entries, sorted by cell, so entry j belongs to cell j / perCell.
struct Fixture {
    VX_DecompositionGridParameters<float> grid{};
    std::vector<VX_IndexToGroup> links;
    std::vector<VX_DecompositionGroups> runs;

    Fixture(int cx, int cy, int cz, int perCell)
    {
        grid.cellsX = cx, grid.cellsY = cy, grid.cellsZ = cz;
        const int cells = cx * cy * cz;
        for (int c = 0; c < cells; ++c) {
            runs.push_back({c * perCell, (c + 1) * perCell, perCell});
            for (int k = 0; k < perCell; ++k)
                links.push_back({c * perCell + k, c});
        }
    }
    std::vector<int> visitedCells(int g, Visit how = {})
    {
        std::vector<int> cells;
        forEachNeighbour(AosIndex{links.data()}, AosGroups{runs.data()}, grid, g, how, [&](int, int, int n) {
            if (cells.empty() || cells.back() != n)
                cells.push_back(n);
        });
        return cells;
    }
};

int cell(const Fixture& f, int x, int y, int z)
{
    return (x * f.grid.cellsY + y) * f.grid.cellsZ + z;
}

} // namespace

TEST(Neighbourhood, CornerEdgeFaceAndInteriorCellsIn3D)
{
    Fixture f(4, 4, 4, 1);
    EXPECT_EQ(f.visitedCells(cell(f, 0, 0, 0)).size(), 8u);
    EXPECT_EQ(f.visitedCells(cell(f, 1, 0, 0)).size(), 12u);
    EXPECT_EQ(f.visitedCells(cell(f, 1, 1, 0)).size(), 18u);
    EXPECT_EQ(f.visitedCells(cell(f, 1, 2, 1)).size(), 27u);
}

TEST(Neighbourhood, CornerEdgeAndInteriorCellsOfAPlanarGrid)
{
    Fixture f(4, 4, 1, 1);
    EXPECT_EQ(f.visitedCells(cell(f, 0, 0, 0)).size(), 4u);
    EXPECT_EQ(f.visitedCells(cell(f, 0, 2, 0)).size(), 6u);
    EXPECT_EQ(f.visitedCells(cell(f, 2, 2, 0)).size(), 9u);
}

TEST(Neighbourhood, SingleCellGridVisitsOnlyThatCell)
{
    Fixture f(1, 1, 1, 3);
    EXPECT_EQ(f.visitedCells(0), (std::vector<int>{0}));
}

TEST(Neighbourhood, OrderIsXOuterThenYThenZAscending)
{
    Fixture f(3, 3, 3, 1);
    const int g = cell(f, 1, 1, 1);
    std::vector<int> expected;
    for (int dx = -1; dx <= 1; ++dx)
        for (int dy = -1; dy <= 1; ++dy)
            for (int dz = -1; dz <= 1; ++dz)
                expected.push_back(g + (dx * 3 + dy) * 3 + dz);
    EXPECT_EQ(f.visitedCells(g), expected);
}

TEST(Neighbourhood, SkippingTheOwnCellLeavesTwentySix)
{
    Fixture f(3, 3, 3, 1);
    auto cells = f.visitedCells(cell(f, 1, 1, 1), Visit{0, true});
    EXPECT_EQ(cells.size(), 26u);
    EXPECT_EQ(std::set<int>(cells.begin(), cells.end()).count(cell(f, 1, 1, 1)), 0u);
}

TEST(Neighbourhood, SamplingVisitsStartThenEveryStepth)
{
    Fixture f(1, 1, 1, 2500); // step = 2500 / 1000 = 2
    std::vector<int> positions;
    forEachNeighbour(AosIndex{f.links.data()}, AosGroups{f.runs.data()}, f.grid, 0, Visit{1000, false},
                     [&](int, int j, int) { positions.push_back(j); });
    ASSERT_EQ(positions.size(), 1250u);
    for (size_t k = 0; k < positions.size(); ++k)
        EXPECT_EQ(positions[k], static_cast<int>(2 * k));
    EXPECT_EQ(positions.back(), 2498); // the last position, 2499, is not on the sequence
}

TEST(Neighbourhood, SamplingSkipsEmptyCells)
{
    Fixture f(2, 1, 1, 1);
    f.runs[1] = {-1, -1, 0};
    EXPECT_EQ(f.visitedCells(0, Visit{10, false}), (std::vector<int>{0}));
}

TEST(Neighbourhood, OwnCellVisitSamplesWithItsDivisor)
{
    Fixture f(3, 1, 1, 3000); // step 3000 / 1000 = 3
    std::vector<int> positions;
    forEachInCell(AosIndex{f.links.data()}, AosGroups{f.runs.data()}, 1, 1000,
                  [&](int, int j) { positions.push_back(j); });
    ASSERT_EQ(positions.size(), 1000u);
    EXPECT_EQ(positions.front(), 3000);
    EXPECT_EQ(positions[1], 3003);
}

TEST(Neighbourhood, PlanarModelCellsOfTheSameLayer)
{
    Fixture f(3, 3, 2, 1);
    std::vector<int> cells;
    forEachPlanarNeighbourCell(f.grid, cell(f, 0, 0, 1), [&](int n) { cells.push_back(n); });
    EXPECT_EQ(cells, (std::vector<int>{cell(f, 0, 1, 1), cell(f, 1, 0, 1), cell(f, 1, 1, 1)}));
    cells.clear();
    forEachPlanarNeighbourCell(f.grid, cell(f, 1, 1, 0), [&](int n) { cells.push_back(n); });
    EXPECT_EQ(cells.size(), 8u);
}

TEST(Neighbourhood, FarPointOfTheSameCellIsVisitedAndRejectedByDistance)
{
    Fixture f(1, 1, 1, 2);
    const float xs[2] = {0.f, 0.9f};
    int visited = 0, inRange = 0;
    forEachNeighbour(AosIndex{f.links.data()}, AosGroups{f.runs.data()}, f.grid, 0, Visit{},
                     [&](int q, int, int) {
                         ++visited;
                         if (squaredDistance(xs[q] - xs[0], 0.f, 0.f) <= 0.5f * 0.5f)
                             ++inRange;
                     });
    EXPECT_EQ(visited, 2);
    EXPECT_EQ(inRange, 1);
}
