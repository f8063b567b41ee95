// The picture that shows which points were found and how they are numbered.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// `points` are ordered row by row; points of the same Yw are joined by a line.
cv::Mat drawTargetOverlay(const cv::Mat& grey, const std::vector<CalibrationPoint>& points,
                          const std::string& caption);

}  // namespace fisheye_calibration::program
