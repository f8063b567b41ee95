#include "drawing/primitives.h"

#include <gtest/gtest.h>

#include <cmath>

#include "drawing/residual_plot.h"

namespace fisheye_calibration::program {
namespace {

TEST(Drawing, NiceNumbersAreOneTwoOrFiveTimesAPowerOfTen) {
  EXPECT_DOUBLE_EQ(niceBelow(7.3), 5);
  EXPECT_DOUBLE_EQ(niceBelow(199), 100);
  EXPECT_DOUBLE_EQ(niceBelow(0.3), 0.2);
  EXPECT_DOUBLE_EQ(niceAbove(7.3), 10);
  EXPECT_DOUBLE_EQ(niceAbove(1.2), 2);
  EXPECT_DOUBLE_EQ(niceAbove(0.04), 0.05);
  EXPECT_DOUBLE_EQ(niceAbove(2), 2);
}

TEST(Drawing, ColoursRunFromBlueToRed) {
  const cv::Scalar low = scaleColour(0);
  const cv::Scalar high = scaleColour(1);
  EXPECT_GT(low[0], 3 * low[2]);
  EXPECT_GT(high[2], 3 * high[0]);
  EXPECT_EQ(scaleColour(7), high);
}

std::vector<CalibrationPoint> pointsWithErrors(const std::vector<double>& errors) {
  std::vector<CalibrationPoint> points;
  for (const double error : errors) {
    CalibrationPoint point{};
    point.ImagePtX = 500;
    point.ImagePtY = 300;
    point.ReprojErrX = error;
    points.push_back(point);
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

TEST(ResidualPlot, ResidualsThatAreNoNumbersAreStillDrawn) {
  ResidualPlot plot;
  plot.points = pointsWithErrors({NAN, NAN});
  plot.image = {1000, 600};
  plot.rms = NAN;
  const cv::Mat picture = drawResidualPlot(plot);
  EXPECT_GT(picture.cols, 1400);
}

TEST(ResidualPlot, ArrowsCarryTheColourOfTheirSize) {
  ResidualPlot plot;
  plot.points = pointsWithErrors({2, 2, 2});
  plot.image = {1000, 600};
  plot.rms = 2;
  const cv::Mat picture = drawResidualPlot(plot);
  // The picture's 1000 px become 1400 px beside a margin of 40 px; the point lies at (500, 300).
  const cv::Vec3b colour = picture.at<cv::Vec3b>(40 + 420, 40 + 700);
  EXPECT_GT(colour[2], 180);
  EXPECT_LT(colour[0], 60);
}

}  // namespace
}  // namespace fisheye_calibration::program
