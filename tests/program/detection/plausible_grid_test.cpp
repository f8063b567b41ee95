#include "detection/plausible_grid.h"

#include <gtest/gtest.h>

#include <utility>

namespace fisheye_calibration::program {
namespace {

std::vector<cv::Point2f> squareGrid(int columns, int rows) {
  std::vector<cv::Point2f> points;
  for (int i = 0; i < columns * rows; ++i) {
    points.emplace_back(static_cast<float>(10 * (i % columns)),
                        static_cast<float>(10 * (i / columns)));
  }
  return points;
}

TEST(PlausibleGrid, EvenGridsAreAccepted) { EXPECT_TRUE(isPlausibleGrid(squareGrid(5, 4), 5, 4)); }

TEST(PlausibleGrid, SwappedPointsAreRefused) {
  std::vector<cv::Point2f> points = squareGrid(5, 4);
  std::swap(points[6], points[7]);
  EXPECT_FALSE(isPlausibleGrid(points, 5, 4));
}

TEST(PlausibleGrid, AJumpInARowIsRefused) {
  std::vector<cv::Point2f> points = squareGrid(5, 4);
  for (std::size_t i = 4; i < points.size(); i += 5) {
    points[i].x += 30;
  }
  EXPECT_FALSE(isPlausibleGrid(points, 5, 4));
}

}  // namespace
}  // namespace fisheye_calibration::program
