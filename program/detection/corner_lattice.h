// Grows the grid of a chessboard's inner corners from saddle points, whatever its size.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "detection/saddle_points.h"

namespace fisheye_calibration::program {

struct CornerGrid {
  int columns = 0;
  int rows = 0;
  std::vector<cv::Point2f> corners;  // row by row; those that were not seen are interpolated
  int seen = 0;
};

// The largest grid of at least 3 x 3 in which bright and dark squares alternate; without corners
// if there is none. `smooth` is the picture in which the points were found.
CornerGrid growLattice(const cv::Mat& smooth, const std::vector<SaddlePoint>& points);

}  // namespace fisheye_calibration::program
