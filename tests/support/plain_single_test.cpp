#include "support/plain_single.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/synthetic_rig.h"

namespace {

TEST(PlainSingleCamera, SecondCorrectionIsTheMetricGridOfTheBed) {
  const support::RigCamera camera;
  const support::Bed bed;
  const support::RigPose pose = support::poseOver(bed, 180, 0.4, -0.3, 0.2);
  auto points = support::calibrationPoints(support::seen(camera, bed, pose));
  FishEyeCalibrationParam param{};
  double error = -1;
  ASSERT_TRUE(plain::singleCamCalibration(camera.imageSize, points, {1280, 960}, param, error));
  EXPECT_LT(error, 1e-3);
  EXPECT_NEAR(param.fx, camera.fx, 0.05);
  for (const CalibrationPoint& point : points) {
    const cv::Point2d c = plain::worldToCorrected({point.Xw, point.Yw, 0}, param, 640, 480);
    const double w = param.p7 * c.x + param.p8 * c.y + param.p9;
    const double x = (param.p1 * c.x + param.p2 * c.y + param.p3) / w + param.ImageDx;
    const double y = (param.p4 * c.x + param.p5 * c.y + param.p6) / w + param.ImageDy;
    const cv::Point2f metric = plain::worldToSecondCorrected({point.Xw, point.Yw}, param, 640, 480);
    EXPECT_NEAR(metric.x, x, 0.02);
    EXPECT_NEAR(metric.y, y, 0.02);
    const cv::Point2f world = plain::secondCorrectedToWorld(metric, param, 640, 480);
    EXPECT_NEAR(world.x, point.Xw, 1e-3);
    EXPECT_NEAR(world.y, point.Yw, 1e-3);
  }
}

TEST(PlainSingleCamera, MapsAPointStraightAhead) {
  FishEyeCalibrationParam param{};
  param.fx = 400;
  param.fy = 300;
  param.u0 = 640;
  param.v0 = 480;
  param.Tz = 2;
  const cv::Point2d raw = plain::worldToRaw({2, 0, 0}, param);  // 45 degrees
  EXPECT_NEAR(raw.x, 640 + 400 * std::atan(1.0), 1e-12);
  EXPECT_EQ(raw.y, 480);
  const cv::Point2d corrected = plain::worldToCorrected({2, 4, 0}, param, 100, 50);
  EXPECT_EQ(corrected.x, 100 + 400);
  EXPECT_EQ(corrected.y, 50 + 600);
}

}  // namespace
