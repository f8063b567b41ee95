// A check of a detected chessboard: finders sometimes mistake the board's rim for a row of inner
// corners, or a part of a larger board for the whole.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration::program {

// True if bright and dark squares alternate around (nearly) every corner and do not continue beyond
// the outermost corners. `corners` are ordered row by row.
bool looksLikeChessboard(const cv::Mat& grey, const std::vector<cv::Point2f>& corners, int columns,
                         int rows);

}  // namespace fisheye_calibration::program
