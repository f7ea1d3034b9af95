#include "meshing/Grid.h"

#include "support/TestOutput.h"

#include "LumoException.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace ORBI_LUMO25D;

namespace
{

constexpr double unknownHeight = std::numeric_limits<double>::max();

Grid makeGrid(std::vector<Point2>& vPoints)
{
    const lumo_test::CoutCapture quiet;
    Grid::PointSet sPoints;
    for (Point2& p : vPoints) sPoints.insert(&p);
    return Grid(sPoints);
}

} // namespace

TEST(Grid, PointsComeIntoTheCellsBelowAndLeftOfThemAndShareThem)
{
    // x: 0, 1, 2, 4 give cells of width 4/3; y: 10, 11 give cells of width 1.
    std::vector<Point2> vPoints{{0, 10, 5}, {1, 10, 7}, {1, 11, 12}, {2, 11, -3}, {4, 10, 1e300}};
    Grid grid = makeGrid(vPoints);
    ASSERT_EQ(grid.getNumX(), 4u);
    ASSERT_EQ(grid.getNumY(), 2u);
    EXPECT_EQ(grid.getSizeX(), 4.0);
    EXPECT_EQ(grid.getHeight(0, 0), 8.0) << "mean of three";
    EXPECT_EQ(grid.getHeight(1, 0), -3.0);
    EXPECT_EQ(grid.getHeight(2, -9), 1e300);
    EXPECT_EQ(grid.getHeight(-7, 0), 8.0);
    EXPECT_EQ(grid.getHeight(9, 9), unknownHeight);
    const Grid::Matrix& matrix = grid.getMatrix();
    EXPECT_EQ(&matrix, &grid.getMatrix());
    EXPECT_EQ(matrix(1, 0), -3.0F);
    EXPECT_EQ(matrix(2, 0), Grid::Matrix::unknown) << "beyond the floats";
    EXPECT_EQ(matrix(3, 1), Grid::Matrix::unknown);
}

TEST(Grid, LinesSinglePointsAndNeighbouringDoublesHaveCells)
{
    std::vector<Point2> vOne{{5e6, 3, 1}}, vColumn{{5e6, 3, 1}, {5e6, 4, 2}, {5e6, 6, 4}}, vClose, vNone;
    EXPECT_EQ(makeGrid(vOne).getHeight(0, 0), 1.0);
    EXPECT_EQ(makeGrid(vColumn).getHeight(0, 1), 4.0);
    for (double x = 5e6; vClose.size() < 100; x = std::nextafter(x, 1e9)) vClose.emplace_back(x, x, 1);
    EXPECT_EQ(makeGrid(vClose).getHeight(98, 98), 1.0);
    const lumo_test::TempWorkDir directory;
    EXPECT_THROW(makeGrid(vNone), LumoException);
}

TEST(Grid, ManyColumnsAreCapped)
{
    std::vector<Point2> vPoints;
    for (int i = 0; i < 40000; ++i) vPoints.emplace_back(i, 7, i);
    const Grid grid = makeGrid(vPoints);
    EXPECT_EQ(grid.getNumX(), 32768u);
    EXPECT_EQ(grid.getHeight(0, 0), 0.5);
    EXPECT_EQ(grid.getHeight(32766, 0), 39998.5) << "39999 and 39998 share a cell";
}
