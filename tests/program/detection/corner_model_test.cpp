#include "detection/corner_model.h"

#include <gtest/gtest.h>

#include <cmath>

#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kFirst = 0.2;   // directions of the edges
constexpr double kSecond = 1.6;  // radians

// Two crossed edges of the given blur: tanh is neither the model's curve nor far from a real one.
cv::Mat crossedEdges(cv::Point2d corner, double blur) {
  cv::Mat picture(40, 40, CV_8UC1);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const cv::Point2d p = cv::Point2d(x, y) - corner;
      const double d1 = -std::sin(kFirst) * p.x + std::cos(kFirst) * p.y;
      const double d2 = -std::sin(kSecond) * p.x + std::cos(kSecond) * p.y;
      picture.at<unsigned char>(y, x) =
          cv::saturate_cast<unsigned char>(125 + 90 * std::tanh(d1 / blur) * std::tanh(d2 / blur));
    }
  }
  return picture;
}

TEST(CornerModel, TheCornerIsFoundToAFewHundredthsOfAPixel) {
  const cv::Point2d corner(19.37, 20.81);
  const auto fit = fitCorner(crossedEdges(corner, 1), {{20.5, 20}, 0.1, 1.5}, 9);
  ASSERT_TRUE(fit.has_value());
  EXPECT_LT(cv::norm(fit->position - corner), 0.03);
  EXPECT_NEAR(fit->contrast, 90, 8);
  EXPECT_GT(fit->explained, 0.98);
}

TEST(CornerModel, NoiseIsAveragedOut) {
  const cv::Point2d corner(19.37, 20.81);
  const auto fit = fitCorner(withNoise(crossedEdges(corner, 1), 30), {{20.5, 20}, 0.1, 1.5}, 9);
  ASSERT_TRUE(fit.has_value());
  EXPECT_LT(cv::norm(fit->position - corner), 0.3);
}

TEST(CornerModel, AFlatPictureHasNoCorner) {
  const cv::Mat flat(40, 40, CV_8UC1, cv::Scalar(120));
  EXPECT_FALSE(fitCorner(flat, {{20, 20}, 0, 1.57}, 9).has_value());
}

TEST(CornerModel, AWindowOutsideThePictureHasNoCorner) {
  EXPECT_FALSE(fitCorner(crossedEdges({20, 20}, 1), {{-30, 20}, 0, 1.57}, 9).has_value());
}

}  // namespace
}  // namespace fisheye_calibration::program
