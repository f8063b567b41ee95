// Finds the corners of a chessboard with markers, as far as it is in view.
#pragma once

#include "detection/target_detection.h"

namespace fisheye_calibration::program {

Search findCharuco(const cv::Mat& grey, const Target& target, const Progress& progress);

}  // namespace fisheye_calibration::program
