// Finds a grid of circles.
#pragma once

#include "detection/target_detection.h"

namespace fisheye_calibration::program {

Search findCircleGrid(const cv::Mat& grey, const Target& target, const Progress& progress);

}  // namespace fisheye_calibration::program
