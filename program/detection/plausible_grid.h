// A first look at a detected grid: whether a lens could have bent it like that.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration::program {

// False for grids that fold, cross or jump: every cell must turn the same way, and neighbouring
// steps along a row or column must not differ by more than a strongly distorting lens makes them.
// The points are ordered row by row.
bool isPlausibleGrid(const std::vector<cv::Point2f>& points, int columns, int rows);

}  // namespace fisheye_calibration::program
