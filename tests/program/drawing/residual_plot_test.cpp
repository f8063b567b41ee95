#include "drawing/residual_plot.h"

#include <gtest/gtest.h>

#include <cmath>

namespace fisheye_calibration::program {
namespace {

std::vector<CalibrationPoint> pointsWithErrors(const std::vector<double>& errors) {
  std::vector<CalibrationPoint> points;
  for (const double error : errors) {
    points.push_back({.ImagePtX = 500, .ImagePtY = 300, .ReprojErrX = error});
  }
  return points;
}

TEST(ResidualPlot, MagnificationMakesTheMedianArrowVisible) {
  // 3.5 % of 1000 px is 35 px for the median of 0.25 px: 140, the nice number below is 100.
  EXPECT_DOUBLE_EQ(magnificationFor(pointsWithErrors({0.1, 0.25, 0.3}), {1000, 600}), 100);
}

TEST(ResidualPlot, MagnificationKeepsTheLongestArrowShort) {
  // 12 % of 1000 px is 120 px for the largest of 10 px.
  EXPECT_DOUBLE_EQ(magnificationFor(pointsWithErrors({0.1, 0.1, 10}), {1000, 600}), 10);
}

TEST(ResidualPlot, ResidualsThatAreNotNumbersAreStillDrawn) {
  const cv::Mat picture =
      drawResidualPlot({.points = pointsWithErrors({NAN, NAN}), .image = {1000, 600}, .rms = NAN});
  EXPECT_GT(picture.cols, 1400);
}

TEST(ResidualPlot, ArrowsCarryTheColourOfTheirSize) {
  const cv::Mat picture =
      drawResidualPlot({.points = pointsWithErrors({2, 2, 2}), .image = {1000, 600}, .rms = 2});
  // The picture's 1000 px become 1400 px inside a margin of 40 px; the point lies at (500, 300).
  const cv::Vec3b colour = picture.at<cv::Vec3b>(40 + 420, 40 + 700);
  EXPECT_GT(colour[2], 180);
  EXPECT_LT(colour[0], 60);
}

}  // namespace
}  // namespace fisheye_calibration::program
