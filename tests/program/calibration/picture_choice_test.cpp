#include "calibration/picture_choice.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/failure.h"
#include "geometry/conversions.h"
#include "geometry/target_points.h"
#include "program/support/sample_record.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

constexpr Size kImage{960, 720};

// The solved camera of sampleRecord(), whose second correction is the identity for every size.
CalibrationResult solved(const std::vector<CalibrationPoint>& points, const Size& size) {
  return {.homographyFound = true,
          .param = sampleRecord(),
          .points = points,
          .rms = 0.3,
          .corrected = size};
}

CalibrationResult chosen(const PictureWish& wish,
                         const std::vector<CalibrationPoint>& points = exactPoints({}, {})) {
  return withChosenPicture(wish, kImage, [&](const Size& size) { return solved(points, size); });
}

TEST(PictureChoice, AWishedSizeIsTaken) {
  EXPECT_EQ(chosen({.size = Size{101, 77}}).corrected, (Size{101, 77}));
}

// Sharp to a third up to about sqrt(2) 170 on the bed, sqrt(2) 300 px on each side, with this
// nearly equidistant lens, and looked at every 15 px or less. The target reaches to 240 - 120 = 120
// on the bed, less than that.
TEST(PictureChoice, ThePictureShowsWhatIsSeenSharply) {
  const Size size = chosen({}).corrected;
  EXPECT_NEAR(size.width, 2 * std::sqrt(2) * 300, 100);
  EXPECT_NEAR(size.height, 2 * std::sqrt(2) * 300, 100);
  EXPECT_EQ(size.width % 4, 0);
  EXPECT_EQ(size.height % 4, 0);
}

TEST(PictureChoice, ThePictureShowsTheWholeTarget) {
  // 120 + 450 on the bed: 450/170 x 300 = 794 px to the right.
  std::vector<CalibrationPoint> points = exactPoints({}, {});
  points.back().Xw = 570;
  const CalibrationResult result = chosen({}, points);
  EXPECT_EQ(result.corrected.width, 4 * std::ceil(2 * (450 * 300.0 / 170 + 2) / 4));
  EXPECT_TRUE(showsTarget(result));
  EXPECT_FALSE(showsTarget(solved(points, {960, 720})));
}

// Beyond twice the raw picture around the axis, the picture is laid over the target: no farther to
// the left than what is useful.
TEST(PictureChoice, AFarTargetIsShownAllTheSame) {
  std::vector<CalibrationPoint> points = exactPoints({}, {});
  points.back().Xw = 120 + 1200;
  const CalibrationResult result = chosen({}, points);
  EXPECT_TRUE(showsTarget(result));
  for (const CalibrationPoint& point : points) {
    const cv::Point2f at =
        secondCorrectedPosition(result.param, bedPosition(point), centreOf(result.corrected));
    EXPECT_GE(at.x, 0);
    EXPECT_LT(at.x, static_cast<float>(result.corrected.width));
    EXPECT_GE(at.y, 0);
    EXPECT_LT(at.y, static_cast<float>(result.corrected.height));
  }
}

TEST(PictureChoice, AWishedRectangleIsShownExactly) {
  const CalibrationResult result =
      chosen({.bed = cv::Rect2d(20, 10, 200, 150.5), .resolution = 0.25});
  EXPECT_EQ(result.corrected, (Size{800, 602}));
  const cv::Point2f centre = centreOf(result.corrected);
  const cv::Point2f first = bedPositionAt(result.param, {-0.5f, -0.5f}, centre);
  const cv::Point2f last = bedPositionAt(result.param, {799.5f, 601.5f}, centre);
  EXPECT_NEAR(first.x, 20, 1e-4);
  EXPECT_NEAR(first.y, 10, 1e-4);
  EXPECT_NEAR(last.x, 220, 1e-4);
  EXPECT_NEAR(last.y, 160.5, 1e-4);
}

TEST(PictureChoice, AFractionOfAPixelCountsAsOne) {
  EXPECT_EQ(sizeOfArea({0, 0, 10, 10.1}, 1), (Size{10, 11}));
  EXPECT_EQ(sizeOfArea({0, 0, 300, 0.2}, 0.1), (Size{3000, 2}));
}

TEST(PictureChoice, TheChosenResolutionDividesBothSides) {
  // 100 mm into 250 parts is 0.4; into 244 it would not end after six decimals.
  EXPECT_DOUBLE_EQ(chosenResolution({0, 0, 300, 200}, 0.41), 0.4);
  EXPECT_DOUBLE_EQ(chosenResolution({0, 0, 300.5, 200}, 0.26), 0.25);  // half of 0.5
  EXPECT_DOUBLE_EQ(chosenResolution({0, 0, 300, 200}, 0.5), 0.5);
  // Half of 0.5 would be too fine, and so would be parts of 0.001: the width alone.
  EXPECT_DOUBLE_EQ(chosenResolution({0, 0, 100, 33.333}, 0.41), 0.4);
  const double coarse = chosenResolution({0, 0, 300.5, 200}, 0.41);
  EXPECT_LE(coarse, 0.41);
  EXPECT_GE(coarse, 0.41 / 1.25);
  EXPECT_NEAR(300.5 / coarse, std::round(300.5 / coarse), 1e-9);
}

TEST(PictureChoice, WithoutAResolutionThePictureIsFineEnoughToShowTheBed) {
  // The far corner is 400/170 x 300 px from the axis, and the picture's half as wide as that at
  // least.
  const CalibrationResult result = chosen({.bed = cv::Rect2d(120, 90, 400, 100)});
  EXPECT_GE(result.corrected.width, 2 * 400 * 300 / 170);
  EXPECT_EQ(seenShares(result.param, kImage, result.corrected, {120, 90, 400, 100}).leftOut, 0);
}

TEST(PictureChoice, ATooLargePictureIsBadInput) {
  for (const double resolution : {0.001, 1e-300}) {
    EXPECT_THROW(chosen({.bed = cv::Rect2d(0, 0, 400, 400), .resolution = resolution}), Failure);
  }
}

}  // namespace
}  // namespace fisheye_calibration::program
