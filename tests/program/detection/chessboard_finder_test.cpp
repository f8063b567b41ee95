#include "detection/chessboard_finder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

const Progress kSilent = [](const std::string&) {};

// A camera that looks at the middle of the target, slightly tilted.
SyntheticCamera cameraOver(const SyntheticTarget& target, double height) {
  SyntheticCamera camera;
  camera.width = 640;
  camera.height = 480;
  camera.focalLength = 210;
  camera.principalPoint = {322, 236};
  const double x = (target.columns - 1) * target.spacing / 2;
  const double y = (target.rows - 1) * target.spacing / 2;
  for (std::size_t i = 0; i < 3; ++i) {
    camera.T[i] = -(camera.R[3 * i] * x + camera.R[3 * i + 1] * y);
  }
  camera.T[2] += height;
  return camera;
}

Search search(const cv::Mat& picture, int columns, int rows) {
  return findChessboard(
      picture, {.kind = TargetKind::kChessboard, .columns = columns, .rows = rows}, kSilent);
}

// The largest distance of a found corner from the nearest true one, pixels.
double worstError(const Detection& detection, const std::vector<CalibrationPoint>& exact) {
  double worst = 0;
  for (const GridPoint& found : detection.grid) {
    double nearest = HUGE_VAL;
    for (const CalibrationPoint& point : exact) {
      nearest = std::min(nearest, std::hypot(static_cast<double>(found.image.x - point.ImagePtX),
                                             static_cast<double>(found.image.y - point.ImagePtY)));
    }
    worst = std::max(worst, nearest);
  }
  return worst;
}

class BoardSizes : public testing::TestWithParam<std::pair<int, int>> {};

TEST_P(BoardSizes, OnlyTheTrueSizePasses) {
  const auto [columns, rows] = GetParam();
  const SyntheticTarget target = {.columns = columns, .rows = rows};
  const cv::Mat picture = drawTarget(cameraOver(target, 22.0 * columns), target);
  for (int c = columns - 1; c <= columns + 1; ++c) {
    for (int r = rows - 1; r <= rows + 1; ++r) {
      if (c < 3 || r < 3) {
        continue;
      }
      const bool same = (c == columns && r == rows) || (c == rows && r == columns);
      EXPECT_EQ(search(picture, c, r).detection.has_value(), same) << c << " x " << r;
    }
  }
  EXPECT_FALSE(search(picture, (columns + 1) / 2, (rows + 1) / 2).detection.has_value());
}

INSTANTIATE_TEST_SUITE_P(ChessboardFinder, BoardSizes,
                         testing::Values(std::pair(8, 6), std::pair(9, 7), std::pair(15, 9),
                                         std::pair(5, 5), std::pair(4, 3)));

class ChessboardFinder : public testing::Test {
 protected:
  const SyntheticTarget target = {.columns = 8, .rows = 6};
  const SyntheticCamera camera = cameraOver(target, 180);
  const cv::Mat picture = drawTarget(camera, target);
  const std::vector<CalibrationPoint> exact = exactPoints(camera, target);
};

TEST_F(ChessboardFinder, ARefusalSaysWhatIsThere) {
  EXPECT_THAT(search(picture, 7, 6).seen, HasSubstr("8 x 6"));
}

TEST_F(ChessboardFinder, AHiddenColumnIsNotPassedOver) {
  cv::Mat hidden = picture.clone();
  const int edge = cvFloor(camera.project(6.5 * 30, 2.5 * 30).x);
  hidden.colRange(edge, hidden.cols) = 215;
  EXPECT_FALSE(search(hidden, 8, 6).detection.has_value());
  EXPECT_FALSE(search(hidden, 7, 6).detection.has_value());
}

TEST_F(ChessboardFinder, PicturesNarrowerThanABoardAreRefusedAtOnce) {
  int steps = 0;
  const Search found = findChessboard(cv::Mat(2, 20000, CV_8UC1, cv::Scalar(120)),
                                      {.kind = TargetKind::kChessboard, .columns = 8, .rows = 6},
                                      [&](const std::string&) { ++steps; });
  EXPECT_FALSE(found.detection.has_value());
  EXPECT_EQ(steps, 0);
}

// The camera looks along a small board, which the lens bends so strongly that corners at the rim
// lie far from where their neighbours would continue.
TEST(ChessboardFinderAskew, CornersOfAStronglyBentBoardAreMeasured) {
  const SyntheticTarget small = {.columns = 5, .rows = 4};
  SyntheticCamera over = cameraOver(small, 75);
  over.T[0] -= 45;
  const cv::Mat seen = drawTarget(over, small);
  const Search found = search(seen, 5, 4);
  ASSERT_TRUE(found.detection.has_value());
  EXPECT_LT(worstError(*found.detection, exactPoints(over, small)), 0.5);
}

TEST_F(ChessboardFinder, GlareOverSomeCornersIsBridged) {
  cv::Mat glare(picture.size(), CV_8UC1, cv::Scalar(0));
  cv::circle(glare, cv::Point(camera.project(3.5 * 30, 2.5 * 30)), 22, cv::Scalar(255), cv::FILLED);
  cv::GaussianBlur(glare, glare, cv::Size(), 8);
  cv::Mat lit;
  cv::add(picture, glare, lit);
  const Search found = search(lit, 8, 6);
  ASSERT_TRUE(found.detection.has_value());
  EXPECT_LT(worstError(*found.detection, exact), 3);
}

TEST_F(ChessboardFinder, ABlurredBoardIsFound) {
  cv::Mat blurred;
  cv::GaussianBlur(picture, blurred, cv::Size(), 4);
  const Search found = search(blurred, 8, 6);
  ASSERT_TRUE(found.detection.has_value());
  EXPECT_LT(worstError(*found.detection, exact), 1);
}

TEST_F(ChessboardFinder, StrongNoiseMovesNoCornerFar) {
  const SyntheticTarget large = {.columns = 15, .rows = 9};
  SyntheticCamera over = cameraOver(large, 300);
  over.width *= 2;
  over.height *= 2;
  over.focalLength *= 2;
  over.principalPoint *= 2;
  const cv::Mat clean = drawTarget(over, large);
  for (const auto& [sigma, tolerance] : {std::pair(15.0, 0.5), std::pair(40.0, 1.5)}) {
    const Search found = search(withNoise(clean, sigma), 15, 9);
    ASSERT_TRUE(found.detection.has_value()) << sigma;
    EXPECT_LT(worstError(*found.detection, exactPoints(over, large)), tolerance) << sigma;
  }
}

TEST_F(ChessboardFinder, PatternsThatAreNoBoardAreRefused) {
  cv::Mat lines(480, 640, CV_8UC1, cv::Scalar(220));
  for (int i = 0; i < 640; i += 40) {
    cv::line(lines, {i, 0}, {i, 479}, cv::Scalar(30), 3);
    cv::line(lines, {0, i}, {639, i}, cv::Scalar(30), 3);
  }
  EXPECT_FALSE(search(lines, 8, 6).detection.has_value());
  const cv::Mat noise = withNoise(cv::Mat(480, 640, CV_8UC1, cv::Scalar(128)), 60);
  EXPECT_FALSE(search(noise, 8, 6).detection.has_value());
}

}  // namespace
}  // namespace fisheye_calibration::program
