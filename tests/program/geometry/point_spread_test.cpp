#include "geometry/point_spread.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

// The corners of a rectangle in the picture, at the same coordinates on the bed.
std::vector<CalibrationPoint> rectangle(float width, float height) {
  std::vector<CalibrationPoint> points;
  for (const float x : {0.0f, width}) {
    for (const float y : {0.0f, height}) {
      points.push_back({.Xw = x, .Yw = y, .ImagePtX = x, .ImagePtY = y});
    }
  }
  return points;
}

TEST(PointSpread, FlatnessIsBreadthToLength) {
  EXPECT_NEAR(flatness(imagePositions(rectangle(40, 10))), 0.25, 1e-12);
  EXPECT_NEAR(flatness(bedPositions(rectangle(10, 40))), 0.25, 1e-12);
}

TEST(PointSpread, CollinearAndCoincidentPointsAreFlat) {
  EXPECT_NEAR(flatness({{0, 0}, {1, 2}, {3, 6}}), 0, 1e-7);
  EXPECT_EQ(flatness({{5, 5}, {5, 5}}), 0);
}

TEST(PointSpread, CoverageIsTheShareOfTheConvexHull) {
  std::vector<CalibrationPoint> points = rectangle(40, 10);
  points.push_back({.ImagePtX = 20, .ImagePtY = 5});
  EXPECT_DOUBLE_EQ(coverage(points, {80, 50}), 0.1);
}

TEST(PointSpread, AFrontalTargetHasOneScale) {
  std::vector<CalibrationPoint> points;
  for (int i = 0; i < 9; ++i) {
    const float x = static_cast<float>(i % 3);
    const float y = static_cast<float>(i / 3);
    points.push_back({.Xw = x, .Yw = y, .ImagePtX = 7 * x, .ImagePtY = 7 * y});
  }
  EXPECT_NEAR(scaleRatio(points), 1, 1e-9);
  // x -> 7 x + x^2: the area scale is 7 (7 + 2 x), from 7 * 7 to 7 * 11.
  for (CalibrationPoint& point : points) {
    point.ImagePtX += point.Xw * point.Xw;
  }
  EXPECT_NEAR(scaleRatio(points), 11.0 / 7, 1e-9);
}

}  // namespace
}  // namespace fisheye_calibration::program
