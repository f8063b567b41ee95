// Sub-pixel positions of a chessboard's inner corners.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration::program {

// Fits a model of a corner to the grey levels around each position, in a window that suits the
// local spacing. A corner that ends up far from where its neighbours expect it is fitted again from
// there; if that does not help, it stays where they expect it. `corners` are ordered row by row and
// right to a third of the spacing. Returns false if a corner can neither be measured nor expected
// with confidence.
bool refineCorners(const cv::Mat& grey, int columns, int rows, std::vector<cv::Point2f>& corners);

}  // namespace fisheye_calibration::program
