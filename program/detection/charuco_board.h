// A chessboard with a numbered marker in every bright square.
#pragma once

#include <opencv2/core.hpp>

namespace fisheye_calibration::program {

// The square at the top left is dark; the markers are numbered from 0, row by row. Positions are
// in steps from the first inner corner, so the top left square begins at (-1, -1).
class CharucoBoard {
 public:
  // `columns` x `rows` inner corners; `markerShare` is the marker's side as a share of the step.
  CharucoBoard(int columns, int rows, double markerShare)
      : columns_(columns), rows_(rows), markerShare_(markerShare) {}

  int markerCount() const { return (columns_ + 1) * (rows_ + 1) / 2; }

  // The marker in the square whose top left corner is (column, row), from (-1, -1); -1 if the
  // square is dark or not on the board.
  int markerIn(int column, int row) const;

  // The square, by its top left corner, that holds a marker.
  cv::Point squareOf(int marker) const;

  // Top left corner and size of a marker.
  cv::Rect2d markerArea(int marker) const;

 private:
  int columns_;
  int rows_;
  double markerShare_;
};

}  // namespace fisheye_calibration::program
