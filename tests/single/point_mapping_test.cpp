#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fisheye_calibration.h"
#include "support/plain_single.h"
#include "support/synthetic_rig.h"

namespace {

// Looks straight down from 2 units, no rotation, focal lengths 400 and 300.
FishEyeCalibrationParam straightDown() {
  FishEyeCalibrationParam param{};
  param.fx = 400;
  param.fy = 300;
  param.u0 = 640;
  param.v0 = 480;
  param.k0 = 0.1;
  param.k1 = -0.2;
  param.Tz = 2;
  return param;
}

double distorted(double theta) { return theta + 0.1 * theta * theta - 0.2 * theta * theta * theta; }

cv::Point2f toRaw(const FishEyeCalibrationParam& param, float Xw, float Yw, float Zw = 0) {
  cv::Point2f pixel(-1, -1);
  EXPECT_TRUE(WorldToRawImagePoint(Xw, Yw, Zw, param, pixel.x, pixel.y));
  return pixel;
}

cv::Point2f toCorrected(const FishEyeCalibrationParam& param, float Xw, float Yw, float Zw,
                        float cx, float cy) {
  cv::Point2f pixel(-1, -1);
  EXPECT_TRUE(WorldToCorrectedImagePoint(Xw, Yw, Zw, param, cx, cy, pixel.x, pixel.y));
  return pixel;
}

FishEyeCalibrationParam randomRecord(std::uint64_t seed) {
  const support::Rig rig = support::randomRig(seed, 1);
  const support::RigPose& pose = rig.views[0].pose;
  FishEyeCalibrationParam param{};
  param.fx = static_cast<float>(rig.camera.fx);
  param.fy = static_cast<float>(rig.camera.fy);
  param.u0 = static_cast<float>(rig.camera.cx);
  param.v0 = static_cast<float>(rig.camera.cy);
  param.skewness = 0.003f;
  param.k0 = rig.camera.k0;
  param.k1 = rig.camera.k1;
  param.Rx = static_cast<float>(pose.rotation[0]);
  param.Ry = static_cast<float>(pose.rotation[1]);
  param.Rz = static_cast<float>(pose.rotation[2]);
  param.Tx = static_cast<float>(pose.translation[0]);
  param.Ty = static_cast<float>(pose.translation[1]);
  param.Tz = static_cast<float>(pose.translation[2]);
  return param;
}

// --- World to raw image

TEST(WorldToRaw, PointAtFortyFiveDegreesLandsAtItsDistortedAngle) {
  EXPECT_FLOAT_EQ(toRaw(straightDown(), 2, 0).x,
                  static_cast<float>(640 + 400 * distorted(std::atan(1.0))));
  EXPECT_EQ(toRaw(straightDown(), 2, 0).y, 480);
}

TEST(WorldToRaw, PointOnTheOpticalAxisLandsOnThePrincipalPoint) {
  EXPECT_EQ(toRaw(straightDown(), 0, 0), cv::Point2f(640, 480));
}

TEST(WorldToRaw, HeightIsUsed) {
  // Two units up, the point is 4 away: atan(2/4).
  EXPECT_FLOAT_EQ(toRaw(straightDown(), 2, 0, 2).x,
                  static_cast<float>(640 + 400 * distorted(std::atan(0.5))));
}

TEST(WorldToRaw, DepthOfZeroCountsAsOne) {
  EXPECT_FLOAT_EQ(toRaw(straightDown(), 0.5f, 0, -2).x,
                  static_cast<float>(640 + 400 * distorted(std::atan(0.5))));
}

TEST(WorldToRaw, PointBehindTheCameraIsProjectedByTheSameFormulas) {
  EXPECT_FLOAT_EQ(toRaw(straightDown(), 1, 0, -3).x,
                  static_cast<float>(640 - 400 * distorted(std::atan(1.0))));
}

TEST(WorldToRaw, SkewAddsAShareOfYToX) {
  FishEyeCalibrationParam param = straightDown();
  param.skewness = 0.25f;
  const double yd = distorted(std::atan(0.5));
  EXPECT_FLOAT_EQ(toRaw(param, 0, 1).x, static_cast<float>(640 + 400 * 0.25 * yd));
  EXPECT_FLOAT_EQ(toRaw(param, 0, 1).y, static_cast<float>(480 + 300 * yd));
}

TEST(WorldToRaw, RotationComesFromTheVectorNotTheMatrix) {
  FishEyeCalibrationParam param = straightDown();
  param.R1 = param.R5 = param.R9 = 55;       // not read
  param.Rz = static_cast<float>(CV_PI / 2);  // (1, 0) to (0, 1)
  const cv::Point2f pixel = toRaw(param, 1, 0);
  EXPECT_NEAR(pixel.x, 640, 1e-4);
  EXPECT_NEAR(pixel.y, 480 + 300 * distorted(std::atan(0.5)), 1e-4);
}

TEST(WorldToRaw, AgreesWithThePlainDerivation) {
  support::Random random(3);
  for (std::uint64_t seed = 1; seed <= 300; ++seed) {
    const FishEyeCalibrationParam param = randomRecord(seed);
    const cv::Point3f world(static_cast<float>(random.uniform(0, 400)),
                            static_cast<float>(random.uniform(0, 300)),
                            static_cast<float>(random.uniform(-20, 20)));
    const cv::Point2d expected = plain::worldToRaw(world, param);
    const cv::Point2f pixel = toRaw(param, world.x, world.y, world.z);
    EXPECT_FLOAT_EQ(pixel.x, static_cast<float>(expected.x));
    EXPECT_FLOAT_EQ(pixel.y, static_cast<float>(expected.y));
  }
}

// --- World to corrected image

TEST(WorldToCorrected, IsThePinholeViewWithTheGivenCentre) {
  const cv::Point2f pixel = toCorrected(straightDown(), 2, 4, 0, 100, 50);
  EXPECT_EQ(pixel, cv::Point2f(100 + 400, 50 + 600));
}

TEST(WorldToCorrected, PointOnTheOpticalAxisLandsOnTheCentre) {
  EXPECT_EQ(toCorrected(straightDown(), 0, 0, 7, 320.5f, 240.5f), cv::Point2f(320.5f, 240.5f));
}

TEST(WorldToCorrected, SkewAddsAShareOfY) {
  FishEyeCalibrationParam param = straightDown();
  param.skewness = 0.25f;
  EXPECT_EQ(toCorrected(param, 2, 4, 0, 0, 0), cv::Point2f(400 + 0.25f * 2 * 400, 600));
}

TEST(WorldToCorrected, DepthOfZeroCountsAsOne) {
  EXPECT_EQ(toCorrected(straightDown(), 0.5f, 0.25f, -2, 10, 20), cv::Point2f(210, 95));
}

TEST(WorldToCorrected, AgreesWithThePlainDerivation) {
  support::Random random(4);
  for (std::uint64_t seed = 1; seed <= 300; ++seed) {
    const FishEyeCalibrationParam param = randomRecord(seed);
    const cv::Point3f world(static_cast<float>(random.uniform(0, 400)),
                            static_cast<float>(random.uniform(0, 300)),
                            static_cast<float>(random.uniform(-20, 20)));
    const cv::Point2d expected = plain::worldToCorrected(world, param, 640.5f, 480);
    const cv::Point2f pixel = toCorrected(param, world.x, world.y, world.z, 640.5f, 480);
    EXPECT_FLOAT_EQ(pixel.x, static_cast<float>(expected.x));
    EXPECT_FLOAT_EQ(pixel.y, static_cast<float>(expected.y));
  }
}

// --- World plane and second-corrected image

FishEyeCalibrationParam grid() {
  FishEyeCalibrationParam param{};
  param.Pixel = 0.25f;
  param.DatumPtXw = 120;
  param.DatumPtYw = 80;
  return param;
}

TEST(SecondCorrected, DatumMapsToTheCentreOfTheSecondCorrectedImage) {
  float x = 0;
  float y = 0;
  EXPECT_TRUE(WorldToSecondCorrectedImagePoint(120, 80, 9, grid(), 640, 480, x, y));
  EXPECT_EQ(x, 640);
  EXPECT_EQ(y, 480);
}

TEST(SecondCorrected, OneWorldUnitIsOneOverPixel) {
  float x = 0;
  float y = 0;
  EXPECT_TRUE(WorldToSecondCorrectedImagePoint(121, 78, 0, grid(), 640, 480, x, y));
  EXPECT_EQ(x, 644);
  EXPECT_EQ(y, 472);
}

TEST(SecondCorrected, HomographyAndShiftAreNotUsed) {
  FishEyeCalibrationParam param = grid();
  param.p1 = param.p5 = param.p9 = 3;
  param.ImageDx = param.ImageDy = 7;
  float x = 0;
  float y = 0;
  WorldToSecondCorrectedImagePoint(121, 78, 0, param, 640, 480, x, y);
  EXPECT_EQ(x, 644);
  float Xw = 0;
  float Yw = 0;
  float Zw = 5;
  CorrectedImageToWorldPoint(644, 472, 640, 480, param, Xw, Yw, Zw);
  EXPECT_EQ(Xw, 121);
}

TEST(SecondCorrected, InverseIsInSecondCorrectedPixelsAndLeavesHeightAlone) {
  float Xw = 0;
  float Yw = 0;
  float Zw = 5;
  EXPECT_TRUE(CorrectedImageToWorldPoint(644, 472, 640, 480, grid(), Xw, Yw, Zw));
  EXPECT_EQ(Xw, 121);
  EXPECT_EQ(Yw, 78);
  EXPECT_EQ(Zw, 5);
}

TEST(SecondCorrected, ThereAndBackReturnsTheWorldPoint) {
  support::Random random(5);
  for (int i = 0; i < 500; ++i) {
    FishEyeCalibrationParam param{};
    param.Pixel = static_cast<float>(random.uniform(0.01, 2));
    param.DatumPtXw = static_cast<float>(random.uniform(-500, 500));
    param.DatumPtYw = static_cast<float>(random.uniform(-500, 500));
    const auto Xw = static_cast<float>(random.uniform(-500, 500));
    const auto Yw = static_cast<float>(random.uniform(-500, 500));
    float x = 0;
    float y = 0;
    float backX = 0;
    float backY = 0;
    float Zw = 0;
    WorldToSecondCorrectedImagePoint(Xw, Yw, 0, param, 640, 480, x, y);
    CorrectedImageToWorldPoint(x, y, 640, 480, param, backX, backY, Zw);
    EXPECT_NEAR(backX, Xw, 1e-3);
    EXPECT_NEAR(backY, Yw, 1e-3);
    // 32-bit arithmetic, step by step.
    const cv::Point2f expected = plain::worldToSecondCorrected({Xw, Yw}, param, 640, 480);
    EXPECT_EQ(cv::Point2f(x, y), expected);
    EXPECT_EQ(cv::Point2f(backX, backY), plain::secondCorrectedToWorld(expected, param, 640, 480));
  }
}

TEST(SecondCorrected, PixelOfZeroGivesInfinitiesOneWayAndTheDatumTheOther) {
  FishEyeCalibrationParam param = grid();
  param.Pixel = 0;
  float x = 0;
  float y = 0;
  EXPECT_TRUE(WorldToSecondCorrectedImagePoint(121, 80, 0, param, 640, 480, x, y));
  EXPECT_EQ(x, std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(y));
  float Xw = 0;
  float Yw = 0;
  float Zw = 5;
  EXPECT_TRUE(CorrectedImageToWorldPoint(17, 4, 640, 480, param, Xw, Yw, Zw));
  EXPECT_EQ(Xw, 120);
  EXPECT_EQ(Yw, 80);
}

// --- Inert exports

TEST(InertMappings, ReportSuccessAndWriteNothing) {
  for (const FishEyeCalibrationParam& param :
       {straightDown(), FishEyeCalibrationParam{}}) {  // with a singular camera matrix as well
    float a = 11;
    float b = 12;
    float c = 13;
    EXPECT_TRUE(RawImageToCorrectedImagePoint(640, 480, param, a, b));
    EXPECT_TRUE(RawImageToWorldPoint(640, 480, param, a, b, c));
    EXPECT_EQ(a, 11);
    EXPECT_EQ(b, 12);
    EXPECT_EQ(c, 13);
  }
}

// --- Numbers that are not

TEST(PointMappings, RecordsOfNaNAndInfinityReturnTrue) {
  for (const float bad : {std::nanf(""), std::numeric_limits<float>::infinity(), -3e38f}) {
    FishEyeCalibrationParam param = straightDown();
    param.Rx = param.Ty = param.fx = param.Pixel = bad;
    float a = 0;
    float b = 0;
    float c = 0;
    EXPECT_TRUE(WorldToRawImagePoint(1, bad, 0, param, a, b));
    EXPECT_TRUE(WorldToCorrectedImagePoint(1, 2, bad, param, 640, bad, a, b));
    EXPECT_TRUE(WorldToSecondCorrectedImagePoint(1, bad, 0, param, 640, 480, a, b));
    EXPECT_TRUE(CorrectedImageToWorldPoint(1, bad, 640, 480, param, a, b, c));
    EXPECT_TRUE(RawImageToWorldPoint(bad, 2, param, a, b, c));
    EXPECT_TRUE(RawImageToCorrectedImagePoint(bad, 2, param, a, b));
  }
}

}  // namespace
