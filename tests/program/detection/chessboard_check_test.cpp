#include "detection/chessboard_check.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include <functional>

#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using Corners = std::vector<cv::Point2f>;

// A grid on the synthetic board of 9 x 7 corners, by the board's coordinates in steps.
BoardVerdict verdictOn(const cv::Mat& picture, int columns, int rows,
                       const std::function<cv::Point2d(int, int)>& place) {
  Corners corners;
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < columns; ++c) {
      const cv::Point2d steps = place(c, r);
      corners.emplace_back(SyntheticCamera().project(30 * steps.x, 30 * steps.y));
    }
  }
  return checkChessboard(picture, corners, columns, rows).verdict;
}

class ChessboardCheck : public testing::Test {
 protected:
  const cv::Mat picture = drawTarget({}, {});

  BoardVerdict verdict(int columns, int rows, int firstColumn = 0, int firstRow = 0) const {
    return verdictOn(picture, columns, rows,
                     [&](int c, int r) { return cv::Point2d(c + firstColumn, r + firstRow); });
  }
};

TEST_F(ChessboardCheck, TheTrueCornersAreTheWholeBoard) {
  EXPECT_EQ(verdict(9, 7), BoardVerdict::kWhole);
}

TEST_F(ChessboardCheck, TheBoardsRimIsNotALineOfCorners) {
  EXPECT_NE(verdict(10, 7), BoardVerdict::kWhole);
  EXPECT_NE(verdict(9, 8), BoardVerdict::kWhole);
  EXPECT_NE(verdict(9, 7, 1), BoardVerdict::kWhole);
}

TEST_F(ChessboardCheck, ABoardThatGoesOnIsNotWhole) {
  EXPECT_EQ(verdict(8, 7), BoardVerdict::kContinues);
  EXPECT_EQ(verdict(9, 6), BoardVerdict::kContinues);
  EXPECT_EQ(verdict(8, 7, 1), BoardVerdict::kContinues);
  EXPECT_EQ(verdict(9, 6, 0, 1), BoardVerdict::kContinues);
}

TEST_F(ChessboardCheck, ASkippedColumnIsNoBoard) {
  EXPECT_EQ(
      verdictOn(picture, 8, 7, [](int c, int r) { return cv::Point2d(c < 4 ? c : c + 1, r); }),
      BoardVerdict::kNotABoard);
}

TEST_F(ChessboardCheck, EverySecondCornerIsNoBoard) {
  EXPECT_EQ(verdictOn(picture, 5, 4, [](int c, int r) { return cv::Point2d(2 * c, 2 * r); }),
            BoardVerdict::kNotABoard);
}

TEST_F(ChessboardCheck, DiagonalsAreNoBoard) {
  EXPECT_EQ(verdictOn(picture, 3, 3, [](int c, int r) { return cv::Point2d(3 + c - r, c + r); }),
            BoardVerdict::kNotABoard);
}

TEST_F(ChessboardCheck, AStripOfTheNextSquaresShowsThatTheBoardContinues) {
  // Everything from a quarter of a step beyond the squares of the fifth column is covered.
  cv::Mat covered = picture.clone();
  std::vector<cv::Point> cover;
  for (int i = 0; i <= 40; ++i) {
    cover.emplace_back(SyntheticCamera().project(30 * 5.25, 30 * (-1.5 + 9 * i / 40.0)));
  }
  cover.emplace_back(picture.cols, cover.back().y);
  cover.emplace_back(picture.cols, cover.front().y);
  cv::fillPoly(covered, std::vector<std::vector<cv::Point>>{cover}, cv::Scalar(215));
  EXPECT_EQ(verdictOn(covered, 5, 7, [](int c, int r) { return cv::Point2d(c, r); }),
            BoardVerdict::kContinues);
}

TEST_F(ChessboardCheck, ABoardAtThePicturesEdgeIsCut) {
  // The picture now ends little more than the corners of the last row.
  Corners corners;
  float lowest = 0;
  for (int i = 0; i < 63; ++i) {
    corners.emplace_back(SyntheticCamera().project(30 * (i % 9), 30 * (i / 9)));
    lowest = std::max(lowest, corners.back().y);
  }
  const BoardCheck check = checkChessboard(picture.rowRange(0, cvCeil(lowest) + 3), corners, 9, 7);
  EXPECT_EQ(check.verdict, BoardVerdict::kCut);
  EXPECT_EQ(check.side, Side::kBottom);
}

TEST_F(ChessboardCheck, AnEmptyPictureIsNoBoard) {
  const cv::Mat grey(720, 960, CV_8UC1, cv::Scalar(100));
  EXPECT_EQ(verdictOn(grey, 9, 7, [](int c, int r) { return cv::Point2d(c, r); }),
            BoardVerdict::kNotABoard);
}

}  // namespace
}  // namespace fisheye_calibration::program
