// A grid of corners settled against the picture: how large the board is that is really there.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "detection/chessboard_check.h"
#include "detection/corner_lattice.h"

namespace fisheye_calibration::program {

struct SeenBoard {
  CornerGrid grid;
  BoardCheck check;

  bool whole() const { return check.verdict == BoardVerdict::kWhole; }
  bool isSized(int columns, int rows) const {
    return (grid.columns == columns && grid.rows == rows) ||
           (grid.columns == rows && grid.rows == columns);
  }
};

// Refines the corners and checks the board; adds lines while it continues, and drops outermost
// lines without squares beyond them.
SeenBoard settleBoard(const cv::Mat& grey, CornerGrid grid);

// "an 8 x 6 board is there", "the board continues beyond 8 x 6 corners on its left", ...; empty if
// the grid is no board.
std::string describeSeen(const SeenBoard& board);

}  // namespace fisheye_calibration::program
