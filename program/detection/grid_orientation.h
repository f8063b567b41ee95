// Numbering of a detected grid: detectors may start at any corner of the target.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration::program {

struct GridPoint {
  cv::Point2d world;  // in steps of the grid; the smallest coordinates are 0
  cv::Point2f image;  // pixels
};

// Turns (and, where the detector counted the other way round, mirrors) the grid by quarter turns so
// that +X runs to the right and +Y down in the image as nearly as it can, and orders the points row
// by row: ascending Y, then ascending X.
std::vector<GridPoint> orientGrid(std::vector<GridPoint> grid);

}  // namespace fisheye_calibration::program
