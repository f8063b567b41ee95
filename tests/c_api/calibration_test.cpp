// The calibrations and fits of the C interface give the numbers of the C++ functions.
#include <gtest/gtest.h>

#include <cstdlib>

#include "c_api/records.h"
#include "support/shown_message.h"
#include "support/synthetic_rig.h"

using namespace c_api_tests;

namespace {

struct Calibrated {
  bool result = false;
  std::vector<CalibrationPoint> points;
  FishEyeCalibrationParam param{};
  double rms = -1;
};

Calibrated calibrateByCxx(const support::Rig& rig) {
  Calibrated calibrated;
  calibrated.points = support::calibrationPoints(rig.views[0]);
  calibrated.result =
      SingleCamCalibration(nullptr, rig.camera.imageSize.width, rig.camera.imageSize.height, 8,
                           calibrated.points, 1000, 800, calibrated.param, calibrated.rms);
  return calibrated;
}

FishEyeCalibrationParam withoutFiller(FishEyeCalibrationParam param) {
  param.k2 = param.k3 = param.k4 = param.k5 = 0;
  return param;
}

TEST(CCalibration, GivesTheNumbersOfTheCxxFunctionButForTheFiller) {
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    const support::Rig rig = support::randomRig(seed, 1, 0.2);
    Calibrated expected = calibrateByCxx(rig);
    ASSERT_TRUE(expected.result);
    auto points = pointsOf(support::calibrationPoints(rig.views[0]));
    fcal_camera camera{};
    double rms = -1;
    ASSERT_TRUE(succeeds(fcal_calibrate(rig.camera.imageSize.width, rig.camera.imageSize.height,
                                        points.data(), countOf(points), 1000, 800, &camera, &rms)));
    EXPECT_TRUE(equalBytes(camera, withoutFiller(expected.param)));
    EXPECT_TRUE(equalBytes(points, expected.points));
    EXPECT_EQ(rms, expected.rms);
  }
}

TEST(CCalibration, DrawsNoRandomNumbers) {
  const support::Rig rig = support::randomRig(1, 1);
  auto points = pointsOf(support::calibrationPoints(rig.views[0]));
  fcal_camera camera{};
  double rms = -1;
  std::srand(5);
  const int expected = std::rand();
  std::srand(5);
  ASSERT_TRUE(succeeds(fcal_calibrate(rig.camera.imageSize.width, rig.camera.imageSize.height,
                                      points.data(), countOf(points), 1000, 800, &camera, &rms)));
  EXPECT_EQ(std::rand(), expected);
}

TEST(CCalibration, EightPointsHaveNoResultAndShowNoMessage) {
  const support::Rig rig = support::randomRig(1, 1);
  auto points = pointsOf(support::calibrationPoints(rig.views[0]));
  points.resize(8);
  const auto before = points;
  fcal_camera camera{};
  camera.u0 = 5;
  double rms = -1;
  fcal_status status = FCAL_OK;
  EXPECT_EQ(support::messageShownBy([&] {
              status = fcal_calibrate(1280, 960, points.data(), 8, 1000, 800, &camera, &rms);
            }),
            "");
  EXPECT_TRUE(fails(status, FCAL_FALSE, "points: fewer than 9"));
  EXPECT_EQ(std::memcmp(points.data(), before.data(), 8 * sizeof(fcal_point)), 0);
  EXPECT_EQ(camera.u0, 5);
  EXPECT_EQ(camera.fx, 0);
  EXPECT_EQ(rms, -1);
}

TEST(CCalibration, TheCxxFunctionStillShowsItsMessage) {
  std::vector<CalibrationPoint> points(8);
  FishEyeCalibrationParam param{};
  double rms = -1;
  EXPECT_NE(support::messageShownBy([&] {
              SingleCamCalibration(nullptr, 1280, 960, 8, points, 1000, 800, param, rms);
            }),
            "");
}

// Without a second correction the rest is written (compatibility 17).
void expectNoSecondCorrection(std::vector<CalibrationPoint> cxxPoints) {
  auto points = pointsOf(cxxPoints);
  FishEyeCalibrationParam param{};
  param.p1 = 77;
  param.Pixel = 78;
  fcal_camera camera = cameraOf(param);
  double rms = -1;
  double expectedRms = -1;
  ASSERT_FALSE(SingleCamCalibration(nullptr, 640, 480, 8, cxxPoints, 640, 480, param, expectedRms));
  EXPECT_TRUE(
      fails(fcal_calibrate(640, 480, points.data(), countOf(points), 640, 480, &camera, &rms),
            FCAL_FALSE, "points: no second correction fits them"));
  EXPECT_TRUE(equalBytes(camera, withoutFiller(param)));
  EXPECT_TRUE(equalBytes(points, cxxPoints));
  EXPECT_GT(camera.fx, 0);
  EXPECT_EQ(camera.p[0], 77);
  EXPECT_EQ(camera.pixel, 78);
  EXPECT_EQ(rms, expectedRms);
}

TEST(CCalibration, CollinearPointsHaveNoSecondCorrection) {
  std::vector<CalibrationPoint> points(12);
  for (std::size_t i = 0; i < points.size(); ++i) {
    points[i].Xw = static_cast<float>(10 * i);
    points[i].ImagePtX = static_cast<float>(100 + 20 * i);
    points[i].ImagePtY = 240;
  }
  expectNoSecondCorrection(points);
}

TEST(CCalibration, ARepeatedPointAtTheEndHasNoSecondCorrection) {
  auto points = support::calibrationPoints(support::randomRig(2, 1).views[0]);
  points.back() = points.front();
  expectNoSecondCorrection(points);
}

TEST(CAffineFit, GivesTheNumbersOfTheCxxFunction) {
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    const auto points = support::calibrationPoints(support::randomRig(seed, 1, 0.5).views[0]);
    double expected[6];
    double expectedX = -1;
    double expectedY = -1;
    ASSERT_TRUE(HandEyeCalibration(points, expected, expectedX, expectedY));
    const auto same = pointsOf(points);
    double found[6];
    double errorX = -1;
    double errorY = -1;
    ASSERT_TRUE(succeeds(fcal_fit_affine(same.data(), countOf(same), found, &errorX, &errorY)));
    EXPECT_TRUE(equalBytes(found, expected));
    EXPECT_EQ(errorX, expectedX);
    EXPECT_EQ(errorY, expectedY);
  }
}

TEST(CAffineFit, TwoPointsHaveNoResult) {
  const fcal_point points[2] = {};
  double found[6] = {7, 7, 7, 7, 7, 7};
  double errorX = 7;
  double errorY = 7;
  EXPECT_TRUE(fails(fcal_fit_affine(points, 2, found, &errorX, &errorY), FCAL_FALSE,
                    "points: fewer than 3"));
  for (const double number : {found[0], found[5], errorX, errorY}) {
    EXPECT_EQ(number, 7);
  }
}

TEST(CStraightening, FailsAsTheCxxFunctionDoes) {
  EXPECT_TRUE(fails(fcal_straighten(nullptr, 0), FCAL_FALSE, "points: none"));
  const fcal_point points[5] = {};
  EXPECT_EQ(fcal_straighten(points, 5), FCAL_IMAGE_LIBRARY);
  EXPECT_STRNE(fcal_last_error(), "");
}

}  // namespace
