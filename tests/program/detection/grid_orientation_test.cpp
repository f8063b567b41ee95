#include "detection/grid_orientation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace fisheye_calibration::program {
namespace {

// A 4 x 3 grid at its true positions: +X right, +Y down, slightly rotated.
std::vector<GridPoint> trueGrid() {
  std::vector<GridPoint> grid;
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 4; ++c) {
      grid.push_back({{static_cast<double>(c), static_cast<double>(r)},
                      {100.0f + 40.0f * static_cast<float>(c) - 9.0f * static_cast<float>(r),
                       50.0f + 8.0f * static_cast<float>(c) + 38.0f * static_cast<float>(r)}});
    }
  }
  return grid;
}

void expectTrueGrid(const std::vector<GridPoint>& grid) {
  const std::vector<GridPoint> expected = trueGrid();
  ASSERT_EQ(grid.size(), expected.size());
  for (std::size_t i = 0; i < grid.size(); ++i) {
    EXPECT_EQ(grid[i].image, expected[i].image) << "point " << i;
    EXPECT_EQ(grid[i].world, expected[i].world) << "point " << i;
  }
}

std::vector<GridPoint> relabelled(const std::function<cv::Point2d(cv::Point2d)>& label) {
  std::vector<GridPoint> grid = trueGrid();
  for (GridPoint& point : grid) {
    point.world = label(point.world);
  }
  std::reverse(grid.begin(), grid.end());
  return grid;
}

TEST(GridOrientation, CorrectGridsStay) { expectTrueGrid(orientGrid(trueGrid())); }

TEST(GridOrientation, HalfTurnsAreUndone) {
  expectTrueGrid(
      orientGrid(relabelled([](cv::Point2d p) { return cv::Point2d(3 - p.x, 2 - p.y); })));
}

TEST(GridOrientation, QuarterTurnsAreUndone) {
  expectTrueGrid(orientGrid(relabelled([](cv::Point2d p) { return cv::Point2d(p.y, 3 - p.x); })));
  expectTrueGrid(orientGrid(relabelled([](cv::Point2d p) { return cv::Point2d(2 - p.y, p.x); })));
}

TEST(GridOrientation, MirroredCountingIsUndone) {
  expectTrueGrid(orientGrid(relabelled([](cv::Point2d p) { return cv::Point2d(3 - p.x, p.y); })));
  expectTrueGrid(orientGrid(relabelled([](cv::Point2d p) { return cv::Point2d(p.y, p.x); })));
}

TEST(GridOrientation, EveryRotationEndsWithXRightAndYDown) {
  for (int degrees = 0; degrees < 360; degrees += 30) {
    const double a = degrees * CV_PI / 180;
    std::vector<GridPoint> grid = trueGrid();
    for (GridPoint& p : grid) {
      p.image = {static_cast<float>(40 * (std::cos(a) * p.world.x - std::sin(a) * p.world.y)),
                 static_cast<float>(40 * (std::sin(a) * p.world.x + std::cos(a) * p.world.y))};
    }
    grid = orientGrid(grid);
    const cv::Point2f alongX = grid[1].image - grid[0].image;
    const auto nextRow =
        std::find_if(grid.begin(), grid.end(), [](const GridPoint& p) { return p.world.y == 1; });
    const cv::Point2f alongY = nextRow->image - grid[0].image;
    EXPECT_GT(alongX.x, 40 * 0.7f) << degrees;
    EXPECT_GT(alongY.y, 40 * 0.7f) << degrees;
  }
}

}  // namespace
}  // namespace fisheye_calibration::program
