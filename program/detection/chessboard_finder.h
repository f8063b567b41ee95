// Finds a chessboard, whole and of the size asked for, or nothing.
#pragma once

#include "detection/target_detection.h"

namespace fisheye_calibration::program {

Search findChessboard(const cv::Mat& grey, const Target& target, const Progress& progress);

}  // namespace fisheye_calibration::program
