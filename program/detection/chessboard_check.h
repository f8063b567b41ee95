// A check of a detected chessboard against the picture: finders sometimes skip a column, take the
// squares' diagonals, mistake the board's rim for corners or a part of a larger board for the
// whole.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration::program {

enum class Side { kLeft, kRight, kTop, kBottom };  // of the grid: columns count from left to right

enum class BoardVerdict {
  kWhole,
  kNotABoard,  // bright and dark squares do not alternate along all lines
  kNoRim,      // no whole squares outside the outermost corners
  kContinues,  // the board goes on beyond the outermost squares
  kCut         // the picture ends before the outermost squares do
};

struct BoardCheck {
  BoardVerdict verdict = BoardVerdict::kNotABoard;
  Side side = Side::kLeft;  // the first side to which the last three verdicts apply
};

// `corners` are ordered row by row, at least 3 x 3.
BoardCheck checkChessboard(const cv::Mat& grey, const std::vector<cv::Point2f>& corners,
                           int columns, int rows);

}  // namespace fisheye_calibration::program
