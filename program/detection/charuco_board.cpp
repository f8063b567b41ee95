#include "detection/charuco_board.h"

namespace fisheye_calibration::program {

// Squares are counted row by row from 0 here. An even number of squares in a row makes two squares
// share a marker number with their neighbour in the pair; an odd number does so, too, because the
// colours alternate from one row's end to the next row's start.
int CharucoBoard::markerIn(int column, int row) const {
  const int x = column + 1;
  const int y = row + 1;
  const bool onBoard = x >= 0 && y >= 0 && x <= columns_ && y <= rows_;
  if (!onBoard || (x + y) % 2 == 0) {
    return -1;
  }
  return (y * (columns_ + 1) + x) / 2;
}

cv::Point CharucoBoard::squareOf(int marker) const {
  const int width = columns_ + 1;
  int square = 2 * marker;
  const bool dark = (square % width + square / width) % 2 == 0;
  square += dark ? 1 : 0;
  return {square % width - 1, square / width - 1};
}

cv::Rect2d CharucoBoard::markerArea(int marker) const {
  const cv::Point square = squareOf(marker);
  const double border = (1 - markerShare_) / 2;
  return {square.x + border, square.y + border, markerShare_, markerShare_};
}

}  // namespace fisheye_calibration::program
