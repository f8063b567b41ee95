#include "detection/target_detection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "detection/markers.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

const Progress kSilent = [](const std::string&) {};

// Root mean square distance of the found points from their true positions, pixels.
double rmsError(const Detection& detection, const SyntheticCamera& camera,
                const SyntheticTarget& target) {
  const std::vector<CalibrationPoint> exact = exactPoints(camera, target);
  double sum = 0;
  for (const GridPoint& found : detection.grid) {
    double nearest = HUGE_VAL;
    for (const CalibrationPoint& point : exact) {
      if (std::abs(static_cast<double>(point.Xw) - target.spacing * found.world.x) > 1e-3) {
        continue;
      }
      if (std::abs(static_cast<double>(point.Yw) - target.spacing * found.world.y) > 1e-3) {
        continue;
      }
      nearest = std::hypot(static_cast<double>(found.image.x - point.ImagePtX),
                           static_cast<double>(found.image.y - point.ImagePtY));
    }
    sum += nearest * nearest;
  }
  return std::sqrt(sum / static_cast<double>(detection.grid.size()));
}

TEST(TargetDetection, ChessboardCornersLieWhereTheCameraPutsThem) {
  const SyntheticCamera camera;
  const SyntheticTarget target;
  const auto found =
      detectTarget(drawTarget(camera, target), {TargetKind::kChessboard, 9, 7}, kSilent).detection;
  ASSERT_TRUE(found.has_value());
  ASSERT_EQ(found->grid.size(), 63u);
  EXPECT_LT(rmsError(*found, camera, target), 0.1);
}

TEST(TargetDetection, ColumnsAndRowsCanBeGivenInEitherOrder) {
  const SyntheticCamera camera;
  const SyntheticTarget target;
  const auto found =
      detectTarget(drawTarget(camera, target), {TargetKind::kChessboard, 7, 9}, kSilent).detection;
  ASSERT_TRUE(found.has_value());
  EXPECT_LT(rmsError(*found, camera, target), 0.1);
}

TEST(TargetDetection, ABlurredAndDarkChessboardIsFound) {
  const SyntheticCamera camera;
  const SyntheticTarget target;
  cv::Mat picture = drawTarget(camera, target);
  cv::GaussianBlur(picture, picture, cv::Size(), 3);
  picture.convertTo(picture, CV_8U, 0.2, 10);
  const auto found = detectTarget(picture, {TargetKind::kChessboard, 9, 7}, kSilent).detection;
  ASSERT_TRUE(found.has_value());
  EXPECT_LT(rmsError(*found, camera, target), 0.5);
}

TEST(TargetDetection, CirclesAreFound) {
  const SyntheticCamera camera;
  const SyntheticTarget target = {.pattern = Pattern::kCircles};
  const auto found =
      detectTarget(drawTarget(camera, target), {TargetKind::kCircles, 9, 7}, kSilent).detection;
  ASSERT_TRUE(found.has_value());
  // The centre of a circle's picture is not the picture of its centre, so the tolerance is larger.
  EXPECT_LT(rmsError(*found, camera, target), 0.7);
}

// Thousands of discs, among which the image library would search for minutes.
TEST(TargetDetection, AHoneycombHoldsNoTarget) {
  cv::Mat grey(900, 1200, CV_8UC1, cv::Scalar(40));
  for (int row = 0; row * 12 < grey.rows; ++row) {
    for (int x = row % 2 * 7; x < grey.cols; x += 14) {
      cv::circle(grey, {x, row * 12}, 4, cv::Scalar(200), cv::FILLED);
    }
  }
  EXPECT_FALSE(detectTarget(grey, {TargetKind::kCircles, 11, 7}, kSilent).detection.has_value());
  EXPECT_FALSE(
      detectTarget(grey, {TargetKind::kAsymmetricCircles, 4, 11}, kSilent).detection.has_value());
  EXPECT_FALSE(detectTarget(grey, {TargetKind::kChessboard, 9, 6}, kSilent).detection.has_value());
  if (markersAvailable()) {
    EXPECT_FALSE(detectTarget(grey, {TargetKind::kCharuco, 9, 6}, kSilent).detection.has_value());
  }
}

TEST(TargetDetection, BrightCirclesAreFound) {
  const SyntheticCamera camera;
  const SyntheticTarget target = {.pattern = Pattern::kCircles, .darkPoints = false};
  const auto found =
      detectTarget(drawTarget(camera, target), {TargetKind::kCircles, 9, 7}, kSilent).detection;
  ASSERT_TRUE(found.has_value());
  EXPECT_LT(rmsError(*found, camera, target), 0.7);
}

TEST(TargetDetection, StaggeredCirclesAreFound) {
  const SyntheticCamera camera;
  const SyntheticTarget target = {
      .pattern = Pattern::kAsymmetricCircles, .columns = 4, .rows = 11, .spacing = 20};
  const auto found =
      detectTarget(drawTarget(camera, target), {TargetKind::kAsymmetricCircles, 4, 11}, kSilent)
          .detection;
  ASSERT_TRUE(found.has_value());
  ASSERT_EQ(found->grid.size(), 44u);
  EXPECT_LT(rmsError(*found, camera, target), 0.7);
}

TEST(TargetDetection, AnEmptyPictureHoldsNoTarget) {
  const cv::Mat grey(480, 640, CV_8UC1, cv::Scalar(128));
  EXPECT_FALSE(detectTarget(grey, {TargetKind::kChessboard, 8, 6}, kSilent).detection.has_value());
  EXPECT_FALSE(detectTarget(grey, {TargetKind::kCircles, 8, 6}, kSilent).detection.has_value());
}

}  // namespace
}  // namespace fisheye_calibration::program
