#include "drawing/accuracy_map.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace fisheye_calibration::program {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(AccuracyMap, ContoursAreOneTwoAndFiveTimesPowersOfTen) {
  EXPECT_THAT(contourLevels({0.3, 4, NAN}),
              ElementsAre(DoubleNear(0.5, 1e-12), DoubleNear(1, 1e-12), DoubleNear(2, 1e-12)));
}

TEST(AccuracyMap, ContoursBetweenAlmostEqualValuesAreTheLevelBelow) {
  EXPECT_THAT(contourLevels({0.3, 0.31}), ElementsAre(DoubleNear(0.2, 1e-12)));
  EXPECT_THAT(contourLevels({NAN, NAN}), IsEmpty());
}

TEST(AccuracyMap, AtMostSevenContoursAreDrawn) {
  EXPECT_EQ(contourLevels({1e-6, 1}).size(), 7u);
  EXPECT_DOUBLE_EQ(contourLevels({1e-6, 1}).back(), 1);
}

// A grid of 3 x 3 points; the drawn bed is 1200 px wide and begins at (70, 40).
AccuracyMap sample() {
  return {.grid = {.area = {0, 0, 100, 100}, .columns = 3, .rows = 3},
          .errors = {NAN, 1, 1, 1, 1, 1, 1, 1, 8},
          .target = {{50, 75}},
          .insideTarget = 1,
          .onBed = 8};
}

TEST(AccuracyMap, WhatIsNotSeenStaysBlank) {
  const cv::Mat picture = drawAccuracyMap(sample());
  EXPECT_EQ(picture.at<cv::Vec3b>(40 + 100, 70 + 100), cv::Vec3b(255, 255, 255));
  EXPECT_NE(picture.at<cv::Vec3b>(40 + 100, 70 + 1100), cv::Vec3b(255, 255, 255));
}

TEST(AccuracyMap, LargeErrorsAreDark) {
  const cv::Mat picture = drawAccuracyMap(sample());
  const auto brightness = [&](int row, int column) {
    return cv::norm(picture.at<cv::Vec3b>(40 + row, 70 + column));
  };
  EXPECT_LT(brightness(1180, 1180), 0.7 * brightness(1100, 20));
}

TEST(AccuracyMap, TargetPointsAreMarked) {
  const cv::Mat picture = drawAccuracyMap(sample());
  EXPECT_EQ(picture.at<cv::Vec3b>(40 + 900, 70 + 600), cv::Vec3b(40, 40, 40));
}

}  // namespace
}  // namespace fisheye_calibration::program
