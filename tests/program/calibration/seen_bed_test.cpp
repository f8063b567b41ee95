#include "calibration/seen_bed.h"

#include <gtest/gtest.h>

#include <cmath>

#include "program/support/sample_record.h"

namespace fisheye_calibration::program {
namespace {

constexpr Size kImage{960, 720};

// 170 above (120, 90) with theta_d = theta: a pure equidistant lens.
FishEyeCalibrationParam equidistant() {
  FishEyeCalibrationParam param = sampleRecord();
  param.u0 = 479.5f;
  param.v0 = 359.5f;
  param.k0 = param.k1 = 0;
  return param;
}

// r = f atan(d/h): radially dr/dd = f h/(h^2 + d^2), sideways r/d, which is more.
TEST(SeenBed, SharpnessIsThatOfTheRadialDirection) {
  EXPECT_NEAR(sharpnessAt(equidistant(), kImage, {120, 90}), 300.0 / 170, 1e-6);
  EXPECT_NEAR(sharpnessAt(equidistant(), kImage, {120 + 85, 90}),
              300.0 * 170 / (170 * 170 + 85 * 85), 1e-6);
  EXPECT_NEAR(sharpnessAt(equidistant(), kImage, {120 - 30, 90 + 40}),
              300.0 * 170 / (170 * 170 + 50 * 50), 1e-6);
}

TEST(SeenBed, WhatTheRawPictureDoesNotShowHasNoSharpness) {
  // 360 rows are 1.2 radians: 170 tan(1.2) = 437.
  EXPECT_GT(sharpnessAt(equidistant(), kImage, {120, 90 + 436}), 0);
  EXPECT_EQ(sharpnessAt(equidistant(), kImage, {120, 90 + 439}), 0);
  FishEyeCalibrationParam behind = equidistant();
  behind.Tz = -170;
  EXPECT_EQ(sharpnessAt(behind, kImage, {120, 90}), 0);
}

TEST(SeenBed, BeyondTheAngleAtWhichTheLensCurveTurnsNothingIsSeen) {
  FishEyeCalibrationParam param = equidistant();
  param.k1 = -0.6;  // turns at sqrt(1/1.8) = 0.745 rad: 170 tan(0.745) = 156.9
  EXPECT_GT(sharpnessAt(param, kImage, {120, 90 + 156}), 0);
  EXPECT_EQ(sharpnessAt(param, kImage, {120, 90 + 158}), 0);
}

// A third of the sharpness is at d = sqrt(2) h = 240.4.
TEST(SeenBed, SharesCountTheAreaOfWhatIsMissing) {
  const cv::Rect2d strip(120, 80, 600, 20);
  const SeenShares all = seenShares(equidistant(), kImage, {4000, 4000}, strip);
  // 479.5 columns are 1.598 radians, more than a right angle: nothing of it is unseen.
  EXPECT_EQ(all.unseen, 0);
  EXPECT_EQ(all.leftOut, 0);
  EXPECT_NEAR(all.blurred, (600 - 240.4) / 600, 1.0 / 64);
  // A picture of 1000 columns shows 500/300 x 170 = 283.3 of the bed on each side.
  const SeenShares cut = seenShares(equidistant(), kImage, {1000, 4000}, strip);
  EXPECT_NEAR(cut.leftOut, (600 - 283.3) / 600, 1.0 / 64);
  EXPECT_NEAR(cut.blurred, (283.3 - 240.4) / 600, 1.0 / 64);
  const SeenShares high = seenShares(equidistant(), kImage, {4000, 4000}, {110, 90, 20, 600});
  EXPECT_NEAR(high.unseen, (600 - 437.6) / 600, 1.0 / 64);
}

// A camera that looks along the bed at 45 degrees: the part behind its plane is not seen.
TEST(SeenBed, WhatLiesBehindTheCameraIsCountedApart) {
  FishEyeCalibrationParam param = equidistant();
  // R turns about x by 45 degrees: z = (Y + 170)/sqrt(2) is 0 at Y = -170.
  param.Rx = static_cast<float>(0.25 * 3.14159265358979);
  param.Tx = 0;
  param.Ty = static_cast<float>(-170 / std::sqrt(2));
  param.Tz = static_cast<float>(170 / std::sqrt(2));
  const SeenShares shares = seenShares(param, kImage, {4000, 4000}, {-10, -400, 20, 800});
  EXPECT_NEAR(shares.behind, 230.0 / 800, 1.0 / 64);
  EXPECT_GE(shares.unseen, shares.behind);
}

// Sharpness is compared with the best of the raw picture, which lies on the axis.
TEST(SeenBed, ABlurredRectangleIsBlurredAllOver) {
  EXPECT_NEAR(seenShares(equidistant(), kImage, {4000, 4000}, {120 + 300, 80, 50, 20}).blurred, 1,
              1e-9);
}

TEST(SeenBed, OddPicturesReachLessFarToTheRight) {
  // The axis is at column 481 of 961: 480 + 0.5 columns to the right of it, 481.5 to the left.
  const auto at = [](double columns) { return cv::Point2d(120 + columns * 170 / 300, 90); };
  EXPECT_TRUE(canShow(equidistant(), {961, 721}, at(479.4)));
  EXPECT_FALSE(canShow(equidistant(), {961, 721}, at(479.6)));
  EXPECT_TRUE(canShow(equidistant(), {961, 721}, at(-481.4)));
  EXPECT_FALSE(canShow(equidistant(), {961, 721}, at(-481.6)));
}

TEST(SeenBed, TheUsefulPartEndsAtAThirdOfTheBestSharpness) {
  double farthest = 0;
  for (const cv::Point2d& point : usefulPoints(equidistant(), kImage)) {
    farthest = std::max(farthest, std::hypot(point.x - 120, point.y - 90));
  }
  EXPECT_LT(farthest, 240.5);
  EXPECT_GT(farthest, 225);
}

TEST(SeenBed, ThePinholePictureReachesAsFarAsTheFocalLengthSays) {
  const cv::Point2d reach = reachFromAxis(equidistant(), {{120 - 170, 90}, {150, 90 + 85}});
  EXPECT_NEAR(reach.x, 300, 1e-4);
  EXPECT_NEAR(reach.y, 150, 1e-4);
  FishEyeCalibrationParam behind = equidistant();
  behind.Tz = -1;
  EXPECT_TRUE(std::isinf(reachFromAxis(behind, {{0, 0}}).x));
}

}  // namespace
}  // namespace fisheye_calibration::program
