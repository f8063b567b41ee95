// The numbering of a detected grid: detectors may start at any corner of the target.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration::program {

struct GridPoint {
  cv::Point2d world;  // in steps of the grid; the smallest coordinates are 0
  cv::Point2f image;  // pixels
  int index = 0;      // of the point in the whole target, which may be in view in part only
};

// Turns the grid by quarter turns (and mirrors it, if the detector counted in the other direction)
// so that +X runs to the right and +Y down in the image as nearly as possible, and orders the
// points row by row: by ascending Y, then by ascending X. The grid is the whole target.
std::vector<GridPoint> orientGrid(std::vector<GridPoint> grid);

}  // namespace fisheye_calibration::program
