#include "detection/chessboard_check.h"

#include <gtest/gtest.h>

#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

// The corners of columns `first`, `first` + 1, ... of the synthetic board.
std::vector<cv::Point2f> boardCorners(int first, int columns, int rows) {
  std::vector<cv::Point2f> corners;
  for (int r = 0; r < rows; ++r) {
    for (int c = first; c < first + columns; ++c) {
      corners.emplace_back(SyntheticCamera().project(30.0 * c, 30.0 * r));
    }
  }
  return corners;
}

TEST(ChessboardCheck, TheTrueCornersAreAccepted) {
  const cv::Mat picture = drawTarget({}, {});
  EXPECT_TRUE(looksLikeChessboard(picture, boardCorners(0, 9, 7), 9, 7));
}

TEST(ChessboardCheck, TheBoardsRimIsNotAColumnOfCorners) {
  const cv::Mat picture = drawTarget({}, {});
  EXPECT_FALSE(looksLikeChessboard(picture, boardCorners(1, 9, 7), 9, 7));
  EXPECT_FALSE(looksLikeChessboard(picture, boardCorners(0, 10, 7), 10, 7));
}

TEST(ChessboardCheck, APartOfALargerBoardIsNotTheWhole) {
  const cv::Mat picture = drawTarget({}, {});
  EXPECT_FALSE(looksLikeChessboard(picture, boardCorners(0, 8, 7), 8, 7));
  EXPECT_FALSE(looksLikeChessboard(picture, boardCorners(0, 9, 6), 9, 6));
}

}  // namespace
}  // namespace fisheye_calibration::program
