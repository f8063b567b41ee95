#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fisheye_calibration.h"
#include "registration/debug_drive.h"

namespace {

using HandEye = DebugDriveTest;
using Params = std::array<double, 6>;

CalibrationPoint pair(float x, float y, float Xw, float Yw) {
  CalibrationPoint point{};
  point.ImagePtX = x;
  point.ImagePtY = y;
  point.Xw = Xw;
  point.Yw = Yw;
  return point;
}

// Nine points on a grid of 8 pixels with Xw = x/8 + 5, Yw = 300 - y/8, exact in float.
std::vector<CalibrationPoint> exactGrid() {
  std::vector<CalibrationPoint> points;
  for (int row = 0; row < 3; ++row) {
    for (int col = 0; col < 3; ++col) {
      const auto i = static_cast<float>(col);
      const auto j = static_cast<float>(row);
      points.push_back(pair(8 * i, 8 * j, i + 5, 300 - j));
    }
  }
  return points;
}

// Four points at (+-1, +-1) whose Xw lies `offset` (XY pattern + - - +) off every affine map, which
// least squares leaves as it is.
void addSaddle(std::vector<CalibrationPoint>& points, float offset) {
  for (const float x : {-1.0f, 1.0f}) {
    for (const float y : {-1.0f, 1.0f}) points.push_back(pair(x, y, x * y * offset, 0));
  }
}

TEST_F(HandEye, FindsAnExactMapWithoutError) {
  Params params{};
  double errorX = -1;
  double errorY = -1;
  ASSERT_TRUE(HandEyeCalibration(exactGrid(), params.data(), errorX, errorY));
  const Params expected{0.125, 0, 0, -0.125, 5, 300};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(params[i], expected[i], 3e-5) << i;
  EXPECT_LT(errorX, 1e-4);
  EXPECT_LT(errorY, 1e-4);
}

TEST_F(HandEye, ParametersAreFloatsWidenedToDouble) {
  std::vector<CalibrationPoint> points;
  for (const float x : {0.0f, 3.0f, 7.0f}) {
    for (const float y : {0.0f, 3.0f, 7.0f}) points.push_back(pair(x, y, x / 3, y / 7));
  }
  Params params{};
  double errorX = 0;
  double errorY = 0;
  ASSERT_TRUE(HandEyeCalibration(points, params.data(), errorX, errorY));
  for (const double value : params)
    EXPECT_EQ(value, static_cast<double>(static_cast<float>(value)));
}

TEST_F(HandEye, NineResidualsOfOneAmongEighteenPointsGiveTheRootOfAHalf) {
  // Every place is visited twice, with +1 (points 1 to 9) and with -1, so the fit is 0 throughout.
  std::vector<CalibrationPoint> points;
  for (const float sign : {1.0f, -1.0f}) {
    for (const CalibrationPoint& place : exactGrid()) {
      points.push_back(pair(place.ImagePtX, place.ImagePtY, sign, 0));
    }
  }
  Params params{};
  double errorX = 0;
  double errorY = -1;
  ASSERT_TRUE(HandEyeCalibration(points, params.data(), errorX, errorY));
  EXPECT_NEAR(errorX, std::sqrt(9.0 / 18.0), 1e-6);
  EXPECT_NEAR(errorY, 0, 1e-6);
}

TEST_F(HandEye, ResidualsBeyondTheNinthPointAreNotSummed) {
  std::vector<CalibrationPoint> points;
  for (int i = 0; i < 9; ++i) points.push_back(pair(0, 0, 0, 0));
  addSaddle(points, 100);
  Params params{};
  double errorX = -1;
  double errorY = -1;
  ASSERT_TRUE(HandEyeCalibration(points, params.data(), errorX, errorY));
  EXPECT_LT(errorX, 1e-5);
  EXPECT_LT(errorY, 1e-5);
}

TEST_F(HandEye, FewerThanNinePointsAreAllSummed) {
  std::vector<CalibrationPoint> points;
  addSaddle(points, 2);
  Params params{};
  double errorX = 0;
  double errorY = 0;
  ASSERT_TRUE(HandEyeCalibration(points, params.data(), errorX, errorY));
  EXPECT_NEAR(errorX, 2, 1e-6);  // sqrt(4 * 2^2 / 4)
}

TEST_F(HandEye, ThreePointsAreEnough) {
  Params params{};
  double errorX = -1;
  double errorY = -1;
  EXPECT_TRUE(HandEyeCalibration({pair(0, 0, 5, 5), pair(1, 0, 6, 5), pair(0, 1, 5, 6)},
                                 params.data(), errorX, errorY));
  EXPECT_NEAR(params[0], 1, 1e-5);
}

TEST_F(HandEye, ErrorsAreTakenAlongXAndAlongY) {
  std::vector<CalibrationPoint> points;
  addSaddle(points, 2);
  for (CalibrationPoint& point : points) std::swap(point.Xw, point.Yw);
  Params params{};
  double errorX = -1;
  double errorY = -1;
  ASSERT_TRUE(HandEyeCalibration(points, params.data(), errorX, errorY));
  EXPECT_NEAR(errorX, 0, 1e-6);
  EXPECT_NEAR(errorY, 2, 1e-6);
}

TEST_F(HandEye, FewerThanThreePointsAreRefusedAndWriteNothing) {
  if (makeDebugDrive()) std::filesystem::remove("D:/Affine.txt");
  Params params{9, 9, 9, 9, 9, 9};
  double errorX = 9;
  double errorY = 9;
  EXPECT_FALSE(HandEyeCalibration({}, params.data(), errorX, errorY));
  EXPECT_FALSE(HandEyeCalibration({pair(0, 0, 0, 0)}, params.data(), errorX, errorY));
  EXPECT_FALSE(
      HandEyeCalibration({pair(0, 0, 0, 0), pair(1, 0, 1, 0)}, params.data(), errorX, errorY));
  EXPECT_EQ(params, (Params{9, 9, 9, 9, 9, 9}));
  EXPECT_EQ(errorX, 9);
  EXPECT_EQ(errorY, 9);
  EXPECT_EQ(contentOf("D:/Affine.txt"), std::nullopt);
}

TEST_F(HandEye, NullParametersAreRefusedAndWriteNothing) {
  double errorX = 9;
  double errorY = 9;
  EXPECT_FALSE(HandEyeCalibration(exactGrid(), nullptr, errorX, errorY));
  EXPECT_EQ(errorX, 9);
  EXPECT_EQ(errorY, 9);
}

TEST_F(HandEye, DebugFileHoldsImageThenWorldPoint) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  Params params{};
  double errorX = 0;
  double errorY = 0;
  ASSERT_TRUE(HandEyeCalibration({pair(1, 2, 3, 4), pair(5, 6, 7, 8), pair(9, 1, 2, 3)},
                                 params.data(), errorX, errorY));
  const std::optional<std::string> text = contentOf("D:/Affine.txt");
  ASSERT_TRUE(text);
  EXPECT_EQ(text->substr(0, 35), "1.000000\t2.000000\t3.000000\t4.000000");
}

TEST_F(HandEye, HostileCoordinatesDoNotCrash) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float largest = std::numeric_limits<float>::max();
  Params params{};
  double errorX = 0;
  double errorY = 0;
  EXPECT_TRUE(HandEyeCalibration(
      {pair(nan, 0, 0, 0), pair(largest, -largest, largest, nan), pair(0, largest, -largest, 1)},
      params.data(), errorX, errorY));
}

}  // namespace
