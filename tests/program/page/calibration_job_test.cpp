#include "page/calibration_job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "geometry/conversions.h"
#include "simulation/random_numbers.h"
#include "simulation/simulated_camera.h"

namespace fisheye_calibration::program {
namespace {

constexpr Size kImage{.width = 1280, .height = 960};

// 9 x 7 points over X 40 ... 360, Y 40 ... 280 mm on a plane 400 mm below the camera.
TargetView viewOf(const std::string& name, const PlanePose& plane, std::uint64_t seed) {
  const NominalCamera nominal{.size = kImage,
                              .fx = 700,
                              .fy = 698,
                              .centre = {645, 474},
                              .k0 = 0.02,
                              .k1 = -0.03,
                              .over = {200, 160},
                              .height = 400,
                              .tilt = {2, 1, 3}};
  const FishEyeCalibrationParam camera =
      seenFromPlane(trueCamera(nominal, {0, 0, 400, 320}).param, plane);
  RandomNumbers random(seed);
  TargetView view{.name = name};
  for (int i = 0; i < 63; ++i) {
    CalibrationPoint point{};
    point.PointId = i + 1;
    point.Xw = static_cast<float>(40 + 40 * (i % 9));
    point.Yw = static_cast<float>(40 + 40 * (i / 9));
    const cv::Point2f raw = rawPosition(camera, {point.Xw, point.Yw});
    point.ImagePtX = raw.x + static_cast<float>(0.4 * (random.uniform() - 0.5));
    point.ImagePtY = raw.y + static_cast<float>(0.4 * (random.uniform() - 0.5));
    view.points.push_back(point);
  }
  return view;
}

// Flat on the bed, and tilted.
CalibrationWish wishFor(const std::optional<cv::Rect2d>& bed) {
  return {.views = {viewOf("view 1", {.centre = {200, 160}}, 1),
                    viewOf("view 2", {.centre = {200, 160}, .tilt = {25, 5, 0}, .height = 60}, 2)},
          .image = kImage,
          .bed = bed,
          .tolerance = 5};
}

CalibrationOutcome outcomeFor(const cv::Rect2d& bed) {
  return calibrated(wishFor(bed), [](double, const std::string&) {});
}

TEST(CalibrationJob, ABedInThePictureIsJudgedAsAWhole) {
  const CalibrationOutcome outcome = outcomeFor({0, 0, 400, 320});
  EXPECT_EQ(outcome.verdict.text, "good for 5 mm work");
  EXPECT_LT(outcome.chosen.accuracy.onBed, 5);
  const Expectation expectation = expectationOf(wishFor(cv::Rect2d(0, 0, 400, 320)));
  EXPECT_TRUE(std::none_of(expectation.errors.begin(), expectation.errors.end(),
                           [](double error) { return std::isnan(error); }));
}

TEST(CalibrationJob, ABedThatIsNotSeenIsNotCalledGood) {
  const cv::Rect2d elsewhere(50000, 0, 400, 320);
  const CalibrationOutcome outcome = outcomeFor(elsewhere);
  EXPECT_FALSE(outcome.verdict.good);
  EXPECT_EQ(outcome.verdict.text,
            "redo: the camera does not see the bed; check its place and size in step 1");
  EXPECT_TRUE(std::isnan(outcome.chosen.accuracy.onBed));
  try {
    expectationOf(wishFor(elsewhere));
    FAIL() << "it expects something";
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(),
                 "the camera does not see the bed; check its place and size in step 1");
  }
}

// The picture ends some 500 to 600 mm from its middle.
TEST(CalibrationJob, OfALargeBedOnlyWhatThePictureShowsCounts) {
  const cv::Rect2d large(0, 0, 4000, 320);
  const CalibrationOutcome outcome = outcomeFor(large);
  EXPECT_THAT(outcome.verdict.text, testing::StartsWith("good for 5 mm work on the "));
  EXPECT_THAT(outcome.verdict.text, testing::EndsWith(" % of the bed that this camera sees"));
  const Expectation expectation = expectationOf(wishFor(large));
  const std::vector<cv::Point2d> places = expectation.grid.points();
  ASSERT_EQ(places.size(), expectation.errors.size());
  double farthest = 0;
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (!std::isnan(expectation.errors[i])) farthest = std::max(farthest, places[i].x);
  }
  const BedAccuracy& judged = outcome.chosen.accuracy;
  const std::vector<cv::Point2d> judgedPlaces = judged.grid.points();
  double judgedFarthest = 0;
  for (std::size_t i = 0; i < judgedPlaces.size(); ++i) {
    if (!std::isnan(judged.errors[i])) {
      judgedFarthest = std::max(judgedFarthest, judgedPlaces[i].x);
    }
  }
  EXPECT_GT(farthest, 500);
  EXPECT_LT(farthest, 900);
  EXPECT_NEAR(farthest, judgedFarthest, 200);  // the grids have different steps
}

TEST(CalibrationJob, OnlyWhatHelpsIsProposedTheBestFirst) {
  const CalibrationOutcome outcome = outcomeFor({0, 0, 400, 320});
  double last = 0;
  for (const Remedy& remedy : outcome.remedies) {
    EXPECT_LT(remedy.onBed, outcome.chosen.accuracy.onBed);
    EXPECT_GE(remedy.onBed, last);
    last = remedy.onBed;
  }
}

}  // namespace
}  // namespace fisheye_calibration::program
